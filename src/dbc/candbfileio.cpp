#include "dbc/candbfileio.h"

#include <cstdarg>
#include <cstdio>

namespace {

// Reports are short; a longer text (a long name in it) is cut, never overrun.
constexpr int reportBufferSize = 200;

} // namespace

CANdbFileIo::~CANdbFileIo() = default;

void CANdbFileIo::reportMessage(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    report(Message, format, arguments);
    va_end(arguments);
}

void CANdbFileIo::reportError(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    report(Error, format, arguments);
    va_end(arguments);
}

void CANdbFileIo::reportWarning(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    report(Warning, format, arguments);
    va_end(arguments);
}

void CANdbFileIo::startRun(const QString& fileName)
{
    m_fileName = fileName;
    m_line = 1;
    m_hasError = false;
    m_errorText.clear();
}

void CANdbFileIo::report(Severity severity, const char* format, va_list arguments)
{
    char buffer[reportBufferSize];
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    const QByteArray text(buffer);
    if (severity == Error) {
        m_hasError = true;
        m_errorText += "Error (line " + QByteArray::number(m_line) + "): " + text + '\n';
    }
    if (m_listener) {
        m_listener(severity, m_line, m_fileName, text);
        return;
    }
    switch (severity) {
    case Message:
        std::printf("%s\n", buffer);
        break;
    case Error:
        std::printf("Error (line %d): %s\n", m_line, buffer);
        break;
    case Warning:
        std::printf("Warning (line %d): %s\n", m_line, buffer);
        break;
    }
}
