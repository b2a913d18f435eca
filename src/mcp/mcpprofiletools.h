#pragma once

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QSharedPointer>
#include <QStringList>

class MCPSession;
class ObjectDataBase;

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
    // Texts of the indices, in the order they were asked for.
    struct ImportOutcome
    {
        QStringList imported;
        QStringList skipped;
    };

    static bool ensureProfilePath(MCPSession& session, int id);
    // The profile database, or null after the reply that names the unknown profile.
    static QSharedPointer<ObjectDataBase> loadProfile(MCPSession& session, int id, const QString& profile);
    static ImportOutcome copyObjects(ObjectDataBase& source, const QString& profile, ObjectDataBase& project,
                                     quint8 line, const QJsonArray& indices);
    static QString importReport(const ImportOutcome& outcome, const QString& profile, quint8 line);
};
