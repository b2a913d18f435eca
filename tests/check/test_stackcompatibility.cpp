#include "testproject.h"

#include "common/testhelpers.h"

#include "check/featuresetextractor.h"
#include "check/versionreader.h"

#include <QCoreApplication>
#include <QDir>

#include <gtest/gtest.h>

namespace {

const QString noPath = QStringLiteral("Info: Path to protocol stack not specified. Cannot check if generated "
                                      "code fits to installed stack/framework.");
const QString olderTool = QStringLiteral(
    "<strong><font color='red'>Error: </font></strong>Version of installed stack does not fit. It requires "
    "an older version of the tool. Cannot generate files.");

QString otherVersion(const QString& required)
{
    return QStringLiteral(
               "<strong><font color='red'>Error: </font></strong>Version of installed stack does not fit. It "
               "requires tool version %1. Cannot generate files. This is version 4.3.")
        .arg(required);
}

QString featureFile(const QString& version)
{
    return QStringLiteral("<?xml version=\"1.0\"?>\n<featureinfo>\n  <stack>canopen</stack>\n"
                          "  <required_tool_version>%1</required_tool_version>\n</featureinfo>\n")
        .arg(version);
}

// Stack folder "stack" inside the project folder, with the given files.
QString makeStack(TestProject& p, const QList<std::pair<QString, QString>>& files)
{
    const QString folder = p.folder() + QStringLiteral("/stack");
    QDir().mkpath(folder);
    for (const auto& file : files)
        testhelpers::writeFile(folder + QLatin1Char('/') + file.first, file.second.toUtf8());
    return folder;
}

QStringList stackMessages(const CheckOutcome& outcome)
{
    QStringList result;
    for (const QString& message : outcome.messages) {
        if (message.contains(QLatin1String("stack")))
            result << message;
    }
    return result;
}

} // namespace

TEST(StackCompatibility, FeatureFilesInTheStackFolder)
{
    struct Row
    {
        const char* name;
        QList<std::pair<QString, QString>> files;
        QStringList expected;
        int errors;
    };
    const QString first = QStringLiteral("co_featureinfo_a.xml");
    const QString second = QStringLiteral("co_featureinfo_b.xml");
    const std::vector<Row> rows = {
        {"matching version", {{first, featureFile("4.3")}}, {}, 0},
        {"version with blanks around it", {{first, featureFile(" 4.3 ")}}, {}, 0},
        {"newer stack", {{first, featureFile("4.4")}}, {otherVersion("4.4")}, 1},
        {"version with patch level", {{first, featureFile("4.3.2")}}, {otherVersion("4.3.2")}, 1},
        {"file without the element",
         {{first, "<featureinfo><stack>x</stack></featureinfo>"}},
         {olderTool},
         1},
        {"file that is no XML", {{first, "<featureinfo><unclosed>"}}, {olderTool}, 1},
        {"first file fits, second does not",
         {{first, featureFile("4.3")}, {second, featureFile("4.2")}},
         {otherVersion("4.2")},
         1},
        {"the first misfit ends the check",
         {{first, featureFile("4.1")}, {second, featureFile("4.2")}},
         {otherVersion("4.1")},
         1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestProject project;
        project.db().setMiscSetting("costackpath", makeStack(project, row.files));
        const CheckOutcome outcome = project.run();
        EXPECT_EQ(stackMessages(outcome), row.expected);
        EXPECT_EQ(outcome.errors, row.errors);
    }
}

TEST(StackCompatibility, WithoutPathOrFeatureFileTheCheckOnlyInforms)
{
    TestProject withoutPath;
    CheckOutcome outcome = withoutPath.run();
    EXPECT_EQ(
        stackMessages(outcome),
        (QStringList{noPath, QStringLiteral("Specify path to protocol stack at Options -> Settings.")}));
    EXPECT_EQ(outcome.errors, 0);

    TestProject withoutFile;
    const QString folder = makeStack(withoutFile, {{"featureinfo.xml", featureFile("4.3")}});
    withoutFile.db().setMiscSetting("costackpath", folder);
    outcome = withoutFile.run();
    EXPECT_EQ(stackMessages(outcome),
              QStringList{QStringLiteral(
                              "Info: No *_featureinfo_*.xml file found in protocol stack folder %1. Cannot "
                              "check if generated code fits to installed stack/framework.")
                              .arg(folder)});
    EXPECT_EQ(outcome.errors, 0);
}

TEST(StackCompatibility, RelativePathStartsAtTheProjectFolder)
{
    TestProject project;
    makeStack(project, {{"co_featureinfo_a.xml", featureFile("4.2")}});
    project.db().setMiscSetting("costackpath", "stack");
    const CheckOutcome outcome = project.run();
    EXPECT_EQ(stackMessages(outcome), QStringList{otherVersion("4.2")});
}

TEST(StackCompatibility, EveryCANopenLineReportsTheMisfit)
{
    TestProject project;
    project.addLine(1, Line::CANopen);
    project.addLine(2, Line::J1939);
    project.db().setMiscSetting("costackpath",
                                makeStack(project, {{"co_featureinfo_a.xml", featureFile("4.2")}}));
    EXPECT_EQ(project.run().errors, 2);
}

TEST(StackCompatibility, ToolVersionIsCutToMajorAndMinor)
{
    struct Row
    {
        const char* application;
        const char* required;
        bool fits;
    };
    const Row rows[] = {
        {"4.3.2", "4.3", true}, {"4.3.2.1", "4.3", true}, {"4.3", "4.3", true},
        {"5", "5", true},       {"4.3.2", "4.2", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.application);
        QCoreApplication::setApplicationVersion(row.application);
        TestProject project;
        project.db().setMiscSetting(
            "costackpath", makeStack(project, {{"co_featureinfo_a.xml", featureFile(row.required)}}));
        EXPECT_EQ(project.run().errors, row.fits ? 0 : 1);
    }
    QCoreApplication::setApplicationVersion("4.3.2");
}

TEST(StackCompatibility, VersionReaderAndFeatureSetExtractor)
{
    TestProject project;
    const QString folder = makeStack(project, {{"co_featureinfo_a.xml", featureFile("4.3")}});
    const QString path = folder + QStringLiteral("/co_featureinfo_a.xml");

    VersionReader reader;
    EXPECT_FALSE(reader.setFile(folder + QStringLiteral("/missing.xml")));
    EXPECT_EQ(reader.requiredToolVersion(), QString("0.0"));
    EXPECT_TRUE(reader.setFile(path));
    EXPECT_EQ(reader.requiredToolVersion(), QString("4.3"));

    FeatureSetExtractor extractor;
    ASSERT_TRUE(extractor.load(path));
    const QMap<QString, QString> expected{{"stack", "canopen"}, {"required_tool_version", "4.3"}};
    EXPECT_EQ(extractor.features(), expected);
    EXPECT_FALSE(extractor.load(folder + QStringLiteral("/missing.xml")));
    EXPECT_TRUE(extractor.features().isEmpty());
}
