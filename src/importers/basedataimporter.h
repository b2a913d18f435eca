#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QThread>

class ObjectDataBase;

// Frame of every importer: target project, line, source file and accepted
// index range. The import runs on a worker thread of its own while the
// caller waits in waitFinished(); during that time only the importer writes
// to the project. An importer is used for one file and must have no parent,
// since it moves to its worker thread.
class BaseDataImporter : public QObject
{
    Q_OBJECT
public:
    explicit BaseDataImporter(QObject* parent = nullptr);
    ~BaseDataImporter() override;

    bool setIndexRange(quint32 low, quint32 high);
    bool setLine(quint8 line);
    bool setDatabase(QSharedPointer<ObjectDataBase> database);
    // The file must exist and be readable; otherwise the path is cleared.
    bool setFile(const QString& path);
    // Used by the native project import only.
    void setSourceLine(quint8 line);
    void setCopyFlag(quint8 flag);

    bool startImport();
    void waitFinished();

    bool isRunning() const { return running; }

Q_SIGNALS:
    void progress(int value);
    void importError(quint8 line, quint16 index, quint8 sub, const QString& errorString);

public Q_SLOTS:
    // Called by name through the meta object, queued onto the worker thread.
    virtual void doImport() = 0;

protected:
    // The common end of doImport: not running, worker told to quit, progress(100).
    void finishImport();
    // The lines of the source file, without their ends. False for anything
    // but a regular file of a sane size, so that a pipe can't block the
    // worker or a huge file fill memory.
    bool readSourceLines(QStringList& lines) const;
    // A file of which nothing could be used is worth a word to the user,
    // who would otherwise see a successful import of nothing.
    void reportNothingImported();

    QSharedPointer<ObjectDataBase> database;
    QSharedPointer<QThread> workerThread;
    quint8 line = 0;
    bool running = false;
    QString filePath;
    quint32 lowIndex = 0x1000;
    quint32 highIndex = 0xBFFF;
    quint8 sourceLine = 0;
    quint8 copyFlag = 0;
};
