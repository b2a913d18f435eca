#include "generators/canopen/objdictlayout.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "generators/abstractgenerator.h"

#include <algorithm>

namespace {

struct ValueForm
{
    // "\t" + cast + value + literal suffix; a wide type has its macro instead.
    const char* cast;
    const char* literalSuffix;
    int wideCode;
};

// In the order of CAN::ValueGroup.
const ValueForm valueForms[] = {
    {"(UNSIGNED8)", "u", 0},   {"(UNSIGNED16)", "u", 0},  {"", "", CAN::Unsigned24},
    {"(UNSIGNED32)", "UL", 0}, {"", "", CAN::Unsigned40}, {"", "", CAN::Unsigned48},
    {"", "", CAN::Unsigned64}, {"(INTEGER8)", "", 0},     {"(INTEGER16)", "", 0},
    {"", "", CAN::Integer24},  {"(INTEGER32)", "L", 0},   {"(REAL32)", "f", 0},
};

const char* const groupSuffixes[] = {"u8",  "u16", "u24", "u32", "u40", "u48",
                                     "u64", "i8",  "i16", "i24", "i32", "r32"};

bool isSigned(int group)
{
    return group >= CAN::GroupI8 && group <= CAN::GroupI32;
}

// Automatic base, a leading minus allowed; an unreadable value reads 0.
void parseNumber(const QString& text, quint64& unsignedValue, qint64& signedValue)
{
    const QString trimmed = text.trimmed();
    const bool negative = trimmed.startsWith(QLatin1Char('-'));
    bool ok = false;
    const quint64 magnitude =
        COHelper::parseUnsigned(negative ? QStringView(trimmed).mid(1) : QStringView(trimmed), &ok);
    if (!ok) {
        unsignedValue = 0;
        signedValue = 0;
        return;
    }
    signedValue = negative ? -qint64(magnitude) : qint64(magnitude);
    unsignedValue = quint64(signedValue);
}

// A text that begins with "|x" holds the bytes as hexadecimal digits.
QByteArray stringBytes(const QString& text)
{
    if (text.startsWith(QLatin1String("|x")))
        return QByteArray::fromHex(text.mid(2).toLatin1());
    return text.toUtf8();
}

QString constStringEntry(const QString& text)
{
    if (!text.startsWith(QLatin1String("|x")))
        return QStringLiteral("\t\"") + text + QLatin1Char('"');
    QString entry = QStringLiteral("\t\"");
    const QByteArray bytes = stringBytes(text);
    for (char byte : bytes)
        entry += QStringLiteral("\\x%1").arg(quint8(byte), 2, 16, QLatin1Char('0'));
    return entry + QLatin1Char('"');
}

// The stack keeps these in its own service structures; a variable for them would never be read.
bool ownedByService(quint16 index, quint8 subindex)
{
    switch (index) {
    case 0x1005:
    case 0x1006:
    case 0x1016:
    case 0x1019:
    case 0x100C:
    case 0x100D:
    case 0x1012:
    case 0x1017:
    case 0x102A:
    case 0x1300:
    case 0x1F10:
    case 0x1F11:
        return true;
    case 0x1029:
        return subindex == 1;
    case 0x1010:
    case 0x1011:
    case 0x1028:
    case 0x1F81:
    case 0x1F82:
        return subindex != 0;
    default:
        break;
    }
    const bool inServiceRange = (index >= 0x1200 && index <= 0x12FF) ||
                                (index >= 0x1400 && index <= 0x1BFF) || (index >= 0x1301 && index <= 0x13FF);
    return inServiceRange && subindex != 0;
}

bool writableAccess(const QString& access)
{
    return access == QLatin1String("rw") || access == QLatin1String("rwr") ||
           access == QLatin1String("rww") || access == QLatin1String("wo");
}

// Constant tables hold each value once; the lookup goes by the entry's text.
struct UniqueTable
{
    QStringList* entries;
    QHash<QString, int> positions;

