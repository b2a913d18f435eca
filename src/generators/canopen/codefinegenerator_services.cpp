// The CANopen sections of gen_define.h: line settings and services, event
// functions and virtual objects. Most values are counts taken from the object
// dictionaries, so the presence of an object is what turns a service on.

#include "generators/canopen/codefinegenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QDebug>
#include <QRegularExpression>

#include <algorithm>

namespace {

// Before the V4 stack the header of the stack defines "o" as the node-id of
// a line that has none.
QString normalisedNodeIds(const QString& setting, const QString& missingId)
{
    static const QRegularExpression onlyCommas(QStringLiteral("^,{1,7}$"));
    QString ids = setting.trimmed();
    if (ids.isEmpty() || onlyCommas.match(ids).hasMatch())
        return QStringLiteral("0u");
    if (ids.startsWith(QLatin1Char(',')))
        ids.prepend(QLatin1Char('0'));
    if (ids.endsWith(QLatin1Char(',')))
        ids.append(QLatin1Char('0'));
    ids.replace(QLatin1String(",,"), QStringLiteral(",%1,").arg(missingId));
    return ids;
}

bool isSet(const QString& functionName)
{
    return !functionName.trimmed().isEmpty();
}

bool isExtendedType(int dataType)
{
    static const QList<int> types = {12, 16, 22, 24, 25, 27};
    return types.contains(dataType);
}

constexpr quint8 mpdoSam = 254;

} // namespace

void CoDefineGenerator::scanSubIndices()
{
    m_facts = SubIndexFacts();
    m_subIndexLists.clear();
    for (quint8 line : std::as_const(m_lines)) {
        const QList<quint16> indices = m_indexLists.value(line);
        for (quint16 index : indices) {
            const QList<quint8> subindices = m_database->getSubIndexList(line, index);
            m_subIndexLists.insert(quint32(line) << 16 | index, subindices);
            bool virtualObject = false;
            SUBINDEX_DATA_T first;
            for (quint8 subindex : subindices) {
                // A record that can't be read counts with the defaults of a blank one.
                SUBINDEX_DATA_T sub;
                if (!m_database->getSubIndex(line, index, subindex, sub))
                    qDebug() << Q_FUNC_INFO << QStringLiteral("Index found: index 0x%1").arg(index, 0, 16);
                scanSubIndex(line, index, subindex, sub);
                virtualObject =
                    virtualObject || (index <= 0xBFFF && sub.implementation == CANopen::VirtualObject);
                if (subindex == 0)
                    first = sub;
            }
            if (virtualObject) {
                ++m_facts.virtualIndexCount;
                ++m_facts.virtualIndexCounts[line];
            }
            scanMappingObject(index, subindices, first);
            if (index >= 0x1400 && index <= 0x15FF && subindices.contains(5))
                m_facts.receiveTimer = true;
            if (index >= 0x1800 && index <= 0x19FF && subindices.contains(3))
                m_facts.transmitInhibit = true;
        }
    }
}

void CoDefineGenerator::scanSubIndex(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub)
{
    m_facts.extendedTypes = m_facts.extendedTypes || isExtendedType(sub.datatype);
    m_facts.utf8Type = m_facts.utf8Type || (index >= 0x2000 && sub.datatype == CAN::Utf8String);
    if (sub.nvstorage)
        ++m_facts.nvStorageCounts[line];
    if (index <= 0xBFFF && sub.implementation == CANopen::VirtualObject) {
        ++m_facts.virtualTypeCounts[sub.datatype];
        ++m_facts.virtualSubCount;
    }
    // SRDO mapping entries: index in bits 16 to 31, sub-index in bits 8 to 15.
    if (index >= 0x1381 && index <= 0x13B0 && subindex >= 1) {
        const quint64 mapping = sub.defaultvalue.trimmed().toULongLong(nullptr, 0);
        SUBINDEX_DATA_T mapped;
        if (m_database->getSubIndex(line, quint16(mapping >> 16), quint8(mapping >> 8), mapped))
            ++m_facts.srdoEntryTypeCounts[mapped.datatype];
    }
}

// Sub-index 0 of a PDO mapping object tells the number of entries; 254 and
// above mark a multiplexed PDO, and a writable one a dynamic mapping.
void CoDefineGenerator::scanMappingObject(quint16 index, const QList<quint8>& subindices,
                                          const SUBINDEX_DATA_T& first)
{
    const bool receive = index >= 0x1600 && index <= 0x17FF;
    const bool transmit = index >= 0x1A00 && index <= 0x1BFF;
    if (!receive && !transmit)
        return;
    const quint64 entries = first.defaultvalue.trimmed().toULongLong(nullptr, 0);
    if (subindices.contains(0) && entries >= mpdoSam) {
        ++(transmit ? m_facts.mpdoProducers : m_facts.mpdoConsumers);
        if (entries == mpdoSam)
            m_facts.samMpdo = true;
        else
            m_facts.damMpdo = true;
    }
    m_facts.maxMapEntries = std::max(m_facts.maxMapEntries, int(subindices.size()) - 1);
    if (subindices.contains(0) && first.accesstype == QLatin1String("rw"))
        ++(transmit ? m_facts.transmitDynamicMappings : m_facts.receiveDynamicMappings);
}

void CoDefineGenerator::writeLineSettingsAndServices()
{
    if (m_lines.isEmpty())
        return;
    if (QCoreApplication::applicationName() == QLatin1String("CAN Tarnwick") &&
        !anyLineCarries(Line::carriesCANopen))
        return;
    SectionStream out(this);
    writeLineSettings(out);
    writeNodeIdDefines(out);
    out << "/* Definition of numbers of CANopen services */\n";
    writeProfileDefines(out);
    writeNetworkServices(out);
    writeSdoCounts(out);
    writeUsdoServer(out);
    writeUsdoClient(out);
    writePdoServices(out);
    writeSrdoServices(out);
    writeMpdoAndMappingServices(out);
    writeManagerServices(out);
    writeSdoTransferServices(out);
    writeDataTypeAndInhibitServices(out);
}

