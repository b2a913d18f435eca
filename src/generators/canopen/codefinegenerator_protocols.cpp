// The sections of gen_define.h for the protocols beside CANopen: J1939, raw
// CAN, ISO-TP and UDS, the COB budget of mixed projects, and the EnergyBus
// block of that edition of the tool. Their counts size the tables that
// gen_pgn.c and gen_mp.c fill, so they count the same PGNs those files write.

#include "generators/canopen/codefinegenerator.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr quint32 addressClaimPgn = 60928;
constexpr quint8 transmit = ObjectDataBase::Transmit;
constexpr quint8 receive = ObjectDataBase::Receive;

// The diagnostic messages whose support takes a CAN object of its own.
const int diagnosticCobMessages[] = {7, 13, 14, 16, 17, 18, 22, 23, 57, 34, 36, 37, 39};

} // namespace

void CoDefineGenerator::readProtocolFacts()
{
    m_j1939Facts.clear();
    m_rawFacts.clear();
    m_multiSourcePgn = false;
    m_safetyTypes.clear();
    const bool safety = j1939SettingInt(QStringLiteral("safetysupport")) > 0;
    for (quint8 line : std::as_const(m_lines)) {
        const int type = lineType(line);
        if (Line::carriesJ1939(type)) {
            J1939LineFacts facts;
            for (quint8 direction : {receive, transmit}) {
                const QList<quint32> numbers = m_database->getPGNList(line, direction);
                for (quint32 number : numbers) {
                    ObjectDataBase::PGN pgn;
                    m_database->getPGN(line, number, direction, pgn);
                    if (pgn.issafe) {
                        ++(direction == transmit ? facts.safeTransmit : facts.safeReceive);
                        m_safetyTypes.insert(pgn.safetytype);
                        // Without safety data messages gen_pgn.c keeps them in its tables.
                        if (safety)
                            continue;
                    }
                    ++(direction == transmit ? facts.transmit : facts.receive);
                    facts.addressClaim =
                        facts.addressClaim || (direction == transmit && number == addressClaimPgn);
                    m_multiSourcePgn = m_multiSourcePgn || (direction == receive && pgn.multisourceaddress);
                }
            }
            m_j1939Facts.insert(line, facts);
        }
        if (Line::carriesRawCan(type)) {
            RawLineFacts facts;
            facts.receive = int(m_database->getCANIDList(line, receive).size());
            const QList<quint32> ids = m_database->getCANIDList(line, transmit);
            facts.transmit = int(ids.size());
            for (quint32 id : ids) {
                ObjectDataBase::CANID canId;
                if (m_database->getCANID(line, id, transmit, canId) && canId.inhibittime_ms != 0)
                    facts.inhibit = true;
            }
            m_rawFacts.insert(line, facts);
        }
    }
}

// The count of transmit PGNs that the stack's tables hold: the address
// claim is sent by the stack itself.
int CoDefineGenerator::transmitPgns(quint8 line) const
{
    const J1939LineFacts facts = m_j1939Facts.value(line);
    return facts.transmit - (facts.addressClaim ? 1 : 0);
}

int CoDefineGenerator::receivePgns(quint8 line) const
{
    return m_j1939Facts.value(line).receive;
}

// A single line gives the value of `single` for both; several the sum and
// a list " a, b" with a blank in front.
QPair<int, QString> CoDefineGenerator::countAndList(const QList<quint8>& lines, quint8 single,
                                                    const std::function<int(quint8)>& count) const
{
    if (lines.size() <= 1)
        return {count(single), QStringLiteral("%1u").arg(count(single))};
    int sum = 0;
    QString list;
    for (quint8 line : lines) {
        sum += count(line);
        list += QStringLiteral(", %1u").arg(count(line));
    }
    return {sum, list.mid(1)};
}

