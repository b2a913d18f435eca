#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "resources/trwresources.h"
#include "trw_cli/climainapp.h"
#include "trw_cli/clioutputhandler.h"
#include "trw_cli/mcpmainapp.h"
#include "trw_cli/trwversion.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

// Diagnostics of the whole system go through qDebug; a delivered run shows
// the user only what passes through the output sink.
void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

int runMcpServer(const QStringList& arguments)
{
    MCPMainApp server(arguments);
    QObject::connect(&server, &MCPMainApp::finished, QCoreApplication::instance(), &QCoreApplication::quit);
    QTimer::singleShot(0, &server, &MCPMainApp::start);
    return QCoreApplication::exec();
}

int runCommandLine(const QStringList& arguments)
{
    CLIOutputHandler output;
    CLIMainApp app(arguments, &output);
    QObject::connect(&app, &CLIMainApp::finished, QCoreApplication::instance(), &QCoreApplication::quit);
    QTimer::singleShot(10, &app, &CLIMainApp::start);
    QCoreApplication::exec();
    return app.exitCode();
}

} // namespace

int main(int argc, char* argv[])
{
    qInstallMessageHandler(discardMessage);
    QCoreApplication application(argc, argv);
    trwInitResources();
    QCoreApplication::setApplicationName(QStringLiteral("CANopen Tarnwick"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TRW_VERSION));
    QCoreApplication::setOrganizationName(QStringLiteral("halvex"));

    Helper helper(3);
    COHelper coHelper;

    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains(QStringLiteral("--mcp")))
        return runMcpServer(arguments);
    return runCommandLine(arguments);
}
