#include "generators/canopen/codefinegenerator.h"

#include "database/objectdatabase.h"
#include "generators/commongeneratorhelper.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace {

const QString userSectionStart = QStringLiteral("/* user-specific section: start */");
const QString userSectionEnd = QStringLiteral("/* user-specific section: end */");

// The edition of the tool for EnergyBus devices; this build doesn't bear its name.
const QString energyBusEditionName = QStringLiteral("EnergyBus Tarnwick");

QStringList readLines(const QString& path, bool* found)
{
    QStringList lines;
    QFile file(path);
    *found = file.open(QIODevice::ReadOnly | QIODevice::Text);
    if (!*found)
        return lines;
    QTextStream in(&file);
    while (!in.atEnd())
        lines << in.readLine();
    return lines;
}

} // namespace

CoDefineGenerator::CoDefineGenerator(QObject* parent) : AbstractGenerator(parent) {}

// "1000" is a number of microseconds and gets the unsigned suffix; a macro
// name or 0 is left bare.
QString CoDefineGenerator::timerValue(const QString& value)
{
    return value.toInt() != 0 ? value + QStringLiteral("u\n") : value + QStringLiteral("\n");
}

// A per-line list such as "10, 12u" adds up to 22; a single value stands as it is.
QString CoDefineGenerator::bufferTotal(QString value)
{
    value.remove(QLatin1Char('u'));
    value.remove(QLatin1Char(' '));
    if (!value.contains(QLatin1Char(',')))
        return value;
    int total = 0;
    const QStringList parts = value.split(QLatin1Char(','));
    for (const QString& part : parts)
        total += part.toInt();
    return QString::number(total);
}

void CoDefineGenerator::setJ1939Present(bool present)
{
    m_flag1 = present;
}

void CoDefineGenerator::setMixedProtocols(bool mixed)
{
    m_flag2 = mixed;
}

bool CoDefineGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/gen_define.h").arg(m_outputDir));
}

AbstractGenerator::GeneratorStatus CoDefineGenerator::start()
{
    if (m_running)
        return Busy;
    m_canEventDefined = false;
    return startWorker(QStringLiteral("gen_define.h"));
}

QString CoDefineGenerator::toolVersionNumber(const QString& version)
{
    const QStringList parts = version.split(QLatin1Char('.'));
    QString number = QStringLiteral("0x");
    for (int i = 0; i < 3; ++i)
        number += QStringLiteral("%1").arg(parts.value(i).toInt(), 2, 10, QLatin1Char('0'));
    return number + QStringLiteral("ul");
}

QString CoDefineGenerator::readUserSection(const QString& path)
{
    bool found = false;
    const QStringList lines = readLines(path, &found);
    QString section;
    bool inside = false;
    for (const QString& line : lines) {
        if (!inside) {
            inside = line == userSectionStart;
            continue;
        }
        if (line == userSectionEnd) {
            inside = false;
            continue;
        }
        section += line + QLatin1Char('\n');
    }
    return section;
}

quint32 CoDefineGenerator::readGenerationCount(const QString& path)
{
    bool found = false;
    const QStringList lines = readLines(path, &found);
    for (const QString& line : lines) {
        if (!line.contains(QLatin1String("GEN_GENERATION_COUNT")))
            continue;
        // The value carries the suffix "ul".
        QString value = line.split(QLatin1Char('\t')).last();
        value.chop(2);
        return value.toUInt(nullptr, 0);
    }
    return 0;
}

void CoDefineGenerator::doJob()
{
    beginJob();
    readGenerateML();
    readProjectFacts();
    readProtocolFacts();
    const QString previousFile = QStringLiteral("%1/gen_define.h").arg(m_outputDir);
    m_userSection = readUserSection(previousFile);
    setProperty("userSection", m_userSection);
    m_generationCount = m_externalGenerationCount ? setting(QStringLiteral("obn_generation_count")).toUInt()
                                                  : readGenerationCount(previousFile);
    if (openOutputFile(QStringLiteral("gen_define.h"))) {
        scanSubIndices();
        writeBannerAndToolBlock();
        Q_EMIT progress(25);
        if (!j1939Present() || mixedProtocols()) {
            writeLineSettingsAndServices();
            Q_EMIT progress(50);
            if (isEnergyBusEdition())
                writeEnergyBusBlock();
            writeEventDefines();
            Q_EMIT progress(75);
        }
        writeQueueBlock();
        if (j1939Present() || mixedProtocols())
            writeJ1939Block();
        writeRawCanBlock();
        writeIsoTpUdsBlock();
        writeStaticUdsIndications();
        writeVirtualObjectBlock();
        writeHardwareBlock();
        writeApplicationBlock();
        if (j1939Present() || mixedProtocols())
            writeJ1939TimerInterval();
        if (mixedProtocols())
            writeCobBlock();
        writeClosingBlock();
    }
    finishJob();
}

