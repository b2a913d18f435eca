#include "documenttestproject.h"

#include "canopenlib/canopentypes.h"

namespace documenttest {

namespace {

struct Entry
{
    quint8 sub;
    const char* name;
    int datatype;
    const char* access;
    const char* value;
};

void addObject(ObjectDataBase& db, quint16 index, const char* name, int objectType, int datatype,
               const QList<Entry>& entries, const QString& description = QString())
{
    INDEX_DATA_T object;
    object.name = QLatin1String(name);
    object.objecttype = objectType;
    object.datatype = datatype;
    object.description = description;
    db.addIndex(0, index, object);
    for (const Entry& entry : entries) {
        SUBINDEX_DATA_T sub;
        sub.name = QLatin1String(entry.name);
        sub.datatype = entry.datatype;
        sub.accesstype = QLatin1String(entry.access);
        sub.defaultvalue = QString::fromUtf8(entry.value);
        db.addSubIndex(0, index, entry.sub, sub);
    }
}

void changeSub(ObjectDataBase& db, quint16 index, quint8 subindex,
               const std::function<void(SUBINDEX_DATA_T&)>& change)
{
    SUBINDEX_DATA_T sub;
    db.getSubIndex(0, index, subindex, sub);
    change(sub);
    db.addSubIndex(0, index, subindex, sub);
}

} // namespace

QSharedPointer<ObjectDataBase> smallDevice()
{
    QSharedPointer<ObjectDataBase> db(new ObjectDataBase);
    db->createNewDataBase();
    db->setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("1"));
    for (const char* key : {"VendorName", "ProductName", "FileVersion", "CreatedBy", "ModifiedBy"})
        db->setDescriptionSetting(QLatin1String(key), QString::fromLatin1(key).toUpper());
    db->setDescriptionSetting(QStringLiteral("Comment"), QStringLiteral("two\nlines"));

    addObject(*db, 0x1018, "Identity Object", CANopen::Record, CAN::Identity,
              {{0, "Highest sub-index", CAN::Unsigned8, "const", "1"},
               {1, "Vendor-ID", CAN::Unsigned32, "ro", "0x2F5"}});
    addObject(*db, 0x1600, "RPDO1 mapping", CANopen::Record, CAN::PdoMappingParameter,
              {{0, "Number of mapped objects", CAN::Unsigned8, "rw", "1"},
               {1, "Mapped object {sub}", CAN::Unsigned32, "rw", "0x20000108"}});
    addObject(*db, 0x2000, "Speed", CANopen::Var, CAN::Unsigned8,
              {{0, "Speed", CAN::Unsigned8, "rw", "0x10"}}, QStringLiteral("first line\nsecond line"));
    addObject(*db, 0x2001, "Gains", CANopen::Array, CAN::Integer16,
              {{0, "Number of entries", CAN::Unsigned8, "const", "2"},
               {1, "Gain {sub}", CAN::Integer16, "rw", "-5"},
               {2, "Gain {sub}", CAN::Integer16, "rw", "0x7fff"}});
    addObject(*db, 0x2002, "Firmware", CANopen::Domain, CAN::Domain,
              {{0, "Firmware", CAN::Domain, "wo", ""}});
    addObject(*db, 0x2003, "Serial", CANopen::Var, CAN::VisibleString,
              {{0, "Serial", CAN::VisibleString, "ro", "a\"b"}});
    addObject(*db, 0x6000, "Temperature", CANopen::Var, CAN::Real32,
              {{0, "Temperature", CAN::Real32, "ro", "1.5"}});

