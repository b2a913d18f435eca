#include "common/testhelpers.h"
#include "database/objectdatabase.h"
#include "projectfile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// A project in the shape that tools of the given format version wrote: the per-line tables lack the columns
// that later versions added, the sub-index table lacks its unique constraint.
QStringList oldProjectStatements(int version)
{
    const QString statements = QStringLiteral(R"(create table Strings (id integer primary key, string text)
insert into Strings values(1,'Device type')
create table Nodes (nodeId integer primary key, name text, edspath text, xddpath text)
insert into Nodes values(0,'old device','','')
create table GeneralSettings (item text unique, value text)
create table MiscSettings (item text unique, value text)
insert into MiscSettings values('DatabaseVersion','%1')
insert into MiscSettings values('CreateToolVersion','CANopen Tarnwick')
create table Connections (prodnode integer, prodindex integer, prodsub integer, connode integer, conindex integer, consub integer)
create table Objects0 (objectindex integer primary key, name integer, datatype integer not null, objecttype integer not null, description integer, category integer)
insert into Objects0 values(4096,1,7,7,0,0)
create table SubObjects0 (objectindex integer not null, subindex integer not null, name integer, datatype integer not null, accesstype text not null, defaultvalue text, currentvalue text, pdomapping integer, lowlimit text, uplimit text, size integer, defaultineds integer, limitineds integer, refuseread integer, refusewrite integer, allowedaccesstypes text, implementation integer not null, varname text, description integer, category integer, writedefaulttoeds integer, cyclicread integer, dcfcomponent integer, changedbyuser integer, wizardsource integer, denotation integer, sharedlines integer, managedbyobn integer, signalid integer, nvstorage integer, metadata blob)
insert into SubObjects0 values(4096,0,1,7,'ro','0x191','',0,'0','0',0,1,0,0,0,'ro',0,'devtype',0,0,1,0,0,0,0,0,0,0,0,0,0)
create table PGNs0 (number integer not null, edp_dp_key integer, priority integer, cycletime_ms integer, inhibittime_ms integer, mappingcount integer, direction integer, name integer, desc integer)
create table SPNs0 (pgnnumber integer not null, spnnumber integer not null, datatype integer, implementation integer, varname text, defaultvalue text, name integer, desc integer)
create table CANIDs0 (id integer not null, cycletime_ms integer, inhibittime_ms integer, mappingcount integer, direction integer, name integer, desc integer)
create table DataElements0 (canid integer not null, number integer not null, datatype integer, implementation integer, varname text, defaultvalue text, name integer, desc integer, pos integer, bitsize integer, direction integer)
create table UDSSettings0 (sid integer not null, active integer, sessions text, userlevels text, UNIQUE(sid))
insert into UDSSettings0 values(16,1,'1','')
)");
    return statements.arg(version).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

class LifecycleTest : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return m_dir.filePath(name); }

    // A new project with one object, one setting per table kind and a line type, saved under the name.
    QString savedProject(const QString& name)
    {
        ObjectDataBase db;
        EXPECT_TRUE(db.createNewDataBase());
        db.setGeneralSetting("line0type", "1");
        INDEX_DATA_T object;
        object.name = "Device type";
        db.addIndex(0, 0x1000, object);
        SUBINDEX_DATA_T sub;
        sub.defaultvalue = "0x191";
        db.addSubIndex(0, 0x1000, 0, sub);
        db.setJ1939Setting("bamsupport", "1");
        db.setEnergyBusSetting("device_cnt", "2");
        EXPECT_TRUE(db.saveDatabase(path(name)));
        return path(name);
    }

    QTemporaryDir m_dir;
};

