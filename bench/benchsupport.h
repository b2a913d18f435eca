#pragma once

#include "database/objectdatabase.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace benchsupport {

// Fills the caches of every line as the pipeline does before its first
// generator: sub-indices, their names and the string pool.
void cacheAsThePipelineDoes(ObjectDataBase& db);

// The sub-indices of a bench object, by object number, sub-index and line.
using SubFactory = std::function<SUBINDEX_DATA_T(int object, int subindex, quint8 line)>;

// Sub-indices 0 to subs-1 of `objects` objects from 0x2000 up on the line,
// as one bulk write takes them.
QList<ObjectDataBase::SubEntry> objectEntries(quint8 line, int objects, int subs, const SubFactory& sub);

// CANopen lines 0 to lines-1, each with `objects` RECORDs from 0x2000 up,
// named "object <n>" and described by `description` when given; their
// sub-indices go in in one bulk write, as an import writes them.
void addRecordLines(ObjectDataBase& db, int lines, int objects, int subs, const SubFactory& sub,
                    const std::function<QString(int object)>& description = {});

// Gives the running program the tool's identity, so that settings and
// folders resolve as they do for trw itself.
void setToolIdentity();

// User and system time of the whole process, worker threads included.
qint64 processCpuMs();
// User and system time of the calling thread alone.
qint64 threadCpuMs();

// Processor time of the worker threads since construction: that of the
// process less that of the calling thread, which only waits for them, so
// that a busy machine doesn't count.
struct WorkerClock
{
    qint64 process = processCpuMs();
    qint64 caller = threadCpuMs();

    qint64 elapsed() const { return (processCpuMs() - process) - (threadCpuMs() - caller); }
};

qint64 median(QList<qint64> values);

// The most memory the process has held resident so far, -1 where unknown.
qint64 peakMemoryKb();

QString verdict(bool withinLimit);

// With "-save-project <path>" a benchmark writes the project it measures to
// that file instead of timing it, so that the whole tool can be run on the
// same project (scripts/golden.sh compares two builds on it). Gives the
// program's exit code when the argument was given, -1 otherwise.
int saveProjectWhenAsked(const QStringList& arguments, ObjectDataBase& db);

} // namespace benchsupport
