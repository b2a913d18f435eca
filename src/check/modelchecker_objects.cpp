#include "check/modelchecker.h"

#include "canopenlib/canopentypes.h"

#include <QCoreApplication>
#include <QMap>

namespace {

// An upper limit of this value stands for "no upper limit" in older projects.
constexpr qint64 unlimitedUpperLimit = 0x7FFFFF;

bool isPdoMappingObject(quint16 index)
{
    return (index >= 0x1600 && index <= 0x17FF) || (index >= 0x1A00 && index <= 0x1BFF);
}

} // namespace

// Entry N of a per-line list belongs to line N; a list too short for the line gives nothing.
QString ModelChecker::lineEntry(const QString& key) const
{
    const QString value = m_database->getGeneralSetting(key);
    if (value.isEmpty())
        return QString();
    return value.split(QLatin1Char(',')).value(m_line);
}

void ModelChecker::checkLineSettings()
{
    const QString nodeIdFunction = lineEntry(QStringLiteral("co_node_id_fct"));
    if (lineEntry(QStringLiteral("co_node_id")).isEmpty() && nodeIdFunction.isEmpty())
        reportError(
            tr("<strong>Error: </strong>CANopen basic Stack Settings: No Node-Id specified for line %1: "
               "Specify a number between 1 and 127, or 255 for LSS or a function name like e.g. "
               "readDipSwitch in the line below.")
                .arg(m_line));
    if (nodeIdFunction.contains(QLatin1Char('(')))
        reportError(
            tr("<strong>Error: </strong>CANopen basic Stack Settings: The name of the NodeId function may "
               "not include a (."));
    if (nodeIdFunction.contains(QLatin1Char(')')))
        reportError(
            tr("<strong>Error: </strong>CANopen basic Stack Settings: The name of the NodeId function may "
               "not include a )."));

    bool ok = false;
    lineEntry(QStringLiteral("receivebuffersize")).toUInt(&ok, 10);
    if (!ok)
        reportError(tr("<strong>Error: </strong>Common Settings: CAN receive buffer size must be specified "
                       "individually for each line."));
    lineEntry(QStringLiteral("transmitbuffersize")).toUInt(&ok, 10);
    if (!ok)
        reportError(tr("<strong>Error: </strong>Common Settings: CAN transmit buffer size must be specified "
                       "individually for each line."));

    if (m_line != 0 && lineEntry(QStringLiteral("nmtmaster")).toUInt(nullptr, 0) == 2 &&
        !m_database->getGeneralSetting(QStringLiteral("co_ml_ms")).contains(QLatin1Char(',')))
        reportError(tr("<strong>Error: </strong>General Settings: The ML master/slave settings size must be "
                       "specified individually for each line. (e.g 0,1)"));
}

void ModelChecker::checkMandatoryObjects()
{
    const int deviceTypeCode = object(0x1000).data.objecttype;
    if (m_canFd && deviceTypeCode != CANopen::Array)
        reportError(tr("<strong>Error: </strong>Object 0x%1 (Device Type) must be an ARRAY according to the "
                       "CANopen FD specification.")
                        .arg(hex4(0x1000)));
    if (!m_canFd && deviceTypeCode != CANopen::Var)
        reportError(
            tr("<strong>Error: </strong>Object 0x%1 (Device Type) must be a VARIABLE according to the "
               "CANopen specification.")
                .arg(hex4(0x1000)));
    if (!objectExists(0x1000))
        reportError(
            tr("<strong>Error: </strong>Object 0x%1 (Device Type) does not exist, but it is mandatory "
               "according to CANopen specification.")
                .arg(hex4(0x1000)));
    if (!objectExists(0x1001))
        reportError(
            tr("<strong>Error: </strong>Object 0x%1 (Error Register) does not exist, but it is mandatory "
               "according to CANopen specification.")
                .arg(hex4(0x1001)));
    if (!objectExists(0x1017) && !objectExists(0x100C))
        reportError(
            tr("<strong>Error: </strong>Object 0x%1 (Producer Heartbeat) and 0x100C (Guard Time) do not "
               "exist, but one of them is mandatory.")
                .arg(hex4(0x1017)));

    checkSubIndexGaps();

    if ((subValue(0x1005, 0) & (quint64(1) << 30)) && !objectExists(0x1006))
        reportError(
            tr("<strong>Error: </strong>Object 0x1006 must be present, if SYNC producer bit is set in "
               "object 0x1005."));
    if (m_canFd &&
        m_database->getGeneralSettingForLine(QStringLiteral("usdo_server_enabled"), m_line) ==
            QLatin1String("1") &&
        m_database->getGeneralSettingForLine(QStringLiteral("usdo_server_cnt"), m_line).toUInt(nullptr, 0) ==
            0)
        reportError(tr("<strong>Error: </strong>Number of USDO server connections must be at least 1."));

    checkStoreRestore();

    if (m_database->getGeneralSettingForLine(QStringLiteral("nmtmaster"), m_line).toUInt(nullptr, 0) == 1 &&
        !objectExists(0x102A))
        report(tr("Warning: Object 0x%1: The object 0x102A (NMT inhibit time) is highly recommended for "
                  "masters. "
                  "It may be added via 'Add Communication Service'.")
                   .arg(hex4(0x102A)));

    checkIdentity();

    if (objectExists(0x1003) && !objectExists(0x1014))
        reportError(
            tr("<strong>Error: </strong>Object 0x%1: This object can only be used, if object 0x1014 exists "
               "as well.")
                .arg(hex4(0x1003)));
    checkEmcyConsumerEntries();
}

