#include "generators/documents/icsvgenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"
#include "generators/documents/csvcells.h"

#include <QTextStream>

using namespace Qt::Literals::StringLiterals;

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
    writeObjects(out, " \n"_L1, [this, &out](quint16 index, const INDEX_DATA_T& object) {
        if (object.objecttype != CANopen::Var)
            writeObjectHeadRow(out, index, object);
        writeSubIndexRows(out, index, object);
    });
}

void ICSVGenerator::writeHead(QTextStream& out)
{
    out << "#\n"_L1;
    out << "# This is an importable ICSV file for the "_L1 << m_deviceName << " project.\n"_L1;
    out << "#\n"_L1;
    if (m_withDescription)
        out << "index,sub,objectcode,datatype,edsname,varname,access,mapable,hasdefault,defaultineds,value,"_L1
               "description,size,implementation,haslimit,lowlimit,uplimit,nvstorage\n";
    else
        out << "index,sub,objectcode,datatype,edsname,varname,access,mapable,hasdefault,defaultineds,value,"_L1
               "size,implementation,haslimit,lowlimit,uplimit,nvstorage\n";
}

void ICSVGenerator::writeObjectHeadRow(QTextStream& out, quint16 index, const INDEX_DATA_T& object)
{
    out << "0x"_L1 << hex(index, 4) << ","_L1;
    if (object.objecttype == CANopen::Array)
        out << ",ARRAY,"_L1;
    else if (object.objecttype == CANopen::Record)
        out << ",RECORD,"_L1;
    else
        out << ",,"_L1;
    out << COHelper::index2DataTypeString(object.datatype) << ","_L1;
    out << CsvCells::plain(object.name) << ","_L1;
    out << ",,,,,,"_L1;
    if (m_withDescription)
        out << descriptionCell(object.description) << ","_L1;
    out << ",,"_L1;
    out << ",,,,"_L1;
    out << "\n"_L1;
}

void ICSVGenerator::writeSubIndexRows(QTextStream& out, quint16 index, const INDEX_DATA_T& object)
{
    const QString indexCell = "0x"_L1 + hex(index, 4) + ","_L1;
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        SUBINDEX_DATA_T sub;
        m_database->getSubIndex(m_line, index, subindex, sub);
        const bool arrayHead = subindex == 0 && object.objecttype == CANopen::Array;

        out << indexCell;
        out << "0x"_L1 << hex(subindex, 2) << ","_L1;
        out << (subindex == 0 && object.objecttype == CANopen::Var ? "VARIABLE,"_L1 : ","_L1);
        out << COHelper::index2DataTypeString(arrayHead ? object.datatype : sub.datatype) << ","_L1;
        out << CsvCells::plain(sub.name) << ","_L1;
        out << (sub.implementation == CANopen::ApplicationVariable ? CsvCells::plain(sub.varname) : QString())
            << ","_L1;
        out << CsvCells::plain(sub.accesstype) << ","_L1;
        out << sub.pdomapping.getCSVStringValue() << ","_L1;
        out << (sub.defaultineds ? "1" : "0") << ","_L1;
        out << int(sub.writedefaulttoeds) << ","_L1;
        out << CsvCells::typedValue(sub, false);
        if (m_withDescription)
            out << descriptionCell(sub.description) << ","_L1;
        out << sub.size << ","_L1;
        out << CsvCells::implementation(sub.implementation);
        out << CsvCells::yesNo(sub.limitineds) << ","_L1;
        out << CsvCells::plain(sub.lowlimit) << ","_L1;
        out << CsvCells::plain(sub.uplimit) << ","_L1;
        out << CsvCells::yesNo(sub.nvstorage);
        out << "\n"_L1;
    }
}

QString ICSVGenerator::descriptionCell(const QString& text)
{
    QString cell = text;
    cell.replace(QLatin1Char('\r'), Helper::csvDescLinebreak)
        .replace(QLatin1Char('\n'), Helper::csvDescLinebreak);
    return CsvCells::plain(cell);
}
