#pragma once

#include <QString>

// The protocols a line of the project carries and the line numbers with a
// meaning of their own. The type is stored as decimal text in the
// GeneralSettings key "line%1type" of the line; an absent key reads as 0.
// ObjectDataBase::lineType is the one reader of it.
namespace Line {

enum Type : int
{
    NoType = 0,
    CANopen = 1,
    J1939 = 2,
    RawCan = 4,
    CANopenJ1939 = 5,
    CANopenRawCan = 6,
    J1939RawCan = 7,
};

constexpr bool carriesCANopen(int type)
{
    return type == CANopen || type == CANopenJ1939 || type == CANopenRawCan;
}

constexpr bool carriesJ1939(int type)
{
    return type == J1939 || type == CANopenJ1939 || type == J1939RawCan;
}

constexpr bool carriesRawCan(int type)
{
    return type == RawCan || type == CANopenRawCan || type == J1939RawCan;
}

// The stack serves lines 0 to 31: lines from here up get no tables, counts
// or defines of their own and are not counted as interfaces of the device.
constexpr int stackLimit = 32;
// Lines from here up are not interfaces of the device but the tool's own.
constexpr int firstInternal = 240;
// Lines 254 and 255 hold the scratch objects of an editing session; they are
// never saved and never generated.
constexpr int firstScratch = 254;

inline QString typeKey(int line)
{
    return QStringLiteral("line%1type").arg(line);
}

} // namespace Line
