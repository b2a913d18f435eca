#include "generators/documents/dbcgenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "database/objectdatabase.h"
#include "dbc/candbapi.h"
#include "dbc/candbdbc.h"
#include "generators/j1939addressclaim.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryFile>

namespace {

constexpr quint32 firstPdu2Pgn = 61440;
constexpr quint8 globalAddress = 254;
constexpr quint32 acknowledgeId = 0x18E80000;
constexpr quint32 diagnosticMessage1Id = 0x18FECA00;
// VFrameFormat "J1939PG" and GenMsgSendType "cyclic" and "noMsgSendType".
constexpr int j1939FrameFormat = 3;
constexpr int cyclicSendType = 0;
constexpr int noSendType = 8;
constexpr int stringDelimiterSigType = 8;

// A failed library call is no reason to stop: the file is still useful
// without the one record, so it is logged and the build goes on.
void check(int result, const char* operation)
{
    if (result != CANdbOk)
        qDebug() << Q_FUNC_INFO << "Error " << operation << result;
}

void setValue(CANdbAttributeValue* attribute, int value, bool enumeration)
{
    if (enumeration)
        check(canDbSetAttributeValueEnumeration(attribute, value), "canDbSetAttributeValueEnumeration");
    else
        check(canDbSetAttributeValueInt(attribute, value), "canDbSetAttributeValueInt");
}

QByteArray dbcName(const QString& name)
{
    static const QRegularExpression notInName(QStringLiteral("[^0-9a-zA-Z_*]"));
    return QString(name).replace(notInName, QStringLiteral("_")).toUtf8();
}

bool isTextType(int dataType)
{
    return dataType == CAN::VisStringAsterisk || dataType == CAN::OctetString;
}

} // namespace

DBCGenerator::DBCGenerator(QObject* parent) : AbstractGenerator(parent) {}

bool DBCGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/%2").arg(m_outputDir, outputFileName()));
}

QString DBCGenerator::outputFileName() const
{
    if (m_multiLine)
        return QStringLiteral("%1_%2.dbc").arg(m_deviceName).arg(m_line);
    return QStringLiteral("%1.dbc").arg(m_deviceName);
}

AbstractGenerator::GeneratorStatus DBCGenerator::start()
{
    QSettings user(QCoreApplication::organizationName(),
                   QCoreApplication::instance()->property("AppNameWithVersion").toString());
    m_implementationInfo = user.value(QStringLiteral("General/implinfo")).toInt() == 1;
    // Stored before the worker starts, so that the outputs after this one
    // see the address claiming PGN too.
    if (m_database && J1939AddressClaim::applies(*m_database, m_line))
        J1939AddressClaim::store(*m_database, m_line);
    return startWorker(QStringLiteral("DBC File"));
}

void DBCGenerator::doJob()
{
    beginJob();
    qDebug() << Q_FUNC_INFO << "DBC prprae output";
    QTemporaryFile temporary;
    if (!temporary.open() || !writeDatabase(temporary.fileName())) {
        qDebug() << Q_FUNC_INFO << "Error create database";
        fail(tr("Could not create output file."));
        finishJob();
        return;
    }
    temporary.close();
    m_database->cacheAllSPNs(m_line);

    m_canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    Q_EMIT progress(25);
    createAttributeDefinitions();
    const quint8 address = lineAddress();
    for (quint8 direction : {ObjectDataBase::Transmit, ObjectDataBase::Receive}) {
        for (quint32 pgn : m_database->getPGNList(m_line, direction)) {
            if (m_cancelRequested)
                break;
            addPgnMessage(pgn, direction, address);
        }
    }
    addAcknowledgeMessage(address);
    if (j1939SettingInt(QStringLiteral("diagsupport_dm1")) == 1)
        addDiagnosticMessage(address);

    if (!writeDatabase(temporary.fileName()))
        qDebug() << Q_FUNC_INFO << "Error create dbc file";
    const QString target = QStringLiteral("%1/%2").arg(m_outputDir, outputFileName());
    QFile::remove(target);
    if (!QFile::copy(temporary.fileName(), target))
        fail(tr("Could not copy output file. %1 - %2").arg(temporary.fileName(), target));
    qDebug() << Q_FUNC_INFO << "Creating Done";
    finishJob();
}

