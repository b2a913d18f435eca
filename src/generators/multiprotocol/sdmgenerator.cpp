// gen_sdg.c: the driver, the reading of the safe PGNs and the sections of
// the file. The copying code of each PGN is in sdmgenerator_mapping.cpp.

#include "generators/multiprotocol/sdmgenerator.h"

#include "canopenlib/cohelper.h"
#include "database/linetypes.h"
#include "generators/stackwords.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace {

constexpr quint8 transmit = ObjectDataBase::Transmit;
constexpr quint8 receive = ObjectDataBase::Receive;
// Wider values have no C word of their own in the SDG mapping.
constexpr int widestValue = 32;

// The stack's names of the narrow J1939 widths; the others live in the
// next wider word, as the 24-bit value does, which the stack keeps as a
// byte structure in its dictionary.
QString cType(int dataType, int bits)
{
    static const QStringList ownNames = {"BOOLEAN",    "UNSIGNED2",  "UNSIGNED3",  "UNSIGNED4",  "UNSIGNED5",
                                         "UNSIGNED6",  "UNSIGNED7",  "UNSIGNED8",  "UNSIGNED9",  "UNSIGNED10",
                                         "UNSIGNED12", "UNSIGNED14", "UNSIGNED16", "UNSIGNED32", "INTEGER8",
                                         "INTEGER16",  "INTEGER32"};
    const QString name = COHelper::index2DataTypeString(quint16(dataType));
    if (ownNames.contains(name) || COHelper::signedness(quint16(dataType)) == CAN::NotInteger ||
        bits > widestValue)
        return name;
    if (bits <= 8)
        return QStringLiteral("UNSIGNED8");
    return bits <= 16 ? QStringLiteral("UNSIGNED16") : QStringLiteral("UNSIGNED32");
}

} // namespace

SDMGenerator::SDMGenerator(QObject* parent) : AbstractGenerator(parent) {}

bool SDMGenerator::canWrite()
{
    m_oldMapping = QFileInfo::exists(QStringLiteral("%1/old_sdm_mapping.txt").arg(m_outputDir));
    return fileWritable(QStringLiteral("%1/gen_sdg.c").arg(m_outputDir));
}

AbstractGenerator::GeneratorStatus SDMGenerator::start()
{
    return startWorker(QStringLiteral("gen_sdg.c"));
}

QString SDMGenerator::resultInfo()
{
    return tr("%1 transmit, %2 receive safety PGNs").arg(m_transmit.size()).arg(m_receive.size());
}

const StackWords* SDMGenerator::stackWords() const
{
    return coreForm() ? &StackWords::genSdg() : nullptr;
}

void SDMGenerator::doJob()
{
    beginJob();
    layOut();
    if (openOutputFile(QStringLiteral("gen_sdg.c"))) {
        auto section = [this](void (SDMGenerator::*writer)(SectionStream&)) {
            SectionStream out(this);
            (this->*writer)(out);
        };
        section(&SDMGenerator::writeFileHead);
        Q_EMIT progress(25);
        section(&SDMGenerator::writeGlobalVariables);
        section(&SDMGenerator::writeReceiveConfig);
        if (coreForm())
            section(&SDMGenerator::writeTransmitConfig);
        Q_EMIT progress(50);
        section(&SDMGenerator::writeTransmitPgnFunction);
        section(&SDMGenerator::writeReceiveRecordFunctions);
        section(&SDMGenerator::writeCycleTimeFunction);
        Q_EMIT progress(75);
        section(&SDMGenerator::writeTransmitMapping);
        section(&SDMGenerator::writeReceiveMapping);
        section(&SDMGenerator::writeModuleBody);
    }
    finishJob();
}

// The safe PGNs of the J1939 lines with their signals, numbered per line
// and direction in the order of the PGN numbers. Every line has its entry in
// the per-line lists of the stack.
void SDMGenerator::layOut()
{
    m_lines.clear();
    m_transmit.clear();
    m_receive.clear();
    int lineCount = 0;
    for (quint8 line : m_database->getNodeList()) {
        if (line >= Line::firstScratch)
            continue;
        ++lineCount;
        if (line < Line::stackLimit)
            m_lines << line;
    }
    std::sort(m_lines.begin(), m_lines.end());
    m_multiLine = lineCount > 1;
    for (quint8 line : std::as_const(m_lines)) {
        // Every line with J1939, as gen_define.h counts the SDGs.
        if (!Line::carriesJ1939(m_database->lineType(line)))
            continue;
        m_receive << safePgns(line, false);
        m_transmit << safePgns(line, true);
    }
}

