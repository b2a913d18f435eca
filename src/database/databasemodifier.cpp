#include "database/databasemodifier.h"

#include "database/objectdatabase.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace {
// A file this small cannot hold a useful change; it is refused as a whole.
constexpr qint64 minimumFileSize = 10;
} // namespace

DatabaseModifier::DatabaseModifier(ObjectDataBase* database, QObject* parent)
    : QObject(parent), database(database)
{
}

void DatabaseModifier::setDatabase(ObjectDataBase* database)
{
    this->database = database;
}

bool DatabaseModifier::setModifierFile(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists() || !info.isReadable() || info.size() <= minimumFileSize)
        return false;
    modifierFile = path;
    return true;
}

bool DatabaseModifier::applyModifierFile()
{
    if (database)
        database->setWritesRefused(false);
    qDebug() << Q_FUNC_INFO << "Applying " << modifierFile;

    QFile file(modifierFile);
    if (!database || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;

    QTextStream stream(&file);
    while (!stream.atEnd()) {
        const QString line = stream.readLine();
        if (!applyLine(line)) {
            failedLine = line;
            return false;
        }
    }
    return true;
}

QString DatabaseModifier::lastFailedLine() const
{
    return failedLine;
}

// Returns false only when a setter refused the value; lines that are not
// setting changes count as done.
bool DatabaseModifier::applyLine(const QString& line)
{
    if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
        return true;
    // A value cannot contain ":"; a line with more fields is not a setting change.
    const QStringList fields = line.split(QLatin1Char(':'));
    if (fields.size() != 3)
        return true;
    if (fields.at(0) == QLatin1String("GeneralSettings"))
        return database->setGeneralSetting(fields.at(1), fields.at(2));
    if (fields.at(0) == QLatin1String("J1939Settings"))
        return database->setJ1939Setting(fields.at(1), fields.at(2));
    return true;
}
