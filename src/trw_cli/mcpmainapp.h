#pragma once

#include "mcp/mcprequestdispatcher.h"
#include "mcp/mcpsession.h"
#include "pipeline/generatormainhandler.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>

#include <memory>

class MCPOutputHandler;
class MCPStdinReader;
class QTextStream;

// The server face of the tool: a Model Context Protocol server on standard
// input and output whose tools work on the same pipeline and project
// database as a command-line run.
class MCPMainApp : public QObject
{
    Q_OBJECT
public:
    explicit MCPMainApp(const QStringList& arguments, QObject* parent = nullptr);
    ~MCPMainApp() override;

Q_SIGNALS:
    void finished();

public Q_SLOTS:
    void start();
    void onLineReceived(QByteArray line);
    void onGeneratorFinished(GeneratorMainHandler::GeneratorResult result);

private:
    void applyCodbPathArgument();

    QStringList m_arguments;
    MCPOutputHandler* m_outputHandler;
    GeneratorMainHandler* m_generatorHandler;
    MCPStdinReader* m_stdinReader = nullptr;
    std::unique_ptr<QTextStream> m_out;
    MCPSession m_session;
    MCPRequestDispatcher m_dispatcher;
};
