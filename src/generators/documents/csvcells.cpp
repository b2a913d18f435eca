#include "generators/documents/csvcells.h"

#include "canopenlib/canopentypes.h"

namespace {

enum class Conversion
{
    None,
    Signed32,
    Unsigned16,
    Unsigned32,
    Real32,
    Real64,
    Signed64,
    Unsigned64,
    Text,
};

// The integer widths are those the tables have always used, narrower or
// wider than the type itself: a value that doesn't fit stays as stored.
Conversion conversionOf(int dataType)
{
    if (dataType >= CAN::Unsigned2 && dataType <= CAN::Unsigned7)
        return Conversion::Unsigned16;
    if (dataType >= CAN::Unsigned9 && dataType <= CAN::Unsigned21)
        return Conversion::Unsigned32;
    switch (dataType) {
    case CAN::Integer8:
    case CAN::Integer16:
    case CAN::Integer32:
    case CAN::Integer24:
        return Conversion::Signed32;
    case CAN::Unsigned8:
    case CAN::Integer40:
        return Conversion::Unsigned16;
    case CAN::Unsigned16:
    case CAN::Unsigned32:
    case CAN::Unsigned24:
        return Conversion::Unsigned32;
    case CAN::Real32:
        return Conversion::Real32;
    case CAN::Real64:
        return Conversion::Real64;
    case CAN::Integer64:
        return Conversion::Signed64;
    case CAN::Unsigned40:
    case CAN::Unsigned48:
    case CAN::Unsigned64:
        return Conversion::Unsigned64;
    case CAN::VisibleString:
    case CAN::OctetString:
    case CAN::VisStringNull:
    case CAN::VisStringAsterisk:
    case CAN::Utf8String:
        return Conversion::Text;
    default:
        return Conversion::None;
    }
}

// Decimal, or hexadecimal behind "0x"; a sign may stand in front.
bool parseInteger(const QString& stored, bool* negative, quint64* magnitude)
{
    QStringView text = QStringView(stored).trimmed();
    *negative = text.startsWith(QLatin1Char('-'));
    if (*negative || text.startsWith(QLatin1Char('+')))
        text = text.mid(1);
    bool ok = false;
    if (text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        *magnitude = text.mid(2).toULongLong(&ok, 16);
    else
        *magnitude = text.toULongLong(&ok, 10);
    return ok;
}

bool convertSigned(const QString& stored, qint64 low, qint64 up, QString* out)
{
    bool negative = false;
    quint64 magnitude = 0;
    if (!parseInteger(stored, &negative, &magnitude))
        return false;
    if (negative ? magnitude > quint64(-(low + 1)) + 1 : magnitude > quint64(up))
        return false;
    *out = negative ? QString::number(qint64(0 - magnitude)) : QString::number(magnitude);
    return true;
}

bool convertUnsigned(const QString& stored, quint64 up, QString* out)
{
    bool negative = false;
    quint64 magnitude = 0;
    if (!parseInteger(stored, &negative, &magnitude) || negative || magnitude > up)
        return false;
    *out = QString::number(magnitude);
    return true;
}

bool convert(Conversion conversion, const QString& stored, QString* out)
{
    bool ok = false;
    switch (conversion) {
    case Conversion::Signed32:
        return convertSigned(stored, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max(),
                             out);
    case Conversion::Unsigned16:
        return convertUnsigned(stored, std::numeric_limits<quint16>::max(), out);
    case Conversion::Unsigned32:
        return convertUnsigned(stored, std::numeric_limits<quint32>::max(), out);
    case Conversion::Signed64:
        return convertSigned(stored, std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max(),
                             out);
    case Conversion::Unsigned64:
        return convertUnsigned(stored, std::numeric_limits<quint64>::max(), out);
    case Conversion::Real32: {
        const float value = stored.trimmed().toFloat(&ok);
        *out = QString::number(value);
        return ok;
    }
    case Conversion::Real64: {
        const double value = stored.trimmed().toDouble(&ok);
        *out = QString::number(value);
        return ok;
    }
    case Conversion::None:
    case Conversion::Text:
        break;
    }
    return false;
}

} // namespace

QString CsvCells::typedValue(const SUBINDEX_DATA_T& sub, bool quoteText)
{
    const Conversion conversion = conversionOf(sub.datatype);
    if (conversion == Conversion::Text)
        return (quoteText ? quoted(sub.defaultvalue) : plain(sub.defaultvalue)) + QLatin1Char(',');
    QString converted;
    if (convert(conversion, sub.defaultvalue, &converted))
        return converted + QLatin1Char(',');
    return plain(sub.defaultvalue) + QLatin1Char(',');
}

QString CsvCells::implementation(int implementation)
{
    switch (implementation) {
    case 0:
        return QStringLiteral("ManagedVariable,");
    case 1:
        return QStringLiteral("ManagedConst,");
    case 2:
        return QStringLiteral("Variable,");
    case 3:
        return QStringLiteral("VirtualObject,");
    default:
        return QStringLiteral(",");
    }
}

QString CsvCells::quoted(const QString& text)
{
    QString doubled = text;
    doubled.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + doubled + QLatin1Char('"');
}

QString CsvCells::plain(const QString& text)
{
    for (QChar c : text) {
        if (c == QLatin1Char(',') || c == QLatin1Char('"') || c == QLatin1Char('\n') ||
            c == QLatin1Char('\r'))
            return quoted(text);
    }
    return text;
}

QString CsvCells::yesNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}
