#pragma once

#include "generators/documents/documentgenerator.h"

// Writes <base>_doc.txt: the object dictionary of a CANopen line as plain
// text, one block per object with its subindices indented below.
class TextDocGenerator : public DocumentGenerator
{
    Q_OBJECT
public:
    explicit TextDocGenerator(QObject* parent = nullptr);

    QString outputFileName() const override;

protected:
    QString documentName() const override;
    QString checkedFileName() const override;
    void writeDocument(QTextStream& out) override;

private:
    void writeTitle(QTextStream& out);
    void writeObject(QTextStream& out, quint16 index);
    void writeSubIndices(QTextStream& out, quint16 index);
};
