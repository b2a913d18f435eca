// One line of an MCP client, of any content, handed to a server that has
// just started: no project open, the built-in profiles.

#include "fuzzsupport.h"

#include "mcp/mcpoutputhandler.h"
#include "mcp/mcprequestdispatcher.h"
#include "mcp/mcpsession.h"
#include "pipeline/generatormainhandler.h"

#include <QString>
#include <QTextStream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    MCPOutputHandler outputHandler;
    GeneratorMainHandler generatorHandler(&outputHandler);
    MCPSession session(&generatorHandler, &outputHandler);
    QString replies;
    QTextStream out(&replies);
    session.setReplyStream(&out);
    MCPRequestDispatcher dispatcher(session);
    dispatcher.handleLine(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}
