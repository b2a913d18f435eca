// gen_pgn.c: the driver, the address claim PGN, the reading of the lines
// with the numbering of the managed variables, the file head and the
// managed variables. The tables and j1939StackInit are in
// pgngenerator_tables.cpp.

#include "generators/multiprotocol/pgngenerator.h"

#include "canopenlib/cohelper.h"
#include "database/linetypes.h"
#include "generators/j1939addressclaim.h"
#include "generators/stackwords.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

// Lines from 32 upward carry no J1939 stack configuration.
constexpr quint32 addressClaimPgn = 60928;
constexpr quint8 transmit = ObjectDataBase::Transmit;
constexpr quint8 receive = ObjectDataBase::Receive;

// The array of a J1939 SPN's managed variable and its start value, the
// "not available" pattern of J1939 of that width. Seven bits start at 63:
// the stack's own value for them.
struct J1939Managed
{
    int dataType;
    int array;
    const char* start;
};

enum
{
    U8,
    I8,
    U16,
    I16,
    U32,
    I32,
    U64
};

const J1939Managed j1939Managed[] = {
    {1, U8, "1"},           {5, U8, "255"},           {100, U8, "3"},        {101, U8, "7"},
    {102, U8, "15"},        {103, U8, "31"},          {104, U8, "63"},       {105, U8, "63"},
    {6, U16, "65535"},      {106, U16, "511"},        {107, U16, "1023"},    {108, U16, "2047"},
    {109, U16, "4095"},     {110, U16, "8191"},       {111, U16, "16383"},   {112, U16, "32767"},
    {7, U32, "0xFFFFFFFF"}, {22, U32, "0xFFFFFF"},    {117, U32, "0x7FFFF"}, {118, U32, "0x3FFFF"},
    {119, U32, "0x1FFFFF"}, {129, U32, "0x1FFFFFFF"}, {24, U64, nullptr},    {25, U64, nullptr},
    {27, U64, nullptr},
};

// A raw CAN element's array; its start value is always its default.
int rawCanArray(int dataType)
{
    switch (dataType) {
    case 1:
    case 5:
    case 100:
    case 101:
    case 102:
    case 103:
    case 104:
    case 105:
        return U8;
    case 2:
        return I8;
    case 3:
        return I16;
    case 6:
    case 106:
    case 107:
    case 108:
    case 109:
    case 110:
    case 111:
    case 112:
        return U16;
    case 4:
    case 16:
        return I32;
    case 7:
    case 22:
    case 117:
    case 118:
    case 119:
    case 129:
        return U32;
    case 24:
    case 25:
    case 27:
        return U64;
    default:
        return -1;
    }
}

// Opening literal, element cast and element suffix of each managed array.
struct ManagedArrayForm
{
    const char* opening;
    const char* cast;
    const char* suffix;
};

const ManagedArrayForm managedForms[] = {
    {"static UNSIGNED8\tmv_u8[", "\t(UNSIGNED8)", "u"},
    {"static INTEGER8\tmv_i8[", "\t(INTEGER8)", "u"},
    {"static UNSIGNED16\tmv_u16[", "\t(UNSIGNED16)", "u"},
    {"static INTEGER16\tmv_i16[", "\t(INTEGER16)", "u"},
    {"static UNSIGNED32\tmv_u32[", "\t(UNSIGNED32)", "UL"},
    {"static INTEGER32\tmv_i32[", "\t(INTEGER32)", "UL"},
    {"static UNSIGNED64\tmv_u64[", "\t", ""},
};

// The widths of the types that a 64-bit managed variable holds.
int wideBits(int dataType)
{
    return dataType == CAN::Unsigned40 || dataType == CAN::Unsigned48
               ? COHelper::getDataLengthBits(CAN::CANopenDataType(dataType))
               : 64;
}

quint64 allOnes(int bits)
{
    return bits >= 64 ? ~quint64(0) : (quint64(1) << bits) - 1;
}

// Decimal, or hexadecimal behind "0x"; a minus sign for the signed types.
// Text that is no number starts at 0.
qint64 signedNumber(const QString& text)
{
    const QString value = text.trimmed();
    bool ok = false;
    if (value.startsWith(QLatin1Char('-'))) {
        const quint64 magnitude = COHelper::parseUnsigned(QStringView(value).mid(1), &ok);
        return ok ? -qint64(magnitude) : 0;
    }
    const quint64 number = COHelper::parseUnsigned(value, &ok);
    return ok ? qint64(number) : 0;
}

// The classic and the V4 stack differ in these words of gen_pgn.c.
} // namespace

