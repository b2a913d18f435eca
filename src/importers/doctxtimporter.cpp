#include "importers/doctxtimporter.h"

#include "canopenlib/cohelper.h"

#include <QDebug>
#include <QHash>
#include <QStringList>

namespace {

// The pieces of a documentation line are tab-separated pairs of a label such
// as "Name:" and its value; description and SPN lines open with a tab.
QHash<QString, QString> labelledValues(const QString& text)
{
    const QStringList fields = text.split(QLatin1Char('\t'));
    QHash<QString, QString> values;
    for (qsizetype i = fields.value(0).isEmpty() ? 1 : 0; i + 1 < fields.size(); i += 2) {
        if (!values.contains(fields.at(i)))
            values.insert(fields.at(i), fields.at(i + 1));
    }
    return values;
}

// A decimal number up to the limit; absent text gives the fallback.
bool readDecimal(const QHash<QString, QString>& values, const QString& label, quint32 limit, quint32 fallback,
                 quint32& out)
{
    if (!values.contains(label)) {
        out = fallback;
        return true;
    }
    bool ok = false;
    out = values.value(label).trimmed().toUInt(&ok, 10);
    return ok && out <= limit;
}

} // namespace

DOCTXTImporter::DOCTXTImporter(QObject* parent) : BaseDataImporter(parent) {}

void DOCTXTImporter::doImport()
{
    running = true;
    database->setWriteNotification(false);
    database->setUpdatesBlocked(true);

    QStringList lines;
    if (readSourceLines(lines)) {
        for (const QString& text : std::as_const(lines)) {
            if (text.startsWith(QLatin1String("PGN:")))
                readPgnLine(text);
            else if (text.startsWith(QLatin1String("\tDescription:")))
                readDescriptionLine(text);
            else if (text.startsWith(QLatin1String("\tSPN:")))
                readSpnLine(text);
        }
        // The SPN counts of the PGNs follow what arrived, and a cache of the
        // SPNs from before the import must not hide the new ones.
        database->repairMappingCounts();
    }

    if (importedPgns == 0)
        reportNothingImported();
    database->setUpdatesBlocked(false);
    finishImport();
}

// "PGN:\t0xfeca/65226\tName:\t...\tDirection:\tTX\tCycle Time (ms):\t100\tPriority:\t6",
// optionally followed by "\tInhibit Time (ms):\t50".
void DOCTXTImporter::readPgnLine(const QString& text)
{
    pgnValid = false;
    const QHash<QString, QString> values = labelledValues(text);
    bool numberOk = false;
    const quint64 number = COHelper::parseUnsigned(
        values.value(QStringLiteral("PGN:")).section(QLatin1Char('/'), 0, 0), &numberOk);
    const QString direction = values.value(QStringLiteral("Direction:")).trimmed();
    quint32 cycleTime = 0;
    quint32 priority = 0;
    quint32 inhibitTime = 0;
    if (!numberOk || number < lowIndex || number > highIndex ||
        (direction != QLatin1String("TX") && direction != QLatin1String("RX")) ||
        !values.contains(QStringLiteral("Cycle Time (ms):")) ||
        !values.contains(QStringLiteral("Priority:")) ||
        !readDecimal(values, QStringLiteral("Cycle Time (ms):"), 0xFFFF, 0, cycleTime) ||
        !readDecimal(values, QStringLiteral("Priority:"), 0xFF, 0, priority) ||
        !readDecimal(values, QStringLiteral("Inhibit Time (ms):"), 0xFFFF, 0, inhibitTime)) {
        qDebug() << "invalid pgn: " << text.left(200);
        return;
    }

    pgn = ObjectDataBase::PGN();
    pgn.number = quint32(number);
    pgn.name = values.value(QStringLiteral("Name:"));
    pgn.direction = direction == QLatin1String("TX") ? ObjectDataBase::Transmit : ObjectDataBase::Receive;
    pgn.cycletime_ms = quint16(cycleTime);
    pgn.priority = quint8(priority);
    pgn.inhibittime_ms = quint16(inhibitTime);
    pgnValid = database->addPGN(line, pgn.number, pgn);
    if (pgnValid)
        ++importedPgns;
    spnPosition = 0;
}

void DOCTXTImporter::readDescriptionLine(const QString& text)
{
    if (!pgnValid)
        return;
    pgn.desc = labelledValues(text).value(QStringLiteral("Description:"));
    database->addPGN(line, pgn.number, pgn);
}

// "\tSPN:\t190\tName:\t...\tData type:\tUNSIGNED16\t", then "Size:\t16\t"
// and "Variable:\tname\t" when the SPN has them.
void DOCTXTImporter::readSpnLine(const QString& text)
{
    if (!pgnValid)
        return;
    const QHash<QString, QString> values = labelledValues(text);
    quint32 spnNumber = 0;
    quint32 bitSize = 0;
    if (!values.contains(QStringLiteral("SPN:")) ||
        !readDecimal(values, QStringLiteral("SPN:"), 0xFFFFFFFF, 0, spnNumber) ||
        !readDecimal(values, QStringLiteral("Size:"), 0xFFFF, 0, bitSize))
        return;

    ObjectDataBase::SPN spn;
    spn.pos = spnPosition;
    spn.name = values.value(QStringLiteral("Name:"));
    spn.datatype = COHelper::mapDataTypeString(values.value(QStringLiteral("Data type:")));
    spn.bitsize = quint16(bitSize);
    spn.pgnnumber = pgn.number;
    spn.spnnumber = spnNumber;
    spn.direction = pgn.direction;
    // The documentation names the variable of an SPN that the application
    // keeps itself; one without it is kept by the stack.
    spn.varname = values.value(QStringLiteral("Variable:"));
    spn.implementation = spn.varname.isEmpty() ? 0 : 2;
    if (database->addSPN(line, pgn.number, pgn.direction, spnNumber, spn))
        ++spnPosition;
}
