#include "mcp/mcpobjecttools.h"

#include "database/objectdatabase.h"
#include "mcp/mcparguments.h"
#include "mcp/mcprecords.h"
#include "mcp/mcpsession.h"

#include <QJsonArray>
#include <QMap>
#include <QRegularExpression>

namespace {

QString indexText(quint16 index)
{
    return MCPRecords::indexText(index);
}

// The project guards followed by the CANopen line guard on the argument "line".
QSharedPointer<ObjectDataBase> guardedCanopenLine(MCPSession& session, int id, const QJsonObject& arguments,
                                                  const QStringList& requiredKeys,
                                                  const QString& missingMessage)
{
    QSharedPointer<ObjectDataBase> database =
        session.ensureProjectDatabase(id, arguments, requiredKeys, missingMessage);
    if (database && !session.ensureCanopenLine(id, *database, MCPArguments::line(arguments)))
        return {};
    return database;
}

// The entries a tool names by the arguments "line", "index" and "sub".
struct IndexAddress
{
    quint8 line;
    quint16 index;
};

struct SubindexAddress
{
    quint8 line;
    quint16 index;
    quint8 sub;
};

IndexAddress indexAddress(const QJsonObject& arguments)
{
    return {MCPArguments::line(arguments), MCPArguments::index(arguments)};
}

SubindexAddress subindexAddress(const QJsonObject& arguments)
{
    return {MCPArguments::line(arguments), MCPArguments::index(arguments), MCPArguments::sub(arguments)};
}

QStringList lineIndexKeys()
{
    return {QStringLiteral("line"), QStringLiteral("index")};
}

QStringList lineIndexSubKeys()
{
    return {QStringLiteral("line"), QStringLiteral("index"), QStringLiteral("sub")};
}

QString missingIndexText(quint8 line, quint16 index)
{
    return MCPObjectTools::tr("Index %1 does not exist on line %2.").arg(indexText(index)).arg(line);
}

QString missingSubindexText(quint8 line, quint16 index, quint8 sub)
{
    return MCPObjectTools::tr("Subindex %1:%2 does not exist on line %3.")
        .arg(indexText(index))
        .arg(sub)
        .arg(line);
}

bool ensureIndexExists(MCPSession& session, int id, ObjectDataBase& database, quint8 line, quint16 index)
{
    if (database.indexExists(line, index))
        return true;
    session.sendToolText(id, missingIndexText(line, index), true);
    return false;
}

bool ensureSubindexExists(MCPSession& session, int id, ObjectDataBase& database, quint8 line, quint16 index,
                          quint8 sub)
{
    if (database.subIndexExists(line, index, sub))
        return true;
    session.sendToolText(id, missingSubindexText(line, index, sub), true);
    return false;
}

const QMap<QString, int>& objectTypeCodes()
{
    static const QMap<QString, int> codes{{QStringLiteral("Variable"), 7},
                                          {QStringLiteral("Array"), 8},
                                          {QStringLiteral("Record"), 9},
                                          {QStringLiteral("Domain"), 2}};
    return codes;
}

const QMap<QString, int>& categoryCodes()
{
    static const QMap<QString, int> codes{{QStringLiteral("Mandatory"), 0},
                                          {QStringLiteral("Optional"), 1},
                                          {QStringLiteral("Conditional"), 2}};
    return codes;
}

} // namespace

void MCPObjectTools::listIndices(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = guardedCanopenLine(
        session, id, arguments, {QStringLiteral("line")}, tr("Missing required argument: line"));
    if (database)
        session.sendToolData(id, MCPRecords::summaryList(*database, MCPArguments::line(arguments)), false);
}

void MCPObjectTools::getIndex(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = guardedCanopenLine(
        session, id, arguments, lineIndexKeys(), tr("Missing required argument: line and/or index"));
    if (!database)
        return;
    const auto [line, index] = indexAddress(arguments);
    INDEX_DATA_T object;
    if (!database->getIndex(line, index, object)) {
        session.sendToolText(id, missingIndexText(line, index), true);
        return;
    }
    QJsonObject record = MCPRecords::indexRecord(*database, line, index, object);
    record.insert(QStringLiteral("line"), int(line));
    session.sendToolData(id, record, false);
}

void MCPObjectTools::getSubindex(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = guardedCanopenLine(
        session, id, arguments, lineIndexSubKeys(), tr("Missing required argument: line, index and/or sub"));
    if (!database)
        return;
    const auto [line, index, sub] = subindexAddress(arguments);
    SUBINDEX_DATA_T record;
    if (!database->getSubIndex(line, index, sub, record)) {
        session.sendToolText(id, missingSubindexText(line, index, sub), true);
        return;
    }
    session.sendToolData(id, MCPRecords::subIndexRecord(sub, record), false);
}

