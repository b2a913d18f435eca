#!/usr/bin/python3
"""Regenerates the built-in CANopen profile databases in src/resources/codb.

Each profile database "v<id>.codb" is written from public, machine-readable
object lists of the CiA profiles (the corpus next to the repository) and from
the hand-written objects in scripts/codb_additions.txt, which replace or add
whole objects.  Run it from anywhere:

    /usr/bin/python3 scripts/make_codb.py [--corpus DIR] [--out DIR]

The line format is the one CODBImporter reads: fields separated by ":",
"IIII::name:category::VAR|ARRAY|RECORD:..." for an object and
"IIII:SS:name:..." for a subindex, see write_object().
"""

import argparse
import copy
import re
import sys
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field
from pathlib import Path

import yaml

REPO = Path(__file__).resolve().parent.parent

# Data type numbers of CiA 301 and their names in the database.
TYPE_NAMES = {
    0x01: "BOOLEAN", 0x02: "INTEGER8", 0x03: "INTEGER16", 0x04: "INTEGER32",
    0x05: "UNSIGNED8", 0x06: "UNSIGNED16", 0x07: "UNSIGNED32", 0x08: "REAL32",
    0x09: "VISIBLE_STRING", 0x0A: "OCTET_STRING", 0x0B: "UNICODE_STRING",
    0x0C: "TIME_OF_DAY", 0x0D: "TIME_DIFFERENCE", 0x0F: "DOMAIN",
    0x10: "INTEGER24", 0x11: "REAL64", 0x12: "INTEGER40", 0x13: "INTEGER48",
    0x14: "INTEGER56", 0x15: "INTEGER64", 0x16: "UNSIGNED24", 0x18: "UNSIGNED40",
    0x19: "UNSIGNED48", 0x1A: "UNSIGNED56", 0x1B: "UNSIGNED64",
}
KNOWN_TYPES = set(TYPE_NAMES.values())
NON_NUMERIC_TYPES = {"VISIBLE_STRING", "OCTET_STRING", "UNICODE_STRING", "DOMAIN"}

# Elementary data type elements of CiA 311 device descriptions.
XDD_TYPES = {
    "BOOL": "BOOLEAN", "SINT": "INTEGER8", "INT": "INTEGER16", "DINT": "INTEGER32",
    "LINT": "INTEGER64", "USINT": "UNSIGNED8", "UINT": "UNSIGNED16", "UDINT": "UNSIGNED32",
    "ULINT": "UNSIGNED64", "REAL": "REAL32", "LREAL": "REAL64", "STRING": "VISIBLE_STRING",
    "WSTRING": "UNICODE_STRING", "BITSTRING": "OCTET_STRING",
}
XDD_ACCESS = {None: "ro", "read": "ro", "write": "wo", "readWrite": "rw", "const": "const",
              "readWriteInput": "rww", "readWriteOutput": "rwr"}

YAML_TYPES = {
    "bool": "BOOLEAN", "int8": "INTEGER8", "int16": "INTEGER16", "int32": "INTEGER32",
    "int64": "INTEGER64", "uint8": "UNSIGNED8", "uint16": "UNSIGNED16", "uint32": "UNSIGNED32",
    "uint64": "UNSIGNED64", "float": "REAL32", "double": "REAL64", "string": "VISIBLE_STRING",
}

# Spelling slips of the sources that should not reach a reference database.
NAME_FIXES = [("Highestt", "Highest"), ("demannd", "demand"), ("dimention", "dimension"),
              ("sofware", "software"), ("suported", "supported"), ("Acutal buffe ", "Actual buffer "),
              ("Pyhsical", "Physical"), ("calatogue", "catalogue"), ("periode", "period"),
              ("Bit mask mask", "Bit mask"), ("?#st", "1st"), ("Interger", "Integer")]

CATEGORIES = ("mandatory", "optional", "conditional")
ACCESS_TYPES = ("ro", "wo", "rw", "rwr", "rww", "const")


