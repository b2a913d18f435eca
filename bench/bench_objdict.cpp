// Times gen_objdict.c for a device of 4 lines x 1,000 objects x 10 subindices,
// in the classic and the V4 form, with the peak memory of the process.

#include "benchsupport.h"
#include "canopenlib/canopentypes.h"
#include "database/objectdatabase.h"
#include "generators/canopen/objdictgenerator.h"
#include "generators/canopen/objdictgeneratorv4.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>

#include <memory>

namespace {

constexpr int lines = 4;
constexpr int objectsPerLine = 1000;
constexpr int subsPerObject = 10;
constexpr qint64 limitMs = 1000;
constexpr qint64 memoryLimitKb = 200 * 1024;
constexpr int rounds = 5;

// Records of managed, constant and application values of several widths, so
// that every table and the slot maps are filled.
SUBINDEX_DATA_T subFor(int object, int subindex, quint8 line)
{
    static const int types[] = {CAN::Unsigned8, CAN::Unsigned16, CAN::Unsigned32,
                                CAN::Integer8,  CAN::Integer16,  CAN::Integer32,
                                CAN::Real32,    CAN::Unsigned24, CAN::Unsigned64};
    SUBINDEX_DATA_T sub;
    sub.name = QStringLiteral("sub %1").arg(subindex);
    sub.accesstype = QStringLiteral("rw");
    if (subindex == 0) {
        sub.datatype = CAN::Unsigned8;
        sub.defaultvalue = QString::number(subsPerObject - 1);
        sub.accesstype = QStringLiteral("ro");
        return sub;
    }
    sub.datatype = types[(object + subindex) % int(std::size(types))];
    sub.defaultvalue = QString::number((object * 7 + subindex) % 200);
    sub.implementation = (object % 5 == 4)   ? CANopen::ApplicationVariable
                         : (object % 5 == 3) ? CANopen::ManagedConst
                                             : CANopen::ManagedVariable;
    if (sub.implementation == CANopen::ManagedConst)
        sub.accesstype = QStringLiteral("const");
    if (sub.implementation == CANopen::ApplicationVariable)
        sub.varname = QStringLiteral("app_%1_%2_l%3").arg(object).arg(subindex).arg(line);
    return sub;
}

void fillProject(ObjectDataBase& db)
{
    db.createNewDataBase();
    benchsupport::addRecordLines(db, lines, objectsPerLine, subsPerObject, subFor);
    db.setGeneralSetting(QStringLiteral("init_static_variables"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("compact_array_description"), QStringLiteral("1"));
}

struct Timing
{
    qint64 wallMs;
    // The generator's own thread: the process's time less that of the main
    // thread, which spins in waitUntilDone.
    qint64 workerMs;
};

Timing generate(ObjectDataBase& db, const QString& dir, bool core)
{
    std::unique_ptr<ObjDictGenerator> generator(core ? new ObjDictGeneratorV4(true, false)
                                                     : new ObjDictGenerator(true, false));
    generator->setOutputDir(dir);
    generator->setDatabase(&db);
    generator->setDeviceName(QStringLiteral("bench"));
    generator->setLine(0);
    QElapsedTimer timer;
    timer.start();
    const benchsupport::WorkerClock clock;
    generator->start();
    generator->waitUntilDone();
    const qint64 wall = timer.elapsed();
    return {wall, clock.elapsed()};
}

} // namespace

using benchsupport::median;

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
        QList<qint64> times;
        QList<qint64> workerTimes;
        for (int round = 0; round < rounds; ++round) {
            const Timing timing = generate(db, dir.path(), core);
            times << timing.wallMs;
            workerTimes << timing.workerMs;
        }
        const qint64 size = QFileInfo(dir.filePath(QStringLiteral("gen_objdict.c"))).size();
        out << "gen_objdict.c" << (core ? " (V4)" : " (classic)") << " for " << lines << " lines x "
            << objectsPerLine << " objects x " << subsPerObject << " subindices: " << median(times) << " ms ("
            << median(workerTimes) << " ms processor time of the generator thread, median of " << rounds
            << ", " << size / 1024 << " KB), limit " << limitMs << " ms\n";
        withinLimits = withinLimits && median(times) < limitMs && size > 0;
    }
    const qint64 peak = benchsupport::peakMemoryKb();
    out << "peak memory of the process: " << peak / 1024 << " MB, limit " << memoryLimitKb / 1024 << " MB\n";
    return withinLimits && peak >= 0 && peak < memoryLimitKb ? 0 : 1;
}
