// Scripted sessions of the project and object dictionary tools on a project
// that passes the model check: each request's reply is compared byte for byte.

#include "common/cleanproject.h"
#include "mcpserverrun.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QByteArray summaryOk = "check_model: OK (0 errors).";
// A summary with one error lists every message of the check, the note of the CANopen line 0 first.
const QByteArray oneError =
    "check_model: 1 error(s):\nInfo: Path to protocol stack not specified. Cannot check if "
    "generated code fits to installed stack/framework.\nSpecify path to protocol stack at "
    "Options -> Settings.\n";

enum class Reply
{
    Text,
    Failure,
    InvalidParams,
    // An edit whose text is followed by a model summary of any outcome.
    Edited,
    // The first line of a pipeline tool, followed by the pipeline's messages.
    TextThenLog,
    FailureThenLog,
};

struct Step
{
    QByteArray tool;
    // "@DIR@" stands for the folder of the project, "@PROJECT@" for its file.
    QByteArray arguments;
    Reply kind;
    QByteArray text;
};

using mcpserverrun::jsonEscaped;

QByteArray expectedReply(int id, const Step& step)
{
    const QByteArray text = jsonEscaped(QString::fromUtf8(step.text));
    switch (step.kind) {
    case Reply::Text:
        return mcpserverrun::toolReply(id, text);
    case Reply::Failure:
        return mcpserverrun::toolReply(id, text, true);
    case Reply::InvalidParams:
        return mcpserverrun::errorReply(id, -32602, text);
    case Reply::Edited:
        return mcpserverrun::toolReply(id, text + "\\n\\ncheck_model: ");
    case Reply::TextThenLog:
    case Reply::FailureThenLog:
        return mcpserverrun::toolReply(id, text + "\\n", step.kind == Reply::FailureThenLog);
    }
    return {};
}

class McpToolSession : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        projectPath = folder.filePath("device.trwp");
        ASSERT_TRUE(cleanproject::saveCanopenProject(projectPath));
    }

    QByteArray request(int id, const Step& step) const
    {
        return R"({"jsonrpc":"2.0","id":)" + QByteArray::number(id) +
               R"(,"method":"tools/call","params":{"name":")" + step.tool + R"(","arguments":)" +
               withPaths(step.arguments) + "}}\n";
    }

    QByteArray withPaths(QByteArray text) const
    {
        return text.replace("@PROJECT@", projectPath.toUtf8()).replace("@DIR@", folder.path().toUtf8());
    }

    // Runs one server for all steps and compares the replies in order.
    void runSteps(const QList<Step>& steps)
    {
        QByteArray input;
        for (int i = 0; i < steps.size(); ++i)
            input += request(i + 1, steps.at(i));
        const mcpserverrun::ServerRun run = mcpserverrun::run(input, {}, 120000);
        EXPECT_TRUE(mcpserverrun::endedCleanly(run));
        EXPECT_TRUE(mcpserverrun::onlyRepliesOnStdout(run.out));
        const QList<QByteArray> replies = run.out.split('\n');
        ASSERT_EQ(replies.size(), steps.size() + 1) << run.out.left(3000).toStdString();
        EXPECT_TRUE(replies.last().isEmpty());
        for (int i = 0; i < steps.size(); ++i) {
            const QByteArray expected = withPaths(expectedReply(i + 1, steps.at(i)));
            const QByteArray reply = replies.at(i) + '\n';
            SCOPED_TRACE("step " + std::to_string(i + 1) + " " + steps.at(i).tool.toStdString());
            if (steps.at(i).kind == Reply::Text || steps.at(i).kind == Reply::Failure ||
                steps.at(i).kind == Reply::InvalidParams) {
                EXPECT_EQ(reply.toStdString(), expected.toStdString());
                continue;
            }
            // The model summary or the pipeline's messages follow the known text.
            const qsizetype textEnd = expected.lastIndexOf(R"(","type":"text"})");
            EXPECT_TRUE(reply.startsWith(expected.left(textEnd))) << reply.left(600).toStdString();
            EXPECT_TRUE(reply.endsWith(expected.mid(textEnd))) << reply.right(100).toStdString();
        }
    }

    QTemporaryDir folder;
    QString projectPath;
};