void CoDefineGenerator::writeBannerAndToolBlock()
{
    SectionStream out(this);
    out << banner(QStringLiteral("Stack definitions for"), QStringLiteral(" */\n\n"),
                  coreForm() ? QStringLiteral(" (v4)") : QString());
    out << "/* protect against multiple inclusion of the file */\n";
    out << "#ifndef GEN_DEFINE_H\n";
    out << "#define GEN_DEFINE_H 1\n\n";
    out << "/* some information about the tool that has generated this file */\n";
    out << "#define GEN_TOOL_NAME\t"
        << QCoreApplication::applicationName().toUpper().replace(QLatin1Char(' '), QLatin1Char('_')) << "\n";
    out << "#define GEN_TOOL_VERSION\t" << toolVersionNumber(m_version) << "\n";
    // The init code that other generators write fills structures of these versions.
    const CommonGeneratorHelper helper(m_database.data(), false);
    out << "/* init struct versions */\n";
    out << "#define GEN_COMMON_INIT_STRUCT_VERSION \t"
        << helper.serviceVersion(CommonGeneratorHelper::CommonService) << "u\n";
    if (settingInt(QStringLiteral("udsserver_supported")) > 0 ||
        settingInt(QStringLiteral("udsclient_supported")) > 0)
        out << "#define GEN_UDS_INIT_STRUCT_VERSION \t" << setting(QStringLiteral("udsserver_version"))
            << "u\n";
    if (anyLineCarries(Line::carriesCANopen))
        out << "#define GEN_CANOPEN_INIT_STRUCT_VERSION \t"
            << helper.serviceVersion(CommonGeneratorHelper::CanopenService) << "u\n";
    if (anyLineCarries(Line::carriesJ1939))
        out << "#define GEN_J1939_INIT_STRUCT_VERSION \t"
            << helper.serviceVersion(CommonGeneratorHelper::J1939Service) << "u\n";
    if (anyLineCarries(Line::carriesRawCan))
        out << "#define GEN_RAWCAN_INIT_STRUCT_VERSION \t"
            << helper.serviceVersion(CommonGeneratorHelper::RawCanService) << "u\n";
    out << "\n";
}

void CoDefineGenerator::writeQueueBlock()
{
    SectionStream out(this);
    // The counts stand as the user wrote them; only the test is numeric.
    const QString userTx = setting(QStringLiteral("user_tx_cob"));
    const QString userRx = setting(QStringLiteral("user_rx_cob"));
    if (userTx.toInt() > 0)
        out << "#define USER_TRANSMIT_MSG_CNT\t" << userTx << "u\n";
    if (userRx.toInt() > 0)
        out << "#define USER_RECEIVE_MSG_CNT\t" << userRx << "u\n";
    if (userTx.toInt() > 0 || userRx.toInt() > 0)
        out << "#define CO_USER_EXTENSION_SUPPORTED\t1u\n";
    if (settingInt(QStringLiteral("sorted_coblist")) > 0) {
        out << "/* Use of sorted COB list*/\n";
        out << "#define CO_COB_SORTED_LIST\t1u\n";
    }
    if (settingInt(QStringLiteral("only_one_hb_buffer")) > 0)
        out << "#define CO_ONE_HB_CONSUMER_COB\t1u\n";
    out << "/* Definition of CAN queue sizes */\n";
    out << "#define CO_CONFIG_REC_BUFFER_CNT\t"
        << bufferTotal(bufferSize(QStringLiteral("receivebuffersize"), QStringLiteral("10"))) << "u\n";
    out << "#define CO_CONFIG_TRANS_BUFFER_CNT\t"
        << bufferTotal(bufferSize(QStringLiteral("transmitbuffersize"), QStringLiteral("5"))) << "u\n";
    if (m_canFdSupported)
        out << "#define CO_CANFD_SUPPORTED\t1u\n";
}

