#include "generators/canopen/srdogenerator.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

namespace {

constexpr quint16 firstSrdo = 0x1301;
constexpr quint16 lastSrdo = 0x1340;
// The mapping object of an SRDO lies 0x80 above its communication object.
constexpr quint16 mappingOffset = 0x80;
// Sub-index 1 of the communication object: 1 the device produces the SRDO, 2 it consumes it.
constexpr quint64 consumer = 2;

const char lintNote[] = "; /*lint !e960 Note pointer arithmetic other than array indexing used */\n";

// The stack types of the 8, 16 and 32-bit basic types carry the type's own
// name; a BOOLEAN travels as a byte, and every other type as the unsigned
// word of its mapped width.
QString cTypeOf(int dataType, int bits)
{
    const quint8 typeBits = COHelper::getDataLengthBits(CAN::CANopenDataType(dataType));
    if (dataType != CAN::Boolean && COHelper::valueGroup(quint16(dataType)) != CAN::NoGroup &&
        (typeBits == 8 || typeBits == 16 || typeBits == 32))
        return COHelper::index2DataTypeString(quint16(dataType));
    return bits <= 8 || dataType == CAN::Boolean
               ? QStringLiteral("UNSIGNED8")
               : (bits <= 16 ? QStringLiteral("UNSIGNED16") : QStringLiteral("UNSIGNED32"));
}

quint64 defaultOf(ObjectDataBase* database, quint8 line, quint16 index, quint8 subindex)
{
    SUBINDEX_DATA_T sub;
    if (!database->getSubIndex(line, index, subindex, sub))
        return 0;
    bool ok = false;
    const quint64 value = COHelper::parseUnsigned(sub.defaultvalue.trimmed(), &ok);
    return ok ? value : 0;
}

// The value of a mapped object from the bytes of the frame at `offset`,
// least significant byte first, as an unsigned word of its width.
QString fromFrame(int bytes, int offset)
{
    if (bytes == 1)
        return QStringLiteral("pData[%1]").arg(offset);
    const QString word = bytes == 2 ? QStringLiteral("UNSIGNED16") : QStringLiteral("UNSIGNED32");
    QStringList parts{QStringLiteral("(%1)pData[%2]").arg(word).arg(offset)};
    for (int i = 1; i < bytes; ++i)
        parts << QStringLiteral("((%1)pData[%2] << %3u)").arg(word).arg(offset + i).arg(8 * i);
    return QStringLiteral("(") + parts.join(QStringLiteral(" | ")) + QStringLiteral(")");
}

int byteCount(int bits)
{
    return bits <= 8 ? 1 : (bits <= 16 ? 2 : 4);
}

} // namespace

SrdoGenerator::SrdoGenerator(QObject* parent) : AbstractGenerator(parent) {}

bool SrdoGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/gen_srdo.c").arg(m_outputDir));
}

AbstractGenerator::GeneratorStatus SrdoGenerator::start()
{
    return startWorker(QStringLiteral("gen_srdo.c"));
}

void SrdoGenerator::doJob()
{
    beginJob();
    layOut();
    if (openOutputFile(QStringLiteral("gen_srdo.c"))) {
        writeHead();
        Q_EMIT progress(25);
        writeData();
        writeProcessVariables();
        writeModuleData();
        Q_EMIT progress(50);
        writeInternalFunctions();
        writeModuleBody();
        Q_EMIT progress(75);
        writeCopyFunctions();
    }
    finishJob();
}