// Objects whose sub-indices are walked by the stack as a dense list.
void ModelChecker::checkSubIndexGaps()
{
    if (objectExists(0x1F81)) {
        const QString maxSlaves =
            m_database->getGeneralSetting(QStringLiteral("max_slave_assignment")).trimmed();
        const quint32 assignments = maxSlaves.toUInt(nullptr, 10);
        const int entries = object(0x1F81).subs.size() - (subExists(0x1F81, 0) ? 1 : 0);
        if (assignments != 0 && int(assignments & 0xFFFF) > entries)
            reportError(
                tr("<strong>Error: </strong>Object 0x1f81: Value of 'max slave Assigment count' may not "
                   "exceed number of subindices of object 0x1f81."));
    }
    for (quint16 index : {0x1016, 0x1028, 0x1F81}) {
        if (!objectExists(index))
            continue;
        QList<quint8> subs = object(index).subs;
        subs.removeAll(0);
        if (subs.isEmpty())
            reportError(
                tr("<strong>Error: </strong>Object 0x%1 does not contain any sub-indices.").arg(hex4(index)));
        else if (subs.last() != subs.size())
            reportError(tr("<strong>Error: </strong>Object 0x%1 may not have gaps.").arg(hex4(index)));
    }
}

void ModelChecker::checkStoreRestore()
{
    const bool byApplication =
        m_database->getGeneralSetting(QStringLiteral("1010autostore_by_application")).toInt() != 0;
    for (quint16 index : {0x1010, 0x1011}) {
        for (quint8 subindex : {1, 2, 3}) {
            if (!subExists(index, subindex))
                continue;
            const QString value = sub(index, subindex).defaultvalue;
            if (value.isEmpty())
                continue;
            const quint64 number = value.toULongLong(nullptr, 0);
            if (byApplication && number >= 4)
                reportError(
                    tr("<strong>Error: </strong>Object 0x%1:%2 only default values between 0 and 3 are "
                       "supported.")
                        .arg(hex4(index))
                        .arg(subindex));
            else if (!byApplication && number >= 2)
                reportError(
                    tr("<strong>Error: </strong>Object 0x%1:%2 only default values between 0 and 1 are "
                       "supported. Enable CO_AUTO_STORE_HANDLED_BY_APPLICATION to support other values")
                        .arg(hex4(index))
                        .arg(subindex));
        }
    }
}

void ModelChecker::checkIdentity()
{
    const quint16 identity = 0x1018;
    const QString vendorId = sub(identity, 1).defaultvalue;
    if (vendorId.isEmpty())
        reportError(
            tr("<strong>Error: </strong>Object 0x%1-0x01: The value of subindex 1 (vendor-ID) is empty.")
                .arg(hex4(identity)));
    if (vendorId.toULongLong(nullptr, 0) == 0x2F5)
        report(tr("<strong>Warning: Object 0x%1-0x01: The vendor-ID 0x2F5 (halvex) may not be used for "
                  "production. </strong>")
                   .arg(hex4(identity)));
    if (subExists(identity, 2) && sub(identity, 2).defaultvalue.isEmpty())
        reportError(
            tr("<strong>Error: </strong>Object 0x%1-0x02: The value of subindex 2 (product code) is empty.")
                .arg(hex4(identity)));
    if (subExists(identity, 3) && sub(identity, 3).defaultvalue.isEmpty())
        reportError(tr("<strong>Error: </strong>Object 0x%1-0x03: The value of subindex 3 (revision number) "
                       "is empty.")
                        .arg(hex4(identity)));
    if (subExists(identity, 4) && sub(identity, 4).implementation == CANopen::ManagedConst)
        report(tr("<strong>Warning</strong>: Object 0x%1: The implementation type of subindex 4 (serial "
                  "number) is "
                  "'Managed Const'. This is not useful in most cases.")
                   .arg(hex4(identity)));
}

