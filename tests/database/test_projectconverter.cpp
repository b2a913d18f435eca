#include "database/objectdatabase.h"
#include "database/projectconverter.h"
#include "j1939testdata.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const QString groupFilterDefine =
    QStringLiteral("\n\n /* old group filter setting */\n#define CO_DRV_GROUP_FILTER 1u\n");

class ProjectConversion : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(db.createNewDataBase()); }

    QString general(const char* key) { return db.getGeneralSetting(QString::fromLatin1(key)); }
    void setGeneral(const char* key, const QString& value)
    {
        db.setGeneralSetting(QString::fromLatin1(key), value);
    }

    ObjectDataBase db;
    ProjectConverter converter{&db};
};

TEST_F(ProjectConversion, GenericCorrectionRetiresTheGroupFilterAndRaisesTheUdsServerVersion)
{
    struct Case
    {
        QString groupFilter;
        QString udsVersion;
        QString expectedGroupFilter;
        QString expectedDefines;
        QString expectedUdsVersion;
    };
    const Case cases[] = {
        {"1", "5", "0", "#define X 1" + groupFilterDefine, "6"},
        {"0x1", "0x5", "0", "#define X 1" + groupFilterDefine, "0x5"},
        {"0", "4", "0", "#define X 1", "4"},
        {"2", "", "2", "#define X 1", ""},
    };
    for (const Case& c : cases) {
        setGeneral("drv_group_filter", c.groupFilter);
        setGeneral("hw_defines", QStringLiteral("#define X 1"));
        setGeneral("udsserver_version", c.udsVersion);

        EXPECT_TRUE(converter.doGenericCorrection());
        EXPECT_EQ(general("drv_group_filter"), c.expectedGroupFilter) << c.groupFilter.toStdString();
        EXPECT_EQ(general("hw_defines"), c.expectedDefines) << c.groupFilter.toStdString();
        EXPECT_EQ(general("udsserver_version"), c.expectedUdsVersion) << c.udsVersion.toStdString();

        // A second open finds nothing left to correct.
        EXPECT_TRUE(converter.doGenericCorrection());
        EXPECT_EQ(general("hw_defines"), c.expectedDefines) << c.groupFilter.toStdString();
    }
}

TEST_F(ProjectConversion, SettingsCorrectionMovesOldMasterSlaveListsAndEnablesUsdoWithConnections)
{
    struct Case
    {
        QString masterSlave;
        QString serverEnabled;
        QString serverCount;
        QString expectedNmtMaster;
        QString expectedMasterSlave;
        QString expectedServerEnabled;
    };
    const Case cases[] = {
        {"1,0", "0", "2", "1,0", "", "1"},
        {"1", "", "1", "0", "1", "1"},
        {"", "0", "0", "0", "", "0"},
        {"", "1", "3", "0", "", "1"},
    };
    for (const Case& c : cases) {
        setGeneral("nmtmaster", QStringLiteral("0"));
        setGeneral("co_ml_ms", c.masterSlave);
        setGeneral("usdo_server_enabled", c.serverEnabled);
        setGeneral("usdo_server_cnt", c.serverCount);
        setGeneral("usdo_client_enabled", QStringLiteral("0"));
        setGeneral("usdo_client_cnt", c.serverCount);

        EXPECT_TRUE(converter.doSettingsCorrection());
        const std::string label = (c.masterSlave + "/" + c.serverEnabled + "/" + c.serverCount).toStdString();
        EXPECT_EQ(general("nmtmaster"), c.expectedNmtMaster) << label;
        EXPECT_EQ(general("co_ml_ms"), c.expectedMasterSlave) << label;
        EXPECT_EQ(general("usdo_server_enabled"), c.expectedServerEnabled) << label;
        EXPECT_EQ(general("usdo_client_enabled").toInt(), c.serverCount.toInt() != 0 ? 1 : 0) << label;
    }
}

TEST_F(ProjectConversion, SettingsCorrectionMakesTheErrorHistoryCountManagedOnEveryLine)
{
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    SUBINDEX_DATA_T sub0;
    sub0.implementation = 1;
    sub0.defaultvalue = QStringLiteral("0");
    ASSERT_TRUE(db.addIndex(1, 0x1032, INDEX_DATA_T()));
    ASSERT_TRUE(db.addSubIndex(1, 0x1032, 0, sub0));

    EXPECT_TRUE(converter.doSettingsCorrection());

    SUBINDEX_DATA_T read;
    ASSERT_TRUE(db.getSubIndex(1, 0x1032, 0, read));
    EXPECT_EQ(read.implementation, 0);
    EXPECT_EQ(read.defaultvalue, QStringLiteral("0"));
    EXPECT_FALSE(db.subIndexExists(0, 0x1032, 0));
}

