#include "database/databasetextconverter.h"

#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QDebug>
#include <QFile>
#include <QRegularExpression>
#include <QSettings>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

bool isStringPoolColumn(const QString& column)
{
    return column == QLatin1String("name") || column == QLatin1String("description") ||
           column == QLatin1String("desc");
}

const QString metadataColumn = QStringLiteral("metadata");

// The line of a per-line table or group is the number at the end of its name.
int trailingLine(const QString& name)
{
    static const QRegularExpression digits(QStringLiteral("(\\d+)$"));
    const QRegularExpressionMatch match = digits.match(name);
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

// An INI value with unquoted commas comes back from QSettings as a list; a
// hand-edited file may hold per-line settings that way.
QString settingText(const QVariant& value)
{
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}

// PGN groups are named by the decimal number. The same number may exist once
// per direction; the second direction gets its direction code appended to the
// group name, so that both survive the text form.
class RecordGroupNames
{
public:
    QString name(quint32 number, int direction)
    {
        const auto first = firstDirection.constFind(number);
        if (first == firstDirection.constEnd()) {
            firstDirection.insert(number, direction);
            return QString::number(number);
        }
        if (first.value() == direction)
            return QString::number(number);
        return QStringLiteral("%1_%2").arg(number).arg(direction);
    }

private:
    QMap<quint32, int> firstDirection;
};

// The node, object and sub-index column writers and the GeneralSettings setter
// put a value into their statement as it is; a quote in it would end the SQL
// text early.
QString withDoubledQuotes(QString text)
{
    return text.replace(QLatin1Char('\''), QLatin1String("''"));
}

QVariant columnValue(const QString& column, const QVariant& value)
{
    // A record without metadata is written as the text "0"; reading that back as a one-byte blob would
    // turn it into "@ByteArray(0)" at the next save.
    if (column == metadataColumn)
        return value.typeId() == QMetaType::QByteArray ? value : QVariant(QByteArray());
    if (isStringPoolColumn(column))
        return settingText(value);
    return withDoubledQuotes(settingText(value));
}

// Names and descriptions of objects, sub-indices, PGNs and SPNs are ids into
// the string pool; the name of a line is plain text.
bool holdsStringIds(const QString& table)
{
    return table.contains(QLatin1String("Objects")) || table.contains(QLatin1String("PGNs")) ||
           table.contains(QLatin1String("SPNs"));
}

const QString objectIndexColumn = QStringLiteral("objectindex");
const QString subIndexColumn = QStringLiteral("subindex");

// The group names a record; a key of the same column in a hand-edited file
// would move the record somewhere else.
bool isRecordKey(const QString& key, const QStringList& keyColumns)
{
    return keyColumns.contains(key, Qt::CaseInsensitive);
}

bool parseRecordNumber(const QString& group, quint32& number)
{
    bool ok = false;
    number = group.section(QLatin1Char('_'), 0, 0).toUInt(&ok, 10);
    return ok;
}

} // namespace

DatabaseTextConverter::DatabaseTextConverter(QObject* parent) : QObject(parent) {}

void DatabaseTextConverter::setObjectDataBase(ObjectDataBase* database)
{
    objectDatabase = database;
}

void DatabaseTextConverter::setDatabase(QSqlDatabase database)
{
    sqlDatabase = database;
}

void DatabaseTextConverter::setInputFile(const QString& path)
{
    settings = QSharedPointer<QSettings>::create(path, QSettings::IniFormat);
}

void DatabaseTextConverter::setOutputFile(const QString& path)
{
    QFile::remove(path);
    settings = QSharedPointer<QSettings>::create(path, QSettings::IniFormat);
}

