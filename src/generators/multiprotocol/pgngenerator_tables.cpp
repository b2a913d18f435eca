// gen_pgn.c from the mapping definitions on: the mapping tables of PGNs and
// raw CAN identifiers, the PGN tables, the address claim, the line
// configurations and j1939StackInit.

#include "generators/multiprotocol/pgngenerator.h"

#include "canopenlib/cohelper.h"
#include "database/linetypes.h"
#include "generators/commongeneratorhelper.h"
#include "generators/commongeneratorhelperv4.h"

#include <memory>

namespace {

constexpr quint32 addressClaimPgn = 60928;
// The service code of J1939 for the init structure version.
constexpr int j1939Service = 3;

// The short type word that names the managed array of a variable: the
// narrow widths live in the next wider array.
QString arrayWord(int dataType)
{
    const QString word = COHelper::index2DataTypeShortString(quint16(dataType)).toLower();
    static const QHash<QString, QString> wider = {
        {QStringLiteral("b"), QStringLiteral("u8")},    {QStringLiteral("u2"), QStringLiteral("u8")},
        {QStringLiteral("u3"), QStringLiteral("u8")},   {QStringLiteral("u4"), QStringLiteral("u8")},
        {QStringLiteral("u5"), QStringLiteral("u8")},   {QStringLiteral("u6"), QStringLiteral("u8")},
        {QStringLiteral("u7"), QStringLiteral("u8")},   {QStringLiteral("u9"), QStringLiteral("u16")},
        {QStringLiteral("u10"), QStringLiteral("u16")}, {QStringLiteral("u11"), QStringLiteral("u16")},
        {QStringLiteral("u12"), QStringLiteral("u16")}, {QStringLiteral("u13"), QStringLiteral("u16")},
        {QStringLiteral("u14"), QStringLiteral("u16")}, {QStringLiteral("u15"), QStringLiteral("u16")},
        {QStringLiteral("u18"), QStringLiteral("u32")}, {QStringLiteral("u19"), QStringLiteral("u32")},
        {QStringLiteral("u21"), QStringLiteral("u32")}, {QStringLiteral("u24"), QStringLiteral("u32")},
        {QStringLiteral("u29"), QStringLiteral("u32")}, {QStringLiteral("u40"), QStringLiteral("u64")},
        {QStringLiteral("u48"), QStringLiteral("u64")}, {QStringLiteral("u56"), QStringLiteral("u64")},
        {QStringLiteral("u64"), QStringLiteral("u64")},
    };
    return wider.value(word, word);
}

// The type tag of a mapping row: widths up to 7 bits keep their own tag,
// the others take that of the C type that holds them.
QString genericTag(int dataType)
{
    QString word = COHelper::index2DataTypeShortString(quint16(dataType)).toLower();
    static const QHash<QString, QString> tags = {
        {QStringLiteral("b"), QStringLiteral("u1")},    {QStringLiteral("u9"), QStringLiteral("u16")},
        {QStringLiteral("u10"), QStringLiteral("u16")}, {QStringLiteral("u11"), QStringLiteral("u16")},
        {QStringLiteral("u12"), QStringLiteral("u16")}, {QStringLiteral("u13"), QStringLiteral("u16")},
        {QStringLiteral("u14"), QStringLiteral("u16")}, {QStringLiteral("u15"), QStringLiteral("u16")},
        {QStringLiteral("u18"), QStringLiteral("u32")}, {QStringLiteral("u19"), QStringLiteral("u32")},
        {QStringLiteral("u21"), QStringLiteral("u32")}, {QStringLiteral("u24"), QStringLiteral("u32")},
        {QStringLiteral("u29"), QStringLiteral("u32")},
    };
    return QStringLiteral("CORE_DTYPE_") + tags.value(word, word).toUpper();
}

// Strings and non-numeric data are as long as the SPN says; numbers as their type.
QPair<int, QString> sizeAndTag(int dataType, quint16 bitsize)
{
    switch (dataType) {
    case 121:
        return {bitsize, QStringLiteral("CORE_DTYPE_STRING_ASTERIKS")};
    case 120:
        return {bitsize, QStringLiteral("CORE_DTYPE_STRING_NULL")};
    case 10:
    case 15:
        return {bitsize, QStringLiteral("CORE_DTYPE_NON_NUMERIC")};
    default:
        return {COHelper::getDataLengthBits(CAN::CANopenDataType(dataType)), genericTag(dataType)};
    }
}

// The V4 pointer tables hold byte pointers.
QString pointerReference(const QString& reference, int dataType)
{
    const bool byteSized = reference.contains(QLatin1String("_u8")) || dataType == CAN::Unsigned8;
    return byteSized ? reference : QStringLiteral("(UNSIGNED8 *)") + reference;
}

QString hex4(quint32 number)
{
    return QStringLiteral("0x%1").arg(number, 4, 16, QLatin1Char('0'));
}

} // namespace

