#include "canopenlib/cohelper.h"

#include <QList>

#include <gtest/gtest.h>

namespace {

// Every number the table knows, found through its name.
QList<quint16> tableNumbers()
{
    QList<quint16> numbers;
    for (int number = 1; number <= 0xFF; ++number) {
        if (!COHelper::index2DataTypeString(quint16(number)).startsWith(QLatin1String("0x")))
            numbers << quint16(number);
    }
    return numbers;
}

// The bits a value of a table of the dictionary holds.
int groupBits(CAN::ValueGroup group)
{
    static const int bits[] = {8, 16, 24, 32, 40, 48, 64, 8, 16, 24, 32, 32};
    return bits[group];
}

bool isSignedGroup(CAN::ValueGroup group)
{
    return group >= CAN::GroupI8 && group <= CAN::GroupI32;
}

bool isWideGroup(CAN::ValueGroup group)
{
    return group == CAN::GroupU24 || group == CAN::GroupU40 || group == CAN::GroupU48 ||
           group == CAN::GroupU64 || group == CAN::GroupI24;
}

} // namespace

TEST(DataTypeTable, KnowsTheStandardAndTheToolsOwnNumbers)
{
    const QList<quint16> numbers = tableNumbers();
    EXPECT_EQ(numbers.size(), 49);
    for (quint16 number : {0x01, 0x07, 0x0F, 0x1B, 0x23, 100, 119, 124, 129})
        EXPECT_TRUE(numbers.contains(number)) << number;
    for (quint16 number : {0x0E, 0x17, 0x1C, 113, 122, 130})
        EXPECT_FALSE(numbers.contains(number)) << number;
}

// The columns of a row agree with each other: a value fits its table, the
// sign of the table is that of the type, and exactly the widths C has no
// type for carry an initialiser macro.
TEST(DataTypeTable, ColumnsOfEveryRowAgree)
{
    for (quint16 number : tableNumbers()) {
        SCOPED_TRACE(number);
        const auto type = CAN::CANopenDataType(number);
        const CAN::ValueGroup group = COHelper::valueGroup(number);
        const CAN::Signedness sign = COHelper::signedness(number);
        const int bits = COHelper::getDataLengthBits(type);
        QString low;
        QString up;
        const bool ranged = COHelper::getDefaultLimits(type, low, up);
        if (sign != CAN::NotInteger) {
            ASSERT_TRUE(ranged);
            EXPECT_EQ(low.startsWith(QLatin1Char('-')), sign == CAN::SignedInteger);
            EXPECT_GT(bits, 0);
        }
        if (sign == CAN::UnsignedInteger) {
            EXPECT_EQ(up.toULongLong(), bits == 64 ? ~0ull : (1ull << bits) - 1);
        }
        if (group != CAN::NoGroup) {
            EXPECT_LE(bits, groupBits(group));
            if (sign != CAN::NotInteger) {
                EXPECT_EQ(isSignedGroup(group), sign == CAN::SignedInteger);
            }
        }
        const QString macro = COHelper::wideIntegerMacro(number);
        EXPECT_EQ(!macro.isEmpty(), isWideGroup(group));
        if (!macro.isEmpty()) {
            EXPECT_EQ(macro, QStringLiteral("%1%2_SET").arg(isSignedGroup(group) ? 'I' : 'U').arg(bits));
        }
    }
}

TEST(DataTypeTable, UnknownNumbersHaveNoFacts)
{
    for (quint16 number : {0, 0x0E, 0x17, 200, 0xFFFF}) {
        EXPECT_EQ(COHelper::valueGroup(number), CAN::NoGroup);
        EXPECT_EQ(COHelper::signedness(number), CAN::NotInteger);
        EXPECT_TRUE(COHelper::wideIntegerMacro(number).isEmpty());
    }
}
