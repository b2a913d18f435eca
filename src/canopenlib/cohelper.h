#pragma once

#include "canopenlib/canopentypes.h"
#include "canopenlib/pdomapping.h"

#include <QString>

// Names, sizes and value ranges of CANopen data types, object codes, access
// types and categories, in the forms that device descriptions and generated
// code use.
class COHelper
{
public:
    // The tool creates one instance at start, which builds the data type
    // lookup tables up front rather than inside the first generator run.
    COHelper();

    // 0 for strings, DOMAIN and the structured types: their size is not fixed.
    static quint8 getDataLengthBits(CAN::CANopenDataType type);
    // The value table of a generated dictionary the type's values live in.
    static CAN::ValueGroup valueGroup(quint16 type);
    static CAN::Signedness signedness(quint16 type);
    // "U48_SET" and the like for integer widths that C has no type for; empty for the others.
    static QString wideIntegerMacro(quint16 type);
    // False, and low and up untouched, for types without a numeric range.
    static bool getDefaultLimits(CAN::CANopenDataType type, QString& low, QString& up);
    // Accepts the names in any case and the number itself ("0x0007", "7"); 0 when unknown.
    static CAN::CANopenDataType mapDataTypeString(const QString& name);
    // "UNKNOWN" for 0, "0x%1" for a number without a name.
    static QString index2DataTypeString(quint16 type);
    // The word in stack type and array names ("u8" in mv_u8); empty when there is none.
    static QString index2DataTypeShortString(quint16 type);

    // Optional for an unknown word.
    static CANopen::ObjectCategory convertCategory(const QString& category);
    // Unknown words come back lower-cased and trimmed.
    static QString normalizeAccessType(const QString& access);
    // Accepts the CiA 306 words, "VARIABLE" and numbers; VAR for anything else, with *ok false.
    static CANopen::ObjectCode string2objectCode(QString code, bool* ok = nullptr);
    static QString objectCode2String(CANopen::ObjectCode code);

    // Decimal, or hexadecimal behind "0x"; leading zeros of a decimal number
    // don't make it octal, as they would for QString::toUInt with base 0.
    static quint64 parseUnsigned(QStringView text, bool* ok);

    static QString pdoMapping2String(PDOMapping mapping);
    static QString implementation2String(quint8 implementation);
};
