#include "generators/documents/rawcandbcgenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "database/objectdatabase.h"

#include <QRegularExpression>
#include <QTextStream>

namespace {

constexpr quint32 extendedIdMask = 0x1FFFFFFF;
constexpr quint32 extendedFrameFlag = 0x80000000;

QString dbcName(const QString& name)
{
    static const QRegularExpression notInName(QStringLiteral("[^0-9a-zA-Z_]"));
    return QString(name).replace(notInName, QStringLiteral("_"));
}

// The identifier as DBC writes it: 29 bits, and bit 31 for an identifier
// stored with bits above them.
quint32 fileId(quint32 storedId)
{
    const quint32 id = storedId & extendedIdMask;
    return storedId != id ? id | extendedFrameFlag : id;
}

bool isSignedType(int dataType)
{
    return dataType == CAN::Integer8 || dataType == CAN::Integer16 || dataType == CAN::Integer32 ||
           dataType == CAN::Integer64;
}

QString signalName(const ObjectDataBase::DataElement& element)
{
    const QString name = dbcName(element.name);
    return name.isEmpty() ? QStringLiteral("SIG_%1").arg(element.number) : name;
}

QString quoted(QString text)
{
    return text.replace(QLatin1Char('"'), QLatin1String("\\\""));
}

} // namespace

RawCANDBCGenerator::RawCANDBCGenerator(QObject* parent) : AbstractGenerator(parent) {}

// One file for the project, whatever the line.
bool RawCANDBCGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/%2.dbc").arg(m_outputDir, m_deviceName));
}

AbstractGenerator::GeneratorStatus RawCANDBCGenerator::start()
{
    return startWorker(QStringLiteral("DBC File"));
}

void RawCANDBCGenerator::doJob()
{
    if (openOutputFile(QStringLiteral("%1.dbc").arg(m_deviceName))) {
        QTextStream out(m_file);
        writeHeader(out);
        beginJob();
        writeMessages(out, ObjectDataBase::Transmit);
        writeMessages(out, ObjectDataBase::Receive);
        writeAttributeDefinitions(out);
        writeComments(out, ObjectDataBase::Transmit);
        writeComments(out, ObjectDataBase::Receive);
        writeAttributeValues(out, ObjectDataBase::Transmit);
        writeAttributeValues(out, ObjectDataBase::Receive);
    }
    finishJob();
}

void RawCANDBCGenerator::writeHeader(QTextStream& out)
{
    out << "VERSION \"\"\n\n"
        << "NS_ :\n\n"
        << "BS_:\n\n"
        << "BU_:\n\n";
}

void RawCANDBCGenerator::writeMessages(QTextStream& out, quint8 direction)
{
    for (quint32 canId : m_database->getCANIDList(m_line, direction)) {
        if (m_cancelRequested)
            break;
        ObjectDataBase::CANID message;
        m_database->getCANID(m_line, canId, direction, message);
        QString name = dbcName(message.name);
        if (name.isEmpty())
            name = QStringLiteral("MSG_%1").arg(canId & extendedIdMask, 0, 16);

        const QList<quint32> numbers = m_database->getDataElementList(m_line, canId, direction);
        QList<ObjectDataBase::DataElement> elements;
        int endBit = 0;
        for (quint32 number : numbers) {
            ObjectDataBase::DataElement element;
            m_database->getDataElement(m_line, canId, direction, number, element);
            // Without a size of its own an element takes that of its data type.
            if (element.bitsize == 0)
                element.bitsize = COHelper::getDataLengthBits(CAN::CANopenDataType(element.datatype));
            endBit = qMax(endBit, element.bitpos + element.bitsize);
            elements << element;
        }

        out << QStringLiteral("BO_ %1 %2: %3 Vector__XXX\n")
                   .arg(fileId(canId))
                   .arg(name)
                   .arg((endBit + 7) / 8);
        for (const ObjectDataBase::DataElement& element : elements) {
            if (element.bitsize == 0)
                continue;
            out << QStringLiteral(" SG_ %1 : %2|%3@1%4 (1,0) [0|0] \"\" Vector__XXX\n")
                       .arg(signalName(element))
                       .arg(element.bitpos)
                       .arg(element.bitsize)
                       .arg(isSignedType(element.datatype) ? QLatin1Char('-') : QLatin1Char('+'));
        }
        out << "\n";
    }
}

void RawCANDBCGenerator::writeAttributeDefinitions(QTextStream& out)
{
    out << R"(
BA_DEF_ BO_ "GenMsgCycleTime" INT 0 100000;
BA_DEF_ BO_ "GenMsgSendType" ENUM "Cyclic","NoMsgSendType";
BA_DEF_DEF_ "GenMsgCycleTime" 0;
BA_DEF_DEF_ "GenMsgSendType" "NoMsgSendType";

)";
}

void RawCANDBCGenerator::writeComments(QTextStream& out, quint8 direction)
{
    for (quint32 canId : m_database->getCANIDList(m_line, direction)) {
        ObjectDataBase::CANID message;
        m_database->getCANID(m_line, canId, direction, message);
        if (!message.desc.isEmpty())
            out << QStringLiteral("CM_ BO_ %1 \"%2\";\n").arg(fileId(canId)).arg(quoted(message.desc));
        for (quint32 number : m_database->getDataElementList(m_line, canId, direction)) {
            ObjectDataBase::DataElement element;
            m_database->getDataElement(m_line, canId, direction, number, element);
            if (element.desc.isEmpty())
                continue;
            out << QStringLiteral("CM_ SG_ %1 %2 \"%3\";\n")
                       .arg(fileId(canId))
                       .arg(signalName(element), quoted(element.desc));
        }
    }
}

void RawCANDBCGenerator::writeAttributeValues(QTextStream& out, quint8 direction)
{
    for (quint32 canId : m_database->getCANIDList(m_line, direction)) {
        ObjectDataBase::CANID message;
        m_database->getCANID(m_line, canId, direction, message);
        const quint32 id = fileId(canId);
        if (message.cycletime_ms > 0) {
            out << QStringLiteral("BA_ \"GenMsgCycleTime\" BO_ %1 %2;\n").arg(id).arg(message.cycletime_ms);
            out << QStringLiteral("BA_ \"GenMsgSendType\" BO_ %1 0;\n").arg(id);
        } else {
            out << QStringLiteral("BA_ \"GenMsgSendType\" BO_ %1 1;\n").arg(id);
        }
    }
}
