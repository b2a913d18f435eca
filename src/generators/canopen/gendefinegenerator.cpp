#include "generators/canopen/gendefinegenerator.h"

#include "database/objectdatabase.h"
#include "generators/stackwords.h"

GenDefineGenerator::GenDefineGenerator(QObject* parent) : CoDefineGenerator(parent) {}

const StackWords* GenDefineGenerator::stackWords() const
{
    return &StackWords::genDefine();
}

// With static UDS indications the stack calls the application's functions by
// name instead of through registered pointers.
void GenDefineGenerator::writeStaticUdsIndications()
{
    if (settingInt(QStringLiteral("uds_static_indication")) != 1)
        return;
    SectionStream out(this);
    out << "\n/* static UDS indication binding */\n";
    const QList<QPair<QString, const char*>> functions = {
        {QStringLiteral("uds_fct_authent_req"), "#define UDS_EVENT_STATIC_AUTHENT_REQ\t"},
        {QStringLiteral("uds_fct_check_req_session"), "#define UDS_EVENT_STATIC_CHECK_REQ_SESSION\t"},
        {QStringLiteral("uds_fct_clear_dtc_info"), "#define UDS_EVENT_STATIC_CLEAR_DTC_INFO\t"},
        {QStringLiteral("uds_fct_data_transfer"), "#define UDS_EVENT_STATIC_DATA_TRANSFER\t"},
        {QStringLiteral("uds_fct_dtc_info"), "#define UDS_EVENT_STATIC_DTC_INFO\t"},
        {QStringLiteral("uds_fct_generic"), "#define UDS_EVENT_STATIC_GENERIC_FCT\t"},
        {QStringLiteral("uds_fct_id_data_transmit"), "#define UDS_EVENT_STATIC_ID_DATA_TRANSMIT\t"},
        {QStringLiteral("uds_fct_ioctrl"), "#define UDS_EVENT_STATIC_IOCTRL\t"},
        {QStringLiteral("uds_fct_mem_data_transmit"), "#define UDS_EVENT_STATIC_MEM_DATA_TRANSMIT\t"},
        {QStringLiteral("uds_fct_req_commgt"), "#define UDS_EVENT_STATIC_REQ_COMMGT\t"},
        {QStringLiteral("uds_fct_routine_ctrl"), "#define UDS_EVENT_STATIC_ROUTINE_CTRL\t"},
        {QStringLiteral("uds_fct_sec_access_req_key"), "#define UDS_EVENT_STATIC_SEC_ACCESS_REQ_KEY\t"},
    };
    for (const auto& [key, text] : functions) {
        const QString function = setting(key).trimmed();
        if (!function.isEmpty())
            out << text << function << "\n";
    }
}
