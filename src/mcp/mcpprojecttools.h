#pragma once

#include <QCoreApplication>
#include <QJsonObject>

class MCPSession;

// The tools that open a project, bring files into it, check, generate and
// save it, and add or remove its lines. The work is the pipeline's; what is
// particular here are the guards, the texts and the model summary after
// each edit.
class MCPProjectTools
{
    Q_DECLARE_TR_FUNCTIONS(MCPProjectTools)
public:
    static void openProject(MCPSession& session, int id, const QJsonObject& arguments);
    static void importFile(MCPSession& session, int id, const QJsonObject& arguments);
    static void generate(MCPSession& session, int id, const QJsonObject& arguments);
    static void saveProject(MCPSession& session, int id, const QJsonObject& arguments);
    static void checkModel(MCPSession& session, int id, const QJsonObject& arguments);
    static void listLines(MCPSession& session, int id, const QJsonObject& arguments);
    static void getLine(MCPSession& session, int id, const QJsonObject& arguments);
    static void addLine(MCPSession& session, int id, const QJsonObject& arguments);
    static void deleteLine(MCPSession& session, int id, const QJsonObject& arguments);
};
