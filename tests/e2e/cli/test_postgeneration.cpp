#include "common/cleanproject.h"
#include "common/testhelpers.h"
#include "database/objectdatabase.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using testhelpers::lastLine;
using testhelpers::readFile;

namespace {

// The files whose line endings the run converts, as a CANopen device writes them.
const QStringList convertedFiles = {"gen_define.h", "gen_indication.h", "gen_indices.h", "gen_objdict.c"};

// A run of the tool on a clean CANopen project, with per-user settings in a
// home of its own. The date format is a fixed text, so that two runs write
// the same bytes.
class PostGeneration : public ::testing::Test
{
public:
    void SetUp() override
    {
        project = dir.filePath(QStringLiteral("device.trwp"));
        ASSERT_TRUE(cleanproject::saveCanopenProject(project));
        general[QStringLiteral("date_time_format")] = QStringLiteral("'fixed date'");
    }

    QString script(const QString& name, const QByteArray& body, bool executable = true)
    {
        const QString path = testhelpers::writeFile(home.filePath(name), "#!/bin/sh\n" + body);
        QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner;
        if (executable)
            permissions |= QFile::ExeOwner;
        QFile::setPermissions(path, permissions);
        return path;
    }

    void useCommand(const QString& command, const QString& arguments = QString(), bool wait = true)
    {
        general[QStringLiteral("postGenEnabled")] = true;
        general[QStringLiteral("postgenerationcommand")] = command;
        general[QStringLiteral("postgenerationcommandarguments")] = arguments;
        general[QStringLiteral("waitPostGen")] = wait;
    }

    void useChecker(const QString& path)
    {
        checker[QStringLiteral("checkeds")] = true;
        checker[QStringLiteral("EDSCheckerPath")] = path;
    }

    testhelpers::RunResult run()
    {
        const QString config = home.filePath(QStringLiteral(".config"));
        {
            QSettings user(config + QStringLiteral("/halvex.conf"), QSettings::IniFormat);
            user.clear();
            for (const auto& [group, values] :
                 {std::pair{"General", general}, std::pair{"EDSChecker", checker}}) {
                user.beginGroup(QLatin1String(group));
                for (auto it = values.cbegin(); it != values.cend(); ++it)
                    user.setValue(it.key(), it.value());
                user.endGroup();
            }
        }
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
        environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral(".local/share")));
        QProcess trw;
        trw.setProcessEnvironment(environment);
        QElapsedTimer clock;
        clock.start();
        trw.start(QStringLiteral(TRW_BINARY), {"-project", project});
        trw.waitForFinished(120000);
        seconds = clock.elapsed() / 1000.0;
        return {trw.exitStatus() == QProcess::NormalExit ? trw.exitCode() : -1,
                QString::fromUtf8(trw.readAllStandardOutput())};
    }

    QTemporaryDir home{QDir::tempPath() + QStringLiteral("/home-XXXXXX")};
    QTemporaryDir dir{QDir::tempPath() + QStringLiteral("/project-XXXXXX")};
    QString project;
    QVariantMap general;
    QVariantMap checker;
    double seconds = 0;
};

// The command runs first, with its output under a header per change of
// stream and its exit code in the last line; then the EDS checker reports on
// the EDS file; then the C sources get CR LF ends and nothing else changes.
TEST_F(PostGeneration, CommandCheckerAndLineEndings)
{
    useCommand(script(QStringLiteral("post.sh"),
                      "echo \"args  $1   $2\"\nsleep 0.3\necho \"went   wrong\" >&2\n"
                      "sleep 0.3\necho done\nexit 3\n"),
               QStringLiteral("%N %D"));
    useChecker(script(QStringLiteral("checker.sh"), "echo \"$1 $2 $3 $4\"\necho \"no errors\"\n"));
    const testhelpers::RunResult plain = run();
    ASSERT_EQ(plain.exitCode, 0) << qPrintable(plain.out);
    const QString eds = dir.filePath(QStringLiteral("device.eds"));
    const QString expected =
        QStringLiteral("Generation finished.\n"
                       "Post generation process standard output:\n\n\targs device.trwp %1\n"
                       "Post generation process error output:\n\n\twent wrong\n"
                       "Post generation process standard output:\n\n\tdone\n"
                       "Post generation process finished with code 3\n"
                       "EDS Checker started\n"
                       "EDS Checker result:\n\n-e %2 -d %3/v301.codb\nno errors\n\n"
                       "EDS Checker finished.\n\n"
                       "Warning: Generation completed, but post gen process returned 3.\n")
            .arg(dir.path(), eds, home.path());
    EXPECT_TRUE(plain.out.endsWith(expected)) << qPrintable(plain.out);

    QMap<QString, QByteArray> before;
    for (const QString& name : convertedFiles + QStringList{"device.eds"})
        before.insert(name, readFile(dir.filePath(name)));
    general[QStringLiteral("line_ending_index")] = 1;
    const testhelpers::RunResult converted = run();
    ASSERT_TRUE(converted.out.endsWith(expected)) << qPrintable(converted.out);
    for (const QString& name : convertedFiles) {
        ASSERT_FALSE(before.value(name).isEmpty()) << qPrintable(name);
        EXPECT_EQ(readFile(dir.filePath(name)), QByteArray(before.value(name)).replace("\n", "\r\n"))
            << qPrintable(name);
    }
    // The EDS carries its own creation time, so only its line ends are compared.
    EXPECT_FALSE(readFile(eds).contains("\r\n")) << "the EDS keeps its line ends";
}

