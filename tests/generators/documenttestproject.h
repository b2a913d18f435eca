#pragma once

#include "database/objectdatabase.h"

#include <QSharedPointer>

namespace documenttest {

// A CANopen device on line 0 with an object of every kind: the identity
// RECORD, a PDO mapping, a VAR with limits and a two-line description, an
// ARRAY, a DOMAIN held in a variable, a string with a quote and a REAL32 in
// the profile area. Vendor-ID 0x2F5, description settings set.
QSharedPointer<ObjectDataBase> smallDevice();

// Line `line` of the project as a J1939 line with one PGN per direction, or
// as a raw CAN line with a standard and an extended identifier.
void addJ1939Line(ObjectDataBase& db, quint8 line);
void addRawCanLine(ObjectDataBase& db, quint8 line);

} // namespace documenttest
