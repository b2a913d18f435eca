#include "canopenlib/edsparser.h"

#include "canopenlib/cohelper.h"

#include <QDebug>

namespace {

enum class SectionKind
{
    Other,
    Object,
    SubObject,
    Names
};

struct SectionAddress
{
    SectionKind kind = SectionKind::Other;
    quint16 index = 0;
    quint8 sub = 0;
};

bool isHexDigit(QChar c)
{
    return c.isDigit() || (c.toLower() >= QLatin1Char('a') && c.toLower() <= QLatin1Char('f'));
}

qsizetype hexDigitRun(QStringView text)
{
    qsizetype length = 0;
    while (length < text.size() && isHexDigit(text[length]))
        ++length;
    return length;
}

// "1018", "1018sub2" and "3004Name"; the suffixes begin with letters that
// can't be hexadecimal digits, so the index ends where the digits end.
SectionAddress classify(QStringView view)
{
    SectionAddress address;
    const qsizetype digits = hexDigitRun(view);
    if (digits == 0 || digits > 4)
        return address;
    address.index = view.left(digits).toUShort(nullptr, 16);
    const QStringView rest = view.mid(digits);
    if (rest.isEmpty()) {
        address.kind = SectionKind::Object;
    } else if (rest.compare(QLatin1String("name"), Qt::CaseInsensitive) == 0) {
        address.kind = SectionKind::Names;
    } else if (rest.startsWith(QLatin1String("sub"), Qt::CaseInsensitive)) {
        const QStringView sub = rest.mid(3);
        if (!sub.isEmpty() && sub.size() <= 2 && hexDigitRun(sub) == sub.size()) {
            address.kind = SectionKind::SubObject;
            address.sub = quint8(sub.toUShort(nullptr, 16));
        }
    }
    return address;
}

// The number at the start of a value; some files put a comment behind it.
quint64 leadingNumber(QStringView text, bool* ok)
{
    qsizetype end = 0;
    while (end < text.size() && !text[end].isSpace() && text[end] != QLatin1Char(';'))
        ++end;
    return COHelper::parseUnsigned(text.left(end), ok);
}

quint8 byteValue(const EdsIniFile::Section& section, QLatin1String key)
{
    bool ok = false;
    const quint64 value = leadingNumber(section.value(key), &ok);
    return ok ? quint8(qMin<quint64>(value, 0xFF)) : 0;
}

PDOMapping pdoMappingOf(const EdsIniFile::Section& section)
{
    const QString text = section.value(QLatin1String("pdomapping")).toLower();
    bool ok = false;
    const quint64 number = leadingNumber(text, &ok);
    const bool mappable = ok ? number != 0 : (text == QLatin1String("true") || text == QLatin1String("yes"));
    return mappable ? PDOMapping::Mappable : PDOMapping::NotMappable;
}

void readLimits(const EdsIniFile::Section& section, CANopenSubindex& record)
{
    const QString low = section.value(QLatin1String("lowlimit"));
    const QString high = section.value(QLatin1String("highlimit"));
    if (low.isEmpty() && high.isEmpty())
        return;
    // A file that names one end only leaves the other at the end of the type's range.
    COHelper::getDefaultLimits(CAN::CANopenDataType(record.datatype), record.lowlimit, record.uplimit);
    if (!low.isEmpty())
        record.lowlimit = low;
    if (!high.isEmpty())
        record.uplimit = high;
    record.limitineds = true;
}

void readObjFlags(const EdsIniFile::Section& section, CANopenSubindex& record)
{
    const quint8 flags = byteValue(section, QLatin1String("objflags"));
    record.refusewrite = flags & 0x01;
    record.refuseread = flags & 0x02;
}

int stringSize(int datatype, const QString& value)
{
    switch (datatype) {
    case CAN::VisibleString:
    case CAN::Utf8String:
        return int(value.toUtf8().size());
    case CAN::UnicodeString:
        return int(value.size() * 2);
    default:
        return 0;
    }
}

} // namespace

EdsParser::EdsParser(QObject* parent) : QObject(parent) {}

bool EdsParser::LoadEds(QString path)
{
    m_compactNames.clear();
    m_mandatory.clear();

    EdsIniFile file;
    if (!file.load(path))
        return false;

    readObjectLists(file.sections());
    const QList<ObjectSections> objects = collectObjects(file.sections());
    for (const ObjectSections& object : objects)
        emitObject(object);
    return !objects.isEmpty();
}

QMap<QString, QString> EdsParser::getCompactSubObjNames(quint16 index) const
{
    return m_compactNames.value(index);
}

void EdsParser::readObjectLists(const QList<EdsIniFile::Section>& sections)
{
    for (const EdsIniFile::Section& section : sections) {
        if (section.name.compare(QLatin1String("MandatoryObjects"), Qt::CaseInsensitive) != 0)
            continue;
        for (const auto& [key, value] : section.entries) {
            bool ok = false;
            const quint64 index = leadingNumber(value, &ok);
            if (ok && index <= 0xFFFF &&
                key.compare(QLatin1String("SupportedObjects"), Qt::CaseInsensitive) != 0)
                m_mandatory.insert(quint16(index));
        }
    }
}

void EdsParser::readCompactNames(quint16 index, const EdsIniFile::Section& section)
{
    QMap<QString, QString>& names = m_compactNames[index];
    for (const auto& [key, value] : section.entries) {
        bool ok = false;
        const quint64 sub = COHelper::parseUnsigned(key, &ok);
        if (ok && sub <= 0xFF)
            names.insert(QString::number(sub), value.toString());
    }
}

