#include "generators/canopen/objdictgenerator.h"

#include "canopenlib/cohelper.h"
#include "generators/commongeneratorhelper.h"
#include "generators/commongeneratorhelperv4.h"

#include <memory>

namespace {

// The arguments of a service call: per-line calls name the line first.
QString args(bool perLine, const QString& rest = QString())
{
    if (!perLine)
        return rest;
    return rest.isEmpty() ? QStringLiteral("canLine") : QStringLiteral("canLine, ") + rest;
}

bool hasNodeIdDefault(const SUBINDEX_DATA_T* sub)
{
    return sub && sub->defaultvalue.contains(QLatin1String("$NODEID+"), Qt::CaseInsensitive);
}

} // namespace

void ObjDictGenerator::writeDataVariables()
{
    SectionStream out(this);
    out << "\n/**********************************************************************/\n";
    out << "/* Structure for all OD variables */\n";
    out << "CO_CONST CO_OD_DATA_VARIABLES_T od_data_variables = {\n";
    bool first = true;
    auto field = [&](const char* name) {
        const QString table = QString::fromLatin1(name);
        const bool written = m_layout.hasTable(table);
        if (first)
            out << (written ? QStringLiteral("   &%1[0]\n").arg(table) : QStringLiteral("   NULL\n"));
        else
            out << (written ? QStringLiteral("    , &%1[0]\n").arg(table) : QStringLiteral("    , NULL\n"));
        first = false;
    };
    field("od_const_u8");
    field("od_const_u16");
    field("od_const_u32");
    field("od_const_r32");
    out << "#ifdef CO_EXTENDED_DATA_TYPES\n";
    field("od_const_u24");
    field("od_const_u40");
    field("od_const_u48");
    field("od_const_u64");
    out << "#endif /* CO_EXTENDED_DATA_TYPES */\n";
    field("od_u8");
    field("od_u16");
    field("od_u32");
    field("od_r32");
    out << "#ifdef CO_EXTENDED_DATA_TYPES\n";
    field("od_u24");
    field("od_u40");
    field("od_u48");
    field("od_u64");
    out << "#endif /* CO_EXTENDED_DATA_TYPES */\n";
    field("od_const_i8");
    field("od_const_i16");
    field("od_const_i32");
    field("od_i8");
    field("od_i16");
    field("od_i32");
    field("od_ptr_u8");
    field("od_ptr_u16");
    field("od_ptr_u32");
    field("od_ptr_u24");
    field("od_ptr_u40");
    field("od_ptr_u48");
    field("od_ptr_u64");
    field("od_ptr_i8");
    field("od_ptr_i16");
    field("od_ptr_i32");
    field("od_ptr_r32");
    field("od_const_vis_string");
    field("od_const_vis_string_len");
    field("od_vis_string");
    field("od_vis_string_len");
    field("od_vis_string_actLen");
    out << "#ifdef CO_UTF8_DATA_TYPE\n";
    field("od_const_utf8_string");
    field("od_const_utf8_string_len");
    field("od_utf8_string");
    field("od_utf8_string_len");
    field("od_utf8_string_actLen");
    out << "#endif\n";
    field("od_octet_string");
    field("od_octet_string_len");
    field("od_octet_string_actLen");
    field("od_domain");
    field("od_domain_len");
    field("od_domain_actLen");
    out << "};\n";
}

void ObjDictGenerator::writeCheck(SectionStream& out, int indent)
{
    const QString blanks(indent, QLatin1Char(' '));
    out << blanks << "    if (retVal != RET_OK) {\n";
    out << blanks << "        return(retVal);\n";
    out << blanks << "    }\n";
    out << blanks << "    CO_HANDLE_WATCHDOG\n";
}

std::unique_ptr<CommonGeneratorHelper> ObjDictGenerator::commonHelper() const
{
    if (coreForm())
        return std::make_unique<CommonGeneratorHelperV4>(m_database.data(), multiLineForm());
    return std::make_unique<CommonGeneratorHelper>(m_database.data(), multiLineForm());
}

void ObjDictGenerator::writeCommonDeclarations(SectionStream& out)
{
    out << commonHelper()->commonDeclarations();
}

// The classic stack keeps the common variables and the service table in the
// init function; the V4 stack at file level.
void ObjDictGenerator::writeInitDeclarations(SectionStream& out, bool fileLevel)
{
    if (coreForm() != fileLevel)
        return;
    if (settingInt(QStringLiteral("new_init_structure")) == 1)
        writeCommonDeclarations(out);
    writeServiceTable(out, fileLevel ? QStringLiteral("   ") : QStringLiteral("       "));
    const std::unique_ptr<CommonGeneratorHelper> helper = commonHelper();
    out << helper->udsDefinitions();
    out << helper->staticIndicationPointers();
}