const Step openIt{"open_project", R"({"path":"@PROJECT@"})", Reply::Text, "Project opened: @PROJECT@"};

Step edited(const QByteArray& tool, const QByteArray& arguments, const QByteArray& text)
{
    return {tool, arguments, Reply::Text, text + "\n\n" + summaryOk};
}

TEST_F(McpToolSession, ProjectToolsGuardOpenAndEditLines)
{
    const QByteArray noProject = "No project open. Call open_project first.";
    runSteps({
        {"list_lines", "{}", Reply::Failure, noProject},
        {"check_model", "{}", Reply::Failure, noProject},
        // The project guard comes before the argument check.
        {"get_line", "{}", Reply::Failure, noProject},
        {"open_project", "{}", Reply::InvalidParams, "Missing required argument: path"},
        {"open_project", R"({"path":""})", Reply::InvalidParams, "Missing required argument: path"},
        {"open_project", R"({"path":42})", Reply::InvalidParams, "Missing required argument: path"},
        openIt,
        {"list_lines", "{}", Reply::Text, R"([{"line":0,"lineTypeCode":1}])"},
        // A failed open leaves no project open, not even the earlier one.
        {"open_project", R"({"path":"@DIR@/missing.trwp"})", Reply::Failure,
         "Failed to open project: @DIR@/missing.trwp"},
        {"list_lines", "{}", Reply::Failure, noProject},
        {"open_project", R"({"path":"@DIR@"})", Reply::Failure, "Failed to open project: @DIR@"},
        {"list_lines", "{}", Reply::Failure, noProject},
        openIt,
        {"get_line", "{}", Reply::InvalidParams, "Missing required argument: line"},
        {"get_line", R"({"line":5})", Reply::Failure, "Line 5 does not exist."},
        {"get_line", R"({"line":0})", Reply::Text,
         R"({"dcfPath":"","edsPath":"","isHeartbeatConsumer":false,"isMaster":false,)"
         R"("isSyncConsumer":false,"isSyncProducer":false,"line":0,"name":"","rpdoCount":0,)"
         R"("tpdoCount":0})"},
        {"add_line", R"({"line":44})", Reply::InvalidParams,

         "lineType is required in this build (CAN Tarnwick supports multiple protocols, none can "
         "be inferred)"},
        {"add_line", R"({"line":44,"lineType":"canopen"})", Reply::InvalidParams,
         "Invalid lineType: expected CANopen, J1939, RawCAN, CANopen+J1939, CANopen+RawCAN or "
         "J1939+RawCAN"},
        {"add_line", R"({"line":0,"lineType":"CANopen"})", Reply::Failure, "Line 0 already exists."},
        // Line numbers keep their low 8 bits: 300 is line 44.
        {"add_line", R"({"line":300,"lineType":"CANopen+J1939","name":"Second","isMaster":true})",
         Reply::Edited, "Line 44 added."},
        {"add_line", R"({"line":44,"lineType":"J1939"})", Reply::Failure, "Line 44 already exists."},
        {"get_line", R"({"line":44})", Reply::Text,
         R"({"dcfPath":"","edsPath":"","isHeartbeatConsumer":false,"isMaster":true,)"
         R"("isSyncConsumer":false,"isSyncProducer":false,"line":44,"name":"Second",)"
         R"("rpdoCount":0,"tpdoCount":0})"},
        // Lines from 240 up are not CAN lines and are not listed.
        {"add_line", R"({"line":240,"lineType":"RawCAN"})", Reply::Edited, "Line 240 added."},
        {"list_lines", "{}", Reply::Text, R"([{"line":0,"lineTypeCode":1},{"line":44,"lineTypeCode":5}])"},
        {"delete_line", R"({"line":240})", Reply::Edited, "Line 240 deleted."},
        edited("delete_line", R"({"line":44})", "Line 44 deleted."),
        {"delete_line", R"({"line":44})", Reply::Failure, "Line 44 does not exist."},
        {"delete_line", R"({"line":"44"})", Reply::Edited, "Line 0 deleted."},
    });
}

