#pragma once

#include "canopenlib/udstypes.h"

#include <QMap>
#include <QString>

// The printable names of the UDS services.
class UDSSIDDefinitions
{
public:
    static const QMap<UDS::SID, QString>& getSIDNames();
};
