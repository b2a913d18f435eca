// Scripted sessions with the built program in server mode: raw bytes in,
// replies compared byte for byte.

#include "mcpserverrun.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

namespace {

// Whatever the input, the server writes nothing but replies and ends on its
// own once the input has ended.
QString runServer(const QByteArray& input, const QStringList& extraArguments = {})
{
    const mcpserverrun::ServerRun run = mcpserverrun::run(input, extraArguments);
    EXPECT_TRUE(mcpserverrun::endedCleanly(run));
    EXPECT_TRUE(mcpserverrun::onlyRepliesOnStdout(run.out));
    return QString::fromUtf8(run.out);
}

// One line of input or output.
QByteArray ln(const QByteArray& json)
{
    return json + "\n";
}

QByteArray methodNotFound(int id, const QByteArray& method)
{
    return mcpserverrun::errorReply(id, -32601, "Method not found: " + method);
}

QByteArray unknownTool(int id, const QByteArray& name)
{
    return mcpserverrun::errorReply(id, -32601, "Unknown tool: " + name);
}

QByteArray invalidParams(int id, const QByteArray& message)
{
    return mcpserverrun::errorReply(id, -32602, message);
}

QByteArray deeplyNested(int depth)
{
    return R"({"id":1,"method":"ping","params":{"a":)" + QByteArray(depth, '[') + QByteArray(depth, ']') +
           "}}\n";
}

struct ExchangeCase
{
    const char* name;
    QByteArray input;
    QByteArray expected;
};

class McpExchange : public ::testing::TestWithParam<ExchangeCase>
{
};

TEST_P(McpExchange, RepliesByteForByte)
{
    EXPECT_EQ(runServer(GetParam().input), QString::fromUtf8(GetParam().expected));
}

const QByteArray ping = R"({"jsonrpc":"2.0","id":9,"method":"ping"})";

INSTANTIATE_TEST_SUITE_P(
    ProtocolLoop, McpExchange,
    ::testing::Values(
        ExchangeCase{"WhiteSpaceLine", " \t  \r\n", ""}, ExchangeCase{"EmptyLines", "\n\n\n", ""},
        ExchangeCase{"InitializedNotification",
                     ln(R"({"jsonrpc":"2.0","method":"notifications/initialized"})"), ""},
        ExchangeCase{"UnknownNotification", ln(R"({"jsonrpc":"2.0","method":"notifications/whatever"})"), ""},
        ExchangeCase{"NotificationOfAToolCallRunsNothing",
                     ln(R"({"method":"tools/call","params":{"name":"no_such_tool"}})"), ""},
        ExchangeCase{"BatchArray", ln(R"([{"jsonrpc":"2.0","id":1,"method":"initialize"}])"), ""},
        ExchangeCase{"ScalarDocuments", "42\n\"initialize\"\nnull\n", ""},
        ExchangeCase{"Garbage", "hello {\n}{\n\x01\x02\x03\n", ""},
        ExchangeCase{"InvalidUtf8", "{\"id\":1,\"method\":\"ping\xff\xfe\"}\n", ""},
        ExchangeCase{"DeepNesting", deeplyNested(100000), ""},
        // Escapes that decode to no valid character are echoed as escapes.
        ExchangeCase{"LoneSurrogateAndNulInTheMethod", ln(R"({"id":1,"method":"\ud800x\u0000"})"),
                     methodNotFound(1, R"(\ud800x\u0000)")},
        ExchangeCase{"UnknownMethod", ping + "\n", methodNotFound(9, "ping")},
        ExchangeCase{"MissingMethod", ln(R"({"jsonrpc":"2.0","id":7})"), methodNotFound(7, "")},
        ExchangeCase{"MethodIsComparedExactly", ln(R"({"id":3,"method":"Initialize"})"),
                     methodNotFound(3, "Initialize")},
        ExchangeCase{"StringIdBecomesZero", ln(R"({"id":"abc","method":"ping"})"), methodNotFound(0, "ping")},
        ExchangeCase{"NullIdIsARequest", ln(R"({"id":null,"method":"ping"})"), methodNotFound(0, "ping")},
        ExchangeCase{"ToolCallWithoutName",
                     ln(R"({"jsonrpc":"2.0","id":3,"method":"tools/call","params":{}})"), unknownTool(3, "")},
        ExchangeCase{"ToolCallWithoutParams", ln(R"({"id":4,"method":"tools/call","params":"open_project"})"),
                     unknownTool(4, "")},
        ExchangeCase{"UnknownTool", ln(R"({"id":5,"method":"tools/call","params":{"name":"Open_Project"}})"),
                     unknownTool(5, "Open_Project")},
        // Values of the wrong JSON type read as their defaults: 0, an empty
        // text, an empty object.
        ExchangeCase{"IdOfAnotherTypeBecomesZero",
                     ln(R"({"id":true,"method":"ping"})") + ln(R"({"id":[7],"method":"ping"})") +
                         ln(R"({"id":{"n":7},"method":"ping"})"),
                     methodNotFound(0, "ping") + methodNotFound(0, "ping") + methodNotFound(0, "ping")},
        ExchangeCase{"NegativeIdIsEchoed", ln(R"({"id":-5,"method":"ping"})"), methodNotFound(-5, "ping")},
        ExchangeCase{"MethodOfAnotherType", ln(R"({"id":1,"method":42})"), methodNotFound(1, "")},
        ExchangeCase{"ToolNameOfAnotherType",
                     ln(R"({"id":1,"method":"tools/call","params":{"name":["open_project"]}})"),
                     unknownTool(1, "")},
        ExchangeCase{
            "ArgumentsOfAnotherType",
            ln(R"({"id":1,"method":"tools/call","params":{"name":"open_project","arguments":"/a.trwp"}})") +
                ln(R"({"id":2,"method":"tools/call","params":{"name":"open_project","arguments":{"path":["/a"]}}})") +
                ln(R"({"id":3,"method":"tools/call","params":{"name":"open_project","arguments":{"path":null}}})"),
            invalidParams(1, "Missing required argument: path") +
                invalidParams(2, "Missing required argument: path") +
                invalidParams(3, "Missing required argument: path")},
        ExchangeCase{"ProjectGuardBeforeArguments",
                     ln(R"({"id":1,"method":"tools/call","params":{"name":"get_index","arguments":7}})"),
                     mcpserverrun::toolReply(1, "No project open. Call open_project first.", true)},
        ExchangeCase{"CarriageReturnLineFeed", ping + "\r\n", methodNotFound(9, "ping")},
        ExchangeCase{"PaddedWithBlanks", "  \t" + ping + " \t \n", methodNotFound(9, "ping")},
        ExchangeCase{"NoFinalLineFeed", ping, methodNotFound(9, "ping")},
        ExchangeCase{"GarbageDoesNotStopTheLoop", "garbage\n[1,2]\n" + ping + "\n",
                     methodNotFound(9, "ping")},
        ExchangeCase{"NestingLimitDoesNotStopTheLoop", deeplyNested(5000) + ping + "\n",
                     methodNotFound(9, "ping")},
        ExchangeCase{"UnsupportedResourceUri",
                     ln(R"({"id":2,"method":"resources/read","params":{"uri":"file:///etc/passwd"}})"),
                     invalidParams(2, "Unsupported resource URI (only codb://... is implemented): "
                                      "file:///etc/passwd")}),
    [](const ::testing::TestParamInfo<ExchangeCase>& info) { return std::string(info.param.name); });

TEST(McpSession, InitializeAnswersWithTheServerIdentityAndInstructions)
{
    const QByteArray expected =
        R"({"id":1,"jsonrpc":"2.0","result":{"capabilities":{"resources":{},"tools":{}},"instructions":)"
        R"("CAN Tarnwick MCP server. Send one request at a time and wait for its response before sending the )"
        R"(next one: all tools work on one shared project database, and generate or import_file may run for )"
        R"(minutes.\nCall open_project before any tool that reads or writes project data. Changes stay in )"
        R"(memory until save_project is called.\nThe reference profiles behind list_profiles, )"
        R"(list_profile_indices, get_profile_index and import_profile_indices are read-only internal CANopen )"
        R"(profile databases, not projects: they are addressed by a profile id such as \"402\" or \"454-2\", )"
        R"(they cannot be opened, edited or saved, and single objects are taken out of them with )"
        R"(import_profile_indices.\n","protocolVersion":"2024-11-05","serverInfo":{"name":"trw-mcp",)"
        R"("version":"4.3.2"}}})"
        "\n";
    const QByteArray request =
        ln(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2099-01-01"}})");
    EXPECT_EQ(runServer(request), QString::fromUtf8(expected));
}

TEST(McpSession, ToolsListWithStringIdStartsWithOpenProject)
{
    const QString out = runServer(ln(R"({"id":"abc","method":"tools/list"})"));
    EXPECT_TRUE(out.startsWith(QStringLiteral(
        R"({"id":0,"jsonrpc":"2.0","result":{"tools":[{"description":"Open a .trwp project file",)"
        R"("inputSchema":{"properties":{"path":{"description":"Absolute file path","type":"string"}},)"
        R"("required":["path"],"type":"object"},"name":"open_project"},)")))
        << out.left(400).toStdString();
    EXPECT_TRUE(out.endsWith(QStringLiteral("]}}\n")));
    EXPECT_EQ(out.count(QLatin1Char('\n')), 1);
}

// Lines of ten megabytes, well formed or not, with or without a final line
// feed; the request behind the garbage is still answered.
TEST(McpSession, LinesOfTenMegabytes)
{
    const QByteArray padding(10 * 1024 * 1024, 'x');
    const QByteArray request = R"({"id":11,"method":"ping","params":{"padding":")" + padding + "\"}}\n";
    EXPECT_EQ(runServer(request), QString::fromUtf8(methodNotFound(11, "ping")));
    EXPECT_EQ(runServer(padding + "\n" + ping + "\n"), QString::fromUtf8(methodNotFound(9, "ping")));
    EXPECT_EQ(runServer(padding), QString());
    EXPECT_EQ(runServer(QByteArray(10 * 1024 * 1024, '\xff') + "\n" + ping),
              QString::fromUtf8(methodNotFound(9, "ping")));
}

