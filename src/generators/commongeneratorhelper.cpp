#include "generators/commongeneratorhelper.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/udssiddefinitions.h"
#include "canopenlib/udsstaticindication.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"
#include "generators/stackwords.h"

#include <QStringList>

#include <algorithm>

namespace {

constexpr int ecuReset = 0x11;
constexpr int routineControl = 0x31;

quint64 autoBase(const QString& text)
{
    bool ok = false;
    const quint64 value = COHelper::parseUnsigned(text.trimmed(), &ok);
    return ok ? value : 0;
}

QString hex2(int value)
{
    return QStringLiteral("0x%1").arg(value, 2, 16, QLatin1Char('0'));
}

} // namespace

CommonGeneratorHelper::CommonGeneratorHelper(ObjectDataBase* database, bool multiLine)
    : m_database(database), m_multiLine(multiLine), m_serviceNames(UDSSIDDefinitions::getSIDNames())
{
}

int CommonGeneratorHelper::serviceVersion(int service) const
{
    switch (service) {
    case CommonService:
        return 1;
    case RawCanService:
        return 4;
    case CanopenService:
    case J1939Service:
        return 5;
    case UdsService:
        return int(autoBase(m_database->getGeneralSetting(QStringLiteral("udsserver_version"))) & 0xFF);
    default:
        return 0;
    }
}

QString CommonGeneratorHelper::words(const char* literal) const
{
    return coreForm() ? StackWords::commonInit().coreSpelling(literal) : QString::fromLatin1(literal);
}

// The classic stack declares its UDS structures inside its init function, the
// V4 stack at file level.
QString CommonGeneratorHelper::scopeIndent() const
{
    return coreForm() ? QString() : QStringLiteral("\t");
}

QString CommonGeneratorHelper::commonDeclarations() const
{
    QString text;
    if (coreForm())
        text += QStringLiteral("/* core initialization settings */\n");
    text += words("CO_COMMON_INIT_VAL_T    commonInitVars = {\n");
    text += QStringLiteral("\t%1u,\n").arg(serviceVersion(CommonService));
    text += words("\t{ CO_REC_BUFFER_COUNTS },\n\t{ CO_TR_BUFFER_COUNTS },\n\t{ CO_COB_COUNTS }, \n");
    text += QStringLiteral("\t{ ") + protocolList() + QStringLiteral("}");
    // The V4 list closes the ISO-TP counts with a comma, so the modes of the
    // CAN FD lines follow without another one.
    bool openComma = false;
    if (settingInt(QStringLiteral("isotp_supported")) == 1 ||
        settingInt(QStringLiteral("udsserver_supported")) == 1) {
        text += QStringLiteral(",\n\t{ ISOTP_CLIENT_COUNTS },\n");
        text += coreForm() ? QStringLiteral("\t{ ISOTP_SERVER_COUNTS },\n")
                           : QStringLiteral("\t{ ISOTP_SERVER_COUNTS }");
        openComma = coreForm();
    }
    if (settingInt(QStringLiteral("canfd_supported")) > 0) {
        const QString modes =
            QStringList(lines().size(), QStringLiteral("CO_TRUE")).join(QStringLiteral(", "));
        if (!openComma)
            text += QStringLiteral(",\n");
        text += QStringLiteral("\t{ ") + modes + QStringLiteral(" }\n");
    } else if (!openComma) {
        text += QStringLiteral("\n");
    }
    text += QStringLiteral("};\n\n");
    return text;
}

QString CommonGeneratorHelper::protocolList() const
{
    if (!m_multiLine) {
        if (coreForm() && settingInt(QStringLiteral("uds_bl_setting")) == 1)
            return QStringLiteral("CORE_PROT_TYPE_UDS");
        return protocolText(m_database->lineType(0));
    }
    QStringList entries;
    for (quint8 line : lines())
        entries << protocolText(m_database->lineType(line));
    return entries.join(QStringLiteral(", "));
}

