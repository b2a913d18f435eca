#include "testproject.h"

#include "canopenlib/canopentypes.h"

#include <gtest/gtest.h>

namespace {

constexpr quint8 tx = ObjectDataBase::Transmit;
constexpr quint8 rx = ObjectDataBase::Receive;
constexpr int managedVariable = 0;

using Content = std::function<void(TestProject&, quint8 line)>;
using PgnChange = std::function<void(ObjectDataBase::PGN&)>;
using SpnChange = std::function<void(ObjectDataBase::SPN&)>;
using ElementChange = std::function<void(ObjectDataBase::DataElement&)>;

// Line 0 turned into the given type, or a second line of that type beside the CANopen line 0, with content.
ProjectSetup device(int type, const Content& content = {}, quint8 line = 0)
{
    return [=](TestProject& p) {
        if (line == 0)
            p.setGeneral("line0type", QString::number(type));
        else
            p.addLine(line, type);
        if (content)
            content(p, line);
    };
}

Content both(const Content& first, const Content& second)
{
    return [=](TestProject& p, quint8 line) {
        first(p, line);
        second(p, line);
    };
}

Content general(const QString& key, const QString& value)
{
    return [=](TestProject& p, quint8) { p.setGeneral(key, value); };
}

Content j1939Setting(const QString& key, const QString& value)
{
    return [=](TestProject& p, quint8) { p.db().setJ1939Setting(key, value); };
}

// SPNs numbered from 1 take the given bits one after the other, each an
// application variable of its own.
Content pgn(quint32 number, quint8 direction, const QList<int>& bits, const SpnChange& spnChange = {},
            const PgnChange& pgnChange = {})
{
    return [=](TestProject& p, quint8 line) {
        ObjectDataBase::PGN record;
        record.name = QStringLiteral("PG %1").arg(number);
        record.direction = direction;
        if (pgnChange)
            pgnChange(record);
        EXPECT_TRUE(p.db().addPGN(line, number, record));
        quint16 position = 0;
        for (int i = 0; i < bits.size(); ++i) {
            ObjectDataBase::SPN spn;
            spn.pos = i;
            spn.name = QStringLiteral("Signal %1").arg(i + 1);
            spn.spnnumber = i + 1;
            spn.datatype = CAN::Unsigned8;
            spn.bitsize = bits.at(i);
            spn.bitposition = position;
            spn.varname = QStringLiteral("pgn%1_%2_%3").arg(number).arg(direction).arg(i + 1);
            if (spnChange)
                spnChange(spn);
            EXPECT_TRUE(p.db().addSPN(line, number, direction, i + 1, spn));
            position += bits.at(i);
        }
    };
}

// A safety PGN of the given safety type with one 8-bit SPN.
Content safetyPgn(int safetyType, const SpnChange& spnChange = {}, const QList<int>& bits = {8})
{
    return pgn(61444, tx, bits, spnChange, [safetyType](ObjectDataBase::PGN& record) {
        record.issafe = true;
        record.safetytype = quint8(safetyType);
    });
}

// Data elements numbered from 0 take the given bits one after the other.
Content canId(quint32 id, quint8 direction, const QList<int>& bits, const ElementChange& change = {})
{
    return [=](TestProject& p, quint8 line) {
        ObjectDataBase::CANID record;
        record.name = QStringLiteral("Message");
        record.direction = direction;
        EXPECT_TRUE(p.db().addCANID(line, id, record));
        quint16 position = 0;
        for (int i = 0; i < bits.size(); ++i) {
            ObjectDataBase::DataElement element;
            element.pos = i;
            element.name = QStringLiteral("Signal %1").arg(i + 1);
            element.number = i;
            element.datatype = CAN::Unsigned8;
            element.bitsize = bits.at(i);
            element.bitpos = position;
            element.varname = QStringLiteral("id%1_%2_%3").arg(id).arg(direction).arg(i);
            if (change)
                change(element);
            EXPECT_TRUE(p.db().addDataElement(line, id, direction, i, element));
            position += bits.at(i);
        }
    };
}

const Content speedOnTx = pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.varname = "speed"; });

} // namespace

