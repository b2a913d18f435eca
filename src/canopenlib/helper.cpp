#include "canopenlib/helper.h"

#include <QDebug>
#include <QFile>
#include <QStringDecoder>

#include <cctype>

quint8 Helper::s_diagnosticLevel = 0;

Helper::Helper(quint8 diagnosticLevel)
{
    s_diagnosticLevel = diagnosticLevel;
}

quint8 Helper::diagnosticLevel()
{
    return s_diagnosticLevel;
}

QString Helper::substituteVariables(const QString& text, quint16 index, quint8 sub, quint8 line)
{
    if (!text.contains(QLatin1Char('{')))
        return text;
    QString result = text;
    result.replace(QLatin1String("{indexdec}"), QString::number(index));
    result.replace(QLatin1String("{subdec}"), QString::number(sub));
    result.replace(QLatin1String("{index}"), QStringLiteral("%1").arg(index, 4, 16, QLatin1Char('0')));
    result.replace(QLatin1String("{sub}"), QStringLiteral("%1").arg(sub, 2, 16, QLatin1Char('0')));
    result.replace(QLatin1String("{line}"), QString::number(line));
    return result;
}

bool Helper::modifyLineEnding(QString file, QString ending)
{
    if (ending.isEmpty())
        return false;
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly)) {
        qDebug() << Q_FUNC_INFO << "cannot read" << file;
        return false;
    }
    const QByteArray content = in.readAll();
    in.close();

    const QByteArray newEnding = ending.toUtf8();
    QByteArray converted;
    converted.reserve(content.size() + content.size() / 16);
    for (qsizetype i = 0; i < content.size(); ++i) {
        const char c = content.at(i);
        if (c == '\r') {
            if (i + 1 < content.size() && content.at(i + 1) == '\n')
                ++i;
            converted.append(newEnding);
        } else if (c == '\n') {
            converted.append(newEnding);
        } else {
            converted.append(c);
        }
    }
    if (converted == content)
        return true;

    QFile out(file);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        qDebug() << Q_FUNC_INFO << "cannot write" << file;
        return false;
    }
    return out.write(converted) == converted.size();
}

QString Helper::UTF8String2ArrayString(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    QStringList values;
    values.reserve(bytes.size());
    for (const char byte : bytes)
        values.append(QStringLiteral("0x%1").arg(quint8(byte), 2, 16, QLatin1Char('0')));
    return values.join(QLatin1String(", "));
}

namespace {

// A number glued to a word or to a decimal point is part of something else.
bool joinsNumber(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('.');
}

// Length of the number literal at pos, 0 when none starts there.
qsizetype numberLength(const QString& text, qsizetype pos)
{
    const qsizetype size = text.size();
    qsizetype end = pos;
    const bool hex = pos + 2 < size && text.at(pos) == QLatin1Char('0') &&
                     (text.at(pos + 1) == QLatin1Char('x') || text.at(pos + 1) == QLatin1Char('X')) &&
                     isxdigit(text.at(pos + 2).toLatin1());
    if (hex) {
        end = pos + 2;
        while (end < size && isxdigit(text.at(end).toLatin1()))
            ++end;
    } else {
        while (end < size && text.at(end).isDigit())
            ++end;
    }
    return end - pos;
}

} // namespace

QString Helper::addLowerCaseUtoNumberLists(const QString& list)
{
    QString result;
    result.reserve(list.size() + list.size() / 2);
    qsizetype pos = 0;
    while (pos < list.size()) {
        const bool startsWord = pos == 0 || !joinsNumber(list.at(pos - 1));
        const qsizetype length = startsWord ? numberLength(list, pos) : 0;
        if (length == 0) {
            result.append(list.at(pos++));
            continue;
        }
        result.append(QStringView(list).mid(pos, length));
        pos += length;
        if (pos == list.size() || !joinsNumber(list.at(pos)))
            result.append(QLatin1Char('u'));
    }
    return result;
}

QString Helper::decodeText(const QByteArray& data)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(data);
    if (utf8.hasError())
        text = QString::fromLatin1(data);
    return text;
}
