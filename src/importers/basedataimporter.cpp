#include "importers/basedataimporter.h"

#include "canopenlib/helper.h"
#include "database/objectdatabase.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QMetaObject>

namespace {

// Far above any object dictionary or documentation this tool reads.
constexpr qint64 maximumSourceSize = 64 * 1024 * 1024;

} // namespace

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

bool BaseDataImporter::readSourceLines(QStringList& lines) const
{
    const QFileInfo info(filePath);
    if (filePath.isEmpty() || !info.isFile() || info.size() > maximumSourceSize) {
        qDebug() << Q_FUNC_INFO << "not a readable source file:" << filePath;
        return false;
    }
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << Q_FUNC_INFO << "cannot open" << filePath << file.errorString();
        return false;
    }
    lines = Helper::decodeText(file.readAll()).split(QLatin1Char('\n'));
    for (QString& line : lines) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
    }
    return true;
}

void BaseDataImporter::reportNothingImported()
{
    Q_EMIT importError(line, 0, 0, tr("No entry could be imported."));
}
