#include "database/objectdatabase.h"
#include "projectfile.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <functional>

namespace {

using Kind = ObjectDataBase::ChangeSet::Kind;

class SettingsTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(db.createNewDataBase()); }

    ObjectDataBase db;
};

TEST_F(SettingsTest, AbsentKeysReadEmpty)
{
    EXPECT_EQ(db.getGeneralSetting("canfd_supported"), "");
    EXPECT_FALSE(db.hasGeneralSetting("canfd_supported"));
    EXPECT_EQ(db.getJ1939Setting("bamsupport"), "");
    EXPECT_EQ(db.getEnergyBusSetting("device_cnt"), "");
    EXPECT_EQ(db.getGeneralSettingForLine("nmtmaster", 4), "");
}

struct ForLineReadCase
{
    const char* stored;
    quint8 line;
    const char* expected;
};

class ForLineReadTest : public SettingsTest, public ::testing::WithParamInterface<ForLineReadCase>
{
};

TEST_P(ForLineReadTest, EntryOfTheLineOrTheLastOne)
{
    const ForLineReadCase& c = GetParam();
    db.setGeneralSetting("nmtmaster", c.stored);
    db.setJ1939Setting("startaddress", c.stored);
    EXPECT_EQ(db.getGeneralSettingForLine("nmtmaster", c.line), c.expected);
    EXPECT_EQ(db.getJ1939SettingForLine("startaddress", c.line), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Lists, ForLineReadTest,
                         ::testing::Values(ForLineReadCase{"1,0", 3, "0"}, ForLineReadCase{"1,0", 0, "1"},
                                           ForLineReadCase{"5", 2, "5"}, ForLineReadCase{"a,,c", 1, ""},
                                           ForLineReadCase{"1, 2", 1, " 2"}, ForLineReadCase{"1,2,", 7, ""}));

struct ForLineWriteCase
{
    const char* stored;
    quint8 line;
    const char* value;
    const char* expected;
};

class ForLineWriteTest : public SettingsTest, public ::testing::WithParamInterface<ForLineWriteCase>
{
};

TEST_P(ForLineWriteTest, ListGrowsWithBlanks)
{
    const ForLineWriteCase& c = GetParam();
    if (*c.stored)
        db.setGeneralSetting("co_node_id", c.stored);
    ASSERT_TRUE(db.setGeneralSettingForLine("co_node_id", c.value, c.line));
    EXPECT_EQ(db.getGeneralSetting("co_node_id"), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Lists, ForLineWriteTest,
                         ::testing::Values(ForLineWriteCase{"", 2, "value", " , ,value"},
                                           ForLineWriteCase{"", 0, "5", "5"},
                                           ForLineWriteCase{"1", 0, "2", "2"},
                                           ForLineWriteCase{"1,2,3", 1, "x", "1,x,3"},
                                           ForLineWriteCase{"1", 3, "x", "1, , ,x"}));

struct SetterCase
{
    const char* table;
    std::function<bool(ObjectDataBase&, QString, QString)> set;
    std::function<QString(ObjectDataBase&, QString)> get;
    bool acceptsApostrophe;
    bool notifiesUnchanged;
};

class SetterTest : public SettingsTest, public ::testing::WithParamInterface<SetterCase>
{
};

TEST_P(SetterTest, QuotingAndUnchangedWrites)
{
    const SetterCase& c = GetParam();
    ChangeRecorder recorder(db);

    EXPECT_EQ(c.set(db, "quoted", "it's"), c.acceptsApostrophe);
    EXPECT_EQ(c.get(db, "quoted"), c.acceptsApostrophe ? "it's" : "");

    ASSERT_TRUE(c.set(db, "key", "1"));
    const int afterFirst = recorder.changes.size();
    EXPECT_EQ(recorder.kinds().last(), Kind::SettingChanged);
    ASSERT_TRUE(c.set(db, "key", "1"));
    EXPECT_EQ(recorder.changes.size() - afterFirst, c.notifiesUnchanged ? 1 : 0);
    ASSERT_TRUE(c.set(db, "key", "2"));
    EXPECT_EQ(c.get(db, "key"), "2");

    ASSERT_TRUE(c.set(db, "empty", ""));
    QSqlQuery query(db.database());
    query.exec(QStringLiteral("select value from %1 where item = 'empty'").arg(c.table));
    ASSERT_TRUE(query.next()) << "the empty value is a stored row";
    EXPECT_FALSE(query.value(0).isNull());
}

INSTANTIATE_TEST_SUITE_P(
    Tables, SetterTest,
    ::testing::Values(SetterCase{"GeneralSettings", &ObjectDataBase::setGeneralSetting,
                                 &ObjectDataBase::getGeneralSetting, false, false},
                      SetterCase{"EnergyBusSettings", &ObjectDataBase::setEnergyBusSetting,
                                 &ObjectDataBase::getEnergyBusSetting, false, false},
                      SetterCase{"J1939Settings", &ObjectDataBase::setJ1939Setting,
                                 &ObjectDataBase::getJ1939Setting, true, false},
                      SetterCase{"MiscSettings", &ObjectDataBase::setMiscSetting,
                                 &ObjectDataBase::getMiscSetting, true, false},
                      SetterCase{"DescriptionSettings", &ObjectDataBase::setDescriptionSetting,
                                 &ObjectDataBase::getDescriptionSetting, true, true}));

TEST_F(SettingsTest, DescriptionKeysCarryTheCurrentLine)
{
    ASSERT_TRUE(db.addNode(2, NODE_DATA_T()));
    db.setDescriptionLine(0);
    db.setDescriptionSetting("Comment", "line zero");
    db.setDescriptionLine(2);
    db.setDescriptionSetting("Comment", "line two");
    EXPECT_EQ(db.getDescriptionSetting("Comment"), "line two");
    db.setDescriptionLine(0);
    EXPECT_EQ(db.getDescriptionSetting("Comment"), "line zero");

    QSqlQuery query(db.database());
    query.exec("select value from DescriptionSettings where item = 'Comment_2'");
    ASSERT_TRUE(query.next());
    EXPECT_EQ(query.value(0).toString(), "line two");
}

TEST_F(SettingsTest, DefaultDescriptionsAreWrittenInOrderAndKeepExistingValues)
{
    db.setDescriptionLine(3);
    db.setDescriptionSetting("VendorName", "halvex");
    db.setDefaultDescriptionSettings(3);
    EXPECT_EQ(db.descriptionLine(), 3);
    EXPECT_EQ(db.getDescriptionSetting("VendorName"), "halvex");
    EXPECT_EQ(db.getDescriptionSetting("BaudRate_250"), "1");

    QStringList keys;
    QSqlQuery query(db.database());
    query.exec("select item from DescriptionSettings where item like '%\\_3' escape '\\' order by rowid");
    while (query.next())
        keys.append(query.value(0).toString().chopped(2));
    const QStringList expected = {
        "VendorName",   "BaudRate_10",  "BaudRate_20",       "BaudRate_50", "BaudRate_125",  "BaudRate_250",
        "BaudRate_500", "BaudRate_800", "BaudRate_1000",     "Dummy0001",   "Dummy0002",     "Dummy0003",
        "Dummy0004",    "Dummy0005",    "Dummy0006",         "Dummy0007",   "LSS_Supported", "SelfStarting",
        "ProductName",  "CreatedBy",    "ModifiedBy",        "FileVersion", "FileRevision",  "OrderCode",
        "Granularity",  "Comment",      "AdditionalSections"};
    EXPECT_EQ(keys, expected);
}

TEST_F(SettingsTest, AddedLinesButTheScratchLineExtendThePerLineLists)
{
    db.setGeneralSetting("nmtmaster", "1");
    db.setGeneralSetting("co_node_id", "5,6");
    db.setGeneralSetting("user_defines", "A");
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    ASSERT_TRUE(db.addNode(2, NODE_DATA_T()));
    EXPECT_EQ(db.getGeneralSetting("nmtmaster"), "1,1,1");
    EXPECT_EQ(db.getGeneralSetting("co_node_id"), "5,6,6");
    EXPECT_EQ(db.getGeneralSetting("user_defines"), "A") << "not a per-line key";
    EXPECT_FALSE(db.hasGeneralSetting("isotp_client_con"));

    ASSERT_TRUE(db.addNode(254, NODE_DATA_T()));
    EXPECT_EQ(db.getGeneralSetting("nmtmaster"), "1,1,1") << "the scratch line is no line of the device";
    db.setDescriptionLine(254);
    EXPECT_FALSE(db.hasDescriptionSetting("Comment"));
}

TEST_F(SettingsTest, OpenCutsPerLineListsToTheLines)
{
    QTemporaryDir dir;
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    db.setGeneralSetting("line0type", "1");
    db.setGeneralSetting("line1type", "1");
    db.setGeneralSetting("nmtmaster", "1,0,1,1");
    db.setGeneralSetting("user_defines", "A,B,C,D");
    // A write into a line that doesn't exist yet is taken as it is.
    ASSERT_TRUE(db.setGeneralSettingForLine("co_node_id", "9", 5));
    EXPECT_EQ(db.getGeneralSetting("co_node_id"), " , , , , ,9");
    ASSERT_TRUE(db.saveDatabase(dir.filePath("project.trwp")));

    ObjectDataBase reopened;
    ASSERT_TRUE(reopened.openDataBase(dir.filePath("project.trwp"), true));
    EXPECT_EQ(reopened.getGeneralSetting("nmtmaster"), "1,0");
    EXPECT_EQ(reopened.getGeneralSetting("co_node_id"), " , ");
    EXPECT_EQ(reopened.getGeneralSetting("user_defines"), "A,B,C,D");
    EXPECT_FALSE(reopened.hasGeneralSetting("receivebuffersize"));
}

TEST_F(SettingsTest, EnergyBusKeysCanBeListedAndDeleted)
{
    db.setEnergyBusSetting("device_cnt", "2");
    db.setEnergyBusSetting("device_1", "bat");
    QStringList keys = db.getEnergyBusSettingKeys();
    keys.sort();
    EXPECT_EQ(keys, (QStringList{"device_1", "device_cnt"}));
    EXPECT_TRUE(db.hasEnergyBusSetting("device_1"));
    ASSERT_TRUE(db.deleteEnergyBusSetting("device_1"));
    EXPECT_FALSE(db.hasEnergyBusSetting("device_1"));
    EXPECT_EQ(db.getEnergyBusSettingKeys(), QStringList{"device_cnt"});
}

TEST_F(SettingsTest, RemovingLineZeroEmptiesEveryList)
{
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    db.setGeneralSetting("static_memory_specifier", "far");
    db.setJ1939Setting("startaddress", "128,129");
    ASSERT_TRUE(db.deleteNode(0));
    EXPECT_EQ(db.getGeneralSetting("static_memory_specifier"), "");
    EXPECT_TRUE(db.hasGeneralSetting("static_memory_specifier"));
    EXPECT_EQ(db.getJ1939Setting("startaddress"), "129");
}

} // namespace
