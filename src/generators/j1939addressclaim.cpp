#include "generators/j1939addressclaim.h"

#include "canopenlib/canopentypes.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QDebug>

namespace {

constexpr quint32 addressClaimingPgn = 60928;

struct NameField
{
    const char* name;
    quint32 spn;
    // J1939 setting of the default value, per line but for the last field,
    // which is a yes or no for the whole project; none for the reserved bit.
    const char* setting;
    int dataType;
    quint16 bits;
};

// The 64 bits of the J1939 NAME, least significant field first.
constexpr NameField nameFields[] = {
    {"Identity Number", 2837, "identitynumber", 119, 21},
    {"Manufacturer Code", 2838, "manufacturercode", 108, 11},
    {"ECU Instance", 2840, "ecuinstance", 101, 3},
    {"Function Instance", 2839, "functioninstance", 103, 5},
    {"Function", 2841, "function", 5, 8},
    {"reserved", 0, nullptr, 1, 1},
    {"Vehicle System", 2842, "vehiclesystem", 105, 7},
    {"Vehicle System Instance", 2843, "vehicleinstance", 102, 4},
    {"Industry Group", 2846, "industrygroup", 101, 3},
    {"Addr Claiming Supported", 2844, "addresscapable", 1, 1},
};

QString tr(const char* text)
{
    return QCoreApplication::translate("J1939AddressClaim", text);
}

} // namespace

bool J1939AddressClaim::applies(ObjectDataBase& database, quint8 line)
{
    const int type = database.lineType(line);
    return type == Line::J1939 || type == Line::CANopenJ1939 ||
           database.getPGNList(line, ObjectDataBase::Transmit).size() >= 2;
}

bool J1939AddressClaim::store(ObjectDataBase& database, quint8 line)
{
    ObjectDataBase::PGN pgn;
    pgn.number = addressClaimingPgn;
    pgn.direction = ObjectDataBase::Transmit;
    pgn.priority = 6;
    pgn.inhibittime_ms = 250;
    pgn.name = tr("Address Claiming");
    pgn.desc = tr("This PGN is used to send the Address Claiming.");
    const bool pgnStored = database.addPGN(line, addressClaimingPgn, pgn);
    qDebug() << Q_FUNC_INFO << "add Address Claiming PGN returns: " << pgnStored;

    bool stored = false;
    quint32 pos = 0;
    quint16 bitPosition = 0;
    for (const NameField& field : nameFields) {
        ObjectDataBase::SPN spn;
        spn.pos = pos++;
        spn.name = QString::fromLatin1(field.name);
        spn.pgnnumber = addressClaimingPgn;
        spn.spnnumber = field.spn;
        spn.direction = ObjectDataBase::Transmit;
        spn.datatype = field.dataType;
        spn.implementation = CANopen::ManagedVariable;
        spn.bitsize = field.bits;
        spn.bitposition = bitPosition;
        bitPosition += field.bits;
        const QString setting = QLatin1String(field.setting);
        if (setting == QLatin1String("addresscapable"))
            spn.defaultvalue =
                database.getJ1939Setting(setting).toInt() != 0 ? QStringLiteral("1") : QStringLiteral("0");
        else if (field.setting)
            spn.defaultvalue = database.getJ1939SettingForLine(setting, line);
        stored = database.addSPN(line, addressClaimingPgn, ObjectDataBase::Transmit, field.spn, spn);
    }
    qDebug() << Q_FUNC_INFO << "add Address Claiming last SPN returns: " << stored;
    return pgnStored && stored;
}
