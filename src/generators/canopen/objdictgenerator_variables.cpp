#include "generators/canopen/objdictgenerator.h"

#include "canopenlib/cohelper.h"

namespace {

struct GroupInfo
{
    const char* suffix;
    // Managed variable, constant and pointer table heads, each followed by the count.
    const char* managedHead;
    const char* constHead;
    const char* pointerHead;
    // The entry form: "\t" + cast + value + literal suffix; a wide type has its macro instead.
    const char* cast;
    const char* literalSuffix;
    int wideCode;
};

// In the order of CAN::ValueGroup, which is the order of the managed and pointer tables.
const GroupInfo groups[] = {
    {"u8", "static UNSIGNED8 CO_STORAGE_CLASS\tod_u8[",
     "static CO_CONST UNSIGNED8 CO_CONST_STORAGE_CLASS\tod_const_u8[",
     "static UNSIGNED8 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u8[", "(UNSIGNED8)", "u", 0},
    {"u16", "static UNSIGNED16 CO_STORAGE_CLASS\tod_u16[",
     "static CO_CONST UNSIGNED16 CO_CONST_STORAGE_CLASS\tod_const_u16[",
     "static UNSIGNED16 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u16[", "(UNSIGNED16)", "u", 0},
    {"u24", "static UNSIGNED24 CO_STORAGE_CLASS\tod_u24[",
     "static CO_CONST UNSIGNED24 CO_CONST_STORAGE_CLASS\tod_const_u24[",
     "static UNSIGNED24 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u24[", "", "", CAN::Unsigned24},
    {"u32", "static UNSIGNED32 CO_STORAGE_CLASS\tod_u32[",
     "static CO_CONST UNSIGNED32 CO_CONST_STORAGE_CLASS\tod_const_u32[",
     "static UNSIGNED32 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u32[", "(UNSIGNED32)", "UL", 0},
    {"u40", "static UNSIGNED40 CO_STORAGE_CLASS\tod_u40[",
     "static CO_CONST UNSIGNED40 CO_CONST_STORAGE_CLASS\tod_const_u40[",
     "static UNSIGNED40 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u40[", "", "", CAN::Unsigned40},
    {"u48", "static UNSIGNED48 CO_STORAGE_CLASS\tod_u48[",
     "static CO_CONST UNSIGNED48 CO_CONST_STORAGE_CLASS\tod_const_u48[",
     "static UNSIGNED48 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u48[", "", "", CAN::Unsigned48},
    {"u64", "static UNSIGNED64 CO_STORAGE_CLASS\tod_u64[",
     "static CO_CONST UNSIGNED64 CO_CONST_STORAGE_CLASS\tod_const_u64[",
     "static UNSIGNED64 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_u64[", "", "", CAN::Unsigned64},
    {"i8", "static INTEGER8  CO_STORAGE_CLASS\tod_i8[",
     "static CO_CONST INTEGER8 CO_CONST_STORAGE_CLASS\tod_const_i8[",
     "static INTEGER8  CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i8[", "(INTEGER8)", "", 0},
    {"i16", "static INTEGER16 CO_STORAGE_CLASS\tod_i16[",
     "static CO_CONST INTEGER16 CO_CONST_STORAGE_CLASS\tod_const_i16[",
     "static INTEGER16 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i16[", "(INTEGER16)", "", 0},
    {"i24", "static INTEGER24 CO_STORAGE_CLASS\tod_i24[",
     "static CO_CONST INTEGER24 CO_CONST_STORAGE_CLASS\tod_const_i24[",
     "static INTEGER24 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i24[", "", "", CAN::Integer24},
    {"i32", "static INTEGER32 CO_STORAGE_CLASS\tod_i32[",
     "static CO_CONST INTEGER32 CO_CONST_STORAGE_CLASS\tod_const_i32[",
     "static INTEGER32 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_i32[", "(INTEGER32)", "L", 0},
    {"r32", "static REAL32 CO_STORAGE_CLASS\tod_r32[",
     "static CO_CONST REAL32 CO_CONST_STORAGE_CLASS\tod_const_r32[",
     "static REAL32 CO_CONST_STORAGE_CLASS * CO_CONST \tod_ptr_r32[", "(REAL32)", "f", 0},
};

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

// The initialiser of one value of a numeric group; REAL32 with the given precision.
QString valueText(int group, const QString& text, int realDigits)
{
    const GroupInfo& info = groups[group];
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
    if (info.wideCode != 0)
        return QLatin1Char('\t') +
               AbstractGenerator::formatWideInteger(info.wideCode, unsignedValue, signedValue);
    const QString number = isSigned(group) ? QString::number(signedValue) : QString::number(unsignedValue);
    return QLatin1Char('\t') + QLatin1String(info.cast) + number + QLatin1String(info.literalSuffix);
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
    QStringList entries;
    QHash<QString, int> positions;

    int add(const QString& entry)
    {
        const auto it = positions.constFind(entry);
        if (it != positions.constEnd())
            return it.value();
        positions.insert(entry, int(entries.size()));
        entries << entry;
        return int(entries.size() - 1);
    }
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
    ValueTable tables[CAN::GroupCount];
    for (quint8 line : dictionaryLines()) {
        for (const DictObject& object : objectsOf(line)) {
            for (qsizetype position = 0; position < object.subindices.size(); ++position) {
                const quint8 subindex = object.subindices.at(position);
                const SUBINDEX_DATA_T& sub = object.subs.at(position);
                if (sub.implementation != CANopen::ManagedVariable ||
                    ownedByService(object.index, subindex) || (line != 0 && sub.sharedlines))
                    continue;
                const CAN::ValueGroup group = COHelper::valueGroup(sub.datatype);
                if (group == CAN::NoGroup)
                    continue;
                const quint32 key = objectKey(line, object.index, subindex);
                m_varSlot.insert(key, int(tables[group].entries.size()));
                tables[group].keys << key;
                if (initialised)
                    tables[group].entries
                        << valueText(group, sub.defaultvalue, 7) + entryComment(line, object.index, subindex);
                else
                    tables[group].entries << QString();
            }
        }
    }
    for (int group = 0; group < CAN::GroupCount; ++group) {
        const ValueTable& table = tables[group];
        if (table.keys.isEmpty())
            continue;
        m_writtenTables.insert(QStringLiteral("od_") + QLatin1String(groups[group].suffix));
        out << groups[group].managedHead << table.keys.size() << "]" << specifier;
        if (!initialised) {
            out << ";\n";
            continue;
        }
        out << "= {\n";
        out << table.entries.join(group == CAN::GroupI32 ? QStringLiteral(",\n ") : QStringLiteral(",\n"));
        out << "};\n";
    }
}

void ObjDictGenerator::writeConstants()
{
    SectionStream out(this);
    out << "\n/* definition of constants */\n";
    UniqueTable tables[CAN::GroupCount];
    QStringList visStrings, visLengths, utf8Strings, utf8Lengths;
    for (quint8 line : dictionaryLines()) {
        for (const DictObject& object : objectsOf(line)) {
            for (qsizetype position = 0; position < object.subindices.size(); ++position) {
                const quint8 subindex = object.subindices.at(position);
                const SUBINDEX_DATA_T& sub = object.subs.at(position);
                const quint32 key = objectKey(line, object.index, subindex);
                const CAN::ValueGroup group = COHelper::valueGroup(sub.datatype);
                if (group != CAN::NoGroup) {
                    QString defaultText = sub.defaultvalue;
                    defaultText.remove(QLatin1String("$nodeid+"), Qt::CaseInsensitive);
                    m_constSlot.insert(key, tables[group].add(valueText(group, defaultText, 8)));
                    if (m_limitCheck > 0 && sub.limitineds && writableAccess(sub.accesstype)) {
                        m_lowLimitSlot.insert(key, tables[group].add(valueText(group, sub.lowlimit, 8)));
                        m_upLimitSlot.insert(key, tables[group].add(valueText(group, sub.uplimit, 8)));
                    }
                } else if (sub.implementation == CANopen::ManagedConst &&
                           (sub.datatype == CAN::VisibleString || sub.datatype == CAN::OctetString)) {
                    m_constSlot.insert(key, int(visStrings.size()));
                    visStrings << constStringEntry(sub.defaultvalue);
                    visLengths << QLatin1Char('\t') + QString::number(sub.size);
                } else if (sub.implementation == CANopen::ManagedConst && sub.datatype == CAN::Utf8String) {
                    m_constSlot.insert(key, int(utf8Strings.size()));
                    utf8Strings << constStringEntry(sub.defaultvalue);
                    utf8Lengths << QLatin1Char('\t') + QString::number(sub.size);
                }
            }
        }
    }
    const CAN::ValueGroup constOrder[] = {CAN::GroupU8,  CAN::GroupU16, CAN::GroupU32, CAN::GroupU24,
                                          CAN::GroupU40, CAN::GroupU48, CAN::GroupU64, CAN::GroupI8,
                                          CAN::GroupI16, CAN::GroupI24, CAN::GroupI32, CAN::GroupR32};
    for (CAN::ValueGroup group : constOrder) {
        if (tables[group].entries.isEmpty())
            continue;
        m_writtenTables.insert(QStringLiteral("od_const_") + QLatin1String(groups[group].suffix));
        out << groups[group].constHead << tables[group].entries.size() << "] = {\n";
        out << tables[group].entries.join(QStringLiteral(",\n")) << "};\n";
    }
    auto writeStringTable = [&](const char* head, const QString& name, const QStringList& entries) {
        if (entries.isEmpty())
            return;
        m_writtenTables.insert(name);
        out << head << entries.size() << "] = {\n" << entries.join(QStringLiteral(",\n")) << "};\n";
    };
    writeStringTable("static CO_CONST VIS_STRING CO_CONST_STORAGE_CLASS\tod_const_vis_string[",
                     QStringLiteral("od_const_vis_string"), visStrings);
    writeStringTable("static CO_CONST UTF8_STRING CO_CONST_STORAGE_CLASS\tod_const_utf8_string[",
                     QStringLiteral("od_const_utf8_string"), utf8Strings);
    writeStringTable("static CO_CONST UNSIGNED32 CO_CONST_STORAGE_CLASS\tod_const_vis_string_len[",
                     QStringLiteral("od_const_vis_string_len"), visLengths);
    writeStringTable("static CO_CONST UNSIGNED32 CO_CONST_STORAGE_CLASS\tod_const_utf8_string_len[",
                     QStringLiteral("od_const_utf8_string_len"), utf8Lengths);
}

void ObjDictGenerator::writeStringDefaultValues()
{
    SectionStream out(this);
    out << "\n/* definition of string default values for variables */\n";
    out << "static CO_CONST char stringDefaultValues[] = {\n";
    int offset = 0;
    for (quint8 line : dictionaryLines()) {
        if (objectsOf(line).size() < 2)
            continue;
        for (const DictObject& object : objectsOf(line)) {
            for (qsizetype position = 0; position < object.subindices.size(); ++position) {
                const quint8 subindex = object.subindices.at(position);
                const SUBINDEX_DATA_T& sub = object.subs.at(position);
                if (sub.implementation != CANopen::ApplicationVariable ||
                    (sub.datatype != CAN::VisibleString && sub.datatype != CAN::OctetString))
                    continue;
                out << "/* " << variableName(line, object.index, subindex, sub) << " */ \n";
                const QByteArray bytes = stringBytes(sub.defaultvalue);
                QString text;
                for (char byte : bytes)
                    text += QStringLiteral("0x%1, ").arg(quint8(byte), 2, 16, QLatin1Char('0'));
                out << text;
                const quint32 key = objectKey(line, object.index, subindex);
                m_stringDefaultKeys << key;
                m_stringDefaults.insert(key, {offset, int(bytes.size())});
                offset += int(bytes.size());
            }
        }
    }
    out << "0x00}; \n\n";
}

void ObjDictGenerator::writeApplicationVariables()
{
    SectionStream out(this);
    out << "\n/* definition of application variables */\n";
    ValueTable pointers[CAN::GroupCount];
    ValueTable visStrings, utf8Strings, octetStrings, domains;
    QStringList visLengths, utf8Lengths, octetLengths, domainLengths;
    for (quint8 line : dictionaryLines()) {
        for (const DictObject& object : objectsOf(line)) {
            for (qsizetype position = 0; position < object.subindices.size(); ++position) {
                const quint8 subindex = object.subindices.at(position);
                const SUBINDEX_DATA_T& sub = object.subs.at(position);
                if (sub.implementation != CANopen::ApplicationVariable ||
                    isSrdoEntry(line, object.index, subindex))
                    continue;
                const quint32 key = objectKey(line, object.index, subindex);
                const QString name = variableName(line, object.index, subindex, sub);
                const QString sizeEntry = QLatin1Char('\t') + QString::number(sub.size);
                const CAN::ValueGroup group = COHelper::valueGroup(sub.datatype);
                ValueTable* table = nullptr;
                if (group != CAN::NoGroup) {
                    table = &pointers[group];
                    const QString pointer =
                        name.contains(QLatin1Char('(')) ? name : QStringLiteral("&(%1)").arg(name);
                    table->entries << QLatin1Char('\t') + pointer +
                                          entryComment(line, object.index, subindex);
                } else if (sub.datatype == CAN::VisibleString || sub.datatype == CAN::Utf8String ||
                           sub.datatype == CAN::OctetString) {
                    table = sub.datatype == CAN::VisibleString ? &visStrings
                            : sub.datatype == CAN::Utf8String  ? &utf8Strings
                                                               : &octetStrings;
                    table->entries << QStringLiteral("\t&(%1[0])").arg(name);
                    (sub.datatype == CAN::VisibleString ? visLengths
                     : sub.datatype == CAN::Utf8String  ? utf8Lengths
                                                        : octetLengths)
                        << sizeEntry;
                } else if (sub.datatype == CAN::Domain) {
                    table = &domains;
                    table->entries << QStringLiteral("\tNULL");
                    domainLengths << QStringLiteral("\t0");
                } else {
                    continue;
                }
                m_varSlot.insert(key, int(table->keys.size()));
                table->keys << key;
            }
        }
    }
    for (int group = 0; group < CAN::GroupCount; ++group) {
        if (pointers[group].keys.isEmpty())
            continue;
        m_writtenTables.insert(QStringLiteral("od_ptr_") + QLatin1String(groups[group].suffix));
        out << groups[group].pointerHead << pointers[group].keys.size() << "] = {\n";
        out << pointers[group].entries.join(QStringLiteral(",\n")) << "};\n";
    }
    auto writeTable = [&](const char* head, const QString& name, const QStringList& entries) {
        m_writtenTables.insert(name);
        out << head << entries.size() << "] = {\n" << entries.join(QStringLiteral(",\n")) << "};\n";
    };
    auto writeLengths = [&](const char* head, const QString& name, const QStringList& sizes) {
        m_writtenTables.insert(name);
        out << head << sizes.size() << "] = {\n"
            << sizes.join(QStringLiteral("ul,\n")) << "ul"
            << "};\n";
    };
    if (!visStrings.keys.isEmpty()) {
        writeTable("static VIS_STRING\tod_vis_string[", QStringLiteral("od_vis_string"), visStrings.entries);
        writeLengths("static UNSIGNED32\tod_vis_string_len[", QStringLiteral("od_vis_string_len"),
                     visLengths);
        writeLengths("static UNSIGNED32\tod_vis_string_actLen[", QStringLiteral("od_vis_string_actLen"),
                     visLengths);
    }
    if (!utf8Strings.keys.isEmpty()) {
        writeTable("static VIS_STRING\tod_utf8_string[", QStringLiteral("od_utf8_string"),
                   utf8Strings.entries);
        writeLengths("static UNSIGNED32\tod_utf8_string_len[", QStringLiteral("od_utf8_string_len"),
                     utf8Lengths);
        writeLengths("static UNSIGNED32\tod_utf8_string_actLen[", QStringLiteral("od_utf8_string_actLen"),
                     utf8Lengths);
    }
    if (!octetStrings.keys.isEmpty()) {
        writeTable("static OCTET_STRING\t*od_octet_string[", QStringLiteral("od_octet_string"),
                   octetStrings.entries);
        writeLengths("static UNSIGNED32 CO_STORAGE_CLASS\tod_octet_string_len[",
                     QStringLiteral("od_octet_string_len"), octetLengths);
        writeLengths("static UNSIGNED32 CO_STORAGE_CLASS\tod_octet_string_actLen[",
                     QStringLiteral("od_octet_string_actLen"), octetLengths);
    }
    if (!domains.keys.isEmpty()) {
        writeTable("static CO_DOMAIN_PTR\tod_domain[", QStringLiteral("od_domain"), domains.entries);
        writeLengths("static UNSIGNED32 CO_STORAGE_CLASS\tod_domain_len[", QStringLiteral("od_domain_len"),
                     domainLengths);
        writeLengths("static UNSIGNED32 CO_STORAGE_CLASS\tod_domain_actLen[",
                     QStringLiteral("od_domain_actLen"), domainLengths);
    }
}
