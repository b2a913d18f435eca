#include "codbtestsupport.h"

#include "common/testhelpers.h"
#include "importers/codbimporter.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace codbtest {

QSharedPointer<ObjectDataBase> newDatabase()
{
    QSharedPointer<ObjectDataBase> database(new ObjectDataBase);
    EXPECT_TRUE(database->createNewDataBase());
    return database;
}

void importFile(const QSharedPointer<ObjectDataBase>& database, const QString& path,
                void (*configure)(CODBImporter&))
{
    CODBImporter importer;
    importer.setDatabase(database);
    importer.setLine(0);
    importer.setFile(path);
    if (configure)
        configure(importer);
    ASSERT_TRUE(importer.startImport());
    importer.waitFinished();
    EXPECT_FALSE(importer.isRunning());
}

QSharedPointer<ObjectDataBase> importText(const QByteArray& text, void (*configure)(CODBImporter&))
{
    QTemporaryDir dir;
    const QString path = testhelpers::writeFile(dir.filePath(QStringLiteral("vtest.codb")), text);
    QSharedPointer<ObjectDataBase> database = newDatabase();
    importFile(database, path, configure);
    return database;
}

SUBINDEX_DATA_T subIndex(const QSharedPointer<ObjectDataBase>& database, quint16 index, quint8 sub)
{
    SUBINDEX_DATA_T record;
    EXPECT_TRUE(database->getSubIndex(0, index, sub, record))
        << QStringLiteral("0x%1 sub %2").arg(index, 4, 16, QLatin1Char('0')).arg(sub).toStdString();
    return record;
}

INDEX_DATA_T index(const QSharedPointer<ObjectDataBase>& database, quint16 index)
{
    INDEX_DATA_T record;
    EXPECT_TRUE(database->getIndex(0, index, record))
        << QStringLiteral("0x%1").arg(index, 4, 16, QLatin1Char('0')).toStdString();
    return record;
}

} // namespace codbtest
