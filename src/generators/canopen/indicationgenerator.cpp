#include "generators/canopen/indicationgenerator.h"

#include "canopenlib/udsstaticindication.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QTextStream>

#include <iterator>

namespace {

constexpr quint8 highestDictionaryLine = 31;

// One static indication of the stack: the setting that names the function,
// the return word and the parameters in the classic and in the V4 form. A
// null form means that stack has no such indication; a null V4 text means
// the classic parameters.
struct IndicationRow
{
    const char* key;
    const char* returnWord;
    const char* classic;
    const char* core;
};

const IndicationRow indicationRows[] = {
    {"fct_sdo_server_read", "RET_T ",
     "BOOL_T execute, UNSIGNED8 sdoNr, UNSIGNED16 index, UNSIGNED8 subIndex);\n", nullptr},
    {"fct_sdo_server_write", "RET_T ",
     "BOOL_T execute, UNSIGNED8 sdoNr, UNSIGNED16 index, UNSIGNED8 subIndex);\n", nullptr},
    {"fct_sdo_server_check_write", "RET_T ",
     "BOOL_T execute, UNSIGNED8 sdoNr, UNSIGNED16 index, UNSIGNED8 subIndex, const UNSIGNED8 *pData);\n",
     nullptr},
    {"fct_pdo", "void ", "UNSIGNED16 pdoNr);\n", nullptr},
    {"fct_pdo_receive", "void ", "UNSIGNED16 pdoNr);\n", nullptr},
    {"fct_pdo_sync", "void ", "UNSIGNED16 pdoNr);\n", nullptr},
    {"fct_pdo_update", "void ", nullptr, "UNSIGNED16 pdoNr);\n"},
    {"fct_nmt", "RET_T ", "BOOL_T execute, CO_NMT_STATE_T nmtState);\n",
     "CO_EVENT_NMT_SERVICE_T service, CO_NMT_STATE_T newState);\n"},
    {"fct_errctrl", "void ", "UNSIGNED8 nodeId, CO_ERRCTRL_T errCtrlState, CO_NMT_STATE_T nmtState);\n",
     "CORE_CONST CO_EVENT_ERRCTRL_PARA_T *pPara);\n"},
    {"fct_sync", "void ", "UNSIGNED8 syncCounter);\n", nullptr},
    {"fct_sync_finished", "void ", "UNSIGNED8 syncCounter);\n", nullptr},
    {"fct_led_green", "void ", "BOOL_T ledState);\n", nullptr},
    {"fct_led_red", "void ", "BOOL_T ledState);\n", nullptr},
    {"fct_can", "void ", "CO_CAN_STATE_T canState);\n", "CORE_CAN_STATE_T canState);\n"},
    {"fct_cfgman", "void ",
     "CO_CFG_TRANSFER_T type, UNSIGNED8 sdoNr, UNSIGNED16 index, UNSIGNED8 sub, UNSIGNED32 reason);\n",
     "CO_CFG_TRANSFER_T type, CO_EVENT_CFG_PARA_T* pPara);\n"},
    {"fct_flyma", "void ", "CO_FLYMA_STATE_T state, UNSIGNED8 node, UNSIGNED8 priority);\n",
     "CORE_CONST CO_EVENT_FLYING_MASTER_PARA_T *pPara);\n"},
    {"fct_sdo_client_read", "void ",
     "UNSIGNED8 sdoNr, UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 size, UNSIGNED32 result);\n",
     "CORE_CONST CO_EVENT_SDO_CLIENT_PARA_T *pPara);\n"},
    {"fct_sdo_client_write", "void ",
     "UNSIGNED8 sdoNr, UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 result);\n",
     "CORE_CONST CO_EVENT_SDO_CLIENT_PARA_T *pPara);\n"},
    {"fct_emcy", "void ", "UNSIGNED16 errCode, UNSIGNED8 *addErrorCode);\n",
     "CO_EVENT_EMCY_PRODUCER_PARA_T *pPara);\n"},
    {"fct_emcy_consumer", "void ",
     "UNSIGNED8 node, UNSIGNED16 errCode, UNSIGNED8 errorRegister, UNSIGNED8 const *addErrorCode);\n",
     "CORE_CONST CO_EVENT_EMCY_CONSUMER_PARA_T *pPara);\n"},
    {"fct_time", "void ", "CO_TIME_T *pTime);\n", nullptr},
    {"fct_store", "RET_T ", "UNSIGNED8 subIndex);\n", nullptr},
    {"fct_store_clear", "RET_T ", "UNSIGNED8 subIndex);\n", nullptr},
    {"fct_store_save", "RET_T ", "UNSIGNED8 subIndex);\n", nullptr},
    {"fct_lss", "RET_T ",
     "CO_LSS_SERVICE_T service, UNSIGNED16 bitrate, UNSIGNED8 *pErrCode, UNSIGNED8 *pErrSpec);\n", nullptr},
    {"fct_lss_master", "void ",
     "CO_LSS_MASTER_SERVICE_T, UNSIGNED16 errorCode, UNSIGNED8 errorSpec, UNSIGNED32 *pIdentity);\n",
     "CO_EVENT_LSS_MASTER_PARA_T *pPara);\n"},
    {"fct_comm", "void ", "CO_COMM_STATE_EVENT_T commEvent);\n", "CORE_COMM_STATE_EVENT_T commEvent);\n"},
    {"fct_manager", "void ", "UNSIGNED8 node, CO_MANAGER_EVENT_T event);\n", nullptr},
    {"fct_mpdo", "void ", "UNSIGNED16 pdoNr, UNSIGNED16 index, UNSIGNED8 subIndex);\n",
     "CORE_CONST CO_EVENT_MPDO_PARA_T *pPara);\n"},
};

// The USDO server returns whether it takes the request, as the SDO server does.
const IndicationRow usdoServerRows[] = {
    {"usdo_server_read_ind_function", "RET_T ",
     "BOOL_T execute, UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex);\n", nullptr},
    {"usdo_server_read_finished_ind_function", "void ",
     "UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex);\n", nullptr},
    {"usdo_server_write_ind_function", "RET_T ",
     "BOOL_T execute, UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex);\n", nullptr},
    {"usdo_server_ind_check_write_function", "RET_T ",
     "UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex, CO_CONST UNSIGNED8* pData);\n", nullptr},
    {"usdo_server_domain_write_ind_function", "RET_T ",
     "UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 domainBufSize, UNSIGNED32 transferSize);\n",
     "CORE_CONST CO_EVENT_USDO_SERVER_DOMAIN_PARA_T *pPara);\n"},
    {"usdo_server_domain_read_ind_function", "RET_T ",
     "UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 domainBufSize, UNSIGNED32 transferSize);\n",
     "CORE_CONST CO_EVENT_USDO_SERVER_DOMAIN_PARA_T *pPara);\n"},
};

const IndicationRow usdoClientRows[] = {
    {"usdo_client_read_ind_function", "void ",
     "UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex, RET_T result);\n",
     "CO_EVENT_USDO_CLIENT_PARA_T *pPara);\n"},
    {"usdo_client_write_ind_function", "void ",
     "UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex, RET_T result);\n",
     "CO_EVENT_USDO_CLIENT_PARA_T *pPara);\n"},
    {"usdo_client_domain_write_ind_function", "void ",
     "UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 domainBufSize, UNSIGNED32 "
     "transferSize);\n",
     "CORE_CONST CO_EVENT_USDO_CLIENT_DOMAIN_PARA_T *pPara);\n"},
    {"usdo_client_domain_read_ind_function", "void ",
     "UNSIGNED8 nodeId, UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 domainBufSize, UNSIGNED32 "
     "transferSize);\n",
     "CORE_CONST CO_EVENT_USDO_CLIENT_DOMAIN_PARA_T *pPara);\n"},
};

} // namespace

