#include "check/modelchecker.h"

#include "canopenlib/udsstaticindication.h"
#include "database/linetypes.h"

#include <QCoreApplication>
#include <QSet>

#include <algorithm>

int ModelChecker::checkProject(QSharedPointer<ObjectDataBase> database, const QString& projectPath)
{
    m_database = database;
    m_projectPath = projectPath;
    m_errorCount = 0;

    QList<quint8> lines;
    QList<int> lineTypes;
    for (quint8 line : m_database->getNodeList()) {
        if (line >= Line::stackLimit)
            continue;
        lines << line;
        lineTypes << m_database->lineType(line);
    }

    checkUdsRoles(lines);
    checkStaticUdsIndication();
    giveMigrationHints();
    checkCommonSettings(lineTypes);
    checkNumericSettings();
    return m_errorCount;
}

// The UDS role error counts once for the project, whatever else was found.
void ModelChecker::checkUdsRoles(const QList<quint8>& lines)
{
    const bool server = m_database->getGeneralSetting(QStringLiteral("udsserver_supported")).toInt() != 0;
    const bool client = m_database->getGeneralSetting(QStringLiteral("udsclient_supported")).toInt() != 0;
    if (!server || !client)
        return;
    bool bothOnOneLine = lines.size() == 1;
    if (lines.size() >= 2) {
        for (quint8 line : lines) {
            if (m_database->getGeneralSettingForLine(QStringLiteral("uds_server_active"), line).toInt() !=
                    0 &&
                m_database->getGeneralSettingForLine(QStringLiteral("uds_client_cnt"), line).toInt() != 0) {
                bothOnOneLine = true;
                break;
            }
        }
    }
    if (!bothOnOneLine)
        return;
    report(tr(
        "<strong><font color='red'>Error: </font></strong>UDS server and UDS client together on one line is "
        "not possible."));
    m_errorCount = 1;
}

void ModelChecker::checkStaticUdsIndication()
{
    if (m_database->getGeneralSetting(QStringLiteral("uds_static_indication")).toInt() != 1)
        return;
    QStringList names;
    for (const UDS::StaticIndication& service : UDS::staticIndications) {
        const QString name = m_database->getGeneralSetting(QLatin1String(service.key)).trimmed();
        if (!name.isEmpty())
            names << name;
    }
    if (names.isEmpty()) {
        report(tr(
            "<strong>Warning: </strong>Static UDS indication is enabled but no service has a function name; "
            "no callback will be wired up."));
        return;
    }
    QSet<QString> reported;
    for (const QString& name : std::as_const(names)) {
        if (names.count(name) < 2 || reported.contains(name))
            continue;
        reported.insert(name);
        reportError(
            tr("<strong><font color='red'>Error: </font></strong>The function name '%1' is used for more "
               "than one UDS static indication service; each service needs its own callback (different "
               "signature).")
                .arg(name));
    }
}

// Projects last saved by a 3.x tool need stack files that came later; the
// hint is given once, since the previous version is cleared afterwards.
void ModelChecker::giveMigrationHints()
{
    const QString previous = m_database->getMiscSetting(QStringLiteral("PreviousToolVersion"));
    if (previous.isEmpty())
        return;
    const QStringList parts = previous.split(QLatin1Char('.'));
    if (parts.value(0).toInt() != 3)
        return;
    const int minor = parts.value(1).toInt();
    if (minor >= 9)
        return;
    const bool plainCANopenTool = QCoreApplication::applicationName() == QLatin1String("CANopen Tarnwick");
    if (minor >= 7) {
        report(plainCANopenTool
                   ? tr("<strong>Hint: </strong>Add <font color='red'>co_memcpy.c</font> to your project or "
                        "Makefile.")
                   : tr("<strong>Hint: </strong>Add <font color='red'>co_memcpy.c and co_mapping.c</font> to "
                        "your "
                        "project or Makefile."));
        if (m_database->getGeneralSetting(QStringLiteral("udsserver_supported")).toInt() > 0 ||
            m_database->getGeneralSetting(QStringLiteral("udsclient_supported")).toInt() > 0)
            report(tr("<strong>Hint: </strong>Add <font color='red'>uds_init.c</font> to your project or "
                      "Makefile."));
    } else {
        report(plainCANopenTool
                   ? tr("<strong>Hint: </strong>Add <font color='red'>co_common.c and "
                        "co_memcpy.c</font> to your project or Makefile.")
                   : tr("<strong>Hint: </strong>Add <font color='red'>co_common.c, co_memcpy.c and "
                        "co_mapping.c</font> to your project or Makefile."));
    }
    m_database->setMiscSetting(QStringLiteral("PreviousToolVersion"), QString());
}

void ModelChecker::checkCommonSettings(const QList<int>& lineTypes)
{
    if (m_database->getGeneralSetting(QStringLiteral("sdo_blocktransfer_block_size")).toUInt(nullptr, 0) >=
        128)
        reportError(tr(
            "<strong><font color='red'>Error: </font></strong>CANopen SDO block size may not exceed 127."));
    if (m_database->getGeneralSetting(QStringLiteral("co_timer_interval")).isEmpty())
        reportError(
            tr("<strong><font color='red'>Error: </font></strong>Timer interval not set in Common Settings "
               "-> Hardware/Target."));
    // A line of CANopen and J1939 counts as the other protocol only, not as
    // CANopen: deliberately so, as the rule has always been.
    const bool canopen = std::any_of(lineTypes.cbegin(), lineTypes.cend(), [](int type) {
        return type == Line::CANopen || type == Line::CANopenRawCan;
    });
    const bool otherProtocol = std::any_of(lineTypes.cbegin(), lineTypes.cend(), [](int type) {
        return Line::carriesJ1939(type) || Line::carriesRawCan(type);
    });
    if (lineTypes.size() >= 2 && canopen && otherProtocol &&
        m_database->getGeneralSetting(QStringLiteral("nmtmaster")).contains(QLatin1Char('2')))
        reportError(
            tr("<strong><font color='red'>Error: </font></strong>The CANopen setting 'NMT Master or Slave' "
               "is not supported in multi-protocol projects."));
}

