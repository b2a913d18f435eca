#include "testproject.h"

#include <gtest/gtest.h>

namespace {

constexpr int applicationVariable = 2;

void setGranularity(TestProject& p, const QString& value)
{
    p.db().setDescriptionLine(0);
    p.db().setDescriptionSetting("Granularity", value);
}

ProjectSetup rpdoMapping(int dataType, const QString& access, const QStringList& entries)
{
    return [=](TestProject& p) {
        p.addMappable(0x2000, dataType, access);
        p.addRpdo(1, "$NODEID+0x200", entries);
    };
}

ProjectSetup tpdoMapping(int dataType, const QString& access, const QStringList& entries)
{
    return [=](TestProject& p) {
        p.addMappable(0x2000, dataType, access);
        p.addTpdo(1, "$NODEID+0x180", entries);
    };
}

// An RPDO 1 with one UNSIGNED16 application variable mapped; it passes every rule.
const ProjectSetup rpdoOfSpeed = rpdoMapping(6, "rw", {"0x20000010"});
const ProjectSetup tpdoOfSpeed = tpdoMapping(6, "rw", {"0x20000010"});

ProjectSetup then(const ProjectSetup& first, const ProjectSetup& second)
{
    return [=](TestProject& p) {
        first(p);
        second(p);
    };
}

// The setup, then one sub-index of line 0 changed.
ProjectSetup withSub(const ProjectSetup& setup, quint16 index, quint8 subindex,
                     const std::function<void(SUBINDEX_DATA_T&)>& change)
{
    return then(setup, [=](TestProject& p) { p.changeSub(index, subindex, change); });
}

ProjectSetup withoutCorrection(const ProjectSetup& setup)
{
    return then(setup, [](TestProject& p) { p.setAutoCorrection(false); });
}

ProjectSetup timers(const char* inhibitTime, const char* eventTimer)
{
    return then(tpdoOfSpeed, [=](TestProject& p) {
        p.addSub(0x1800, 3, subRecord(6, "rw", inhibitTime));
        p.addSub(0x1800, 5, subRecord(6, "rw", eventTimer));
        p.setDefault(0x1800, 0, "5");
    });
}

ProjectSetup srdo(const QStringList& entries, const std::function<void(SUBINDEX_DATA_T&)>& mapped)
{
    return [=](TestProject& p) {
        p.addMappable(0x2000, 6, "rw");
        p.changeSub(0x2000, 0, mapped);
        p.addArray(0x1301, {"1"}, 5);
        p.addArray(0x1381, entries, 7);
    };
}

void keep(SUBINDEX_DATA_T&) {}

} // namespace