bool DatabaseTextConverter::convertSqlToText()
{
    if (!settings || !objectDatabase)
        return false;
    replaceNullValues();
    const QStringList excludedPieces = excludedTablePieces();
    const QStringList tables =
        queryColumn(QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name"));
    for (const QString& table : tables) {
        if (!isExcludedTable(table, excludedPieces))
            writeTable(table);
    }
    settings->sync();
    return true;
}

// The text form has no NULL; empty cells of number and text columns are made
// 0 and '' in the working database first.
void DatabaseTextConverter::replaceNullValues()
{
    const QStringList tables =
        queryColumn(QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name"));
    for (const QString& table : tables) {
        const QStringList columns =
            queryColumn(QStringLiteral("SELECT name FROM PRAGMA_TABLE_INFO('%1') ORDER BY name").arg(table));
        for (const QString& column : columns)
            replaceNullValuesOfColumn(table, column);
    }
}

void DatabaseTextConverter::replaceNullValuesOfColumn(const QString& table, const QString& column)
{
    const QStringList types = queryColumn(
        QStringLiteral("SELECT type FROM PRAGMA_TABLE_INFO('%1') where name='%2'").arg(table, column));
    const QString type = types.value(0).toLower();
    QString replacement;
    if (type == QLatin1String("integer"))
        replacement = QStringLiteral("update %1 set %2=0 WHERE rowid=%3");
    else if (type == QLatin1String("text"))
        replacement = QStringLiteral("update %1 set %2 = '' WHERE rowid=%3");
    else
        return;

    // Most columns hold no NULL at all; only those are worth a walk over their rows.
    if (queryColumn(QStringLiteral("SELECT ROWID FROM %1 WHERE %2 IS NULL LIMIT 1").arg(table, column))
            .isEmpty())
        return;
    const QStringList rowIds = queryColumn(QStringLiteral("SELECT ROWID FROM %1").arg(table));
    QSqlQuery query(sqlDatabase);
    for (const QString& rowId : rowIds) {
        if (!query.exec(QStringLiteral("SELECT %1 FROM %2 WHERE ROWID=%3").arg(column, table, rowId)) ||
            !query.next() || !query.isNull(0))
            continue;
        const QString statement = replacement.arg(table, column, rowId);
        if (!query.exec(statement))
            qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    }
}

QStringList DatabaseTextConverter::excludedTablePieces()
{
    QStringList pieces{QStringLiteral("CANIDs"),       QStringLiteral("Connections"),
                       QStringLiteral("DataElements"), QStringLiteral("EnergyBusSettings"),
                       QStringLiteral("Groups"),       QStringLiteral("SignalGroups"),
                       QStringLiteral("Signals"),      QStringLiteral("Strings"),
                       QStringLiteral("VirtualNodes"), QStringLiteral("LockedMappings"),
                       QStringLiteral("LockedPDOs")};
    bool hasCANopen = false;
    bool hasJ1939 = false;
    // Only the pure and the CANopen and J1939 line count here: a line that
    // adds raw CAN keeps the tables of its other protocol out of the text.
    for (int line = 0; line <= Line::firstScratch && !(hasCANopen && hasJ1939); ++line) {
        const int type = objectDatabase->lineType(line);
        hasCANopen = hasCANopen || type == Line::CANopen || type == Line::CANopenJ1939;
        hasJ1939 = hasJ1939 || type == Line::J1939 || type == Line::CANopenJ1939;
    }
    if (!hasCANopen)
        pieces << QStringLiteral("Objects") << QStringLiteral("SubObjects");
    if (!hasJ1939)
        pieces << QStringLiteral("PGNs") << QStringLiteral("SPNs") << QStringLiteral("J1939Settings");
    return pieces;
}

bool DatabaseTextConverter::isExcludedTable(const QString& table, const QStringList& excludedPieces)
{
    QStringList pieces = excludedPieces;
    const int line = trailingLine(table);
    if (line >= 0) {
        const int type = objectDatabase->lineType(line);
        if (type == Line::CANopen)
            pieces << QStringLiteral("PGNs") << QStringLiteral("SPNs") << QStringLiteral("J1939Settings");
        else if (type == Line::J1939)
            pieces << QStringLiteral("Objects") << QStringLiteral("SubObjects");
    }
    for (const QString& piece : std::as_const(pieces)) {
        if (table.contains(piece)) {
            qDebug() << Q_FUNC_INFO << "Ignored table " << table;
            return true;
        }
    }
    return false;
}

void DatabaseTextConverter::writeTable(const QString& table)
{
    if (table.contains(QLatin1String("DescriptionSettings")) ||
        table.contains(QLatin1String("GeneralSettings")) || table.contains(QLatin1String("MiscSettings")))
        writeSettingsTable(table);
    else if (table.contains(QLatin1String("Objects")) && table.contains(QLatin1String("Sub")))
        writeSubObjects(table);
    else if (table.contains(QLatin1String("Objects")))
        writeObjects(table);
    else if (table.contains(QLatin1String("Nodes")))
        writeNodes(table);
    else if (table.contains(QLatin1String("PGNs")))
        writePGNs(table);
    else if (table.contains(QLatin1String("SPNs")))
        writeSPNs(table);
    else if (table.contains(QLatin1String("J1939Settings")))
        writeSettingsTable(table);
    else if (table.contains(QLatin1String("UDSSettings")))
        writeUDSSettings(table);
    else
        qDebug() << Q_FUNC_INFO << "unhandled table" << table;
}

void DatabaseTextConverter::writeSettingsTable(const QString& table)
{
    QSqlQuery query(sqlDatabase);
    if (!query.exec(QStringLiteral("select item, value from %1 order by item").arg(table))) {
        qDebug() << Q_FUNC_INFO << table << query.lastError().text();
        return;
    }
    settings->beginGroup(table);
    while (query.next())
        settings->setValue(query.value(0).toString(), query.value(1).toString());
    settings->endGroup();
}

void DatabaseTextConverter::writeNodes(const QString& table)
{
    writeRows(table, QStringLiteral("nodeId"), {QStringLiteral("nodeId")},
              [](const QSqlQuery& row) { return row.value(QStringLiteral("nodeId")).toString(); });
}

void DatabaseTextConverter::writeObjects(const QString& table)
{
    writeRows(table, QStringLiteral("objectindex"), {QStringLiteral("objectindex")},
              [](const QSqlQuery& row) {
                  return QStringLiteral("0x%1").arg(row.value(QStringLiteral("objectindex")).toUInt(), 0, 16);
              });
}

void DatabaseTextConverter::writeSubObjects(const QString& table)
{
    // Editing state and links into other tables have no meaning in a text copy.
    static const QStringList skipped{QStringLiteral("objectindex"),  QStringLiteral("subindex"),
                                     QStringLiteral("cyclicread"),   QStringLiteral("changedbyuser"),
                                     QStringLiteral("dcfcomponent"), QStringLiteral("wizardsource"),
                                     QStringLiteral("signalid"),     QStringLiteral("denotation")};
    writeRows(table, QStringLiteral("objectindex, subindex"), skipped, [](const QSqlQuery& row) {
        return QStringLiteral("0x%1/0x%2")
            .arg(row.value(QStringLiteral("objectindex")).toUInt(), 0, 16)
            .arg(row.value(QStringLiteral("subindex")).toUInt(), 0, 16);
    });
}

void DatabaseTextConverter::writePGNs(const QString& table)
{
    RecordGroupNames groupNames;
    writeRows(table, QStringLiteral("number, direction"), {QStringLiteral("number")},
              [&groupNames](const QSqlQuery& row) {
                  return groupNames.name(row.value(QStringLiteral("number")).toUInt(),
                                         row.value(QStringLiteral("direction")).toInt());
              });
}

void DatabaseTextConverter::writeSPNs(const QString& table)
{
    RecordGroupNames groupNames;
    writeRows(table, QStringLiteral("pgnnumber, direction, pos"),
              {QStringLiteral("pgnnumber"), QStringLiteral("spnnumber")},
              [&groupNames](const QSqlQuery& row) {
                  return groupNames.name(row.value(QStringLiteral("pgnnumber")).toUInt(),
                                         row.value(QStringLiteral("direction")).toInt()) +
                         QLatin1Char('/') + row.value(QStringLiteral("spnnumber")).toString();
              });
}

void DatabaseTextConverter::writeUDSSettings(const QString& table)
{
    writeRows(table, QStringLiteral("sid"), {QStringLiteral("sid")},
              [](const QSqlQuery& row) { return row.value(QStringLiteral("sid")).toString(); });
}

// One group per row below the table's group, named by the row's key.
void DatabaseTextConverter::writeRows(const QString& table, const QString& order,
                                      const QStringList& skippedColumns,
                                      const std::function<QString(const QSqlQuery&)>& groupName)
{
    QSqlQuery query(sqlDatabase);
    if (!query.exec(QStringLiteral("select * from %1 order by %2").arg(table, order))) {
        qDebug() << Q_FUNC_INFO << table << query.lastError().text();
        return;
    }
    settings->beginGroup(table);
    while (query.next()) {
        settings->beginGroup(groupName(query));
        writeRowValues(query, skippedColumns, holdsStringIds(table));
        settings->endGroup();
    }
    settings->endGroup();
}

void DatabaseTextConverter::writeRowValues(const QSqlQuery& query, const QStringList& skippedColumns,
                                           bool stringIds)
{
    const QSqlRecord record = query.record();
    for (int i = 0; i < record.count(); ++i) {
        const QString column = record.fieldName(i);
        if (!skippedColumns.contains(column, Qt::CaseInsensitive))
            settings->setValue(column, textValue(column, query.value(i), stringIds));
    }
}

QVariant DatabaseTextConverter::textValue(const QString& column, const QVariant& value, bool stringIds)
{
    if (stringIds && isStringPoolColumn(column))
        return objectDatabase->stringById(value.toInt());
    if (column == metadataColumn) {
        if (value.typeId() == QMetaType::QByteArray && !value.toByteArray().isEmpty())
            return value.toByteArray();
        return QStringLiteral("0");
    }
    return value.toString();
}

bool DatabaseTextConverter::convertTextToSql()
{
    if (!settings || !objectDatabase)
        return false;
    QStringList groups = settings->childGroups();
    if (groups.isEmpty())
        return false;
    // One transaction for the many single-column writes of a large project.
    sqlDatabase.transaction();
    // The lines have to exist before anything of theirs can be stored.
    if (groups.removeAll(QStringLiteral("Nodes")) > 0)
        importNodes();
    for (const QString& group : std::as_const(groups))
        importGroup(group);
    if (!sqlDatabase.commit())
        qDebug() << Q_FUNC_INFO << sqlDatabase.lastError().text();
    return true;
}

void DatabaseTextConverter::importNodes()
{
    settings->beginGroup(QStringLiteral("Nodes"));
    const QStringList lines = settings->childGroups();
    for (const QString& lineGroup : lines) {
        bool ok = false;
        const uint line = lineGroup.toUInt(&ok, 10);
        if (!ok || line > 255) {
            qDebug() << Q_FUNC_INFO << "not a line:" << lineGroup;
            continue;
        }
        NODE_DATA_T data;
        data.outputpath = QStringLiteral("C:/");
        objectDatabase->addNode(static_cast<quint8>(line), data);
        settings->beginGroup(lineGroup);
        const QStringList keys = settings->childKeys();
        for (const QString& key : keys) {
            if (isRecordKey(key, {QStringLiteral("nodeId")}))
                continue;
            objectDatabase->setNodeSqlValue(key, withDoubledQuotes(settingText(settings->value(key))),
                                            QString::number(line));
        }
        settings->endGroup();
    }
    settings->endGroup();
}

void DatabaseTextConverter::importGroup(const QString& group)
{
    const int line = qMax(trailingLine(group), 0);
    if (group.contains(QLatin1String("DescriptionSettings")))
        importDescriptionSettings(group);
    else if (group.contains(QLatin1String("GeneralSettings")))
        importKeyValueSettings(group, &ObjectDataBase::setGeneralSetting, true);
    else if (group.contains(QLatin1String("MiscSettings")))
        importKeyValueSettings(group, &ObjectDataBase::setMiscSetting, false);
    else if (group.contains(QLatin1String("SubObjects")))
        importSubObjects(group);
    else if (group.contains(QLatin1String("Objects")))
        importObjects(group);
    else if (group.contains(QLatin1String("UDSSettings")))
        importKeyedRecords(group, line, QStringLiteral("sid"));
    else if (group.contains(QLatin1String("J1939Settings")))
        importKeyValueSettings(group, &ObjectDataBase::setJ1939Setting, false);
    else if (group.contains(QLatin1String("PGNs")))
        importKeyedRecords(group, line, QStringLiteral("number"));
    else if (group.contains(QLatin1String("SPNs")))
        importSPNs(group, line);
    else
        qDebug() << Q_FUNC_INFO << "unhandled group" << group;
}

// The keys carry their line suffix already, so they are written for line 0.
void DatabaseTextConverter::importDescriptionSettings(const QString& group)
{
    objectDatabase->setDescriptionLine(0);
    importKeyValueSettings(group, &ObjectDataBase::setDescriptionSetting, false);
}

void DatabaseTextConverter::importKeyValueSettings(const QString& group,
                                                   bool (ObjectDataBase::*setter)(QString, QString),
                                                   bool doubleQuotes)
{
    settings->beginGroup(group);
    const QStringList keys = settings->childKeys();
    for (const QString& key : keys) {
        if (key.isEmpty())
            continue;
        const QString value = settingText(settings->value(key));
        (objectDatabase->*setter)(key, doubleQuotes ? withDoubledQuotes(value) : value);
    }
    settings->endGroup();
}

// Each key writes one column; the first one brings the object into being.
void DatabaseTextConverter::importObjects(const QString& table)
{
    settings->beginGroup(table);
    const QStringList objects = settings->childGroups();
    for (const QString& objectGroup : objects) {
        bool ok = false;
        const uint index = objectGroup.toUInt(&ok, 0);
        if (!ok) {
            qDebug() << Q_FUNC_INFO << "not an index:" << table << objectGroup;
            continue;
        }
        settings->beginGroup(objectGroup);
        const QStringList keys = settings->childKeys();
        for (const QString& key : keys) {
            if (isRecordKey(key, {objectIndexColumn}))
                continue;
            objectDatabase->setObjectIndexSqlValue(table, QString::number(index), key,
                                                   columnValue(key, settings->value(key)));
        }
        settings->endGroup();
    }
    settings->endGroup();
}

void DatabaseTextConverter::importSubObjects(const QString& table)
{
    settings->beginGroup(table);
    const QStringList objects = settings->childGroups();
    for (const QString& objectGroup : objects) {
        bool indexOk = false;
        const uint index = objectGroup.toUInt(&indexOk, 0);
        settings->beginGroup(objectGroup);
        const QStringList subindices = settings->childGroups();
        for (const QString& subGroup : subindices) {
            bool subOk = false;
            const uint subindex = subGroup.toUInt(&subOk, 0);
            if (!indexOk || !subOk) {
                qDebug() << Q_FUNC_INFO << "not a sub-index:" << table << objectGroup << subGroup;
                continue;
            }
            settings->beginGroup(subGroup);
            const QStringList keys = settings->childKeys();
            for (const QString& key : keys) {
                if (isRecordKey(key, {objectIndexColumn, subIndexColumn}))
                    continue;
                objectDatabase->setSubindexSqlValue(table, QString::number(index), QString::number(subindex),
                                                    key, columnValue(key, settings->value(key)));
            }
            settings->endGroup();
        }
        settings->endGroup();
    }
    settings->endGroup();
}

// One record per group below the table, the group named by the record's key.
void DatabaseTextConverter::importKeyedRecords(const QString& table, int line, const QString& keyColumn)
{
    settings->beginGroup(table);
    const QStringList groups = settings->childGroups();
    for (const QString& group : groups) {
        quint32 key = 0;
        if (!parseRecordNumber(group, key)) {
            qDebug() << Q_FUNC_INFO << "not a number:" << table << group;
            continue;
        }
        settings->beginGroup(group);
        QMap<QString, QString> values = recordValues();
        settings->endGroup();
        values.insert(keyColumn, QString::number(key));
        insertRecord(table, line, values);
    }
    settings->endGroup();
}

void DatabaseTextConverter::importSPNs(const QString& table, int line)
{
    settings->beginGroup(table);
    const QStringList pgns = settings->childGroups();
    for (const QString& pgnGroup : pgns) {
        quint32 pgnNumber = 0;
        const bool pgnOk = parseRecordNumber(pgnGroup, pgnNumber);
        settings->beginGroup(pgnGroup);
        const QStringList spns = settings->childGroups();
        for (const QString& spnGroup : spns) {
            bool spnOk = false;
            const uint spnNumber = spnGroup.toUInt(&spnOk, 10);
            if (!pgnOk || !spnOk) {
                qDebug() << Q_FUNC_INFO << "not an SPN:" << table << pgnGroup << spnGroup;
                continue;
            }
            settings->beginGroup(spnGroup);
            QMap<QString, QString> values = recordValues();
            settings->endGroup();
            values.insert(QStringLiteral("pgnnumber"), QString::number(pgnNumber));
            values.insert(QStringLiteral("spnnumber"), QString::number(spnNumber));
            insertRecord(table, line, values);
        }
        settings->endGroup();
    }
    settings->endGroup();
}

// The keys of the current group, with names and descriptions turned into
// string ids.
QMap<QString, QString> DatabaseTextConverter::recordValues()
{
    QMap<QString, QString> values;
    const QStringList keys = settings->childKeys();
    for (const QString& key : keys) {
        const QString text = settingText(settings->value(key));
        values.insert(key,
                      isStringPoolColumn(key) ? QString::number(objectDatabase->internString(text)) : text);
    }
    return values;
}

void DatabaseTextConverter::insertRecord(const QString& table, int line,
                                         const QMap<QString, QString>& keyValues)
{
    QStringList columns;
    QStringList values;
    for (auto it = keyValues.constBegin(); it != keyValues.constEnd(); ++it) {
        const QStringList types = queryColumn(
            QStringLiteral("SELECT type FROM PRAGMA_TABLE_INFO('%1') where name='%2'").arg(table, it.key()));
        columns << it.key();
        values << sqlValue(types.value(0), it.value());
    }
    const QString statement =
        QStringLiteral("INSERT OR REPLACE INTO %1 (%2) VALUES (%3)")
            .arg(table, columns.join(QStringLiteral(", ")), values.join(QStringLiteral(", ")));
    QSqlQuery query(sqlDatabase);
    if (!query.exec(statement))
        qDebug() << Q_FUNC_INFO << "Line:" << line << statement << "failed:" << query.lastError().text();
}

QString DatabaseTextConverter::sqlValue(const QString& declaredType, const QString& text)
{
    if (declaredType.compare(QLatin1String("text"), Qt::CaseInsensitive) == 0) {
        QString quoted = text;
        return QLatin1Char('\'') + quoted.replace(QLatin1Char('\''), QLatin1String("''")) + QLatin1Char('\'');
    }
    // An empty number in a hand-edited file means "not set".
    if (text.trimmed().isEmpty())
        return QStringLiteral("NULL");
    return text;
}

QStringList DatabaseTextConverter::queryColumn(const QString& statement)
{
    QStringList result;
    QSqlQuery query(sqlDatabase);
    if (!query.exec(statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return result;
    }
    while (query.next())
        result << query.value(0).toString();
    return result;
}
