#include "check/modelchecker.h"

#include "canopenlib/cohelper.h"

#include <QMap>
#include <QRegularExpression>

namespace {

// Sub-index 0 values from here on are special markers, not entry counts.
constexpr quint32 firstSpecialEntryCount = 65;

constexpr quint16 rpdoMappingOffset = 0x200;
constexpr quint16 srdoMappingOffset = 0x80;
// EMCY routing looks for its producer and consumer on the lines below this one.
constexpr quint8 emcyRoutingLineEnd = 250;

bool isTransmitMapping(quint16 mappingIndex)
{
    return mappingIndex >= 0x1800;
}

} // namespace

void ModelChecker::checkPdoMappings()
{
    for (quint16 index : indicesIn(0x1600, 0x17FF) + indicesIn(0x1A00, 0x1BFF))
        checkPdoMapping(index);
}

void ModelChecker::checkPdoMapping(quint16 index)
{
    const quint16 communication = index - rpdoMappingOffset;
    const LineObject& mapping = object(index);
    if (!objectExists(communication))
        reportError(
            tr("<strong>Error: </strong>Object 0x%1: The corresponding PDO communication parameter object "
               "0x%2 does not exist.")
                .arg(hex4(index), hex4(communication)));
    if (subValue(index, 0) < firstSpecialEntryCount && mapping.subs.size() < 2)
        reportError(
            tr("<strong>Error: </strong>Object 0x%1 of line %2: The PDO mapping table does not contain any "
               "mapped object.")
                .arg(hex4(index))
                .arg(m_line));

    QString access0;
    quint32 entries = 0;
    quint32 pdoBits = 0;
    for (quint8 subindex : mapping.subs) {
        const SUBINDEX_DATA_T record = sub(index, subindex);
        if (subindex == 0) {
            access0 = record.accesstype;
            entries = record.defaultvalue.toUInt(nullptr, 0) & 0xFF;
            if (access0 == QLatin1String("rw"))
                m_dynamicallyMapped = true;
            continue;
        }
        if (record.accesstype != access0)
            reportError(
                tr("<strong>Error: </strong>Object 0x%1: All subindices of a PDO mapping object must have "
                   "the same access type. (const for static mapping or rw for dynamic mapping")
                    .arg(hex4(index)));
        const MappingEntry entry = mappingEntry(record.defaultvalue.toUInt(nullptr, 0));
        const bool active = subindex <= entries;
        if (active)
            pdoBits += entry.length;
        if (entry.length >= 1 && entry.length <= 7)
            m_bitwiseMapped = true;
        if (active && entry.index == 0) {
            reportError(
                tr("<strong>Error: </strong>Object 0x%1:%2 is an active mapping entry but maps no object "
                   "(empty entry).")
                    .arg(hex4(index))
                    .arg(subindex));
            continue;
        }
        // Indices below 8 are data type objects: dummy entries that fill a gap.
        if (entry.index < 8)
            continue;
        checkMappedObject(index, entry, isTransmitMapping(index));
    }

    if (pdoBits > m_maxPdoBits)
        reportError(
            tr("<strong>Error: </strong>Object 0x%1: Size of PDO exceeds the limit. ").arg(hex4(index)));
    const int mappingSubs = mapping.subs.size() - (subExists(index, 0) ? 1 : 0);
    if (entries > quint32(mappingSubs) && entries < firstSpecialEntryCount)
        reportError(
            tr("<strong>Error: </strong>Object 0x%1:  Invalid number of mapping entries.").arg(hex4(index)));
    disableEmptyTpdo(index, access0, entries);
}

void ModelChecker::checkMappedObject(quint16 index, const MappingEntry& entry, bool transmit)
{
    const QString mapped = QStringLiteral("0x%1:%2").arg(hex4(entry.index), hex2(entry.subindex));
    const SUBINDEX_DATA_T record = sub(entry.index, entry.subindex);
    if (!subExists(entry.index, entry.subindex)) {
        reportError(tr("<strong>Error: </strong>Object 0x%1: The mapped object %2 does not exist.")
                        .arg(hex4(index), mapped));
    } else {
        if (record.pdomapping.isEqualToType(PDOMapping::NotMappable))
            reportError(tr("<strong>Error: </strong>Object 0x%1: PDO mapping is not allowed for object %2.")
                            .arg(hex4(index), mapped));
        const quint8 typeBits = COHelper::getDataLengthBits(CAN::CANopenDataType(record.datatype));
        if (entry.length < typeBits)
            report(tr("Warning: Object 0x%1: The size of the mapped object %2 is too small.")
                       .arg(hex4(index), mapped));
        else if (entry.length > typeBits)
            reportError(
                tr("<strong>Error: </strong>Object 0x%1: The size of the mapped object %2 is too large.")
                    .arg(hex4(index), mapped));
    }
    const QString& access = record.accesstype;
    if (transmit && (access == QLatin1String("wo") || access == QLatin1String("rww")))
        reportError(
            tr("<strong>Error: </strong>Object 0x%1: The access right of the mapped object %2 does not fit "
               "for a TPDO.")
                .arg(hex4(index), mapped));
    if (!transmit &&
        (access == QLatin1String("ro") || access == QLatin1String("const") || access == QLatin1String("rwr")))
        reportError(
            tr("<strong>Error: </strong>Object 0x%1: The access right of the mapped object %2 does not fit "
               "for an RPDO.")
                .arg(hex4(index), mapped));
}

