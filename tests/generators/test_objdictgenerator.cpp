#include "objdicttestsupport.h"

#include "generatortestsupport.h"

#include "common/testhelpers.h"
#include "generators/canopen/objdictgenerator.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

using namespace objdicttest;

namespace {

// The value table a description row points into, from its type and service
// words ("CO_DTYPE_U8_CONST", or "CORE_DTYPE_U8" with "CO_DSPEC_CONST").
QString valueTable(const DescriptionRow& row)
{
    static const QRegularExpression words(
        QStringLiteral("^(?:CO|CORE)_DTYPE_([A-Z0-9]+?)(_CONST|_VAR|_PTR)?$"));
    static const QMap<QString, QString> strings = {
        {"VS", "vis_string"}, {"UTF8", "utf8_string"}, {"OS", "octet_string"}};
    const QRegularExpressionMatch match = words.match(row.typeWord);
    const QString word = match.captured(1);
    const QString service = row.storageWord.isEmpty()
                                ? match.captured(2)
                                : row.storageWord.mid(QStringLiteral("CO_DSPEC").size());
    if (word == QLatin1String("DOMAIN"))
        return QStringLiteral("od_domain");
    const QString suffix = strings.value(word, word == QLatin1String("BOOL") ? "u8" : word.toLower());
    if (service == QLatin1String("_CONST"))
        return QStringLiteral("od_const_") + suffix;
    if (service == QLatin1String("_VAR") || (service == QLatin1String("_PTR") && strings.contains(word)))
        return QStringLiteral("od_") + suffix;
    if (service == QLatin1String("_PTR"))
        return QStringLiteral("od_ptr_") + suffix;
    return QString();
}

struct DictionaryObject
{
    quint8 line;
    quint16 index;
};

// Objects in the assign table: all of lines 0 to 31 from 0x1000, except virtual ones.
QList<DictionaryObject> expectedAssignOrder(ObjectDataBase& db)
{
    QList<DictionaryObject> objects;
    for (quint8 line : db.getNodeList()) {
        if (line > 31)
            continue;
        for (quint16 index : db.getIndexList(line, 0x1000, 0xFFFF)) {
            SUBINDEX_DATA_T first;
            if (db.getSubIndex(line, index, 0, first) && first.implementation == 3)
                continue;
            objects << DictionaryObject{line, index};
        }
    }
    return objects;
}

// What a firmware build relies on across gen_objdict.c and gen_define.h.
void expectConsistent(ObjectDataBase& db, const Generated& files)
{
    const QMap<QString, QString> objdictDefines = defines(files.objdict);
    const QMap<QString, QString> defineValues = defines(files.define);
    const QMap<QString, int> sizes = tableSizes(files.objdict);
    const QList<AssignRow> assign = assignRows(files.objdict);
    const QList<DescriptionRow> descriptions = descriptionRows(files.objdict);

    EXPECT_EQ(objdictDefines.value("CO_OD_ASSIGN_CNT"), QStringLiteral("%1u").arg(assign.size()));
    EXPECT_EQ(objdictDefines.value("CO_OBJ_DESC_CNT"), QStringLiteral("%1u").arg(descriptions.size()));

    const QList<DictionaryObject> expected = expectedAssignOrder(db);
    ASSERT_EQ(assign.size(), expected.size());
    for (int i = 0; i < assign.size(); ++i) {
        EXPECT_EQ(assign.at(i).index, expected.at(i).index) << "assign row " << i;
        ASSERT_LE(assign.at(i).start + assign.at(i).described, descriptions.size()) << "assign row " << i;
        if (assign.at(i).described > 0) {
            const DescriptionRow& first = descriptions.at(assign.at(i).start);
            EXPECT_EQ(first.index, assign.at(i).index) << "assign row " << i;
        }
    }
    for (const DescriptionRow& row : descriptions) {
        const QString table = valueTable(row);
        if (!table.isEmpty()) {
            ASSERT_TRUE(sizes.contains(table)) << table.toStdString() << " for 0x" << std::hex << row.index;
            EXPECT_LT(row.valueSlot, sizes.value(table))
                << table.toStdString() << " for 0x" << std::hex << row.index;
        }
        const QString constants = QStringLiteral("od_const_") + table.section(QLatin1Char('_'), -1);
        if (table.startsWith(QLatin1String("od_")) && !table.contains(QLatin1String("string")) &&
            sizes.contains(constants)) {
            EXPECT_LT(row.defaultSlot, sizes.value(constants)) << "default of 0x" << std::hex << row.index;
        }
    }

    // The line count of the multi-line start-up is the stack's line count.
    static const QRegularExpression lineFunction(QStringLiteral("^RET_T coCanOpenStackInit_line(\\d+)\\(\\n"),
                                                 QRegularExpression::MultilineOption);
    int lineFunctions = 0;
    for (auto it = lineFunction.globalMatch(files.objdict); it.hasNext(); it.next())
        ++lineFunctions;
    const QString lineCount =
        defineValues.value("CO_MULTI_LINE_CNT", defineValues.value("CAN_MULTI_LINE_CNT"));
    if (lineFunctions > 0) {
        EXPECT_EQ(lineCount, QStringLiteral("%1u").arg(lineFunctions));
    }

    // Every static mapping table has exactly the stack's number of entries.
    static const QRegularExpression mapTable(
        QStringLiteral("mapTable[TR]PDO\\w* = \\{\\n\\t\\(UNSIGNED8\\)\\d+u,\\n\\t\\{\\n"
                       "((?:\\t\\t\\{[^\\n]*\\n)+)\\t\\}\\n"));
    for (auto it = mapTable.globalMatch(files.objdict); it.hasNext();) {
        const QString rows = it.next().captured(1);
        EXPECT_EQ(defineValues.value("CO_MAX_MAP_ENTRIES"),
                  QStringLiteral("%1u").arg(rows.count(QLatin1String("{NULL")) +
                                            rows.count(QLatin1String(" },\n"))));
    }

    // One TPDO start per transmit PDO of each line.
    const QList<int> transmitCounts = countList(defineValues.value("CO_TXPDO_COUNTS"));
    int transmitTotal = 0;
    for (int count : transmitCounts)
        transmitTotal += count;
    EXPECT_EQ(files.objdict.count(QLatin1String("retVal = coPdoTransmitInit(")),
              files.objdict.contains(QLatin1String("j1939OdInit")) ? 0 : transmitTotal);
}

// The pipeline writes gen_objdict.c for projects whose lines all carry CANopen
// only; a project that mixes protocols gets its dictionary in gen_mp.c, with a
// gen_define.h of the multi-protocol form.
bool canopenOnly(ObjectDataBase& db)
{
    for (quint8 line : db.getNodeList()) {
        if (db.getGeneralSetting(QStringLiteral("line%1type").arg(line)).toInt() != 1)
            return false;
    }
    return true;
}

// Applies settings written as "key=value key=value"; the hidden multi-line
// switch is a misc setting, all others are general ones.
void applySettings(ObjectDataBase& db, const char* settings)
{
    for (const QString& setting : QString::fromUtf8(settings).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString key = setting.section(QLatin1Char('='), 0, 0);
        const QString value = setting.section(QLatin1Char('='), 1);
        if (key == QLatin1String("generateML"))
            db.setMiscSetting(key, value);
        else
            db.setGeneralSetting(key, value);
    }
}

} // namespace

