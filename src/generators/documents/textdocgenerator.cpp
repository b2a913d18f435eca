#include "generators/documents/textdocgenerator.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"

#include <QTextStream>
#include <QThread>

TextDocGenerator::TextDocGenerator(QObject* parent) : DocumentGenerator(parent) {}

QString TextDocGenerator::outputFileName() const
{
    return perLineName(QStringLiteral("_doc.txt"), QStringLiteral(".txt"));
}

QString TextDocGenerator::documentName() const
{
    return QStringLiteral("textual documentation");
}

// The pipeline has always asked for the single-line name.
QString TextDocGenerator::checkedFileName() const
{
    return m_deviceName + QStringLiteral("_doc.txt");
}

void TextDocGenerator::writeDocument(QTextStream& out)
{
    writeTitle(out);
    const QList<quint16> indices = objectIndices();
    for (quint16 index : indices) {
        if (aborted())
            break;
        writeObject(out, index);
        writeSubIndices(out, index);
        QThread::yieldCurrentThread();
    }
}

// "Documenation" is the title the documentation import and its users know.
void TextDocGenerator::writeTitle(QTextStream& out)
{
    out << "CANopen Object Dictionary Documenation for " << m_deviceName << "\n\n";
}

void TextDocGenerator::writeObject(QTextStream& out, quint16 index)
{
    INDEX_DATA_T object;
    m_database->getIndex(m_line, index, object);
    out << "\nIndex:       0x" << hex(index, 4) << " - "
        << Helper::substituteVariables(object.name, index, 0, m_line) << "\n";
    out << "DataType:    " << COHelper::index2DataTypeString(object.datatype) << "\n";
    out << "ObjectCode:  " << COHelper::objectCode2String(CANopen::ObjectCode(object.objecttype)) << "\n";
    if (!object.description.isEmpty())
        out << "Description: " << object.description << "\n";
}

// "  Description: " keeps a single blank while its neighbours align: the
// import knows the lines by these prefixes.
void TextDocGenerator::writeSubIndices(QTextStream& out, quint16 index)
{
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        SUBINDEX_DATA_T sub;
        m_database->getSubIndex(m_line, index, subindex, sub);
        out << "  Sub:          0x" << hex(subindex, 2) << " - "
            << Helper::substituteVariables(sub.name, index, subindex, m_line) << "\n";
        out << "  DataType:     " << COHelper::index2DataTypeString(sub.datatype) << "\n";
        if (!sub.defaultvalue.isEmpty())
            out << "  DefaultValue: " << sub.defaultvalue << "\n";
        out << "  AccessType:   " << sub.accesstype << "\n";
        out << "  PDOMapping:   " << int(sub.pdomapping.toUInt()) << "\n";
        if (!sub.description.isEmpty())
            out << "  Description: " << sub.description << "\n";
    }
}
