#pragma once

#include <QCoreApplication>
#include <QJsonObject>

class MCPSession;

// The tools on the built-in reference profiles: read-only lookups that need
// no open project, and the copy of single profile objects into a CANopen
// line of the project.
class MCPProfileTools
{
    Q_DECLARE_TR_FUNCTIONS(MCPProfileTools)
public:
    static void listProfiles(MCPSession& session, int id, const QJsonObject& arguments);
    static void listProfileIndices(MCPSession& session, int id, const QJsonObject& arguments);
    static void getProfileIndex(MCPSession& session, int id, const QJsonObject& arguments);
    static void importProfileIndices(MCPSession& session, int id, const QJsonObject& arguments);

private:
    static bool ensureProfilePath(MCPSession& session, int id);
};
