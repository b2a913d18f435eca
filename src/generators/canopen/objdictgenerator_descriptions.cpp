#include "generators/canopen/objdictgenerator.h"

#include "canopenlib/cohelper.h"

#include <QStringBuilder>

using namespace Qt::Literals::StringLiterals;

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
        row += "CO_DSPEC"_L1 % m_layout.serviceSuffix(line, index, subindex, sub) % ", "_L1;
    row += "(UNSIGNED16)"_L1 % QString::number(m_layout.valueSlot(line, index, subindex, sub)) % "u, "_L1;
    row += m_layout.attributeWord(key, sub, compactEnd) % ", "_L1;
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
    return QStringLiteral("CO_DTYPE_") + shortWord + m_layout.serviceSuffix(line, index, subindex, sub);
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
                       .arg(ObjDictLayout::objectTypeWord(object.objectType))
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
