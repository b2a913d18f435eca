#include "dbc/candblexer.h"

#include "dbc/candbfileio.h"

#include <QStringDecoder>

#include <charconv>
#include <cstring>
#include <limits>

namespace {

// Longer strings are cut; no DBC tool writes texts of that size.
constexpr int maximumStringLength = 1000;

struct Keyword
{
    const char* text;
    int token;
};

constexpr Keyword keywords[] = {
    {"BA_", CANdbLexer::AttributeKeyword},
    {"BA_DEF_", CANdbLexer::AttributeDefinitionKeyword},
    {"BA_DEF_DEF_", CANdbLexer::AttributeDefaultKeyword},
    {"BU_", CANdbLexer::NodesKeyword},
    {"BO_", CANdbLexer::MessageKeyword},
    {"SG_", CANdbLexer::SignalKeyword},
    {"EV_", CANdbLexer::VariableKeyword},
    {"CM_", CANdbLexer::CommentKeyword},
    {"VAL_", CANdbLexer::ValueKeyword},
    {"CAT_", CANdbLexer::CategoryKeyword},
    {"ENVVAR_DATA_", CANdbLexer::VariableDataKeyword},
    {"SIG_VALTYPE_", CANdbLexer::SignalValueTypeKeyword},
    {"NS_", CANdbLexer::NewSymbolsKeyword},
};

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

int keywordToken(const char* begin, qsizetype length)
{
    // Keywords all end in "_"; most identifiers (signal names) don't.
    if (begin[length - 1] != '_')
        return CANdbLexer::Identifier;
    for (const Keyword& keyword : keywords) {
        if (qsizetype(std::strlen(keyword.text)) == length && std::memcmp(keyword.text, begin, length) == 0)
            return keyword.token;
    }
    return CANdbLexer::Identifier;
}

} // namespace

CANdbLexer::CANdbLexer(const QByteArray& text, CANdbFileIo& reporter)
    : m_position(text.constData()), m_end(text.constData() + text.size()), m_reporter(reporter)
{
}

int CANdbLexer::next()
{
    if (m_pushedBack)
        m_pushedBack = false;
    else
        m_token = scan();
    m_reporter.setLineNumber(m_tokenLine);
    return m_token;
}

int CANdbLexer::nextInStatement()
{
    int token = next();
    while (token == EndOfLine)
        token = next();
    return token;
}

int CANdbLexer::scan()
{
    const int startLine = m_line;
    for (;;) {
        while (m_position < m_end && static_cast<unsigned char>(*m_position) <= 32) {
            if (*m_position == '\n')
                ++m_line;
            ++m_position;
        }
        if (m_end - m_position >= 2 && m_position[0] == '/' && m_position[1] == '*') {
            skipComment();
            continue;
        }
        break;
    }
    if ((m_line != startLine || m_position >= m_end) && !m_lastWasEndOfLine) {
        m_lastWasEndOfLine = true;
        m_tokenLine = startLine;
        return EndOfLine;
    }
    m_atLineStart = m_lastWasEndOfLine;
    m_tokenLine = m_line;
    if (m_position >= m_end)
        return EndOfFile;
    m_lastWasEndOfLine = false;

    const char c = *m_position;
    if (isLetter(c)) {
        scanIdentifier();
        return keywordToken(m_text.constData(), m_text.size());
    }
    const bool signedNumber = (c == '+' || c == '-') && m_end - m_position >= 2 && isDigit(m_position[1]);
    if (isDigit(c) || signedNumber) {
        scanNumber();
        return m_token;
    }
    if (c == '"') {
        scanString();
        return String;
    }
    ++m_position;
    return static_cast<unsigned char>(c);
}

void CANdbLexer::skipComment()
{
    const int startLine = m_line;
    m_position += 2;
    while (m_end - m_position >= 2 && !(m_position[0] == '*' && m_position[1] == '/')) {
        if (*m_position == '\n')
            ++m_line;
        ++m_position;
    }
    if (m_end - m_position < 2) {
        m_position = m_end;
        m_reporter.setLineNumber(startLine);
        m_reporter.reportError("Error: Unexpected eof in comment");
        return;
    }
    m_position += 2;
}

void CANdbLexer::scanIdentifier()
{
    const char* begin = m_position;
    while (m_position < m_end && (isLetter(*m_position) || isDigit(*m_position)))
        ++m_position;
    m_text = QByteArray(begin, m_position - begin);
}

