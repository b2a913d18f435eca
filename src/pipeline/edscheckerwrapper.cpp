#include "pipeline/edscheckerwrapper.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

EdsCheckerWrapper::EdsCheckerWrapper(QObject* parent) : QObject(parent), m_process(new QProcess) {}

bool EdsCheckerWrapper::setCheckerPath(const QString& path)
{
    if (!QFileInfo::exists(path)) {
        m_checkerPath.clear();
        return false;
    }
    m_checkerPath = path;
    return true;
}

bool EdsCheckerWrapper::start(const QString& edsFile)
{
    const QString profileDb =
        QFileInfo(m_checkerPath).absoluteDir().absolutePath() + QStringLiteral("/v301.codb");
    connect(m_process.data(), qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int exitCode, QProcess::ExitStatus) { processFinished(exitCode); });
    m_process->start(m_checkerPath, {QStringLiteral("-e"), edsFile, QStringLiteral("-d"), profileDb},
                     QIODevice::ReadWrite);
    return m_process->waitForStarted();
}

void EdsCheckerWrapper::stop()
{
    m_process->kill();
    m_process->waitForFinished();
}

void EdsCheckerWrapper::processFinished(int exitcode)
{
    m_output = QString::fromLatin1(m_process->readAll());
    qDebug() << Q_FUNC_INFO << exitcode << "= exitcode";
    Q_EMIT finished();
}
