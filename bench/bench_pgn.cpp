// Times gen_pgn.c on a large J1939 device: 4 lines, each with 500 PGNs of 8
// SPNs, half of them sent and half received, and the SPNs alternately kept
// in managed variables and in the application's own. The generator runs as
// the pipeline runs it, on the caches it fills beforehand.

#include "benchprojects.h"
#include "benchsupport.h"
#include "database/objectdatabase.h"
#include "generators/multiprotocol/pgngeneratorv4.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <memory>

namespace {

constexpr int lineCount = 4;
constexpr int pgnsPerLine = 500;
constexpr int spnsPerPgn = 8;
constexpr qint64 limitMs = 500;
constexpr qint64 limitMemoryKb = 200 * 1024;
constexpr int rounds = 5;

void fillProject(ObjectDataBase& db)
{
    db.setGeneralSetting(QStringLiteral("init_static_variables"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
    benchprojects::addJ1939Lines(db, {0, 1, 2, 3}, pgnsPerLine, spnsPerPgn);
}

} // namespace

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

    const benchsupport::GeneratorTiming timing = benchsupport::timeGenerator(
        [] { return std::make_unique<PGNGeneratorV4>(); }, db, dir.path(), rounds);
    const qint64 cpu = timing.workerMs;
    const qint64 memory = benchsupport::peakMemoryKb();
    out << "gen_pgn.c of " << lineCount << " lines x " << pgnsPerLine << " PGNs x " << spnsPerPgn
        << " SPNs: " << timing.wallMs << " ms, cpu " << cpu << " ms (median of " << rounds << "), limit "
        << limitMs << " ms " << benchsupport::verdict(cpu < limitMs) << "\n";
    out << "peak memory " << memory / 1024 << " MB, limit " << limitMemoryKb / 1024 << " MB "
        << (memory < limitMemoryKb ? "ok" : "TOO LARGE") << "\n";
    return cpu < limitMs && memory < limitMemoryKb ? 0 : 1;
}