    changeSub(*db, 0x1018, 0, [](SUBINDEX_DATA_T& sub) { sub.implementation = 1; });
    changeSub(*db, 0x2000, 0, [](SUBINDEX_DATA_T& sub) {
        sub.limitineds = true;
        sub.uplimit = QStringLiteral("100");
        sub.pdomapping = PDOMapping::Mappable;
        sub.description = QStringLiteral("km/h\nrounded");
    });
    changeSub(*db, 0x2001, 0, [](SUBINDEX_DATA_T& sub) { sub.implementation = 1; });
    changeSub(*db, 0x2002, 0, [](SUBINDEX_DATA_T& sub) {
        sub.implementation = 2;
        sub.varname = QStringLiteral("firmware");
        sub.defaultineds = false;
        sub.refuseread = true;
    });
    changeSub(*db, 0x6000, 0, [](SUBINDEX_DATA_T& sub) {
        sub.writedefaulttoeds = 2;
        sub.nvstorage = true;
        sub.size = 4;
    });
    return db;
}

void addJ1939Line(ObjectDataBase& db, quint8 line)
{
    if (!db.nodeExists(line))
        db.addNode(line, NODE_DATA_T());
    db.setGeneralSetting(QStringLiteral("line%1type").arg(line), QStringLiteral("2"));
    const auto addPgn = [&](quint32 number, const char* name, const char* desc, quint8 direction,
                            quint8 priority, quint16 cycle, quint16 inhibit) {
        ObjectDataBase::PGN pgn;
        pgn.name = QLatin1String(name);
        pgn.desc = QLatin1String(desc);
        pgn.direction = direction;
        pgn.priority = priority;
        pgn.cycletime_ms = cycle;
        pgn.inhibittime_ms = inhibit;
        db.addPGN(line, number, pgn);
    };
    addPgn(61444, "EEC1", "Engine <speed> & torque", ObjectDataBase::Transmit, 3, 20, 0);
    addPgn(65265, "CCVS1", "x", ObjectDataBase::Receive, 6, 100, 10);
    ObjectDataBase::SPN speed;
    speed.name = QStringLiteral("Engine speed");
    speed.datatype = CAN::Unsigned16;
    speed.direction = ObjectDataBase::Transmit;
    speed.varname = QStringLiteral("engineSpeed");
    db.addSPN(line, 61444, ObjectDataBase::Transmit, 190, speed);
    ObjectDataBase::SPN brake;
    brake.name = QStringLiteral("Brake switch");
    brake.datatype = CAN::Unsigned2;
    brake.direction = ObjectDataBase::Receive;
    brake.bitsize = 2;
    brake.implementation = 0;
    db.addSPN(line, 65265, ObjectDataBase::Receive, 597, brake);
}

void addRawCanLine(ObjectDataBase& db, quint8 line)
{
    if (!db.nodeExists(line))
        db.addNode(line, NODE_DATA_T());
    db.setGeneralSetting(QStringLiteral("line%1type").arg(line), QStringLiteral("4"));
    const auto addElement = [&](quint32 number, const char* name, int datatype, quint16 bitpos,
                                quint16 bitsize, const char* value, const char* desc) {
        ObjectDataBase::DataElement element;
        element.name = QLatin1String(name);
        element.datatype = datatype;
        element.bitpos = bitpos;
        element.bitsize = bitsize;
        element.defaultvalue = QLatin1String(value);
        element.desc = QLatin1String(desc);
        element.direction = ObjectDataBase::Transmit;
        db.addDataElement(line, 0x181, ObjectDataBase::Transmit, number, element);
    };
    ObjectDataBase::CANID status;
    status.name = QStringLiteral("Status");
    status.desc = QStringLiteral("Sent on change");
    status.direction = ObjectDataBase::Transmit;
    status.inhibittime_ms = 5;
    db.addCANID(line, 0x181, status);
    addElement(1, "State", CAN::Unsigned8, 0, 0, "3", "Operating state");
    addElement(2, "Flags", CAN::Unsigned4, 8, 4, "0", "");
    ObjectDataBase::CANID command;
    command.name = QStringLiteral("Command");
    command.direction = ObjectDataBase::Receive;
    command.cycletime_ms = 50;
    db.addCANID(line, 0x80000000u | 0x18FF0001u, command);
}

} // namespace documenttest