TEST(J1939Rules, SettingsAndName)
{
    expectRules({
        {"sorted COB list",
         "<strong>Error: </strong>Sorted COB list may not used with J1939 projects.",
         {device(2, general("sorted_coblist", "1")), device(5, general("sorted_coblist", "2"), 1)},
         {device(2, general("sorted_coblist", "0")), settings({{"sorted_coblist", "1"}})}},
        {"group filter",
         "<strong>Warning: </strong>Group filter is only useful for CANopen or mixed projects.",
         {device(7, general("drv_group_filter", "1"))},
         {device(7, general("drv_group_filter", "2"))},
         0},
        {"dynamic PGNs without additional COBs",
         "<strong>Error: </strong>Additional COBs need to be specific with dynamic PGN support.",
         {device(2, both(j1939Setting("dynsupport", "1"), general("additional_cob_count", " ")))},
         {device(2, both(j1939Setting("dynsupport", "1"), general("additional_cob_count", "4")))}},
        {"manufacturer code of the tool maker",
         "<strong>Warning: The manufacturer code 1871 (halvex) may not be used for production. </strong>",
         {device(2, j1939Setting("manufacturercode", "1871")),
          device(7, j1939Setting("manufacturercode", "291,1871"), 1)},
         {device(2, j1939Setting("manufacturercode", "1870")),
          device(7, j1939Setting("manufacturercode", "1871,291"), 1)},
         0},
    });

    // Each value of the NAME is read for its line: the entry of line 1, or the last one when the list is
    // shorter.
    const std::pair<const char*, const char*> name[] = {
        {"identitynumber", "Identity number not defined in J1939 configuration tab for line 1."},
        {"manufacturercode", "Manufacturer code not defined in J1939 configuration tab for line 1."},
        {"ecuinstance", "ECU instance not defined in J1939 configuration tab for line 1."},
        {"functioninstance", "Function instance not defined in J1939 configuration tab for line 1"},
        {"function", "Function not defined in J1939 configuration tab for line 1."},
        {"vehiclesystem", "Vehicle system not defined in J1939 configuration tab for line 1."},
        {"vehicleinstance", "Vehicle instance not defined in J1939 configuration tab for line 1."},
        {"industrygroup", "Industry Group not defined in J1939 configuration tab for line 1."},
        {"startaddress", "An address needs to defined in the J1939 configuration for line 1."},
    };
    std::vector<RuleRow> rows;
    for (const auto& [key, text] : name) {
        rows.push_back({key,
                        QStringLiteral("<strong>Error: </strong>") + text,
                        {device(2, j1939Setting(key, "1, "), 1), device(5, j1939Setting(key, ""), 1)},
                        {device(2, j1939Setting(key, "1"), 1), device(5, j1939Setting(key, " ,2"), 1)}});
    }
    expectRules(rows);
}

