#include "common/testhelpers.h"
#include "dbc/candbapi.h"
#include "dbc/candbdbc.h"

#include <gtest/gtest.h>

namespace {

struct Report
{
    CANdbFileIo::Severity severity;
    int line;
    QByteArray text;
};

// A reader whose reports are collected instead of printed.
struct CollectingReader
{
    CANdbDBC dbc;
    CANdbDatabase database;
    QList<Report> reports;

    CollectingReader()
    {
        dbc.setListener(
            [this](CANdbFileIo::Severity severity, int line, const QString&, const QByteArray& text) {
                reports.append({severity, line, text});
            });
    }

    int read(const QByteArray& text) { return dbc.readText(database, text); }

    bool reported(CANdbFileIo::Severity severity, int line, const QByteArray& text) const
    {
        for (const Report& report : reports) {
            if (report.severity == severity && report.line == line && report.text.startsWith(text))
                return true;
        }
        return false;
    }

    QByteArray allReports() const
    {
        QByteArray all;
        for (const Report& report : reports)
            all += QByteArray::number(report.line) + ": " + report.text + '\n';
        return all;
    }
};

int signalCount(const CANdbDatabase& database)
{
    int count = 0;
    for (const auto& message : database.messages)
        count += int(message->signalList.size());
    return count;
}

QByteArray corpusFile(const char* name)
{
    return testhelpers::readFile(QStringLiteral(TRW_CORPUS_DIR "/dbc/") + QLatin1String(name));
}

const QByteArray oneMessage = "BO_ 100 Engine: 8 Ecu\n"
                              " SG_ Speed : 0|16@1+ (0.125,0) [0|8031.875] \"rpm\"  Dash,Logger\n";

} // namespace

// Counted by hand from the BO_ and SG_ lines of each file.
TEST(DbcReader, ReadsEveryCorpusFileWithItsMessagesAndSignalsAndWritesItBackUnchanged)
{
    TRW_SKIP_WITHOUT_CORPUS();
    struct Row
    {
        const char* file;
        int messages;
        int signalCount;
        int nodes;
    };
    const Row rows[] = {
        {"abs.dbc", 18, 89, 2},       {"attributes.dbc", 2, 2, 1}, {"cp1252.dbc", 0, 0, 1},
        {"fd_test.dbc", 4, 4, 0},     {"j1939.dbc", 2, 2, 2},      {"multiplex_2.dbc", 4, 19, 0},
        {"sig_groups.dbc", 4, 10, 1}, {"val_table.dbc", 1, 1, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.file);
        const QByteArray text = corpusFile(row.file);
        ASSERT_FALSE(text.isEmpty());
        CollectingReader first;
        EXPECT_EQ(first.read(text), CANdbFileIo::Done) << first.allReports().constData();
        EXPECT_EQ(int(first.database.messages.size()), row.messages);
        EXPECT_EQ(signalCount(first.database), row.signalCount);
        EXPECT_EQ(int(first.database.nodes.size()), row.nodes);

        CollectingReader second;
        EXPECT_EQ(second.read(CANdbDBC::writeText(first.database)), CANdbFileIo::Done)
            << second.allReports().constData();
        EXPECT_TRUE(second.database == first.database);
    }
}