    int add(const QString& entry)
    {
        const auto it = positions.constFind(entry);
        if (it != positions.constEnd())
            return it.value();
        positions.insert(entry, int(entries->size()));
        *entries << entry;
        return int(entries->size() - 1);
    }
};

// The short type word of the value tables: BOOLEAN and UNSIGNED2 to UNSIGNED7 live in UNSIGNED8.
QString tableWord(int dataType)
{
    if (COHelper::valueGroup(quint16(dataType)) == CAN::GroupU8)
        return QStringLiteral("u8");
    return COHelper::index2DataTypeShortString(quint16(dataType));
}

// Calls visit(line, index, subindex, sub) for every sub-object in dictionary order.
template <typename Visit> void forEachSub(const ObjDictLayout::Dictionary& dictionary, Visit visit)
{
    for (auto it = dictionary.constBegin(); it != dictionary.constEnd(); ++it) {
        for (const ObjDictLayout::Object& object : it.value()) {
            for (qsizetype position = 0; position < object.subindices.size(); ++position)
                visit(it.key(), object.index, object.subindices.at(position), object.subs.at(position));
        }
    }
}

constexpr quint8 noCompaction = 255;

bool sameEntry(const SUBINDEX_DATA_T& a, const SUBINDEX_DATA_T& b)
{
    return a.datatype == b.datatype && a.accesstype == b.accesstype && a.pdomapping == b.pdomapping &&
           a.lowlimit == b.lowlimit && a.uplimit == b.uplimit && a.size == b.size &&
           a.defaultineds == b.defaultineds && a.limitineds == b.limitineds && a.refuseread == b.refuseread &&
           a.refusewrite == b.refusewrite && a.description.simplified() == b.description.simplified() &&
           a.nvstorage == b.nvstorage && a.defaultvalue == b.defaultvalue &&
           a.writedefaulttoeds == b.writedefaulttoeds;
}

} // namespace

quint8 compactLimit(const QList<quint8>& subindices, const QList<const SUBINDEX_DATA_T*>& subs)
{
    if (subindices.size() < 3)
        return noCompaction;
    quint8 limit = noCompaction;
    for (qsizetype i = subindices.size() - 1; i > 0; --i) {
        const quint8 lower = subindices.at(i - 1);
        if (lower == 0)
            break;
        if (lower + 1 != subindices.at(i))
            return noCompaction;
        if (!sameEntry(*subs.at(i - 1), *subs.at(i)))
            break;
        limit = lower;
    }
    return limit;
}

ObjDictLayout::ObjDictLayout(const Dictionary& dictionary, const Options& options)
    : m_srdoEntries(options.srdoEntries)
{
    layOutManagedVariables(dictionary);
    layOutConstants(dictionary, options.limitCheck);
    layOutStringDefaults(dictionary);
    layOutApplicationVariables(dictionary);
    countRows(dictionary);
    layOutMappingTables(dictionary, options);
}

const QList<ObjDictLayout::Object>& ObjDictLayout::objectsOf(const Dictionary& dictionary, quint8 line)
{
    static const QList<Object> none;
    const auto it = dictionary.constFind(line);
    return it == dictionary.constEnd() ? none : it.value();
}

quint64 ObjDictLayout::defaultNumber(const SUBINDEX_DATA_T* sub)
{
    if (!sub)
        return 0;
    bool ok = false;
    const quint64 value = COHelper::parseUnsigned(sub->defaultvalue.trimmed(), &ok);
    return ok ? value : 0;
}

const ObjDictLayout::Object* ObjDictLayout::findObject(const Dictionary& dictionary, quint8 line,
                                                       quint16 index)
{
    const QList<Object>& objects = objectsOf(dictionary, line);
    const auto it =
        std::lower_bound(objects.cbegin(), objects.cend(), index,
                         [](const Object& object, quint16 value) { return object.index < value; });
    return (it != objects.cend() && it->index == index) ? &*it : nullptr;
}

const SUBINDEX_DATA_T* ObjDictLayout::findSub(const Dictionary& dictionary, quint8 line, quint16 index,
                                              quint8 subindex)
{
    const Object* object = findObject(dictionary, line, index);
    if (!object)
        return nullptr;
    const qsizetype position = object->subindices.indexOf(subindex);
    return position < 0 ? nullptr : &object->subs.at(position);
}

QList<qsizetype> ObjDictLayout::describedPositions(quint8 line, const Object& object)
{
    QList<qsizetype> described;
    for (qsizetype position = 0; position < object.subindices.size(); ++position) {
        if (object.subindices.at(position) > object.compactEnd)
            break;
        const SUBINDEX_DATA_T& sub = object.subs.at(position);
        if ((line != 0 && sub.sharedlines) || sub.implementation == CANopen::VirtualObject)
            continue;
        described << position;
    }
    return described;
}

