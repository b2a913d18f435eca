#include "common/cleanproject.h"
#include "common/testhelpers.h"
#include "database/objectdatabase.h"
#include "generators/abstractgenerator.h"
#include "pipeline/generatormainhandler.h"
#include "pipeline/generatorregistry.h"
#include "pipeline/outputhandlerbase.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using testhelpers::writeFile;

class CapturingOutput : public OutputHandlerBase
{
public:
    void writeLine(QVariant value) override { text += value.toString() + QLatin1Char('\n'); }
    QString collectedText() override { return text; }
    QString text;
};

// Stands in for a real generator and records what the pipeline asked of it.
class FakeGenerator : public AbstractGenerator
{
public:
    FakeGenerator(const QString& record, bool fails) : m_record(record), m_fails(fails) {}
    bool canWrite() override { return true; }
    GeneratorStatus start() override { return startWorker(m_record); }

protected:
    void doJob() override
    {
        beginJob();
        if (m_fails)
            fail(QStringLiteral("template missing"));
        finishJob();
    }

private:
    QString m_record;
    bool m_fails;
};

const QStringList allClasses = {
    "IndicesGenerator",    "TextDocGenerator",      "HTMLGenerator",          "ObjDictGenerator",
    "ObjDictGeneratorV4",  "VobjDictGenerator",     "VobjDictGeneratorV4",    "MultiProGenerator",
    "MultiProGeneratorV4", "J1939TextDocGenerator", "RawCANTextDocGenerator", "RawCANDBCGenerator",
    "J1939HTMLGenerator",  "DBCGenerator",          "SrdoGeneratorStatic",    "SrdoGenerator",
    "GenDefineGenerator",  "CoDefineGenerator",     "PGNGenerator",           "PGNGeneratorV4",
    "ExtDeclGenerator",    "ExtDeclGeneratorV4",    "SDMGenerator",           "SDMGeneratorV4",
    "indicationgenerator", "indicationgeneratorv4", "CSVGenerator",           "ICSVGenerator",
    "EDSGenerator",        "XDDGenerator"};

class GenerationOrder : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const QString& name : allClasses) {
            if (GeneratorRegistry::contains(name))
                realGenerators.insert(name, GeneratorRegistry::entry(name));
            GeneratorRegistry::registerGenerator(
                name, {[this, name](const GeneratorOptions& options) {
                           QString record = name;
                           if (!options.fileSuffix.isEmpty())
                               record += options.fileSuffix;
                           if (options.classical)
                               record += QStringLiteral("[classical]");
                           if (!options.edsDefine.isEmpty())
                               record += QStringLiteral("[%1]").arg(options.edsDefine);
                           if (options.sdoServerMode)
                               record += QStringLiteral("[sdo]");
                           return new FakeGenerator(record, failing.contains(name));
                       },
                       {}});
        }
    }

    void TearDown() override
    {
        for (const QString& name : allClasses)
            GeneratorRegistry::unregisterGenerator(name);
        for (auto it = realGenerators.cbegin(); it != realGenerators.cend(); ++it)
            GeneratorRegistry::registerGenerator(it.key(), it.value());
    }

    // Builds and saves a project whose lines have the given types, then runs
    // it through the pipeline and returns the completed generators in order.
    QStringList run(const QList<int>& lineTypes, const std::function<void(ObjectDataBase&)>& extra = {})
    {
        const QString path = dir.path() + QStringLiteral("/device.trwp");
        {
            ObjectDataBase db;
            EXPECT_TRUE(cleanproject::fillProject(db, lineTypes));
            if (extra)
                extra(db);
            EXPECT_TRUE(db.saveDatabase(path));
        }
        GeneratorMainHandler handler(&output);
        QObject::connect(&handler, &GeneratorMainHandler::finished,
                         [this](GeneratorMainHandler::GeneratorResult r) { result = r; });
        EXPECT_TRUE(handler.openProject(path));
        // The order is the subject here; projects made for it need not pass the check.
        handler.generate(true);

        QStringList completed;
        const QStringList lines = output.text.split(QLatin1Char('\n'));
        for (const QString& line : lines) {
            static const QString prefix = QStringLiteral("Generation of ");
            static const QString suffix = QStringLiteral(" completed. ");
            if (line.startsWith(prefix) && line.endsWith(suffix))
                completed << line.mid(prefix.size(), line.size() - prefix.size() - suffix.size());
        }
        return completed;
    }

    QTemporaryDir dir;
    CapturingOutput output;
    QStringList failing;
    QHash<QString, GeneratorRegistry::Entry> realGenerators;
    GeneratorMainHandler::GeneratorResult result = GeneratorMainHandler::CheckFailed;
};

