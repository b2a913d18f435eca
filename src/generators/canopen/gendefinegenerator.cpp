#include "generators/canopen/gendefinegenerator.h"

#include "database/objectdatabase.h"

#include <QHash>
#include <QRegularExpression>

namespace {

// The defines that moved from the CANopen layer into the core layer.
const QHash<QString, QString>& coreNames()
{
    static const QHash<QString, QString> names = {
        {QStringLiteral("CO_MULTI_LINE"), QStringLiteral("CAN_MULTI_LINE")},
        {QStringLiteral("CO_MULTI_LINE_CNT"), QStringLiteral("CAN_MULTI_LINE_CNT")},
        {QStringLiteral("CO_BIG_ENDIAN"), QStringLiteral("CORE_BIG_ENDIAN")},
        {QStringLiteral("CO_CANFD_SUPPORTED"), QStringLiteral("CORE_CANFD_SUPPORTED")},
        {QStringLiteral("CO_COB_CNT"), QStringLiteral("CORE_COB_CNT")},
        {QStringLiteral("CO_COB_COUNTS"), QStringLiteral("CORE_COB_COUNTS")},
        {QStringLiteral("CO_COB_SORTED_LIST"), QStringLiteral("CORE_COB_SORTED_LIST")},
        {QStringLiteral("CO_CONFIG_REC_BUFFER_CNT"), QStringLiteral("CORE_CONFIG_REC_BUFFER_CNT")},
        {QStringLiteral("CO_CONFIG_TRANS_BUFFER_CNT"), QStringLiteral("CORE_CONFIG_TRANS_BUFFER_CNT")},
        {QStringLiteral("CO_DRV_FILTER"), QStringLiteral("CORE_DRV_FILTER")},
        {QStringLiteral("CO_DRV_GROUP_FILTER"), QStringLiteral("CORE_DRV_GROUP_FILTER")},
        {QStringLiteral("CO_EVENT_DYNAMIC_CAN"), QStringLiteral("CORE_EVENT_DYNAMIC_CAN")},
        {QStringLiteral("CO_EVENT_STATIC_CAN"), QStringLiteral("CORE_EVENT_STATIC_CAN")},
        {QStringLiteral("CO_INHIBIT_SUPPORTED"), QStringLiteral("CORE_INHIBIT_SUPPORTED")},
        {QStringLiteral("CO_REC_BUFFER_CNT"), QStringLiteral("CORE_REC_BUFFER_CNT")},
        {QStringLiteral("CO_REC_BUFFER_COUNTS"), QStringLiteral("CORE_REC_BUFFER_COUNTS")},
        {QStringLiteral("CO_TR_BUFFER_CNT"), QStringLiteral("CORE_TR_BUFFER_CNT")},
        {QStringLiteral("CO_TR_BUFFER_COUNTS"), QStringLiteral("CORE_TR_BUFFER_COUNTS")},
        {QStringLiteral("CO_TIMER_INTERVAL"), QStringLiteral("CORE_TIMER_INTERVAL")},
        {QStringLiteral("CO_USER_EXTENSION_SUPPORTED"), QStringLiteral("CORE_USER_EXTENSION_SUPPORTED")},
    };
    return names;
}

} // namespace

GenDefineGenerator::GenDefineGenerator(QObject* parent) : CoDefineGenerator(parent) {}

QString GenDefineGenerator::renamed(const char* literal) const
{
    static const QRegularExpression coName(QStringLiteral("\\bCO_[A-Z0-9_]+\\b"));
    QString text = QString::fromLatin1(literal);
    if (!text.contains(QLatin1String("CO_")))
        return text;
    QString result;
    qsizetype done = 0;
    QRegularExpressionMatchIterator it = coName.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        result += QStringView(text).mid(done, match.capturedStart() - done);
        result += coreNames().value(match.captured(), match.captured());
        done = match.capturedEnd();
    }
    result += QStringView(text).mid(done);
    return result;
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