QString PGNGenerator::variableReference(quint64 key, int dataType, int implementation,
                                        const QString& varname) const
{
    if (implementation != 0) {
        if (varname.contains(QLatin1Char('&')) || varname.contains(QLatin1Char('*')))
            return varname;
        return QLatin1Char('&') + varname;
    }
    const QString word = arrayWord(dataType);
    if (word.isEmpty())
        return QStringLiteral("NULL");
    return QStringLiteral("&mv_%1[%2]").arg(word).arg(std::max(0, managedIndex(key)));
}

QString PGNGenerator::managedName(quint64 key, int dataType) const
{
    const QString word = arrayWord(dataType);
    const int index = managedIndex(key);
    if (word.isEmpty() || index < 0)
        return QString();
    return QStringLiteral("mv_%1_%2").arg(word).arg(index);
}

void PGNGenerator::writeMappingDefinitions(SectionStream& out)
{
    out << "\n/*  PGN Mapping Definitions */\n";
    for (const LinePlan& plan : std::as_const(m_plans)) {
        if (plan.j1939()) {
            for (const PgnEntry& entry : plan.receivePgns)
                writePgnMapping(out, plan, entry, false);
            for (const PgnEntry& entry : plan.transmitPgns)
                writePgnMapping(out, plan, entry, true);
        }
        if (Line::carriesRawCan(plan.type)) {
            for (const CanIdEntry& entry : plan.receiveIds)
                writeCanIdMapping(out, plan, entry, false);
            for (const CanIdEntry& entry : plan.transmitIds)
                writeCanIdMapping(out, plan, entry, true);
        }
    }
}

void PGNGenerator::writePgnMapping(SectionStream& out, const LinePlan& plan, const PgnEntry& entry,
                                   bool transmit)
{
    const quint32 number = entry.pgn.number;
    const QString name = plan.prefix +
                         (transmit ? QStringLiteral("tx_mapping_") : QStringLiteral("rx_mapping_")) +
                         QString::number(number);
    // The V4 stack brings the description of the NAME itself; only the
    // variables of the address claim come from here.
    const bool onlyVariables = coreForm() && number == addressClaimPgn;
    out << "/* PGN " << number << "/" << hex4(number) << " " << entry.pgn.name << " */\n";
    if (onlyVariables) {
        QStringList references;
        for (const ObjectDataBase::SPN& spn : entry.spns)
            references << pointerReference(variableReference(managedKey(plan.line, number, spn.spnnumber),
                                                             spn.datatype, spn.implementation, spn.varname),
                                           spn.datatype);
        writePointerTable(out, name + QStringLiteral("_data"), references);
        return;
    }
    out << "static ";
    if (!m_dynamic)
        out << " CO_CONST ";
    out << "J1939_MAPPING_T " << name << "[] = {\n";
    QStringList references;
    bool first = true;
    for (const ObjectDataBase::SPN& spn : entry.spns) {
        if (!first)
            out << ",\n";
        first = false;
        const QString reference = variableReference(managedKey(plan.line, number, spn.spnnumber),
                                                    spn.datatype, spn.implementation, spn.varname);
        const auto [size, tag] = sizeAndTag(spn.datatype, spn.bitsize);
        if (coreForm())
            out << "\t{ " << spn.spnnumber << ", " << spn.bitposition << "u, " << size << "u, " << tag;
        else
            out << "\t{ " << reference << ", " << size << "u, " << spn.spnnumber << "u, " << tag;
        if (m_dynamic)
            out << ", 0u";
        out << " }";
        if (!spn.name.isEmpty())
            out << "\t/* " << spn.name << " */";
        references << pointerReference(reference, spn.datatype);
    }
    if (!first)
        out << "\n";
    out << "};\n";
    out << "\n";
    if (coreForm() && !references.isEmpty())
        writePointerTable(out, name + QStringLiteral("_data"), references);
}