QString ObjDictLayout::valueText(int group, const QString& text, int realDigits)
{
    const ValueForm& form = valueForms[group];
    if (group == CAN::GroupR32) {
        bool ok = false;
        double value = text.trimmed().toDouble(&ok);
        if (!ok) {
            quint64 unsignedValue = 0;
            qint64 signedValue = 0;
            parseNumber(text, unsignedValue, signedValue);
            value = double(signedValue);
        }
        return QStringLiteral("\t(REAL32)%1f").arg(QString::number(value, 'f', realDigits));
    }
    quint64 unsignedValue = 0;
    qint64 signedValue = 0;
    parseNumber(text, unsignedValue, signedValue);
    if (form.wideCode != 0)
        return QLatin1Char('\t') +
               AbstractGenerator::formatWideInteger(form.wideCode, unsignedValue, signedValue);
    const QString number = isSigned(group) ? QString::number(signedValue) : QString::number(unsignedValue);
    return QLatin1Char('\t') + QLatin1String(form.cast) + number + QLatin1String(form.literalSuffix);
}

const QList<quint32>& ObjDictLayout::applicationKeys(int dataType) const
{
    switch (dataType) {
    case CAN::VisibleString:
        return m_visStringKeys;
    case CAN::Utf8String:
        return m_utf8StringKeys;
    case CAN::OctetString:
        return m_octetStringKeys;
    default:
        return m_domainKeys;
    }
}

QString ObjDictLayout::serviceSuffix(quint8 line, quint16 i, quint8 s, const SUBINDEX_DATA_T& sub) const
{
    if (sub.implementation == CANopen::ManagedConst)
        return QStringLiteral("_CONST");
    if (i == 0x1005 || i == 0x1006 || i == 0x1019)
        return QStringLiteral("_SYNC");
    if (i == 0x1003 || i == 0x1014 || i == 0x1015 || (i == 0x1028 && s != 0) || i == 0x1032)
        return QStringLiteral("_EMCY");
    if ((i == 0x1016 && s != 0) || i == 0x100C || i == 0x100D || i == 0x1017 || (i == 0x1029 && s == 1))
        return QStringLiteral("_ERRCTRL");
    if ((i == 0x1010 || i == 0x1011) && s != 0)
        return QStringLiteral("_STORE");
    if (i == 0x1012)
        return QStringLiteral("_TIME");
    if (i == 0x102A)
        return QStringLiteral("_NMT");
    if (i >= 0x1200 && i <= 0x127F && s != 0)
        return QStringLiteral("_SDO_SERVER");
    if (i >= 0x1280 && i <= 0x12FF && s != 0)
        return QStringLiteral("_SDO_CLIENT");
    if (i == 0x1300)
        return QStringLiteral("_GFC");
    if ((i >= 0x1301 && i <= 0x13F0 && s != 0) || i == 0x13FE || i == 0x13FF)
        return QStringLiteral("_SRDO");
    if (i >= 0x1400 && i <= 0x15FF && s != 0)
        return QStringLiteral("_RPDO");
    if (i >= 0x1600 && i <= 0x17FF)
        return QStringLiteral("_RMAP");
    if (i >= 0x1800 && i <= 0x19FF && s != 0)
        return QStringLiteral("_TPDO");
    if (i >= 0x1A00 && i <= 0x1BFF)
        return QStringLiteral("_TMAP");
    if (i == 0x1F10 || i == 0x1F11)
        return QStringLiteral("_SRD");
    if (i == 0x1F2C && s != 0)
        return QStringLiteral("_NETWORK");
    if (i >= 0x1F80 && i <= 0x1F82)
        return QStringLiteral("_NMT");
    if (i == 0x1F90)
        return QStringLiteral("_FLYMA");
    if (m_srdoEntries.contains(objectKey(line, i, s)))
        return QStringLiteral("_SRDO");
    if (sub.datatype == CAN::Domain)
        return QString();
    if (sub.implementation == CANopen::ManagedVariable)
        return QStringLiteral("_VAR");
    if (sub.implementation == CANopen::ApplicationVariable)
        return QStringLiteral("_PTR");
    return QString();
}

