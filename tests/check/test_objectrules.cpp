#include "testproject.h"

#include <gtest/gtest.h>

namespace {

constexpr int managedConst = 1;
constexpr int applicationVariable = 2;

// CAN FD devices describe 0x1000 as an ARRAY.
void makeFdDevice(TestProject& p)
{
    p.setGeneral("canfd_supported", "1");
    p.db().deleteIndex(0, 0x1000, false);
    p.addArray(0x1000, {"0x00000191"});
}

// A second CANopen line, then project-wide settings.
ProjectSetup onTwoLines(std::vector<std::pair<QString, QString>> values)
{
    return [setup = settings(std::move(values))](TestProject& p) {
        p.addLine(1, Line::CANopen);
        setup(p);
    };
}

} // namespace

TEST(ObjectRules, LineSettings)
{
    expectRules({
        {"node-ID missing",
         "<strong>Error: </strong>CANopen basic Stack Settings: No Node-Id specified for line 0: Specify a "
         "number between 1 and 127, or 255 for LSS or a function name like e.g. readDipSwitch in the line "
         "below.",
         {settings({{"co_node_id", ""}})},
         {settings({{"co_node_id", ""}, {"co_node_id_fct", "readDipSwitch"}})}},
        {"node-ID list too short for the line",
         "<strong>Error: </strong>CANopen basic Stack Settings: No Node-Id specified for line 1: Specify a "
         "number between 1 and 127, or 255 for LSS or a function name like e.g. readDipSwitch in the line "
         "below.",
         {onTwoLines({{"co_node_id", "1"}})},
         {onTwoLines({{"co_node_id", "1,2"}})}},
        {"node-ID function with (",
         "<strong>Error: </strong>CANopen basic Stack Settings: The name of the NodeId function may not "
         "include a (.",
         {settings({{"co_node_id_fct", "readDip("}})},
         {settings({{"co_node_id_fct", "readDip"}})}},
        {"node-ID function with )",
         "<strong>Error: </strong>CANopen basic Stack Settings: The name of the NodeId function may not "
         "include a ).",
         {settings({{"co_node_id_fct", "readDip)"}})},
         {settings({{"co_node_id_fct", "readDip"}})}},
        {"receive buffer size, decimal only",
         "<strong>Error: </strong>Common Settings: CAN receive buffer size must be specified individually "
         "for each line.",
         {settings({{"receivebuffersize", "0x10"}}), settings({{"receivebuffersize", ""}})},
         {settings({{"receivebuffersize", "16"}})}},
        {"transmit buffer size",
         "<strong>Error: </strong>Common Settings: CAN transmit buffer size must be specified individually "
         "for each line.",
         {onTwoLines({{"transmitbuffersize", "5"}})},
         {onTwoLines({{"transmitbuffersize", "5,7"}})}},
        {"ML master on a further line",
         "<strong>Error: </strong>General Settings: The ML master/slave settings size must be specified "
         "individually for each line. (e.g 0,1)",
         {onTwoLines({{"nmtmaster", "0,2"}, {"co_ml_ms", "1"}})},
         {onTwoLines({{"nmtmaster", "0,2"}, {"co_ml_ms", "0,1"}}),
          settings({{"nmtmaster", "2"}, {"co_ml_ms", "1"}}),
          // A list too short for the line gives it no entry, unlike the store's per-line reader.
          onTwoLines({{"nmtmaster", "2"}, {"co_ml_ms", "1"}})}},
    });
}

