#include "benchprojects.h"

#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace benchprojects {

namespace {

SUBINDEX_DATA_T subFor(int object, int subindex, quint8 line, int subsPerObject)
{
    static const int types[] = {5, 6, 7, 2, 3, 4, 8, 22, 27};
    SUBINDEX_DATA_T sub;
    sub.name = QStringLiteral("sub %1").arg(subindex);
    sub.accesstype = QStringLiteral("rw");
    if (subindex == 0) {
        sub.datatype = 5;
        sub.defaultvalue = QString::number(subsPerObject - 1);
        sub.accesstype = QStringLiteral("ro");
        return sub;
    }
    sub.datatype = types[(object + subindex) % int(std::size(types))];
    sub.defaultvalue = QString::number((object * 7 + subindex) % 200);
    sub.implementation = (object % 5 == 4) ? 2 : (object % 5 == 3 ? 1 : 0);
    if (sub.implementation == 1)
        sub.accesstype = QStringLiteral("const");
    if (sub.implementation == 2)
        sub.varname = QStringLiteral("app_%1_%2_l%3").arg(object).arg(subindex).arg(line);
    return sub;
}

} // namespace

void addCanopenLines(ObjectDataBase& db, const QList<quint8>& lines, int objectsPerLine, int subsPerObject)
{
    QList<ObjectDataBase::SubEntry> entries;
    for (quint8 line : lines) {
        if (line != 0)
            db.addNode(line, NODE_DATA_T());
        db.setLineType(line, Line::CANopen);
        for (int object = 0; object < objectsPerLine; ++object) {
            const quint16 index = quint16(0x2000 + object);
            INDEX_DATA_T data;
            data.name = QStringLiteral("object %1").arg(object);
            data.objecttype = 9;
            db.addIndex(line, index, data);
            for (int subindex = 0; subindex < subsPerObject; ++subindex)
                entries.append(
                    {line, index, quint8(subindex), subFor(object, subindex, line, subsPerObject)});
        }
    }
    db.addSubIndices(entries);
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
