// gen_mp.c and gen_rawcan.c: the driver, the file head, the raw CAN
// configuration and the closing sections. The start functions are in
// multiprogenerator_init.cpp.

#include "generators/multiprotocol/multiprogenerator.h"

#include "database/linetypes.h"
#include "database/objectdatabase.h"
#include "generators/commongeneratorhelper.h"
#include "generators/multiprotocol/pgngenerator.h"
#include "generators/multiprotocol/pgngeneratorv4.h"
#include "generators/stackwords.h"

#include <QFileInfo>

#include <algorithm>

MultiProGenerator::MultiProGenerator(QObject* parent) : ObjDictGenerator(false, false, parent) {}

MultiProGenerator::~MultiProGenerator() = default;

bool MultiProGenerator::canWrite()
{
    if (!m_database)
        return false;
    readProtocols();
    return fileWritable(QStringLiteral("%1/%2").arg(m_outputDir, fileName()));
}

// The address claim must be in the store before the worker starts, as for
// gen_pgn.c, so that the generators after this one see it as a real PGN.
AbstractGenerator::GeneratorStatus MultiProGenerator::start()
{
    if (m_running)
        return Busy;
    if (!m_database)
        return NoDatabase;
    m_pgn = createPgnGenerator();
    m_pgn->setDatabase(m_database);
    m_pgn->setOutputDir(m_outputDir);
    m_pgn->setDeviceName(m_deviceName);
    m_pgn->declareIdentify(false);
    return startWorker(QStringLiteral("gen_mp.c"));
}

std::unique_ptr<PGNGenerator> MultiProGenerator::createPgnGenerator() const
{
    if (coreForm())
        return std::make_unique<PGNGeneratorV4>();
    return std::make_unique<PGNGenerator>();
}

const StackWords* MultiProGenerator::stackWords() const
{
    return coreForm() ? &StackWords::genMp() : nullptr;
}

void MultiProGenerator::doJob()
{
    beginJob();
    readGenerateML();
    readProtocols();
    readProject();
    if (m_pgn && m_udsOnly && openOutputFile(fileName())) {
        SectionStream out(this);
        writeUdsOnlyFile(out);
        m_file->flush();
    } else if (m_pgn && openOutputFile(fileName())) {
        {
            SectionStream out(this);
            writeFileHead(out);
        }
        m_file->flush();
        Q_EMIT progress(10);
        writeJ1939Tables();
        Q_EMIT progress(30);
        if (m_hasCanopen)
            writeDictionaryTables();
        Q_EMIT progress(70);
        SectionStream out(this);
        if (m_hasRawCan)
            writeRawCanConfig(out);
        writeStackInit(out);
        Q_EMIT progress(90);
        writeClosing();
        m_file->flush();
    }
    finishJob();
}

// CANopen, J1939 and raw CAN by what each line carries; only lines 0 to 31
// are lines of the stack.
void MultiProGenerator::readProtocols()
{
    m_activeLines.clear();
    m_lineTypes.clear();
    m_hasCanopen = m_hasJ1939 = m_hasRawCan = false;
    QList<quint8> lines = m_database->getNodeList();
    std::sort(lines.begin(), lines.end());
    int projectLines = 0;
    for (quint8 line : std::as_const(lines)) {
        if (line >= Line::firstScratch)
            continue;
        ++projectLines;
        const int type = m_database->lineType(line);
        if (line >= Line::stackLimit ||
            !(Line::carriesCANopen(type) || Line::carriesJ1939(type) || Line::carriesRawCan(type)))
            continue;
        m_activeLines << line;
        m_lineTypes << type;
        m_hasCanopen = m_hasCanopen || Line::carriesCANopen(type);
        m_hasJ1939 = m_hasJ1939 || Line::carriesJ1939(type);
        m_hasRawCan = m_hasRawCan || Line::carriesRawCan(type);
    }
    m_projectMultiLine = projectLines > 1;
    m_rawCanOnly = m_hasRawCan && !m_hasCanopen && !m_hasJ1939;
    m_udsOnly = coreForm() && !m_projectMultiLine && udsInUse() &&
                setting(QStringLiteral("uds_bl_setting")) == QLatin1String("1");
}