// The classic stack knows no protocol pair with raw CAN.
QString CommonGeneratorHelper::protocolText(int lineType) const
{
    QString text;
    switch (lineType) {
    case Line::CANopen:
        text = words("MP_PROT_TYPE_CANOPEN");
        break;
    case Line::J1939:
        text = words("MP_PROT_TYPE_J1939");
        break;
    case Line::RawCan:
        text = words("MP_PROT_TYPE_RAWCAN");
        break;
    case Line::CANopenJ1939:
        text = words("MP_PROT_TYPE_J1939 | MP_PROT_TYPE_CANOPEN");
        break;
    case Line::CANopenRawCan:
        text =
            coreForm() ? words("MP_PROT_TYPE_CANOPEN | MP_PROT_TYPE_RAWCAN") : words("MP_PROT_TYPE_UNKNOWN");
        break;
    case Line::J1939RawCan:
        text = coreForm() ? words("MP_PROT_TYPE_J1939 | MP_PROT_TYPE_RAWCAN") : words("MP_PROT_TYPE_UNKNOWN");
        break;
    default:
        text = words("MP_PROT_TYPE_UNKNOWN");
        break;
    }
    return udsInUse() ? text + words(" | MP_PROT_TYPE_UDS") : text;
}

QString CommonGeneratorHelper::udsDefinitions() const
{
    if (!udsInUse())
        return QString();
    const int version = std::max(1, serviceVersion(UdsService));
    const bool client = settingInt(QStringLiteral("udsclient_supported")) == 1;
    QString clients;
    for (quint8 line : lines()) {
        const int count = client
                              ? m_database->getGeneralSettingForLine(QStringLiteral("uds_client_cnt"), line)
                                    .trimmed()
                                    .toInt()
                              : 0;
        clients += QStringLiteral("%1,").arg(count);
    }
    const QString in = scopeIndent();
    QString text = coreForm() ? QStringLiteral("\n") : QString();
    text += in + QStringLiteral("/* UDS common initialization structure */ \n");
    text += in + (coreForm() ? QStringLiteral("static ") : QString()) +
            words("const UDS_SERVICE_INIT_VAL_T udsServiceInitVars = {\n");
    text += in + QStringLiteral("\t%1u,\n").arg(version);
    text += in + QStringLiteral("\t{") + clients + QStringLiteral("}\n");
    text += in + QStringLiteral("};\n\n");

    struct LineTables
    {
        int sessions = 0;
        int security = 0;
        int authentication = 0;
        bool active = false;
    };
    QMap<quint8, LineTables> counts;
    for (quint8 line : lines()) {
        const QList<UdsRow> rows = activeRows(line);
        if (rows.isEmpty())
            continue;
        LineTables& tables = counts[line];
        tables.active = true;
        text += serviceTable(line, rows, true, tables.sessions);
        if (!coreForm())
            text += QStringLiteral("\n");
        text += serviceTable(line, rows, false, tables.security);
        if (coreForm())
            text += authenticationTable(line, rows, tables.authentication);
    }
    for (quint8 line : lines()) {
        const LineTables tables = counts.value(line);
        text += lineStructure(line, version, tables.active, tables.sessions, tables.security,
                              tables.authentication);
    }
    return text;
}

QList<CommonGeneratorHelper::UdsRow> CommonGeneratorHelper::activeRows(quint8 line) const
{
    QList<UdsRow> rows;
    const QMap<quint8, bool> services = m_database->getUDSServiceList(line);
    for (auto it = services.cbegin(); it != services.cend(); ++it) {
        if (!it.value())
            continue;
        UdsRow row;
        row.sid = it.key();
        row.sessions = m_database->getUDSServiceSessions(line, it.key());
        row.userlevels = m_database->getUDSServiceUserLevels(line, it.key());
        row.authentication = m_database->getUDSServiceAuthentication(line, it.key());
        rows << row;
    }
    return rows;
}

