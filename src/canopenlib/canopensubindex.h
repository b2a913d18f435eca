#pragma once

#include "canopenlib/pdomapping.h"

#include <QMap>
#include <QMetaType>
#include <QSharedPointer>
#include <QString>

// One subindex as read from a device description. The fields up to metadata
// mirror the project's sub-index record, in its order and with its defaults;
// the address follows.
struct CANopenSubindex
{
    QString name = QStringLiteral("unnamed subindex");
    int datatype = 5;
    QString accesstype = QStringLiteral("ro");
    QString defaultvalue;
    QString currentvalue;
    PDOMapping pdomapping;
    QString lowlimit = QStringLiteral("0");
    QString uplimit = QStringLiteral("0");
    int size = 0;
    bool defaultineds = true;
    bool limitineds = false;
    bool refuseread = false;
    bool refusewrite = false;
    bool dcfcomponent = false;
    bool cyclicread = false;
    QString allowedaccesstypes = QStringLiteral("const,ro,rw,wo,rww,rwr");
    int implementation = 0;
    QString description;
    QString varname;
    int category = 1;
    // 0 never, 1 when defaultineds is set, 2 always
    quint8 writedefaulttoeds = 1;
    bool changedbyuser = false;
    quint16 wizardsource = 0;
    bool sharedlines = false;
    QString denotation;
    bool managedbyobn = false;
    int signalid = 0;
    bool nvstorage = false;
    QSharedPointer<QMap<QString, QString>> metadata;

    quint16 index = 0;
    quint8 subindex = 0;
};

Q_DECLARE_METATYPE(CANopenSubindex)
