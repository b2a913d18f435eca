#pragma once

#include "generators/documents/documentgenerator.h"

class QXmlStreamWriter;

// Writes the CANopen FD device description of a line
// (<vendor-ID>_<base>.xdd): an ISO 15745 profile container with a device
// profile and a communication network profile that lists the objects.
class XDDGenerator : public DocumentGenerator
{
    Q_OBJECT
public:
    explicit XDDGenerator(QObject* parent = nullptr);

    QString outputFileName() const override;

protected:
    QString documentName() const override;
    void writeDocument(QTextStream& out) override;

private:
    void writeContainerStart(QXmlStreamWriter& xml);
    void writeDeviceProfile(QXmlStreamWriter& xml);
    void writeNetworkProfile(QXmlStreamWriter& xml);
    void writeProfileHeader(QXmlStreamWriter& xml, const QString& identification, const QString& classId);
    void writeProfileBodyStart(QXmlStreamWriter& xml, const QString& type);
    void writeDeviceIdentity(QXmlStreamWriter& xml);
    void writeDeviceFunction(QXmlStreamWriter& xml);
    void writeObjectList(QXmlStreamWriter& xml);
    void writeObject(QXmlStreamWriter& xml, quint16 index);
    void writeSubIndex(QXmlStreamWriter& xml, quint16 index, quint8 subindex);

    QString vendorId() const;
};
