#include "projectfile.h"

#include "common/testhelpers.h"

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

namespace records {

SUBINDEX_DATA_T subIndexWithEveryField()
{
    SUBINDEX_DATA_T r;
    r.name = "Output 1";
    r.datatype = 7;
    r.accesstype = "rww";
    r.defaultvalue = "$NODEID+0x200";
    r.currentvalue = "17";
    r.pdomapping = PDOMapping(PDOMapping::MappableTPDO);
    r.lowlimit = "-5";
    r.uplimit = "0xFFFF";
    r.size = 32;
    r.defaultineds = false;
    r.limitineds = true;
    r.refuseread = true;
    r.refusewrite = true;
    r.dcfcomponent = true;
    r.cyclicread = true;
    r.allowedaccesstypes = "ro,rww";
    r.implementation = 3;
    r.description = "Line one\nline \"two\", with; separators = here";
    r.varname = "out1";
    r.category = 2;
    r.writedefaulttoeds = 2;
    r.changedbyuser = true;
    r.wizardsource = 454;
    r.sharedlines = true;
    r.denotation = "Lamp";
    r.managedbyobn = true;
    r.signalid = 12;
    r.nvstorage = true;
    r.metadata =
        ObjectMetadata::create(QMap<QString, QString>{{"eds_define", "ParameterValue=1"}, {"other", "x"}});
    return r;
}

QString metadataText(const ObjectMetadata& map)
{
    QStringList pairs;
    if (map) {
        for (auto it = map->constBegin(); it != map->constEnd(); ++it)
            pairs << it.key() + QLatin1Char('=') + it.value();
    }
    return pairs.join(QLatin1Char(';'));
}

QStringList keptFields(const SUBINDEX_DATA_T& s)
{
    return testhelpers::fieldTexts(
        s.name, s.datatype, s.accesstype, s.defaultvalue, s.currentvalue, s.pdomapping.toUInt(), s.lowlimit,
        s.uplimit, s.size, s.defaultineds, s.limitineds, s.refuseread, s.refusewrite, s.allowedaccesstypes,
        s.implementation, s.description, s.varname, s.category, s.writedefaulttoeds, s.sharedlines,
        s.managedbyobn, s.nvstorage, metadataText(s.metadata));
}

QStringList droppedFields(const SUBINDEX_DATA_T& s)
{
    return testhelpers::fieldTexts(s.cyclicread, s.changedbyuser, s.dcfcomponent, s.wizardsource, s.signalid,
                                   s.denotation);
}

} // namespace records
