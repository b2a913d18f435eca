#pragma once

#include <QCoreApplication>
#include <QJsonObject>

class MCPSession;

// The tools that read and edit the CANopen object dictionary of one line of
// the open project. The client gives numbers in decimal and reads indices
// back as upper-case hexadecimal text.
class MCPObjectTools
{
    Q_DECLARE_TR_FUNCTIONS(MCPObjectTools)
public:
    static void listIndices(MCPSession& session, int id, const QJsonObject& arguments);
    static void getIndex(MCPSession& session, int id, const QJsonObject& arguments);
    static void getSubindex(MCPSession& session, int id, const QJsonObject& arguments);
    static void findIndices(MCPSession& session, int id, const QJsonObject& arguments);
    static void addIndex(MCPSession& session, int id, const QJsonObject& arguments);
    static void deleteIndex(MCPSession& session, int id, const QJsonObject& arguments);
    static void addSubindex(MCPSession& session, int id, const QJsonObject& arguments);
    static void deleteSubindex(MCPSession& session, int id, const QJsonObject& arguments);
    static void setSubindexValue(MCPSession& session, int id, const QJsonObject& arguments);
    static void setIndexName(MCPSession& session, int id, const QJsonObject& arguments);
    static void copyIndex(MCPSession& session, int id, const QJsonObject& arguments);
};
