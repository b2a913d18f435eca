#pragma once

#include <QByteArray>
#include <QString>

// Text utilities shared by generators and importers.
class Helper
{
public:
    // The tool creates one instance at start; the level only tunes diagnostics.
    explicit Helper(quint8 diagnosticLevel);

    static quint8 diagnosticLevel();

    // Names may carry the placeholders "{index}" (four lower-case hexadecimal
    // digits), "{sub}" (two), "{line}" (decimal), and "{indexdec}" and
    // "{subdec}" for decimal forms, so that one name serves many objects or lines.
    static QString substituteVariables(const QString& text, quint16 index, quint8 sub, quint8 line);
    // Every line end of the file, of whatever kind, becomes `ending`.
    static bool modifyLineEnding(QString file, QString ending);
    // "0x41, 0xc3, 0xa4" for "Aä": the UTF-8 bytes as C character values.
    static QString UTF8String2ArrayString(const QString& text);
    // "1, 0x20" becomes "1u, 0x20u"; words and suffixed numbers stay as they are.
    static QString addLowerCaseUtoNumberLists(const QString& list);

    // Files that people edit come in UTF-8 as well as in Latin-1: a text
    // that isn't valid UTF-8 is taken as Latin-1. A leading byte order mark is dropped.
    static QString decodeText(const QByteArray& data);

    // Stands for a line break inside a description cell of a CSV table.
    static inline const QString csvDescLinebreak = QStringLiteral("<br>");

private:
    static quint8 s_diagnosticLevel;
};