@dataclass
class Sub:
    sub: int
    name: str
    datatype: str
    access: str = "ro"
    pdo: bool = False
    default: str = ""
    low: str = ""
    high: str = ""
    allowed: str = ""


@dataclass
class Obj:
    index: int
    name: str
    kind: str  # VAR, ARRAY or RECORD
    category: str = "optional"
    subs: list = field(default_factory=list)


@dataclass
class Profile:
    ident: str
    comment: str
    device_profile: int = 0  # profile number in the low word of 0x1000, 0 for none
    sources: list = field(default_factory=list)  # callables giving {index: Obj}, first wins
    source_files: list = field(default_factory=list)


def fix_name(name):
    name = " ".join(name.split())
    for wrong, right in NAME_FIXES:
        name = name.replace(wrong, right)
    if ":" in name:
        raise ValueError(f"a name must not contain ':' : {name}")
    return name


def numeric_default(datatype):
    return "" if datatype in NON_NUMERIC_TYPES else "0"


def highest_sub_default(obj):
    return f"0x{max(s.sub for s in obj.subs):02X}"


def classify(subs):
    """ARRAY when every entry behind subindex 0 has one data type, else RECORD."""
    types = {s.datatype for s in subs if s.sub > 0}
    return "ARRAY" if len(types) == 1 else "RECORD"


def normalise_count_entry(obj, default=None):
    """Subindex 0 of an ARRAY or RECORD is the UNSIGNED8 count of CiA 301."""
    first = obj.subs[0]
    first.datatype = "UNSIGNED8"
    if first.access not in ("ro", "const", "rw"):
        first.access = "ro"
    first.pdo = False
    first.default = default if default is not None else highest_sub_default(obj)
    if not first.allowed and first.access in ("ro", "const"):
        first.allowed = "const,ro"


# --- CanFestival object dictionary profiles (Python dictionary literals) ---

def expand_pattern(name, idx, sub):
    """Names such as "Read Inputs 0x%X to 0x%X[(sub*8-7,sub*8)]" carry their arguments."""
    match = re.fullmatch(r"(.*)\[\((.*)\)\]", name)
    if not match:
        return name
    values = eval("(" + match.group(2) + ",)", {"__builtins__": {}}, {"idx": idx, "sub": sub})
    return match.group(1) % values


def read_prf(path, entry_cap):
    scope = {name: name for name in ("var", "array", "rec", "plurivar", "pluriarray", "plurirec")}
    source = Path(path).read_text(encoding="latin-1").replace("global Mapping, AddMenuEntries", "")
    exec(source, scope)
    objects = {}
    for base, entry in scope["Mapping"].items():
        instances = entry.get("nbmax", 1) if "incr" in entry else 1
        for ordinal in range(1, instances + 1):
            index = base + (ordinal - 1) * entry.get("incr", 0)
            objects[index] = prf_object(index, ordinal, entry, entry_cap)
    return objects


def prf_object(index, ordinal, entry, entry_cap):
    category = "mandatory" if entry.get("need") else "optional"
    name = fix_name(expand_pattern(entry["name"], ordinal, 0))
    if entry["struct"] in ("var", "plurivar"):
        value = entry["values"][0]
        datatype = TYPE_NAMES[value["type"]]
        var = Sub(0, name, datatype, value["access"], value["pdo"], numeric_default(datatype))
        return Obj(index, name, "VAR", category, [var])
    subs = []
    for value in entry["values"]:
        count = min(value["nbmax"], entry_cap) if "nbmax" in value else 1
        for _ in range(count):
            number = len(subs)
            datatype = TYPE_NAMES[value["type"]]
            subs.append(Sub(number, fix_name(expand_pattern(value["name"], ordinal, number)), datatype,
                            value["access"], value["pdo"], numeric_default(datatype)))
    repeated = len(entry["values"]) == 2 and "nbmax" in entry["values"][1]
    kind = "ARRAY" if repeated else classify(subs)
    obj = Obj(index, name, kind, category, subs)
    normalise_count_entry(obj)
    return obj


# --- CiA 311 device description profiles (XDD) ---