TEST(ObjectRules, MandatoryObjects)
{
    expectRules({
        {"device type as ARRAY in CAN FD",
         "<strong>Error: </strong>Object 0x1000 (Device Type) must be an ARRAY according to the CANopen FD "
         "specification.",
         {settings({{"canfd_supported", "1"}})},
         {makeFdDevice}},
        {"device type as VARIABLE in classical CAN",
         "<strong>Error: </strong>Object 0x1000 (Device Type) must be a VARIABLE according to the CANopen "
         "specification.",
         {[](TestProject& p) { p.addObject(0x1000, 9, "Device Type"); }},
         {settings({{"canfd_supported", "2"}})}},
        {"device type missing",
         "<strong>Error: </strong>Object 0x1000 (Device Type) does not exist, but it is mandatory according "
         "to CANopen specification.",
         {[](TestProject& p) { p.db().deleteIndex(0, 0x1000, false); }},
         {}},
        {"device type missing in CAN FD also fails the ARRAY rule",
         "<strong>Error: </strong>Object 0x1000 (Device Type) must be an ARRAY according to the CANopen FD "
         "specification.",
         {[](TestProject& p) {
             p.setGeneral("canfd_supported", "1");
             p.db().deleteIndex(0, 0x1000, false);
         }},
         {},
         2},
        {"error register missing",
         "<strong>Error: </strong>Object 0x1001 (Error Register) does not exist, but it is mandatory "
         "according to CANopen specification.",
         {[](TestProject& p) { p.db().deleteIndex(0, 0x1001, false); }},
         {}},
        {"neither heartbeat nor guard time",
         "<strong>Error: </strong>Object 0x1017 (Producer Heartbeat) and 0x100C (Guard Time) do not exist, "
         "but one of them is mandatory.",
         {[](TestProject& p) { p.db().deleteIndex(0, 0x1017, false); }},
         {[](TestProject& p) {
             p.db().deleteIndex(0, 0x1017, false);
             p.addVariable(0x100C, 6, "rw", "0");
         }}},
        {"more slave assignments than entries",
         "<strong>Error: </strong>Object 0x1f81: Value of 'max slave Assigment count' may not exceed number "
         "of subindices of object 0x1f81.",
         {[](TestProject& p) {
              p.addArray(0x1F81, {"0", "0"});
              p.setGeneral("max_slave_assignment", "3");
          },
          [](TestProject& p) {
              p.addArray(0x1F81, {"0", "0"});
              p.setGeneral("max_slave_assignment", "65539");
          }},
         {[](TestProject& p) {
              p.addArray(0x1F81, {"0", "0"});
              p.setGeneral("max_slave_assignment", " 2 ");
          },
          [](TestProject& p) {
              p.addArray(0x1F81, {"0", "0"});
              p.setGeneral("max_slave_assignment", "three");
          },
          settings({{"max_slave_assignment", "3"}})}},
        {"list object without entries",
         "<strong>Error: </strong>Object 0x1016 does not contain any sub-indices.",
         {[](TestProject& p) { p.addArray(0x1016, {}); }},
         {[](TestProject& p) { p.addArray(0x1016, {"0"}); }}},
        {"list object with a gap",
         "<strong>Error: </strong>Object 0x1016 may not have gaps.",
         {[](TestProject& p) {
             p.addArray(0x1016, {"0", "0", "0"});
             p.db().deleteSubIndex(0, 0x1016, 2, false);
         }},
         {[](TestProject& p) {
             p.addArray(0x2016, {"0", "0", "0"});
             p.db().deleteSubIndex(0, 0x2016, 2, false);
         }}},
        {"SYNC producer without cycle period",
         "<strong>Error: </strong>Object 0x1006 must be present, if SYNC producer bit is set in object "
         "0x1005.",
         {[](TestProject& p) { p.addVariable(0x1005, 7, "rw", "0x40000080"); }},
         {[](TestProject& p) {
              p.addVariable(0x1005, 7, "rw", "0x40000080");
              p.addVariable(0x1006, 7, "rw", "0");
          },
          [](TestProject& p) { p.addVariable(0x1005, 7, "rw", "0x80"); }}},
        {"USDO server without connections",
         "<strong>Error: </strong>Number of USDO server connections must be at least 1.",
         {[](TestProject& p) {
             makeFdDevice(p);
             p.setGeneral("usdo_server_enabled", "1");
             p.setGeneral("usdo_server_cnt", "0");
         }},
         {[](TestProject& p) {
              makeFdDevice(p);
              p.setGeneral("usdo_server_enabled", "1");
              p.setGeneral("usdo_server_cnt", "0x1");
          },
          settings({{"usdo_server_enabled", "1"}, {"usdo_server_cnt", "0"}})}},
        {"store command value without application handling",
         "<strong>Error: </strong>Object 0x1010:1 only default values between 0 and 1 are supported. Enable "
         "CO_AUTO_STORE_HANDLED_BY_APPLICATION to support other values",
         {[](TestProject& p) { p.addArray(0x1010, {"2"}); }},
         {[](TestProject& p) { p.addArray(0x1010, {"0x1"}); },
          [](TestProject& p) {
              p.addArray(0x1010, {"2"});
              p.setGeneral("1010autostore_by_application", "1");
          }}},
        {"restore command value with application handling",
         "<strong>Error: </strong>Object 0x1011:3 only default values between 0 and 3 are supported.",
         {[](TestProject& p) {
             p.addArray(0x1011, {"1", "1", "4"});
             p.setGeneral("1010autostore_by_application", "1");
         }},
         {[](TestProject& p) {
             p.addArray(0x1011, {"1", "1", "3"});
             p.setGeneral("1010autostore_by_application", "1");
         }}},
        {"NMT master without inhibit time",
         "Warning: Object 0x102a: The object 0x102A (NMT inhibit time) is highly recommended for masters. It "
         "may be added via 'Add Communication Service'.",
         {settings({{"nmtmaster", "1"}})},
         {[](TestProject& p) {
             p.setGeneral("nmtmaster", "1");
             p.addVariable(0x102A, 6, "rw", "0");
         }},
         0},
        {"EMCY history without EMCY COB-ID",
         "<strong>Error: </strong>Object 0x1003: This object can only be used, if object 0x1014 exists as "
         "well.",
         {[](TestProject& p) { p.addArray(0x1003, {"0"}); }},
         {[](TestProject& p) {
             p.addArray(0x1003, {"0"});
             p.addVariable(0x1014, 7, "rw", "$NODEID+0x80");
         }}},
        {"EMCY consumer entry of 0",
         "<strong>Error: </strong>Object 0x1028-2: The value of this sub index may not be 0x00000000.",
         {[](TestProject& p) {
             p.addArray(0x1028, {"0x81", "0x0"});
         }},
         {[](TestProject& p) {
             p.addArray(0x1028, {"0x81", "0x82"});
         }}},
    });
}