TEST(ObjDictGenerator, ExampleProjectsCompileInBothStackForms)
{
    const QStringList projects = testhelpers::exampleProjects();
    ASSERT_FALSE(projects.isEmpty());
    for (const QString& path : projects) {
        for (bool core : {false, true}) {
            SCOPED_TRACE(path.toStdString() + (core ? " V4" : " classic"));
            ObjectDataBase db;
            ASSERT_TRUE(db.openDataBase(path, true));
            QTemporaryDir dir;
            const bool compile = canopenOnly(db);
            const Generated files = generate(db, dir.path(), {core, false, false, compile});
            ASSERT_FALSE(files.objdict.isEmpty());
            if (!compile)
                continue;
            EXPECT_TRUE(files.compiled) << files.compilerOutput.toStdString();
            expectConsistent(db, files);
        }
    }
}

// A UDS server whose security access and communication control indications
// are bound statically.
constexpr const char* staticUdsIndications =
    "udsserver_supported=1 udsserver_version=5 uds_physical_request_id=0x7e0 uds_physical_response_id=0x7e8 "
    "uds_functional_request_id=0x7df uds_server_active=1 uds_static_indication=1 "
    "uds_fct_sec_access_req_key=appSeedKey uds_fct_req_commgt=appCommControl";

struct SyntheticCase
{
    const char* name;
    bool twoLines;
    bool core;
    bool compact;
    bool camServer;
    const char* settings;
};

