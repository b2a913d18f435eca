#include "database/objectdatabase.h"

#include "database/databasetextconverter.h"
#include "database/linetypes.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>
#include <cstdlib>

namespace {

QAtomicInt connectionCounter;

const int currentDatabaseVersion = 107;
const int statementWaitAtDestructionMs = 5000;

// Table bodies; a new project gets them with "create table", an opened one with "create table if not exists".
const char* const stringsTable = "Strings (id integer primary key, string text)";
const char* const nodesTable =
    "Nodes (nodeId integer primary key, name text, edspath text, xddpath text, dcfpath text, tpdocnt "
    "integer, "
    "rpdocnt integer, ismaster integer, issyncproducer integer, issyncconsumer integer, ishbconsumer "
    "integer, "
    "isemergencyproducer integer, isemergencyconsumer integer, ismpdosupported integer, iscanopengateway "
    "integer, allpdosstatic integer, excludegeneration integer, generatedcf integer, prefix text, outputpath "
    "text, iconpath text, isbootupmanager integer, isconfigmanager integer, excludepdolinking integer, "
    "multilinedata integer, lssslave)";
const char* const generalSettingsTable = "GeneralSettings (item text unique, value text)";
const char* const descriptionSettingsTable = "DescriptionSettings (item text unique, value text)";
const char* const energyBusSettingsTable = "EnergyBusSettings (item text unique, value text)";
const char* const j1939SettingsTable = "J1939Settings (item text unique, value text)";
const char* const miscSettingsTable = "MiscSettings (item text unique, value text)";
const char* const connectionsTable =
    "Connections (prodnode integer, prodindex integer, prodsub integer, connode "
    "integer, conindex integer, consub integer, priority integer)";
const char* const lockedMappingsTable = "LockedMappings (node integer, pdoindex integer)";
const char* const lockedPdosTable = "LockedPDOs (node integer, pdoindex integer)";
const char* const virtualNodesTable =
    "VirtualNodes (virtualnodeid integer primary key, line integer, dbnodeid integer, name text)";
const char* const signalGroupsTable = "SignalGroups (sigid integer primary key, name text)";
const char* const signalsTable =
    "Signals (sigid integer primary key, nodeid integer, name integer, datatype integer not null, accesstype "
    "text not null, defaultvalue text, signalgroup integer, ref integer, transmittype integer, "
    "transmittrigger "
    "integer, eventtimer integer, syncvalue integer, syncstartvalue integer, routing integer)";
const char* const newGroupsTable = "Groups (name text, nodeidlist text)";
const char* const addedGroupsTable = "Groups (groupid integer primary key, name text, nodeidlist text)";

const char* const objectsTable =
    "create table if not exists Objects%1 (objectindex integer primary key, name integer, datatype integer "
    "not "
    "null, objecttype integer not null, description integer, category integer, device_class integer, "
    "fwsupported integer, metadata blob)";
const char* const subObjectsTable =
    "create table if not exists SubObjects%1 (objectindex integer not null, subindex integer not null, name "
    "integer, datatype integer not null, accesstype text not null, defaultvalue text, currentvalue text, "
    "pdomapping integer, lowlimit text, uplimit text, size integer, defaultineds integer, limitineds "
    "integer, "
    "refuseread integer, refusewrite integer, allowedaccesstypes text, implementation integer not null, "
    "varname text, description integer, category integer, writedefaulttoeds integer, cyclicread integer, "
    "dcfcomponent integer, changedbyuser integer, wizardsource integer, denotation integer, sharedlines "
    "integer, managedbyobn integer, signalid integer, nvstorage integer, metadata blob, "
    "UNIQUE(objectindex,subindex))";
const char* const pgnsTable =
    "create table if not exists PGNs%1 (number integer not null, edp_dp_key integer, priority integer, "
    "cycletime_ms integer, inhibittime_ms integer, mappingcount integer, direction integer, name integer, "
    "desc "
    "integer, issafe integer, srvt_ms integer, FD_TrailerFormat integer, FD_AssuranceType integer, "
    "FD_AssuranceDataSize integer, multisourceaddress integer, safetytype integer, FD_DataId integer)";
const char* const spnsTable =
    "create table if not exists SPNs%1 (pgnnumber integer not null, spnnumber integer not null, datatype "
    "integer, implementation integer, varname text, defaultvalue text, name integer, desc integer, pos "
    "integer, "
    "bitsize integer, direction integer, slot_df integer, bitposition integer)";
const char* const canIdsTable =
    "create table if not exists CANIDs%1 (id integer not null, cycletime_ms integer, inhibittime_ms integer, "
    "mappingcount integer, direction integer, name integer, desc integer)";
const char* const dataElementsTable =
    "create table if not exists DataElements%1 (canid integer not null, number integer not null, datatype "
    "integer, implementation integer, varname text, defaultvalue text, name integer, desc integer, pos "
    "integer, "
    "bitsize integer, direction integer, bitpos integer)";
const char* const udsSettingsTable = "create table if not exists UDSSettings%1 (sid integer not null, active "
                                     "integer, sessions text, userlevels "
                                     "text, authentication text, UNIQUE(sid))";

// Old files may lack the J1939 and raw CAN tables of line 0. The SPN table of those files spells its last
// column "bitpostion"; its rows are never read by column name, so the spelling is kept.
const char* const oldSpnsTable0 =
    "create table if not exists SPNs0 (pgnnumber integer not null, spnnumber integer not null, datatype "
    "integer, implementation integer, varname text, defaultvalue text, name integer, desc integer, pos "
    "integer, "
    "bitsize integer, direction integer, slot_df integer, bitpostion integer)";

// The services a project of the older formats gets when its line has no service table rows yet.
const QList<quint8> allSessionServices = {16, 17, 62, 34, 46, 35, 61, 20, 25, 49};
const QList<quint8> extendedSessionServices = {39, 40, 47, 52, 53, 54, 55};

bool isWriteStatement(const QString& statement)
{
    static const char* const writeVerbs[] = {"insert", "update", "delete", "replace",
                                             "create", "drop",   "alter"};
    const QStringView trimmed = QStringView(statement).trimmed();
    return std::any_of(std::begin(writeVerbs), std::end(writeVerbs), [&trimmed](const char* verb) {
        return trimmed.startsWith(QLatin1String(verb), Qt::CaseInsensitive);
    });
}

QString createStatement(const char* table, bool ifNotExists)
{
    return QLatin1String(ifNotExists ? "create table if not exists " : "create table ") +
           QLatin1String(table);
}

// A damaged file is refused before anything is written into its working copy, so that a save can never
// put a half-repaired project over the original. Besides the SQLite structure this covers the keys that
// every reader of a line relies on: the tables of the object dictionary exist for each line, and the key
// columns of all per-line tables hold integers in the range of what they stand for. The statements only
// read, before the project is in use, so they need none of the care of ObjectDataBase::exec.
// The empty text means a sound file.
QString damageOfProjectFile(const QSqlDatabase& db)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next() ||
        query.value(0).toString() != QLatin1String("ok"))
        return QCoreApplication::translate("ObjectDataBase", "The project file is damaged.");
    // A row whose key is of another type, NULL or beyond its range.
    const auto holdsBadKeys = [&query](const QString& table, const QList<QPair<QString, qint64>>& keys) {
        QStringList conditions;
        for (const auto& key : keys) {
            conditions.append(QStringLiteral("typeof(%1) <> 'integer' or %1 < 0 or %1 > %2")
                                  .arg(key.first)
                                  .arg(key.second));
        }
        return !query.exec(QStringLiteral("select 1 from %1 where %2 limit 1")
                               .arg(table, conditions.join(QLatin1String(" or ")))) ||
               query.next();
    };
    const QString badKeys = QCoreApplication::translate(
        "ObjectDataBase", "The project file holds keys that no project can hold.");
    if (holdsBadKeys(QStringLiteral("Nodes"), {{QStringLiteral("nodeId"), 0xFF}}))
        return badKeys;
    const qint64 index = 0xFFFF;
    const qint64 number = 0xFFFFFFFF;
    const QList<QPair<QString, QList<QPair<QString, qint64>>>> lineTables{
        {QStringLiteral("Objects%1"),
         {{QStringLiteral("objectindex"), index},
          {QStringLiteral("datatype"), index},
          {QStringLiteral("objecttype"), 0xFF}}},
        {QStringLiteral("SubObjects%1"),
         {{QStringLiteral("objectindex"), index},
          {QStringLiteral("subindex"), 0xFF},
          {QStringLiteral("datatype"), index},
          {QStringLiteral("implementation"), 0xFF}}},
        {QStringLiteral("PGNs%1"), {{QStringLiteral("number"), number}}},
        {QStringLiteral("SPNs%1"),
         {{QStringLiteral("pgnnumber"), number}, {QStringLiteral("spnnumber"), number}}},
        {QStringLiteral("CANIDs%1"), {{QStringLiteral("id"), number}}},
        {QStringLiteral("DataElements%1"),
         {{QStringLiteral("canid"), number}, {QStringLiteral("number"), number}}},
        {QStringLiteral("UDSSettings%1"), {{QStringLiteral("sid"), 0xFF}}},
    };
    const QStringList tables = db.tables();
    QList<int> lines;
    query.exec(QStringLiteral("select nodeId from Nodes"));
    while (query.next())
        lines.append(query.value(0).toInt());
    for (int line : std::as_const(lines)) {
        if (!tables.contains(QStringLiteral("Objects%1").arg(line), Qt::CaseInsensitive) ||
            !tables.contains(QStringLiteral("SubObjects%1").arg(line), Qt::CaseInsensitive)) {
            return QCoreApplication::translate("ObjectDataBase",
                                               "The project file lacks the object dictionary of line %1.")
                .arg(line);
        }
        for (const auto& table : lineTables) {
            const QString name = table.first.arg(line);
            if (tables.contains(name, Qt::CaseInsensitive) && holdsBadKeys(name, table.second))
                return badKeys;
        }
    }
    return QString();
}

} // namespace

