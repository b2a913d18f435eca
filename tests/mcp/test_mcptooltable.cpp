#include "mcp/mcptooltable.h"

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

struct RequiredCase
{
    const char* tool;
    QStringList required;
};

class McpRequiredArguments : public ::testing::TestWithParam<RequiredCase>
{
};

TEST_P(McpRequiredArguments, AreListedInTheirOrder)
{
    EXPECT_EQ(requiredOf(QString::fromLatin1(GetParam().tool)), GetParam().required);
}

INSTANTIATE_TEST_SUITE_P(
    Schemas, McpRequiredArguments,
    ::testing::Values(
        RequiredCase{"open_project", {"path"}}, RequiredCase{"import_file", {"path"}},
        RequiredCase{"generate", {}}, RequiredCase{"save_project", {}}, RequiredCase{"get_line", {"line"}},
        RequiredCase{"delete_line", {"line"}}, RequiredCase{"list_indices", {"line"}},
        RequiredCase{"get_index", {"line", "index"}}, RequiredCase{"get_subindex", {"line", "index", "sub"}},
        RequiredCase{"find_indices", {"line", "globPattern"}},
        RequiredCase{"delete_index", {"line", "index"}},
        RequiredCase{"delete_subindex", {"line", "index", "sub"}},
        RequiredCase{"set_index_name", {"line", "index", "name"}},
        RequiredCase{"list_profile_indices", {"profile"}},
        RequiredCase{"get_profile_index", {"profile", "index"}},
        RequiredCase{"get_pgn", {"line", "pgn", "direction"}},
        RequiredCase{"add_pgn", {"line", "pgn", "direction", "name"}},
        RequiredCase{"delete_pgn", {"line", "pgn", "direction"}},
        RequiredCase{"list_spns", {"line", "pgn", "direction"}},
        RequiredCase{"get_spn", {"line", "pgn", "direction", "spn"}},
        RequiredCase{"delete_spn", {"line", "pgn", "direction", "spn"}},
        RequiredCase{"get_can_id", {"line", "canId", "direction"}},
        RequiredCase{"add_can_id", {"line", "canId", "direction", "name"}},
        RequiredCase{"delete_can_id", {"line", "canId", "direction"}}, RequiredCase{"check_model", {}},
        RequiredCase{"list_lines", {}}, RequiredCase{"list_profiles", {}}, RequiredCase{"add_line", {"line"}},
        RequiredCase{"add_index", {"line", "index", "name", "objectType", "dataType"}},
        RequiredCase{"add_subindex", {"line", "index", "sub", "name", "dataType"}},
        RequiredCase{"set_subindex_value", {"line", "index", "sub", "defaultValue"}},
        RequiredCase{"copy_index", {"srcLine", "srcIndex", "destLine", "destIndex"}},
        RequiredCase{"import_profile_indices", {"profile", "line", "indices"}},
        RequiredCase{"list_pgns", {"line"}},
        RequiredCase{"add_spn", {"line", "pgn", "direction", "spn", "name", "dataType"}},
        RequiredCase{"list_can_ids", {"line"}},
        RequiredCase{"add_data_element", {"line", "canId", "direction", "number", "name", "dataType"}},
        RequiredCase{"delete_data_element", {"line", "canId", "direction", "number"}}),
    [](const ::testing::TestParamInfo<RequiredCase>& info) { return std::string(info.param.tool); });

struct PropertyCase
{
    const char* tool;
    const char* property;
    QByteArray json;
};

class McpToolProperty : public ::testing::TestWithParam<PropertyCase>
{
};

TEST_P(McpToolProperty, IsWrittenExactly)
{
    const QJsonObject properties =
        schemaOf(QString::fromLatin1(GetParam().tool)).value(QStringLiteral("properties")).toObject();
    EXPECT_EQ(compact(properties.value(QString::fromLatin1(GetParam().property)).toObject()),
              GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(
    Schemas, McpToolProperty,
    ::testing::Values(
        PropertyCase{"get_line", "line", R"j({"description":"Line id (0-255)","type":"integer"})j"},
        PropertyCase{
            "add_line", "lineType",
            R"j({"description":"Protocol(s) for this line's line. Required when running as CAN Tarnwick )j"
            R"j((supports multiple protocols); defaults to the build's single supported protocol )j"
            R"j(otherwise (CANopen for TRW, J1939 for NLW).","enum":["CANopen","J1939","RawCAN",)j"
            R"j("CANopen+J1939","CANopen+RawCAN","J1939+RawCAN"],"type":"string"})j"},
        PropertyCase{"add_index", "category",
                     R"j({"description":"Default: Optional","enum":["Mandatory","Optional","Conditional"],)j"
                     R"j("type":"string"})j"},
        PropertyCase{
            "import_profile_indices", "indices",
            R"j({"description":"Indices to copy from the profile, decimal. Indices that already exist )j"
            R"j(on the line are skipped.","items":{"type":"integer"},"type":"array"})j"},
        PropertyCase{
            "get_pgn", "direction",
            R"j({"description":"Part of the identity key - the same number can exist as both Transmit )j"
            R"j(and Receive","enum":["Transmit","Receive","Invalid"],"type":"string"})j"},
        PropertyCase{"list_can_ids", "direction",
                     R"j({"description":"Filter by direction (omit for both)","enum":["Transmit","Receive",)j"
                     R"j("Invalid"],"type":"string"})j"},
        PropertyCase{"add_spn", "pos",
                     R"j({"description":"Display order within the PGN (optional)","type":"integer"})j"},
        PropertyCase{"add_data_element", "pos",
                     R"j({"description":"Display order within the CAN-ID (optional)","type":"integer"})j"},
        PropertyCase{"add_subindex", "defaultValue",
                     R"j({"description":"Default value, e.g. \"0x0\" (optional)","type":"string"})j"},
        PropertyCase{"set_subindex_value", "defaultValue",
                     R"j({"description":"New default value, e.g. \"0x0\"","type":"string"})j"}),
    [](const ::testing::TestParamInfo<PropertyCase>& info) {
        return std::string(info.param.tool) + "_" + info.param.property;
    });

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