bool DBCGenerator::writeDatabase(const QString& path)
{
    CANdbDBC dbc;
    dbc.setListener([](CANdbFileIo::Severity, int line, const QString& fileName, const QByteArray& text) {
        qDebug() << Q_FUNC_INFO << fileName << line << text;
    });
    return dbc.write(m_dbc, path) == CANdbFileIo::Done;
}

// The attribute definitions of a J1939 network as bus tools know them, and
// the two of the tool that tell how the stack holds a signal.
void DBCGenerator::createAttributeDefinitions()
{
    addAttributeDefinition("ProtocolType", CANdbOwner::Network, CANdbAttributeType::String);
    CANdbAttributeValue* protocol = nullptr;
    check(canDbAddNetworkAttribute(&m_dbc, "ProtocolType", &protocol), "canDbAddNetworkAttribute");
    check(canDbSetAttributeValueString(protocol, "J1939"), "canDbSetAttributeValueString");

    addAttributeDefinition("GenMsgCycleTime", CANdbOwner::Message, CANdbAttributeType::Int);

    addAttributeDefinition("GenMsgSendType", CANdbOwner::Message, CANdbAttributeType::Enum);
    CANdbAttributeDefinition* sendType = m_dbc.attributeDefinitions.back().get();
    check(canDbAddAttributeDefinitionEnum(sendType, 0, "cyclic"), "canDbAddAttributeDefinitionEnum");
    check(canDbAddAttributeDefinitionEnum(sendType, 2, "cyclicIfActive"), "canDbAddAttributeDefinitionEnum");
    check(canDbAddAttributeDefinitionEnum(sendType, 8, "noMsgSendType"), "canDbAddAttributeDefinitionEnum");
    check(canDbSetAttributeValueEnumeration(sendType, noSendType), "canDbSetAttributeValueEnumeration");

    addAttributeDefinition("SigType", CANdbOwner::Signal, CANdbAttributeType::Enum);
    CANdbAttributeDefinition* sigType = m_dbc.attributeDefinitions.back().get();
    const char* sigTypes[] = {"Default",         "Range",        "RangeSigned",        "ASCII",
                              "Discrete",        "Control",      "ReferencePGN",       "DTC",
                              "StringDelimiter", "StringLength", "StringLengthControl"};
    for (int index = 0; index < int(std::size(sigTypes)); ++index)
        check(canDbAddAttributeDefinitionEnum(sigType, index, sigTypes[index]),
              "canDbAddAttributeDefinitionEnum");
    check(canDbSetAttributeValueEnumeration(sigType, 0), "canDbSetAttributeValueEnumeration");

    addAttributeDefinition("VFrameFormat", CANdbOwner::Message, CANdbAttributeType::Enum);
    CANdbAttributeDefinition* frameFormat = m_dbc.attributeDefinitions.back().get();
    check(canDbAddAttributeDefinitionEnum(frameFormat, 0, "StandardCAN"), "canDbAddAttributeDefinitionEnum");
    check(canDbAddAttributeDefinitionEnum(frameFormat, 1, "ExtendedCAN"), "canDbAddAttributeDefinitionEnum");
    check(canDbAddAttributeDefinitionEnum(frameFormat, 3, "J1939PG"), "canDbAddAttributeDefinitionEnum");
    check(canDbSetAttributeValueEnumeration(frameFormat, j1939FrameFormat),
          "canDbSetAttributeValueEnumeration");

    addAttributeDefinition("SPN", CANdbOwner::Signal, CANdbAttributeType::Int);
    check(canDbSetAttributeDefinitionInt(m_dbc.attributeDefinitions.back().get(), 0, 0x7FFFF, 0),
          "canDbSetAttributeDefinitionInt");

    addAttributeDefinition("halvex_implementation_type", CANdbOwner::Signal, CANdbAttributeType::Enum);
    CANdbAttributeDefinition* implementation = m_dbc.attributeDefinitions.back().get();
    check(canDbAddAttributeDefinitionEnum(implementation, 0, "Managed"), "canDbAddAttributeDefinitionEnum");
    check(canDbAddAttributeDefinitionEnum(implementation, 1, "Variable"), "canDbAddAttributeDefinitionEnum");
    check(canDbSetAttributeValueEnumeration(implementation, 0), "canDbSetAttributeValueEnumeration");

    addAttributeDefinition("halvex_variable_name", CANdbOwner::Signal, CANdbAttributeType::String);

    addAttributeDefinition("halvex_bitsize", CANdbOwner::Signal, CANdbAttributeType::Int);
    check(canDbSetAttributeDefinitionInt(m_dbc.attributeDefinitions.back().get(), 64, 5120, 0),
          "canDbSetAttributeDefinitionInt");
}

