#pragma once

#include <QCoreApplication>
#include <QFileInfoList>
#include <QJsonObject>
#include <QSharedPointer>
#include <QString>

class MCPSession;
class ObjectDataBase;

// The built-in CANopen profile databases offered to the client as read-only
// resources "codb://<id>" and "codb://<id>/<index>", and the loading of one
// profile into a scratch database that the profile tools share.
class MCPResources
{
    Q_DECLARE_TR_FUNCTIONS(MCPResources)
public:
    static void list(MCPSession& session, int id, const QJsonObject& params);
    static void read(MCPSession& session, int id, const QJsonObject& params);

    // The ".codb" files of the folder, sorted by name.
    static QFileInfoList profileFiles(const QString& codbPath);
    // "v402.codb" and "402.codb" both have the id "402".
    static QString profileId(const QFileInfo& file);
    // The file whose id or name without ".codb" equals profile in any case;
    // an empty info when there is none.
    static QFileInfo findProfileFile(const QString& codbPath, const QString& profile);
    static QString unknownProfileText(const QString& profile);

    // The profile's objects on line 0 of a scratch database. Only the last
    // profile loaded is kept, and only a request with exactly its id reuses
    // it. Null with errorText set when the folder has no such profile.
    static QSharedPointer<ObjectDataBase> loadProfile(MCPSession& session, const QString& profile,
                                                      QString& errorText);

private:
    static QString profileDescription(const QFileInfo& file);
    static QJsonObject objectDocument(ObjectDataBase& database, const QString& indexText);
};
