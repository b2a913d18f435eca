#pragma once

#include "generators/documents/htmlpagegenerator.h"

struct INDEX_DATA_T;

// Writes <base>.html: the object dictionary of a CANopen line as one page,
// with the generation facts, the comment, a table of contents and one table
// per object and subindex.
class HTMLGenerator : public HtmlPageGenerator
{
    Q_OBJECT
public:
    explicit HTMLGenerator(QObject* parent = nullptr);

protected:
    void writeBody(QTextStream& out) override;

private:
    void writeGenerationTable(QTextStream& out);
    void writeCommentTable(QTextStream& out);
    void writeTitleTable(QTextStream& out);
    void writeContents(QTextStream& out, const QList<quint16>& indices);
    void writeObjectTables(QTextStream& out, const QList<quint16>& indices);
    void writeObjectTable(QTextStream& out, quint16 index);
    void writeSubIndexTable(QTextStream& out, quint16 index, quint8 subindex);

    QString objectName(quint16 index, const INDEX_DATA_T& object) const;
};