void ObjDictGenerator::writeServiceTable(SectionStream& out, const QString& indent)
{
    const bool newInit = settingInt(QStringLiteral("new_init_structure")) == 1;
    if (coreForm()) {
        out << "/* CANopen service initialization variables */\n";
        out << "CO_SERVICE_INIT_VAL_T\tserviceInitVars = {\n";
    } else {
        out << "    CO_SERVICE_INIT_VAL_T\tserviceInitVars = {\n";
    }
    if (newInit)
        out << indent << commonHelper()->serviceVersion(CommonGeneratorHelper::CanopenService)
            << (multiLineForm() ? ",\n" : "u,\n");
    out << indent << "{ CO_OBJECT_COUNTS },\n";
    out << indent << "{ CO_TXPDO_COUNTS },\n";
    out << indent << "{ CO_RXPDO_COUNTS },\n";
    out << "#ifdef CO_SRDO_SUPPORTED\n";
    out << indent << "{ CO_SRDO_COUNTS },\n";
    out << "#endif /* CO_SRDO_SUPPORTED */\n";
    out << indent << "{ CO_SSDO_COUNTS },\n";
    out << indent << "{ CO_CSDO_COUNTS },\n";
    if (coreForm()) {
        out << "#ifdef CO_USDO_SERVER_MAX_CONN_CNT\n";
        out << indent << "{ CO_USDO_SERVER_MAX_CONN_COUNTS },\n";
        out << "#endif /* CO_USDO_SERVER_MAX_CONN_CNT */\n";
        out << "#ifdef CO_USDO_CLIENT_MAX_CONN_CNT\n";
        out << indent << "{ CO_USDO_CLIENT_MAX_CONN_COUNTS },\n";
        out << "#endif /* CO_USDO_CLIENT_MAX_CONN_CNT */\n";
    }
    out << indent << "{ CO_ERR_CTRL_COUNTS },\n";
    out << indent << "{ CO_ERR_HIST_COUNTS },\n";
    out << indent << "{ CO_ACT_ERR_HIST_COUNTS },\n";
    out << indent << "{ CO_EMCY_CONS_COUNTS },\n";
    out << "#ifdef CO_NETWORK_ROUTING_CNT\n";
    out << indent << "{ CO_NETWORK_ROUTING_COUNTS }, \n";
    out << "#endif /* CO_NETWORK_ROUTING_CNT */\n";
    out << indent << "{ CO_ASSIGN_COUNTS },\n";
    out << indent << "{ CO_GUARDING_COUNTS },\n";
    out << indent << "{ CO_NODE_IDS }, \n";
    if (m_canFd && !newInit) {
        out << indent << "{ CO_NODE_ID_FUNCTIONS }, \n";
        out << indent << "{ CO_TRUE }\n";
    } else {
        out << indent << "{ CO_NODE_ID_FUNCTIONS } \n";
    }
    out << (coreForm() ? "};\n" : "    };\n");
}

void ObjDictGenerator::writeStackInitSingleLine()
{
    SectionStream out(this);
    const int nmtMaster = settingInt(QStringLiteral("nmtmaster"));
    const bool newInit = settingInt(QStringLiteral("new_init_structure")) == 1;
    writeInitDeclarations(out, true);
    if (nmtMaster == 2) {
        out << "RET_T coCanOpenStackInitPara(\n";
        out << "         CO_EVENT_STORE_T pLoadFunction,\n";
        out << "         CO_INIT_OPTION_T *pCoOptions\n";
    } else {
        out << "RET_T coCanOpenStackInit(\n";
        if (m_canFd) {
            out << "         CO_EVENT_STORE_T pLoadFunction,\n";
            out << "         BOOL_T *pModes\n";
        } else {
            out << "         CO_EVENT_STORE_T pLoadFunction\n";
        }
    }
    out << "    )\n";
    out << "{\n";
    out << "    RET_T retVal;\n";
    writeInitDeclarations(out, false);
    if (m_canFd) {
        out << "    if (pModes != NULL) {\n";
        if (newInit)
            out << "        commonInitVars.fdMode[0] = pModes[0];\n";
        else
            out << "        serviceInitVars.fdMode[0] = pModes[0];\n";
        out << "    }\n";
    }
    if (newInit) {
        out << "    /* common initialization */\n";
        out << "    retVal = commonStackInit(&commonInitVars);\n";
        writeCheck(out);
    }
    out << commonHelper()->commonUdsCall();
    out << "    /* variable initialization */\n";
    out << "    retVal = coCanOpenStackVarInit(&serviceInitVars);\n";
    writeCheck(out);
    out << "    /* initialize object dictionary variables and pointers */\n";
    out << "    coOdInitOdPtr(&od_assign[0], CO_OD_ASSIGN_CNT, &od_description[0], CO_OBJ_DESC_CNT, NULL, "
           "&od_data_variables);\n";
    out << commonHelper()->lineUdsCall(m_line, false);
    if (settingInt(QStringLiteral("event_led")) > 0) {
        out << "    /* initialization of LED module */\n";
        out << "    coLedInit();\n\n";
    }
    writeServiceInits(out, m_line, false);
    writeLoadParameter(out);
    writeNmtSingleLine(out);
    out << "    return(RET_OK);\n";
    out << "}\n";
}