def local(tag):
    return tag.split("}")[-1]


def read_xpd(path):
    root = ElementTree.parse(path).getroot()
    params = {}
    for element in root.iter():
        if local(element.tag) == "parameter" and element.get("uniqueID"):
            params[element.get("uniqueID")] = xpd_parameter(element)
    objects = {}
    for element in root.iter():
        if local(element.tag) != "CANopenObject":
            continue
        index = int(element.get("index"), 16)
        name = fix_name(element.get("name"))
        kind = {"7": "VAR", "8": "ARRAY", "9": "RECORD"}[element.get("objectType")]
        if kind == "VAR":
            datatype, access, default = params[element.get("uniqueIDRef")]
            subs = [Sub(0, name, datatype, access, element.get("PDOmapping") != "no", default)]
        else:
            subs = []
            for child in element:
                datatype, access, default = params[child.get("uniqueIDRef")]
                subs.append(Sub(int(child.get("subIndex"), 16), fix_name(child.get("name")), datatype,
                                access, child.get("PDOmapping", "no") != "no", default))
        obj = Obj(index, name, kind, "optional", subs)
        if kind != "VAR":
            normalise_count_entry(obj, subs[0].default)
        objects[index] = obj
    return objects


def xpd_parameter(element):
    datatype, default = None, None
    for child in element:
        tag = local(child.tag)
        if tag == "defaultValue":
            default = child.get("value")
        elif tag in XDD_TYPES:
            datatype = XDD_TYPES[tag]
    return datatype, XDD_ACCESS[element.get("access")], default if default is not None else numeric_default(
        datatype)


def ddl_categories(path):
    """Category of each object of an ACN DDL description of CANopen objects."""
    categories = {}
    root = ElementTree.parse(path).getroot()
    for prop in root.iter():
        if local(prop.tag) != "property":
            continue
        behaviours = [b.get("name", "") for b in prop if local(b.tag) == "behavior"]
        category = next((b.split(".")[1] for b in behaviours if b.startswith("category.")), None)
        for protocol in (p for p in prop if local(p.tag) == "protocol"):
            for address in protocol:
                if local(address.tag) == "CANopen" and address.get("sub") is None and category:
                    categories.setdefault(int(address.get("index"), 16), category)
    return categories


def with_categories(objects, categories):
    for index, obj in objects.items():
        obj.category = categories.get(index, obj.category)
    return objects


# --- YAML object lists ---

def read_yaml_profile(path, profile, skip=()):
    objects = {}
    entries = yaml.safe_load(Path(path).read_text())["profiles"][profile]["objects"]
    for index, entry in entries.items():
        if any(low <= index <= high for low, high in skip):
            continue
        name = fix_name(entry["name"])
        category = entry.get("category", "optional")
        subs = [yaml_sub(number, data, name) for number, data in enumerate(entry["data"])]
        if len(subs) == 1:
            objects[index] = Obj(index, name, "VAR", category, subs)
        else:
            obj = Obj(index, name, classify(subs), category, subs)
            normalise_count_entry(obj, subs[0].default)
            objects[index] = obj
    return objects


def yaml_sub(number, data, object_name):
    datatype = YAML_TYPES[data["type"]]
    default = data.get("default")
    default = numeric_default(datatype) if default is None else str(default)
    return Sub(number, fix_name(data.get("name", object_name)), datatype, data["access"],
               bool(data.get("pdo_mapping", False)), default)


# --- hand-written objects ---

def substitute(text, ordinal, sub):
    """{i} is the ordinal of an object in a range, {s} the subindex, {hex:EXPR} a number."""
    def hex_value(match):
        value = eval(match.group(1), {"__builtins__": {}}, {"i": ordinal, "k": ordinal - 1, "s": sub})
        return f"0x{value:X}"

    text = re.sub(r"\{hex:([^}]*)\}", hex_value, text)
    return text.replace("{i}", str(ordinal)).replace("{s}", str(sub))


def parse_range(text):
    first, _, last = text.partition("..")
    return int(first, 16), int(last or first, 16)