QString MultiProGenerator::fileName() const
{
    if (m_udsOnly)
        return QStringLiteral("gen_uds.c");
    return m_rawCanOnly ? QStringLiteral("gen_rawcan.c") : QStringLiteral("gen_mp.c");
}

QString MultiProGenerator::functionName(const char* part) const
{
    const QString base =
        coreForm() && m_rawCanOnly ? QStringLiteral("rawcanStackInit") : QStringLiteral("mpStackInit");
    return base + QLatin1String(part);
}

QString MultiProGenerator::lineSuffix(quint8 line) const
{
    return m_projectMultiLine ? QStringLiteral("_l%1").arg(line) : QString();
}

// The services of a multi-line stack name their line first.
QString MultiProGenerator::callArguments(const QString& rest) const
{
    return m_projectMultiLine ? QStringLiteral("canLine, ") + rest : rest;
}

void MultiProGenerator::writeFileHead(SectionStream& out)
{
    out << banner(m_rawCanOnly ? QStringLiteral("CAN-ID table + initialization for")
                               : QStringLiteral("object dictionary + PGN/SPN table + CAN-ID table + "
                                                "initialization for"),
                  QStringLiteral("\n */\n"));
    if (!QFileInfo::exists(QStringLiteral("%1/no_stdlib_include.txt").arg(m_outputDir)))
        out << "#include <stdlib.h>\n\n";
    out << "#include <gen_define.h>\n";
    if (m_rawCanOnly)
        out << "#include <rawcan_rawcan.h>\n";
    else
        out << "#include <mp_mp.h>\n";
    if (udsInUse()) {
        out << "#include <iso_tp.h>\n";
        out << "#include <uds_uds.h>\n";
        if (coreForm())
            out << "#include <uds_indication.h>\n";
    }
    if (m_hasCanopen)
        out << "#include <gen_indication.h>\n";
    if (!setting(QStringLiteral("use_core_headers")).trimmed().isEmpty()) {
        out << "#include <icore_commtask.h>\n";
        out << "#include <icore_cobhandler.h>\n";
        out << "#include <icore_queue.h>\n";
    } else {
        out << "#include <ico_commtask.h>\n";
        out << "#include <ico_cobhandler.h>\n";
        out << "#include <ico_queue.h>\n";
    }
    out << "#include <gen_extern_decl.h>\n";
    if (j1939SettingInt(QStringLiteral("cia510serversupport")) == 1) {
        out << "#include <j1939_cam11_cam21.h>\n";
        if (!m_rawCanOnly)
            out << "#include <ico_odaccess.h>\n";
    }
    out << "\n";
    const QString applicationHeader = setting(QStringLiteral("applicationheader")).trimmed();
    if (!applicationHeader.isEmpty()) {
        out << "/* application header file(s) */\n";
        const QStringList headers = applicationHeader.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString& header : headers)
            out << "#include <" << header << ">\n";
        out << "\n";
    }
    writeWatchdogDefinition(out);
    writeUserInclude(out);
    writePrototypes(out);
    writeStorageClasses(out);
    out << "\n";
    writeIndicationsAndCounts(out);
    out << "\n";
}

void MultiProGenerator::writeWatchdogDefinition(SectionStream& out)
{
    out << R"(/* definition of watchdog handle during initialization */
#ifndef CO_HANDLE_WATCHDOG
#define CO_HANDLE_WATCHDOG
#endif /* CO_HANDLE_WATCHDOG */


)";
}