ObjectDataBase::ObjectDataBase(QObject* parent) : QObject(parent)
{
    const int number = connectionCounter.fetchAndAddOrdered(1) + 1;
    m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("db%1").arg(number));
    if (m_db.lastError().isValid()) {
        qDebug() << Q_FUNC_INFO << "Db drivers: " << QSqlDatabase::drivers();
        qDebug() << Q_FUNC_INFO << "Db last error: " << m_db.lastError().text();
    }
    srand(static_cast<unsigned int>(reinterpret_cast<quintptr>(QThread::currentThreadId())));
}

ObjectDataBase::~ObjectDataBase()
{
    // Generator threads may still be inside a statement on this connection.
    QElapsedTimer waited;
    waited.start();
    while (m_statementsInFlight.loadAcquire() > 0 && waited.elapsed() < statementWaitAtDestructionMs)
        QThread::yieldCurrentThread();

    const QString connectionName = m_db.connectionName();
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(connectionName);
    for (const QString& path : std::as_const(m_workingCopies))
        QFile::remove(path);
}

QString ObjectDataBase::lastError() const
{
    return m_lastError;
}

QString ObjectDataBase::currentProjectPath() const
{
    return m_currentPath;
}

QSqlDatabase ObjectDataBase::database() const
{
    return m_db;
}