TEST_F(McpToolSession, ObjectDictionaryToolsEditAndReadBack)
{
    runSteps({
        openIt,
        {"add_index", R"({"line":0,"index":24641,"name":"Statusword","objectType":"Variable"})",
         Reply::InvalidParams, "Missing required argument: line, index, name, objectType and/or dataType"},
        {"add_index", R"({"line":7,"index":24641,"name":"Statusword","objectType":"Variable","dataType":6})",
         Reply::Failure, "Line 7 does not exist."},
        {"add_index", R"({"line":0,"index":24641,"name":"Statusword","objectType":"variable","dataType":6})",
         Reply::InvalidParams, "Invalid objectType: expected Variable, Array, Record or Domain"},
        {"add_index",
         R"({"line":0,"index":24641,"name":"Statusword","objectType":"Variable","dataType":6,"category":"optional"})",
         Reply::InvalidParams, "Invalid category: expected Mandatory, Optional or Conditional"},
        {"add_index", R"({"line":0,"index":4096,"name":"Again","objectType":"Variable","dataType":7})",
         Reply::Failure, "Index 0X1000 already exists on line 0."},
        // Index numbers keep their low 16 bits.
        {"add_index",
         R"({"line":256,"index":90177,"name":"Statusword","objectType":"Variable","dataType":6,)"
         R"("category":"Mandatory","description":"State of the drive"})",
         Reply::Edited, "Index 0X6041 added on line 0."},
        {"get_index", R"({"line":0,"index":24641})", Reply::Text,
         R"({"categoryCode":0,"description":"State of the drive","index":"0X6041","line":0,)"
         R"("name":"Statusword","objectTypeCode":7,"subs":[]})"},
        {"add_subindex", R"({"line":0,"index":8193,"sub":0,"name":"x","dataType":6})", Reply::Failure,
         "Index 0X2001 does not exist on line 0."},
        edited("add_subindex",
               R"({"line":0,"index":24641,"sub":256,"name":"Statusword","dataType":6,"defaultValue":"0x0"})",
               "Subindex 0X6041:0 added on line 0."),
        {"add_subindex", R"({"line":0,"index":24641,"sub":0,"name":"Twice","dataType":6})", Reply::Failure,
         "Subindex 0X6041:0 already exists on line 0."},
        {"get_subindex", R"({"line":0,"index":24641,"sub":0})", Reply::Text,
         R"({"accessType":"ro","currentValue":"","dataTypeCode":6,"defaultValue":"0x0",)"
         R"("hasDefault":true,"name":"Statusword","size":0,"sub":0})"},
        {"get_subindex", R"({"line":0,"index":24641,"sub":1})", Reply::Failure,
         "Subindex 0X6041:1 does not exist on line 0."},
        // The doubled quote only protects the statement.
        {"set_subindex_value", R"({"line":0,"index":24641,"sub":0,"defaultValue":"it's"})", Reply::Edited,
         "Updated defaultValue of subindex 0X6041:0 on line 0."},
        {"get_subindex", R"({"line":0,"index":24641,"sub":0})", Reply::Text,
         R"({"accessType":"ro","currentValue":"","dataTypeCode":6,"defaultValue":"it's",)"
         R"("hasDefault":true,"name":"Statusword","size":0,"sub":0})"},
        edited("set_subindex_value", R"({"line":0,"index":24641,"sub":0,"defaultValue":"0x0237"})",
               "Updated defaultValue of subindex 0X6041:0 on line 0."),
        {"set_subindex_value", R"({"line":0,"index":24641,"sub":3,"defaultValue":"1"})", Reply::Failure,
         "Subindex 0X6041:3 does not exist on line 0."},
        edited("set_index_name", R"({"line":0,"index":24641,"name":"Status \"word\""})",
               "Index 0X6041 on line 0 renamed to \"Status \"word\"\"."),
        {"set_index_name", R"({"line":0,"index":24642,"name":"x"})", Reply::Failure,
         "Index 0X6042 does not exist on line 0."},
        // A string where a number belongs reads as 0.
        {"get_index", R"({"line":0,"index":"24641"})", Reply::Failure,
         "Index 0X0000 does not exist on line 0."},
        {"list_indices", R"({"line":9})", Reply::Failure,
         "Line 9 is not a CANopen line (lineTypeCode=0) - this tool only applies to CANopen "
         "lines."},
        {"list_indices", "{}", Reply::InvalidParams, "Missing required argument: line"},
    });
}