@dataclass
class Additions:
    objects: dict = field(default_factory=dict)
    dropped: set = field(default_factory=set)
    corrections: list = field(default_factory=list)  # callables applied to the built objects


def read_additions(path):
    """Profile id -> Additions."""
    profiles, current = {}, []
    headers = []
    for number, raw in enumerate(Path(path).read_text().splitlines(), 1):
        line = raw.rstrip()
        if not line.strip() or line.lstrip().startswith("#"):
            continue
        try:
            if line.startswith("["):
                current = [profiles.setdefault(i.strip(), Additions()) for i in line.strip("[]").split(",")]
                headers = []
            elif line.startswith("drop "):
                for part in line[5:].split(","):
                    low, high = parse_range(part.strip())
                    for additions in current:
                        additions.dropped.update(range(low, high + 1))
            elif line.startswith("set "):
                for additions in current:
                    additions.corrections.append(set_correction([c.strip() for c in line[4:].split("|")]))
            elif line.startswith("rename "):
                for additions in current:
                    additions.corrections.append(rename_correction([c.strip() for c in line[7:].split("|")]))
            elif line[0].isspace():
                add_sub_rows(headers, [c.strip() for c in line.split("|")])
            else:
                headers = [header for additions in current
                           for header in add_object_rows(additions.objects, [c.strip() for c in line.split("|")])]
        except (ValueError, IndexError, KeyError, TypeError) as error:
            sys.exit(f"{path}:{number}: {error}")
    for additions in profiles.values():
        for obj in additions.objects.values():
            check_object(obj)
    return profiles


SETTABLE = {"access": str, "type": str, "default": str, "allowed": str, "name": str,
            "pdo": lambda v: v == "y"}


def set_correction(columns):
    """set IIII[..JJJJ] | SS[..TT] | key=value; ...: corrects entries a source got wrong."""
    indices, subs = parse_range(columns[0]), parse_range(columns[1])
    values = {}
    for assignment in columns[2].split(";"):
        key, _, value = (part.strip() for part in assignment.partition("="))
        values["datatype" if key == "type" else key] = SETTABLE[key](value)

    def correct(objects):
        for obj in objects.values():
            if indices[0] <= obj.index <= indices[1]:
                for sub in (s for s in obj.subs if subs[0] <= s.sub <= subs[1]):
                    for key, value in values.items():
                        setattr(sub, key, value)
    return correct


def rename_correction(columns):
    """rename IIII[..JJJJ] | old | new: replaces a text in the names of objects and entries."""
    indices, old, new = parse_range(columns[0]), columns[1], columns[2]

    def correct(objects):
        for obj in objects.values():
            if indices[0] <= obj.index <= indices[1]:
                obj.name = obj.name.replace(old, new)
                for sub in obj.subs:
                    sub.name = sub.name.replace(old, new)
    return correct


def sub_from_columns(sub, columns, ordinal):
    name, datatype, access, pdo = columns[:4]
    rest = (columns[4:] + [""] * 4)[:4]
    default, low, high, allowed = (substitute(c, ordinal, sub) for c in rest)
    return Sub(sub, substitute(name, ordinal, sub), datatype, access, pdo == "y",
               default or numeric_default(datatype), low, high, allowed)


def add_object_rows(objects, columns):
    low, high = parse_range(columns[0])
    kind = columns[1]
    created = []
    for ordinal, index in enumerate(range(low, high + 1), 1):
        name = substitute(columns[2], ordinal, 0)
        obj = Obj(index, name, kind, columns[3])
        if kind == "VAR":
            obj.subs.append(sub_from_columns(0, [name] + columns[4:], ordinal))
        objects[index] = obj
        created.append((ordinal, obj))
    return created


def add_sub_rows(headers, columns):
    first, last = parse_range(columns[0])
    for ordinal, obj in headers:
        for sub in range(first, last + 1):
            obj.subs.append(sub_from_columns(sub, columns[1:], ordinal))


