#pragma once

#include "database/objectdatabase.h"
#include "generators/documents/documentgenerator.h"

// Writes <base>_doc.txt of a raw CAN line: the transmitted, then the
// received CAN identifiers with their timing and signals.
class RawCANTextDocGenerator : public DocumentGenerator
{
    Q_OBJECT
public:
    explicit RawCANTextDocGenerator(QObject* parent = nullptr);

    QString outputFileName() const override;

protected:
    QString documentName() const override;
    void writeDocument(QTextStream& out) override;

private:
    void writeTitle(QTextStream& out);
    void writeDirectionHead(QTextStream& out, ObjectDataBase::Direction direction);
    void writeMessage(QTextStream& out, quint32 id, ObjectDataBase::Direction direction);
    void writeSignals(QTextStream& out, quint32 id, ObjectDataBase::Direction direction);
};