struct OrderCase
{
    const char* name;
    QList<int> lineTypes;
    QStringList expected;
};

TEST_F(GenerationOrder, StepsFollowTheLineTypes)
{
    const QList<OrderCase> cases = {
        {"CANopen",
         {1},
         {"IndicesGenerator", "TextDocGenerator", "HTMLGenerator", "ObjDictGeneratorV4",
          "VobjDictGeneratorV4", "GenDefineGenerator", "indicationgeneratorv4", "CSVGenerator",
          "ICSVGenerator", "EDSGenerator"}},
        {"J1939",
         {2},
         {"IndicesGenerator", "GenDefineGenerator", "PGNGeneratorV4", "J1939TextDocGenerator",
          "J1939HTMLGenerator", "DBCGenerator", "ExtDeclGeneratorV4"}},
        {"raw CAN",
         {4},
         {"IndicesGenerator", "MultiProGeneratorV4", "RawCANTextDocGenerator", "RawCANDBCGenerator",
          "GenDefineGenerator", "ExtDeclGeneratorV4"}},
        {"CANopen and J1939",
         {5},
         {"IndicesGenerator", "TextDocGenerator", "HTMLGenerator_co", "MultiProGeneratorV4",
          "J1939TextDocGenerator", "J1939HTMLGenerator_j1939", "DBCGenerator", "GenDefineGenerator",
          "ExtDeclGeneratorV4", "indicationgeneratorv4", "CSVGenerator", "ICSVGenerator", "EDSGenerator"}},
        {"CANopen and raw CAN",
         {6},
         {"IndicesGenerator", "TextDocGenerator", "HTMLGenerator_co", "MultiProGeneratorV4",
          "RawCANTextDocGenerator", "RawCANDBCGenerator", "GenDefineGenerator", "ExtDeclGeneratorV4",
          "indicationgeneratorv4", "CSVGenerator", "ICSVGenerator", "EDSGenerator"}},
        {"J1939 and raw CAN",
         {7},
         {"IndicesGenerator", "MultiProGeneratorV4", "J1939TextDocGenerator", "RawCANTextDocGenerator",
          "RawCANDBCGenerator", "J1939HTMLGenerator_j1939", "DBCGenerator", "GenDefineGenerator",
          "ExtDeclGeneratorV4"}},
        {"no type", {0}, {"GenDefineGenerator"}},
        {"type 3", {3}, {"GenDefineGenerator"}},
        {"CANopen line and J1939 line",
         {1, 2},
         {"IndicesGenerator", "TextDocGenerator", "HTMLGenerator", "MultiProGeneratorV4",
          "J1939TextDocGenerator", "J1939HTMLGenerator", "DBCGenerator", "GenDefineGenerator",
          "ExtDeclGeneratorV4", "indicationgeneratorv4", "CSVGenerator", "ICSVGenerator", "EDSGenerator"}},
        {"raw CAN line and CANopen line",
         {4, 1},
         {"IndicesGenerator", "TextDocGenerator", "HTMLGenerator", "MultiProGeneratorV4",
          "RawCANTextDocGenerator", "RawCANDBCGenerator", "GenDefineGenerator", "ExtDeclGeneratorV4",
          "indicationgeneratorv4", "CSVGenerator", "ICSVGenerator", "EDSGenerator"}},
        {"J1939 line and raw CAN line",
         {2, 4},
         {"IndicesGenerator", "MultiProGeneratorV4", "J1939TextDocGenerator", "RawCANTextDocGenerator",
          "RawCANDBCGenerator", "J1939HTMLGenerator", "DBCGenerator", "GenDefineGenerator",
          "ExtDeclGeneratorV4"}},
        {"two CANopen lines",
         {1, 1},
         {"IndicesGenerator", "TextDocGenerator", "TextDocGenerator", "HTMLGenerator", "HTMLGenerator",
          "ObjDictGeneratorV4", "VobjDictGeneratorV4", "GenDefineGenerator", "indicationgeneratorv4",
          "CSVGenerator", "CSVGenerator", "ICSVGenerator", "ICSVGenerator", "EDSGenerator", "EDSGenerator"}},
    };
    for (const OrderCase& c : cases) {
        output.text.clear();
        EXPECT_EQ(run(c.lineTypes), c.expected) << c.name << "\n" << qPrintable(output.text);
        EXPECT_EQ(result, GeneratorMainHandler::Success) << c.name;
    }
}

