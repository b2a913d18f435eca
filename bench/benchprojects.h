#pragma once

#include "database/objectdatabase.h"

#include <QList>

#include <functional>

// The large devices the generator benchmarks measure, line by line, so that
// a benchmark of a mixed device builds its lines as the single-protocol
// benchmarks do.
namespace benchprojects {

// The sub-indices of a bench object, by object number, sub-index and line.
using SubFactory = std::function<SUBINDEX_DATA_T(int object, int subindex, quint8 line)>;

// Sub-indices 0 to subs-1 of `objects` objects from 0x2000 up on the line,
// as one bulk write takes them.
QList<ObjectDataBase::SubEntry> objectEntries(quint8 line, int objects, int subs, const SubFactory& sub);

// CANopen lines, each with `objects` RECORDs from 0x2000 up, named
// "object <n>" and described by `description` when given; their sub-indices
// go in in one bulk write, as an import writes them.
void addRecordLines(ObjectDataBase& db, const QList<quint8>& lines, int objects, int subs,
                    const SubFactory& sub, const std::function<QString(int object)>& description = {});

// CANopen lines of RECORD objects from 0x2000 upward, each with
// subsPerObject subindices: managed, constant and application values of
// several widths, so that every table and the slot maps are filled.
void addCanopenLines(ObjectDataBase& db, const QList<quint8>& lines, int objectsPerLine, int subsPerObject);

// J1939 lines with the NAME of the device, each with pgnsPerLine PGNs from
// 0xF000 upward, half of them sent and half received, of spnsPerPgn byte-wide
// SPNs kept alternately in managed variables and in the application's own.
void addJ1939Lines(ObjectDataBase& db, const QList<quint8>& lines, int pgnsPerLine, int spnsPerPgn);

} // namespace benchprojects
