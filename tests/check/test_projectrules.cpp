#include "testproject.h"

#include "check/modelchecker.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

const QString udsRoles = QStringLiteral("<strong><font color='red'>Error: </font></strong>UDS server and UDS "
                                        "client together on one line is not possible.");

// Two lines, both UDS roles switched on for the project, clients on line 1
// and the server where `serverActive` says.
ProjectSetup udsOnTwoLines(const QString& serverActive)
{
    return [serverActive](TestProject& p) {
        p.addLine(1, Line::CANopen);
        settings({{"udsserver_supported", "1"},
                  {"udsclient_supported", "1"},
                  {"uds_server_active", serverActive},
                  {"uds_client_cnt", "0,2"}})(p);
    };
}

} // namespace

TEST(ProjectRules, UdsRolesAndStaticIndication)
{
    expectRules({
        {"UDS server and client on the only line",
         udsRoles,
         {settings({{"udsserver_supported", "1"}, {"udsclient_supported", "1"}})},
         {settings({{"udsserver_supported", "1"}, {"udsclient_supported", "0"}})}},
        {"UDS server and client on one of two lines",
         udsRoles,
         {udsOnTwoLines("0,1")},
         {udsOnTwoLines("1,0")}},
        {"static UDS indication without any function",
         "<strong>Warning: </strong>Static UDS indication is enabled but no service has a function name; no "
         "callback will be wired up.",
         {settings({{"uds_static_indication", "1"}, {"uds_fct_generic", "  "}})},
         {settings({{"uds_static_indication", "1"}, {"uds_fct_generic", "onGeneric"}}),
          settings({{"uds_static_indication", "0"}})},
         0},
        {"static UDS indication function used twice",
         "<strong><font color='red'>Error: </font></strong>The function name 'onService' is used for more "
         "than one UDS static indication service; each service needs its own callback (different signature).",
         {settings({{"uds_static_indication", "1"},
                    {"uds_fct_ioctrl", "onService"},
                    {"uds_fct_generic", " onService "},
                    {"uds_fct_dtc_info", "onService"}})},
         {settings({{"uds_static_indication", "1"},
                    {"uds_fct_ioctrl", "onIoControl"},
                    {"uds_fct_generic", "onGeneric"}})}},
    });
}

TEST(ProjectRules, MigrationHints)
{
    const auto previous = [](const char* version, bool uds = false) {
        return [version, uds](TestProject& p) {
            p.db().setMiscSetting("PreviousToolVersion", version);
            if (uds)
                p.setGeneral("udsserver_supported", "1");
        };
    };
    expectRules({
        {"3.7 and 3.8 need co_memcpy.c",
         "<strong>Hint: </strong>Add <font color='red'>co_memcpy.c</font> to your project or Makefile.",
         {previous("3.8.1"), previous("3.7")},
         {previous("3.9.0"), previous("4.8.0"), previous("3.6.2")},
         0},
        {"3.7 and 3.8 with UDS need uds_init.c",
         "<strong>Hint: </strong>Add <font color='red'>uds_init.c</font> to your project or Makefile.",
         {previous("3.7.0", true)},
         {previous("3.7.0"), previous("3.6.0", true)},
         0},
        {"before 3.7 also co_common.c",
         "<strong>Hint: </strong>Add <font color='red'>co_common.c and co_memcpy.c</font> to your project or "
         "Makefile.",
         {previous("3.6.5"), previous("3")},
         {previous("3.7.0"), previous("2.6.0")},
         0},
    });
}

// Other builds of the tool bring the PDO mapping code as a file of its own.
TEST(ProjectRules, MigrationHintsOfOtherToolsNameTheMappingFile)
{
    const std::pair<const char*, const char*> rows[] = {
        {"3.8.0", "<strong>Hint: </strong>Add <font color='red'>co_memcpy.c and co_mapping.c</font> to your "
                  "project or Makefile."},
        {"3.5.1", "<strong>Hint: </strong>Add <font color='red'>co_common.c, co_memcpy.c and "
                  "co_mapping.c</font> to your project or Makefile."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.first);
        TestProject project;
        project.db().setMiscSetting("PreviousToolVersion", row.first);
        const QString toolName = QCoreApplication::applicationName();
        QCoreApplication::setApplicationName("CANopen Tarnwick MP");
        const CheckOutcome outcome = project.run();
        QCoreApplication::setApplicationName(toolName);
        EXPECT_EQ(outcome.count(row.second), 1) << outcome.listing().toStdString();
        EXPECT_EQ(outcome.messages.filter("Hint: ").size(), 1) << outcome.listing().toStdString();
        EXPECT_EQ(outcome.errors, 0);
    }
}

TEST(ProjectRules, MigrationHintIsGivenOnceAndClearsThePreviousVersion)
{
    TestProject project;
    project.db().setMiscSetting("PreviousToolVersion", "3.8.0");
    const QString hint =
        "<strong>Hint: </strong>Add <font color='red'>co_memcpy.c</font> to your project or Makefile.";
    EXPECT_EQ(project.run().count(hint), 1);
    EXPECT_EQ(project.db().getMiscSetting("PreviousToolVersion"), QString());
    EXPECT_EQ(project.run().count(hint), 0);

    project.db().setMiscSetting("PreviousToolVersion", "3.9.1");
    project.run();
    EXPECT_EQ(project.db().getMiscSetting("PreviousToolVersion"), QString("3.9.1"));
}

