// gen_mp.c and gen_rawcan.c: the start functions. mpStackInit checks the
// protocol the application chose for each line, starts what all lines share
// in mpStackInit_common, then each line in mpStackInit_line<n> and ends in
// mpStackInit_finish.

#include "generators/multiprotocol/multiprogenerator.h"

#include "database/linetypes.h"
#include "generators/commongeneratorhelper.h"

#include <QBuffer>

namespace {

// The protocol mask of the line types that stand for one protocol.
const char* protocolMask(int type)
{
    switch (type) {
    case Line::CANopen:
        return "MP_PROT_TYPE_CANOPEN";
    case Line::J1939:
        return "MP_PROT_TYPE_J1939";
    case Line::RawCan:
        return "MP_PROT_TYPE_RAWCAN";
    default:
        return nullptr;
    }
}

int protocolCount(int type)
{
    return int(Line::carriesCANopen(type)) + int(Line::carriesJ1939(type)) + int(Line::carriesRawCan(type));
}

} // namespace

void MultiProGenerator::writeStackInit(SectionStream& out)
{
    const std::unique_ptr<CommonGeneratorHelper> helper = commonHelper();
    if (udsInUse())
        out << helper->udsDefinitions() << "\n" << helper->staticIndicationPointers();
    // The V4 stack keeps the initialisation values at file level.
    if (coreForm())
        writeServiceDeclarations(out);
    if (coreForm())
        out << (m_rawCanOnly ? "\n/*  stack initialization for RawCAN stack */\n"
                             : "\n/*  stack initialization for CAN-MultiProtocol stack */\n");
    else
        out << "\n/*  stack initialization */\n";
    writeTopFunction(out);
    writeCommonFunction(out);
    for (quint8 line : std::as_const(m_activeLines))
        writeLineFunction(out, line);
    writeFinishFunction(out);
}

void MultiProGenerator::writeTopFunction(SectionStream& out)
{
    const bool canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    if (m_rawCanOnly) {
        if (!coreForm())
            out << "RET_T rawcanStackInit(void)\n{\n";
        else if (canFd)
            out << "RET_T rawcanStackInit(BOOL_T *pModes) {\n";
        else
            out << "RET_T rawcanStackInit(void) {\n";
        out << "RET_T retVal;\n";
        out << "    retVal = " << QStringLiteral("mpStackInit_common") << "();\n";
        for (quint8 line : std::as_const(m_activeLines)) {
            out << "    if (retVal == RET_OK) {\n";
            out << "        retVal = " << functionName("_line") << line << "(" << line << ");\n";
            out << "    }\n";
        }
    } else {
        out << "RET_T mpStackInit(\n";
        out << "         CO_EVENT_STORE_T\tpLoadFunction,\n";
        out << "         MP_PROTOCOL_TYPE_T\t*pProtType";
        if (canFd)
            out << ",\n         BOOL_T *pModes";
        out << "\n    )\n";
        out << "{\n";
        out << "RET_T retVal;\n";
        out << "    /* check for protocol information */\n";
        out << "    if (pProtType == NULL)  {\n";
        out << "        return(RET_INVALID_PARAMETER);\n";
        out << "    }\n";
        for (qsizetype i = 0; i < m_activeLines.size(); ++i) {
            const char* mask = protocolMask(m_lineTypes.at(i));
            if (!mask)
                continue;
            out << "    if ((pProtType[" << m_activeLines.at(i) << "] & " << mask << ") != " << mask
                << ") {\n";
            out << "        return(RET_SERVICE_NOT_INITIALIZED);\n";
            out << "    }\n";
        }
        out << "    retVal = mpStackInit_common(pLoadFunction, pProtType";
        if (canFd)
            out << ", pModes";
        out << ");\n";
        for (quint8 line : std::as_const(m_activeLines)) {
            out << "    if (retVal == RET_OK) {\n";
            if (coreForm())
                out << "        retVal = mpStackInit_line" << line << "(" << line << ", "
                    << (canFd ? "pModes" : "NULL") << ");\n";
            else if (canFd)
                out << QStringLiteral("        retVal = mpStackInit_line%1(%1, pProtType[%1], pModes[%1]);\n")
                           .arg(line);
            else
                out << QStringLiteral("        retVal = mpStackInit_line%1(%1, pProtType[%1]);\n").arg(line);
            out << "    }\n";
        }
    }
    out << "    if (retVal == RET_OK) {\n";
    out << "        retVal = " << functionName("_finish") << "();\n";
    out << "    }\n";
    out << "    return(retVal);\n";
    out << "}\n";
    out << "\n";
}

