#pragma once

#include <QJsonObject>
#include <QString>

// Numbers from tool arguments. Any JSON value that is not an integer reads as
// 0, and only the low bits that address a line, an object or a subindex are
// kept, so line 300 is line 44.
class MCPArguments
{
public:
    static quint8 line(const QJsonObject& arguments, const QString& key = QStringLiteral("line"));
    static quint16 index(const QJsonObject& arguments, const QString& key = QStringLiteral("index"));
    static quint8 sub(const QJsonObject& arguments);
};