int ObjDictLayout::valueSlot(quint8 line, quint16 i, quint8 s, const SUBINDEX_DATA_T& sub) const
{
    if (sub.implementation == CANopen::ManagedConst)
        return constSlot(objectKey(line, i, s));
    switch (i) {
    case 0x1003:
    case 0x1005:
    case 0x1006:
    case 0x100C:
    case 0x100D:
    case 0x102A:
    case 0x1014:
    case 0x1015:
    case 0x1019:
    case 0x1017:
    case 0x1032:
        return i;
    case 0x1016:
    case 0x1010:
    case 0x1011:
    case 0x1028:
    case 0x1F90:
        if (s != 0)
            return i;
        break;
    case 0x1F2C:
        if (s != 0)
            return 7980;
        break;
    case 0x1029:
        if (s == 1)
            return i;
        break;
    default:
        break;
    }
    if ((i >= 0x1F80 && i <= 0x1F82) || (i >= 0x1301 && i <= 0x13FF))
        return i;
    struct Range
    {
        quint16 from;
        quint16 to;
        bool withSubZero;
        int base;
    };
    static const Range instances[] = {
        {0x1200, 0x127F, false, 0x11FF}, {0x1280, 0x12FF, false, 0x127F}, {0x1400, 0x15FF, false, 0x13FF},
        {0x1600, 0x17FF, true, 0x15FF},  {0x1800, 0x19FF, false, 0x17FF}, {0x1A00, 0x1BFF, true, 0x19FF},
    };
    for (const Range& range : instances) {
        if (i >= range.from && i <= range.to && (range.withSubZero || s != 0))
            return i - range.base;
    }
    if (m_srdoEntries.contains(objectKey(line, i, s)))
        return i;
    return varSlot(objectKey(sub.sharedlines ? 0 : line, i, s));
}

QString ObjDictLayout::attributeWord(quint32 key, const SUBINDEX_DATA_T& sub, bool compactEnd) const
{
    QString word;
    if (sub.datatype < CAN::VisibleString || sub.datatype == CAN::Unsigned24)
        word += QStringLiteral("CO_ATTR_NUM | ");
    const QString& access = sub.accesstype;
    const bool readOnly = access == QLatin1String("const") || access == QLatin1String("ro");
    const bool readWrite =
        access == QLatin1String("rw") || access == QLatin1String("rwr") || access == QLatin1String("rww");
    if (readOnly)
        word += QStringLiteral("CO_ATTR_READ");
    else if (access == QLatin1String("wo"))
        word += QStringLiteral("CO_ATTR_WRITE");
    else if (readWrite)
        word += QStringLiteral("CO_ATTR_READ | CO_ATTR_WRITE");
    if (!sub.pdomapping.isEqualToType(PDOMapping::NotMappable)) {
        if (readOnly || access == QLatin1String("rw") || access == QLatin1String("rwr"))
            word += QStringLiteral(" | CO_ATTR_MAP_TR");
        if (access == QLatin1String("wo") || access == QLatin1String("rw") || access == QLatin1String("rww"))
            word += QStringLiteral(" | CO_ATTR_MAP_REC");
    }
    if (sub.defaultineds)
        word += QStringLiteral(" | CO_ATTR_DEFVAL");
    if (sub.limitineds && hasLimitSlots(key))
        word += QStringLiteral(" | CO_ATTR_LIMIT");
    if (sub.nvstorage)
        word += QStringLiteral(" | CO_ATTR_STORE");
    if (compactEnd)
        word += QStringLiteral(" | CO_ATTR_COMPACT");
    return word;
}

QString ObjDictLayout::objectTypeWord(int objectType)
{
    switch (objectType) {
    case CANopen::Domain:
        return QStringLiteral("CO_ODTYPE_DOM");
    case CANopen::Var:
        return QStringLiteral("CO_ODTYPE_VAR");
    case CANopen::Array:
        return QStringLiteral("CO_ODTYPE_ARRAY");
    case CANopen::Record:
        return QStringLiteral("CO_ODTYPE_STRUCT");
    default:
        return QString();
    }
}

int ObjDictLayout::firstAssignRow(quint8 line) const
{
    int row = 0;
    for (auto it = m_lineAssignCounts.constBegin(); it != m_lineAssignCounts.constEnd() && it.key() < line;
         ++it)
        row += it.value();
    return row;
}

