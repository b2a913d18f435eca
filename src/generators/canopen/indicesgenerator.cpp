#include "generators/canopen/indicesgenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/helper.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QDebug>
#include <QRegularExpression>
#include <QTextStream>

namespace {

constexpr quint32 addressClaimPgn = 60928;
constexpr int symbolWidth = 25;

QString nameVariant(const QString& symbol, int number)
{
    return number == 0 ? symbol : symbol + QLatin1Char('_') + QString::number(number);
}

bool isStructured(int objectType)
{
    return objectType == CANopen::Array || objectType == CANopen::Record;
}

} // namespace

IndicesGenerator::IndicesGenerator(QObject* parent) : AbstractGenerator(parent) {}

void IndicesGenerator::setLineList(const QList<quint8>& lines)
{
    m_lines = lines;
}

bool IndicesGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/gen_indices.h").arg(m_outputDir));
}

AbstractGenerator::GeneratorStatus IndicesGenerator::start()
{
    return startWorker(QStringLiteral("gen_indices.h generator"));
}

QString IndicesGenerator::makeIdentifier(const QString& text)
{
    // Every character a C identifier can't hold becomes "_", and a run of
    // "_" shrinks to one.
    const QString upper = text.toUpper();
    QString identifier;
    identifier.reserve(upper.size());
    for (QChar c : upper) {
        const char16_t u = c.unicode();
        const bool valid = (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || (u >= '0' && u <= '9');
        if (valid)
            identifier += c;
        else if (!identifier.endsWith(QLatin1Char('_')))
            identifier += QLatin1Char('_');
    }
    return identifier;
}

void IndicesGenerator::doJob()
{
    beginJob();
    readGenerateML();
    m_usedNames.clear();
    m_writtenNames.clear();
    // The closing define is fixed; a sub-index of that name has to give way.
    m_writtenNames.insert(QStringLiteral("S_NUMBER_OF_ENTRIES"), QStringLiteral("\t0x0u"));
    const QList<quint8> lines = m_lines.isEmpty() ? QList<quint8>{m_line} : m_lines;
    if (openOutputFile(QStringLiteral("gen_indices.h"))) {
        writeHead();
        for (quint8 line : lines) {
            writeObjectDefines(line);
            writeCanIdDefines(line, ObjectDataBase::Receive);
            writeCanIdDefines(line, ObjectDataBase::Transmit);
            writePgnDefines(line, ObjectDataBase::Receive);
            writePgnDefines(line, ObjectDataBase::Transmit);
            writeAddressClaimBlock(line);
        }
        writeTail();
    }
    finishJob();
}

void IndicesGenerator::writeHead()
{
    QTextStream out(m_file);
    out << banner(QStringLiteral(" CO index/J1939 PGN/raw CAN-ID  defines for"), QStringLiteral(" */\n\n"));
    out << "/* protect against multiple inclusion of the file */\n";
    out << "#ifndef GEN_INDICES_H\n";
    out << "#define GEN_INDICES_H 1\n\n";
}

void IndicesGenerator::writeObjectDefines(quint8 line)
{
    QTextStream out(m_file);
    const QString prefix = linePrefix(line);
    const QList<quint16> indices = m_database->getIndexList(line, 0x1000, 0xFFFF);
    for (quint16 index : indices) {
        if (m_cancelRequested) {
            qDebug() << Q_FUNC_INFO << "Generation aborted";
            break;
        }
        INDEX_DATA_T object;
        m_database->getIndex(line, index, object);
        QString name = object.metadata ? object.metadata->value(QStringLiteral("objectdefine")) : QString();
        if (name.isEmpty())
            name = Helper::substituteVariables(object.name.isEmpty() ? INDEX_DATA_T().name : object.name,
                                               index, 0, line)
                       .toUpper();
        const QString symbol = prefix + makeIdentifier(QStringLiteral("I_") + name);
        writeDefine(out, QStringLiteral("#define "), symbol, QStringLiteral("\t0x%1u").arg(index, 0, 16));
        writePdoAlias(out, line, index, symbol);
        if (isStructured(object.objecttype))
            writeSubIndexDefines(out, line, index);
    }
}

void IndicesGenerator::writeSubIndexDefines(QTextStream& out, quint8 line, quint16 index)
{
    const QString prefix = linePrefix(line);
    const QList<quint8> subindices = m_database->getSubIndexList(line, index);
    for (quint8 subindex : subindices) {
        if (subindex == 0)
            continue;
        SUBINDEX_DATA_T sub;
        m_database->getSubIndex(line, index, subindex, sub);
        QString name = sub.metadata ? sub.metadata->value(QStringLiteral("subdefine")) : QString();
        if (name.isEmpty())
            name = Helper::substituteVariables(sub.name, index, subindex, line).toUpper();
        writeDefine(out, QStringLiteral("#define  "), prefix + makeIdentifier(QStringLiteral("S_") + name),
                    QStringLiteral("\t0x%1u").arg(subindex, 0, 16));
    }
}

// The communication objects of PDOs that a manager configures for other nodes
// are named "..._COMM_PAR_<n>_FOR_NODE_<node>_<device>"; the second name lets
// the application find the PDO by device and node.
void IndicesGenerator::writePdoAlias(QTextStream& out, quint8 line, quint16 index, const QString& symbol)
{
    static const QRegularExpression lineTag(QStringLiteral("^L[0-9]+_"));
    static const QRegularExpression pdoForNode(
        QStringLiteral("^I_([RT]PDO)_COMM_PAR_([0-9]+)_FOR_NODE_([0-9]+)_([A-Za-z0-9_]+)$"));
    if (!symbol.contains(QLatin1String("_FOR_NODE_")))
        return;
    QString plain = symbol;
    plain.remove(lineTag);
    const QRegularExpressionMatch match = pdoForNode.match(plain);
    if (!match.hasMatch())
        return;
    const quint16 firstIndex = match.captured(1) == QLatin1String("RPDO") ? 0x1400 : 0x1800;
    if (index <= firstIndex || index >= firstIndex + 512)
        return;
    const QString alias =
        QStringLiteral("%1_%2_%3_%4")
            .arg(match.captured(4), match.captured(1), match.captured(3), match.captured(2));
    writeDefine(out, QStringLiteral("#define "), linePrefix(line) + alias,
                QStringLiteral("\t%1u").arg(index - firstIndex + 1));
}

void IndicesGenerator::writeCanIdDefines(quint8 line, quint8 direction)
{
    QTextStream out(m_file);
    const QString prefix = linePrefix(line);
    const QList<quint32> ids = m_database->getCANIDList(line, direction);
    for (quint32 id : ids) {
        const QString name = m_database->getCANIDName(line, id, direction);
        writeDefine(out, QStringLiteral("#define "), prefix + makeIdentifier(QStringLiteral("ID_") + name),
                    QStringLiteral("\t%1u").arg(id));
        const QList<quint32> elements = m_database->getDataElementList(line, id, direction);
        for (quint32 element : elements) {
            const QString elementName = m_database->getDataElementName(line, id, direction, element);
            writeDefine(out, QStringLiteral("#define "),
                        prefix + makeIdentifier(QStringLiteral("S_") + elementName),
                        QStringLiteral("\t%1u").arg(element));
        }
    }
}

void IndicesGenerator::writePgnDefines(quint8 line, quint8 direction)
{
    QTextStream out(m_file);
    const QString prefix = linePrefix(line);
    const QHash<quint32, int> usage = spnUsage(line);
    const QList<quint32> pgns = m_database->getPGNList(line, direction, false);
    for (quint32 pgn : pgns) {
        const QString name = m_database->getPGNName(line, pgn, direction);
        writeDefine(out, QStringLiteral("#define "), prefix + makeIdentifier(QStringLiteral("PGN_") + name),
                    QStringLiteral("\t%1u /* 0x%2 */").arg(pgn).arg(pgn, 0, 16));
        const QList<quint32> spns = m_database->getSPNList(line, pgn, direction);
        for (quint32 spn : spns) {
            QString symbol = prefix + makeIdentifier(QStringLiteral("SPN_") +
                                                     m_database->getSPNName(line, pgn, direction, spn));
            // An SPN carried by several PGNs is named after the PGN it stands in here.
            if (usage.value(spn) > 1)
                symbol += QStringLiteral("_%1_%2").arg(pgn).arg(direction);
            writeDefine(out, QStringLiteral("#define "), symbol, QStringLiteral("\t%1u").arg(spn));
        }
    }
}

// The stack sends the address claim by itself; the application only needs its
// PGN and the SPN of the device NAME.
void IndicesGenerator::writeAddressClaimBlock(quint8 line)
{
    // A line of J1939 beside raw CAN gets no block here, deliberately.
    const int type = m_database->lineType(line);
    if ((type != Line::J1939 && type != Line::CANopenJ1939) ||
        !m_database->pgnExists(line, addressClaimPgn, ObjectDataBase::Transmit))
        return;
    QTextStream out(m_file);
    const QString prefix = linePrefix(line);
    writeDefine(out, QStringLiteral("#define "), prefix + QStringLiteral("PGN_ADDRESS_CLAIM"),
                QStringLiteral("\t%1u").arg(addressClaimPgn) +
                    QStringLiteral(" /* 0x%1 */").arg(0xEE00, 4, 16));
    const QList<quint32> spns = m_database->getSPNList(line, addressClaimPgn, ObjectDataBase::Transmit);
    if (!spns.isEmpty())
        writeDefine(out, QStringLiteral("#define "),
                    prefix + QStringLiteral("SPN_NAME_OF_CONTROLLER_APPLICATION"),
                    QStringLiteral("\t%1u").arg(spns.first()));
}

void IndicesGenerator::writeTail()
{
    QTextStream out(m_file);
    out << "#define  " << QStringLiteral("S_NUMBER_OF_ENTRIES").leftJustified(symbolWidth) << "\t0x0u"
        << "\n";
    out << "#endif /* GEN_INDICES_H */\n";
}

void IndicesGenerator::writeDefine(QTextStream& out, const QString& lead, const QString& symbol,
                                   const QString& value)
{
    const int uses = m_usedNames.value(symbol);
    for (int number = 0; number < uses; ++number) {
        if (m_writtenNames.value(nameVariant(symbol, number)) == value)
            return;
    }
    int number = uses;
    QString name = nameVariant(symbol, number);
    while (m_writtenNames.contains(name))
        name = nameVariant(symbol, ++number);
    m_usedNames.insert(symbol, number + 1);
    m_writtenNames.insert(name, value);
    out << lead << name.leftJustified(symbolWidth) << value << "\n";
}

QString IndicesGenerator::linePrefix(quint8 line) const
{
    return (m_multiLine || m_generateML) ? QStringLiteral("L%1_").arg(line) : QString();
}

QHash<quint32, int> IndicesGenerator::spnUsage(quint8 line)
{
    QHash<quint32, int> usage;
    for (quint8 direction : {ObjectDataBase::Receive, ObjectDataBase::Transmit}) {
        const QList<quint32> pgns = m_database->getPGNList(line, direction, false);
        for (quint32 pgn : pgns) {
            const QList<quint32> spns = m_database->getSPNList(line, pgn, direction);
            for (quint32 spn : spns)
                ++usage[spn];
        }
    }
    return usage;
}