def check_object(obj):
    if obj.kind not in ("VAR", "ARRAY", "RECORD") or obj.category not in CATEGORIES:
        raise ValueError(f"object {obj.index:04X}: bad kind or category")
    for sub in obj.subs:
        if sub.datatype not in KNOWN_TYPES or sub.access not in ACCESS_TYPES:
            raise ValueError(f"object {obj.index:04X} sub {sub.sub}: bad data type or access")
        if bool(sub.low) != bool(sub.high):
            raise ValueError(f"object {obj.index:04X} sub {sub.sub}: give both limits or none")


# --- output ---

def device_type_object(profile_number):
    default = f"0x{profile_number:08X}"
    return Obj(0x1000, "Device type", "VAR", "mandatory",
               [Sub(0, "Device type", "UNSIGNED32", "ro", False, default, allowed="const,ro")])


def pdo_words(pdo):
    return ["y" if pdo else "n", "m"]


def limit_words(sub):
    return [sub.low, "m" if sub.low else "n", sub.high, "m" if sub.high else "n"]


def entry_fields(sub):
    """Fields 5 to 22, shared by a VAR object line and a subindex line."""
    allowed = f"d[{sub.allowed or sub.access}]"
    return (["VAR", "m", sub.datatype, "m", sub.access, allowed, "", "n", "", "n"] + limit_words(sub) +
            [sub.default, ""] + pdo_words(sub.pdo))


def write_object(obj):
    head = [f"{obj.index:04X}", "", obj.name, obj.category, ""]
    if obj.kind == "VAR":
        return [":".join(head + entry_fields(obj.subs[0]))]
    lines = [":".join(head + [obj.kind, "m"] + [""] * 16)]
    for sub in obj.subs:
        category = "mandatory" if sub.sub == 0 else obj.category
        lines.append(":".join([f"{obj.index:04X}", f"{sub.sub:02X}", sub.name, category, ""] +
                              entry_fields(sub)))
    return lines


def header_lines(profile):
    lines = [f"# {profile.comment}", "#" + "-" * 78]
    lines.append("# Generated by scripts/make_codb.py; edit scripts/codb_additions.txt or the")
    lines.append("# script, not this file.")
    for source in profile.source_files:
        lines.append(f"# Source: {source}")
    lines.append("# Fields: index:sub:name:category::objecttype:m:datatype:m:access:d[allowed]::n::n:")
    lines.append("#         low:q:high:q:default::pdo:q")
    lines.append("#" + "-" * 78)
    return lines


def build(profile, additions):
    objects = {}
    if profile.device_profile:
        objects[0x1000] = device_type_object(profile.device_profile)
    for source in profile.sources:
        for index, obj in source().items():
            # Data type definitions below 0x1000 are no objects of a device; the
            # reader would keep their entries without the object.
            if index >= 0x1000:
                objects.setdefault(index, obj)
    own = additions.get(profile.ident, Additions())
    for index in own.dropped:
        objects.pop(index, None)
    objects.update(copy.deepcopy(own.objects))
    for correct in own.corrections:
        correct(objects)
    for obj in objects.values():
        check_object(obj)
    return [objects[index] for index in sorted(objects)]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--corpus", default=str(REPO.parent / "shared" / "corpus"))
    parser.add_argument("--out", default=str(REPO / "src" / "resources" / "codb"))
    args = parser.parse_args()
    additions = read_additions(REPO / "scripts" / "codb_additions.txt")
    out = Path(args.out)
    out.mkdir(parents=True, exist_ok=True)
    for profile in profiles(Path(args.corpus) / "profiles"):
        lines = header_lines(profile)
        for obj in build(profile, additions):
            lines.extend(write_object(obj))
        (out / f"v{profile.ident}.codb").write_text("\n".join(lines) + "\n", encoding="latin-1")


# Objects that only the third and later editions of CiA 402 define.
CIA402_V3_ONLY = [(0x60A2, 0x60AB), (0x60B0, 0x60BD), (0x60D0, 0x60EE), (0x60F2, 0x60F2), (0x67FE, 0x67FE)]

# Entries of arrays whose length the device chooses are written up to this count.
ENTRY_CAP = 8
NODE_ENTRY_CAP = 127