void ObjDictLayout::layOutManagedVariables(const Dictionary& dictionary)
{
    forEachSub(dictionary, [&](quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) {
        if (sub.implementation != CANopen::ManagedVariable || ownedByService(index, subindex) ||
            (line != 0 && sub.sharedlines))
            return;
        const CAN::ValueGroup group = COHelper::valueGroup(sub.datatype);
        if (group == CAN::NoGroup)
            return;
        const quint32 key = objectKey(line, index, subindex);
        m_varSlot.insert(key, int(m_managedKeys[group].size()));
        m_managedKeys[group] << key;
    });
    for (int group = 0; group < CAN::GroupCount; ++group) {
        if (!m_managedKeys[group].isEmpty())
            m_tables.insert(QStringLiteral("od_") + QLatin1String(groupSuffixes[group]));
    }
}

void ObjDictLayout::layOutConstants(const Dictionary& dictionary, int limitCheck)
{
    UniqueTable tables[CAN::GroupCount];
    for (int group = 0; group < CAN::GroupCount; ++group)
        tables[group].entries = &m_constEntries[group];
    forEachSub(dictionary, [&](quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) {
        const quint32 key = objectKey(line, index, subindex);
        const CAN::ValueGroup group = COHelper::valueGroup(sub.datatype);
        if (group != CAN::NoGroup) {
            QString defaultText = sub.defaultvalue;
            defaultText.remove(QLatin1String("$nodeid+"), Qt::CaseInsensitive);
            m_constSlot.insert(key, tables[group].add(valueText(group, defaultText, 8)));
            if (limitCheck > 0 && sub.limitineds && writableAccess(sub.accesstype)) {
                m_lowLimitSlot.insert(key, tables[group].add(valueText(group, sub.lowlimit, 8)));
                m_upLimitSlot.insert(key, tables[group].add(valueText(group, sub.uplimit, 8)));
            }
        } else if (sub.implementation == CANopen::ManagedConst &&
                   (sub.datatype == CAN::VisibleString || sub.datatype == CAN::OctetString)) {
            m_constSlot.insert(key, int(m_constVis.size()));
            m_constVis << constStringEntry(sub.defaultvalue);
            m_constVisLengths << QLatin1Char('\t') + QString::number(sub.size);
        } else if (sub.implementation == CANopen::ManagedConst && sub.datatype == CAN::Utf8String) {
            m_constSlot.insert(key, int(m_constUtf8.size()));
            m_constUtf8 << constStringEntry(sub.defaultvalue);
            m_constUtf8Lengths << QLatin1Char('\t') + QString::number(sub.size);
        }
    });
    for (int group = 0; group < CAN::GroupCount; ++group) {
        if (!m_constEntries[group].isEmpty())
            m_tables.insert(QStringLiteral("od_const_") + QLatin1String(groupSuffixes[group]));
    }
    if (!m_constVis.isEmpty())
        m_tables << QStringLiteral("od_const_vis_string") << QStringLiteral("od_const_vis_string_len");
    if (!m_constUtf8.isEmpty())
        m_tables << QStringLiteral("od_const_utf8_string") << QStringLiteral("od_const_utf8_string_len");
}

void ObjDictLayout::layOutStringDefaults(const Dictionary& dictionary)
{
    int offset = 0;
    for (auto it = dictionary.constBegin(); it != dictionary.constEnd(); ++it) {
        if (it.value().size() < 2)
            continue;
        for (const Object& object : it.value()) {
            for (qsizetype position = 0; position < object.subindices.size(); ++position) {
                const SUBINDEX_DATA_T& sub = object.subs.at(position);
                if (sub.implementation != CANopen::ApplicationVariable ||
                    (sub.datatype != CAN::VisibleString && sub.datatype != CAN::OctetString))
                    continue;
                const QByteArray bytes = stringBytes(sub.defaultvalue);
                m_stringDefaults << StringDefault{
                    objectKey(it.key(), object.index, object.subindices.at(position)), offset, bytes};
                offset += int(bytes.size());
            }
        }
    }
}

