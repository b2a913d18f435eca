// The reference profile tools and codb resources, driven through the request
// dispatcher with replies compared byte for byte; the -codbpath cases run
// the built program.

#include "common/cleanproject.h"
#include "common/testhelpers.h"
#include "database/objectdatabase.h"
#include "mcp/mcpoutputhandler.h"
#include "mcp/mcprequestdispatcher.h"
#include "mcp/mcpsession.h"
#include "mcpserverrun.h"
#include "pipeline/generatormainhandler.h"
#include "resources/trwresources.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

using mcpserverrun::errorReply;
using mcpserverrun::jsonEscaped;
using mcpserverrun::toolReply;

QByteArray toolCall(const QByteArray& name, const QByteArray& arguments = "{}")
{
    return R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":")" + name +
           R"(","arguments":)" + arguments + "}}";
}

QByteArray readResource(const QByteArray& uri)
{
    return R"({"jsonrpc":"2.0","id":1,"method":"resources/read","params":{"uri":")" + uri + R"("}})";
}

// The text member of a tool reply or the text of the first resource content.
QString replyText(const QString& reply)
{
    const QJsonObject result = QJsonDocument::fromJson(reply.toUtf8()).object().value("result").toObject();
    const QString member = result.contains("contents") ? "contents" : "content";
    return result.value(member).toArray().first().toObject().value("text").toString();
}

class ProfileServer : public ::testing::Test
{
protected:
    void SetUp() override
    {
        trwInitResources();
        session.setReplyStream(&out);
    }

    QString request(const QByteArray& line)
    {
        replies.clear();
        dispatcher.handleLine(line);
        out.flush();
        return replies;
    }

    // Line 0 of a check-clean CANopen project.
    void openProject()
    {
        const QString path = projectDir.filePath("device.trwp");
        ASSERT_TRUE(cleanproject::saveCanopenProject(path));
        ASSERT_TRUE(handler.openProject(path));
        session.setProjectOpen(true);
    }

    QTemporaryDir projectDir;
    MCPOutputHandler output;
    GeneratorMainHandler handler{&output};
    MCPSession session{&handler, &output};
    QString replies;
    QTextStream out{&replies};
    MCPRequestDispatcher dispatcher{session};
};

struct ExchangeCase
{
    const char* name;
    QByteArray request;
    QByteArray reply;
};

// Test names stay readable in the listing of the test runner.
void PrintTo(const ExchangeCase& exchange, std::ostream* os)
{
    *os << exchange.name;
}

class ProfileExchange : public ProfileServer, public ::testing::WithParamInterface<ExchangeCase>
{
};

TEST_P(ProfileExchange, RepliesByteForByte)
{
    EXPECT_EQ(request(GetParam().request), QString::fromUtf8(GetParam().reply));
}

const QByteArray statusword =
    R"({\"categoryCode\":0,\"description\":\"\",\"index\":\"0X6041\",\"name\":\"Statusword\",)"
    R"(\"objectTypeCode\":7,\"subs\":[{\"accessType\":\"ro\",\"currentValue\":\"\",\"dataTypeCode\":6,)"
    R"(\"defaultValue\":\"0\",\"hasDefault\":true,\"name\":\"Statusword\",\"size\":0,\"sub\":0}]})";

QByteArray resourceReply(const QByteArray& uri, const QByteArray& text)
{
    return R"({"id":1,"jsonrpc":"2.0","result":{"contents":[{"mimeType":"application/json","text":")" + text +
           R"(","uri":")" + uri + R"("}]}})" + "\n";
}