bool ObjectDataBase::hashMismatch() const
{
    return m_hashMismatch;
}

void ObjectDataBase::setWritesRefused(bool refused)
{
    m_writesRefused = refused;
}

bool ObjectDataBase::writesRefused() const
{
    return m_writesRefused;
}

void ObjectDataBase::setUpdatesBlocked(bool blocked)
{
    m_blockingThread = blocked ? QThread::currentThreadId() : nullptr;
    m_updatesBlocked = blocked;
    emit blockStateChanged(blocked);
}

void ObjectDataBase::setWriteNotification(bool on)
{
    m_writeNotification = on;
}

void ObjectDataBase::addAllowedThread()
{
    QMutexLocker locker(&m_allowedThreadsMutex);
    m_allowedThreads.append(QThread::currentThreadId());
}

void ObjectDataBase::removeAllowedThread()
{
    QMutexLocker locker(&m_allowedThreadsMutex);
    m_allowedThreads.removeOne(QThread::currentThreadId());
    if (m_allowedThreads.isEmpty())
        m_objectReadCache.clear();
}

bool ObjectDataBase::isAllowedThread()
{
    const Qt::HANDLE current = QThread::currentThreadId();
    if (current == m_blockingThread)
        return true;
    QMutexLocker locker(&m_allowedThreadsMutex);
    return m_allowedThreads.contains(current);
}

bool ObjectDataBase::exec(QSqlQuery& query, const QString& statement)
{
    if (m_updatesBlocked && !isAllowedThread()) {
        while (m_updatesBlocked)
            QCoreApplication::processEvents();
    }

    m_statementsInFlight.ref();
    const bool ok = statement.isEmpty() ? query.exec() : query.exec(statement);
    m_statementsInFlight.deref();

    if (ok && m_writeNotification && isWriteStatement(statement.isEmpty() ? query.lastQuery() : statement))
        emit databaseWriteExecuted();
    return ok;
}

void ObjectDataBase::notify(int kind, quint8 line, quint16 index, quint8 subindex)
{
    ChangeSet change;
    change.kind = kind;
    change.line = line;
    change.index = index;
    change.subindex = subindex;
    emit updateNotify(change);
}

bool ObjectDataBase::tableExists(const QString& table)
{
    QSqlQuery query(m_db);
    return exec(query, QStringLiteral("select name from sqlite_master where type='table' and name='%1'")
                           .arg(table)) &&
           query.next();
}

QString ObjectDataBase::makeWorkingPath()
{
    const QString location = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(location);
    QString path;
    do {
        const int first = rand();
        const int second = rand();
        path = location + QLatin1Char('/') + QStringLiteral("trwedatatemp_%1_%2").arg(first).arg(second);
    } while (QFile::exists(path));
    m_workingCopies.append(path);
    return path;
}

void ObjectDataBase::sendPragmas(const QString& cacheSize)
{
    const QStringList pragmas = {QStringLiteral("PRAGMA page_size = 4096"),
                                 QStringLiteral("PRAGMA cache_size = %1").arg(cacheSize),
                                 QStringLiteral("PRAGMA temp_store = MEMORY"),
                                 QStringLiteral("PRAGMA journal_mode = OFF"),
                                 QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"),
                                 QStringLiteral("PRAGMA synchronous  = OFF")};
    QSqlQuery query(m_db);
    for (const QString& pragma : pragmas) {
        if (!exec(query, pragma))
            qDebug() << Q_FUNC_INFO << pragma << query.lastError().text();
    }
}

