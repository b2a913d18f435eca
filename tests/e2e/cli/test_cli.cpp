#include "common/cleanproject.h"
#include "common/testhelpers.h"
#include "database/objectdatabase.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

#include <unistd.h>

using testhelpers::lastLine;
using testhelpers::readFile;
using testhelpers::runTrw;
using testhelpers::writeFile;

namespace {

const QString usage = QStringLiteral(
    "CANopen Tarnwick 4.3.2 \n"
    "\t-dbmod\t\tApply a db modification. Only for internal use.\n"
    "\t-import\t\tSets an importfile. This argument is optional.\n"
    "\t-project\t\tSets the project file to use. This argument is mandatory.\n"
    "\t-s\t\tSaves the project file. Could be helpful in combination with import option.\n"
    "\t-save\t\tSaves the project file. Could be helpful in combination with import option.\n"
    "\t-stackpath\t\tSets the path to the stack. It is required for SRDO generation; otherwise optional.\n");

// A project with one CANopen line that passes the model check, saved as a .trwp file.
QString makeProject(const QString& dir, const QString& name = QStringLiteral("device.trwp"), int lineType = 1)
{
    const QString path = dir + QLatin1Char('/') + name;
    EXPECT_TRUE(cleanproject::saveCanopenProject(path, lineType));
    return path;
}

// Runs that end before a project is opened: the exit code and the whole output.
TEST(CommandLine, ArgumentErrorsAndHelp)
{
    const QString noProject =
        QStringLiteral("Project not given.\n") + usage + QStringLiteral("Error - No project specified.\n");
    const QString openFailed = QStringLiteral("Error - Open project failed.\n");
    const struct
    {
        QStringList args;
        int exitCode;
        QString out;
    } cases[] = {
        {{}, 4, usage + QStringLiteral("Error - Parameter error.\n")},
        // A -project in last position has no value and counts as absent.
        {{"-project"}, 2, noProject},
        {{"-save", "-project"}, 2, noProject},
        {{"-s"}, 2, noProject},
        // The value is taken even when it looks like an option.
        {{"-project", "-save"}, 3, openFailed},
        {{"-project", "/no/such/file.trwp", "-help"}, 0, usage},
        // --version ends the run like -help, which still wins over it.
        {{"--version", "-project", "/no/such/file.trwp"}, 0, QStringLiteral("trw 4.3.2\n")},
        {{"--version", "-help"}, 0, usage},
    };
    for (const auto& c : cases) {
        const auto r = runTrw(c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.args.join(' ').toStdString();
        EXPECT_EQ(r.out, c.out) << c.args.join(' ').toStdString();
    }
}

TEST(CommandLine, HelpWinsOverAValidProjectAndOpensNothing)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const QByteArray before = readFile(project);
    for (const QStringList& args :
         {QStringList{"-project", project, "-help"}, QStringList{"-help", "-project", project}}) {
        const auto r = runTrw(args);
        EXPECT_EQ(r.exitCode, 0);
        EXPECT_EQ(r.out, usage);
    }
    EXPECT_EQ(readFile(project), before);
    EXPECT_FALSE(QFile::exists(dir.path() + QStringLiteral("/__trwerrorlog.txt.bak")));
}

TEST(CommandLine, FirstProjectOccurrenceCounts)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const QString missing = dir.path() + QStringLiteral("/missing.trwp");

    auto r = runTrw({"-project", project, "-project", missing});
    EXPECT_EQ(r.exitCode, 0) << qPrintable(r.out);

    r = runTrw({"-project", missing, "-project", project});
    EXPECT_EQ(r.exitCode, 3);
    EXPECT_EQ(r.out, QStringLiteral("Error - Open project failed.\n"));
}