void PGNGenerator::writeCanIdMapping(SectionStream& out, const LinePlan& plan, const CanIdEntry& entry,
                                     bool transmit)
{
    const quint32 id = entry.canId.id;
    const QString name = plan.prefix +
                         (transmit ? QStringLiteral("tx_mapping_") : QStringLiteral("rx_mapping_")) +
                         QString::number(id);
    out << "/* canid " << id << "/" << hex4(id) << " " << entry.canId.name << " */\n";
    out << "static "
        << " CO_CONST "
        << "CORE_MAPPING_T " << name << "[] = {\n";
    QStringList references;
    bool first = true;
    for (const ObjectDataBase::DataElement& element : entry.elements) {
        if (!first)
            out << ",\n";
        first = false;
        const QString reference =
            variableReference(managedKey(plan.line, id, element.number), element.datatype,
                              element.implementation, element.varname);
        const int size = COHelper::getDataLengthBits(CAN::CANopenDataType(element.datatype));
        const QString tag = sizeAndTag(element.datatype, element.bitsize).second;
        if (coreForm())
            out << "\t{ " << element.number << ", " << element.bitpos << "u, " << size << "u, " << tag
                << " }";
        else
            out << "\t{ " << reference << ", " << size << "u, " << tag << " }";
        if (!element.name.isEmpty())
            out << "\t/* " << element.name << " */";
        references << pointerReference(reference, element.datatype);
    }
    if (!first)
        out << "\n";
    out << "};\n";
    if (coreForm() && !references.isEmpty())
        writePointerTable(out, name + QStringLiteral("_data"), references);
}

// The V4 stack finds the variables of a mapping table in a table of its own.
void PGNGenerator::writePointerTable(SectionStream& out, const QString& name, const QStringList& references)
{
    out << "static UNSIGNED8 * " << name << "[] = {\n";
    bool first = true;
    for (const QString& reference : references) {
        if (!first)
            out << ",";
        first = false;
        out << "\t" << reference;
    }
    out << "};\n";
}

void PGNGenerator::writeTransmitTables(SectionStream& out)
{
    for (const LinePlan& plan : std::as_const(m_plans)) {
        if (plan.j1939() && hasAnyTransmitTable(plan))
            writePgnTable(out, plan, true);
    }
}

void PGNGenerator::writeReceiveTables(SectionStream& out)
{
    for (const LinePlan& plan : std::as_const(m_plans)) {
        if (plan.j1939() && !plan.receivePgns.isEmpty())
            writePgnTable(out, plan, false);
    }
}