// The lines are those below 32 with more than one object; the project is a
// multi-line one when line 1 has a dictionary of its own.
void SrdoGenerator::layOut()
{
    m_lines.clear();
    m_srdos.clear();
    for (quint8 line : m_database->getNodeList()) {
        if (line < Line::stackLimit && m_database->getIndexList(line, 0x1000, 0xFFFF).size() > 1)
            m_lines << line;
    }
    m_multiLine = m_database->nodeExists(1) && m_database->getIndexList(1, 0x1000, 0xFFFF).size() >= 2;
    const QList<quint8> srdoLines = m_multiLine ? m_lines : QList<quint8>{0};
    for (quint8 line : srdoLines) {
        for (quint16 index : m_database->getIndexList(line, firstSrdo, lastSrdo)) {
            Srdo srdo;
            srdo.line = line;
            srdo.number = index - 0x1300;
            srdo.index = index;
            srdo.receive = defaultOf(m_database, line, index, 1) == consumer;
            const quint16 mappingIndex = index + mappingOffset;
            const quint64 count = defaultOf(m_database, line, mappingIndex, 0);
            for (quint64 entry = 1; entry <= count && entry < 256; ++entry) {
                const auto value = quint32(defaultOf(m_database, line, mappingIndex, quint8(entry)));
                srdo.mapping << value;
                MappedObject object;
                object.index = quint16(value >> 16);
                object.subindex = quint8(value >> 8);
                object.bits = int(value & 0xFF);
                // Odd entries carry the plain data, even ones the same data bit-inverted.
                object.inverted = entry % 2 == 0;
                SUBINDEX_DATA_T sub;
                const bool known = m_database->getSubIndex(line, object.index, object.subindex, sub);
                object.dataType = known ? sub.datatype : 0;
                object.cType = cTypeOf(object.dataType, object.bits);
                object.name = known && !sub.varname.trimmed().isEmpty()
                                  ? Helper::substituteVariables(sub.varname.trimmed(), object.index,
                                                                object.subindex, line)
                                  : QStringLiteral("srdoVar%1_%2_%3")
                                        .arg(line)
                                        .arg(object.index, 4, 16, QLatin1Char('0'))
                                        .arg(object.subindex);
                srdo.objects << object;
            }
            m_srdos << srdo;
        }
    }
}

QString SrdoGenerator::srdoName(const Srdo& srdo) const
{
    if (m_multiLine)
        return QStringLiteral("srdo%1_line%2").arg(srdo.number).arg(srdo.line);
    return QStringLiteral("srdo%1").arg(srdo.number);
}

QString SrdoGenerator::initialValue(const QString& value) const
{
    if (!m_multiLine)
        return value;
    QStringList values;
    for (qsizetype i = 0; i < m_lines.size(); ++i)
        values << value;
    return QStringLiteral("{ ") + values.join(QStringLiteral(", ")) + QStringLiteral(" }");
}

QString SrdoGenerator::dataDefinitions() const
{
    QString text = QStringLiteral("/* SRDO Data Definitons */\n");
    for (const Srdo& srdo : m_srdos)
        text += QStringLiteral("static CO_SRDO_DATA_T\t") + srdoName(srdo) + QStringLiteral(";\n");
    for (const Srdo& srdo : m_srdos) {
        if (srdo.mapping.isEmpty())
            continue;
        QStringList values;
        for (quint32 value : srdo.mapping)
            values << QStringLiteral("0x%1UL").arg(value, 8, 16, QLatin1Char('0'));
        text += QStringLiteral("static const UNSIGNED32\tmapTable%1[%2] = {")
                    .arg(srdoName(srdo).mid(4))
                    .arg(srdo.mapping.size()) +
                values.join(QStringLiteral(", ")) + QStringLiteral(" };\n");
    }
    return text;
}

// Each SRDO data object learns its mapping table when it is looked up.
QString SrdoGenerator::dataPointerSwitch(const QString& lineWord) const
{
    auto cases = [this](quint8 line, const QString& indent) {
        QString text;
        for (const Srdo& srdo : m_srdos) {
            if (srdo.line != line)
                continue;
            text += indent + QStringLiteral("case 0x%1:\n").arg(srdo.index, 4, 16, QLatin1Char('0'));
            text += indent + QStringLiteral("pSrdo = &") + srdoName(srdo) + QStringLiteral(";\n");
            if (srdo.mapping.isEmpty())
                text += indent + QStringLiteral("pSrdo->pMapTable = NULL;\n");
            else
                text += indent + QStringLiteral("pSrdo->pMapTable = &mapTable") + srdoName(srdo).mid(4) +
                        QStringLiteral("[0];\n");
            text += indent + QStringLiteral("break;\n");
        }
        return text;
    };
    if (!m_multiLine)
        return QStringLiteral("\tswitch (index)  {\n") + cases(0, QStringLiteral("\t\t")) +
               QStringLiteral("\t\tdefault:\n\t\tbreak;\n\t}\n");
    QString text = QStringLiteral("\tswitch (%1) {\n").arg(lineWord);
    for (quint8 line : m_lines) {
        text += QStringLiteral("\t\tcase %1:\n").arg(line);
        text += QStringLiteral("\t\tswitch (index)  {\n");
        text += cases(line, QStringLiteral("\t\t\t"));
        text += QStringLiteral("\t\tdefault:\n\t\tbreak;\n\t\t}\n\t\tbreak;\n");
    }
    text += QStringLiteral("\tdefault:\n\tbreak;\n\t}\n");
    return text;
}

