#pragma once

#include "database/objectdatabase.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include <ostream>

// Readable failure messages for Qt strings.
inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

// Access to project files next to the store under test, through a connection of the test's own.
namespace projectfile {

// Runs the statements in order on the file; false at the first that fails.
bool execute(const QString& path, const QStringList& statements);

// Every table with its rows, each row as its cells joined by "|", in rowid order.
QMap<QString, QStringList> dump(const QString& path);
// The same for a connection that is already open, such as a store's working copy.
QMap<QString, QStringList> dump(const QSqlDatabase& database);

// The first column of the first row of a query, or an invalid value.
QVariant scalar(const QString& path, const QString& statement);

// The column names of a table in declared order.
QStringList columns(const QString& path, const QString& table);

} // namespace projectfile

// A sub-index with every field set apart from its default, and its fields as text so that two records compare
// with a readable failure.
namespace records {

SUBINDEX_DATA_T subIndexWithEveryField();
// "key=value" pairs joined by ";"; no metadata and an empty map read alike.
QString metadataText(const ObjectMetadata& map);
// The fields that the text form of a project keeps.
QStringList keptFields(const SUBINDEX_DATA_T& sub);
// The editing state and links that the text form leaves out.
QStringList droppedFields(const SUBINDEX_DATA_T& sub);
inline QStringList allFields(const SUBINDEX_DATA_T& sub)
{
    return keptFields(sub) + droppedFields(sub);
}

} // namespace records

// Records the change notifications of a store.
class ChangeRecorder
{
public:
    explicit ChangeRecorder(ObjectDataBase& database);
    ~ChangeRecorder();

    QList<ObjectDataBase::ChangeSet> changes;
    QList<int> kinds() const;

private:
    QMetaObject::Connection m_connection;
};