class SyntheticProject : public testing::TestWithParam<SyntheticCase>
{
};

TEST_P(SyntheticProject, CompilesAndStaysConsistent)
{
    const SyntheticCase& run = GetParam();
    ObjectDataBase db;
    makeSyntheticProject(db, run.twoLines);
    applySettings(db, run.settings);
    QTemporaryDir dir;
    const Generated files = generate(db, dir.path(), {run.core, run.compact, run.camServer, true});
    EXPECT_TRUE(files.compiled) << files.compilerOutput.toStdString();
    expectConsistent(db, files);
}

INSTANTIATE_TEST_SUITE_P(
    ObjDictGenerator, SyntheticProject,
    testing::Values(
        SyntheticCase{"OneLineClassic", false, false, false, false, ""},
        SyntheticCase{"OneLineV4", false, true, false, false, ""},
        SyntheticCase{"TwoLinesClassic", true, false, false, false, ""},
        SyntheticCase{"TwoLinesV4Compact", true, true, true, false, ""},
        SyntheticCase{
            "OneLineCompactLimitsFdStringsOverwrite", false, false, true, false,
            "limit_check=1 canfd_supported=1 generate_string_defaults=1 overwrite_predef=1 event_led=1 "
            "lss_supported=1 nmtmaster=1 fct_nmt=testIndication fct_can=testIndication"},
        SyntheticCase{"TwoLinesV4LimitsFdOptionsOverwrite", true, true, false, false,
                      "limit_check=1 canfd_supported=1 usdo_client_cnt=1 overwrite_predef=1,1 nmtmaster=2,0 "
                      "lss_supported=1 generate_string_defaults=1 fct_pdo_update=testIndication"},
        SyntheticCase{"TwoLinesClassicRunTimeMaster", true, false, false, false,
                      "nmtmaster=2,1 lss_supported=1"},
        SyntheticCase{"OneLineRunTimeMasterV4", false, true, false, false, "nmtmaster=2 lss_supported=1"},
        SyntheticCase{"UninitialisedOldInitStructure", false, false, false, false,
                      "init_static_variables=0 new_init_structure=0 "
                      "static_memory_specifier=__attribute__((aligned(4)))"},
        SyntheticCase{"ForcedMultiLineV4", false, true, true, false, "generateML=true"},
        SyntheticCase{"UdsServerWithIsoTpClassic", false, false, false, false,
                      "udsserver_supported=1 udsserver_version=4 uds_physical_request_id=0x7e0 "
                      "uds_physical_response_id=0x7e8 uds_functional_request_id=0x7df uds_server_active=1 "
                      "isotp_supported=1 isotp_client_con=1 isotp_server_con=1 uds_seedkey_length=4 "
                      "uds_session_timeout=5000"},
        SyntheticCase{"UdsServerTwoLinesV4", true, true, false, false,
                      "udsserver_supported=1 udsserver_version=5 uds_physical_request_id=0x7e0,0x7e1 "
                      "uds_physical_response_id=0x7e8,0x7e9 uds_functional_request_id=0x7df,0x7df "
                      "uds_server_active=1,0 uds_seedkey_length=4 uds_session_timeout=5000"},
        SyntheticCase{"UdsStaticIndicationV4", false, true, false, false, staticUdsIndications},
        SyntheticCase{"SdoServerOfJ1939Device", false, false, false, true, ""},
        SyntheticCase{"SdoServerOfJ1939DeviceTwoLinesV4", true, true, false, true, ""}),
    [](const testing::TestParamInfo<SyntheticCase>& info) { return std::string(info.param.name); });

namespace {

struct PieceCase
{
    PieceCase(const char* name, bool twoLines, bool core, const char* settings, const QStringList& pieces)
        : name(name), twoLines(twoLines), core(core), settings(settings), pieces(pieces)
    {
    }

    const char* name;
    bool twoLines;
    bool core;
    const char* settings;
    QStringList pieces;
};

class ExactPieces : public testing::TestWithParam<PieceCase>
{
};

} // namespace

