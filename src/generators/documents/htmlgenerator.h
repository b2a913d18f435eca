#pragma once

#include "generators/documents/htmlpagegenerator.h"

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
    void writeContents(QTextStream& out, const QList<ObjectDataBase::ObjectEntry>& entries);
    void writeObjectTables(QTextStream& out, const QList<ObjectDataBase::ObjectEntry>& entries);
    void writeObjectTable(QTextStream& out, const ObjectDataBase::ObjectEntry& object);
    void writeSubIndexTable(QTextStream& out, quint16 index, quint8 subindex);

    QString objectName(const ObjectDataBase::ObjectEntry& object) const;
};
