// Times gen_objdict.c for a device of 4 lines x 1,000 objects x 10 subindices,
// in the classic and the V4 form, with the peak memory of the process.

#include "benchprojects.h"
#include "benchsupport.h"
#include "database/objectdatabase.h"
#include "generators/canopen/objdictgenerator.h"
#include "generators/canopen/objdictgeneratorv4.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <memory>

namespace {

constexpr int objectsPerLine = 1000;
constexpr int subsPerObject = 10;
constexpr qint64 limitMs = 1000;
constexpr qint64 memoryLimitKb = 200 * 1024;
constexpr int rounds = 5;

void fillProject(ObjectDataBase& db)
{
    db.createNewDataBase();
    benchprojects::addCanopenLines(db, {0, 1, 2, 3}, objectsPerLine, subsPerObject);
    db.setGeneralSetting(QStringLiteral("init_static_variables"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("compact_array_description"), QStringLiteral("1"));
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
            return std::unique_ptr<ObjDictGenerator>(core ? new ObjDictGeneratorV4(true, false)
                                                          : new ObjDictGenerator(true, false));
        },
        db, dir.path(), QStringLiteral("gen_objdict.c"),
        QStringLiteral("4 lines x %1 objects x %2 subindices").arg(objectsPerLine).arg(subsPerObject),
        limitMs, memoryLimitKb, rounds);
    return withinLimits ? 0 : 1;
}
