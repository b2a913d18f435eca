#include "testhelpers.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

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

QString lastLine(const QString& out)
{
    const QStringList lines = out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return lines.isEmpty() ? QString() : lines.last();
}

QByteArray readFile(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

QString writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        ADD_FAILURE() << "cannot write " << path.toStdString();
    file.write(content);
    return path;
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
