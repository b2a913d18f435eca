#include "mcp/mcpresources.h"

#include "mcp/mcprecords.h"
#include "mcp/mcpsession.h"

#include "database/objectdatabase.h"
#include "importers/codbimporter.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
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
    const QString path = uri.mid(uriScheme.size());
    const qsizetype slash = path.indexOf(QLatin1Char('/'));
    const QString profile = slash < 0 ? path : path.left(slash);
    QString errorText;
    const QSharedPointer<ObjectDataBase> database = loadProfile(session, profile, errorText);
    if (!database) {
        session.sendError(id, MCPSession::InvalidParams, tr("Unknown codb resource: %1").arg(uri));
        return;
    }
    QJsonDocument document;
    if (slash < 0) {
        document = QJsonDocument(MCPRecords::summaryList(*database, 0));
    } else {
        const QString indexText = path.mid(slash + 1);
        const QJsonObject object = objectDocument(*database, indexText);
        if (object.isEmpty()) {
            session.sendError(id, MCPSession::InvalidParams,
                              tr("Index %1 not found in codb profile %2").arg(indexText, profile));
            return;
        }
        document = QJsonDocument(object);
    }
    const QJsonObject content{
        {QStringLiteral("uri"), uri},
        {QStringLiteral("mimeType"), QStringLiteral("application/json")},
        {QStringLiteral("text"), QString::fromUtf8(document.toJson(QJsonDocument::Compact))}};
    session.sendResult(id, QJsonObject{{QStringLiteral("contents"), QJsonArray{content}}});
}

// "0x6041" and "24641" name the same object. Empty when the text is no
// number or the profile has no such object.
QJsonObject MCPResources::objectDocument(ObjectDataBase& database, const QString& indexText)
{
    bool ok = false;
    const uint number = indexText.toUInt(&ok, 0);
    INDEX_DATA_T object;
    if (!ok || number > 0xFFFF || !database.getIndex(0, quint16(number), object))
        return {};
    return MCPRecords::indexRecord(database, 0, quint16(number), object);
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

QFileInfo MCPResources::findProfileFile(const QString& codbPath, const QString& profile)
{
    // The file's own name without the extension also finds it, so "V402"
    // reaches the same file as "402".
    for (const QFileInfo& file : profileFiles(codbPath)) {
        if (profileId(file).compare(profile, Qt::CaseInsensitive) == 0 ||
            file.completeBaseName().compare(profile, Qt::CaseInsensitive) == 0)
            return file;
    }
    return {};
}

QString MCPResources::unknownProfileText(const QString& profile)
{
    return tr("Unknown profile \"%1\" - call list_profiles for the available ids.").arg(profile);
}

QSharedPointer<ObjectDataBase> MCPResources::loadProfile(MCPSession& session, const QString& profile,
                                                         QString& errorText)
{
    if (profile == session.cachedProfileId() && session.cachedProfileDb())
        return session.cachedProfileDb();
    const QFileInfo file = findProfileFile(session.codbPath(), profile);
    if (file.fileName().isEmpty()) {
        errorText = unknownProfileText(profile);
        return {};
    }
    QSharedPointer<ObjectDataBase> database(new ObjectDataBase);
    database->createNewDataBase();
    CODBImporter importer;
    importer.setDatabase(database);
    importer.setLine(0);
    importer.setFile(file.filePath());
    importer.startImport();
    importer.waitFinished();
    session.setCachedProfile(profile, database);
    return database;
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
