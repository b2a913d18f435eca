// Times the object dictionary store on a large project: 4 lines with 1,000
// objects of 10 sub-indices each, written in bulk, cached per line and read
// back once through the cache.

#include "benchprojects.h"
#include "benchsupport.h"
#include "canopenlib/canopentypes.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextStream>

namespace {

constexpr int lineCount = 4;
constexpr int objectsPerLine = 1000;
constexpr int subsPerObject = 10;
constexpr quint16 firstIndex = 0x2000;

constexpr qint64 bulkWriteLimitMs = 1500;
constexpr qint64 cacheFillLimitMs = 300;
constexpr qint64 readLimitMs = 100;
constexpr qint64 peakLimitKb = 200 * 1024;

SUBINDEX_DATA_T subFor(int object, int subindex, quint8 line)
{
    SUBINDEX_DATA_T sub;
    sub.name = subindex == 0 ? QStringLiteral("Highest sub-index supported")
                             : QStringLiteral("Channel %1").arg(subindex);
    sub.datatype = subindex == 0 ? CAN::Unsigned8 : CAN::Unsigned32;
    sub.accesstype = subindex == 0 ? QStringLiteral("const") : QStringLiteral("rw");
    sub.defaultvalue =
        subindex == 0 ? QString::number(subsPerObject - 1) : QString::number(object * subindex);
    sub.varname = QStringLiteral("var_%1_%2_%3").arg(line).arg(object).arg(subindex);
    return sub;
}

} // namespace

// Processor time tells the store's own cost from waiting on a busy machine.
using benchsupport::verdict;
constexpr auto cpuMs = benchsupport::processCpuMs;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);

    ObjectDataBase db;
    if (!db.createNewDataBase()) {
        out << "cannot create a project\n";
        return 1;
    }
    QList<ObjectDataBase::SubEntry> entries;
    for (quint8 line = 0; line < lineCount; ++line) {
        if (line != 0)
            db.addNode(line, NODE_DATA_T());
        for (int object = 0; object < objectsPerLine; ++object) {
            INDEX_DATA_T index;
            index.name = QStringLiteral("Object %1").arg(object);
            index.objecttype = CANopen::Array;
            db.addIndex(line, quint16(firstIndex + object), index);
        }
        entries += benchprojects::objectEntries(line, objectsPerLine, subsPerObject, subFor);
    }

    QElapsedTimer timer;
    timer.start();
    qint64 cpuStart = cpuMs();
    const bool written = db.addSubIndices(entries);
    const qint64 bulkWriteMs = timer.elapsed();
    const qint64 bulkWriteCpuMs = cpuMs() - cpuStart;

    timer.restart();
    cpuStart = cpuMs();
    for (quint8 line = 0; line < lineCount; ++line)
        db.cacheAllSubs(line, 0);
    const qint64 cacheFillMs = timer.elapsed();
    const qint64 cacheFillCpuMs = cpuMs() - cpuStart;

    timer.restart();
    cpuStart = cpuMs();
    int found = 0;
    SUBINDEX_DATA_T record;
    for (const ObjectDataBase::SubEntry& entry : std::as_const(entries)) {
        if (db.getSubIndex(entry.line, entry.index, entry.subindex, record))
            ++found;
    }
    const qint64 readMs = timer.elapsed();
    const qint64 readCpuMs = cpuMs() - cpuStart;
    const qint64 peakKb = benchsupport::peakMemoryKb();

    out << "bulk write of " << entries.size() << " sub-indices: " << bulkWriteMs << " ms (limit "
        << bulkWriteLimitMs << "), cpu " << bulkWriteCpuMs << " ms "
        << verdict(bulkWriteMs <= bulkWriteLimitMs) << "\n";
    out << "cache fill of " << lineCount << " lines: " << cacheFillMs << " ms (limit " << cacheFillLimitMs
        << "), cpu " << cacheFillCpuMs << " ms " << verdict(cacheFillMs <= cacheFillLimitMs) << "\n";
    out << "reads of " << found << " sub-indices: " << readMs << " ms (limit " << readLimitMs << "), cpu "
        << readCpuMs << " ms " << verdict(readMs <= readLimitMs) << "\n";
    out << "peak memory: " << peakKb / 1024 << " MB (limit " << peakLimitKb / 1024 << ") "
        << (peakKb <= peakLimitKb ? "ok" : "TOO LARGE") << "\n";

    const bool allWithin = written && found == entries.size() && bulkWriteMs <= bulkWriteLimitMs &&
                           cacheFillMs <= cacheFillLimitMs && readMs <= readLimitMs && peakKb <= peakLimitKb;
    return allWithin ? 0 : 1;
}
