#include "pipeline/postgenprogresshandler.h"

PostGenProgressHandler::PostGenProgressHandler(QObject* parent) : QObject(parent) {}

void PostGenProgressHandler::setValue(int) {}

void PostGenProgressHandler::setLabelText(const QString&) {}

void PostGenProgressHandler::setCancelButtonText(const QString&) {}

void PostGenProgressHandler::show() {}

void PostGenProgressHandler::hide() {}

void PostGenProgressHandler::showMessage(int, const QString&, const QString&, const QString&) {}

void PostGenProgressHandler::cancelProcessTriggered()
{
    Q_EMIT cancelProcess();
}