// The services of one line, in the order the stack expects them.
void ObjDictGenerator::writeServiceInits(SectionStream& out, quint8 line, bool perLine)
{
    writeSdoServerInits(out, line, perLine);
    writeSdoClientInits(out, line, perLine);
    const int heartbeatConsumers =
        std::max(0, int(findObject(line, 0x1016) ? findObject(line, 0x1016)->subindices.size() : 0) - 1);
    if (has(line, 0x1017)) {
        out << "    /* initialize error control */\n";
        out << "    retVal = coErrorCtrlInit("
            << args(perLine, QStringLiteral("od_const_u16[%1], %2")
                                 .arg(constSlotOf(line, 0x1017, 0))
                                 .arg(heartbeatConsumers))
            << ");\n";
        writeCheck(out);
    } else if (has(line, 0x100C)) {
        out << "    /* initialize error control (Node Guarding) */\n";
        out << "    retVal = coErrorCtrlInit("
            << args(perLine, QStringLiteral("0, %1").arg(heartbeatConsumers)) << ");\n";
        writeCheck(out);
    }
    if (has(line, 0x1014)) {
        out << "    /* initialize emergency */\n";
        out << "    retVal = coEmcyProducerInit(" << args(perLine) << ");\n";
        writeCheck(out);
    }
    if (has(line, 0x1005)) {
        const QString period = has(line, 0x1006)
                                   ? QStringLiteral("od_const_u32[%1]").arg(constSlotOf(line, 0x1006, 0))
                                   : QStringLiteral("0");
        const QString overflow = has(line, 0x1019)
                                     ? QStringLiteral("od_const_u8[%1]").arg(constSlotOf(line, 0x1019, 0))
                                     : QStringLiteral("0");
        out << "    /* initialize sync */\n";
        out << "    retVal = coSyncInit("
            << args(perLine, QStringLiteral("od_const_u32[%1], %2, %3")
                                 .arg(constSlotOf(line, 0x1005, 0))
                                 .arg(period, overflow))
            << ");\n";
        writeCheck(out);
    }
    if (const DictObject* consumer = findObject(line, 0x1028)) {
        out << "    /* initialize EMCY consumer */\n";
        out << "    retVal = coEmcyConsumerInit("
            << args(perLine, QStringLiteral("%1u").arg(std::max(0, int(consumer->subindices.size()) - 1)))
            << ");\n";
        writeCheck(out);
    }
    if (has(line, 0x1012)) {
        const quint64 cobId = ObjDictLayout::defaultNumber(findSub(line, 0x1012, 0));
        out << "    /* initialize Time service */\n";
        out << "    retVal = coTimeInit("
            << args(perLine, QStringLiteral("%1, %2").arg((cobId & (1u << 31)) ? "CO_TRUE" : "CO_FALSE",
                                                          (cobId & (1u << 30)) ? "CO_TRUE" : "CO_FALSE"))
            << ");\n";
        writeCheck(out);
    }
    for (quint16 index : indicesIn(line, 0x1800, 0x19FF))
        writePdoInitCall(out, line, index, perLine);
    for (quint16 index : indicesIn(line, 0x1400, 0x15FF))
        writePdoInitCall(out, line, index, perLine);
    if (has(line, 0x1F10)) {
        out << "    /* initialize SDO Requesting Device (SRD) */\n";
        out << "    retVal = coSrdInit(" << args(perLine) << ");\n";
        writeCheck(out);
    }
    if (has(line, 0x1300)) {
        if (perLine)
            out << "    /* initialize  GFC (Producer, Consumer) */\n";
        else
            out << "    /* initialize  GFC Producer - Consumer */\n";
        out << "    retVal = coGfcInit(" << args(perLine, QStringLiteral("CO_TRUE, CO_TRUE")) << ");\n";
        writeCheck(out);
    }
    for (quint16 index : indicesIn(perLine ? line : 0, 0x1301, 0x1340)) {
        out << "    /* initialize SRDO  */\n";
        out << "    retVal = coSrdoInit(" << args(perLine, QStringLiteral("%1u").arg(index - 0x1300))
            << ");\n";
        writeCheck(out);
    }
    if (perLine && settingInt(QStringLiteral("event_led")) > 0) {
        out << "    /* initialization of LED module */\n";
        out << "    coLedInit(canLine);\n\n";
    }
    if (settingInt(QStringLiteral("isotp_connection_cnt")) != 0) {
        out << "    /* initialize ISO-TP */\n";
        out << "    retVal = isoTpInit(" << args(perLine) << ");\n";
        writeCheck(out);
    }
    if (settingInt(QStringLiteral("idnego_supported")) > 0) {
        out << "    /* initialization of ID negotiation module */\n";
        out << "    coIdNegoInit(" << args(perLine) << ");\n";
        writeCheck(out);
    }
    if (has(perLine ? line : 0, 0x1F81)) {
        out << "    /* initialization of node guarding master*/\n";
        out << "    retVal = coGuardingInit(" << args(perLine) << ");\n";
        writeCheck(out);
    }
}

