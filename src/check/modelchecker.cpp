#include "check/modelchecker.h"

#include "canopenlib/cohelper.h"

#include <QCoreApplication>
#include <QDebug>
#include <QRegularExpression>
#include <QSettings>
#include <QSqlError>
#include <QSqlQuery>

namespace {

// Data types whose values the check reads as numbers: those of the value
// tables of the dictionary, unsigned ones possibly node-ID relative.
bool isUnsignedType(int dataType)
{
    return COHelper::valueGroup(quint16(dataType)) != CAN::NoGroup &&
           COHelper::signedness(quint16(dataType)) == CAN::UnsignedInteger;
}

bool isSignedType(int dataType)
{
    return COHelper::valueGroup(quint16(dataType)) != CAN::NoGroup &&
           COHelper::signedness(quint16(dataType)) == CAN::SignedInteger;
}

} // namespace

ModelChecker::ModelChecker(QObject* parent) : QObject(parent)
{
    // Receive PDOs 1 to 4, then transmit PDOs 1 to 4: the COB-IDs of the
    // pre-defined connection set, enabled or not, with or without RTR.
    const QList<QPair<quint16, QString>> bases = {
        {0x1400, QStringLiteral("200")}, {0x1401, QStringLiteral("300")}, {0x1402, QStringLiteral("400")},
        {0x1403, QStringLiteral("500")}, {0x1800, QStringLiteral("180")}, {0x1801, QStringLiteral("280")},
        {0x1802, QStringLiteral("380")}, {0x1803, QStringLiteral("480")}};
    for (const auto& base : bases) {
        QStringList accepted;
        for (const char* leading : {"", "00000", "80000", "40000", "c0000"})
            accepted << QStringLiteral("$nodeid+0x") + QLatin1String(leading) + base.second;
        m_predefinedCobIds.append({base.first, 1, accepted});
    }
}

int ModelChecker::checkCANopenLine(quint8 line, QSharedPointer<ObjectDataBase> database, bool& corrected)
{
    m_line = line;
    m_database = database;
    m_errorCount = 0;
    m_limitCheckEnabled = false;
    m_granularity = 8;
    m_corrected = false;

    loadLine();
    checkValueConversion();
    readLineSettings();
    checkStackCompatibility();

    checkLineSettings();
    checkMandatoryObjects();
    checkObjects();

    checkPdoMappings();
    checkPdoCommunication();
    checkPdoTimers();
    checkSrdos();
    checkMappingStyle();
    checkStaticPdoIndication();
    checkEmcyRouting();
    checkPredefinedConnectionSet();

    checkVariableNames();

    if (m_corrected)
        corrected = true;
    return m_errorCount;
}

bool ModelChecker::valueConvertible(int dataType, const QString& text)
{
    if (text.isEmpty() || dataType == 0 || dataType > CAN::Unsigned7)
        return true;
    bool ok = true;
    if (isUnsignedType(dataType)) {
        // Only the upper-case form counts as node-ID relative here.
        if (text.contains(QLatin1String("$NODEID")))
            return true;
        text.toULongLong(&ok, 0);
    } else if (isSignedType(dataType)) {
        text.toInt(&ok, 0);
    } else if (dataType == CAN::Real32) {
        text.toFloat(&ok);
    }
    return ok;
}

