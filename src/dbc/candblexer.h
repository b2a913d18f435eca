#pragma once

#include <QByteArray>

class CANdbFileIo;

// Cuts the bytes of a DBC file into tokens. Numbers are read without the C
// library's locale, so a comma-decimal locale of the user never changes them.
// Any byte that begins no token is a token of its own, so every call moves on
// and a damaged file can't hold the reader in place.
class CANdbLexer
{
public:
    enum Token
    {
        EndOfFile = 0,
        // A run of white space that crosses a line: the end of a statement
        // that has no ";" (message, signal, node list).
        EndOfLine = 999,
        NodesKeyword = 1000,
        MessageKeyword = 1001,
        SignalKeyword = 1003,
        CommentKeyword = 1004,
        NewSymbolsKeyword = 1005,
        AttributeKeyword = 1006,
        VariableKeyword = 1007,
        AttributeDefinitionKeyword = 1008,
        AttributeDefaultKeyword = 1009,
        SignalValueTypeKeyword = 1010,
        CategoryKeyword = 1011,
        VariableDataKeyword = 1012,
        ValueKeyword = 1020,
        Identifier = 1021,
        Integer = 1022,
        Float = 1023,
        String = 1024,
    };

    // The reporter receives the warnings and errors of the bytes themselves,
    // with its line number set to the line of the token.
    CANdbLexer(const QByteArray& text, CANdbFileIo& reporter);

    // The next token, end of line included.
    int next();
    // The next token of a statement that may run over several lines.
    int nextInStatement();
    // The token just read comes again with the next call.
    void pushBack() { m_pushedBack = true; }

    int token() const { return m_token; }
    // Identifier or string text.
    const QByteArray& text() const { return m_text; }
    qint64 integer() const { return m_integer; }
    // The value of an integer or float token.
    double number() const { return m_number; }
    // The token stands first on its line.
    bool atLineStart() const { return m_atLineStart; }

private:
    int scan();
    void skipComment();
    void scanIdentifier();
    void scanNumber();
    void scanString();
    void warnIfNotUtf8();

    const char* m_position;
    const char* m_end;
    CANdbFileIo& m_reporter;
    int m_line = 1;
    int m_tokenLine = 1;
    int m_token = EndOfFile;
    bool m_pushedBack = false;
    bool m_atLineStart = true;
    bool m_lastWasEndOfLine = true;
    QByteArray m_text;
    qint64 m_integer = 0;
    double m_number = 0;
};
