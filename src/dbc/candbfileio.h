#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

struct CANdbDatabase;

// Base of the DBC reader and writer: the file name, the current line and the
// reporting of what went wrong, with the line it went wrong in. The caller
// registers a listener to receive the reports; without one they go to the
// standard output, which suits a library used on its own, not trw's MCP mode.
class CANdbFileIo
{
public:
    enum Severity
    {
        Message,
        Error,
        Warning,
    };
    // Results of read and write.
    enum Result
    {
        CannotOpen = -1,
        HadErrors = 0,
        Done = 1,
    };
    using Listener =
        std::function<void(Severity severity, int line, const QString& fileName, const QByteArray& text)>;

    CANdbFileIo() = default;
    CANdbFileIo(const CANdbFileIo&) = delete;
    CANdbFileIo& operator=(const CANdbFileIo&) = delete;

    virtual void reportMessage(const char* format, ...) __attribute__((format(printf, 2, 3)));
    virtual void reportError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    virtual void reportWarning(const char* format, ...) __attribute__((format(printf, 2, 3)));
    virtual ~CANdbFileIo();
    // Adds what the file holds to the database.
    virtual int read(CANdbDatabase& database, const QString& fileName) = 0;
    virtual int write(const CANdbDatabase& database, const QString& fileName) = 0;

    void setListener(const Listener& listener) { m_listener = listener; }
    bool hasError() const { return m_hasError; }
    // Every error of the last run, one "Error (line %d): text" per line.
    QByteArray errorText() const { return m_errorText; }
    int lineNumber() const { return m_line; }
    void setLineNumber(int line) { m_line = line; }

protected:
    void startRun(const QString& fileName);

private:
    void report(Severity severity, const char* format, va_list arguments);

    Listener m_listener;
    QString m_fileName;
    int m_line = 1;
    bool m_hasError = false;
    QByteArray m_errorText;
};
