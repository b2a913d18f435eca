#include "generators/canopen/objdictgenerator.h"

#include "canopenlib/cohelper.h"

namespace {

struct GroupInfo
{
    // Managed variable, constant and pointer table heads, each followed by the count.
    const char* managedHead;
    const char* constHead;
    const char* pointerHead;
};

// In the order of CAN::ValueGroup, which is the order of the managed and pointer tables.
const GroupInfo groups[] = {
    {"static UNSIGNED8 CO_STORAGE_CLASS\tod_u8[",
     "static CO_CONST UNSIGNED8 CO_CONST_STORAGE_CLASS\tod_const_u8[",
     "static UNSIGNED8 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u8["},
    {"static UNSIGNED16 CO_STORAGE_CLASS\tod_u16[",
     "static CO_CONST UNSIGNED16 CO_CONST_STORAGE_CLASS\tod_const_u16[",
     "static UNSIGNED16 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u16["},
    {"static UNSIGNED24 CO_STORAGE_CLASS\tod_u24[",
     "static CO_CONST UNSIGNED24 CO_CONST_STORAGE_CLASS\tod_const_u24[",
     "static UNSIGNED24 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u24["},
    {"static UNSIGNED32 CO_STORAGE_CLASS\tod_u32[",
     "static CO_CONST UNSIGNED32 CO_CONST_STORAGE_CLASS\tod_const_u32[",
     "static UNSIGNED32 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u32["},
    {"static UNSIGNED40 CO_STORAGE_CLASS\tod_u40[",
     "static CO_CONST UNSIGNED40 CO_CONST_STORAGE_CLASS\tod_const_u40[",
     "static UNSIGNED40 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u40["},
    {"static UNSIGNED48 CO_STORAGE_CLASS\tod_u48[",
     "static CO_CONST UNSIGNED48 CO_CONST_STORAGE_CLASS\tod_const_u48[",
     "static UNSIGNED48 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u48["},
    {"static UNSIGNED64 CO_STORAGE_CLASS\tod_u64[",
     "static CO_CONST UNSIGNED64 CO_CONST_STORAGE_CLASS\tod_const_u64[",
     "static UNSIGNED64 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u64["},
    {"static INTEGER8  CO_STORAGE_CLASS\tod_i8[",
     "static CO_CONST INTEGER8 CO_CONST_STORAGE_CLASS\tod_const_i8[",
     "static INTEGER8  CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i8["},
    {"static INTEGER16 CO_STORAGE_CLASS\tod_i16[",
     "static CO_CONST INTEGER16 CO_CONST_STORAGE_CLASS\tod_const_i16[",
     "static INTEGER16 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i16["},
    {"static INTEGER24 CO_STORAGE_CLASS\tod_i24[",
     "static CO_CONST INTEGER24 CO_CONST_STORAGE_CLASS\tod_const_i24[",
     "static INTEGER24 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i24["},
    {"static INTEGER32 CO_STORAGE_CLASS\tod_i32[",
     "static CO_CONST INTEGER32 CO_CONST_STORAGE_CLASS\tod_const_i32[",
     "static INTEGER32 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i32["},
    {"static REAL32 CO_STORAGE_CLASS\tod_r32[",
     "static CO_CONST REAL32 CO_CONST_STORAGE_CLASS\tod_const_r32[",
     "static REAL32 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_r32["},
};

} // namespace

void ObjDictGenerator::writeManagedVariables()
{
    SectionStream out(this);
    out << "\n/* definition of managed variables */\n";
    const bool initialised = settingInt(QStringLiteral("init_static_variables")) == 1;
    QString specifier = setting(QStringLiteral("static_memory_specifier")).trimmed();
    if (!specifier.isEmpty())
        specifier = QLatin1Char(' ') + specifier + QLatin1Char(' ');
    for (int group = 0; group < CAN::GroupCount; ++group) {
        const QList<quint32>& keys = m_layout.managedKeys(group);
        if (keys.isEmpty())
            continue;
        out << groups[group].managedHead << keys.size() << "]" << specifier;
        if (!initialised) {
            out << ";\n";
            continue;
        }
        QStringList entries;
        for (quint32 key : keys)
            entries << ObjDictLayout::valueText(group, subOf(key).defaultvalue, 7) +
                           entryComment(quint8(key >> 24), quint16(key >> 8), quint8(key));
        out << "= {\n";
        out << entries.join(group == CAN::GroupI32 ? QStringLiteral(",\n ") : QStringLiteral(",\n"));
        out << "};\n";
    }
}