TEST_F(GenerationOrder, StartedMessageStandsBeforeCompletion)
{
    run({1});
    const qsizetype started =
        output.text.indexOf(QStringLiteral("Generation of gen_indices.h in %1 started").arg(dir.path()));
    const qsizetype completed =
        output.text.indexOf(QStringLiteral("Generation of IndicesGenerator completed. \n"));
    ASSERT_GE(started, 0) << qPrintable(output.text);
    EXPECT_LT(started, completed);
    EXPECT_TRUE(output.text.endsWith(QStringLiteral("Generation finished.\nGeneration completed.\n")));
}

TEST_F(GenerationOrder, ClassicClassesWhenTheProjectAsksForThem)
{
    const QString path = dir.path() + QStringLiteral("/classic.trwp");
    ASSERT_TRUE(cleanproject::saveCanopenProject(path));
    writeFile(dir.path() + QStringLiteral("/mod.txt"), "GeneralSettings:use_core_headers:classic\n");

    GeneratorMainHandler handler(&output);
    ASSERT_TRUE(handler.openProject(path));
    handler.applyDbModifier(dir.path() + QStringLiteral("/mod.txt"));
    handler.generate(false);
    for (const char* name : {"ObjDictGenerator", "CoDefineGenerator", "indicationgenerator"})
        EXPECT_TRUE(output.text.contains(QStringLiteral("Generation of %1 completed.").arg(name))) << name;
}

TEST_F(GenerationOrder, FailedSrdoGeneratorEndsTheRun)
{
    failing << QStringLiteral("SrdoGeneratorStatic");
    const QStringList completed = run({1}, [](ObjectDataBase& db) {
        db.setGeneralSetting(QStringLiteral("static_srdo_data"), QStringLiteral("1"));
        INDEX_DATA_T srdo;
        db.addIndex(0, 0x1301, srdo);
    });
    EXPECT_EQ(result, GeneratorMainHandler::SrdoTemplateMissing);
    EXPECT_TRUE(output.text.contains(QStringLiteral(
        "<b>ERROR - Generation of SrdoGeneratorStatic failed. template missing</b>\ntemplate missing\n")))
        << qPrintable(output.text);
    EXPECT_FALSE(completed.contains(QStringLiteral("GenDefineGenerator")));
    EXPECT_FALSE(output.text.contains(QStringLiteral("Generation finished.")));
}

