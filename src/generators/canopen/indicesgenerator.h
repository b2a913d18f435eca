#pragma once

#include "generators/abstractgenerator.h"

#include <QHash>
#include <QList>
#include <QString>

class QTextStream;

// Writes gen_indices.h: a symbolic name for every object index, sub-index,
// PGN, SPN and raw CAN identifier, so that application code holds no bare numbers.
class IndicesGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit IndicesGenerator(QObject* parent = nullptr);

    // The lines to cover, in this order; without a list the generator's own line.
    void setLineList(const QList<quint8>& lines);

    bool canWrite() override;
    GeneratorStatus start() override;

    // Upper case, every character outside [A-Za-z0-9_] becomes "_", runs of "_" shrink to one.
    static QString makeIdentifier(const QString& text);

protected Q_SLOTS:
    void doJob() override;

private:
    void writeHead();
    void writeObjectDefines(quint8 line);
    void writeCanIdDefines(quint8 line, quint8 direction);
    void writePgnDefines(quint8 line, quint8 direction);
    void writeAddressClaimBlock(quint8 line);
    void writeTail();

    void writeSubIndexDefines(QTextStream& out, quint8 line, quint16 index);
    void writePdoAlias(QTextStream& out, quint8 line, quint16 index, const QString& symbol);
    // Writes "#define <symbol> <value>" unless the same define stands already;
    // a symbol that is taken by another value gets "_1", "_2" and so on.
    void writeDefine(QTextStream& out, const QString& lead, const QString& symbol, const QString& value);
    QString linePrefix(quint8 line) const;
    // How many PGNs of the line carry each SPN number, in either direction.
    QHash<quint32, int> spnUsage(quint8 line);

    QList<quint8> m_lines;
    // Symbol to number of uses, so that each written symbol is unique.
    QHash<QString, int> m_usedNames;
    // Written symbols with their values; a define is never repeated.
    QHash<QString, QString> m_writtenNames;
};