TEST(J1939Rules, PgnContents)
{
    expectRules({
        // A reserved PGN needs no SPNs: its presence alone is the fault.
        {"reserved PGN",
         "<strong>Error: </strong>Special PGN 59904/0xea00 is handled by the J1939 stack directly and may "
         "not be "
         "included in the signal definitions.\n",
         {device(2, pgn(59904, rx, {})), device(7, pgn(59904, tx, {8}), 1)},
         {device(2, pgn(59905, rx, {8}))}},
        {"PGN without name",
         "<strong>Warning: </strong>The PGN 61444 des not have a name.",
         {device(2, pgn(61444, rx, {8}, {}, [](ObjectDataBase::PGN& r) { r.name.clear(); }))},
         {device(2, pgn(61444, rx, {8}))},
         0},
        {"PGN without SPNs",
         "<strong>Error: </strong>PG (61444/0xf004) does not contain any SPNs.",
         {device(5, pgn(61444, tx, {}))},
         {device(5, both(pgn(61444, tx, {8}), pgn(61444, rx, {8})))}},
        {"safety PGN without safety type",
         "<strong>Error: </strong>PG (61444/0xf004) A safety type needs to be assigned to this PGN.",
         {device(2, both(j1939Setting("safetysupport", "1"), safetyPgn(0)))},
         {device(2, both(j1939Setting("safetysupport", "1"), safetyPgn(1)))}},
        {"safety type of CAN FD on classical CAN",
         "<strong>Error: </strong>PG (61444/0xf004) This safety type is not supported with classical CAN.",
         {device(2, both(j1939Setting("safetysupport", "1"), safetyPgn(3)))},
         {device(2, both(j1939Setting("safetysupport", "1"), safetyPgn(2))),
          device(2, both(both(j1939Setting("safetysupport", "1"), general("canfd_supported", "1")),
                         safetyPgn(3)))}},
        {"safety PGN without safety support",
         "<strong>Warning: </strong>PG (61444/0xf004) shall be transmitted as SDM but SHM support is not "
         "activated.",
         {device(2, safetyPgn(1)), device(2, safetyPgn(1, [](ObjectDataBase::SPN& s) { s.datatype = 9; }))},
         {device(2, both(j1939Setting("safetysupport", "1"), safetyPgn(1)))},
         0},
        {"managed variable in a safety PGN",
         "<strong>Error: </strong>PG (61444/0xf004) transmitted as SDM may not contain managed variables.",
         {device(2, both(j1939Setting("safetysupport", "1"),
                         safetyPgn(1, [](ObjectDataBase::SPN& s) { s.implementation = managedVariable; })))},
         {device(2,
                 pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.implementation = managedVariable; }))}},
        {"string in a safety PGN",
         "<strong>Error: </strong>PG (61444/0xf004) contains unsuppported data types.",
         {device(2, both(j1939Setting("safetysupport", "1"),
                         safetyPgn(1, [](ObjectDataBase::SPN& s) { s.datatype = 120; })))},
         {device(2, both(j1939Setting("safetysupport", "1"),
                         safetyPgn(1, [](ObjectDataBase::SPN& s) { s.datatype = 10; })))}},
        {"long safety PGN",
         "<strong>Error: </strong>PG (61444/0xf004) transmitted as SDM may not exceed 64 bit.",
         {device(2, both(both(j1939Setting("safetysupport", "1"), j1939Setting("bamsupport", "1")),
                         safetyPgn(1, {}, {64, 8})))},
         {device(2, both(j1939Setting("safetysupport", "1"), safetyPgn(1, {}, {64})))}},
        {"long PGN without transport protocol",
         "<strong>Error: </strong>Neither BAM nor TP.CMDT supported but PGNs with length > 64 bit defined.",
         {device(2, pgn(65265, rx, {64, 8})), device(7, pgn(65265, tx, {72}), 1)},
         {device(2, both(pgn(65265, rx, {64, 8}), j1939Setting("bamsupport", "1"))),
          device(2, both(pgn(65265, rx, {64, 8}), general("canfd_supported", "1"))),
          device(2, pgn(65265, rx, {64}))}},
        {"CMDT without packet count",
         "<strong>Error: </strong>CMDT packet count should not be 0 in J1939 configuration.",
         {device(2, j1939Setting("cmdtsupport", "1"))},
         {device(2, both(j1939Setting("cmdtsupport", "1"), j1939Setting("cmdtpackets", "16")))}},
    });
}

TEST(J1939Rules, SpnLayoutAndNames)
{
    expectRules({
        {"SPN without variable name",
         "<strong>Error: </strong>The SPN 2 in PGN 61444 needs a variable name.",
         {device(2, pgn(61444, tx, {8, 8},
                        [](ObjectDataBase::SPN& s) { s.varname = s.spnnumber == 2 ? " " : s.varname; }))},
         {device(2, pgn(61444, tx, {8, 8},
                        [](ObjectDataBase::SPN& s) {
                            s.implementation = managedVariable;
                            s.varname.clear();
                        }))}},
        {"SPN without name",
         "<strong>Warning: </strong>The SPN 1 in PGN 61444 needs a name.",
         {device(2, pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.name = " "; }))},
         {device(2, pgn(61444, tx, {8}))},
         0},
        {"SPN name starting with a digit",
         "<strong>Warning: </strong>The name of SPN 1 in PGN 61444 should not start with a number.",
         {device(2, pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.name = " 2nd gear"; }))},
         {device(2, pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.name = "Gear 2"; }))},
         0},
        {"overlapping SPNs",
         "<strong>Warning: </strong>SPN 2 in PGN 61444 overlaps in bit position with another SPN in the same "
         "PGN.",
         {device(2, pgn(61444, tx, {8, 8},
                        [](ObjectDataBase::SPN& s) { s.bitposition = s.spnnumber == 2 ? 4 : 0; }))},
         {device(2, pgn(61444, tx, {4, 4})), device(2, both(pgn(61444, tx, {8}), pgn(61444, rx, {8})))},
         0},
        {"variable name used twice",
         "<strong>Warning: </strong>SPN 1 in PGN 65265: variable name 'speed' is already used by SPN 1 in "
         "PGN "
         "61444.",
         {device(2,
                 both(pgn(65265, rx, {8}, [](ObjectDataBase::SPN& s) { s.varname = " speed"; }), speedOnTx))},
         {device(2, both(pgn(65265, rx, {8},
                             [](ObjectDataBase::SPN& s) {
                                 s.varname = "speed";
                                 s.implementation = managedVariable;
                             }),
                         speedOnTx))},
         0},
    });
}