void ObjDictGenerator::writeSdoServerInits(SectionStream& out, quint8 line, bool perLine)
{
    if (!m_canFd) {
        out << "    /* initialize sdo server(s) */\n";
        out << "    retVal = coSdoServerInit(" << args(perLine, QStringLiteral("1u")) << ");\n";
        writeCheck(out);
    } else if (!perLine) {
        out << "    /* initialize (u)sdo server(s) */\n";
        out << "    if (commonInitVars.fdMode[0] == CO_TRUE) {\n";
        out << "       retVal = coUsdoServerInit();\n";
        out << "       if (retVal != RET_OK) {\n";
        out << "           return(retVal);\n";
        out << "       }\n";
        out << "#ifdef CO_SDO_SERVER_CNT\n";
        out << "    } else {\n";
        out << "        retVal = coSdoServerInit(1);\n";
        out << "       if (retVal != RET_OK) {\n";
        out << "           return(retVal);\n";
        out << "       }\n";
        out << "#endif /* CO_SDO_SERVER_CNT */\n";
        out << "    }\n";
    } else {
        out << "    /* initialize (u)sdo server(s) */\n";
        out << "    if (pModes != NULL) {\n";
        out << "        if (pModes[canLine] == CO_TRUE) {\n";
        out << "            retVal = coUsdoServerInit(canLine);\n";
        out << "            if (retVal != RET_OK) {\n";
        out << "                return(retVal);\n";
        out << "            }\n";
        out << "        }\n";
        out << "#ifdef CO_SDO_SERVER_CNT\n";
        out << "        else {\n";
        out << "            retVal = coSdoServerInit(canLine, 1u);\n";
        out << "            if (retVal != RET_OK) {\n";
        out << "                return(retVal);\n";
        out << "            }\n";
        out << "        }\n";
        out << "#endif /* CO_SDO_SERVER_CNT */\n";
        out << "    } else {\n";
        out << "        retVal = coUsdoServerInit(canLine);\n";
        out << "        if (retVal != RET_OK) {\n";
        out << "            return(retVal);\n";
        out << "        }\n";
        out << "    }\n";
    }
    for (quint16 index : indicesIn(line, 0x1201, 0x127F)) {
        out << "    retVal = coSdoServerInit(" << args(perLine, QStringLiteral("%1u").arg(index - 0x11FF))
            << ");\n";
        writeCheck(out);
    }
}

void ObjDictGenerator::writeSdoClientInits(SectionStream& out, quint8 line, bool perLine)
{
    if (has(line, 0x1280))
        out << "    /* initialize sdo clients(s) */\n";
    if (m_canFd && settingInt(QStringLiteral("usdo_client_cnt")) != 0) {
        if (coreForm())
            out << "    /* initialize usdo clients(s) */\n";
        else
            out << "    /* initialize (u)sdo clients(s) */\n";
        if (perLine) {
            out << "    if ((pModes != NULL) && (pModes[canLine] == CO_TRUE)) {\n";
            out << "        retVal = coUsdoClientInit(canLine);\n";
        } else {
            out << "    if (commonInitVars.fdMode[0] == CO_TRUE) {\n";
            if (coreForm())
                out << "         retVal = coUsdoClientInit();\n";
            else
                out << "        retVal = coUsdoClientInit();\n";
        }
        writeCheck(out, 4);
        out << "    }\n";
    }
    for (quint16 index : indicesIn(line, 0x1280, 0x12FF)) {
        out << "    retVal = coSdoClientInit(" << args(perLine, QStringLiteral("%1u").arg(index - 0x127F))
            << ");\n";
        writeCheck(out);
    }
}

void ObjDictGenerator::writePdoInitCall(SectionStream& out, quint8 line, quint16 index, bool perLine)
{
    const bool transmit = index >= 0x1800;
    const int number = transmit ? index - 0x17FF : index - 0x13FF;
    auto optional = [&](quint8 subindex, const char* table) {
        if (!findSub(line, index, subindex))
            return QStringLiteral(", 0u");
        return QStringLiteral(", %1[%2]").arg(QLatin1String(table)).arg(constSlotOf(line, index, subindex));
    };
    const QString lineArgument = perLine ? QStringLiteral("canLine, ") : QString();
    if (transmit) {
        out << "    /* initialize TPDO " << number << " */\n";
        out << "    retVal = coPdoTransmitInit(" << lineArgument << number;
        out << "u, od_const_u8[" << constSlotOf(line, index, 2) << "]";
        out << optional(3, "od_const_u16") << optional(5, "od_const_u16") << optional(6, "od_const_u8");
    } else {
        out << "    /* initialize RPDO " << number << " */\n";
        out << "    retVal = coPdoReceiveInit(" << lineArgument << number;
        out << "u, od_const_u8[" << constSlotOf(line, index, 2) << "]";
        out << optional(3, "od_const_u16") << optional(5, "od_const_u16");
    }
    const QString table = (transmit ? QStringLiteral("mapTableTPDO") : QStringLiteral("mapTableRPDO")) +
                          lineMarker(line) + QString::number(number);
    const QString used = m_layout.mappingTableOf(table);
    if (!used.isEmpty())
        out << ", &" << used << ");\n";
    else
        out << ", NULL);\n";
    writeCheck(out);
}

void ObjDictGenerator::writeLoadParameter(SectionStream& out)
{
    out << "\n    /* initialize load parameter function */\n";
    out << "#if defined(CO_EVENT_DYNAMIC_STORE) || defined(CO_EVENT_PROFILE_STORE)\n";
    out << "    retVal = coEventRegister_LOAD_PARA(pLoadFunction);\n";
    out << "    if (retVal != RET_OK) {\n";
    out << "        return(retVal);\n";
    out << "    }\n";
    out << "#else\n";
    if (setting(QStringLiteral("fct_store")).trimmed().isEmpty()) {
        out << "    if (pLoadFunction != NULL) {\n";
        out << "        return(RET_INVALID_PARAMETER);\n";
        out << "    }\n";
    } else if (coreForm()) {
        out << "    (void)pLoadFunction;\n";
    }
    out << "#endif /* CO_EVENT_DYNAMIC_STORE || CO_EVENT_PROFILE_STORE */\n";
}

