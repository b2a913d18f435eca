#include "generators/canopen/objdictgenerator.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"
#include "generators/stackwords.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <iterator>

namespace {

constexpr quint8 highestDictionaryLine = 31;

// The edition of the tool for EnergyBus devices; this build doesn't bear its name.
const QString energyBusEditionName = QStringLiteral("EnergyBus Tarnwick");

struct IndicationRow
{
    const char* key;
    const char* classic;
    // Null when the V4 text is the classic one with CORE_CONST.
    const char* core;
};

const IndicationRow indicationRows[] = {
    {"fct_sdo_server_read", "CO_CONST CO_EVENT_SDO_SERVER_T coEventSdoServerReadInd = ",
     "CORE_CONST CO_EVENT_SDO_SERVER_FUNCTION_T coEventSdoServerReadInd = "},
    {"fct_sdo_server_write", "CO_CONST CO_EVENT_SDO_SERVER_T coEventSdoServerWriteInd = ",
     "CORE_CONST CO_EVENT_SDO_SERVER_FUNCTION_T coEventSdoServerWriteInd = "},
    {"fct_sdo_server_check_write",
     "CO_CONST CO_EVENT_SDO_SERVER_CHECK_WRITE_T coEventSdoServerCheckWriteInd = ", nullptr},
    {"fct_pdo", "CO_CONST CO_EVENT_PDO_T coEventPdoInd = ", nullptr},
    {"fct_pdo_receive", "CO_CONST CO_EVENT_PDO_T coEventPdoRecInd = ", nullptr},
    {"fct_pdo_sync", "CO_CONST CO_EVENT_PDO_T coEventPdoSyncInd = ", nullptr},
    {"fct_pdo_update", nullptr, "CORE_CONST CO_EVENT_PDO_UPDATE_T coEventPdoUpdateInd = "},
    {"fct_nmt", "CO_CONST CO_EVENT_NMT_T coEventNmtInd = ", nullptr},
    {"fct_errctrl", "CO_CONST CO_EVENT_ERRCTRL_T coEventErrCtrlInd = ", nullptr},
    {"fct_sync", "CO_CONST CO_EVENT_SYNC_T coEventSyncInd = ", nullptr},
    {"fct_sync_finished", "CO_CONST CO_EVENT_SYNC_FINISHED_T coEventSyncFinishedInd = ", nullptr},
    {"fct_led_green", "CO_CONST CO_EVENT_LED_T coEventLedGreenInd = ", nullptr},
    {"fct_led_red", "CO_CONST CO_EVENT_LED_T coEventLedRedInd = ", nullptr},
    {"fct_can", "CO_CONST CO_EVENT_CAN_STATE_T coEventCanStateInd = ",
     "CORE_CONST CORE_EVENT_CAN_STATE_T coreEventCanStateInd = "},
    {"fct_cfgman", "CO_CONST CO_EVENT_CFG_MANAGER_T coEventCfgManInd = ", nullptr},
    {"fct_flyma", "CO_CONST CO_EVENT_FLYMA_T coEventFlymaInd = ", nullptr},
    {"fct_sdo_client_read", "CO_CONST CO_EVENT_SDO_CLIENT_READ_T coEventSdoClientReadInd = ", nullptr},
    {"fct_sdo_client_write", "CO_CONST CO_EVENT_SDO_CLIENT_WRITE_T coEventSdoClientWriteInd = ", nullptr},
    {"fct_emcy", "CO_CONST CO_EVENT_EMCY_T coEventEmcyInd = ", nullptr},
    {"fct_emcy_consumer", "CO_CONST CO_EVENT_EMCY_CONS_T coEventEmcyConsumerInd = ",
     "CORE_CONST CO_EVENT_EMCY_CONSUMER_T coEventEmcyConsumerInd = "},
    {"fct_time", "CO_CONST CO_EVENT_TIME_T coEventTimeInd = ", nullptr},
    {"fct_store", "CO_CONST CO_EVENT_STORE_T coEventStoreLoadInd = ", nullptr},
    {"fct_store_clear", "CO_CONST CO_EVENT_STORE_T coEventStoreClearInd = ", nullptr},
    {"fct_store_save", "CO_CONST CO_EVENT_STORE_T coEventStoreSaveInd = ", nullptr},
    {"fct_lss", "CO_CONST CO_EVENT_LSS_T coEventLssInd = ", nullptr},
    {"fct_lss_master", "CO_CONST CO_EVENT_LSS_MASTER_T coEventLssMasterInd = ", nullptr},
    {"fct_comm",
     "CO_CONST CO_EVENT_COMM_T coEventCommInd = ", "CORE_CONST CORE_EVENT_COMM_T coreEventCommInd = "},
    {"fct_manager", "CO_CONST CO_EVENT_MANAGER_BOOTUP_T coEventManagerInd = ", nullptr},
    {"fct_mpdo", "CO_CONST CO_EVENT_MPDO_T coEventMPdoInd = ", nullptr},
};

const IndicationRow usdoServerIndicationRows[] = {
    {"usdo_server_read_ind_function", "CO_CONST CO_EVENT_USDO_SERVER_T coEventUsdoServerReadInd = ", nullptr},
    {"usdo_server_read_finished_ind_function",
     "CO_CONST CO_EVENT_USDO_SERVER_FINISHED_T coEventUsdoServerReadFinishedInd = ", nullptr},
    {"usdo_server_write_ind_function",
     "CO_CONST CO_EVENT_USDO_SERVER_T coEventUsdoServerWriteInd = ", nullptr},
    {"usdo_server_ind_check_write_function",
     "CO_CONST CO_EVENT_USDO_SERVER_CHECK_WRITE_T coEventUsdoServerCheckWriteInd = ", nullptr},
    {"usdo_server_domain_read_ind_function",
     "CO_CONST CO_EVENT_USDO_SERVER_DOMAIN_READ_T coEventUsdoServerDomainReadInd = ", nullptr},
    {"usdo_server_domain_write_ind_function",
     "CO_CONST CO_EVENT_USDO_SERVER_DOMAIN_WRITE_T coEventUsdoServerDomainWriteInd = ", nullptr},
};

const IndicationRow usdoClientIndicationRows[] = {
    {"usdo_client_read_ind_function", "CO_CONST CO_EVENT_USDO_CLIENT_READ_T coEventUsdoClientReadInd = ",
     "CORE_CONST CO_EVENT_USDO_CLIENT_T coEventUsdoClientReadInd = "},
    {"usdo_client_write_ind_function", "CO_CONST CO_EVENT_USDO_CLIENT_WRITE_T coEventUsdoClientWriteInd = ",
     "CORE_CONST CO_EVENT_USDO_CLIENT_T coEventUsdoClientWriteInd = "},
    {"usdo_client_domain_read_ind_function",
     "CO_CONST CO_EVENT_USDO_CLIENT_DOMAIN_TRANSFER_T coEventUsdoClientDomainReadInd = ", nullptr},
    {"usdo_client_domain_write_ind_function",
     "CO_CONST CO_EVENT_USDO_CLIENT_DOMAIN_TRANSFER_T coEventUsdoClientDomainWriteInd = ", nullptr},
};

} // namespace