PGNGenerator::PGNGenerator(QObject* parent) : AbstractGenerator(parent) {}

bool PGNGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/gen_pgn.c").arg(m_outputDir));
}

// The address claim must be in the store before the worker starts, so that
// the generators after this one see it as a real PGN.
AbstractGenerator::GeneratorStatus PGNGenerator::start()
{
    if (m_running)
        return Busy;
    declareIdentify(false);
    return startWorker(QStringLiteral("gen_pgn.c"));
}

bool PGNGenerator::declareIdentify(bool refreshCache)
{
    if (!m_database)
        return false;
    bool stored = true;
    const QList<quint8> lines = m_database->getNodeList();
    for (quint8 line : lines) {
        if (line >= Line::stackLimit || !J1939AddressClaim::applies(*m_database, line))
            continue;
        stored = J1939AddressClaim::store(*m_database, line) && stored;
        if (refreshCache)
            m_database->cacheAllSPNs(line);
    }
    return stored;
}

void PGNGenerator::doJob()
{
    beginJob();
    prepare();
    if (openOutputFile(QStringLiteral("gen_pgn.c"))) {
        auto section = [this](void (PGNGenerator::*writer)(SectionStream&)) {
            SectionStream out(this);
            (this->*writer)(out);
        };
        section(&PGNGenerator::writeFileHead);
        Q_EMIT progress(25);
        section(&PGNGenerator::writeManagedVariables);
        section(&PGNGenerator::writeMappingDefinitions);
        Q_EMIT progress(50);
        section(&PGNGenerator::writeTransmitTables);
        Q_EMIT progress(70);
        section(&PGNGenerator::writeReceiveTables);
        Q_EMIT progress(90);
        section(&PGNGenerator::writeAddressClaimConfig);
        {
            SectionStream out(this);
            writeLineConfig(out);
        }
        section(&PGNGenerator::writeStackInit);
    }
    finishJob();
}

const StackWords* PGNGenerator::stackWords() const
{
    return coreForm() ? &StackWords::genPgn() : nullptr;
}

quint64 PGNGenerator::managedKey(quint8 line, quint32 message, quint32 signal)
{
    return (quint64(line) << 56) + (quint64(message) << 24) + signal;
}

void PGNGenerator::prepare()
{
    m_lines.clear();
    const QList<quint8> nodes = m_database->getNodeList();
    for (quint8 line : nodes) {
        if (line < Line::firstScratch)
            m_lines << line;
    }
    std::sort(m_lines.begin(), m_lines.end());
    m_multiLine = m_lines.size() > 1;
    m_safety = j1939SettingInt(QStringLiteral("safetysupport")) > 0;
    m_dynamic = j1939SettingInt(QStringLiteral("dynsupport")) > 0;
    m_canFd = settingInt(QStringLiteral("canfd_supported")) > 0;
    m_staticInit = settingInt(QStringLiteral("init_static_variables")) == 1;
    m_plans.clear();
    for (QList<ManagedElement>& elements : m_managed)
        elements.clear();
    m_managedIndex.clear();
    m_arrayWritten.fill(false);
    for (quint8 line : std::as_const(m_lines)) {
        if (line >= Line::stackLimit)
            continue;
        m_database->cacheAllSPNs(line);
        readLine(line, m_database->lineType(line));
    }
}

