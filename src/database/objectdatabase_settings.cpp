#include "database/objectdatabase.h"

#include "database/linetypes.h"

#include <QDebug>
#include <QSqlError>
#include <QSqlQuery>

#include <utility>

namespace {

const QString generalTable = QStringLiteral("GeneralSettings");
const QString j1939Table = QStringLiteral("J1939Settings");
const QString miscTable = QStringLiteral("MiscSettings");
const QString energyBusTable = QStringLiteral("EnergyBusSettings");
const QString descriptionTable = QStringLiteral("DescriptionSettings");

const QString listSeparator = QStringLiteral(",");

// Beyond the end of a per-line list the last entry counts, so a single value serves every line.
QString entryForLine(const QString& value, quint8 line)
{
    if (value.isEmpty())
        return value;
    const QStringList entries = value.split(listSeparator, Qt::KeepEmptyParts);
    return line < entries.size() ? entries.at(line) : entries.last();
}

} // namespace

const QStringList& ObjectDataBase::perLineGeneralSettingKeys()
{
    static const QStringList keys = {"nmtmaster",
                                     "co_node_id",
                                     "co_node_id_fct",
                                     "overwrite_predef",
                                     "receivebuffersize",
                                     "transmitbuffersize",
                                     "isotp_client_con",
                                     "isotp_server_con",
                                     "uds_physical_request_id",
                                     "uds_physical_response_id",
                                     "uds_functional_request_id"};
    return keys;
}

// ---- Shared table access

QString ObjectDataBase::readSetting(const QString& table, const QString& key)
{
    QSqlQuery query(m_db);
    if (exec(query, QStringLiteral("select value from %1 where item = '%2'").arg(table, key)) && query.next())
        return query.value(0).toString();
    return QString();
}

bool ObjectDataBase::hasSetting(const QString& table, const QString& key)
{
    QSqlQuery query(m_db);
    return exec(query, QStringLiteral("select value from %1 where item = '%2'").arg(table, key)) &&
           query.next();
}

bool ObjectDataBase::writeSetting(const QString& table, const QString& key, const QString& value,
                                  bool doubleQuotes, bool skipUnchanged)
{
    QSqlQuery query(m_db);
    const bool exists =
        exec(query, QStringLiteral("select value from %1 where item = '%2'").arg(table, key)) && query.next();
    if (exists && skipUnchanged && query.value(0).toString() == value)
        return true;

    QString stored = value;
    if (doubleQuotes)
        stored.replace(QLatin1Char('\''), QLatin1String("''"));
    const QString statement =
        exists ? QStringLiteral("update %0 set value = '%2' where item = '%1'").arg(table, key, stored)
               : QStringLiteral("insert into %0 values('%1','%2')").arg(table, key, stored);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    notify(ChangeSet::SettingChanged);
    return true;
}

// ---- GeneralSettings

QString ObjectDataBase::getGeneralSetting(QString key)
{
    return readSetting(generalTable, key);
}

bool ObjectDataBase::setGeneralSetting(QString key, QString value)
{
    return writeSetting(generalTable, key, value, false, true);
}

int ObjectDataBase::lineType(quint8 line)
{
    return getGeneralSetting(Line::typeKey(line)).toInt();
}

bool ObjectDataBase::setLineType(quint8 line, int type)
{
    return setGeneralSetting(Line::typeKey(line), QString::number(type));
}

bool ObjectDataBase::hasGeneralSetting(QString key)
{
    return hasSetting(generalTable, key);
}

QString ObjectDataBase::getGeneralSettingForLine(QString key, quint8 line)
{
    return entryForLine(getGeneralSetting(key), line);
}

bool ObjectDataBase::setGeneralSettingForLine(QString key, QString value, quint8 line)
{
    const QString stored = getGeneralSetting(key);
    QStringList entries;
    if (!stored.isEmpty())
        entries = stored.split(listSeparator, Qt::KeepEmptyParts);
    while (entries.size() <= line)
        entries.append(QStringLiteral(" "));
    entries[line] = value;
    return setGeneralSetting(key, entries.join(listSeparator));
}

// ---- J1939Settings

QString ObjectDataBase::getJ1939Setting(QString key)
{
    return readSetting(j1939Table, key);
}

bool ObjectDataBase::setJ1939Setting(QString key, QString value)
{
    return writeSetting(j1939Table, key, value, true, true);
}

QString ObjectDataBase::getJ1939SettingForLine(QString key, quint8 line)
{
    return entryForLine(getJ1939Setting(key), line);
}

// ---- MiscSettings

QString ObjectDataBase::getMiscSetting(QString key)
{
    return readSetting(miscTable, key);
}

bool ObjectDataBase::setMiscSetting(QString key, QString value)
{
    if (m_writesRefused)
        return false;
    return writeSetting(miscTable, key, value, true, true);
}

bool ObjectDataBase::hasMiscSetting(QString key)
{
    return hasSetting(miscTable, key);
}

// ---- EnergyBusSettings

QString ObjectDataBase::getEnergyBusSetting(QString key)
{
    return readSetting(energyBusTable, key);
}

