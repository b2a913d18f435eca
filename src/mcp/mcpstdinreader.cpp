#include "mcp/mcpstdinreader.h"

#include <QFile>
#include <QMutexLocker>

#include <cstdio>

MCPStdinReader::MCPStdinReader(QObject* parent) : QThread(parent) {}

void MCPStdinReader::setReadingEnabled(bool enabled)
{
    QMutexLocker locker(&m_mutex);
    m_readingEnabled = enabled;
    if (enabled)
        m_readingResumed.wakeAll();
}

void MCPStdinReader::run()
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return;
    for (;;) {
        waitUntilReadingEnabled();
        const QByteArray line = readLine(input);
        if (line.isEmpty())
            return;
        emit lineReceived(line.trimmed());
    }
}

// Up to and including the next line feed, with no length limit; a last line
// without a line feed still counts. Only a read that yields nothing at all
// means the client has gone. Reading whole chunks rather than byte by byte
// keeps a line of megabytes from a pipe fast.
QByteArray MCPStdinReader::readLine(QIODevice& input)
{
    constexpr qint64 chunkSize = 64 * 1024;
    qsizetype searchFrom = 0;
    for (;;) {
        const qsizetype end = m_pending.indexOf('\n', searchFrom);
        if (end >= 0) {
            const QByteArray line = m_pending.left(end + 1);
            m_pending.remove(0, end + 1);
            return line;
        }
        searchFrom = m_pending.size();
        const QByteArray more = input.read(chunkSize);
        if (more.isEmpty()) {
            QByteArray last;
            last.swap(m_pending);
            return last;
        }
        m_pending += more;
    }
}

void MCPStdinReader::waitUntilReadingEnabled()
{
    QMutexLocker locker(&m_mutex);
    while (!m_readingEnabled)
        m_readingResumed.wait(&m_mutex);
}