TEST(McpSession, EveryLineOfOutputIsAJsonRpcReplyInRequestOrder)
{
    const QByteArray input =
        "\n  \n" + ping + "\n" + R"({"method":"notifications/initialized"})" + "\n" + "not json at all\n" +
        R"({"id":1,"method":"initialize"})" + "\n" + R"([{"id":2,"method":"tools/list"}])" + "\n" +
        R"({"id":3,"method":"tools/list"})" + "\n" +
        R"({"id":4,"method":"tools/call","params":{"name":"nope"}})" + "\r\n" +
        R"({"id":5,"method":"tools/call","params":{"name":"list_lines","arguments":{}}})" + "\n" +
        R"({"id":6,"method":"resources/list"})" + "\n" +
        R"({"id":7,"method":"resources/read","params":{"uri":"codb://nothing-here"}})";
    const QStringList lines = runServer(input).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 8) << lines.join(QLatin1Char('\n')).left(2000).toStdString();
    EXPECT_TRUE(lines.last().isEmpty());
    // Each line is a reply (runServer checks that); here their ids show the order.
    const QList<int> expectedIds{9, 1, 3, 4, 5, 6, 7};
    for (int i = 0; i < expectedIds.size(); ++i)
        EXPECT_EQ(QJsonDocument::fromJson(lines.at(i).toUtf8()).object().value("id").toInt(-1),
                  expectedIds.at(i));
}