void ObjDictLayout::layOutApplicationVariables(const Dictionary& dictionary)
{
    forEachSub(dictionary, [&](quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) {
        const quint32 key = objectKey(line, index, subindex);
        if (sub.implementation != CANopen::ApplicationVariable || m_srdoEntries.contains(key))
            return;
        const CAN::ValueGroup group = COHelper::valueGroup(sub.datatype);
        QList<quint32>* keys = nullptr;
        if (group != CAN::NoGroup)
            keys = &m_pointerKeys[group];
        else if (sub.datatype == CAN::VisibleString)
            keys = &m_visStringKeys;
        else if (sub.datatype == CAN::Utf8String)
            keys = &m_utf8StringKeys;
        else if (sub.datatype == CAN::OctetString)
            keys = &m_octetStringKeys;
        else if (sub.datatype == CAN::Domain)
            keys = &m_domainKeys;
        else
            return;
        m_varSlot.insert(key, int(keys->size()));
        *keys << key;
    });
    for (int group = 0; group < CAN::GroupCount; ++group) {
        if (!m_pointerKeys[group].isEmpty())
            m_tables.insert(QStringLiteral("od_ptr_") + QLatin1String(groupSuffixes[group]));
    }
    auto addTables = [&](const QList<quint32>& keys, const QString& name) {
        if (!keys.isEmpty())
            m_tables << name << name + QStringLiteral("_len") << name + QStringLiteral("_actLen");
    };
    addTables(m_visStringKeys, QStringLiteral("od_vis_string"));
    addTables(m_utf8StringKeys, QStringLiteral("od_utf8_string"));
    addTables(m_octetStringKeys, QStringLiteral("od_octet_string"));
    addTables(m_domainKeys, QStringLiteral("od_domain"));
}

// Both counts stand at the head of the file, before the tables are written.
void ObjDictLayout::countRows(const Dictionary& dictionary)
{
    for (auto it = dictionary.constBegin(); it != dictionary.constEnd(); ++it) {
        const quint8 line = it.key();
        int lineRows = 0;
        int& lineAssignCount = m_lineAssignCounts[line];
        for (const Object& object : it.value()) {
            const SUBINDEX_DATA_T* first = findSub(dictionary, line, object.index, 0);
            if (!first || first->implementation != CANopen::VirtualObject)
                ++lineAssignCount;
            m_descriptionStart.insert((quint32(line) << 24) | object.index, m_descriptionCount);
            const int rows = int(describedPositions(line, object).size());
            m_descriptionCount += rows;
            lineRows += rows;
        }
        m_lineDescriptionCounts.insert(line, lineRows);
        m_assignCount += lineAssignCount;
    }
}

void ObjDictLayout::layOutMappingTables(const Dictionary& dictionary, const Options& options)
{
    for (const QList<Object>& objects : dictionary) {
        for (const Object& object : objects) {
            const bool mapping = (object.index >= 0x1600 && object.index <= 0x17FF) ||
                                 (object.index >= 0x1A00 && object.index <= 0x1BFF);
            if (mapping)
                m_mappingEntries = std::max(m_mappingEntries, int(object.subindices.size()) - 1);
        }
    }
    if (m_mappingEntries <= 0)
        return;
    // Lines that receive the same mapping share one table.
    QHash<QString, QString> uniqueReceiveTables;
    auto addTable = [&](quint8 line, quint16 commIndex, bool transmit) {
        const SUBINDEX_DATA_T* countSub = findSub(dictionary, line, commIndex + 0x200, 0);
        // A PDO whose mapping may change at run time has no static table.
        if (!countSub || countSub->accesstype == QLatin1String("rw"))
            return;
        const quint64 count = defaultNumber(countSub);
        if (count == 0)
            return;
        MappingTable table;
        table.line = line;
        table.number = transmit ? commIndex - 0x17FF : commIndex - 0x13FF;
        table.transmit = transmit;
        table.name = (transmit ? QStringLiteral("mapTableTPDO") : QStringLiteral("mapTableRPDO")) +
                     (options.multiLine ? QStringLiteral("%1_").arg(line) : QString()) +
                     QString::number(table.number);
        table.body = mappingBody(dictionary, line, commIndex + 0x200, count, transmit, options.coreForm);
        table.alias = table.name;
        if (!transmit && options.multiLine) {
            const QString same = uniqueReceiveTables.value(table.body);
            if (same.isEmpty())
                uniqueReceiveTables.insert(table.body, table.name);
            else
                table.alias = same;
        }
        m_mappingAliases.insert(table.name, table.alias);
        m_mappingTables << table;
    };
    for (auto it = dictionary.constBegin(); it != dictionary.constEnd(); ++it) {
        if (it.value().size() < 2)
            continue;
        for (const Object& object : it.value()) {
            if (object.index >= 0x1800 && object.index <= 0x19FF)
                addTable(it.key(), object.index, true);
        }
        for (const Object& object : it.value()) {
            if (object.index >= 0x1400 && object.index <= 0x15FF)
                addTable(it.key(), object.index, false);
        }
    }
}