void CoDefineGenerator::writeLineSettings(SectionStream& out)
{
    out << "/* Line Settings */\n";
    if ((m_lines.size() > 1 || m_generateML) && !m_multiLineDefined) {
        out << "#define CO_MULTI_LINE\t1u\n";
        out << "#define CO_MULTI_LINE_CNT\t" << m_lines.size() << "u\n";
        m_multiLineDefined = true;
    }
    out << "#define CANOPEN_SUPPORTED\t1u\n";
    out << "/* Number of receive/transmit buffer entries per line */\n";
    out << "#define CO_REC_BUFFER_COUNTS\t"
        << bufferList(QStringLiteral("receivebuffersize"), QStringLiteral("10")) << "\n";
    out << "#define CO_TR_BUFFER_COUNTS\t"
        << bufferList(QStringLiteral("transmitbuffersize"), QStringLiteral("5")) << "\n";
    m_bufferCountsDefined = true;
    out << "/* Number of objects per line */\n";
    for (quint8 line : std::as_const(m_lines))
        out << "#define CO_OBJECTS_LINE_" << line << "_CNT\t" << objects(line, 0x1000, 0xFFFF) << "u\n";
    out << "#define CO_OBJECT_COUNTS\t" << countList([this](quint8 l) { return objects(l, 0x1000, 0xFFFF); })
        << "\n";
    if (!mixedProtocols())
        out << "#define CO_COB_COUNTS\t" << countList([this](quint8 l) { return cobCountCANopen(l); })
            << "\n";
    out << "#define CO_TXPDO_COUNTS\t" << countList([this](quint8 l) { return objects(l, 0x1800, 0x19FF); })
        << "\n";
    out << "#define CO_RXPDO_COUNTS\t" << countList([this](quint8 l) { return objects(l, 0x1400, 0x15FF); })
        << "\n";
    // A line without SDO server objects still has the default server, except on CAN FD.
    const bool server510 = j1939SettingInt(QStringLiteral("cia510serversupport")) == 1;
    out << "#define CO_SSDO_COUNTS\t" << countList([this, server510](quint8 l) {
        const int servers = objects(l, 0x1200, 0x127F);
        if (servers != 0)
            return servers;
        return ((lineType(l) == Line::CANopen && !m_canFdSupported) ||
                (lineType(l) == Line::J1939 && server510))
                   ? 1
                   : 0;
    }) << "\n";
    const bool client510 = j1939SettingInt(QStringLiteral("cia510clientsupport")) == 1;
    out << "#define CO_CSDO_COUNTS\t" << countList([this, client510](quint8 l) {
        const int clients = objects(l, 0x1280, 0x12FF);
        if (clients != 0)
            return clients;
        return (lineType(l) == Line::J1939 && client510) ? 1 : 0;
    }) << "\n";
    out << "#define CO_ASSIGN_COUNTS\t" << countList([this](quint8 l) { return subs(l, 0x1F81, 1); }) << "\n";
    const QString maxAssignment = setting(QStringLiteral("max_slave_assignment")).trimmed();
    out << "#define CO_MAX_ASSIGN_COUNTS\t" << lineList([this, &maxAssignment](quint8 l) {
        if (maxAssignment.toInt() != 0)
            return maxAssignment;
        return QString::number(subs(l, 0x1F81, 1));
    }) << "\n";
    out << "#define CO_GUARDING_COUNTS\tCO_MAX_ASSIGN_COUNTS\n";
    out << "#define CO_ERR_CTRL_COUNTS\t" << countList([this](quint8 l) { return subs(l, 0x1016, 1); })
        << "\n";
    int storeMax = 0;
    for (quint8 line : std::as_const(m_lines))
        storeMax = std::max(storeMax, subs(line, 0x1010, 1));
    if (storeMax > 0)
        out << "#define CO_STORE_CNT_MAX\t" << storeMax << "u\n";
    out << "#define CO_ERR_HIST_COUNTS\t" << countList([this](quint8 l) { return subs(l, 0x1003, 1); })
        << "\n";
    out << "#define CO_ACT_ERR_HIST_COUNTS\t" << countList([this](quint8 l) { return subs(l, 0x1032, 1); })
        << "\n";
    out << "#define CO_EMCY_CONS_COUNTS\t" << countList([this](quint8 l) { return subs(l, 0x1028, 1); })
        << "\n";
}

void CoDefineGenerator::writeNodeIdDefines(SectionStream& out)
{
    out << "#define CO_NODE_IDS\t"
        << normalisedNodeIds(setting(QStringLiteral("co_node_id")),
                             coreForm() ? QStringLiteral("0") : QStringLiteral("o"))
        << "\n";
    const QString functions = setting(QStringLiteral("co_node_id_fct"));
    if (functions.trimmed().size() <= m_lines.size())
        out << "#define CO_NODE_ID_FUNCTIONS "
            << QStringList(m_lines.size(), QStringLiteral("NULL")).join(QStringLiteral(", ")) << "\n";
    else
        out << "#define CO_NODE_ID_FUNCTIONS\t" << functions << "\n\n";
    const QString networkId = setting(QStringLiteral("co_network_id"));
    if (!networkId.isEmpty())
        out << "#define CO_NETWORK_ID\t" << networkId << "\n";
}