QList<EdsParser::ObjectSections> EdsParser::collectObjects(const QList<EdsIniFile::Section>& sections)
{
    QList<ObjectSections> objects;
    QHash<quint16, qsizetype> objectSlot;
    for (const EdsIniFile::Section& section : sections) {
        const SectionAddress address = classify(section.name);
        if (address.kind == SectionKind::Object && !objectSlot.contains(address.index)) {
            objectSlot.insert(address.index, objects.size());
            objects.append({address.index, &section, {}, {}});
        } else if (address.kind == SectionKind::Names) {
            readCompactNames(address.index, section);
        }
    }
    // Subindex sections may stand anywhere in the file; a second section of
    // the same subindex (written as "sub1" and "sub01") adds to the first.
    for (const EdsIniFile::Section& section : sections) {
        const SectionAddress address = classify(section.name);
        if (address.kind != SectionKind::SubObject)
            continue;
        const auto slot = objectSlot.constFind(address.index);
        if (slot == objectSlot.constEnd()) {
            qDebug() << Q_FUNC_INFO << "subindex without object:" << section.name;
            continue;
        }
        ObjectSections& object = objects[slot.value()];
        const qsizetype known = object.subNumbers.indexOf(address.sub);
        if (known >= 0) {
            object.subs[known].mergeFrom(section);
        } else {
            object.subs.append(section);
            object.subNumbers.append(address.sub);
        }
    }
    return objects;
}

CANopen::CANopenIndex EdsParser::makeIndex(const ObjectSections& object) const
{
    const EdsIniFile::Section& section = *object.object;
    CANopen::CANopenIndex index;
    index.index = object.index;
    if (section.has(QLatin1String("parametername")))
        index.name = section.value(QLatin1String("parametername"));
    if (section.has(QLatin1String("datatype")))
        index.datatype = COHelper::mapDataTypeString(section.value(QLatin1String("datatype")));
    index.description = section.comment();
    index.category = m_mandatory.contains(object.index) ? CANopen::Mandatory : CANopen::Optional;
    index.subnumber = byteValue(section, QLatin1String("subnumber"));
    index.compactsubobj = byteValue(section, QLatin1String("compactsubobj"));
    if (section.has(QLatin1String("accesstype")))
        index.accesstype = COHelper::normalizeAccessType(section.value(QLatin1String("accesstype")));
    index.defaultineds = section.has(QLatin1String("defaultvalue"));
    index.defaultvalue = section.value(QLatin1String("defaultvalue"));
    index.pdomapping = pdoMappingOf(section);

    const QString objectType = section.value(QLatin1String("objecttype"));
    bool known = false;
    const quint64 code = leadingNumber(objectType, &known);
    if (known && code <= 0xFF) {
        index.objecttype = int(code);
    } else {
        index.objecttype = COHelper::string2objectCode(objectType, &known);
    }
    // Without a usable ObjectType the other keys tell what the object is.
    if (!known) {
        if (index.compactsubobj > 0)
            index.objecttype = CANopen::Array;
        else if (index.subnumber > 0 || (!object.subs.isEmpty() && !section.has(QLatin1String("datatype"))))
            index.objecttype = CANopen::Record;
        else
            index.objecttype = CANopen::Var;
    }
    return index;
}

CANopenSubindex EdsParser::makeSubindex(const EdsIniFile::Section& section,
                                        const CANopen::CANopenIndex& owner,
                                        const EdsIniFile::Section& ownerSection, quint8 sub) const
{
    CANopenSubindex record;
    record.index = owner.index;
    record.subindex = sub;
    if (section.has(QLatin1String("parametername")))
        record.name = section.value(QLatin1String("parametername"));
    if (section.has(QLatin1String("datatype")))
        record.datatype = COHelper::mapDataTypeString(section.value(QLatin1String("datatype")));
    else if (sub > 0 && owner.objecttype == CANopen::Array && ownerSection.has(QLatin1String("datatype")))
        record.datatype = owner.datatype;
    if (section.has(QLatin1String("accesstype")))
        record.accesstype = COHelper::normalizeAccessType(section.value(QLatin1String("accesstype")));
    else if (ownerSection.has(QLatin1String("accesstype")))
        record.accesstype = owner.accesstype;
    record.defaultineds = section.has(QLatin1String("defaultvalue"));
    record.defaultvalue = section.value(QLatin1String("defaultvalue"));
    record.currentvalue = section.value(QLatin1String("parametervalue"));
    record.pdomapping = pdoMappingOf(section);
    readLimits(section, record);
    readObjFlags(section, record);
    record.denotation = section.value(QLatin1String("denotation"));
    record.description = section.comment();
    record.size = stringSize(record.datatype, record.defaultvalue);
    return record;
}

void EdsParser::emitObject(const ObjectSections& object)
{
    const CANopen::CANopenIndex index = makeIndex(object);
    emit newIndex(index);

    const bool composite = index.objecttype == CANopen::Array || index.objecttype == CANopen::Record;
    if (!composite) {
        emit newSubIndex(makeSubindex(*object.object, index, *object.object, 0));
        return;
    }
    // The reader of the object builds the subindices of a compact array itself.
    if (index.objecttype == CANopen::Array && index.compactsubobj > 0)
        return;
    for (qsizetype i = 0; i < object.subs.size(); ++i)
        emit newSubIndex(makeSubindex(object.subs[i], index, *object.object, object.subNumbers[i]));
}