bool ObjectDataBase::createGlobalTables(QSqlQuery& query)
{
    const QList<const char*> plainTables = {
        stringsTable,           nodesTable,         generalSettingsTable, descriptionSettingsTable,
        energyBusSettingsTable, j1939SettingsTable, miscSettingsTable,    connectionsTable,
        lockedMappingsTable,    lockedPdosTable};
    for (const char* table : plainTables) {
        if (!exec(query, createStatement(table, false)))
            return false;
    }
    const QList<QPair<const char*, const char*>> loggedTables = {{virtualNodesTable, "Create VirtualNodes"},
                                                                 {signalGroupsTable, "Create SignalGroups"},
                                                                 {signalsTable, "Create Signals"},
                                                                 {newGroupsTable, "Create Groups"}};
    for (const auto& [table, label] : loggedTables) {
        if (!exec(query, createStatement(table, false))) {
            qDebug() << Q_FUNC_INFO << label << false << query.lastError().text();
            return false;
        }
    }
    return true;
}

QString ObjectDataBase::subObjectsTableStatement(quint8 line)
{
    return QString::fromLatin1(subObjectsTable).arg(line);
}

void ObjectDataBase::createLineTables(QSqlQuery& query, quint8 line)
{
    const QList<const char*> tables = {objectsTable, subObjectsTable, pgnsTable,
                                       spnsTable,    canIdsTable,     dataElementsTable};
    for (const char* table : tables) {
        const QString statement = QString::fromLatin1(table).arg(line);
        if (!exec(query, statement))
            qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    }
}