// A consumer COB-ID of 0 would make the stack listen to the NMT command.
void ModelChecker::checkEmcyConsumerEntries()
{
    if (!objectExists(0x1028))
        return;
    for (int subindex = 1; subindex <= 127; ++subindex) {
        if (subExists(0x1028, quint8(subindex)) && subValue(0x1028, quint8(subindex)) == 0)
            reportError(tr("<strong>Error: </strong>Object 0x%1-%2: The value of this sub index may not be "
                           "0x00000000.")
                            .arg(hex4(0x1028))
                            .arg(subindex));
    }
}

void ModelChecker::checkObjects()
{
    for (quint16 index : indicesIn(0x1000, 0xFFFF)) {
        QCoreApplication::processEvents();
        checkObject(index);
    }
}

void ModelChecker::checkObject(quint16 index)
{
    const LineObject& current = object(index);
    const int objectCode = current.data.objecttype;
    if (objectCode != CANopen::Var) {
        if (current.subs.isEmpty())
            reportError(tr("<strong>Error: </strong>Object 0x%1: This array does not contain any sub-indices")
                            .arg(hex4(index)));
        else
            checkSubIndexZero(index, current);
    }
    if (current.data.name.isEmpty())
        reportError(
            tr("<strong>Error: </strong>Object 0x%1: The object does not have a name. (Required for EDS)")
                .arg(hex4(index)));
    if (objectCode == CANopen::Var && current.subs.size() >= 2)
        reportError(
            tr("<strong>Error: </strong>Object 0x%1: The object is a VARIABLE but has multiple subindices.")
                .arg(hex4(index)));
    for (quint8 subindex : current.subs)
        checkSubIndex(index, subindex, objectCode);
}

void ModelChecker::checkSubIndexZero(quint16 index, const LineObject& current)
{
    const quint8 highest = current.subs.last();
    const bool sub0Exists = subExists(index, 0);
    SUBINDEX_DATA_T sub0 = sub(index, 0);
    if (sub0.defaultvalue.toUInt(nullptr, 0) != highest && mayAdjust(index, sub0) &&
        !m_autoCorrectionDisabled) {
        report(
            tr("<i>Corrected: Object 0x%1</i>: The value of subindex 0 does not fit to the highest subindex.")
                .arg(hex4(index)));
        m_corrected = true;
        sub0.defaultvalue = QString::number(highest);
        if (sub0Exists)
            writeSub(index, 0, sub0);
    }
    if (!sub0Exists)
        return;

    const bool adjustable = mayAdjust(index, sub0);
    if (!sub0.defaultineds && adjustable)
        reportError(tr("<strong>Error: </strong>Object 0x%1-0:The 'default value' flag must be set for this "
                       "subindex.")
                        .arg(hex4(index)));
    if (sub0.implementation != CANopen::ManagedConst && sub0.implementation != CANopen::VirtualObject &&
        adjustable && !m_autoCorrectionDisabled && sub0.accesstype == QLatin1String("const")) {
        report(tr("<i>Corrected: Object 0x%1-0</i>:'Managed Const' is used as implementation type for this "
                  "subindex.")
                   .arg(hex4(index)));
        sub0.implementation = CANopen::ManagedConst;
        writeSub(index, 0, sub0);
    }
    if (!defaultWrittenToEds(sub0))
        report(
            tr("Warning: Object 0x%1-0:The defaultvalue of this subindex should be written into the EDS/XDD "
               "file.")
                .arg(hex4(index)));
}

// writedefaulttoeds: 0 never, 1 when the default value flag is set, 2 always.
bool ModelChecker::defaultWrittenToEds(const SUBINDEX_DATA_T& record)
{
    return record.writedefaulttoeds == 2 || (record.writedefaulttoeds == 1 && record.defaultineds);
}

// Subindex 0 of 0x1003 counts the stored errors; a dynamic mapping table is
// filled at run time; 253 and above in a static one is a special value.
bool ModelChecker::mayAdjust(quint16 index, const SUBINDEX_DATA_T& sub0) const
{
    if (index == 0x1003)
        return false;
    if (isPdoMappingObject(index)) {
        if (sub0.accesstype == QLatin1String("rw"))
            return false;
        return sub0.defaultvalue.toUInt(nullptr, 0) < 253;
    }
    return true;
}

