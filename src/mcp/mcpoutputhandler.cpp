#include "mcp/mcpoutputhandler.h"

#include <QRegularExpression>

MCPOutputHandler::MCPOutputHandler(QObject* parent) : OutputHandlerBase(parent) {}

void MCPOutputHandler::writeLine(QVariant value)
{
    // Greedy on purpose, as on the console: from a '<' to the last reachable
    // '>' that needs no full stop on the way.
    static const QRegularExpression markup(QStringLiteral("(\\<)([^\\.]*)>"));
    QString text = value.toString();
    text.remove(markup);
    m_buffer += text + QLatin1Char('\n');
}

QString MCPOutputHandler::collectedText()
{
    return m_buffer;
}

QString MCPOutputHandler::takeBuffer()
{
    QString taken;
    taken.swap(m_buffer);
    return taken;
}
