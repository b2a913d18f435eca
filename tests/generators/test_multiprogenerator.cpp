#include "generatortestsupport.h"
#include "objdicttestsupport.h"

#include "common/cleanproject.h"
#include "common/testhelpers.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/extdeclgenerator.h"
#include "generators/canopen/extdeclgeneratorv4.h"
#include "generators/canopen/gendefinegenerator.h"
#include "generators/multiprotocol/multiprogenerator.h"
#include "generators/multiprotocol/multiprogeneratorv4.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace generatortest;

namespace {

struct MpFiles
{
    QString name;
    QString source;
    QString define;
    QString objdict;
};

// The files in the order of the pipeline: gen_mp.c stores the address claim
// that gen_define.h counts; gen_objdict.c of the same project is written
// ahead of them for the comparison of the dictionary tables.
MpFiles generate(ObjectDataBase& db, const QString& dir, bool core)
{
    db.setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("use_core_headers"), core ? QStringLiteral("V4") : QString());
    MpFiles files;
    files.objdict = objdicttest::generate(db, dir, {core, false, false, false}).objdict;
    QFile::remove(dir + QStringLiteral("/gen_objdict.c"));
    std::unique_ptr<MultiProGenerator> mp(core ? new MultiProGeneratorV4 : new MultiProGenerator);
    runGenerator(*mp, db, dir, QString());
    for (const char* name : {"gen_mp.c", "gen_rawcan.c", "gen_uds.c"}) {
        if (QFile::exists(dir + QLatin1Char('/') + QLatin1String(name))) {
            files.name = QLatin1String(name);
            files.source = QString::fromUtf8(testhelpers::readFile(dir + QLatin1Char('/') + files.name));
        }
    }
    cacheLines(db);
    std::unique_ptr<CoDefineGenerator> define(core ? new GenDefineGenerator : new CoDefineGenerator);
    setProtocolFlags(*define, db);
    files.define = runGenerator(*define, db, dir, QStringLiteral("gen_define.h"));
    std::unique_ptr<ExtDeclGenerator> declarations(core ? new ExtDeclGeneratorV4 : new ExtDeclGenerator);
    runGenerator(*declarations, db, dir, QStringLiteral("gen_extern_decl.h"));
    return files;
}

::testing::AssertionResult compiles(const QString& dir, const MpFiles& files, bool core)
{
    QStringList arguments = {QStringLiteral("-DTEST_INIT_VERSIONED")};
    if (core)
        arguments << QStringLiteral("-DTEST_STACK_V4");
    return compileWithBoth(dir, files.name, arguments);
}

// The tables of the object dictionary by name, each from its declaration to its "};".
QMap<QString, QString> dictionaryTables(const QString& source)
{
    static const QRegularExpression table(
        QStringLiteral("^[^\n]*\\b(od_\\w+|mapTable\\w+)(?:\\[[^\\]\n]*\\])? ?= ?\\{\n.*?\\};\n"),
        QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
    QMap<QString, QString> tables;
    QRegularExpressionMatchIterator it = table.globalMatch(source);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        tables.insert(match.captured(1), match.captured());
    }
    return tables;
}

// Every count that the file names is defined in gen_define.h or in the file itself.
void expectCountsDefined(const MpFiles& files)
{
    const QMap<QString, QString> defines = objdicttest::defines(files.define + files.source);
    static const QRegularExpression countName(
        QStringLiteral("\\b(?:CO|CORE|J1939|RAWCAN|ISOTP|CAN)_\\w*(?:CNT|COUNTS)\\b"));
    // What stands under a feature test is needed only where the feature is defined.
    static const QRegularExpression guarded(QStringLiteral("#ifdef \\w+\n.*?#endif[^\n]*\n"),
                                            QRegularExpression::DotMatchesEverythingOption);
    const QString unconditional = QString(files.source).remove(guarded);
    QRegularExpressionMatchIterator names = countName.globalMatch(unconditional);
    while (names.hasNext()) {
        const QString name = names.next().captured();
        EXPECT_TRUE(defines.contains(name)) << name.toStdString();
    }
}

struct ExampleCase
{
    const char* name;
    const char* path;
    const char* file;
    const char* function;
    bool canopen;
};