// The device profile is the low word of the device type in object 0x1000.
void CoDefineGenerator::writeProfileDefines(SectionStream& out)
{
    auto deviceType = [this](quint8 line) -> quint64 {
        INDEX_DATA_T object;
        if (!m_database->getIndex(line, 0x1000, object))
            return 0;
        return defaultNumber(line, 0x1000, object.objecttype == CANopen::Var ? 0 : 1);
    };
    quint8 profileLine = m_line;
    quint32 profile = deviceType(m_line) & 0xFFFF;
    if (coreForm()) {
        profile = 0;
        for (quint8 line : std::as_const(m_lines)) {
            const quint32 type = deviceType(line) & 0xFFFF;
            if (type >= 401) {
                profile = type;
                profileLine = line;
                break;
            }
        }
    }
    if (profile == 0)
        return;
    out << "#define CO_PROFILE_" << profile << "\t1u\n";
    if (profile == 454)
        out << "#define CO_EVENT_PROFILE_STORE\t1u\n";
    if (profile == 447) {
        // The virtual device function groups, bit 0 of sub-index 1 being group 1.
        for (quint8 subindex : {1, 2}) {
            const quint64 groups = defaultNumber(profileLine, 0x6000, subindex);
            for (int bit = 0; bit < 32; ++bit) {
                if (groups & (quint64(1) << bit))
                    out << "#define CO_P447_VDFG_" << (subindex - 1) * 32 + bit + 1 << " \t1u\n";
            }
        }
    }
}

void CoDefineGenerator::writeNetworkServices(SectionStream& out)
{
    bool master = false;
    bool slave = false;
    bool flyingMasterObject = false;
    for (quint8 line : std::as_const(m_lines)) {
        const int nmtMaster = lineSettingInt(QStringLiteral("nmtmaster"), line);
        master = master || nmtMaster == 1 || nmtMaster == 2;
        slave = slave || nmtMaster == 0 || nmtMaster == 2;
        flyingMasterObject = flyingMasterObject || (defaultNumber(line, 0x1F80, 0) & 0x20);
    }
    const bool lss = settingInt(QStringLiteral("lss_supported")) > 0;
    if (master)
        out << "#define CO_NMT_MASTER\t1u\n";
    if (master && settingInt(QStringLiteral("flyma_supported")) == 1 && flyingMasterObject)
        out << "#define CO_FLYING_MASTER_SUPPORTED\t1u\n";
    if (lss && master)
        out << "#define CO_LSS_MASTER_SUPPORTED\t1u\n";
    if (lss && (!master || (m_lines.size() > 1 && slave)))
        out << "#define CO_LSS_SUPPORTED\t1u\n";
    if (lss && settingInt(QStringLiteral("lss_inquiry_supported")) > 0)
        out << "#define CO_LSS_INQUIRY_SERVICES\t1u\n";
    if (settingInt(QStringLiteral("idnego_supported")) > 0)
        out << "#define CO_IDNEGO_SUPPORTED\t1u\n";
    if (hasOnAnyLine(0x1300))
        out << "#define CO_GFC_SUPPORTED\t1u\n";
    if (settingInt(QStringLiteral("dynod")) > 0)
        out << "#define CO_DYNAMIC_OBJDIC\t1u\n";
    if (settingInt(QStringLiteral("csdo_write_special")) > 0)
        out << "#define CO_EVENT_CSDO_DOMAIN_WRITE\t1u\n";
    if (settingInt(QStringLiteral("emcy_routing")) > 0)
        out << "#define CO_EMCY_NETWORKING\t1u\n";
    if (settingInt(QStringLiteral("sdo_routing")) > 0)
        out << "#define CO_SDO_NETWORKING\t1u\n";
    const int routes = sumOverLines([this](quint8 l) { return subs(l, 0x1F2C, 1); });
    if (routes != 0) {
        out << "#define CO_NETWORK_ROUTING_COUNTS\t"
            << countList([this](quint8 l) { return subs(l, 0x1F2C, 1); }) << "\n";
        out << "#define CO_NETWORK_ROUTING_CNT\t" << routes << "u\n";
    }
}

// A CANopen line without SDO server objects has the default server, except
// on CAN FD; a J1939 line gets a server or client for CiA 510 transfers.
void CoDefineGenerator::writeSdoCounts(SectionStream& out)
{
    const int j1939Lines = int(std::count_if(m_lines.cbegin(), m_lines.cend(),
                                             [this](quint8 l) { return lineType(l) == Line::J1939; }));
    int servers = sumOverLines([this](quint8 l) {
        const int count = objects(l, 0x1200, 0x127F);
        const bool canopen = Line::carriesCANopen(lineType(l));
        return (count == 0 && canopen && !m_canFdSupported) ? 1 : count;
    });
    if (servers != 0 && j1939SettingInt(QStringLiteral("cia510serversupport")) == 1)
        servers += j1939Lines;
    if (servers != 0) {
        out << "#define CO_SDO_SERVER_CNT\t" << servers << "u\n";
        m_sdoServerCntDefined = true;
    }
    int clients = sumOverLines([this](quint8 l) { return objects(l, 0x1280, 0x12FF); });
    if (clients != 0 && j1939SettingInt(QStringLiteral("cia510clientsupport")) == 1)
        clients += j1939Lines;
    if (clients != 0) {
        out << "#define CO_SDO_CLIENT_CNT\t" << clients << "u\n";
        m_sdoClientCntDefined = true;
    }
    if (m_canFdSupported)
        out << "#define CO_USDO_SUPPORTED\t1u\n";
    if (coreForm() && settingInt(QStringLiteral("usdo_split_indication_supported")) > 0)
        out << "#define CO_USDO_SPLIT_INDICATION\t1u\n";
}

