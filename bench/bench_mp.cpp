// Times gen_mp.c for a device that mixes protocols: 2 CANopen lines of 1,000
// objects x 10 subindices and 2 J1939 lines of 500 PGNs x 8 SPNs, built as
// the gen_objdict.c and gen_pgn.c benchmarks build their lines, in the
// classic and the V4 form, with the peak memory of the process.

#include "benchprojects.h"
#include "benchsupport.h"
#include "database/objectdatabase.h"
#include "generators/multiprotocol/multiprogenerator.h"
#include "generators/multiprotocol/multiprogeneratorv4.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>

#include <memory>

namespace {

constexpr int objectsPerLine = 1000;
constexpr int subsPerObject = 10;
constexpr int pgnsPerLine = 500;
constexpr int spnsPerPgn = 8;
constexpr qint64 limitMs = 1000;
constexpr qint64 memoryLimitKb = 200 * 1024;
constexpr int rounds = 5;

void fillProject(ObjectDataBase& db)
{
    db.createNewDataBase();
    benchprojects::addCanopenLines(db, {0, 1}, objectsPerLine, subsPerObject);
    benchprojects::addJ1939Lines(db, {2, 3}, pgnsPerLine, spnsPerPgn);
    db.setGeneralSetting(QStringLiteral("init_static_variables"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);
    QTemporaryDir dir;
    ObjectDataBase db;
    fillProject(db);
    if (const int saved = benchsupport::saveProjectWhenAsked(app.arguments(), db); saved >= 0)
        return saved;
    benchsupport::cacheAsThePipelineDoes(db);
    bool withinLimits = true;
    for (bool core : {false, true}) {
        const benchsupport::GeneratorTiming timing = benchsupport::timeGenerator(
            [core] {
                return std::unique_ptr<MultiProGenerator>(core ? new MultiProGeneratorV4
                                                               : new MultiProGenerator);
            },
            db, dir.path(), rounds);
        const qint64 size = QFileInfo(dir.filePath(QStringLiteral("gen_mp.c"))).size();
        out << "gen_mp.c" << (core ? " (V4)" : " (classic)") << " for 2 CANopen lines x " << objectsPerLine
            << " objects x " << subsPerObject << " subindices and 2 J1939 lines x " << pgnsPerLine
            << " PGNs x " << spnsPerPgn << " SPNs: " << timing.wallMs << " ms (" << timing.workerMs
            << " ms processor time of the generator thread, median of " << rounds << ", " << size / 1024
            << " KB), limit " << limitMs << " ms\n";
        // The generator's own processor time: the machine may be busy with other work.
        withinLimits = withinLimits && timing.workerMs < limitMs && size > 0;
    }
    const qint64 peak = benchsupport::peakMemoryKb();
    out << "peak memory of the process: " << peak / 1024 << " MB, limit " << memoryLimitKb / 1024 << " MB\n";
    return withinLimits && peak >= 0 && peak < memoryLimitKb ? 0 : 1;
}