void MultiProGenerator::writeCommonFunction(SectionStream& out)
{
    const bool canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    if (m_rawCanOnly) {
        out << "RET_T " << QStringLiteral("mpStackInit_common") << "(void)\n";
        out << "{\n";
    } else {
        out << "RET_T mpStackInit_common(\n";
        out << "         CO_EVENT_STORE_T pLoadFunction,\n";
        out << "         MP_PROTOCOL_TYPE_T *pProtType";
        if (canFd)
            out << ",\n         BOOL_T *pModes";
        out << "\n    )\n";
        out << "{\n";
    }
    out << "    RET_T retVal = RET_OK;\n";
    if (!coreForm())
        writeServiceDeclarations(out);
    if (!m_rawCanOnly) {
        if (m_projectMultiLine) {
            out << "CO_LINE_TYPE CO_LINE;\n";
            out << "    for (CO_LINE = 0; CO_LINE < CO_MULTI_LINE_CNT; CO_LINE ++)\n";
            out << "    {\n";
            out << "        commonInitVars.protocolType[CO_LINE] = pProtType[CO_LINE];\n";
            if (canFd) {
                out << "        commonInitVars.fdMode[CO_LINE] = CO_TRUE;\n";
                out << "        if (pModes != NULL) {\n";
                out << "            commonInitVars.fdMode[CO_LINE] = pModes[CO_LINE];\n";
                out << "        }\n";
            }
            out << "    }\n";
            out << "\n";
        } else {
            out << "    commonInitVars.protocolType[0] = *pProtType;\n";
            if (canFd)
                out << "    commonInitVars.fdMode[0] = *pModes;\n";
            out << "\n";
        }
    }
    out << "    retVal = commonStackInit(&commonInitVars);\n";
    out << "    if (retVal != RET_OK) {\n";
    out << "        return (retVal);\n";
    out << "    }\n";
    out << "    CO_HANDLE_WATCHDOG\n";
    out << commonHelper()->commonUdsCall();
    if (m_hasCanopen) {
        out << "    coCanOpenStackVarInit(&serviceInitVars);\n";
        out << "    CO_HANDLE_WATCHDOG\n";
    }
    if (m_hasJ1939) {
        out << "    j1939StackInit_common(&j1939InitVars);\n";
        out << "    CO_HANDLE_WATCHDOG\n";
    }
    if (m_hasRawCan) {
        out << "   rawcanStackInit_common(&rawcanInitVars);\n";
        out << "    CO_HANDLE_WATCHDOG\n";
    }
    if (!m_rawCanOnly)
        writeLoadParameter(out);
    out << "    return(retVal);\n";
    out << "}\n";
    out << "\n";
}