// The session table holds every active service, the security table those
// with user levels. ECU reset and routine control have a row per sub-function.
QString CommonGeneratorHelper::serviceTable(quint8 line, const QList<UdsRow>& rows, bool sessions,
                                            int& rowCount) const
{
    static const QStringList resetSubs = {QStringLiteral("UDS_SUB_RESET_HR"),
                                          QStringLiteral("UDS_SUB_RESET_KOFFONR"),
                                          QStringLiteral("UDS_SUB_RESET_SR")};
    static const QStringList resetSessionSubsV4 =
        resetSubs + QStringList{QStringLiteral("UDS_SUB_RESET_ERPSD"), QStringLiteral("UDS_SUB_RESET_DRPSD")};
    static const QStringList routineSubs = {QStringLiteral("UDS_ROUTINE_CTRL_START"),
                                            QStringLiteral("UDS_ROUTINE_CTRL_STOP"),
                                            QStringLiteral("UDS_ROUTINE_CTRL_REQ_RESULT")};
    const QString in = scopeIndent();
    const QString rowIndent = in + QStringLiteral("\t");
    QString body;
    int tableRows = 0;
    for (const UdsRow& row : rows) {
        if (row.sid < 16 || row.sid > 254)
            continue;
        const QString column = sessions ? row.sessions : row.userlevels;
        if (!sessions && column.isEmpty())
            continue;
        QStringList values =
            column.isEmpty() ? QStringList{QStringLiteral("0")} : column.split(QLatin1Char(','));
        for (QString& value : values) {
            value = value.trimmed();
            if (value.isEmpty())
                value = QStringLiteral("0");
            if (sessions && coreForm())
                value = sessionName(value);
        }
        const QString levels = rowIndent + QStringLiteral("\t{") + values.join(QStringLiteral(", ")) +
                               QStringLiteral("}, %1u},\n").arg(values.size());
        body += rowIndent + QStringLiteral("/* ") + m_serviceNames.value(UDS::SID(row.sid)) +
                QStringLiteral(" */\n");
        QStringList subs;
        if (row.sid == ecuReset)
            subs = (sessions && coreForm()) ? resetSessionSubsV4 : resetSubs;
        else if (row.sid == routineControl)
            subs = routineSubs;
        if (subs.isEmpty()) {
            body += rowIndent + QStringLiteral("{ ") + hex2(row.sid) + QStringLiteral(", 0u,\n") + levels;
        } else {
            for (const QString& sub : std::as_const(subs))
                body += rowIndent + QStringLiteral("{ ") + hex2(row.sid) + QStringLiteral(", ") + sub +
                        QStringLiteral(",\n") + levels;
        }
        tableRows += subs.isEmpty() ? 1 : int(subs.size());
    }
    if (sessions) {
        rowCount = int(rows.size());
        for (const UdsRow& row : rows) {
            if (row.sid == ecuReset)
                rowCount += coreForm() ? 4 : 2;
            if (row.sid == routineControl)
                rowCount += 2;
        }
    } else {
        rowCount = tableRows;
        if (tableRows == 0)
            return QString();
    }
    const QString name =
        (sessions ? QStringLiteral("sessionTbl_%1") : QStringLiteral("securityLvlTbl_%1")).arg(line);
    const QString type = sessions ? QStringLiteral("UDS_REQ_SESSION_TYPE_TABLE_T")
                                  : QStringLiteral("UDS_SECURITY_LEVEL_TABLE_T");
    body.chop(2);
    QString text;
    if (coreForm()) {
        text = (sessions ? QStringLiteral("/* UDS Service in Sessions table (line %1) */\n")
                         : QStringLiteral("/* UDS Service in security level table (line %1) */\n"))
                   .arg(line);
    }
    return text + in + QStringLiteral("static ") + type + QStringLiteral("\t") + name +
           QStringLiteral("[] = {\n") + body + QStringLiteral("\n") + in + QStringLiteral("};\n\n");
}

// Services that a client may use only after authentication. A line without
// such a service has no table: C knows no empty initializer list, and the
// line structure then points to none.
QString CommonGeneratorHelper::authenticationTable(quint8 line, const QList<UdsRow>& rows,
                                                   int& rowCount) const
{
    rowCount = 0;
    if (settingInt(QStringLiteral("udsserver_supported")) != 1)
        return QString();
    QString body;
    for (const UdsRow& row : rows) {
        const QString authentication = row.authentication.trimmed();
        if (authentication.isEmpty() || authentication == QLatin1String("0"))
            continue;
        body += QStringLiteral("\t{ %1 },\n").arg(hex2(row.sid));
        ++rowCount;
    }
    if (rowCount == 0)
        return QString();
    return QStringLiteral("/* UDS Authentication table (line %1) */\n").arg(line) +
           QStringLiteral("static UDS_AUTHENT_TABLE_T\tauthenticationTable_%1[] = {\n").arg(line) + body +
           QStringLiteral("\n};\n\n");
}