TEST(PdoRules, MappingObjects)
{
    expectRules({
        {"mapping without communication object",
         "<strong>Error: </strong>Object 0x1600: The corresponding PDO communication parameter object 0x1400 "
         "does not exist.",
         {then(rpdoOfSpeed, [](TestProject& p) { p.db().deleteIndex(0, 0x1400, false); })},
         {rpdoOfSpeed}},
        {"mapping table without entries",
         "<strong>Error: </strong>Object 0x1600 of line 0: The PDO mapping table does not contain any mapped "
         "object.",
         {[](TestProject& p) { p.addRpdo(1, "$NODEID+0x80000200", {}); }},
         {[](TestProject& p) {
             // 65 and above is a marker, not a count of entries.
             p.addRpdo(1, "$NODEID+0x80000200", {});
             p.setDefault(0x1600, 0, "254");
         }}},
        {"entries with different access",
         "<strong>Error: </strong>Object 0x1600: All subindices of a PDO mapping object must have the same "
         "access type. (const for static mapping or rw for dynamic mapping",
         {withSub(rpdoOfSpeed, 0x1600, 1, [](auto& r) { r.accesstype = "rw"; })},
         {rpdoOfSpeed,
          [](TestProject& p) {
              p.addMappable(0x2000, 6, "rw");
              p.addRpdo(1, "$NODEID+0x200", {"0x20000010"}, "rw");
          }}},
        {"active empty entry",
         "<strong>Error: </strong>Object 0x1600:1 is an active mapping entry but maps no object (empty "
         "entry).",
         {[](TestProject& p) { p.addRpdo(1, "$NODEID+0x200", {"0x00000000"}); }},
         {withoutCorrection([](TestProject& p) {
              p.addRpdo(1, "$NODEID+0x80000200", {"0x00000000"});
              p.setDefault(0x1600, 0, "0");
          }),
          // A data type index is a dummy entry that fills a gap.
          [](TestProject& p) { p.addRpdo(1, "$NODEID+0x200", {"0x00050008"}); }}},
        {"mapped object missing",
         "<strong>Error: </strong>Object 0x1a00: The mapped object 0x3000:00 does not exist.",
         {tpdoMapping(6, "rw", {"0x30000010"})},
         {tpdoMapping(6, "rw", {"0x20000010"})}},
        // The mapped sub-index has two hexadecimal digits, the entry's own sub-index is decimal.
        {"mapped sub-index beyond 9 missing",
         "<strong>Error: </strong>Object 0x1a00: The mapped object 0x3000:0c does not exist.",
         {tpdoMapping(6, "rw", {"0x30000C10"})},
         {tpdoMapping(6, "rw", {"0x20000010"})}},
        {"active empty entry beyond 9",
         "<strong>Error: </strong>Object 0x1600:10 is an active mapping entry but maps no object (empty "
         "entry).",
         {[](TestProject& p) {
             QStringList entries(9, "0x00050000");
             entries << "0x00000000";
             p.addRpdo(1, "$NODEID+0x200", entries);
         }},
         {[](TestProject& p) { p.addRpdo(1, "$NODEID+0x200", QStringList(10, "0x00050000")); }}},
        {"mapped object missing from an RPDO is read-only by default",
         "<strong>Error: </strong>Object 0x1600: The access right of the mapped object 0x3000:00 does not "
         "fit for an RPDO.",
         {rpdoMapping(6, "rw", {"0x30000010"})},
         {},
         2},
        {"object that may not be mapped",
         "<strong>Error: </strong>Object 0x1600: PDO mapping is not allowed for object 0x2000:00.",
         {withSub(rpdoOfSpeed, 0x2000, 0,
                  [](auto& r) { r.pdomapping = PDOMapping(PDOMapping::NotMappable); })},
         {withSub(rpdoOfSpeed, 0x2000, 0,
                  [](auto& r) { r.pdomapping = PDOMapping(PDOMapping::MappableRPDO); })}},
        {"entry shorter than its object",
         "Warning: Object 0x1600: The size of the mapped object 0x2000:00 is too small.",
         {rpdoMapping(6, "rw", {"0x20000008"})},
         {rpdoMapping(6, "rw", {"0x20000010"})},
         0},
        {"entry longer than its object",
         "<strong>Error: </strong>Object 0x1600: The size of the mapped object 0x2000:00 is too large.",
         {rpdoMapping(6, "rw", {"0x20000020"})},
         {rpdoMapping(7, "rw", {"0x20000020"})}},
        {"written-only object in a TPDO",
         "<strong>Error: </strong>Object 0x1a00: The access right of the mapped object 0x2000:00 does not "
         "fit for a TPDO.",
         {tpdoMapping(6, "wo", {"0x20000010"}), tpdoMapping(6, "rww", {"0x20000010"})},
         {tpdoMapping(6, "ro", {"0x20000010"}), tpdoMapping(6, "rwr", {"0x20000010"})}},
        {"read-only object in an RPDO",
         "<strong>Error: </strong>Object 0x1600: The access right of the mapped object 0x2000:00 does not "
         "fit for an RPDO.",
         {rpdoMapping(6, "ro", {"0x20000010"}), rpdoMapping(6, "const", {"0x20000010"}),
          rpdoMapping(6, "rwr", {"0x20000010"})},
         {rpdoMapping(6, "rww", {"0x20000010"}), rpdoMapping(6, "wo", {"0x20000010"})}},
        {"PDO longer than a CAN frame",
         "<strong>Error: </strong>Object 0x1600: Size of PDO exceeds the limit. ",
         {rpdoMapping(7, "rw", {"0x20000020", "0x20000020", "0x20000020"})},
         {rpdoMapping(7, "rw", {"0x20000020", "0x20000020"}),
          then(rpdoMapping(7, "rw", {"0x20000020", "0x20000020", "0x20000020"}),
               [](TestProject& p) {
                   p.setGeneral("canfd_supported", "1");
                   p.db().deleteIndex(0, 0x1000, false);
                   p.addArray(0x1000, {"0"});
               }),
          // Entries beyond the count in sub-index 0 are not sent.
          withoutCorrection(then(rpdoMapping(7, "rw", {"0x20000020", "0x20000020", "0x20000020"}),
                                 [](TestProject& p) { p.setDefault(0x1600, 0, "2"); }))}},
        {"more entries counted than present",
         "<strong>Error: </strong>Object 0x1600:  Invalid number of mapping entries.",
         {withoutCorrection(then(rpdoOfSpeed, [](TestProject& p) { p.setDefault(0x1600, 0, "2"); }))},
         {withoutCorrection(then(rpdoOfSpeed, [](TestProject& p) { p.setDefault(0x1600, 0, "65"); }))}},
    });
}

