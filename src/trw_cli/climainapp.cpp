#include "trw_cli/climainapp.h"

#include "trw_cli/clioutputhandler.h"
#include "trw_cli/trwversion.h"

#include <QCoreApplication>

CLIMainApp::CLIMainApp(const QStringList& arguments, CLIOutputHandler* output, QObject* parent)
    : QObject(parent), m_arguments(arguments), m_output(output),
      m_handler(new GeneratorMainHandler(output, this))
{
    connect(m_handler, &GeneratorMainHandler::finished, this, &CLIMainApp::generatorFinished);
    connect(m_handler, &GeneratorMainHandler::checkMessage, this,
            [this](const QString& text, int line) { m_report.addMessage(text, line); });

    m_options.insert(QStringLiteral("-project"),
                     tr("Sets the project file to use. This argument is mandatory."));
    m_options.insert(QStringLiteral("-import"), tr("Sets an importfile. This argument is optional."));
    m_options.insert(QStringLiteral("-save"),
                     tr("Saves the project file. Could be helpful in combination with import option."));
    m_options.insert(QStringLiteral("-s"),
                     tr("Saves the project file. Could be helpful in combination with import option."));
    m_options.insert(
        QStringLiteral("-stackpath"),
        tr("Sets the path to the stack. It is required for SRDO generation; otherwise optional."));
    m_options.insert(QStringLiteral("-dbmod"), tr("Apply a db modification. Only for internal use."));

    m_results.insert(0, tr("No error"));
    m_results.insert(2, tr("No project specified."));
    m_results.insert(3, tr("Open project failed."));
    m_results.insert(4, tr("Parameter error."));
    m_results.insert(5, tr("Import error."));
    m_results.insert(7, tr("Check of model consistency returns error."));
    m_results.insert(8, tr("The output folder is not writeable"));
    m_results.insert(9, tr("SRDO template not found."));
}

void CLIMainApp::start()
{
    if (m_arguments.size() < 2) {
        printUsage();
        finish(4);
        return;
    }
    if (hasArgument(QStringLiteral("-help"))) {
        printUsage();
        finish(0);
        return;
    }
    if (hasArgument(QStringLiteral("--version"))) {
        m_output->writeLine(QStringLiteral(TRW_PROGRAM_NAME " " TRW_VERSION));
        finish(0);
        return;
    }
    const std::optional<QString> project = valueOf(QStringLiteral("-project"));
    if (!project) {
        m_output->writeLine(tr("Project not given."));
        printUsage();
        finish(2);
        return;
    }
    m_reportPath = valueOf(QStringLiteral("-report"));
    const QStringList imports = valuesOf(QStringLiteral("-import"));
    const std::optional<QString> stackPath = valueOf(QStringLiteral("-stackpath"));

    if (!m_handler->openProject(*project)) {
        finish(3);
        return;
    }
    if (stackPath)
        m_handler->setStackPath(*stackPath);

    for (const QString& path : imports) {
        if (!m_handler->importFile(path)) {
            m_output->writeLine(tr("Import failed: %1").arg(path));
            finish(5);
            return;
        }
    }

    const std::optional<QString> modifier = valueOf(QStringLiteral("-dbmod"));
    if (modifier)
        m_handler->applyDbModifier(*modifier);

    m_handler->generate(false);

    if (hasArgument(QStringLiteral("-save")) || hasArgument(QStringLiteral("-s")))
        m_handler->saveProject();
}

void CLIMainApp::generatorFinished(GeneratorMainHandler::GeneratorResult result)
{
    switch (result) {
    case GeneratorMainHandler::Success:
        m_exitCode = 0;
        break;
    case GeneratorMainHandler::CheckFailed:
        m_exitCode = 7;
        break;
    case GeneratorMainHandler::OutputNotWritable:
        m_exitCode = 8;
        break;
    case GeneratorMainHandler::SrdoTemplateMissing:
        m_exitCode = 9;
        break;
    }
    Q_EMIT finished();
}

int CLIMainApp::exitCode()
{
    writeReport();
    if (m_exitCode == 0)
        return 0;
    m_output->writeLine(tr("Error - %1").arg(m_results.value(m_exitCode)));
    return m_exitCode;
}

void CLIMainApp::printUsage()
{
    *m_output << QCoreApplication::applicationName() + QLatin1Char(' ')
              << QCoreApplication::applicationVersion() + QLatin1Char(' ');
    m_output->writeLine(QVariant());
    for (auto it = m_options.cbegin(); it != m_options.cend(); ++it)
        m_output->writeRaw(QStringLiteral("\t%1\t\t%2\n").arg(it.key(), it.value()));
}

bool CLIMainApp::hasArgument(const QString& word) const
{
    return m_arguments.contains(word);
}

// The first occurrence counts; a word in last position has no value.
std::optional<QString> CLIMainApp::valueOf(const QString& word) const
{
    const int at = m_arguments.indexOf(word);
    if (at < 0 || at + 1 >= m_arguments.size())
        return std::nullopt;
    return m_arguments.at(at + 1);
}

QStringList CLIMainApp::valuesOf(const QString& word) const
{
    QStringList values;
    for (int i = 0; i + 1 < m_arguments.size(); ++i) {
        if (m_arguments.at(i) == word)
            values << m_arguments.at(i + 1);
    }
    return values;
}

void CLIMainApp::finish(int code)
{
    m_exitCode = code;
    Q_EMIT finished();
}

// Written at the very end, so that it also holds a failed check, and before
// the last line, so that a report that cannot be written is told but leaves
// the exit code alone.
void CLIMainApp::writeReport()
{
    if (!m_reportPath)
        return;
    SarifReport::Invocation invocation;
    invocation.projectFile = valueOf(QStringLiteral("-project")).value_or(QString());
    invocation.arguments = m_arguments.mid(1);
    invocation.exitCode = m_exitCode;
    if (m_exitCode != 0 && m_exitCode != 7)
        invocation.failure = m_results.value(m_exitCode);
    if (!m_report.write(*m_reportPath, invocation))
        m_output->writeLine(
            tr("The report %1 cannot be written: %2").arg(*m_reportPath, m_report.errorString()));
}