TEST_F(GenerationOrder, EdsVariantsComeFromTheEdsDefineMetadata)
{
    const QStringList completed = run({1}, [](ObjectDataBase& db) {
        db.setGeneralSetting(QStringLiteral("canfd_supported"), QStringLiteral("1"));
        INDEX_DATA_T object;
        object.metadata.reset(
            new QMap<QString, QString>{{QStringLiteral("eds_define"), QStringLiteral("VARIANT_B")}});
        db.addIndex(0, 0x2000, object);
        SUBINDEX_DATA_T sub;
        sub.metadata.reset(
            new QMap<QString, QString>{{QStringLiteral("eds_define"), QStringLiteral("VARIANT_A")}});
        db.addSubIndex(0, 0x2000, 0, sub);
        db.addIndex(0, 0x2001, object);
    });
    const QStringList eds = completed.filter(QStringLiteral("EDSGenerator"));
    EXPECT_EQ(eds, (QStringList{"EDSGenerator", "EDSGenerator[classical]", "EDSGenerator[VARIANT_B]",
                                "EDSGenerator[classical][VARIANT_B]", "EDSGenerator[VARIANT_A]",
                                "EDSGenerator[classical][VARIANT_A]"}));
    EXPECT_TRUE(output.text.contains(QStringLiteral("XDDGenerator")));
    EXPECT_TRUE(
        output.text.contains(QStringLiteral("Warning: multiple different EDS files to be generated.\n\n")));
}

TEST_F(GenerationOrder, BootloaderOnlyLeavesOutIndicesAndDeclarations)
{
    auto bootloader = [](ObjectDataBase& db) {
        db.setGeneralSetting(QStringLiteral("uds_bl_setting"), QStringLiteral("1"));
    };
    EXPECT_EQ(run({4}, bootloader), (QStringList{"MultiProGeneratorV4", "RawCANTextDocGenerator",
                                                 "RawCANDBCGenerator", "GenDefineGenerator"}));
    output.text.clear();
    EXPECT_TRUE(run({4, 4}, bootloader).contains(QStringLiteral("IndicesGenerator")));
}

TEST_F(GenerationOrder, J1939OnlyRemovesStaleAdapterAndIndicationFiles)
{
    const QStringList stale = {"gen_indication.h", "gen_j1939_adapter.c", "j1939_adapter.cs"};
    for (const QString& name : stale)
        writeFile(dir.filePath(name), QByteArray());
    run({2});
    for (const QString& name : stale)
        EXPECT_FALSE(QFile::exists(dir.filePath(name))) << qPrintable(name);
}

TEST_F(GenerationOrder, SdoServerModeOfAJ1939Device)
{
    const QStringList completed = run({2}, [](ObjectDataBase& db) {
        db.setJ1939Setting(QStringLiteral("cia510serversupport"), QStringLiteral("0x1"));
    });
    EXPECT_EQ(completed.mid(0, 5), (QStringList{"IndicesGenerator", "GenDefineGenerator", "PGNGeneratorV4",
                                                "ObjDictGeneratorV4[sdo]", "EDSGenerator"}));
    EXPECT_TRUE(output.text.contains(
        QStringLiteral("Generation of device EDS file in %1 started (for CAM11/CAM21 SDO Server)")
            .arg(dir.path())));
}

TEST_F(GenerationOrder, CppOutputCopiesTheObjectDictionaryAndUserHeader)
{
    writeFile(dir.filePath("gen_objdict.c"), "int x;\n");
    writeFile(dir.filePath("gen_user.h"), "RET_T myIndication(void);\nRET_T other(void);\n");
    run({1}, [](ObjectDataBase& db) {
        db.setGeneralSetting(QStringLiteral("generate_cpp_output"), QStringLiteral("1"));
    });
    EXPECT_EQ(testhelpers::readFile(dir.filePath("gen_objdict.cpp")), QByteArray("int x;\n"));
    EXPECT_EQ(testhelpers::readFile(dir.filePath("gen_user.hpp")),
              QByteArray("extern \"C\" RET_T myIndication(void);\nextern \"C\" RET_T other(void);\n"));
}

TEST_F(GenerationOrder, MultiLineRunsHeadTheCheckOfEachLine)
{
    run({1, 2});
    EXPECT_TRUE(output.text.contains(
        QStringLiteral("\n<strong>________________________________________ Checking line 1 "
                       "________________________________________</strong>\n")));
}

} // namespace

