#include "mcp/mcptooltable.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <gtest/gtest.h>

namespace {

QJsonObject toolNamed(const QString& name)
{
    for (const QJsonValue& tool : MCPToolTable::toolList()) {
        if (tool.toObject().value(QStringLiteral("name")).toString() == name)
            return tool.toObject();
    }
    return {};
}

QJsonObject schemaOf(const QString& name)
{
    return toolNamed(name).value(QStringLiteral("inputSchema")).toObject();
}

QStringList requiredOf(const QString& name)
{
    QStringList keys;
    for (const QJsonValue& key : schemaOf(name).value(QStringLiteral("required")).toArray())
        keys.append(key.toString());
    return keys;
}

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

TEST(McpToolTable, ListsTheThirtyEightToolsInProtocolOrder)
{
    const QStringList expected{"open_project",      "import_file",
                               "generate",          "save_project",
                               "check_model",       "list_lines",
                               "get_line",          "list_indices",
                               "get_index",         "get_subindex",
                               "find_indices",      "add_line",
                               "delete_line",       "add_index",
                               "delete_index",      "add_subindex",
                               "delete_subindex",   "set_subindex_value",
                               "set_index_name",    "copy_index",
                               "list_profiles",     "list_profile_indices",
                               "get_profile_index", "import_profile_indices",
                               "list_pgns",         "get_pgn",
                               "add_pgn",           "delete_pgn",
                               "list_spns",         "get_spn",
                               "add_spn",           "delete_spn",
                               "list_can_ids",      "get_can_id",
                               "add_can_id",        "delete_can_id",
                               "add_data_element",  "delete_data_element"};
    QStringList names;
    for (const QJsonValue& tool : MCPToolTable::toolList())
        names.append(tool.toObject().value(QStringLiteral("name")).toString());
    EXPECT_EQ(names, expected);
}

// Every schema is an object schema whose required keys are among its
// properties, each property has a type and a description, and "required"
// is left out rather than empty.
TEST(McpToolTable, EverySchemaIsConsistent)
{
    for (const QJsonValue& entry : MCPToolTable::toolList()) {
        const QJsonObject tool = entry.toObject();
        const QString name = tool.value(QStringLiteral("name")).toString();
        SCOPED_TRACE(name.toStdString());
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
        if (schema.contains(QStringLiteral("required"))) {
            EXPECT_FALSE(requiredOf(name).isEmpty());
        }
        for (const QString& key : requiredOf(name))
            EXPECT_TRUE(properties.contains(key)) << key.toStdString();
    }
}

// toolslist.json holds what clients have been told about every tool: names,
// descriptions and schemas, text for text. Any change to them shows here.
TEST(McpToolTable, DescriptionsAndSchemasAreThoseClientsKnow)
{
    QFile file(QStringLiteral(TRW_SOURCE_DIR "/tests/mcp/toolslist.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonArray known =
        QJsonDocument::fromJson(file.readAll()).object().value(QStringLiteral("tools")).toArray();
    const QJsonArray tools = MCPToolTable::toolList();
    ASSERT_EQ(tools.size(), known.size());
    for (qsizetype i = 0; i < tools.size(); ++i)
        EXPECT_EQ(compact(tools.at(i).toObject()), compact(known.at(i).toObject()));
}

TEST(McpToolTable, ToolsWithoutArgumentsHaveAnEmptyPropertyObject)
{
    for (const char* name : {"save_project", "check_model", "list_lines", "list_profiles"})
        EXPECT_EQ(compact(schemaOf(QString::fromLatin1(name))),
                  QByteArray(R"j({"properties":{},"type":"object"})j"))
            << name;
}

TEST(McpToolTable, TheListProfilesDescriptionKeepsItsTrailingBlank)
{
    EXPECT_TRUE(toolNamed(QStringLiteral("list_profiles"))
                    .value(QStringLiteral("description"))
                    .toString()
                    .endsWith(QStringLiteral("by their id only. ")));
}

TEST(McpToolTable, FindComparesNamesExactly)
{
    EXPECT_EQ(MCPToolTable::find(QStringLiteral("copy_index")).name, QStringLiteral("copy_index"));
    EXPECT_TRUE(MCPToolTable::find(QStringLiteral("Copy_Index")).name.isEmpty());
    EXPECT_TRUE(MCPToolTable::find(QString()).name.isEmpty());
}

} // namespace
