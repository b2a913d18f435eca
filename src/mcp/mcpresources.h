#pragma once

#include <QCoreApplication>
#include <QFileInfoList>
#include <QJsonObject>
#include <QString>

class MCPSession;

// The built-in CANopen profile databases offered to the client as read-only
// resources "codb://<id>" and "codb://<id>/<index>".
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

private:
    static QString profileDescription(const QFileInfo& file);
};
