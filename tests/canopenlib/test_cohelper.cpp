#include "canopenlib/cohelper.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace {

// The static data types of CiA 301 (object indices 0x0001 to 0x001B), with
// their sizes and value ranges as the standard defines them.
struct StandardType
{
    quint16 number;
    const char* name;
    quint8 bits;
    const char* low; // null: no numeric range
    const char* up;
};

const StandardType standardTypes[] = {
    {0x01, "BOOLEAN", 1, "0", "1"},
    {0x02, "INTEGER8", 8, "-128", "127"},
    {0x03, "INTEGER16", 16, "-32768", "32767"},
    {0x04, "INTEGER32", 32, "-2147483648", "2147483647"},
    {0x05, "UNSIGNED8", 8, "0", "255"},
    {0x06, "UNSIGNED16", 16, "0", "65535"},
    {0x07, "UNSIGNED32", 32, "0", "4294967295"},
    {0x08, "REAL32", 32, nullptr, nullptr},
    {0x09, "VISIBLE_STRING", 0, nullptr, nullptr},
    {0x0A, "OCTET_STRING", 0, nullptr, nullptr},
    {0x0B, "UNICODE_STRING", 0, nullptr, nullptr},
    {0x0C, "TIME_OF_DAY", 48, nullptr, nullptr},
    {0x0D, "TIME_DIFFERENCE", 48, nullptr, nullptr},
    {0x0F, "DOMAIN", 0, nullptr, nullptr},
    {0x10, "INTEGER24", 24, "-8388608", "8388607"},
    {0x11, "REAL64", 64, nullptr, nullptr},
    {0x12, "INTEGER40", 40, "-549755813888", "549755813887"},
    {0x13, "INTEGER48", 48, "-140737488355328", "140737488355327"},
    {0x14, "INTEGER56", 56, "-36028797018963968", "36028797018963967"},
    {0x15, "INTEGER64", 64, "-9223372036854775808", "9223372036854775807"},
    {0x16, "UNSIGNED24", 24, "0", "16777215"},
    {0x18, "UNSIGNED40", 40, "0", "1099511627775"},
    {0x19, "UNSIGNED48", 48, "0", "281474976710655"},
    {0x1A, "UNSIGNED56", 56, "0", "72057594037927935"},
    {0x1B, "UNSIGNED64", 64, "0", "18446744073709551615"},
    {0x20, "PDO_COMMUNICATION_PARAMETER", 0, nullptr, nullptr},
    {0x21, "PDO_MAPPING", 0, nullptr, nullptr},
    {0x22, "SDO_PARAMETER", 0, nullptr, nullptr},
    {0x23, "IDENTITY", 0, nullptr, nullptr},
};

// The tool's own numbers: unsigned bit fields of J1939 signals.
struct BitFieldType
{
    quint16 number;
    int bits;
};

const BitFieldType bitFieldTypes[] = {
    {100, 2},  {101, 3},  {102, 4},  {103, 5},  {104, 6},  {105, 7},  {106, 9},  {107, 10}, {108, 11},
    {109, 12}, {110, 13}, {111, 14}, {112, 15}, {117, 19}, {118, 18}, {119, 21}, {129, 29},
};

} // namespace

TEST(COHelperDataTypes, StandardTypesHaveTheirNamesSizesAndRanges)
{
    for (const StandardType& type : standardTypes) {
        SCOPED_TRACE(type.name);
        const auto dataType = CAN::CANopenDataType(type.number);
        EXPECT_EQ(COHelper::index2DataTypeString(type.number), QLatin1String(type.name));
        EXPECT_EQ(COHelper::mapDataTypeString(QLatin1String(type.name)), dataType);
        EXPECT_EQ(COHelper::getDataLengthBits(dataType), type.bits);

        QString low = QStringLiteral("untouched");
        QString up = QStringLiteral("untouched");
        const bool hasRange = COHelper::getDefaultLimits(dataType, low, up);
        if (type.low) {
            EXPECT_TRUE(hasRange);
            EXPECT_EQ(low, QLatin1String(type.low));
            EXPECT_EQ(up, QLatin1String(type.up));
        } else if (type.number != 0x08 && type.number != 0x11) {
            EXPECT_FALSE(hasRange);
            EXPECT_EQ(low, QStringLiteral("untouched"));
        }
    }
}

TEST(COHelperDataTypes, RealRangesAreSymmetricFloatingPointLimits)
{
    for (const auto type : {CAN::Real32, CAN::Real64}) {
        QString low, up;
        ASSERT_TRUE(COHelper::getDefaultLimits(type, low, up));
        bool lowOk = false, upOk = false;
        const double lowValue = low.toDouble(&lowOk);
        const double upValue = up.toDouble(&upOk);
        ASSERT_TRUE(lowOk && upOk);
        EXPECT_EQ(lowValue, -upValue);
        EXPECT_GT(upValue, type == CAN::Real32 ? 3.4e38 : 1.79e308);
    }
}