void CoDefineGenerator::writeJ1939Block()
{
    QList<quint8> lines = m_j1939Facts.keys();
    std::sort(lines.begin(), lines.end());
    if (QCoreApplication::applicationName() == QLatin1String("CAN Tarnwick") && lines.isEmpty())
        return;
    SectionStream out(this);
    const bool multi = lines.size() > 1;
    // A project with one J1939 line has its values; a J1939-only one has it as line 0.
    const quint8 j1939Line = lines.value(0);
    const bool server510 = j1939SettingInt(QStringLiteral("cia510serversupport")) == 1;
    const bool client510 = j1939SettingInt(QStringLiteral("cia510clientsupport")) == 1;
    const bool safety = j1939SettingInt(QStringLiteral("safetysupport")) > 0;
    out << "/* J1939 Defines */\n";
    if (multi && !m_multiLineDefined) {
        out << "#define CO_MULTI_LINE\t1u\n";
        out << "#define CO_MULTI_LINE_CNT\t" << lines.size() << "u\n";
        m_multiLineDefined = true;
    }
    out << "#define J1939_SUPPORTED\t"
        << "1u"
        << "\n";
    if (server510 || client510)
        out << "#define J1939_CAM11_CAM21_SUPPORTED\t1u\n";
    if (safety) {
        out << "#define J1939_SDG_SUPPORTED\t1u\n";
        if (coreForm() && m_safetyTypes.contains(1))
            out << "#define J1939_SDG_TYPE_1_SUPPORTED\t1u\n";
        if (coreForm() && m_safetyTypes.contains(2))
            out << "#define J1939_SDG_TYPE_2_SUPPORTED\t1u\n";
        const QString timer = j1939Setting(QStringLiteral("sdm_timer_interval"));
        if (!timer.isEmpty())
            out << "#define J1939_SDG_TIMER_INTERVAL\t" << timerValue(timer);
    }
    const auto received = countAndList(lines, j1939Line, [this](quint8 line) { return receivePgns(line); });
    const auto transmitted =
        countAndList(lines, j1939Line, [this](quint8 line) { return transmitPgns(line); });
    if (coreForm()) {
        out << "#define J1939_RECEIVE_PGN_CFG_CNT\t" << received.first << "u\n";
        out << "#define J1939_RECEIVE_PGN_CFG_COUNTS\t" << received.second << "\n";
    }
    out << "#define J1939_RECEIVE_PGN_CNT\t" << received.first << "u\n";
    out << "#define J1939_TRANSMIT_PGN_CNT\t" << transmitted.first << "u\n";
    out << "#define J1939_RECEIVE_PGN_COUNTS\t" << received.second << "\n";
    out << "#define J1939_TRANSMIT_PGN_COUNTS\t" << transmitted.second << "\n";
    if (coreForm() && !multi && m_multiSourcePgn)
        out << "#define J1939_MULTI_SRC_ADDR\t1u\n";
    if (safety) {
        const auto safeTransmit = countAndList(
            lines, j1939Line, [this](quint8 line) { return m_j1939Facts.value(line).safeTransmit; });
        const auto safeReceive = countAndList(
            lines, j1939Line, [this](quint8 line) { return m_j1939Facts.value(line).safeReceive; });
        if (safeTransmit.first != 0)
            out << "#define J1939_SDG_TRANS_CNT\t" << safeTransmit.first << "u\n";
        out << "#define J1939_SDG_TRANS_COUNTS\t" << safeTransmit.second << "\n";
        if (safeReceive.first != 0)
            out << "#define J1939_SDG_REC_CNT\t" << safeReceive.first << "u\n";
        out << "#define J1939_SDG_REC_COUNTS\t" << safeReceive.second << "\n";
        const QString receiveAddresses = j1939Setting(QStringLiteral("sdm_rec_addr_cnt")).trimmed();
        if (coreForm() && receiveAddresses.toInt() > 0)
            out << "#define J1939_SDG_REC_ADDR_CNT\t" << receiveAddresses << "u\n";
    }
    writeJ1939SdoCounts(out, lines);
    if (coreForm() && multi && m_multiSourcePgn)
        out << "#define J1939_PGN_BUFFER_USAGE\t1u\n";
    if (m_canFdSupported) {
        if (j1939SettingInt(QStringLiteral("j1939fd_11bitmultipg")) == 1)
            out << "#define J1939_MULTI_PG_11BIT\t1u\n";
        QString buffers = j1939Setting(QStringLiteral("j1939fd_multipgbuffer")).trimmed();
        if (buffers.isEmpty())
            buffers = multi ? QStringLiteral("1,1") : QStringLiteral("1");
        if (!buffers.contains(QLatin1Char(','))) {
            out << "#define J1939_DEST_BUFFER_CNT\t" << buffers << "u\n";
            out << "#define J1939_DEST_BUFFER_COUNTS\t" << buffers << "u\n";
        } else {
            int sum = 0;
            const QStringList parts = buffers.split(QLatin1Char(','));
            for (const QString& part : parts)
                sum += part.trimmed().toInt();
            out << "#define J1939_DEST_BUFFER_CNT\t" << sum << "u\n";
            out << "#define J1939_DEST_BUFFER_COUNTS\t"
                << QString(buffers).replace(QLatin1Char(','), QStringLiteral("u,")) << "u\n";
        }
    }
    if (j1939SettingInt(QStringLiteral("dynsupport")) > 0 && !m_inhibitDefined) {
        out << "#define CO_INHIBIT_SUPPORTED\t1u\n";
        m_inhibitDefined = true;
    }
    writeJ1939Features(out);
    if (!mixedProtocols())
        writeJ1939Cobs(out, lines);
    if (!m_bufferCountsDefined) {
        out << "/* Number of receive/transmit buffer entries per line */\n";
        out << "#define CO_REC_BUFFER_CNT\t"
            << bufferTotal(bufferSize(QStringLiteral("receivebuffersize"), QStringLiteral("10"))) << "u\n";
        out << "#define CO_TR_BUFFER_CNT\t"
            << bufferTotal(bufferSize(QStringLiteral("transmitbuffersize"), QStringLiteral("5"))) << "u\n";
        out << "#define CO_REC_BUFFER_COUNTS\t"
            << bufferList(QStringLiteral("receivebuffersize"), QStringLiteral("10")) << "\n";
        out << "#define CO_TR_BUFFER_COUNTS\t"
            << bufferList(QStringLiteral("transmitbuffersize"), QStringLiteral("5")) << "\n";
        m_bufferCountsDefined = true;
    }
}

