#pragma once

#include "database/objectdatabase.h"
#include "generators/documents/documentgenerator.h"

// Writes <base>_doc.txt of a J1939 line: one tab-separated line per PGN with
// its SPNs, transmitted PGNs first. The text documentation import reads this
// form back, so the labels and their order are a format.
class J1939TextDocGenerator : public DocumentGenerator
{
    Q_OBJECT
public:
    explicit J1939TextDocGenerator(QObject* parent = nullptr);

    QString outputFileName() const override;

protected:
    QString documentName() const override;
    QString checkedFileName() const override;
    void writeDocument(QTextStream& out) override;

private:
    void writeTitle(QTextStream& out);
    void writePgn(QTextStream& out, quint32 number, ObjectDataBase::Direction direction);
    void writeSpns(QTextStream& out, quint32 number, ObjectDataBase::Direction direction);
};