INSTANTIATE_TEST_SUITE_P(
    Lookups, ProfileExchange,
    ::testing::Values(
        ExchangeCase{
            "ListProfiles", toolCall("list_profiles"),
            toolReply(1, R"([\"301\",\"302\",\"401\",\"402\",\"402_v3\",\"404\",\"405\",\"406\",\"408\",)"
                         R"(\"410\",\"413\",\"415\",\"416\",\"417\",\"418\",\"419\",\"447\",\"454-2\",)"
                         R"(\"454-4\",\"454-5\",\"454-6\",\"454-7\"])")},
        ExchangeCase{"GetProfileIndex", toolCall("get_profile_index", R"({"profile":"402","index":24641})"),
                     toolReply(1, QByteArray(statusword)
                                      .insert(statusword.indexOf(R"(\"subs\")"), R"(\"profile\":\"402\",)"))},
        ExchangeCase{"GetProfileIndexNotDefined",
                     toolCall("get_profile_index", R"({"profile":"402","index":65537})"),
                     toolReply(1, "Index 0X0001 is not defined in profile 402.", true)},
        ExchangeCase{
            "GetProfileIndexUnknownProfile",
            toolCall("get_profile_index", R"({"profile":"999","index":4096})"),
            toolReply(1, R"(Unknown profile \"999\" - call list_profiles for the available ids.)", true)},
        ExchangeCase{"GetProfileIndexWithoutIndex", toolCall("get_profile_index", R"({"profile":"402"})"),
                     errorReply(1, -32602, "Missing required argument: profile and/or index")},
        ExchangeCase{"ListProfileIndicesWithoutProfile", toolCall("list_profile_indices"),
                     errorReply(1, -32602, "Missing required argument: profile")},
        ExchangeCase{
            "ListProfileIndicesUnknownProfile", toolCall("list_profile_indices", R"({"profile":"402_v4"})"),
            toolReply(1, R"(Unknown profile \"402_v4\" - call list_profiles for the available ids.)", true)},
        ExchangeCase{"ReadHexIndex", readResource("codb://402/0x6041"),
                     resourceReply("codb://402/0x6041", statusword)},
        ExchangeCase{"ReadDecimalIndex", readResource("codb://402/24641"),
                     resourceReply("codb://402/24641", statusword)},
        ExchangeCase{"ReadEmptySubPath", readResource("codb://402/"),
                     errorReply(1, -32602, "Index  not found in codb profile 402")},
        ExchangeCase{"ReadIndexBeyondSixteenBits", readResource("codb://402/0x16041"),
                     errorReply(1, -32602, "Index 0x16041 not found in codb profile 402")},
        ExchangeCase{"ReadIndexNotANumber", readResource("codb://402/Statusword"),
                     errorReply(1, -32602, "Index Statusword not found in codb profile 402")},
        ExchangeCase{"ReadUnknownProfile", readResource("codb://999/0x1000"),
                     errorReply(1, -32602, "Unknown codb resource: codb://999/0x1000")},
        ExchangeCase{
            "ReadSchemeIsCaseSensitive", readResource("CODB://402"),
            errorReply(1, -32602, "Unsupported resource URI (only codb://... is implemented): CODB://402")}),
    [](const ::testing::TestParamInfo<ExchangeCase>& info) { return std::string(info.param.name); });

TEST_F(ProfileServer, WholeProfileResourceListsWhatTheToolLists)
{
    const QString listed = replyText(request(toolCall("list_profile_indices", R"({"profile":"401"})")));
    const QJsonArray objects = QJsonDocument::fromJson(listed.toUtf8()).array();
    ASSERT_FALSE(objects.isEmpty());
    EXPECT_EQ(objects.first().toObject().value("index").toString(), "0X1000");
    EXPECT_EQ(objects.first().toObject().value("indexDec").toInt(), 4096);
    EXPECT_EQ(replyText(request(readResource("codb://401"))), listed);
}

TEST_F(ProfileServer, CacheReusesOnlyTheExactId)
{
    request(toolCall("get_profile_index", R"({"profile":"402","index":24640})"));
    const QSharedPointer<ObjectDataBase> first = session.cachedProfileDb();
    ASSERT_TRUE(first);
    EXPECT_EQ(session.cachedProfileId(), "402");

    request(readResource("codb://402/24640"));
    EXPECT_EQ(session.cachedProfileDb(), first);

    // The same file under another spelling is loaded afresh and replaces the entry.
    const QString reply = request(toolCall("get_profile_index", R"({"profile":"V402","index":24640})"));
    EXPECT_NE(session.cachedProfileDb(), first);
    EXPECT_EQ(session.cachedProfileId(), "V402");
    const QJsonObject record = QJsonDocument::fromJson(replyText(reply).toUtf8()).object();
    EXPECT_EQ(record.value("profile").toString(), "V402");
    EXPECT_EQ(record.value("name").toString(), "Controlword");

    request(toolCall("list_profile_indices", R"({"profile":"301"})"));
    EXPECT_EQ(session.cachedProfileId(), "301");
}

TEST_F(ProfileServer, EmptiedPathRefusesEveryProfileRequest)
{
    session.setCodbPath(QString());
    const QByteArray noPath =
        "No profile path configured - drop -codbpath to use the built-in reference profiles.";
    EXPECT_EQ(request(toolCall("list_profiles")), toolReply(1, noPath, true));
    EXPECT_EQ(request(toolCall("list_profile_indices")), toolReply(1, noPath, true));
    EXPECT_EQ(request(toolCall("get_profile_index")), toolReply(1, noPath, true));
    EXPECT_EQ(request(readResource("codb://402")),
              errorReply(1, -32002,
                         "No codb path configured - drop -codbpath to use the built-in reference profiles"));
    EXPECT_EQ(request(R"({"id":1,"method":"resources/list"})"),
              R"({"id":1,"jsonrpc":"2.0","result":{"resources":[]}})"
              "\n");
    // The open project is tested before the path.
    EXPECT_EQ(request(toolCall("import_profile_indices")),
              toolReply(1, "No project open. Call open_project first.", true));
    openProject();
    EXPECT_EQ(request(toolCall("import_profile_indices")), toolReply(1, noPath, true));
}

