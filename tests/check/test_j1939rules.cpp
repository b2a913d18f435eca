#include "testproject.h"

#include "canopenlib/canopentypes.h"
#include "common/projectbuilder.h"
#include "database/linetypes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr quint8 tx = ObjectDataBase::Transmit;
constexpr quint8 rx = ObjectDataBase::Receive;

using Content = std::function<void(TestProject&, quint8 line)>;
using PgnChange = std::function<void(ObjectDataBase::PGN&)>;
using SpnChange = std::function<void(ObjectDataBase::SPN&)>;
using ElementChange = std::function<void(ObjectDataBase::DataElement&)>;

// Line 0 turned into the given type, or a second line of that type beside the CANopen line 0, with content.
ProjectSetup device(Line::Type type, const Content& content = {}, quint8 line = 0)
{
    return [=](TestProject& p) {
        if (line == 0)
            p.db().setLineType(0, type);
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
        QList<ObjectDataBase::SPN> spns;
        for (int i = 0; i < bits.size(); ++i) {
            ObjectDataBase::SPN spn;
            spn.name = QStringLiteral("Signal %1").arg(i + 1);
            spn.spnnumber = i + 1;
            spn.datatype = CAN::Unsigned8;
            spn.bitsize = bits.at(i);
            spn.varname = QStringLiteral("pgn%1_%2_%3").arg(number).arg(direction).arg(i + 1);
            spns << spn;
        }
        spns = projectbuilder::packed(spns);
        if (spnChange)
            std::for_each(spns.begin(), spns.end(), spnChange);
        EXPECT_TRUE(projectbuilder::addPgn(p.db(), line, number, record, spns));
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
        QList<ObjectDataBase::DataElement> elements;
        for (int i = 0; i < bits.size(); ++i) {
            ObjectDataBase::DataElement element;
            element.name = QStringLiteral("Signal %1").arg(i + 1);
            element.number = i;
            element.datatype = CAN::Unsigned8;
            element.bitsize = bits.at(i);
            element.varname = QStringLiteral("id%1_%2_%3").arg(id).arg(direction).arg(i);
            elements << element;
        }
        elements = projectbuilder::packed(elements);
        if (change)
            std::for_each(elements.begin(), elements.end(), change);
        EXPECT_TRUE(projectbuilder::addCanId(p.db(), line, id, record, elements));
    };
}

const Content speedOnTx = pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.varname = "speed"; });

} // namespace