void PGNGenerator::writePgnTable(SectionStream& out, const LinePlan& plan, bool transmit)
{
    if (transmit) {
        out << "/*  TX PGN definitions */\n";
        out << "static CO_CONST J1939_PGN_CONFIG_T\tjPgnTransmitConfig" << plan.suffix;
        out << (m_multiLine ? QStringLiteral("[%1]").arg(transmitCount(plan))
                            : QStringLiteral("[J1939_TRANSMIT_PGN_CNT]"));
        out << " = {\n";
    } else {
        out << "/*  RX PGN definitions */\n";
        out << "static CO_CONST J1939_PGN_CONFIG_T\tjPgnReceiveConfig" << plan.suffix;
        if (m_multiLine)
            out << "[" << receiveCount(plan) << "]";
        else
            out << "[J1939_RECEIVE_PGN_CNT]";
        out << "= {\n";
    }
    QList<const PgnEntry*> rows;
    for (const PgnEntry& entry : transmit ? plan.transmitPgns : plan.receivePgns) {
        if (entry.pgn.number != addressClaimPgn)
            rows << &entry;
    }
    for (qsizetype i = 0; i < rows.size(); ++i) {
        out << "    {\n";
        writePgnRow(out, plan, *rows.at(i), transmit);
        out << (i + 1 < rows.size() ? "    },\n" : "    }\n");
    }
    out << "};\n";
}

void PGNGenerator::writePgnRow(SectionStream& out, const LinePlan& plan, const PgnEntry& entry, bool transmit)
{
    const ObjectDataBase::PGN& pgn = entry.pgn;
    const QString mapping = plan.prefix +
                            (transmit ? QStringLiteral("tx_mapping_") : QStringLiteral("rx_mapping_")) +
                            QString::number(pgn.number);
    out << "\t" << pgn.number << "u, /* PGN number */ \n";
    out << "\t&" << mapping << "[0], \n";
    if (!coreForm()) {
        out << "\t" << pgn.cycletime_ms << "u, /* cycletime in ms */ \n";
        out << "\t" << pgn.inhibittime_ms << "u, /* inhibit time in ms */ \n";
        out << "\t" << pgn.priority << "u, /* priority */ \n";
        out << "\t" << pgn.mappingcount << "u" << (m_canFd ? "," : "") << " /* number of mappings */\n";
        if (m_canFd)
            writeFdLines(out, pgn);
        return;
    }
    if (entry.spns.isEmpty())
        out << "\tNULL, /* no mappings */\n";
    else
        out << "\t&" << mapping << "_data[0], \n";
    out << "\t" << pgn.mappingcount << "u,"
        << " /* number of mappings */\n";
    out << (transmit ? "#ifdef J1939_MULTI_SRC_ADDR\n" : "#ifdef J1939_MULTI_SRC_ADDR \n");
    out << ((!transmit && pgn.multisourceaddress) ? "\t1u,\n" : "\t0u,\n");
    out << "#endif /* J1939_MULTI_SRC_ADDR */\n";
    out << "\t" << pgn.cycletime_ms << "u, /* cycletime in ms */ \n";
    out << "\t" << pgn.inhibittime_ms << "u, /* inhibit time in ms */ \n";
    out << "\t" << pgn.priority << (m_canFd ? "u, /* priority */ \n" : "u /* priority */ \n");
    if (m_canFd)
        writeFdLines(out, pgn);
}

// The trailer of a CAN FD message and the assurance data that it carries.
void PGNGenerator::writeFdLines(SectionStream& out, const ObjectDataBase::PGN& pgn)
{
    static const char* const trailers[] = {
        "\tJ1939_ATF_SAE_NONE,\n",
        "\tJ1939_ATF_MANU_CYBERSEC_32,\n",
        "\tJ1939_ATF_MANU_CYBERSEC_64,\n",
        "\tJ1939_ATF_MANU_FUNC_SAFETY_32,\n",
        "\tJ1939_ATF_MANU_FUNC_SAFETY_64,\n",
        "\tJ1939_ATF_MANU_FUNC_CYB_SAFE_32,\n",
    };
    static const char* const assurances[] = {
        "\tJ1939_ADT_NONE,\n",
        "\tJ1939_ADT_MANU_CYBERSEC,\n",
        "\tJ1939_ADT_MANU_FUNC_SAFETY,\n",
        "\tJ1939_ADT_MANU_FUNC_CYB_SAFE,\n",
    };
    out << (pgn.FD_TrailerFormat < std::size(trailers) ? trailers[pgn.FD_TrailerFormat]
                                                       : "\tINVALID_VALUE,\n");
    out << (pgn.FD_AssuranceType < std::size(assurances) ? assurances[pgn.FD_AssuranceType]
                                                         : "\tINVALID_VALUE,\n");
    out << "\t" << pgn.FD_AssuranceDataSize << "u\n";
}

