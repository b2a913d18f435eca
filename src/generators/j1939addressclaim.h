#pragma once

#include <QtGlobal>

class ObjectDataBase;

// The address claiming PGN (60928) that every J1939 node sends: the stack
// handles it by itself, so the project holds no record of it, yet the
// outputs that list a line's PGNs must show it. It is stored for the run,
// before the worker thread of the generator starts.
class J1939AddressClaim
{
public:
    // A line claims an address when it is J1939 alone or beside CANopen, or
    // when it sends at least two PGNs.
    static bool applies(ObjectDataBase& database, quint8 line);
    // Stores the PGN and the ten fields of the NAME of the line; false when a
    // write failed.
    static bool store(ObjectDataBase& database, quint8 line);
};