// One target is the whole hardware block unless the project describes
// several; with all_targets off and an active target among several only that
// one is written, in the form of the additional targets.
void CoDefineGenerator::writeHardwareBlock()
{
    SectionStream out(this);
    out << "/* Hardware settings */\n";
    const int count = settingInt(QStringLiteral("targetsettings_cnt"));
    const int active = std::max(0, settingInt(QStringLiteral("targetsettings_active")));
    const bool allTargets = settingInt(QStringLiteral("all_targets")) != 0;
    const bool activeOnly = !allTargets && active != 0 && count >= 2;

    if (!activeOnly) {
        const QString targetId = setting(QStringLiteral("target_id"));
        const QString id = targetId.trimmed().isEmpty() ? QStringLiteral("TARGET_0") : targetId;
        if (allTargets) {
            if (active == 0)
                out << "#define " << id << " 1u\n";
            out << "#ifdef " << id << "\n";
        }
        out << "/* " << setting(QStringLiteral("targetsettings_0_name")) << targetId << " */\n";
        const QString timer = setting(QStringLiteral("co_timer_interval"));
        if (!timer.isEmpty())
            out << "#define CO_TIMER_INTERVAL\t" << timerValue(timer);
        if (settingInt(QStringLiteral("endian")) == 1)
            out << "#define CO_BIG_ENDIAN\t1u\n";
        if (settingInt(QStringLiteral("drv_filter")) == 1)
            out << "#define CO_DRV_FILTER\t1u\n";
        const QString defines = setting(QStringLiteral("hw_defines"));
        if (!defines.isEmpty())
            out << "\n/* target-specific defines */\n" << defines << "\n";
        if (allTargets)
            out << "#endif /* " << id << "*/ \n\n";
    }
    if (allTargets) {
        for (int target = 1; target < count; ++target)
            writeTargetHardware(out, target, active);
    } else if (activeOnly) {
        writeTargetHardware(out, active, active);
    }
    const QString srdoTimer = setting(QStringLiteral("co_srdo_interval"));
    if (!srdoTimer.isEmpty())
        out << "#define CO_SRDO_TIMER_INTERVAL\t" << timerValue(srdoTimer);
    out << "\n";
}

void CoDefineGenerator::writeTargetHardware(SectionStream& out, int target, int active)
{
    const QString key = QStringLiteral("targetsettings_%1_").arg(target);
    QString id = setting(key + QStringLiteral("targetid"));
    if (id.isEmpty())
        id = QStringLiteral("TARGET_%1").arg(target);
    if (target == active)
        out << "#define " << id << " 1u\n";
    out << "#ifdef " << id << "\n";
    out << "/* " << setting(key + QStringLiteral("name")) << " " << id << " */\n";
    out << "#define CO_TIMER_INTERVAL\t" << setting(key + QStringLiteral("timer")) << "u\n";
    if (settingInt(key + QStringLiteral("endianess")) == 1)
        out << "#define CO_BIG_ENDIAN\t1u\n";
    if (settingInt(key + QStringLiteral("fullcan")) == 1)
        out << "#define CO_DRV_FILTER\t1u\n";
    if (settingInt(key + QStringLiteral("groupfilter")) == 1)
        out << "#define CO_DRV_GROUP_FILTER\t1u\n";
    const QString defines = setting(key + QStringLiteral("defines"));
    if (!defines.isEmpty())
        out << "\n/* target-specific defines */\n" << defines << "\n";
    out << "#endif /* " << id << "*/ \n\n";
}

void CoDefineGenerator::writeApplicationBlock()
{
    SectionStream out(this);
    const QString userDefines = setting(QStringLiteral("user_defines"));
    if (userDefines.size() > 1) {
        out << "/* application-specific defines as defined in Tarnwick */\n";
        out << userDefines << "\n";
        out << "/* end of application-specific defines */\n";
        out << "\n";
    }
    if (coreForm()) {
        bool overwritePredefined = false;
        for (quint8 line : std::as_const(m_lines))
            overwritePredefined =
                overwritePredefined || lineSettingInt(QStringLiteral("overwrite_predef"), line) > 0;
        if (overwritePredefined)
            out << "#define GEN_OVERWRITE_PREDEF_CONN_SET\t1u\n";
    }
    if (m_externalGenerationCount) {
        if (m_generationCount != 0)
            out << "#define GEN_GENERATION_COUNT\t" << m_generationCount << "ul\n";
    } else if (settingInt(QStringLiteral("generate_generation_counter")) == 1) {
        out << "#define GEN_GENERATION_COUNT\t" << m_generationCount + 1 << "ul\n";
    }
}

