// Times the whole program as a build job runs it: one command-line run on a
// device of 4 CANopen lines x 1,000 objects x 10 subindices with CAN FD on,
// so that every output a CANopen device has is written (indices, text and
// HTML documents, gen_objdict.c, gen_define.h, CSV, ICSV, EDS and XDD). It
// prints the median wall time, processor time and peak memory of several
// runs, the same for the tool call "generate" of the MCP server, and how the
// wall time grows with ten times the objects.

#include "benchprojects.h"
#include "benchsupport.h"
#include "canopenlib/canopentypes.h"
#include "common/cleanproject.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ;

namespace {

constexpr int lineCount = 4;
constexpr int objectsPerLine = 1000;
constexpr int subsPerObject = 10;
constexpr int scale = 10;
constexpr int rounds = 5;
constexpr qint64 wallLimitMs = 500;
constexpr double processorPerWallLimit = 1.1;
constexpr qint64 memoryLimitKb = 100 * 1024;
constexpr double scalingLimit = 10.5;

// The entries of the bench's records: mixed types with descriptions and
// application variables, so that every document has text to write.
SUBINDEX_DATA_T subFor(int object, int subindex, quint8 line)
{
    static const int types[] = {5, 6, 7, 2, 3, 4, 8, 27};
    if (subindex == 0)
        return cleanproject::subRecord(5, QStringLiteral("ro"), QString::number(subsPerObject - 1));
    SUBINDEX_DATA_T sub =
        cleanproject::subRecord(types[(object + subindex) % int(std::size(types))], QStringLiteral("rw"),
                                QString::number((object * 7 + subindex) % 100));
    sub.description = subindex % 3 == 0 ? QStringLiteral("entry & value") : QString();
    if (object % 4 == 3) {
        sub.implementation = 2;
        sub.varname = QStringLiteral("app_%1_%2_l%3").arg(object).arg(subindex).arg(line);
    }
    return sub;
}

// A CAN FD device gives its device type as an array of one profile entry.
void addFdDeviceType(ObjectDataBase& db, quint8 line)
{
    db.deleteIndex(line, 0x1000, false);
    INDEX_DATA_T deviceType;
    deviceType.name = QStringLiteral("Device Type");
    deviceType.objecttype = CANopen::Array;
    db.addIndex(line, 0x1000, deviceType);
    db.addSubIndex(line, 0x1000, 0, cleanproject::subRecord(5, QStringLiteral("ro"), QStringLiteral("1")));
    db.addSubIndex(line, 0x1000, 1,
                   cleanproject::subRecord(7, QStringLiteral("ro"), QStringLiteral("0x00000191")));
}

bool saveProject(const QString& path, int objects)
{
    ObjectDataBase db;
    if (!db.createNewDataBase())
        return false;
    cleanproject::addProjectSettings(db);
    db.setGeneralSetting(QStringLiteral("canfd_supported"), QStringLiteral("1"));
    benchprojects::addRecordLines(db, {0, 1, 2, 3}, objects, subsPerObject, subFor, [](int object) {
        return QStringLiteral("Block %1 <of the bench>,\nwith two lines").arg(object);
    });
    for (quint8 line = 0; line < lineCount; ++line) {
        cleanproject::addLineSettings(db, line);
        cleanproject::addMandatoryObjects(db, line);
        addFdDeviceType(db, line);
    }
    return db.saveDatabase(path);
}

// The projects are built by a process of their own. A child started by posix_spawn shares this
// process's memory until its exec, and the kernel counts the peak of that memory as the child's: built
// here, the projects would add this process's peak to the figure of every run.
bool saveInChild(const QString& path, int objects)
{
    return QProcess::execute(QCoreApplication::applicationFilePath(),
                             {QStringLiteral("-save-project"), path, QString::number(objects)}) == 0;
}

struct Figures
{
    qint64 wallMs = 0;
    qint64 processorMs = 0;
    qint64 peakKb = 0;
    bool ok = false;
};

// A fresh copy of the project in a folder of its own, so that every run
// writes all its outputs anew.
QString freshCopy(const QString& project, const QString& folder)
{
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    const QString copy = folder + QStringLiteral("/bench.trwp");
    QFile::copy(project, copy);
    return copy;
}

// The kernel's account of the child: its processor time and peak memory,
// threads included, without the noise of reading /proc while it runs.
Figures runOnce(const QString& project, const QString& folder)
{
    const QByteArray binary = QByteArrayLiteral(TRW_BINARY);
    const QByteArray path = freshCopy(project, folder).toLocal8Bit();
    char* argv[] = {const_cast<char*>(binary.constData()), const_cast<char*>("-project"),
                    const_cast<char*>(path.constData()), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    Figures figures;
    QElapsedTimer timer;
    timer.start();
    pid_t child = 0;
    const int spawned = posix_spawn(&child, binary.constData(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return figures;
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    figures.wallMs = timer.elapsed();
    figures.processorMs = qint64(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
                          (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
    figures.peakKb = usage.ru_maxrss;
    figures.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return figures;
}

Figures medianOf(const QList<Figures>& runs)
{
    QList<qint64> wall, processor, peak;
    bool ok = true;
    for (const Figures& run : runs) {
        wall.append(run.wallMs);
        processor.append(run.processorMs);
        peak.append(run.peakKb);
        ok = ok && run.ok;
    }
    return {benchsupport::median(wall), benchsupport::median(processor), benchsupport::median(peak), ok};
}

Figures commandLine(const QString& project, const QString& folder)
{
    QList<Figures> runs;
    for (int round = 0; round < rounds; ++round)
        runs.append(runOnce(project, folder));
    return medianOf(runs);
}

// One server, the project opened once, "generate" called several times as an
// agent would after its edits.
Figures server(const QString& project, const QString& folder)
{
    benchsupport::McpServer server;
    const QString copy = freshCopy(project, folder);
    if (!server.start(QStringLiteral(TRW_BINARY)) ||
        !server.call("open_project", R"({"path":")" + copy.toUtf8() + "\"}").contains("Project opened"))
        return {};
    QList<Figures> runs;
    QElapsedTimer timer;
    for (int round = 0; round < rounds; ++round) {
        const qint64 processorBefore = server.processorMs();
        timer.start();
        const QByteArray reply = server.call("generate", "{}");
        runs.append({timer.elapsed(), server.processorMs() - processorBefore, server.peakMemoryKb(),
                     !reply.contains("\"isError\":true") && !reply.isEmpty()});
    }
    return medianOf(runs);
}

void print(QTextStream& out, const QString& what, const Figures& figures)
{
    const double perWall = figures.wallMs > 0 ? double(figures.processorMs) / double(figures.wallMs) : 0;
    out << what << ": median " << figures.wallMs << " ms wall ("
        << benchsupport::verdict(figures.wallMs <= wallLimitMs) << ", limit " << wallLimitMs << "), "
        << figures.processorMs << " ms processor, " << QString::number(perWall, 'f', 2) << " x wall ("
        << benchsupport::verdict(perWall <= processorPerWallLimit) << ", limit " << processorPerWallLimit
        << "), peak " << figures.peakKb / 1024 << " MB ("
        << benchsupport::verdict(figures.peakKb <= memoryLimitKb) << ", limit " << memoryLimitKb / 1024 << ")"
        << (figures.ok ? "" : ", RUN FAILED") << "\n";
}

bool within(const Figures& figures)
{
    return figures.ok && figures.wallMs <= wallLimitMs && figures.peakKb <= memoryLimitKb &&
           figures.processorMs <= qint64(processorPerWallLimit * double(figures.wallMs));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const QStringList arguments = app.arguments();
    if (const int at = arguments.indexOf(QStringLiteral("-save-project"));
        at >= 0 && at + 1 < arguments.size()) {
        const int objects = at + 2 < arguments.size() ? arguments.at(at + 2).toInt() : objectsPerLine;
        return saveProject(arguments.at(at + 1), objects) ? 0 : 2;
    }
    QTemporaryDir folder;
    // The runs read and write settings of their own, never the user's.
    qputenv("HOME", folder.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (folder.path() + QStringLiteral("/config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", (folder.path() + QStringLiteral("/data")).toLocal8Bit());
    const QString project = folder.filePath(QStringLiteral("device.trwp"));
    const QString large = folder.filePath(QStringLiteral("large.trwp"));
    if (!folder.isValid() || !saveInChild(project, objectsPerLine) ||
        !saveInChild(large, objectsPerLine * scale)) {
        out << "could not create the projects\n";
        return 2;
    }
    const QString work = folder.filePath(QStringLiteral("run"));
    const Figures run = commandLine(project, work);
    const Figures mcp = server(project, work);
    const Figures largeRun = commandLine(large, work);
    const QString size = QStringLiteral("%1 lines x %2 objects x %3 subindices").arg(lineCount);
    print(out, QStringLiteral("command-line run, ") + size.arg(objectsPerLine).arg(subsPerObject), run);
    print(out, QStringLiteral("MCP generate, ") + size.arg(objectsPerLine).arg(subsPerObject), mcp);
    print(out, QStringLiteral("command-line run, ") + size.arg(objectsPerLine * scale).arg(subsPerObject),
          largeRun);
    const double ratio = run.wallMs > 0 ? double(largeRun.wallMs) / double(run.wallMs) : 0;
    out << scale << " x the objects takes " << QString::number(ratio, 'f', 2) << " x the wall time ("
        << benchsupport::verdict(ratio <= scalingLimit) << ", limit " << scalingLimit << ")\n";
    return within(run) && within(mcp) && largeRun.ok && ratio <= scalingLimit ? 0 : 1;
}