ObjDictGenerator::ObjDictGenerator(bool compactDescription, bool camServerMode, QObject* parent)
    : AbstractGenerator(parent), m_compactDescription(compactDescription), m_camServerMode(camServerMode)
{
}

bool ObjDictGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/gen_objdict.c").arg(m_outputDir));
}

AbstractGenerator::GeneratorStatus ObjDictGenerator::start()
{
    return startWorker(QStringLiteral("gen_objdict.c"));
}

void ObjDictGenerator::doJob()
{
    beginJob();
    readGenerateML();
    readProject();
    prepareOutputFile();
    writeDictionaryTables();
    Q_EMIT progress(75);
    if (m_camServerMode)
        writeJ1939OdInit();
    else if (multiLineForm())
        writeStackInitMultiLine();
    else
        writeStackInitSingleLine();
    if (!m_camServerMode)
        writeClosingSections();
    finishJob();
}

void ObjDictGenerator::readProject()
{
    readDictionary();
    readSrdoEntries();
    readRunSettings();
    ObjDictLayout::Options options;
    options.multiLine = multiLineForm();
    options.coreForm = coreForm();
    options.limitCheck = m_limitCheck;
    options.srdoEntries = m_srdoEntries;
    m_layout = ObjDictLayout(m_objects, options);
}