void ObjDictGenerator::writeNmtSingleLine(SectionStream& out)
{
    const int nmtMaster = settingInt(QStringLiteral("nmtmaster"));
    const bool lss = settingInt(QStringLiteral("lss_supported")) > 0;
    if (nmtMaster == 2) {
        out << "    /* Check dynamic options for master flag */\n";
        out << "    if (pCoOptions->master == 1) {\n";
        if (lss) {
            out << "        /* initialize LSS Master */\n";
            out << "        retVal = coLssMasterInit();\n";
            writeCheck(out, 4);
        }
        out << "        /* initialize NMT master */ \n";
        out << "        retVal = coNmtInit(1u);\n";
        writeCheck(out, 4);
        out << "    } else {\n";
        if (lss) {
            out << "        /* initialize LSS Slave */\n";
            out << "        retVal = coLssInit();\n";
            writeCheck(out, 4);
        }
        out << "        /* initialize NMT slave */ \n";
        out << "        retVal = coNmtInit(0u);\n";
        writeCheck(out, 4);
        out << "    }\n";
        return;
    }
    if (lss) {
        if (nmtMaster == 1) {
            out << "    /* initialize LSS Master */\n";
            out << "    retVal = coLssMasterInit();\n";
        } else {
            out << "    /* initialize LSS Slave */\n";
            out << "    retVal =  coLssInit();\n";
        }
        writeCheck(out);
    }
    writeNmtInit(out, nmtMaster > 0, false);
}

void ObjDictGenerator::writeNmtInit(SectionStream& out, bool master, bool perLine)
{
    if (master) {
        out << "    /* initialize NMT master */ \n";
        out << "    retVal = coNmtInit(" << args(perLine, QStringLiteral("1u")) << ");\n";
    } else {
        out << "    /* initialize NMT slave */ \n";
        out << "    retVal = coNmtInit(" << args(perLine, QStringLiteral("0u")) << ");\n";
    }
    // A line's start ends in the NMT call and reports success whatever it
    // gives, as the run-time master choice of a line does.
    if (!perLine)
        writeCheck(out);
}

void ObjDictGenerator::writeStackInitMultiLine()
{
    SectionStream out(this);
    if (coreForm()) {
        QStringList lines;
        for (quint8 line : std::as_const(m_usedLines))
            lines << QString::number(line);
        out << "\nUNSIGNED8 canLineTable[CAN_LINE_ARRAY_DECL] = {" << lines.join(QStringLiteral(", "))
            << " };\n";
    }
    writeInitDeclarations(out, true);
    writeTopFunction(out);
    writeCommonFunction(out);
    writeLineDispatcher(out);
    for (quint8 line : std::as_const(m_usedLines))
        writeLineFunction(out, line);
    writeFinishFunction(out);
}

void ObjDictGenerator::writeTopFunction(SectionStream& out)
{
    const bool options = usesOptions();
    if (options) {
        out << "RET_T coCanOpenStackInitPara(\n";
        out << "         CO_EVENT_STORE_T pLoadFunction,\n";
        out << "         CO_INIT_OPTION_T *pCoOptions\n";
    } else {
        out << "RET_T coCanOpenStackInit(\n";
        out << "         CO_EVENT_STORE_T pLoadFunction\n";
    }
    if (m_canFd)
        out << "         , BOOL_T *pModes\n";
    out << "    )\n";
    out << "{\n";
    out << "    CO_INIT_OPTION_T *pCoInitOpt = NULL;\n";
    out << "    RET_T retVal;\n";
    if (m_canFd)
        out << "    retVal = coCanOpenStackInit_common(pLoadFunction, pModes);\n";
    else
        out << "    retVal = coCanOpenStackInit_common(pLoadFunction);\n";
    for (qsizetype ordinal = 0; ordinal < m_usedLines.size(); ++ordinal) {
        const quint8 line = m_usedLines.at(ordinal);
        out << "    if (retVal == RET_OK) {\n";
        if (options)
            out << "        pCoInitOpt = &pCoOptions[" << ordinal << "];\n";
        out << "        retVal = coCanOpenStackInit_line" << line << "(" << line;
        if (m_canFd)
            out << ", pCoInitOpt, pModes);\n";
        else
            out << ", pCoInitOpt);\n";
        out << "    }\n";
    }
    out << "    if (retVal == RET_OK) {\n";
    out << "            retVal = coCanOpenStackInit_finish();\n";
    out << "    }\n";
    out << "    return(retVal);\n";
    out << "}\n";
}

void ObjDictGenerator::writeCommonFunction(SectionStream& out)
{
    const bool newInit = settingInt(QStringLiteral("new_init_structure")) == 1;
    out << "RET_T coCanOpenStackInit_common(\n";
    out << "         CO_EVENT_STORE_T pLoadFunction\n";
    if (m_canFd)
        out << "         , BOOL_T *pModes\n";
    out << "    )\n";
    out << "{\n";
    out << "    CO_LINE_TYPE    CO_LINE;\n";
    out << "    RET_T retVal = RET_OK;\n";
    writeInitDeclarations(out, false);
    if (m_canFd) {
        out << "    for (CO_LINE = 0; CO_LINE < CO_MULTI_LINE_CNT; CO_LINE ++)\n";
        out << "    {\n";
        if (newInit) {
            out << "        commonInitVars.fdMode[CO_LINE] = CO_TRUE;\n";
            out << "        if (pModes != NULL) {\n";
            out << "            commonInitVars.fdMode[CO_LINE] = pModes[CO_LINE];\n";
        } else {
            out << "        serviceInitVars.fdMode[CO_LINE] = CO_TRUE;\n";
            out << "        if (pModes != NULL) {\n";
            out << "            serviceInitVars.fdMode[CO_LINE] = pModes[CO_LINE];\n";
        }
        out << "        }\n";
        out << "    }\n";
    }
    if (newInit) {
        out << "    /* common initialization */\n";
        out << "    retVal = commonStackInit(&commonInitVars);\n";
        out << "    if (retVal != RET_OK) {\n";
        out << "        return (retVal);\n";
        out << "    }\n";
    }
    // The UDS structures are declared here in the classic form, so every
    // line's UDS start is called from here too.
    const std::unique_ptr<CommonGeneratorHelper> helper = commonHelper();
    out << helper->commonUdsCall();
    for (quint8 line : std::as_const(m_usedLines))
        out << helper->lineUdsCall(line, true);
    out << "    /* multi-line initialization */\n";
    out << "    retVal = coCanOpenStackVarInit(&serviceInitVars);\n";
    writeLoadParameter(out);
    out << "    return(retVal);\n";
    out << "}\n";
}