TEST(PdoRules, CommunicationObjects)
{
    const auto twoTpdos = [](const char* first, const char* second) {
        return [=](TestProject& p) {
            p.addMappable(0x2000, 6, "rw");
            p.addTpdo(1, first, {"0x20000010"});
            p.addTpdo(2, second, {"0x20000010"});
        };
    };
    expectRules({
        {"communication without mapping object",
         "<strong>Error: </strong>Object 0x1800: The corresponding PDO mapping object 0x1a00 does not exist.",
         {then(tpdoOfSpeed, [](TestProject& p) { p.db().deleteIndex(0, 0x1A00, false); })},
         {tpdoOfSpeed}},
        {"COB-ID default kept out of the EDS",
         "<strong>Hint: </strong>Subindex 1 of 0x1400 should have its default value in the EDS file.",
         {withSub(rpdoOfSpeed, 0x1400, 1, [](auto& r) { r.writedefaulttoeds = 0; }),
          withSub(rpdoOfSpeed, 0x1400, 1, [](auto& r) { r.defaultineds = false; })},
         {withSub(rpdoOfSpeed, 0x1400, 1,
                  [](auto& r) {
                      r.writedefaulttoeds = 2;
                      r.defaultineds = false;
                  })},
         0},
        {"transmission type default kept out of the EDS",
         "<strong>Hint: </strong>Subindex 2 of 0x1400 should have its default value in the EDS file.",
         {withSub(rpdoOfSpeed, 0x1400, 2, [](auto& r) { r.writedefaulttoeds = 0; })},
         {rpdoOfSpeed},
         0},
        {"enabled PDO with an empty mapping table",
         "<strong>Error: </strong>Object 0x1400: PDO is enabled but its mapping table (0x1600) is empty (sub "
         "0 = 0).",
         {[](TestProject& p) {
             p.addMappable(0x2000, 6, "rw");
             p.addRpdo(1, "$NODEID+0x200", {"0x20000010"}, "rw");
             p.setDefault(0x1600, 0, "0");
         }},
         {[](TestProject& p) {
             p.addMappable(0x2000, 6, "rw");
             p.addRpdo(1, "$NODEID+0x80000200", {"0x20000010"}, "rw");
             p.setDefault(0x1600, 0, "0");
         }}},
        {"two enabled PDOs on one COB-ID",
         "<strong>Error: </strong>Object 0x1801: COB-ID '1:0x180' is already used by PDO object 0x1800.",
         {twoTpdos("$NODEID+0x180", "0x180"), twoTpdos("$NODEID+0x180", " $NODEID+0x180 "),
          twoTpdos("0x180", "0x40000180")},
         {twoTpdos("$NODEID+0x180", "$NODEID+0x80000180"), twoTpdos("$NODEID+0x180", "$NODEID+0x280"),
          twoTpdos("$NODEID+0x180", "$NODEID+180")}},
        {"event timer within the inhibit time",
         "<strong>Warning: </strong>Subindex 3 and 5 of 0x1800: Event timer value should be greater than "
         "inhibit time value.",
         {timers("100", "10"), timers("0x69", "10")},
         {timers("100", "11"), timers("99", "10"), timers("100", "0")},
         0},
    });
}

