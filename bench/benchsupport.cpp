#include "benchsupport.h"

#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>

#include <sys/resource.h>

namespace benchsupport {

void cacheAsThePipelineDoes(ObjectDataBase& db)
{
    const QList<quint8> lines = db.getNodeList();
    for (quint8 line : lines) {
        db.cacheAllSubs(line, 0);
        db.cacheSubNames(line, 0);
    }
    db.loadStringPool();
}

namespace {

qint64 cpuMs(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return qint64(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
}

} // namespace

void setToolIdentity()
{
    QCoreApplication::setApplicationName(QStringLiteral("CANopen Tarnwick"));
    QCoreApplication::setApplicationVersion(QStringLiteral("4.3.2"));
    QCoreApplication::setOrganizationName(QStringLiteral("halvex"));
}

qint64 processCpuMs()
{
    return cpuMs(RUSAGE_SELF);
}

qint64 threadCpuMs()
{
    return cpuMs(RUSAGE_THREAD);
}

qint64 median(QList<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

qint64 peakMemoryKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

QString verdict(bool withinLimit)
{
    return withinLimit ? QStringLiteral("ok") : QStringLiteral("TOO SLOW");
}

int saveProjectWhenAsked(const QStringList& arguments, ObjectDataBase& db)
{
    const int at = arguments.indexOf(QStringLiteral("-save-project"));
    if (at < 0 || at + 1 >= arguments.size())
        return -1;
    return db.saveDatabase(arguments.at(at + 1)) ? 0 : 2;
}

} // namespace benchsupport