void CoDefineGenerator::writeUsdoServer(SectionStream& out)
{
    const bool enabled = std::any_of(m_lines.cbegin(), m_lines.cend(), [this](quint8 l) {
        return lineSettingInt(QStringLiteral("usdo_server_enabled"), l) != 0;
    });
    if (!m_canFdSupported || !enabled)
        return;
    const QString connections = QStringLiteral("usdo_server_cnt");
    if (coreForm()) {
        auto perLine = [this, &connections](quint8 l) { return lineSettingInt(connections, l); };
        out << "#define CO_USDO_SERVER_MAX_CONN_CNT\t" << sumOverLines(perLine) << "u\n";
        out << "#define CO_USDO_SERVER_MAX_CONN_COUNTS\t" << countList(perLine, QStringLiteral(",")) << "\n";
    } else {
        out << "#define CO_USDO_SERVER_MAX_CON\t" << setting(connections) << "u\n";
    }
    out << "#define CO_SUSDO_DOMAIN_CNT\t" << setting(QStringLiteral("usdo_server_domain_write_ind_size"))
        << "u\n";
    if (isSet(setting(QStringLiteral("usdo_server_read_ind_function"))))
        out << "#define CO_EVENT_STATIC_USDO_SERVER_READ 1u\n";
    if (isSet(setting(QStringLiteral("usdo_server_read_finished_ind_function"))))
        out << "#define CO_EVENT_STATIC_SUSDO_READ_FINISHED 1u\n";
    if (isSet(setting(QStringLiteral("usdo_server_write_ind_function"))))
        out << "#define CO_EVENT_STATIC_USDO_SERVER_WRITE 1u\n";
    if (isSet(setting(QStringLiteral("usdo_server_ind_check_write_function"))))
        out << "#define CO_EVENT_STATIC_USDO_CHECK_WRITE 1u\n";
    if (isSet(setting(QStringLiteral("usdo_server_domain_write_ind_function"))))
        out << "#define CO_EVENT_STATIC_SUSDO_DOMAIN_WRITE 1u\n";
    if (isSet(setting(QStringLiteral("usdo_server_domain_read_ind_function"))))
        out << "#define CO_EVENT_STATIC_SUSDO_DOMAIN_READ 1u\n";
}

void CoDefineGenerator::writeUsdoClient(SectionStream& out)
{
    const bool enabled = std::any_of(m_lines.cbegin(), m_lines.cend(), [this](quint8 l) {
        return lineSettingInt(QStringLiteral("usdo_client_enabled"), l) != 0;
    });
    if (!m_canFdSupported || !enabled)
        return;
    out << "#define CO_USDO_CLIENT_SUPPORTED\t"
        << "1"
        << "u\n";
    const QString connections = QStringLiteral("usdo_client_cnt");
    if (coreForm()) {
        auto perLine = [this, &connections](quint8 l) { return lineSettingInt(connections, l); };
        out << "#define CO_USDO_CLIENT_MAX_CONN_CNT\t" << sumOverLines(perLine) << "u\n";
        out << "#define CO_USDO_CLIENT_MAX_CONN_COUNTS\t" << countList(perLine, QStringLiteral(",")) << "\n";
    } else {
        out << "#define CO_USDO_CLIENT_MAX_CON\t" << setting(connections) << "u\n";
    }
    if (isSet(setting(QStringLiteral("usdo_client_read_ind_function"))))
        out << "#define CO_EVENT_STATIC_CUSDO_CLIENT_READ 1u\n";
    if (isSet(setting(QStringLiteral("usdo_client_write_ind_function"))))
        out << "#define CO_EVENT_STATIC_CUSDO_CLIENT_WRITE 1u\n";
    if (isSet(setting(QStringLiteral("usdo_client_domain_write_ind_function"))))
        out << "#define CO_EVENT_STATIC_CUSDO_DOMAIN_WRITE 1u\n";
    if (isSet(setting(QStringLiteral("usdo_client_domain_read_ind_function"))))
        out << "#define CO_EVENT_STATIC_CUSDO_DOMAIN_READ 1u\n";
}

void CoDefineGenerator::writePdoServices(SectionStream& out)
{
    const int transmitPdos = sumOverLines([this](quint8 l) { return objects(l, 0x1A00, 0x1BFF); });
    if (transmitPdos != 0)
        out << "#define CO_PDO_TRANSMIT_CNT\t" << transmitPdos << "u\n";
    const int receivePdos = sumOverLines([this](quint8 l) { return objects(l, 0x1600, 0x17FF); });
    if (receivePdos != 0)
        out << "#define CO_PDO_RECEIVE_CNT\t" << receivePdos << "u\n";
    if (m_facts.receiveTimer)
        out << "#define CO_PDO_REC_TIMER_SUPPORTED\t"
            << "1u\n";
}

void CoDefineGenerator::writeSrdoServices(SectionStream& out)
{
    const int srdos = sumOverLines([this](quint8 l) { return objects(l, 0x1301, 0x137F); });
    if (srdos == 0)
        return;
    out << "#define CO_SRDO_SUPPORTED\t"
        << "1u\n";
    out << "#define CO_SRDO_COUNTS\t" << countList([this](quint8 l) { return objects(l, 0x1301, 0x137F); })
        << "\n";
    out << "#define CO_SRDO_CNT\t" << srdos << "u\n";
    if (settingInt(QStringLiteral("ignore_srdo_data_validation")) == 1)
        out << "#define CO_SRDO_IGNORE_DATA_STATE\t"
            << "1u\n";
    if (settingInt(QStringLiteral("static_srdo_data")) != 1)
        return;
    const QList<QPair<int, const char*>> entryDefines = {
        {5, "#define SRDO_OD_ENTRY_U8_CNT\t"},  {6, "#define SRDO_OD_ENTRY_U16_CNT\t"},
        {7, "#define SRDO_OD_ENTRY_U32_CNT\t"}, {27, "#define SRDO_OD_ENTRY_U64_CNT\t"},
        {2, "#define SRDO_OD_ENTRY_I8_CNT\t"},  {3, "#define SRDO_OD_ENTRY_I16_CNT\t"},
        {4, "#define SRDO_OD_ENTRY_I32_CNT\t"}, {8, "#define SRDO_OD_ENTRY_R32_CNT\t"},
    };
    for (const auto& [dataType, text] : entryDefines) {
        const int count = m_facts.srdoEntryTypeCounts.value(dataType);
        if (count != 0)
            out << text << count << "u\n";
    }
}

