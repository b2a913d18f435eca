#pragma once

#include "database/objectdatabase.h"
#include "generators/abstractgenerator.h"

#include <QList>
#include <QString>

class QTextStream;

// Writes the CANopen electronic data sheet (CiA 306, EDSVersion 4.0) of one
// line. A device with EDS variants gets one generator per variant; a CAN FD
// device gets a second one per variant for its classical CAN twin.
class EDSGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    EDSGenerator(const QString& edsDefine, bool canFd, bool classical, QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    // The name inside the output folder that this run writes.
    QString outputFileName() const;

protected Q_SLOTS:
    void doJob() override;

private:
    void writeHeaderLine();
    void writeFileInfoAndComments();
    void writeDeviceInfo();
    void writeDummyUsage();
    void writeObjectLists();
    void writeObjectSection(QTextStream& out, quint16 index);
    void writeSubIndexSections(QTextStream& out, quint16 index, const INDEX_DATA_T& object);
    void writePropertyBlock(QTextStream& out, const SUBINDEX_DATA_T& sub);
    static void writeDescriptionLines(QTextStream& out, const QString& text);
    static void writeObjectRows(QTextStream& out, const QList<quint16>& indices);

    bool belongsToVariant(const ObjectMetadata& metadata) const;
    QList<quint16> objectsOfVariant(quint32 from, quint32 to);
    QList<quint16> withoutFdObjects(QList<quint16> indices) const;
    bool usesGroupMessaging();
    QString identityValue(quint8 sub);
    SUBINDEX_DATA_T readSubIndex(quint16 index, quint8 sub, bool* exists = nullptr);
    QString setting(const QString& key);

    QString m_edsDefine;
    bool m_canFd;
    bool m_classical;
};