TEST_F(LifecycleTest, NewProjectHasLineZeroToolKeysDefaultsAndBasicUdsServices)
{
    ObjectDataBase db;
    ChangeRecorder recorder(db);
    ASSERT_TRUE(db.createNewDataBase());

    EXPECT_EQ(db.getNodeList(), QList<quint8>{0});
    EXPECT_EQ(db.getMiscSetting("DatabaseVersion"), "107");
    EXPECT_EQ(db.getMiscSetting("CreateToolName"), QCoreApplication::applicationName());
    EXPECT_EQ(db.getMiscSetting("CreateToolVersion"), QCoreApplication::applicationVersion());
    EXPECT_FALSE(db.hasMiscSetting("SaveToolType"));
    EXPECT_EQ(db.getDescriptionSetting("OrderCode"), "0815-BUY-ME");

    NODE_DATA_T node;
    ASSERT_TRUE(db.getNode(0, node));
    EXPECT_TRUE(node.generatedcf);
    EXPECT_EQ(node.prefix, "_");
    EXPECT_TRUE(recorder.kinds().contains(ObjectDataBase::ChangeSet::NodeAdded));
    EXPECT_TRUE(recorder.kinds().contains(ObjectDataBase::ChangeSet::DatabaseReplaced));

    ASSERT_TRUE(db.saveDatabase(path("uds.trwp")));
    EXPECT_EQ(projectfile::dump(path("uds.trwp")).value("UDSSettings0"),
              (QStringList{"16|1|1||", "17|1|1||", "62|1|1||", "34|1|1||", "46|1|1||"}));
}

TEST_F(LifecycleTest, OpenAndSaveKeepEveryTableAndRow)
{
    const QString first = savedProject("first.trwp");
    ASSERT_TRUE(projectfile::execute(first, {"insert into Connections values(0,8192,1,0,8193,1,0)",
                                             "insert into LockedPDOs values(0,6144)",
                                             "insert into VirtualNodes values(1,0,0,'virtual')"}));
    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(first, true));
    ASSERT_TRUE(db.saveDatabase(path("second.trwp")));

    auto before = projectfile::dump(first);
    auto after = projectfile::dump(path("second.trwp"));
    // The direct inserts above changed the hashed content, so only the hash itself and its log may differ.
    const auto withoutHash = [](QStringList rows) {
        rows.erase(std::remove_if(rows.begin(), rows.end(),
                                  [](const QString& row) {
                                      return row.startsWith("FileHash|") || row.startsWith("TamperLog|");
                                  }),
                   rows.end());
        return rows;
    };
    before["MiscSettings"] = withoutHash(before["MiscSettings"]);
    after["MiscSettings"] = withoutHash(after["MiscSettings"]);
    EXPECT_EQ(before.keys(), after.keys());
    EXPECT_EQ(before, after);
    EXPECT_EQ(db.currentProjectPath(), path("second.trwp"));
}

TEST_F(LifecycleTest, SecondOpenChangesNothing)
{
    const QString project = savedProject("project.trwp");
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.openDataBase(project, true));
        EXPECT_FALSE(db.hashMismatch());
        ASSERT_TRUE(db.saveDatabase(path("once.trwp")));
    }
    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(path("once.trwp"), true));
    ASSERT_TRUE(db.saveDatabase(path("twice.trwp")));
    EXPECT_EQ(projectfile::dump(path("once.trwp")), projectfile::dump(path("twice.trwp")));
    EXPECT_FALSE(db.hasMiscSetting("TamperLog"));
}

TEST_F(LifecycleTest, OpeningNeverChangesTheProjectFile)
{
    const QString project = path("old.trwp");
    ASSERT_TRUE(projectfile::execute(project, oldProjectStatements(99)));
    const QByteArray before = testhelpers::readFile(project);
    const QDateTime modified = QFileInfo(project).lastModified();
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.openDataBase(project, true));
        db.setGeneralSetting("unsaved", "1");
        EXPECT_EQ(testhelpers::readFile(project), before);
    }
    EXPECT_EQ(testhelpers::readFile(project), before);
    EXPECT_EQ(QFileInfo(project).lastModified(), modified);
}