void CoDefineGenerator::writeMpdoAndMappingServices(SectionStream& out)
{
    if (m_facts.mpdoProducers != 0)
        out << "#define CO_MPDO_PRODUCER\t" << m_facts.mpdoProducers << "u\n";
    if (m_facts.mpdoConsumers != 0)
        out << "#define CO_MPDO_CONSUMER\t" << m_facts.mpdoConsumers << "u\n";
    if (m_facts.samMpdo)
        out << "#define CO_MPDO_SAM\t1u\n";
    if (m_facts.damMpdo)
        out << "#define CO_MPDO_DAM\t1u\n";
    if (m_facts.maxMapEntries != 0)
        out << "#define CO_MAX_MAP_ENTRIES\t" << m_facts.maxMapEntries << "u\n";
    if (m_facts.transmitDynamicMappings != 0)
        out << "#define CO_TR_PDO_DYN_MAP_ENTRIES\t" << m_facts.transmitDynamicMappings << "u\n";
    if (m_facts.receiveDynamicMappings != 0)
        out << "#define CO_REC_PDO_DYN_MAP_ENTRIES\t" << m_facts.receiveDynamicMappings << "u\n";
    if (settingInt(QStringLiteral("bitwise_mapping")) == 1 && m_facts.maxMapEntries != 0)
        out << "#define CO_PDO_BIT_MAPPING\t1u\n";
}

void CoDefineGenerator::writeManagerServices(SectionStream& out)
{
    auto entriesBehindCount = [this](quint16 index) {
        return sumOverLines([this, index](quint8 l) { return std::max(0, subs(l, index, 0) - 1); });
    };
    const int heartbeatConsumers = entriesBehindCount(0x1016);
    if (heartbeatConsumers != 0)
        out << "#define CO_HB_CONSUMER_CNT " << heartbeatConsumers << "u\n";
    if (hasOnAnyLine(0x1005))
        out << "#define CO_SYNC_SUPPORTED\t"
            << "1u\n";
    if (settingInt(QStringLiteral("bootup_manager")) > 0) {
        out << "#define CO_BOOTUP_MANAGER\t"
            << "1u\n";
        const int assignments = sumOverLines([this](quint8 l) { return subs(l, 0x1F81, 1); });
        int maxAssignments = sumOverLines([this](quint8 l) {
            return has(l, 0x1F81) ? settingInt(QStringLiteral("max_slave_assignment")) : 0;
        });
        if (maxAssignments == 0)
            maxAssignments = assignments;
        out << "#define CO_SLAVE_ASSIGNMENT_CNT\t" << assignments << "u\n";
        out << "#define CO_MAX_SLAVE_ASSIGNMENT_CNT\t" << maxAssignments << "u\n";
        if (maxAssignments != 0)
            out << "#define CO_GUARDING_CNT CO_MAX_SLAVE_ASSIGNMENT_CNT\n";
    }
    if (settingInt(QStringLiteral("config_manager")) > 0)
        out << "#define CO_CFG_MANAGER\t"
            << "1u\n";
    if (hasOnAnyLine(0x1014))
        out << "#define CO_EMCY_PRODUCER\t"
            << "1u\n";
    if (hasOnAnyLine(0x1F10))
        out << "#define CO_SRD_SUPPORTED\t"
            << "1u\n";
    if (hasOnAnyLine(0x100C))
        out << "#define CO_GUARDING_SLAVE\t"
            << "1u\n";
    if (settingInt(QStringLiteral("1010autostore_by_application")) == 1)
        out << "#define CO_AUTO_STORE_HANDLED_BY_APPLICATION\t1u\n";
    if (hasOnAnyLine(0x1010) || hasOnAnyLine(0x1011)) {
        out << "#define CO_STORE_SUPPORTED\t"
            << "1u\n";
        out << "#define CO_STORE_NVS_CNT\t"
            << countList([this](quint8 l) { return m_facts.nvStorageCounts.value(l); }) << "\n";
    }
    const int emergencyConsumers = entriesBehindCount(0x1028);
    if (emergencyConsumers != 0)
        out << "#define CO_EMCY_CONSUMER_CNT " << emergencyConsumers << "u\n";
    const int errorHistory = entriesBehindCount(0x1003);
    if (errorHistory != 0)
        out << "#define CO_EMCY_ERROR_HISTORY " << errorHistory << "u\n";
    const int activeErrors = sumOverLines([this](quint8 l) { return subs(l, 0x1032, 1); });
    if (m_canFdSupported && activeErrors != 0)
        out << "#define CO_EMCY_ACTIVE_ERROR_LIST\t" << activeErrors << "u\n";
    if (hasOnAnyLine(0x1012))
        out << "#define CO_TIME_SUPPORTED\t"
            << "1u\n";
}

void CoDefineGenerator::writeSdoTransferServices(SectionStream& out)
{
    if (settingInt(QStringLiteral("sdo_blocktransfer_supported")) == 1) {
        int blockSize = settingInt(QStringLiteral("sdo_blocktransfer_block_size")) & 0xFF;
        if (blockSize == 0)
            blockSize = 32;
        int minimumData = settingInt(QStringLiteral("sdo_blocktransfer_min_data"));
        if (minimumData == 0)
            minimumData = 64;
        out << "#define CO_SDO_BLOCK\t\t"
            << "1u\n";
        out << "#define CO_SDO_BLOCK_SIZE\t" << blockSize << "u\n";
        out << "#define CO_SDO_BLOCK_MIN_SIZE\t" << minimumData << "u\n";
        if (settingInt(QStringLiteral("sdo_blocktransfer_crc_supported")) == 1)
            out << "#define CO_SDO_BLOCK_CRC\t"
                << "1u\n";
    }
    if (settingInt(QStringLiteral("sdo_client_queue_supported")) == 1) {
        out << "#define CO_SDO_QUEUE\t\t"
            << "1u\n";
        out << "#define CO_SDO_QUEUE_LEN\t" << setting(QStringLiteral("sdo_client_queue_size")) << "u\n";
        if (settingInt(QStringLiteral("sdo_client_queue_internal_access_supported")) == 1)
            out << "#define CO_SDOQUEUE_INTERNAL_ACCESS\t\t"
                << "1u\n";
    }
    if (settingInt(QStringLiteral("limit_check")) > 0)
        out << "#define CO_CONFIG_LIMIT_CHECK\t\t"
            << "1u\n";
    if (settingInt(QStringLiteral("event_ssdo_domain_counter")) != 0)
        out << "#define CO_SSDO_DOMAIN_CNT\t" << setting(QStringLiteral("event_ssdo_domain_counter"))
            << "u\n";
    if (settingInt(QStringLiteral("sdo_split")) > 0)
        out << "#define CO_SDO_SPLIT_INDICATION\t\t"
            << "1u\n";
}

