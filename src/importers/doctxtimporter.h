#pragma once

#include "database/objectdatabase.h"
#include "importers/basedataimporter.h"

#include <QString>

// Builds the PGNs and SPNs of a J1939 line from its text documentation, the
// "_doc.txt" file the tool writes itself. Each PGN line opens a PGN; the
// description and SPN lines behind it belong to that PGN. The index range
// stands for the PGN numbers here.
class DOCTXTImporter : public BaseDataImporter
{
    Q_OBJECT
public:
    explicit DOCTXTImporter(QObject* parent = nullptr);

public Q_SLOTS:
    void doImport() override;

private:
    void readPgnLine(const QString& text);
    void readDescriptionLine(const QString& text);
    void readSpnLine(const QString& text);

    // The PGN in progress; the lines of an invalid one are dropped until the next PGN.
    ObjectDataBase::PGN pgn;
    bool pgnValid = false;
    quint32 spnPosition = 0;
    int importedPgns = 0;
};
