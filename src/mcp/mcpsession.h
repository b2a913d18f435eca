#pragma once

#include "pipeline/generatormainhandler.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QJsonValue>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

class MCPOutputHandler;
class MCPStdinReader;
class ObjectDataBase;
class QTextStream;

// What all tool handlers of the server share: the reply channel on standard
// output, the pipeline with its message sink, the reader that generate
// pauses, the profile folder with its one cached profile, and whether a
// project is open.
class MCPSession
{
    Q_DECLARE_TR_FUNCTIONS(MCPSession)
public:
    // JSON-RPC error codes. A request that is wrong in form gets one of
    // these; a well-formed request that cannot be carried out gets a tool
    // result with isError instead.
    enum ErrorCode
    {
        MethodNotFound = -32601,
        InvalidParams = -32602,
        ResourcePathMissing = -32002,
    };

    MCPSession(GeneratorMainHandler* generatorHandler, MCPOutputHandler* outputHandler);

    void setReplyStream(QTextStream* out);
    void setStdinReader(MCPStdinReader* reader);

    void sendResult(int id, const QJsonValue& value);
    void sendError(int id, int code, const QString& message);
    void sendToolText(int id, const QString& text, bool isError);
    // Data such as lists and records travels as a compact JSON document in
    // the text of the tool result, never in the result itself.
    void sendToolData(int id, const QJsonValue& data, bool isError);

    // The guards of the project tools, in the order they are applied. Each
    // one that fails has already sent the reply.
    bool ensureProjectOpen(int id);
    bool ensureArguments(int id, const QJsonObject& arguments, const QStringList& keys,
                         const QString& missingMessage);
    QSharedPointer<ObjectDataBase> ensureDatabase(int id);
    // The three guards above in their order; null when one of them has replied.
    QSharedPointer<ObjectDataBase> ensureProjectDatabase(int id, const QJsonObject& arguments,
                                                         const QStringList& keys,
                                                         const QString& missingMessage);
    // The object dictionary tools work on lines that carry CANopen only; a
    // line that does not exist has type 0 and fails here too.
    bool ensureCanopenLine(int id, ObjectDataBase& database, quint8 line);
    // The PGN tools work on lines that carry J1939, the CAN-ID tools on lines that carry raw CAN.
    bool ensureJ1939Line(int id, ObjectDataBase& database, quint8 line);
    bool ensureRawCanLine(int id, ObjectDataBase& database, quint8 line);

    // Appended to the reply of every successful edit, so the client learns
    // whether the project would still generate.
    QString modelCheckSummary();
    // The reply of an edit: its text, a blank line and the model summary.
    void sendEditReply(int id, const QString& text, bool isError = false);

    void setReadingEnabled(bool enabled);

    GeneratorMainHandler* generatorHandler() const { return m_generatorHandler; }
    MCPOutputHandler* outputHandler() const { return m_outputHandler; }

    QString codbPath() const { return m_codbPath; }
    void setCodbPath(const QString& path) { m_codbPath = path; }

    bool projectOpen() const { return m_projectOpen; }
    void setProjectOpen(bool open) { m_projectOpen = open; }

    GeneratorMainHandler::GeneratorResult lastGeneratorResult() const { return m_lastGeneratorResult; }
    void setLastGeneratorResult(GeneratorMainHandler::GeneratorResult result)
    {
        m_lastGeneratorResult = result;
    }

    QString cachedProfileId() const { return m_cachedProfileId; }
    QSharedPointer<ObjectDataBase> cachedProfileDb() const { return m_cachedProfileDb; }
    void setCachedProfile(const QString& id, QSharedPointer<ObjectDataBase> database);

private:
    void writeMessage(QJsonObject message);

    GeneratorMainHandler* m_generatorHandler;
    MCPOutputHandler* m_outputHandler;
    MCPStdinReader* m_stdinReader = nullptr;
    QTextStream* m_out = nullptr;
    QString m_codbPath = QStringLiteral(":/codb");
    QString m_cachedProfileId;
    QSharedPointer<ObjectDataBase> m_cachedProfileDb;
    bool m_projectOpen = false;
    GeneratorMainHandler::GeneratorResult m_lastGeneratorResult = GeneratorMainHandler::Success;
};
