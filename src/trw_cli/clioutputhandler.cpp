#include "trw_cli/clioutputhandler.h"

#include <QIODevice>
#include <QRegularExpression>

#include <cstdio>

CLIOutputHandler::CLIOutputHandler(QObject* parent)
    : OutputHandlerBase(parent), m_stream(std::make_unique<QTextStream>(stdout, QIODevice::ReadWrite))
{
}

void CLIOutputHandler::writeLine(QVariant value)
{
    // Greedy on purpose: from a '<' to the last reachable '>' that needs no
    // full stop on the way, so a heading wrapped in <strong> vanishes whole.
    static const QRegularExpression markup(QStringLiteral("(\\<)([^\\.]*)>"));
    QString text = value.toString();
    text.remove(markup);
    *m_stream << text << '\n';
    m_collected += text + QLatin1Char('\n');
    m_stream->flush();
}

QString CLIOutputHandler::collectedText()
{
    return m_collected;
}

CLIOutputHandler& CLIOutputHandler::operator<<(const QString& text)
{
    *m_stream << text;
    m_collected += text;
    return *this;
}

void CLIOutputHandler::writeRaw(const QString& text)
{
    *m_stream << text;
    m_stream->flush();
}
