#include "common/testhelpers.h"
#include "database/databasemodifier.h"
#include "database/objectdatabase.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class Modifier : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(db.createNewDataBase()); }

    QString writeFile(const QByteArray& content)
    {
        return testhelpers::writeFile(dir.filePath(QStringLiteral("changes.txt")), content);
    }

    QTemporaryDir dir;
    ObjectDataBase db;
    DatabaseModifier modifier{&db};
};

TEST_F(Modifier, FilesOfTenBytesOrLessAreRefusedAsAWhole)
{
    struct Case
    {
        QByteArray content;
        bool accepted;
    };
    const Case cases[] = {
        {"", false},           {"J1939Settings:a:1", true}, {"GeneralSettings:a:", true},
        {"0123456789", false}, {"0123456789A", true},
    };
    for (const Case& c : cases)
        EXPECT_EQ(modifier.setModifierFile(writeFile(c.content)), c.accepted) << c.content.size() << " bytes";
    EXPECT_FALSE(modifier.setModifierFile(dir.filePath(QStringLiteral("missing.txt"))));
}

TEST_F(Modifier, OnlyThreeFieldLinesOfTheTwoKnownTablesAreApplied)
{
    ASSERT_TRUE(modifier.setModifierFile(writeFile("# switch the run to the classic generators\n"
                                                   "\n"
                                                   "GeneralSettings:use_core_headers:classic\r\n"
                                                   "J1939Settings:startaddress:128\n"
                                                   "MiscSettings:x:1\n"
                                                   "GeneralSettings:hw_defines:#define A 1:2\n"
                                                   "GeneralSettings:nodeid\n"
                                                   "GeneralSettings: spaced : value \n")));
    EXPECT_TRUE(modifier.applyModifierFile());

    EXPECT_EQ(db.getGeneralSetting(QStringLiteral("use_core_headers")), QStringLiteral("classic"));
    EXPECT_EQ(db.getJ1939Setting(QStringLiteral("startaddress")), QStringLiteral("128"));
    EXPECT_FALSE(db.hasMiscSetting(QStringLiteral("x")));
    EXPECT_FALSE(db.hasGeneralSetting(QStringLiteral("hw_defines")));
    EXPECT_FALSE(db.hasGeneralSetting(QStringLiteral("nodeid")));
    EXPECT_EQ(db.getGeneralSetting(QStringLiteral(" spaced ")), QStringLiteral(" value "));
    EXPECT_TRUE(modifier.lastFailedLine().isEmpty());
}

TEST_F(Modifier, TheFirstRefusedSettingStopsTheFileAndKeepsWhatCameBefore)
{
    // GeneralSettings values are not quoted for SQL: an apostrophe makes the write fail.
    ASSERT_TRUE(modifier.setModifierFile(writeFile("GeneralSettings:first:1\n"
                                                   "GeneralSettings:second:it's\n"
                                                   "GeneralSettings:third:3\n")));
    EXPECT_FALSE(modifier.applyModifierFile());

    EXPECT_EQ(db.getGeneralSetting(QStringLiteral("first")), QStringLiteral("1"));
    EXPECT_FALSE(db.hasGeneralSetting(QStringLiteral("third")));
    EXPECT_EQ(modifier.lastFailedLine(), QStringLiteral("GeneralSettings:second:it's"));
}

TEST_F(Modifier, ApplyingLiftsTheRefusalOfWrites)
{
    ASSERT_TRUE(modifier.setModifierFile(writeFile("J1939Settings:startaddress:0x80\n")));
    db.setWritesRefused(true);
    EXPECT_TRUE(modifier.applyModifierFile());
    EXPECT_FALSE(db.writesRefused());
    EXPECT_EQ(db.getJ1939Setting(QStringLiteral("startaddress")), QStringLiteral("0x80"));
}

TEST_F(Modifier, WithoutAnAcceptedFileNothingIsApplied)
{
    EXPECT_FALSE(modifier.applyModifierFile());
    DatabaseModifier withoutDatabase;
    ASSERT_TRUE(withoutDatabase.setModifierFile(writeFile("GeneralSettings:a:1\n")));
    EXPECT_FALSE(withoutDatabase.applyModifierFile());
}

} // namespace
