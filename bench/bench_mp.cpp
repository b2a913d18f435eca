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
    const bool withinLimits = benchsupport::timeBothForms(
        out,
        [](bool core) {
            return std::unique_ptr<MultiProGenerator>(core ? new MultiProGeneratorV4 : new MultiProGenerator);
        },
        db, dir.path(), QStringLiteral("gen_mp.c"),
        QStringLiteral("2 CANopen lines x %1 objects x %2 subindices and 2 J1939 lines x %3 PGNs x %4 SPNs")
            .arg(objectsPerLine)
            .arg(subsPerObject)
            .arg(pgnsPerLine)
            .arg(spnsPerPgn),
        limitMs, memoryLimitKb, rounds);
    return withinLimits ? 0 : 1;
}
