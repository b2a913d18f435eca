#include "generators/canopen/vobjdictgenerator.h"

#include "canopenlib/cohelper.h"
#include "database/objectdatabase.h"
#include "generators/sectionstream.h"
#include "generators/stackwords.h"

#include <QCoreApplication>

namespace {

constexpr int virtualImplementation = 3;
constexpr quint8 highestDictionaryLine = 31;

// gen_define.h sizes the virtual dictionary from the objects up to 0xBFFF.
bool inVirtualRange(quint16 index)
{
    return index >= 0x1000 && index <= 0xBFFF;
}

// The access function tables, one per data type that the stack serves
// virtually, in the order and with the sizes of gen_define.h.
struct AccessTable
{
    int dataType;
    const char* head;
};

const AccessTable accessTables[] = {
    {5, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_u8[CO_VIRTUAL_U8_CNT] = {\n"},
    {6, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_u16[CO_VIRTUAL_U16_CNT] = {\n"},
    {7, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_u32[CO_VIRTUAL_U32_CNT] = {\n"},
    {2, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_i8[CO_VIRTUAL_I8_CNT] = {\n"},
    {3, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_i16[CO_VIRTUAL_I16_CNT] = {\n"},
    {4, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_i32[CO_VIRTUAL_I32_CNT] = {\n"},
    {8, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_r32[CO_VIRTUAL_R32_CNT] = {\n"},
    {22, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_u24[CO_VIRTUAL_U24_CNT] = {\n"},
    {10, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_os[CO_VIRTUAL_OS_CNT] = {\n"},
    {9, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_vs[CO_VIRTUAL_VS_CNT] = {\n"},
    {15, "CO_CONST CO_VOBJ_FCT_T CO_CONST_STORAGE_CLASS vod_domain[CO_VIRTUAL_DOMAIN_CNT] = {\n"},
};

bool hasAccessTable(int dataType)
{
    for (const AccessTable& table : accessTables) {
        if (table.dataType == dataType)
            return true;
    }
    return false;
}

// The application's function that serves a virtual sub-index.
QString accessFunction(quint16 index, quint8 subindex)
{
    return QStringLiteral("V_%1_%2").arg(index, 4, 16, QLatin1Char('0')).arg(subindex);
}

} // namespace

VobjDictGenerator::VobjDictGenerator(bool compactDescription, QObject* parent)
    : ObjDictGenerator(compactDescription, false, parent)
{
}

bool VobjDictGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/gen_vobjdict.c").arg(m_outputDir));
}

AbstractGenerator::GeneratorStatus VobjDictGenerator::start()
{
    return startWorker(QStringLiteral("gen_vobjdict.c"));
}

bool VobjDictGenerator::hasVirtualObjects()
{
    if (!m_database)
        return false;
    for (quint8 line : m_database->getNodeList()) {
        if (line > highestDictionaryLine)
            continue;
        for (const ObjectDataBase::ObjectEntry& object : m_database->getObjects(line, 0x1000, 0xBFFF)) {
            for (quint8 subindex : object.subindices) {
                SUBINDEX_DATA_T sub;
                if (m_database->getSubIndex(line, object.index, subindex, sub) &&
                    sub.implementation == virtualImplementation)
                    return true;
            }
        }
    }
    return false;
}

void VobjDictGenerator::doJob()
{
    beginJob();
    readGenerateML();
    readProject();
    layOut();
    if (openOutputFile(QStringLiteral("gen_vobjdict.c"))) {
        writeHead();
        writeAccessFunctions();
        Q_EMIT progress(25);
        writeDescriptionRows();
        Q_EMIT progress(50);
        writeAssignRows();
        Q_EMIT progress(75);
    }
    finishJob();
}

// Rows are numbered over all lines, slots over all lines per data type.
void VobjDictGenerator::layOut()
{
    m_entries.clear();
    m_virtualObjects.clear();
    QHash<int, int> slotsPerType;
    for (quint8 line : dictionaryLines()) {
        if (objectsOf(line).size() < 2)
            continue;
        for (const DictObject& object : objectsOf(line)) {
            if (!inVirtualRange(object.index))
                continue;
            VirtualObject found{line, &object, int(m_entries.size()), 0};
            for (qsizetype position = 0; position < object.subindices.size(); ++position) {
                const quint8 subindex = object.subindices.at(position);
                const SUBINDEX_DATA_T& sub = object.subs.at(position);
                if (subindex > object.compactEnd)
                    break;
                if (sub.implementation != virtualImplementation)
                    continue;
                const int slot = hasAccessTable(sub.datatype) ? slotsPerType[sub.datatype]++ : 0;
                m_entries << VirtualEntry{line, object.index, subindex,
                                          &sub, slot,         subindex == object.compactEnd};
                ++found.rows;
            }
            if (found.rows > 0)
                m_virtualObjects << found;
        }
    }
}

void VobjDictGenerator::writeHead()
{
    SectionStream out(this);
    out << "/*\n";
    if (coreForm())
        out << QStringLiteral(" * virtual object dictionary for %1 - generated by %2 %3 (V4)\n")
                   .arg(m_deviceName, QCoreApplication::applicationName(), m_version);
    else
        out << QStringLiteral(" * virtual object dictionary for %1 for external non-addressable memory - "
                              "generated by %2 %3\n")
                   .arg(m_deviceName, QCoreApplication::applicationName(), m_version);
    out << " * " << dateTimeText() << " */\n";
    out << "#include <stdlib.h>\n\n";
    out << "#include <gen_define.h>\n";
    out << "#include <co_canopen.h>\n";
    const QString applicationHeader =
        m_database->getGeneralSetting(QStringLiteral("applicationheader")).trimmed();
    if (!applicationHeader.isEmpty()) {
        out << "/* application header file(s) */\n";
        for (const QString& header : applicationHeader.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            out << "#include \"" << header << "\"\n";
    }
    writeStorageClasses(out);
}

// The stack reaches a virtual value through the application's function in
// the table of its data type, at the row's slot.
void VobjDictGenerator::writeAccessFunctions()
{
    SectionStream out(this);
    out << "/* access functions of the application for the virtual objects */\n";
    for (const AccessTable& table : accessTables) {
        QStringList entries;
        for (const VirtualEntry& entry : std::as_const(m_entries)) {
            if (entry.sub->datatype == table.dataType)
                entries << QStringLiteral("\t") + accessFunction(entry.index, entry.subindex) +
                               entryComment(entry.line, entry.index, entry.subindex);
        }
        if (entries.isEmpty())
            continue;
        out << table.head;
        out << entries.join(QStringLiteral(",\n")) << "\n";
        out << "};\n";
    }
}

void VobjDictGenerator::writeDescriptionRows()
{
    SectionStream out(this);
    out << "\n/* description of the objects */\n";
    out << "CO_CONST CO_OBJECT_DESC_T CO_CONST_STORAGE_CLASS vod_description[CO_VOBJ_DESC_CNT] = {\n";
    for (const VirtualEntry& entry : std::as_const(m_entries))
        out << rowOf(entry);
    out << "};\n";
}

QString VobjDictGenerator::rowOf(const VirtualEntry& entry) const
{
    const SUBINDEX_DATA_T& sub = *entry.sub;
    QString shortWord = COHelper::index2DataTypeShortString(quint16(sub.datatype)).toUpper();
    if (shortWord == QLatin1String("D"))
        shortWord = QStringLiteral("DOMAIN");
    else if (shortWord == QLatin1String("B"))
        shortWord = QStringLiteral("BOOL");
    QString row = QStringLiteral("\t{ (UNSIGNED8)%1u, ").arg(entry.subindex);
    if (coreForm()) {
        row += (QStringLiteral("CORE_DTYPE_") + shortWord).leftJustified(18) + QStringLiteral(", ");
        row += QStringLiteral("CO_DSPEC") +
               layout().serviceSuffix(entry.line, entry.index, entry.subindex, sub) + QStringLiteral(", ");
    } else {
        row += (QStringLiteral("CO_DTYPE_") + shortWord + QStringLiteral("_PTR")).leftJustified(18) +
               QStringLiteral(", ");
    }
    // A service's object is found by its number; the application's by its access slot.
    const int service = layout().valueSlot(entry.line, entry.index, entry.subindex, sub);
    if (service != 0)
        row += QStringLiteral("(UNSIGNED16)0x%1u, ").arg(service, 0, 16);
    else
        row += QStringLiteral("(UNSIGNED16)%1u, ").arg(entry.slot);
    // The application answers for default and limits of its values.
    SUBINDEX_DATA_T served = sub;
    served.defaultineds = false;
    served.limitineds = false;
    served.nvstorage = false;
    row += layout().attributeWord(objectKey(entry.line, entry.index, entry.subindex), served, false) +
           QStringLiteral(" | CO_ATTR_DYNOD");
    if (entry.compactEnd)
        row += QStringLiteral(" | CO_ATTR_COMPACT");
    row += QStringLiteral(",  (UNSIGNED16)0");
    if (limitCheck() > 0)
        row += QStringLiteral("u, (UNSIGNED16)0u, (UNSIGNED16)0");
    row += QStringLiteral("u},");
    if (multiLineForm())
        row += QStringLiteral("/* %1-0x%2:%3*/ \n")
                   .arg(entry.line)
                   .arg(entry.index, 4, 16, QLatin1Char('0'))
                   .arg(entry.subindex);
    else
        row +=
            QStringLiteral("/* 0x%1:%2*/ \n").arg(entry.index, 4, 16, QLatin1Char('0')).arg(entry.subindex);
    return row;
}

void VobjDictGenerator::writeAssignRows()
{
    SectionStream out(this);
    out << "\n/* object dictionary assignment */\n";
    out << "CO_CONST CO_OD_ASSIGN_T CO_CONST_STORAGE_CLASS vod_assign[CO_VOD_ASSIGN_CNT] = {\n";
    for (const VirtualObject& found : std::as_const(m_virtualObjects)) {
        const DictObject& object = *found.object;
        out << QStringLiteral("\t{ 0x%1u, %2u, %3u, %4, %5u },\n")
                   .arg(object.index, 4, 16, QLatin1Char('0'))
                   .arg(found.rows)
                   .arg(object.subindices.isEmpty() ? 0 : object.subindices.last())
                   .arg(ObjDictLayout::objectTypeWord(object.objectType))
                   .arg(found.firstRow);
    }
    out << "};\n";
}

// The V4 stack spells the constant words of the core layer.
const StackWords* VobjDictGenerator::stackWords() const
{
    return coreForm() ? &StackWords::genVobjdict() : nullptr;
}