void ObjDictGenerator::writeLineDispatcher(SectionStream& out)
{
    out << "RET_T coCanOpenStackInit_line(\n";
    out << "                  UNSIGNED8 canLine,\n";
    out << "                  CO_INIT_OPTION_T *pCoOptions\n";
    if (m_canFd)
        out << "                  , BOOL_T *pModes\n";
    out << "       )\n";
    out << "{\n";
    out << "    RET_T retVal;\n";
    out << "    switch(canLine) {\n";
    for (quint8 line : std::as_const(m_usedLines)) {
        out << "   \tcase " << line << ":\n";
        out << "   \t\tretVal = coCanOpenStackInit_line" << line;
        if (m_canFd)
            out << "(canLine, pCoOptions, pModes);\n";
        else
            out << "(canLine, pCoOptions);\n";
        out << "   \t\tbreak;\n";
    }
    out << "   \tdefault:\n";
    out << "   \t\tretVal = RET_INVALID_PARAMETER;\n";
    out << "   \tbreak;\n";
    out << "    }\n";
    out << "    return(retVal);\n";
    out << "}\n";
}

void ObjDictGenerator::writeLineFunction(SectionStream& out, quint8 line)
{
    const int firstRow = layout().firstAssignRow(line);
    out << "\n/* ****************************************************************************************** "
           "*/\n";
    out << "/* Initialize line << " << line << " */\n";
    out << "RET_T coCanOpenStackInit_line" << line << "(\n";
    out << "                  UNSIGNED8 canLine,\n";
    out << "                  CO_INIT_OPTION_T *pCoOptions\n";
    if (m_canFd)
        out << "                  , BOOL_T *pModes\n";
    out << "       )\n";
    out << "{\n";
    out << "    RET_T retVal;\n";
    if (!usesOptions())
        out << "    (void) pCoOptions; /* currently unused */\n\n";
    out << "    /* initialize object dictionary variables and pointers */\n";
    out << "    coOdInitOdPtr(canLine, &od_assign[" << firstRow << "], " << layout().lineAssignCount(line)
        << ", od_description, " << layout().lineDescriptionCount(line) << ", NULL, &od_data_variables);\n";
    writeServiceInits(out, line, true);
    writeNmtForLine(out, line);
    out << "    return(RET_OK);\n";
    out << "}\n";
}

void ObjDictGenerator::writeNmtForLine(SectionStream& out, quint8 line)
{
    const int nmtMaster = lineSettingInt(QStringLiteral("nmtmaster"), line);
    const bool lss = settingInt(QStringLiteral("lss_supported")) > 0;
    if (nmtMaster == 2) {
        out << "    /* Check dynamic options for master flag */\n";
        out << "    if (pCoOptions->master == 1) {\n";
        out << "        /* initialize Master */\n";
        out << "        retVal = coNmtInit(canLine, 1u);\n";
        if (lss)
            out << "       retVal = coLssMasterInit(canLine);\n";
        out << "    } else {\n";
        out << "        /* initialize NMT slave */ \n";
        out << "        retVal = coNmtInit(canLine, 0u);\n";
        if (lss) {
            out << "        /* initialize LSS Slave */\n";
            out << "        retVal =  coLssInit(canLine);\n";
        }
        out << "    }\n";
        return;
    }
    if (lss && nmtMaster == 1) {
        out << "    /* initialize LSS Master */\n";
        out << "#ifdef CO_LSS_MASTER_SUPPORTED\n";
        out << "    retVal = coLssMasterInit(canLine);\n";
        writeCheck(out);
        out << "#endif /* CO_LSS_MASTER_SUPPORTED */\n";
    } else if (lss && nmtMaster == 0) {
        out << "    /* initialize LSS Slave */\n";
        out << "    retVal =  coLssInit(canLine);\n";
        writeCheck(out);
    }
    writeNmtInit(out, nmtMaster > 0, true);
}

void ObjDictGenerator::writeFinishFunction(SectionStream& out)
{
    bool routing = false;
    for (quint8 line : dictionaryLines()) {
        const DictObject* table = findObject(line, 0x1F2C);
        if (!table)
            continue;
        for (quint8 subindex : table->subindices)
            routing = routing || findSub(line, 0x1F2C, subindex)->accesstype == QLatin1String("rw");
    }
    writeStackInitFinish(out, QStringLiteral("coCanOpenStackInit_finish"), routing, "    RET_T retVal;\n",
                         "     * Without it the function is empty, but may be used later for additional\n");
}

