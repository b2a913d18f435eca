#pragma once

#include "database/objectdatabase.h"
#include "generators/documents/htmlpagegenerator.h"

// Writes the HTML page of the PGNs of a J1939 line (<base>.html, or
// <base>_j1939.html beside the CANopen page of a mixed line): a table of
// contents and one table per PGN with a table per SPN.
class J1939HTMLGenerator : public HtmlPageGenerator
{
    Q_OBJECT
public:
    explicit J1939HTMLGenerator(QObject* parent = nullptr);

protected:
    void writeBody(QTextStream& out) override;

private:
    using PgnKey = QPair<quint32, ObjectDataBase::Direction>;

    void writeTitleTable(QTextStream& out);
    void writeContents(QTextStream& out, const QList<PgnKey>& pgns);
    void writePgnTable(QTextStream& out, const PgnKey& key);
    void writeSpnTable(QTextStream& out, const ObjectDataBase::SPN& spn);

    // Both directions, by number; a number used in both stands twice, transmit first.
    QList<PgnKey> pgnsByNumber() const;
    static QString pgnLabel(quint32 number);
};
