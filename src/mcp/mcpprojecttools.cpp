#include "mcp/mcpprojecttools.h"

#include "database/linetypes.h"
#include "database/objectdatabase.h"
#include "mcp/mcparguments.h"
#include "mcp/mcpoutputhandler.h"
#include "mcp/mcpsession.h"

#include <QJsonArray>
#include <QMap>

namespace {

const QMap<QString, int>& lineTypeCodes()
{
    static const QMap<QString, int> codes{
        {QStringLiteral("CANopen"), Line::CANopen},
        {QStringLiteral("J1939"), Line::J1939},
        {QStringLiteral("RawCAN"), Line::RawCan},
        {QStringLiteral("CANopen+J1939"), Line::CANopenJ1939},
        {QStringLiteral("CANopen+RawCAN"), Line::CANopenRawCan},
        {QStringLiteral("J1939+RawCAN"), Line::J1939RawCan},
    };
    return codes;
}

// The pipeline's own messages of one piece of work, without what an earlier
// one left in the sink.
template <typename Work> QString capturedLog(MCPSession& session, Work work)
{
    session.outputHandler()->takeBuffer();
    work();
    return session.outputHandler()->takeBuffer();
}

} // namespace

void MCPProjectTools::openProject(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QString path = arguments.value(QStringLiteral("path")).toString();
    if (path.isEmpty()) {
        session.sendError(id, MCPSession::InvalidParams, tr("Missing required argument: path"));
        return;
    }
    // A failed open must not leave the tools working on the previous project.
    session.setProjectOpen(false);
    bool opened = false;
    const QString log = capturedLog(session, [&] { opened = session.generatorHandler()->openProject(path); });
    if (!opened) {
        session.sendToolText(id, tr("Failed to open project: %1\n").arg(path) + log, true);
        return;
    }
    session.setProjectOpen(true);
    session.sendToolText(id, tr("Project opened: %1\n").arg(path) + log, false);
}

void MCPProjectTools::importFile(MCPSession& session, int id, const QJsonObject& arguments)
{
    if (!session.ensureProjectOpen(id))
        return;
    const QString path = arguments.value(QStringLiteral("path")).toString();
    if (path.isEmpty()) {
        session.sendError(id, MCPSession::InvalidParams, tr("Missing required argument: path"));
        return;
    }
    if (!session.ensureDatabase(id))
        return;
    bool imported = false;
    const QString log =
        capturedLog(session, [&] { imported = session.generatorHandler()->importFile(path); });
    if (imported)
        session.sendToolText(id, tr("Import successful: %1\n").arg(path) + log, false);
    else
        session.sendToolText(id, tr("Import failed: %1\n").arg(path) + log, true);
}

void MCPProjectTools::generate(MCPSession& session, int id, const QJsonObject& arguments)
{
    if (!session.ensureProjectOpen(id))
        return;
    const bool disableCheck = arguments.value(QStringLiteral("disableCheck")).toBool();
    GeneratorMainHandler* handler = session.generatorHandler();
    const QString projectOutputDir = handler->outputDir();
    if (arguments.contains(QStringLiteral("outputPath")))
        handler->setOutputDir(arguments.value(QStringLiteral("outputPath")).toString());

    // The pipeline spins the event loop; a request read meanwhile would start
    // a second tool inside this one.
    const QString log = capturedLog(session, [&] {
        session.setReadingEnabled(false);
        handler->generate(disableCheck);
        session.setReadingEnabled(true);
    });
    handler->setOutputDir(projectOutputDir);

    if (session.lastGeneratorResult() != GeneratorMainHandler::Success)
        session.sendToolText(id, tr("Generation failed.\n") + log, true);
    else
        session.sendToolText(id, tr("Generation completed.\n") + log, false);
}

void MCPProjectTools::saveProject(MCPSession& session, int id, const QJsonObject&)
{
    if (!session.ensureProjectOpen(id))
        return;
    // The store reports no failure to this layer; its messages are in the log.
    const QString log = capturedLog(session, [&] { session.generatorHandler()->saveProject(); });
    session.sendToolText(id, tr("Project saved.\n") + log, false);
}

void MCPProjectTools::checkModel(MCPSession& session, int id, const QJsonObject&)
{
    if (!session.ensureProjectOpen(id))
        return;
    QStringList messages;
    const int errorCount = session.generatorHandler()->checkModel(messages);
    const QJsonObject result{{QStringLiteral("errorCount"), errorCount},
                             {QStringLiteral("errors"), QJsonArray::fromStringList(messages)}};
    session.sendToolData(id, result, errorCount != 0);
}