QString ModelChecker::markCobIdInvalid(const QString& cobId)
{
    static const QRegularExpression number(QStringLiteral("(\\$nodeid\\+)*(0x[0-9A-Fa-f]+)"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = number.match(cobId);
    if (!match.hasMatch())
        return cobId;
    const quint32 value = match.captured(2).toUInt(nullptr, 0);
    if (value & 0x80000000u)
        return cobId;
    return match.captured(1) + QStringLiteral("0x%1").arg(value | 0x80000000u, 8, 16, QLatin1Char('0'));
}

quint32 ModelChecker::signalBits(int dataType, quint16 bitSize)
{
    if (bitSize != 0)
        return bitSize;
    return COHelper::getDataLengthBits(static_cast<CAN::CANopenDataType>(dataType));
}

bool ModelChecker::BitRanges::add(quint32 start, quint32 end)
{
    bool overlaps = false;
    for (const auto& [usedStart, usedEnd] : std::as_const(m_ranges)) {
        if (start < usedEnd && end > usedStart) {
            overlaps = true;
            break;
        }
    }
    m_ranges.append({start, end});
    return overlaps;
}

void ModelChecker::reportError(const QString& text)
{
    ++m_errorCount;
    Q_EMIT newError(text);
}

void ModelChecker::report(const QString& text)
{
    Q_EMIT newError(text);
}

// The structure of the line in two statements whatever its size: the object
// records and the sub-index numbers. The store answers only one object at a
// time, which costs a statement per object; the sub-index records themselves
// come from its line cache.
void ModelChecker::loadLine()
{
    m_indices.clear();
    m_objects.clear();
    QSqlQuery query(m_database->database());
    query.setForwardOnly(true);
    const QString objects =
        QStringLiteral("select objectindex, name, objecttype from Objects%1 order by objectindex asc")
            .arg(m_line);
    if (!query.exec(objects)) {
        qDebug() << Q_FUNC_INFO << objects << query.lastError().text();
        return;
    }
    while (query.next()) {
        const quint16 index = quint16(query.value(0).toUInt());
        LineObject& object = m_objects[index];
        object.data.name = m_database->stringById(query.value(1).toInt());
        object.data.objecttype = query.value(2).toInt();
        m_indices << index;
    }
    const QString subIndices = QStringLiteral("select distinct objectindex, subindex from SubObjects%1 "
                                              "order by objectindex asc, subindex asc")
                                   .arg(m_line);
    if (!query.exec(subIndices)) {
        qDebug() << Q_FUNC_INFO << subIndices << query.lastError().text();
        return;
    }
    while (query.next()) {
        const auto owner = m_objects.find(quint16(query.value(0).toUInt()));
        if (owner != m_objects.end())
            owner->subs << quint8(query.value(1).toUInt());
    }
}

void ModelChecker::checkValueConversion()
{
    for (quint16 index : std::as_const(m_indices)) {
        QCoreApplication::processEvents();
        for (quint8 subindex : object(index).subs) {
            const SUBINDEX_DATA_T record = sub(index, subindex);
            if (!valueConvertible(record.datatype, record.defaultvalue))
                reportError(tr("<strong>Error: </strong>Value conversion failed with Object 0x%1-0x%2.")
                                .arg(hex4(index))
                                .arg(subindex));
        }
    }
}

void ModelChecker::readLineSettings()
{
    m_limitCheckEnabled = m_database->getGeneralSetting(QStringLiteral("limit_check")).toInt() == 1;

    // Description settings are per line by key name; the store reads them for its current line.
    const quint8 previousLine = m_database->descriptionLine();
    m_database->setDescriptionLine(m_line);
    m_granularity =
        quint8(m_database->getDescriptionSetting(QStringLiteral("Granularity")).toUInt(nullptr, 0));
    m_database->setDescriptionLine(previousLine);

    m_canFd = m_database->getGeneralSetting(QStringLiteral("canfd_supported")).toInt() == 1;
    m_maxPdoBits = m_canFd ? 512 : 64;
    m_bitwiseMappingSetting = m_database->getGeneralSetting(QStringLiteral("bitwise_mapping")).toInt();
    m_autoCorrectionDisabled = readAutoCorrectionDisabled();
    m_stackPath = m_database->getMiscSetting(QStringLiteral("costackpath"));
}

// A per-user switch, not a project setting: the same project may be checked
// with and without corrections by different people.
bool ModelChecker::readAutoCorrectionDisabled() const
{
    const QVariant appName = QCoreApplication::instance()
                                 ? QCoreApplication::instance()->property("AppNameWithVersion")
                                 : QVariant();
    QSettings settings(QCoreApplication::organizationName(), appName.toString());
    settings.beginGroup(QStringLiteral("General"));
    return settings.value(QStringLiteral("disableautocorrection"), false).toBool();
}

bool ModelChecker::objectExists(quint16 index) const
{
    return m_objects.contains(index);
}

bool ModelChecker::subExists(quint16 index, quint8 subindex) const
{
    const auto found = m_objects.constFind(index);
    return found != m_objects.constEnd() && found->subs.contains(subindex);
}

const ModelChecker::LineObject& ModelChecker::object(quint16 index) const
{
    static const LineObject missing;
    const auto found = m_objects.constFind(index);
    return found != m_objects.constEnd() ? *found : missing;
}

QList<quint16> ModelChecker::indicesIn(quint16 from, quint16 to) const
{
    QList<quint16> result;
    for (quint16 index : m_indices) {
        if (index >= from && index <= to)
            result << index;
    }
    return result;
}

// A missing sub-index reads as the default record, so the rules behind it still run.
SUBINDEX_DATA_T ModelChecker::sub(quint16 index, quint8 subindex) const
{
    SUBINDEX_DATA_T record;
    if (subExists(index, subindex))
        m_database->getSubIndex(m_line, index, subindex, record);
    return record;
}

quint64 ModelChecker::subValue(quint16 index, quint8 subindex) const
{
    return sub(index, subindex).defaultvalue.toULongLong(nullptr, 0);
}

void ModelChecker::writeSub(quint16 index, quint8 subindex, const SUBINDEX_DATA_T& record)
{
    m_database->addSubIndex(m_line, index, subindex, record);
    m_corrected = true;
}

ModelChecker::MappingEntry ModelChecker::mappingEntry(quint32 value)
{
    return {quint16(value >> 16), quint8((value >> 8) & 0xFF), quint8(value & 0xFF)};
}

QString ModelChecker::hex4(quint32 value)
{
    return QStringLiteral("%1").arg(value, 4, 16, QLatin1Char('0'));
}

QString ModelChecker::hex2(quint32 value)
{
    return QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0'));
}