void PGNGenerator::writeAddressClaimConfig(SectionStream& out)
{
    if (m_database->lineType(0) == Line::J1939 || m_database->lineType(0) == Line::CANopenJ1939)
        out << "/*  J1939 device Identifiy information (NAME PGN) */\n";
    for (const LinePlan& plan : std::as_const(m_plans)) {
        if (!plan.j1939())
            continue;
        if (!coreForm()) {
            out << "static CO_CONST J1939_PGN_CONFIG_T\taddrTrCfg" << plan.suffix << " = {\n";
            out << "\t60928u, /* PGN number */\n";
            out << "\t&" << plan.prefix << "tx_mapping_60928[0],\n";
            out << "\t0u, /* cycletime in ms */\n";
            out << "\t250u, /* inhibitime in us */\n";
            out << "\t6u, /* priority */\n";
            out << "\t10u" << (m_canFd ? "," : "") << " /* number of mappings */\n";
        } else {
            out << "static ";
            if (!m_dynamic)
                out << " CO_CONST ";
            out << " J1939_PGN_CONFIG_T\taddrTrCfg" << plan.suffix << " = {\n";
            out << "\t60928u, /* PGN number */\n";
            out << "\t&j1939AddressClaimMapping[0],\n";
            out << "\t&" << plan.prefix << "tx_mapping_60928_data[0],\n";
            out << "\t9u,"
                << " /* number of mappings */\n";
            out << R"(#ifdef J1939_MULTI_SRC_ADDR
	0u,
#endif /* J1939_MULTI_SRC_ADDR */
	0u, /* cycletime in ms */
	250u, /* inhibitime in us */
)";
            out << "\t6u" << (m_canFd ? ", /* priority */\n" : " /* priority */\n");
        }
        if (m_canFd) {
            out << "\tJ1939_ATF_SAE_NONE,\n";
            out << "\tJ1939_ADT_NONE,\n";
            out << "\t0\n";
        }
        out << "};\n";
    }
}

bool PGNGenerator::writeLineConfig(SectionStream& out)
{
    out << "\n/*  J1939 PGN configuration */\n";
    bool written = false;
    for (const LinePlan& plan : std::as_const(m_plans)) {
        if (!plan.j1939())
            continue;
        written = true;
        out << "J1939_CONFIG_T  j1939Config" << plan.suffix << " = {\n";
        if (hasAnyTransmitTable(plan))
            out << "\t&jPgnTransmitConfig" << plan.suffix << "[0],\n";
        else
            out << "\t0, \n";
        out << "\t" << (m_multiLine ? transmitCount(plan) : QStringLiteral("J1939_TRANSMIT_PGN_CNT"))
            << ", \n";
        if (!plan.receivePgns.isEmpty())
            out << "\t&jPgnReceiveConfig" << plan.suffix << "[0], \n";
        else
            out << "\t0, \n";
        out << "\t";
        if (m_multiLine)
            out << receiveCount(plan);
        else
            out << "J1939_RECEIVE_PGN_CNT";
        out << ", \n";
        out << "\t&addrTrCfg" << plan.suffix << ",\n";
        out << "\t" << startAddress(plan.line) << " \n";
        out << "};\n";
    }
    return written;
}

// Without the address claim, which the stack sends by itself.
QString PGNGenerator::transmitCount(const LinePlan& plan) const
{
    return QString::number(std::max<qsizetype>(0, plan.transmitPgns.size() - 1));
}

QString PGNGenerator::receiveCount(const LinePlan& plan) const
{
    return QString::number(plan.receivePgns.size());
}