// The reader must hand over each line as soon as it is complete, not wait for
// more input; an agent sends the next request only after the reply.
TEST(McpSession, AnswersEachRequestBeforeTheNextOneIsSent)
{
    QProcess server;
    server.start(QStringLiteral(TRW_BINARY), {QStringLiteral("--mcp")});
    ASSERT_TRUE(server.waitForStarted());
    for (int id = 1; id <= 3; ++id) {
        // The second request arrives in two pieces, as it may from a pipe.
        server.write(R"({"id":)" + QByteArray::number(id));
        if (id == 2) {
            server.waitForBytesWritten(1000);
            QThread::msleep(200);
        }
        server.write(ln(R"(,"method":"ping"})"));
        QByteArray reply;
        while (!reply.endsWith('\n') && server.waitForReadyRead(10000))
            reply += server.readAllStandardOutput();
        EXPECT_EQ(reply, methodNotFound(id, "ping"));
    }
    server.closeWriteChannel();
    ASSERT_TRUE(server.waitForFinished(10000));
    EXPECT_EQ(server.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(server.exitCode(), 0);
    EXPECT_TRUE(server.readAllStandardOutput().isEmpty());
}

TEST(McpSession, EndOfInputEndsTheServer)
{
    EXPECT_EQ(runServer(QByteArray()), QString());
}

} // namespace