bool ObjectDataBase::setEnergyBusSetting(QString key, QString value)
{
    return writeSetting(energyBusTable, key, value, false, true);
}

bool ObjectDataBase::hasEnergyBusSetting(QString key)
{
    return hasSetting(energyBusTable, key);
}

bool ObjectDataBase::deleteEnergyBusSetting(QString key)
{
    QSqlQuery query(m_db);
    const QString statement = QStringLiteral("delete from EnergyBusSettings where item = '%1'").arg(key);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

QStringList ObjectDataBase::getEnergyBusSettingKeys()
{
    QStringList keys;
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("select item from EnergyBusSettings")))
        return keys;
    while (query.next())
        keys.append(query.value(0).toString());
    return keys;
}

// ---- DescriptionSettings

void ObjectDataBase::setDescriptionLine(quint8 line)
{
    m_descriptionLine = line;
}

quint8 ObjectDataBase::descriptionLine() const
{
    return m_descriptionLine;
}

QString ObjectDataBase::descriptionKey(const QString& key) const
{
    return m_descriptionLine == 0 ? key : QStringLiteral("%1_%2").arg(key).arg(m_descriptionLine);
}

QString ObjectDataBase::getDescriptionSetting(QString key)
{
    return readSetting(descriptionTable, descriptionKey(key));
}

bool ObjectDataBase::setDescriptionSetting(QString key, QString value)
{
    return writeSetting(descriptionTable, descriptionKey(key), value, true, false);
}

bool ObjectDataBase::hasDescriptionSetting(QString key)
{
    return hasSetting(descriptionTable, descriptionKey(key));
}

void ObjectDataBase::setDefaultDescriptionSettings(quint8 line)
{
    static const QList<std::pair<QString, QString>> defaults = {
        {"BaudRate_10", "0"},  {"BaudRate_20", "0"},  {"BaudRate_50", "0"},      {"BaudRate_125", "1"},
        {"BaudRate_250", "1"}, {"BaudRate_500", "0"}, {"BaudRate_800", "0"},     {"BaudRate_1000", "0"},
        {"Dummy0001", "0"},    {"Dummy0002", "0"},    {"Dummy0003", "0"},        {"Dummy0004", "0"},
        {"Dummy0005", "0"},    {"Dummy0006", "0"},    {"Dummy0007", "0"},        {"LSS_Supported", "0"},
        {"SelfStarting", "0"}, {"VendorName", ""},    {"ProductName", ""},       {"CreatedBy", ""},
        {"ModifiedBy", ""},    {"FileVersion", "1"},  {"FileRevision", "1"},     {"OrderCode", "0815-BUY-ME"},
        {"Granularity", "0"},  {"Comment", ""},       {"AdditionalSections", ""}};

    setDescriptionLine(line);
    for (const auto& [key, value] : defaults) {
        if (!hasDescriptionSetting(key))
            setDescriptionSetting(key, value);
    }
}

// ---- Lines coming and going

void ObjectDataBase::trimPerLineSettings()
{
    const QList<quint8> lines = getNodeList();
    if (lines.isEmpty())
        return;
    const int lastLine = *std::max_element(lines.begin(), lines.end());
    for (const QString& key : perLineGeneralSettingKeys()) {
        const QString value = getGeneralSetting(key);
        if (value.isEmpty())
            continue;
        const QStringList entries = value.split(listSeparator, Qt::KeepEmptyParts);
        setGeneralSetting(key, entries.mid(0, lastLine + 1).join(listSeparator));
    }
}

void ObjectDataBase::removeLineFromListSettings(const QString& table, quint8 line)
{
    // Every comma list loses the line's entry, whether or not the key is per line; that is how the
    // project format has always behaved for free texts with commas too.
    QList<std::pair<QString, QString>> rows;
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("select item, value from %1").arg(table)))
        return;
    while (query.next())
        rows.append({query.value(0).toString(), query.value(1).toString()});

    const QString typeKey = Line::typeKey(line);
    for (const auto& [key, value] : std::as_const(rows)) {
        if (key.contains(typeKey)) {
            exec(query, QStringLiteral("DELETE FROM %1 WHERE item = '%2'").arg(table, key));
            continue;
        }
        QStringList entries = value.split(listSeparator, Qt::KeepEmptyParts);
        if (entries.size() <= line)
            continue;
        entries.removeAt(line);
        exec(query, QStringLiteral("update %0 SET value = '%1' WHERE item = '%2'")
                        .arg(table, entries.join(listSeparator), key));
    }
}

void ObjectDataBase::removeLineDescriptionSettings(quint8 line)
{
    QStringList keys;
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("SELECT item FROM DescriptionSettings")))
        return;
    while (query.next())
        keys.append(query.value(0).toString());

    const QString suffix = QStringLiteral("_%1").arg(line);
    for (const QString& key : std::as_const(keys)) {
        if (key.endsWith(suffix))
            exec(query, QStringLiteral("DELETE FROM DescriptionSettings WHERE item = '%1'").arg(key));
    }
}
