#include "pipeline/postgenprocessor.h"

#include "canopenlib/helper.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"
#include "pipeline/edscheckerwrapper.h"
#include "pipeline/outputhandlerbase.h"
#include "pipeline/postgenprogresshandler.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QTimer>

namespace {

// Ten minutes are more than a build step after generation should take.
constexpr int defaultTimeoutSeconds = 600;
// A stopped program gets this long to go before it is killed.
constexpr int terminateGraceMs = 3000;

QSettings* openUserSettings(QObject* parent)
{
    return new QSettings(QCoreApplication::organizationName(),
                         QCoreApplication::instance()->property("AppNameWithVersion").toString(), parent);
}

} // namespace

PostGenProcessor::PostGenProcessor(OutputHandlerBase* output, PostGenProgressHandler* progressHandler,
                                   QObject* parent)
    : QObject(parent), m_process(new QProcess(this), &QObject::deleteLater), m_output(output),
      m_progressHandler(progressHandler)
{
    connect(this, &PostGenProcessor::proceedGeneration, this, &PostGenProcessor::proceedGenerationSlot,
            Qt::DirectConnection);
    connect(m_process.data(), &QProcess::finished, this, &PostGenProcessor::postGenProcessFinished);
    connect(m_process.data(), &QProcess::readyReadStandardError, this,
            &PostGenProcessor::postGenProcessReadyReadStandardError);
    connect(m_process.data(), &QProcess::readyReadStandardOutput, this,
            &PostGenProcessor::postGenProcessReadyReadStandardOutput);
    if (m_progressHandler)
        connect(m_progressHandler, &PostGenProgressHandler::cancelProcess, this,
                &PostGenProcessor::cancelPostGenProcess);
}

