#include "benchsupport.h"

#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>

#include <sys/resource.h>
#include <unistd.h>

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

namespace {

qint64 peakMemoryKbOf(const QString& process)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

} // namespace

qint64 peakMemoryKb()
{
    return peakMemoryKbOf(QStringLiteral("self"));
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

bool McpServer::start(const QString& binary)
{
    m_process.start(binary, {QStringLiteral("--mcp")});
    return m_process.waitForStarted();
}

McpServer::~McpServer()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished(30000);
}

QByteArray McpServer::call(const QByteArray& tool, const QByteArray& arguments)
{
    m_process.write(R"({"jsonrpc":"2.0","id":)" + QByteArray::number(++m_id) +
                    R"(,"method":"tools/call","params":{"name":")" + tool + R"(","arguments":)" + arguments +
                    "}}\n");
    QByteArray reply;
    while (!reply.endsWith('\n') && m_process.waitForReadyRead(60000))
        reply += m_process.readAllStandardOutput();
    return reply;
}

qint64 McpServer::processorMs()
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(m_process.processId()));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return -1;
    return (fields.at(11).toLongLong() + fields.at(12).toLongLong()) * 1000 / sysconf(_SC_CLK_TCK);
}

qint64 McpServer::peakMemoryKb()
{
    return peakMemoryKbOf(QString::number(m_process.processId()));
}

} // namespace benchsupport
