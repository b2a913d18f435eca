#pragma once

#include <QtGlobal>

namespace CAN {

// Data type object indices of CiA 301, and above 100 the tool's own numbers
// for J1939 bit fields and strings. The numbers are stored in project files.
enum CANopenDataType : quint16
{
    Unknown = 0,
    Boolean = 0x0001,
    Integer8 = 0x0002,
    Integer16 = 0x0003,
    Integer32 = 0x0004,
    Unsigned8 = 0x0005,
    Unsigned16 = 0x0006,
    Unsigned32 = 0x0007,
    Real32 = 0x0008,
    VisibleString = 0x0009,
    OctetString = 0x000A,
    UnicodeString = 0x000B,
    TimeOfDay = 0x000C,
    TimeDifference = 0x000D,
    Domain = 0x000F,
    Integer24 = 0x0010,
    Real64 = 0x0011,
    Integer40 = 0x0012,
    Integer48 = 0x0013,
    Integer56 = 0x0014,
    Integer64 = 0x0015,
    Unsigned24 = 0x0016,
    Unsigned40 = 0x0018,
    Unsigned48 = 0x0019,
    Unsigned56 = 0x001A,
    Unsigned64 = 0x001B,
    PdoCommunicationParameter = 0x0020,
    PdoMappingParameter = 0x0021,
    SdoParameter = 0x0022,
    Identity = 0x0023,

    Unsigned2 = 100,
    Unsigned3 = 101,
    Unsigned4 = 102,
    Unsigned5 = 103,
    Unsigned6 = 104,
    Unsigned7 = 105,
    Unsigned9 = 106,
    Unsigned10 = 107,
    Unsigned11 = 108,
    Unsigned12 = 109,
    Unsigned13 = 110,
    Unsigned14 = 111,
    Unsigned15 = 112,
    Unsigned19 = 117,
    Unsigned18 = 118,
    Unsigned21 = 119,
    VisStringNull = 120,
    VisStringAsterisk = 121,
    Utf8String = 124,
    Unsigned29 = 129,
};

// The value tables of a generated object dictionary: each numeric type lives
// in one of them, the narrow unsigned types and BOOLEAN in that of UNSIGNED8.
enum ValueGroup : quint8
{
    GroupU8,
    GroupU16,
    GroupU24,
    GroupU32,
    GroupU40,
    GroupU48,
    GroupU64,
    GroupI8,
    GroupI16,
    GroupI24,
    GroupI32,
    GroupR32,
    GroupCount,
    NoGroup = GroupCount
};

// Whether the values of a type are plain signed or unsigned numbers; the
// time types, reals, strings and structures are neither.
enum Signedness : quint8
{
    NotInteger,
    UnsignedInteger,
    SignedInteger,
};

} // namespace CAN

namespace CANopen {

enum ObjectCode : quint8
{
    NullObject = 0,
    Domain = 2,
    DefType = 5,
    DefStruct = 6,
    Var = 7,
    Array = 8,
    Record = 9,
};

// Where the value of a sub-index lives: in the tables the stack manages, as a
// constant there, in a variable of the application, or nowhere (the
// application answers every access). The numbers are stored in project files.
enum Implementation : quint8
{
    ManagedVariable = 0,
    ManagedConst = 1,
    ApplicationVariable = 2,
    VirtualObject = 3,
};

enum ObjectCategory : quint8
{
    Mandatory = 0,
    Optional = 1,
    Conditional = 2,
};

} // namespace CANopen
