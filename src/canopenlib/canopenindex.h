#pragma once

#include "canopenlib/canopentypes.h"
#include "canopenlib/pdomapping.h"

#include <QMap>
#include <QMetaType>
#include <QSharedPointer>
#include <QString>

namespace CANopen {

// One object as read from a device description. The fields up to metadata
// mirror the project's object record, in its order and with its defaults.
// The rest carries what a CompactSubObj array gives to each of the
// subindices that the reader of the record has to create itself.
struct CANopenIndex
{
    QString name = QStringLiteral("unnamed object");
    int datatype = 5;
    int objecttype = 7;
    QString description;
    int category = 1;
    QString device_class;
    int fwsupported = 0;
    QSharedPointer<QMap<QString, QString>> metadata;

    quint16 index = 0;
    // The SubNumber key; 0 when absent.
    quint8 subnumber = 0;
    // The CompactSubObj key: number of subindices described by this section alone.
    quint8 compactsubobj = 0;
    QString accesstype = QStringLiteral("ro");
    QString defaultvalue;
    bool defaultineds = false;
    PDOMapping pdomapping;
};

} // namespace CANopen

Q_DECLARE_METATYPE(CANopen::CANopenIndex)
