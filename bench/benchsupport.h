#pragma once

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTextStream>

class ObjectDataBase;

namespace benchsupport {

// Fills the caches of every line as the pipeline does before its first
// generator: sub-indices, their names and the string pool.
void cacheAsThePipelineDoes(ObjectDataBase& db);

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

struct GeneratorTiming
{
    qint64 wallMs;
    // The generator's own thread: the process's time less that of the main
    // thread, which spins in waitUntilDone.
    qint64 workerMs;
};

// The medians of `rounds` runs of a generator that `make` creates, run as the
// pipeline runs it on the project, into `dir`.
template <typename Make>
GeneratorTiming timeGenerator(const Make& make, ObjectDataBase& db, const QString& dir, int rounds)
{
    QList<qint64> wallTimes;
    QList<qint64> workerTimes;
    for (int round = 0; round < rounds; ++round) {
        auto generator = make();
        generator->setOutputDir(dir);
        generator->setDatabase(&db);
        generator->setDeviceName(QStringLiteral("bench"));
        generator->setLine(0);
        QElapsedTimer timer;
        timer.start();
        const WorkerClock clock;
        generator->start();
        generator->waitUntilDone();
        wallTimes << timer.elapsed();
        workerTimes << clock.elapsed();
    }
    return {median(wallTimes), median(workerTimes)};
}

// The most memory the process has held resident so far, -1 where unknown.
qint64 peakMemoryKb();

// Times the classic and the V4 form of a generator that `make(core)`
// creates and prints a line for each, of `file` on the device `device`, and
// the peak memory of the process. True when each form writes its file within
// `limitMs` of processor time of its own thread and the process stays below
// `memoryLimitKb`: the machine may be busy with other work.
template <typename Make>
bool timeBothForms(QTextStream& out, const Make& make, ObjectDataBase& db, const QString& dir,
                   const QString& file, const QString& device, qint64 limitMs, qint64 memoryLimitKb,
                   int rounds)
{
    bool withinLimits = true;
    for (bool core : {false, true}) {
        const GeneratorTiming timing = timeGenerator([&] { return make(core); }, db, dir, rounds);
        const qint64 size = QFileInfo(QDir(dir).filePath(file)).size();
        out << file << (core ? " (V4)" : " (classic)") << " for " << device << ": " << timing.wallMs
            << " ms (" << timing.workerMs << " ms processor time of the generator thread, median of "
            << rounds << ", " << size / 1024 << " KB), limit " << limitMs << " ms\n";
        withinLimits = withinLimits && timing.workerMs < limitMs && size > 0;
    }
    const qint64 peak = peakMemoryKb();
    out << "peak memory of the process: " << peak / 1024 << " MB, limit " << memoryLimitKb / 1024 << " MB\n";
    return withinLimits && peak >= 0 && peak < memoryLimitKb;
}

QString verdict(bool withinLimit);

// With "-save-project <path>" a benchmark writes the project it measures to
// that file instead of timing it, so that the whole tool can be run on the
// same project (scripts/golden.sh compares two builds on it). Gives the
// program's exit code when the argument was given, -1 otherwise.
int saveProjectWhenAsked(const QStringList& arguments, ObjectDataBase& db);

// The program as an MCP server on standard input and output, as a client
// sees it: one tool call is one line out and one line back.
class McpServer
{
public:
    bool start(const QString& binary);
    ~McpServer();
    QByteArray call(const QByteArray& tool, const QByteArray& arguments);
    // User and system time of the server so far; the machine may be shared,
    // and processor time tells the cost of a call itself.
    qint64 processorMs();
    // The most memory the server has held resident so far, -1 where unknown.
    qint64 peakMemoryKb();

private:
    QProcess m_process;
    int m_id = 0;
};

} // namespace benchsupport
