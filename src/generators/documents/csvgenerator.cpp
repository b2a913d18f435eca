#include "generators/documents/csvgenerator.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"
#include "generators/documents/csvcells.h"

#include <QTextStream>

using namespace Qt::Literals::StringLiterals;

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
    writeObjects(out, " \n"_L1, [this, &out](quint16 index, const INDEX_DATA_T& object) {
        writeObjectRows(out, index, object);
    });
}

void CSVGenerator::writeColumnLine(QTextStream& out)
{
    out << "Index,Sub,EDSname,Datatype,Access,Value,varname,LowLimit,UpLimit,hasDefault,hasLimit,refuseRead,"_L1
           "refuseWrite,defaultInEDS,implementation,Size,ObjectCode,mapable\n";
}

void CSVGenerator::writeObjectRows(QTextStream& out, quint16 index, const INDEX_DATA_T& object)
{
    const QString indexCell = "0x"_L1 + hex(index, 4) + ","_L1;
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        SUBINDEX_DATA_T sub;
        m_database->getSubIndex(m_line, index, subindex, sub);
        QString name = Helper::substituteVariables(object.name, index, subindex, m_line);
        if (object.objecttype != CANopen::Var)
            name += QLatin1Char(' ') + Helper::substituteVariables(sub.name, index, subindex, m_line);

        out << indexCell;
        out << "0x"_L1 << hex(subindex, 2) << ","_L1;
        out << CsvCells::quoted(name) << ","_L1;
        out << COHelper::index2DataTypeString(sub.datatype) << ","_L1;
        out << CsvCells::plain(sub.accesstype) << ","_L1;
        out << CsvCells::typedValue(sub, true);
        out << (sub.implementation == CANopen::ApplicationVariable ? CsvCells::plain(sub.varname)
                                                                   : QStringLiteral("NONE"))
            << ","_L1;
        out << CsvCells::plain(sub.lowlimit) << ","_L1;
        out << CsvCells::plain(sub.uplimit) << ","_L1;
        out << CsvCells::yesNo(sub.defaultineds) << ","_L1;
        out << CsvCells::yesNo(sub.limitineds) << ","_L1;
        out << CsvCells::yesNo(sub.refuseread) << ","_L1;
        out << CsvCells::yesNo(sub.refusewrite) << ","_L1;
        out << int(sub.writedefaulttoeds) << ","_L1;
        out << CsvCells::implementation(sub.implementation);
        out << sub.size << ","_L1;
        if (subindex == 0 && object.objecttype == CANopen::Array)
            out << "ARRAY,"_L1;
        else if (subindex == 0 && object.objecttype == CANopen::Record)
            out << "RECORD,"_L1;
        else
            out << ","_L1;
        out << sub.pdomapping.getCSVStringValue();
        out << "\n"_L1;
    }
}
