#include "generators/canopen/objdictgenerator.h"

#include "canopenlib/cohelper.h"

#include <QStringBuilder>

using namespace Qt::Literals::StringLiterals;

namespace {

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

// The type word of an object in an assign table.
QString ObjDictGenerator::objectTypeWord(int objectType)
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

quint8 ObjDictGenerator::compactLimit(const QList<quint8>& subindices,
                                      const QList<const SUBINDEX_DATA_T*>& subs)
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

void ObjDictGenerator::writeObjectDescriptions()
{
    SectionStream out(this);
    out << "\n/* description of the objects */\n";
    out << "CO_CONST CO_OBJECT_DESC_T CO_CONST_STORAGE_CLASS od_description[CO_OBJ_DESC_CNT] = {\n";
    for (quint8 line : dictionaryLines()) {
        for (const DictObject& object : objectsOf(line)) {
            const QList<qsizetype> described = ObjDictLayout::describedPositions(line, object);
            for (qsizetype position : described) {
                const quint8 subindex = object.subindices.at(position);
                out << descriptionRow(line, object.index, subindex, object.subs.at(position),
                                      subindex == object.compactEnd);
            }
        }
    }
    out << "};\n";
}

QString ObjDictGenerator::descriptionRow(quint8 line, quint16 index, quint8 subindex,
                                         const SUBINDEX_DATA_T& sub, bool compactEnd)
{
    const quint32 key = objectKey(line, index, subindex);
    const QString subText = QString::number(subindex);
    QString row;
    row.reserve(160);
    row += "\t{ (UNSIGNED8)"_L1 % subText % "u, "_L1;
    row += dataTypeWord(line, index, subindex, sub).leftJustified(18) % ", "_L1;
    if (coreForm())
        row += "CO_DSPEC"_L1 % serviceSuffix(line, index, subindex, sub) % ", "_L1;
    row += "(UNSIGNED16)"_L1 % QString::number(valueSlot(line, index, subindex, sub)) % "u, "_L1;
    row += attributeWord(key, sub, compactEnd) % ", "_L1;
    row += " (UNSIGNED16)"_L1 % QString::number(m_layout.constSlot(key));
    if (m_limitCheck > 0) {
        row += "u, (UNSIGNED16)"_L1 % QString::number(m_layout.lowLimitSlot(key));
        row += "u, (UNSIGNED16)"_L1 % QString::number(m_layout.upLimitSlot(key));
    }
    row += "u},"_L1;
    const QString index16 = QString::number(index, 16).rightJustified(4, QLatin1Char('0'));
    if (multiLineForm())
        row += "/* "_L1 % QString::number(line) % "-0x"_L1 % index16 % ":"_L1 % subText % "*/ \n"_L1;
    else
        row += "/* 0x"_L1 % index16 % ":"_L1 % subText % "*/ \n"_L1;
    return row;
}

// The classic stack joins type and service into one word ("CO_DTYPE_U8_SYNC");
// the V4 stack keeps the service in a word of its own.
QString ObjDictGenerator::dataTypeWord(quint8 line, quint16 index, quint8 subindex,
                                       const SUBINDEX_DATA_T& sub) const
{
    const int dataType = coreForm() && sub.datatype == CAN::TimeOfDay ? CAN::Unsigned48 : sub.datatype;
    QString shortWord = COHelper::index2DataTypeShortString(quint16(dataType)).toUpper();
    static const QStringList narrow = {QStringLiteral("U2"), QStringLiteral("U3"), QStringLiteral("U4"),
                                       QStringLiteral("U5"), QStringLiteral("U6"), QStringLiteral("U7")};
    if (shortWord == QLatin1String("D"))
        shortWord = QStringLiteral("DOMAIN");
    else if (shortWord == QLatin1String("B"))
        shortWord = QStringLiteral("BOOL");
    else if (narrow.contains(shortWord))
        shortWord = QStringLiteral("U8");
    // A constant octet string lies in the table of constant visible strings.
    if (sub.implementation == CANopen::ManagedConst && shortWord == QLatin1String("OS"))
        shortWord = QStringLiteral("VS");
    if (coreForm())
        return QStringLiteral("CORE_DTYPE_") + shortWord;
    return QStringLiteral("CO_DTYPE_") + shortWord + serviceSuffix(line, index, subindex, sub);
}

QString ObjDictGenerator::serviceSuffix(quint8 line, quint16 i, quint8 s, const SUBINDEX_DATA_T& sub) const
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
    if (isSrdoEntry(line, i, s))
        return QStringLiteral("_SRDO");
    if (sub.datatype == CAN::Domain)
        return QString();
    if (sub.implementation == CANopen::ManagedVariable)
        return QStringLiteral("_VAR");
    if (sub.implementation == CANopen::ApplicationVariable)
        return QStringLiteral("_PTR");
    return QString();
}