// A J1939 line has the CiA 510 SDO server or client instead of CANopen's.
void CoDefineGenerator::writeJ1939SdoCounts(SectionStream& out, const QList<quint8>& lines)
{
    const bool server510 = j1939SettingInt(QStringLiteral("cia510serversupport")) == 1;
    const int client510 = j1939SettingInt(QStringLiteral("cia510clientsupport"));
    const QList<quint8> values = lines.size() > 1 ? lines : QList<quint8>{lines.value(0)};
    QString servers;
    QString clients;
    for (quint8 line : values) {
        const bool j1939Only = lineType(line) == Line::J1939;
        servers +=
            QStringLiteral(",%1u").arg(j1939Only ? (server510 ? 1 : 0) : objects(line, 0x1200, 0x127F));
        clients += QStringLiteral(",%1u").arg(j1939Only ? client510 : objects(line, 0x1280, 0x12FF));
    }
    out << "#define J1939_SSDO_COUNTS\t" << servers.mid(1) << "\n";
    out << "#define J1939_CSDO_COUNTS\t" << clients.mid(1) << "\n";
    const int j1939OnlyLines = int(std::count_if(
        m_lines.cbegin(), m_lines.cend(), [this](quint8 line) { return lineType(line) == Line::J1939; }));
    if (server510 && !m_sdoServerCntDefined) {
        out << "#define CO_SDO_SERVER_CNT\t" << j1939OnlyLines << "u\n";
        m_sdoServerCntDefined = true;
    }
    if (client510 == 1 && !m_sdoClientCntDefined) {
        out << "#define CO_SDO_CLIENT_CNT\t" << j1939OnlyLines << "u\n";
        m_sdoClientCntDefined = true;
    }
}