TEST_F(ProjectConversion, SettingsCorrectionTakesTheStackPathFromTheUserSettingsOnlyWhenTheProjectHasNone)
{
    QTemporaryDir userDir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, userDir.path());
    {
        QSettings user(QCoreApplication::organizationName(), qApp->property("AppNameWithVersion").toString());
        user.setValue(QStringLiteral("General/costackpath"), QStringLiteral("/opt/stack"));
    }

    EXPECT_TRUE(converter.doSettingsCorrection());
    EXPECT_EQ(db.getMiscSetting(QStringLiteral("costackpath")), QStringLiteral("/opt/stack"));

    db.setMiscSetting(QStringLiteral("costackpath"), QStringLiteral("../stack"));
    EXPECT_TRUE(converter.doSettingsCorrection());
    EXPECT_EQ(db.getMiscSetting(QStringLiteral("costackpath")), QStringLiteral("../stack"));
}

TEST_F(ProjectConversion, J1939CorrectionFoldsTheDataPageIntoThePgnNumberAndSetsOldSafetyTypes)
{
    using namespace j1939testdata;
    ObjectDataBase::PGN paged = pgn(ObjectDataBase::Transmit, QStringLiteral("paged"));
    paged.edp_dp_key = 1;
    paged.FD_TrailerFormat = 0;
    ASSERT_TRUE(db.addPGN(0, 0xF004, paged));
    ASSERT_TRUE(db.addSPN(0, 0xF004, ObjectDataBase::Transmit, 190, spn(1, 6, 16, QStringLiteral("speed"))));
    ASSERT_TRUE(db.addSPN(0, 0xF004, ObjectDataBase::Transmit, 899, spn(0, 102, 4, QStringLiteral("mode"))));
    ObjectDataBase::PGN oldSafety = pgn(ObjectDataBase::Receive, QStringLiteral("old safety"));
    oldSafety.FD_TrailerFormat = 1;
    oldSafety.safetytype = 0;
    ASSERT_TRUE(db.addPGN(0, 0xFF00, oldSafety));
    ObjectDataBase::PGN otherTrailer = oldSafety;
    otherTrailer.FD_TrailerFormat = 2;
    ASSERT_TRUE(db.addPGN(0, 0xFF01, otherTrailer));

    EXPECT_TRUE(converter.doJ1939Correction());

    EXPECT_EQ(db.getPGNList(0, ObjectDataBase::Transmit), QList<quint32>{0x1F004});
    ObjectDataBase::PGN folded;
    ASSERT_TRUE(db.getPGN(0, 0x1F004, ObjectDataBase::Transmit, folded));
    EXPECT_EQ(folded.edp_dp_key, 0);
    EXPECT_EQ(folded.name, QStringLiteral("paged"));
    EXPECT_EQ(db.getSPNList(0, 0x1F004, ObjectDataBase::Transmit), (QList<quint32>{899, 190}));
    EXPECT_TRUE(db.getSPNList(0, 0xF004, ObjectDataBase::Transmit).isEmpty());

    ObjectDataBase::PGN read;
    ASSERT_TRUE(db.getPGN(0, 0xFF00, ObjectDataBase::Receive, read));
    EXPECT_EQ(read.safetytype, 1);
    ASSERT_TRUE(db.getPGN(0, 0xFF01, ObjectDataBase::Receive, read));
    EXPECT_EQ(read.safetytype, 0);
}

TEST_F(ProjectConversion, CanDeviceCorrectionDropsOnlyTheTransmittedAddressClaim)
{
    using namespace j1939testdata;
    ASSERT_TRUE(db.addPGN(0, 60928, pgn(ObjectDataBase::Transmit, QStringLiteral("Address Claiming"))));
    ASSERT_TRUE(db.addPGN(0, 60928, pgn(ObjectDataBase::Receive, QStringLiteral("claims of others"))));

    EXPECT_TRUE(converter.doCanDeviceCorrection());

    EXPECT_FALSE(db.pgnExists(0, 60928, ObjectDataBase::Transmit));
    EXPECT_TRUE(db.pgnExists(0, 60928, ObjectDataBase::Receive));
}

} // namespace
