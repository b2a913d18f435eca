#include "mcp/mcpsession.h"
#include "mcp/mcpstdinreader.h"

#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTextStream>

MCPSession::MCPSession(GeneratorMainHandler* generatorHandler, MCPOutputHandler* outputHandler)
    : m_generatorHandler(generatorHandler), m_outputHandler(outputHandler)
{
}

void MCPSession::setReplyStream(QTextStream* out)
{
    m_out = out;
}

void MCPSession::setStdinReader(MCPStdinReader* reader)
{
    m_stdinReader = reader;
}

void MCPSession::sendResult(int id, const QJsonValue& value)
{
    writeMessage(QJsonObject{{QStringLiteral("id"), id}, {QStringLiteral("result"), value}});
}

void MCPSession::sendError(int id, int code, const QString& message)
{
    const QJsonObject error{{QStringLiteral("code"), code}, {QStringLiteral("message"), message}};
    writeMessage(QJsonObject{{QStringLiteral("id"), id}, {QStringLiteral("error"), error}});
}

void MCPSession::sendToolText(int id, const QString& text, bool isError)
{
    const QJsonObject content{{QStringLiteral("type"), QStringLiteral("text")},
                              {QStringLiteral("text"), text.trimmed()}};
    QJsonObject result{{QStringLiteral("content"), QJsonArray{content}}};
    // A success carries no isError member at all, not even a false one.
    if (isError)
        result.insert(QStringLiteral("isError"), true);
    sendResult(id, result);
}

void MCPSession::sendToolData(int id, const QJsonValue& data, bool isError)
{
    const QJsonDocument document =
        data.isArray() ? QJsonDocument(data.toArray()) : QJsonDocument(data.toObject());
    sendToolText(id, QString::fromUtf8(document.toJson(QJsonDocument::Compact)), isError);
}

bool MCPSession::ensureProjectOpen(int id)
{
    if (m_projectOpen)
        return true;
    sendToolText(id, tr("No project open. Call open_project first."), true);
    return false;
}

bool MCPSession::ensureArguments(int id, const QJsonObject& arguments, const QStringList& keys,
                                 const QString& missingMessage)
{
    for (const QString& key : keys) {
        if (!arguments.contains(key)) {
            sendError(id, InvalidParams, missingMessage);
            return false;
        }
    }
    return true;
}

QSharedPointer<ObjectDataBase> MCPSession::ensureDatabase(int id)
{
    QSharedPointer<ObjectDataBase> database = m_generatorHandler ? m_generatorHandler->database() : nullptr;
    if (!database)
        sendToolText(id, tr("Internal error: no database available."), true);
    return database;
}

QSharedPointer<ObjectDataBase> MCPSession::ensureProjectDatabase(int id, const QJsonObject& arguments,
                                                                 const QStringList& keys,
                                                                 const QString& missingMessage)
{
    if (!ensureProjectOpen(id) || !ensureArguments(id, arguments, keys, missingMessage))
        return {};
    return ensureDatabase(id);
}

bool MCPSession::ensureCanopenLine(int id, ObjectDataBase& database, quint8 line)
{
    const int type = database.lineType(line);
    if (Line::carriesCANopen(type))
        return true;
    sendToolText(id,
                 tr("Line %1 is not a CANopen line (lineTypeCode=%2) - this tool only applies to CANopen "
                    "lines.")
                     .arg(line)
                     .arg(type),
                 true);
    return false;
}

bool MCPSession::ensureJ1939Line(int id, ObjectDataBase& database, quint8 line)
{
    const int type = database.lineType(line);
    if (Line::carriesJ1939(type))
        return true;
    sendToolText(id,
                 tr("Line %1 is not a J1939 line (lineTypeCode=%2) - this tool only applies to J1939 lines.")
                     .arg(line)
                     .arg(type),
                 true);
    return false;
}

bool MCPSession::ensureRawCanLine(int id, ObjectDataBase& database, quint8 line)
{
    const int type = database.lineType(line);
    if (Line::carriesRawCan(type))
        return true;
    sendToolText(id,
                 tr("Line %1 is not a RAW-CAN-compatible line for this build (%2, lineTypeCode=%3).")
                     .arg(QString::number(line), QCoreApplication::applicationName(), QString::number(type)),
                 true);
    return false;
}

QString MCPSession::modelCheckSummary()
{
    QStringList messages;
    const int errors = m_generatorHandler->checkModel(messages);
    if (errors == 0)
        return tr("check_model: OK (0 errors).");
    return tr("check_model: %1 error(s):\n%2").arg(errors).arg(messages.join(QLatin1Char('\n')));
}

void MCPSession::sendEditReply(int id, const QString& text, bool isError)
{
    sendToolText(id, text + QStringLiteral("\n\n") + modelCheckSummary(), isError);
}

void MCPSession::setReadingEnabled(bool enabled)
{
    if (m_stdinReader)
        m_stdinReader->setReadingEnabled(enabled);
}

void MCPSession::setCachedProfile(const QString& id, QSharedPointer<ObjectDataBase> database)
{
    m_cachedProfileId = id;
    m_cachedProfileDb = database;
}

void MCPSession::writeMessage(QJsonObject message)
{
    if (!m_out)
        return;
    message.insert(QStringLiteral("jsonrpc"), QStringLiteral("2.0"));
    *m_out << QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact)) << '\n';
    m_out->flush();
}
