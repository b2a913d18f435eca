#pragma once

#include "generators/documents/documentgenerator.h"

// Writes <base>.csv: every subindex of a line as one row of a table for
// people and spreadsheets, the three index areas set apart by a blank row.
class CSVGenerator : public DocumentGenerator
{
    Q_OBJECT
public:
    explicit CSVGenerator(QObject* parent = nullptr);

    QString outputFileName() const override;

protected:
    QString documentName() const override;
    QString checkedFileName() const override;
    void writeDocument(QTextStream& out) override;

private:
    void writeColumnLine(QTextStream& out);
    void writeObjectRows(QTextStream& out, quint16 index, const INDEX_DATA_T& object);
};