class MixedExample : public testing::TestWithParam<ExampleCase>
{
};

TEST_P(MixedExample, CompilesAndAgreesWithItsDefinesAndItsDictionary)
{
    const ExampleCase& example = GetParam();
    for (const bool core : {false, true}) {
        SCOPED_TRACE(core ? "V4" : "classic");
        ObjectDataBase db;
        const QString path = QStringLiteral(TRW_SOURCE_DIR "/examples/") + QLatin1String(example.path);
        ASSERT_TRUE(path.endsWith("trwt") ? db.openTextProject(path) : db.openDataBase(path, true));
        QTemporaryDir dir;
        const MpFiles files = generate(db, dir.path(), core);
        EXPECT_EQ(files.name, QLatin1String(example.file));
        EXPECT_TRUE(files.source.contains(QStringLiteral("RET_T %1(").arg(example.function)));
        EXPECT_TRUE(compiles(dir.path(), files, core));
        expectCountsDefined(files);
        if (!example.canopen)
            continue;
        const QMap<QString, QString> alone = dictionaryTables(files.objdict);
        const QMap<QString, QString> mixed = dictionaryTables(files.source);
        ASSERT_TRUE(alone.contains("od_description"));
        ASSERT_TRUE(alone.contains("od_u8"));
        for (auto it = alone.cbegin(); it != alone.cend(); ++it)
            EXPECT_EQ(mixed.value(it.key()), it.value()) << it.key().toStdString();
        for (const char* count : {"CO_OD_ASSIGN_CNT", "CO_OBJ_DESC_CNT"})
            EXPECT_EQ(objdicttest::defines(files.source).value(count),
                      objdicttest::defines(files.objdict).value(count))
                << count;
    }
}

INSTANTIATE_TEST_SUITE_P(
    MultiProGenerator, MixedExample,
    testing::Values(ExampleCase{"ValveController",
                                "valve_controller_canopen_j1939/valve_controller_canopen_j1939.trwt",
                                "gen_mp.c", "mpStackInit", true},
                    ExampleCase{"PumpDrive", "pump_drive_canopen_rawcan/pump_drive_canopen_rawcan.trwp",
                                "gen_mp.c", "mpStackInit", true},
                    ExampleCase{"SensorGateway", "rawcan_sensor_gateway/rawcan_sensor_gateway.trwp",
                                "gen_rawcan.c", "rawcanStackInit", false}),
    [](const testing::TestParamInfo<ExampleCase>& info) { return std::string(info.param.name); });

// A UDS server with a session table on line 1, none of whose services needs
// authentication.
void addUdsServerOnLineOne(ObjectDataBase& db)
{
    for (const auto& [key, value] : {std::pair{"udsserver_supported", "1"},
                                     {"udsserver_version", "5"},
                                     {"uds_physical_request_id", "0x7e0,0x7e1"},
                                     {"uds_physical_response_id", "0x7e8,0x7e9"},
                                     {"uds_functional_request_id", "0x7df,0x7df"},
                                     {"uds_server_active", "0,1"},
                                     {"isotp_supported", "1"}})
        db.setGeneralSetting(key, value);
    db.setUDSServiceActive(1, 0x10, true);
    db.setUDSServiceSessions(1, 0x10, "1,3");
}

struct EdgeCase
{
    const char* name;
    QList<int> lineTypes;
    std::function<void(ObjectDataBase&)> extra;
    const char* file;
    QStringList pieces;
    bool core = false;
};

class MixedEdge : public testing::TestWithParam<EdgeCase>
{
};

TEST_P(MixedEdge, WritesWhatTheLinesAskForAndCompiles)
{
    const EdgeCase& edge = GetParam();
    ObjectDataBase db;
    db.createNewDataBase();
    cleanproject::addProjectSettings(db);
    for (int line = 0; line < edge.lineTypes.size(); ++line) {
        addLine(db, quint8(line), edge.lineTypes.at(line));
        cleanproject::addLineSettings(db, quint8(line));
        if (Line::carriesCANopen(edge.lineTypes.at(line)))
            cleanproject::addMandatoryObjects(db, quint8(line));
    }
    if (edge.extra)
        edge.extra(db);
    QTemporaryDir dir;
    const MpFiles files = generate(db, dir.path(), edge.core);
    EXPECT_EQ(files.name, QLatin1String(edge.file));
    for (const QString& piece : edge.pieces)
        EXPECT_TRUE(files.source.contains(piece)) << piece.toStdString() << "\n"
                                                  << files.source.toStdString();
    EXPECT_TRUE(compiles(dir.path(), files, edge.core));
}

