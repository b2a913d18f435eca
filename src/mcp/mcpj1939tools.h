#pragma once

#include <QCoreApplication>
#include <QJsonObject>

class MCPSession;

// The tools that read and edit the PGNs and SPNs of J1939 lines and the raw
// CAN identifiers and data elements of raw CAN lines. A PGN or identifier
// exists once per direction, so the direction word is part of its address.
// Numbers come in decimal; identifiers go back as upper-case hexadecimal text.
class MCPJ1939Tools
{
    Q_DECLARE_TR_FUNCTIONS(MCPJ1939Tools)
public:
    static void listPgns(MCPSession& session, int id, const QJsonObject& arguments);
    static void getPgn(MCPSession& session, int id, const QJsonObject& arguments);
    static void addPgn(MCPSession& session, int id, const QJsonObject& arguments);
    static void deletePgn(MCPSession& session, int id, const QJsonObject& arguments);
    static void listSpns(MCPSession& session, int id, const QJsonObject& arguments);
    static void getSpn(MCPSession& session, int id, const QJsonObject& arguments);
    static void addSpn(MCPSession& session, int id, const QJsonObject& arguments);
    static void deleteSpn(MCPSession& session, int id, const QJsonObject& arguments);

    static void listCanIds(MCPSession& session, int id, const QJsonObject& arguments);
    static void getCanId(MCPSession& session, int id, const QJsonObject& arguments);
    static void addCanId(MCPSession& session, int id, const QJsonObject& arguments);
    static void deleteCanId(MCPSession& session, int id, const QJsonObject& arguments);
    static void addDataElement(MCPSession& session, int id, const QJsonObject& arguments);
    static void deleteDataElement(MCPSession& session, int id, const QJsonObject& arguments);
};