TEST(CommandLine, FirstRefusedImportStopsTheRun)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const QByteArray before = readFile(project);
    const QString x = dir.path() + QStringLiteral("/x.eds");
    const QString y = dir.path() + QStringLiteral("/y.eds");
    const auto r = runTrw({"-project", project, "-import", x, "-import", y, "-s"});
    EXPECT_EQ(r.exitCode, 5);
    EXPECT_EQ(r.out, QStringLiteral("Import failed: %1\nError - Import error.\n").arg(x));
    EXPECT_EQ(readFile(project), before) << "nothing is saved after a failed import";
}

// The rows of the two tables a modifier file can reach, as saved in a project file.
QStringList modifiableSettings(const QString& project)
{
    ObjectDataBase db;
    EXPECT_TRUE(db.openDataBase(project, true));
    QSqlQuery query(db.database());
    QStringList rows;
    for (const char* table : {"GeneralSettings", "J1939Settings"}) {
        EXPECT_TRUE(
            query.exec(QStringLiteral("select item, value from %1 order by item").arg(QLatin1String(table))));
        while (query.next())
            rows.append(QLatin1String(table) + QLatin1Char(':') + query.value(0).toString() +
                        QLatin1Char(':') + query.value(1).toString());
    }
    return rows;
}

TEST(CommandLine, MissingModifierFileChangesNothingAndTheRunGoesOn)
{
    QTemporaryDir dir;
    const QString plain = makeProject(dir.path(), QStringLiteral("plain.trwp"));
    const QString modified = makeProject(dir.path(), QStringLiteral("modified.trwp"));
    ASSERT_EQ(runTrw({"-project", plain, "-s"}).exitCode, 0);
    const auto r = runTrw({"-project", modified, "-dbmod", dir.filePath(QStringLiteral("none.txt")), "-s"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.out.contains(QStringLiteral("Generation finished.\n")));
    const QStringList expected = modifiableSettings(plain);
    EXPECT_TRUE(expected.contains(QStringLiteral("GeneralSettings:use_core_headers:V4")));
    EXPECT_EQ(modifiableSettings(modified), expected);
}

TEST(CommandLine, CleanRunPrintsTheCheckFrameAndKeepsTheLogAsBak)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const auto r = runTrw({"-project", project});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.out.startsWith(QStringLiteral("\nCheck of model consistency started\n")))
        << qPrintable(r.out);
    EXPECT_TRUE(r.out.contains(QStringLiteral("\nCheck of model consistency finished.\n\n")));
    EXPECT_TRUE(r.out.contains(QStringLiteral("Generation finished.\n")));
    EXPECT_EQ(lastLine(r.out), QStringLiteral("Generation completed."));
    EXPECT_FALSE(QFile::exists(dir.path() + QStringLiteral("/__trwerrorlog.txt")));
    EXPECT_TRUE(readFile(dir.path() + QStringLiteral("/__trwerrorlog.txt.bak"))
                    .startsWith("\nCheck of model consistency started\n"));
}

TEST(CommandLine, LinesWithoutTypeAreWarnedAboutPerLine)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path(), QStringLiteral("untyped.trwp"), 3);
    const auto r = runTrw({"-project", project});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.out.contains(QStringLiteral("Warning line type not set for line 0.\n")))
        << qPrintable(r.out);
}

TEST(CommandLine, SaveWritesTheForcedSettingsIntoTheFile)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const auto r = runTrw({"-project", project, "-stackpath", "/opt/stack", "-save"});
    EXPECT_EQ(r.exitCode, 0);
    ObjectDataBase db;
    ASSERT_TRUE(db.openDataBase(project, true));
    EXPECT_EQ(db.getGeneralSetting(QStringLiteral("use_core_headers")), QStringLiteral("V4"));
    EXPECT_EQ(db.getGeneralSetting(QStringLiteral("new_init_structure")), QStringLiteral("1"));
    EXPECT_EQ(db.getMiscSetting(QStringLiteral("costackpath")), QStringLiteral("/opt/stack"));
    EXPECT_TRUE(QFile::exists(project + QStringLiteral(".bak")));
}

