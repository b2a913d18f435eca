#include "testproject.h"

#include "common/testhelpers.h"
#include "pipeline/generatormainhandler.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using testhelpers::readFile;
using testhelpers::runTrw;

namespace {

const QString timerError = QStringLiteral("<strong><font color='red'>Error: </font></strong>Timer interval "
                                          "not set in Common Settings -> Hardware/Target.");
// The markup filter of the command line runs from the first '<' to the '>' of
// "->", as no full stop stands between them.
const QString timerErrorPrinted = QStringLiteral("\n Hardware/Target.");

// ARRAY 0x2000 whose sub-index 0 says 1 while sub-index 2 is the highest.
void addArrayToCorrect(TestProject& p)
{
    p.addArray(0x2000, {"0", "0"});
    p.setDefault(0x2000, 0, "1");
}

QString save(TestProject& p)
{
    const QString path = p.folder() + QStringLiteral("/device.trwp");
    EXPECT_TRUE(p.db().saveDatabase(path));
    return path;
}

QString sub0Stored(const QString& projectPath)
{
    ObjectDataBase stored;
    EXPECT_TRUE(stored.openDataBase(projectPath, false));
    SUBINDEX_DATA_T sub0;
    stored.getSubIndex(0, 0x2000, 0, sub0);
    return sub0.defaultvalue;
}

} // namespace

TEST(CheckModel, CountsErrorsCollectsEveryMessageAndCorrectsTheOpenProject)
{
    TestProject project;
    project.setGeneral("co_timer_interval", "");
    project.addLine(1, Line::NoType);
    addArrayToCorrect(project);
    const QString path = save(project);

    GeneratorMainHandler handler(nullptr);
    ASSERT_TRUE(handler.openProject(path));
    QStringList messages{"left over from before"};
    EXPECT_EQ(handler.checkModel(messages), 1);
    EXPECT_EQ(messages.first(), timerError);
    EXPECT_EQ(
        messages.count("<i>Corrected: Object 0x2000</i>: The value of subindex 0 does not fit to the highest "
                       "subindex."),
        1);
    EXPECT_EQ(messages.last(), QString("Warning: line type not set for line 1."));
    EXPECT_FALSE(messages.contains("left over from before"));

    SUBINDEX_DATA_T sub0;
    handler.database()->getSubIndex(0, 0x2000, 0, sub0);
    EXPECT_EQ(sub0.defaultvalue, QString("2"));
    EXPECT_EQ(sub0Stored(path), QString("1")) << "the file changes only by a save";
}

TEST(CheckRun, OneErrorStopsTheRunWithExitCode7AndKeepsTheLog)
{
    TestProject project;
    project.setGeneral("co_timer_interval", "");
    const QString path = save(project);

    const auto r = runTrw({"-project", path});
    EXPECT_EQ(r.exitCode, 7) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("\nCheck of model consistency started\n")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(timerErrorPrinted + "\n")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("ABORT - Check of model consistency finished: failed (1 errors)\n"));
    EXPECT_FALSE(r.out.contains("Generation finished."));
    const QByteArray log = readFile(project.folder() + "/__trwerrorlog.txt");
    EXPECT_TRUE(log.contains(timerErrorPrinted.toUtf8())) << log.toStdString();
    EXPECT_FALSE(QFile::exists(project.folder() + "/__trwerrorlog.txt.bak"));
}

TEST(CheckRun, SaveBehindAFailedCheckKeepsExitCode7AndStoresTheCorrections)
{
    TestProject project;
    project.setGeneral("co_timer_interval", "");
    addArrayToCorrect(project);
    const QString path = save(project);

    const auto r = runTrw({"-project", path, "-s"});
    EXPECT_EQ(r.exitCode, 7) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("ABORT - Check of model consistency finished: failed (1 errors)\n"));
    EXPECT_EQ(sub0Stored(path), QString("2"));

    ObjectDataBase stored;
    ASSERT_TRUE(stored.openDataBase(path, false));
    EXPECT_EQ(stored.getGeneralSetting("use_core_headers"), QString("V4"));
}

// Each example, in the text form or as a project file, is checked and generated on a copy, so that
// corrections and outputs stay out of the repository.
TEST(CheckRun, EveryExampleProjectPassesTheCheck)
{
    QStringList examples = testhelpers::exampleProjects();
    QDirIterator projectFiles(TRW_SOURCE_DIR "/examples", {"*.trwp"}, QDir::Files,
                              QDirIterator::Subdirectories);
    while (projectFiles.hasNext())
        examples << projectFiles.next();
    ASSERT_EQ(examples.filter(".trwp").size(), 2);

    for (const QString& example : std::as_const(examples)) {
        SCOPED_TRACE(example.toStdString());
        QTemporaryDir folder;
        const QString copy = folder.filePath(QFileInfo(example).fileName());
        ASSERT_TRUE(QFile::copy(example, copy));

        GeneratorMainHandler handler(nullptr);
        ASSERT_TRUE(handler.openProject(copy));
        QStringList messages;
        EXPECT_EQ(handler.checkModel(messages), 0) << messages.join("\n").toStdString();

        const auto r = runTrw({"-project", copy});
        EXPECT_EQ(r.exitCode, 0) << r.out.toStdString();
        EXPECT_TRUE(r.out.contains("\nCheck of model consistency finished.\n")) << r.out.toStdString();
        EXPECT_FALSE(r.out.contains("Error: ")) << r.out.toStdString();
    }
}