void CoDefineGenerator::writeDataTypeAndInhibitServices(SectionStream& out)
{
    // The configuration manager is also there when its objects are.
    if (hasOnAnyLine(0x1F20) || hasOnAnyLine(0x1F22))
        out << "#define CO_CFG_MANAGER\t"
            << "1u\n";
    if (m_database->getDescriptionSetting(QStringLiteral("SelfStarting")) == QLatin1String("1"))
        out << "#define CO_SELF_STARTING_DEVICE\t1u\n";
    if (m_facts.extendedTypes || m_facts.samMpdo)
        out << "#define CO_EXTENDED_DATA_TYPES\t\t"
            << "1u\n";
    if (m_facts.utf8Type)
        out << "#define CO_UTF8_DATA_TYPE\t\t"
            << "1u\n";
    if (hasOnAnyLine(0x1015) || hasOnAnyLine(0x102A) || m_facts.transmitInhibit) {
        out << "#define CO_INHIBIT_SUPPORTED\t1u\n";
        m_inhibitDefined = true;
    }
    if (!mixedProtocols()) {
        out << "/* number of used COB objects */\n";
        out << "#define CO_COB_CNT\t" << cobCountCANopen(255) << "u\n";
    }
}

void CoDefineGenerator::writeEventDefines()
{
    SectionStream out(this);
    writeStaticEventDefines(out);
    writeSleepDefines(out);
    bool numeric = false;
    const int dynamic = setting(QStringLiteral("enable_dynamic")).toInt(&numeric);
    if (!(numeric && dynamic == 0))
        writeDynamicEventDefines(out);
}

void CoDefineGenerator::writeStaticEventDefines(SectionStream& out)
{
    auto set = [this](const char* key) { return isSet(setting(QLatin1String(key))); };
    if (set("fct_sdo_server_read"))
        out << "#define CO_EVENT_STATIC_SDO_SERVER_READ\t1u\n";
    if (set("fct_sdo_server_write"))
        out << "#define CO_EVENT_STATIC_SDO_SERVER_WRITE\t1u\n";
    if (set("fct_sdo_server_check_write"))
        out << "#define CO_EVENT_STATIC_SDO_SERVER_CHECK_WRITE\t1u\n";
    if (set("fct_pdo") || set("fct_pdo_received") || set("fct_pdo_sync"))
        out << "#define CO_EVENT_STATIC_PDO\t1u\n";
    if (coreForm() && set("fct_pdo_update"))
        out << "#define CO_EVENT_STATIC_PDO_UPDATE\t1u\n";
    if (set("fct_nmt"))
        out << "#define CO_EVENT_STATIC_NMT\t1u\n";
    if (set("fct_errctrl"))
        out << "#define CO_EVENT_STATIC_ERRCTRL\t1u\n";
    if (set("fct_sync"))
        out << "#define CO_EVENT_STATIC_SYNC\t1u\n";
    if (set("fct_finished"))
        out << "#define CO_EVENT_STATIC_FINISHED\t1u\n";
    if (set("fct_led_green") || set("fct_led_red"))
        out << "#define CO_EVENT_STATIC_LED\t1u\n";
    if (set("fct_can"))
        out << "#define CO_EVENT_STATIC_CAN\t1u\n";
    if (set("fct_cfgman"))
        out << "#define CO_EVENT_STATIC_CFG_MAN\t1u\n";
    if (set("fct_sdo_client_read"))
        out << "#define CO_EVENT_STATIC_SDO_CLIENT_READ\t1u\n";
    if (set("fct_sdo_client_write"))
        out << "#define CO_EVENT_STATIC_SDO_CLIENT_WRITE\t1u\n";
    if (set("fct_emcy"))
        out << "#define CO_EVENT_STATIC_EMCY\t1u\n";
    if (set("fct_emcy_consumer"))
        out << "#define CO_EVENT_STATIC_EMCY_CONSUMER\t1u\n";
    if (set("fct_time"))
        out << "#define CO_EVENT_STATIC_TIME\t1u\n";
    if (set("fct_store"))
        out << "#define CO_EVENT_STATIC_STORE_LOAD\t1u\n";
    if (set("fct_store_clear"))
        out << "#define CO_EVENT_STATIC_STORE_CLEAR\t1u\n";
    if (set("fct_store_save"))
        out << "#define CO_EVENT_STATIC_STORE_SAVE\t1u\n";
    if (set("fct_srd"))
        out << "#define CO_EVENT_STATIC_SRD\t1u\n";
    if (set("fct_sync_finished"))
        out << "#define CO_EVENT_STATIC_SYNC_FINISHED\t1u\n";
    if (set("fct_lss") || set("fct_lss_master"))
        out << "#define CO_EVENT_STATIC_LSS\t1u\n";
    if (set("fct_flyma"))
        out << "#define CO_EVENT_STATIC_FLYMA\t1u\n";
    if (set("fct_manager"))
        out << "#define CO_EVENT_STATIC_MANAGER\t1u\n";
    if (set("fct_mpdo"))
        out << "#define CO_EVENT_STATIC_MPDO\t1u\n";
}

