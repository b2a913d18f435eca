#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

class MCPSession;

// Carries out one tools/call. The handler sends exactly one reply through
// the session.
using MCPToolHandler = void (*)(MCPSession& session, int id, const QJsonObject& arguments);

// One tool as tools/list shows it, and the handler behind its name.
struct MCPTool
{
    QString name;
    QString description;
    QJsonObject inputSchema;
    MCPToolHandler handler;
};

// The tools of the server, in the order that tools/list gives them.
class MCPToolTable
{
public:
    static QList<MCPTool> tools();
    // The tools/list entries: name, description and input schema.
    static QJsonArray toolList();
    // The tool of that exact name; an empty name when there is none.
    static MCPTool find(const QString& name);
};