TEST(PdoRules, Srdos)
{
    const auto variable = [](SUBINDEX_DATA_T& r) { r.implementation = applicationVariable; };
    expectRules({
        {"SRDO without mapping object",
         "<strong>Error: </strong>Object 0x1301: The corresponding SRDO mapping object 0x1381 does not "
         "exist.",
         {[](TestProject& p) { p.addArray(0x1301, {"1"}, 5); }},
         {srdo({"0x20000010"}, keep)}},
        {"SRDO maps a missing object",
         "<strong>Error: </strong>Object 0x1381: The object 0x3000:00 mapped into an SRDO does not exist.",
         {srdo({"0x30000010"}, keep)},
         {srdo({"0x20000010"}, keep)},
         3},
        {"SRDO maps a managed object",
         "<strong>Error: </strong>Object 0x1381: The object 0x2000:00 mapped into an SRDO must be an "
         "application variable.",
         {srdo({"0x20000010"}, [](auto& r) { r.implementation = 0; })},
         {srdo({"0x20000010"}, variable)}},
        {"SRDO maps an object that may not be mapped",
         "<strong>Error: </strong>Object 0x1381: The PDO mapping must be enabled for object 0x2000:00 to use "
         "it in an SRDO.",
         {srdo({"0x20000010"}, [](auto& r) { r.pdomapping = PDOMapping(); })},
         {srdo({"0x20000010"}, [](auto& r) { r.pdomapping = PDOMapping(PDOMapping::MappableTPDO); })}},
    });
}

