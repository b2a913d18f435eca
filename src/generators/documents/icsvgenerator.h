#pragma once

#include "generators/documents/documentgenerator.h"

struct INDEX_DATA_T;

// Writes <base>.icsv: the object dictionary of a line in the table form that
// the CSV import reads back, with a head row per structured object and one
// row per subindex. Its column line names the columns, so a table without
// descriptions is as importable as one with them.
class ICSVGenerator : public DocumentGenerator
{
    Q_OBJECT
public:
    explicit ICSVGenerator(bool withDescription, QObject* parent = nullptr);

    QString outputFileName() const override;

protected:
    QString documentName() const override;
    QString checkedFileName() const override;
    void writeDocument(QTextStream& out) override;

private:
    void writeHead(QTextStream& out);
    void writeObjectHeadRow(QTextStream& out, quint16 index, const INDEX_DATA_T& object);
    void writeSubIndexRows(QTextStream& out, quint16 index, const INDEX_DATA_T& object);
    // The description in one cell: each line end becomes the marker that the import turns back.
    static QString descriptionCell(const QString& text);

    bool m_withDescription;
};
