#include "trw_cli/outputhandlerbase.h"

OutputHandlerBase::OutputHandlerBase(QObject* parent) : QObject(parent) {}

void OutputHandlerBase::writeEmphasized(QVariant value)
{
    writeLine(value);
}