void MCPObjectTools::findIndices(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database =
        guardedCanopenLine(session, id, arguments, {QStringLiteral("line"), QStringLiteral("globPattern")},
                           tr("Missing required argument: line and/or globPattern"));
    if (!database)
        return;
    const QString pattern = arguments.value(QStringLiteral("globPattern")).toString();
    if (pattern.isEmpty()) {
        session.sendError(id, MCPSession::InvalidParams, tr("Argument globPattern must not be empty"));
        return;
    }
    // The conversion anchors the pattern: it has to match the whole name.
    const QRegularExpression expression(QRegularExpression::wildcardToRegularExpression(pattern),
                                        QRegularExpression::CaseInsensitiveOption);
    if (!expression.isValid()) {
        session.sendError(id, MCPSession::InvalidParams, tr("Invalid glob pattern: %1").arg(pattern));
        return;
    }
    QJsonArray matches;
    for (const QJsonValue& record : MCPRecords::summaryList(*database, MCPArguments::line(arguments))) {
        if (expression.match(record[QStringLiteral("name")].toString()).hasMatch())
            matches.append(record);
    }
    session.sendToolData(id, matches, false);
}

void MCPObjectTools::addIndex(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = session.ensureProjectDatabase(
        id, arguments,
        lineIndexKeys() +
            QStringList{QStringLiteral("name"), QStringLiteral("objectType"), QStringLiteral("dataType")},
        tr("Missing required argument: line, index, name, objectType and/or dataType"));
    if (!database)
        return;
    const auto [line, index] = indexAddress(arguments);
    if (!database->nodeExists(line)) {
        session.sendToolText(id, tr("Line %1 does not exist.").arg(line), true);
        return;
    }
    if (!session.ensureCanopenLine(id, *database, line))
        return;
    if (database->indexExists(line, index)) {
        session.sendToolText(id, tr("Index %1 already exists on line %2.").arg(indexText(index)).arg(line),
                             true);
        return;
    }
    INDEX_DATA_T object;
    object.objecttype = objectTypeCodes().value(arguments.value(QStringLiteral("objectType")).toString(), -1);
    if (object.objecttype < 0) {
        session.sendError(id, MCPSession::InvalidParams,
                          tr("Invalid objectType: expected Variable, Array, Record or Domain"));
        return;
    }
    object.name = arguments.value(QStringLiteral("name")).toString();
    object.datatype = arguments.value(QStringLiteral("dataType")).toInt();
    object.description = arguments.value(QStringLiteral("description")).toString();
    if (arguments.contains(QStringLiteral("category"))) {
        object.category = categoryCodes().value(arguments.value(QStringLiteral("category")).toString(), -1);
        if (object.category < 0) {
            session.sendError(id, MCPSession::InvalidParams,
                              tr("Invalid category: expected Mandatory, Optional or Conditional"));
            return;
        }
    }
    database->addIndex(line, index, object);
    if (!database->indexExists(line, index)) {
        session.sendToolText(id, tr("Failed to add index %1 on line %2.").arg(indexText(index)).arg(line),
                             true);
        return;
    }
    session.sendEditReply(id, tr("Index %1 added on line %2.").arg(indexText(index)).arg(line));
}

void MCPObjectTools::deleteIndex(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = guardedCanopenLine(
        session, id, arguments, lineIndexKeys(), tr("Missing required argument: line and/or index"));
    if (!database)
        return;
    const auto [line, index] = indexAddress(arguments);
    if (!ensureIndexExists(session, id, *database, line, index))
        return;
    database->deleteIndex(line, index, false);
    session.sendEditReply(id, tr("Index %1 deleted from line %2.").arg(indexText(index)).arg(line));
}

void MCPObjectTools::addSubindex(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = guardedCanopenLine(
        session, id, arguments,
        lineIndexSubKeys() + QStringList{QStringLiteral("name"), QStringLiteral("dataType")},
        tr("Missing required argument: line, index, sub, name and/or dataType"));
    if (!database)
        return;
    const auto [line, index, sub] = subindexAddress(arguments);
    if (!ensureIndexExists(session, id, *database, line, index))
        return;
    if (database->subIndexExists(line, index, sub)) {
        session.sendToolText(
            id, tr("Subindex %1:%2 already exists on line %3.").arg(indexText(index)).arg(sub).arg(line),
            true);
        return;
    }
    // Values are not judged here; the model summary of the reply does that.
    SUBINDEX_DATA_T record;
    record.name = arguments.value(QStringLiteral("name")).toString();
    record.datatype = arguments.value(QStringLiteral("dataType")).toInt();
    if (arguments.contains(QStringLiteral("accessType")))
        record.accesstype = arguments.value(QStringLiteral("accessType")).toString();
    if (arguments.contains(QStringLiteral("defaultValue"))) {
        record.defaultvalue = arguments.value(QStringLiteral("defaultValue")).toString();
        record.defaultineds = true;
    }
    if (arguments.contains(QStringLiteral("size")))
        record.size = arguments.value(QStringLiteral("size")).toInt();
    database->addSubIndex(line, index, sub, record);
    if (!database->subIndexExists(line, index, sub)) {
        session.sendToolText(
            id, tr("Failed to add subindex %1:%2 on line %3.").arg(indexText(index)).arg(sub).arg(line),
            true);
        return;
    }
    session.sendEditReply(id,
                          tr("Subindex %1:%2 added on line %3.").arg(indexText(index)).arg(sub).arg(line));
}

