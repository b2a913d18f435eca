#include "generators/documents/csvgenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"
#include "generators/documents/csvcells.h"

#include <QTextStream>

CSVGenerator::CSVGenerator(QObject* parent) : DocumentGenerator(parent) {}

QString CSVGenerator::outputFileName() const
{
    return perLineName(QStringLiteral(".csv"), QStringLiteral(".csv"));
}

QString CSVGenerator::documentName() const
{
    return QStringLiteral("CSV documentation");
}

// The pipeline has always asked for the single-line name.
QString CSVGenerator::checkedFileName() const
{
    return m_deviceName + QStringLiteral(".csv");
}

void CSVGenerator::writeDocument(QTextStream& out)
{
    writeColumnLine(out);
    writeObjects(out, " \n", [this, &out](quint16 index, const INDEX_DATA_T& object) {
        writeObjectRows(out, index, object);
    });
}

void CSVGenerator::writeColumnLine(QTextStream& out)
{
    out << "Index,Sub,EDSname,Datatype,Access,Value,varname,LowLimit,UpLimit,hasDefault,hasLimit,refuseRead,"
           "refuseWrite,defaultInEDS,implementation,Size,ObjectCode,mapable\n";
}

void CSVGenerator::writeObjectRows(QTextStream& out, quint16 index, const INDEX_DATA_T& object)
{
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        SUBINDEX_DATA_T sub;
        m_database->getSubIndex(m_line, index, subindex, sub);
        QString name = Helper::substituteVariables(object.name, index, subindex, m_line);
        if (object.objecttype != CANopen::Var)
            name += QLatin1Char(' ') + Helper::substituteVariables(sub.name, index, subindex, m_line);

        out << "0x" << hex(index, 4) << ",";
        out << "0x" << hex(subindex, 2) << ",";
        out << CsvCells::quoted(name) << ",";
        out << COHelper::index2DataTypeString(sub.datatype) << ",";
        out << CsvCells::plain(sub.accesstype) << ",";
        out << CsvCells::typedValue(sub, true);
        out << (sub.implementation == CANopen::ApplicationVariable ? CsvCells::plain(sub.varname)
                                                                   : QStringLiteral("NONE"))
            << ",";
        out << CsvCells::plain(sub.lowlimit) << ",";
        out << CsvCells::plain(sub.uplimit) << ",";
        out << CsvCells::yesNo(sub.defaultineds) << ",";
        out << CsvCells::yesNo(sub.limitineds) << ",";
        out << CsvCells::yesNo(sub.refuseread) << ",";
        out << CsvCells::yesNo(sub.refusewrite) << ",";
        out << int(sub.writedefaulttoeds) << ",";
        out << CsvCells::implementation(sub.implementation);
        out << sub.size << ",";
        if (subindex == 0 && object.objecttype == CANopen::Array)
            out << "ARRAY,";
        else if (subindex == 0 && object.objecttype == CANopen::Record)
            out << "RECORD,";
        else
            out << ",";
        out << sub.pdomapping.getCSVStringValue();
        out << "\n";
    }
}
