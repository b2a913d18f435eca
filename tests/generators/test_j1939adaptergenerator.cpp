#include "generatortestsupport.h"

#include "common/testhelpers.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/extdeclgenerator.h"
#include "generators/multiprotocol/j1939adaptergenerator.h"

#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace generatortest;

namespace {

// Line 0 sends engine speed, a managed byte, a 40-bit odometer and a gap,
// and receives engine speed once more, beside two signed temperatures in
// one variable.
void makeAdapterProject(ObjectDataBase& db)
{
    db.createNewDataBase();
    addLine(db, 0, 2);
    ObjectDataBase::SPN gap = spn(1, 5, 8, "gapFiller");
    gap.name = QStringLiteral("dummy 1");
    addPgn(db, 0, 61444, ObjectDataBase::Transmit, 3,
           {spn(899, 102, 4, "torqueMode"), spn(190, 6, 16, "engineSpeed"), spn(512, 5, 8), gap,
            spn(900, 24, 40, "odometer")},
           QStringLiteral("EEC1"));
    addPgn(db, 0, 65262, ObjectDataBase::Receive, 6,
           {spn(190, 6, 16, "engineSpeed"), spn(110, 3, 16, "oilTemp")}, QStringLiteral("ET1"));
    addPgn(db, 0, 65263, ObjectDataBase::Receive, 6, {spn(111, 3, 16, "oilTemp")}, QStringLiteral("EFL"));
    cacheLines(db);
}

struct AdapterFiles
{
    QString c;
    QString cs;
};

AdapterFiles generate(ObjectDataBase& db, const QString& dir)
{
    CoDefineGenerator define;
    setProtocolFlags(define, db);
    runGenerator(define, db, dir, "gen_define.h");
    ExtDeclGenerator declarations;
    runGenerator(declarations, db, dir, "gen_extern_decl.h");
    J1939AdapterGenerator adapter;
    AdapterFiles files;
    files.c = runGenerator(adapter, db, dir, "gen_j1939_adapter.c");
    files.cs = QString::fromUtf8(testhelpers::readFile(dir + "/gen_j1939_adapter.cs"));
    return files;
}

TEST(J1939AdapterGenerator, CCompilesAndTheManagedSideParses)
{
    ObjectDataBase db;
    makeAdapterProject(db);
    QTemporaryDir dir;
    const AdapterFiles files = generate(db, dir.path());
    // The export decoration of a library build comes from its build.
    EXPECT_TRUE(compileWithBoth(dir.path(), "gen_j1939_adapter.c", {"-DEXTERN_DECL="}));
    ASSERT_TRUE(files.cs.endsWith("();\n}\n") || files.cs.endsWith("value);\n}\n")) << files.cs.toStdString();
    const QString csharp = QStandardPaths::findExecutable("mcs");
    if (csharp.isEmpty())
        GTEST_SKIP() << "no C# compiler (mono-mcs) to parse gen_j1939_adapter.cs";
    QString output;
    EXPECT_TRUE(runCompiler({"-target:library", "-out:adapter.dll", "gen_j1939_adapter.cs"}, dir.path(),
                            output, csharp))
        << output.toStdString();
}

struct PieceCase
{
    const char* name;
    bool managedFile;
    const char* piece;
    int count;
};

class AdapterPieces : public testing::TestWithParam<PieceCase>
{
};

TEST_P(AdapterPieces, StandInTheFileAsOftenAsExpected)
{
    ObjectDataBase db;
    makeAdapterProject(db);
    QTemporaryDir dir;
    const AdapterFiles files = generate(db, dir.path());
    const QString& text = GetParam().managedFile ? files.cs : files.c;
    EXPECT_EQ(text.count(QLatin1String(GetParam().piece)), GetParam().count) << text.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    J1939AdapterGenerator, AdapterPieces,
    testing::Values(
        PieceCase{"SevenBitsLiveInAByte", false,
                  "EXTERN_DECL UNSIGNED8 getSPN_899() {\n\treturn torqueMode;\n}\n", 1},
        PieceCase{"FortyBitsKeepTheirType", false,
                  "EXTERN_DECL void setSPN_900(UNSIGNED40 value) {\n\todometer = value;\n}\n", 1},
        PieceCase{"ManagedSignalNamedByItsPlace", false, "UNSIGNED8 mv_u8_0;\t/* 512/SPN 512 */\n", 1},
        PieceCase{"SharedVariableDefinedOnce", false, "oilTemp;\t/*", 1},
        PieceCase{"SpnInTwoPgnsHasOneGetter", false, " getSPN_190() {\n", 1},
        PieceCase{"GapsHaveNoVariable", false, "gapFiller", 0},
        PieceCase{"TransmitPgnsFirst", false,
                  "/* variable definition */ \n/* PGN 61444/EEC1 */\nUNSIGNED8 torqueMode;", 1},
        PieceCase{"ManagedByte", true,
                  "\t[DllImport(\"j1939\", EntryPoint = \"getSPN_899\")]\n\tpublic static extern byte "
                  "getSPN_899();\n",
                  1},
        PieceCase{"ManagedLong", true, "\tpublic static extern ulong getSPN_900();\n", 1},
        PieceCase{"ManagedSigned", true, "\tpublic static extern void setSPN_110(short value);\n", 1},
        PieceCase{"ManagedPgnComment", true, "\n\t/* PGN 65262/ET1 */\n", 1}),
    [](const testing::TestParamInfo<PieceCase>& info) { return std::string(info.param.name); });

TEST(J1939AdapterGenerator, TypesWithoutAManagedTwinAreMarked)
{
    EXPECT_EQ(J1939AdapterGenerator::managedType("INTEGER64"), "long");
    EXPECT_EQ(J1939AdapterGenerator::managedType("UNSIGNED48"), "ulong");
    EXPECT_EQ(J1939AdapterGenerator::managedType("BOOL_T"), "DATATYPE_NOT_HANDLED_AUTOMATICALLY");
}

} // namespace
