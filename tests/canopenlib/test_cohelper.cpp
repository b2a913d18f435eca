#include "canopenlib/cohelper.h"

#include <gtest/gtest.h>

namespace {

// The static data types of CiA 301 with the sizes and value ranges that the
// standard gives them; null limits mark types without an integer range.
struct StandardType
{
    quint16 number;
    const char* name;
    const char* shortName;
    quint8 bits;
    const char* low;
    const char* up;
};

const StandardType standardTypes[] = {
    {0x01, "BOOLEAN", "b", 1, "0", "1"},
    {0x02, "INTEGER8", "i8", 8, "-128", "127"},
    {0x03, "INTEGER16", "i16", 16, "-32768", "32767"},
    {0x04, "INTEGER32", "i32", 32, "-2147483648", "2147483647"},
    {0x05, "UNSIGNED8", "u8", 8, "0", "255"},
    {0x06, "UNSIGNED16", "u16", 16, "0", "65535"},
    {0x07, "UNSIGNED32", "u32", 32, "0", "4294967295"},
    {0x08, "REAL32", "r32", 32, nullptr, nullptr},
    {0x09, "VISIBLE_STRING", "vs", 0, nullptr, nullptr},
    {0x0A, "OCTET_STRING", "os", 0, nullptr, nullptr},
    {0x0B, "UNICODE_STRING", "us", 0, nullptr, nullptr},
    {0x0C, "TIME_OF_DAY", "u48", 48, nullptr, nullptr},
    {0x0D, "TIME_DIFFERENCE", "u48", 48, nullptr, nullptr},
    {0x0F, "DOMAIN", "d", 0, nullptr, nullptr},
    {0x10, "INTEGER24", "i24", 24, "-8388608", "8388607"},
    {0x11, "REAL64", "r64", 64, nullptr, nullptr},
    {0x12, "INTEGER40", "i40", 40, "-549755813888", "549755813887"},
    {0x13, "INTEGER48", "i48", 48, "-140737488355328", "140737488355327"},
    {0x14, "INTEGER56", "i56", 56, "-36028797018963968", "36028797018963967"},
    {0x15, "INTEGER64", "i64", 64, "-9223372036854775808", "9223372036854775807"},
    {0x16, "UNSIGNED24", "u24", 24, "0", "16777215"},
    {0x18, "UNSIGNED40", "u40", 40, "0", "1099511627775"},
    {0x19, "UNSIGNED48", "u48", 48, "0", "281474976710655"},
    {0x1A, "UNSIGNED56", "u56", 56, "0", "72057594037927935"},
    {0x1B, "UNSIGNED64", "u64", 64, "0", "18446744073709551615"},
    {0x20, "PDO_COMMUNICATION_PARAMETER", "", 0, nullptr, nullptr},
    {0x23, "IDENTITY", "", 0, nullptr, nullptr},
};

bool isReal(quint16 number)
{
    return number == 0x08 || number == 0x11;
}

} // namespace

TEST(COHelperDataTypes, StandardTypesHaveTheirNamesSizesAndRanges)
{
    for (const StandardType& type : standardTypes) {
        SCOPED_TRACE(type.name);
        const auto dataType = CAN::CANopenDataType(type.number);
        EXPECT_EQ(COHelper::index2DataTypeString(type.number), QLatin1String(type.name));
        EXPECT_EQ(COHelper::index2DataTypeShortString(type.number), QLatin1String(type.shortName));
        EXPECT_EQ(COHelper::mapDataTypeString(QLatin1String(type.name)), dataType);
        EXPECT_EQ(COHelper::getDataLengthBits(dataType), type.bits);

        QString low = QStringLiteral("untouched");
        QString up = low;
        const bool hasRange = COHelper::getDefaultLimits(dataType, low, up);
        EXPECT_EQ(hasRange, type.low != nullptr || isReal(type.number));
        if (type.low) {
            EXPECT_EQ(low, QLatin1String(type.low));
            EXPECT_EQ(up, QLatin1String(type.up));
        } else if (isReal(type.number)) {
            EXPECT_EQ(low.toDouble(), -up.toDouble());
            EXPECT_GT(up.toDouble(), type.bits == 32 ? 3.4e38 : 1.79e308);
        } else {
            EXPECT_EQ(low, QStringLiteral("untouched"));
        }
    }
}

// The tool's own numbers: J1939 bit fields by width, and its string types.
TEST(COHelperDataTypes, OwnTypesAboveOneHundred)
{
    const struct
    {
        quint16 number;
        int bits;
    } bitFields[] = {
        {100, 2},  {101, 3},  {102, 4},  {103, 5},  {104, 6},  {105, 7},  {106, 9},  {107, 10}, {108, 11},
        {109, 12}, {110, 13}, {111, 14}, {112, 15}, {117, 19}, {118, 18}, {119, 21}, {129, 29},
    };
    for (const auto& type : bitFields) {
        SCOPED_TRACE(type.number);
        const auto dataType = CAN::CANopenDataType(type.number);
        const QString name = QStringLiteral("UNSIGNED%1").arg(type.bits);
        EXPECT_EQ(COHelper::index2DataTypeString(type.number), name);
        EXPECT_EQ(COHelper::mapDataTypeString(name), dataType);
        EXPECT_EQ(COHelper::getDataLengthBits(dataType), type.bits);
        EXPECT_EQ(COHelper::index2DataTypeShortString(type.number), QStringLiteral("u%1").arg(type.bits));
        QString low, up;
        ASSERT_TRUE(COHelper::getDefaultLimits(dataType, low, up));
        EXPECT_EQ(low, QStringLiteral("0"));
        EXPECT_EQ(up.toULongLong(), (1ull << type.bits) - 1);
    }
    EXPECT_EQ(COHelper::index2DataTypeString(120), QStringLiteral("VIS_STRING_NULL"));
    EXPECT_EQ(COHelper::index2DataTypeString(121), QStringLiteral("VIS_STRING_ASTERIKS"));
    EXPECT_EQ(COHelper::mapDataTypeString(QStringLiteral("UTF8_STRING")), 124);
}