// Objects that a stack service owns give the number of the object or of the service instance.
int ObjDictGenerator::valueSlot(quint8 line, quint16 i, quint8 s, const SUBINDEX_DATA_T& sub) const
{
    if (sub.implementation == CANopen::ManagedConst)
        return m_layout.constSlot(objectKey(line, i, s));
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
    if (isSrdoEntry(line, i, s))
        return i;
    return m_layout.varSlot(objectKey(sub.sharedlines ? 0 : line, i, s));
}

QString ObjDictGenerator::attributeWord(quint32 key, const SUBINDEX_DATA_T& sub, bool compactEnd) const
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
    if (sub.limitineds && m_layout.hasLimitSlots(key))
        word += QStringLiteral(" | CO_ATTR_LIMIT");
    if (sub.nvstorage)
        word += QStringLiteral(" | CO_ATTR_STORE");
    if (compactEnd)
        word += QStringLiteral(" | CO_ATTR_COMPACT");
    return word;
}

void ObjDictGenerator::writeAssignTable()
{
    if (m_objects.isEmpty())
        return;
    SectionStream out(this);
    out << "\n/* object dictionary assignment */\n";
    out << "CO_CONST CO_OD_ASSIGN_T CO_CONST_STORAGE_CLASS od_assign[CO_OD_ASSIGN_CNT] = {\n";
    for (quint8 line : dictionaryLines()) {
        for (const DictObject& object : objectsOf(line)) {
            const SUBINDEX_DATA_T* first = findSub(line, object.index, 0);
            if (first && first->implementation == CANopen::VirtualObject)
                continue;
            int described = 0;
            if (m_compactDescription) {
                for (quint8 subindex : object.subindices)
                    described += subindex <= object.compactEnd ? 1 : 0;
            } else {
                for (const SUBINDEX_DATA_T& sub : object.subs)
                    described += sub.implementation != CANopen::VirtualObject ? 1 : 0;
            }
            const quint8 startLine = (first && first->sharedlines) ? 0 : line;
            out << QStringLiteral("\t{ 0x%1u, %2u, %3u, %4, %5u },\n")
                       .arg(object.index, 4, 16, QLatin1Char('0'))
                       .arg(described)
                       .arg(object.subindices.isEmpty() ? 0 : object.subindices.last())
                       .arg(objectTypeWord(object.objectType))
                       .arg(m_layout.descriptionStart(startLine, object.index));
        }
    }
    out << "};\n";
}

void ObjDictGenerator::writePdoMappingTables()
{
    if (m_layout.mappingEntries() <= 0)
        return;
    SectionStream out(this);
    out << "\n/* static PDO mapping tables */\n";
    for (const ObjDictLayout::MappingTable& table : m_layout.mappingTables()) {
        if (table.alias != table.name)
            continue;
        if (table.transmit) {
            out << "/* Mapping table TPDO " << table.number << "*/\n";
            out << "static CO_CONST PDO_TR_MAP_TABLE_T CO_CONST_STORAGE_CLASS\t" << table.name << " = {\n";
        } else if (!multiLineForm()) {
            out << "/* Mapping table RPDO " << table.number << "*/\n";
            out << "static CO_CONST PDO_REC_MAP_TABLE_T CO_CONST_STORAGE_CLASS\t" << table.name << " = {\n";
        } else {
            out << "/* unique rpdo defintion */\n";
            out << "static CO_CONST PDO_REC_MAP_TABLE_T CO_CONST_STORAGE_CLASS\t" << table.name << " = {\n";
        }
        out << table.body << "};\n";
    }
}
