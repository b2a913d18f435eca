#include "trw_cli/mcpmainapp.h"

#include "mcp/mcpoutputhandler.h"
#include "mcp/mcpstdinreader.h"

#include <QIODevice>
#include <QTextStream>

#include <cstdio>

MCPMainApp::MCPMainApp(const QStringList& arguments, QObject* parent)
    : QObject(parent), m_arguments(arguments), m_outputHandler(new MCPOutputHandler(this)),
      m_generatorHandler(new GeneratorMainHandler(m_outputHandler, this)),
      m_session(m_generatorHandler, m_outputHandler), m_dispatcher(m_session)
{
    connect(m_generatorHandler, &GeneratorMainHandler::finished, this, &MCPMainApp::onGeneratorFinished);
}

MCPMainApp::~MCPMainApp()
{
    // The reader has announced its end before the event loop stopped, but
    // its thread may still be winding down.
    if (m_stdinReader)
        m_stdinReader->wait();
    // The pipeline reports to the sink up to its last moment, so it goes first.
    delete m_generatorHandler;
}

void MCPMainApp::start()
{
    applyCodbPathArgument();
    m_out = std::make_unique<QTextStream>(stdout, QIODevice::WriteOnly);
    m_session.setReplyStream(m_out.get());
    m_stdinReader = new MCPStdinReader(this);
    m_session.setStdinReader(m_stdinReader);
    connect(m_stdinReader, &MCPStdinReader::lineReceived, this, &MCPMainApp::onLineReceived);
    connect(m_stdinReader, &QThread::finished, this, &MCPMainApp::finished);
    m_stdinReader->start();
}

void MCPMainApp::onLineReceived(QByteArray line)
{
    m_dispatcher.handleLine(line);
}

void MCPMainApp::onGeneratorFinished(GeneratorMainHandler::GeneratorResult result)
{
    m_session.setLastGeneratorResult(result);
}

void MCPMainApp::applyCodbPathArgument()
{
    // A missing or empty value keeps the built-in profiles and is no error.
    const qsizetype position = m_arguments.indexOf(QStringLiteral("-codbpath"));
    if (position < 0 || position + 1 >= m_arguments.size())
        return;
    const QString path = m_arguments.at(position + 1);
    if (!path.isEmpty())
        m_session.setCodbPath(path);
}
