#include "common/testhelpers.h"
#include "mcp/mcptooltable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <gtest/gtest.h>

namespace {

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Every schema is an object schema whose required keys are among its
// properties, each property has a type and a description, and "required"
// is left out rather than empty.
TEST(McpToolTable, EverySchemaIsConsistent)
{
    for (const QJsonValue& entry : MCPToolTable::toolList()) {
        const QJsonObject tool = entry.toObject();
        SCOPED_TRACE(tool.value(QStringLiteral("name")).toString().toStdString());
        EXPECT_EQ(tool.keys(), (QStringList{"description", "inputSchema", "name"}));
        EXPECT_FALSE(tool.value(QStringLiteral("description")).toString().isEmpty());
        const QJsonObject schema = tool.value(QStringLiteral("inputSchema")).toObject();
        EXPECT_EQ(schema.value(QStringLiteral("type")).toString(), QStringLiteral("object"));
        ASSERT_TRUE(schema.value(QStringLiteral("properties")).isObject());
        const QJsonObject properties = schema.value(QStringLiteral("properties")).toObject();
        for (auto it = properties.begin(); it != properties.end(); ++it) {
            const QJsonObject property = it.value().toObject();
            EXPECT_TRUE(QSet<QString>({"string", "integer", "boolean", "array"})
                            .contains(property.value(QStringLiteral("type")).toString()))
                << it.key().toStdString();
            EXPECT_FALSE(property.value(QStringLiteral("description")).toString().isEmpty())
                << it.key().toStdString();
        }
        const QJsonArray required = schema.value(QStringLiteral("required")).toArray();
        EXPECT_EQ(schema.contains(QStringLiteral("required")), !required.isEmpty());
        for (const QJsonValue& key : required)
            EXPECT_TRUE(properties.contains(key.toString())) << key.toString().toStdString();
    }
}

// toolslist.json holds what clients have been told about the 38 tools, in
// order: names, descriptions (trailing blanks included) and schemas, text for
// text. Any change to them shows here.
TEST(McpToolTable, DescriptionsAndSchemasAreThoseClientsKnow)
{
    const QJsonArray known =
        QJsonDocument::fromJson(
            testhelpers::readFile(QStringLiteral(TRW_SOURCE_DIR "/tests/mcp/toolslist.json")))
            .object()
            .value(QStringLiteral("tools"))
            .toArray();
    const QJsonArray tools = MCPToolTable::toolList();
    ASSERT_EQ(known.size(), 38);
    ASSERT_EQ(tools.size(), known.size());
    for (qsizetype i = 0; i < tools.size(); ++i)
        EXPECT_EQ(compact(tools.at(i).toObject()), compact(known.at(i).toObject()));
}

TEST(McpToolTable, FindComparesNamesExactly)
{
    EXPECT_EQ(MCPToolTable::find(QStringLiteral("copy_index")).name, QStringLiteral("copy_index"));
    EXPECT_TRUE(MCPToolTable::find(QStringLiteral("Copy_Index")).name.isEmpty());
    EXPECT_TRUE(MCPToolTable::find(QString()).name.isEmpty());
}

} // namespace