// The stack would send the first four TPDOs of a dynamic table that nobody
// filled; marking their COB-ID invalid keeps them quiet until the application maps them.
void ModelChecker::disableEmptyTpdo(quint16 mappingIndex, const QString& access0, quint32 entries)
{
    if (mappingIndex < 0x1A00 || mappingIndex > 0x1A03 || access0 != QLatin1String("rw") || entries != 0)
        return;
    const quint16 communication = mappingIndex - rpdoMappingOffset;
    SUBINDEX_DATA_T cobId = sub(communication, 1);
    const QString disabled = markCobIdInvalid(cobId.defaultvalue);
    if (disabled == cobId.defaultvalue || m_autoCorrectionDisabled)
        return;
    report(tr("<i>Corrected: Object 0x%1</i>: The COB-ID of this PDO has been disabled (%2), because it does "
              "not "
              "contain active mapping entries.")
               .arg(hex4(communication), disabled));
    cobId.defaultvalue = disabled;
    writeSub(communication, 1, cobId);
}

void ModelChecker::checkPdoCommunication()
{
    static const QRegularExpression nodeIdPrefix(QStringLiteral("\\$nodeid\\+"),
                                                 QRegularExpression::CaseInsensitiveOption);
    QMap<QString, quint16> cobIdUsers;
    for (quint16 index : indicesIn(0x1400, 0x15FF) + indicesIn(0x1800, 0x19FF)) {
        const quint16 mapping = index + rpdoMappingOffset;
        const bool mappingExists = objectExists(mapping);
        if (!mappingExists)
            reportError(
                tr("<strong>Error: </strong>Object 0x%1: The corresponding PDO mapping object 0x%2 does not "
                   "exist.")
                    .arg(hex4(index), hex4(mapping)));
        // A network configurator takes COB-ID and transmission type from the EDS.
        if (!defaultWrittenToEds(sub(index, 1)))
            report(
                tr("<strong>Hint: </strong>Subindex 1 of 0x%2 should have its default value in the EDS file.")
                    .arg(hex4(index)));
        if (!defaultWrittenToEds(sub(index, 2)))
            report(
                tr("<strong>Hint: </strong>Subindex 2 of 0x%2 should have its default value in the EDS file.")
                    .arg(hex4(index)));

        QString cobIdText = sub(index, 1).defaultvalue.trimmed();
        cobIdText.remove(nodeIdPrefix);
        bool ok = false;
        const quint32 cobId = cobIdText.trimmed().toUInt(&ok, 0);
        if (!ok || (cobId & 0x80000000u))
            continue;
        if (mappingExists && subValue(mapping, 0) == 0)
            reportError(
                tr("<strong>Error: </strong>Object 0x%1: PDO is enabled but its mapping table (0x%2) is "
                   "empty (sub 0 = 0).")
                    .arg(hex4(index), hex4(mapping)));
        const QString key =
            QStringLiteral("%1:0x%2").arg(mappingExists ? 1 : 0).arg(cobId & 0x1FFFFFFFu, 0, 16);
        const auto firstUser = cobIdUsers.constFind(key);
        if (firstUser != cobIdUsers.constEnd())
            reportError(
                tr("<strong>Error: </strong>Object 0x%1: COB-ID '%2' is already used by PDO object 0x%3.")
                    .arg(hex4(index), key, hex4(*firstUser)));
        else
            cobIdUsers.insert(key, index);
    }
}

void ModelChecker::checkPdoTimers()
{
    for (quint16 index : indicesIn(0x1800, 0x19FF)) {
        if (!subExists(index, 3) || !subExists(index, 5))
            continue;
        // The inhibit time counts in 100 microseconds, the event timer in milliseconds.
        const quint64 inhibitTime = subValue(index, 3);
        const quint64 eventTimer = subValue(index, 5);
        if (eventTimer != 0 && inhibitTime / 10 >= eventTimer)
            report(tr("<strong>Warning: </strong>Subindex 3 and 5 of 0x%1: Event timer value should be "
                      "greater than "
                      "inhibit time value.")
                       .arg(hex4(index)));
    }
}