TEST(COHelperDataTypes, NameLookupIsLenientAndRoundTripsUnnamedNumbers)
{
    const struct
    {
        const char* text;
        quint16 expected;
    } cases[] = {
        {"unsigned8", 5}, {" Integer16 ", 3}, {"0x0007", 7},
        {"0007", 7},      {"VIS_STRING", 9},  {"UNSIGNED99", 0},
        {"", 0},          {"0x1FFFF", 0},     {"garbage", 0},
    };
    for (const auto& entry : cases)
        EXPECT_EQ(COHelper::mapDataTypeString(QLatin1String(entry.text)), entry.expected) << entry.text;
    EXPECT_EQ(COHelper::index2DataTypeString(0), QStringLiteral("UNKNOWN"));
    EXPECT_EQ(COHelper::mapDataTypeString(COHelper::index2DataTypeString(0x40)), 0x40);
}

// Numbers that no table knows, as they come from damaged device files: no
// size, no range, no short name, and a name that leads back to the number.
TEST(COHelperDataTypes, UnknownNumbersHaveNoSizeRangeOrShortName)
{
    for (quint16 number :
         {quint16(0), quint16(0x0E), quint16(0x41), quint16(113), quint16(0x7777), quint16(0xFFFF)}) {
        SCOPED_TRACE(number);
        const auto dataType = CAN::CANopenDataType(number);
        EXPECT_EQ(COHelper::getDataLengthBits(dataType), 0);
        QString low = QStringLiteral("untouched");
        QString up = low;
        EXPECT_FALSE(COHelper::getDefaultLimits(dataType, low, up));
        EXPECT_EQ(low, QStringLiteral("untouched"));
        EXPECT_EQ(up, QStringLiteral("untouched"));
        EXPECT_EQ(COHelper::index2DataTypeShortString(number), QString());
        EXPECT_EQ(COHelper::mapDataTypeString(COHelper::index2DataTypeString(number)), dataType);
    }
}

TEST(COHelperAccessTypes, NormalisedToTheCanonicalWords)
{
    const struct
    {
        const char* given;
        const char* canonical;
    } cases[] = {
        {"RO", "ro"},
        {" rw ", "rw"},
        {"RWR", "rwr"},
        {"rww", "rww"},
        {"Const", "const"},
        {"WO", "wo"},
        {"read-only", "ro"},
        {"ReadWrite", "rw"},
        {"readWriteInput", "rwr"},
        {"readWriteOutput", "rww"},
        {"", ""},
        {"Strange", "strange"},
    };
    for (const auto& entry : cases)
        EXPECT_EQ(COHelper::normalizeAccessType(QLatin1String(entry.given)), QLatin1String(entry.canonical))
            << entry.given;
}

TEST(COHelperObjectCodes, WordsAndNumbersOfCiA301)
{
    const struct
    {
        const char* word;
        int code;
    } codes[] = {{"NULL", 0}, {"DOMAIN", 2}, {"DEFTYPE", 5}, {"DEFSTRUCT", 6},
                 {"VAR", 7},  {"ARRAY", 8},  {"RECORD", 9}};
    for (const auto& entry : codes) {
        SCOPED_TRACE(entry.word);
        bool ok = false;
        EXPECT_EQ(COHelper::string2objectCode(QLatin1String(entry.word), &ok), entry.code);
        EXPECT_TRUE(ok);
        EXPECT_EQ(COHelper::objectCode2String(CANopen::ObjectCode(entry.code)), QLatin1String(entry.word));
        EXPECT_EQ(COHelper::string2objectCode(QStringLiteral("0x%1").arg(entry.code)), entry.code);
    }
    bool ok = false;
    EXPECT_EQ(COHelper::string2objectCode(QStringLiteral(" variable "), &ok), CANopen::Var);
    EXPECT_TRUE(ok);
    for (const char* unknown : {"4", "STRUCT", ""}) {
        EXPECT_EQ(COHelper::string2objectCode(QLatin1String(unknown), &ok), CANopen::Var);
        EXPECT_FALSE(ok) << unknown;
    }
}

TEST(COHelperNumbers, DecimalOrHexadecimalNeverOctal)
{
    const struct
    {
        const char* text;
        bool ok;
        quint64 value;
    } cases[] = {{"010", true, 10}, {"0x10", true, 16}, {"0X1f", true, 31}, {" 7 ", true, 7},
                 {"", false, 0},    {"0x", false, 0},   {"12a", false, 0},  {"$NODEID", false, 0}};
    for (const auto& entry : cases) {
        bool ok = !entry.ok;
        const quint64 value = COHelper::parseUnsigned(QString::fromLatin1(entry.text), &ok);
        EXPECT_EQ(ok, entry.ok) << entry.text;
        EXPECT_EQ(ok ? value : 0, entry.value) << entry.text;
    }
}
