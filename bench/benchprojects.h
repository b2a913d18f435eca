#pragma once

#include <QList>

class ObjectDataBase;

// The large devices the generator benchmarks measure, line by line, so that
// a benchmark of a mixed device builds its lines as the single-protocol
// benchmarks do.
namespace benchprojects {

// CANopen lines of RECORD objects from 0x2000 upward, each with
// subsPerObject subindices: managed, constant and application values of
// several widths, so that every table and the slot maps are filled.
void addCanopenLines(ObjectDataBase& db, const QList<quint8>& lines, int objectsPerLine, int subsPerObject);

// J1939 lines with the NAME of the device, each with pgnsPerLine PGNs from
// 0xF000 upward, half of them sent and half received, of spnsPerPgn byte-wide
// SPNs kept alternately in managed variables and in the application's own.
void addJ1939Lines(ObjectDataBase& db, const QList<quint8>& lines, int pgnsPerLine, int spnsPerPgn);

} // namespace benchprojects