TEST(J1939Rules, SettingsAndName)
{
    expectRules({
        {"sorted COB list",
         "<strong>Error: </strong>Sorted COB list may not used with J1939 projects.",
         {device(Line::J1939, general("sorted_coblist", "1")),
          device(Line::CANopenJ1939, general("sorted_coblist", "2"), 1)},
         {device(Line::J1939, general("sorted_coblist", "0")), settings({{"sorted_coblist", "1"}})}},
        {"group filter",
         "<strong>Warning: </strong>Group filter is only useful for CANopen or mixed projects.",
         {device(Line::J1939RawCan, general("drv_group_filter", "1"))},
         {device(Line::J1939RawCan, general("drv_group_filter", "2"))},
         0},
        {"dynamic PGNs without additional COBs",
         "<strong>Error: </strong>Additional COBs need to be specific with dynamic PGN support.",
         {device(Line::J1939, both(j1939Setting("dynsupport", "1"), general("additional_cob_count", " ")))},
         {device(Line::J1939, both(j1939Setting("dynsupport", "1"), general("additional_cob_count", "4")))}},
        {"manufacturer code of the tool maker",
         "<strong>Warning: The manufacturer code 1871 (halvex) may not be used for production. </strong>",
         {device(Line::J1939, j1939Setting("manufacturercode", "1871")),
          device(Line::J1939RawCan, j1939Setting("manufacturercode", "291,1871"), 1)},
         {device(Line::J1939, j1939Setting("manufacturercode", "1870")),
          device(Line::J1939RawCan, j1939Setting("manufacturercode", "1871,291"), 1)},
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
                        {device(Line::J1939, j1939Setting(key, "1, "), 1),
                         device(Line::CANopenJ1939, j1939Setting(key, ""), 1)},
                        {device(Line::J1939, j1939Setting(key, "1"), 1),
                         device(Line::CANopenJ1939, j1939Setting(key, " ,2"), 1)}});
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
         {device(Line::J1939, pgn(59904, rx, {})), device(Line::J1939RawCan, pgn(59904, tx, {8}), 1)},
         {device(Line::J1939, pgn(59905, rx, {8}))}},
        {"PGN without name",
         "<strong>Warning: </strong>The PGN 61444 des not have a name.",
         {device(Line::J1939, pgn(61444, rx, {8}, {}, [](ObjectDataBase::PGN& r) { r.name.clear(); }))},
         {device(Line::J1939, pgn(61444, rx, {8}))},
         0},
        {"PGN without SPNs",
         "<strong>Error: </strong>PG (61444/0xf004) does not contain any SPNs.",
         {device(Line::CANopenJ1939, pgn(61444, tx, {}))},
         {device(Line::CANopenJ1939, both(pgn(61444, tx, {8}), pgn(61444, rx, {8})))}},
        {"safety PGN without safety type",
         "<strong>Error: </strong>PG (61444/0xf004) A safety type needs to be assigned to this PGN.",
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"), safetyPgn(0)))},
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"), safetyPgn(1)))}},
        {"safety type of CAN FD on classical CAN",
         "<strong>Error: </strong>PG (61444/0xf004) This safety type is not supported with classical CAN.",
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"), safetyPgn(3)))},
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"), safetyPgn(2))),
          device(Line::J1939, both(both(j1939Setting("safetysupport", "1"), general("canfd_supported", "1")),
                                   safetyPgn(3)))}},
        {"safety PGN without safety support",
         "<strong>Warning: </strong>PG (61444/0xf004) shall be transmitted as SDM but SHM support is not "
         "activated.",
         {device(Line::J1939, safetyPgn(1)),
          device(Line::J1939, safetyPgn(1, [](ObjectDataBase::SPN& s) { s.datatype = 9; }))},
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"), safetyPgn(1)))},
         0},
        {"managed variable in a safety PGN",
         "<strong>Error: </strong>PG (61444/0xf004) transmitted as SDM may not contain managed variables.",
         {device(Line::J1939,
                 both(j1939Setting("safetysupport", "1"),
                      safetyPgn(
                          1, [](ObjectDataBase::SPN& s) { s.implementation = CANopen::ManagedVariable; })))},
         {device(Line::J1939,
                 pgn(61444, tx, {8},
                     [](ObjectDataBase::SPN& s) { s.implementation = CANopen::ManagedVariable; }))}},
        {"string in a safety PGN",
         "<strong>Error: </strong>PG (61444/0xf004) contains unsuppported data types.",
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"),
                                   safetyPgn(1, [](ObjectDataBase::SPN& s) { s.datatype = 120; })))},
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"),
                                   safetyPgn(1, [](ObjectDataBase::SPN& s) { s.datatype = 10; })))}},
        {"long safety PGN",
         "<strong>Error: </strong>PG (61444/0xf004) transmitted as SDM may not exceed 64 bit.",
         {device(Line::J1939, both(both(j1939Setting("safetysupport", "1"), j1939Setting("bamsupport", "1")),
                                   safetyPgn(1, {}, {64, 8})))},
         {device(Line::J1939, both(j1939Setting("safetysupport", "1"), safetyPgn(1, {}, {64})))}},
        {"long PGN without transport protocol",
         "<strong>Error: </strong>Neither BAM nor TP.CMDT supported but PGNs with length > 64 bit defined.",
         {device(Line::J1939, pgn(65265, rx, {64, 8})), device(Line::J1939RawCan, pgn(65265, tx, {72}), 1)},
         {device(Line::J1939, both(pgn(65265, rx, {64, 8}), j1939Setting("bamsupport", "1"))),
          device(Line::J1939, both(pgn(65265, rx, {64, 8}), general("canfd_supported", "1"))),
          device(Line::J1939, pgn(65265, rx, {64}))}},
        {"CMDT without packet count",
         "<strong>Error: </strong>CMDT packet count should not be 0 in J1939 configuration.",
         {device(Line::J1939, j1939Setting("cmdtsupport", "1"))},
         {device(Line::J1939, both(j1939Setting("cmdtsupport", "1"), j1939Setting("cmdtpackets", "16")))}},
    });
}

