#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QMutex>
#include <QThread>
#include <QWaitCondition>

// Reads the client's requests from standard input, one line at a time, on a
// thread of its own so that the main thread's event loop stays free for the
// tools. The lines reach the main thread as queued signal calls.
class MCPStdinReader : public QThread
{
    Q_OBJECT
public:
    explicit MCPStdinReader(QObject* parent = nullptr);

    // generate spins the event loop; while reading is off no further line
    // is queued that could start a second tool inside the running one.
    void setReadingEnabled(bool enabled);

Q_SIGNALS:
    void lineReceived(QByteArray line);

protected:
    void run() override;

private:
    void waitUntilReadingEnabled();
    QByteArray readLine(QIODevice& input);

    QMutex m_mutex;
    QWaitCondition m_readingResumed;
    bool m_readingEnabled = true;
    // Bytes read beyond the line handed out last.
    QByteArray m_pending;
};
