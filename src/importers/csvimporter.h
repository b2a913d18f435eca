#pragma once

#include "database/objectdatabase.h"
#include "importers/basedataimporter.h"

#include <QChar>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

// An object, or one subindex of it, in a line of the project.
struct SubAddress
{
    quint8 line = 0;
    quint16 index = 0;
    quint8 subindex = 0;
    // The line named the object alone, without a subindex.
    bool wholeObject = false;
};

// Reads the importable CSV form of an object dictionary, the ICSV file, into
// the project. The first line that is no comment names the columns, so their
// order is free and any of them but "index" may be missing. Lines that begin
// with "d" or "c" ask for deleting or copying; the importer only collects them
// for its caller, nothing is deleted or copied while it reads.
class CsvImporter : public BaseDataImporter
{
    Q_OBJECT
public:
    explicit CsvImporter(QObject* parent = nullptr);

public Q_SLOTS:
    void doImport() override;
    void getDeleteList(QList<SubAddress>& deleteListRef);
    void getCopyList(QList<SubAddress>& copyListRef);

private:
    class Row;

    // What the project holds of one object, asked once per object and then
    // kept up to date by the importer itself.
    struct ObjectState
    {
        bool exists = false;
        int objectCode = 7;
        bool hasSubZero = false;
    };

    void readHeader(const QString& text);
    void handleDeleteLine(const QString& text);
    void handleCopyLine(const QString& text);
    void handleDataLine(const QString& text);
    QStringList splitFields(const QString& text) const;
    ObjectState& objectState(quint8 targetLine, quint16 index);
    void addObject(quint8 targetLine, quint16 index, int objectCode, const QString& name, int dataType,
                   const QString& description);
    void addSubZero(quint8 targetLine, quint16 index, const Row& row);
    SUBINDEX_DATA_T subIndexRecord(const Row& row, quint16 index, quint8 sub, int dataType,
                                   int objectCode) const;

    QChar separator = QLatin1Char(',');
    QStringList columns;
    // A data line shorter than this lacks a column the header names.
    qsizetype neededFields = 0;
    QList<SubAddress> deleteList;
    QList<SubAddress> copyList;
    // The data type an ARRAY line gave its object, for the subindex lines
    // behind it that name none; keyed like objects.
    quint32 typedObject = 0;
    int typedObjectDataType = 0;
    QHash<quint32, ObjectState> objects;
    int importedSubIndices = 0;
};
