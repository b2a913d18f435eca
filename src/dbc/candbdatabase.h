#pragma once

#include <QByteArray>
#include <QList>

#include <memory>
#include <vector>

// The in-memory CAN database behind a DBC file. All text is 8-bit as it
// stands in the file (DBC files in the wild are mostly Windows-1252), so
// nothing is decoded on the way in or out. Records are owned through
// unique_ptr so that the handles the flat canDb... calls give out stay
// valid while more records are appended.

// The longest J1939 message, sent by the transport protocol, bounds what a
// message and its signals may cover; CAN FD frames (64 bytes) fit well inside.
constexpr int CANdbLargestDlc = 1785;
constexpr int CANdbLargestBitCount = 8 * CANdbLargestDlc;

enum class CANdbAttributeType
{
    Int = 1,
    Hex = 2,
    Float = 3,
    Enum = 4,
    String = 5,
};

enum class CANdbOwner
{
    Network = 1,
    Message = 2,
    Node = 3,
    Signal = 4,
    EnvironmentVariable = 5,
};

enum class CANdbProtocol
{
    None = 0,
    J1939Pgn = 1,
    J1939 = 2,
};

// Value types of a signal as the file states them ("+", "-", SIG_VALTYPE_).
enum class CANdbValueType
{
    Signed = 1,
    Unsigned = 2,
    Float = 3,
    Double = 4,
};

struct CANdbAttributeDefinition
{
    CANdbAttributeType type = CANdbAttributeType::Int;
    CANdbOwner owner = CANdbOwner::Network;
    QByteArray name;
    qint64 intMinimum = 0;
    qint64 intMaximum = 0;
    double floatMinimum = 0;
    double floatMaximum = 0;
    QList<QByteArray> enumeration;
    // The default, in the member its type uses; an ENUM default is the index,
    // or the text when the file names one that is not in the list.
    qint64 defaultInt = 0;
    double defaultFloat = 0;
    QByteArray defaultString;

    bool operator==(const CANdbAttributeDefinition& other) const;
};

struct CANdbAttributeValue
{
    const CANdbAttributeDefinition* definition = nullptr;
    CANdbOwner owner = CANdbOwner::Network;
    qint64 intValue = 0;
    double floatValue = 0;
    QByteArray stringValue;

    bool operator==(const CANdbAttributeValue& other) const;
};

using CANdbAttributeList = std::vector<std::unique_ptr<CANdbAttributeValue>>;

struct CANdbValueEntry
{
    qint64 value = 0;
    QByteArray text;

    bool operator==(const CANdbValueEntry& other) const { return value == other.value && text == other.text; }
};

struct CANdbNode
{
    QByteArray name;
    QByteArray comment;
    CANdbAttributeList attributes;
};

struct CANdbSignal
{
    QByteArray name;
    QByteArray comment;
    QByteArray unit;
    double minimum = 0;
    double maximum = 0;
    double offset = 0;
    double factor = 1;
    // Position of the least significant bit in little-endian numbering, also
    // for big-endian signals, so that layout checks never look at byte order.
    qint32 startBit = 0;
    qint32 length = 0;
    qint32 multiplexValue = -1;
    bool multiplexor = false;
    bool bigEndian = false;
    CANdbValueType valueType = CANdbValueType::Signed;
    CANdbValueType effectiveType = CANdbValueType::Signed;
    const CANdbSignal* signSignal = nullptr;
    QList<CANdbValueEntry> valueTable;
    QList<QByteArray> receivers;
    CANdbAttributeList attributes;
};

struct CANdbMessage
{
    QByteArray name;
    QByteArray comment;
    // Empty when no node sends it ("Vector__XXX" in the file).
    QByteArray sender;
    quint32 id = 0;
    bool extended = false;
    qint32 dlc = 0;
    std::vector<std::unique_ptr<CANdbSignal>> signalList;
    CANdbAttributeList attributes;
    quint32 idMask = 0;
    int maskKind = 0;

    // The identifier as the file writes it: bit 31 marks an extended frame.
    quint32 fileId() const { return extended ? (id | 0x80000000u) : id; }
    CANdbSignal* findSignal(const QByteArray& signalName) const;
};

enum class CANdbEnvVarType
{
    Integer = 0,
    Float = 1,
    String = 2,
    Data = 3,
};

struct CANdbEnvironmentVariable
{
    QByteArray name;
    QByteArray comment;
    QByteArray unit;
    CANdbEnvVarType type = CANdbEnvVarType::Integer;
    int access = 0;
    double minimum = 0;
    double maximum = 0;
    double startValue = 0;
    qint64 numericId = 0;
    qint64 dataSize = 0;
    bool hasDataSize = false;
    QList<QByteArray> nodes;
    QList<CANdbValueEntry> valueTable;
    CANdbAttributeList attributes;
};

struct CANdbDatabase
{
    QByteArray comment;
    std::vector<std::unique_ptr<CANdbNode>> nodes;
    std::vector<std::unique_ptr<CANdbMessage>> messages;
    std::vector<std::unique_ptr<CANdbEnvironmentVariable>> variables;
    std::vector<std::unique_ptr<CANdbAttributeDefinition>> attributeDefinitions;
    CANdbAttributeList attributes;
    CANdbProtocol protocol = CANdbProtocol::None;

    CANdbNode* findNode(const QByteArray& name) const;
    // By the identifier as the file writes it, bit 31 included.
    CANdbMessage* findMessage(quint32 fileId) const;
    CANdbEnvironmentVariable* findVariable(const QByteArray& name) const;
    CANdbAttributeDefinition* findAttributeDefinition(const QByteArray& name) const;
};

// Field by field, attribute values by their definition's name; used by the
// round trip of write and read.
bool operator==(const CANdbSignal& a, const CANdbSignal& b);
bool operator==(const CANdbMessage& a, const CANdbMessage& b);
bool operator==(const CANdbNode& a, const CANdbNode& b);
bool operator==(const CANdbEnvironmentVariable& a, const CANdbEnvironmentVariable& b);
bool operator==(const CANdbDatabase& a, const CANdbDatabase& b);
