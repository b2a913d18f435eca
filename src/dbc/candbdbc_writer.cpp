#include "dbc/candbdbc.h"

#include <QFile>

#include <charconv>

namespace {

const QByteArray noNode = QByteArrayLiteral("Vector__XXX");

// The text a DBC file writes for its numbers: "%.11lg" in the C locale,
// whatever locale the user runs.
void appendFloat(QByteArray& out, double value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 11);
    out.append(buffer, result.ptr - buffer);
}

// A line feed stays in the text as it is; other control bytes are escaped.
void appendQuoted(QByteArray& out, const QByteArray& text)
{
    out += '"';
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\t')
            out += "\\t";
        else if (c == '\r')
            out += "\\r";
        else if (c == '"')
            out += "\\\"";
        else if (byte < 32 && c != '\n')
            out += "\\x" + QByteArray::number(byte, 16).rightJustified(2, '0');
        else
            out += c;
    }
    out += '"';
}

void appendNodeList(QByteArray& out, const QList<QByteArray>& names, const char* whenNone)
{
    if (names.isEmpty()) {
        out += whenNone;
        return;
    }
    out += "  " + names.join(',');
}

QByteArray accessKeyword(const CANdbEnvironmentVariable& variable)
{
    if (variable.type == CANdbEnvVarType::String && variable.access > 0)
        return "DUMMY_NODE_VECTOR800" + QByteArray::number(variable.access - 1);
    return "DUMMY_NODE_VECTOR" + QByteArray::number(variable.access);
}

int envVarTypeDigit(CANdbEnvVarType type)
{
    return type == CANdbEnvVarType::Float ? 1 : 0;
}

void appendValue(QByteArray& out, const CANdbAttributeDefinition& definition, qint64 intValue,
                 double floatValue, const QByteArray& stringValue, bool enumAsText)
{
    switch (definition.type) {
    case CANdbAttributeType::Int:
    case CANdbAttributeType::Hex:
        out += QByteArray::number(intValue);
        break;
    case CANdbAttributeType::Float:
        appendFloat(out, floatValue);
        break;
    case CANdbAttributeType::String:
        appendQuoted(out, stringValue);
        break;
    case CANdbAttributeType::Enum:
        if (intValue < 0 || intValue >= definition.enumeration.size())
            appendQuoted(out, stringValue);
        else if (enumAsText)
            appendQuoted(out, definition.enumeration.at(intValue));
        else
            out += QByteArray::number(intValue);
        break;
    }
}

void appendAttributeValues(QByteArray& out, const CANdbAttributeList& values, const QByteArray& ownerText)
{
    for (const auto& value : values) {
        if (!value->definition)
            continue;
        out += "BA_ ";
        appendQuoted(out, value->definition->name);
        out += ownerText;
        appendValue(out, *value->definition, value->intValue, value->floatValue, value->stringValue, false);
        out += ";\n";
    }
}

void appendValueTable(QByteArray& out, const QList<CANdbValueEntry>& entries)
{
    for (const CANdbValueEntry& entry : entries) {
        out += ' ' + QByteArray::number(entry.value) + ' ';
        appendQuoted(out, entry.text);
    }
    out += " ;\n";
}

void writeHeader(QByteArray& out, const CANdbDatabase& database)
{
    out += R"(VERSION "HIPBNYYYYYYYYYYYYYYYYYYYYYYYYYYYYYYYYYYYYY/4/%%%/4/'%**4YYY///"


NS_ : 
	NS_DESC_
	CM_
	BA_DEF_
	BA_
	VAL_
	CAT_DEF_
	CAT_
	FILTER
	BA_DEF_DEF_
	EV_DATA_
	ENVVAR_DATA_
	SGTYPE_
	SGTYPE_VAL_
	BA_DEF_SGTYPE_
	BA_SGTYPE_
	SIG_TYPE_REF_
	VAL_TABLE_
	SIG_GROUP_
	SIG_VALTYPE_
	SIGTYPE_VALTYPE_
	BO_TX_BU_
	BA_DEF_REL_
	BA_REL_
	BA_DEF_DEF_REL_
	BU_SG_REL_
	BU_EV_REL_
	BU_BO_REL_
	SG_MUL_VAL_

BS_:

BU_:)";
    for (const auto& node : database.nodes)
        out += ' ' + node->name;
    out += "\n\n\n";
}