TEST_F(McpToolSession, FindIndicesMatchesWholeNamesWithoutCase)
{
    const auto find = [](const QByteArray& pattern) {
        return R"({"line":0,"globPattern":")" + pattern + R"("})";
    };
    const QByteArray controlword = R"({"index":"0X6040","indexDec":24640,"name":"Controlword"})";
    const QByteArray control = R"({"index":"0X2000","indexDec":8192,"name":"CONTROL"})";
    const QByteArray path = R"({"index":"0X2001","indexDec":8193,"name":"control/mode"})";
    runSteps({
        openIt,
        {"add_index", R"({"line":0,"index":24640,"name":"Controlword","objectType":"Variable","dataType":6})",
         Reply::Edited, "Index 0X6040 added on line 0."},
        {"add_index", R"({"line":0,"index":8192,"name":"CONTROL","objectType":"Variable","dataType":5})",
         Reply::Edited, "Index 0X2000 added on line 0."},
        {"add_index", R"({"line":0,"index":8193,"name":"control/mode","objectType":"Variable","dataType":5})",
         Reply::Edited, "Index 0X2001 added on line 0."},
        {"find_indices", find("control"), Reply::Text, "[" + control + "]"},
        {"find_indices", find("*control*"), Reply::Text, "[" + control + "," + controlword + "]"},
        {"find_indices", find("control*"), Reply::Text, "[" + control + "," + controlword + "]"},
        {"find_indices", find("control?mode"), Reply::Text, "[]"},
        {"find_indices", find("control/mode"), Reply::Text, "[" + path + "]"},
        {"find_indices", find("[cC]ontrolword"), Reply::Text, "[" + controlword + "]"},
        {"find_indices", find("nothing*"), Reply::Text, "[]"},
        {"find_indices", find(""), Reply::InvalidParams, "Argument globPattern must not be empty"},
        {"find_indices", find("["), Reply::InvalidParams, "Invalid glob pattern: ["},
        {"find_indices", R"({"line":0})", Reply::InvalidParams,
         "Missing required argument: line and/or globPattern"},
    });
}