TEST_P(ExactPieces, AreWrittenAsTheStackExpectsThem)
{
    const PieceCase& run = GetParam();
    ObjectDataBase db;
    makeSyntheticProject(db, run.twoLines);
    applySettings(db, run.settings);
    QTemporaryDir dir;
    const Generated files = generate(db, dir.path(), {run.core, false, false, false});
    for (const QString& piece : run.pieces)
        EXPECT_TRUE(files.objdict.contains(piece)) << "missing: " << piece.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    ObjDictGenerator, ExactPieces,
    testing::Values(
        PieceCase("TableNames", false, false, "",
                  {"static UNSIGNED8 CO_STORAGE_CLASS\tod_u8[",
                   "static INTEGER8  CO_STORAGE_CLASS\tod_i8[1]= {\n",
                   "static CO_CONST UNSIGNED32 CO_CONST_STORAGE_CLASS\tod_const_u32[",
                   "static INTEGER8  CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i8[1] = {\n",
                   "static VIS_STRING\tod_vis_string[1] = {\n\t&(app_text_l0[0])};\n",
                   "static UNSIGNED32\tod_vis_string_len[1] = {\n\t16ul};\n",
                   "static OCTET_STRING\t*od_octet_string[1] = {\n",
                   "static CO_DOMAIN_PTR\tod_domain[1] = {\n\tNULL};\n",
                   "static UNSIGNED32 CO_STORAGE_CLASS\tod_domain_actLen[1] = {\n\t0ul};\n",
                   "CO_CONST CO_OBJECT_DESC_T CO_CONST_STORAGE_CLASS od_description[CO_OBJ_DESC_CNT] = {\n",
                   "CO_CONST CO_OD_ASSIGN_T CO_CONST_STORAGE_CLASS od_assign[CO_OD_ASSIGN_CNT] = {\n",
                   "static CO_CONST PDO_TR_MAP_TABLE_T CO_CONST_STORAGE_CLASS\tmapTableTPDO1 = "
                   "{\n\t(UNSIGNED8)3u,\n",
                   "static CO_CONST PDO_REC_MAP_TABLE_T CO_CONST_STORAGE_CLASS\tmapTableRPDO1 = {\n",
                   "CO_CONST CO_OD_DATA_VARIABLES_T od_data_variables = {\n   &od_const_u8[0]\n    , "
                   "&od_const_u16[0]\n",
                   "    retVal = coNmtInit(0u);\n    if (retVal != RET_OK) {\n"}),
        PieceCase("WideIntegerInitialisers", false, false, "",
                  {"\tU24_SET(0x01,0x23,0x45) /* 0x2002:2 */",
                   "\tU40_SET(0x01,0x02,0x03,0x04,0x05) /* 0x2002:5 */",
                   "\tU48_SET(0x01,0x02,0x03,0x04,0x05,0x06) /* 0x2002:6 */",
                   "\tU64_SET(0x01,0x02,0x03,0x04,0x05,0x06,0x07,0x08) /* 0x2002:7 */",
                   "\tI24_SET(0xff,0xff,0xfe) /* 0x2002:10 */",
                   "\tU64_SET(0x00,0x00,0x00,0x00,0x00,0x00,0x00,0x10)",
                   "\t(INTEGER32)-70000L /* 0x2002:11 */", "\t(UNSIGNED32)4000000000UL /* 0x2002:4 */",
                   "\t(REAL32)1.5000000f /* 0x2002:12 */", "\t(REAL32)1.50000000f"}),
        PieceCase("ConstantValues", false, false, "",
                  {"\t(UNSIGNED32)1536UL", "\t\"\\x41\\x42\\x43\"", "\t\"hello\"", "\t(INTEGER16)-1",
                   "\t{ (UNSIGNED8)5u, CO_DTYPE_VS_CONST , (UNSIGNED16)1u, "}),
        PieceCase(
            "SingleLineStart", false, false, "nmtmaster=2",
            {"RET_T coCanOpenStackInitPara(\n         CO_EVENT_STORE_T pLoadFunction,\n         "
             "CO_INIT_OPTION_T "
             "*pCoOptions\n    )\n{\n    RET_T retVal;\n",
             "    coOdInitOdPtr(&od_assign[0], CO_OD_ASSIGN_CNT, &od_description[0], CO_OBJ_DESC_CNT, NULL, "
             "&od_data_variables);\n",
             "    retVal = coSyncInit(od_const_u32[", "    retVal = coPdoTransmitInit(1u, od_const_u8[",
             ", &mapTableTPDO1);\n", ", &mapTableRPDO1);\n", "    if (pCoOptions->master == 1) {\n"}),
        PieceCase("MultiLineSignatures", true, false, "canfd_supported=1",
                  {"RET_T coCanOpenStackInit_common(CO_EVENT_STORE_T pLoadFunction, BOOL_T *pModes);\n",
                   "RET_T coCanOpenStackInit_line1(UNSIGNED8 canLine, CO_INIT_OPTION_T *pCoOptions, BOOL_T "
                   "*pModes);\n",
                   "RET_T coCanOpenStackInit(\n         CO_EVENT_STORE_T pLoadFunction\n         , BOOL_T "
                   "*pModes\n    )\n",
                   "RET_T coCanOpenStackInit_line1(\n                  UNSIGNED8 canLine,\n                  "
                   "CO_INIT_OPTION_T *pCoOptions\n                  , BOOL_T *pModes\n       )\n{\n    RET_T "
                   "retVal;\n",
                   "RET_T coCanOpenStackInit_finish(void)\n{\n",
                   "   \tcase 1:\n   \t\tretVal = coCanOpenStackInit_line1(",
                   "    coOdInitOdPtr(canLine, &od_assign[",
                   "static CO_CONST PDO_TR_MAP_TABLE_T "
                   "CO_CONST_STORAGE_CLASS\tmapTableTPDO1_1 = {\n",
                   "    retVal = coPdoTransmitInit(canLine, 1u, od_const_u8[",
                   "    retVal = coNmtInit(canLine, 0u);\n    return(RET_OK);\n}\n",
                   "    RET_T retVal;\n    (void) pCoOptions; /* currently unused */\n\n"}),
        PieceCase(
            "V4Words", false, true, "overwrite_predef=1",
            {" (V4)\n", "#ifndef CORE_CONST\n#define CORE_CONST const\n#endif\n",
             "CORE_CONST CO_OD_ASSIGN_T CORE_CONST_STORAGE_CLASS od_assign[CO_OD_ASSIGN_CNT] = {\n",
             "/* CANopen service initialization variables */\nCO_SERVICE_INIT_VAL_T\tserviceInitVars = {\n",
             "   { CO_OBJECT_COUNTS },\n", "    retVal = coreStackInit(&commonInitVars);\n",
             "CORE_COMMON_INIT_VAL_T    commonInitVars = {\n", "CORE_DTYPE_U8", "CO_DSPEC_VAR",
             "#ifdef GEN_OVERWRITE_PREDEF_CONN_SET\n", "RET_T genLoadIndication(UNSIGNED8 subIndex)\n",
             "\t\tcobId = nodeId + 0x180;\n", "CORE_HANDLE_WATCHDOG\n",
             "\t{ (UNSIGNED8)5u, CORE_DTYPE_VS     , CO_DSPEC_CONST, (UNSIGNED16)1u, "}),
        PieceCase(
            "UdsStaticIndicationV4", false, true, staticUdsIndications,
            {"\tCO_TRUE,\n\tNULL,\n\t0\n};\n\n\n/* definition of static indication function pointers */\n"
             "#if UDS_EVENT_STATIC_SEC_ACCESS_REQ_KEY\n"
             "CORE_CONST UDS_EVENT_SECURITY_ACCESS_REQ_KEY_T udsEventSecurityAccessReqKeyInd = appSeedKey;\n"
             "#endif\n#if UDS_EVENT_STATIC_REQ_COMMGT\n"
             "CORE_CONST UDS_EVENT_REQ_COMMGT_T udsReqCommgtInd = appCommControl;\n#endif\n\n"})),
    [](const testing::TestParamInfo<PieceCase>& info) { return std::string(info.param.name); });