TEST(RawCanRules, All)
{
    const ElementChange speed = [](ObjectDataBase::DataElement& e) { e.varname = "speed"; };
    expectRules({
        // The extended flag is no part of the identifier.
        {"identifier in both directions",
         QString::fromUtf8("<strong>Warning: </strong>CAN-ID 0x800 appears in both TX and RX \u2014 this is "
                           "unusual and may be a configuration error."),
         {device(4, both(canId(0x20000800, tx, {8}), canId(0x20000800, rx, {8}))),
          device(6, both(canId(0x20000800, rx, {8}), canId(0x20000800, tx, {8})), 1)},
         {device(4, both(canId(0x20000800, tx, {8}), canId(0x20000801, rx, {8})))},
         0},
        {"identifier above 0x7ff without the extended flag",
         "<strong><font color='red'>Error: </font></strong> CAN-ID 0x800 is higher then 0x7ff, but extended "
         "flag "
         "is not set.",
         {device(4, canId(0x800, tx, {8})), device(7, canId(0x800, rx, {8}), 1)},
         {device(4, canId(0x20000800, tx, {8})), device(4, canId(0x7ff, tx, {8}))}},
        {"data element without variable name",
         "<strong><font color='red'>Error: </font></strong> Variable name missing for signal # 2 in CAN-ID "
         "0x181",
         {device(6, canId(0x181, tx, {8, 8},
                          [](ObjectDataBase::DataElement& e) { e.varname = e.number ? "" : e.varname; }))},
         {device(6, canId(0x181, tx, {8, 8},
                          [](ObjectDataBase::DataElement& e) {
                              e.implementation = managedVariable;
                              e.varname.clear();
                          }))}},
        {"overlapping data elements",
         "<strong><font color='red'>Error: </font></strong> Signal 'Signal 2' in CAN-ID 0x181 overlaps with "
         "another signal in the same message.",
         {device(7, canId(0x181, rx, {8, 8},
                          [](ObjectDataBase::DataElement& e) { e.bitpos = e.number ? 7 : 0; }))},
         {device(7, canId(0x181, rx, {8, 8}))}},
        // An UNSIGNED64 of no bit size of its own at bit 8.
        {"payload of classical CAN",
         "<strong><font color='red'>Error: </font></strong> CAN-ID 0x181: signals require 72 bits but the "
         "maximum "
         "payload is 64 bits.",
         {device(4, canId(0x181, tx, {8, 0},
                          [](ObjectDataBase::DataElement& e) { e.datatype = e.number ? 27 : 5; }))},
         {device(4, both(canId(0x181, tx, {8, 0},
                               [](ObjectDataBase::DataElement& e) { e.datatype = e.number ? 27 : 5; }),
                         general("canfd_supported", "1"))),
          device(4, canId(0x181, tx, {8, 56}))}},
        {"payload of CAN FD",
         "<strong><font color='red'>Error: </font></strong> CAN-ID 0x181: signals require 520 bits but the "
         "maximum payload is 512 bits.",
         {device(4, both(canId(0x181, tx, {512, 8}), general("canfd_supported", "1")))},
         {device(4, both(canId(0x181, tx, {512}), general("canfd_supported", "1")))}},
        {"variable name used twice",
         "<strong>Warning: </strong>Signal 1 in CAN-ID 0x182: variable name 'speed' is already used by "
         "signal 1 in "
         "CAN-ID 0x181.",
         {device(4, both(canId(0x182, rx, {8}, speed), canId(0x181, tx, {8}, speed)))},
         {device(4, both(canId(0x182, rx, {8}, speed), canId(0x181, tx, {8})))},
         0},
    });
}