// commonInitVars and the initialisation values of each protocol the device has.
void MultiProGenerator::writeServiceDeclarations(SectionStream& out)
{
    const bool newInit = settingInt(QStringLiteral("new_init_structure")) == 1;
    const bool canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    const std::unique_ptr<CommonGeneratorHelper> helper = commonHelper();
    if (newInit)
        out << helper->commonDeclarations();
    if (m_hasCanopen) {
        writeServiceTable(out, QStringLiteral("       "));
        out << "\n";
    }
    if (m_hasJ1939) {
        out << "const J1939_SERVICE_INIT_VAL_T\tj1939InitVars = {\n";
        if (newInit) {
            out << "\t5u,\n";
            if (coreForm())
                out << "\t{ J1939_RECEIVE_PGN_CFG_COUNTS },\n";
            out << "\t{ J1939_RECEIVE_PGN_COUNTS },\n";
            out << "\t{ J1939_TRANSMIT_PGN_COUNTS },\n";
            out << "\t{ J1939_SSDO_COUNTS },\n";
            out << "\t{ J1939_CSDO_COUNTS }";
            if (j1939SettingInt(QStringLiteral("safetysupport")) > 0) {
                out << ",\n";
                out << "\t{ J1939_SDG_TRANS_COUNTS },\n";
                out << "\t{ J1939_SDG_REC_COUNTS }";
            }
            if (canFd) {
                out << ",\n";
                out << "\t{ J1939_DEST_BUFFER_COUNTS }";
            }
            out << "\n";
        } else {
            out << R"(	3u,
	{ CO_REC_BUFFER_COUNTS },
	{ CO_TR_BUFFER_COUNTS },
	{ CO_COB_COUNTS },
	{ J1939_RECEIVE_PGN_COUNTS },
	{ J1939_TRANSMIT_PGN_COUNTS }
)";
        }
        out << "};\n";
        out << "\n";
    }
    if (m_hasRawCan) {
        if (coreForm())
            out << "/* rawCAN initalization values */\n";
        out << "const RAWCAN_SERVICE_INIT_VAL_T\trawcanInitVars = {\n";
        if (newInit) {
            out << "       " << helper->serviceVersion(CommonGeneratorHelper::RawCanService) << "u,\n";
            out << "\t{ RAWCAN_RECEIVE_COUNTS },\n";
            out << "\t{ RAWCAN_TRANSMIT_COUNTS }\n";
        } else {
            out << R"(	3u,
	{ CO_REC_BUFFER_COUNTS },
	{ CO_TR_BUFFER_COUNTS },
	{ CO_COB_COUNTS },
	{ RAWCAN_RECEIVE_COUNTS },
	{ RAWCAN_TRANSMIT_COUNTS }
)";
        }
        out << "};\n";
        out << "\n";
    }
}

void MultiProGenerator::writeLineFunction(SectionStream& out, quint8 line)
{
    const bool canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    const int type = m_database->lineType(line);
    out << "/* init line " << line << " */\n";
    out << "RET_T " << functionName("_line") << line << "(\n";
    if (m_rawCanOnly) {
        out << "\tUNSIGNED8 canLine\n";
    } else if (coreForm()) {
        out << "\tUNSIGNED8 canLine,\n";
        out << "\tBOOL_T *pModes\n";
    } else {
        out << "\tUNSIGNED8 canLine,\n";
        if (canFd) {
            out << "\tMP_PROTOCOL_TYPE_T protType,\n";
            out << "\tBOOL_T fdMode\n";
        } else {
            out << "\tMP_PROTOCOL_TYPE_T protType\n";
        }
    }
    out << "    )\n";
    out << "{\n";
    if (protocolCount(type) == 1) {
        if (Line::carriesCANopen(type)) {
            out << "RET_T retVal = RET_OK;\n";
            writeCanopenSequence(out, line, 0);
        } else if (Line::carriesJ1939(type)) {
            out << "RET_T retVal;\n";
            if (!coreForm()) {
                out << "    (void)protType;\n";
                if (canFd)
                    out << "    (void)fdMode;\n";
            }
            writeJ1939LineStart(out, line);
        } else {
            out << "RET_T retVal;\n";
            writeRawCanLineStart(out, line);
        }
    } else {
        // A line of two protocols runs the one the application chose, or both.
        auto guard = [&](const char* mask) {
            if (coreForm())
                out << "    if ((commonInitVars.protocolType[canLine] & " << mask << ") == " << mask
                    << ") {\n";
            else
                out << "    if ((protType & " << mask << ") == " << mask << ")  {\n";
        };
        out << "RET_T retVal = RET_OK;\n";
        if (!coreForm() && canFd)
            out << "    (void)fdMode;\n";
        if (Line::carriesJ1939(type)) {
            guard("MP_PROT_TYPE_J1939");
            out << "    "
                << QStringLiteral("    retVal = j1939StackInit_line(%1&j1939Config%2);\n")
                       .arg(callArguments(QString()), lineSuffix(line));
            out << "    }\n";
            writeCheck(out);
        }
        if (Line::carriesRawCan(type)) {
            guard("MP_PROT_TYPE_RAWCAN");
            out << "    "
                << QStringLiteral("    retVal = rawcanStackInit_line(%1&rawcanConfig%2);\n")
                       .arg(callArguments(QString()), lineSuffix(line));
            out << "    }\n";
            writeCheck(out);
        }
        if (Line::carriesCANopen(type)) {
            guard("MP_PROT_TYPE_CANOPEN");
            writeCanopenSequence(out, line, 4);
            out << "    }\n";
        }
    }
    if (settingInt(QStringLiteral("isotp_connection_cnt")) != 0) {
        out << "\n";
        out << "    /* initialize ISO-TP */\n";
        out << "    retVal = isoTpInit(" << (m_projectMultiLine ? "canLine" : "") << ");\n";
        writeCheck(out);
    }
    out << commonHelper()->lineUdsCall(line, m_projectMultiLine);
    out << "    return(retVal);\n";
    out << "}\n";
}

