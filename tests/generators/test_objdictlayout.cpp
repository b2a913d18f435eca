#include "generators/canopen/objdictlayout.h"

#include <gtest/gtest.h>

namespace {

SUBINDEX_DATA_T entry(int dataType, int implementation, const QString& defaultValue, bool shared = false)
{
    SUBINDEX_DATA_T sub;
    sub.datatype = dataType;
    sub.implementation = implementation;
    sub.defaultvalue = defaultValue;
    sub.sharedlines = shared;
    return sub;
}

ObjDictLayout::Object object(quint16 index, const QList<SUBINDEX_DATA_T>& subs)
{
    ObjDictLayout::Object result;
    result.index = index;
    for (qsizetype i = 0; i < subs.size(); ++i)
        result.subindices << quint8(i);
    result.subs = subs;
    return result;
}

// Two lines that receive the same mapping of a shared managed variable, so
// that line 1's RPDO must use line 0's table.
ObjDictLayout::Dictionary twoLines()
{
    ObjDictLayout::Dictionary dictionary;
    for (quint8 line : {0, 1}) {
        const bool shared = line == 1;
        dictionary[line] = {
            object(0x1000, {entry(CAN::Unsigned32, CANopen::ManagedConst, QStringLiteral("0x191"))}),
            object(0x1400, {entry(CAN::Unsigned8, CANopen::ManagedConst, QStringLiteral("2")),
                            entry(CAN::Unsigned32, CANopen::ManagedConst, QStringLiteral("$NODEID+0x200"))}),
            object(0x1600, {entry(CAN::Unsigned8, CANopen::ManagedConst, QStringLiteral("1")),
                            entry(CAN::Unsigned32, CANopen::ManagedConst, QStringLiteral("0x20000008"))}),
            object(0x2000, {entry(CAN::Unsigned8, CANopen::ManagedVariable, QStringLiteral("5"), shared)}),
            object(0x2001, {entry(CAN::Unsigned8, CANopen::ManagedVariable, QStringLiteral("5"))}),
            object(0x2002, {entry(CAN::Unsigned16, CANopen::ApplicationVariable, QStringLiteral("7"))}),
        };
    }
    return dictionary;
}

quint32 key(quint8 line, quint16 index)
{
    return objectKey(line, index, 0);
}

TEST(ObjDictLayout, SlotsRowsAndSharedReceiveTables)
{
    ObjDictLayout::Options options;
    options.multiLine = true;
    const ObjDictLayout layout(twoLines(), options);

    struct Slot
    {
        const char* what;
        int slot;
        int expected;
    };
    const Slot cases[] = {
        {"first managed UNSIGNED8", layout.varSlot(key(0, 0x2000)), 0},
        {"second managed UNSIGNED8", layout.varSlot(key(0, 0x2001)), 1},
        {"shared object has no slot of its own", layout.varSlot(key(1, 0x2000)), 0},
        {"line 1 continues the table", layout.varSlot(key(1, 0x2001)), 2},
        {"application variables have their own table", layout.varSlot(key(1, 0x2002)), 1},
        {"equal constants share an entry", layout.constSlot(key(1, 0x2001)),
         layout.constSlot(key(0, 0x2000))},
        {"line 1 assign rows follow line 0", layout.firstAssignRow(1), 6},
        {"line 1 descriptions follow line 0's", layout.descriptionStart(1, 0x1000), 8},
        {"shared object isn't described on line 1", layout.lineDescriptionCount(1), 7},
    };
    for (const Slot& slot : cases)
        EXPECT_EQ(slot.slot, slot.expected) << slot.what;
    EXPECT_EQ(layout.managedKeys(CAN::GroupU8).size(), 3);
    EXPECT_TRUE(layout.hasTable(QStringLiteral("od_ptr_u16")));
    EXPECT_FALSE(layout.hasTable(QStringLiteral("od_u16")));

    ASSERT_EQ(layout.mappingTables().size(), 2);
    EXPECT_EQ(layout.mappingTableOf(QStringLiteral("mapTableRPDO0_1")), QStringLiteral("mapTableRPDO0_1"));
    EXPECT_EQ(layout.mappingTableOf(QStringLiteral("mapTableRPDO1_1")), QStringLiteral("mapTableRPDO0_1"));
    EXPECT_TRUE(layout.mappingTables().at(0).body.contains(QStringLiteral("{&od_u8[0], 8u, CO_TRUE")));
}

} // namespace