void ObjDictGenerator::writeDictionaryTables()
{
    writeManagedVariables();
    writeConstants();
    if (settingInt(QStringLiteral("generate_string_defaults")) > 0)
        writeStringDefaultValues();
    writeApplicationVariables();
    writeObjectDescriptions();
    writeAssignTable();
    if (!m_camServerMode)
        writePdoMappingTables();
    writeDataVariables();
}

void ObjDictGenerator::writeClosingSections()
{
    writeServiceVariables();
    if (settingInt(QStringLiteral("generate_string_defaults")) > 0)
        writeStringDefaultFunction();
}

const StackWords* ObjDictGenerator::stackWords() const
{
    return coreForm() ? &StackWords::genObjdict() : nullptr;
}

void ObjDictGenerator::readDictionary()
{
    m_objects.clear();
    for (quint8 line = 0; line <= highestDictionaryLine; ++line) {
        if (!m_database->nodeExists(line))
            continue;
        const QList<quint16> indices = m_database->getIndexList(line, 0x1000, 0xFFFF);
        if (indices.isEmpty())
            continue;
        QList<DictObject>& objects = m_objects[line];
        objects.reserve(indices.size());
        for (quint16 index : indices) {
            DictObject object;
            object.index = index;
            INDEX_DATA_T data;
            if (m_database->getIndex(line, index, data))
                object.objectType = data.objecttype;
            const QList<quint8> subindices = m_database->getSubIndexList(line, index);
            object.subindices.reserve(subindices.size());
            object.subs.reserve(subindices.size());
            for (quint8 subindex : subindices) {
                SUBINDEX_DATA_T sub;
                if (!m_database->getSubIndex(line, index, subindex, sub))
                    continue;
                object.subindices << subindex;
                object.subs << sub;
            }
            if (m_compactDescription && index >= 0x1200) {
                QList<const SUBINDEX_DATA_T*> subs;
                for (const SUBINDEX_DATA_T& sub : std::as_const(object.subs))
                    subs << &sub;
                object.compactEnd = compactLimit(object.subindices, subs);
            }
            objects << object;
        }
    }
    m_usedLines.clear();
    m_multiLine = false;
    if (!m_objects.contains(1)) {
        if (m_generateML)
            m_usedLines << 0;
        return;
    }
    m_multiLine = true;
    for (auto it = m_objects.constBegin(); it != m_objects.constEnd(); ++it) {
        if (it.value().size() > 1)
            m_usedLines << it.key();
    }
}

// Static SRDO data name the objects that the safety data are kept in; gen_srdo.c defines them.
void ObjDictGenerator::readSrdoEntries()
{
    m_srdoEntries.clear();
    m_staticSrdo = settingInt(QStringLiteral("static_srdo_data")) == 1;
    if (!m_staticSrdo)
        return;
    const QList<quint8> lines = m_usedLines.isEmpty() ? QList<quint8>{0} : m_usedLines;
    for (quint8 line : lines) {
        for (quint16 index : indicesIn(line, 0x1380, 0x13B0)) {
            for (quint8 subindex : findObject(line, index)->subindices) {
                if (subindex == 0)
                    continue;
                bool ok = false;
                const quint32 value =
                    quint32(COHelper::parseUnsigned(findSub(line, index, subindex)->defaultvalue, &ok));
                m_srdoEntries.insert(objectKey(line, quint16(value >> 16), quint8(value >> 8)));
            }
        }
    }
}

void ObjDictGenerator::readRunSettings()
{
    m_canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    m_limitCheck = settingInt(QStringLiteral("limit_check"));
}