def profiles(corpus):
    def prf(name, cap=ENTRY_CAP):
        return lambda: read_prf(corpus / f"CanFestival_DS-{name}.prf", cap)

    def heig(profile, skip=()):
        return lambda: read_yaml_profile(corpus / "heig-vd-iai_profiles.yaml", profile, skip)

    def xpd301():
        return with_categories(read_xpd(corpus / "CANopenNode_example_DS301_profile.xpd"),
                               ddl_categories(corpus / "nlsw_CANopen.301.ddl.xml"))

    def cf(name):
        return f"CanFestival_DS-{name}.prf (CanFestival objdictgen profile, LGPL-2.1-or-later)"

    heig_file = "heig-vd-iai_profiles.yaml (heig-vd-iai/canopen-stack, MIT)"
    own = "scripts/codb_additions.txt (written by the team)"
    gap = "no machine-readable object list available; see src/resources/codb/README.md"
    return [
        Profile("301", "data base for CiA 301", 0, [xpd301],
                ["CANopenNode_example_DS301_profile.xpd (CANopenNode, Apache-2.0)",
                 "nlsw_CANopen.301.ddl.xml (nl-software, EUPL-1.2): object categories", own]),
        Profile("302", "CANopen Profile data base for DS-302", 0, [prf("302", NODE_ENTRY_CAP)],
                [cf("302"), own]),
        Profile("401", "CANopen profile data base for DS-401 devices", 401, [prf("401")], [cf("401")]),
        Profile("402", "EXAMPLE DATABASE FOR DS402V2.0", 402, [heig(402, CIA402_V3_ONLY), prf("402")],
                [heig_file + ": objects of the 2.0 edition", cf("402"), own]),
        Profile("402_v3", "EXAMPLE DATABASE FOR CiA-402", 402, [heig(402)], [heig_file]),
        Profile("404", "CANopen profile data base for DS-404 devices", 404, [prf("404")], [cf("404")]),
        Profile("405", "CANopen profile data base for DS-405 devices", 405, [], [own]),
        Profile("406", "CANopen profile data base for Door Environment DS-406V3.0 devices", 406, [prf("406")],
                [cf("406")]),
        Profile("408", "CANopen profile data base for Fluid Valves DS-408 devices", 408, [prf("408")],
                [cf("408")]),
        Profile("410", "CANopen profile data base for Inclinometer DS-410 devices", 410, [prf("410")],
                [cf("410")]),
        Profile("413", "CANopen profile data base for Truck Gateway DS-413 devices", 413, [], [gap]),
        Profile("415", "CANopen profile data base for DS 415 V1.0.1 CANopen device profile for road "
                       "construction machinery", 415, [], [gap]),
        Profile("416", "CANopen example data base for DS-416", 416, [], [gap]),
        Profile("417", "CANopen profile data base for Lift Profile according to DSP417 V1.0.1 July,2003", 417,
                [], [gap]),
        Profile("418", "CANopen profile data base for Battery Modules according to DSP418 V1.0 Dec,2002", 418,
                [prf("418")], [cf("418")]),
        Profile("419", "CANopen profile data base for Battery Charger according to DSP419 V1.0 Dec,2002", 419,
                [prf("419")], [cf("419")]),
        Profile("447", "CANopen Profile data base for CiA447", 447, [], [gap]),
        Profile("454-2", "CANopen profile data base for CiA 454 devices (general objects)", 454, [], [gap]),
        Profile("454-4", "CANopen profile data base for CiA 454 devices (EBC - EnergyBus Controller)", 454, [],
                [gap]),
        Profile("454-5", "CANopen profile data base for CiA 454 devices (voltage converter)", 454, [], [gap]),
        Profile("454-6", "CANopen profile data base for CiA 454 devices (Battery Pack)", 454, [], [gap]),
        Profile("454-7", "CANopen profile data base for CiA 454 devices (motor controller unit)", 454, [],
                [gap]),
    ]


if __name__ == "__main__":
    main()