bool ObjectDataBase::createUdsTable(QSqlQuery& query, quint8 line)
{
    const QString statement = QString::fromLatin1(udsSettingsTable).arg(line);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

bool ObjectDataBase::createNewDataBase()
{
    const QString path = makeWorkingPath();
    if (m_db.isOpen())
        m_db.close();
    m_db.setDatabaseName(path);
    const bool opened = m_db.open();
    if (!opened)
        qDebug() << Q_FUNC_INFO << "error sqlDbFile.open()" << m_db.lastError().text();

    sendPragmas(QStringLiteral("16384"));
    QSqlQuery query(m_db);
    createGlobalTables(query);
    clearStringPool();
    clearSubIndexCaches();
    clearSPNCache();
    addNode(0, NODE_DATA_T());
    notify(ChangeSet::DatabaseReplaced);

    setMiscSetting(QStringLiteral("CreateToolVersion"), QCoreApplication::applicationVersion());
    setMiscSetting(QStringLiteral("CreateToolName"), QCoreApplication::applicationName());
    setMiscSetting(QStringLiteral("DatabaseVersion"), QString::number(currentDatabaseVersion));
    return opened;
}

bool ObjectDataBase::openTextProject(QString path)
{
    m_lastError.clear();
    m_currentPath = path;
    createNewDataBase();
    DatabaseTextConverter converter;
    converter.setObjectDataBase(this);
    converter.setDatabase(m_db);
    converter.setInputFile(path);
    if (!converter.convertTextToSql()) {
        // The open goes on with an empty project; the text tells why it is empty.
        m_lastError = tr("The text project %1 holds no groups.").arg(path);
        return false;
    }
    verifyFileHash();
    notify(ChangeSet::DatabaseReplaced);
    return true;
}

bool ObjectDataBase::openWorkingCopy(const QString& path)
{
    const QString workingPath = makeWorkingPath();
    QFile source(path);
    if (source.copy(workingPath)) {
        QFile::setPermissions(workingPath, QFile::permissions(workingPath) | QFileDevice::WriteOwner |
                                               QFileDevice::WriteUser);
    } else {
        // The open below decides; an unreadable project shows up there as a file without lines.
        const QString diagnostic = QStringLiteral("Error detected: ") + QStringLiteral("\nCopy ") + path +
                                   QStringLiteral(" to ") + workingPath + source.errorString();
        qDebug() << Q_FUNC_INFO << diagnostic;
    }

    m_currentPath = path;
    if (m_db.isOpen())
        m_db.close();
    // Ids, records and SPNs of the project that was open before mean nothing in this one.
    clearStringPool();
    clearSubIndexCaches();
    clearSPNCache();
    m_db.setDatabaseName(QDir::toNativeSeparators(workingPath));
    if (!m_db.open()) {
        m_lastError = m_db.lastError().text() + QLatin1Char(' ') + path;
        return false;
    }
    return true;
}

bool ObjectDataBase::openDataBase(QString path, bool convert)
{
    Q_UNUSED(convert)
    m_lastError.clear();
    if (path.endsWith(QLatin1String("trwt"))) {
        // A text file that holds nothing still leaves an empty project open.
        openTextProject(path);
        return true;
    }
    if (path.isEmpty())
        return false;
    const QString previousWorkingFile = m_db.isOpen() ? m_db.databaseName() : QString();
    const QString previousPath = m_currentPath;
    if (!openWorkingCopy(path) || !hasLines()) {
        returnToProject(previousWorkingFile, previousPath);
        return false;
    }

    const QString damage = damageOfProjectFile(m_db);
    if (!damage.isEmpty()) {
        qDebug() << Q_FUNC_INFO << damage;
        m_lastError = damage;
        returnToProject(previousWorkingFile, previousPath);
        return false;
    }

    QSqlQuery query(m_db);
    sendPragmas(QStringLiteral("64000"));
    const int version = storedDatabaseVersion();
    QList<quint8> lines = getNodeList();
    std::sort(lines.begin(), lines.end());
    migrateSchema(query, lines, version);

    repairLines(lines);
    if (version < 100) {
        for (quint8 line : std::as_const(lines)) {
            if (getGeneralSetting(Line::typeKey(line)) == QLatin1String("2"))
                setSpnDirectionsFromPgns(line);
        }
    }
    if (m_currentPath.endsWith(QLatin1String("trwep")))
        makeEdsPathsAbsolute();
    for (quint8 line : std::as_const(lines))
        setDefaultDescriptionSettings(line);
    loadStringPool();
    if (version < 105) {
        for (quint8 line : std::as_const(lines)) {
            if (line >= Line::stackLimit)
                continue;
            recalculateBitPositions(line, Receive);
            recalculateBitPositions(line, Transmit);
        }
    }
    repairMappingCounts();
    trimPerLineSettings();
    if (!exec(query, QStringLiteral("VACUUM")))
        qDebug() << Q_FUNC_INFO << "VACUUM" << query.lastError().text();

    notify(ChangeSet::DatabaseReplaced);
    verifyFileHash();
    return true;
}

bool ObjectDataBase::hasLines()
{
    QSqlQuery query(m_db);
    return exec(query, QStringLiteral("select nodeId from nodes")) && query.next();
}

// A file that could not be opened must not cost the project that was open before it.
void ObjectDataBase::returnToProject(const QString& workingFile, const QString& path)
{
    if (workingFile.isEmpty())
        return;
    m_db.close();
    m_db.setDatabaseName(workingFile);
    if (!m_db.open()) {
        qDebug() << Q_FUNC_INFO << workingFile << m_db.lastError().text();
        return;
    }
    m_currentPath = path;
    sendPragmas(QStringLiteral("64000"));
    loadStringPool();
}

int ObjectDataBase::storedDatabaseVersion()
{
    return getMiscSetting(QStringLiteral("DatabaseVersion")).toInt();
}

void ObjectDataBase::migrateSchema(QSqlQuery& query, const QList<quint8>& lines, int version)
{
    // Tables that older files may lack. Only these creations are worth a log line in the open path.
    const QList<const char*> optionalTables = {
        generalSettingsTable, descriptionSettingsTable, virtualNodesTable,  signalGroupsTable, signalsTable,
        addedGroupsTable,     energyBusSettingsTable,   j1939SettingsTable, miscSettingsTable};
    bool miscSettingsCreated = false;
    for (const char* table : optionalTables) {
        const bool created = exec(query, createStatement(table, true));
        if (!created)
            qDebug() << Q_FUNC_INFO << "in open" << query.lastError().text();
        if (table == miscSettingsTable)
            miscSettingsCreated = created;
    }

    const QStringList subObjectColumns = {
        "writedefaulttoeds integer", "cyclicread integer",  "dcfcomponent integer", "changedbyuser integer",
        "wizardsource integer",      "sharedlines integer", "managedbyobn integer", "signalid integer",
        "nvstorage integer",         "metadata blob"};
    for (const QString& column : subObjectColumns)
        exec(query, QStringLiteral("alter table SubObjects0 add %1").arg(column));

    const QStringList nodeColumns = {"dcfpath text",
                                     "tpdocnt integer",
                                     "rpdocnt integer",
                                     "ismaster integer",
                                     "issyncproducer integer",
                                     "issyncconsumer integer",
                                     "ishbconsumer integer",
                                     "isemergencyproducer integer",
                                     "isemergencyconsumer integer",
                                     "ismpdosupported integer",
                                     "iscanopengateway integer",
                                     "allpdosstatic integer",
                                     "excludegeneration integer",
                                     "generatedcf integer",
                                     "prefix text",
                                     "outputpath text",
                                     "iconpath text",
                                     "isbootupmanager integer",
                                     "isconfigmanager integer",
                                     "excludepdolinking integer",
                                     "multilinedata integer",
                                     "lssslave integer"};
    for (const QString& column : nodeColumns)
        exec(query, QStringLiteral("alter table Nodes add %1").arg(column));

    const QStringList signalColumns = {"transmittype integer",   "transmittrigger integer",
                                       "eventtimer integer",     "syncvalue integer",
                                       "syncstartvalue integer", "routing integer"};
    for (const QString& column : signalColumns)
        exec(query, QStringLiteral("alter table Signals add %1").arg(column));

    for (quint8 line : lines)
        migrateLine(query, line, version);

    exec(query, QStringLiteral("alter table Connections add priority integer"));

    if (miscSettingsCreated)
        createMissingOldTables(query);
}

void ObjectDataBase::migrateLine(QSqlQuery& query, quint8 line, int version)
{
    const QStringList objectColumns = {"fwsupported integer", "device_class integer", "metadata blob"};
    for (const QString& column : objectColumns)
        migrationExec(query, QStringLiteral("alter table Objects%1 add %2").arg(line).arg(column));

    const QStringList subObjectColumns = {
        "writedefaulttoeds integer", "cyclicread integer",   "dcfcomponent integer",
        "changedbyuser integer",     "wizardsource integer", "denotation integer",
        "sharedlines integer",       "nvstorage integer",    "metadata blob",
        "managedbyobn integer",      "signalid integer"};
    for (const QString& column : subObjectColumns)
        migrationExec(query, QStringLiteral("alter table SubObjects%1 add %2").arg(line).arg(column));

    const QStringList spnColumns = {"pos", "bitsize", "direction", "slot_df", "bitposition"};
    for (const QString& column : spnColumns)
        migrationExec(query, QStringLiteral("alter table SPNs%1 add %2 integer").arg(line).arg(column));

    if (version < 101)
        addUniqueColumnsToSubDatabase(line, query);
    if (version < 105)
        migrationExec(query, QStringLiteral("alter table DataElements%1 add bitpos integer").arg(line));
    if (version < 107)
        exec(query, QStringLiteral("alter table UDSSettings%1 add authentication text").arg(line));

    const QStringList pgnColumns = {"issafe",
                                    "srvt_ms",
                                    "FD_TrailerFormat",
                                    "FD_AssuranceType",
                                    "FD_AssuranceDataSize",
                                    "multisourceaddress"};
    for (const QString& column : pgnColumns)
        migrationExec(query, QStringLiteral("alter table PGNs%1 add %2 integer").arg(line).arg(column));
    if (version < 106) {
        // Spelt with a capital D unlike the created column; SQLite takes both as one name.
        migrationExec(query, QStringLiteral("alter table PGNs%1 add safetytype integer").arg(line));
        migrationExec(query, QStringLiteral("alter table PGNs%1 add FD_DataID integer").arg(line));
    }
}

bool ObjectDataBase::migrationExec(QSqlQuery& query, const QString& statement)
{
    if (exec(query, statement))
        return true;
    const QString error = query.lastError().text();
    // An existing column is the normal state of a file that was opened before.
    if (!error.contains(QLatin1String("duplicate column name"), Qt::CaseInsensitive))
        qDebug() << Q_FUNC_INFO << "migration statement failed:" << statement << error;
    return false;
}

bool ObjectDataBase::addUniqueColumnsToSubDatabase(quint8 line, QSqlQuery& query)
{
    exec(query, QStringLiteral("drop table SubObjects%1_old").arg(line));
    const QStringList steps = {
        QStringLiteral("alter table SubObjects%1 rename to SubObjects%1_old").arg(line),
        subObjectsTableStatement(line),
        QStringLiteral("INSERT INTO SubObjects%1 SELECT * FROM SubObjects%1_old").arg(line),
        QStringLiteral("drop table SubObjects%1_old").arg(line)};
    for (const QString& step : steps) {
        if (!exec(query, step)) {
            qDebug() << Q_FUNC_INFO << step << query.lastError().text();
            return false;
        }
    }
    return true;
}

void ObjectDataBase::createMissingOldTables(QSqlQuery& query)
{
    const QStringList statements = {
        createStatement(connectionsTable, true),      createStatement(lockedMappingsTable, true),
        createStatement(lockedPdosTable, true),       QString::fromLatin1(pgnsTable).arg(0),
        QString::fromLatin1(oldSpnsTable0),           QString::fromLatin1(canIdsTable).arg(0),
        QString::fromLatin1(dataElementsTable).arg(0)};
    for (const QString& statement : statements)
        exec(query, statement);
}

void ObjectDataBase::repairLines(const QList<quint8>& lines)
{
    QSqlQuery query(m_db);
    for (quint8 line : lines) {
        repairLineType(line);
        createUdsTable(query, line);
        if (exec(query, QStringLiteral("select sid from UDSSettings%1").arg(line)) && !query.next())
            addDefaultUdsServices(line);
    }
}

void ObjectDataBase::repairLineType(quint8 line)
{
    const QString key = Line::typeKey(line);
    if (!getGeneralSetting(key).isEmpty())
        return;
    const QString creator = getMiscSetting(QStringLiteral("CreateToolVersion"));
    if (creator == QLatin1String("CANopen Tarnwick")) {
        setGeneralSetting(key, QStringLiteral("1"));
    } else if (creator == QLatin1String("J1939 Tarnwick")) {
        setGeneralSetting(key, QStringLiteral("2"));
    } else {
        const int objects = getIndexList(line, 4096, quint32(-1)).size();
        int pgns = 0;
        QSqlQuery query(m_db);
        if (exec(query, QStringLiteral("select number from PGNs%1").arg(line))) {
            while (query.next())
                ++pgns;
        }
        setGeneralSetting(key, objects > pgns ? QStringLiteral("1") : QStringLiteral("2"));
    }
}

void ObjectDataBase::addDefaultUdsServices(quint8 line)
{
    for (quint8 sid : allSessionServices)
        setUDSServiceActive(line, sid, true);
    for (quint8 sid : extendedSessionServices)
        setUDSServiceActive(line, sid, true);
    for (quint8 sid : allSessionServices)
        setUDSServiceSessions(line, sid, QStringLiteral("1,2,3,4"));
    for (quint8 sid : extendedSessionServices)
        setUDSServiceSessions(line, sid, QStringLiteral("2,3,4"));
}

void ObjectDataBase::makeEdsPathsAbsolute()
{
    QDir::setCurrent(QFileInfo(m_currentPath).absolutePath());
    const QList<quint8> lines = getNodeList();
    for (quint8 line : lines) {
        NODE_DATA_T node;
        if (!getNode(line, node) || node.edspath.isEmpty() || QFileInfo(node.edspath).isAbsolute())
            continue;
        node.edspath = QFileInfo(node.edspath).absoluteFilePath();
        addNode(line, node);
    }
}

QString ObjectDataBase::computeFileHash()
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    QStringList tables;
    if (exec(query, QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name"))) {
        while (query.next())
            tables.append(query.value(0).toString());
    }
    for (const QString& table : std::as_const(tables)) {
        hash.addData(table.toUtf8());
        hash.addData(QByteArrayView("\n"));
    }
    for (const QString& table : std::as_const(tables)) {
        // The hash and the log of mismatches must not change the hash they are compared with.
        const QString statement =
            table == QLatin1String("MiscSettings")
                ? QStringLiteral(
                      "SELECT * FROM \"%1\" WHERE item NOT IN ('FileHash','TamperLog') ORDER BY rowid")
                      .arg(table)
                : QStringLiteral("SELECT * FROM \"%1\" ORDER BY rowid").arg(table);
        if (!exec(query, statement))
            continue;
        const int columns = query.record().count();
        // A row goes to the hash in one piece: tens of thousands of rows in small pieces cost more in
        // calls than in hashing.
        QByteArray row;
        while (query.next()) {
            row.clear();
            for (int column = 0; column < columns; ++column) {
                row += query.value(column).toString().toUtf8();
                row += '|';
            }
            row += '\n';
            hash.addData(row);
        }
    }
    return QString::fromLatin1(hash.result().toHex());
}

void ObjectDataBase::verifyFileHash()
{
    m_hashMismatch = false;
    const QString stored = getMiscSetting(QStringLiteral("FileHash"));
    if (stored.isEmpty() || computeFileHash() == stored)
        return;

    m_hashMismatch = true;
    const QString now = QDateTime::currentDateTime().toString(Qt::ISODate);
    QString log = getMiscSetting(QStringLiteral("TamperLog"));
    if (!log.isEmpty())
        log += QLatin1Char(';');
    setMiscSetting(QStringLiteral("TamperLog"), log + now);
}

bool ObjectDataBase::saveDatabase(QString path)
{
    if (path.isEmpty())
        path = m_currentPath;
    if (path.endsWith(QLatin1String("trwt")))
        return saveDatabaseAsText(path);
    return saveDatabaseAsSql(path);
}

void ObjectDataBase::removeScratchLines()
{
    for (quint8 line : {quint8(Line::firstScratch), quint8(Line::firstScratch + 1)}) {
        if (nodeExists(line))
            deleteNode(line);
    }
}

void ObjectDataBase::writeSaveKeys()
{
    setMiscSetting(QStringLiteral("SaveToolType"), QCoreApplication::applicationName());
    setMiscSetting(QStringLiteral("SaveToolVersion"), QCoreApplication::applicationVersion());
    setMiscSetting(QStringLiteral("DatabaseVersion"), QString::number(currentDatabaseVersion));
    setMiscSetting(QStringLiteral("FileHash"), computeFileHash());
}

bool ObjectDataBase::saveDatabaseAsSql(QString path)
{
    removeScratchLines();
    collectStringGarbage();
    const QString workingFile = m_db.databaseName();
    if (path.isEmpty())
        path = m_currentPath;

    if (QFileInfo(path).completeSuffix().toLower() == QLatin1String("data")) {
        // Profile data files mark every object as coming from the profile wizard.
        QSqlQuery query(m_db);
        exec(query, QStringLiteral("update SubObjects%1 set changedbyuser=0 where changedbyuser = 1").arg(0));
        exec(query,
             QStringLiteral("update SubObjects%1 set wizardsource=454 where changedbyuser = 0").arg(0));
    }
    writeSaveKeys();
    keepBackup(path);

    // The connection stays open: the working file goes on being the live database after the copy.
    QFile input(workingFile);
    QFile output(path);
    const bool inputOpen = input.open(QIODevice::ReadOnly);
    const bool outputOpen = output.open(QIODevice::WriteOnly | QIODevice::Truncate);
    bool written = false;
    if (inputOpen && outputOpen) {
        const QByteArray content = input.readAll();
        written = output.write(content) == content.size() && output.flush();
    }
    output.close();
    if (written) {
        m_currentPath = path;
        return true;
    }
    qDebug() << Q_FUNC_INFO << "ERROR copy " << workingFile << "to " << path;
    return false;
}

// The file that is about to be replaced stays as "<file>.bak", so that a save never loses the only copy.
void ObjectDataBase::keepBackup(const QString& path)
{
    const QString backup = QStringLiteral("%1.bak").arg(path);
    QFile::remove(backup);
    QFile::rename(path, backup);
}

bool ObjectDataBase::saveDatabaseAsText(const QString& path)
{
    removeScratchLines();
    writeSaveKeys();
    // A text file that could not be read opens as an empty project; its content must survive a save.
    keepBackup(path);
    m_currentPath = path;
    DatabaseTextConverter converter;
    converter.setObjectDataBase(this);
    converter.setDatabase(m_db);
    converter.setOutputFile(path);
    converter.convertSqlToText();
    return true;
}

void ObjectDataBase::loadStringPool()
{
    clearStringPool();
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!exec(query, QStringLiteral("select id, string from Strings")))
        return;
    while (query.next()) {
        const int id = query.value(0).toInt();
        const QString text = query.value(1).toString();
        m_stringIds.insert(text, id);
        m_strings.insert(id, text);
    }
}

