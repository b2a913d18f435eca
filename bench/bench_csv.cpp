// Times the CSV import: a synthetic ICSV table of 2,000 records with ten
// subindices each, the size of a large device, imported into a fresh project.
// Each subindex is one write of its own, so the limit is on processor time,
// which a machine busy with builds doesn't inflate.

#include "benchsupport.h"
#include "database/objectdatabase.h"
#include "importers/csvimporter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

constexpr qint64 limitMs = 3000;
constexpr int objects = 2000;
constexpr int subsPerObject = 10;
constexpr int rounds = 3;

QString writeTable(const QString& dir)
{
    const QString path = dir + QStringLiteral("/bench.icsv");
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Text);
    QTextStream out(&file);
    out << "#\n# This is an importable ICSV file for the bench project.\n#\n"
           "index,sub,objectcode,datatype,edsname,varname,access,mapable,hasdefault,defaultineds,value,"
           "description,size,implementation,haslimit,lowlimit,uplimit,nvstorage\n";
    for (int i = 0; i < objects; ++i) {
        const QString index = QStringLiteral("0x%1").arg(0x2000 + i, 4, 16, QLatin1Char('0'));
        out << index << ",,RECORD,UNSIGNED8,Record " << i << ",,,,,,,About record " << i << ",,,,,,\n";
        out << index << ",0x00,,UNSIGNED8,Highest sub-index,,const,no,1,1," << subsPerObject - 1
            << ",,0,ManagedConst,no,0,255,no\n";
        for (int sub = 1; sub < subsPerObject; ++sub)
            out << index << ",0x" << QString::number(sub, 16).rightJustified(2, QLatin1Char('0'))
                << ",,UNSIGNED32,Entry " << sub << ",,rw,tpdo,1,1," << sub << ",Entry<br>" << sub
                << ",0,ManagedVariable,no,0,4294967295,no\n";
    }
    return path;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);
    QTemporaryDir dir;
    const QString table = writeTable(dir.path());

    QList<qint64> times;
    QList<qint64> cpuTimes;
    int imported = 0;
    for (int round = 0; round < rounds; ++round) {
        QSharedPointer<ObjectDataBase> db(new ObjectDataBase);
        db->createNewDataBase();
        CsvImporter importer;
        importer.setIndexRange(4096, 49151);
        importer.setDatabase(db);
        importer.setFile(table);
        QElapsedTimer timer;
        timer.start();
        const qint64 cpu = benchsupport::processCpuMs();
        importer.startImport();
        importer.waitFinished();
        times << timer.elapsed();
        cpuTimes << benchsupport::processCpuMs() - cpu;
        imported = int(db->getIndexList(0, 0, 0xFFFF).size());
    }
    const qint64 cpuMs = benchsupport::median(cpuTimes);
    out << "CSV import of " << imported << " objects x " << subsPerObject
        << " subindices: " << benchsupport::median(times) << " ms (" << cpuMs
        << " ms processor time, median of " << rounds << "), limit " << limitMs << " ms processor time "
        << benchsupport::verdict(cpuMs < limitMs) << "\n";
    return cpuMs < limitMs && imported == objects ? 0 : 1;
}