void CoDefineGenerator::writeJ1939Features(SectionStream& out)
{
    auto value = [this](const char* key) { return j1939Setting(QLatin1String(key)).trimmed(); };
    auto above0 = [this](const char* key) { return j1939SettingInt(QLatin1String(key)) > 0; };
    auto count = [&](const char* key, const char* text, bool condition = true) {
        if (condition && above0(key))
            out << text << value(key) << "u\n";
    };
    count("rxindication_cnt", "#define J1939_REC_PGN_INDICATION_CNT\t");
    if (!coreForm())
        count("rxcheckindication_cnt", "#define J1939_REC_PGN_CHECK_INDICATION_CNT\t");
    count("txindication_cnt", "#define J1939_TR_PGN_INDICATION_CNT\t");
    count("requestindication_cnt", "#define J1939_REQ_PGN_INDICATION_CNT\t", above0("requestsupport"));
    count("acknowledgeindication_cnt", "#define J1939_ACK_PGN_INDICATION_CNT\t");
    if (!m_canEventDefined && above0("canindication_cnt")) {
        count("canindication_cnt", "#define CO_EVENT_DYNAMIC_CAN\t");
        m_canEventDefined = true;
    }
    count("nmea2000groupindication_cnt", "#define J1939_NMEA_GROUP_INDICATION_CNT\t");
    if (above0("recalladdrclaims"))
        out << "#define J1939_REC_ALL_CLAIM_SUPPORT\t1u\n";
    if (above0("spnchanged"))
        out << "#define J1939_EVENT_SPN_CHANGED\t1u\n";
    if (above0("bamsupport")) {
        out << "#define J1939_BAM_SUPPORTED\t1u\n";
        if (value("bamcycletime").toInt() != 0)
            out << "#define J1939_BAM_CYLE_TIME\t" << value("bamcycletime") << "u\n";
    }
    if (above0("nmea2000support"))
        out << "#define J1939_NMEA2000_SUPPORTED\t1u\n";
    if (above0("cmdtsupport")) {
        out << "#define J1939_CMDT_SUPPORTED\t1u\n";
        out << "#define J1939_CMDT_MAX_PACKETS\t" << value("cmdtpackets") << "u\n";
    }
    if (!m_canEventDefined && settingInt(QStringLiteral("event_can")) > 0) {
        out << "#define CO_EVENT_DYNAMIC_CAN\t" << setting(QStringLiteral("event_can")).trimmed() << "u\n";
        m_canEventDefined = true;
    }
    if (above0("diagsupport")) {
        out << "#define J1939_DIAGNOSTIC_SUPPORTED\t1u\n";
        out << "#define J1939_DIAG_REC_BUF_SIZE\t" << value("dm_receivesize") << "u\n";
        out << "#define J1939_DIAG_TR_BUF_SIZE\t" << value("dm_transmitsize") << "u\n";
        for (int dm = 1; dm <= 64; ++dm) {
            if (j1939SettingInt(QStringLiteral("diagsupport_dm%1").arg(dm)) > 0)
                out << "#define J1939_DIAGNOSTIC_DM" << dm << "_SUPPORTED\t1u\n";
        }
    }
    if (above0("diagtoolsupport")) {
        out << "#define J1939_DIAGNOSTIC_TOOL_SUPPORTED\t1u\n";
        out << "#define J1939_DIAGTOOL_REC_BUF_SIZE\t" << value("dmtool_receivesize") << "u\n";
        out << "#define J1939_DIAGTOOL_TR_BUF_SIZE\t" << value("dmtool_transmitsize") << "u\n";
        for (int dm = 1; dm <= 64; ++dm) {
            if (j1939SettingInt(QStringLiteral("diagsupport_dmtool%1").arg(dm)) > 0)
                out << "#define J1939_DIAGNOSTIC_TOOL_DM" << dm << "_SUPPORTED\t1u\n";
        }
    }
    if (above0("requestsupport"))
        out << "#define J1939_REQUEST_SUPPORTED\t1u\n";
    if (above0("propsupport"))
        out << "#define J1939_PROPRIETARY_SUPPORTED\t1u\n";
    if (above0("dynsupport"))
        out << "#define J1939_DYNAMIC_PGN\t1u\n";
    if (above0("bitwisemapping"))
        out << "#define BITWISE_MAPPING\t1u\n";
    const QString connections = setting(QStringLiteral("isotp_connection_cnt")).trimmed();
    if ((connections.toInt() & 0xFF) != 0) {
        out << "#define ISOTP_SUPPORTED\t1u\n";
        out << "#define ISOTP_CONNECTION_CNT\t" << connections << "u\n";
    }
    if (j1939SettingInt(QStringLiteral("cia510serversupport")) == 1) {
        out << "#define CO_EVENT_DYNAMIC_SDO_SERVER_READ\t1u\n";
        out << "#define CO_EVENT_DYNAMIC_SDO_SERVER_WRITE\t1u\n";
    }
    if (j1939SettingInt(QStringLiteral("cia510clientsupport")) == 1) {
        out << "#define CO_EVENT_DYNAMIC_SDO_CLIENT_READ\t1u\n";
        out << "#define CO_EVENT_DYNAMIC_SDO_CLIENT_WRITE\t1u\n";
    }
}

// A J1939-only project sizes the COB table here; ISO-TP and UDS take theirs on top.
void CoDefineGenerator::writeJ1939Cobs(SectionStream& out, const QList<quint8>& lines)
{
    auto cobs = [this](quint8 line) { return cobCountJ1939(line) + cobCountIsoTpUds(line); };
    out << "/* COB definitions */\n";
    if (lines.size() <= 1) {
        out << "#define CO_COB_CNT \t" << cobs(lines.value(0)) << "u\n";
        out << "#define CO_COB_COUNTS\tCO_COB_CNT"
            << "\n";
        return;
    }
    int sum = 0;
    QStringList list;
    for (quint8 line : lines) {
        sum += cobs(line);
        list << QStringLiteral("%1u").arg(cobs(line));
    }
    out << "#define CO_COB_CNT \t" << sum << "u\n";
    out << "#define CO_COB_COUNTS\t" << list.join(QStringLiteral(", ")) << "\n";
}