void ObjectDataBase::clearStringPool()
{
    m_stringIds.clear();
    m_strings.clear();
}

int ObjectDataBase::internString(QString text)
{
    const auto known = m_stringIds.constFind(text);
    if (known != m_stringIds.constEnd())
        return known.value();

    const QString original = text;
    text.replace(QLatin1Char('\''), QLatin1String("''"));
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("insert into Strings values(NULL,'%1')").arg(text)))
        qDebug() << Q_FUNC_INFO << query.lastError().text();
    if (!exec(query, QStringLiteral("select id from Strings where string = '%1'").arg(text)) || !query.next())
        return -1;
    const int id = query.value(0).toInt();
    // The key is the escaped text, so a text with a quote is found again only after the pool is reloaded.
    m_stringIds.insert(text, id);
    m_strings.insert(id, original);
    return id;
}

QString ObjectDataBase::stringById(int id)
{
    const auto known = m_strings.constFind(id);
    if (known != m_strings.constEnd())
        return known.value();

    QSqlQuery query(m_db);
    QString text;
    if (exec(query, QStringLiteral("select string from Strings where id = %1").arg(id)) && query.next())
        text = query.value(0).toString();
    m_strings.insert(id, text);
    return text;
}

void ObjectDataBase::collectStringGarbage()
{
    QSet<int> used;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    auto collect = [this, &query, &used](const QString& statement) {
        if (!exec(query, statement))
            return;
        const int columns = query.record().count();
        while (query.next()) {
            for (int column = 0; column < columns; ++column)
                used.insert(query.value(column).toInt());
        }
    };

    const QList<quint8> lines = getNodeList();
    for (quint8 line : lines) {
        collect(QStringLiteral("select name, description, device_class from Objects%1").arg(line));
        collect(QStringLiteral("select name, denotation, description from SubObjects%1").arg(line));
        for (const char* table : {"PGNs", "CANIDs", "SPNs", "DataElements"})
            collect(QStringLiteral("select name, desc from %1%2").arg(QLatin1String(table)).arg(line));
    }
    collect(QStringLiteral("select name from Signals"));

    QList<int> unused;
    if (exec(query, QStringLiteral("select id from Strings"))) {
        while (query.next()) {
            const int id = query.value(0).toInt();
            if (!used.contains(id))
                unused.append(id);
        }
    }
    m_db.transaction();
    for (int id : std::as_const(unused))
        exec(query, QStringLiteral("delete from Strings where id = %1").arg(id));
    m_db.commit();
    loadStringPool();
}