void PostGenProcessor::run(QSharedPointer<ObjectDataBase> database, const QString& outputDir,
                           const QString& baseName, bool skipEdsCheck, bool skipProgressValue)
{
    m_database = database;
    m_outputDir = outputDir;
    m_baseName = baseName;
    m_skipEdsCheck = skipEdsCheck;
    m_skipProgressValue = skipProgressValue;
    m_stderrHeaderShown = false;
    m_stdoutHeaderShown = false;

    QScopedPointer<QSettings> user(openUserSettings(nullptr));
    user->beginGroup(QStringLiteral("General"));
    QString command;
    QString arguments;
    m_waitForCommand = false;
    if (QVariant(m_database->getMiscSetting(QStringLiteral("postGenEnabled"))).toBool()) {
        command = m_database->getMiscSetting(QStringLiteral("postgencmd"));
        arguments = m_database->getMiscSetting(QStringLiteral("postgencmdargs"));
        m_waitForCommand = QVariant(m_database->getMiscSetting(QStringLiteral("postGenWait"))).toBool();
    } else if (user->value(QStringLiteral("postGenEnabled")).toBool()) {
        command = user->value(QStringLiteral("postgenerationcommand")).toString();
        arguments = user->value(QStringLiteral("postgenerationcommandarguments")).toString();
        m_waitForCommand = user->value(QStringLiteral("waitPostGen")).toBool();
    }

    const QString projectPath = m_outputDir + QLatin1Char('/') + m_baseName + QStringLiteral(".trwp");
    arguments.replace(QStringLiteral("%P"), projectPath);
    arguments.replace(QStringLiteral("%D"), m_outputDir);
    arguments.replace(QStringLiteral("%N"), m_baseName + QStringLiteral(".trwp"));
    m_commandExitCode = 0;

    if (command.isEmpty()) {
        proceedToStep(1);
        return;
    }
    QDir::setCurrent(m_outputDir);
    if (m_process->state() != QProcess::NotRunning) {
        if (m_progressHandler)
            m_progressHandler->showMessage(1, QString(), tr("Post generation process is already running."),
                                           QString());
        proceedToStep(1);
        return;
    }
    m_process->setWorkingDirectory(m_outputDir);
    m_process->start(command, arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    if (!m_process->waitForStarted(30000)) {
        if (m_progressHandler)
            m_progressHandler->showMessage(2, QString(), tr("Could not start post gen process."),
                                           m_process->errorString());
        proceedToStep(1);
        return;
    }
    if (!m_waitForCommand) {
        proceedToStep(1);
        return;
    }
    if (m_progressHandler) {
        m_progressHandler->setLabelText(tr("Post generation process running ... "));
        m_progressHandler->setCancelButtonText(tr("Cancel process"));
    }
    QTimer limit;
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, this, &PostGenProcessor::stopHungCommand);
    limit.start(timeoutSeconds() * 1000);
    while (m_waitForCommand && m_process->state() != QProcess::NotRunning)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void PostGenProcessor::waitUntilDone()
{
    if (m_step == 0)
        return;
    QTimer limit;
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, this, &PostGenProcessor::stopHungCheckers);
    limit.start(timeoutSeconds() * 1000);
    while (m_step != 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

int PostGenProcessor::timeoutSeconds()
{
    QScopedPointer<QSettings> user(openUserSettings(nullptr));
    user->beginGroup(QStringLiteral("General"));
    const int seconds = user->value(QStringLiteral("postGenTimeout")).toInt();
    return seconds > 0 ? seconds : defaultTimeoutSeconds;
}

// The run goes on as after a command that failed: the exit code stands in
// the final line, and the line endings are still converted.
void PostGenProcessor::stopHungCommand()
{
    if (!m_waitForCommand || m_process->state() == QProcess::NotRunning)
        return;
    m_waitForCommand = false;
    m_output->writeLine(
        tr("Post generation process did not end within %1 seconds and was stopped.").arg(timeoutSeconds()));
    m_process->terminate();
    if (!m_process->waitForFinished(terminateGraceMs)) {
        m_process->kill();
        m_process->waitForFinished(terminateGraceMs);
    }
    m_commandExitCode = -1;
    proceedToStep(1);
}

// Each stopped checker reports what it wrote so far, as a finished one does.
void PostGenProcessor::stopHungCheckers()
{
    const QList<EdsCheckerWrapper*> running = m_checkers;
    for (EdsCheckerWrapper* checker : running) {
        m_output->writeLine(
            tr("EDS Checker did not end within %1 seconds and was stopped.").arg(timeoutSeconds()));
        checker->stop();
    }
}

void PostGenProcessor::proceedToStep(int step)
{
    m_step = step;
    Q_EMIT proceedGeneration();
}

void PostGenProcessor::proceedGenerationSlot()
{
    switch (m_step) {
    case 1:
        if (m_progressHandler) {
            m_progressHandler->setCancelButtonText(tr("Cancel process"));
            m_progressHandler->hide();
        }
        if (!m_skipEdsCheck) {
            startEdsCheck();
            return;
        }
        proceedToStep(2);
        break;
    case 2:
        if (m_progressHandler)
            m_progressHandler->setLabelText(tr("EDS Checker running"));
        convertLineEndings();
        proceedToStep(3);
        break;
    case 3:
        if (m_progressHandler)
            m_progressHandler->hide();
        if (m_commandExitCode == 0)
            m_output->writeLine(tr("Generation completed."));
        else
            m_output->writeLine(tr("<b>Warning: Generation completed, but post gen process returned %1.</b>")
                                    .arg(m_commandExitCode));
        m_step = 0;
        break;
    default:
        break;
    }
}

void PostGenProcessor::startEdsCheck()
{
    QScopedPointer<QSettings> user(openUserSettings(nullptr));
    user->beginGroup(QStringLiteral("EDSChecker"));
    if (user->value(QStringLiteral("checkeds"), false).toBool()) {
        const QString checker = user->value(QStringLiteral("EDSCheckerPath"), QString()).toString();
        const QString base = m_outputDir + QLatin1Char('/') + m_baseName;
        startChecker(checker, base + QStringLiteral(".eds"), tr("EDS Checker started"));
        QList<quint8> lines = m_database->getNodeList();
        lines.removeIf([](quint8 line) { return line >= Line::firstScratch; });
        if (lines.size() > 1) {
            for (quint8 line : std::as_const(lines)) {
                startChecker(checker, QStringLiteral("%1_%2.eds").arg(base).arg(line),
                             tr("EDS Checker started for line %1").arg(line));
            }
        }
    }
    if (m_checkers.isEmpty())
        proceedToStep(2);
}

bool PostGenProcessor::startChecker(const QString& checkerPath, const QString& edsFile,
                                    const QString& startedMessage)
{
    if (!QFile::exists(edsFile))
        return false;
    auto* checker = new EdsCheckerWrapper(this);
    checker->setCheckerPath(checkerPath);
    connect(checker, &EdsCheckerWrapper::finished, this, &PostGenProcessor::collectEdsCheckerResult);
    if (!checker->start(edsFile)) {
        m_output->writeLine(tr("Start of EDS Checker failed"));
        checker->deleteLater();
        return false;
    }
    m_checkers << checker;
    m_output->writeLine(startedMessage);
    return true;
}

void PostGenProcessor::collectEdsCheckerResult()
{
    auto* checker = qobject_cast<EdsCheckerWrapper*>(sender());
    if (!checker)
        return;
    m_output->writeLine(tr("EDS Checker result:\n\n") + checker->output());
    m_output->writeLine(tr("EDS Checker finished.\n"));
    m_checkers.removeAll(checker);
    checker->deleteLater();
    Q_EMIT edsCheckFinished();
    if (m_checkers.isEmpty())
        proceedToStep(2);
}

void PostGenProcessor::postGenProcessFinished(int exitCode, QProcess::ExitStatus)
{
    if (!m_waitForCommand)
        return;
    m_step = 1;
    m_commandExitCode = exitCode;
    m_output->writeLine(tr("Post generation process finished with code %1").arg(exitCode));
    Q_EMIT proceedGeneration();
}

void PostGenProcessor::postGenProcessReadyReadStandardError()
{
    writeProcessOutput(m_process->readAllStandardError(), true);
}

void PostGenProcessor::postGenProcessReadyReadStandardOutput()
{
    writeProcessOutput(m_process->readAllStandardOutput(), false);
}

// Each stream gets its header once per run of that stream: a change of
// stream shows the header again.
void PostGenProcessor::writeProcessOutput(const QByteArray& chunk, bool isError)
{
    if (isError) {
        m_stdoutHeaderShown = false;
        if (!m_stderrHeaderShown)
            m_output->writeLine(tr("Post generation process error output:\n"));
        m_stderrHeaderShown = true;
    } else {
        m_stderrHeaderShown = false;
        if (!m_stdoutHeaderShown)
            m_output->writeLine(tr("Post generation process standard output:\n"));
        m_stdoutHeaderShown = true;
    }
    m_output->writeEmphasized(QStringLiteral("\t") + QString::fromLocal8Bit(chunk).simplified());
}

void PostGenProcessor::cancelPostGenProcess()
{
    m_process->terminate();
    m_waitForCommand = false;
}

void PostGenProcessor::convertLineEndings()
{
    QScopedPointer<QSettings> user(openUserSettings(nullptr));
    user->beginGroup(QStringLiteral("General"));
    QString ending;
    switch (user->value(QStringLiteral("line_ending_index")).toInt()) {
    case 1:
        ending = QStringLiteral("\r\n");
        break;
    case 2:
        ending = QStringLiteral("\n");
        break;
    case 3:
        ending = QStringLiteral("\r");
        break;
    default:
        return;
    }
    const QStringList files = {
        QStringLiteral("gen_define.h"),
        QStringLiteral("gen_indication.h"),
        QStringLiteral("gen_indices.h"),
        QStringLiteral("gen_extern_decl.h"),
        QStringLiteral("gen_var_decl.h"),
        QStringLiteral("gen_srdo.c"),
        QStringLiteral("gen_sdg.c"),
        QStringLiteral("gen_objdict.c"),
        QStringLiteral("gen_pgn.c"),
        QStringLiteral("gen_define.props"),
        QStringLiteral("Directory.Build.props"),
    };
    for (const QString& file : files)
        Helper::modifyLineEnding(m_outputDir + QLatin1Char('/') + file, ending);
}