QString ObjDictLayout::mappingBody(const Dictionary& dictionary, quint8 line, quint16 mapIndex, quint64 count,
                                   bool transmit, bool coreForm) const
{
    QString body = QStringLiteral("\t(UNSIGNED8)%1u,\n").arg(count);
    body += QStringLiteral("\t{\n");
    const int rows = count > 64 ? 1 : int(count);
    for (int s = 1; s <= rows; ++s) {
        const quint32 mapping = quint32(defaultNumber(findSub(dictionary, line, mapIndex, quint8(s))));
        const quint16 index = quint16(mapping >> 16);
        const quint8 subindex = quint8(mapping >> 8);
        const SUBINDEX_DATA_T* mapped = findSub(dictionary, line, index, subindex);
        const bool numeric =
            !transmit ||
            (mapped && (mapped->datatype < CAN::VisibleString || mapped->datatype == CAN::Integer24));
        body += QStringLiteral("\t\t{%1, %2u, %3, 0x%4UL")
                    .arg(valuePointer(dictionary, line, index, subindex))
                    .arg(mapping & 0xFF)
                    .arg(numeric ? QStringLiteral("CO_TRUE") : QStringLiteral("CO_FALSE"))
                    .arg(mapping, 8, 16, QLatin1Char('0'));
        if (!transmit)
            body += QStringLiteral(", ") + routingList(dictionary, line, mapping);
        body += QStringLiteral(" },\n");
    }
    QStringList fillers;
    for (int s = rows; s < m_mappingEntries; ++s) {
        QString filler = coreForm ? QStringLiteral("\t\t{NULL, (UNSIGNED8)0u, CORE_DTYPE_NON_NUMERIC, 0ul")
                                  : QStringLiteral("\t\t{NULL, (UNSIGNED8)0u, CO_FALSE, 0ul");
        if (!transmit)
            filler += QLatin1Char(',') + routingList(dictionary, line, 0);
        fillers << filler + QLatin1Char('}');
    }
    if (!fillers.isEmpty())
        body += fillers.join(QLatin1Char(',')) + QLatin1Char('\n');
    body += QStringLiteral("\t}\n");
    return body;
}

// One position per route of the network routing table 0x1F2C: where the
// mapped object's value lies in its constant or variable table.
QString ObjDictLayout::routingList(const Dictionary& dictionary, quint8 line, quint32 mapping) const
{
    const quint16 index = quint16(mapping >> 16);
    const quint8 subindex = quint8(mapping >> 8);
    const SUBINDEX_DATA_T* mapped = mapping == 0 ? nullptr : findSub(dictionary, line, index, subindex);
    int position = 0;
    if (mapped)
        position = mapped->implementation == CANopen::ManagedConst
                       ? constSlot(objectKey(line, index, subindex))
                       : varSlot(objectKey(mapped->sharedlines ? 0 : line, index, subindex));
    const Object* routing = findObject(dictionary, line, 0x1F2C);
    const int routes = routing ? std::max(1, int(routing->subindices.size()) - 1) : 1;
    return QLatin1Char('{') + QStringList(routes, QString::number(position)).join(QLatin1Char(',')) +
           QLatin1Char('}');
}

QString ObjDictLayout::valuePointer(const Dictionary& dictionary, quint8 line, quint16 index,
                                    quint8 subindex) const
{
    const SUBINDEX_DATA_T* sub = findSub(dictionary, line, index, subindex);
    if (!sub)
        return QStringLiteral("NULL");
    const QString word = tableWord(sub->datatype);
    switch (sub->implementation) {
    case CANopen::ManagedConst:
        return QStringLiteral("&od_const_%1[%2]").arg(word).arg(constSlot(objectKey(line, index, subindex)));
    case CANopen::ApplicationVariable: {
        const QString name = Helper::substituteVariables(sub->varname, index, subindex, line);
        return name.contains(QLatin1Char('(')) ? name : QStringLiteral("&(%1)").arg(name);
    }
    case CANopen::ManagedVariable:
        return QStringLiteral("&od_%1[%2]")
            .arg(word)
            .arg(varSlot(objectKey(sub->sharedlines ? 0 : line, index, subindex)));
    default:
        return QStringLiteral("0");
    }
}
