#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QJsonObject>
#include <QList>

class MCPSession;

// Turns one line of the client into at most one reply: JSON-RPC framing,
// notifications, the methods of the server and the hand-over to the tools.
class MCPRequestDispatcher
{
    Q_DECLARE_TR_FUNCTIONS(MCPRequestDispatcher)
public:
    explicit MCPRequestDispatcher(MCPSession& session);

    void handleLine(const QByteArray& line);

private:
    void handleRequest(const QJsonObject& request);
    void dispatch(int id, const QString& method, const QJsonObject& params);
    void initialize(int id);
    void listTools(int id);
    void callTool(int id, const QJsonObject& params);

    MCPSession& m_session;
    // A tool that spins the event loop may see the next line arrive before
    // its own reply is written; that line waits here so replies keep the
    // order of the requests.
    bool m_busy = false;
    QList<QByteArray> m_waitingLines;
};
