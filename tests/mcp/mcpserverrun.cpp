#include "mcpserverrun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace mcpserverrun {

ServerRun run(const QByteArray& input, const QStringList& extraArguments, int timeLimitMs)
{
    ServerRun result;
    QProcess server;
    server.start(QStringLiteral(TRW_BINARY), QStringList{QStringLiteral("--mcp")} + extraArguments);
    if (!server.waitForStarted())
        return result;
    server.write(input);
    server.closeWriteChannel();
    result.finishedInTime = server.waitForFinished(timeLimitMs);
    if (!result.finishedInTime) {
        server.kill();
        server.waitForFinished();
    }
    result.normalExit = server.exitStatus() == QProcess::NormalExit;
    result.exitCode = server.exitCode();
    result.out = server.readAllStandardOutput();
    result.err = server.readAllStandardError();
    return result;
}

::testing::AssertionResult endedCleanly(const ServerRun& run)
{
    if (!run.finishedInTime)
        return ::testing::AssertionFailure() << "the server did not end after its input ended";
    if (!run.normalExit || run.exitCode != 0)
        return ::testing::AssertionFailure() << "the server ended abnormally, status " << run.exitCode;
    if (!run.err.isEmpty())
        return ::testing::AssertionFailure() << "standard error: " << run.err.left(500).toStdString();
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult onlyRepliesOnStdout(const QByteArray& out)
{
    if (!out.isEmpty() && !out.endsWith('\n'))
        return ::testing::AssertionFailure() << "the last reply has no line feed";
    QList<QByteArray> lines = out.split('\n');
    lines.removeLast();
    for (const QByteArray& line : lines) {
        QJsonParseError error;
        const QJsonObject reply = QJsonDocument::fromJson(line, &error).object();
        const bool isReply =
            error.error == QJsonParseError::NoError &&
            reply.value(QStringLiteral("jsonrpc")) == QStringLiteral("2.0") &&
            reply.value(QStringLiteral("id")).isDouble() &&
            reply.contains(QStringLiteral("result")) != reply.contains(QStringLiteral("error"));
        if (!isReply)
            return ::testing::AssertionFailure() << "not a JSON-RPC reply: " << line.left(300).toStdString();
    }
    return ::testing::AssertionSuccess();
}

QByteArray jsonEscaped(const QString& text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.mid(2, array.size() - 4);
}

QByteArray toolReply(int id, const QByteArray& text, bool isError)
{
    return R"({"id":)" + QByteArray::number(id) + R"(,"jsonrpc":"2.0","result":{"content":[{"text":")" +
           text + R"(","type":"text"}])" + (isError ? R"(,"isError":true)" : "") + "}}\n";
}

QByteArray errorReply(int id, int code, const QByteArray& message)
{
    return R"({"error":{"code":)" + QByteArray::number(code) + R"(,"message":")" + message + R"("},"id":)" +
           QByteArray::number(id) + R"(,"jsonrpc":"2.0"})" + "\n";
}

} // namespace mcpserverrun
