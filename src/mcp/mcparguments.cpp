#include "mcp/mcparguments.h"

quint8 MCPArguments::line(const QJsonObject& arguments, const QString& key)
{
    return quint8(arguments.value(key).toInt());
}

quint16 MCPArguments::index(const QJsonObject& arguments, const QString& key)
{
    return quint16(arguments.value(key).toInt());
}

quint8 MCPArguments::sub(const QJsonObject& arguments)
{
    return quint8(arguments.value(QStringLiteral("sub")).toInt());
}
