#include "mcp/mcprequestdispatcher.h"

#include "mcp/mcpresources.h"
#include "mcp/mcpsession.h"
#include "mcp/mcptooltable.h"

#include <QJsonDocument>
#include <QJsonParseError>

namespace {

const char* const protocolVersion = "2024-11-05";

QString instructions()
{
    return QStringLiteral(
        "CAN Tarnwick MCP server. Send one request at a time and wait for its response before sending the "
        "next "
        "one: all tools work on one shared project database, and generate or import_file may run for "
        "minutes.\n"
        "Call open_project before any tool that reads or writes project data. Changes stay in memory until "
        "save_project is called.\n"
        "The reference profiles behind list_profiles, list_profile_indices, get_profile_index and "
        "import_profile_indices are read-only internal CANopen profile databases, not projects: they are "
        "addressed by a profile id such as \"402\" or \"454-2\", they cannot be opened, edited or saved, and "
        "single objects are taken out of them with import_profile_indices.\n");
}

} // namespace

MCPRequestDispatcher::MCPRequestDispatcher(MCPSession& session) : m_session(session) {}

void MCPRequestDispatcher::handleLine(const QByteArray& line)
{
    if (m_busy) {
        m_waitingLines.append(line);
        return;
    }
    m_busy = true;
    m_waitingLines.append(line);
    while (!m_waitingLines.isEmpty()) {
        const QByteArray next = m_waitingLines.takeFirst();
        if (next.isEmpty())
            continue;
        // Malformed input, and a batch array too, has no reply at all.
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(next, &error);
        if (error.error == QJsonParseError::NoError && document.isObject())
            handleRequest(document.object());
    }
    m_busy = false;
}

void MCPRequestDispatcher::handleRequest(const QJsonObject& request)
{
    // Without an id it is a notification, known or not, and is never answered.
    if (!request.contains(QStringLiteral("id")))
        return;
    // Replies carry the id as an integer; a string id reads as 0.
    const int id = request.value(QStringLiteral("id")).toInt();
    const QString method = request.value(QStringLiteral("method")).toString();
    dispatch(id, method, request.value(QStringLiteral("params")).toObject());
}

void MCPRequestDispatcher::dispatch(int id, const QString& method, const QJsonObject& params)
{
    if (method == QLatin1String("initialize"))
        initialize(id);
    else if (method == QLatin1String("tools/list"))
        listTools(id);
    else if (method == QLatin1String("tools/call"))
        callTool(id, params);
    else if (method == QLatin1String("resources/list"))
        MCPResources::list(m_session, id, params);
    else if (method == QLatin1String("resources/read"))
        MCPResources::read(m_session, id, params);
    else
        m_session.sendError(id, MCPSession::MethodNotFound, tr("Method not found: %1").arg(method));
}

void MCPRequestDispatcher::initialize(int id)
{
    const QJsonObject capabilities{{QStringLiteral("tools"), QJsonObject()},
                                   {QStringLiteral("resources"), QJsonObject()}};
    const QJsonObject serverInfo{{QStringLiteral("name"), QStringLiteral("trw-mcp")},
                                 {QStringLiteral("version"), QCoreApplication::applicationVersion()}};
    m_session.sendResult(id, QJsonObject{{QStringLiteral("protocolVersion"), QLatin1String(protocolVersion)},
                                         {QStringLiteral("capabilities"), capabilities},
                                         {QStringLiteral("serverInfo"), serverInfo},
                                         {QStringLiteral("instructions"), instructions()}});
}

void MCPRequestDispatcher::listTools(int id)
{
    m_session.sendResult(id, QJsonObject{{QStringLiteral("tools"), MCPToolTable::toolList()}});
}

void MCPRequestDispatcher::callTool(int id, const QJsonObject& params)
{
    const QString name = params.value(QStringLiteral("name")).toString();
    const MCPTool tool = MCPToolTable::find(name);
    if (tool.name.isEmpty()) {
        m_session.sendError(id, MCPSession::MethodNotFound, tr("Unknown tool: %1").arg(name));
        return;
    }
    tool.handler(m_session, id, params.value(QStringLiteral("arguments")).toObject());
}