namespace {

SUBINDEX_DATA_T entry(const QString& defaultValue = QStringLiteral("0"))
{
    SUBINDEX_DATA_T sub;
    sub.datatype = 5;
    sub.defaultvalue = defaultValue;
    return sub;
}

struct CompactCase
{
    const char* name;
    QList<quint8> subindices;
    // Subindices whose entry differs from the others.
    QList<quint8> different;
    quint8 limit;
};

class CompactLimit : public testing::TestWithParam<CompactCase>
{
};

} // namespace

TEST_P(CompactLimit, FindsTheRunOfEqualSubindicesAtTheEnd)
{
    const CompactCase& run = GetParam();
    QList<SUBINDEX_DATA_T> subs;
    for (quint8 subindex : run.subindices)
        subs << entry(run.different.contains(subindex) ? QStringLiteral("%1").arg(subindex)
                                                       : QStringLiteral("0"));
    QList<const SUBINDEX_DATA_T*> pointers;
    for (const SUBINDEX_DATA_T& sub : subs)
        pointers << &sub;
    EXPECT_EQ(compactLimit(run.subindices, pointers), run.limit);
}

namespace {

QList<quint8> range(int from, int to)
{
    QList<quint8> values;
    for (int i = from; i <= to; ++i)
        values << quint8(i);
    return values;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(ObjDictGenerator, CompactLimit,
                         testing::Values(CompactCase{"AllEqual", range(0, 254), {0}, 1},
                                         CompactCase{"MiddleDiffers", range(0, 10), {0, 5}, 6},
                                         CompactCase{"LastDiffers", range(0, 10), {0, 10}, 255},
                                         CompactCase{"GapInNumbers", {0, 1, 2, 4, 5}, {0}, 255},
                                         CompactCase{"TooFewSubindices", {0, 1}, {0}, 255},
                                         CompactCase{"SubindexZeroTakesNoPart", {0, 1, 2}, {}, 1}),
                         [](const testing::TestParamInfo<CompactCase>& info) {
                             return std::string(info.param.name);
                         });

namespace {

using Prepare = std::function<void(ObjectDataBase&, const QString& dir)>;

// The synthetic project with the settings, changed by `prepare`, generated in
// the classic form; it must compile.
Generated classicSynthetic(bool twoLines, const char* settings = "", const Prepare& prepare = {},
                           bool compact = false)
{
    ObjectDataBase db;
    makeSyntheticProject(db, twoLines);
    applySettings(db, settings);
    QTemporaryDir dir;
    if (prepare)
        prepare(db, dir.path());
    const Generated files = generate(db, dir.path(), {false, compact, false, true});
    EXPECT_TRUE(files.compiled) << files.compilerOutput.toStdString();
    return files;
}

template <typename Row> QList<Row> rowsOfIndex(const QList<Row>& all, quint16 index)
{
    QList<Row> rows;
    for (const Row& row : all) {
        if (row.index == index)
            rows << row;
    }
    return rows;
}

QList<DescriptionRow> rowsOf(const Generated& files, quint16 index)
{
    return rowsOfIndex(descriptionRows(files.objdict), index);
}

QList<AssignRow> assignOf(const Generated& files, quint16 index)
{
    return rowsOfIndex(assignRows(files.objdict), index);
}

} // namespace

TEST(ObjDictRules, SharedObjectIsDescribedOnceOnLineZero)
{
    const Generated files = classicSynthetic(true);
    const QList<DescriptionRow> rows = rowsOf(files, 0x2010);
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.first().line, 0);
    const QList<AssignRow> assign = assignOf(files, 0x2010);
    ASSERT_EQ(assign.size(), 2);
    EXPECT_EQ(assign.at(0).start, assign.at(1).start);
}

TEST(ObjDictRules, VirtualObjectsStayOutOfBothTables)
{
    const Generated files = classicSynthetic(false);
    EXPECT_TRUE(assignOf(files, 0x2008).isEmpty());
    EXPECT_TRUE(rowsOf(files, 0x2008).isEmpty());
    const QList<AssignRow> record = assignOf(files, 0x2009);
    ASSERT_EQ(record.size(), 1);
    EXPECT_EQ(record.first().described, 2);
    EXPECT_EQ(record.first().highest, 2);
    EXPECT_EQ(rowsOf(files, 0x2009).size(), 2);
}

TEST(ObjDictRules, ArrayOfEqualEntriesCompactsToTwoRows)
{
    const Generated files = classicSynthetic(
        false, "",
        [](ObjectDataBase& db, const QString&) {
            QList<SubRow> subs = {{0, 5, "254"}};
            for (int s = 1; s <= 254; ++s)
                subs << SubRow{quint8(s), 5, "3", 0, QStringLiteral("rw")};
            addObject(db, 0, 0x3000, 8, subs);
        },
        true);
    const QList<DescriptionRow> rows = rowsOf(files, 0x3000);
    ASSERT_EQ(rows.size(), 2);
    EXPECT_FALSE(rows.at(0).attributes.contains(QLatin1String("CO_ATTR_COMPACT")));
    EXPECT_TRUE(rows.at(1).attributes.endsWith(QLatin1String(" | CO_ATTR_COMPACT")));
    const QList<AssignRow> assign = assignOf(files, 0x3000);
    ASSERT_EQ(assign.size(), 1);
    EXPECT_EQ(assign.first().described, 2);
    EXPECT_EQ(assign.first().highest, 254);
    // Subindex 3 differs from 4 to 6, which compact.
    EXPECT_EQ(rowsOf(files, 0x2000).size(), 5);
}

TEST(ObjDictRules, LimitCheckGivesARowThreeSlotsInsteadOfOne)
{
    static const QRegularExpression single(
        QStringLiteral(" \\| CO_ATTR_STORE,  \\(UNSIGNED16\\)\\d+u\\},/\\* 0x2002:1\\*/ \\n"));
    const Generated plain = classicSynthetic(false);
    EXPECT_TRUE(single.match(plain.objdict).hasMatch());
    EXPECT_FALSE(plain.objdict.contains(QLatin1String("CO_ATTR_LIMIT")));

    static const QRegularExpression limited(
        QStringLiteral("CO_ATTR_DEFVAL \\| CO_ATTR_LIMIT \\| CO_ATTR_STORE,  \\(UNSIGNED16\\)\\d+u, "
                       "\\(UNSIGNED16\\)\\d+u, \\(UNSIGNED16\\)\\d+u\\},/\\* 0x2002:1\\*/ \\n"));
    const Generated checked = classicSynthetic(false, "limit_check=1");
    EXPECT_TRUE(limited.match(checked.objdict).hasMatch());
    EXPECT_TRUE(checked.objdict.contains(QLatin1String("u, (UNSIGNED16)0u, (UNSIGNED16)0u},/* 0x1000:0*/")));
}

TEST(ObjDictRules, DynamicMappingGetsNoTable)
{
    const Generated files = classicSynthetic(false, "", [](ObjectDataBase& db, const QString&) {
        SUBINDEX_DATA_T count;
        db.getSubIndex(0, 0x1A00, 0, count);
        count.accesstype = QStringLiteral("rw");
        db.addSubIndex(0, 0x1A00, 0, count);
    });
    EXPECT_FALSE(files.objdict.contains(QLatin1String("mapTableTPDO1")));
    EXPECT_TRUE(files.objdict.contains(QLatin1String("mapTableRPDO1")));
    EXPECT_TRUE(files.objdict.contains(QLatin1String("od_const_u8[0], NULL);\n")));
}

TEST(ObjDictRules, EqualDefaultsOfTwoLinesShareAConstant)
{
    const QMap<QString, int> twoLines = tableSizes(classicSynthetic(true).objdict);
    const QMap<QString, int> oneLine = tableSizes(classicSynthetic(false).objdict);
    EXPECT_EQ(twoLines.value("od_const_u8"), oneLine.value("od_const_u8"));
    EXPECT_EQ(twoLines.value("od_u8"), 2 * oneLine.value("od_u8"));
}

TEST(ObjDictRules, UninitialisedTablesHaveNoComments)
{
    const Generated files = classicSynthetic(false, "init_static_variables=0");
    EXPECT_TRUE(files.objdict.contains(QLatin1String("\tod_u8[")));
    EXPECT_FALSE(files.objdict.contains(QLatin1String("\tod_u8[9]= {")));
    EXPECT_FALSE(files.objdict.contains(QLatin1String(" /* 0x2002:1 */")));
}

TEST(ObjDictRules, NoStdlibWhenTheMarkerFileExists)
{
    const Generated files = classicSynthetic(false, "", [](ObjectDataBase&, const QString& dir) {
        generatortest::writeFile(dir + QStringLiteral("/no_stdlib_include.txt"), QString());
    });
    EXPECT_FALSE(files.objdict.contains(QLatin1String("#include <stdlib.h>")));
}

TEST(ObjDictRules, StaticSrdoDataLiveInTheSrdoSource)
{
    const Generated files =
        classicSynthetic(false, "static_srdo_data=1", [](ObjectDataBase& db, const QString&) {
            addObject(db, 0, 0x1381, 9, {{0, 5, "1"}, {1, 7, "0x20010108"}});
        });
    EXPECT_FALSE(files.objdict.contains(QLatin1String("&(app_u8_l0)")));
    EXPECT_TRUE(
        files.objdict.contains(QLatin1String("\t{ (UNSIGNED8)1u, CO_DTYPE_U8_SRDO  , (UNSIGNED16)8193u, ")));
}

TEST(ObjDictRules, StringDefaultsAreCopiedAtRunTime)
{
    const Generated files = classicSynthetic(false, "generate_string_defaults=1");
    EXPECT_TRUE(files.objdict.contains(
        QLatin1String("static CO_CONST char stringDefaultValues[] = {\n/* app_text_l0 */ \n0x61, 0x62, 0x63, "
                      "/* app_octets_l0 */ \n0x01, 0x02, 0x03, 0x04, 0x00}; \n\n")));
    EXPECT_TRUE(
        files.objdict.contains(QLatin1String("    memcpy(app_octets_l0, &stringDefaultValues[3], 4);\n")));
    EXPECT_TRUE(files.user.contains(QLatin1String("RET_T userOverwriteStringDefaultvalues(void);\n")));
}

TEST(ObjDictRules, PredefinedConnectionSetOfTwoLines)
{
    const Generated files = classicSynthetic(true, "overwrite_predef=1,1");
    EXPECT_TRUE(
        files.user.contains(QLatin1String("RET_T userOverwriteCobIdSettingsLine(UNSIGNED8 canLine);\n")));
    EXPECT_TRUE(files.objdict.contains(QLatin1String("\t\tcobId = (UNSIGNED32)nodeId + (UNSIGNED32)0x180;\n"
                                                     "\t\tret = coOdSetCobid(1, 0x1800, 1, cobId);\n")));
}

TEST(ObjDictRules, LinesOfAProjectWithOptionsAllTakeThem)
{
    const Generated files = classicSynthetic(true, "nmtmaster=2,0");
    EXPECT_TRUE(files.objdict.contains(QLatin1String("RET_T coCanOpenStackInitPara(\n")));
    EXPECT_FALSE(files.objdict.contains(QLatin1String("(void) pCoOptions;")));
}

TEST(ObjDictRules, MissingOverflowObjectGivesZero)
{
    const Generated files = classicSynthetic(
        false, "", [](ObjectDataBase& db, const QString&) { db.deleteIndex(0, 0x1019, false); });
    static const QRegularExpression sync(
        QStringLiteral("coSyncInit\\(od_const_u32\\[\\d+\\], od_const_u32\\[\\d+\\], 0\\);"));
    EXPECT_TRUE(sync.match(files.objdict).hasMatch());
}

TEST(ObjDictRules, EqualReceiveMappingsOfTwoLinesShareATable)
{
    const Generated files = classicSynthetic(true, "", [](ObjectDataBase& db, const QString&) {
        for (quint8 line : {0, 1}) {
            db.deleteIndex(line, 0x1600, false);
            addObject(db, line, 0x1600, 9, {{0, 5, "1"}, {1, 7, "0x20100020"}});
        }
    });
    EXPECT_EQ(files.objdict.count(QLatin1String("/* unique rpdo defintion */\n")), 1);
    EXPECT_EQ(files.objdict.count(QLatin1String(", &mapTableRPDO0_1);\n")), 2);
    EXPECT_FALSE(files.objdict.contains(QLatin1String("mapTableRPDO1_1")));
}

TEST(ObjDictRules, AbsentTablesAreNullInTheVariableStructure)
{
    const Generated files = classicSynthetic(false, "", [](ObjectDataBase& db, const QString&) {
        for (quint16 index : {0x2004, 0x2005, 0x2006, 0x2007})
            db.deleteIndex(0, index, false);
    });
    const QMap<QString, int> sizes = tableSizes(files.objdict);
    static const QRegularExpression field(QStringLiteral("&(od_\\w+)\\[0\\]"));
    const QString structure =
        files.objdict.section(QStringLiteral("od_data_variables = {"), 1).section(QStringLiteral("};"), 0, 0);
    for (auto it = field.globalMatch(structure); it.hasNext();) {
        const QString table = it.next().captured(1);
        EXPECT_TRUE(sizes.contains(table)) << table.toStdString();
    }
    EXPECT_FALSE(structure.contains(QLatin1String("od_domain")));
    EXPECT_TRUE(structure.endsWith(QLatin1String("    , NULL\n    , NULL\n    , NULL\n")));
}