TEST(ObjectRules, IdentityObject)
{
    const auto identity = [](quint8 sub, const char* value) {
        return [sub, value](TestProject& p) {
            p.changeSub(0x1018, sub, [value](auto& r) { r.defaultvalue = value; });
        };
    };
    expectRules({
        {"vendor-ID empty",
         "<strong>Error: </strong>Object 0x1018-0x01: The value of subindex 1 (vendor-ID) is empty.",
         {identity(1, ""), [](TestProject& p) { p.db().deleteIndex(0, 0x1018, false); }},
         {identity(1, "0")}},
        {"vendor-ID of halvex",
         "<strong>Warning: Object 0x1018-0x01: The vendor-ID 0x2F5 (halvex) may not be used for production. "
         "</strong>",
         {identity(1, "757"), identity(1, "0x2F5")},
         {identity(1, "0x2F6")},
         0},
        {"product code empty",
         "<strong>Error: </strong>Object 0x1018-0x02: The value of subindex 2 (product code) is empty.",
         {identity(2, "")},
         {[](TestProject& p) { p.db().deleteSubIndex(0, 0x1018, 2, false); }}},
        {"revision number empty",
         "<strong>Error: </strong>Object 0x1018-0x03: The value of subindex 3 (revision number) is empty.",
         {identity(3, "")},
         {[](TestProject& p) { p.db().deleteSubIndex(0, 0x1018, 3, false); }}},
        {"serial number as managed constant",
         "<strong>Warning</strong>: Object 0x1018: The implementation type of subindex 4 (serial number) is "
         "'Managed Const'. This is not useful in most cases.",
         {[](TestProject& p) { p.changeSub(0x1018, 4, [](auto& r) { r.implementation = managedConst; }); }},
         {[](TestProject& p) {
             p.changeSub(0x1018, 4, [](auto& r) {
                 r.implementation = applicationVariable;
                 r.varname = "serial";
             });
         }},
         0},
    });
}