TEST_F(McpToolSession, CopyAndDeleteIndices)
{
    const QByteArray notCanopen =
        "Line 1 is not a CANopen line (lineTypeCode=2) - this tool only applies to CANopen lines.";
    runSteps({
        openIt,
        {"add_line", R"({"line":1,"lineType":"J1939"})", Reply::Edited, "Line 1 added."},
        {"add_index", R"({"line":1,"index":8192,"name":"x","objectType":"Variable","dataType":5})",
         Reply::Failure, notCanopen},
        {"copy_index", R"({"srcLine":0,"srcIndex":4096,"destLine":0})", Reply::InvalidParams,
         "Missing required argument: srcLine, srcIndex, destLine and/or destIndex"},
        {"copy_index", R"({"srcLine":0,"srcIndex":4096,"destLine":1,"destIndex":4096})", Reply::Failure,
         notCanopen},
        {"copy_index", R"({"srcLine":0,"srcIndex":8192,"destLine":0,"destIndex":8193})", Reply::Failure,
         "Source index 0X2000 does not exist on line 0."},
        edited("copy_index", R"({"srcLine":0,"srcIndex":4120,"destLine":0,"destIndex":4120})",
               "Copied index 0X1018 (line 0) to 0X1018 (line 0)."),
        edited("copy_index", R"({"srcLine":0,"srcIndex":4120,"destLine":0,"destIndex":8192})",
               "Copied index 0X1018 (line 0) to 0X2000 (line 0)."),
        {"get_subindex", R"({"line":0,"index":8192,"sub":1})", Reply::Text,
         R"({"accessType":"ro","currentValue":"","dataTypeCode":7,"defaultValue":"0x1234",)"
         R"("hasDefault":true,"name":"entry","size":0,"sub":1})"},
        {"delete_subindex", R"({"line":0,"index":8192,"sub":9})", Reply::Failure,
         "Subindex 0X2000:9 does not exist on line 0."},
        {"delete_subindex", R"({"line":0,"index":8192,"sub":1})", Reply::Edited,
         "Subindex 0X2000:1 deleted from line 0."},
        {"get_subindex", R"({"line":0,"index":8192,"sub":1})", Reply::Failure,
         "Subindex 0X2000:1 does not exist on line 0."},
        edited("delete_index", R"({"line":0,"index":8192})", "Index 0X2000 deleted from line 0."),
        {"delete_index", R"({"line":0,"index":8192})", Reply::Failure,
         "Index 0X2000 does not exist on line 0."},
        {"list_indices", R"({"line":0})", Reply::Text,
         R"([{"index":"0X1000","indexDec":4096,"name":"variable"},)"
         R"({"index":"0X1001","indexDec":4097,"name":"variable"},)"
         R"({"index":"0X1017","indexDec":4119,"name":"variable"},)"
         R"({"index":"0X1018","indexDec":4120,"name":"Identity Object"}])"},
    });
}

TEST_F(McpToolSession, GenerateSaveReopenAndImport)
{
    ASSERT_TRUE(QDir(folder.path()).mkdir("out"));
    const QByteArray savedSetpoint =
        R"({"categoryCode":1,"description":"","index":"0X2000","line":0,"name":"Setpoint",)"
        R"("objectTypeCode":7,"subs":[{"accessType":"rw","currentValue":"","dataTypeCode":7,)"
        R"("defaultValue":"0x10","hasDefault":true,"name":"Setpoint","size":0,"sub":0}]})";
    runSteps({
        openIt,
        {"add_index", R"({"line":0,"index":8192,"name":"Setpoint","objectType":"Variable","dataType":7})",
         Reply::Edited, "Index 0X2000 added on line 0."},
        edited("add_subindex",
               R"({"line":0,"index":8192,"sub":0,"name":"Setpoint","dataType":7,"accessType":"rw",)"
               R"("defaultValue":"0x10"})",
               "Subindex 0X2000:0 added on line 0."),
        {"generate", R"({"outputPath":"@DIR@/no/such/folder"})", Reply::FailureThenLog, "Generation failed."},
        {"generate", R"({"outputPath":"@DIR@/out"})", Reply::TextThenLog, "Generation completed."},
        {"save_project", "{}", Reply::Text, "Project saved."},
        {"set_index_name", R"({"line":0,"index":8192,"name":"Not saved"})", Reply::Edited,
         "Index 0X2000 on line 0 renamed to \"Not saved\"."},
        openIt,
        {"get_index", R"({"line":0,"index":8192})", Reply::Text, savedSetpoint},
        // Imports must show through the sub-index cache that the check filled.
        {"set_subindex_value", R"({"line":0,"index":8192,"sub":0,"defaultValue":"0x20"})", Reply::Edited,
         "Updated defaultValue of subindex 0X2000:0 on line 0."},
        {"import_file", R"({"path":"@PROJECT@"})", Reply::Text, "Import successful: @PROJECT@"},
        {"get_index", R"({"line":0,"index":8192})", Reply::Text, savedSetpoint},
        {"set_subindex_value", R"({"line":0,"index":8192,"sub":0,"defaultValue":"0x20"})", Reply::Edited,
         "Updated defaultValue of subindex 0X2000:0 on line 0."},
        {"import_file", R"({"path":"@DIR@/out/device.eds"})", Reply::Text,
         "Import successful: @DIR@/out/device.eds"},
        {"get_index", R"({"line":0,"index":8192})", Reply::Text, savedSetpoint},
        {"import_file", R"({"path":"@DIR@/out/missing.eds"})", Reply::Failure,
         "Import failed: @DIR@/out/missing.eds"},
        // Without outputPath the project's own folder is in force again.
        {"generate", "{}", Reply::TextThenLog, "Generation completed."},
    });
    EXPECT_TRUE(QFile::exists(folder.filePath("out/gen_objdict.c")));
    EXPECT_FALSE(QDir(folder.filePath("no")).exists());
    EXPECT_TRUE(QFile::exists(folder.filePath("gen_objdict.c")));
}

