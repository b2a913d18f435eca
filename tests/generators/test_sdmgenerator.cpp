#include "generatortestsupport.h"

#include "common/testhelpers.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/gendefinegenerator.h"
#include "generators/multiprotocol/sdmgenerator.h"
#include "generators/multiprotocol/sdmgeneratorv4.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace generatortest;

namespace {

void addSafePgn(ObjectDataBase& db, quint8 line, quint32 number, quint8 direction, quint8 priority,
                const QList<ObjectDataBase::SPN>& spns)
{
    addPgn(db, line, number, direction, priority, spns, QStringLiteral("Safe %1").arg(number));
    ObjectDataBase::PGN pgn;
    db.getPGN(line, number, direction, pgn);
    pgn.issafe = true;
    pgn.safetytype = 1;
    pgn.srvt_ms = 300;
    db.addPGN(line, number, pgn);
}

// Signals at the fixed places of both mappings: 2, 4 and 2 bits in the
// first byte, then 8, 16 and 32 bits on byte bounds.
QList<ObjectDataBase::SPN> alignedSignals(const QString& prefix)
{
    return {spn(520192, 100, 2, prefix + "Mode"),  spn(520193, 102, 4, prefix + "Level"),
            spn(520194, 100, 2, prefix + "Spare"), spn(520195, 5, 8, "sdgCount"),
            spn(520196, 6, 16, prefix + "Speed"),  spn(520197, 7, 32, prefix + "Distance")};
}

// Signals across byte bounds at any bit, and an array of the application.
QList<ObjectDataBase::SPN> unalignedSignals()
{
    return {spn(520200, 101, 3, "sdgFlags"), spn(520201, 6, 16, "sdgTorque"),
            spn(520202, 105, 7, "levels[0]"), spn(520203, 105, 7, "levels[1]"),
            spn(520204, 1, 1, "sdgValid")};
}

void makeSafetyProject(ObjectDataBase& db, bool twoLines, bool onlyFixedPlaces)
{
    db.createNewDataBase();
    addLine(db, 0, 2);
    if (twoLines)
        addLine(db, 1, 2);
    db.setJ1939Setting("safetysupport", "1");
    db.setJ1939Setting("sdm_loop_counter", "3");
    db.setJ1939Setting("sdm_rec_addr_cnt", "2");
    addSafePgn(db, 0, 65280, ObjectDataBase::Transmit, 3, alignedSignals("sdgTx"));
    addSafePgn(db, 0, 65281, ObjectDataBase::Receive, 6, alignedSignals("sdgRx"));
    if (!onlyFixedPlaces) {
        addSafePgn(db, 0, 65282, ObjectDataBase::Transmit, 3, unalignedSignals());
        addSafePgn(db, 0, 65283, ObjectDataBase::Receive, 3, unalignedSignals());
    }
    if (twoLines)
        addSafePgn(db, 1, 65284, ObjectDataBase::Receive, 6, {spn(520210, 6, 16, "sdgPressure")});
    cacheLines(db);
}

struct CompileCase
{
    const char* name;
    bool twoLines;
    bool oldMapping;
    // A line that only the chosen mapping writes.
    const char* telltale;
    const char* summary;
};

class SafetyProject : public testing::TestWithParam<CompileCase>
{
};

TEST_P(SafetyProject, CompilesWithGccAndClangInBothForms)
{
    for (const bool core : {false, true}) {
        SCOPED_TRACE(core ? "V4" : "classic");
        ObjectDataBase db;
        makeSafetyProject(db, GetParam().twoLines, GetParam().oldMapping);
        QTemporaryDir dir;
        if (GetParam().oldMapping)
            writeFile(dir.filePath("old_sdm_mapping.txt"), QString());
        std::unique_ptr<CoDefineGenerator> define(core ? new GenDefineGenerator : new CoDefineGenerator);
        setProtocolFlags(*define, db);
        runGenerator(*define, db, dir.path(), "gen_define.h");
        std::unique_ptr<SDMGenerator> sdg(core ? new SDMGeneratorV4 : new SDMGenerator);
        // The pipeline asks before the start, which is where the mapping is chosen.
        sdg->setOutputDir(dir.path());
        ASSERT_TRUE(sdg->canWrite());
        const QString text = runGenerator(*sdg, db, dir.path(), "gen_sdg.c");
        EXPECT_FALSE(text.contains("#error")) << text.toStdString();
        EXPECT_TRUE(text.contains(QLatin1String(GetParam().telltale))) << text.toStdString();
        EXPECT_TRUE(text.contains("        *pPgn = 0x000cff00ul; /* including priority, edp and dp */\n"));
        EXPECT_TRUE(compilesWithStack(dir.path(), "gen_sdg.c", core, "gcc"));
        EXPECT_TRUE(compilesWithStack(dir.path(), "gen_sdg.c", core, "clang"));
        EXPECT_EQ(sdg->resultInfo(), QLatin1String(GetParam().summary));
    }
}

INSTANTIATE_TEST_SUITE_P(
    SDMGenerator, SafetyProject,
    testing::Values(
        CompileCase{"OneLine", false, false, "        sdgTorque |= ((UNSIGNED16)pBuffer[1] << 5u);\n",
                    "2 transmit, 2 receive safety PGNs"},
        CompileCase{"TwoLines", true, false, "    if ((pgn == 0x0018ff04ul) && (canLine == 1u)) {\n",
                    "2 transmit, 3 receive safety PGNs"},
        CompileCase{"OldMapping", false, true, "|= (sdgTxLevel & 0x0fu) << 2u;\n",
                    "1 transmit, 1 receive safety PGNs"},
        CompileCase{"OldMappingTwoLines", true, true, "sdgRxSpeed |= (UNSIGNED16)(pBuffer[3]) << 8;\n",
                    "1 transmit, 2 receive safety PGNs"}),
    [](const testing::TestParamInfo<CompileCase>& info) { return std::string(info.param.name); });

SDMGenerator::Signal signalAt(int firstBit, int bits, int dataType = 7, const QString& variable = "v")
{
    SDMGenerator::Signal signal;
    signal.dataType = dataType;
    signal.variable = variable;
    signal.firstBit = firstBit;
    signal.bits = bits;
    return signal;
}

QStringList filled(QStringList lines, int fromByte, const QString& buffer = "pBuffer")
{
    for (int byte = fromByte; byte < 8; ++byte)
        lines << QStringLiteral("        %1[%2] = 0xff;\n").arg(buffer).arg(byte);
    return lines;
}

struct MappingCase
{
    const char* name;
    QList<SDMGenerator::Signal> signalList;
    bool oldMapping;
    bool core;
    QStringList packing;
    QStringList unpacking;
};

class MappingLines : public testing::TestWithParam<MappingCase>
{
};

TEST_P(MappingLines, AreExact)
{
    const MappingCase& row = GetParam();
    const QString buffer = row.core ? "pData" : "pBuffer";
    EXPECT_EQ(SDMGenerator::packing(row.signalList, buffer, row.oldMapping, row.core), row.packing);
    EXPECT_EQ(SDMGenerator::unpacking(row.signalList, row.oldMapping), row.unpacking);
}

const QString structureError = "#error SDM structure not supported\n";
const QString typeError = "#error data type not supported.\n";

INSTANTIATE_TEST_SUITE_P(
    SDMGenerator, MappingLines,
    testing::Values(
        MappingCase{"ThreeBitsAtBitTwo",
                    {signalAt(2, 3, 101)},
                    false,
                    false,
                    filled({"        pBuffer[0] = 0x00u;\n",
                            "        pBuffer[0] |= (UNSIGNED8)((v & 0x07u) << 2u);\n",
                            "        /* set 3 unused bits */\n", "        pBuffer[0] |= 0xe0;\n"},
                           1),
                    {"        v = (pBuffer[0] >> 2) & 0x07u;\n"}},
        MappingCase{"SixteenBitsAcrossThreeBytes",
                    {signalAt(4, 16, 6)},
                    false,
                    false,
                    filled({"        pBuffer[0] = 0x00u;\n",
                            "        pBuffer[0] |= (UNSIGNED8)((v & 0x0fu) << 4u);\n",
                            "        pBuffer[1] = 0x00u;\n",
                            "        pBuffer[1] |= (UNSIGNED8)((v & 0xff0u) >> 4u);\n",
                            "        pBuffer[2] = 0x00u;\n",
                            "        pBuffer[2] |= (UNSIGNED8)((v & 0xf000u) >> 12u);\n",
                            "        /* set 4 unused bits */\n", "        pBuffer[2] |= 0xf0;\n"},
                           3),
                    {"        v = 0x00u;\n", "        v |= ((UNSIGNED16)pBuffer[0] >> 4u) & 0x0fu;\n",
                     "        v |= ((UNSIGNED16)pBuffer[1] << 4u);\n",
                     "        v |= ((UNSIGNED16)pBuffer[2] << 12u) & 0xf000u;\n"}},
        MappingCase{
            "WholeBytesAndTheV4Length",
            {signalAt(0, 8, 5, "a"), signalAt(8, 16, 6, "b[2]"), signalAt(24, 1, 1, "c")},
            false,
            true,
            {"        pData[0] = a;\n", "        pData[1] = 0x00u;\n",
             "        pData[1] |= (UNSIGNED8)(b[2] & 0xffu);\n", "        pData[2] = 0x00u;\n",
             "        pData[2] |= (UNSIGNED8)((b[2] & 0xff00u) >> 8u);\n", "        pData[3] = 0x00u;\n",
             "        pData[3] |= (UNSIGNED8)(c & 0x01u);\n", "        /* set 7 unused bits */\n",
             "        pData[3] |= 0xfe;\n", "        pgLen = 4;\n"},
            {"        a = pBuffer[0];\n", "        b[2] = 0x00u;\n",
             "        b[2] |= ((UNSIGNED16)pBuffer[1]);\n",
             "        b[2] |= ((UNSIGNED16)pBuffer[2] << 8u);\n", "        c = pBuffer[3] & 0x01u;\n"}},
        MappingCase{
            "OldFixedPlaces",
            {signalAt(0, 2, 100, "a"), signalAt(2, 4, 102, "b"), signalAt(16, 16, 6, "c")},
            true,
            false,
            filled({"        pBuffer[0] = 0x00u;\n", "        pBuffer[0] |= (a & 0x03u) << 0u;\n",
                    "        pBuffer[0] |= (b & 0x0fu) << 2u;\n",
                    "        pBuffer[2] = (UNSIGNED8)(c & 0xffu);\n",
                    "        pBuffer[3] = (UNSIGNED8)((c >> 8) & 0xffu);\n", "        pBuffer[1] = 0xff;\n"},
                   4),
            {"        a = (UNSIGNED8) ((pBuffer[0] >> 0) & 0x03u);\n",
             "        b = (UNSIGNED8) ((pBuffer[0] >> 2) & 0x0fu);\n",
             "        c = (UNSIGNED16)pBuffer[2];\n", "        c |= (UNSIGNED16)(pBuffer[3]) << 8;\n"}},
        MappingCase{"OldMappingRefusesOddWidthsAndPlaces",
                    {signalAt(0, 5, 103), signalAt(12, 8, 5)},
                    true,
                    false,
                    filled({typeError, structureError}, 0),
                    {typeError, structureError}},
        MappingCase{
            "LongerThanTheMessage",
            {signalAt(0, 32), signalAt(32, 32), signalAt(64, 8, 5, "w")},
            false,
            false,
            {structureError, "        pBuffer[0] = 0x00u;\n",
             "        pBuffer[0] |= (UNSIGNED8)(v & 0xffu);\n", "        pBuffer[1] = 0x00u;\n",
             "        pBuffer[1] |= (UNSIGNED8)((v & 0xff00u) >> 8u);\n", "        pBuffer[2] = 0x00u;\n",
             "        pBuffer[2] |= (UNSIGNED8)((v & 0xff0000u) >> 16u);\n", "        pBuffer[3] = 0x00u;\n",
             "        pBuffer[3] |= (UNSIGNED8)((v & 0xff000000u) >> 24u);\n",
             "        pBuffer[4] = 0x00u;\n", "        pBuffer[4] |= (UNSIGNED8)(v & 0xffu);\n",
             "        pBuffer[5] = 0x00u;\n", "        pBuffer[5] |= (UNSIGNED8)((v & 0xff00u) >> 8u);\n",
             "        pBuffer[6] = 0x00u;\n", "        pBuffer[6] |= (UNSIGNED8)((v & 0xff0000u) >> 16u);\n",
             "        pBuffer[7] = 0x00u;\n",
             "        pBuffer[7] |= (UNSIGNED8)((v & 0xff000000u) >> 24u);\n"},
            {structureError, "        v = 0x00u;\n", "        v |= ((UNSIGNED32)pBuffer[0]);\n",
             "        v |= ((UNSIGNED32)pBuffer[1] << 8u);\n",
             "        v |= ((UNSIGNED32)pBuffer[2] << 16u);\n",
             "        v |= ((UNSIGNED32)pBuffer[3] << 24u);\n", "        v = 0x00u;\n",
             "        v |= ((UNSIGNED32)pBuffer[4]);\n", "        v |= ((UNSIGNED32)pBuffer[5] << 8u);\n",
             "        v |= ((UNSIGNED32)pBuffer[6] << 16u);\n",
             "        v |= ((UNSIGNED32)pBuffer[7] << 24u);\n"}},
        MappingCase{"OverlapWideValueAndReal",
                    {signalAt(0, 8, 5), signalAt(4, 8, 5), signalAt(8, 40, 24), signalAt(8, 32, 8)},
                    false,
                    false,
                    filled({structureError, typeError, typeError, "        pBuffer[0] = v;\n"}, 1),
                    {structureError, typeError, typeError, "        v = pBuffer[0];\n"}}),
    [](const testing::TestParamInfo<MappingCase>& info) { return std::string(info.param.name); });

// A safe PGN longer than the message, as an unchecked project may hold it:
// the file is whole, and the #error line stops its compilation.
TEST(SDMGenerator, PgnLongerThanTheMessageGivesAnErrorLineNotACrash)
{
    ObjectDataBase db;
    makeSafetyProject(db, false, true);
    addSafePgn(db, 0, 65290, ObjectDataBase::Transmit, 3,
               {spn(520220, 7, 32, "sdgA"), spn(520221, 7, 32, "sdgB"), spn(520222, 5, 8, "sdgC")});
    cacheLines(db);
    QTemporaryDir dir;
    SDMGeneratorV4 sdg;
    const QString text = runGenerator(sdg, db, dir.path(), "gen_sdg.c");
    EXPECT_EQ(text.count("#error SDM structure not supported\n"), 1);
    EXPECT_TRUE(text.endsWith("\treturn(genSdgReceiveMapping(recSdg, pData));\n}\n")) << text.toStdString();
}

// The whole command-line run of a device with safety data messages: the
// step runs behind gen_extern_decl.h and its completion line carries the
// summary.
TEST(SDMGenerator, RunOfASafetyDeviceReportsItsSummary)
{
    QTemporaryDir dir;
    const QString project = dir.filePath(QStringLiteral("engine.trwp"));
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.openTextProject(TRW_SOURCE_DIR "/examples/j1939_engine_ecu/j1939_engine_ecu.trwt"));
        db.setJ1939Setting("safetysupport", "1");
        addSafePgn(db, 0, 65280, ObjectDataBase::Transmit, 3, alignedSignals("sdgTx"));
        ASSERT_TRUE(db.saveDatabase(project));
    }
    const testhelpers::RunResult result = testhelpers::runTrw({"-project", project}, dir.path());
    EXPECT_EQ(result.exitCode, 0) << result.out.toStdString();
    const QString started = QStringLiteral("Generation of file in %1 started\n").arg(dir.path());
    const QString completed = "Generation of gen_sdg.c completed. (1 transmit, 0 receive safety PGNs)\n";
    EXPECT_LT(result.out.indexOf("Generation of gen_extern_decl.h completed."), result.out.indexOf(started));
    EXPECT_LT(result.out.indexOf(started), result.out.indexOf(completed)) << result.out.toStdString();
    EXPECT_TRUE(compilesWithStack(dir.path(), "gen_sdg.c", true, "gcc"));
}

} // namespace