TEST_F(LifecycleTest, ChangedCellOutsideTheToolAddsOneTamperTimestamp)
{
    const QString project = savedProject("project.trwp");
    ASSERT_TRUE(projectfile::execute(project, {"update Nodes set name = 'edited' where nodeId = 0"}));

    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(project, true));
    EXPECT_TRUE(db.hashMismatch());
    const QString log = db.getMiscSetting("TamperLog");
    EXPECT_FALSE(log.isEmpty());
    EXPECT_FALSE(log.contains(';'));
    NODE_DATA_T node;
    ASSERT_TRUE(db.getNode(0, node));
    EXPECT_EQ(node.name, "edited");

    // A tool save takes the edit in; the next open finds nothing and keeps the log as it is.
    ASSERT_TRUE(db.saveDatabase(QString()));
    ObjectDataBase reopened;
    ASSERT_TRUE(reopened.openDataBase(project, true));
    EXPECT_FALSE(reopened.hashMismatch());
    EXPECT_EQ(reopened.getMiscSetting("TamperLog"), log);
}

// The log of earlier mismatches is outside the hash; a new one is appended after a semicolon.
TEST_F(LifecycleTest, TamperLogIsOutsideTheHashAndGrowsBySemicolons)
{
    const struct
    {
        QStringList edits;
        bool mismatch;
        const char* logStart;
    } cases[] = {
        {{"insert into MiscSettings values('TamperLog','earlier')"}, false, "earlier"},
        {{"insert into MiscSettings values('TamperLog','T1')", "update Objects0 set datatype = 6"},
         true,
         "T1;"},
    };
    for (const auto& c : cases) {
        const QString project = savedProject("project.trwp");
        ASSERT_TRUE(projectfile::execute(project, c.edits));
        ObjectDataBase db;
        ASSERT_TRUE(db.openDataBase(project, true));
        EXPECT_EQ(db.hashMismatch(), c.mismatch) << c.logStart;
        const QString log = db.getMiscSetting("TamperLog");
        EXPECT_TRUE(c.mismatch ? log.startsWith(c.logStart) : log == c.logStart) << log.toStdString();
    }
}

struct MigrationCase
{
    int version;
    bool uniqueSubObjects;
    bool bitposColumn;
    bool safetyColumns;
    bool authenticationColumn;
};

class MigrationTest : public LifecycleTest, public ::testing::WithParamInterface<MigrationCase>
{
};

TEST_P(MigrationTest, RepairsFollowTheStoredVersion)
{
    const MigrationCase& c = GetParam();
    const QString project = path("old.trwp");
    ASSERT_TRUE(projectfile::execute(project, oldProjectStatements(c.version)));

    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(project, true));
    ASSERT_TRUE(db.saveDatabase(path("saved.trwp")));
    const QString saved = path("saved.trwp");

    const QString subObjectsSql =
        projectfile::scalar(saved, "select sql from sqlite_master where name = 'SubObjects0'").toString();
    EXPECT_EQ(subObjectsSql.contains("UNIQUE"), c.uniqueSubObjects);
    EXPECT_EQ(projectfile::columns(saved, "DataElements0").contains("bitpos"), c.bitposColumn);
    const QStringList pgnColumns = projectfile::columns(saved, "PGNs0");
    EXPECT_EQ(pgnColumns.contains("safetytype"), c.safetyColumns);
    EXPECT_EQ(pgnColumns.contains("FD_DataID", Qt::CaseInsensitive), c.safetyColumns);
    EXPECT_EQ(projectfile::columns(saved, "UDSSettings0").contains("authentication"), c.authenticationColumn);

    // Repairs that do not depend on the version.
    EXPECT_TRUE(pgnColumns.contains("multisourceaddress"));
    EXPECT_EQ(projectfile::columns(saved, "Nodes").size(), 26);
    EXPECT_TRUE(projectfile::columns(saved, "Objects0").contains("metadata"));
    EXPECT_TRUE(projectfile::columns(saved, "SPNs0").contains("bitposition"));
    EXPECT_TRUE(projectfile::columns(saved, "Connections").contains("priority"));
    EXPECT_TRUE(projectfile::columns(saved, "Groups").contains("groupid"));
    for (const char* table : {"DescriptionSettings", "EnergyBusSettings", "J1939Settings", "VirtualNodes",
                              "SignalGroups", "Signals", "LockedMappings", "LockedPDOs"})
        EXPECT_FALSE(projectfile::columns(saved, table).isEmpty()) << table;

    EXPECT_EQ(projectfile::scalar(saved, "select value from MiscSettings where item = 'DatabaseVersion'"),
              "107");
    EXPECT_EQ(db.getGeneralSetting("line0type"), "1");
    SUBINDEX_DATA_T sub;
    ASSERT_TRUE(db.getSubIndex(0, 0x1000, 0, sub));
    EXPECT_EQ(sub.defaultvalue, "0x191");
    EXPECT_EQ(sub.name, "Device type");
    EXPECT_EQ(sub.varname, "devtype");
}

