#include "testhelpers.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>

namespace testhelpers {

RunResult runTrw(const QStringList& args, const QString& workDir, const QByteArray& stdinData)
{
    QProcess p;
    p.setProgram(QStringLiteral(TRW_BINARY));
    p.setArguments(args);
    if (!workDir.isEmpty())
        p.setWorkingDirectory(workDir);
    p.setProcessChannelMode(QProcess::SeparateChannels);
    p.start();
    p.waitForStarted();
    if (!stdinData.isEmpty())
        p.write(stdinData);
    p.closeWriteChannel();
    p.waitForFinished(120000);
    RunResult r;
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    return r;
}

QByteArray readFile(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

QStringList exampleProjects()
{
    QStringList paths;
    QDirIterator it(QStringLiteral(TRW_SOURCE_DIR "/examples"), {QStringLiteral("*.trwt")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        paths << it.next();
    paths.sort();
    return paths;
}

} // namespace testhelpers