// A multi-line project may list one address per line; a line beyond the
// list takes the null address 254.
QString PGNGenerator::startAddress(quint8 line) const
{
    const QString setting = j1939Setting(QStringLiteral("startaddress"));
    auto withSuffix = [](const QString& value) {
        return value.endsWith(QLatin1Char('u')) ? value : value + QLatin1Char('u');
    };
    if (!m_multiLine)
        return withSuffix(setting);
    if (!setting.contains(QLatin1Char(',')))
        return setting;
    const QStringList addresses = setting.split(QLatin1Char(','));
    const qsizetype position = m_lines.indexOf(line);
    if (position < 0 || position >= addresses.size())
        return QStringLiteral("254");
    return withSuffix(addresses.at(position).trimmed());
}

void PGNGenerator::writeReturnCheck(SectionStream& out)
{
    out << "\tif (retVal != RET_OK) {\n";
    out << "\t\treturn(retVal);\n";
    out << "\t}\n";
}

void PGNGenerator::writeStackInit(SectionStream& out)
{
    std::unique_ptr<CommonGeneratorHelper> helper;
    if (coreForm())
        helper = std::make_unique<CommonGeneratorHelperV4>(m_database.data(), m_multiLine);
    else
        helper = std::make_unique<CommonGeneratorHelper>(m_database.data(), m_multiLine);
    const bool uds = udsInUse();
    const bool newInit = coreForm() || setting(QStringLiteral("new_init_structure")).trimmed().toUInt() == 1;
    const bool fdModes = settingInt(QStringLiteral("canfd_supported")) >= 1;

    // The UDS definitions below stand in the function; the indication
    // pointers must be seen by the stack and so go ahead of it.
    out << helper->staticIndicationPointers();
    out << "\n";
    out << "/*  J1939 stack initialization function */\n";
    out << "\n";
    out << "RET_T j1939StackInit(\n";
    out << (fdModes ? "\tBOOL_T *pModes\n" : "\tvoid\n");
    out << "\t)\n";
    out << "{\n";
    out << "RET_T retVal;\n";
    if (fdModes && m_multiLine)
        out << "UNSIGNED8 i;\n";
    if (newInit) {
        out << helper->commonDeclarations();
        if (coreForm())
            out << "/* service intialization values */\n";
        out << "CO_CONST J1939_SERVICE_INIT_VAL_T\tserviceInitVars = {\n";
        out << "\t" << helper->serviceVersion(j1939Service) << "u,\n";
        writeServiceInitValues(out);
        out << "};\n";
        out << "\n";
        if (m_canFd) {
            out << "\tif (pModes != NULL) {\n";
            if (m_multiLine) {
                out << "\t\tfor (i = 0; i < CO_MULTI_LINE_CNT; i++)  {\n";
                out << "\t\t\tcommonInitVars.fdMode[i] = pModes[i];\n";
                out << "\t\t}\n";
            } else {
                out << "\t\tcommonInitVars.fdMode[0] = pModes[0];\n";
            }
            out << "\t}\n";
        }
    } else {
        out << R"(const J1939_SERVICE_INIT_VAL_T	serviceInitVars = {
	3u,
	{ CO_REC_BUFFER_COUNTS },
	{ CO_TR_BUFFER_COUNTS },
	{ CO_COB_COUNTS },
	{ J1939_RECEIVE_PGN_COUNTS },
	{ J1939_TRANSMIT_PGN_COUNTS }
};

)";
    }
    if (uds)
        out << helper->udsDefinitions() << "\n";
    out << "\tretVal = commonStackInit(&commonInitVars);\n";
    writeReturnCheck(out);
    out << "\tCO_HANDLE_WATCHDOG\n";
    out << "\tretVal = j1939StackInit_common(&serviceInitVars);\n";
    writeReturnCheck(out);
    if (uds)
        out << helper->commonUdsCall() << "\n";
    out << "\tCO_HANDLE_WATCHDOG\n";
    if (!m_staticInit) {
        out << "\n\t/* initilization of managed variables for address claiming */ \n";
        writeAddressClaimAssignments(out);
        out << "\n";
    }
    for (const LinePlan& plan : std::as_const(m_plans)) {
        if (!plan.j1939())
            continue;
        if (m_multiLine)
            out << "\tretVal = j1939StackInit_line(" << plan.line << ", &j1939Config" << plan.suffix
                << ");\n";
        else
            out << "\tretVal = j1939StackInit_line(&j1939Config);\n";
        writeReturnCheck(out);
        if (uds)
            out << helper->lineUdsCall(plan.line, m_multiLine) << "\n";
        out << "\tCO_HANDLE_WATCHDOG\n";
    }
    out << "\tCO_HANDLE_WATCHDOG\n";
    if (j1939Setting(QStringLiteral("cia510serversupport")).trimmed().toUInt(nullptr, 0) == 1) {
        out << "\n";
        out << "\t/* initialize object dictionary for CiA510 server */\n";
        if (!m_multiLine) {
            out << "\tretVal = j1939OdInit();\n";
            writeReturnCheck(out);
        } else {
            for (const LinePlan& plan : std::as_const(m_plans)) {
                if (!plan.j1939())
                    continue;
                out << "\tretVal = j1939OdInit(" << plan.line << ");\n";
                writeReturnCheck(out);
                out << "\tCO_HANDLE_WATCHDOG\n";
            }
        }
    }
    out << "\n";
    out << "\treturn RET_OK;\n";
    out << "}\n";
}