void ObjDictGenerator::writeConstants()
{
    SectionStream out(this);
    out << "\n/* definition of constants */\n";
    const CAN::ValueGroup constOrder[] = {CAN::GroupU8,  CAN::GroupU16, CAN::GroupU32, CAN::GroupU24,
                                          CAN::GroupU40, CAN::GroupU48, CAN::GroupU64, CAN::GroupI8,
                                          CAN::GroupI16, CAN::GroupI24, CAN::GroupI32, CAN::GroupR32};
    for (CAN::ValueGroup group : constOrder) {
        const QStringList& entries = m_layout.constEntries(group);
        if (entries.isEmpty())
            continue;
        out << groups[group].constHead << entries.size() << "] = {\n";
        out << entries.join(QStringLiteral(",\n")) << "};\n";
    }
    auto writeStringTable = [&](const char* head, const QStringList& entries) {
        if (entries.isEmpty())
            return;
        out << head << entries.size() << "] = {\n" << entries.join(QStringLiteral(",\n")) << "};\n";
    };
    writeStringTable("static CO_CONST VIS_STRING CO_CONST_STORAGE_CLASS\tod_const_vis_string[",
                     m_layout.constStrings(false));
    writeStringTable("static CO_CONST UTF8_STRING CO_CONST_STORAGE_CLASS\tod_const_utf8_string[",
                     m_layout.constStrings(true));
    writeStringTable("static CO_CONST UNSIGNED32 CO_CONST_STORAGE_CLASS\tod_const_vis_string_len[",
                     m_layout.constStringLengths(false));
    writeStringTable("static CO_CONST UNSIGNED32 CO_CONST_STORAGE_CLASS\tod_const_utf8_string_len[",
                     m_layout.constStringLengths(true));
}

void ObjDictGenerator::writeStringDefaultValues()
{
    SectionStream out(this);
    out << "\n/* definition of string default values for variables */\n";
    out << "static CO_CONST char stringDefaultValues[] = {\n";
    for (const ObjDictLayout::StringDefault& value : m_layout.stringDefaults()) {
        out << "/* "
            << variableName(quint8(value.key >> 24), quint16(value.key >> 8), quint8(value.key),
                            subOf(value.key))
            << " */ \n";
        QString text;
        for (char byte : value.bytes)
            text += QStringLiteral("0x%1, ").arg(quint8(byte), 2, 16, QLatin1Char('0'));
        out << text;
    }
    out << "0x00}; \n\n";
}

void ObjDictGenerator::writeApplicationVariables()
{
    SectionStream out(this);
    out << "\n/* definition of application variables */\n";
    for (int group = 0; group < CAN::GroupCount; ++group) {
        const QList<quint32>& keys = m_layout.pointerKeys(group);
        if (keys.isEmpty())
            continue;
        QStringList entries;
        for (quint32 key : keys) {
            const quint8 line = quint8(key >> 24);
            const quint16 index = quint16(key >> 8);
            const quint8 subindex = quint8(key);
            const QString name = variableName(line, index, subindex, subOf(key));
            const QString pointer =
                name.contains(QLatin1Char('(')) ? name : QStringLiteral("&(%1)").arg(name);
            entries << QLatin1Char('\t') + pointer + entryComment(line, index, subindex);
        }
        out << groups[group].pointerHead << keys.size() << "] = {\n";
        out << entries.join(QStringLiteral(",\n")) << "};\n";
    }
    // The pointers of a string or domain type with the tables of their sizes and actual sizes.
    auto writeTables = [&](int dataType, const char* head, const char* lengthHead, const char* actualHead) {
        const QList<quint32>& keys = m_layout.applicationKeys(dataType);
        if (keys.isEmpty())
            return;
        QStringList entries, sizes;
        for (quint32 key : keys) {
            const SUBINDEX_DATA_T& sub = subOf(key);
            if (dataType == CAN::Domain) {
                entries << QStringLiteral("\tNULL");
                sizes << QStringLiteral("\t0");
            } else {
                entries << QStringLiteral("\t&(%1[0])")
                               .arg(variableName(quint8(key >> 24), quint16(key >> 8), quint8(key), sub));
                sizes << QLatin1Char('\t') + QString::number(sub.size);
            }
        }
        out << head << entries.size() << "] = {\n" << entries.join(QStringLiteral(",\n")) << "};\n";
        for (const char* sizeHead : {lengthHead, actualHead})
            out << sizeHead << sizes.size() << "] = {\n"
                << sizes.join(QStringLiteral("ul,\n")) << "ul"
                << "};\n";
    };
    writeTables(CAN::VisibleString, "static VIS_STRING\tod_vis_string[",
                "static UNSIGNED32\tod_vis_string_len[", "static UNSIGNED32\tod_vis_string_actLen[");
    writeTables(CAN::Utf8String, "static VIS_STRING\tod_utf8_string[",
                "static UNSIGNED32\tod_utf8_string_len[", "static UNSIGNED32\tod_utf8_string_actLen[");
    writeTables(CAN::OctetString, "static OCTET_STRING\t*od_octet_string[",
                "static UNSIGNED32 CO_STORAGE_CLASS\tod_octet_string_len[",
                "static UNSIGNED32 CO_STORAGE_CLASS\tod_octet_string_actLen[");
    writeTables(CAN::Domain, "static CO_DOMAIN_PTR\tod_domain[",
                "static UNSIGNED32 CO_STORAGE_CLASS\tod_domain_len[",
                "static UNSIGNED32 CO_STORAGE_CLASS\tod_domain_actLen[");
}
