#include "testproject.h"

#include "check/modelchecker.h"

#include <gtest/gtest.h>

namespace {

constexpr int managedVariable = 0;
constexpr int managedConst = 1;

const QString subIndexZeroCorrected = QStringLiteral(
    "<i>Corrected: Object 0x%1</i>: The value of subindex 0 does not fit to the highest subindex.");

// Findings beyond the two notes about the missing stack path.
QStringList findings(const CheckOutcome& outcome)
{
    QStringList result = outcome.messages;
    result.removeAll(
        QStringLiteral("Info: Path to protocol stack not specified. Cannot check if generated code fits "
                       "to installed stack/framework."));
    result.removeAll(QStringLiteral("Specify path to protocol stack at Options -> Settings."));
    return result;
}

// ARRAY 0x2000 with sub-indices 0, 1, 2, 5 and sub-index 0 at 3.
void arrayWithGap(TestProject& p)
{
    p.addArray(0x2000, {"0", "0"});
    p.addSub(0x2000, 5, subRecord(7, "rw", "0"));
    p.setDefault(0x2000, 0, "3");
}

void dynamicTpdo(TestProject& p, int number, const QString& cobId)
{
    p.addMappable(0x2000, 6, "rw");
    p.addTpdo(number, cobId, {"0x20000010"}, "rw");
    p.setDefault(quint16(0x1A00 + number - 1), 0, "0");
}

} // namespace

TEST(Corrections, SubIndexZeroOfAnArrayWithGapsBecomesTheHighestSubIndex)
{
    TestProject project;
    arrayWithGap(project);
    const CheckOutcome first = project.run();
    EXPECT_EQ(findings(first), QStringList{subIndexZeroCorrected.arg("2000")});
    EXPECT_EQ(first.errors, 0);
    EXPECT_TRUE(first.corrected);
    EXPECT_EQ(project.readSub(0x2000, 0).defaultvalue, QString("5"));

    const CheckOutcome second = project.run();
    EXPECT_EQ(findings(second), QStringList());
    EXPECT_FALSE(second.corrected);
}

TEST(Corrections, NothingIsReportedOrChangedWhenSwitchedOff)
{
    TestProject project;
    arrayWithGap(project);
    project.changeSub(0x2000, 0, [](auto& r) { r.implementation = managedVariable; });
    project.setAutoCorrection(false);

    const CheckOutcome outcome = project.run();
    EXPECT_EQ(findings(outcome), QStringList());
    EXPECT_FALSE(outcome.corrected);
    EXPECT_EQ(project.readSub(0x2000, 0).defaultvalue, QString("3"));
    EXPECT_EQ(project.readSub(0x2000, 0).implementation, managedVariable);
}

