#pragma once

#include "canopenlib/canopenindex.h"
#include "canopenlib/canopensubindex.h"
#include "canopenlib/edsinifile.h"
#include "database/objectdatabase.h"
#include "importers/basedataimporter.h"

#include <QList>
#include <QSharedPointer>

class EdsParser;

// Fills a line of the project from an EDS or DCF file. Objects are written as
// the parser delivers them; subindices are collected and written in one bulk
// write, since a device description has thousands of them.
class EDSImporter : public BaseDataImporter
{
    Q_OBJECT
public:
    explicit EDSImporter(QObject* parent = nullptr);
    ~EDSImporter() override;

public Q_SLOTS:
    void doImport() override;
    void newIndex(const CANopen::CANopenIndex& newInd);
    void newSubIndex(const CANopenSubindex& newSub);

private:
    bool inRange(quint32 index) const;
    void addCompactSubIndices(const CANopen::CANopenIndex& object);
    void importSettings(const EdsIniFile& file);
    void generateMissingPdoObjects();
    void importComments(const EdsIniFile& file);
    void applyComment(const QString& header, const QString& text);

    QSharedPointer<EdsParser> parser;
    QList<ObjectDataBase::SubEntry> collectedSubIndices;
};
