#include "generators/documents/icsvgenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"
#include "generators/documents/csvcells.h"

#include <QRegularExpression>
#include <QTextStream>

ICSVGenerator::ICSVGenerator(bool withDescription, QObject* parent)
    : DocumentGenerator(parent), m_withDescription(withDescription)
{
}

QString ICSVGenerator::outputFileName() const
{
    return perLineName(QStringLiteral(".icsv"), QStringLiteral(".icsv"));
}

QString ICSVGenerator::documentName() const
{
    return QStringLiteral("ICSV documentation");
}

// The pipeline has always asked for the single-line name.
QString ICSVGenerator::checkedFileName() const
{
    return m_deviceName + QStringLiteral(".icsv");
}

void ICSVGenerator::writeDocument(QTextStream& out)
{
    writeHead(out);
    writeObjects(out, " \n", [this, &out](quint16 index, const INDEX_DATA_T& object) {
        if (object.objecttype != CANopen::Var)
            writeObjectHeadRow(out, index, object);
        writeSubIndexRows(out, index, object);
    });
}

void ICSVGenerator::writeHead(QTextStream& out)
{
    out << "#\n";
    out << "# This is an importable ICSV file for the " << m_deviceName << " project.\n";
    out << "#\n";
    if (m_withDescription)
        out << "index,sub,objectcode,datatype,edsname,varname,access,mapable,hasdefault,defaultineds,value,"
               "description,size,implementation,haslimit,lowlimit,uplimit,nvstorage\n";
    else
        out << "index,sub,objectcode,datatype,edsname,varname,access,mapable,hasdefault,defaultineds,value,"
               "size,implementation,haslimit,lowlimit,uplimit,nvstorage\n";
}

void ICSVGenerator::writeObjectHeadRow(QTextStream& out, quint16 index, const INDEX_DATA_T& object)
{
    out << "0x" << hex(index, 4) << ",";
    if (object.objecttype == CANopen::Array)
        out << ",ARRAY,";
    else if (object.objecttype == CANopen::Record)
        out << ",RECORD,";
    else
        out << ",,";
    out << COHelper::index2DataTypeString(object.datatype) << ",";
    out << CsvCells::plain(object.name) << ",";
    out << ",,,,,,";
    if (m_withDescription)
        out << descriptionCell(object.description) << ",";
    out << ",,";
    out << ",,,,";
    out << "\n";
}

void ICSVGenerator::writeSubIndexRows(QTextStream& out, quint16 index, const INDEX_DATA_T& object)
{
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        SUBINDEX_DATA_T sub;
        m_database->getSubIndex(m_line, index, subindex, sub);
        const bool arrayHead = subindex == 0 && object.objecttype == CANopen::Array;

        out << "0x" << hex(index, 4) << ",";
        out << "0x" << hex(subindex, 2) << ",";
        out << (subindex == 0 && object.objecttype == CANopen::Var ? "VARIABLE," : ",");
        out << COHelper::index2DataTypeString(arrayHead ? object.datatype : sub.datatype) << ",";
        out << CsvCells::plain(sub.name) << ",";
        out << (sub.implementation == CANopen::ApplicationVariable ? CsvCells::plain(sub.varname) : QString())
            << ",";
        out << CsvCells::plain(sub.accesstype) << ",";
        out << sub.pdomapping.getCSVStringValue() << ",";
        out << (sub.defaultineds ? "1" : "0") << ",";
        out << int(sub.writedefaulttoeds) << ",";
        out << CsvCells::typedValue(sub, false);
        if (m_withDescription)
            out << descriptionCell(sub.description) << ",";
        out << sub.size << ",";
        out << CsvCells::implementation(sub.implementation);
        out << CsvCells::yesNo(sub.limitineds) << ",";
        out << CsvCells::plain(sub.lowlimit) << ",";
        out << CsvCells::plain(sub.uplimit) << ",";
        out << CsvCells::yesNo(sub.nvstorage);
        out << "\n";
    }
}

QString ICSVGenerator::descriptionCell(const QString& text)
{
    static const QRegularExpression lineEnd(QStringLiteral("[\\r\\n]"));
    QString cell = text;
    cell.replace(lineEnd, Helper::csvDescLinebreak);
    return CsvCells::plain(cell);
}