void writeSignal(QByteArray& out, const CANdbSignal& signal)
{
    out += " SG_ " + signal.name;
    if (signal.multiplexor && signal.multiplexValue != -1)
        out += " m" + QByteArray::number(signal.multiplexValue) + 'M';
    else if (signal.multiplexor)
        out += " M";
    else if (signal.multiplexValue != -1)
        out += " m" + QByteArray::number(signal.multiplexValue);
    const qint32 start =
        signal.bigEndian ? CANdbDBC::fileStartBit(signal.startBit, signal.length) : signal.startBit;
    out += " : " + QByteArray::number(start) + '|' + QByteArray::number(signal.length) +
           (signal.bigEndian ? "@0" : "@1");
    out += signal.valueType == CANdbValueType::Unsigned ? "+" : "-";
    out += " (";
    appendFloat(out, signal.factor);
    out += ',';
    appendFloat(out, signal.offset);
    out += ") [";
    appendFloat(out, signal.minimum);
    out += '|';
    appendFloat(out, signal.maximum);
    out += "] ";
    appendQuoted(out, signal.unit);
    appendNodeList(out, signal.receivers, " Vector__XXX");
    out += '\n';
}

void writeMessages(QByteArray& out, const CANdbDatabase& database)
{
    for (const auto& message : database.messages) {
        out += "BO_ " + QByteArray::number(message->fileId()) + ' ' + message->name + ": " +
               QByteArray::number(message->dlc) + ' ' +
               (message->sender.isEmpty() ? noNode : message->sender) + '\n';
        for (const auto& signal : message->signalList)
            writeSignal(out, *signal);
        out += '\n';
    }
}

void writeVariables(QByteArray& out, const CANdbDatabase& database)
{
    for (const auto& variable : database.variables) {
        out += "\nEV_ " + variable->name + ": " + QByteArray::number(envVarTypeDigit(variable->type)) + " [";
        appendFloat(out, variable->minimum);
        out += '|';
        appendFloat(out, variable->maximum);
        out += "] ";
        appendQuoted(out, variable->unit);
        out += ' ';
        appendFloat(out, variable->startValue);
        out += ' ' + QByteArray::number(variable->numericId) + ' ' + accessKeyword(*variable);
        appendNodeList(out, variable->nodes, "  Vector__XXX");
        out += ";\n";
    }
    for (const auto& variable : database.variables) {
        if (variable->hasDataSize)
            out += "ENVVAR_DATA_ " + variable->name + ": " + QByteArray::number(variable->dataSize) + ";\n";
    }
}

void writeComments(QByteArray& out, const CANdbDatabase& database)
{
    out += '\n';
    auto comment = [&out](const QByteArray& head, const QByteArray& text) {
        if (text.isEmpty())
            return;
        out += head;
        appendQuoted(out, text);
        out += ";\n";
    };
    comment("CM_ ", database.comment);
    for (const auto& node : database.nodes)
        comment("CM_ BU_ " + node->name + ' ', node->comment);
    for (const auto& message : database.messages) {
        const QByteArray id = QByteArray::number(message->fileId());
        comment("CM_ BO_ " + id + ' ', message->comment);
        for (const auto& signal : message->signalList)
            comment("CM_ SG_ " + id + ' ' + signal->name + ' ', signal->comment);
    }
    for (const auto& variable : database.variables)
        comment("CM_ EV_ " + variable->name + ' ', variable->comment);
}

