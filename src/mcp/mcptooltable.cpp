#include "mcp/mcptooltable.h"

#include "mcp/mcpj1939tools.h"
#include "mcp/mcpobjecttools.h"
#include "mcp/mcpprofiletools.h"
#include "mcp/mcpprojecttools.h"

#include <QStringList>

// The names, descriptions and schemas are the interface an agent reads to
// decide what to call, so they stay literal and untranslated.

namespace {

QJsonObject property(const QString& type, const QString& description)
{
    return QJsonObject{{QStringLiteral("type"), type}, {QStringLiteral("description"), description}};
}

QJsonObject stringProperty(const QString& description)
{
    return property(QStringLiteral("string"), description);
}

QJsonObject integerProperty(const QString& description)
{
    return property(QStringLiteral("integer"), description);
}

QJsonObject booleanProperty(const QString& description)
{
    return property(QStringLiteral("boolean"), description);
}

QJsonObject enumProperty(const QStringList& words, const QString& description)
{
    QJsonObject result = stringProperty(description);
    result.insert(QStringLiteral("enum"), QJsonArray::fromStringList(words));
    return result;
}

QJsonObject integerArrayProperty(const QString& description)
{
    QJsonObject result = property(QStringLiteral("array"), description);
    result.insert(QStringLiteral("items"), QJsonObject{{QStringLiteral("type"), QStringLiteral("integer")}});
    return result;
}

QJsonObject merged(QJsonObject properties, const QJsonObject& more)
{
    for (auto it = more.begin(); it != more.end(); ++it)
        properties.insert(it.key(), it.value());
    return properties;
}

// A tool without required arguments has no "required" member at all.
QJsonObject inputSchema(const QJsonObject& properties = {}, const QStringList& required = {})
{
    QJsonObject schema{{QStringLiteral("type"), QStringLiteral("object")},
                       {QStringLiteral("properties"), properties}};
    if (!required.isEmpty())
        schema.insert(QStringLiteral("required"), QJsonArray::fromStringList(required));
    return schema;
}

QJsonObject pathProperty()
{
    return stringProperty(QStringLiteral("Absolute file path"));
}

QJsonObject lineProperty()
{
    return integerProperty(QStringLiteral("Line id (0-255)"));
}

QJsonObject indexProperty()
{
    return integerProperty(QStringLiteral("Object dictionary index, decimal (e.g. 24641 for 0x6041)"));
}

QJsonObject dataTypeProperty()
{
    return integerProperty(QStringLiteral("CANopen datatype object index, decimal (e.g. 5 for UNSIGNED8)"));
}

QJsonObject descriptionProperty()
{
    return stringProperty(QStringLiteral("Descriptive text (optional)"));
}

QJsonObject optionalDefaultValueProperty()
{
    return stringProperty(QStringLiteral("Default value, e.g. \"0x0\" (optional)"));
}

QJsonObject profileProperty()
{
    return stringProperty(
        QStringLiteral("Profile id as returned by list_profiles, e.g. \"402\", \"402_v3\" or \"454-2\""));
}

QStringList directionWords()
{
    return {QStringLiteral("Transmit"), QStringLiteral("Receive"), QStringLiteral("Invalid")};
}

QJsonObject directionProperty()
{
    return enumProperty(
        directionWords(),
        QStringLiteral("Part of the identity key - the same number can exist as both Transmit and Receive"));
}

QJsonObject directionFilterProperty()
{
    return enumProperty(directionWords(), QStringLiteral("Filter by direction (omit for both)"));
}

QJsonObject cycleTimeProperty()
{
    return integerProperty(QStringLiteral("Cyclic transmission time in ms, 0 = acyclic (optional)"));
}

QJsonObject inhibitTimeProperty()
{
    return integerProperty(QStringLiteral("Inhibit time in ms (optional)"));
}

// Layout of a signal inside its frame, shared by SPNs and data elements.
QJsonObject signalLayoutProperties(const QString& positionDescription)
{
    return QJsonObject{
        {QStringLiteral("description"), descriptionProperty()},
        {QStringLiteral("defaultValue"), optionalDefaultValueProperty()},
        {QStringLiteral("pos"), integerProperty(positionDescription)},
        {QStringLiteral("bitSize"),
         integerProperty(QStringLiteral("Bit length within the frame (optional)"))},
        {QStringLiteral("bitPosition"),
         integerProperty(QStringLiteral("Bit offset within the frame (optional)"))},
        {QStringLiteral("varname"),
         stringProperty(QStringLiteral("Mapped application variable name (optional)"))},
    };
}

QJsonObject lineIndex()
{
    return QJsonObject{{QStringLiteral("line"), lineProperty()}, {QStringLiteral("index"), indexProperty()}};
}

QJsonObject lineIndexSub()
{
    return merged(lineIndex(),
                  {{QStringLiteral("sub"), integerProperty(QStringLiteral("Subindex, decimal"))}});
}

QJsonObject linePgnDirection()
{
    return QJsonObject{{QStringLiteral("line"), lineProperty()},
                       {QStringLiteral("pgn"), integerProperty(QStringLiteral("PGN number, decimal"))},
                       {QStringLiteral("direction"), directionProperty()}};
}

QJsonObject linePgnDirectionSpn()
{
    return merged(linePgnDirection(),
                  {{QStringLiteral("spn"), integerProperty(QStringLiteral("SPN number, decimal"))}});
}

QJsonObject lineCanIdDirection()
{
    return QJsonObject{{QStringLiteral("line"), lineProperty()},
                       {QStringLiteral("canId"), integerProperty(QStringLiteral("Raw CAN-ID, decimal"))},
                       {QStringLiteral("direction"), directionProperty()}};
}

QJsonObject lineCanIdDirectionNumber()
{
    return merged(lineCanIdDirection(),
                  {{QStringLiteral("number"),
                    integerProperty(QStringLiteral("Data element number within this CAN-ID, decimal"))}});
}

QList<MCPTool> projectTools()
{
    const QJsonObject path{{QStringLiteral("path"), pathProperty()}};
    const QJsonObject generateProperties{
        {QStringLiteral("disableCheck"),
         booleanProperty(QStringLiteral("Skip model consistency check (default: false)"))},
        {QStringLiteral("outputPath"),
         stringProperty(QStringLiteral("Absolute directory to write generated files into (default: the open "
                                       "project's own directory)"))},
    };
    const QJsonObject line{{QStringLiteral("line"), lineProperty()}};
    return {
        {QStringLiteral("open_project"), QStringLiteral("Open a .trwp project file"),
         inputSchema(path, {QStringLiteral("path")}), &MCPProjectTools::openProject},
        {QStringLiteral("import_file"),
         QStringLiteral(
             "Import a file into the currently open project. Format is auto-detected: .csv, .eds, .dcf, "
             "a .txt file whose name contains \"doc\" (text documentation), or .trwp (merges "
             "matching-line-type entities from another native project). XDD/DBC/CODB/J1939-XLSX import "
             "exist in the source tree but are not compiled into this build (see "
             "trw_cli/MCP_PLAN.md Phase 6)."),
         inputSchema(path, {QStringLiteral("path")}), &MCPProjectTools::importFile},
        {QStringLiteral("generate"),
         QStringLiteral(
             "Run the generator pipeline on the currently open project - always generates every output "
             "applicable to the project's line type(s), there is no per-format selection."),
         inputSchema(generateProperties), &MCPProjectTools::generate},
        {QStringLiteral("save_project"), QStringLiteral("Save the currently open project to disk"),
         inputSchema(), &MCPProjectTools::saveProject},
        {QStringLiteral("check_model"),
         QStringLiteral(
             "Run the model consistency check on the currently open project, without generating output"),
         inputSchema(), &MCPProjectTools::checkModel},
        {QStringLiteral("list_lines"),
         QStringLiteral("List the CAN lines in the currently open project and their protocol type code "
                        "(1=CANopen, 2=J1939, 4=RAW-CAN, other values are combined types)"),
         inputSchema(), &MCPProjectTools::listLines},
        {QStringLiteral("get_line"), QStringLiteral("Get details of a single line"),
         inputSchema(line, {QStringLiteral("line")}), &MCPProjectTools::getLine},
    };
}

QList<MCPTool> dictionaryReadTools()
{
    const QJsonObject findProperties =
        merged({{QStringLiteral("line"), lineProperty()}},
               {{QStringLiteral("globPattern"),
                 stringProperty(QStringLiteral("Glob pattern matched against the complete index name, "
                                               "case-insensitively. Wrap it in * to search "
                                               "for a word anywhere in the name: \"*controlword*\". "
                                               "\"control*\" matches a prefix, \"?\" a single "
                                               "character."))}});
    return {
        {QStringLiteral("list_indices"),
         QStringLiteral("List the object dictionary indices defined on a line"),
         inputSchema({{QStringLiteral("line"), lineProperty()}}, {QStringLiteral("line")}),
         &MCPObjectTools::listIndices},
        {QStringLiteral("get_index"),
         QStringLiteral("Get an object dictionary index, including its subindices, for a line"),
         inputSchema(lineIndex(), {QStringLiteral("line"), QStringLiteral("index")}),
         &MCPObjectTools::getIndex},
        {QStringLiteral("get_subindex"),
         QStringLiteral("Get a single subindex of an object dictionary index for a line"),
         inputSchema(lineIndexSub(),
                     {QStringLiteral("line"), QStringLiteral("index"), QStringLiteral("sub")}),
         &MCPObjectTools::getSubindex},
        {QStringLiteral("find_indices"),
         QStringLiteral(
             "Find object dictionary indices on a line by name, using a glob pattern. The pattern is "
             "matched against the complete index name and is case-insensitive, so \"*controlword*\" "
             "finds every name containing that word. Returns the matching indices in the same form as "
             "list_indices."),
         inputSchema(findProperties, {QStringLiteral("line"), QStringLiteral("globPattern")}),
         &MCPObjectTools::findIndices},
    };
}

QList<MCPTool> lineEditTools()
{
    const QJsonObject addLineProperties{
        {QStringLiteral("line"), lineProperty()},
        {QStringLiteral("name"), stringProperty(QStringLiteral("Line name (optional)"))},
        {QStringLiteral("isMaster"),
         booleanProperty(QStringLiteral("Line acts as NMT master (default: false)"))},
        {QStringLiteral("lineType"),
         enumProperty(
             {QStringLiteral("CANopen"), QStringLiteral("J1939"), QStringLiteral("RawCAN"),
              QStringLiteral("CANopen+J1939"), QStringLiteral("CANopen+RawCAN"),
              QStringLiteral("J1939+RawCAN")},
             QStringLiteral("Protocol(s) for this line's line. Required when running as CAN Tarnwick "
                            "(supports multiple protocols); defaults to the build's single supported "
                            "protocol otherwise (CANopen for TRW, J1939 for NLW)."))},
    };
    return {
        {QStringLiteral("add_line"),
         QStringLiteral(
             "Add a new line to the currently open project and set its line type. Fails if the line id "
             "already exists, or if lineType isn't supported by this build."),
         inputSchema(addLineProperties, {QStringLiteral("line")}), &MCPProjectTools::addLine},
        {QStringLiteral("delete_line"),
         QStringLiteral(
             "Delete a line and all its object dictionary entries from the currently open project."),
         inputSchema({{QStringLiteral("line"), lineProperty()}}, {QStringLiteral("line")}),
         &MCPProjectTools::deleteLine},
    };
}

QList<MCPTool> dictionaryEditTools()
{
    const QJsonObject addIndexProperties = merged(
        lineIndex(),
        {
            {QStringLiteral("name"), stringProperty(QStringLiteral("Index name"))},
            {QStringLiteral("objectType"), enumProperty({QStringLiteral("Variable"), QStringLiteral("Array"),
                                                         QStringLiteral("Record"), QStringLiteral("Domain")},
                                                        QStringLiteral("CANopen object code"))},
            {QStringLiteral("dataType"), dataTypeProperty()},
            {QStringLiteral("description"), descriptionProperty()},
            {QStringLiteral("category"),
             enumProperty(
                 {QStringLiteral("Mandatory"), QStringLiteral("Optional"), QStringLiteral("Conditional")},
                 QStringLiteral("Default: Optional"))},
        });
    const QJsonObject addSubindexProperties = merged(
        lineIndexSub(),
        {
            {QStringLiteral("name"), stringProperty(QStringLiteral("Subindex name"))},
            {QStringLiteral("dataType"), dataTypeProperty()},
            {QStringLiteral("accessType"),
             stringProperty(QStringLiteral("e.g. \"ro\", \"rw\", \"wo\", \"const\" (default: \"ro\")"))},
            {QStringLiteral("defaultValue"), optionalDefaultValueProperty()},
            {QStringLiteral("size"),
             integerProperty(QStringLiteral("Size in bytes, only relevant for strings/domain (optional)"))},
        });
    const QJsonObject setValueProperties =
        merged(lineIndexSub(), {{QStringLiteral("defaultValue"),
                                 stringProperty(QStringLiteral("New default value, e.g. \"0x0\""))}});
    const QJsonObject setNameProperties =
        merged(lineIndex(), {{QStringLiteral("name"), stringProperty(QStringLiteral("New index name"))}});
    const QJsonObject copyProperties{
        {QStringLiteral("srcLine"), integerProperty(QStringLiteral("Source line id"))},
        {QStringLiteral("srcIndex"), integerProperty(QStringLiteral("Source index, decimal"))},
        {QStringLiteral("destLine"), integerProperty(QStringLiteral("Destination line id"))},
        {QStringLiteral("destIndex"),
         integerProperty(
             QStringLiteral("Destination index, decimal. Any existing index there is overwritten."))},
    };
    const QStringList lineIndexKeys{QStringLiteral("line"), QStringLiteral("index")};
    const QStringList lineIndexSubKeys = lineIndexKeys + QStringList{QStringLiteral("sub")};
    return {
        {QStringLiteral("add_index"),
         QStringLiteral(
             "Add a new object dictionary index to a line. Fails if the index already exists on that "
             "line - use delete_index first to replace it."),
         inputSchema(addIndexProperties,
                     lineIndexKeys + QStringList{QStringLiteral("name"), QStringLiteral("objectType"),
                                                 QStringLiteral("dataType")}),
         &MCPObjectTools::addIndex},
        {QStringLiteral("delete_index"),
         QStringLiteral("Delete an object dictionary index and all its subindices from a line."),
         inputSchema(lineIndex(), lineIndexKeys), &MCPObjectTools::deleteIndex},
        {QStringLiteral("add_subindex"),
         QStringLiteral(
             "Add a new subindex to an existing object dictionary index. Fails if the index doesn't "
             "exist yet, or the subindex already exists."),
         inputSchema(addSubindexProperties,
                     lineIndexSubKeys + QStringList{QStringLiteral("name"), QStringLiteral("dataType")}),
         &MCPObjectTools::addSubindex},
        {QStringLiteral("delete_subindex"),
         QStringLiteral("Delete a single subindex from an object dictionary index."),
         inputSchema(lineIndexSub(), lineIndexSubKeys), &MCPObjectTools::deleteSubindex},
        {QStringLiteral("set_subindex_value"),
         QStringLiteral("Change the default value of an existing subindex."),
         inputSchema(setValueProperties, lineIndexSubKeys + QStringList{QStringLiteral("defaultValue")}),
         &MCPObjectTools::setSubindexValue},
        {QStringLiteral("set_index_name"), QStringLiteral("Rename an existing object dictionary index."),
         inputSchema(setNameProperties, lineIndexKeys + QStringList{QStringLiteral("name")}),
         &MCPObjectTools::setIndexName},
        {QStringLiteral("copy_index"),
         QStringLiteral(
             "Copy an object dictionary index (and its subindices) from one line/index location to "
             "another within the currently open project. Overwrites any existing index at the "
             "destination."),
         inputSchema(copyProperties, {QStringLiteral("srcLine"), QStringLiteral("srcIndex"),
                                      QStringLiteral("destLine"), QStringLiteral("destIndex")}),
         &MCPObjectTools::copyIndex},
    };
}

QList<MCPTool> profileTools()
{
    const QJsonObject profile{{QStringLiteral("profile"), profileProperty()}};
    const QJsonObject importProperties = merged(
        profile, {{QStringLiteral("line"), lineProperty()},
                  {QStringLiteral("indices"),
                   integerArrayProperty(QStringLiteral("Indices to copy from the profile, decimal. Indices "
                                                       "that already exist on the line are skipped."))}});
    return {
        // The blank at the end of this description belongs to it.
        {QStringLiteral("list_profiles"),
         QStringLiteral(
             "List the indices of the built-in reference profile databases. These are read-only "
             "internal profile databases shipped with this tool - they are not projects, cannot be "
             "opened, edited or saved, and are addressed by their id only. "),
         inputSchema(), &MCPProfileTools::listProfiles},
        {QStringLiteral("list_profile_indices"),
         QStringLiteral(
             "List the object dictionary indices a reference profile database defines. Read-only "
             "lookup in an internal profile database - it does not touch the currently open project."),
         inputSchema(profile, {QStringLiteral("profile")}), &MCPProfileTools::listProfileIndices},
        {QStringLiteral("get_profile_index"),
         QStringLiteral(
             "Get one object dictionary index of a reference profile database, including its "
             "subindices. Read-only lookup in an internal profile database - it does not touch the "
             "currently open project."),
         inputSchema(merged(profile, {{QStringLiteral("index"), indexProperty()}}),
                     {QStringLiteral("profile"), QStringLiteral("index")}),
         &MCPProfileTools::getProfileIndex},
        {QStringLiteral("import_profile_indices"),
         QStringLiteral(
             "Copy objects from a reference profile database into a CANopen line of the currently open "
             "project. The objects keep the definitions the profile provides; indices that already "
             "exist on the target line are skipped, never overwritten."),
         inputSchema(importProperties,
                     {QStringLiteral("profile"), QStringLiteral("line"), QStringLiteral("indices")}),
         &MCPProfileTools::importProfileIndices},
    };
}

QList<MCPTool> j1939Tools()
{
    const QJsonObject listProperties{
        {QStringLiteral("line"), lineProperty()},
        {QStringLiteral("direction"), directionFilterProperty()},
        {QStringLiteral("excludeSafety"),
         booleanProperty(QStringLiteral("Exclude safety-relevant PGNs (default: false)"))},
    };
    const QJsonObject addPgnProperties = merged(
        linePgnDirection(),
        {
            {QStringLiteral("name"), stringProperty(QStringLiteral("PGN name"))},
            {QStringLiteral("description"), descriptionProperty()},
            {QStringLiteral("priority"), integerProperty(QStringLiteral("J1939 priority, 0-7 (optional)"))},
            {QStringLiteral("cycleTimeMs"), cycleTimeProperty()},
            {QStringLiteral("inhibitTimeMs"), inhibitTimeProperty()},
        });
    const QJsonObject addSpnProperties = merged(
        merged(
            linePgnDirectionSpn(),
            {{QStringLiteral("name"), stringProperty(QStringLiteral("SPN name"))},
             {QStringLiteral("dataType"), dataTypeProperty()},
             {QStringLiteral("slotDf"),
              integerProperty(QStringLiteral("NMEA2000/J1939 slot or dataformat code, opaque (optional)"))}}),
        signalLayoutProperties(QStringLiteral("Display order within the PGN (optional)")));
    const QStringList pgnKeys{QStringLiteral("line"), QStringLiteral("pgn"), QStringLiteral("direction")};
    const QStringList spnKeys = pgnKeys + QStringList{QStringLiteral("spn")};
    return {
        {QStringLiteral("list_pgns"),
         QStringLiteral("List the J1939 PGNs defined on a line. Only valid for J1939 lines."),
         inputSchema(listProperties, {QStringLiteral("line")}), &MCPJ1939Tools::listPgns},
        {QStringLiteral("get_pgn"),
         QStringLiteral("Get a J1939 PGN, including its SPNs, for a line. Only valid for J1939 lines."),
         inputSchema(linePgnDirection(), pgnKeys), &MCPJ1939Tools::getPgn},
        {QStringLiteral("add_pgn"),
         QStringLiteral(
             "Add a new J1939 PGN to a line. Fails if the (pgn, direction) already exists, or the line "
             "isn't J1939. The line must already exist."),
         inputSchema(addPgnProperties, pgnKeys + QStringList{QStringLiteral("name")}),
         &MCPJ1939Tools::addPgn},
        {QStringLiteral("delete_pgn"), QStringLiteral("Delete a J1939 PGN and all its SPNs from a line."),
         inputSchema(linePgnDirection(), pgnKeys), &MCPJ1939Tools::deletePgn},
        {QStringLiteral("list_spns"),
         QStringLiteral("List the SPNs defined on a PGN. Only valid for J1939 lines."),
         inputSchema(linePgnDirection(), pgnKeys), &MCPJ1939Tools::listSpns},
        {QStringLiteral("get_spn"), QStringLiteral("Get a single SPN of a PGN. Only valid for J1939 lines."),
         inputSchema(linePgnDirectionSpn(), spnKeys), &MCPJ1939Tools::getSpn},
        {QStringLiteral("add_spn"),
         QStringLiteral(
             "Add a new SPN to an existing PGN. Fails if the PGN doesn't exist yet, or the SPN already "
             "exists."),
         inputSchema(addSpnProperties,
                     spnKeys + QStringList{QStringLiteral("name"), QStringLiteral("dataType")}),
         &MCPJ1939Tools::addSpn},
        {QStringLiteral("delete_spn"), QStringLiteral("Delete a single SPN from a PGN."),
         inputSchema(linePgnDirectionSpn(), spnKeys), &MCPJ1939Tools::deleteSpn},
    };
}

QList<MCPTool> rawCanTools()
{
    const QJsonObject listProperties{{QStringLiteral("line"), lineProperty()},
                                     {QStringLiteral("direction"), directionFilterProperty()}};
    const QJsonObject addCanIdProperties = merged(
        lineCanIdDirection(), {
                                  {QStringLiteral("name"), stringProperty(QStringLiteral("CAN-ID name"))},
                                  {QStringLiteral("description"), descriptionProperty()},
                                  {QStringLiteral("cycleTimeMs"), cycleTimeProperty()},
                                  {QStringLiteral("inhibitTimeMs"), inhibitTimeProperty()},
                              });
    const QJsonObject addElementProperties =
        merged(merged(lineCanIdDirectionNumber(),
                      {{QStringLiteral("name"), stringProperty(QStringLiteral("Data element name"))},
                       {QStringLiteral("dataType"), dataTypeProperty()}}),
               signalLayoutProperties(QStringLiteral("Display order within the CAN-ID (optional)")));
    const QStringList canIdKeys{QStringLiteral("line"), QStringLiteral("canId"), QStringLiteral("direction")};
    const QStringList elementKeys = canIdKeys + QStringList{QStringLiteral("number")};
    return {
        {QStringLiteral("list_can_ids"),
         QStringLiteral("List the raw CAN-IDs defined on a line. Only valid for RAW-CAN-compatible lines."),
         inputSchema(listProperties, {QStringLiteral("line")}), &MCPJ1939Tools::listCanIds},
        {QStringLiteral("get_can_id"),
         QStringLiteral("Get a raw CAN-ID, including its data elements, for a line. Only valid for "
                        "RAW-CAN-compatible lines."),
         inputSchema(lineCanIdDirection(), canIdKeys), &MCPJ1939Tools::getCanId},
        {QStringLiteral("add_can_id"),
         QStringLiteral(
             "Add a new raw CAN-ID to a line. Fails if the (canId, direction) already exists, or the "
             "line isn't RAW-CAN-compatible. The line must already exist."),
         inputSchema(addCanIdProperties, canIdKeys + QStringList{QStringLiteral("name")}),
         &MCPJ1939Tools::addCanId},
        {QStringLiteral("delete_can_id"),
         QStringLiteral("Delete a raw CAN-ID and all its data elements from a line."),
         inputSchema(lineCanIdDirection(), canIdKeys), &MCPJ1939Tools::deleteCanId},
        {QStringLiteral("add_data_element"),
         QStringLiteral(
             "Add a new data element to an existing raw CAN-ID. Fails if the CAN-ID doesn't exist yet, "
             "or the data element number already exists."),
         inputSchema(addElementProperties,
                     elementKeys + QStringList{QStringLiteral("name"), QStringLiteral("dataType")}),
         &MCPJ1939Tools::addDataElement},
        {QStringLiteral("delete_data_element"),
         QStringLiteral("Delete a single data element from a raw CAN-ID."),
         inputSchema(lineCanIdDirectionNumber(), elementKeys), &MCPJ1939Tools::deleteDataElement},
    };
}

} // namespace

QList<MCPTool> MCPToolTable::tools()
{
    return projectTools() + dictionaryReadTools() + lineEditTools() + dictionaryEditTools() + profileTools() +
           j1939Tools() + rawCanTools();
}

QJsonArray MCPToolTable::toolList()
{
    QJsonArray list;
    for (const MCPTool& tool : tools()) {
        list.append(QJsonObject{{QStringLiteral("name"), tool.name},
                                {QStringLiteral("description"), tool.description},
                                {QStringLiteral("inputSchema"), tool.inputSchema}});
    }
    return list;
}

MCPTool MCPToolTable::find(const QString& name)
{
    for (const MCPTool& tool : tools()) {
        if (tool.name == name)
            return tool;
    }
    return {};
}
