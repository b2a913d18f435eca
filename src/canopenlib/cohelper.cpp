#include "canopenlib/cohelper.h"

#include <QHash>
#include <QObject>

namespace {

struct DataTypeInfo
{
    quint16 number;
    const char* name;
    // The spelling in generated C: the word of stack type and table names.
    const char* shortName;
    quint8 bits;
    CAN::ValueGroup group;
    CAN::Signedness signedness;
    // The initialiser macro of an integer width C has no type for, else null.
    const char* wideMacro;
    // Null for types without a numeric range.
    const char* low;
    const char* up;
};

using namespace CAN;

// Every fact about a data type is a column here. Signed and unsigned ranges
// are spelt out rather than computed, so that the 64-bit ends read exactly as
// a C compiler or a device description expects them. The time types sit in
// the 48-bit table but are no plain numbers.
const DataTypeInfo dataTypes[] = {
    // clang-format off
    {Boolean,        "BOOLEAN",         "b",   1,  GroupU8,  UnsignedInteger, nullptr,   "0", "1"},
    {Integer8,       "INTEGER8",        "i8",  8,  GroupI8,  SignedInteger,   nullptr,   "-128", "127"},
    {Integer16,      "INTEGER16",       "i16", 16, GroupI16, SignedInteger,   nullptr,   "-32768", "32767"},
    {Integer32,      "INTEGER32",       "i32", 32, GroupI32, SignedInteger,   nullptr,   "-2147483648", "2147483647"},
    {Unsigned8,      "UNSIGNED8",       "u8",  8,  GroupU8,  UnsignedInteger, nullptr,   "0", "255"},
    {Unsigned16,     "UNSIGNED16",      "u16", 16, GroupU16, UnsignedInteger, nullptr,   "0", "65535"},
    {Unsigned32,     "UNSIGNED32",      "u32", 32, GroupU32, UnsignedInteger, nullptr,   "0", "4294967295"},
    {Real32,         "REAL32",          "r32", 32, GroupR32, NotInteger,      nullptr,   "-3.4028235e+38", "3.4028235e+38"},
    {VisibleString,  "VISIBLE_STRING",  "vs",  0,  NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {OctetString,    "OCTET_STRING",    "os",  0,  NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {UnicodeString,  "UNICODE_STRING",  "us",  0,  NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {TimeOfDay,      "TIME_OF_DAY",     "u48", 48, GroupU48, NotInteger,      "U48_SET", nullptr, nullptr},
    {TimeDifference, "TIME_DIFFERENCE", "u48", 48, NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {Domain,         "DOMAIN",          "d",   0,  NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {Integer24,      "INTEGER24",       "i24", 24, GroupI24, SignedInteger,   "I24_SET", "-8388608", "8388607"},
    {Real64,         "REAL64",          "r64", 64, NoGroup,  NotInteger,      nullptr,   "-1.7976931348623157e+308", "1.7976931348623157e+308"},
    {Integer40,      "INTEGER40",       "i40", 40, NoGroup,  SignedInteger,   nullptr,   "-549755813888", "549755813887"},
    {Integer48,      "INTEGER48",       "i48", 48, NoGroup,  SignedInteger,   nullptr,   "-140737488355328", "140737488355327"},
    {Integer56,      "INTEGER56",       "i56", 56, NoGroup,  SignedInteger,   nullptr,   "-36028797018963968", "36028797018963967"},
    {Integer64,      "INTEGER64",       "i64", 64, NoGroup,  SignedInteger,   nullptr,   "-9223372036854775808", "9223372036854775807"},
    {Unsigned24,     "UNSIGNED24",      "u24", 24, GroupU24, UnsignedInteger, "U24_SET", "0", "16777215"},
    {Unsigned40,     "UNSIGNED40",      "u40", 40, GroupU40, UnsignedInteger, "U40_SET", "0", "1099511627775"},
    {Unsigned48,     "UNSIGNED48",      "u48", 48, GroupU48, UnsignedInteger, "U48_SET", "0", "281474976710655"},
    {Unsigned56,     "UNSIGNED56",      "u56", 56, NoGroup,  UnsignedInteger, nullptr,   "0", "72057594037927935"},
    {Unsigned64,     "UNSIGNED64",      "u64", 64, GroupU64, UnsignedInteger, "U64_SET", "0", "18446744073709551615"},
    {PdoCommunicationParameter, "PDO_COMMUNICATION_PARAMETER", "", 0, NoGroup, NotInteger, nullptr, nullptr, nullptr},
    {PdoMappingParameter, "PDO_MAPPING", "", 0, NoGroup, NotInteger,  nullptr,   nullptr, nullptr},
    {SdoParameter,   "SDO_PARAMETER",   "",    0,  NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {Identity,       "IDENTITY",        "",    0,  NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},

    {Unsigned2,      "UNSIGNED2",       "u2",  2,  GroupU8,  UnsignedInteger, nullptr,   "0", "3"},
    {Unsigned3,      "UNSIGNED3",       "u3",  3,  GroupU8,  UnsignedInteger, nullptr,   "0", "7"},
    {Unsigned4,      "UNSIGNED4",       "u4",  4,  GroupU8,  UnsignedInteger, nullptr,   "0", "15"},
    {Unsigned5,      "UNSIGNED5",       "u5",  5,  GroupU8,  UnsignedInteger, nullptr,   "0", "31"},
    {Unsigned6,      "UNSIGNED6",       "u6",  6,  GroupU8,  UnsignedInteger, nullptr,   "0", "63"},
    {Unsigned7,      "UNSIGNED7",       "u7",  7,  GroupU8,  UnsignedInteger, nullptr,   "0", "127"},
    {Unsigned9,      "UNSIGNED9",       "u9",  9,  NoGroup,  UnsignedInteger, nullptr,   "0", "511"},
    {Unsigned10,     "UNSIGNED10",      "u10", 10, NoGroup,  UnsignedInteger, nullptr,   "0", "1023"},
    {Unsigned11,     "UNSIGNED11",      "u11", 11, NoGroup,  UnsignedInteger, nullptr,   "0", "2047"},
    {Unsigned12,     "UNSIGNED12",      "u12", 12, NoGroup,  UnsignedInteger, nullptr,   "0", "4095"},
    {Unsigned13,     "UNSIGNED13",      "u13", 13, NoGroup,  UnsignedInteger, nullptr,   "0", "8191"},
    {Unsigned14,     "UNSIGNED14",      "u14", 14, NoGroup,  UnsignedInteger, nullptr,   "0", "16383"},
    {Unsigned15,     "UNSIGNED15",      "u15", 15, NoGroup,  UnsignedInteger, nullptr,   "0", "32767"},
    {Unsigned19,     "UNSIGNED19",      "u19", 19, NoGroup,  UnsignedInteger, nullptr,   "0", "524287"},
    {Unsigned18,     "UNSIGNED18",      "u18", 18, NoGroup,  UnsignedInteger, nullptr,   "0", "262143"},
    {Unsigned21,     "UNSIGNED21",      "u21", 21, NoGroup,  UnsignedInteger, nullptr,   "0", "2097151"},
    {VisStringNull,  "VIS_STRING_NULL", "vs",  0,  NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {VisStringAsterisk, "VIS_STRING_ASTERIKS", "vs", 0, NoGroup, NotInteger,  nullptr,   nullptr, nullptr},
    {Utf8String,     "UTF8_STRING",     "utf8", 0, NoGroup,  NotInteger,      nullptr,   nullptr, nullptr},
    {Unsigned29,     "UNSIGNED29",      "u29", 29, NoGroup,  UnsignedInteger, nullptr,   "0", "536870911"},
    // clang-format on
};

const QHash<quint16, const DataTypeInfo*>& dataTypesByNumber()
{
    static const QHash<quint16, const DataTypeInfo*> table = [] {
        QHash<quint16, const DataTypeInfo*> byNumber;
        for (const DataTypeInfo& info : dataTypes)
            byNumber.insert(info.number, &info);
        return byNumber;
    }();
    return table;
}

const DataTypeInfo* findDataType(quint16 number)
{
    return dataTypesByNumber().value(number, nullptr);
}

// Spellings found in device descriptions besides the names of the table.
const struct
{
    const char* name;
    CAN::CANopenDataType type;
} dataTypeAliases[] = {
    {"VIS_STRING", CAN::VisibleString},
    {"VIS_STRING_ASTERISK", CAN::VisStringAsterisk},
    {"UTF8", CAN::Utf8String},
};

const struct
{
    CANopen::ObjectCode code;
    const char* name;
} objectCodes[] = {
    {CANopen::NullObject, "NULL"},     {CANopen::Domain, "DOMAIN"}, {CANopen::DefType, "DEFTYPE"},
    {CANopen::DefStruct, "DEFSTRUCT"}, {CANopen::Var, "VAR"},       {CANopen::Array, "ARRAY"},
    {CANopen::Record, "RECORD"},
};

const QHash<QString, CAN::CANopenDataType>& dataTypesByName()
{
    static const QHash<QString, CAN::CANopenDataType> table = [] {
        QHash<QString, CAN::CANopenDataType> byName;
        for (const DataTypeInfo& info : dataTypes)
            byName.insert(QLatin1String(info.name), CAN::CANopenDataType(info.number));
        for (const auto& alias : dataTypeAliases)
            byName.insert(QLatin1String(alias.name), alias.type);
        return byName;
    }();
    return table;
}

} // namespace

COHelper::COHelper()
{
    dataTypesByNumber();
    dataTypesByName();
}

quint8 COHelper::getDataLengthBits(CAN::CANopenDataType type)
{
    const DataTypeInfo* info = findDataType(type);
    return info ? info->bits : 0;
}

bool COHelper::getDefaultLimits(CAN::CANopenDataType type, QString& low, QString& up)
{
    const DataTypeInfo* info = findDataType(type);
    if (!info || !info->low)
        return false;
    low = QLatin1String(info->low);
    up = QLatin1String(info->up);
    return true;
}

CAN::ValueGroup COHelper::valueGroup(quint16 type)
{
    const DataTypeInfo* info = findDataType(type);
    return info ? info->group : CAN::NoGroup;
}

CAN::Signedness COHelper::signedness(quint16 type)
{
    const DataTypeInfo* info = findDataType(type);
    return info ? info->signedness : CAN::NotInteger;
}

QString COHelper::wideIntegerMacro(quint16 type)
{
    const DataTypeInfo* info = findDataType(type);
    return info && info->wideMacro ? QLatin1String(info->wideMacro) : QString();
}

CAN::CANopenDataType COHelper::mapDataTypeString(const QString& name)
{
    const QString key = name.trimmed().toUpper();
    const QHash<QString, CAN::CANopenDataType>& byName = dataTypesByName();
    if (const auto it = byName.constFind(key); it != byName.constEnd())
        return it.value();
    bool ok = false;
    const quint64 number = parseUnsigned(key, &ok);
    if (ok && number <= 0xFFFF)
        return CAN::CANopenDataType(number);
    return CAN::Unknown;
}

QString COHelper::index2DataTypeString(quint16 type)
{
    if (const DataTypeInfo* info = findDataType(type))
        return QLatin1String(info->name);
    if (type == CAN::Unknown)
        return QStringLiteral("UNKNOWN");
    return QStringLiteral("0x%1").arg(type, 4, 16, QLatin1Char('0'));
}

QString COHelper::index2DataTypeShortString(quint16 type)
{
    const DataTypeInfo* info = findDataType(type);
    return info ? QLatin1String(info->shortName) : QString();
}

CANopen::ObjectCategory COHelper::convertCategory(const QString& category)
{
    const QString word = category.trimmed().toLower();
    if (word == QLatin1String("mandatory"))
        return CANopen::Mandatory;
    if (word == QLatin1String("conditional"))
        return CANopen::Conditional;
    return CANopen::Optional;
}

QString COHelper::normalizeAccessType(const QString& access)
{
    static const QHash<QString, QString> canonical = {
        {QStringLiteral("ro"), QStringLiteral("ro")},
        {QStringLiteral("readonly"), QStringLiteral("ro")},
        {QStringLiteral("read"), QStringLiteral("ro")},
        {QStringLiteral("r"), QStringLiteral("ro")},
        {QStringLiteral("wo"), QStringLiteral("wo")},
        {QStringLiteral("writeonly"), QStringLiteral("wo")},
        {QStringLiteral("write"), QStringLiteral("wo")},
        {QStringLiteral("w"), QStringLiteral("wo")},
        {QStringLiteral("rw"), QStringLiteral("rw")},
        {QStringLiteral("readwrite"), QStringLiteral("rw")},
        {QStringLiteral("wr"), QStringLiteral("rw")},
        {QStringLiteral("rwr"), QStringLiteral("rwr")},
        {QStringLiteral("readwriteinput"), QStringLiteral("rwr")},
        {QStringLiteral("rww"), QStringLiteral("rww")},
        {QStringLiteral("readwriteoutput"), QStringLiteral("rww")},
        {QStringLiteral("const"), QStringLiteral("const")},
        {QStringLiteral("constant"), QStringLiteral("const")},
    };
    QString word = access.trimmed().toLower();
    const QString compact = QString(word)
                                .remove(QLatin1Char(' '))
                                .remove(QLatin1Char('-'))
                                .remove(QLatin1Char('_'))
                                .remove(QLatin1Char('/'));
    return canonical.value(compact, word);
}

CANopen::ObjectCode COHelper::string2objectCode(QString code, bool* ok)
{
    code = code.trimmed().toUpper();
    if (code == QLatin1String("VARIABLE"))
        code = QStringLiteral("VAR");
    bool isNumber = false;
    const quint64 number = parseUnsigned(code, &isNumber);
    for (const auto& entry : objectCodes) {
        if (code == QLatin1String(entry.name) || (isNumber && number == entry.code)) {
            if (ok)
                *ok = true;
            return entry.code;
        }
    }
    if (ok)
        *ok = false;
    return CANopen::Var;
}

QString COHelper::objectCode2String(CANopen::ObjectCode code)
{
    for (const auto& entry : objectCodes) {
        if (entry.code == code)
            return QLatin1String(entry.name);
    }
    return QString::number(code);
}

quint64 COHelper::parseUnsigned(QStringView text, bool* ok)
{
    const QStringView trimmed = text.trimmed();
    if (trimmed.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        return trimmed.mid(2).toULongLong(ok, 16);
    return trimmed.toULongLong(ok, 10);
}

QString COHelper::pdoMapping2String(PDOMapping mapping)
{
    switch (mapping.value()) {
    case PDOMapping::NotMappable:
        return QObject::tr("not mappable");
    case PDOMapping::Mappable:
        return QObject::tr("mappable");
    case PDOMapping::MappableTPDO:
        return QObject::tr("mappable to TPDO only");
    case PDOMapping::MappableRPDO:
        return QObject::tr("mappable to RPDO only");
    case PDOMapping::MappedByDefault:
        return QObject::tr("mapped by default");
    }
    return QString::number(mapping.toUInt());
}

QString COHelper::implementation2String(quint8 implementation)
{
    switch (implementation) {
    case CANopen::ManagedVariable:
        return QStringLiteral("ManagedVariable");
    case CANopen::ManagedConst:
        return QStringLiteral("ManagedConst");
    case CANopen::ApplicationVariable:
        return QStringLiteral("Variable");
    case CANopen::VirtualObject:
        return QStringLiteral("VirtualObject");
    }
    return QStringLiteral("Unknown");
}
