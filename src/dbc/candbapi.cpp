#include "dbc/candbapi.h"

namespace {

constexpr int maximumEnumIndex = 1000;

template <typename Record, typename List> int append(List& list, Record** handle)
{
    if (!handle)
        return CANdbNoHandle;
    list.push_back(std::make_unique<Record>());
    *handle = list.back().get();
    return CANdbOk;
}

int addAttribute(CANdbDatabase* database, CANdbAttributeList& list, CANdbOwner owner, const QByteArray& name,
                 CANdbAttributeValue** value)
{
    if (!value)
        return CANdbNoHandle;
    const CANdbAttributeDefinition* definition = database->findAttributeDefinition(name);
    if (!definition)
        return CANdbNotFound;
    if (definition->owner != owner)
        return CANdbWrongKind;
    const int result = append(list, value);
    (*value)->definition = definition;
    (*value)->owner = owner;
    return result;
}

} // namespace

int canDbAddAttributeDefinition(CANdbDatabase* database, CANdbAttributeDefinition** definition)
{
    return database ? append(database->attributeDefinitions, definition) : CANdbNoHandle;
}

int canDbSetAttributeDefinitionName(CANdbAttributeDefinition* definition, const QByteArray& name)
{
    if (!definition)
        return CANdbNoHandle;
    definition->name = name;
    return CANdbOk;
}

int canDbSetAttributeDefinitionOwner(CANdbAttributeDefinition* definition, CANdbOwner owner)
{
    if (!definition)
        return CANdbNoHandle;
    definition->owner = owner;
    return CANdbOk;
}

int canDbSetAttributeDefinitionType(CANdbAttributeDefinition* definition, CANdbAttributeType type)
{
    if (!definition)
        return CANdbNoHandle;
    definition->type = type;
    return CANdbOk;
}

int canDbSetAttributeDefinitionInt(CANdbAttributeDefinition* definition, qint64 minimum, qint64 maximum,
                                   qint64 defaultValue)
{
    if (!definition)
        return CANdbNoHandle;
    if (definition->type != CANdbAttributeType::Int && definition->type != CANdbAttributeType::Hex)
        return CANdbWrongKind;
    definition->intMinimum = minimum;
    definition->intMaximum = maximum;
    definition->defaultInt = defaultValue;
    return CANdbOk;
}

int canDbAddAttributeDefinitionEnum(CANdbAttributeDefinition* definition, int index, const QByteArray& text)
{
    if (!definition)
        return CANdbNoHandle;
    if (definition->type != CANdbAttributeType::Enum)
        return CANdbWrongKind;
    if (index < 0 || index > maximumEnumIndex)
        return CANdbOutOfRange;
    while (definition->enumeration.size() <= index)
        definition->enumeration.append(QByteArrayLiteral("reserved"));
    definition->enumeration[index] = text;
    return CANdbOk;
}

int canDbSetAttributeValueEnumeration(CANdbAttributeDefinition* definition, int index)
{
    if (!definition)
        return CANdbNoHandle;
    if (definition->type != CANdbAttributeType::Enum)
        return CANdbWrongKind;
    if (index < 0 || index >= definition->enumeration.size())
        return CANdbOutOfRange;
    definition->defaultInt = index;
    return CANdbOk;
}

int canDbAddMsg(CANdbDatabase* database, CANdbMessage** message)
{
    return database ? append(database->messages, message) : CANdbNoHandle;
}

int canDbSetMsgName(CANdbMessage* message, const QByteArray& name)
{
    if (!message)
        return CANdbNoHandle;
    message->name = name;
    return CANdbOk;
}

int canDbSetMsgId(CANdbMessage* message, quint32 id, bool extended)
{
    if (!message)
        return CANdbNoHandle;
    if (id > (extended ? 0x1FFFFFFFu : 0x7FFu))
        return CANdbOutOfRange;
    message->id = id;
    message->extended = extended;
    return CANdbOk;
}