// The CAN objects that the J1939 services of a line register.
int CoDefineGenerator::cobCountJ1939(quint8 line) const
{
    auto above0 = [this](const char* key) { return j1939SettingInt(QLatin1String(key)) > 0; };
    int cobs = 3;
    if (above0("diagsupport")) {
        cobs = 4;
        for (int dm : diagnosticCobMessages) {
            if (j1939SettingInt(QStringLiteral("diagsupport_dm%1").arg(dm)) > 0)
                ++cobs;
        }
    }
    if (above0("diagtoolsupport"))
        cobs += 2;
    const J1939LineFacts facts = m_j1939Facts.value(line);
    int tx = facts.transmit + (facts.transmit != 0 ? 1 : 0) - (facts.addressClaim ? 1 : 0);
    int rx = facts.receive + (facts.receive != 0 ? 1 : 0);
    cobs += tx + rx;
    if (rx + tx < 3 && settingInt(QStringLiteral("canfd_supported")) == 1)
        cobs += 3 - (rx + tx);
    if (above0("requestsupport"))
        cobs += 1;
    if (above0("acknowledgeindication_cnt"))
        cobs += 1;
    if (above0("bamsupport") || j1939SettingInt(QStringLiteral("cmdtsupport")) >= 1)
        cobs += 6;
    if (above0("safetysupport"))
        cobs += 2;
    if (above0("diagsupport"))
        cobs += 2;
    if (above0("dynsupport"))
        cobs += 1;
    if (j1939SettingInt(QStringLiteral("cia510serversupport")) == 1)
        cobs += 2;
    if (j1939SettingInt(QStringLiteral("cia510clientsupport")) == 1)
        cobs += 2;
    const int additional = settingInt(QStringLiteral("additional_cob_count"));
    if (additional >= 1)
        cobs += additional;
    if (j1939SettingInt(QStringLiteral("j1939fd_11bitmultipg")) == 1)
        cobs += 1;
    return cobs;
}

// ISO-TP connections take two COBs each, a UDS server six, each UDS client three.
int CoDefineGenerator::cobCountIsoTpUds(quint8 line) const
{
    int cobs = 0;
    if (settingInt(QStringLiteral("isotp_supported")) == 1)
        cobs += 2 * lineSettingInt(QStringLiteral("isotp_client_con"), line) +
                2 * lineSettingInt(QStringLiteral("isotp_server_con"), line);
    if (settingInt(QStringLiteral("udsserver_supported")) == 1)
        cobs += 6;
    if (settingInt(QStringLiteral("udsclient_supported")) == 1)
        cobs += 3 * lineSettingInt(QStringLiteral("uds_client_cnt"), 0);
    return cobs;
}

void CoDefineGenerator::writeRawCanBlock()
{
    QList<quint8> lines = m_rawFacts.keys();
    if (lines.isEmpty())
        return;
    std::sort(lines.begin(), lines.end());
    SectionStream out(this);
    if ((lines.size() > 1 || m_generateML) && !m_multiLineDefined) {
        out << "#define CO_MULTI_LINE\t1u\n";
        out << "#define CO_MULTI_LINE_CNT\t" << lines.size() << "u\n";
        m_multiLineDefined = true;
    }
    if (settingInt(QStringLiteral("event_can")) >= 1 && !m_canEventDefined) {
        out << "#define CO_EVENT_DYNAMIC_CAN\t" << setting(QStringLiteral("event_can")).trimmed() << "u\n";
        m_canEventDefined = true;
    }
    const bool inhibit = std::any_of(lines.cbegin(), lines.cend(),
                                     [this](quint8 line) { return m_rawFacts.value(line).inhibit; });
    if (inhibit && !m_inhibitDefined) {
        out << "#define CO_INHIBIT_SUPPORTED\t1u\n";
        m_inhibitDefined = true;
    }
    out << "\n/* CAN RAW Defines */\n";
    out << "#define RAWCAN_SUPPORTED\t"
        << "1u"
        << "\n";
    // One raw CAN line is taken to be line 0.
    const auto received =
        countAndList(lines, 0, [this](quint8 line) { return m_rawFacts.value(line).receive; });
    const auto transmitted =
        countAndList(lines, 0, [this](quint8 line) { return m_rawFacts.value(line).transmit; });
    if (received.first != 0)
        out << "#define RAWCAN_RECEIVE_CNT\t" << received.first << "u\n";
    out << "#define RAWCAN_RECEIVE_COUNTS\t" << received.second << "\n";
    if (transmitted.first != 0)
        out << "#define RAWCAN_TRANSMIT_CNT\t" << transmitted.first << "u\n";
    out << "#define RAWCAN_TRANSMIT_COUNTS\t" << transmitted.second << "\n";
    if (!m_bufferCountsDefined) {
        out << "#define CO_REC_BUFFER_COUNTS\t"
            << bufferList(QStringLiteral("receivebuffersize"), QStringLiteral("10")) << "\n";
        out << "#define CO_TR_BUFFER_COUNTS\t"
            << bufferList(QStringLiteral("transmitbuffersize"), QStringLiteral("5")) << "\n";
        m_bufferCountsDefined = true;
    }
    // These rows are general settings, though J1939 has rows of the same names.
    auto count = [&](const char* key, const char* text) {
        const QString value = setting(QLatin1String(key)).trimmed();
        if (value.toInt() > 0)
            out << text << value << "u\n";
        return value.toInt() > 0;
    };
    count("rxindication_cnt", "#define RAWCAN_REC_INDICATION_CNT\t");
    count("txindication_cnt", "#define RAWCAN_TR_INDICATION_CNT\t");
    if (count("changedindication_cnt", "#define RAWCAN_CHANGED_INDICATION_CNT\t") && coreForm())
        out << "#define CORE_OBJECT_CHANGED\t1u\n";
}