// The server's three CAN-IDs, then the client's, in this fixed arrangement;
// later structure versions add the addressing, the tables and the state.
QString CommonGeneratorHelper::lineStructure(quint8 line, int version, bool tables, int sessionRows,
                                             int securityRows, int authenticationRows) const
{
    const QString in = scopeIndent();
    const QString indent = in + QStringLiteral("\t");
    auto id = [&](const char* key) {
        return QString::number(autoBase(listValue(QString::fromLatin1(key), line)));
    };
    // A V4 boot loader writes the line structure at run time.
    const bool constant = !coreForm() || settingInt(QStringLiteral("uds_bl_setting")) != 1;
    QString text = in + QStringLiteral("/* UDS CAN-IDs for line %1 */\n").arg(line);
    text += in + (constant ? words("const ") : QString()) +
            QStringLiteral("UDS_CONFIG_INIT_VAL_T\tudsLine%1 = {\n").arg(line);
    text += indent + id("uds_physical_request_id") + QStringLiteral("u,\n");
    text += indent + id("uds_physical_response_id") + QStringLiteral("u,\n");
    text += indent + id("uds_physical_response_id") + QStringLiteral("u,\n");
    text += indent + id("uds_physical_request_id") + QStringLiteral("u,\n");
    text += indent + id("uds_functional_request_id") + QStringLiteral("u,\n");
    text += indent + id("uds_physical_response_id") +
            (version < 2 ? QStringLiteral("u\n") : QStringLiteral("u,\n"));
    if (version >= 2) {
        text += indent + id("uds_physical_request_ext_addr") + QStringLiteral("u,\n");
        text += indent + id("uds_physical_response_ext_addr") + QStringLiteral("u,\n");
        text += indent + id("uds_functional_request_ext_addr") + QStringLiteral("u,\n");
        text += indent + id("uds_physical_response_ext_addr") + QStringLiteral("u,\n");
        static const QStringList formats = {QStringLiteral("ISOTP_FORMAT_NORMAL"),
                                            QStringLiteral("ISOTP_FORMAT_NORMAL_FIXED"),
                                            QStringLiteral("ISOTP_FORMAT_EXTENDED")};
        // Empty reads as 0, the normal addressing; a value without a format writes none.
        const int addressing = listValue(QStringLiteral("uds_ext_addressing"), line).trimmed().toInt();
        if (addressing >= 0 && addressing < formats.size())
            text += indent + formats.at(addressing) + QStringLiteral(",\n");
    }
    if (version >= 3) {
        if (tables) {
            text += indent + QStringLiteral("sessionTbl_%1,\n").arg(line);
            text += indent + QStringLiteral("%1,\n").arg(sessionRows);
            text +=
                indent +
                (securityRows > 0 ? QStringLiteral("securityLvlTbl_%1").arg(line) : QStringLiteral("NULL")) +
                QStringLiteral(",\n");
            text += indent + QStringLiteral("%1,\n").arg(securityRows);
        } else {
            text += indent + QStringLiteral("NULL,\n") + indent + QStringLiteral("0,\n") + indent +
                    QStringLiteral("NULL,\n") + indent + QStringLiteral("0,\n");
        }
    }
    if (version >= 4) {
        const bool active =
            m_database->getGeneralSettingForLine(QStringLiteral("uds_server_active"), line).trimmed() ==
            QLatin1String("1");
        text += indent + (active ? QStringLiteral("CO_TRUE") : QStringLiteral("CO_FALSE")) +
                (coreForm() ? QStringLiteral(",\n") : QStringLiteral("\n"));
    }
    if (coreForm() && version >= 5) {
        if (authenticationRows > 0)
            text += indent + QStringLiteral("authenticationTable_%1,\n").arg(line) + indent +
                    QStringLiteral("%1\n").arg(authenticationRows);
        else
            text += indent + QStringLiteral("NULL,\n") + indent + QStringLiteral("0\n");
    }
    text += in + QStringLiteral("};\n\n");
    return text;
}

