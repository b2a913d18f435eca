// Times the EDS import and the EDS generator: a real device description from
// the corpus both ways, and a synthetic description of 2,000 objects with
// 20,000 subindices imported, with the peak memory of the process.

#include "benchsupport.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"
#include "generators/documents/edsgenerator.h"
#include "importers/edsimporter.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

constexpr qint64 deviceLimitMs = 200;
constexpr qint64 syntheticLimitMs = 1500;
constexpr qint64 memoryLimitKb = 200 * 1024;
constexpr int syntheticObjects = 2000;
constexpr int subsPerObject = 10;
constexpr int rounds = 5;

QSharedPointer<ObjectDataBase> newProject()
{
    QSharedPointer<ObjectDataBase> db(new ObjectDataBase);
    db->createNewDataBase();
    db->setLineType(0, Line::CANopen);
    return db;
}

void importInto(const QSharedPointer<ObjectDataBase>& db, const QString& path)
{
    EDSImporter importer;
    importer.setIndexRange(4096, 49151);
    importer.setLine(0);
    importer.setDatabase(db);
    importer.setFile(path);
    importer.startImport();
    importer.waitFinished();
}

void generateFrom(ObjectDataBase& db, const QString& dir)
{
    EDSGenerator generator(QString(), false, false);
    generator.setOutputDir(dir);
    generator.setDatabase(&db);
    generator.setDeviceName(QStringLiteral("bench"));
    generator.setLine(0);
    generator.start();
    generator.waitUntilDone();
}

// The caches the pipeline fills before any generator runs.
// The device of the corpus to measure: demoDevice.eds, else the largest file.
QString deviceFile()
{
    const QDir corpus(QStringLiteral(TRW_CORPUS_DIR "/eds"));
    if (corpus.exists(QStringLiteral("demoDevice.eds")))
        return corpus.filePath(QStringLiteral("demoDevice.eds"));
    const QFileInfoList files = corpus.entryInfoList(QDir::Files, QDir::Size);
    return files.isEmpty() ? QString() : files.first().absoluteFilePath();
}

QString writeSyntheticEds(const QString& dir)
{
    const QString path = dir + QStringLiteral("/synthetic.eds");
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Text);
    QTextStream out(&file);
    out << "[FileInfo]\nFileName=synthetic.eds\nEDSVersion=4.0\n\n[DeviceInfo]\nVendorName=Bench\n"
           "NrOfRXPDO=0\nNrOfTXPDO=0\n\n";
    for (int i = 0; i < syntheticObjects; ++i) {
        const QString index = QStringLiteral("%1").arg(0x2000 + i, 4, 16, QLatin1Char('0'));
        out << "[" << index << "]\nParameterName=Record " << i
            << "\nObjectType=0x9\nSubNumber=" << subsPerObject << "\n\n";
        for (int sub = 0; sub < subsPerObject; ++sub) {
            out << "[" << index << "sub" << QString::number(sub, 16) << "]\nParameterName=Entry " << sub
                << "\nObjectType=0x7\nDataType=0x0007\nAccessType=rw\nDefaultValue=0x" << sub
                << "\nPDOMapping=1\n\n";
        }
    }
    return path;
}

} // namespace

// Processor time of the whole process, worker threads included: on a
// machine shared with builds the wall-clock figures carry their waiting.
constexpr auto processorMs = benchsupport::processCpuMs;
using benchsupport::median;
using benchsupport::peakMemoryKb;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);
    QTemporaryDir dir;
    bool withinLimits = true;

    const QString device = deviceFile();
    QList<qint64> importTimes;
    QList<qint64> generateTimes;
    QList<qint64> importCpu;
    QList<qint64> generateCpu;
    for (int round = 0; round < rounds; ++round) {
        QSharedPointer<ObjectDataBase> db = newProject();
        QElapsedTimer timer;
        timer.start();
        qint64 cpu = processorMs();
        importInto(db, device);
        importTimes << timer.elapsed();
        importCpu << processorMs() - cpu;
        benchsupport::cacheAsThePipelineDoes(*db);
        timer.restart();
        cpu = processorMs();
        generateFrom(*db, dir.path());
        generateTimes << timer.elapsed();
        generateCpu << processorMs() - cpu;
    }
    out << "import of " << QFileInfo(device).fileName() << ": " << median(importTimes) << " ms ("
        << median(importCpu) << " ms processor time, median of " << rounds << "), limit " << deviceLimitMs
        << " ms\n";
    out << "EDS generation of " << QFileInfo(device).fileName() << ": " << median(generateTimes) << " ms ("
        << median(generateCpu) << " ms processor time, median of " << rounds << "), limit " << deviceLimitMs
        << " ms\n";
    withinLimits =
        withinLimits && median(importTimes) < deviceLimitMs && median(generateTimes) < deviceLimitMs;

    const QString synthetic = writeSyntheticEds(dir.path());
    QSharedPointer<ObjectDataBase> db = newProject();
    QElapsedTimer timer;
    timer.start();
    const qint64 cpu = processorMs();
    importInto(db, synthetic);
    const qint64 syntheticMs = timer.elapsed();
    const qint64 syntheticCpu = processorMs() - cpu;
    const int objects = int(db->getIndexList(0, 0, 0xFFFF).size());
    const qint64 peak = peakMemoryKb();
    out << "import of " << objects << " objects x " << subsPerObject << " subindices: " << syntheticMs
        << " ms (" << syntheticCpu << " ms processor time), limit " << syntheticLimitMs << " ms\n";
    out << "peak memory of the process: " << peak / 1024 << " MB, limit " << memoryLimitKb / 1024 << " MB\n";
    withinLimits = withinLimits && objects == syntheticObjects && syntheticMs < syntheticLimitMs &&
                   peak >= 0 && peak < memoryLimitKb;
    return withinLimits ? 0 : 1;
}
