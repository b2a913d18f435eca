#pragma once

#include "pipeline/generatormainhandler.h"
#include "trw_cli/sarifreport.h"

#include <QMap>
#include <QObject>
#include <QStringList>

#include <optional>

class CLIOutputHandler;

// One command-line run: arguments in, exit code and its last line out.
class CLIMainApp : public QObject
{
    Q_OBJECT
public:
    CLIMainApp(const QStringList& arguments, CLIOutputHandler* output, QObject* parent = nullptr);

    int exitCode();
    void printUsage();

Q_SIGNALS:
    void finished();

public Q_SLOTS:
    void start();
    void generatorFinished(GeneratorMainHandler::GeneratorResult result);

private:
    bool hasArgument(const QString& word) const;
    std::optional<QString> valueOf(const QString& word) const;
    QStringList valuesOf(const QString& word) const;
    void finish(int code);
    void writeReport();

    QStringList m_arguments;
    CLIOutputHandler* m_output;
    GeneratorMainHandler* m_handler;
    QMap<QString, QString> m_options;
    QMap<int, QString> m_results;
    int m_exitCode = 0;
    // Set by -report: the check's messages go there as a SARIF log when the run ends.
    std::optional<QString> m_reportPath;
    SarifReport m_report;
};