void CoDefineGenerator::writeSleepDefines(SectionStream& out)
{
    const int sleepMode = settingInt(QStringLiteral("sleep_mode_selection"));
    if (sleepMode <= 0)
        return;
    if (coreForm())
        out << "#define CORE_SLEEP_SUPPORTED\t1u\n";
    out << "#define CO_EVENT_DYNAMIC_SLEEP\t1u\n";
    if (sleepMode == 1)
        out << "#define CO_SLEEP_447\t1u\n";
    if (sleepMode == 2)
        out << "#define CO_SLEEP_454\t1u\n";
    out << "#define CO_SLEEP_WAITTIME\t" << setting(QStringLiteral("sleep_wait_time")) << "u\n";
}

// Each service may have a number of indication functions that the application
// registers at run time; the stack reserves that many slots.
void CoDefineGenerator::writeDynamicEventDefines(SectionStream& out)
{
    out << "/* Definition of number of call-back functions for each service*/\n";
    auto count = [this, &out](const char* key, const char* text) {
        const QString value = setting(QLatin1String(key));
        if (value.toInt() > 0)
            out << text << value << "u\n";
    };
    if (m_canFdSupported) {
        count("usdo_server_ind_read_cnt", "#define CO_EVENT_DYNAMIC_USDO_SERVER_READ\t");
        count("usdo_server_ind_read_finished_cnt", "#define CO_EVENT_DYNAMIC_SUSDO_READ_FINISHED\t");
        count("usdo_server_ind_write_cnt", "#define CO_EVENT_DYNAMIC_USDO_SERVER_WRITE\t");
        if (!coreForm())
            count("usdo_server_ind_check_write_cnt", "#define CO_EVENT_DYNAMIC_USDO_SERVER_CHECK_WRITE\t");
        count("usdo_server_ind_domain_write_cnt", "#define CO_EVENT_DYNAMIC_SUSDO_DOMAIN_WRITE\t");
        count("usdo_server_ind_domain_read_cnt", "#define CO_EVENT_DYNAMIC_SUSDO_DOMAIN_READ\t");
        count("usdo_client_ind_read_cnt", "#define CO_EVENT_DYNAMIC_USDO_CLIENT_READ\t");
        count("usdo_client_ind_write_cnt", "#define CO_EVENT_DYNAMIC_USDO_CLIENT_WRITE\t");
        count("usdo_client_ind_domain_read_cnt", "#define CO_EVENT_DYNAMIC_CUSDO_DOMAIN_READ\t");
        count("usdo_client_ind_domain_write_cnt", "#define CO_EVENT_DYNAMIC_CUSDO_DOMAIN_WRITE\t");
    }
    count("event_sdo_server_read", "#define CO_EVENT_DYNAMIC_SDO_SERVER_READ\t");
    count("event_sdo_server_write", "#define CO_EVENT_DYNAMIC_SDO_SERVER_WRITE\t");
    if (!coreForm())
        count("event_sdo_server_check_write", "#define CO_EVENT_DYNAMIC_SDO_SERVER_CHECK_WRITE\t");
    count("event_pdo", "#define CO_EVENT_DYNAMIC_PDO\t");
    count("event_pdo_update", "#define CO_EVENT_DYNAMIC_PDO_UPDATE\t");
    count("event_nmt", "#define CO_EVENT_DYNAMIC_NMT\t");
    count("event_errctrl", "#define CO_EVENT_DYNAMIC_ERRCTRL\t");
    count("event_sync", "#define CO_EVENT_DYNAMIC_SYNC\t");
    count("event_sync_finished", "#define CO_EVENT_DYNAMIC_SYNC_FINISHED\t");
    count("event_finished", "#define CO_EVENT_DYNAMIC_FINISHED\t");
    count("event_led", "#define CO_EVENT_DYNAMIC_LED\t");
    count("event_cfg", "#define CO_EVENT_DYNAMIC_CFG_MAN\t");
    count("event_flyma", "#define CO_EVENT_DYNAMIC_FLYMA\t");
    count("event_sdorouter", "#define CO_EVENT_DYNAMIC_NETWORK_SDOCLIENT_USER\t");
    if (!m_canEventDefined && settingInt(QStringLiteral("event_can")) > 0) {
        count("event_can", "#define CO_EVENT_DYNAMIC_CAN\t");
        m_canEventDefined = true;
    }
    count("event_sdo_client_read", "#define CO_EVENT_DYNAMIC_SDO_CLIENT_READ\t");
    count("event_sdo_client_write", "#define CO_EVENT_DYNAMIC_SDO_CLIENT_WRITE\t");
    count("event_emcy", "#define CO_EVENT_DYNAMIC_EMCY\t");
    count("event_emcy_consumer", "#define CO_EVENT_DYNAMIC_EMCY_CONSUMER\t");
    count("event_time", "#define CO_EVENT_DYNAMIC_TIME\t");
    count("event_store", "#define CO_EVENT_DYNAMIC_STORE\t");
    count("event_srd", "#define CO_EVENT_DYNAMIC_SRD\t");
    count("event_lss", "#define CO_EVENT_DYNAMIC_LSS\t");
    count("event_idnego", "#define CO_EVENT_DYNAMIC_IDNEGO\t");
    count("event_manager", "#define CO_EVENT_DYNAMIC_MANAGER\t");
    count("event_mpdo", "#define CO_EVENT_DYNAMIC_MPDO\t");
    count("event_gfc", "#define CO_EVENT_DYNAMIC_GFC\t");
    count("object_changed_event", "#define CO_EVENT_DYNAMIC_OBJECT_CHANGED\t");
    count("event_ssdo_domain_write", "#define CO_EVENT_DYNAMIC_SSDO_DOMAIN_WRITE\t");
    count("event_ssdo_domain_read", "#define CO_EVENT_DYNAMIC_SSDO_DOMAIN_READ\t");
    count("isotp_server_event", "#define ISOTP_EVENT_DYNAMIC_SERVER\t");
    count("isotp_client_event", "#define ISOTP_EVENT_DYNAMIC_CLIENT\t");
}

