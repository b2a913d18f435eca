// Times the model check of a large project: 4 CANopen lines with 1,000
// objects of 10 sub-indices each, read through the whole-line cache.

#include "benchsupport.h"
#include "check/modelchecker.h"
#include "common/cleanproject.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextStream>

namespace {

constexpr int lineCount = 4;
constexpr int objectsPerLine = 1000;
constexpr int subsPerObject = 10;
constexpr qint64 limitMs = 500;

using cleanproject::subRecord;

void addVariable(ObjectDataBase& db, quint8 line, quint16 index, int dataType, const QString& value)
{
    INDEX_DATA_T object;
    object.name = QStringLiteral("mandatory");
    db.addIndex(line, index, object);
    db.addSubIndex(line, index, 0, subRecord(dataType, QStringLiteral("ro"), value));
}

void addIdentity(ObjectDataBase& db, quint8 line)
{
    INDEX_DATA_T object;
    object.name = QStringLiteral("identity");
    object.objecttype = 9;
    db.addIndex(line, 0x1018, object);
    SUBINDEX_DATA_T count = subRecord(5, QStringLiteral("const"), QStringLiteral("1"));
    count.implementation = 1;
    db.addSubIndex(line, 0x1018, 0, count);
    db.addSubIndex(line, 0x1018, 1, subRecord(7, QStringLiteral("ro"), QStringLiteral("0x1234")));
}

void fillLine(ObjectDataBase& db, quint8 line)
{
    if (line != 0)
        db.addNode(line, NODE_DATA_T());
    db.setLineType(line, Line::CANopen);
    addVariable(db, line, 0x1000, 7, QStringLiteral("0"));
    addVariable(db, line, 0x1001, 5, QStringLiteral("0"));
    addVariable(db, line, 0x1017, 6, QStringLiteral("1000"));
    addIdentity(db, line);

    QList<ObjectDataBase::SubEntry> entries;
    for (int i = 0; i < objectsPerLine; ++i) {
        const quint16 index = quint16(0x2000 + i);
        INDEX_DATA_T object;
        object.name = QStringLiteral("array %1").arg(i);
        object.objecttype = 8;
        db.addIndex(line, index, object);
        SUBINDEX_DATA_T count = subRecord(5, QStringLiteral("const"), QString::number(subsPerObject - 1));
        count.implementation = 1;
        entries.append({line, index, 0, count});
        for (int sub = 1; sub < subsPerObject; ++sub) {
            SUBINDEX_DATA_T value = subRecord(7, QStringLiteral("rw"), QStringLiteral("0x%1").arg(sub));
            value.implementation = 2;
            value.varname = QStringLiteral("v_%1_%2").arg(i).arg(sub);
            entries.append({line, index, quint8(sub), value});
        }
    }
    db.addSubIndices(entries);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);

    QSharedPointer<ObjectDataBase> db(new ObjectDataBase());
    if (!db->createNewDataBase()) {
        out << "could not create the project\n";
        return 2;
    }
    db->setGeneralSetting(QStringLiteral("co_node_id"), QStringLiteral("1,2,3,4"));
    db->setGeneralSetting(QStringLiteral("receivebuffersize"), QStringLiteral("10,10,10,10"));
    db->setGeneralSetting(QStringLiteral("transmitbuffersize"), QStringLiteral("5,5,5,5"));
    db->setGeneralSetting(QStringLiteral("co_timer_interval"), QStringLiteral("1000"));
    for (quint8 line = 0; line < lineCount; ++line)
        fillLine(*db, line);
    if (const int saved = benchsupport::saveProjectWhenAsked(app.arguments(), *db); saved >= 0)
        return saved;
    // The caches the pipeline fills before its check.
    for (quint8 line = 0; line < lineCount; ++line) {
        db->cacheAllSubs(line, 0);
        db->cacheSubNames(line, 0);
    }
    db->loadStringPool();

    // The machine may be shared: processor time tells the cost of the check itself.
    QElapsedTimer timer;
    timer.start();
    const qint64 cpuStart = benchsupport::processCpuMs();
    ModelChecker checker;
    int messages = 0;
    QObject::connect(&checker, &ModelChecker::newError, [&messages](const QString&) { ++messages; });
    bool corrected = false;
    int errors = checker.checkProject(db, QString());
    for (quint8 line = 0; line < lineCount; ++line)
        errors += checker.checkCANopenLine(line, db, corrected);
    const qint64 elapsed = timer.elapsed();
    const qint64 cpuMs = benchsupport::processCpuMs() - cpuStart;

    out << "check of " << lineCount << " lines x " << objectsPerLine << " objects x " << subsPerObject
        << " subindices: " << elapsed << " ms elapsed, " << cpuMs << " ms processor time (" << errors
        << " errors, " << messages << " messages), limit " << limitMs << " ms\n";
    return cpuMs < limitMs ? 0 : 1;
}