void MCPObjectTools::deleteSubindex(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = guardedCanopenLine(
        session, id, arguments, lineIndexSubKeys(), tr("Missing required argument: line, index and/or sub"));
    if (!database)
        return;
    const auto [line, index, sub] = subindexAddress(arguments);
    if (!ensureSubindexExists(session, id, *database, line, index, sub))
        return;
    database->deleteSubIndex(line, index, sub, false);
    session.sendEditReply(
        id, tr("Subindex %1:%2 deleted from line %3.").arg(indexText(index)).arg(sub).arg(line));
}

void MCPObjectTools::setSubindexValue(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = guardedCanopenLine(
        session, id, arguments, lineIndexSubKeys() + QStringList{QStringLiteral("defaultValue")},
        tr("Missing required argument: line, index, sub and/or defaultValue"));
    if (!database)
        return;
    const auto [line, index, sub] = subindexAddress(arguments);
    if (!ensureSubindexExists(session, id, *database, line, index, sub))
        return;
    // The store puts the value into its statement as text.
    QString value = arguments.value(QStringLiteral("defaultValue")).toString();
    value.replace(QLatin1Char('\''), QStringLiteral("''"));
    database->setDefaultValue(line, index, sub, value);
    session.sendEditReply(
        id,
        tr("Updated defaultValue of subindex %1:%2 on line %3.").arg(indexText(index)).arg(sub).arg(line));
}

void MCPObjectTools::setIndexName(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database =
        guardedCanopenLine(session, id, arguments, lineIndexKeys() + QStringList{QStringLiteral("name")},
                           tr("Missing required argument: line, index and/or name"));
    if (!database)
        return;
    const auto [line, index] = indexAddress(arguments);
    if (!ensureIndexExists(session, id, *database, line, index))
        return;
    const QString name = arguments.value(QStringLiteral("name")).toString();
    database->setObjectIndexSqlValue(QStringLiteral("Objects%1").arg(line), QString::number(index),
                                     QStringLiteral("name"), name);
    INDEX_DATA_T object;
    database->getIndex(line, index, object);
    if (object.name != name) {
        session.sendToolText(id,
                             tr("Rename may have failed: index %1 on line %2 now reads \"%3\".")
                                 .arg(indexText(index))
                                 .arg(line)
                                 .arg(object.name),
                             true);
        return;
    }
    session.sendEditReply(
        id, tr("Index %1 on line %2 renamed to \"%3\".").arg(indexText(index)).arg(line).arg(name));
}

void MCPObjectTools::copyIndex(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QStringList keys{QStringLiteral("srcLine"), QStringLiteral("srcIndex"), QStringLiteral("destLine"),
                           QStringLiteral("destIndex")};
    const QSharedPointer<ObjectDataBase> database = session.ensureProjectDatabase(
        id, arguments, keys, tr("Missing required argument: srcLine, srcIndex, destLine and/or destIndex"));
    if (!database)
        return;
    const quint8 srcLine = MCPArguments::line(arguments, keys.at(0));
    const quint16 srcIndex = MCPArguments::index(arguments, keys.at(1));
    const quint8 destLine = MCPArguments::line(arguments, keys.at(2));
    const quint16 destIndex = MCPArguments::index(arguments, keys.at(3));
    if (!session.ensureCanopenLine(id, *database, srcLine) ||
        !session.ensureCanopenLine(id, *database, destLine))
        return;
    if (!database->indexExists(srcLine, srcIndex)) {
        session.sendToolText(
            id, tr("Source index %1 does not exist on line %2.").arg(indexText(srcIndex)).arg(srcLine), true);
        return;
    }
    if (!database->nodeExists(destLine)) {
        session.sendToolText(id, tr("Destination line %1 does not exist.").arg(destLine), true);
        return;
    }
    database->copyIndex(srcLine, srcIndex, destLine, destIndex);
    const QString srcText = indexText(srcIndex);
    const QString srcLineText = QString::number(srcLine);
    const QString destText = indexText(destIndex);
    const QString destLineText = QString::number(destLine);
    if (!database->indexExists(destLine, destIndex)) {
        session.sendToolText(id,
                             tr("Failed to copy index %1 (line %2) to %3 (line %4).")
                                 .arg(srcText, srcLineText, destText, destLineText),
                             true);
        return;
    }
    session.sendEditReply(
        id,
        tr("Copied index %1 (line %2) to %3 (line %4).").arg(srcText, srcLineText, destText, destLineText));
}