TEST(DbcReader, KeepsWhatTheCorpusFilesSayInDetail)
{
    TRW_SKIP_WITHOUT_CORPUS();
    CollectingReader j1939;
    j1939.read(corpusFile("j1939.dbc"));
    ASSERT_EQ(j1939.database.messages.size(), 2u);
    const CANdbMessage& message = *j1939.database.messages.front();
    EXPECT_TRUE(message.extended);
    EXPECT_EQ(message.id, 2503213569u & 0x7FFFFFFFu);
    EXPECT_EQ(message.sender, "Node1");
    EXPECT_EQ(j1939.database.protocol, CANdbProtocol::J1939);
    EXPECT_EQ(message.idMask, 0x81FF0000u) << "PDU format 0x34 is PDU1";
    EXPECT_EQ(message.signalList.front()->receivers, QList<QByteArray>{"Node2"});

    CollectingReader cp1252;
    cp1252.read(corpusFile("cp1252.dbc"));
    // Every printable byte of Windows-1252 but the quote, kept byte for byte.
    ASSERT_EQ(cp1252.database.nodes.size(), 1u);
    EXPECT_EQ(cp1252.database.nodes.front()->comment.size(), 218);
    EXPECT_TRUE(cp1252.reported(CANdbFileIo::Warning, 41, "Text is not UTF-8"));

    CollectingReader multiplexed;
    multiplexed.read(corpusFile("multiplex_2.dbc"));
    const CANdbMessage* extended = multiplexed.database.findMessage(2348875518u);
    ASSERT_TRUE(extended);
    const CANdbSignal* both = extended->findSignal("S1");
    EXPECT_TRUE(both->multiplexor);
    EXPECT_EQ(both->multiplexValue, 0);
    const CANdbSignal* floating = multiplexed.database.findMessage(2349072126u)->findSignal("S9");
    EXPECT_EQ(floating->valueType, CANdbValueType::Float);
}