void ObjDictGenerator::writeStackInitFinish(SectionStream& out, const QString& name, bool routing,
                                            const char* declaration, const char* emptyNote)
{
    out << "RET_T " << name << "(void)\n";
    out << "{\n";
    if (routing) {
        out << declaration;
        out << "    /* initialize PDO routing */ \n";
        out << "    retVal = coPdoNetworkRouting();\n";
        writeCheck(out);
    } else {
        out << "    /*\n";
        out << "     * Currently this function is only required to initialize PDO Routing.\n";
        out << emptyNote;
        out << "     * purposes.\n";
        out << "     */\n";
    }
    out << "    return(RET_OK);\n";
    out << "}\n";
}

void ObjDictGenerator::writeJ1939OdInit()
{
    SectionStream out(this);
    if (!multiLineForm()) {
        out << "RET_T\tj1939OdInit(void)\n";
        out << "{\n";
        out << "\tcoOdInitOdPtr(&od_assign[0], CO_OD_ASSIGN_CNT, &od_description[0], CO_OBJ_DESC_CNT, NULL, "
               "&od_data_variables);\n";
        out << "\n\treturn(RET_OK);\n";
        out << "}\n";
        return;
    }
    out << "RET_T\tj1939OdInit(\n";
    out << "\tUNSIGNED8 canLine\n";
    out << ")\n";
    out << "{\n";
    out << "\tswitch (canLine) {\n";
    for (quint8 line : dictionaryLines()) {
        out << "\t\tcase " << line << ":\n";
        out << "\t\t/* initialize object dictionary variables and pointers */\n";
        out << "\t\tcoOdInitOdPtr(canLine, &od_assign[" << layout().firstAssignRow(line) << "], "
            << layout().lineAssignCount(line) << ", od_description, " << layout().lineDescriptionCount(line)
            << ", NULL, &od_data_variables);\n";
        out << "\t\tbreak;\n";
    }
    out << "\tdefault:\n";
    out << "\tbreak;\n";
    out << "\t}\n";
    out << "\treturn(RET_OK);\n";
    out << "}\n";
}

void ObjDictGenerator::writeServiceVariables()
{
    if (!overwritesPredefinedSet())
        return;
    SectionStream out(this);
    if (coreForm())
        out << "#ifdef GEN_OVERWRITE_PREDEF_CONN_SET\n";
    if (multiLineForm())
        writeCobIdOverwriteMultiLine(out);
    else
        writeCobIdOverwriteSingleLine(out);
    if (coreForm())
        out << "#endif /* GEN_OVERWRITE_PREDEF_CONN_SET */\n";
}

void ObjDictGenerator::writeCobIdOverwriteSingleLine(SectionStream& out)
{
    bool nodeIdUsed = false;
    for (quint16 index : indicesIn(m_line, 0x1400, 0x19FF))
        nodeIdUsed = nodeIdUsed || hasNodeIdDefault(findSub(m_line, index, 1));
    if (coreForm()) {
        out << "/* Please be careful - this function overwrite the COB-Ids of the\n* predefined connection "
               "set with "
               "values setting up by the TRW\n* It should to be called inside the load indication "
               "function.\n*/\n";
        out << "RET_T genLoadIndication(UNSIGNED8 subIndex)\n";
    } else {
        out << "/* Please be careful - this function overwrite the COB-ids of the\n* predefined connection "
               "set with "
               "values setting up by the TRW\n* It should to be called inside the load indication "
               "function.\n*/\n";
        out << "RET_T userOverwriteCobIdSettings(void)\n";
    }
    out << "{\n";
    out << "\tRET_T ret = RET_OK;\n";
    out << "\tUNSIGNED32 cobId = 0ul;\n";
    if (coreForm()) {
        if (nodeIdUsed)
            out << "\tUNSIGNED8 nodeId = 0x00;\n";
        out << "\tif ((subIndex == 1) || (subIndex == 2)) {\n";
        if (nodeIdUsed)
            out << "\t\tnodeId = coNmtGetNodeId();\n";
        writeCobIdGroup(out, m_line, 0x1201, 0x127F, "\n\t\t/* SDO server COB IDs */\n", true, false);
        writeCobIdGroup(out, m_line, 0x1280, 0x12FF, "\n\t\t/* SDO client COB IDs */\n", true, false);
        writeCobIdGroup(out, m_line, 0x1400, 0x15FF, "\t\t/* RxPDO COB IDs */\n", false, false);
        writeCobIdGroup(out, m_line, 0x1800, 0x19FF, "\t\t/* TxPDO COB IDs */\n", false, false);
        out << "\t}\n";
    } else {
        if (nodeIdUsed)
            out << "\tUNSIGNED8 nodeId = coNmtGetNodeId();\n";
        writeCobIdGroup(out, m_line, 0x1201, 0x127F, "\n\t/* SDO server COB IDs */\n", true, false);
        writeCobIdGroup(out, m_line, 0x1280, 0x12FF, "\n\t/* SDO client COB IDs */\n", true, false);
        writeCobIdGroup(out, m_line, 0x1400, 0x15FF, "\n\t/* RxPDO COB IDs */\n", false, false);
        writeCobIdGroup(out, m_line, 0x1800, 0x19FF, "\n\t/* TxPDO COB IDs */\n", false, false);
    }
    out << "\treturn ret;\n";
    out << "}\n";
}