struct ImportCase
{
    const char* name;
    QByteArray arguments;
    QString reply; // without the model summary
    bool isError;
};

void PrintTo(const ImportCase& import, std::ostream* os)
{
    *os << import.name;
}

class ProfileImport : public ProfileServer, public ::testing::WithParamInterface<ImportCase>
{
};

TEST_P(ProfileImport, ReportsImportedAndSkippedObjects)
{
    openProject();
    const QString reply = request(toolCall("import_profile_indices", GetParam().arguments));
    const QString summary = session.modelCheckSummary();
    EXPECT_EQ(reply, toolReply(1, jsonEscaped(GetParam().reply + "\n\n" + summary), GetParam().isError));
}

INSTANTIATE_TEST_SUITE_P(
    Imports, ProfileImport,
    ::testing::Values(
        ImportCase{"TwoObjects", R"({"profile":"402","line":0,"indices":[24640,24641]})",
                   "Imported 2 object(s) from profile 402 into line 0: 0X6040, 0X6041.", false},
        ImportCase{"SameIndexTwice", R"({"profile":"402","line":0,"indices":[24640,24640]})",
                   "Imported 1 object(s) from profile 402 into line 0: 0X6040.\nSkipped 1: 0X6040 (already "
                   "exists on line 0).",
                   false},
        ImportCase{"AllSkipped", R"({"profile":"402","line":0,"indices":[4096,1]})",
                   "Imported 0 object(s) from profile 402 into line 0.\nSkipped 2: 0X1000 (already exists on "
                   "line 0), 0X0001 (not defined in profile 402).",
                   true},
        ImportCase{"NotInProfileAndLineCutToEightBits",
                   R"({"profile":"V402","line":256,"indices":[1,24672]})",
                   "Imported 1 object(s) from profile V402 into line 0: 0X6060.\nSkipped 1: 0X0001 (not "
                   "defined in profile V402).",
                   false}),
    [](const ::testing::TestParamInfo<ImportCase>& info) { return std::string(info.param.name); });

TEST_F(ProfileServer, ImportedObjectKeepsTheProfileDefinition)
{
    openProject();
    request(toolCall("import_profile_indices", R"({"profile":"301","line":0,"indices":[5120]})"));
    const QSharedPointer<ObjectDataBase> profile = session.cachedProfileDb();
    const QSharedPointer<ObjectDataBase> project = handler.database();
    ASSERT_TRUE(project->indexExists(0, 0x1400));
    EXPECT_EQ(project->getSubIndexList(0, 0x1400), profile->getSubIndexList(0, 0x1400));
    for (quint8 sub : profile->getSubIndexList(0, 0x1400)) {
        SUBINDEX_DATA_T expected;
        SUBINDEX_DATA_T copied;
        profile->getSubIndex(0, 0x1400, sub, expected);
        project->getSubIndex(0, 0x1400, sub, copied);
        EXPECT_EQ(copied.name, expected.name) << int(sub);
        EXPECT_EQ(copied.datatype, expected.datatype) << int(sub);
        EXPECT_EQ(copied.accesstype, expected.accesstype) << int(sub);
        EXPECT_EQ(copied.defaultvalue, expected.defaultvalue) << int(sub);
    }
}

// Here the request holds only the arguments of import_profile_indices.
class RefusedImport : public ProfileServer, public ::testing::WithParamInterface<ExchangeCase>
{
};

TEST_P(RefusedImport, ChangesNothing)
{
    openProject();
    const QList<quint16> before = handler.database()->getIndexList(0, 0, quint32(-1));
    EXPECT_EQ(request(toolCall("import_profile_indices", GetParam().request)), GetParam().reply);
    EXPECT_EQ(handler.database()->getIndexList(0, 0, quint32(-1)), before);
}

INSTANTIATE_TEST_SUITE_P(
    Guards, RefusedImport,
    ::testing::Values(
        ExchangeCase{"MissingIndices", R"({"profile":"402","line":0})",
                     errorReply(1, -32602, "Missing required argument: profile, line and/or indices")},
        ExchangeCase{"EmptyIndices", R"({"profile":"402","line":0,"indices":[]})",
                     errorReply(1, -32602, "Argument indices must be a non-empty array of index numbers")},
        ExchangeCase{"IndicesNotAnArray", R"({"profile":"402","line":0,"indices":24640})",
                     errorReply(1, -32602, "Argument indices must be a non-empty array of index numbers")},
        ExchangeCase{"LineThatDoesNotExist", R"({"profile":"402","line":7,"indices":[24640]})",
                     toolReply(1,
                               "Line 7 is not a CANopen line (lineTypeCode=0) - this tool only applies "
                               "to CANopen lines.",
                               true)},
        ExchangeCase{
            "UnknownProfile", R"({"profile":"4O2","line":0,"indices":[24640]})",
            toolReply(1, R"(Unknown profile \"4O2\" - call list_profiles for the available ids.)", true)}),
    [](const ::testing::TestParamInfo<ExchangeCase>& info) { return std::string(info.param.name); });