void ModelChecker::checkSubIndex(quint16 index, quint8 subindex, int ownerCode)
{
    const SUBINDEX_DATA_T record = sub(index, subindex);
    const QString at = QStringLiteral("0x%1-0x%2").arg(hex4(index), hex2(subindex));

    if (record.limitineds && index >= 0x1000 && !m_limitCheckEnabled)
        report(
            tr("Warning: Object %1: Limit Check is activated, but it is deactivated in the global settings.")
                .arg(at));
    if ((ownerCode == CANopen::Array || ownerCode == CANopen::Record) && record.name.isEmpty())
        reportError(
            tr("<strong>Error: </strong>Object %1: The object does not have a name. (Required for EDS)")
                .arg(at));
    if (record.implementation == CANopen::ApplicationVariable) {
        if (record.varname.isEmpty())
            reportError(tr("<strong>Error: </strong>Object %1: The variable name is missing.").arg(at));
        else if (record.varname.contains(QLatin1Char(' ')) || record.varname.contains(QLatin1Char(',')) ||
                 record.varname.contains(QLatin1Char(';')))
            reportError(
                tr("<strong>Error: </strong>Object %1: The variable name contains invalid characters like "
                   "spaces or commas.")
                    .arg(at));
    }
    static const QStringList accessTypes = {QStringLiteral("ro"),  QStringLiteral("const"),
                                            QStringLiteral("rw"),  QStringLiteral("rwr"),
                                            QStringLiteral("rww"), QStringLiteral("wo")};
    if (!accessTypes.contains(record.accesstype))
        reportError(
            tr("<strong>Error: </strong>Object %1: The access type '%2' is invalid. Use ro, rw, const, wo, "
               "rww or rwr instead.")
                .arg(at, record.accesstype));
    if (record.implementation == CANopen::ManagedConst && record.accesstype.contains(QLatin1Char('w')))
        reportError(
            tr("<strong>Error: </strong>Object %1: The implementation type is Managed Const, but the access "
               "type allows write access.")
                .arg(at));
    if (record.implementation == CANopen::ManagedVariable) {
        if (record.datatype == CAN::OctetString)
            reportError(
                tr("<strong>Error: </strong>Object %1: The implementation type 'Managed Variable' is not "
                   "possible for octet strings.")
                    .arg(at));
        if (record.datatype == CAN::VisibleString)
            reportError(
                tr("<strong>Error: </strong>Object %1: The implementation type 'Managed Variable' is not "
                   "possible for visible strings. Use 'Managed Const' or 'Variable' instead.")
                    .arg(at));
        if (record.datatype == CAN::Utf8String)
            reportError(
                tr("<strong>Error: </strong>Object %1: The implementation type 'Managed Variable' is not "
                   "possible for UTF8 strings. Use 'Managed Const' or 'Variable' instead.")
                    .arg(at));
    }
    if (record.datatype == CAN::Unknown)
        reportError(tr("<strong>Error: </strong>Object %1: Unknown or unsupported datatype.").arg(at));
    checkLimits(index, subindex, record);
}

void ModelChecker::checkLimits(quint16 index, quint8 subindex, const SUBINDEX_DATA_T& record)
{
    if (!record.limitineds || record.datatype == CAN::VisibleString || record.datatype == CAN::OctetString ||
        record.datatype == CAN::Domain)
        return;
    bool lowOk = false;
    bool upOk = false;
    bool defaultOk = false;
    const qint64 low = record.lowlimit.toLongLong(&lowOk, 0);
    const qint64 up = record.uplimit.toLongLong(&upOk, 0);
    const qint64 value = record.defaultvalue.toLongLong(&defaultOk, 0);
    if (lowOk && upOk && defaultOk && (value < low || value > up) && up != unlimitedUpperLimit)
        reportError(
            tr("<strong>Error: </strong>Object 0x%1-0x%2: The defaultvalue is not in the range of the "
               "limits.")
                .arg(hex4(index), hex2(subindex)));
}

void ModelChecker::checkVariableNames()
{
    QMap<QString, QPair<quint16, quint8>> firstUsers;
    for (quint16 index : indicesIn(0x1000, 0xFFFF)) {
        for (quint8 subindex : object(index).subs) {
            const SUBINDEX_DATA_T record = sub(index, subindex);
            const QString name = record.varname.trimmed();
            if (record.implementation != CANopen::ApplicationVariable || name.isEmpty())
                continue;
            const auto first = firstUsers.constFind(name);
            if (first == firstUsers.constEnd()) {
                firstUsers.insert(name, {index, subindex});
                continue;
            }
            report(
                tr("<strong>Warning: </strong>Object 0x%1-0x%2: Variable name '%3' is already used by object "
                   "0x%4-0x%5.")
                    .arg(hex4(index), hex2(subindex), name, hex4(first->first), hex2(first->second)));
        }
    }
}