void ModelChecker::checkSrdos()
{
    for (quint16 index : indicesIn(0x1301, 0x1340)) {
        if (!objectExists(index + srdoMappingOffset))
            reportError(
                tr("<strong>Error: </strong>Object 0x%1: The corresponding SRDO mapping object 0x%2 does not "
                   "exist.")
                    .arg(hex4(index), hex4(index + srdoMappingOffset)));
    }
    for (quint16 index : indicesIn(0x1381, 0x13BF)) {
        for (quint8 subindex : object(index).subs) {
            if (subindex == 0)
                continue;
            const MappingEntry entry = mappingEntry(quint32(subValue(index, subindex)));
            const QString mapped = QStringLiteral("0x%1:%2").arg(hex4(entry.index), hex2(entry.subindex));
            const SUBINDEX_DATA_T record = sub(entry.index, entry.subindex);
            if (!subExists(entry.index, entry.subindex))
                reportError(
                    tr("<strong>Error: </strong>Object 0x%1: The object %2 mapped into an SRDO does not "
                       "exist.")
                        .arg(hex4(index), mapped));
            if (record.implementation != CANopen::ApplicationVariable)
                reportError(
                    tr("<strong>Error: </strong>Object 0x%1: The object %2 mapped into an SRDO must be an "
                       "application variable.")
                        .arg(hex4(index), mapped));
            if (record.pdomapping.isEqualToType(PDOMapping::NotMappable))
                reportError(tr("<strong>Error: </strong>Object 0x%1: The PDO mapping must be enabled for "
                               "object %2 to "
                               "use it in an SRDO.")
                                .arg(hex4(index), mapped));
        }
    }
}

void ModelChecker::checkMappingStyle()
{
    if (m_bitwiseMapped) {
        if (m_granularity == 8)
            report(tr(
                "<strong>Warning: </strong>Bitwise mapping cannot be used with a granularity of 8. Correct "
                "device description settings or PDO mapping."));
        if (m_bitwiseMappingSetting == 0)
            reportError(
                tr("<strong>Error: </strong>Bitwise mapping not enabled in general settings. Correct general "
                   "settings or PDO mapping."));
    }
    // Shown as an error, yet generation may go on: the device description is what suffers.
    if (m_dynamicallyMapped && m_granularity == 0)
        report(tr(
            "<strong>Error: </strong>Dynamic mapping cannot be used with a granularity of 0. Correct device "
            "description settings or PDO mapping."));
}

void ModelChecker::checkStaticPdoIndication()
{
    if (m_database->getGeneralSetting(QStringLiteral("use_core_headers")) == QLatin1String("V4"))
        return;
    const bool transmit = m_database->getGeneralSetting(QStringLiteral("fct_pdo")).trimmed().isEmpty();
    const bool receive = m_database->getGeneralSetting(QStringLiteral("fct_pdo_receive")).trimmed().isEmpty();
    if (transmit != receive)
        reportError(
            tr("<strong>Error: </strong>Both static RPDO and TPDO event indication functions have to be "
               "defined."));
}

// Routing needs a producer and a consumer somewhere in the device; the fault
// is one of the project, so it is told once however many lines there are.
void ModelChecker::checkEmcyRouting()
{
    if (m_database->getGeneralSetting(QStringLiteral("emcy_routing")).toInt() < 1)
        return;
    bool producer = false;
    bool consumer = false;
    for (quint8 line : m_database->getNodeList()) {
        // The search deliberately ends at 250, not at the first internal line.
        if (line >= emcyRoutingLineEnd)
            continue;
        producer |= m_database->indexExists(line, 0x1014);
        consumer |= m_database->indexExists(line, 0x1028);
    }
    if ((producer && consumer) || m_emcyRoutingReported)
        return;
    reportError(
        tr("<strong>Error: </strong>Both EMCY producer objects and EMCY consumer objects must be present to "
           "use EMCY routing."));
    m_emcyRoutingReported = true;
}

void ModelChecker::checkPredefinedConnectionSet()
{
    if (m_database->getGeneralSettingForLine(QStringLiteral("overwrite_predef"), m_line).toInt() != 0)
        return;
    QList<quint16> deviating;
    for (const PredefinedCobId& predefined : std::as_const(m_predefinedCobIds)) {
        if (!objectExists(predefined.index))
            continue;
        if (!predefined.accepted.contains(sub(predefined.index, predefined.subindex).defaultvalue.toLower()))
            deviating << predefined.index;
    }
    for (quint16 index : std::as_const(deviating))
        report(tr("Warning: Object 0x%1-0x01: The COB-ID for this PDO does not follow the pre-defined "
                  "connection set.")
                   .arg(hex4(index)));
    if (!deviating.isEmpty())
        report(tr("Enable CANopen Stack Settings -> Overwrite pre-defined connection set and call "
                  "userOverwriteCobIdSettings() to use these COB-ID settings.\n\n"));
}