void DBCGenerator::addAttributeDefinition(const QByteArray& name, CANdbOwner owner, CANdbAttributeType type)
{
    CANdbAttributeDefinition* definition = nullptr;
    check(canDbAddAttributeDefinition(&m_dbc, &definition), "canDbAddAttributeDefinition");
    check(canDbSetAttributeDefinitionName(definition, name), "canDbSetAttributeDefinitionName");
    check(canDbSetAttributeDefinitionOwner(definition, owner), "canDbSetAttributeDefinitionOwner");
    check(canDbSetAttributeDefinitionType(definition, type), "canDbSetAttributeDefinitionType");
}

// The line's entry of the address list; a shorter list gives its first.
quint8 DBCGenerator::lineAddress()
{
    const QStringList addresses =
        j1939Setting(QStringLiteral("startaddress")).split(QLatin1Char(','), Qt::SkipEmptyParts);
    QString address = QStringLiteral("0xFE");
    if (m_line < addresses.size())
        address = addresses.at(m_line);
    else if (!addresses.isEmpty())
        address = addresses.first();
    return quint8(address.trimmed().toUInt(nullptr, 0));
}

// Priority in bits 26 to 28, the PGN in bits 8 to 25; a received PDU1 PGN is
// addressed to this node and comes from any node, a sent one from this node.
void DBCGenerator::addPgnMessage(quint32 pgnNumber, quint8 direction, quint8 address)
{
    ObjectDataBase::PGN pgn;
    m_database->getPGN(m_line, pgnNumber, direction, pgn);
    CANdbMessage* message = nullptr;
    check(canDbAddMsg(&m_dbc, &message), "canDbAddMsg");
    check(canDbSetMsgName(message, dbcName(pgn.name)), "canDbSetMsgName");
    quint32 id = ((quint32(pgn.priority) << 18) + pgnNumber) << 8;
    if (direction == ObjectDataBase::Receive) {
        if (pgnNumber < firstPdu2Pgn)
            id += quint32(address) << 8;
        id += globalAddress;
    } else {
        id += address;
    }
    check(canDbSetMsgId(message, id, true), "canDbSetMsgId");
    if (!pgn.desc.isEmpty())
        check(canDbSetMsgComment(message, pgn.desc.toUtf8()), "canDbSetMsgDlc");
    setMessageAttribute(message, "VFrameFormat", j1939FrameFormat, true);
    if (pgn.cycletime_ms > 0) {
        setMessageAttribute(message, "GenMsgCycleTime", pgn.cycletime_ms, false);
        setMessageAttribute(message, "GenMsgSendType", cyclicSendType, true);
    } else {
        setMessageAttribute(message, "GenMsgSendType", noSendType, true);
    }
    addSpnSignals(message, pgnNumber, direction);
}

// The signals follow one another from bit 0 in the SPN order; a string
// ended by "*" stands as its first byte, its full size in halvex_bitsize.
void DBCGenerator::addSpnSignals(CANdbMessage* message, quint32 pgnNumber, quint8 direction)
{
    int bits = 0;
    for (quint32 spnNumber : m_database->getSPNList(m_line, pgnNumber, direction)) {
        ObjectDataBase::SPN spn;
        m_database->getSPN(m_line, pgnNumber, direction, spnNumber, spn);
        const int size = isTextType(spn.datatype)
                             ? spn.bitsize
                             : COHelper::getDataLengthBits(CAN::CANopenDataType(spn.datatype));
        if (spn.name.contains(QLatin1String("dummy"))) {
            bits += size;
            continue;
        }
        CANdbSignal* signal = nullptr;
        if (spn.datatype == CAN::VisStringAsterisk) {
            signal = addSignal(message, dbcName(spn.name), bits, 8);
            setSignalAttribute(signal, "halvex_bitsize", size, false);
            bits += 8;
        } else {
            signal = addSignal(message, dbcName(spn.name), bits, size);
            bits += size;
        }
        if (!spn.desc.isEmpty())
            check(canDbSetSignalComment(signal, spn.desc.toUtf8()), "canDbSetSignalComment");
        setSignalAttribute(signal, "SPN", int(spnNumber), false);
        if (spn.datatype == CAN::VisStringAsterisk)
            setSignalAttribute(signal, "SigType", stringDelimiterSigType, true);
        if (!isTextType(spn.datatype))
            check(canDbSetSignalValueType(signal, CANdbValueType::Unsigned), "canDbSetSignalValueType");
        if (m_implementationInfo) {
            const bool variable = spn.implementation == CANopen::ApplicationVariable;
            setSignalAttribute(signal, "halvex_implementation_type", variable ? 1 : 0, true);
            if (variable) {
                CANdbAttributeValue* value = nullptr;
                check(canDbAddSignalAttribute(&m_dbc, signal, "halvex_variable_name", &value),
                      "canDbAddMsgAttribute");
                check(canDbSetAttributeValueString(value, spn.varname.toUtf8()),
                      "canDbSetAttributeValueString");
            }
        }
    }
    const int dlc = bits / 8;
    check(canDbSetMsgDlc(message, m_canFd ? dlc : qMax(dlc, 8)), "canDbSetMsgDlc");
}

