// Times gen_pgn.c on a large J1939 device: 4 lines, each with 500 PGNs of 8
// SPNs, half of them sent and half received, and the SPNs alternately kept
// in managed variables and in the application's own. The generator runs as
// the pipeline runs it, on the caches it fills beforehand.

#include "benchsupport.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"
#include "generators/multiprotocol/pgngeneratorv4.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

constexpr int lineCount = 4;
constexpr int pgnsPerLine = 500;
constexpr int spnsPerPgn = 8;
constexpr qint64 limitMs = 500;
constexpr qint64 limitMemoryKb = 200 * 1024;
constexpr int rounds = 5;

void fillProject(ObjectDataBase& db)
{
    const QList<QPair<const char*, const char*>> settings = {
        {"identitynumber", "4711"}, {"manufacturercode", "1234"}, {"ecuinstance", "0"},
        {"functioninstance", "0"},  {"function", "130"},          {"vehiclesystem", "0"},
        {"vehicleinstance", "0"},   {"industrygroup", "1"},       {"startaddress", "128,129,130,131"}};
    for (const auto& [key, value] : settings)
        db.setJ1939Setting(QLatin1String(key), QLatin1String(value));
    db.setGeneralSetting(QStringLiteral("init_static_variables"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
    db.database().transaction();
    for (quint8 line = 0; line < lineCount; ++line) {
        if (line != 0)
            db.addNode(line, NODE_DATA_T());
        db.setLineType(line, Line::J1939);
        for (int index = 0; index < pgnsPerLine; ++index) {
            ObjectDataBase::PGN pgn;
            pgn.number = quint32(0xF000 + index);
            pgn.direction = index % 2 == 0 ? ObjectDataBase::Transmit : ObjectDataBase::Receive;
            pgn.name = QStringLiteral("PGN %1").arg(pgn.number);
            pgn.priority = 6;
            pgn.cycletime_ms = 100;
            pgn.mappingcount = spnsPerPgn;
            db.addPGN(line, pgn.number, pgn);
            for (int signal = 0; signal < spnsPerPgn; ++signal) {
                ObjectDataBase::SPN spn;
                spn.pos = quint32(signal);
                spn.name = QStringLiteral("SPN %1").arg(signal);
                spn.datatype = 5;
                spn.bitsize = 8;
                spn.bitposition = quint16(8 * signal);
                spn.pgnnumber = pgn.number;
                spn.spnnumber = quint32(index * spnsPerPgn + signal + 1);
                spn.direction = pgn.direction;
                spn.implementation = signal % 2 == 0 ? 0 : 2;
                spn.varname = QStringLiteral("signal_%1_%2").arg(line).arg(spn.spnnumber);
                db.addSPN(line, pgn.number, pgn.direction, spn.spnnumber, spn);
            }
        }
    }
    db.database().commit();
}

} // namespace

using benchsupport::median;
using benchsupport::WorkerClock;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);
    QTemporaryDir dir;

    ObjectDataBase db;
    if (!db.createNewDataBase()) {
        out << "cannot create a project\n";
        return 1;
    }
    fillProject(db);
    benchsupport::cacheAsThePipelineDoes(db);

    QList<qint64> wallTimes;
    QList<qint64> cpuTimes;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        const WorkerClock clock;
        PGNGeneratorV4 generator;
        generator.setOutputDir(dir.path());
        generator.setDatabase(&db);
        generator.setDeviceName(QStringLiteral("bench"));
        generator.setLine(0);
        generator.start();
        generator.waitUntilDone();
        wallTimes << timer.elapsed();
        cpuTimes << clock.elapsed();
    }
    const qint64 cpu = median(cpuTimes);
    const qint64 memory = benchsupport::peakMemoryKb();
    out << "gen_pgn.c of " << lineCount << " lines x " << pgnsPerLine << " PGNs x " << spnsPerPgn
        << " SPNs: " << median(wallTimes) << " ms, cpu " << cpu << " ms (median of " << rounds << "), limit "
        << limitMs << " ms " << benchsupport::verdict(cpu < limitMs) << "\n";
    out << "peak memory " << memory / 1024 << " MB, limit " << limitMemoryKb / 1024 << " MB "
        << (memory < limitMemoryKb ? "ok" : "TOO LARGE") << "\n";
    return cpu < limitMs && memory < limitMemoryKb ? 0 : 1;
}