void CoDefineGenerator::writeJ1939TimerInterval()
{
    SectionStream out(this);
    out << "#define J1939_TIMER_INTERVAL\tCO_TIMER_INTERVAL\n";
}

void CoDefineGenerator::writeClosingBlock()
{
    SectionStream out(this);
    out << "/* do not modify comments starting with 'user-specific section:' */\n";
    out << "/* user-specific section: start */\n";
    out << (m_userSection.isEmpty() ? QStringLiteral("\n") : m_userSection);
    out << "/* user-specific section: end */\n";
    out << "\n#endif /* GEN_DEFINE_H */\n";
}

void CoDefineGenerator::readProjectFacts()
{
    m_canFdSupported = setting(QStringLiteral("canfd_supported")).toInt() > 0;
    m_lines.clear();
    m_lineTypes.clear();
    m_indexLists.clear();
    QList<quint8> nodes = m_database->getNodeList();
    std::sort(nodes.begin(), nodes.end());
    for (quint8 line : std::as_const(nodes)) {
        if (line >= Line::stackLimit)
            continue;
        m_lines << line;
        m_lineTypes.insert(line, m_database->lineType(line));
        m_indexLists.insert(line, m_database->getIndexList(line, 0x1000, 0xFFFF));
    }
}

bool CoDefineGenerator::isEnergyBusEdition() const
{
    return QCoreApplication::applicationName() == energyBusEditionName;
}

int CoDefineGenerator::lineType(quint8 line) const
{
    return m_lineTypes.value(line);
}

bool CoDefineGenerator::anyLineCarries(bool (*carries)(int)) const
{
    return std::any_of(m_lines.cbegin(), m_lines.cend(),
                       [&](quint8 line) { return carries(lineType(line)); });
}

int CoDefineGenerator::objects(quint8 line, quint16 from, quint16 to) const
{
    const QList<quint16>& indices = m_indexLists[line];
    const auto first = std::lower_bound(indices.cbegin(), indices.cend(), from);
    const auto last = std::upper_bound(first, indices.cend(), to);
    return int(last - first);
}

int CoDefineGenerator::subs(quint8 line, quint16 index, quint8 from) const
{
    const QList<quint8> subindices = m_subIndexLists.value(quint32(line) << 16 | index);
    return int(
        std::count_if(subindices.cbegin(), subindices.cend(), [from](quint8 sub) { return sub >= from; }));
}

bool CoDefineGenerator::has(quint8 line, quint16 index) const
{
    return objects(line, index, index) > 0;
}

bool CoDefineGenerator::hasOnAnyLine(quint16 index) const
{
    return std::any_of(m_lines.cbegin(), m_lines.cend(), [&](quint8 line) { return has(line, index); });
}

int CoDefineGenerator::sumOverLines(const std::function<int(quint8)>& value) const
{
    int sum = 0;
    for (quint8 line : m_lines)
        sum += value(line);
    return sum;
}

QString CoDefineGenerator::lineList(const std::function<QString(quint8)>& value,
                                    const QString& separator) const
{
    QStringList values;
    for (quint8 line : m_lines)
        values << value(line) + QLatin1Char('u');
    return values.join(separator);
}

QString CoDefineGenerator::countList(const std::function<int(quint8)>& count, const QString& separator) const
{
    return lineList([&count](quint8 line) { return QString::number(count(line)); }, separator);
}

quint64 CoDefineGenerator::defaultNumber(quint8 line, quint16 index, quint8 subindex) const
{
    SUBINDEX_DATA_T sub;
    if (!m_database->getSubIndex(line, index, subindex, sub))
        return 0;
    return sub.defaultvalue.trimmed().toULongLong(nullptr, 0);
}

QString CoDefineGenerator::bufferSize(const QString& key, const QString& fallback) const
{
    return m_database->hasGeneralSetting(key) ? setting(key) : fallback;
}