int canDbSetMsgDlc(CANdbMessage* message, int dlc)
{
    if (!message)
        return CANdbNoHandle;
    if (dlc < 0 || dlc > CANdbLargestDlc)
        return CANdbOutOfRange;
    message->dlc = dlc;
    return CANdbOk;
}

int canDbSetMsgComment(CANdbMessage* message, const QByteArray& comment)
{
    if (!message)
        return CANdbNoHandle;
    message->comment = comment;
    return CANdbOk;
}

int canDbAddMsgAttribute(CANdbDatabase* database, CANdbMessage* message, const QByteArray& name,
                         CANdbAttributeValue** value)
{
    if (!database || !message)
        return CANdbNoHandle;
    return addAttribute(database, message->attributes, CANdbOwner::Message, name, value);
}

int canDbAddSignalAttribute(CANdbDatabase* database, CANdbSignal* signal, const QByteArray& name,
                            CANdbAttributeValue** value)
{
    if (!database || !signal)
        return CANdbNoHandle;
    return addAttribute(database, signal->attributes, CANdbOwner::Signal, name, value);
}

int canDbAddNetworkAttribute(CANdbDatabase* database, const QByteArray& name, CANdbAttributeValue** value)
{
    if (!database)
        return CANdbNoHandle;
    return addAttribute(database, database->attributes, CANdbOwner::Network, name, value);
}

int canDbSetAttributeValueInt(CANdbAttributeValue* value, qint64 number)
{
    if (!value || !value->definition)
        return CANdbNoHandle;
    const CANdbAttributeDefinition& definition = *value->definition;
    if (definition.type != CANdbAttributeType::Int && definition.type != CANdbAttributeType::Hex)
        return CANdbWrongKind;
    // A definition without a range (both ends 0) takes any value.
    if (definition.intMinimum != definition.intMaximum &&
        (number < definition.intMinimum || number > definition.intMaximum))
        return CANdbOutOfRange;
    value->intValue = number;
    return CANdbOk;
}

int canDbSetAttributeValueEnumeration(CANdbAttributeValue* value, int index)
{
    if (!value || !value->definition)
        return CANdbNoHandle;
    if (value->definition->type != CANdbAttributeType::Enum)
        return CANdbWrongKind;
    if (index < 0 || index >= value->definition->enumeration.size())
        return CANdbOutOfRange;
    value->intValue = index;
    return CANdbOk;
}

int canDbSetAttributeValueString(CANdbAttributeValue* value, const QByteArray& text)
{
    if (!value || !value->definition)
        return CANdbNoHandle;
    if (value->definition->type != CANdbAttributeType::String)
        return CANdbWrongKind;
    value->stringValue = text;
    return CANdbOk;
}

int canDbAddSignal(CANdbMessage* message, CANdbSignal** signal)
{
    return message ? append(message->signalList, signal) : CANdbNoHandle;
}

int canDbSetSignalName(CANdbSignal* signal, const QByteArray& name)
{
    if (!signal)
        return CANdbNoHandle;
    signal->name = name;
    return CANdbOk;
}

int canDbSetSignalValueSize(CANdbSignal* signal, int startBit, int length)
{
    if (!signal)
        return CANdbNoHandle;
    if (startBit < 0 || length < 1 || startBit + length > CANdbLargestBitCount)
        return CANdbOutOfRange;
    signal->startBit = startBit;
    signal->length = length;
    return CANdbOk;
}

int canDbSetSignalComment(CANdbSignal* signal, const QByteArray& comment)
{
    if (!signal)
        return CANdbNoHandle;
    signal->comment = comment;
    return CANdbOk;
}

int canDbSetSignalValueType(CANdbSignal* signal, CANdbValueType type)
{
    if (!signal)
        return CANdbNoHandle;
    signal->valueType = type;
    signal->effectiveType = type;
    return CANdbOk;
}