TEST(CommandLine, McpAnywhereStartsTheServerAndLeavesOtherArgumentsAlone)
{
    const auto r = runTrw({"-project", "/no/such/file.trwp", "--mcp"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_FALSE(r.out.contains(QStringLiteral("Error -")));
}

// A file's bytes and modification time: an open that writes back shows in one of them.
struct FileState
{
    bool exists = false;
    QByteArray content;
    QDateTime modified;
    bool operator==(const FileState& other) const
    {
        return exists == other.exists && content == other.content && modified == other.modified;
    }
};

FileState stateOf(const QString& path)
{
    const QFileInfo info(path);
    return FileState{info.exists(), readFile(path), info.exists() ? info.lastModified() : QDateTime()};
}

// A run that is asked to save the project fails to open it, and neither the file nor its ".bak" changes.
void expectRefusedAndUntouched(const QString& path)
{
    const FileState before = stateOf(path);
    const FileState backupBefore = stateOf(path + QStringLiteral(".bak"));
    const auto r = runTrw({"-project", path, "-s"});
    EXPECT_EQ(r.exitCode, 3);
    EXPECT_EQ(r.out, QStringLiteral("Error - Open project failed.\n"));
    EXPECT_TRUE(stateOf(path) == before);
    EXPECT_TRUE(stateOf(path + QStringLiteral(".bak")) == backupBefore);
}

// Files that are no project: nothing is opened, the file is left as it was, even when saving is asked for.
TEST(CommandLine, BrokenProjectFilesFailToOpenAndStayUntouched)
{
    QTemporaryDir dir;
    const QString notSqlite = dir.filePath(QStringLiteral("text.trwp"));
    writeFile(notSqlite, "this is not an SQLite database\n");
    const QString empty = dir.filePath(QStringLiteral("empty.trwp"));
    writeFile(empty, QByteArray());
    const QString folder = dir.filePath(QStringLiteral("folder.trwp"));
    QDir().mkdir(folder);
    const QString noNodeRows = makeProject(dir.path(), QStringLiteral("nonoderows.trwp"));
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.openDataBase(noNodeRows, true));
        ASSERT_TRUE(db.deleteNode(0));
        ASSERT_TRUE(db.saveDatabase(noNodeRows));
    }
    const QString noNodesTable = makeProject(dir.path(), QStringLiteral("nonodestable.trwp"));
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.openDataBase(noNodesTable, true));
        QSqlQuery query(db.database());
        ASSERT_TRUE(query.exec(QStringLiteral("drop table Nodes")));
        ASSERT_TRUE(db.saveDatabase(noNodesTable));
    }
    const QString missing = dir.filePath(QStringLiteral("missing.trwp"));
    const QString missingText = dir.filePath(QStringLiteral("missing.trwt"));

    for (const QString& path : {notSqlite, empty, folder, noNodeRows, noNodesTable, missing, missingText}) {
        SCOPED_TRACE(path.toStdString());
        expectRefusedAndUntouched(path);
    }
}

// Runs statements on a project file over a connection of its own, as a tool other than trw would.
void changeWithSql(const QString& path, const QStringList& statements)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("damage"));
        db.setDatabaseName(path);
        ASSERT_TRUE(db.open());
        QSqlQuery query(db);
        for (const QString& statement : statements)
            ASSERT_TRUE(query.exec(statement)) << statement.toStdString();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("damage"));
}

// The per-line tables of line 0 with the columns a row cannot be without.
const QList<QPair<QString, QStringList>> lineTableKeys{
    {"Objects0", {"objectindex", "datatype", "objecttype"}},
    {"SubObjects0", {"objectindex", "subindex", "datatype", "accesstype", "implementation"}},
    {"PGNs0", {"number"}},
    {"SPNs0", {"pgnnumber", "spnnumber"}},
    {"CANIDs0", {"id"}},
    {"DataElements0", {"canid", "number"}},
    {"UDSSettings0", {"sid"}},
};

