#include "dbc/candbdbc.h"

#include "dbc/candblexer.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

const QByteArray noNode = QByteArrayLiteral("Vector__XXX");

// Statements of the format that this reader passes over on purpose; any
// other word at the start of a line is worth a warning.
const QList<QByteArray> knownOtherKeywords = {
    "VERSION",         "BS_",        "VAL_TABLE_",     "SIG_GROUP_",    "SG_MUL_VAL_",      "BO_TX_BU_",
    "EV_DATA_",        "SGTYPE_",    "SGTYPE_VAL_",    "SIG_TYPE_REF_", "SIGTYPE_VALTYPE_", "CAT_DEF_",
    "FILTER",          "NS_DESC_",   "BA_DEF_SGTYPE_", "BA_SGTYPE_",    "BA_DEF_REL_",      "BA_REL_",
    "BA_DEF_DEF_REL_", "BU_SG_REL_", "BU_EV_REL_",     "BU_BO_REL_",
};

qint32 clampToInt32(qint64 value)
{
    return qint32(
        std::clamp<qint64>(value, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
}

qint64 toInteger(double value)
{
    if (!(value > -9.2e18 && value < 9.2e18))
        return value > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
    return qint64(std::llround(value));
}

bool isWhole(double value)
{
    return std::floor(value) == value;
}

const CANdbAttributeValue* attributeNamed(const CANdbAttributeList& list, const char* name)
{
    for (const auto& value : list) {
        if (value->definition && value->definition->name == name)
            return value.get();
    }
    return nullptr;
}

} // namespace

int CANdbDBC::read(CANdbDatabase& database, const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return CannotOpen;
    startRun(fileName);
    return readText(database, file.readAll());
}

int CANdbDBC::readText(CANdbDatabase& database, const QByteArray& text)
{
    CANdbLexer lexer(text, *this);
    m_lexer = &lexer;
    m_database = &database;
    for (;;) {
        const int token = lexer.next();
        if (token == CANdbLexer::EndOfFile)
            break;
        switch (token) {
        case CANdbLexer::NodesKeyword:
            readNodes();
            break;
        case CANdbLexer::NewSymbolsKeyword: {
            int skipped = lexer.next();
            while (skipped != CANdbLexer::NodesKeyword && skipped != CANdbLexer::EndOfFile)
                skipped = lexer.next();
            lexer.pushBack();
            break;
        }
        case CANdbLexer::MessageKeyword:
            m_lineBound = true;
            if (!readMessage())
                skipLine();
            m_lineBound = false;
            break;
        case CANdbLexer::VariableKeyword:
            if (!readVariable())
                skipStatement();
            break;
        case CANdbLexer::AttributeDefinitionKeyword:
            if (!readAttributeDefinition())
                skipStatement();
            break;
        case CANdbLexer::AttributeDefaultKeyword:
            if (!readAttributeDefault())
                skipStatement();
            break;
        case CANdbLexer::AttributeKeyword:
            if (!readAttributeValue())
                skipStatement();
            break;
        case CANdbLexer::CommentKeyword:
            if (!readComment())
                skipStatement();
            break;
        case CANdbLexer::CategoryKeyword:
            skipStatement();
            break;
        case CANdbLexer::VariableDataKeyword:
            if (!readVariableData())
                skipStatement();
            break;
        case CANdbLexer::SignalValueTypeKeyword:
            if (!readSignalValueType())
                skipStatement();
            break;
        case CANdbLexer::ValueKeyword:
            if (!readValueTable())
                skipStatement();
            break;
        case CANdbLexer::Identifier:
            if (lexer.atLineStart() && !knownOtherKeywords.contains(lexer.text()))
                reportWarning("Unknown keyword '%s' skipped", lexer.text().constData());
            break;
        default:
            break;
        }
    }
    finishDatabase();
    m_lexer = nullptr;
    m_database = nullptr;
    return hasError() ? HadErrors : Done;
}

bool CANdbDBC::fail(const char* text)
{
    reportError("%s", text);
    return false;
}

// Recovery: the rest of a statement up to its ";".
void CANdbDBC::skipStatement()
{
    int token = m_lexer->token();
    while (token != ';' && token != CANdbLexer::EndOfFile)
        token = m_lexer->next();
}

// Messages and signals end with their line, not with ";".
void CANdbDBC::skipLine()
{
    int token = m_lexer->token();
    while (token != CANdbLexer::EndOfLine && token != CANdbLexer::EndOfFile)
        token = m_lexer->next();
}

int CANdbDBC::nextToken()
{
    return m_lineBound ? m_lexer->next() : m_lexer->nextInStatement();
}

bool CANdbDBC::expect(int token)
{
    return nextToken() == token;
}

bool CANdbDBC::readInteger(qint64& value)
{
    if (nextToken() != CANdbLexer::Integer)
        return false;
    value = m_lexer->integer();
    return true;
}

bool CANdbDBC::readNumber(double& value)
{
    const int token = nextToken();
    if (token != CANdbLexer::Integer && token != CANdbLexer::Float)
        return false;
    value = m_lexer->number();
    return true;
}

bool CANdbDBC::readString(QByteArray& value)
{
    if (nextToken() != CANdbLexer::String)
        return false;
    value = m_lexer->text();
    return true;
}

bool CANdbDBC::readIdentifier(QByteArray& value)
{
    if (nextToken() != CANdbLexer::Identifier)
        return false;
    value = m_lexer->text();
    return true;
}

void CANdbDBC::readNodes()
{
    if (m_lexer->nextInStatement() != ':') {
        m_lexer->pushBack();
        return;
    }
    while (m_lexer->next() == CANdbLexer::Identifier) {
        const QByteArray& name = m_lexer->text();
        if (name == noNode || m_database->findNode(name))
            continue;
        auto node = std::make_unique<CANdbNode>();
        node->name = name;
        m_database->nodes.push_back(std::move(node));
    }
    m_lexer->pushBack();
}

bool CANdbDBC::readMessage()
{
    auto message = std::make_unique<CANdbMessage>();
    qint64 id = 0;
    if (!readInteger(id))
        return fail("CAN id expected");
    if (id < 0 || id > std::numeric_limits<quint32>::max())
        reportWarning("CAN id %lld out of range", static_cast<long long>(id));
    message->extended = (id & 0x80000000) != 0;
    message->id = quint32(id) & 0x7FFFFFFFu;
    if (message->id > (message->extended ? 0x1FFFFFFFu : 0x7FFu))
        reportWarning("CAN id %u too large for its frame format", message->id);
    if (!readIdentifier(message->name))
        return fail("Message name missing or invalid");
    if (!expect(':'))
        return fail("':' expected after message name (invalid character in name?)");
    qint64 dlc = 0;
    if (!readInteger(dlc))
        return fail("DLC expected");
    if (dlc < 0 || dlc > CANdbLargestDlc)
        reportWarning("DLC %lld out of range", static_cast<long long>(dlc));
    message->dlc = clampToInt32(dlc);
    if (!readIdentifier(message->sender))
        return fail("Sender name expected");
    if (message->sender == noNode)
        message->sender.clear();

    while (m_lexer->nextInStatement() == CANdbLexer::SignalKeyword) {
        if (!readSignal(*message))
            return false;
    }
    m_lexer->pushBack();
    m_database->messages.push_back(std::move(message));
    return true;
}

bool CANdbDBC::readSignal(CANdbMessage& message)
{
    auto signal = std::make_unique<CANdbSignal>();
    if (!readIdentifier(signal->name))
        return fail("Signal name missing or invalid");
    int token = nextToken();
    if (token == CANdbLexer::Identifier) {
        // "M" selects, "m<n>" is selected by value n, "m<n>M" does both.
        QByteArray mark = m_lexer->text();
        if (mark.endsWith('M')) {
            signal->multiplexor = true;
            mark.chop(1);
        }
        if (mark.startsWith('m')) {
            bool ok = false;
            signal->multiplexValue = mark.mid(1).toInt(&ok);
            if (!ok)
                return fail("':' expected after signal name (invalid character in name?)");
        } else if (!mark.isEmpty()) {
            return fail("':' expected after signal name (invalid character in name?)");
        }
        token = nextToken();
    }
    if (token != ':')
        return fail("':' expected after signal name (invalid character in name?)");
    qint64 start = 0;
    if (!readInteger(start))
        return fail("Signal bit position expected");
    if (!expect('|'))
        return fail("'|' expected after signal name");
    qint64 length = 0;
    if (!readInteger(length))
        return fail("Signal length expected");
    if (start < 0 || start >= CANdbLargestBitCount || length < 1 || length > CANdbLargestBitCount)
        reportWarning("Signal %s at bit %lld with %lld bits out of range", signal->name.constData(),
                      static_cast<long long>(start), static_cast<long long>(length));
    signal->length = std::clamp<qint32>(clampToInt32(length), 0, CANdbLargestBitCount);
    start = std::clamp<qint64>(start, 0, CANdbLargestBitCount);
    if (!expect('@'))
        return fail("'@' expected after signal name");
    qint64 order = 0;
    if (!readInteger(order))
        return fail("Signal number expected");
    signal->bigEndian = order == 0;
    signal->startBit = signal->bigEndian ? storedStartBit(qint32(start), signal->length) : qint32(start);
    token = nextToken();
    if (token != '+' && token != '-')
        return fail("'+' or '-' expected");
    signal->valueType = token == '+' ? CANdbValueType::Unsigned : CANdbValueType::Signed;
    if (!expect('('))
        return fail("'(' expected after signal name");
    if (!readNumber(signal->factor))
        return fail("Factor expected");
    if (!expect(','))
        return fail("',' expected after signal name");
    if (!readNumber(signal->offset))
        return fail("Offset expected");
    if (!expect(')'))
        return fail("')' expected after signal name");
    if (!expect('['))
        return fail("'[' expected after signal name");
    if (!readNumber(signal->minimum))
        return fail("Min value expected");
    if (!expect('|'))
        return fail("'|' expected after signal name");
    if (!readNumber(signal->maximum))
        return fail("Max value expected");
    if (!expect(']'))
        return fail("']' expected after signal name");
    if (!readString(signal->unit))
        return fail("Signal unit expected");
    readReceivers(signal->receivers);
    message.signalList.push_back(std::move(signal));
    return true;
}

// Names up to the end of the line; commas between them are optional.
bool CANdbDBC::readReceivers(QList<QByteArray>& receivers)
{
    for (;;) {
        const int token = m_lexer->next();
        if (token == ',')
            continue;
        if (token != CANdbLexer::Identifier) {
            m_lexer->pushBack();
            return true;
        }
        if (m_lexer->text() != noNode)
            receivers.append(m_lexer->text());
    }
}

bool CANdbDBC::readVariable()
{
    auto variable = std::make_unique<CANdbEnvironmentVariable>();
    if (!readIdentifier(variable->name))
        return fail("Variable name expected");
    if (!expect(':'))
        return fail("':' expected after variable name");
    qint64 type = 0;
    if (!readInteger(type))
        return fail("variable type expected");
    if (!expect('['))
        return fail("'[' expected after variable type");
    if (!readNumber(variable->minimum) || !expect('|') || !readNumber(variable->maximum))
        return fail("'|' expected in variable min/max");
    if (!expect(']'))
        return fail("']' expected after variable min/max");
    if (!readString(variable->unit))
        return fail("Variable unit expected");
    if (!readNumber(variable->startValue))
        return fail("Start value expected");
    if (!readInteger(variable->numericId))
        return fail("Num id expected");
    QByteArray access;
    if (!readIdentifier(access))
        return fail("dummy place holder expected");
    // DUMMY_NODE_VECTOR0..3 carry the access of an integer or float;
    // DUMMY_NODE_VECTOR8000..8003 that of a string.
    const QByteArray prefix = QByteArrayLiteral("DUMMY_NODE_VECTOR");
    const QByteArray code = access.startsWith(prefix) ? access.mid(prefix.size()) : QByteArray();
    if (code.size() == 1 && code[0] >= '0' && code[0] <= '3') {
        if (type != 0 && type != 1)
            return fail("Unknown environment variable type");
        variable->type = CANdbEnvVarType(type);
        variable->access = code[0] - '0';
    } else if (code.size() == 4 && code.startsWith("800") && code[3] >= '0' && code[3] <= '3') {
        if (type != 0)
            return fail("Inconsistent environment variable type.");
        variable->type = CANdbEnvVarType::String;
        variable->access = code[3] - '0' + 1;
    } else {
        return fail("Unknown environment variable type");
    }
    readReceivers(variable->nodes);
    if (!expect(';'))
        m_lexer->pushBack();
    m_database->variables.push_back(std::move(variable));
    return true;
}

bool CANdbDBC::readVariableData()
{
    QByteArray name;
    if (!readIdentifier(name))
        return fail("variable name expected for variable data");
    CANdbEnvironmentVariable* variable = m_database->findVariable(name);
    if (!variable)
        return fail("No variable found for data line");
    qint64 size = 0;
    if (!expect(':') || !readInteger(size))
        return fail("Value expected");
    if (!expect(';'))
        return fail("';' expected after variable data");
    variable->dataSize = size;
    variable->hasDataSize = true;
    return true;
}

bool CANdbDBC::readAttributeDefinition()
{
    auto definition = std::make_unique<CANdbAttributeDefinition>();
    int token = m_lexer->nextInStatement();
    switch (token) {
    case CANdbLexer::NodesKeyword:
        definition->owner = CANdbOwner::Node;
        break;
    case CANdbLexer::MessageKeyword:
        definition->owner = CANdbOwner::Message;
        break;
    case CANdbLexer::SignalKeyword:
        definition->owner = CANdbOwner::Signal;
        break;
    case CANdbLexer::VariableKeyword:
        definition->owner = CANdbOwner::EnvironmentVariable;
        break;
    default:
        m_lexer->pushBack();
        break;
    }
    if (!readString(definition->name))
        return fail("Attribute name expected");
    QByteArray type;
    if (!readIdentifier(type))
        return fail("Attribute type expected");
    if (type == "INT" || type == "HEX") {
        definition->type = type == "INT" ? CANdbAttributeType::Int : CANdbAttributeType::Hex;
        double minimum = 0;
        double maximum = 0;
        if (!readNumber(minimum))
            return fail("Attribute min value expected");
        if (!readNumber(maximum))
            return fail("Attribute max value expected");
        definition->intMinimum = toInteger(minimum);
        definition->intMaximum = toInteger(maximum);
        token = m_lexer->nextInStatement();
    } else if (type == "FLOAT") {
        definition->type = CANdbAttributeType::Float;
        if (!readNumber(definition->floatMinimum))
            return fail("Attributes min value expected");
        if (!readNumber(definition->floatMaximum))
            return fail("Attributes max value expected");
        token = m_lexer->nextInStatement();
    } else if (type == "ENUM") {
        definition->type = CANdbAttributeType::Enum;
        token = m_lexer->nextInStatement();
        while (token == CANdbLexer::String || token == ',') {
            if (token == CANdbLexer::String)
                definition->enumeration.append(m_lexer->text());
            token = m_lexer->nextInStatement();
        }
    } else if (type == "STRING") {
        definition->type = CANdbAttributeType::String;
        token = m_lexer->nextInStatement();
        if (token != ';')
            return fail("';' expected (String Attribute)");
    } else {
        return fail("Attribute type expected");
    }
    m_database->attributeDefinitions.push_back(std::move(definition));
    skipStatement();
    return true;
}

// One value as the definition's type wants it. An ENUM value may be given as
// its index or as its text.
bool CANdbDBC::readAttributeData(const CANdbAttributeDefinition& definition, qint64& intValue,
                                 double& floatValue, QByteArray& stringValue)
{
    switch (definition.type) {
    case CANdbAttributeType::Int:
    case CANdbAttributeType::Hex: {
        double value = 0;
        if (!readNumber(value))
            return fail("Integer value expected");
        intValue = toInteger(value);
        return true;
    }
    case CANdbAttributeType::Float:
        if (!readNumber(floatValue))
            return fail("Float value expected");
        return true;
    case CANdbAttributeType::String:
        if (!readString(stringValue))
            return fail("String expected");
        return true;
    case CANdbAttributeType::Enum: {
        const int token = m_lexer->nextInStatement();
        if (token == CANdbLexer::Integer) {
            intValue = m_lexer->integer();
            return true;
        }
        if (token != CANdbLexer::String)
            return fail("String expected");
        intValue = definition.enumeration.indexOf(m_lexer->text());
        if (intValue < 0)
            stringValue = m_lexer->text();
        return true;
    }
    }
    return false;
}

bool CANdbDBC::readAttributeDefault()
{
    QByteArray name;
    if (!readString(name))
        return fail("Attribute name expected");
    CANdbAttributeDefinition* definition = m_database->findAttributeDefinition(name);
    if (!definition) {
        reportError("Attribute '%s' not found\n", name.constData());
        return false;
    }
    if (!readAttributeData(*definition, definition->defaultInt, definition->defaultFloat,
                           definition->defaultString))
        return false;
    if (!expect(';'))
        return fail("';' expected (attribute default value)");
    return true;
}

bool CANdbDBC::readAttributeValue()
{
    QByteArray name;
    if (!readString(name))
        return fail("Attribute name expected");
    const CANdbAttributeDefinition* definition = m_database->findAttributeDefinition(name);
    if (!definition) {
        reportError("Attribute '%s' not found\n", name.constData());
        return false;
    }
    auto value = std::make_unique<CANdbAttributeValue>();
    value->definition = definition;
    CANdbAttributeList* owner = &m_database->attributes;
    QByteArray ownerName;
    switch (m_lexer->nextInStatement()) {
    case CANdbLexer::NodesKeyword: {
        if (!readIdentifier(ownerName))
            return fail("Node name expected");
        CANdbNode* node = m_database->findNode(ownerName);
        if (!node)
            return fail("Node name expected");
        value->owner = CANdbOwner::Node;
        owner = &node->attributes;
        break;
    }
    case CANdbLexer::MessageKeyword: {
        CANdbMessage* message = readMessageId("Message Id expected", nullptr);
        if (!message)
            return false;
        value->owner = CANdbOwner::Message;
        owner = &message->attributes;
        break;
    }
    case CANdbLexer::SignalKeyword: {
        CANdbMessage* message = readMessageId("Message Id expected", nullptr);
        if (!message)
            return false;
        if (!readIdentifier(ownerName))
            return fail("Message name expected");
        CANdbSignal* signal = message->findSignal(ownerName);
        if (!signal)
            return fail("Signal not found");
        value->owner = CANdbOwner::Signal;
        owner = &signal->attributes;
        break;
    }
    case CANdbLexer::VariableKeyword: {
        if (!readIdentifier(ownerName))
            return fail("EnvVar name expected");
        CANdbEnvironmentVariable* variable = m_database->findVariable(ownerName);
        if (!variable)
            return fail("Variable not found");
        value->owner = CANdbOwner::EnvironmentVariable;
        owner = &variable->attributes;
        break;
    }
    default:
        m_lexer->pushBack();
        break;
    }
    if (!readAttributeData(*definition, value->intValue, value->floatValue, value->stringValue))
        return false;
    if (!expect(';'))
        return fail("';' expected (attribute value)");
    owner->push_back(std::move(value));
    return true;
}

// The message of a statement by the identifier as the file writes it; a
// null missing text reports "Message %u not found".
CANdbMessage* CANdbDBC::readMessageId(const char* idError, const char* missingError)
{
    qint64 id = 0;
    if (!readInteger(id)) {
        fail(idError);
        return nullptr;
    }
    CANdbMessage* message = m_database->findMessage(quint32(id));
    if (!message) {
        if (missingError)
            reportError(missingError, unsigned(id));
        else
            reportError("Message %u not found", unsigned(id));
    }
    return message;
}

bool CANdbDBC::readComment()
{
    QByteArray name;
    switch (m_lexer->nextInStatement()) {
    case CANdbLexer::String:
        m_database->comment = m_lexer->text();
        break;
    case CANdbLexer::NodesKeyword: {
        if (!readIdentifier(name))
            return fail("No node found for comment line");
        CANdbNode* node = m_database->findNode(name);
        if (!node)
            return fail("No node found for comment line");
        if (!readString(node->comment))
            return fail("String expected for node comment");
        break;
    }
    case CANdbLexer::MessageKeyword: {
        CANdbMessage* message =
            readMessageId("Id expected for message comment", "No message found for comment line");
        if (!message)
            return false;
        if (!readString(message->comment))
            return fail("String expected for message comment");
        break;
    }
    case CANdbLexer::SignalKeyword: {
        CANdbMessage* message =
            readMessageId("Id expected for signal comment", "Message (id=%u) found for comment line");
        if (!message)
            return false;
        if (!readIdentifier(name))
            return fail("Signal name expected for signal comment");
        CANdbSignal* signal = message->findSignal(name);
        if (!signal)
            return fail("Signal not found");
        if (!readString(signal->comment))
            return fail("String expected for signal comment");
        break;
    }
    case CANdbLexer::VariableKeyword: {
        if (!readIdentifier(name))
            return fail("Name expected for variable comment");
        CANdbEnvironmentVariable* variable = m_database->findVariable(name);
        if (!variable)
            return fail("No variable found for comment line");
        if (!readString(variable->comment))
            return fail("String expected for variable comment");
        break;
    }
    default:
        return fail("Name expected for module comment");
    }
    if (!expect(';'))
        skipStatement();
    return true;
}

bool CANdbDBC::readSignalValueType()
{
    CANdbMessage* message =
        readMessageId("Id expected for signal type", "Message (id=%u) found for type info");
    if (!message)
        return false;
    QByteArray name;
    if (!readIdentifier(name))
        return fail("Signal name expected for signal type");
    CANdbSignal* signal = message->findSignal(name);
    if (!signal)
        return fail("Signal not found");
    if (!expect(':'))
        return fail("Expected ':'");
    qint64 type = 0;
    if (!readInteger(type))
        return fail("Number expected for signal type");
    if (type == 1 || type == 2) {
        signal->valueType = CANdbValueType(type + 2);
    } else if (type != 0) {
        reportError("Unknown signal type %lld", static_cast<long long>(type));
        return false;
    }
    if (!expect(';'))
        skipStatement();
    return true;
}

bool CANdbDBC::readValueTable()
{
    const int token = m_lexer->nextInStatement();
    if (token == CANdbLexer::Identifier) {
        CANdbEnvironmentVariable* variable = m_database->findVariable(m_lexer->text());
        if (!variable)
            return fail("Variable not found");
        return readValueEntries(variable->valueTable, "Number expected for variable value",
                                "String expected for variable value name");
    }
    if (token != CANdbLexer::Integer)
        return fail("Unsupported VAL record");
    m_lexer->pushBack();
    CANdbMessage* message = readMessageId("Unsupported VAL record", nullptr);
    if (!message)
        return false;
    QByteArray name;
    if (!readIdentifier(name))
        return fail("Signal name expected for signal value");
    CANdbSignal* signal = message->findSignal(name);
    if (!signal)
        return fail("Signal not found");
    return readValueEntries(signal->valueTable, "Number expected for signal value",
                            "String expected for signal value");
}

bool CANdbDBC::readValueEntries(QList<CANdbValueEntry>& entries, const char* numberError,
                                const char* stringError)
{
    for (;;) {
        const int token = m_lexer->nextInStatement();
        if (token == ';')
            return true;
        if (token != CANdbLexer::Integer)
            return fail(numberError);
        CANdbValueEntry entry;
        entry.value = m_lexer->integer();
        if (!readString(entry.text))
            return fail(stringError);
        entries.append(entry);
    }
}

// What follows from the whole file: the protocol, the signal types that
// scaling forces, sign signals and the identifier masks.
void CANdbDBC::finishDatabase()
{
    auto networkValue = [this](const char* name) -> const CANdbAttributeValue* {
        return attributeNamed(m_database->attributes, name);
    };
    if (const CANdbAttributeDefinition* pgn = m_database->findAttributeDefinition("J1939PGN");
        pgn && pgn->type == CANdbAttributeType::Int && pgn->owner == CANdbOwner::Network) {
        const CANdbAttributeValue* value = networkValue("J1939PGN");
        if ((value ? value->intValue : pgn->defaultInt) == 1)
            m_database->protocol = CANdbProtocol::J1939Pgn;
    }
    if (const CANdbAttributeDefinition* protocol = m_database->findAttributeDefinition("ProtocolType");
        protocol && protocol->type == CANdbAttributeType::String && protocol->owner == CANdbOwner::Network) {
        const CANdbAttributeValue* value = networkValue("ProtocolType");
        if ((value ? value->stringValue : protocol->defaultString) == "J1939")
            m_database->protocol = CANdbProtocol::J1939;
    }
    const CANdbAttributeDefinition* frameFormat = m_database->findAttributeDefinition("VFrameFormat");

    for (const auto& message : m_database->messages) {
        for (const auto& signal : message->signalList) {
            signal->effectiveType = signal->valueType;
            if (signal->valueType == CANdbValueType::Signed ||
                signal->valueType == CANdbValueType::Unsigned) {
                if (!isWhole(signal->factor) || !isWhole(signal->offset))
                    signal->effectiveType = CANdbValueType::Double;
                else if (signal->factor < 0 || signal->minimum < 0)
                    signal->effectiveType = CANdbValueType::Signed;
            }
        }
        for (const auto& signal : message->signalList) {
            const CANdbAttributeValue* sign = attributeNamed(signal->attributes, "VorzeichenSignal");
            if (!sign)
                sign = attributeNamed(signal->attributes, "SignSignal");
            if (!sign || sign->definition->type != CANdbAttributeType::String)
                continue;
            signal->signSignal = message->findSignal(sign->stringValue);
            if (!signal->signSignal)
                continue;
            if (signal->effectiveType == CANdbValueType::Unsigned)
                signal->effectiveType = CANdbValueType::Signed;
            if (signal->minimum == 0)
                signal->minimum = -signal->maximum;
        }
        if (m_database->protocol == CANdbProtocol::J1939Pgn) {
            message->idMask = 0x8001FFFF;
            message->maskKind = 1;
        } else if (m_database->protocol == CANdbProtocol::J1939) {
            const CANdbAttributeValue* format = attributeNamed(message->attributes, "VFrameFormat");
            const bool j1939Frame =
                format ? format->intValue == 3 : (frameFormat && frameFormat->defaultInt == 3);
            if (j1939Frame || message->extended) {
                const quint32 pduFormat = (message->id >> 16) & 0xFF;
                message->idMask = pduFormat < 240 ? 0x81FF0000 : 0x81FFFF00;
                message->maskKind = 2;
                if (j1939Frame)
                    message->extended = true;
            }
        }
    }
}

qint32 CANdbDBC::fileStartBit(qint32 storedStart, qint32 length)
{
    const qint32 t = 8 * (storedStart / 8) + 8 - length - (storedStart % 8);
    return 8 * (t / 8) - (t % 8) + 7;
}

qint32 CANdbDBC::storedStartBit(qint32 fileStart, qint32 length)
{
    const qint32 u = (fileStart % 8) - 8 * (fileStart / 8) - length + 57;
    return ((u % 8) + 8) % 8 + (7 - u / 8) * 8;
}