TEST(ObjectRules, ObjectAndSubIndexZero)
{
    expectRules({
        {"ARRAY without sub-indices",
         "<strong>Error: </strong>Object 0x2000: This array does not contain any sub-indices",
         {[](TestProject& p) { p.addObject(0x2000, 8); }},
         {[](TestProject& p) { p.addObject(0x2000, 7); }}},
        {"default value flag of sub-index 0",
         "<strong>Error: </strong>Object 0x2000-0:The 'default value' flag must be set for this subindex.",
         {[](TestProject& p) {
             p.addArray(0x2000, {"0"});
             p.changeSub(0x2000, 0, [](auto& r) {
                 r.defaultineds = false;
                 r.writedefaulttoeds = 2;
             });
         }},
         {[](TestProject& p) {
             // The error counter of 0x1003 is never adjusted, so the flag is not asked for.
             p.addArray(0x1003, {"0"});
             p.addVariable(0x1014, 7, "rw", "$NODEID+0x80");
             p.changeSub(0x1003, 0, [](auto& r) {
                 r.defaultineds = false;
                 r.writedefaulttoeds = 2;
             });
         }}},
        {"default of sub-index 0 kept out of the EDS",
         "Warning: Object 0x2000-0:The defaultvalue of this subindex should be written into the EDS/XDD "
         "file.",
         {[](TestProject& p) {
             p.addArray(0x2000, {"0"});
             p.changeSub(0x2000, 0, [](auto& r) { r.writedefaulttoeds = 0; });
         }},
         {[](TestProject& p) {
             p.addArray(0x2000, {"0"});
             p.changeSub(0x2000, 0, [](auto& r) { r.writedefaulttoeds = 2; });
         }},
         0},
        {"object without a name",
         "<strong>Error: </strong>Object 0x2000: The object does not have a name. (Required for EDS)",
         {[](TestProject& p) {
             p.addVariable(0x2000, 7, "rw", "0");
             p.addObject(0x2000, 7, "");
         }},
         {[](TestProject& p) { p.addVariable(0x2000, 7, "rw", "0"); }}},
        {"VARIABLE with several sub-indices",
         "<strong>Error: </strong>Object 0x2000: The object is a VARIABLE but has multiple subindices.",
         {[](TestProject& p) {
             p.addVariable(0x2000, 7, "rw", "0");
             p.addSub(0x2000, 1, subRecord(7, "rw", "0"));
         }},
         {[](TestProject& p) { p.addVariable(0x2000, 7, "rw", "0"); }}},
    });
}

