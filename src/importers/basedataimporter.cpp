#include "importers/basedataimporter.h"

#include "database/objectdatabase.h"

#include <QDebug>
#include <QFileInfo>
#include <QMetaObject>

BaseDataImporter::BaseDataImporter(QObject* parent) : QObject(parent) {}

// The worker must be gone before the object it runs on; the importer itself
// may already live on that finished thread, which is allowed for deletion.
BaseDataImporter::~BaseDataImporter()
{
    if (workerThread) {
        workerThread->quit();
        workerThread->wait();
    }
}

bool BaseDataImporter::setIndexRange(quint32 low, quint32 high)
{
    lowIndex = low;
    highIndex = high;
    return true;
}

bool BaseDataImporter::setLine(quint8 newLine)
{
    line = newLine;
    return true;
}

bool BaseDataImporter::setDatabase(QSharedPointer<ObjectDataBase> newDatabase)
{
    if (!newDatabase)
        return false;
    database = newDatabase;
    return true;
}

bool BaseDataImporter::setFile(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists() || !info.isReadable()) {
        qDebug() << Q_FUNC_INFO << "not readable:" << path;
        filePath.clear();
        return false;
    }
    filePath = path;
    return true;
}

void BaseDataImporter::setSourceLine(quint8 newLine)
{
    sourceLine = newLine;
}

void BaseDataImporter::setCopyFlag(quint8 flag)
{
    copyFlag = flag;
}

bool BaseDataImporter::startImport()
{
    if (running)
        return false;
    if (!workerThread)
        workerThread.reset(new QThread);
    moveToThread(workerThread.data());
    workerThread->start();
    QMetaObject::invokeMethod(this, "doImport", Qt::QueuedConnection);
    return true;
}

void BaseDataImporter::waitFinished()
{
    if (workerThread)
        workerThread->wait();
}

void BaseDataImporter::finishImport()
{
    running = false;
    if (workerThread)
        workerThread->quit();
    Q_EMIT progress(100);
}