void CoDefineGenerator::writeIsoTpUdsBlock()
{
    const bool server = settingInt(QStringLiteral("udsserver_supported")) == 1;
    const bool client = settingInt(QStringLiteral("udsclient_supported")) == 1;
    const bool isoTp = settingInt(QStringLiteral("isotp_supported")) == 1;
    if (!server && !client && !isoTp)
        return;
    SectionStream out(this);
    auto perLine = [this](const char* key, quint8 line) { return lineSettingInt(QLatin1String(key), line); };
    const int clients = sumOverLines([&](quint8 line) { return perLine("uds_client_cnt", line); });
    out << "\n/* ISO-TP Defines */\n";
    out << "#define ISOTP_SUPPORTED\t1u\n";
    if (m_lines.size() <= 1) {
        const quint8 line = m_lines.value(0);
        const int clientCons =
            perLine("isotp_client_con", line) + (server ? 1 : 0) + (client ? 2 * clients : 0);
        const int serverCons = perLine("isotp_server_con", line) + (server ? 2 : 0) + (client ? clients : 0);
        out << "#define ISOTP_CLIENT_CONNECTION_CNT\t" << clientCons << "u\n";
        out << "#define ISOTP_CLIENT_COUNTS\t" << clientCons << "u\n";
        out << "#define ISOTP_SERVER_CONNECTION_CNT\t" << serverCons << "u\n";
        out << "#define ISOTP_SERVER_COUNTS\t" << serverCons << "u\n";
    } else {
        // A UDS client alone uses its own count of clients and twice that of
        // servers: the reverse of the one-line form, as the stack expects it.
        auto clientElement = [&](quint8 line) {
            if (isoTp)
                return perLine("isotp_client_con", line) + (server ? 1 : 0);
            return client ? perLine("uds_client_cnt", line) : 1;
        };
        auto serverElement = [&](quint8 line) {
            if (isoTp)
                return perLine("isotp_server_con", line) + (server ? 2 : 0);
            return client ? 2 * perLine("uds_client_cnt", line) : 2;
        };
        out << "#define ISOTP_CLIENT_CONNECTION_CNT\t" << sumOverLines(clientElement) << "u\n";
        out << "#define ISOTP_CLIENT_COUNTS\t" << countList(clientElement, QStringLiteral(",")) << "\n";
        out << "#define ISOTP_SERVER_CONNECTION_CNT\t" << sumOverLines(serverElement) << "u\n";
        out << "#define ISOTP_SERVER_COUNTS\t" << countList(serverElement, QStringLiteral(",")) << "\n";
    }
    const int udsIndication = (server || client) ? 1 : 0;
    const int serverIndications = settingInt(QStringLiteral("isotp_dyn_server_ind")) + udsIndication;
    if (serverIndications != 0)
        out << "#define ISOTP_EVENT_DYNAMIC_SERVER\t" << serverIndications << "u\n";
    const int clientIndications = settingInt(QStringLiteral("isotp_dyn_client_ind")) + udsIndication;
    if (clientIndications != 0)
        out << "#define ISOTP_EVENT_DYNAMIC_CLIENT\t" << clientIndications << "u\n";
    if (settingInt(QStringLiteral("isotp_dyn_split_ind")) != 0)
        out << "#define ISOTP_EVENT_DYNAMIC_SSPLIT\t"
            << setting(QStringLiteral("isotp_dyn_split_ind")).trimmed() << "u\n";
    const QString txAck = setting(QStringLiteral("isotp_dyn_client_txack_ind")).trimmed();
    if (!txAck.isEmpty() || server)
        out << "#define ISOTP_EVENT_DYNAMIC_CLIENT_TXACK\t" << txAck.toInt() + udsIndication << "u\n";
    if (server) {
        out << "#define UDS_SERVER_SUPPORTED\t1u\n";
        out << "#define UDS_SECURITY_SEED_KEY_LEN\t"
            << setting(QStringLiteral("uds_seedkey_length")).trimmed() << "u\n";
        out << "#define UDS_SESSION_TIMEOUT\t" << setting(QStringLiteral("uds_session_timeout")).trimmed()
            << "u\n";
        if (settingInt(QStringLiteral("uds_only_appl_session_check")) == 1)
            out << "#define UDS_ONLY_APPL_REQUIRED_SESSION_CHECK\t1u\n";
        if (settingInt(QStringLiteral("uds_only_appl_security_check")) == 1)
            out << "#define UDS_ONLY_APPL_SECURITY_LEVEL_CHECK\t1u\n";
    }
    if (client) {
        out << "#define UDS_CLIENT_SUPPORTED\t1u\n";
        out << "#define UDS_CLIENT_CNT\t" << clients << "\n";
    }
    if (!coreForm())
        return;
    if (settingInt(QStringLiteral("uds_client_partial_download")) > 0)
        out << "#define UDSCLIENT_EVENT_DYNAMIC_DATA_DOWNLOAD\t1u\n";
    if (udsAuthenticationRequired())
        out << "#define UDS_AUTHENTICATION_REQUIRED\t1u\n";
}