// With the real generators a CAN FD device on one CANopen line gets its
// documents and descriptions in the order of the steps.
TEST(GenerationOrderOfRealGenerators, SingleCanFdLineWritesTheDocumentsInStepOrder)
{
    QTemporaryDir dir;
    const QString path = dir.path() + QStringLiteral("/device.trwp");
    ASSERT_TRUE(cleanproject::saveCanopenProject(path));
    writeFile(dir.path() + QStringLiteral("/fd.txt"), "GeneralSettings:canfd_supported:1\n");
    CapturingOutput output;
    GeneratorMainHandler handler(&output);
    ASSERT_TRUE(handler.openProject(path));
    handler.applyDbModifier(dir.path() + QStringLiteral("/fd.txt"));
    // A CAN FD device type wants an ARRAY; the order is the subject here.
    handler.generate(true);

    const QStringList watched = {"gen_indices.h generator",
                                 "textual documentation",
                                 "HTML documentation",
                                 "gen_objdict.c",
                                 "gen_define.h",
                                 "CSV documentation",
                                 "ICSV documentation",
                                 "EDS file",
                                 "XDD file"};
    QStringList completed;
    for (const QString& line : output.text.split(QLatin1Char('\n'))) {
        for (const QString& name : watched) {
            if (line == QStringLiteral("Generation of %1 completed. ").arg(name))
                completed << name;
        }
    }
    EXPECT_EQ(completed,
              QStringList({"gen_indices.h generator", "textual documentation", "HTML documentation",
                           "gen_objdict.c", "gen_define.h", "CSV documentation", "ICSV documentation",
                           "EDS file", "EDS file", "XDD file"}))
        << qPrintable(output.text);
    for (const char* file : {"device_doc.txt", "device.html", "device.csv", "device.icsv", "device.eds",
                             "device_classical.eds", "00001234_device.xdd"})
        EXPECT_TRUE(QFile::exists(dir.filePath(QLatin1String(file)))) << file;
}

struct StackSourceCase
{
    const char* name;
    QList<int> lineTypes;
    const char* written;
};

// Mixed and raw CAN devices get their stack source from the multi-protocol
// step alone: neither gen_objdict.c nor gen_pgn.c, and the source is started
// ahead of gen_define.h, whose counts it names.
TEST(GenerationOrderOfRealGenerators, MixedAndRawCanDevicesWriteOneStackSource)
{
    const QList<StackSourceCase> cases = {
        {"raw CAN", {4}, "gen_rawcan.c"},
        {"two raw CAN lines", {4, 4}, "gen_rawcan.c"},
        {"raw CAN line and CANopen line", {4, 1}, "gen_mp.c"},
        {"CANopen and J1939", {5}, "gen_mp.c"},
        {"CANopen and raw CAN", {6}, "gen_mp.c"},
        {"J1939 and raw CAN", {7}, "gen_mp.c"},
        {"CANopen line and J1939 line", {1, 2}, "gen_mp.c"},
    };
    for (const StackSourceCase& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        const QString path = dir.path() + QStringLiteral("/device.trwp");
        {
            ObjectDataBase db;
            ASSERT_TRUE(cleanproject::fillProject(db, c.lineTypes) && db.saveDatabase(path));
        }
        CapturingOutput output;
        GeneratorMainHandler handler(&output);
        ASSERT_TRUE(handler.openProject(path));
        handler.generate(true);
        for (const char* file : {"gen_mp.c", "gen_rawcan.c", "gen_objdict.c", "gen_pgn.c"})
            EXPECT_EQ(QFile::exists(dir.filePath(QLatin1String(file))), qstrcmp(file, c.written) == 0)
                << file;
        const qsizetype source =
            output.text.indexOf(QStringLiteral("Generation of gen_mp.c in %1 started\n").arg(dir.path()));
        const qsizetype done = output.text.indexOf(QStringLiteral("Generation of gen_mp.c completed. \n"));
        const qsizetype define =
            output.text.indexOf(QStringLiteral("Generation of gen_define.h in %1 started\n").arg(dir.path()));
        EXPECT_GE(source, 0) << qPrintable(output.text);
        EXPECT_LT(source, done);
        EXPECT_LT(done, define);
        EXPECT_FALSE(output.text.contains(QStringLiteral("ERROR - Generation of")))
            << qPrintable(output.text);
    }
}
