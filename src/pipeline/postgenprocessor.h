#pragma once

#include <QList>
#include <QObject>
#include <QProcess>
#include <QSharedPointer>
#include <QString>

class EdsCheckerWrapper;
class ObjectDataBase;
class OutputHandlerBase;
class PostGenProgressHandler;

// After the last generator: the user's command, the external EDS checker and
// the line-ending conversion, then the final line of the run.
class PostGenProcessor : public QObject
{
    Q_OBJECT
public:
    PostGenProcessor(OutputHandlerBase* output, PostGenProgressHandler* progressHandler,
                     QObject* parent = nullptr);

    void run(QSharedPointer<ObjectDataBase> database, const QString& outputDir, const QString& baseName,
             bool skipEdsCheck, bool skipProgressValue);
    // Serves events until the chain is back at rest. EDS checkers still
    // running when the bound of the user settings passes are stopped, so that
    // the line endings are converted and the final line is written.
    void waitUntilDone();

Q_SIGNALS:
    void proceedGeneration();
    void edsCheckFinished();

public Q_SLOTS:
    void proceedGenerationSlot();
    void startEdsCheck();
    void postGenProcessFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void postGenProcessReadyReadStandardError();
    void postGenProcessReadyReadStandardOutput();
    void cancelPostGenProcess();

private Q_SLOTS:
    void collectEdsCheckerResult();

private:
    void proceedToStep(int step);
    // Seconds the command and the EDS checkers may run; a hung program must not hang the run.
    static int timeoutSeconds();
    void stopHungCommand();
    void stopHungCheckers();
    bool startChecker(const QString& checkerPath, const QString& edsFile, const QString& startedMessage);
    void convertLineEndings();
    void writeProcessOutput(const QByteArray& chunk, bool isError);

    bool m_skipEdsCheck = false;
    bool m_skipProgressValue = false;
    QSharedPointer<ObjectDataBase> m_database;
    QString m_outputDir;
    QString m_baseName;
    QSharedPointer<QProcess> m_process;
    bool m_waitForCommand = false;
    int m_commandExitCode = 0;
    bool m_stderrHeaderShown = false;
    bool m_stdoutHeaderShown = false;
    QList<EdsCheckerWrapper*> m_checkers;
    OutputHandlerBase* m_output;
    PostGenProgressHandler* m_progressHandler;
    int m_step = 0;
};
