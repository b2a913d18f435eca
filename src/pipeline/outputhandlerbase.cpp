#include "pipeline/outputhandlerbase.h"

OutputHandlerBase::OutputHandlerBase(QObject* parent) : QObject(parent) {}

void OutputHandlerBase::writeEmphasized(QVariant value)
{
    writeLine(value);
}