// All PGNs of the line, safety ones included, give managed variables; the
// tables of this file leave the safety PGNs to gen_sdg.c when its data
// messages are on.
void PGNGenerator::readLine(quint8 line, int type)
{
    LinePlan plan;
    plan.line = line;
    plan.type = type;
    if (m_multiLine) {
        plan.prefix = QStringLiteral("l%1_").arg(line);
        plan.suffix = QStringLiteral("_l%1").arg(line);
    }
    for (quint8 direction : {receive, transmit}) {
        const QList<quint32> numbers = m_database->getPGNList(line, direction);
        for (quint32 number : numbers) {
            PgnEntry entry;
            m_database->getPGN(line, number, direction, entry.pgn);
            const QList<quint32> spns = m_database->getSPNList(line, number, direction);
            entry.spns.reserve(spns.size());
            for (quint32 spnNumber : spns) {
                ObjectDataBase::SPN spn;
                m_database->getSPN(line, number, direction, spnNumber, spn);
                spn.spnnumber = spnNumber;
                entry.spns << spn;
                if (spn.implementation != 0)
                    continue;
                for (const J1939Managed& managed : j1939Managed) {
                    if (managed.dataType != spn.datatype)
                        continue;
                    QString value = QString::fromLatin1(managed.start ? managed.start : "");
                    quint64 number64 = allOnes(wideBits(spn.datatype));
                    if (number == addressClaimPgn) {
                        number64 = quint64(signedNumber(spn.defaultvalue));
                        value = QString::number(number64);
                    }
                    if (managed.array == U64)
                        value = formatWideInteger(27, number64, qint64(number64));
                    addManaged(ManagedArray(managed.array), value, line, number, spnNumber);
                    break;
                }
            }
            if (!(m_safety && entry.pgn.issafe))
                (direction == transmit ? plan.transmitPgns : plan.receivePgns) << entry;
        }
        const QList<quint32> ids = m_database->getCANIDList(line, direction);
        for (quint32 id : ids) {
            CanIdEntry entry;
            m_database->getCANID(line, id, direction, entry.canId);
            entry.canId.id = id;
            const QList<quint32> elements = m_database->getDataElementList(line, id, direction);
            for (quint32 number : elements) {
                ObjectDataBase::DataElement element;
                m_database->getDataElement(line, id, direction, number, element);
                element.number = number;
                entry.elements << element;
                const int array = element.implementation == CANopen::ManagedVariable ? rawCanArray(element.datatype) : -1;
                if (array < 0)
                    continue;
                const qint64 start = signedNumber(element.defaultvalue);
                const QString value =
                    array == U64 ? formatWideInteger(27, quint64(start), start) : QString::number(start);
                addManaged(ManagedArray(array), value, line, id, number);
            }
            (direction == transmit ? plan.transmitIds : plan.receiveIds) << entry;
        }
    }
    m_plans << plan;
}

void PGNGenerator::addManaged(ManagedArray array, const QString& value, quint8 line, quint32 message,
                              quint32 signal)
{
    const quint64 key = managedKey(line, message, signal);
    m_managedIndex.insert(key, int(m_managed[array].size()));
    m_managed[array] << ManagedElement{value, key, line, message, signal};
}

void PGNGenerator::writeFileHead(SectionStream& out)
{
    out << banner(QStringLiteral("J1939 PGN definitions for"), QStringLiteral("\n */\n\n"),
                  coreForm() ? QStringLiteral(" (V4)") : QString());
    if (!QFileInfo::exists(QStringLiteral("%1/no_stdlib_include.txt").arg(m_outputDir)))
        out << "#include <stdlib.h>\n\n";
    out << "#include <gen_define.h>\n";
    out << "#include <j1939_j1939.h>\n";
    if (udsInUse()) {
        out << "#include <iso_tp.h>\n";
        out << "#include <uds_uds.h>\n";
    }
    out << "#include <gen_extern_decl.h>\n";
    const QString applicationHeader = setting(QStringLiteral("applicationheader")).trimmed();
    if (coreForm() && !applicationHeader.isEmpty()) {
        out << "/* application header file(s) */\n";
        const QStringList headers = applicationHeader.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString& header : headers)
            out << "#include \"" << header << "\"\n";
    }
    out << "\n";
    out << R"(/* definition of memory specifier */
#ifndef CO_CONST
#define CO_CONST const
#endif

/* definition of watchdog handle during initialization */
#ifndef CO_HANDLE_WATCHDOG
#define CO_HANDLE_WATCHDOG
#endif /* CO_HANDLE_WATCHDOG */


)";
}

void PGNGenerator::writeManagedVariables(SectionStream& out)
{
    out << "\n/* definition of managed variables */\n";
    for (int array = 0; array < ManagedArrayCount; ++array)
        writeManagedArray(out, ManagedArray(array));
}

void PGNGenerator::writeManagedArray(SectionStream& out, ManagedArray array)
{
    const QList<ManagedElement>& elements = m_managed[array];
    if (elements.isEmpty())
        return;
    m_arrayWritten[array] = true;
    const ManagedArrayForm& form = managedForms[array];
    out << form.opening << elements.size() << "]";
    if (!m_staticInit) {
        out << ";\n";
        return;
    }
    out << "= {\n";
    bool first = true;
    for (const ManagedElement& element : elements) {
        if (!first)
            out << ",\n";
        first = false;
        out << form.cast << element.value << form.suffix;
        if (m_multiLine)
            out << QStringLiteral(" /* %1-%2:%3 */")
                       .arg(element.line)
                       .arg(element.message)
                       .arg(element.signal);
        else
            out << QStringLiteral(" /* %1:%2 */").arg(element.message).arg(element.signal);
    }
    out << "};\n";
}