// A multi-line application may start a part of the lines only; a C99
// compiler needs the functions declared ahead of their first call anyway.
void MultiProGenerator::writePrototypes(SectionStream& out)
{
    const bool canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    out << "/* these functions may be used by the application to initialize only a sub set of all lines.*/\n";
    if (m_rawCanOnly) {
        out << "RET_T " << QStringLiteral("mpStackInit_common") << "(void);\n";
        for (quint8 line : std::as_const(m_activeLines))
            out << "RET_T " << functionName("_line") << line << "(UNSIGNED8 canLine);";
    } else {
        if (canFd)
            out << "RET_T mpStackInit_common(CO_EVENT_STORE_T pLoadFunction, MP_PROTOCOL_TYPE_T *pProtType, "
                   "BOOL_T *pModes);\n";
        else
            out << "RET_T mpStackInit_common(CO_EVENT_STORE_T pLoadFunction, MP_PROTOCOL_TYPE_T "
                   "*pProtType);\n";
        for (quint8 line : std::as_const(m_activeLines)) {
            out << "RET_T mpStackInit_line" << line;
            if (coreForm())
                out << "(UNSIGNED8 canLine, BOOL_T *pModes);";
            else if (canFd)
                out << "(UNSIGNED8 canLine, MP_PROTOCOL_TYPE_T protType, BOOL_T fdMode);";
            else
                out << "(UNSIGNED8 canLine, MP_PROTOCOL_TYPE_T protType);";
        }
    }
    out << "RET_T " << functionName("_finish") << "(void);\n";
    out << "\n";
}

// The order differs from gen_pgn.c: the address claim comes ahead of the
// PGN tables, and neither the head nor j1939StackInit of that file is used.
void MultiProGenerator::writeJ1939Tables()
{
    m_pgn->prepare();
    SectionStream out(m_pgn.get(), m_file);
    m_pgn->writeManagedVariables(out);
    m_pgn->writeMappingDefinitions(out);
    m_pgn->writeAddressClaimConfig(out);
    m_pgn->writeTransmitTables(out);
    m_pgn->writeReceiveTables(out);
    m_hasJ1939 = m_pgn->writeLineConfig(out);
}

void MultiProGenerator::writeRawCanConfig(SectionStream& out)
{
    out << (coreForm() ? "/* rawCAN configuration */\n" : "\n/* configuration of raw CAN settings */\n");
    for (qsizetype i = 0; i < m_activeLines.size(); ++i) {
        const quint8 line = m_activeLines.at(i);
        if (!Line::carriesRawCan(m_lineTypes.at(i)))
            continue;
        QList<quint32> transmitIds = m_database->getCANIDList(line, ObjectDataBase::Transmit);
        QList<quint32> receiveIds = m_database->getCANIDList(line, ObjectDataBase::Receive);
        std::sort(transmitIds.begin(), transmitIds.end());
        std::sort(receiveIds.begin(), receiveIds.end());
        if (!transmitIds.isEmpty())
            writeRawCanTable(out, line, true, transmitIds);
        if (!receiveIds.isEmpty())
            writeRawCanTable(out, line, false, receiveIds);
        const QString suffix = lineSuffix(line);
        out << "RAWCAN_CONFIG_T  rawcanConfig" << suffix << " = {\n";
        if (transmitIds.isEmpty())
            out << "\t0, \n";
        else
            out << "\t&rawcanTransmitConfig" << suffix << "[0],\n";
        out << "\t" << transmitIds.size() << ", \n";
        if (receiveIds.isEmpty())
            out << "\t0, \n";
        else
            out << "\t&rawcanReceiveConfig" << suffix << "[0],\n";
        out << "\t" << receiveIds.size() << ", \n";
        out << "};\n";
    }
}