QString SrdoGenerator::processVariables(bool withTemporaries) const
{
    QString text = QStringLiteral("/* SRDO process variables according to mapping */\n");
    QStringList names;
    for (quint8 line : (m_multiLine ? m_lines : QList<quint8>{0})) {
        if (m_multiLine)
            text += QStringLiteral("/* line %1 */\n").arg(line);
        for (const Srdo& srdo : m_srdos) {
            if (srdo.line != line)
                continue;
            for (const MappedObject& object : srdo.objects) {
                if (names.contains(object.name))
                    continue;
                names << object.name;
                text += object.cType + QLatin1Char(' ') + object.name +
                        QStringLiteral("; /* 0x%1*/\n").arg(object.index, 4, 16, QLatin1Char('0'));
                if (withTemporaries)
                    text += QStringLiteral("static ") + object.cType + QLatin1Char(' ') + object.name +
                            QStringLiteral("_temp;\n");
            }
        }
    }
    return text;
}

void SrdoGenerator::writeHead()
{
    QTextStream out(m_file);
    out << "/*\n";
    out << QStringLiteral(" *  SRDO definitions for %1 - generated by %2 %3\n")
               .arg(m_deviceName, QCoreApplication::applicationName(), m_version);
    out << " * " << dateTimeText() << " */\n\n";
    out << "#include <stdlib.h>\n";
    out << "#include <gen_define.h>\n";
    out << "#include <co_canopen.h>\n";
    const QString headers = m_database->getGeneralSetting(QStringLiteral("applicationheader")).trimmed();
    for (const QString& header : headers.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        out << "#include <" << header << ">\n";
    out << R"(/* shutdown function, called from srdo timer interrupt */
#ifndef SHUT_DOWN_APPLICATION
# define SHUT_DOWN_APPLICATION 
#endif /* SHUT_DOWN_APPLICATION */
/*
* This counter used in SRDO timer ISR to check,
* if SRDO process is called outside interrupt in main loop
* SRDO_LOOP_COUNTER defines, how many srdo timer interrupts are allowed
* until main loop has to be called.
*/
)";
    // Read as a number, so that an absent setting still gives a valid define.
    out << "#define SRDO_LOOP_COUNTER\t"
        << m_database->getGeneralSetting(QStringLiteral("srdo_loop_counter")).trimmed().toInt() << "u\n";
    out << "/* local function prototypes */\n";
    out << resourceText(m_multiLine ? QStringLiteral(":/data/srdoproto_ml.data")
                                    : QStringLiteral(":/data/srdoproto.data"));
}

void SrdoGenerator::writeData()
{
    QTextStream out(m_file);
    out << dataDefinitions();
}

void SrdoGenerator::writeProcessVariables()
{
    QTextStream out(m_file);
    out << processVariables(false);
}

void SrdoGenerator::writeModuleData()
{
    QTextStream out(m_file);
    out << "/* static module data */\n";
    if (!m_multiLine) {
        out << "static UNSIGNED8\tconfigurationValid = 0u;\n";
        out << "static CO_NMT_STATE_T\tsrdoNmtState = CO_NMT_STATE_PREOP;\n";
        out << "static UNSIGNED8\tsrdoConfigReady = 0u;\n";
        out << "static CO_SRDO_TIMER_T  *pSrdoTimer = NULL;";
        return;
    }
    out << "static UNSIGNED8\tconfigurationValid[CO_LINE_ARRAY_DECL] = " << initialValue(QStringLiteral("0u"))
        << ";\n";
    out << "static CO_NMT_STATE_T\tsrdoNmtState[CO_LINE_ARRAY_DECL] = "
        << initialValue(QStringLiteral("CO_NMT_STATE_PREOP")) << ";\n";
    out << "static UNSIGNED8\tsrdoConfigReady[CO_LINE_ARRAY_DECL] = " << initialValue(QStringLiteral("0u"))
        << ";\n";
    out << "static CO_SRDO_TIMER_T  *pSrdoTimer[CO_LINE_ARRAY_DECL] = "
        << initialValue(QStringLiteral("NULL")) << ";\n";
}

void SrdoGenerator::writeInternalFunctions()
{
    QTextStream out(m_file);
    out << "/* internal functions */\n";
    if (m_multiLine)
        out << "static CO_SRDO_DATA_T *getSrdoDataPtr(UNSIGNED8 CO_LINE, UNSIGNED16 index)\n";
    else
        out << "static CO_SRDO_DATA_T *getSrdoDataPtr(UNSIGNED16 index)\n";
    out << "{\n\tCO_SRDO_DATA_T *pSrdo = NULL;\n\n";
    out << dataPointerSwitch(QStringLiteral("CO_LINE"));
    out << "\n\treturn(pSrdo);\n}\n";
}

