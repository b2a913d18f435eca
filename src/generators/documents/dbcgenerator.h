#pragma once

#include "dbc/candbdatabase.h"
#include "generators/abstractgenerator.h"

#include <QString>

// Writes "<project>.dbc", or "<project>_<line>.dbc" on a multi-line project:
// the PGNs and SPNs of a J1939 line as a DBC network, built through the DBC
// library, so that bus analysers, loggers and decoders know the device's
// messages.
//
// The database is built in this order:
//   attribute definitions
//   one message per PGN, transmit PGNs first, with its signals
//   the acknowledgement message
//   the DM1 message, when the device sends it
class DBCGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit DBCGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    QString outputFileName() const;

protected Q_SLOTS:
    void doJob() override;

private:
    void createAttributeDefinitions();
    void addAttributeDefinition(const QByteArray& name, CANdbOwner owner, CANdbAttributeType type);
    quint8 lineAddress();
    void addPgnMessage(quint32 pgnNumber, quint8 direction, quint8 address);
    void addSpnSignals(CANdbMessage* message, quint32 pgnNumber, quint8 direction);
    void addAcknowledgeMessage(quint8 address);
    void addDiagnosticMessage(quint8 address);
    CANdbMessage* addFixedMessage(const QByteArray& name, quint32 id);
    void addFixedSignal(CANdbMessage* message, const QByteArray& name, int startBit, int length);
    void setMessageAttribute(CANdbMessage* message, const QByteArray& name, int value, bool enumeration);
    CANdbSignal* addSignal(CANdbMessage* message, const QByteArray& name, int startBit, int length);
    void setSignalAttribute(CANdbSignal* signal, const QByteArray& name, int value, bool enumeration);
    bool writeDatabase(const QString& path);

    CANdbDatabase m_dbc;
    bool m_implementationInfo = false;
    bool m_canFd = false;
};