QList<SDMGenerator::SafePgn> SDMGenerator::safePgns(quint8 line, bool transmitted) const
{
    static const QRegularExpression arrayElement(QStringLiteral("^(.*?)(\\[.*\\])$"));
    const quint8 direction = transmitted ? transmit : receive;
    QList<SafePgn> result;
    for (quint32 number : m_database->getPGNList(line, direction)) {
        SafePgn safe;
        safe.line = line;
        if (!m_database->getPGN(line, number, direction, safe.pgn) || !safe.pgn.issafe)
            continue;
        safe.pgn.number = number;
        safe.key = (quint32(safe.pgn.priority) << 18) | number;
        for (quint32 spnNumber : m_database->getSPNList(line, number, direction)) {
            ObjectDataBase::SPN spn;
            m_database->getSPN(line, number, direction, spnNumber, spn);
            Signal signal;
            signal.spn = spnNumber;
            signal.dataType = spn.datatype;
            signal.firstBit = spn.bitposition;
            signal.bits = spn.bitsize != 0 ? spn.bitsize
                                           : COHelper::getDataLengthBits(CAN::CANopenDataType(spn.datatype));
            // The value itself is copied, not its address.
            QString name = spn.varname.trimmed();
            if (name.startsWith(QLatin1Char('&')))
                name = name.mid(1).trimmed();
            if (name.isEmpty())
                name = QStringLiteral("sdg_l%1_spn%2").arg(line).arg(spnNumber);
            const QRegularExpressionMatch element = arrayElement.match(name);
            signal.variable = element.hasMatch() ? element.captured(1) : name;
            signal.subscript = element.hasMatch() ? element.captured(2) : QString();
            safe.signalList << signal;
        }
        result << safe;
    }
    return result;
}

void SDMGenerator::writeFileHead(SectionStream& out)
{
    out << "/*\n";
    out << QStringLiteral(" *  SDM/SHM definitions for %1 - generated by %2 %3\n")
               .arg(m_deviceName, QCoreApplication::applicationName(), m_version);
    out << " * " << dateTimeText() << " */\n\n";
    out << "#include <stdlib.h>\n";
    out << "#include <gen_define.h>\n";
    const QString coreHeaders = setting(QStringLiteral("use_core_headers")).trimmed();
    if (!coreHeaders.isEmpty() && coreHeaders != QLatin1String("0"))
        out << "#include <core_datatype.h>\n";
    else
        out << "#include <co_datatype.h>\n";
    out << R"(#include <co_timer.h>
#include <co_drv.h>
#include <ico_cobhandler.h>
#include <j1939_j1939.h>
#include <j1939_sdg.h>
#include "ij1939_address.h"
#include "ij1939_transmit.h"
#include "ij1939_main.h"

)";
    const QString headers = setting(QStringLiteral("applicationheader")).trimmed();
    if (!headers.isEmpty()) {
        out << "/* application header file(s) */\n";
        for (const QString& header : headers.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            out << "#include <" << header << ">\n";
        out << "\n";
    }
    out << R"(
/* shutdown function, called from SDG timer interrupt */
#ifndef SHUT_DOWN_APPLICATION
# define SHUT_DOWN_APPLICATION 
#endif /* SHUT_DOWN_APPLICATION */

/*
* This counter used in SDG timer ISR to check,
* if SDG process is called outside interrupt in main loop
* SDG_LOOP_COUNTER defines, how many SDG timer interrupts are allowed
* until main loop has to be called.
*/
)";
    // Read as a number, so that an absent setting still gives a valid define.
    out << "#define SDG_LOOP_COUNTER\t" << j1939SettingInt(QStringLiteral("sdm_loop_counter")) << "u\n";
    out << "/* local function prototypes */\n";
    out << resourceText(m_multiLine ? QStringLiteral(":/data/sdgproto_ml.data")
                                    : QStringLiteral(":/data/sdgproto.data"));
    out << "\n";
    out << "/********************************************************************/\n";
}

