#include "trw_cli/sarifreport.h"

#include <QJsonArray>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

// Each message's class, text and location, as the check's sources write them.
TEST(SarifReport, MessagesBecomeResultsWithLevelTextAndLocation)
{
    const struct
    {
        const char* message;
        int line;
        const char* rule;
        const char* level;
        const char* text;
        const char* location;
    } rows[] = {
        {"<strong><font color='red'>Error: </font></strong>CANopen SDO block size may not exceed 127.", -1,
         "error", "error", "Error: CANopen SDO block size may not exceed 127.", ""},
        {"<i>Corrected: Object 0x2000-0</i>:'Managed Const' is used.", 0, "corrected", "note",
         "Corrected: Object 0x2000-0:'Managed Const' is used.", "line0/0x2000/0"},
        {"<strong>Warning: </strong>Object 0x1a00-0x0a: Variable name 'x' is already used.", 1, "warning",
         "warning", "Warning: Object 0x1a00-0x0a: Variable name 'x' is already used.", "line1/0x1a00/10"},
        // The conversion message writes a decimal subindex behind "0x".
        {"<strong>Error: </strong>Value conversion failed with Object 0x2000-0x10.", 0, "error", "error",
         "Error: Value conversion failed with Object 0x2000-0x10.", "line0/0x2000/10"},
        {"<strong>Error: </strong>Object 0x1010:2 only default values between 0 and 1 are supported.", 2,
         "error", "error", "Error: Object 0x1010:2 only default values between 0 and 1 are supported.",
         "line2/0x1010/2"},
        {"<strong>Hint: </strong>Subindex 2 of 0x1800 should have its default value in the EDS file.", 0,
         "hint", "note", "Hint: Subindex 2 of 0x1800 should have its default value in the EDS file.",
         "line0/0x1800/2"},
        {"<strong>Warning: </strong>Subindex 3 and 5 of 0x1801: Event timer value should be set.", 0,
         "warning", "warning", "Warning: Subindex 3 and 5 of 0x1801: Event timer value should be set.",
         "line0/0x1801"},
        {"Info: Path to protocol stack not specified.", 0, "info", "none",
         "Info: Path to protocol stack not specified.", "line0"},
        // Advice without a class word goes on with the message before it.
        {"Specify path to protocol stack at Options -> Settings.", 0, "info", "none",
         "Specify path to protocol stack at Options -> Settings.", "line0"},
        {"Warning line type not set for line 3.", 3, "warning", "warning",
         "Warning line type not set for line 3.", "line3"},
        {"Enable CANopen Stack Settings -> Overwrite pre-defined connection set.\n\n", 0, "warning",
         "warning", "Enable CANopen Stack Settings -> Overwrite pre-defined connection set.", "line0"},
    };
    SarifReport report;
    for (const auto& row : rows)
        report.addMessage(QString::fromUtf8(row.message), row.line);
    const QJsonArray results = report.log({})[QStringLiteral("runs")][0][QStringLiteral("results")].toArray();
    ASSERT_EQ(results.size(), int(std::size(rows)));
    for (int i = 0; i < results.size(); ++i) {
        const auto& row = rows[i];
        const QJsonObject result = results.at(i).toObject();
        SCOPED_TRACE(row.message);
        EXPECT_EQ(result[QStringLiteral("ruleId")].toString(), QLatin1String(row.rule));
        EXPECT_EQ(result[QStringLiteral("level")].toString(), QLatin1String(row.level));
        EXPECT_EQ(result[QStringLiteral("message")][QStringLiteral("text")].toString(),
                  QString::fromUtf8(row.text));
        const QJsonValue logical =
            result[QStringLiteral("locations")][0][QStringLiteral("logicalLocations")][0];
        EXPECT_EQ(logical[QStringLiteral("fullyQualifiedName")].toString(), QLatin1String(row.location));
    }
}

} // namespace