void MultiProGenerator::writeRawCanTable(SectionStream& out, quint8 line, bool transmit,
                                         const QList<quint32>& ids)
{
    const QString prefix = m_projectMultiLine ? QStringLiteral("l%1_").arg(line) : QString();
    const quint8 direction = transmit ? ObjectDataBase::Transmit : ObjectDataBase::Receive;
    if (transmit) {
        out << "/*  TX CANID definitions */\n";
        out << "static RAWCAN_TR_CONFIG_T\trawcanTransmitConfig";
    } else {
        out << "/*  RX CANID definitions */\n";
        out << "static RAWCAN_REC_CONFIG_T\trawcanReceiveConfig";
    }
    out << lineSuffix(line) << "[" << ids.size() << "] = {\n";
    for (qsizetype i = 0; i < ids.size(); ++i) {
        const quint32 id = ids.at(i);
        ObjectDataBase::CANID canId;
        m_database->getCANID(line, id, direction, canId);
        out << "    {\n";
        out << "\t" << id << "u, /* CANID number " << QStringLiteral("0x%1").arg(id, 0, 16) << " */ \n";
        if (!transmit) {
            out << "\t0u, /*  RX ignore mask */ \n";
            if (coreForm())
                out << "\t" << canId.cycletime_ms << "u, /* monitoring time in ms (0 .. acyclic) */ \n";
        }
        const QString mapping = prefix + (transmit ? "tx_mapping_" : "rx_mapping_") + QString::number(id);
        out << "\t&" << mapping << "[0], \n";
        // The V4 stack finds the variables in a pointer table of their own, as for a PGN.
        if (coreForm() && m_database->getDataElementList(line, id, direction).isEmpty())
            out << "\tNULL, /* no mappings */\n";
        else if (coreForm())
            out << "\t&" << mapping << "_data[0], \n";
        if (transmit) {
            out << "\t" << canId.cycletime_ms << "u, /* cycletime in ms */ \n";
            out << "\t" << canId.inhibittime_ms << "u, /* inhibit time in ms */ \n";
        }
        out << "\t" << canId.mappingcount << "u /* number of mappings */\n";
        out << (i + 1 < ids.size() ? "    },\n" : "    }\n");
    }
    out << "};\n";
}

// The device of a boot loader speaks UDS alone; the boot loader's own
// configuration gives the CAN-IDs that the project leaves at 0.
void MultiProGenerator::writeUdsOnlyFile(SectionStream& out)
{
    out << banner(QStringLiteral("Initialization for"), QStringLiteral("\n */\n"));
    if (!QFileInfo::exists(QStringLiteral("%1/no_stdlib_include.txt").arg(m_outputDir)))
        out << "#include <stdlib.h>\n\n";
    out << R"(#include <gen_define.h>
#include <core_common.h>
#include <core_isotp.h>
#include <uds_uds.h>
#include <uds_indication.h>

)";
    writeWatchdogDefinition(out);
    const std::unique_ptr<CommonGeneratorHelper> helper = commonHelper();
    out << helper->commonDeclarations();
    out << helper->udsDefinitions();
    out << helper->staticIndicationPointers();
    out << "RET_T udsStackInit(void) {\n";
    out << "    RET_T retVal;\n\n";
    out << R"(    /* setup CAN-IDs */
    if (udsLine0.serverPhysAddrReqCanID == 0u)  {
        udsLine0.serverPhysAddrReqCanID = CFG_UDS_REQ_ID();
    }
    if (udsLine0.serverPhysAddrRespCanID == 0u)  {
        udsLine0.serverPhysAddrRespCanID = CFG_UDS_RES_ID();
    }
    if (udsLine0.serverFuncAddrReqCanID == 0u)  {
        udsLine0.serverFuncAddrReqCanID = CFG_UDS_FUNC_ID();
    })";
    out << "\n\n";
    out << "    retVal = commonStackInit(&commonInitVars);\n";
    writeCheck(out);
    out << helper->commonUdsCall();
    out << helper->lineUdsCall(0, false);
    out << "    return(retVal);\n";
    out << "}\n";
}

// The sections that gen_objdict.c writes behind its start-up code.
void MultiProGenerator::writeClosing()
{
    if (m_hasCanopen)
        writeClosingSections();
}