TEST(J1939Rules, SpnLayoutAndNames)
{
    expectRules({
        {"SPN without variable name",
         "<strong>Error: </strong>The SPN 2 in PGN 61444 needs a variable name.",
         {device(Line::J1939,
                 pgn(61444, tx, {8, 8},
                     [](ObjectDataBase::SPN& s) { s.varname = s.spnnumber == 2 ? " " : s.varname; }))},
         {device(Line::J1939, pgn(61444, tx, {8, 8},
                                  [](ObjectDataBase::SPN& s) {
                                      s.implementation = CANopen::ManagedVariable;
                                      s.varname.clear();
                                  }))}},
        {"SPN without name",
         "<strong>Warning: </strong>The SPN 1 in PGN 61444 needs a name.",
         {device(Line::J1939, pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.name = " "; }))},
         {device(Line::J1939, pgn(61444, tx, {8}))},
         0},
        {"SPN name starting with a digit",
         "<strong>Warning: </strong>The name of SPN 1 in PGN 61444 should not start with a number.",
         {device(Line::J1939, pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.name = " 2nd gear"; }))},
         {device(Line::J1939, pgn(61444, tx, {8}, [](ObjectDataBase::SPN& s) { s.name = "Gear 2"; }))},
         0},
        {"overlapping SPNs",
         "<strong>Warning: </strong>SPN 2 in PGN 61444 overlaps in bit position with another SPN in the same "
         "PGN.",
         {device(Line::J1939, pgn(61444, tx, {8, 8},
                                  [](ObjectDataBase::SPN& s) { s.bitposition = s.spnnumber == 2 ? 4 : 0; }))},
         {device(Line::J1939, pgn(61444, tx, {4, 4})),
          device(Line::J1939, both(pgn(61444, tx, {8}), pgn(61444, rx, {8})))},
         0},
        {"variable name used twice",
         "<strong>Warning: </strong>SPN 1 in PGN 65265: variable name 'speed' is already used by SPN 1 in "
         "PGN "
         "61444.",
         {device(Line::J1939,
                 both(pgn(65265, rx, {8}, [](ObjectDataBase::SPN& s) { s.varname = " speed"; }), speedOnTx))},
         {device(Line::J1939, both(pgn(65265, rx, {8},
                                       [](ObjectDataBase::SPN& s) {
                                           s.varname = "speed";
                                           s.implementation = CANopen::ManagedVariable;
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
         {device(Line::RawCan, both(canId(0x20000800, tx, {8}), canId(0x20000800, rx, {8}))),
          device(Line::CANopenRawCan, both(canId(0x20000800, rx, {8}), canId(0x20000800, tx, {8})), 1)},
         {device(Line::RawCan, both(canId(0x20000800, tx, {8}), canId(0x20000801, rx, {8})))},
         0},
        {"identifier above 0x7ff without the extended flag",
         "<strong><font color='red'>Error: </font></strong> CAN-ID 0x800 is higher then 0x7ff, but extended "
         "flag "
         "is not set.",
         {device(Line::RawCan, canId(0x800, tx, {8})), device(Line::J1939RawCan, canId(0x800, rx, {8}), 1)},
         {device(Line::RawCan, canId(0x20000800, tx, {8})), device(Line::RawCan, canId(0x7ff, tx, {8}))}},
        {"data element without variable name",
         "<strong><font color='red'>Error: </font></strong> Variable name missing for signal # 2 in CAN-ID "
         "0x181",
         {device(Line::CANopenRawCan,
                 canId(0x181, tx, {8, 8},
                       [](ObjectDataBase::DataElement& e) { e.varname = e.number ? "" : e.varname; }))},
         {device(Line::CANopenRawCan, canId(0x181, tx, {8, 8},
                                            [](ObjectDataBase::DataElement& e) {
                                                e.implementation = CANopen::ManagedVariable;
                                                e.varname.clear();
                                            }))}},
        {"overlapping data elements",
         "<strong><font color='red'>Error: </font></strong> Signal 'Signal 2' in CAN-ID 0x181 overlaps with "
         "another signal in the same message.",
         {device(
             Line::J1939RawCan,
             canId(0x181, rx, {8, 8}, [](ObjectDataBase::DataElement& e) { e.bitpos = e.number ? 7 : 0; }))},
         {device(Line::J1939RawCan, canId(0x181, rx, {8, 8}))}},
        // An UNSIGNED64 of no bit size of its own at bit 8.
        {"payload of classical CAN",
         "<strong><font color='red'>Error: </font></strong> CAN-ID 0x181: signals require 72 bits but the "
         "maximum "
         "payload is 64 bits.",
         {device(Line::RawCan,
                 canId(0x181, tx, {8, 0},
                       [](ObjectDataBase::DataElement& e) { e.datatype = e.number ? 27 : 5; }))},
         {device(Line::RawCan,
                 both(canId(0x181, tx, {8, 0},
                            [](ObjectDataBase::DataElement& e) { e.datatype = e.number ? 27 : 5; }),
                      general("canfd_supported", "1"))),
          device(Line::RawCan, canId(0x181, tx, {8, 56}))}},
        {"payload of CAN FD",
         "<strong><font color='red'>Error: </font></strong> CAN-ID 0x181: signals require 520 bits but the "
         "maximum payload is 512 bits.",
         {device(Line::RawCan, both(canId(0x181, tx, {512, 8}), general("canfd_supported", "1")))},
         {device(Line::RawCan, both(canId(0x181, tx, {512}), general("canfd_supported", "1")))}},
        {"variable name used twice",
         "<strong>Warning: </strong>Signal 1 in CAN-ID 0x182: variable name 'speed' is already used by "
         "signal 1 in "
         "CAN-ID 0x181.",
         {device(Line::RawCan, both(canId(0x182, rx, {8}, speed), canId(0x181, tx, {8}, speed)))},
         {device(Line::RawCan, both(canId(0x182, rx, {8}, speed), canId(0x181, tx, {8})))},
         0},
    });
}