void MultiProGenerator::writeJ1939LineStart(SectionStream& out, quint8 line)
{
    out << "    retVal = j1939StackInit_line(" << callArguments(QString()) << "&j1939Config"
        << lineSuffix(line) << ");\n";
    writeCheck(out);
    const int objects = layout().lineAssignCount(line);
    if (j1939SettingInt(QStringLiteral("cia510serversupport")) != 1 || objects == 0 || !m_hasCanopen)
        return;
    const int firstRow = layout().firstAssignRow(line);
    out << "    /* initialize object dictionary variables and pointers CiA 510 */\n";
    out << "    coOdInitOdPtr(" << callArguments(QString()) << "&od_assign[" << firstRow << "], " << objects
        << ", od_description, " << layout().lineDescriptionCount(line) << ", NULL, &od_data_variables);\n";
}

void MultiProGenerator::writeRawCanLineStart(SectionStream& out, quint8 line)
{
    out << "    retVal = rawcanStackInit_line(" << callArguments(QString()) << "&rawcanConfig"
        << lineSuffix(line) << ");\n";
    writeCheck(out);
}

// The services of the line's object dictionary, as gen_objdict.c starts
// them for one line; `indent` blanks more inside a protocol test.
void MultiProGenerator::writeCanopenSequence(SectionStream& out, quint8 line, int indent)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        SectionStream sequence(this, &buffer);
        const int firstRow = layout().firstAssignRow(line);
        sequence << "    coOdInitOdPtr(" << callArguments(QString()) << "&od_assign[" << firstRow << "], "
                 << layout().lineAssignCount(line) << ", od_description, "
                 << layout().lineDescriptionCount(line) << ", NULL, &od_data_variables);\n";
        writeServiceInits(sequence, line, m_projectMultiLine);
        const int nmtMaster = lineSettingInt(QStringLiteral("nmtmaster"), line);
        if (settingInt(QStringLiteral("lss_supported")) > 0) {
            if (nmtMaster == 1) {
                sequence << "    /* initialize LSS Master */\n";
                sequence << "    retVal = coLssMasterInit(" << (m_projectMultiLine ? "canLine" : "")
                         << ");\n";
            } else {
                sequence << "    /* initialize LSS Slave */\n";
                if (settingInt(QStringLiteral("co_ml_ms")) > 0)
                    sequence << "    retVal =  coLssInit(";
                else
                    sequence << "    retVal = coLssInit(";
                sequence << (m_projectMultiLine ? "canLine" : "") << ");\n";
            }
            writeCheck(sequence);
        }
        writeNmtInit(sequence, nmtMaster == 1, m_projectMultiLine);
    }
    const QString blanks(indent, QLatin1Char(' '));
    const QStringList rows = QString::fromUtf8(buffer.data()).split(QLatin1Char('\n'));
    for (qsizetype i = 0; i + 1 < rows.size(); ++i) {
        const QString& row = rows.at(i);
        out << (row.isEmpty() || row.startsWith(QLatin1Char('#')) ? row : blanks + row) << "\n";
    }
}