bool ObjDictGenerator::prepareOutputFile()
{
    const bool noStdlib = QFileInfo::exists(QStringLiteral("%1/no_stdlib_include.txt").arg(m_outputDir));
    if (!openOutputFile(QStringLiteral("gen_objdict.c")))
        return false;
    SectionStream out(this);
    out << banner(QStringLiteral("object dictionary for"), QStringLiteral(" */\n"),
                  coreForm() ? QStringLiteral(" (V4)") : QString());
    if (!noStdlib)
        out << "#include <stdlib.h>\n\n";
    out << "#include <gen_define.h>\n";
    if (m_camServerMode) {
        if (setting(QStringLiteral("use_core_headers")) == QLatin1String("1"))
            out << "#include <core_datatype.h>\n";
        else
            out << "#include <co_datatype.h>\n";
        out << "#include <co_odaccess.h>\n";
        out << "#include <j1939_cam11_cam21.h>\n";
    } else {
        out << "#include <co_canopen.h>\n";
        if (udsInUse()) {
            out << "#include <iso_tp.h>\n";
            out << "#include <uds_uds.h>\n";
        }
    }
    out << "#include <gen_indication.h>\n";
    writeUserInclude(out);
    if (multiLineForm() && !m_camServerMode) {
        out << "/* these functions may be used by the application to initialize only a sub set of all "
               "lines.*/\n";
        if (m_canFd)
            out << "RET_T coCanOpenStackInit_common(CO_EVENT_STORE_T pLoadFunction, BOOL_T *pModes);\n";
        else
            out << "RET_T coCanOpenStackInit_common(CO_EVENT_STORE_T pLoadFunction);\n";
        for (quint8 line : std::as_const(m_usedLines)) {
            out << "RET_T coCanOpenStackInit_line" << line;
            if (m_canFd)
                out << "(UNSIGNED8 canLine, CO_INIT_OPTION_T *pCoOptions, BOOL_T *pModes);\n";
            else
                out << "(UNSIGNED8 canLine, CO_INIT_OPTION_T *pCoOptions);\n";
        }
        out << "RET_T coCanOpenStackInit_finish(void);\n";
        if (m_canFd)
            out << "RET_T coCanOpenStackInit_line(UNSIGNED8 canLine, CO_INIT_OPTION_T *pCoOptions, BOOL_T "
                   "*pModes);";
        else
            out << "RET_T coCanOpenStackInit_line(UNSIGNED8 canLine, CO_INIT_OPTION_T *pCoOptions);";
        out << "\n";
    }
    if (QCoreApplication::applicationName() == energyBusEditionName) {
        out << "/* EnergyBus header files */\n";
        out << "#include <eb_energybus.h>\n";
    }
    const QString applicationHeader = setting(QStringLiteral("applicationheader")).trimmed();
    if (!applicationHeader.isEmpty()) {
        out << "/* application header file(s) */\n";
        const QStringList headers = applicationHeader.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString& header : headers)
            out << "#include \"" << header << "\"\n";
    }
    writeStorageClasses(out);
    out << "/* definition of watchdog handle during initialization */\n";
    out << "#ifndef CO_HANDLE_WATCHDOG\n";
    out << "#define CO_HANDLE_WATCHDOG\n";
    out << "#endif /* CO_HANDLE_WATCHDOG */\n\n";
    writeIndicationsAndCounts(out);
    return true;
}

void ObjDictGenerator::writeStorageClasses(SectionStream& out)
{
    out << R"(/* definition of memory specifier */
#ifndef CO_CONST
#define CO_CONST const
#endif

/* definition of compiler-specific storage classes */
#ifndef CO_STORAGE_CLASS
#define CO_STORAGE_CLASS
#endif
#ifndef CO_CONST_STORAGE_CLASS
#define CO_CONST_STORAGE_CLASS
#endif

)";
}

// The user header declares the functions that overwrite COB-IDs and string defaults.
void ObjDictGenerator::writeUserInclude(SectionStream& out)
{
    if (!overwritesPredefinedSet() && settingInt(QStringLiteral("generate_string_defaults")) <= 0)
        return;
    out << "#include <gen_user.h>\n";
    writeUserHeader();
}

void ObjDictGenerator::writeIndicationsAndCounts(SectionStream& out)
{
    out << "/* definition of static indication function pointers */\n";
    writeStaticIndications(out);
    out << "\n/* number of objects */\n";
    out << "#define CO_OD_ASSIGN_CNT " << m_layout.assignCount() << "u\n";
    out << "#define CO_OBJ_DESC_CNT " << m_layout.descriptionCount() << "u\n";
}