INSTANTIATE_TEST_SUITE_P(Versions, MigrationTest,
                         ::testing::Values(MigrationCase{99, true, true, true, true},
                                           MigrationCase{101, false, true, true, true},
                                           MigrationCase{105, false, false, true, true},
                                           MigrationCase{106, false, false, false, true},
                                           MigrationCase{107, false, false, false, false}));

TEST_F(LifecycleTest, LineWithoutServiceRowsGetsTheFullServiceTable)
{
    QStringList statements = oldProjectStatements(99);
    statements.removeLast();
    ASSERT_TRUE(projectfile::execute(path("old.trwp"), statements));
    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(path("old.trwp"), true));
    ASSERT_TRUE(db.saveDatabase(path("saved.trwp")));
    const QStringList rows = projectfile::dump(path("saved.trwp")).value("UDSSettings0");
    ASSERT_EQ(rows.size(), 17);
    EXPECT_EQ(rows.first(), "16|1|1,2,3,4||");
    EXPECT_EQ(rows.at(9), "49|1|1,2,3,4||");
    EXPECT_EQ(rows.at(10), "39|1|2,3,4||");
    EXPECT_EQ(rows.last(), "55|1|2,3,4||");
}

struct LineTypeCase
{
    const char* stored;
    const char* creator;
    int objects;
    int pgns;
    const char* expected;
};

class LineTypeTest : public LifecycleTest, public ::testing::WithParamInterface<LineTypeCase>
{
};

TEST_P(LineTypeTest, StoredLineTypeIsKeptAMissingOneDerived)
{
    const LineTypeCase& c = GetParam();
    QStringList statements = oldProjectStatements(107);
    if (*c.stored)
        statements << QStringLiteral("insert into GeneralSettings values('line0type','%1')").arg(c.stored);
    statements.replaceInStrings("'CANopen Tarnwick'", QStringLiteral("'%1'").arg(c.creator));
    statements << "delete from Objects0"
               << "insert into Objects0 values(16,0,7,7,0,0)";
    for (int i = 0; i < c.objects; ++i)
        statements << QStringLiteral("insert into Objects0 values(%1,0,7,7,0,0)").arg(0x2000 + i);
    for (int i = 0; i < c.pgns; ++i)
        statements << QStringLiteral("insert into PGNs0 values(%1,0,6,100,0,0,85,0,0)").arg(65280 + i);
    ASSERT_TRUE(projectfile::execute(path("typed.trwp"), statements));

    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(path("typed.trwp"), true));
    EXPECT_EQ(db.getGeneralSetting("line0type"), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Creators, LineTypeTest,
                         ::testing::Values(LineTypeCase{"", "CANopen Tarnwick", 0, 3, "1"},
                                           LineTypeCase{"", "J1939 Tarnwick", 3, 0, "2"},
                                           LineTypeCase{"", "4.3.2", 2, 1, "1"},
                                           LineTypeCase{"", "4.3.2", 1, 1, "2"},
                                           LineTypeCase{"", "", 0, 0, "2"},
                                           LineTypeCase{"4", "CANopen Tarnwick", 1, 0, "4"}));