// The client closes its end while generate runs: the reply of the running
// request still comes, and the server ends on its own with status 0.
TEST_F(McpToolSession, InputClosedDuringGenerateEndsCleanly)
{
    const mcpserverrun::ServerRun run =
        mcpserverrun::run(request(1, openIt) + request(2, {"generate", "{}", Reply::TextThenLog, {}}) +
                              request(3, {"list_lines", "{}", Reply::Text, {}}),
                          {}, 120000);
    EXPECT_TRUE(mcpserverrun::endedCleanly(run));
    EXPECT_TRUE(mcpserverrun::onlyRepliesOnStdout(run.out));
    const QList<QByteArray> replies = run.out.split('\n');
    ASSERT_GE(replies.size(), 3);
    for (int i = 0; i + 1 < replies.size(); ++i)
        EXPECT_EQ(QJsonDocument::fromJson(replies.at(i)).object().value("id").toInt(), i + 1);
    EXPECT_TRUE(replies.at(1).startsWith(
        R"({"id":2,"jsonrpc":"2.0","result":{"content":[{"text":"Generation completed.\n)"));
}

} // namespace

TEST_F(McpToolSession, PgnAndSpnToolsGuardEditAndReadBack)
{
    const QByteArray noSpns =
        oneError + "<strong>Error: </strong>PG (61444/0xf004) does not contain any SPNs.";
    const QByteArray eec1Tx = R"({"line":1,"pgn":61444,"direction":"Transmit"})";
    const QByteArray engineSpeed =
        R"({"bitPosition":24,"bitSize":16,"dataTypeCode":6,"defaultValue":"0","description":"",)"
        R"("name":"Engine speed","pos":0,"slotDf":0,"spn":190,"varname":"engineSpeed"})";
    const QByteArray addSpeed =
        R"("spn":190,"name":"Engine speed","dataType":6,"bitSize":16,"bitPosition":24,"varname":"engineSpeed"})";
    runSteps({
        {"list_pgns", R"({"line":0})", Reply::Failure, "No project open. Call open_project first."},
        openIt,
        {"list_pgns", "{}", Reply::InvalidParams, "Missing required argument: line"},
        // The direction word is read before the line is looked at, except by the lists.
        {"add_pgn", R"({"line":9,"pgn":61444,"direction":"Both","name":"EEC1"})", Reply::InvalidParams,
         "Invalid direction: expected Transmit, Receive or Invalid"},
        {"add_pgn", R"({"line":1,"pgn":61444,"direction":"Transmit","name":"EEC1"})", Reply::Failure,
         "Line 1 does not exist."},
        {"add_pgn", R"({"line":0,"pgn":61444,"direction":"Transmit","name":"EEC1"})", Reply::Failure,
         "Line 0 is not a J1939 line (lineTypeCode=1) - this tool only applies to J1939 lines."},
        {"list_pgns", R"({"line":0,"direction":"Both"})", Reply::Failure,
         "Line 0 is not a J1939 line (lineTypeCode=1) - this tool only applies to J1939 lines."},
        {"add_pgn", R"({"line":0,"pgn":61444,"direction":"Transmit"})", Reply::InvalidParams,
         "Missing required argument: line, pgn, direction and/or name"},
        edited("add_line", R"({"line":1,"lineType":"J1939+RawCAN"})", "Line 1 added."),
        {"add_pgn",
         R"({"line":257,"pgn":61444,"direction":"Transmit","name":"EEC1","priority":3,"cycleTimeMs":20})",
         Reply::Text, "PGN 61444 (Transmit) added on line 1.\n\n" + noSpns},
        {"add_pgn", R"({"line":1,"pgn":61444,"direction":"Transmit","name":"Again"})", Reply::Failure,
         "PGN 61444 (Transmit) already exists on line 1."},
        {"add_spn", R"({"line":1,"pgn":61443,"direction":"Transmit",)" + addSpeed, Reply::Failure,
         "PGN 61443 (Transmit) does not exist on line 1."},
        edited("add_spn", R"({"line":1,"pgn":61444,"direction":"Transmit",)" + addSpeed,
               "SPN 190 added on PGN 61444 (Transmit), line 1."),
        {"add_spn", R"({"line":1,"pgn":61444,"direction":"Transmit",)" + addSpeed, Reply::Failure,
         "SPN 190 already exists on PGN 61444 (Transmit), line 1."},
        // The same number received is another PGN, with SPNs of its own.
        {"add_pgn", R"({"line":1,"pgn":61444,"direction":"Receive","name":"EEC1 of the engine"})",
         Reply::Text, "PGN 61444 (Receive) added on line 1.\n\n" + noSpns},
        edited(
            "add_spn",
            R"({"line":1,"pgn":61444,"direction":"Receive","spn":190,"name":"Speed","dataType":6,"varname":"rx"})",
            "SPN 190 added on PGN 61444 (Receive), line 1."),
        {"list_pgns", R"({"line":1})", Reply::Text,
         R"([{"directions":["Transmit","Receive"],"name":"EEC1","pgn":61444}])"},
        {"list_pgns", R"({"line":1,"direction":"Receive"})", Reply::Text,
         R"([{"directions":["Receive"],"name":"EEC1 of the engine","pgn":61444}])"},
        {"get_pgn", eec1Tx, Reply::Text,
         R"({"cycleTimeMs":20,"description":"","direction":"Transmit","inhibitTimeMs":0,"line":1,)"
         R"("name":"EEC1","pgn":61444,"priority":3,"spns":[)" +
             engineSpeed + "]}"},
        {"get_pgn", R"({"line":0,"pgn":61444,"direction":"transmit"})", Reply::InvalidParams,
         "Invalid direction: expected Transmit, Receive or Invalid"},
        {"list_spns", eec1Tx, Reply::Text, R"([{"name":"Engine speed","spn":190}])"},
        {"get_spn", R"({"line":1,"pgn":61444,"direction":"Transmit","spn":190})", Reply::Text, engineSpeed},
        {"get_spn", R"({"line":1,"pgn":61444,"direction":"Transmit","spn":"190"})", Reply::Failure,
         "SPN 0 does not exist on PGN 61444 (Transmit), line 1."},
        {"delete_spn", R"({"line":1,"pgn":61444,"direction":"Transmit","spn":190})", Reply::Text,
         "SPN 190 deleted from PGN 61444 (Transmit), line 1.\n\n" + noSpns},
        edited("delete_pgn", eec1Tx, "PGN 61444 (Transmit) deleted from line 1."),
        {"delete_pgn", eec1Tx, Reply::Failure, "PGN 61444 (Transmit) does not exist on line 1."},
        {"add_pgn", R"({"line":1,"pgn":59904,"direction":"Receive","name":"Request"})", Reply::Text,
         // The line feed that ends this message is trimmed with the reply.
         "PGN 59904 (Receive) added on line 1.\n\n" + oneError +
             "<strong>Error: </strong>Special PGN 59904/0xea00 is handled by the J1939 stack directly and "
             "may not "
             "be included in the signal definitions."},
    });
}