void ModelChecker::checkNumericSettings()
{
    static const QList<NumericSetting> general = {
        {"additional_cob_count", 6, "Additional COB objects"},
        {"user_tx_cob", 6, "Additional user transmit messages"},
        {"user_rx_cob", 6, "Additional user receive messages"},
        {"sdo_blocktransfer_block_size", 5, "SDO Block Transfer Block Size"},
        {"sdo_blocktransfer_min_data", 6, "SDO Block Transfer use for data of [n] bytes or larger"},
        {"sdo_client_queue_size", 6, "SDO Client Queue Length"},
        {"sleep_wait_time", 4, "Sleep Mode Waiting Time (ms)"},
        {"usdo_server_cnt", 6, "USDO Server Connection count"},
        {"usdo_client_cnt", 6, "USDO Client Connection Count"},
        {"usdo_server_domain_write_ind_size", 6, "USDO Domain Indication size in multiple of 60 bytes"},
        {"usdo_server_ind_read_cnt", 6, "USDO Server Read"},
        {"usdo_server_ind_read_finished_cnt", 6, "USDO Server Read Finished"},
        {"usdo_server_ind_write_cnt", 6, "USDO Server Write"},
        {"usdo_server_ind_check_write_cnt", 6, "USDO Server Check Write"},
        {"usdo_server_ind_domain_write_cnt", 6, "USDO Server Domain Write"},
        {"event_ssdo_domain_counter", 6, "SDO Domain Indication Size"},
        {"event_can", 6, "CAN Event"},
        {"event_sdo_server_read", 6, "SDO Server Read"},
        {"event_sdo_server_write", 6, "SDO Server Write"},
        {"event_sdo_server_check_write", 6, "SDO Server Check Write"},
        {"event_ssdo_domain_write", 6, "SDO Server Domain Write"},
        {"event_ssdo_domain_read", 6, "SDO Server Domain Read"},
        {"event_sdo_client_read", 6, "SDO Client Read"},
        {"event_sdo_client_write", 6, "SDO Client Write"},
        {"event_sdorouter", 6, "SDO Network Client Event"},
        {"event_srd", 6, "SDO Requesting Device (SRD) event"},
        {"event_pdo", 6, "PDO Event"},
        {"event_pdo_update", 6, "PDO Update Event"},
        {"event_mpdo", 6, "MPDO Event"},
        {"event_nmt", 6, "NMT Event"},
        {"event_errctrl", 6, "NMT Error Control Event"},
        {"event_store", 6, "Store/Restore/LOAD Event"},
        {"event_gfc", 6, "GFC Event"},
        {"event_sync", 6, "SYNC Event"},
        {"event_sync_finished", 6, "SYNC Event finished"},
        {"event_finished", 6, "SDO Finished Event"},
        {"event_led", 6, "LED Event"},
        {"event_cfg", 6, "Configuration Manager Event"},
        {"event_flyma", 6, "Flying Master Event"},
    };
    static const QList<NumericSetting> uds = {
        {"uds_seedkey_length", 5, "Security Seed/Key Length"},
        {"uds_session_timeout", 7, "Session Timeout (ms)"},
        {"uds_physical_request_id", 7, "Physical address request CAN-ID"},
        {"uds_physical_response_id", 7, "Physical address response CAN-ID"},
        {"uds_functional_request_id", 7, "Functional address request CAN-ID"},
        {"uds_physical_request_ext_addr", 5, "Physical address request: device address"},
        {"uds_physical_response_ext_addr", 5, "Physical address response: tool address"},
        {"uds_functional_request_ext_addr", 5, "Functional address request: device address"},
        {"uds_rdbip_canid", 7, "Read Data by Periodic Identifier CAN-ID"},
    };
    static const QList<NumericSetting> j1939 = {
        {"startaddress", 5, "Address (start address)"}, {"identitynumber", 7, "Identity Number"},
        {"manufacturercode", 6, "Manufacturer Code"},   {"ecuinstance", 5, "ECU Instance"},
        {"functioninstance", 5, "Function Instance"},   {"function", 5, "Function"},
        {"vehiclesystem", 5, "Vehicle System"},         {"vehicleinstance", 5, "Vehicle Instance"},
        {"industrygroup", 5, "Industry Group"},
    };

    checkNumericTable(general, false);
    // A bootloader-only project has no UDS server of its own to configure.
    if (m_database->getGeneralSetting(QStringLiteral("uds_bl_setting")) != QLatin1String("1"))
        checkNumericTable(uds, false);
    checkNumericTable(j1939, true);
}

// Numeric keys may hold one comma-separated entry per line; each entry is tested alone.
void ModelChecker::checkNumericTable(const QList<NumericSetting>& table, bool j1939)
{
    for (const NumericSetting& setting : table) {
        const QString key = QLatin1String(setting.key);
        const QString value = j1939 ? m_database->getJ1939Setting(key) : m_database->getGeneralSetting(key);
        if (value.isEmpty())
            continue;
        for (const QString& rawEntry : value.split(QLatin1Char(','))) {
            const QString entry = rawEntry.trimmed();
            if (!entry.isEmpty() && !valueConvertible(setting.dataType, entry))
                reportError(tr("<strong>Error: </strong>\"%1\" has non-numeric value \"%2\".")
                                .arg(tr(setting.label), entry));
        }
    }
}