// The application's variables that the safe PGNs carry, each once; of an
// array the highest element used gives the size.
void SDMGenerator::writeGlobalVariables(SectionStream& out)
{
    out << "/* global variables\n";
    out << "--------------------------------------------------------------------------- */\n";
    static const QRegularExpression plainName(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    static const QRegularExpression numberSubscript(QStringLiteral("^\\[\\s*(\\d+)\\s*\\]$"));
    QHash<QString, int> arraySize;
    for (const QList<SafePgn>* pgns : {&m_receive, &m_transmit}) {
        for (const SafePgn& safe : *pgns) {
            for (const Signal& signal : safe.signalList) {
                const QRegularExpressionMatch index = numberSubscript.match(signal.subscript);
                if (index.hasMatch())
                    arraySize[signal.variable] =
                        std::max(arraySize.value(signal.variable), index.captured(1).toInt() + 1);
            }
        }
    }
    QSet<QString> declared;
    for (const QList<SafePgn>* pgns : {&m_receive, &m_transmit}) {
        for (const SafePgn& safe : *pgns) {
            out << "/* line " << safe.line << " PGN " << safe.pgn.number << "/"
                << QStringLiteral("0x%1").arg(safe.pgn.number, 4, 16, QLatin1Char('0')) << " "
                << safe.pgn.name << " */\n";
            for (const Signal& signal : safe.signalList) {
                if (declared.contains(signal.variable) || !plainName.match(signal.variable).hasMatch() ||
                    (!signal.subscript.isEmpty() && !arraySize.contains(signal.variable)))
                    continue;
                declared.insert(signal.variable);
                QString size;
                if (arraySize.contains(signal.variable))
                    size = QStringLiteral("[%1]").arg(arraySize.value(signal.variable));
                else if (COHelper::getDataLengthBits(CAN::CANopenDataType(signal.dataType)) == 0)
                    size = QStringLiteral("[]");
                out << cType(signal.dataType, signal.bits) << " " << signal.variable << size << ";\t/* SPN"
                    << signal.spn << " */\n";
            }
        }
    }
}

void SDMGenerator::writeReceiveConfig(SectionStream& out)
{
    out << "\n#ifdef J1939_SDG_REC_CNT\n";
    auto countOf = [this](quint8 line) {
        return std::count_if(m_receive.cbegin(), m_receive.cend(),
                             [line](const SafePgn& safe) { return safe.line == line; });
    };
    if (m_multiLine) {
        out << "const UNSIGNED16\tsdgCnt[CO_MULTI_LINE_CNT] = {\n";
        for (quint8 line : std::as_const(m_lines))
            out << "    " << QStringLiteral("%1,").arg(countOf(line));
        out << "\n};\n";
    } else {
        out << "const UNSIGNED16\tsdgCnt = " << int(m_receive.size()) << ";\n";
    }
    for (quint8 line : std::as_const(m_lines)) {
        const auto count = countOf(line);
        if (count == 0)
            continue;
        out << QStringLiteral("static SDG_REC_T\tsdgRec_l%1[%2 * J1939_SDG_REC_ADDR_CNT];\n")
                   .arg(line)
                   .arg(count);
        out << QStringLiteral("const SDG_REC_CONFIG_T\tsdgRecCfg_l%1[%2] = {\n").arg(line).arg(count);
        for (const SafePgn& safe : std::as_const(m_receive)) {
            if (safe.line != line)
                continue;
            const QString key = QStringLiteral("%1").arg(safe.key, 8, 16, QLatin1Char('0'));
            if (coreForm())
                out << QStringLiteral("    { 0x%1ul, %2ul, %3ul, %4, %5 },\n")
                           .arg(key)
                           .arg(safe.pgn.cycletime_ms)
                           .arg(safe.pgn.inhibittime_ms)
                           .arg(QStringLiteral("%1u").arg(safe.pgn.srvt_ms))
                           .arg(QStringLiteral("%1u").arg(safe.pgn.safetytype));
            else
                out << QStringLiteral("    { 0x%1ul, %2ul, %3ul },\n")
                           .arg(key)
                           .arg(safe.pgn.cycletime_ms)
                           .arg(safe.pgn.inhibittime_ms);
        }
        out << "};\n";
    }
    out << "#endif /* J1939_SDG_REC_CNT */\n";
}

// The V4 stack reads the cycle time and safety type of what it sends from
// a table of its own.
void SDMGenerator::writeTransmitConfig(SectionStream& out)
{
    out << "#ifdef J1939_SDG_TRANS_CNT\n";
    for (quint8 line : std::as_const(m_lines)) {
        QStringList rows;
        for (const SafePgn& safe : std::as_const(m_transmit)) {
            if (safe.line == line)
                rows << QStringLiteral("    { 0x%1ul, %2ul, %3},\n")
                            .arg(safe.key, 8, 16, QLatin1Char('0'))
                            .arg(safe.pgn.cycletime_ms)
                            .arg(QStringLiteral("%1u").arg(safe.pgn.safetytype));
        }
        if (rows.isEmpty())
            continue;
        out << QStringLiteral("const SDG_TRANS_CONFIG_T\tsdgTransCfg_l%1[%2] = {\n")
                   .arg(line)
                   .arg(rows.size());
        out << rows.join(QString()) << "};\n";
    }
    out << "#endif /* J1939_SDG_TRANS_CNT */\n";
}

void SDMGenerator::writeFunctionHead(SectionStream& out, const char* head, const QStringList& parameters)
{
    out << "\n" << head << "(\n";
    if (m_multiLine)
        out << "\t\tCO_LINE_TYPE\tCO_LINE,\t/**< CAN line */\n";
    out << "\t\t" << parameters.join(QStringLiteral(",\n\t\t")) << "\n\t)\n{\n";
}

QString SDMGenerator::selection(const QString& condition, quint8 line) const
{
    if (!m_multiLine)
        return QStringLiteral("    if (%1) {\n").arg(condition);
    return QStringLiteral("    if ((%1) && (canLine == %2u)) {\n").arg(condition).arg(line);
}

void SDMGenerator::writeTransmitPgnFunction(SectionStream& out)
{
    out << "\n/* local defined functions\n";
    out << "--------------------------------------------------------------------------- */\n";
    const QString number = coreForm() ? QStringLiteral("sdgNr") : QStringLiteral("sdgNbr");
    writeFunctionHead(out, "RET_T genSdgGetTxPgn",
                      {QStringLiteral("UNSIGNED16\t") + number, "UNSIGNED32\t*pPgn"});
    out << R"(    RET_T retVal = RET_IDX_NOT_FOUND;

    if (pPgn == NULL) {
        return(RET_INVALID_PARAMETER);
    }
)";
    QHash<quint8, int> numberOnLine;
    for (const SafePgn& safe : std::as_const(m_transmit)) {
        const int sdgNumber = numberOnLine[safe.line]++;
        out << selection(coreForm() ? QStringLiteral("sdgNr == %1u").arg(sdgNumber)
                                    : QStringLiteral("sdgNbr == %1").arg(sdgNumber),
                         safe.line);
        out << "        *pPgn = " << QStringLiteral("0x%1ul").arg(safe.key, 8, 16, QLatin1Char('0'))
            << "; /* including priority, edp and dp */\n";
        out << "        retVal = RET_OK;\n";
        out << "    }\n";
    }
    out << "    return(retVal);\n}\n";
}