// PGN 59392: the answer to a request, with the PGN it acknowledges.
void DBCGenerator::addAcknowledgeMessage(quint8 address)
{
    CANdbMessage* message = addFixedMessage("Acknowledge_Message", acknowledgeId + address);
    addFixedSignal(message, "Control_Byte", 0, 8);
    addFixedSignal(message, "Group_Function", 8, 8);
    addFixedSignal(message, "reserved", 16, 16);
    addFixedSignal(message, "Address", 32, 8);
    addFixedSignal(message, "PGN", 40, 24);
}

// DM1, the active diagnostic trouble codes, with its first DTC.
void DBCGenerator::addDiagnosticMessage(quint8 address)
{
    CANdbMessage* message =
        addFixedMessage(QByteArrayLiteral("Diagnostic_Message_") + QByteArray::number(m_line),
                        diagnosticMessage1Id + address);
    addFixedSignal(message, "Protect_Lamp", 0, 2);
    addFixedSignal(message, "AmberWarningLamp", 2, 2);
    addFixedSignal(message, "RedStopLamp", 4, 2);
    addFixedSignal(message, "MILLamp", 6, 2);
    addFixedSignal(message, "SPN", 8, 19);
    addFixedSignal(message, "FMI", 27, 5);
    addFixedSignal(message, "OC", 32, 7);
    addFixedSignal(message, "CM", 39, 1);
}

CANdbMessage* DBCGenerator::addFixedMessage(const QByteArray& name, quint32 id)
{
    CANdbMessage* message = nullptr;
    check(canDbAddMsg(&m_dbc, &message), "canDbAddMsg");
    check(canDbSetMsgName(message, name), "canDbSetMsgName");
    check(canDbSetMsgId(message, id, true), "canDbSetMsgId");
    setMessageAttribute(message, "VFrameFormat", j1939FrameFormat, true);
    check(canDbSetMsgDlc(message, 8), "canDbSetMsgDlc");
    return message;
}

void DBCGenerator::addFixedSignal(CANdbMessage* message, const QByteArray& name, int startBit, int length)
{
    CANdbSignal* signal = addSignal(message, name, startBit, length);
    check(canDbSetSignalValueType(signal, CANdbValueType::Unsigned), "canDbSetSignalValueType");
}

void DBCGenerator::setMessageAttribute(CANdbMessage* message, const QByteArray& name, int value,
                                       bool enumeration)
{
    CANdbAttributeValue* attribute = nullptr;
    check(canDbAddMsgAttribute(&m_dbc, message, name, &attribute), "canDbAddMsgAttribute");
    setValue(attribute, value, enumeration);
}

CANdbSignal* DBCGenerator::addSignal(CANdbMessage* message, const QByteArray& name, int startBit, int length)
{
    CANdbSignal* signal = nullptr;
    check(canDbAddSignal(message, &signal), "canDbAddSignal");
    check(canDbSetSignalName(signal, name), "canDbSetSignalName");
    check(canDbSetSignalValueSize(signal, startBit, length), "canDbSetSignalValueSize");
    return signal;
}

void DBCGenerator::setSignalAttribute(CANdbSignal* signal, const QByteArray& name, int value,
                                      bool enumeration)
{
    CANdbAttributeValue* attribute = nullptr;
    check(canDbAddSignalAttribute(&m_dbc, signal, name, &attribute), "canDbAddMsgAttribute");
    setValue(attribute, value, enumeration);
}
