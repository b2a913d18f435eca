#include "documenttestproject.h"

#include "common/projectbuilder.h"

using namespace projectbuilder;

namespace documenttest {

QSharedPointer<ObjectDataBase> smallDevice()
{
    QSharedPointer<ObjectDataBase> project(new ObjectDataBase);
    ObjectDataBase& db = *project;
    db.createNewDataBase();
    addLine(db, 0, Line::CANopen);
    for (const char* key : {"VendorName", "ProductName", "FileVersion", "CreatedBy", "ModifiedBy"})
        db.setDescriptionSetting(QLatin1String(key), QString::fromLatin1(key).toUpper());
    db.setDescriptionSetting(QStringLiteral("Comment"), QStringLiteral("two\nlines"));

    addObject(db, 0, 0x1018, "Identity Object", CANopen::Record,
              {Sub(0, "Highest sub-index", CAN::Unsigned8, "1", "const", CANopen::ManagedConst),
               Sub(1, "Vendor-ID", CAN::Unsigned32, "0x2F5")});
    addObject(db, 0, 0x1600, "RPDO1 mapping", CANopen::Record,
              {Sub(0, "Number of mapped objects", CAN::Unsigned8, "1", "rw"),
               Sub(1, "Mapped object {sub}", CAN::Unsigned32, "0x20000108", "rw")});
    addObject(db, 0, 0x2000, "Speed", CANopen::Var, {Sub(0, "Speed", CAN::Unsigned8, "0x10", "rw")});
    addObject(db, 0, 0x2001, "Gains", CANopen::Array,
              {Sub(0, "Number of entries", CAN::Unsigned8, "2", "const", CANopen::ManagedConst),
               Sub(1, "Gain {sub}", CAN::Integer16, "-5", "rw"),
               Sub(2, "Gain {sub}", CAN::Integer16, "0x7fff", "rw")});
    addObject(db, 0, 0x2002, "Firmware", CANopen::Domain,
              {Sub(0, "Firmware", CAN::Domain, "", "wo", CANopen::ApplicationVariable)});
    addObject(db, 0, 0x2003, "Serial", CANopen::Var, {Sub(0, "Serial", CAN::VisibleString, "a\"b")});
    addObject(db, 0, 0x6000, "Temperature", CANopen::Var,
              {Sub(0, "Temperature", CAN::Real32, "1.5", "ro", CANopen::ManagedVariable, true)});

    const QList<QPair<quint16, int>> objectTypes = {
        {0x1018, CAN::Identity},  {0x1600, CAN::PdoMappingParameter},
        {0x2000, CAN::Unsigned8}, {0x2001, CAN::Integer16},
        {0x2002, CAN::Domain},    {0x2003, CAN::VisibleString},
        {0x6000, CAN::Real32}};
    for (const auto& [index, type] : objectTypes)
        changeObject(db, 0, index, [datatype = type](INDEX_DATA_T& object) { object.datatype = datatype; });
    changeObject(db, 0, 0x2000, [](INDEX_DATA_T& object) { object.description = "first line\nsecond line"; });
    changeSub(db, 0, 0x2000, 0, [](SUBINDEX_DATA_T& sub) {
        sub.limitineds = true;
        sub.uplimit = QStringLiteral("100");
        sub.pdomapping = PDOMapping::Mappable;
        sub.description = QStringLiteral("km/h\nrounded");
    });
    changeSub(db, 0, 0x2002, 0, [](SUBINDEX_DATA_T& sub) {
        sub.varname = QStringLiteral("firmware");
        sub.defaultineds = false;
        sub.refuseread = true;
    });
    changeSub(db, 0, 0x6000, 0, [](SUBINDEX_DATA_T& sub) {
        sub.writedefaulttoeds = 2;
        sub.size = 4;
    });
    return project;
}

void addJ1939Line(ObjectDataBase& db, quint8 line)
{
    addLine(db, line, Line::J1939);
    ObjectDataBase::PGN eec1;
    eec1.name = QStringLiteral("EEC1");
    eec1.desc = QStringLiteral("Engine <speed> & torque");
    eec1.direction = ObjectDataBase::Transmit;
    eec1.priority = 3;
    eec1.cycletime_ms = 20;
    ObjectDataBase::SPN speed;
    speed.spnnumber = 190;
    speed.name = QStringLiteral("Engine speed");
    speed.datatype = CAN::Unsigned16;
    speed.varname = QStringLiteral("engineSpeed");
    addPgn(db, line, 61444, eec1, {speed});

    ObjectDataBase::PGN ccvs1;
    ccvs1.name = QStringLiteral("CCVS1");
    ccvs1.desc = QStringLiteral("x");
    ccvs1.direction = ObjectDataBase::Receive;
    ccvs1.priority = 6;
    ccvs1.cycletime_ms = 100;
    ccvs1.inhibittime_ms = 10;
    ObjectDataBase::SPN brake;
    brake.spnnumber = 597;
    brake.name = QStringLiteral("Brake switch");
    brake.datatype = CAN::Unsigned2;
    brake.bitsize = 2;
    brake.implementation = CANopen::ManagedVariable;
    addPgn(db, line, 65265, ccvs1, {brake});
}

void addRawCanLine(ObjectDataBase& db, quint8 line)
{
    addLine(db, line, Line::RawCan);
    const auto element = [](quint32 number, const char* name, int datatype, quint16 bitpos, quint16 bitsize,
                            const char* value, const char* desc) {
        ObjectDataBase::DataElement record;
        record.number = number;
        record.name = QLatin1String(name);
        record.datatype = datatype;
        record.bitpos = bitpos;
        record.bitsize = bitsize;
        record.defaultvalue = QLatin1String(value);
        record.desc = QLatin1String(desc);
        return record;
    };
    ObjectDataBase::CANID status;
    status.name = QStringLiteral("Status");
    status.desc = QStringLiteral("Sent on change");
    status.direction = ObjectDataBase::Transmit;
    status.inhibittime_ms = 5;
    addCanId(db, line, 0x181, status,
             {element(1, "State", CAN::Unsigned8, 0, 0, "3", "Operating state"),
              element(2, "Flags", CAN::Unsigned4, 8, 4, "0", "")});
    ObjectDataBase::CANID command;
    command.name = QStringLiteral("Command");
    command.direction = ObjectDataBase::Receive;
    command.cycletime_ms = 50;
    addCanId(db, line, 0x80000000u | 0x18FF0001u, command);
}

} // namespace documenttest
