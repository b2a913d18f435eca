#pragma once

#include "dbc/candbdatabase.h"

#include <QByteArray>

// The flat call interface that builds a database record by record. Every
// call returns 0 on success or one of the negative codes below; a handle
// given out stays valid as long as its database lives.
enum CANdbCallResult
{
    CANdbOk = 0,
    CANdbNoHandle = -1,
    CANdbNotFound = -2,
    CANdbWrongKind = -3,
    CANdbOutOfRange = -4,
};

int canDbAddAttributeDefinition(CANdbDatabase* database, CANdbAttributeDefinition** definition);
int canDbSetAttributeDefinitionName(CANdbAttributeDefinition* definition, const QByteArray& name);
int canDbSetAttributeDefinitionOwner(CANdbAttributeDefinition* definition, CANdbOwner owner);
int canDbSetAttributeDefinitionType(CANdbAttributeDefinition* definition, CANdbAttributeType type);
// Range and default of an INT or HEX definition.
int canDbSetAttributeDefinitionInt(CANdbAttributeDefinition* definition, qint64 minimum, qint64 maximum,
                                   qint64 defaultValue);
// Entry `index` of an ENUM definition; the entries between the end of the
// list and the index become "reserved".
int canDbAddAttributeDefinitionEnum(CANdbAttributeDefinition* definition, int index, const QByteArray& text);
// The default of an ENUM definition, by index.
int canDbSetAttributeValueEnumeration(CANdbAttributeDefinition* definition, int index);

int canDbAddMsg(CANdbDatabase* database, CANdbMessage** message);
int canDbSetMsgName(CANdbMessage* message, const QByteArray& name);
int canDbSetMsgId(CANdbMessage* message, quint32 id, bool extended);
int canDbSetMsgDlc(CANdbMessage* message, int dlc);
int canDbSetMsgComment(CANdbMessage* message, const QByteArray& comment);

// A value of the attribute definition so named, attached to its owner.
int canDbAddMsgAttribute(CANdbDatabase* database, CANdbMessage* message, const QByteArray& name,
                         CANdbAttributeValue** value);
int canDbAddSignalAttribute(CANdbDatabase* database, CANdbSignal* signal, const QByteArray& name,
                            CANdbAttributeValue** value);
int canDbAddNetworkAttribute(CANdbDatabase* database, const QByteArray& name, CANdbAttributeValue** value);
int canDbSetAttributeValueInt(CANdbAttributeValue* value, qint64 number);
int canDbSetAttributeValueEnumeration(CANdbAttributeValue* value, int index);
int canDbSetAttributeValueString(CANdbAttributeValue* value, const QByteArray& text);

int canDbAddSignal(CANdbMessage* message, CANdbSignal** signal);
int canDbSetSignalName(CANdbSignal* signal, const QByteArray& name);
// Start bit and length in bits of a little-endian signal.
int canDbSetSignalValueSize(CANdbSignal* signal, int startBit, int length);
int canDbSetSignalComment(CANdbSignal* signal, const QByteArray& comment);
int canDbSetSignalValueType(CANdbSignal* signal, CANdbValueType type);