TEST(ObjectRules, SubIndices)
{
    const auto variable = [](const std::function<void(SUBINDEX_DATA_T&)>& change) {
        return [change](TestProject& p) {
            SUBINDEX_DATA_T record = subRecord(7, "rw", "5");
            change(record);
            p.addObject(0x2000, 7);
            p.addSub(0x2000, 0, record);
        };
    };
    const auto withLimits = [](const char* low, const char* up, const char* value, int dataType = 4) {
        return [=](TestProject& p) {
            SUBINDEX_DATA_T record = subRecord(dataType, "rw", value);
            record.limitineds = true;
            record.lowlimit = low;
            record.uplimit = up;
            p.addObject(0x2000, 7);
            p.addSub(0x2000, 0, record);
            p.setGeneral("limit_check", "1");
        };
    };
    const auto namedVariable = [variable](const char* name) {
        return variable([name](auto& r) {
            r.implementation = applicationVariable;
            r.varname = name;
        });
    };
    expectRules({
        {"limits without global limit check",
         "Warning: Object 0x2000-0x00: Limit Check is activated, but it is deactivated in the global "
         "settings.",
         {variable([](auto& r) {
             r.limitineds = true;
             r.uplimit = "10";
         })},
         {withLimits("0", "10", "5")},
         0},
        {"unnamed sub-index of an ARRAY",
         "<strong>Error: </strong>Object 0x2000-0x01: The object does not have a name. (Required for EDS)",
         {[](TestProject& p) {
             p.addArray(0x2000, {"0"});
             p.changeSub(0x2000, 1, [](auto& r) { r.name = ""; });
         }},
         {variable([](auto& r) { r.name = ""; })}},
        // Behind "-0x" the sub-index has two hexadecimal digits, unlike the decimal forms of other rules.
        {"unnamed sub-index beyond 9 of an ARRAY",
         "<strong>Error: </strong>Object 0x2000-0x0a: The object does not have a name. (Required for EDS)",
         {[](TestProject& p) {
             p.addArray(0x2000, QStringList(10, "0"));
             p.changeSub(0x2000, 10, [](auto& r) { r.name = ""; });
         }},
         {[](TestProject& p) { p.addArray(0x2000, QStringList(10, "0")); }}},
        {"application variable without a name",
         "<strong>Error: </strong>Object 0x2000-0x00: The variable name is missing.",
         {variable([](auto& r) { r.implementation = applicationVariable; })},
         {namedVariable("speed")}},
        {"variable name with blanks, commas or semicolons",
         "<strong>Error: </strong>Object 0x2000-0x00: The variable name contains invalid characters like "
         "spaces or commas.",
         {namedVariable("my speed"), namedVariable("a,b"), namedVariable("a;b")},
         {variable([](auto& r) { r.varname = "my speed"; })}},
        {"access type in wrong case",
         "<strong>Error: </strong>Object 0x2000-0x00: The access type 'RW' is invalid. Use ro, rw, const, "
         "wo, rww or rwr instead.",
         {variable([](auto& r) { r.accesstype = "RW"; })},
         {variable([](auto& r) { r.accesstype = "rww"; })}},
        {"managed constant that may be written",
         "<strong>Error: </strong>Object 0x2000-0x00: The implementation type is Managed Const, but the "
         "access type allows write access.",
         {variable([](auto& r) { r.implementation = managedConst; })},
         {variable([](auto& r) {
             r.implementation = managedConst;
             r.accesstype = "const";
         })}},
        {"managed octet string",
         "<strong>Error: </strong>Object 0x2000-0x00: The implementation type 'Managed Variable' is not "
         "possible for octet strings.",
         {variable([](auto& r) { r.datatype = 10; })},
         {variable([](auto& r) {
             r.datatype = 10;
             r.implementation = applicationVariable;
             r.varname = "octets";
         })}},
        {"managed visible string",
         "<strong>Error: </strong>Object 0x2000-0x00: The implementation type 'Managed Variable' is not "
         "possible for visible strings. Use 'Managed Const' or 'Variable' instead.",
         {variable([](auto& r) { r.datatype = 9; })},
         {variable([](auto& r) {
             r.datatype = 9;
             r.implementation = managedConst;
             r.accesstype = "const";
         })}},
        {"managed UTF8 string",
         "<strong>Error: </strong>Object 0x2000-0x00: The implementation type 'Managed Variable' is not "
         "possible for UTF8 strings. Use 'Managed Const' or 'Variable' instead.",
         {variable([](auto& r) { r.datatype = 124; })},
         {variable([](auto& r) {
             r.datatype = 124;
             r.implementation = 3;
         })}},
        {"unknown data type",
         "<strong>Error: </strong>Object 0x2000-0x00: Unknown or unsupported datatype.",
         {variable([](auto& r) { r.datatype = 0; })},
         {variable([](auto& r) { r.datatype = 17; })}},
        {"default outside the limits",
         "<strong>Error: </strong>Object 0x2000-0x00: The defaultvalue is not in the range of the limits.",
         {withLimits("0", "100", "101"), withLimits("-10", "10", "-11"), withLimits("0", "0x10", "0x11", 7)},
         {withLimits("0", "100", "100"),
          // 0x7FFFFF stands for "no upper limit".
          withLimits("0", "0x7FFFFF", "0x800000"), withLimits("0", "8388607", "9000000"),
          withLimits("0", "10", "$NODEID+0x80", 7), withLimits("a", "b", "c", 15)}},
    });
}

TEST(ObjectRules, VariableNamesAreUniquePerLine)
{
    const auto applicationVariableAt = [](quint16 index, const char* name, quint8 line = 0) {
        return [=](TestProject& p) {
            SUBINDEX_DATA_T record = subRecord(7, "rw", "0");
            record.implementation = applicationVariable;
            record.varname = name;
            p.addObject(index, 7, "object", line);
            p.addSub(index, 0, record, line);
        };
    };
    expectRules({
        {"variable name used twice",
         "<strong>Warning: </strong>Object 0x2001-0x00: Variable name 'speed' is already used by object "
         "0x2000-0x00.",
         {[=](TestProject& p) {
             applicationVariableAt(0x2000, "speed")(p);
             applicationVariableAt(0x2001, " speed ")(p);
         }},
         {[=](TestProject& p) {
              applicationVariableAt(0x2000, "speed")(p);
              applicationVariableAt(0x2001, "speed2")(p);
          },
          [=](TestProject& p) {
              p.addLine(1, Line::CANopen);
              applicationVariableAt(0x2000, "speed")(p);
              applicationVariableAt(0x2001, "speed", 1)(p);
          }},
         // The blanks kept around the second name are an error of their own.
         1},
    });
}
