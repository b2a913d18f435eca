#include "generatortestsupport.h"

#include "common/testhelpers.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/extdeclgenerator.h"
#include "generators/canopen/extdeclgeneratorv4.h"
#include "generators/canopen/gendefinegenerator.h"
#include "generators/multiprotocol/pgngenerator.h"
#include "generators/multiprotocol/pgngeneratorv4.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace generatortest;

namespace {

struct Files
{
    QString define;
    QString pgn;
};

// gen_define.h, gen_pgn.c and gen_extern_decl.h, in the order of the
// pipeline, which deletes the address claim PGN ahead of them.
Files generateBoth(ObjectDataBase& db, const QString& dir, bool core)
{
    db.deletePGN(0, 60928, ObjectDataBase::Transmit);
    cacheLines(db);
    writeStaticIndicationHeader(db, dir);
    Files files;
    std::unique_ptr<CoDefineGenerator> define(core ? new GenDefineGenerator : new CoDefineGenerator);
    setProtocolFlags(*define, db);
    files.define = runGenerator(*define, db, dir, QStringLiteral("gen_define.h"));
    std::unique_ptr<PGNGenerator> pgn(core ? new PGNGeneratorV4 : new PGNGenerator);
    files.pgn = runGenerator(*pgn, db, dir, QStringLiteral("gen_pgn.c"));
    std::unique_ptr<ExtDeclGenerator> declarations(core ? new ExtDeclGeneratorV4 : new ExtDeclGenerator);
    runGenerator(*declarations, db, dir, QStringLiteral("gen_extern_decl.h"));
    return files;
}

void setNameFields(ObjectDataBase& db, const QString& identity, const QString& address)
{
    const QList<QPair<const char*, QString>> settings = {
        {"identitynumber", identity}, {"manufacturercode", "1234,1235"},
        {"ecuinstance", "1"},         {"functioninstance", "2"},
        {"function", "130"},          {"vehiclesystem", "5"},
        {"vehicleinstance", "3"},     {"industrygroup", "1"},
        {"addresscapable", "1"},      {"startaddress", address}};
    for (const auto& [key, value] : settings)
        db.setJ1939Setting(QLatin1String(key), value);
}

// Two J1939 lines: line 0 sends and receives, line 1 only receives.
void makeTwoLineProject(ObjectDataBase& db)
{
    db.createNewDataBase();
    addLine(db, 0, Line::J1939);
    addLine(db, 1, Line::J1939);
    db.setGeneralSetting("init_static_variables", "1");
    db.setGeneralSetting("new_init_structure", "1");
    db.setGeneralSetting("co_timer_interval", "1000");
    setNameFields(db, "4711,4712", "128,129");
    addPgn(db, 0, 61444, ObjectDataBase::Transmit, 3, {spn(899, 102, 4), spn(190, 6, 16, "engineSpeed")});
    addPgn(db, 0, 65265, ObjectDataBase::Receive, 6, {spn(84, 6, 16), spn(70, 105, 7)});
    addPgn(db, 1, 65276, ObjectDataBase::Receive, 6, {spn(80, 5, 8, "washerLevel")});
}

// One J1939 line with a UDS server over ISO-TP and its service table.
void makeUdsProject(ObjectDataBase& db)
{
    db.createNewDataBase();
    addLine(db, 0, Line::J1939);
    setNameFields(db, "4711", "0");
    const QList<QPair<const char*, const char*>> settings = {{"init_static_variables", "0"},
                                                             {"new_init_structure", "1"},
                                                             {"co_timer_interval", "1000"},
                                                             {"udsserver_supported", "1"},
                                                             {"udsserver_version", "5"},
                                                             {"uds_physical_request_id", "0x7e0"},
                                                             {"uds_physical_response_id", "0x7e8"},
                                                             {"uds_functional_request_id", "0x7df"},
                                                             {"uds_ext_addressing", "0"},
                                                             {"uds_server_active", "1"},
                                                             {"uds_seedkey_length", "4"},
                                                             {"uds_session_timeout", "5000"},
                                                             {"isotp_supported", "1"},
                                                             {"isotp_client_con", "1"},
                                                             {"isotp_server_con", "1"}};
    for (const auto& [key, value] : settings)
        db.setGeneralSetting(QLatin1String(key), QLatin1String(value));
    db.setUDSServiceActive(0, 0x10, true);
    db.setUDSServiceSessions(0, 0x10, "1,3,0x41");
    db.setUDSServiceActive(0, 0x11, true);
    db.setUDSServiceSessions(0, 0x11, "1,2");
    db.setUDSServiceActive(0, 0x27, true);
    db.setUDSServiceUserLevels(0, 0x27, "1,2");
    db.setUDSServiceAuthentication(0, 0x27, "1");
    db.setUDSServiceActive(0, 0x31, true);
    db.setUDSServiceUserLevels(0, 0x31, "2");
    addPgn(db, 0, 65262, ObjectDataBase::Transmit, 6, {spn(110, 5, 8, "coolant"), spn(175, 6, 16)});
}

// The UDS project with two statically bound indications, one of them
// answering with a response code, and no service that needs authentication.
void makeStaticIndicationProject(ObjectDataBase& db)
{
    makeUdsProject(db);
    db.setUDSServiceAuthentication(0, 0x27, "0");
    db.setGeneralSetting("uds_static_indication", "1");
    db.setGeneralSetting("uds_fct_ioctrl", " appIoControl ");
    db.setGeneralSetting("uds_fct_generic", "appGeneric");
}

// A count as the C code says it: a number, or the value of a define of gen_define.h.
int countValue(const QString& text, const QMap<QString, QString>& defines)
{
    QString value = defines.value(text, text).trimmed();
    value.remove(QLatin1Char('u'));
    return value.toInt();
}

QMap<QString, QString> definesOf(const QString& header)
{
    QMap<QString, QString> defines;
    static const QRegularExpression define(QStringLiteral("^#define\\s+(\\w+)\\s+(.*)$"),
                                           QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator it = define.globalMatch(header);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        defines.insert(match.captured(1), match.captured(2).trimmed());
    }
    return defines;
}

// The body of a table definition "name[...] = {" up to its "};".
QString tableBody(const QString& source, const QString& name)
{
    const qsizetype start =
        source.indexOf(QRegularExpression(QStringLiteral("\\b%1\\[[^\\]]*\\]\\s*= \\{\n").arg(name)));
    if (start < 0)
        return QString();
    const qsizetype open = source.indexOf(QLatin1Char('\n'), start) + 1;
    return source.mid(open, source.indexOf(QStringLiteral("};"), open) - open);
}

// Every count that gen_pgn.c names is defined, each PGN table holds as many
// rows as its line configuration says, each mapping table as many rows as its
// PGN row says, and each signal lies within its eight bytes.
void expectConsistent(const Files& files, bool core)
{
    const QMap<QString, QString> defines = definesOf(files.define);
    static const QRegularExpression countName(
        QStringLiteral("\\b(?:J1939|CO|CORE|CAN|ISOTP)_\\w*(?:CNT|COUNTS)\\b"));
    QRegularExpressionMatchIterator names = countName.globalMatch(files.pgn);
    while (names.hasNext()) {
        const QString name = names.next().captured();
        EXPECT_TRUE(defines.contains(name)) << name.toStdString();
    }
    static const QRegularExpression lineConfig(QStringLiteral(
        "J1939_CONFIG_T  j1939Config(\\w*) = \\{\n\t[^\n]*\n\t(\\w+), \n\t[^\n]*\n\t(\\w+), \n"));
    QRegularExpressionMatchIterator configs = lineConfig.globalMatch(files.pgn);
    int lines = 0;
    while (configs.hasNext()) {
        const QRegularExpressionMatch config = configs.next();
        ++lines;
        const QString suffix = config.captured(1);
        EXPECT_EQ(tableBody(files.pgn, "jPgnTransmitConfig" + suffix).count("    {\n"),
                  countValue(config.captured(2), defines))
            << suffix.toStdString();
        EXPECT_EQ(tableBody(files.pgn, "jPgnReceiveConfig" + suffix).count("    {\n"),
                  countValue(config.captured(3), defines))
            << suffix.toStdString();
    }
    EXPECT_GT(lines, 0);
    static const QRegularExpression pgnRow(
        QStringLiteral("\t&(\\w+)\\[0\\], \n(?:[^\n]*\n)*?\t(\\d+)u,? /\\* number"));
    QRegularExpressionMatchIterator rows = pgnRow.globalMatch(files.pgn);
    while (rows.hasNext()) {
        const QRegularExpressionMatch row = rows.next();
        const QString mapping = tableBody(files.pgn, row.captured(1));
        EXPECT_EQ(mapping.count("\t{ "), row.captured(2).toInt()) << row.captured(1).toStdString();
        if (core) {
            EXPECT_EQ(tableBody(files.pgn, row.captured(1) + "_data").count("\t"), row.captured(2).toInt());
        }
    }
    static const QRegularExpression v4Row(QStringLiteral("\t\\{ \\d+, (\\d+)u, (\\d+)u, CORE_DTYPE_"));
    QRegularExpressionMatchIterator signalRows = v4Row.globalMatch(files.pgn);
    while (core && signalRows.hasNext()) {
        const QRegularExpressionMatch row = signalRows.next();
        EXPECT_LE(row.captured(1).toInt() + row.captured(2).toInt(), 64) << row.captured().toStdString();
    }
}

struct ProjectCase
{
    const char* name;
    std::function<void(ObjectDataBase&)> make;
};

class J1939Project : public testing::TestWithParam<ProjectCase>
{
};

TEST_P(J1939Project, CompilesWithGccAndClangAndAgreesWithItsDefines)
{
    for (const bool core : {false, true}) {
        SCOPED_TRACE(core ? "V4" : "classic");
        ObjectDataBase db;
        GetParam().make(db);
        QTemporaryDir dir;
        const Files files = generateBoth(db, dir.path(), core);
        ASSERT_TRUE(files.pgn.endsWith("\n\treturn RET_OK;\n}\n")) << files.pgn.toStdString();
        EXPECT_TRUE(compilesWithStack(dir.path(), "gen_pgn.c", core, "gcc"));
        EXPECT_TRUE(compilesWithStack(dir.path(), "gen_pgn.c", core, "clang"));
        expectConsistent(files, core);
        // The functions that gen_define.h binds statically stand for numbers here.
        EXPECT_TRUE(
            compileHeaders(dir.path(), {"gen_define.h"}, "#define appGeneric 0u\n#define appIoControl 0u\n"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    PGNGenerator, J1939Project,
    testing::Values(ProjectCase{"EngineEcuExample",
                                [](ObjectDataBase& db) {
                                    ASSERT_TRUE(db.openTextProject(
                                        TRW_SOURCE_DIR "/examples/j1939_engine_ecu/j1939_engine_ecu.trwt"));
                                }},
                    ProjectCase{"TwoLines", makeTwoLineProject}, ProjectCase{"UdsServer", makeUdsProject},
                    ProjectCase{"UdsStaticIndicationWithoutAuthentication", makeStaticIndicationProject},
                    ProjectCase{"TwoLinesCanFdDynamicSafety",
                                [](ObjectDataBase& db) {
                                    makeTwoLineProject(db);
                                    db.setGeneralSetting("canfd_supported", "1");
                                    db.setJ1939Setting("dynsupport", "1");
                                    db.setJ1939Setting("safetysupport", "1");
                                    db.setGeneralSetting("additional_cob_count", "2");
                                }}),
    [](const testing::TestParamInfo<ProjectCase>& info) { return std::string(info.param.name); });

struct PieceCase
{
    const char* name;
    bool core;
    std::function<void(ObjectDataBase&)> make;
    QStringList pieces;
};

class ExactPieces : public testing::TestWithParam<PieceCase>
{
};

TEST_P(ExactPieces, StandInTheFile)
{
    ObjectDataBase db;
    GetParam().make(db);
    QTemporaryDir dir;
    const Files files = generateBoth(db, dir.path(), GetParam().core);
    for (const QString& piece : GetParam().pieces)
        EXPECT_TRUE(files.pgn.contains(piece) || files.define.contains(piece)) << piece.toStdString();
}

// The NAME of the address claim of line 1: its ten fields in their order,
// each with the size of its field.
const QString nameRows =
    QStringLiteral("static  CO_CONST J1939_MAPPING_T l1_tx_mapping_60928[] = {\n"
                   "\t{ &mv_u32[1], 21u, 2837u, CORE_DTYPE_U32 }\t/* Identity Number */,\n"
                   "\t{ &mv_u16[2], 11u, 2838u, CORE_DTYPE_U16 }\t/* Manufacturer Code */,\n"
                   "\t{ &mv_u8[10], 3u, 2840u, CORE_DTYPE_U3 }\t/* ECU Instance */,\n"
                   "\t{ &mv_u8[11], 5u, 2839u, CORE_DTYPE_U5 }\t/* Function Instance */,\n"
                   "\t{ &mv_u8[12], 8u, 2841u, CORE_DTYPE_U8 }\t/* Function */,\n"
                   "\t{ &mv_u8[13], 1u, 0u, CORE_DTYPE_U1 }\t/* reserved */,\n"
                   "\t{ &mv_u8[14], 7u, 2842u, CORE_DTYPE_U7 }\t/* Vehicle System */,\n"
                   "\t{ &mv_u8[15], 4u, 2843u, CORE_DTYPE_U4 }\t/* Vehicle System Instance */,\n"
                   "\t{ &mv_u8[16], 3u, 2846u, CORE_DTYPE_U3 }\t/* Industry Group */,\n"
                   "\t{ &mv_u8[17], 1u, 2844u, CORE_DTYPE_U1 }\t/* Addr Claiming Supported */\n};\n");

INSTANTIATE_TEST_SUITE_P(
    PGNGenerator, ExactPieces,
    testing::Values(
        PieceCase{"TwoLinesClassic",
                  false,
                  makeTwoLineProject,
                  {nameRows, "\t(UNSIGNED8)130u /* 1-60928:2841 */",
                   "static  CO_CONST J1939_MAPPING_T l0_rx_mapping_65265[] = {\n"
                   "\t{ &mv_u16[0], 16u, 84u, CORE_DTYPE_U16 }\t/* SPN 84 */,\n"
                   "\t{ &mv_u8[0], 7u, 70u, CORE_DTYPE_U7 }\t/* SPN 70 */\n};\n\n",
                   "\t{ &engineSpeed, 16u, 190u, CORE_DTYPE_U16 }",
                   "static CO_CONST J1939_PGN_CONFIG_T\tjPgnTransmitConfig_l0[1] = {\n"
                   "    {\n\t61444u, /* PGN number */ \n\t&l0_tx_mapping_61444[0], \n"
                   "\t100u, /* cycletime in ms */ \n\t0u, /* inhibit time in ms */ \n\t3u, /* priority */ \n"
                   "\t2u /* number of mappings */\n    }\n};\n",
                   "static CO_CONST J1939_PGN_CONFIG_T\tjPgnReceiveConfig_l1[1]= {\n",
                   "J1939_CONFIG_T  j1939Config_l1 = {\n\t0, \n\t0, \n\t&jPgnReceiveConfig_l1[0], \n\t1, \n"
                   "\t&addrTrCfg_l1,\n\t129u \n};\n",
                   "\t&addrTrCfg_l0,\n\t128u \n};\n",
                   "static CO_CONST J1939_PGN_CONFIG_T\taddrTrCfg_l1 = {\n\t60928u, /* PGN number */\n"
                   "\t&l1_tx_mapping_60928[0],\n\t0u, /* cycletime in ms */\n\t250u, /* inhibitime in us */\n"
                   "\t6u, /* priority */\n\t10u /* number of mappings */\n};\n",
                   "\t(UNSIGNED8)63u /* 0-65265:70 */", "\t(UNSIGNED32)4712UL /* 1-60928:2837 */",
                   "\t(UNSIGNED16)1235u /* 1-60928:2838 */",
                   "\tretVal = j1939StackInit_line(1, &j1939Config_l1);\n",
                   "#define J1939_TRANSMIT_PGN_COUNTS\t 1u, 0u\n", "#define J1939_RECEIVE_PGN_CNT\t2u\n"}},
        PieceCase{
            "TwoLinesV4",
            true,
            makeTwoLineProject,
            {" * J1939 PGN definitions for device - generated by ", " 4.3.2 (V4)\n",
             "#ifndef CORE_CONST\n#define CORE_CONST const\n#endif\n",
             "/* PGN 60928/0xee00 Address Claiming */\nstatic UNSIGNED8 * l1_tx_mapping_60928_data[] = {\n"
             "\t(UNSIGNED8 *)&mv_u32[1],\t(UNSIGNED8 *)&mv_u16[2],\t&mv_u8[10],",
             "static UNSIGNED8 * l0_tx_mapping_61444_data[] = {\n\t&mv_u8[9],\t(UNSIGNED8 *)&engineSpeed};\n",
             "\t&l0_tx_mapping_61444[0], \n\t&l0_tx_mapping_61444_data[0], \n\t2u, /* number of mappings */\n"
             "#ifdef J1939_MULTI_SRC_ADDR\n\t0u,\n#endif /* J1939_MULTI_SRC_ADDR */\n"
             "\t100u, /* cycletime in ms */ \n\t0u, /* inhibit time in ms */ \n\t3u /* priority */ \n",
             "#ifdef J1939_MULTI_SRC_ADDR \n",
             "static  CORE_CONST  J1939_PGN_CONFIG_T\taddrTrCfg_l0 = {\n\t60928u, /* PGN number */\n"
             "\t&j1939AddressClaimMapping[0],\n\t&l0_tx_mapping_60928_data[0],\n\t9u, /* number of mappings "
             "*/\n",
             "/* service intialization values */\nCORE_CONST J1939_SERVICE_INIT_VAL_T\tserviceInitVars = {\n"
             "\t5u,\n\t{ J1939_RECEIVE_PGN_CFG_COUNTS },\n",
             "\tretVal = coreStackInit(&commonInitVars);\n", "\tCORE_HANDLE_WATCHDOG\n",
             "#define J1939_RECEIVE_PGN_CFG_CNT\t2u\n"}},
        PieceCase{"OneLineUninitialisedVariablesAndCanFd",
                  false,
                  [](ObjectDataBase& db) {
                      makeUdsProject(db);
                      db.setGeneralSetting("canfd_supported", "1");
                  },
                  {"static UNSIGNED8\tmv_u8[", "static UNSIGNED32\tmv_u32[1];\n",
                   "\tmv_u32[0] = 4711;\n\tmv_u16[0] = 1234;\n\tmv_u8[1] = 2;\n", "\tmv_u8[7] = 1;\n",
                   "\t6u, /* priority */ \n\t2u, /* number of mappings */\n\tJ1939_ATF_SAE_NONE,\n"
                   "\tJ1939_ADT_NONE,\n\t0u\n",
                   "RET_T j1939StackInit(\n\tBOOL_T *pModes\n\t)\n",
                   "\t\tcommonInitVars.fdMode[0] = pModes[0];\n", "\t&addrTrCfg,\n\t0u \n};\n",
                   "[J1939_TRANSMIT_PGN_CNT] = {\n", "\t{ MP_PROT_TYPE_J1939 | MP_PROT_TYPE_UDS},\n",
                   "\t\t{ 0x11, UDS_SUB_RESET_SR,\n\t\t\t{1, 2}, 2u},\n",
                   "\tstatic UDS_SECURITY_LEVEL_TABLE_T\tsecurityLvlTbl_0[] = {\n",
                   "\t\tsessionTbl_0,\n\t\t11,\n\t\tsecurityLvlTbl_0,\n\t\t4,\n\t\tCO_TRUE\n\t};\n",
                   "\t\t2016u,\n\t\t2024u,\n\t\t2024u,\n\t\t2016u,\n\t\t2015u,\n\t\t2024u,\n",
                   "\tretVal = udsStackInit_line(&udsLine0);\n", "#define CO_COB_COUNTS\tCO_COB_CNT\n"}},
        PieceCase{"CanFdBuffersAndAReceiveOnlyLine",
                  false,
                  [](ObjectDataBase& db) {
                      db.createNewDataBase();
                      addLine(db, 0, Line::J1939);
                      setNameFields(db, "4711", "0");
                      db.setGeneralSetting("canfd_supported", "1");
                      db.setJ1939Setting("j1939fd_multipgbuffer", "2,3");
                      addPgn(db, 0, 65265, ObjectDataBase::Receive, 6, {spn(84, 6, 16)});
                  },
                  {"#define J1939_DEST_BUFFER_CNT\t5u\n#define J1939_DEST_BUFFER_COUNTS\t2u,3u\n",
                   "#define CO_COB_CNT \t6u\n#define CO_COB_COUNTS\tCO_COB_CNT\n"}},
        PieceCase{
            "RawCanBesideJ1939",
            true,
            [](ObjectDataBase& db) {
                db.createNewDataBase();
                addLine(db, 0, Line::J1939RawCan);
                setNameFields(db, "4711", "0");
                db.setGeneralSetting("rxindication_cnt", "2");
                db.setGeneralSetting("changedindication_cnt", "1");
                db.setJ1939Setting("rxindication_cnt", "5");
                ObjectDataBase::CANID id;
                id.id = 0x123;
                id.direction = ObjectDataBase::Transmit;
                id.inhibittime_ms = 10;
                db.addCANID(0, id.id, id);
                addPgn(db, 0, 65265, ObjectDataBase::Receive, 6, {spn(84, 6, 16)});
            },
            {"#define J1939_REC_PGN_INDICATION_CNT\t5u\n", "#define CORE_INHIBIT_SUPPORTED\t1u\n",
             "\n/* CAN RAW Defines */\n#define RAWCAN_SUPPORTED\t1u\n#define RAWCAN_RECEIVE_COUNTS\t0u\n"
             "#define RAWCAN_TRANSMIT_CNT\t1u\n#define RAWCAN_TRANSMIT_COUNTS\t1u\n",
             "#define RAWCAN_REC_INDICATION_CNT\t2u\n",
             "#define RAWCAN_CHANGED_INDICATION_CNT\t1u\n#define CORE_OBJECT_CHANGED\t1u\n",
             "/* COB Definitions */\n#define CORE_COB_COUNTS 6u\n#define CORE_COB_CNT \t6\n"}},
        PieceCase{"UdsClientsOnTwoLines",
                  false,
                  [](ObjectDataBase& db) {
                      makeTwoLineProject(db);
                      db.setGeneralSetting("udsclient_supported", "1");
                      db.setGeneralSetting("uds_client_cnt", "1,2");
                  },
                  {"#define ISOTP_CLIENT_CONNECTION_CNT\t3u\n#define ISOTP_CLIENT_COUNTS\t1u,2u\n"
                   "#define ISOTP_SERVER_CONNECTION_CNT\t6u\n#define ISOTP_SERVER_COUNTS\t2u,4u\n",
                   "#define UDS_CLIENT_SUPPORTED\t1u\n#define UDS_CLIENT_CNT\t3\n", "\t\t{1,2,}\n"}},
        PieceCase{"UdsV4",
                  true,
                  makeUdsProject,
                  {"#include <core_isotp.h>\n#include <uds_uds.h>\n",
                   "\t{ 0x10, 0u,\n\t\t{UDS_SUB_SESSION_DS, UDS_SUB_SESSION_EXTDS, UDS_SUB_SESSION_MANU_40 + "
                   "0x01}, 3u},\n",
                   "\t{ 0x11, UDS_SUB_RESET_DRPSD,\n",
                   "static UDS_AUTHENT_TABLE_T\tauthenticationTable_0[] = {\n\t{ 0x27 },\n\n};\n",
                   "\tsessionTbl_0,\n\t13,\n\tsecurityLvlTbl_0,\n\t4,\n\tCO_TRUE,\n\tauthenticationTable_0,"
                   "\n\t1\n};\n",
                   "    retVal = udsStackInit_line(&udsLine0);\n",
                   "#define UDS_AUTHENTICATION_REQUIRED\t1u\n"}},
        PieceCase{"UdsStaticIndicationV4",
                  true,
                  makeStaticIndicationProject,
                  {"\n/* definition of static indication function pointers */\n"
                   "#if UDS_EVENT_STATIC_IOCTRL\n"
                   "CORE_CONST UDS_EVENT_ROUTINE_IOCTRL_T udsIoCtrlInd = appIoControl;\n#endif\n"
                   "#if UDS_EVENT_STATIC_GENERIC_FCT\n"
                   "CORE_CONST UDS_EVENT_GENERIC_FCT_T udsGenericInd = appGeneric;\n#endif\n"
                   "\n\n/*  J1939 stack initialization function */\n",
                   "\tCO_TRUE,\n\tNULL,\n\t0\n};\n",
                   "#define UDS_EVENT_STATIC_GENERIC_FCT\tappGeneric\n#define "
                   "UDS_EVENT_STATIC_IOCTRL\tappIoControl\n"}}),
    [](const testing::TestParamInfo<PieceCase>& info) { return std::string(info.param.name); });

// Input that the check reports still gives a whole file: a PGN without
// SPNs, types without a C form and a name that ends a comment early.
TEST(PGNGenerator, FaultyInputStillGivesTheWholeFile)
{
    for (const bool core : {false, true}) {
        ObjectDataBase db;
        makeTwoLineProject(db);
        addPgn(db, 0, 65000, ObjectDataBase::Transmit, 6, {});
        addPgn(db, 0, 65001, ObjectDataBase::Transmit, 6, {spn(1, 200, 8), spn(2, 0, 8), spn(3, 8, 32, "")});
        QTemporaryDir dir;
        const Files files = generateBoth(db, dir.path(), core);
        EXPECT_TRUE(files.pgn.endsWith("\n\treturn RET_OK;\n}\n"));
        EXPECT_TRUE(
            files.pgn.contains(core ? "\tNULL, /* no mappings */\n" : "\t&l0_tx_mapping_65000[0], \n"));
        EXPECT_EQ(files.pgn.count(core ? "\t{ 1, 0u, 0u, CORE_DTYPE_ }" : "\t{ NULL, 0u, 1u, CORE_DTYPE_ }"),
                  1);
    }
}

// A J1939-only device through the whole command-line run. The address
// claim that an earlier run left in the project, here with a stray SPN, is
// deleted ahead of the check and stored anew with the ten NAME fields.
TEST(PGNGenerator, J1939OnlyRunWritesItsFilesInOrderAndRenewsTheAddressClaim)
{
    QTemporaryDir dir;
    const QString project = dir.filePath(QStringLiteral("engine.trwp"));
    {
        ObjectDataBase db;
        ASSERT_TRUE(db.openTextProject(TRW_SOURCE_DIR "/examples/j1939_engine_ecu/j1939_engine_ecu.trwt"));
        addPgn(db, 0, 60928, ObjectDataBase::Transmit, 6, {spn(9999, 5, 8)});
        ASSERT_TRUE(db.saveDatabase(project));
    }
    writeFile(dir.filePath(QStringLiteral("gen_indication.h")), QString());
    const testhelpers::RunResult result = testhelpers::runTrw({"-project", project, "-s"}, dir.path());
    EXPECT_EQ(result.exitCode, 0) << result.out.toStdString();
    QStringList started;
    static const QRegularExpression startedLine(QStringLiteral("^Generation of (\\S+) in .* started$"),
                                                QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator it = startedLine.globalMatch(result.out);
    while (it.hasNext())
        started << it.next().captured(1);
    EXPECT_EQ(started,
              (QStringList{"gen_indices.h", "gen_define.h", "gen_pgn.c", "DBC_file", "gen_extern_decl.h"}))
        << result.out.toStdString();
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("gen_indication.h"))));
    const QString pgn = QString::fromUtf8(testhelpers::readFile(dir.filePath(QStringLiteral("gen_pgn.c"))));
    EXPECT_EQ(tableBody(pgn, QStringLiteral("tx_mapping_60928_data")).count("\t"), 10);
    EXPECT_FALSE(pgn.contains(QStringLiteral("9999")));

    ObjectDataBase saved;
    ASSERT_TRUE(saved.openDataBase(project, true));
    EXPECT_EQ(saved.getSPNList(0, 60928, ObjectDataBase::Transmit).size(), 10);
    ObjectDataBase::SPN lastField;
    ASSERT_TRUE(saved.getSPN(0, 60928, ObjectDataBase::Transmit, 2844, lastField));
    EXPECT_EQ(lastField.bitposition, 63);
}

} // namespace