bool CoDefineGenerator::udsAuthenticationRequired() const
{
    for (quint8 line : m_lines) {
        const QMap<quint8, bool> services = m_database->getUDSServiceList(line);
        for (auto it = services.cbegin(); it != services.cend(); ++it) {
            const QString authentication = m_database->getUDSServiceAuthentication(line, it.key()).trimmed();
            if (it.value() && !authentication.isEmpty() && authentication != QLatin1String("0"))
                return true;
        }
    }
    return false;
}

// Mixed projects size the COB table of all protocols of each line at the end.
void CoDefineGenerator::writeCobBlock()
{
    SectionStream out(this);
    out << "/* COB Definitions */\n";
    const bool isoTp = settingInt(QStringLiteral("isotp_supported")) == 1;
    const bool server = settingInt(QStringLiteral("udsserver_supported")) == 1;
    const bool client = settingInt(QStringLiteral("udsclient_supported")) == 1;
    QList<int> counts;
    for (quint8 line : std::as_const(m_lines)) {
        const int type = lineType(line);
        const RawLineFacts raw = m_rawFacts.value(line);
        int cobs = 0;
        if (Line::carriesCANopen(type))
            cobs += cobCountCANopen(line);
        if (Line::carriesJ1939(type))
            cobs += cobCountJ1939(line);
        if (Line::carriesRawCan(type))
            cobs += raw.transmit + raw.receive;
        if (isoTp)
            cobs += 2 * lineSettingInt(QStringLiteral("isotp_client_con"), line) +
                    2 * lineSettingInt(QStringLiteral("isotp_server_con"), line);
        if (server && lineSettingInt(QStringLiteral("uds_server_active"), line) != 0)
            cobs += 6;
        if (client)
            cobs += 3 * lineSettingInt(QStringLiteral("uds_client_cnt"), line);
        counts << cobs;
    }
    const int additional = settingInt(QStringLiteral("additional_cob_count"));
    if (additional > 0 && !counts.isEmpty())
        counts.last() += additional;
    QStringList list;
    int sum = 0;
    for (int count : std::as_const(counts)) {
        list << QStringLiteral("%1u").arg(count);
        sum += count;
    }
    out << "#define CO_COB_COUNTS " << list.join(QStringLiteral(", ")) << "\n";
    out << "#define CO_COB_CNT \t" << sum << "\n";
}

