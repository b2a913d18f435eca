#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <gtest/gtest.h>

namespace {

// What each stored number means; 0 is an unset line and 3 was never a type.
const struct
{
    int type;
    bool canopen;
    bool j1939;
    bool rawCan;
} protocolsOfType[] = {
    {0, false, false, false},
    {Line::CANopen, true, false, false},
    {Line::J1939, false, true, false},
    {3, false, false, false},
    {Line::RawCan, false, false, true},
    {Line::CANopenJ1939, true, true, false},
    {Line::CANopenRawCan, true, false, true},
    {Line::J1939RawCan, false, true, true},
    {8, false, false, false},
};

} // namespace

TEST(LineTypes, EveryTypeCarriesItsProtocols)
{
    for (const auto& row : protocolsOfType) {
        SCOPED_TRACE(row.type);
        EXPECT_EQ(Line::carriesCANopen(row.type), row.canopen);
        EXPECT_EQ(Line::carriesJ1939(row.type), row.j1939);
        EXPECT_EQ(Line::carriesRawCan(row.type), row.rawCan);
    }
}

TEST(LineTypes, StoredAsDecimalTextUnderTheLinesKey)
{
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    EXPECT_EQ(db.lineType(3), 0);
    ASSERT_TRUE(db.setLineType(3, Line::J1939RawCan));
    EXPECT_EQ(db.getGeneralSetting(QStringLiteral("line3type")), QStringLiteral("7"));
    EXPECT_EQ(db.lineType(3), Line::J1939RawCan);
    db.setGeneralSetting(QStringLiteral("line4type"), QStringLiteral(" 6 "));
    EXPECT_EQ(db.lineType(4), Line::CANopenRawCan);
    db.setGeneralSetting(QStringLiteral("line5type"), QStringLiteral("x"));
    EXPECT_EQ(db.lineType(5), 0);
}
