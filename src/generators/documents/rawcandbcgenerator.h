#pragma once

#include "generators/abstractgenerator.h"

#include <QString>

class QTextStream;

// Writes "<project>.dbc" for a raw CAN line: its CAN identifiers and data
// elements as DBC messages and signals, written as text directly.
//
// Sections in file order:
//   header (version, new symbols, bit timing, nodes)
//   messages with their signals, sent ones first
//   attribute definitions and defaults
//   comments
//   attribute values
class RawCANDBCGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit RawCANDBCGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

protected Q_SLOTS:
    void doJob() override;

private:
    void writeHeader(QTextStream& out);
    void writeMessages(QTextStream& out, quint8 direction);
    void writeAttributeDefinitions(QTextStream& out);
    void writeComments(QTextStream& out, quint8 direction);
    void writeAttributeValues(QTextStream& out, quint8 direction);
};