// Dormant in this edition: the devices of an EnergyBus network by kind.
void CoDefineGenerator::writeEnergyBusBlock()
{
    struct Kind
    {
        const char* leading;
        const char* setting;
        const char* countDefine;
        const char* offsetDefine;
    };
    static const Kind kinds[] = {
        {"EnergyBus Controller", "ebc", "#define EB_EBC_CNT\t", nullptr},
        {"Load Monitoring Device", "lmd", "#define EB_LMD_CNT\t", "#define EB_LOCAL_LMD_SUBIDX_OFFS\t"},
        {"Security Device/Extension", "sec", "#define EB_SECURITY_CNT\t",
         "#define EB_LOCAL_SECURITY_SUBIDX_OFFS\t"},
        {"Battery", "bat", "#define EB_BATTERY_CNT\t", "#define EB_LOCAL_BATTERY_SUBIDX_OFFS\t"},
        {"Display", "hmi", "#define EB_HMI_CNT\t", "#define EB_LOCAL_HMI_SUBIDX_OFFS\t"},
        {"Manufacturer specific device (passive)", "manup", "#define EB_MANU_P_CNT\t",
         "#define EB_LOCAL_MANU_P_SUBIDX_OFFS\t"},
        {"Manufacturer specific device (active)", "manua", "#define EB_MANU_A_CNT\t",
         "#define EB_LOCAL_MANU_A_SUBIDX_OFFS\t"},
        {"Motor Controller Unit", "mcu", "#define EB_MCU_CNT\t", "#define EB_LOCAL_MCU_SUBIDX_OFFS\t"},
        {"Voltage Converter", "vc", "#define EB_VOLT_CONV_CNT\t", "#define EB_LOCAL_VOLT_CONV_SUBIDX_OFFS\t"},
    };
    static const QList<QPair<const char*, const char*>> network = {
        {"ebc_max_dev_number", "#define EB_NETWORK_VIRTUAL_DEV_CNT\t"},
        {"ebc_max_bat_number", "#define EB_NETWORK_BATTERY_CNT\t"},
        {"ebc_max_mcu_number", "#define EB_NETWORK_MCU_CNT\t"},
        {"ebc_max_hmi_number", "#define EB_NETWORK_HMI_CNT\t"},
        {"ebc_max_manup_number", "#define EB_NETWORK_MANU_P_CNT\t"},
        {"ebc_max_manua_number", "#define EB_NETWORK_MANU_A_CNT\t"},
        {"ebc_max_sec_number", "#define EB_NETWORK_SECURITY_CNT\t"},
        {"ebc_max_vc_number", "#define EB_NETWORK_VOLT_CONV_CNT\t"},
        {"ebc_max_lmd_number", "#define EB_NETWORK_LOAD_MONITORING_CNT\t"},
    };
    static const QList<QPair<const char*, const char*>> offsets = {
        {"ext_start_pos_bat", "#define EB_NETWORK_BATTERY_SUBIDX_OFFS\t"},
        {"ext_start_pos_sec", "#define EB_NETWORK_SECURITY_SUBIDX_OFFS\t"},
        {"ext_start_pos_vc", "#define EB_NETWORK_VOLT_CONV_SUBIDX_OFFS\t"},
        {"ext_start_pos_hmi", "#define EB_NETWORK_HMI_SUBIDX_OFFS\t"},
        {"ext_start_pos_manup", "#define EB_NETWORK_MANU_P_SUBIDX_OFFS\t"},
        {"ext_start_pos_manua", "#define EB_NETWORK_MANU_A_SUBIDX_OFFS\t"},
        {"ext_start_pos_lmd", "#define EB_NETWORK_LMD_SUBIDX_OFFS\t"},
        {"ext_start_pos_mcu", "#define EB_NETWORK_MCU_SUBIDX_OFFS\t"},
    };
    SectionStream out(this);
    auto value = [this](const QString& key) { return m_database->getEnergyBusSetting(key).trimmed(); };
    out << "/* EnergyBus Defines */\n";
    out << "#define EB_VIRTUAL_DEV_CNT\t" << value(QStringLiteral("device_cnt")) << "u\n";
    static const QRegularExpression deviceRow(QStringLiteral("^device_\\d+$"));
    static const QRegularExpression securityRow(QStringLiteral("^sec_\\d+_kind$"));
    QHash<QString, int> localCounts;
    bool securityKind = false;
    const QStringList keys = m_database->getEnergyBusSettingKeys();
    for (const QString& key : keys) {
        if (securityRow.match(key).hasMatch() && !value(key).isEmpty())
            securityKind = true;
        if (!deviceRow.match(key).hasMatch())
            continue;
        const QString device = m_database->getEnergyBusSetting(key).mid(2);
        for (const Kind& kind : kinds) {
            if (device.startsWith(QLatin1String(kind.leading))) {
                ++localCounts[QLatin1String(kind.setting)];
                break;
            }
        }
    }
    for (const Kind& kind : kinds) {
        const int count = localCounts.value(QLatin1String(kind.setting));
        if (count == 0)
            continue;
        out << kind.countDefine << count << "u\n";
        const QString offset = value(QStringLiteral("int_offset_") + QLatin1String(kind.setting));
        if (kind.offsetDefine && !offset.isEmpty())
            out << kind.offsetDefine << offset << "u\n";
    }
    if (localCounts.value(QStringLiteral("ebc")) == 0)
        return;
    for (const auto& [key, text] : network) {
        const QString number = value(QLatin1String(key));
        if (!number.isEmpty())
            out << text << number << "u\n";
    }
    if (value(QStringLiteral("ebc_tool_supported")).toInt() > 0)
        out << "#define EB_NETWORK_PC_TOOL_CNT\t1u\n";
    if (securityKind)
        out << "#define EB_NETWORK_SECURITY_CNT\t1u\n";
    for (const auto& [key, text] : offsets) {
        const QString number = value(QLatin1String(key));
        if (!number.isEmpty())
            out << text << number << "u\n";
    }
}