// Programs that can't run or don't end: a message where the run has one, a
// bounded run, and always the final line with the line endings converted.
TEST_F(PostGeneration, ProgramsThatFailOrHang)
{
    const struct
    {
        const char* name;
        std::function<void(PostGeneration&)> setup;
        QStringList messages;
        QString last;
    } cases[] = {
        // A command that can't start is told only to a progress display, which the command line has none of.
        {"missing command",
         [](PostGeneration& t) { t.useCommand(t.home.filePath(QStringLiteral("no-such-command"))); },
         {},
         "Generation completed."},
        {"hanging command",
         [](PostGeneration& t) {
             t.useCommand(t.script(QStringLiteral("hang.sh"), "echo started\nexec sleep 60\n"));
             t.general[QStringLiteral("postGenTimeout")] = 1;
         },
         {"\tstarted\n", "Post generation process did not end within 1 seconds and was stopped.\n"},
         "Warning: Generation completed, but post gen process returned -1."},
        // Without the wait the exit code of the command stays out of the run.
        {"command not waited for",
         [](PostGeneration& t) {
             t.useCommand(t.script(QStringLiteral("late.sh"), "sleep 20\nexit 3\n"), {}, false);
         },
         {},
         "Generation completed."},
        {"checker not executable",
         [](PostGeneration& t) { t.useChecker(t.script(QStringLiteral("checker.sh"), "echo x\n", false)); },
         {"Start of EDS Checker failed\n"},
         "Generation completed."},
        {"hanging checker",
         [](PostGeneration& t) {
             t.useChecker(t.script(QStringLiteral("checker.sh"), "echo checking\nexec sleep 60\n"));
             t.general[QStringLiteral("postGenTimeout")] = 1;
         },
         {"EDS Checker started\n", "EDS Checker did not end within 1 seconds and was stopped.\n",
          "EDS Checker result:\n\nchecking\n\nEDS Checker finished.\n"},
         "Generation completed."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        general.remove(QStringLiteral("postGenTimeout"));
        general.remove(QStringLiteral("postGenEnabled"));
        checker.clear();
        general[QStringLiteral("line_ending_index")] = 1;
        c.setup(*this);
        QFile::remove(dir.filePath(QStringLiteral("gen_define.h")));
        const testhelpers::RunResult r = run();
        EXPECT_EQ(r.exitCode, 0);
        EXPECT_LT(seconds, 15);
        for (const QString& message : c.messages)
            EXPECT_TRUE(r.out.contains(message)) << qPrintable(message) << "\n" << qPrintable(r.out);
        EXPECT_EQ(lastLine(r.out).toStdString(), c.last.toStdString()) << qPrintable(r.out);
        EXPECT_EQ(r.out.contains(QStringLiteral("Post generation process")),
                  c.messages.join("").contains("Post"));
        EXPECT_TRUE(readFile(dir.filePath(QStringLiteral("gen_define.h"))).contains("\r\n"));
    }
}

// The project's own command wins over the one of the user settings.
TEST_F(PostGeneration, ProjectCommandComesFirst)
{
    useCommand(script(QStringLiteral("user.sh"), "echo user\n"));
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.openDataBase(project, true));
        db.setMiscSetting(QStringLiteral("postGenEnabled"), QStringLiteral("true"));
        db.setMiscSetting(QStringLiteral("postgencmd"),
                          script(QStringLiteral("project.sh"), "echo \"project $1\"\n"));
        db.setMiscSetting(QStringLiteral("postgencmdargs"), QStringLiteral("%P"));
        db.setMiscSetting(QStringLiteral("postGenWait"), QStringLiteral("true"));
        ASSERT_TRUE(db.saveDatabase(project));
    }
    const testhelpers::RunResult r = run();
    EXPECT_TRUE(r.out.contains(QStringLiteral("\tproject %1\nPost generation process finished with code 0\n"
                                              "Generation completed.\n")
                                   .arg(project)))
        << qPrintable(r.out);
    EXPECT_FALSE(r.out.contains(QStringLiteral("\tuser")));
}

} // namespace