// One row of NULLs in a table. The table loses its NOT NULL constraints first, as an outside tool can
// leave it.
QStringList nullRow(const QString& table)
{
    return {QStringLiteral("alter table %1 rename to %1_old").arg(table),
            QStringLiteral("create table %1 as select * from %1_old").arg(table),
            QStringLiteral("drop table %1_old").arg(table),
            QStringLiteral("insert into %1 default values").arg(table)};
}

// One row whose keys hold the largest integer SQLite knows.
QStringList hugeRow(const QString& table, const QStringList& keys)
{
    QStringList values;
    for (qsizetype i = 0; i < keys.size(); ++i)
        values << QStringLiteral("9223372036854775807");
    return {QStringLiteral("insert into %1 (%2) values (%3)").arg(table, keys.join(','), values.join(','))};
}

// Project files damaged on disk or by other tools: nothing is opened, and neither the file nor its ".bak"
// changes, even when saving is asked for.
TEST(CommandLine, CorruptProjectFilesFailToOpenAndStayUntouched)
{
    const auto cutInHalf = [](QByteArray& bytes) { bytes.truncate(bytes.size() / 2); };
    const auto flipSecondPage = [](QByteArray& bytes) {
        for (qsizetype i = 4096; i < 8192 && i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(~bytes[i]);
    };
    struct Case
    {
        QString name;
        std::function<void(QByteArray&)> bytes;
        QStringList statements;
    };
    QList<Case> cases{
        {"truncated", cutInHalf, {}},
        {"flippedpage", flipSecondPage, {}},
        {"droppedtable", nullptr, {"drop table SubObjects0"}},
        {"wrongtype", nullptr, {"update SubObjects0 set subindex = 'zero' where objectindex = 4096"}},
    };
    for (const auto& table : lineTableKeys) {
        cases.append({"nulls in " + table.first, nullptr, nullRow(table.first)});
        cases.append({"huge numbers in " + table.first, nullptr, hugeRow(table.first, table.second)});
    }
    for (const auto& c : std::as_const(cases)) {
        SCOPED_TRACE(c.name.toStdString());
        QTemporaryDir dir;
        const QString path = makeProject(dir.path());
        changeWithSql(path, c.statements);
        if (c.bytes) {
            QByteArray bytes = readFile(path);
            c.bytes(bytes);
            writeFile(path, bytes);
        }
        ASSERT_TRUE(QFile::copy(path, path + QStringLiteral(".bak")));
        expectRefusedAndUntouched(path);
    }
}

// A hand-edited text project opens with what it holds; the rest is passed over and the run goes on to the
// check. The file changes only when saving is asked for, and then holds what was read.
TEST(CommandLine, DamagedTextProjectsOpenWithWhatTheyHold)
{
    const struct
    {
        const char* name;
        QByteArray content;
        const char* group;
        QStringList children;
    } cases[] = {
        {"empty.trwt", "", "Nodes", {"0"}},
        {"nogroups.trwt", "line0type=1\nname=x\n", "Nodes", {"0"}},
        {"brokenlines.trwt",
         "[GeneralSettings]\nline0type=1\nthis line is broken\n=\n[Objects0]\n0x1000\\name=Dev\n",
         "Objects0",
         {"0x1000"}},
        {"unknowngroup.trwt", "[Gadgets0]\nx=1\n[Nodes]\n0\\name=n\n", "Gadgets0", {}},
        {"pgnkeys.trwt",
         "[GeneralSettings]\nline0type=2\n[PGNs0]\nabc\\priority=3\n61444\\direction=85\n",
         "PGNs0",
         {"61444"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        const QString project = dir.filePath(QLatin1String(c.name));
        writeFile(project, c.content);
        const FileState before = stateOf(project);

        auto r = runTrw({"-project", project});
        EXPECT_NE(r.exitCode, -1) << "crashed";
        EXPECT_NE(r.exitCode, 3);
        EXPECT_TRUE(r.out.contains(QStringLiteral("Check of model consistency started")))
            << qPrintable(r.out);
        EXPECT_TRUE(stateOf(project) == before);

        r = runTrw({"-project", project, "-s"});
        EXPECT_NE(r.exitCode, -1) << "crashed";
        QSettings saved(project, QSettings::IniFormat);
        saved.beginGroup(QLatin1String(c.group));
        EXPECT_EQ(saved.childGroups() + saved.childKeys(), c.children);
        EXPECT_EQ(readFile(project + QStringLiteral(".bak")), c.content);
    }
}

// As root every folder is writable; the check then runs as an unprivileged user.
TEST(CommandLine, UnwritableOutputFolderEndsWithCode8)
{
    QTemporaryDir dir;
    QTemporaryDir home;
    const QString projectDir = dir.path() + QStringLiteral("/ro");
    QDir().mkdir(projectDir);
    const QString project = makeProject(projectDir);
    const auto owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
    QString program = QStringLiteral(TRW_BINARY);
    QStringList args{"-project", project};
    if (geteuid() == 0) {
        if (!QFileInfo::exists(QStringLiteral("/usr/bin/setpriv")))
            GTEST_SKIP() << "no setpriv to drop root";
        QFile::setPermissions(dir.path(), owner | QFileDevice::ReadOther | QFileDevice::ExeOther);
        QFile::setPermissions(project,
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadOther);
        QFile::setPermissions(home.path(), owner | QFileDevice::ReadOther | QFileDevice::WriteOther |
                                               QFileDevice::ExeOther);
        args = QStringList{"--reuid=65534",
                           "--regid=65534",
                           "--clear-groups",
                           "env",
                           "HOME=" + home.path(),
                           "XDG_DATA_HOME=" + home.path(),
                           "XDG_CONFIG_HOME=" + home.path(),
                           program} +
               args;
        program = QStringLiteral("/usr/bin/setpriv");
    } else {
        QFile::setPermissions(projectDir, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    }
    QProcess run;
    run.start(program, args);
    run.waitForFinished(60000);
    QFile::setPermissions(projectDir, owner);
    const QString out = QString::fromUtf8(run.readAllStandardOutput());
    EXPECT_EQ(run.exitCode(), 8) << qPrintable(out);
    EXPECT_TRUE(
        out.contains(QStringLiteral("ABORT - The output folder %1 is not writeable.\n").arg(projectDir)));
    EXPECT_EQ(lastLine(out), QStringLiteral("Error - The output folder is not writeable"));
}

// The sources whose presence depends on the project: gen_vobjdict.c with
// virtual objects only, gen_srdo.c from the stack's template, whose absence
// ends the run before gen_define.h.
TEST(CommandLine, VirtualAndSafetySources)
{
    QString tpl;
    for (const char* placeholder :
         {"__GEN_SRDO_INCLUDES__", "__GEN_SRDO_TRW_INFORMATION__", "__GEN_SRDO_INIT_CONFIG_VALID__",
          "__GEN_SRDO_INIT_NMT_STATE__", "__GEN_SRDO_INIT_CONFIG_READY__", "__GEN_SRDO_INIT_SRDO_TIMER__",
          "__GEN_SRDO_DATA_DEFINITION__", "__GEN_SRDO_GET_DATA_PTR__", "__GEN_SRDO_SET_DEFAULT_VALUE__",
          "__GEN_SRDO_OD_VARIABLES__", "__GEN_SRDO_RECEIVE_MAPPING1__", "__GEN_SRDO_RECEIVE_MAPPING2__",
          "__GEN_SRDO_TRANSMIT_MAPPING__", "__GEN_SRDO_OD_ENTRY__"})
        tpl += QLatin1String(placeholder) + QLatin1Char('\n');
    auto addVirtual = [](ObjectDataBase& db) {
        INDEX_DATA_T object;
        object.name = QStringLiteral("served");
        object.objecttype = 7;
        db.addIndex(0, 0x2100, object);
        SUBINDEX_DATA_T sub = cleanproject::subRecord(7, QStringLiteral("rw"), QStringLiteral("0"));
        sub.implementation = 3;
        db.addSubIndex(0, 0x2100, 0, sub);
    };
    auto addSrdo = [](ObjectDataBase& db) {
        db.setGeneralSetting(QStringLiteral("static_srdo_data"), QStringLiteral("1"));
        INDEX_DATA_T object;
        object.name = QStringLiteral("srdo");
        object.objecttype = 9;
        db.addIndex(0, 0x1301, object);
        db.addSubIndex(0, 0x1301, 0, cleanproject::subRecord(5, QStringLiteral("ro"), QStringLiteral("1")));
        db.addSubIndex(0, 0x1301, 1, cleanproject::subRecord(5, QStringLiteral("rw"), QStringLiteral("1")));
        db.addIndex(0, 0x1381, object);
        db.addSubIndex(0, 0x1381, 0, cleanproject::subRecord(5, QStringLiteral("ro"), QStringLiteral("1")));
        db.addSubIndex(0, 0x1381, 1,
                       cleanproject::subRecord(7, QStringLiteral("ro"), QStringLiteral("0x21010008")));
        object.objecttype = 7;
        db.addIndex(0, 0x2101, object);
        SUBINDEX_DATA_T safe = cleanproject::subRecord(5, QStringLiteral("rw"), QStringLiteral("0"));
        safe.implementation = 2;
        safe.varname = QStringLiteral("safeValue");
        safe.pdomapping = PDOMapping(PDOMapping::Mappable);
        db.addSubIndex(0, 0x2101, 0, safe);
    };
    const struct
    {
        const char* name;
        std::function<void(ObjectDataBase&)> extra;
        bool withStack;
        int exitCode;
        QStringList written;
        QStringList absent;
    } cases[] = {
        {"no virtual objects", {}, false, 0, {"gen_objdict.c"}, {"gen_vobjdict.c", "gen_srdo.c"}},
        {"virtual objects", addVirtual, false, 0, {"gen_vobjdict.c"}, {}},
        {"SRDO without template",
         addSrdo,
         false,
         9,
         {"gen_objdict.c"},
         {"gen_vobjdict.c", "gen_srdo.c", "gen_define.h"}},
        {"SRDO with template", addSrdo, true, 0, {"gen_srdo.c", "gen_define.h"}, {"gen_vobjdict.c"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        const QString project = dir.filePath(QStringLiteral("device.trwp"));
        {
            ObjectDataBase db;
            ASSERT_TRUE(db.createNewDataBase());
            db.setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("1"));
            cleanproject::addProjectSettings(db);
            cleanproject::addLineSettings(db, 0);
            cleanproject::addMandatoryObjects(db, 0);
            if (c.extra)
                c.extra(db);
            ASSERT_TRUE(db.saveDatabase(project));
        }
        writeFile(dir.filePath(QStringLiteral("gen_vobjdict.c")), "stale\n");
        QStringList args{"-project", project};
        if (c.withStack) {
            QDir().mkpath(dir.filePath(QStringLiteral("stack/co_lib_sl/src")));
            writeFile(dir.filePath(QStringLiteral("stack/co_lib_sl/src/gen_srdo.tpl")), tpl.toUtf8());
            args << QStringLiteral("-stackpath") << dir.filePath(QStringLiteral("stack"));
        }
        const auto r = runTrw(args);
        EXPECT_EQ(r.exitCode, c.exitCode) << qPrintable(r.out);
        for (const QString& name : c.written) {
            EXPECT_TRUE(QFile::exists(dir.filePath(name))) << qPrintable(name);
            EXPECT_NE(readFile(dir.filePath(name)), QByteArray("stale\n")) << qPrintable(name);
        }
        for (const QString& name : c.absent)
            EXPECT_FALSE(QFile::exists(dir.filePath(name))) << qPrintable(name);
        if (c.exitCode == 9) {
            EXPECT_TRUE(r.out.endsWith(
                QStringLiteral("Template file not found.\nError - SRDO template not found.\n")))
                << qPrintable(r.out);
        }
    }
}

} // namespace