// Objects whose values the application serves on demand; the virtual object
// dictionary of gen_vobjdict.c is sized by these counts.
void CoDefineGenerator::writeVirtualObjectBlock()
{
    SectionStream out(this);
    const QList<QPair<int, const char*>> typeDefines = {
        {5, "#define CO_VIRTUAL_U8_CNT \t"},     {6, "#define CO_VIRTUAL_U16_CNT\t"},
        {7, "#define CO_VIRTUAL_U32_CNT\t"},     {2, "#define CO_VIRTUAL_I8_CNT \t"},
        {3, "#define CO_VIRTUAL_I16_CNT\t"},     {4, "#define CO_VIRTUAL_I32_CNT\t"},
        {8, "#define CO_VIRTUAL_R32_CNT\t"},     {22, "#define CO_VIRTUAL_U24_CNT\t"},
        {10, "#define CO_VIRTUAL_OS_CNT \t"},    {9, "#define CO_VIRTUAL_VS_CNT \t"},
        {15, "#define CO_VIRTUAL_DOMAIN_CNT\t"},
    };
    const bool anyTypeCounted =
        std::any_of(typeDefines.cbegin(), typeDefines.cend(),
                    [this](const auto& row) { return m_facts.virtualTypeCounts.value(row.first) != 0; });
    if (anyTypeCounted) {
        out << "\n";
        out << "#define CO_VIRTUAL_INDEX_CNT " << m_facts.virtualIndexCount << "u\n";
        out << "/* number of virtual objects */\n";
        for (const auto& [dataType, text] : typeDefines)
            out << text << m_facts.virtualTypeCounts.value(dataType) << "u\n";
        out << "\n";
    }
    if (m_facts.virtualSubCount == 0)
        return;
    out << "#define CO_VOD_ASSIGN_CNT " << m_facts.virtualIndexCount << "u\n";
    out << "#define CO_VOBJ_DESC_CNT " << m_facts.virtualSubCount << "u\n";
    const int linesWithObjects = int(std::count_if(
        m_lines.cbegin(), m_lines.cend(), [this](quint8 l) { return objects(l, 0x1000, 0xFFFF) > 0; }));
    if (linesWithObjects >= 2)
        out << "#define CO_VIRTUAL_OBJECT_CNT "
            << countList([this](quint8 l) { return m_facts.virtualIndexCounts.value(l); }) << "\n";
}

// The CAN objects that each service registers, so that the stack's COB table
// has room for all of them.
int CoDefineGenerator::cobCountCANopen(quint8 line) const
{
    if (line == 255) {
        return sumOverLines([this](quint8 l) { return has(l, 0x1000) ? cobCountCANopen(l) : 0; });
    }
    int cobs = 0;
    if (m_canFdSupported)
        cobs += 2;
    if (m_canFdSupported && lineSettingInt(QStringLiteral("usdo_client_cnt"), line) != 0)
        cobs += 2;
    if (has(line, 0x1000))
        cobs += 2;
    if (has(line, 0x1014))
        cobs += 1;
    if (has(line, 0x1028))
        cobs += subs(line, 0x1028, 0) - 1;
    int sdoServers = objects(line, 0x1200, 0x127F);
    if (has(line, 0x1000))
        sdoServers = std::max(sdoServers, 1);
    cobs += 2 * sdoServers;
    if (has(line, 0x1300))
        cobs += 2;
    cobs += 2 * objects(line, 0x1280, 0x12FF);
    cobs += objects(line, 0x1A00, 0x1BFF);
    cobs += objects(line, 0x1600, 0x17FF);
    if (has(line, 0x1005))
        cobs += 1;
    const int heartbeatSubs = subs(line, 0x1016, 0);
    if (heartbeatSubs >= 2)
        cobs += settingInt(QStringLiteral("only_one_hb_buffer")) > 0 ? 1 : heartbeatSubs - 1;
    if (has(line, 0x1012))
        cobs += 2;
    if (settingInt(QStringLiteral("lss_supported")) > 0)
        cobs += 2;
    if (settingInt(QStringLiteral("idnego_supported")) > 0)
        cobs += 2;
    if (has(line, 0x1F81)) {
        const int maxAssignment = settingInt(QStringLiteral("max_slave_assignment"));
        cobs += maxAssignment != 0 ? maxAssignment : subs(line, 0x1F81, 1);
    }
    const int sleepMode = settingInt(QStringLiteral("sleep_mode_selection"));
    if (sleepMode == 2)
        cobs += 3;
    if (sleepMode == 1)
        cobs += lineSettingInt(QStringLiteral("nmtmaster"), line) != 0 ? 16 : 2;
    if (has(line, 0x1F10))
        cobs += 1;
    cobs += 2 * objects(line, 0x1301, 0x137F);
    const QString additional = setting(QStringLiteral("additional_cob_count"));
    if (additional.contains(QLatin1Char(',')))
        cobs += additional.split(QLatin1Char(',')).value(line).toInt();
    else
        cobs += additional.toInt();
    if (settingInt(QStringLiteral("flyma_supported")) == 1 && has(line, 0x1F80))
        cobs += 10;
    if (!mixedProtocols())
        cobs += cobCountIsoTpUds(line);
    return cobs;
}

QString CoDefineGenerator::bufferList(const QString& key, const QString& fallback) const
{
    const QString sizes = bufferSize(key, fallback);
    if (coreForm())
        return Helper::addLowerCaseUtoNumberLists(sizes);
    return sizes.endsWith(QLatin1Char('u')) ? sizes : sizes + QLatin1Char('u');
}