void ObjDictGenerator::writeUserHeader()
{
    m_userFile = new QFile(QStringLiteral("%1/gen_user.h").arg(m_outputDir), this);
    if (!m_userFile->open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Truncate))
        return;
    QTextStream out(m_userFile);
    out << banner(QStringLiteral("gen_user.h for"), QStringLiteral(" */\n\n"));
    out << "/* protect against multiple inclusion of the file */\n";
    out << "#ifndef GEN_USER_H\n";
    out << "#define GEN_USER_H 1\n\n";
    out << "#include <gen_define.h>\n";
    out << "#include <co_canopen.h>\n";
    out << "/* prototype for function to overwrite predefined connection set */\n";
    out << "RET_T userOverwriteCobIdSettings(void);\n";
    if (multiLineForm())
        out << "RET_T userOverwriteCobIdSettingsLine(UNSIGNED8 canLine);\n";
    out << "/* prototype for function to set default values of strings */\n";
    out << "RET_T userOverwriteStringDefaultvalues(void);\n";
    out << "\n#endif /* GEN_USER */\n";
    m_userFile->close();
}

void ObjDictGenerator::writeStaticIndications(SectionStream& out)
{
    auto writeRows = [&](const IndicationRow* rows, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            const IndicationRow& row = rows[i];
            const char* text = coreForm() && row.core ? row.core : row.classic;
            const QString value = setting(QString::fromLatin1(row.key)).trimmed();
            if (text && !value.isEmpty())
                out << text << value << ";\n";
        }
    };
    writeRows(indicationRows, std::size(indicationRows));
    if (settingInt(QStringLiteral("usdo_server_enabled")) != 0)
        writeRows(usdoServerIndicationRows, std::size(usdoServerIndicationRows));
    if (settingInt(QStringLiteral("usdo_client_enabled")) != 0)
        writeRows(usdoClientIndicationRows, std::size(usdoClientIndicationRows));
}

const QList<ObjDictGenerator::DictObject>& ObjDictGenerator::objectsOf(quint8 line) const
{
    return ObjDictLayout::objectsOf(m_objects, line);
}

const ObjDictGenerator::DictObject* ObjDictGenerator::findObject(quint8 line, quint16 index) const
{
    return ObjDictLayout::findObject(m_objects, line, index);
}

const SUBINDEX_DATA_T* ObjDictGenerator::findSub(quint8 line, quint16 index, quint8 subindex) const
{
    return ObjDictLayout::findSub(m_objects, line, index, subindex);
}

// The sub-object of a key of the layout, which names only sub-objects that exist.
const SUBINDEX_DATA_T& ObjDictGenerator::subOf(quint32 key) const
{
    return *findSub(quint8(key >> 24), quint16(key >> 8), quint8(key));
}

QList<quint16> ObjDictGenerator::indicesIn(quint8 line, quint16 from, quint16 to) const
{
    QList<quint16> indices;
    for (const DictObject& object : objectsOf(line)) {
        if (object.index >= from && object.index <= to)
            indices << object.index;
    }
    return indices;
}

QString ObjDictGenerator::variableName(quint8 line, quint16 index, quint8 subindex,
                                       const SUBINDEX_DATA_T& sub) const
{
    return Helper::substituteVariables(sub.varname, index, subindex, line);
}

QString ObjDictGenerator::entryComment(quint8 line, quint16 index, quint8 subindex) const
{
    if (multiLineForm())
        return QStringLiteral(" /* %1-0x%2:%3 */")
            .arg(line)
            .arg(index, 4, 16, QLatin1Char('0'))
            .arg(subindex);
    return QStringLiteral(" /* 0x%1:%2 */").arg(index, 4, 16, QLatin1Char('0')).arg(subindex);
}

QString ObjDictGenerator::lineMarker(quint8 line) const
{
    return multiLineForm() ? QStringLiteral("%1_").arg(line) : QString();
}

int ObjDictGenerator::constSlotOf(quint8 line, quint16 index, quint8 subindex) const
{
    return m_layout.constSlot(objectKey(line, index, subindex));
}

// Options carry the master flag when some line decides it at run time.
bool ObjDictGenerator::usesOptions() const
{
    if (!multiLineForm())
        return settingInt(QStringLiteral("nmtmaster")) == 2;
    for (quint8 line : m_usedLines) {
        if (lineSettingInt(QStringLiteral("nmtmaster"), line) == 2)
            return true;
    }
    return false;
}

bool ObjDictGenerator::overwritesPredefinedSet() const
{
    if (settingInt(QStringLiteral("overwrite_predef")) > 0)
        return true;
    for (quint8 line : dictionaryLines()) {
        if (lineSettingInt(QStringLiteral("overwrite_predef"), line) > 0)
            return true;
    }
    return false;
}
