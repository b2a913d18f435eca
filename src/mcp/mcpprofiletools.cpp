#include "mcp/mcpprofiletools.h"

#include "mcp/mcparguments.h"
#include "mcp/mcprecords.h"
#include "mcp/mcpresources.h"
#include "mcp/mcpsession.h"

#include "database/objectdatabase.h"

#include <QJsonArray>

namespace {

QString profileArgument(const QJsonObject& arguments)
{
    return arguments.value(QStringLiteral("profile")).toString();
}

} // namespace

void MCPProfileTools::listProfiles(MCPSession& session, int id, const QJsonObject&)
{
    if (!ensureProfilePath(session, id))
        return;
    QJsonArray ids;
    for (const QFileInfo& file : MCPResources::profileFiles(session.codbPath()))
        ids.append(MCPResources::profileId(file));
    session.sendToolData(id, ids, false);
}

void MCPProfileTools::listProfileIndices(MCPSession& session, int id, const QJsonObject& arguments)
{
    if (!ensureProfilePath(session, id) ||
        !session.ensureArguments(id, arguments, {QStringLiteral("profile")},
                                 tr("Missing required argument: profile")))
        return;
    const QString profile = profileArgument(arguments);
    if (MCPResources::findProfileFile(session.codbPath(), profile).fileName().isEmpty()) {
        session.sendToolText(id, MCPResources::unknownProfileText(profile), true);
        return;
    }
    const QSharedPointer<ObjectDataBase> database = loadProfile(session, id, profile);
    if (!database)
        return;
    session.sendToolData(id, MCPRecords::summaryList(*database, 0), false);
}

void MCPProfileTools::getProfileIndex(MCPSession& session, int id, const QJsonObject& arguments)
{
    if (!ensureProfilePath(session, id) ||
        !session.ensureArguments(id, arguments, {QStringLiteral("profile"), QStringLiteral("index")},
                                 tr("Missing required argument: profile and/or index")))
        return;
    const QString profile = profileArgument(arguments);
    const QSharedPointer<ObjectDataBase> database = loadProfile(session, id, profile);
    if (!database)
        return;
    const quint16 index = MCPArguments::index(arguments);
    INDEX_DATA_T object;
    if (!database->getIndex(0, index, object)) {
        session.sendToolText(
            id, tr("Index %1 is not defined in profile %2.").arg(MCPRecords::indexText(index), profile),
            true);
        return;
    }
    QJsonObject record = MCPRecords::indexRecord(*database, 0, index, object);
    record.insert(QStringLiteral("profile"), profile);
    session.sendToolData(id, record, false);
}

void MCPProfileTools::importProfileIndices(MCPSession& session, int id, const QJsonObject& arguments)
{
    if (!session.ensureProjectOpen(id) || !ensureProfilePath(session, id) ||
        !session.ensureArguments(
            id, arguments, {QStringLiteral("profile"), QStringLiteral("line"), QStringLiteral("indices")},
            tr("Missing required argument: profile, line and/or indices")))
        return;
    const QJsonArray indices = arguments.value(QStringLiteral("indices")).toArray();
    if (indices.isEmpty()) {
        session.sendError(id, MCPSession::InvalidParams,
                          tr("Argument indices must be a non-empty array of index numbers"));
        return;
    }
    const QSharedPointer<ObjectDataBase> project = session.ensureDatabase(id);
    const quint8 line = MCPArguments::line(arguments);
    if (!project || !session.ensureCanopenLine(id, *project, line))
        return;
    const QString profile = profileArgument(arguments);
    const QSharedPointer<ObjectDataBase> source = loadProfile(session, id, profile);
    if (!source)
        return;
    const ImportOutcome outcome = copyObjects(*source, profile, *project, line, indices);
    session.sendEditReply(id, importReport(outcome, profile, line), outcome.imported.isEmpty());
}

// An object is copied only when the profile has it and the line does not:
// what the project holds is never overwritten.
MCPProfileTools::ImportOutcome MCPProfileTools::copyObjects(ObjectDataBase& source, const QString& profile,
                                                            ObjectDataBase& project, quint8 line,
                                                            const QJsonArray& indices)
{
    ImportOutcome outcome;
    for (const QJsonValue& value : indices) {
        const quint16 index = quint16(value.toInt());
        const QString indexText = MCPRecords::indexText(index);
        if (!source.indexExists(0, index)) {
            outcome.skipped << tr("%1 (not defined in profile %2)").arg(indexText, profile);
        } else if (project.indexExists(line, index)) {
            outcome.skipped << tr("%1 (already exists on line %2)").arg(indexText).arg(line);
        } else {
            project.copyIndexFromDatabase(&source, 0, index, line, index);
            if (project.indexExists(line, index))
                outcome.imported << indexText;
            else
                outcome.skipped << tr("%1 (copy failed)").arg(indexText);
        }
    }
    return outcome;
}

QString MCPProfileTools::importReport(const ImportOutcome& outcome, const QString& profile, quint8 line)
{
    QString text = tr("Imported %1 object(s) from profile %2 into line %3")
                       .arg(QString::number(outcome.imported.size()), profile, QString::number(line));
    if (!outcome.imported.isEmpty())
        text += QStringLiteral(": ") + outcome.imported.join(QStringLiteral(", "));
    text += QLatin1Char('.');
    if (!outcome.skipped.isEmpty())
        text += tr("\nSkipped %1: %2.")
                    .arg(outcome.skipped.size())
                    .arg(outcome.skipped.join(QStringLiteral(", ")));
    return text;
}

QSharedPointer<ObjectDataBase> MCPProfileTools::loadProfile(MCPSession& session, int id,
                                                            const QString& profile)
{
    QString errorText;
    const QSharedPointer<ObjectDataBase> database = MCPResources::loadProfile(session, profile, errorText);
    if (!database)
        session.sendToolText(id, errorText, true);
    return database;
}

// Start-up keeps the built-in folder when -codbpath has no value, so only an
// emptied path fails here.
bool MCPProfileTools::ensureProfilePath(MCPSession& session, int id)
{
    if (!session.codbPath().isEmpty())
        return true;
    session.sendToolText(
        id, tr("No profile path configured - drop -codbpath to use the built-in reference profiles."), true);
    return false;
}