void writeAttributeDefinitions(QByteArray& out, const CANdbDatabase& database)
{
    for (const auto& definition : database.attributeDefinitions) {
        out += "BA_DEF_ ";
        switch (definition->owner) {
        case CANdbOwner::Network:
            break;
        case CANdbOwner::Message:
            out += "BO_ ";
            break;
        case CANdbOwner::Node:
            out += "BU_ ";
            break;
        case CANdbOwner::Signal:
            out += "SG_ ";
            break;
        case CANdbOwner::EnvironmentVariable:
            out += "EV_ ";
            break;
        }
        out += ' ';
        appendQuoted(out, definition->name);
        out += ' ';
        switch (definition->type) {
        case CANdbAttributeType::Int:
        case CANdbAttributeType::Hex:
            out += (definition->type == CANdbAttributeType::Int ? "INT " : "HEX ") +
                   QByteArray::number(definition->intMinimum) + ' ' +
                   QByteArray::number(definition->intMaximum);
            break;
        case CANdbAttributeType::Float:
            out += "FLOAT ";
            appendFloat(out, definition->floatMinimum);
            out += ' ';
            appendFloat(out, definition->floatMaximum);
            break;
        case CANdbAttributeType::Enum:
            out += "ENUM  ";
            for (qsizetype i = 0; i < definition->enumeration.size(); ++i) {
                if (i > 0)
                    out += ',';
                appendQuoted(out, definition->enumeration.at(i));
            }
            break;
        case CANdbAttributeType::String:
            out += "STRING ";
            break;
        }
        out += ";\n";
    }
}

void writeAttributeDefaults(QByteArray& out, const CANdbDatabase& database)
{
    for (const auto& definition : database.attributeDefinitions) {
        out += "BA_DEF_DEF_  ";
        appendQuoted(out, definition->name);
        out += ' ';
        appendValue(out, *definition, definition->defaultInt, definition->defaultFloat,
                    definition->defaultString, true);
        out += ";\n";
    }
}

void writeAttributeValues(QByteArray& out, const CANdbDatabase& database)
{
    for (const auto& message : database.messages) {
        const QByteArray id = QByteArray::number(message->fileId());
        appendAttributeValues(out, message->attributes, " BO_ " + id + ' ');
        for (const auto& signal : message->signalList)
            appendAttributeValues(out, signal->attributes, " SG_ " + id + ' ' + signal->name + ' ');
    }
    for (const auto& node : database.nodes)
        appendAttributeValues(out, node->attributes, " BU_ " + node->name + ' ');
    for (const auto& variable : database.variables)
        appendAttributeValues(out, variable->attributes, " EV_ " + variable->name + ' ');
    appendAttributeValues(out, database.attributes, " ");
}

void writeValueTables(QByteArray& out, const CANdbDatabase& database)
{
    for (const auto& message : database.messages) {
        for (const auto& signal : message->signalList) {
            if (signal->valueTable.isEmpty())
                continue;
            out += "VAL_ " + QByteArray::number(message->fileId()) + ' ' + signal->name;
            appendValueTable(out, signal->valueTable);
        }
    }
    for (const auto& variable : database.variables) {
        if (variable->valueTable.isEmpty())
            continue;
        out += "VAL_ " + variable->name;
        appendValueTable(out, variable->valueTable);
    }
}

void writeSignalValueTypes(QByteArray& out, const CANdbDatabase& database)
{
    for (const auto& message : database.messages) {
        for (const auto& signal : message->signalList) {
            if (signal->valueType != CANdbValueType::Float && signal->valueType != CANdbValueType::Double)
                continue;
            out += "SIG_VALTYPE_ " + QByteArray::number(message->fileId()) + ' ' + signal->name + " : " +
                   QByteArray::number(int(signal->valueType) - 2) + ";\n";
        }
    }
}

} // namespace

int CANdbDBC::write(const CANdbDatabase& database, const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return CannotOpen;
    startRun(fileName);
    const QByteArray text = writeText(database);
    if (file.write(text) != text.size()) {
        reportError("Could not write the file");
        return HadErrors;
    }
    return Done;
}

QByteArray CANdbDBC::writeText(const CANdbDatabase& database)
{
    QByteArray out;
    writeHeader(out, database);
    writeMessages(out, database);
    writeVariables(out, database);
    writeComments(out, database);
    writeAttributeDefinitions(out, database);
    writeAttributeDefaults(out, database);
    writeAttributeValues(out, database);
    writeValueTables(out, database);
    writeSignalValueTypes(out, database);
    return out;
}