// A failed open leaves the file as it was and a store that had a project open keeps it, edits included.
TEST_F(LifecycleTest, BadFilesFailToOpenAndChangeNeitherTheFileNorTheOpenProject)
{
    const QString project = savedProject("open.trwp");
    const QString notSqlite = path("text.trwp");
    testhelpers::writeFile(notSqlite, QByteArray("this is not a database, only some text\n").repeated(50));
    const QString empty = path("empty.trwp");
    testhelpers::writeFile(empty, QByteArray());
    const QString folder = path("folder.trwp");
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString noRows = path("norows.trwp");
    ASSERT_TRUE(projectfile::execute(noRows, {"create table Nodes (nodeId integer primary key, name text)",
                                              "create table MiscSettings (item text unique, value text)"}));
    const QString noNodes = path("nonodes.trwp");
    ASSERT_TRUE(
        projectfile::execute(noNodes, {"create table Strings (id integer primary key, string text)"}));

    int objects = 1;
    for (const QString& file : {notSqlite, empty, folder, noRows, noNodes, path("missing.trwp"), QString()}) {
        SCOPED_TRACE(file.toStdString());
        const QByteArray before = testhelpers::readFile(file);
        ObjectDataBase fresh;
        EXPECT_FALSE(fresh.openDataBase(file, true));
        EXPECT_TRUE(fresh.lastError().isEmpty());
        EXPECT_EQ(testhelpers::readFile(file), before);

        ObjectDataBase db;
        ASSERT_TRUE(db.openDataBase(project, true));
        db.setGeneralSetting("unsaved", "kept");
        EXPECT_FALSE(db.openDataBase(file, true));
        EXPECT_EQ(db.currentProjectPath(), project);
        INDEX_DATA_T object;
        ASSERT_TRUE(db.getIndex(0, 0x1000, object));
        EXPECT_EQ(object.name, "Device type");
        EXPECT_EQ(db.getGeneralSetting("unsaved"), "kept");
        ASSERT_TRUE(db.addIndex(0, quint16(0x2000 + objects), INDEX_DATA_T()));
        ASSERT_TRUE(db.saveDatabase(QString()));
        EXPECT_EQ(projectfile::scalar(project, "select count(*) from Objects0").toInt(), ++objects);
    }
    EXPECT_FALSE(QFileInfo::exists(path("missing.trwp")));
    EXPECT_TRUE(QFileInfo(folder).isDir());
}

TEST_F(LifecycleTest, SaveKeepsTheOldFileAsBackupAndFailsWhereItCannotWrite)
{
    const QString project = savedProject("project.trwp");
    const QByteArray first = testhelpers::readFile(project);
    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(project, true));
    db.setGeneralSetting("user_defines", "X");
    ASSERT_TRUE(db.saveDatabase(QString()));
    EXPECT_EQ(testhelpers::readFile(project + ".bak"), first);
    EXPECT_EQ(projectfile::scalar(project, "select value from GeneralSettings where item = 'user_defines'"),
              "X");
    EXPECT_EQ(projectfile::scalar(project, "select value from MiscSettings where item = 'SaveToolType'"),
              QCoreApplication::applicationName());
    EXPECT_FALSE(db.saveDatabase(path("no/such/folder/project.trwp")));
}

TEST_F(LifecycleTest, SaveDropsScratchLinesAndUnusedStrings)
{
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    ASSERT_TRUE(db.addNode(254, NODE_DATA_T()));
    ASSERT_TRUE(db.addNode(255, NODE_DATA_T()));
    INDEX_DATA_T object;
    object.name = "kept object";
    db.addIndex(0, 0x2000, object);
    object.name = "dropped object";
    db.addIndex(0, 0x2001, object);
    db.deleteIndex(0, 0x2001, false);
    ASSERT_TRUE(db.saveDatabase(path("project.trwp")));

    const auto tables = projectfile::dump(path("project.trwp"));
    EXPECT_EQ(tables.value("Nodes").size(), 1);
    EXPECT_FALSE(tables.contains("Objects254"));
    EXPECT_FALSE(tables.contains("UDSSettings255"));
    const QString strings = tables.value("Strings").join('\n');
    EXPECT_TRUE(strings.contains("kept object"));
    EXPECT_FALSE(strings.contains("dropped object"));
    INDEX_DATA_T read;
    ASSERT_TRUE(db.getIndex(0, 0x2000, read));
    EXPECT_EQ(read.name, "kept object");
}