// The records of received SDGs, J1939_SDG_REC_ADDR_CNT senders for each:
// a sender keeps its record, a new sender takes a free one.
void SDMGenerator::writeReceiveRecordFunctions(SectionStream& out)
{
    out << "\n#ifdef J1939_SDG_REC_CNT\n";
    writeFunctionHead(out, "static SDG_REC_T *getRecSdgIdx", {"UNSIGNED32\trecSdg", "UNSIGNED8\tidx"});
    out << R"(    const SDG_REC_CONFIG_T *pSdg;
    SDG_REC_T *pRec = NULL;

    if (idx >= J1939_SDG_REC_ADDR_CNT) {
        return(NULL);
    }
)";
    out << (m_multiLine ? "    pSdg = getRecSdgConfig(canLine, recSdg);\n"
                        : "    pSdg = getRecSdgConfig(recSdg);\n");
    out << "    if (pSdg == NULL) {\n        return(NULL);\n    }\n";
    for (quint8 line : std::as_const(m_lines)) {
        if (std::none_of(m_receive.cbegin(), m_receive.cend(),
                         [line](const SafePgn& safe) { return safe.line == line; }))
            continue;
        const QString record =
            QStringLiteral(
                "pRec = &sdgRec_l%1[((UNSIGNED16)(pSdg - &sdgRecCfg_l%1[0]) * J1939_SDG_REC_ADDR_CNT) "
                "+ idx];\n")
                .arg(line);
        if (m_multiLine)
            out << QStringLiteral("    if (canLine == %1u) {\n").arg(line) << "        " << record
                << "    }\n";
        else
            out << "    " << record;
    }
    out << "    return(pRec);\n}\n";

    writeFunctionHead(out, "static SDG_REC_T *getRecSdg", {"UNSIGNED32\trecSdg", "UNSIGNED8\tsrcAddr"});
    const char* recordCall = m_multiLine ? "        pRec = getRecSdgIdx(canLine, recSdg, idx);\n"
                                         : "        pRec = getRecSdgIdx(recSdg, idx);\n";
    out << "    SDG_REC_T *pRec;\n    UNSIGNED8 idx;\n\n";
    out << "    /* the record of this sender */\n";
    out << "    for (idx = 0u; idx < J1939_SDG_REC_ADDR_CNT; idx++) {\n" << recordCall;
    out << "        if ((pRec != NULL) && (pRec->srcAddr == srcAddr)) {\n";
    out << "            return(pRec);\n        }\n    }\n";
    out << "    /* a new sender takes a free record */\n";
    out << "    for (idx = 0u; idx < J1939_SDG_REC_ADDR_CNT; idx++) {\n" << recordCall;
    out << "        if ((pRec != NULL) && (pRec->srcAddr == J1939_ADDR_NOT_VALID)) {\n";
    out << "            pRec->srcAddr = srcAddr;\n            return(pRec);\n        }\n    }\n";
    out << "    return(NULL);\n}\n";

    writeFunctionHead(out, "static const SDG_REC_CONFIG_T *getRecSdgConfig", {"UNSIGNED32\trecSdg"});
    out << "    const SDG_REC_CONFIG_T *pRec = NULL;\n\n";
    QHash<quint8, int> numberOnLine;
    for (const SafePgn& safe : std::as_const(m_receive)) {
        out << selection(QStringLiteral("recSdg == 0x%1ul").arg(safe.key, 8, 16, QLatin1Char('0')),
                         safe.line);
        out << QStringLiteral("        pRec = &sdgRecCfg_l%1[%2];\n")
                   .arg(safe.line)
                   .arg(numberOnLine[safe.line]++);
        out << "    }\n";
    }
    out << "    return(pRec);\n}\n";

    writeFunctionHead(out, "RET_T genSdgGetRxPgn", {"UNSIGNED16\tsdgNbr", "UNSIGNED32\t*pPgn"});
    out << "    const SDG_REC_CONFIG_T *pSdg = NULL;\n\n";
    out << "    if (pPgn == NULL) {\n        return(RET_INVALID_PARAMETER);\n    }\n";
    for (quint8 line : std::as_const(m_lines)) {
        const auto count = std::count_if(m_receive.cbegin(), m_receive.cend(),
                                         [line](const SafePgn& safe) { return safe.line == line; });
        if (count == 0)
            continue;
        out << selection(QStringLiteral("sdgNbr < %1u").arg(count), line);
        out << QStringLiteral("        pSdg = &sdgRecCfg_l%1[sdgNbr];\n").arg(line);
        out << "    }\n";
    }
    out << "    if (pSdg == NULL) {\n        return(RET_IDX_NOT_FOUND);\n    }\n";
    out << "    *pPgn = pSdg->pgn;\n";
    out << "    return(RET_OK);\n}\n";
    out << "#endif /* J1939_SDG_REC_CNT */\n";
}

