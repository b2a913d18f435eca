#include "dbc/candbdatabase.h"

#include <algorithm>

namespace {

template <typename Record>
Record* findByName(const std::vector<std::unique_ptr<Record>>& list, const QByteArray& name)
{
    for (const auto& record : list) {
        if (record->name == name)
            return record.get();
    }
    return nullptr;
}

template <typename Record>
bool sameLists(const std::vector<std::unique_ptr<Record>>& a, const std::vector<std::unique_ptr<Record>>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& left, const auto& right) { return *left == *right; });
}

} // namespace

bool CANdbAttributeDefinition::operator==(const CANdbAttributeDefinition& other) const
{
    return type == other.type && owner == other.owner && name == other.name &&
           intMinimum == other.intMinimum && intMaximum == other.intMaximum &&
           floatMinimum == other.floatMinimum && floatMaximum == other.floatMaximum &&
           enumeration == other.enumeration && defaultInt == other.defaultInt &&
           defaultFloat == other.defaultFloat && defaultString == other.defaultString;
}

bool CANdbAttributeValue::operator==(const CANdbAttributeValue& other) const
{
    const bool sameDefinition = definition && other.definition ? definition->name == other.definition->name
                                                               : definition == other.definition;
    return sameDefinition && owner == other.owner && intValue == other.intValue &&
           floatValue == other.floatValue && stringValue == other.stringValue;
}

CANdbSignal* CANdbMessage::findSignal(const QByteArray& signalName) const
{
    return findByName(signalList, signalName);
}

CANdbNode* CANdbDatabase::findNode(const QByteArray& name) const
{
    return findByName(nodes, name);
}

CANdbMessage* CANdbDatabase::findMessage(quint32 fileId) const
{
    for (const auto& message : messages) {
        if (message->fileId() == fileId)
            return message.get();
    }
    return nullptr;
}

CANdbEnvironmentVariable* CANdbDatabase::findVariable(const QByteArray& name) const
{
    return findByName(variables, name);
}

CANdbAttributeDefinition* CANdbDatabase::findAttributeDefinition(const QByteArray& name) const
{
    return findByName(attributeDefinitions, name);
}

bool operator==(const CANdbSignal& a, const CANdbSignal& b)
{
    const QByteArray signA = a.signSignal ? a.signSignal->name : QByteArray();
    const QByteArray signB = b.signSignal ? b.signSignal->name : QByteArray();
    return a.name == b.name && a.comment == b.comment && a.unit == b.unit && a.minimum == b.minimum &&
           a.maximum == b.maximum && a.offset == b.offset && a.factor == b.factor &&
           a.startBit == b.startBit && a.length == b.length && a.multiplexValue == b.multiplexValue &&
           a.multiplexor == b.multiplexor && a.bigEndian == b.bigEndian && a.valueType == b.valueType &&
           a.effectiveType == b.effectiveType && signA == signB && a.valueTable == b.valueTable &&
           a.receivers == b.receivers && sameLists(a.attributes, b.attributes);
}

bool operator==(const CANdbMessage& a, const CANdbMessage& b)
{
    return a.name == b.name && a.comment == b.comment && a.sender == b.sender && a.id == b.id &&
           a.extended == b.extended && a.dlc == b.dlc && sameLists(a.signalList, b.signalList) &&
           sameLists(a.attributes, b.attributes) && a.idMask == b.idMask && a.maskKind == b.maskKind;
}

bool operator==(const CANdbNode& a, const CANdbNode& b)
{
    return a.name == b.name && a.comment == b.comment && sameLists(a.attributes, b.attributes);
}

bool operator==(const CANdbEnvironmentVariable& a, const CANdbEnvironmentVariable& b)
{
    return a.name == b.name && a.comment == b.comment && a.unit == b.unit && a.type == b.type &&
           a.access == b.access && a.minimum == b.minimum && a.maximum == b.maximum &&
           a.startValue == b.startValue && a.numericId == b.numericId && a.dataSize == b.dataSize &&
           a.hasDataSize == b.hasDataSize && a.nodes == b.nodes && a.valueTable == b.valueTable &&
           sameLists(a.attributes, b.attributes);
}

bool operator==(const CANdbDatabase& a, const CANdbDatabase& b)
{
    return a.comment == b.comment && a.protocol == b.protocol && sameLists(a.nodes, b.nodes) &&
           sameLists(a.messages, b.messages) && sameLists(a.variables, b.variables) &&
           sameLists(a.attributeDefinitions, b.attributeDefinitions) && sameLists(a.attributes, b.attributes);
}