TEST(Corrections, ObjectsWhoseSubIndexZeroIsNeverAdjusted)
{
    struct Row
    {
        const char* name;
        ProjectSetup setup;
        quint16 index;
        const char* sub0;
    };
    const Row rows[] = {
        {"0x1003 counts the stored errors",
         [](TestProject& p) {
             p.addArray(0x1003, {"0", "0"});
             p.addVariable(0x1014, 7, "rw", "$NODEID+0x80");
             p.setDefault(0x1003, 0, "0");
         },
         0x1003, "0"},
        {"static mapping table with a special value",
         [](TestProject& p) {
             p.addRpdo(1, "$NODEID+0x200", {"0x00050008"});
             p.setDefault(0x1600, 0, "254");
         },
         0x1600, "254"},
        {"dynamic mapping table",
         [](TestProject& p) {
             p.addMappable(0x2000, 6, "rw");
             p.addTpdo(5, "$NODEID+0x80000680", {"0x20000010", "0x20000010"}, "rw");
             p.setDefault(0x1A04, 0, "1");
         },
         0x1A04, "1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestProject project;
        row.setup(project);
        const CheckOutcome outcome = project.run();
        EXPECT_EQ(outcome.count(subIndexZeroCorrected.arg(row.index, 4, 16, QLatin1Char('0'))), 0);
        EXPECT_EQ(project.readSub(row.index, 0).defaultvalue, QString(row.sub0));
        EXPECT_FALSE(outcome.corrected);
    }
}

TEST(Corrections, CorrectedStaticMappingCountMakesAnEmptyEntryActive)
{
    // The count is adjusted before the mapping rules run, so they see the corrected table.
    TestProject project;
    project.addRpdo(1, "$NODEID+0x80000200", {"0x00000000"});
    project.setDefault(0x1600, 0, "0");
    const CheckOutcome outcome = project.run();
    EXPECT_EQ(outcome.count(subIndexZeroCorrected.arg("1600")), 1);
    EXPECT_EQ(
        outcome.count("<strong>Error: </strong>Object 0x1600:1 is an active mapping entry but maps no object "
                      "(empty entry)."),
        1);
    EXPECT_EQ(outcome.errors, 1);
}

TEST(Corrections, ConstantSubIndexZeroBecomesManagedConst)
{
    TestProject project;
    project.addArray(0x2000, {"0"});
    project.changeSub(0x2000, 0, [](auto& r) { r.implementation = managedVariable; });

    const CheckOutcome outcome = project.run();
    EXPECT_EQ(findings(outcome),
              QStringList{
                  "<i>Corrected: Object 0x2000-0</i>:'Managed Const' is used as implementation type for this "
                  "subindex."});
    EXPECT_TRUE(outcome.corrected);
    EXPECT_EQ(project.readSub(0x2000, 0).implementation, managedConst);
}

TEST(Corrections, EmptyDynamicTpdosOneToFourAreDisabled)
{
    struct Row
    {
        int tpdo;
        const char* cobId;
        const char* after;
        int errors;
    };
    const Row rows[] = {
        {1, "$NODEID+0x180", "$NODEID+0x80000180", 0},
        {2, "0x280", "0x80000280", 0},
        // The lower-case form fails the value test of UNSIGNED32, and is corrected all the same.
        {4, "$nodeid+0x480", "$nodeid+0x80000480", 1},
        {3, "$NODEID+0x80000380", "$NODEID+0x80000380", 0},
        // Without a hexadecimal number there is nothing to mark; the PDO stays enabled.
        {1, "384", "384", 1},
        // From the fifth TPDO on nothing is corrected.
        {5, "$NODEID+0x680", "$NODEID+0x680", 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.cobId);
        TestProject project;
        dynamicTpdo(project, row.tpdo, row.cobId);
        const quint16 communication = quint16(0x1800 + row.tpdo - 1);
        const CheckOutcome outcome = project.run();
        const QString corrected =
            QStringLiteral("<i>Corrected: Object 0x%1</i>: The COB-ID of this PDO has been "
                           "disabled (%2), because it does not contain active mapping entries.")
                .arg(communication, 4, 16, QLatin1Char('0'))
                .arg(row.after);
        const bool changed = QString(row.cobId) != row.after;
        EXPECT_EQ(outcome.count(corrected), changed ? 1 : 0) << outcome.listing().toStdString();
        EXPECT_EQ(outcome.corrected, changed);
        EXPECT_EQ(project.readSub(communication, 1).defaultvalue, QString(row.after));
        EXPECT_EQ(outcome.errors, row.errors) << outcome.listing().toStdString();
    }
}

TEST(Corrections, EmptyDynamicTpdoStaysEnabledWhenSwitchedOff)
{
    TestProject project;
    dynamicTpdo(project, 1, "$NODEID+0x180");
    project.setAutoCorrection(false);
    const CheckOutcome outcome = project.run();
    EXPECT_EQ(project.readSub(0x1800, 1).defaultvalue, QString("$NODEID+0x180"));
    EXPECT_EQ(outcome.count(
                  "<strong>Error: </strong>Object 0x1800: PDO is enabled but its mapping table (0x1a00) is "
                  "empty (sub 0 = 0)."),
              1);
    EXPECT_FALSE(outcome.corrected);
}

TEST(Corrections, InvalidMarkingOfCobIdTexts)
{
    const std::pair<const char*, const char*> rows[] = {
        {"$nodeid+0x480", "$nodeid+0x80000480"},
        {"$NODEID+0x180", "$NODEID+0x80000180"},
        {"0x180", "0x80000180"},
        {"0X1A0", "0x800001a0"},
        {"0x80000180", "0x80000180"},
        {"$NODEID+0xC0000180", "$NODEID+0xC0000180"},
        {"384", "384"},
        {"", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ModelChecker::markCobIdInvalid(row.first), QString(row.second)) << row.first;
}