indicationgenerator::indicationgenerator(QObject* parent) : AbstractGenerator(parent) {}

bool indicationgenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/gen_indication.h").arg(m_outputDir));
}

AbstractGenerator::GeneratorStatus indicationgenerator::start()
{
    return startWorker(QStringLiteral("gen_indication.h"));
}

void indicationgenerator::doJob()
{
    beginJob();
    readGenerateML();
    const QList<Prototype> prototypes = namedPrototypes();
    if (openOutputFile(QStringLiteral("gen_indication.h"))) {
        QTextStream out(m_file);
        writeHead(out);
        Q_EMIT progress(25);
        if (prototypes.isEmpty())
            writeNoneDefined(out);
        else
            writePrototypes(out, prototypes);
        writeTail(out);
    }
    finishJob();
}

QList<indicationgenerator::Prototype> indicationgenerator::namedPrototypes() const
{
    QList<Prototype> prototypes;
    auto take = [&](const IndicationRow* rows, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            const IndicationRow& row = rows[i];
            const char* parameters = coreForm() && row.core ? row.core : row.classic;
            const QString function = m_database->getGeneralSetting(QString::fromLatin1(row.key)).trimmed();
            if (parameters && !function.isEmpty())
                prototypes << Prototype{function, row.returnWord, parameters, nullptr};
        }
    };
    take(indicationRows, std::size(indicationRows));
    if (m_database->getGeneralSetting(QStringLiteral("usdo_server_enabled")).trimmed().toInt() != 0)
        take(usdoServerRows, std::size(usdoServerRows));
    if (m_database->getGeneralSetting(QStringLiteral("usdo_client_enabled")).trimmed().toInt() != 0)
        take(usdoClientRows, std::size(usdoClientRows));
    if (coreForm() &&
        m_database->getGeneralSetting(QStringLiteral("uds_static_indication")).trimmed().toInt() == 1) {
        for (const UDS::StaticIndication* service : UDS::staticIndicationsBySetting()) {
            const QString function = m_database->getGeneralSetting(QLatin1String(service->key)).trimmed();
            if (!function.isEmpty())
                prototypes << Prototype{function, service->returnWord, service->parameters, service->macro};
        }
    }
    return prototypes;
}

