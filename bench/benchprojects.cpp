#include "benchprojects.h"

#include "canopenlib/canopentypes.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace benchprojects {

namespace {

SUBINDEX_DATA_T subFor(int object, int subindex, quint8 line, int subsPerObject)
{
    static const int types[] = {CAN::Unsigned8, CAN::Unsigned16, CAN::Unsigned32,
                                CAN::Integer8,  CAN::Integer16,  CAN::Integer32,
                                CAN::Real32,    CAN::Unsigned24, CAN::Unsigned64};
    SUBINDEX_DATA_T sub;
    sub.name = QStringLiteral("sub %1").arg(subindex);
    sub.accesstype = QStringLiteral("rw");
    if (subindex == 0) {
        sub.datatype = CAN::Unsigned8;
        sub.defaultvalue = QString::number(subsPerObject - 1);
        sub.accesstype = QStringLiteral("ro");
        return sub;
    }
    sub.datatype = types[(object + subindex) % int(std::size(types))];
    sub.defaultvalue = QString::number((object * 7 + subindex) % 200);
    sub.implementation = (object % 5 == 4)   ? CANopen::ApplicationVariable
                         : (object % 5 == 3) ? CANopen::ManagedConst
                                             : CANopen::ManagedVariable;
    if (sub.implementation == CANopen::ManagedConst)
        sub.accesstype = QStringLiteral("const");
    if (sub.implementation == CANopen::ApplicationVariable)
        sub.varname = QStringLiteral("app_%1_%2_l%3").arg(object).arg(subindex).arg(line);
    return sub;
}

} // namespace

QList<ObjectDataBase::SubEntry> objectEntries(quint8 line, int objects, int subs, const SubFactory& sub)
{
    QList<ObjectDataBase::SubEntry> entries;
    entries.reserve(objects * subs);
    for (int object = 0; object < objects; ++object) {
        for (int subindex = 0; subindex < subs; ++subindex)
            entries.append({line, quint16(0x2000 + object), quint8(subindex), sub(object, subindex, line)});
    }
    return entries;
}

void addRecordLines(ObjectDataBase& db, const QList<quint8>& lines, int objects, int subs,
                    const SubFactory& sub, const std::function<QString(int object)>& description)
{
    QList<ObjectDataBase::SubEntry> entries;
    for (quint8 line : lines) {
        if (line != 0)
            db.addNode(line, NODE_DATA_T());
        db.setLineType(line, Line::CANopen);
        for (int object = 0; object < objects; ++object) {
            INDEX_DATA_T data;
            data.name = QStringLiteral("object %1").arg(object);
            data.objecttype = CANopen::Record;
            if (description)
                data.description = description(object);
            db.addIndex(line, quint16(0x2000 + object), data);
        }
        entries += objectEntries(line, objects, subs, sub);
    }
    db.addSubIndices(entries);
}

void addCanopenLines(ObjectDataBase& db, const QList<quint8>& lines, int objectsPerLine, int subsPerObject)
{
    addRecordLines(db, lines, objectsPerLine, subsPerObject,
                   [subsPerObject](int object, int subindex, quint8 line) {
                       return subFor(object, subindex, line, subsPerObject);
                   });
}

void addJ1939Lines(ObjectDataBase& db, const QList<quint8>& lines, int pgnsPerLine, int spnsPerPgn)
{
    // A start address per line of the project, by its place in the line list.
    QStringList addresses;
    for (int line = 0; line <= *std::max_element(lines.cbegin(), lines.cend()); ++line)
        addresses << QString::number(128 + line);
    const QList<QPair<const char*, QString>> settings = {
        {"identitynumber", "4711"}, {"manufacturercode", "1234"}, {"ecuinstance", "0"},
        {"functioninstance", "0"},  {"function", "130"},          {"vehiclesystem", "0"},
        {"vehicleinstance", "0"},   {"industrygroup", "1"},       {"startaddress", addresses.join(',')}};
    for (const auto& [key, value] : settings)
        db.setJ1939Setting(QLatin1String(key), value);
    db.database().transaction();
    for (quint8 line : lines) {
        if (line != 0)
            db.addNode(line, NODE_DATA_T());
        db.setLineType(line, Line::J1939);
        for (int index = 0; index < pgnsPerLine; ++index) {
            ObjectDataBase::PGN pgn;
            pgn.number = quint32(0xF000 + index);
            pgn.direction = index % 2 == 0 ? ObjectDataBase::Transmit : ObjectDataBase::Receive;
            pgn.name = QStringLiteral("PGN %1").arg(pgn.number);
            pgn.priority = 6;
            pgn.cycletime_ms = 100;
            pgn.mappingcount = quint16(spnsPerPgn);
            db.addPGN(line, pgn.number, pgn);
            for (int signal = 0; signal < spnsPerPgn; ++signal) {
                ObjectDataBase::SPN spn;
                spn.pos = quint32(signal);
                spn.name = QStringLiteral("SPN %1").arg(signal);
                spn.datatype = 5;
                spn.bitsize = 8;
                spn.bitposition = quint16(8 * signal);
                spn.pgnnumber = pgn.number;
                spn.spnnumber = quint32(index * spnsPerPgn + signal + 1);
                spn.direction = pgn.direction;
                spn.implementation = signal % 2 == 0 ? 0 : 2;
                spn.varname = QStringLiteral("signal_%1_%2").arg(line).arg(spn.spnnumber);
                db.addSPN(line, pgn.number, pgn.direction, spn.spnnumber, spn);
            }
        }
    }
    db.database().commit();
}

} // namespace benchprojects
