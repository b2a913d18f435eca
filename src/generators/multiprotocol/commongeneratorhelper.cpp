#include "generators/multiprotocol/commongeneratorhelper.h"

#include "database/objectdatabase.h"

#include <QStringList>

namespace {

constexpr quint8 lineLimit = 32;

} // namespace

CommonGeneratorHelper::CommonGeneratorHelper(ObjectDataBase* database, bool multiLine)
    : m_database(database), m_multiLine(multiLine)
{
}

QString CommonGeneratorHelper::commonDeclarations() const
{
    QString text;
    if (coreForm()) {
        text += QStringLiteral("/* core initialization settings */\n");
        text += QStringLiteral("CORE_COMMON_INIT_VAL_T    commonInitVars = {\n");
        text += QStringLiteral("\t1u,\n");
        text += QStringLiteral("\t{ CORE_REC_BUFFER_COUNTS },\n");
        text += QStringLiteral("\t{ CORE_TR_BUFFER_COUNTS },\n");
        text += QStringLiteral("\t{ CORE_COB_COUNTS }, \n");
    } else {
        text += QStringLiteral("CO_COMMON_INIT_VAL_T    commonInitVars = {\n");
        text += QStringLiteral("\t1u,\n");
        text += QStringLiteral("\t{ CO_REC_BUFFER_COUNTS },\n");
        text += QStringLiteral("\t{ CO_TR_BUFFER_COUNTS },\n");
        text += QStringLiteral("\t{ CO_COB_COUNTS }, \n");
    }
    text += QStringLiteral("\t{ ") + protocolList() + QStringLiteral("}");
    if (settingInt(QStringLiteral("isotp_supported")) == 1 ||
        settingInt(QStringLiteral("udsserver_supported")) == 1) {
        text += QStringLiteral(",\n");
        text += QStringLiteral("\t{ ISOTP_CLIENT_COUNTS },\n");
        text += QStringLiteral("\t{ ISOTP_SERVER_COUNTS }");
    }
    if (settingInt(QStringLiteral("canfd_supported")) > 0) {
        QString modes;
        for (quint8 line : m_database->getNodeList()) {
            if (line < lineLimit)
                modes += QStringLiteral("CO_TRUE, ");
        }
        modes.chop(2);
        text += QStringLiteral(",\n") + QStringLiteral("\t{ ") + modes + QStringLiteral(" }\n");
    } else {
        text += QStringLiteral("\n");
    }
    text += QStringLiteral("};\n\n");
    return text;
}

QString CommonGeneratorHelper::protocolList() const
{
    if (!m_multiLine) {
        const int type = settingInt(QStringLiteral("line0type"));
        if (coreForm() && settingInt(QStringLiteral("uds_bl_setting")) == 1)
            return QStringLiteral("CORE_PROT_TYPE_UDS");
        return protocolText(type);
    }
    QStringList entries;
    for (quint8 line : m_database->getNodeList()) {
        if (line < lineLimit)
            entries << protocolText(settingInt(QStringLiteral("line%1type").arg(line)));
    }
    return entries.join(QStringLiteral(", "));
}

QString CommonGeneratorHelper::protocolText(int lineType) const
{
    QString text;
    if (coreForm()) {
        switch (lineType) {
        case 1:
            text = QStringLiteral("CORE_PROT_TYPE_CANOPEN");
            break;
        case 2:
            text = QStringLiteral("CORE_PROT_TYPE_J1939");
            break;
        case 4:
            text = QStringLiteral("CORE_PROT_TYPE_RAWCAN");
            break;
        case 5:
            text = QStringLiteral("CORE_PROT_TYPE_J1939 | CORE_PROT_TYPE_CANOPEN");
            break;
        case 6:
            text = QStringLiteral("CORE_PROT_TYPE_CANOPEN | CORE_PROT_TYPE_RAWCAN");
            break;
        case 7:
            text = QStringLiteral("CORE_PROT_TYPE_J1939 | CORE_PROT_TYPE_RAWCAN");
            break;
        default:
            text = QStringLiteral("CORE_PROT_TYPE_UNKNOWN");
            break;
        }
        return udsInUse() ? text + QStringLiteral(" | CORE_PROT_TYPE_UDS") : text;
    }
    switch (lineType) {
    case 1:
        text = QStringLiteral("MP_PROT_TYPE_CANOPEN");
        break;
    case 2:
        text = QStringLiteral("MP_PROT_TYPE_J1939");
        break;
    case 4:
        text = QStringLiteral("MP_PROT_TYPE_RAWCAN");
        break;
    case 5:
        text = QStringLiteral("MP_PROT_TYPE_J1939 | MP_PROT_TYPE_CANOPEN");
        break;
    default:
        text = QStringLiteral("MP_PROT_TYPE_UNKNOWN");
        break;
    }
    return udsInUse() ? text + QStringLiteral(" | MP_PROT_TYPE_UDS") : text;
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