TEST(COHelperDataTypes, BitFieldTypesSpanTheirWidth)
{
    for (const BitFieldType& type : bitFieldTypes) {
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
}

TEST(COHelperDataTypes, StringTypesOfJ1939AndUtf8)
{
    const struct
    {
        quint16 number;
        const char* name;
    } strings[] = {{120, "VIS_STRING_NULL"}, {121, "VIS_STRING_ASTERIKS"}, {124, "UTF8_STRING"}};
    for (const auto& type : strings) {
        SCOPED_TRACE(type.name);
        EXPECT_EQ(COHelper::index2DataTypeString(type.number), QLatin1String(type.name));
        EXPECT_EQ(COHelper::mapDataTypeString(QLatin1String(type.name)), type.number);
        EXPECT_EQ(COHelper::getDataLengthBits(CAN::CANopenDataType(type.number)), 0);
    }
}

// The short words end up in the names of the stack's variable arrays and
// data type constants, such as mv_u8 and CO_DTYPE_VS.
TEST(COHelperDataTypes, ShortStringsNameTheStackTypes)
{
    const struct
    {
        quint16 number;
        const char* word;
    } words[] = {
        {1, "b"},    {2, "i8"},   {3, "i16"},  {4, "i32"}, {5, "u8"},    {6, "u16"},  {7, "u32"},
        {8, "r32"},  {9, "vs"},   {10, "os"},  {15, "d"},  {16, "i24"},  {22, "u24"}, {24, "u40"},
        {25, "u48"}, {27, "u64"}, {12, "u48"}, {0, ""},    {0x7777, ""},
    };
    for (const auto& entry : words)
        EXPECT_EQ(COHelper::index2DataTypeShortString(entry.number), QLatin1String(entry.word))
            << entry.number;
}

TEST(COHelperDataTypes, NameLookupIsLenientAndUnknownNamesGiveZero)
{
    const struct
    {
        const char* text;
        quint16 expected;
    } cases[] = {
        {"unsigned8", 5},  {" Integer16 ", 3}, {"0x0007", 7}, {"0X0009", 9},  {"27", 27}, {"0007", 7},
        {"VIS_STRING", 9}, {"UNSIGNED99", 0},  {"", 0},       {"0x1FFFF", 0}, {"-5", 0},  {"garbage", 0},
    };
    for (const auto& entry : cases)
        EXPECT_EQ(COHelper::mapDataTypeString(QLatin1String(entry.text)), entry.expected) << entry.text;
}

TEST(COHelperDataTypes, NumbersWithoutNameStayRecognisable)
{
    EXPECT_EQ(COHelper::index2DataTypeString(0), QStringLiteral("UNKNOWN"));
    EXPECT_EQ(COHelper::index2DataTypeString(0x40), QStringLiteral("0x0040"));
    EXPECT_EQ(COHelper::mapDataTypeString(COHelper::index2DataTypeString(0x40)), 0x40);
    EXPECT_EQ(COHelper::getDataLengthBits(CAN::CANopenDataType(0x40)), 0);
}

TEST(COHelperAccessTypes, NormalisedToTheCanonicalWords)
{
    const struct
    {
        const char* given;
        const char* canonical;
    } cases[] = {
        {"ro", "ro"},
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
        {"constant", "const"},
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
        EXPECT_EQ(COHelper::string2objectCode(QString::number(entry.code)), entry.code);
    }
}

TEST(COHelperObjectCodes, LenientSpellingsAndUnknownWords)
{
    bool ok = false;
    EXPECT_EQ(COHelper::string2objectCode(QStringLiteral("variable"), &ok), CANopen::Var);
    EXPECT_TRUE(ok);
    EXPECT_EQ(COHelper::string2objectCode(QStringLiteral(" record "), &ok), CANopen::Record);
    EXPECT_EQ(COHelper::string2objectCode(QStringLiteral("0x8"), &ok), CANopen::Array);
    EXPECT_TRUE(ok);
    EXPECT_EQ(COHelper::string2objectCode(QStringLiteral("4"), &ok), CANopen::Var);
    EXPECT_FALSE(ok);
    EXPECT_EQ(COHelper::string2objectCode(QStringLiteral("STRUCT"), &ok), CANopen::Var);
    EXPECT_FALSE(ok);
}

TEST(COHelperCategories, ThreeWordsAnyCase)
{
    EXPECT_EQ(COHelper::convertCategory(QStringLiteral("mandatory")), CANopen::Mandatory);
    EXPECT_EQ(COHelper::convertCategory(QStringLiteral("Optional")), CANopen::Optional);
    EXPECT_EQ(COHelper::convertCategory(QStringLiteral("CONDITIONAL")), CANopen::Conditional);
    EXPECT_EQ(COHelper::convertCategory(QStringLiteral("")), CANopen::Optional);
}

TEST(COHelperDisplayTexts, ImplementationsAndMappingsAreDistinct)
{
    EXPECT_EQ(COHelper::implementation2String(0), QStringLiteral("ManagedVariable"));
    EXPECT_EQ(COHelper::implementation2String(1), QStringLiteral("ManagedConst"));
    EXPECT_EQ(COHelper::implementation2String(2), QStringLiteral("Variable"));
    EXPECT_EQ(COHelper::implementation2String(3), QStringLiteral("VirtualObject"));

    QStringList mappings;
    for (quint8 value = 0; value <= PDOMapping::MappedByDefault; ++value)
        mappings.append(COHelper::pdoMapping2String(PDOMapping(PDOMapping::PDOMappingType(value))));
    mappings.removeDuplicates();
    EXPECT_EQ(mappings.size(), 5);
}

TEST(COHelperNumbers, DecimalOrHexadecimalNeverOctal)
{
    const struct
    {
        const char* text;
        bool ok;
        quint64 value;
    } cases[] = {{"10", true, 10},   {"010", true, 10}, {"0x10", true, 16},
                 {"0X1f", true, 31}, {" 7 ", true, 7},  {"", false, 0},
                 {"0x", false, 0},   {"12a", false, 0}, {"$NODEID", false, 0}};
    for (const auto& entry : cases) {
        bool ok = !entry.ok;
        const quint64 value = COHelper::parseUnsigned(QString::fromLatin1(entry.text), &ok);
        EXPECT_EQ(ok, entry.ok) << entry.text;
        if (entry.ok) {
            EXPECT_EQ(value, entry.value) << entry.text;
        }
    }
}
