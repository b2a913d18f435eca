#include "edstestsupport.h"

#include "common/testhelpers.h"
#include "importers/edsimporter.h"

#include <QEventLoop>
#include <QTimer>

namespace edstest {

QSharedPointer<ObjectDataBase> newProject()
{
    QSharedPointer<ObjectDataBase> database(new ObjectDataBase);
    database->createNewDataBase();
    database->setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("1"));
    return database;
}

bool importFile(const QSharedPointer<ObjectDataBase>& database, const QString& path, int timeoutMs)
{
    auto* importer = new EDSImporter;
    importer->setIndexRange(4096, 49151);
    importer->setLine(0);
    importer->setDatabase(database);
    importer->setFile(path);

    QEventLoop loop;
    bool finished = false;
    QObject::connect(
        importer, &BaseDataImporter::progress, &loop,
        [&finished, &loop](int value) {
            if (value == 100) {
                finished = true;
                loop.quit();
            }
        },
        Qt::QueuedConnection);
    QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
    if (!importer->startImport())
        return false;
    loop.exec();
    if (!finished)
        return false;
    importer->waitFinished();
    delete importer;
    return true;
}

QString writeFile(const QString& dir, const QString& name, const QByteArray& content)
{
    return testhelpers::writeFile(dir + QLatin1Char('/') + name, content);
}

std::string testName(const char* file)
{
    std::string name = file;
    for (char& c : name) {
        if (!isalnum(static_cast<unsigned char>(c)))
            c = '_';
    }
    return name;
}

int objectCount(ObjectDataBase& database, quint8 line)
{
    return int(database.getIndexList(line, 0, 0xFFFF).size());
}

int subIndexCount(ObjectDataBase& database, quint8 line)
{
    int count = 0;
    const QList<quint16> indices = database.getIndexList(line, 0, 0xFFFF);
    for (quint16 index : indices)
        count += int(database.getSubIndexList(line, index).size());
    return count;
}

} // namespace edstest