// The sessions of ISO 14229-1 by their names in the stack.
QString CommonGeneratorHelper::sessionName(const QString& value) const
{
    const int session = int(autoBase(value));
    switch (session) {
    case 1:
        return QStringLiteral("UDS_SUB_SESSION_DS");
    case 2:
        return QStringLiteral("UDS_SUB_SESSION_PRGS");
    case 3:
        return QStringLiteral("UDS_SUB_SESSION_EXTDS");
    case 4:
        return QStringLiteral("UDS_SUB_SESSION_SSDS");
    case 64:
        return QStringLiteral("UDS_SUB_SESSION_MANU_40");
    default:
        if (session > 64)
            return QStringLiteral("UDS_SUB_SESSION_MANU_40 + ") + hex2(session - 64);
        return hex2(session);
    }
}

QString CommonGeneratorHelper::staticIndicationPointers() const
{
    if (!coreForm() || !udsInUse() || settingInt(QStringLiteral("uds_static_indication")) != 1)
        return QString();
    QString pointers;
    for (const UDS::StaticIndication& service : UDS::staticIndications) {
        const QString function = m_database->getGeneralSetting(QLatin1String(service.key)).trimmed();
        if (function.isEmpty())
            continue;
        pointers += QStringLiteral("#if %1\n").arg(QLatin1String(service.macro));
        pointers +=
            QStringLiteral("CORE_CONST %1 %2 = %3;\n")
                .arg(QLatin1String(service.pointerType), QLatin1String(service.pointerName), function);
        pointers += QStringLiteral("#endif\n");
    }
    if (pointers.isEmpty())
        return QString();
    return QStringLiteral("\n/* definition of static indication function pointers */\n") + pointers +
           QStringLiteral("\n");
}

QString CommonGeneratorHelper::commonUdsCall() const
{
    if (!udsInUse())
        return QString();
    return checkedCall("UDS common initialization",
                       QStringLiteral("retVal = udsStackInit_common(&udsServiceInitVars);\n")) +
           (coreForm() ? QString() : QStringLiteral("\n"));
}

QString CommonGeneratorHelper::lineUdsCall(quint8 line, bool multiLine) const
{
    if (!udsInUse())
        return QString();
    return checkedCall(
        "UDS line initialization",
        multiLine ? QStringLiteral("retVal = udsStackInit_line(%1, &udsLine%2);\n").arg(line).arg(line)
                  : QStringLiteral("retVal = udsStackInit_line(&udsLine%1);\n").arg(line));
}

// The init functions of the V4 form indent their body by four spaces.
QString CommonGeneratorHelper::checkedCall(const char* comment, const QString& call) const
{
    const QString in = coreForm() ? QStringLiteral("    ") : QStringLiteral("\t");
    return in + QStringLiteral("/* ") + QLatin1String(comment) + QStringLiteral(" */ \n") + in + call + in +
           QStringLiteral("if (retVal != RET_OK) {\n") + in + QStringLiteral("\treturn(retVal);\n") + in +
           QStringLiteral("}\n");
}

bool CommonGeneratorHelper::udsInUse() const
{
    return settingInt(QStringLiteral("udsserver_supported")) == 1 ||
           settingInt(QStringLiteral("udsclient_supported")) == 1;
}

int CommonGeneratorHelper::settingInt(const QString& key) const
{
    return m_database->getGeneralSetting(key).trimmed().toInt();
}

QList<quint8> CommonGeneratorHelper::lines() const
{
    QList<quint8> result;
    const QList<quint8> nodes = m_database->getNodeList();
    for (quint8 line : nodes) {
        if (line < Line::stackLimit)
            result << line;
    }
    std::sort(result.begin(), result.end());
    return result;
}

QString CommonGeneratorHelper::listValue(const QString& key, quint8 line) const
{
    return m_database->getGeneralSetting(key).split(QLatin1Char(',')).value(line);
}