void MCPProjectTools::listLines(MCPSession& session, int id, const QJsonObject&)
{
    if (!session.ensureProjectOpen(id))
        return;
    const QSharedPointer<ObjectDataBase> database = session.ensureDatabase(id);
    if (!database)
        return;
    QJsonArray lines;
    for (quint8 line : database->getNodeList()) {
        if (line >= Line::firstInternal)
            continue;
        lines.append(QJsonObject{{QStringLiteral("line"), int(line)},
                                 {QStringLiteral("lineTypeCode"), database->lineType(line)}});
    }
    session.sendToolData(id, lines, false);
}

void MCPProjectTools::getLine(MCPSession& session, int id, const QJsonObject& arguments)
{
    if (!session.ensureProjectOpen(id) || !session.ensureArguments(id, arguments, {QStringLiteral("line")},
                                                                   tr("Missing required argument: line")))
        return;
    const quint8 line = MCPArguments::line(arguments);
    const QSharedPointer<ObjectDataBase> database = session.generatorHandler()->database();
    NODE_DATA_T node;
    if (!database || !database->getNode(line, node)) {
        session.sendToolText(id, tr("Line %1 does not exist.").arg(line), true);
        return;
    }
    const QJsonObject record{
        {QStringLiteral("line"), int(line)},
        {QStringLiteral("name"), node.name},
        {QStringLiteral("isMaster"), node.ismaster},
        {QStringLiteral("isSyncProducer"), node.issyncproducer},
        {QStringLiteral("isSyncConsumer"), node.issyncconsumer},
        {QStringLiteral("isHeartbeatConsumer"), node.ishbconsumer},
        {QStringLiteral("tpdoCount"), int(node.tpdocnt)},
        {QStringLiteral("rpdoCount"), int(node.rpdocnt)},
        {QStringLiteral("edsPath"), node.edspath},
        {QStringLiteral("dcfPath"), node.dcfpath},
    };
    session.sendToolData(id, record, false);
}

void MCPProjectTools::addLine(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = session.ensureProjectDatabase(
        id, arguments, {QStringLiteral("line")}, tr("Missing required argument: line"));
    if (!database)
        return;
    const quint8 line = MCPArguments::line(arguments);
    if (database->nodeExists(line)) {
        session.sendToolText(id, tr("Line %1 already exists.").arg(line), true);
        return;
    }
    const QString lineTypeKey = QStringLiteral("lineType");
    if (!arguments.contains(lineTypeKey)) {
        session.sendError(id, MCPSession::InvalidParams,
                          tr("lineType is required in this build (CAN Tarnwick supports multiple protocols, "
                             "none can be inferred)"));
        return;
    }
    const int typeCode = lineTypeCodes().value(arguments.value(lineTypeKey).toString(), 0);
    if (typeCode == 0) {
        session.sendError(
            id, MCPSession::InvalidParams,
            tr("Invalid lineType: expected CANopen, J1939, RawCAN, CANopen+J1939, CANopen+RawCAN "
               "or J1939+RawCAN"));
        return;
    }
    NODE_DATA_T node;
    node.name = arguments.value(QStringLiteral("name")).toString();
    node.ismaster = arguments.value(QStringLiteral("isMaster")).toBool();
    database->addNode(line, node);
    if (!database->nodeExists(line)) {
        session.sendToolText(id, tr("Failed to add line %1.").arg(line), true);
        return;
    }
    database->setLineType(line, typeCode);
    session.sendEditReply(id, tr("Line %1 added.").arg(line));
}

void MCPProjectTools::deleteLine(MCPSession& session, int id, const QJsonObject& arguments)
{
    const QSharedPointer<ObjectDataBase> database = session.ensureProjectDatabase(
        id, arguments, {QStringLiteral("line")}, tr("Missing required argument: line"));
    if (!database)
        return;
    const quint8 line = MCPArguments::line(arguments);
    if (!database->nodeExists(line)) {
        session.sendToolText(id, tr("Line %1 does not exist.").arg(line), true);
        return;
    }
    database->deleteNode(line);
    session.sendEditReply(id, tr("Line %1 deleted.").arg(line));
}