INSTANTIATE_TEST_SUITE_P(
    MultiProGenerator, MixedEdge,
    testing::Values(
        EdgeCase{"RawCanLineBesideCANopenLine",
                 {4, 1},
                 [](ObjectDataBase& db) { addCanId(db, 0, 0x181, {element(5, 8, "level")}); },
                 "gen_mp.c",
                 {"    if ((pProtType[0] & MP_PROT_TYPE_RAWCAN) != MP_PROT_TYPE_RAWCAN) {\n",
                  "    if ((pProtType[1] & MP_PROT_TYPE_CANOPEN) != MP_PROT_TYPE_CANOPEN) {\n",
                  "        retVal = mpStackInit_line1(1, pProtType[1]);\n",
                  "    retVal = rawcanStackInit_line(canLine, &rawcanConfig_l0);\n"}},
        EdgeCase{"RawCanOnly",
                 {4},
                 [](ObjectDataBase& db) { addCanId(db, 0, 0x181, {element(5, 8, "level")}); },
                 "gen_rawcan.c",
                 {"RET_T rawcanStackInit(void)\n{\nRET_T retVal;\n    retVal = mpStackInit_common();\n",
                  "\t385u, /* CANID number 0x181 */ \n\t&tx_mapping_385[0], \n"}},
        EdgeCase{"StoreFunctionLeavesTheElseBranchEmpty",
                 {1, 2},
                 [](ObjectDataBase& db) { db.setGeneralSetting("fct_store", "NULL"); },
                 "gen_mp.c",
                 {"#else\n#endif /* CO_EVENT_DYNAMIC_STORE || CO_EVENT_PROFILE_STORE */\n",
                  "    retVal = j1939StackInit_line(canLine, &j1939Config_l1);\n"}},
        EdgeCase{"NoRoutingObjectKeepsTheFinishComment",
                 {5},
                 {},
                 "gen_mp.c",
                 {"RET_T mpStackInit_finish(void)\n{\n    /*\n",
                  "    if ((protType & MP_PROT_TYPE_CANOPEN) == MP_PROT_TYPE_CANOPEN)  {\n"
                  "        coOdInitOdPtr(&od_assign[0], "}},
        EdgeCase{"CanIdWithoutElements",
                 {4},
                 [](ObjectDataBase& db) { addCanId(db, 0, 0x200, {}); },
                 "gen_rawcan.c",
                 {"\t0u /* number of mappings */\n"}},
        EdgeCase{"ManagedElementsWithoutNames",
                 {6},
                 [](ObjectDataBase& db) {
                     ObjectDataBase::DataElement managed = element(6, 16, QString());
                     managed.implementation = 0;
                     addCanId(db, 0, 0x300, {managed, managed});
                 },
                 "gen_mp.c",
                 {"static UNSIGNED16\tmv_u16[2]", "&mv_u16[1]"}},
        EdgeCase{"CanFdLinesTakeTheirMode",
                 {1, 2},
                 [](ObjectDataBase& db) {
                     db.setGeneralSetting("canfd_supported", "1");
                     db.setGeneralSetting("usdo_client_cnt", "1");
                 },
                 "gen_mp.c",
                 {"        retVal = mpStackInit_line0(0, pProtType[0], pModes[0]);\n",
                  "    if (fdMode == CO_TRUE) {\n        retVal = coUsdoServerInit(canLine);\n",
                  "    if (fdMode == CO_TRUE) {\n        retVal = coUsdoClientInit(canLine);\n"}},
        EdgeCase{"CanFdOnASingleLine",
                 {5},
                 [](ObjectDataBase& db) {
                     db.setGeneralSetting("canfd_supported", "1");
                     db.setGeneralSetting("usdo_client_cnt", "1");
                 },
                 "gen_mp.c",
                 {"    commonInitVars.fdMode[0] = *pModes;\n",
                  "        if (fdMode == CO_TRUE) {\n            retVal = coUsdoServerInit();\n"}},
        EdgeCase{"CanFdLinesTakeTheirModeOnTheCore",
                 {1, 2},
                 [](ObjectDataBase& db) { db.setGeneralSetting("canfd_supported", "1"); },
                 "gen_mp.c",
                 {"        retVal = mpStackInit_line0(0, pModes);\n"},
                 true},
        EdgeCase{"UdsServerOnTheJ1939Line",
                 {1, 2},
                 addUdsServerOnLineOne,
                 "gen_mp.c",
                 {"#include <iso_tp.h>\n#include <uds_uds.h>\n", "retVal = udsStackInit_common(",
                  "retVal = udsStackInit_line(1, &udsLine1);\n"}},
        EdgeCase{"BootLoaderOnTheCore",
                 {4},
                 [](ObjectDataBase& db) {
                     for (const auto& [key, value] : {std::pair{"udsserver_supported", "1"},
                                                      {"udsserver_version", "5"},
                                                      {"uds_bl_setting", "1"},
                                                      {"isotp_supported", "1"},
                                                      {"uds_static_indication", "1"},
                                                      {"uds_fct_dtc_info", "appDtcInfo"}})
                         db.setGeneralSetting(key, value);
                     db.setUDSServiceActive(0, 0x27, true);
                     db.setUDSServiceAuthentication(0, 0x27, "1");
                 },
                 "gen_uds.c",
                 {"UDS_CONFIG_INIT_VAL_T\tudsLine0 = {\n",
                  "\tauthenticationTable_0,\n\t1\n};\n\n\n/* definition of static indication function "
                  "pointers */\n"
                  "#if UDS_EVENT_STATIC_DTC_INFO\n"
                  "CORE_CONST UDS_EVENT_DTC_INFO_FCT_T udsReadDtcInfoInd = appDtcInfo;\n#endif\n\n"
                  "RET_T udsStackInit(void) {\n",
                  "    /* setup CAN-IDs */\n    if (udsLine0.serverPhysAddrReqCanID == 0u)  {\n"},
                 true},
        EdgeCase{
            "UdsStaticIndicationWithoutAuthenticationOnTheCore",
            {1, 2},
            [](ObjectDataBase& db) {
                addUdsServerOnLineOne(db);
                db.setGeneralSetting("uds_static_indication", "1");
                db.setGeneralSetting("uds_fct_routine_ctrl", "appRoutine");
            },
            "gen_mp.c",
            {"\tCO_TRUE,\n\tNULL,\n\t0\n};\n\n\n\n"
             "/* definition of static indication function pointers */\n#if UDS_EVENT_STATIC_ROUTINE_CTRL\n"
             "CORE_CONST UDS_EVENT_ROUTINE_CTRL_T udsRoutineCtrlInd = appRoutine;\n#endif\n\n"},
            true},
        EdgeCase{"CanIdWithoutElementsOnTheCore",
                 {4},
                 [](ObjectDataBase& db) { addCanId(db, 0, 0x200, {}); },
                 "gen_rawcan.c",
                 {"RET_T rawcanStackInit(void) {\n", "        retVal = rawcanStackInit_line0(0);\n",
                  "\tNULL, /* no mappings */\n"},
                 true},
        EdgeCase{"ProtocolOfACombinedLineOnTheCore",
                 {6},
                 [](ObjectDataBase& db) { addCanId(db, 0, 0x181, {element(5, 8, "level")}); },
                 "gen_mp.c",
                 {"    if ((commonInitVars.protocolType[canLine] & CORE_PROT_TYPE_RAWCAN) == "
                  "CORE_PROT_TYPE_RAWCAN) "
                  "{\n        retVal = rawcanStackInit_line(&rawcanConfig);\n",
                  "\t&tx_mapping_385[0], \n\t&tx_mapping_385_data[0], \n"},
                 true}),
    [](const testing::TestParamInfo<EdgeCase>& info) { return std::string(info.param.name); });

} // namespace