void CANdbLexer::scanNumber()
{
    const char* begin = m_position;
    const bool negative = *m_position == '-';
    if (*m_position == '+' || *m_position == '-')
        ++m_position;
    const char* digits = m_position;
    m_reporter.setLineNumber(m_tokenLine);

    if (m_end - m_position >= 3 && m_position[0] == '0' && (m_position[1] == 'x' || m_position[1] == 'X') &&
        isHexDigit(m_position[2])) {
        m_position += 2;
        const char* hexDigits = m_position;
        while (m_position < m_end && isHexDigit(*m_position))
            ++m_position;
        quint64 value = 0;
        if (std::from_chars(hexDigits, m_position, value, 16).ec != std::errc()) {
            m_reporter.reportWarning("Number out of range: %.*s", int(m_position - begin), begin);
            value = std::numeric_limits<quint64>::max();
        }
        m_integer = qint64(negative ? 0 - value : value);
        m_number = double(m_integer);
        m_token = Integer;
        return;
    }

    bool isFloat = false;
    while (m_position < m_end && isDigit(*m_position))
        ++m_position;
    if (m_position < m_end && *m_position == '.') {
        isFloat = true;
        ++m_position;
        while (m_position < m_end && isDigit(*m_position))
            ++m_position;
    }
    bool negativeExponent = false;
    if (m_position < m_end && (*m_position == 'e' || *m_position == 'E')) {
        const char* exponent = m_position + 1;
        if (exponent < m_end && (*exponent == '+' || *exponent == '-')) {
            negativeExponent = *exponent == '-';
            ++exponent;
        }
        if (exponent < m_end && isDigit(*exponent)) {
            isFloat = true;
            m_position = exponent;
            while (m_position < m_end && isDigit(*m_position))
                ++m_position;
        }
    }

    if (isFloat) {
        double value = 0;
        if (std::from_chars(negative ? digits - 1 : digits, m_position, value).ec != std::errc()) {
            m_reporter.reportWarning("Number out of range: %.*s", int(m_position - begin), begin);
            value = negativeExponent ? 0.0 : std::numeric_limits<double>::max();
            if (negative)
                value = -value;
        }
        m_number = value;
        m_integer = 0;
        m_token = Float;
        return;
    }
    qint64 value = 0;
    if (std::from_chars(negative ? digits - 1 : digits, m_position, value).ec != std::errc()) {
        m_reporter.reportWarning("Number out of range: %.*s", int(m_position - begin), begin);
        value = negative ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
    }
    m_integer = value;
    m_number = double(value);
    m_token = Integer;
}

// "" inside a string is one quote unless a third follows; a backslash gives
// a line feed, tab, carriage return or quote, and stands for itself before
// anything else.
void CANdbLexer::scanString()
{
    ++m_position;
    m_text.clear();
    bool cut = false;
    auto append = [&](char c) {
        if (m_text.size() < maximumStringLength)
            m_text.append(c);
        else
            cut = true;
    };
    for (;;) {
        if (m_position >= m_end) {
            m_reporter.setLineNumber(m_tokenLine);
            m_reporter.reportError("Unexpected eof in string");
            break;
        }
        const char c = *m_position++;
        if (c == '"') {
            if (m_end - m_position >= 1 && *m_position == '"' &&
                !(m_end - m_position >= 2 && m_position[1] == '"')) {
                ++m_position;
                append('"');
                continue;
            }
            break;
        }
        if (c == '\n')
            ++m_line;
        if (c == '\\' && m_position < m_end) {
            const char escaped = *m_position;
            const char replacement = escaped == 'n'   ? '\n'
                                     : escaped == 't' ? '\t'
                                     : escaped == 'r' ? '\r'
                                     : escaped == '"' ? '"'
                                                      : '\0';
            if (replacement != '\0') {
                ++m_position;
                append(replacement);
                continue;
            }
        }
        append(c);
    }
    m_reporter.setLineNumber(m_tokenLine);
    if (cut)
        m_reporter.reportWarning("String longer than %d characters cut", maximumStringLength);
    warnIfNotUtf8();
}

void CANdbLexer::warnIfNotUtf8()
{
    bool ascii = true;
    for (char c : m_text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii)
        return;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder(m_text);
    if (decoder.hasError())
        m_reporter.reportWarning("Text is not UTF-8 and is kept byte for byte (Windows-1252?)");
}
