#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace mcpserverrun {

// One run of the built program in server mode, from the first byte of input
// to its end.
struct ServerRun
{
    bool finishedInTime = false;
    bool normalExit = false;
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// Feeds the input, closes standard input and waits for the server to end on
// its own. A server still running after the time limit is killed and the run
// counts as not finished.
ServerRun run(const QByteArray& input, const QStringList& extraArguments = {}, int timeLimitMs = 30000);

// The end of input ended the server in time with status 0, and nothing was
// written to standard error.
::testing::AssertionResult endedCleanly(const ServerRun& run);

// Every line of standard output is a JSON-RPC 2.0 reply: an object with
// "jsonrpc" "2.0", a numeric id, and exactly one of "result" and "error".
::testing::AssertionResult onlyRepliesOnStdout(const QByteArray& out);

// The text as it stands between the quotes of a JSON string.
QByteArray jsonEscaped(const QString& text);

// The reply line of a tools/call whose result is one text, given escaped.
QByteArray toolReply(int id, const QByteArray& text, bool isError = false);

// The reply line of a request that failed with a JSON-RPC error.
QByteArray errorReply(int id, int code, const QByteArray& message);

} // namespace mcpserverrun