// A folder given with -codbpath, as the program sees it.
QString runServer(const QString& codbPath, const QByteArray& input)
{
    const mcpserverrun::ServerRun run = mcpserverrun::run(input, {QStringLiteral("-codbpath"), codbPath});
    EXPECT_TRUE(mcpserverrun::endedCleanly(run));
    return QString::fromUtf8(run.out);
}

using testhelpers::writeFile;

TEST(ProfileFolder, FolderWithoutProfiles)
{
    QTemporaryDir folder;
    writeFile(folder.filePath("v402.txt"), "# not a profile\n");
    const QByteArray input = toolCall("list_profiles") + "\n" + R"({"id":1,"method":"resources/list"})" +
                             "\n" + toolCall("get_profile_index", R"({"profile":"402","index":24640})") +
                             "\n";
    EXPECT_EQ(
        runServer(folder.path(), input),
        toolReply(1, "[]") + R"({"id":1,"jsonrpc":"2.0","result":{"resources":[]}})" + "\n" +
            toolReply(1, R"(Unknown profile \"402\" - call list_profiles for the available ids.)", true));
}

TEST(ProfileFolder, OwnProfilesWithTheirDescriptions)
{
    QTemporaryDir folder;
    // Pragmas, rules of dashes and empty comments are passed over, also behind objects, and a folder is no
    // profile.
    ASSERT_TRUE(QDir(folder.path()).mkdir("folder.codb"));
    writeFile(
        folder.filePath("V900.codb"),
        "#pragma message \"x\"\n#----------\n# - -\n#  \n"
        "6040::Controlword:mandatory::VAR:m:UNSIGNED16:m:rw::::::::::::::y:m\r\n#   -- My drive --  \n");
    writeFile(folder.filePath("plain.codb"), "6041::Statusword:mandatory::VAR:m:UNSIGNED16:m:ro\n");
    // The search gives up after fifteen lines.
    writeFile(folder.filePath("vlate.codb"),
              QByteArray("1000::Device type:mandatory::VAR:m:UNSIGNED32\n").repeated(15) + "# too late\n");
    const QByteArray input = toolCall("list_profiles") + "\n" + R"({"id":1,"method":"resources/list"})" +
                             "\n" + readResource("codb://900/0x6040") + "\n";
    const QByteArray controlword =
        R"({\"categoryCode\":0,\"description\":\"\",\"index\":\"0X6040\",\"name\":\"Controlword\",)"
        R"(\"objectTypeCode\":7,\"subs\":[{\"accessType\":\"rw\",\"currentValue\":\"\",\"dataTypeCode\":6,)"
        R"(\"defaultValue\":\"\",\"hasDefault\":true,\"name\":\"Controlword\",\"size\":0,\"sub\":0}]})";
    EXPECT_EQ(
        runServer(folder.path(), input),
        toolReply(1, R"([\"900\",\"plain\",\"late\"])") +
            R"({"id":1,"jsonrpc":"2.0","result":{"resources":[)"
            R"({"description":"-- My drive --","mimeType":"application/json","name":"DS-900","uri":"codb://900"},)"
            R"({"mimeType":"application/json","name":"DS-plain","uri":"codb://plain"},)"
            R"({"mimeType":"application/json","name":"DS-late","uri":"codb://late"}]}})"
            "\n" +
            resourceReply("codb://900/0x6040", controlword));
}

// Anything but the exact option with a value keeps the built-in profiles.
TEST(ProfileFolder, OnlyAnExactCodbPathWithAValueReplacesTheBuiltInProfiles)
{
    QTemporaryDir folder;
    writeFile(folder.filePath("v402.codb"), "# Drives\n");
    const QByteArray request = R"({"id":1,"method":"resources/list"})" + QByteArray("\n");
    const auto listing = [&request](const QStringList& arguments) {
        const mcpserverrun::ServerRun run = mcpserverrun::run(request, arguments);
        EXPECT_TRUE(mcpserverrun::endedCleanly(run));
        return run.out;
    };
    const QByteArray builtIn = listing({});
    for (const QStringList& arguments :
         {QStringList{"-codbpath"}, QStringList{"-codbpath", ""}, QStringList{"-CODBPATH", folder.path()},
          QStringList{"--codbpath", folder.path()}})
        EXPECT_EQ(listing(arguments), builtIn) << arguments.join(' ').toStdString();
    EXPECT_NE(listing({"-codbpath", folder.path()}), builtIn);
}

} // namespace