TEST_F(LifecycleTest, ProfileDataFilesMarkSubIndicesAsWizardMade)
{
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    SUBINDEX_DATA_T sub;
    sub.changedbyuser = true;
    db.addSubIndex(0, 0x6000, 0, sub);
    ASSERT_TRUE(db.saveDatabase(path("profile.data")));
    EXPECT_EQ(projectfile::scalar(path("profile.data"), "select changedbyuser from SubObjects0").toInt(), 0);
    EXPECT_EQ(projectfile::scalar(path("profile.data"), "select wizardsource from SubObjects0").toInt(), 454);
}

TEST_F(LifecycleTest, RelativeEdsPathsOfTrwepProjectsBecomeAbsolute)
{
    const QString project = path("relative.trwep");
    QStringList statements = oldProjectStatements(107);
    statements << "update Nodes set edspath = 'eds/device.eds'";
    ASSERT_TRUE(projectfile::execute(project, statements));
    const QString previous = QDir::currentPath();
    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(project, true));
    QDir::setCurrent(previous);
    NODE_DATA_T node;
    ASSERT_TRUE(db.getNode(0, node));
    EXPECT_EQ(node.edspath, QFileInfo(m_dir.filePath("eds/device.eds")).absoluteFilePath());
}

TEST_F(LifecycleTest, WriteNotificationFollowsTheStatementVerb)
{
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    int writes = 0;
    QObject::connect(&db, &ObjectDataBase::databaseWriteExecuted, [&writes] { ++writes; });

    db.setGeneralSetting("a", "1");
    EXPECT_EQ(writes, 0) << "notification is off until switched on";
    db.setWriteNotification(true);
    db.getGeneralSetting("a");
    db.getIndexList(0, 0, quint32(-1));
    EXPECT_EQ(writes, 0);
    db.setGeneralSetting("a", "2");
    EXPECT_EQ(writes, 1);
    db.setGeneralSetting("b ' broken", "x'y");
    EXPECT_EQ(writes, 1) << "a failed statement is no write";
}

TEST_F(LifecycleTest, BlockHolderKeepsRunningStatements)
{
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    QList<bool> states;
    QObject::connect(&db, &ObjectDataBase::blockStateChanged,
                     [&states](bool blocked) { states.append(blocked); });
    db.setUpdatesBlocked(true);
    EXPECT_TRUE(db.setGeneralSetting("key", "value"));
    db.setUpdatesBlocked(false);
    EXPECT_EQ(states, (QList<bool>{true, false}));
    EXPECT_EQ(db.getGeneralSetting("key"), "value");
}

TEST_F(LifecycleTest, DestructionRemovesTheWorkingCopies)
{
    QString working;
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.createNewDataBase());
        working = db.database().databaseName();
        ASSERT_TRUE(QFileInfo::exists(working));
        EXPECT_TRUE(QFileInfo(working).fileName().startsWith("trwedatatemp_"));
    }
    EXPECT_FALSE(QFileInfo::exists(working));
}

TEST_F(LifecycleTest, StringPoolInternsOnceAndReadsUnknownIdsAsEmpty)
{
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    const int id = db.internString("Producer heartbeat time");
    EXPECT_GT(id, 0);
    EXPECT_EQ(db.internString("Producer heartbeat time"), id);
    EXPECT_EQ(db.stringById(id), "Producer heartbeat time");
    EXPECT_EQ(db.stringById(987654), "");

    const int quoted = db.internString("it's");
    EXPECT_EQ(db.stringById(quoted), "it's");
    db.loadStringPool();
    EXPECT_EQ(db.internString("it's"), quoted);
}

} // namespace
