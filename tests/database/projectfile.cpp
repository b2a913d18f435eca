#include "projectfile.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace projectfile {

namespace {

// Opens a fresh connection on the file for the duration of one helper call.
class Connection
{
public:
    explicit Connection(const QString& path) : m_name(QStringLiteral("projectfile%1").arg(++s_counter))
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        db.setDatabaseName(path);
        db.open();
    }
    ~Connection() { QSqlDatabase::removeDatabase(m_name); }
    QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }

private:
    static int s_counter;
    QString m_name;
};

int Connection::s_counter = 0;

} // namespace

bool execute(const QString& path, const QStringList& statements)
{
    Connection connection(path);
    QSqlQuery query(connection.db());
    for (const QString& statement : statements) {
        if (!query.exec(statement)) {
            qWarning() << statement << query.lastError().text();
            return false;
        }
    }
    return true;
}

QMap<QString, QStringList> dump(const QString& path)
{
    Connection connection(path);
    return dump(connection.db());
}

QMap<QString, QStringList> dump(const QSqlDatabase& database)
{
    QMap<QString, QStringList> tables;
    QSqlQuery query(database);
    QStringList names;
    query.exec(QStringLiteral("select name from sqlite_master where type='table' order by name"));
    while (query.next())
        names.append(query.value(0).toString());
    for (const QString& name : names) {
        QStringList rows;
        query.exec(QStringLiteral("select * from \"%1\" order by rowid").arg(name));
        while (query.next()) {
            QStringList cells;
            for (int column = 0; column < query.record().count(); ++column)
                cells.append(query.value(column).toString());
            rows.append(cells.join(QLatin1Char('|')));
        }
        tables.insert(name, rows);
    }
    return tables;
}

QVariant scalar(const QString& path, const QString& statement)
{
    Connection connection(path);
    QSqlQuery query(connection.db());
    if (query.exec(statement) && query.next())
        return query.value(0);
    return QVariant();
}

QStringList columns(const QString& path, const QString& table)
{
    Connection connection(path);
    QSqlQuery query(connection.db());
    QStringList names;
    query.exec(QStringLiteral("select name from pragma_table_info('%1')").arg(table));
    while (query.next())
        names.append(query.value(0).toString());
    return names;
}

} // namespace projectfile

ChangeRecorder::ChangeRecorder(ObjectDataBase& database)
{
    m_connection = QObject::connect(&database, &ObjectDataBase::updateNotify,
                                    [this](ObjectDataBase::ChangeSet change) { changes.append(change); });
}

ChangeRecorder::~ChangeRecorder()
{
    QObject::disconnect(m_connection);
}

QList<int> ChangeRecorder::kinds() const
{
    QList<int> result;
    for (const ObjectDataBase::ChangeSet& change : changes)
        result.append(change.kind);
    return result;
}