// The line parameter comes in when more than one line holds a dictionary.
bool indicationgenerator::multiLineForm() const
{
    if (m_generateML)
        return true;
    int dictionaries = 0;
    for (quint8 line : m_database->getNodeList()) {
        if (line <= highestDictionaryLine && m_database->getIndexList(line, 0x1000, 0xFFFF).size() > 1)
            ++dictionaries;
    }
    return dictionaries > 1;
}

void indicationgenerator::writeHead(QTextStream& out)
{
    out << "/*\n";
    if (coreForm())
        out << QStringLiteral(" * static indication definitions for %1 (V4) - generated by %2 %3\n")
                   .arg(m_deviceName, QCoreApplication::applicationName(), m_version);
    else
        out << QStringLiteral(" * static indication definitions for %1 - generated by %2 %3\n")
                   .arg(m_deviceName, QCoreApplication::applicationName(), m_version);
    out << " * " << dateTimeText() << " */\n\n";
    out << "/* protect against multiple inclusion of the file */\n";
    out << "#ifndef GEN_INDICATION\n";
    out << "#define GEN_INDICATION 1\n\n";
}

void indicationgenerator::writePrototypes(QTextStream& out, const QList<Prototype>& prototypes)
{
    const char* lineParameter = nullptr;
    if (multiLineForm())
        lineParameter = coreForm() ? "CAN_LINE_TYPE CAN_LINE, " : "UNSIGNED8 CO_LINE, ";
    for (const Prototype& prototype : prototypes) {
        if (prototype.guard)
            out << "#if " << prototype.guard << "\n";
        out << prototype.returnWord << prototype.function << "(";
        if (lineParameter)
            out << lineParameter;
        out << prototype.parameters;
        if (prototype.guard)
            out << "#endif\n";
    }
}

void indicationgenerator::writeNoneDefined(QTextStream& out)
{
    out << R"(/* 
   There are not any static indication functions defined.
   If there were some, they would be declared here. 
 */
)";
}

void indicationgenerator::writeTail(QTextStream& out)
{
    out << "#endif /* GEN_INDICATION*/\n";
}