TEST(PdoRules, MappingStyleAndLineRules)
{
    const ProjectSetup bitwise = rpdoMapping(5, "rw", {"0x20000004"});
    const auto granularity = [](const char* value) {
        return [=](TestProject& p) { setGranularity(p, value); };
    };
    const ProjectSetup dynamicTpdo5 = [](TestProject& p) {
        p.addMappable(0x2000, 6, "rw");
        p.addTpdo(5, "$NODEID+0x80000680", {"0x20000010"}, "rw");
    };
    const auto tpdoWithCobId = [](const char* cobId) {
        return [=](TestProject& p) {
            p.addMappable(0x2000, 6, "rw");
            p.addTpdo(1, cobId, {"0x20000010"});
        };
    };
    const ProjectSetup emcyProducerOnLine0AndConsumerOnLine1 = [](TestProject& p) {
        p.addLine(1, Line::CANopen);
        p.addVariable(0x1014, 7, "rw", "$NODEID+0x80");
        p.addArray(0x1028, {"0x81"}, 7, 1);
    };
    expectRules({
        {"bitwise mapping not enabled",
         "<strong>Error: </strong>Bitwise mapping not enabled in general settings. Correct general settings "
         "or PDO mapping.",
         {bitwise,
          // An entry beyond the count marks the style as well.
          withoutCorrection(then(rpdoMapping(5, "rw", {"0x20000008", "0x20000004"}),
                                 [](TestProject& p) { p.setDefault(0x1600, 0, "1"); }))},
         {then(bitwise, settings({{"bitwise_mapping", "1"}}))}},
        {"bitwise mapping with byte granularity",
         "<strong>Warning: </strong>Bitwise mapping cannot be used with a granularity of 8. Correct device "
         "description settings or PDO mapping.",
         {then(then(bitwise, settings({{"bitwise_mapping", "1"}})), granularity("8"))},
         {then(then(bitwise, settings({{"bitwise_mapping", "1"}})), granularity("1"))},
         0},
        {"dynamic mapping with granularity 0 is shown but not counted",
         "<strong>Error: </strong>Dynamic mapping cannot be used with a granularity of 0. Correct device "
         "description settings or PDO mapping.",
         {then(dynamicTpdo5, granularity("0"))},
         {then(dynamicTpdo5, granularity("8")), then(rpdoOfSpeed, granularity("0"))},
         0},
        {"one static PDO indication function only",
         "<strong>Error: </strong>Both static RPDO and TPDO event indication functions have to be defined.",
         {settings({{"use_core_headers", "V3"}, {"fct_pdo", "onTpdo"}}),
          settings({{"use_core_headers", ""}, {"fct_pdo_receive", "onRpdo"}})},
         {settings({{"use_core_headers", "V3"}, {"fct_pdo", "onTpdo"}, {"fct_pdo_receive", "onRpdo"}}),
          settings({{"use_core_headers", "V4"}, {"fct_pdo", "onTpdo"}})}},
        {"EMCY routing without producer or consumer, once per project",
         "<strong>Error: </strong>Both EMCY producer objects and EMCY consumer objects must be present to "
         "use EMCY routing.",
         {settings({{"emcy_routing", "1"}}),
          then(settings({{"emcy_routing", "1"}}), [](TestProject& p) { p.addLine(1, Line::CANopen); }),
          then(settings({{"emcy_routing", "1"}}),
               [](TestProject& p) { p.addVariable(0x1014, 7, "rw", "$NODEID+0x80"); })},
         {then(settings({{"emcy_routing", "1"}}), emcyProducerOnLine0AndConsumerOnLine1),
          then(settings({{"emcy_routing", "0"}}), [](TestProject& p) { p.addLine(1, Line::CANopen); })}},
        {"COB-ID outside the pre-defined connection set",
         "Warning: Object 0x1800-0x01: The COB-ID for this PDO does not follow the pre-defined connection "
         "set.",
         {tpdoWithCobId("0x181"), tpdoWithCobId("$NODEID+0x181")},
         {tpdoWithCobId("$NODEID+0x180"), tpdoWithCobId("$NODEID+0xC0000180"),
          tpdoWithCobId("$NODEID+0x00000180"),
          then(tpdoWithCobId("0x181"), settings({{"overwrite_predef", "1"}}))},
         0},
        {"advice behind the deviating COB-IDs",
         "Enable CANopen Stack Settings -> Overwrite pre-defined connection set and call "
         "userOverwriteCobIdSettings() to use these COB-ID settings.\n\n",
         {tpdoWithCobId("0x181")},
         {tpdoWithCobId("$NODEID+0x80000180")},
         0},
    });
}

// The value test knows only the upper-case "$NODEID", while the PDO rules read
// the COB-ID in any case: a lower-case TPDO 1 fails the one and passes the others.
TEST(PdoRules, LowerCaseNodeIdFailsTheValueTestOnlyAndStillCollides)
{
    TestProject project;
    project.addMappable(0x2000, 6, "rw");
    project.addTpdo(1, "$nodeid+0x180", {"0x20000010"});
    project.addTpdo(2, "0x180", {"0x20000010"});
    const CheckOutcome outcome = project.run();

    const QStringList expected = {
        "<strong>Error: </strong>Value conversion failed with Object 0x1800-0x1.",
        "<strong>Error: </strong>Object 0x1801: COB-ID '1:0x180' is already used by PDO object 0x1800.",
        "Warning: Object 0x1801-0x01: The COB-ID for this PDO does not follow the pre-defined connection "
        "set.",
    };
    for (const QString& message : expected)
        EXPECT_EQ(outcome.count(message), 1) << message.toStdString() << "\n"
                                             << outcome.listing().toStdString();
    EXPECT_EQ(outcome.count("Warning: Object 0x1800-0x01: The COB-ID for this PDO does not follow the "
                            "pre-defined connection set."),
              0);
    EXPECT_EQ(outcome.errors, 2) << outcome.listing().toStdString();
}