void ObjDictGenerator::writeCobIdOverwriteMultiLine(SectionStream& out)
{
    QList<quint8> lines;
    for (quint8 line : std::as_const(m_usedLines)) {
        if (lineSettingInt(QStringLiteral("overwrite_predef"), line) > 0)
            lines << line;
    }
    out << "/* Please be careful - this function overwrite the COB-Ids of the\n* predefined connection set "
           "with "
           "values setting up by the TRW\n* It should to be called inside the load indication function for "
           "subindex 1 and 2.\n*/\n";
    if (coreForm()) {
        out << "RET_T genLoadIndication(UNSIGNED8 canLine, UNSIGNED8 subIndex)\n";
    } else {
        out << "RET_T userOverwriteCobIdSettings(void)\n";
        out << "{\n";
        out << "RET_T retVal = RET_OK;\n";
        for (quint8 line : std::as_const(m_usedLines))
            out << "    retVal = userOverwriteCobIdSettingsLine(" << line << ");\n";
        out << "    return(retVal);\n";
        out << "}\n\n";
        out << "RET_T userOverwriteCobIdSettingsLine(UNSIGNED8 canLine)\n";
    }
    out << "{\n";
    out << "\tRET_T ret = RET_OK;\n";
    out << "\tUNSIGNED32 cobId = 0ul;\n";
    if (coreForm())
        out << "\tUNSIGNED8 nodeId = 0x00;\n";
    else
        out << "\tUNSIGNED8 nodeId;\n";
    for (quint8 line : std::as_const(lines)) {
        if (coreForm())
            out << "\tif (((subIndex == 1) || (subIndex == 2)) && (canLine == " << line << ")) {\n";
        else
            out << "\tif (canLine == " << line << ") {\n";
        out << "\t\tnodeId = coNmtGetNodeId(" << line << ");\n";
        writeCobIdGroup(out, line, 0x1400, 0x15FF, "\n\t\t/* RxPDO COB IDs */\n", false, true);
        writeCobIdGroup(out, line, 0x1800, 0x19FF, "\n\t\t/* TxPDO COB IDs */\n", false, true);
        writeCobIdGroup(out, line, 0x1201, 0x127F,
                        "\n\t\t/* SDO server COB IDs starting at 2nd SDO server */\n", true, true);
        writeCobIdGroup(out, line, 0x1280, 0x12FF, "\n\t\t/* SDO client COB IDs */\n", true, true);
        out << "\t}\n";
    }
    out << "\treturn ret;\n";
    out << "}\n";
}

// One group of COB-ID objects; a PDO whose default depends on the node-id
// gets its COB-ID from the node-id at run time.
void ObjDictGenerator::writeCobIdGroup(SectionStream& out, quint8 line, quint16 from, quint16 to,
                                       const char* heading, bool bothSubindices, bool perLine)
{
    const QList<quint16> indices = indicesIn(line, from, to);
    if (indices.isEmpty())
        return;
    out << heading;
    const bool nested = perLine || coreForm();
    const QString indent = nested ? QStringLiteral("\t\t") : QStringLiteral("\t");
    const QString lineArgument = perLine ? QStringLiteral("%1, ").arg(line) : QString();
    for (quint16 index : indices) {
        const QString hex = QStringLiteral("%1").arg(index, 4, 16, QLatin1Char('0'));
        const SUBINDEX_DATA_T* cobId = findSub(line, index, 1);
        if (!bothSubindices && hasNodeIdDefault(cobId)) {
            const QString offset = cobId->defaultvalue.trimmed().mid(8);
            if (perLine)
                out << "\t\tcobId = (UNSIGNED32)nodeId + (UNSIGNED32)" << offset << ";\n";
            else if (coreForm())
                out << "\t\tcobId = nodeId + " << offset << ";\n";
            else
                out << "\tcobId = nodeId + " << offset << ";\n";
            out << indent << "ret = coOdSetCobid(" << lineArgument << "0x" << hex << ", 1, cobId);\n";
            continue;
        }
        const QList<int> subindices = bothSubindices ? QList<int>{1, 2} : QList<int>{1};
        for (int subindex : subindices) {
            out << indent << "ret = coOdGetDefaultVal_u32(" << lineArgument << "0x" << hex << ", " << subindex
                << ", &cobId);\n";
            out << indent << "if (ret == RET_OK) {\n";
            out << indent << "\tret = coOdSetCobid(" << lineArgument << "0x" << hex << ", " << subindex
                << ", cobId);\n";
            out << indent << "}\n";
        }
    }
}

void ObjDictGenerator::writeStringDefaultFunction()
{
    SectionStream out(this);
    out << "RET_T userOverwriteStringDefaultvalues(void)\n";
    out << "{\n";
    for (const ObjDictLayout::StringDefault& value : m_layout.stringDefaults()) {
        const quint8 line = quint8(value.key >> 24);
        const quint16 index = quint16(value.key >> 8);
        const quint8 subindex = quint8(value.key);
        out << QStringLiteral("    /* %1: %2 - %3 */\n")
                   .arg(line)
                   .arg(index, 4, 16, QLatin1Char('0'))
                   .arg(subindex);
        out << QStringLiteral("    memcpy(%1, &stringDefaultValues[%2], %3);\n")
                   .arg(variableName(line, index, subindex, subOf(value.key)))
                   .arg(value.offset)
                   .arg(value.bytes.size());
    }
    out << "\n    return(RET_OK);\n";
    out << "}\n";
}