void PGNGenerator::writeServiceInitValues(SectionStream& out)
{
    if (coreForm())
        out << "\t{ J1939_RECEIVE_PGN_CFG_COUNTS },\n";
    out << R"(	{ J1939_RECEIVE_PGN_COUNTS },
	{ J1939_TRANSMIT_PGN_COUNTS },
	{ J1939_SSDO_COUNTS },
	{ J1939_CSDO_COUNTS })";
    if (m_safety) {
        out << ",\n";
        out << "\t{ J1939_SDG_TRANS_COUNTS },\n";
        out << "\t{ J1939_SDG_REC_COUNTS }";
    }
    if (m_canFd) {
        out << ",\n";
        out << "\t{ J1939_DEST_BUFFER_COUNTS }\n";
    }
}

// Without initialised arrays the NAME fields are set at start-up from the
// line's settings, as they stand.
void PGNGenerator::writeAddressClaimAssignments(SectionStream& out)
{
    static const QList<QPair<quint32, const char*>> byteFields = {
        {2839, "functioninstance"}, {2840, "ecuinstance"},     {2841, "function"},
        {2842, "vehiclesystem"},    {2843, "vehicleinstance"}, {2844, "addresscapable"},
        {2846, "industrygroup"},
    };
    for (const LinePlan& plan : std::as_const(m_plans)) {
        const bool hasPgns = !plan.receivePgns.isEmpty() || !plan.transmitPgns.isEmpty();
        if (!hasPgns)
            continue;
        auto index = [&](quint32 spn) {
            return std::max(0, managedIndex(managedKey(plan.line, addressClaimPgn, spn)));
        };
        auto lineValue = [&](const char* key) {
            return m_database->getJ1939SettingForLine(QString::fromLatin1(key), plan.line);
        };
        out << QStringLiteral("\tmv_u32[%1] = %2;\n").arg(index(2837)).arg(lineValue("identitynumber"));
        out << QStringLiteral("\tmv_u16[%1] = %2;\n").arg(index(2838)).arg(lineValue("manufacturercode"));
        for (const auto& [spn, key] : byteFields) {
            const QString value = QLatin1String(key) == QLatin1String("addresscapable")
                                      ? j1939Setting(QStringLiteral("addresscapable"))
                                      : lineValue(key);
            out << QStringLiteral("\tmv_u8[%1] = %2;\n").arg(index(spn)).arg(value);
        }
    }
}