// Damaged input: each case is reported with its line and the rest is read.
TEST(DbcReader, ReportsDamagedInputWithItsLineAndReadsOn)
{
    struct Row
    {
        const char* name;
        QByteArray text;
        CANdbFileIo::Severity severity;
        int line;
        QByteArray report;
        int messages;
    };
    const Row rows[] = {
        {"truncated signal", oneMessage + "BO_ 101 Cut: 8 Ecu\n SG_ Cut : 0|8@1+ (1,", CANdbFileIo::Error, 4,
         "Offset expected", 1},
        {"unknown keyword", "FROBNICATE 1 2;\n" + oneMessage, CANdbFileIo::Warning, 1,
         "Unknown keyword 'FROBNICATE' skipped", 1},
        {"unterminated string", oneMessage + "CM_ BO_ 100 \"no end;\n", CANdbFileIo::Error, 3,
         "Unexpected eof in string", 1},
        {"unterminated comment", oneMessage + "/* no end\n\n", CANdbFileIo::Error, 3,
         "Error: Unexpected eof in comment", 1},
        {"number too large", "BO_ 99999999999999999999 Big: 8 Ecu\n" + oneMessage, CANdbFileIo::Warning, 1,
         "Number out of range", 2},
        {"float too large", oneMessage + "BO_ 7 Huge: 8 Ecu\n SG_ H : 0|8@1+ (1e999,0) [0|0] \"\" X\n",
         CANdbFileIo::Warning, 4, "Number out of range: 1e999", 2},
        {"signal outside any frame",
         oneMessage + "BO_ 8 Wide: 8 Ecu\n SG_ W : 20000|0@1+ (1,0) [0|0] \"\" X\n", CANdbFileIo::Warning, 4,
         "Signal W at bit 20000 with 0 bits out of range", 2},
        {"comment for a missing message", "CM_ BO_ 99 \"x\";\n" + oneMessage, CANdbFileIo::Error, 1,
         "No message found for comment line", 1},
        {"attribute definition of an unknown type", "BA_DEF_ BO_ \"Quad\" QUAD 0 1;\n" + oneMessage,
         CANdbFileIo::Error, 1, "Attribute type expected", 1},
        {"value of an unknown attribute", oneMessage + "BA_ \"Nope\" BO_ 100 1;\n", CANdbFileIo::Error, 3,
         "Attribute 'Nope' not found", 1},
        {"signal type of a missing message", "SIG_VALTYPE_ 5 S : 1;\n" + oneMessage, CANdbFileIo::Error, 1,
         "Message (id=5) found for type info", 1},
        {"quote in place of a name", "BO_ 5 \"Quoted\": 8 Ecu\n" + oneMessage, CANdbFileIo::Error, 1,
         "Message name missing or invalid", 1},
        {"Windows-1252 unit", oneMessage + "BO_ 9 Deg: 8 Ecu\n SG_ A : 0|8@1+ (1,0) [0|0] \"\xb0/s\" X\n",
         CANdbFileIo::Warning, 4, "Text is not UTF-8", 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CollectingReader reader;
        reader.read(row.text);
        EXPECT_TRUE(reader.reported(row.severity, row.line, row.report)) << reader.allReports().constData();
        EXPECT_EQ(int(reader.database.messages.size()), row.messages);
        EXPECT_EQ(reader.dbc.hasError(), row.severity == CANdbFileIo::Error);
    }
}

TEST(DbcReader, SurvivesEveryCutOfARealFile)
{
    TRW_SKIP_WITHOUT_CORPUS();
    const QByteArray text = corpusFile("abs.dbc");
    for (qsizetype length = 0; length < text.size(); length += 37) {
        CollectingReader reader;
        reader.read(text.left(length));
        EXPECT_LE(reader.database.messages.size(), 18u);
    }
}

TEST(DbcWriter, WritesBigEndianStartsSendersReceiversAndTextsAsDbcToolsExpect)
{
    CANdbDatabase database;
    CANdbMessage* message = nullptr;
    ASSERT_EQ(canDbAddMsg(&database, &message), CANdbOk);
    canDbSetMsgName(message, "Status");
    canDbSetMsgId(message, 0x123, false);
    canDbSetMsgDlc(message, 8);
    canDbSetMsgComment(message, "two\nlines \"quoted\"");
    for (const auto& [name, start, length] : {std::tuple("Byte", 0, 8), std::tuple("Word", 8, 16)}) {
        CANdbSignal* signal = nullptr;
        canDbAddSignal(message, &signal);
        canDbSetSignalName(signal, name);
        canDbSetSignalValueSize(signal, start, length);
        signal->bigEndian = true;
    }
    const QByteArray text = CANdbDBC::writeText(database);
    EXPECT_TRUE(text.contains("BO_ 291 Status: 8 Vector__XXX\n"
                              " SG_ Byte : 7|8@0- (1,0) [0|0] \"\" Vector__XXX\n"
                              " SG_ Word : 7|16@0- (1,0) [0|0] \"\" Vector__XXX\n\n"))
        << text.constData();
    EXPECT_TRUE(text.contains("CM_ BO_ 291 \"two\nlines \\\"quoted\\\"\";\n"));

    CollectingReader reader;
    EXPECT_EQ(reader.read(text), CANdbFileIo::Done);
    EXPECT_TRUE(reader.database == database);
}

TEST(DbcApi, RefusesWhatADbcFileCannotHold)
{
    CANdbDatabase database;
    CANdbMessage* message = nullptr;
    CANdbSignal* signal = nullptr;
    CANdbAttributeDefinition* definition = nullptr;
    canDbAddMsg(&database, &message);
    canDbAddSignal(message, &signal);
    canDbAddAttributeDefinition(&database, &definition);
    canDbSetAttributeDefinitionType(definition, CANdbAttributeType::Enum);
    canDbSetAttributeDefinitionName(definition, "Kind");
    canDbSetAttributeDefinitionOwner(definition, CANdbOwner::Message);
    EXPECT_EQ(canDbAddAttributeDefinitionEnum(definition, 2, "two"), CANdbOk);
    EXPECT_EQ(definition->enumeration, (QList<QByteArray>{"reserved", "reserved", "two"}));

    CANdbAttributeValue* value = nullptr;
    EXPECT_EQ(canDbSetMsgId(message, 0x800, false), CANdbOutOfRange);
    EXPECT_EQ(canDbSetMsgDlc(message, 1786), CANdbOutOfRange);
    EXPECT_EQ(canDbSetSignalValueSize(signal, 14280 - 4, 8), CANdbOutOfRange);
    EXPECT_EQ(canDbAddMsgAttribute(&database, message, "Missing", &value), CANdbNotFound);
    EXPECT_EQ(canDbAddSignalAttribute(&database, signal, "Kind", &value), CANdbWrongKind);
    ASSERT_EQ(canDbAddMsgAttribute(&database, message, "Kind", &value), CANdbOk);
    EXPECT_EQ(canDbSetAttributeValueEnumeration(value, 3), CANdbOutOfRange);
    EXPECT_EQ(canDbSetAttributeValueInt(value, 1), CANdbWrongKind);
}
