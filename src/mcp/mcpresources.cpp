#include "mcp/mcpresources.h"

#include "mcp/mcpsession.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QTextStream>

namespace {

const QLatin1String uriScheme("codb://");

// How far into a profile file its description is looked for.
constexpr int descriptionSearchLines = 15;

bool isDescription(const QString& text)
{
    if (text.isEmpty() || text.contains(QLatin1String("pragma"), Qt::CaseInsensitive))
        return false;
    // A rule of dashes under a heading is decoration, not a description.
    return text.count(QLatin1Char('-')) * 2 <= text.size();
}

} // namespace

void MCPResources::list(MCPSession& session, int id, const QJsonObject&)
{
    QJsonArray resources;
    if (!session.codbPath().isEmpty()) {
        for (const QFileInfo& file : profileFiles(session.codbPath())) {
            const QString profile = profileId(file);
            QJsonObject resource{{QStringLiteral("uri"), uriScheme + profile},
                                 {QStringLiteral("name"), QStringLiteral("DS-") + profile},
                                 {QStringLiteral("mimeType"), QStringLiteral("application/json")}};
            const QString description = profileDescription(file);
            if (!description.isEmpty())
                resource.insert(QStringLiteral("description"), description);
            resources.append(resource);
        }
    }
    session.sendResult(id, QJsonObject{{QStringLiteral("resources"), resources}});
}

void MCPResources::read(MCPSession& session, int id, const QJsonObject& params)
{
    const QString uri = params.value(QStringLiteral("uri")).toString();
    if (!uri.startsWith(uriScheme)) {
        session.sendError(id, MCPSession::InvalidParams,
                          tr("Unsupported resource URI (only codb://... is implemented): %1").arg(uri));
        return;
    }
    if (session.codbPath().isEmpty()) {
        session.sendError(
            id, MCPSession::ResourcePathMissing,
            tr("No codb path configured - drop -codbpath to use the built-in reference profiles"));
        return;
    }
    session.sendError(id, MCPSession::InvalidParams, tr("Unknown codb resource: %1").arg(uri));
}

QFileInfoList MCPResources::profileFiles(const QString& codbPath)
{
    return QDir(codbPath).entryInfoList({QStringLiteral("*.codb")}, QDir::Files, QDir::Name);
}

QString MCPResources::profileId(const QFileInfo& file)
{
    QString id = file.fileName();
    id.chop(5);
    if (id.startsWith(QLatin1Char('v'), Qt::CaseInsensitive))
        id.remove(0, 1);
    return id;
}

QString MCPResources::profileDescription(const QFileInfo& file)
{
    QFile input(file.filePath());
    if (!input.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QTextStream stream(&input);
    for (int tries = 0; tries < descriptionSearchLines && !stream.atEnd(); ++tries) {
        const QString line = stream.readLine().trimmed();
        if (!line.startsWith(QLatin1Char('#')))
            continue;
        const QString text = line.mid(1).trimmed();
        if (isDescription(text))
            return text;
    }
    return {};
}