TEST_F(McpToolSession, CanIdAndDataElementToolsGuardEditAndReadBack)
{
    const QByteArray tx181 = R"({"line":1,"canId":385,"direction":"Transmit")";
    const QByteArray notExtended = oneError +
                                   "<strong><font color='red'>Error: </font></strong> CAN-ID 0x800 is "
                                   "higher then 0x7ff, but extended flag is not set.";
    const QByteArray element =
        R"({"bitPosition":0,"bitSize":8,"dataTypeCode":5,"defaultValue":"it's","description":"",)"
        R"("name":"Mode","number":0,"pos":0,"varname":"mode"})";
    runSteps({
        openIt,
        {"add_can_id", R"({"line":0,"canId":385,"direction":"Transmit","name":"Status"})", Reply::Failure,
         "Line 0 is not a RAW-CAN-compatible line for this build (CANopen Tarnwick, lineTypeCode=1)."},
        edited("add_line", R"({"line":1,"lineType":"RawCAN"})", "Line 1 added."),
        {"add_can_id", tx181 + "}", Reply::InvalidParams,
         "Missing required argument: line, canId, direction and/or name"},
        edited("add_can_id", tx181 + R"(,"name":"Status","cycleTimeMs":100})",
               "CAN-ID 0X181 (Transmit) added on line 1."),
        // The warning about both directions is dropped from a summary without errors.
        edited("add_can_id", R"({"line":1,"canId":385,"direction":"Receive","name":"Echo"})",
               "CAN-ID 0X181 (Receive) added on line 1."),
        {"add_can_id", tx181 + R"(,"name":"Again"})", Reply::Failure,
         "CAN-ID 0X181 (Transmit) already exists on line 1."},
        edited(
            "add_data_element",
            tx181 +
                R"(,"number":0,"name":"Mode","dataType":5,"bitSize":8,"varname":"mode","defaultValue":"it's"})",
            "Data element 0 added on CAN-ID 0X181 (Transmit), line 1."),
        {"add_data_element", tx181 + R"(,"number":0,"name":"Mode","dataType":5})", Reply::Failure,
         "Data element 0 already exists on CAN-ID 0X181 (Transmit), line 1."},
        {"add_data_element",
         tx181 + R"(,"number":1,"name":"Level","dataType":6,"bitPosition":4,"varname":"level"})", Reply::Text,
         "Data element 1 added on CAN-ID 0X181 (Transmit), line 1.\n\n" + oneError +
             "<strong>Warning: </strong>CAN-ID 0x181 appears in both TX and RX \xE2\x80\x94 this is unusual "
             "and may be "
             "a configuration error.\n<strong><font color='red'>Error: </font></strong> Signal 'Level' in "
             "CAN-ID "
             "0x181 overlaps with another signal in the same message."},
        {"get_can_id", tx181 + "}", Reply::Text,
         R"({"canId":"0X181","canIdDec":385,"cycleTimeMs":100,"dataElements":[)" + element +
             R"(,{"bitPosition":4,"bitSize":0,"dataTypeCode":6,"defaultValue":"0","description":"","name":"Level",)"
             R"("number":1,"pos":0,"varname":"level"}],"description":"","direction":"Transmit","inhibitTimeMs":0,)"
             R"("line":1,"name":"Status"})"},
        {"list_can_ids", R"({"line":1})", Reply::Text,
         R"([{"canId":"0X181","canIdDec":385,"directions":["Transmit","Receive"],"name":"Status"}])"},
        {"delete_data_element", tx181 + R"(,"number":7})", Reply::Failure,
         "Data element 7 does not exist on CAN-ID 0X181 (Transmit), line 1."},
        edited("delete_data_element", tx181 + R"(,"number":1})",
               "Data element 1 deleted from CAN-ID 0X181 (Transmit), line 1."),
        edited("delete_can_id", tx181 + "}", "CAN-ID 0X181 (Transmit) deleted from line 1."),
        {"get_can_id", tx181 + "}", Reply::Failure, "CAN-ID 0X181 (Transmit) does not exist on line 1."},
        {"add_can_id", R"({"line":1,"canId":2048,"direction":"Transmit","name":"Wide"})", Reply::Text,
         "CAN-ID 0X800 (Transmit) added on line 1.\n\n" + notExtended},
        {"add_can_id", R"({"line":1,"canId":536872960,"direction":"Transmit","name":"Extended"})",
         Reply::Text, "CAN-ID 0X20000800 (Transmit) added on line 1.\n\n" + notExtended},
    });
}
