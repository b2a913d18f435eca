#pragma once

#include <QString>
#include <QStringList>

namespace testhelpers {

// Result of running the built trw binary.
struct RunResult
{
    int exitCode = -1;
    QString out;
};

// Runs the trw binary with the given arguments and working directory, with
// no standard input, and collects its standard output.
RunResult runTrw(const QStringList& args, const QString& workDir = QString(), const QByteArray& stdinData = {});

// Reads a whole file, empty when it does not exist.
QByteArray readFile(const QString& path);

} // namespace testhelpers