void SrdoGenerator::writeModuleBody()
{
    QTextStream out(m_file);
    out << resourceText(m_multiLine ? QStringLiteral(":/data/srdo_ml.data")
                                    : QStringLiteral(":/data/srdo.data"));
}

void SrdoGenerator::writeCopyFunctions()
{
    QTextStream out(m_file);
    out << "\n/* copy functions of the mapped data */\n";
    out << copyFunction(true) << copyFunction(false);
}

// The plain and the inverted half of an SRDO come in frames of their own;
// each half is copied from its frame or into it, byte by byte.
QString SrdoGenerator::copyFunction(bool receive) const
{
    QString text = QStringLiteral("static void ");
    text += receive ? QStringLiteral("srdoCopyReceive(") : QStringLiteral("srdoCopyTransmit(");
    if (m_multiLine)
        text += QStringLiteral("UNSIGNED8 CO_LINE, ");
    text += receive ? QStringLiteral("UNSIGNED16 index, BOOL_T inverted, const UNSIGNED8 *pData)\n{\n")
                    : QStringLiteral("UNSIGNED16 index, BOOL_T inverted, UNSIGNED8 *pData)\n{\n");
    auto half = [&](const Srdo& srdo, bool inverted) {
        QString code;
        int offset = 0;
        for (const MappedObject& object : srdo.objects) {
            if (object.inverted != inverted)
                continue;
            const int bytes = byteCount(object.bits);
            if (object.cType == QLatin1String("REAL32")) {
                code += QStringLiteral("\t\t{\n\t\t\tunion { UNSIGNED32 raw; REAL32 value; } data;\n");
                if (receive) {
                    code +=
                        QStringLiteral("\t\t\tdata.raw = ") + fromFrame(4, offset) + QStringLiteral(";\n");
                    code += QStringLiteral("\t\t\t") + object.name + QStringLiteral(" = data.value;\n");
                } else {
                    code += QStringLiteral("\t\t\tdata.value = ") + object.name + QStringLiteral(";\n");
                    for (int i = 0; i < 4; ++i)
                        code += QStringLiteral("\t\t\tpData[%1] = (UNSIGNED8)(data.raw >> %2u);\n")
                                    .arg(offset + i)
                                    .arg(8 * i);
                }
                code += QStringLiteral("\t\t}\n");
            } else if (receive) {
                code += QStringLiteral("\t\t") + object.name + QStringLiteral("= (") + object.cType +
                        QStringLiteral(")") + fromFrame(bytes, offset) + QLatin1String(lintNote);
            } else {
                const QString word =
                    bytes == 1 ? QStringLiteral("UNSIGNED8")
                               : (bytes == 2 ? QStringLiteral("UNSIGNED16") : QStringLiteral("UNSIGNED32"));
                for (int i = 0; i < bytes; ++i)
                    code += QStringLiteral("\t\tpData[%1] = (UNSIGNED8)((%2)%3 >> %4u);\n")
                                .arg(offset + i)
                                .arg(word, object.name)
                                .arg(8 * i);
            }
            offset += bytes;
        }
        return code;
    };
    auto cases = [&](quint8 line) {
        QString code;
        for (const Srdo& srdo : m_srdos) {
            if (srdo.line != line || srdo.receive != receive)
                continue;
            code += QStringLiteral("\tcase 0x%1:\n").arg(srdo.index, 4, 16, QLatin1Char('0'));
            code += QStringLiteral("\t\tif (inverted == CO_TRUE) {\n") + half(srdo, true) +
                    QStringLiteral("\t\t} else {\n") + half(srdo, false) + QStringLiteral("\t\t}\n");
            code += QStringLiteral("\t\tbreak;\n");
        }
        return code + QStringLiteral("\tdefault:\n\t\tbreak;\n");
    };
    if (!m_multiLine) {
        text += QStringLiteral("\tswitch (index) {\n") + cases(0) + QStringLiteral("\t}\n}\n\n");
        return text;
    }
    text += QStringLiteral("\tswitch (CO_LINE) {\n");
    for (quint8 line : m_lines)
        text += QStringLiteral("\tcase %1:\n\tswitch (index) {\n").arg(line) + cases(line) +
                QStringLiteral("\t}\n\tbreak;\n");
    text += QStringLiteral("\tdefault:\n\t\tbreak;\n\t}\n}\n\n");
    return text;
}
