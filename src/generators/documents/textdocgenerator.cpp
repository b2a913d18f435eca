#include "generators/documents/textdocgenerator.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"

#include <QTextStream>
#include <QThread>

using namespace Qt::Literals::StringLiterals;

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
    out << "CANopen Object Dictionary Documenation for "_L1 << m_deviceName << "\n\n"_L1;
}

void TextDocGenerator::writeObject(QTextStream& out, quint16 index)
{
    INDEX_DATA_T object;
    m_database->getIndex(m_line, index, object);
    out << "\nIndex:       0x"_L1 << hex(index, 4) << " - "_L1
        << Helper::substituteVariables(object.name, index, 0, m_line) << "\n"_L1;
    out << "DataType:    "_L1 << COHelper::index2DataTypeString(object.datatype) << "\n"_L1;
    out << "ObjectCode:  "_L1 << COHelper::objectCode2String(CANopen::ObjectCode(object.objecttype))
        << "\n"_L1;
    if (!object.description.isEmpty())
        out << "Description: "_L1 << object.description << "\n"_L1;
}

// "  Description: " keeps a single blank while its neighbours align: the
// import knows the lines by these prefixes.
void TextDocGenerator::writeSubIndices(QTextStream& out, quint16 index)
{
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        SUBINDEX_DATA_T sub;
        m_database->getSubIndex(m_line, index, subindex, sub);
        out << "  Sub:          0x"_L1 << hex(subindex, 2) << " - "_L1
            << Helper::substituteVariables(sub.name, index, subindex, m_line) << "\n"_L1;
        out << "  DataType:     "_L1 << COHelper::index2DataTypeString(sub.datatype) << "\n"_L1;
        if (!sub.defaultvalue.isEmpty())
            out << "  DefaultValue: "_L1 << sub.defaultvalue << "\n"_L1;
        out << "  AccessType:   "_L1 << sub.accesstype << "\n"_L1;
        out << "  PDOMapping:   "_L1 << int(sub.pdomapping.toUInt()) << "\n"_L1;
        if (!sub.description.isEmpty())
            out << "  Description: "_L1 << sub.description << "\n"_L1;
    }
}