// The first SDO server of a CAN FD line is a USDO server when the line runs
// in FD mode, and so are its USDO clients; the line's start gets that mode as
// an argument of its own.
void MultiProGenerator::writeSdoServerInits(SectionStream& out, quint8 line, bool perLine)
{
    if (settingInt(QStringLiteral("canfd_supported")) <= 0 || coreForm()) {
        ObjDictGenerator::writeSdoServerInits(out, line, perLine);
        return;
    }
    const QString canLine = perLine ? QStringLiteral("canLine") : QString();
    const QString first = perLine ? QStringLiteral("canLine, ") : QString();
    out << "    /* initialize (u)sdo server(s) */\n";
    out << "    if (fdMode == CO_TRUE) {\n";
    out << "        retVal = coUsdoServerInit(" << canLine << ");\n";
    out << "    } else {\n";
    out << "        retVal = coSdoServerInit(" << first << "1u);\n";
    out << "    }\n";
    writeCheck(out);
    for (quint16 index : indicesIn(line, 0x1201, 0x127F)) {
        out << "    retVal = coSdoServerInit(" << first << (index - 0x11FF) << "u);\n";
        writeCheck(out);
    }
}

void MultiProGenerator::writeSdoClientInits(SectionStream& out, quint8 line, bool perLine)
{
    if (settingInt(QStringLiteral("canfd_supported")) <= 0 || coreForm() ||
        settingInt(QStringLiteral("usdo_client_cnt")) == 0) {
        ObjDictGenerator::writeSdoClientInits(out, line, perLine);
        return;
    }
    const QString first = perLine ? QStringLiteral("canLine, ") : QString();
    if (has(line, 0x1280))
        out << "    /* initialize sdo clients(s) */\n";
    out << "    /* initialize (u)sdo clients(s) */\n";
    out << "    if (fdMode == CO_TRUE) {\n";
    out << "        retVal = coUsdoClientInit(" << (perLine ? "canLine" : "") << ");\n";
    writeCheck(out, 4);
    out << "    }\n";
    for (quint16 index : indicesIn(line, 0x1280, 0x12FF)) {
        out << "    retVal = coSdoClientInit(" << first << (index - 0x127F) << "u);\n";
        writeCheck(out);
    }
}

bool MultiProGenerator::pdoRouting() const
{
    bool routingEntries = false;
    bool mappings = false;
    bool writable = false;
    for (quint8 line : dictionaryLines()) {
        if (const DictObject* table = findObject(line, 0x1F2C))
            routingEntries = routingEntries || table->subindices.size() > 1;
        for (quint16 index : indicesIn(line, 0x1600, 0x17FF)) {
            mappings = true;
            const SUBINDEX_DATA_T* first = findSub(line, index, 0);
            writable = writable || (first && first->accesstype == QLatin1String("rw"));
        }
    }
    return routingEntries && mappings && writable;
}

void MultiProGenerator::writeFinishFunction(SectionStream& out)
{
    writeStackInitFinish(
        out, functionName("_finish"), pdoRouting(), "RET_T retVal;\n",
        coreForm() ? "     * Currently the function is empty, but may be used later for additional\n"
                   : "     * Without it the function is empty, but may be used later for additional\n");
}
