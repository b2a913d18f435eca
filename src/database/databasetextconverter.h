#ifndef DATABASETEXTCONVERTER_H
#define DATABASETEXTCONVERTER_H

#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include <functional>

class ObjectDataBase;
class QSettings;
class QSqlQuery;

// Turns the project tables into the INI text form of a project (".trwt") and
// back, so that a project can be compared and merged in version control.
// Top-level groups are table names; strings are spelt out in place of their ids.
// Raw CAN tables, connections, locks, signals and virtual nodes are not part of
// the text form.
class DatabaseTextConverter : public QObject
{
    Q_OBJECT

public:
    explicit DatabaseTextConverter(QObject* parent = nullptr);

    void setObjectDataBase(ObjectDataBase* database);
    void setDatabase(QSqlDatabase database);
    void setInputFile(const QString& path);
    // Removes an existing file of that name first.
    void setOutputFile(const QString& path);

    bool convertSqlToText();
    // False only when no file is set or the file holds no groups.
    bool convertTextToSql();

private:
    // Writing the text form
    void replaceNullValues();
    void replaceNullValuesOfColumn(const QString& table, const QString& column);
    QStringList excludedTablePieces();
    bool isExcludedTable(const QString& table, const QStringList& excludedPieces);
    void writeTable(const QString& table);
    void writeSettingsTable(const QString& table);
    void writeNodes(const QString& table);
    void writeObjects(const QString& table);
    void writeSubObjects(const QString& table);
    void writePGNs(const QString& table);
    void writeSPNs(const QString& table);
    void writeUDSSettings(const QString& table);
    void writeRows(const QString& table, const QString& order, const QStringList& skippedColumns,
                   const std::function<QString(const QSqlQuery&)>& groupName);
    void writeRowValues(const QSqlQuery& query, const QStringList& skippedColumns, bool stringIds);
    QVariant textValue(const QString& column, const QVariant& value, bool stringIds);

    // Reading the text form
    void importNodes();
    void importGroup(const QString& group);
    void importDescriptionSettings(const QString& group);
    void importKeyValueSettings(const QString& group, bool (ObjectDataBase::*setter)(QString, QString),
                                bool doubleQuotes);
    void importObjects(const QString& table);
    void importSubObjects(const QString& table);
    void importKeyedRecords(const QString& table, int line, const QString& keyColumn);
    void importSPNs(const QString& table, int line);
    void insertRecord(const QString& table, int line, const QMap<QString, QString>& keyValues);
    QMap<QString, QString> recordValues();
    QString sqlValue(const QString& declaredType, const QString& text);

    QStringList queryColumn(const QString& statement);

    ObjectDataBase* objectDatabase = nullptr;
    QSqlDatabase sqlDatabase;
    QSharedPointer<QSettings> settings;
};

#endif // DATABASETEXTCONVERTER_H