void SDMGenerator::writeCycleTimeFunction(SectionStream& out)
{
    writeFunctionHead(out, "RET_T genSdgGetTxSct", {"UNSIGNED32\tpgn", "UNSIGNED32\t*pSct"});
    out << "    RET_T retVal = RET_IDX_NOT_FOUND;\n\n";
    out << "    if (pSct == NULL) {\n        return(RET_INVALID_PARAMETER);\n    }\n";
    for (const SafePgn& safe : std::as_const(m_transmit)) {
        const QString key = QStringLiteral("%1").arg(safe.key, 8, 16, QLatin1Char('0'));
        if (m_multiLine)
            out << QStringLiteral("    if ((pgn == 0x%1) && (canLine == 0x%2)) {\n")
                       .arg(key)
                       .arg(safe.line, 0, 16);
        else
            out << QStringLiteral("    if (pgn == 0x%1) {\n").arg(key);
        out << QStringLiteral("        *pSct = %1ul;\n").arg(safe.pgn.cycletime_ms);
        out << "        retVal = RET_OK;\n";
        out << "    }\n";
    }
    out << "    return(retVal);\n}\n";
}

void SDMGenerator::writeTransmitMapping(SectionStream& out)
{
    const QString buffer = coreForm() ? QStringLiteral("pData") : QStringLiteral("pBuffer");
    out << R"(
/**
 * copies the variables of a transmit SDG into its message,
 * unused bits and bytes set
 *
 * \retval RET_OK the SDG is known
 * \retval RET_IDX_NOT_FOUND no transmit SDG of this PGN
 */)";
    writeFunctionHead(out, "RET_T genSdgTransmitMapping", {"UNSIGNED32\tpgn", "UNSIGNED8\t*" + buffer});
    out << "    RET_T retVal = RET_IDX_NOT_FOUND;\n";
    if (coreForm())
        out << "    UNSIGNED8 pgLen = 8u;\n";
    out << "\n";
    out << "    /* call application indication */\n";
    out << (m_multiLine ? "    sdgProducerIndication(canLine, pgn);\n" : "    sdgProducerIndication(pgn);\n");
    for (const SafePgn& safe : std::as_const(m_transmit)) {
        out << selection(QStringLiteral("pgn == 0x%1ul").arg(safe.key, 8, 16, QLatin1Char('0')), safe.line);
        out << packing(safe.signalList, buffer, m_oldMapping, coreForm()).join(QString());
        out << "        retVal = RET_OK;\n";
        out << "    }\n\n";
    }
    if (coreForm())
        out << "    for (; pgLen < 8u; pgLen++) {\n        pData[pgLen] = 0xffu;\n    }\n";
    out << "    return(retVal);\n";
    out << "}\n";
}

void SDMGenerator::writeReceiveMapping(SectionStream& out)
{
    out << R"(
/**
 * copies the message of a received SDG into its variables
 *
 * \retval RET_OK the SDG is known
 * \retval RET_IDX_NOT_FOUND no receive SDG of this PGN
 */)";
    writeFunctionHead(out, "RET_T genSdgReceiveMapping", {"UNSIGNED32\tpgn", "const UNSIGNED8\t*pBuffer"});
    out << "    RET_T retVal = RET_IDX_NOT_FOUND;\n\n";
    for (const SafePgn& safe : std::as_const(m_receive)) {
        out << selection(QStringLiteral("pgn == 0x%1ul").arg(safe.key, 8, 16, QLatin1Char('0')), safe.line);
        out << unpacking(safe.signalList, m_oldMapping).join(QString());
        out << "        retVal = RET_OK;\n";
        out << "    }\n\n";
    }
    out << "    return(retVal);\n";
    out << "}\n";
}

void SDMGenerator::writeModuleBody(SectionStream& out)
{
    out << resourceText(m_multiLine ? QStringLiteral(":/data/sdg_ml.data")
                                    : QStringLiteral(":/data/sdg.data"));
}