TEST(ProjectRules, CommonSettings)
{
    expectRules({
        {"SDO block size",
         "<strong><font color='red'>Error: </font></strong>CANopen SDO block size may not exceed 127.",
         {settings({{"sdo_blocktransfer_block_size", "128"}}),
          settings({{"sdo_blocktransfer_block_size", "0x80"}})},
         {settings({{"sdo_blocktransfer_block_size", "127"}})}},
        {"timer interval",
         "<strong><font color='red'>Error: </font></strong>Timer interval not set in Common Settings -> "
         "Hardware/Target.",
         {settings({{"co_timer_interval", ""}})},
         {settings({{"co_timer_interval", "0"}})}},
        {"NMT master in a multi-protocol project",
         "<strong><font color='red'>Error: </font></strong>The CANopen setting 'NMT Master or Slave' is not "
         "supported in multi-protocol projects.",
         {[](TestProject& p) {
              p.addLine(1, Line::J1939);
              p.setGeneral("nmtmaster", "0,2");
          },
          [](TestProject& p) {
              p.addLine(1, Line::RawCan);
              p.setGeneral("nmtmaster", "0,2");
          }},
         {[](TestProject& p) {
              p.addLine(1, Line::J1939);
              p.setGeneral("nmtmaster", "0,0");
          },
          settings({{"line0type", "5"}, {"nmtmaster", "2"}})}},
    });
}

TEST(ProjectRules, NumericSettings)
{
    expectRules({
        {"general table, one entry per line",
         "<strong>Error: </strong>\"CAN Event\" has non-numeric value \"x\".",
         {settings({{"event_can", "1, x"}})},
         {settings({{"event_can", "1,2"}}), settings({{"event_can", "0x10,,$NODEID+1"}})}},
        {"signed type",
         "<strong>Error: </strong>\"Sleep Mode Waiting Time (ms)\" has non-numeric value \"0x80000000\".",
         {settings({{"sleep_wait_time", "0x80000000"}})},
         {settings({{"sleep_wait_time", "-5"}})}},
        {"UDS table, skipped for a bootloader",
         "<strong>Error: </strong>\"Session Timeout (ms)\" has non-numeric value \"5s\".",
         {settings({{"uds_session_timeout", "5s"}})},
         {settings({{"uds_session_timeout", "5s"}, {"uds_bl_setting", "1"}})}},
        {"J1939 table",
         "<strong>Error: </strong>\"Identity Number\" has non-numeric value \"12z\".",
         {[](TestProject& p) { p.db().setJ1939Setting("identitynumber", "12z"); }},
         {[](TestProject& p) { p.db().setJ1939Setting("identitynumber", "0x12"); },
          settings({{"identitynumber", "12z"}})}},
    });
}

TEST(ValueConversion, ByDataType)
{
    struct Row
    {
        int dataType;
        const char* text;
        bool passes;
    };
    const Row rows[] = {
        {7, "", true},
        {7, "0x1F", true},
        {7, "4294967295", true},
        {27, "0xFFFFFFFFFFFFFFFF", true},
        {7, "$NODEID+0x180", true},
        // The node-ID form is recognised in its upper-case spelling only.
        {7, "$nodeid+0x180", false},
        {5, "-1", false},
        {101, "x", false},
        {3, "-5", true},
        {3, "$NODEID+1", false},
        {4, "0x7FFFFFFF", true},
        {4, "0x80000000", false},
        {8, "3.5", true},
        {8, "abc", false},
        {9, "any text", true},
        {0, "abc", true},
        {106, "abc", true},
        {17, "abc", true},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ModelChecker::valueConvertible(row.dataType, row.text), row.passes)
            << row.dataType << " " << row.text;
}

TEST(ValueConversion, DefaultValuesOfTheLine)
{
    expectRules({
        {"unsigned value in lower-case node-ID form",
         "<strong>Error: </strong>Value conversion failed with Object 0x2000-0x0.",
         {[](TestProject& p) { p.addVariable(0x2000, 7, "rw", "$nodeid+0x180"); }},
         {[](TestProject& p) { p.addVariable(0x2000, 7, "rw", "$NODEID+0x180"); }}},
        {"sub-index number in decimal behind 0x",
         "<strong>Error: </strong>Value conversion failed with Object 0x2001-0x10.",
         {[](TestProject& p) {
             QStringList values(10, "1");
             values[9] = "ten";
             p.addArray(0x2001, values, 6);
         }},
         {[](TestProject& p) { p.addArray(0x2001, QStringList(10, "0x0A"), 6); }}},
        {"objects below 0x1000 are tested too",
         "<strong>Error: </strong>Value conversion failed with Object 0x0005-0x0.",
         {[](TestProject& p) { p.addVariable(0x0005, 5, "ro", "eight"); }},
         {[](TestProject& p) { p.addVariable(0x0005, 5, "ro", "8"); }}},
    });
}
