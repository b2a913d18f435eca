#ifndef OBJECTDATABASE_H
#define OBJECTDATABASE_H

#include "canopenlib/pdomapping.h"

#include <QAtomicInt>
#include <QHash>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QPair>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <atomic>

class QSqlQuery;

// Free key and value pairs attached to an object or sub-index; null when there are none.
using ObjectMetadata = QSharedPointer<QMap<QString, QString>>;

// One CAN line of the device, a row of table Nodes.
struct NODE_DATA_T
{
    QString name;
    QString iconpath;
    QString edspath;
    QString dcfpath;
    QString xddpath;
    quint16 tpdocnt = 0;
    quint16 rpdocnt = 0;
    QString prefix = QStringLiteral("_");
    QString outputpath = QStringLiteral("C:/");
    bool ismaster = false;
    bool issyncproducer = false;
    bool issyncconsumer = false;
    bool ishbconsumer = false;
    bool isemergencyproducer = false;
    bool isemergencyconsumer = false;
    bool ismpdosupported = false;
    bool iscanopengateway = false;
    bool allpdosstatic = false;
    bool excludegeneration = false;
    bool generatedcf = true;
    bool isbootupmanager = false;
    bool isconfigmanager = false;
    bool excludepdolinking = false;
    quint32 multilinedata = 0;
    bool lssslave = false;
};

// One object of a line's object dictionary, a row of table Objects N.
struct INDEX_DATA_T
{
    QString name = QStringLiteral("unnamed object");
    int datatype = 5;
    int objecttype = 7;
    QString description;
    int category = 1;
    QString device_class;
    int fwsupported = 0;
    ObjectMetadata metadata;
};

// One sub-index, a row of table SubObjects N.
struct SUBINDEX_DATA_T
{
    QString name = QStringLiteral("unnamed subindex");
    int datatype = 5;
    QString accesstype = QStringLiteral("ro");
    QString defaultvalue;
    QString currentvalue;
    PDOMapping pdomapping;
    QString lowlimit = QStringLiteral("0");
    QString uplimit = QStringLiteral("0");
    int size = 0;
    bool defaultineds = true;
    bool limitineds = false;
    bool refuseread = false;
    bool refusewrite = false;
    bool dcfcomponent = false;
    bool cyclicread = false;
    QString allowedaccesstypes = QStringLiteral("const,ro,rw,wo,rww,rwr");
    int implementation = 0;
    QString description;
    QString varname;
    int category = 1;
    // 0 never, 1 when defaultineds is set, 2 always
    quint8 writedefaulttoeds = 1;
    bool changedbyuser = false;
    quint16 wizardsource = 0;
    bool sharedlines = false;
    QString denotation;
    bool managedbyobn = false;
    int signalid = 0;
    bool nvstorage = false;
    ObjectMetadata metadata;
};

// The project: one SQLite file, worked on through a private working copy.
class ObjectDataBase : public QObject
{
    Q_OBJECT

public:
    // What a change notification is about. Fields not relevant to a kind stay 0.
    struct ChangeSet
    {
        enum Kind
        {
            IndexChanged = 1,
            SubIndexChanged = 2,
            IndexDeleted = 3,
            SubIndexDeleted = 4,
            NodeAdded = 6,
            NodeDeleted = 7,
            SettingChanged = 9,
            DatabaseReplaced = 14
        };
        int kind = 0;
        quint8 line = 0;
        quint16 index = 0;
        quint8 subindex = 0;
    };

    // One element of a bulk sub-index write.
    struct SubEntry
    {
        quint8 line = 0;
        quint16 index = 0;
        quint8 subindex = 0;
        SUBINDEX_DATA_T data;
    };

    explicit ObjectDataBase(QObject* parent = nullptr);
    ~ObjectDataBase() override;

    // Lifecycle
    bool createNewDataBase();
    bool openDataBase(QString path, bool convert);
    bool openTextProject(QString path);
    bool saveDatabase(QString path);
    QString lastError() const;
    QString currentProjectPath() const;
    // The connection on the working copy, for the text form converter.
    QSqlDatabase database() const;
    // Set when the stored integrity hash did not match at the last open.
    bool hashMismatch() const;

    // Write and thread control
    void setWritesRefused(bool refused);
    bool writesRefused() const;
    void setUpdatesBlocked(bool blocked);
    void setWriteNotification(bool on);
    // Threads that may run statements while updates are blocked, such as a running generator.
    void addAllowedThread();
    void removeAllowedThread();

    // String pool
    QString stringById(int id);
    int internString(QString text);
    void loadStringPool();
    void clearStringPool();

    // Lines
    bool addNode(quint8 line, NODE_DATA_T data);
    bool getNode(quint8 line, NODE_DATA_T& out);
    bool nodeExists(quint8 line);
    QList<quint8> getNodeList();
    bool deleteNode(quint8 line);
    bool setNodeSqlValue(QString column, QString value, QString line);

    // One object with the numbers of its sub-indices in ascending order.
    struct ObjectEntry
    {
        quint16 index = 0;
        INDEX_DATA_T data;
        QList<quint8> subindices;
    };

    // Objects
    bool addIndex(quint8 line, quint16 index, INDEX_DATA_T data);
    bool getIndex(quint8 line, quint16 index, INDEX_DATA_T& out);
    bool indexExists(quint8 line, quint16 index);
    QList<quint16> getIndexList(quint8 line, quint32 from, quint32 to);
    // The objects from..to in ascending order, read in two statements rather than two per object.
    QList<ObjectEntry> getObjects(quint8 line, quint32 from, quint32 to);
    bool deleteIndex(quint8 line, quint16 index, bool keepConnections);
    bool setObjectIndexSqlValue(QString table, QString index, QString column, QVariant value);

    // Sub-indices
    bool addSubIndex(quint8 line, quint16 index, quint8 subindex, SUBINDEX_DATA_T data);
    bool addSubIndices(QList<SubEntry> entries);
    bool getSubIndex(quint8 line, quint16 index, quint8 subindex, SUBINDEX_DATA_T& out);
    bool subIndexExists(quint8 line, quint16 index, quint8 subindex);
    QList<quint8> getSubIndexList(quint8 line, quint16 index);
    // Pairs of index and sub-index whose column holds the value, in ascending order.
    QList<QPair<quint16, quint8>> findSubIndices(quint8 line, QString column, QVariant value);
    bool deleteSubIndex(quint8 line, quint16 index, quint8 subindex, bool keepConnections);
    bool setSubindexSqlValue(QString table, QString index, QString subindex, QString column, QVariant value);
    bool setDefaultValue(quint8 line, quint16 index, quint8 subindex, QString value);

    // Caches
    void cacheAllSubs(unsigned char line, unsigned short index);
    void cacheSubNames(unsigned char line, unsigned short index);
    // Display name of a sub-index: the denotation when set, else the name.
    QString getSubIndexDisplayName(quint8 line, quint16 index, quint8 subindex);
    void clearSubIndexCaches();

    // Copies between projects or lines
    bool copyObjects(ObjectDataBase* source, quint8 fromLine, quint8 toLine, quint32 from, quint32 to);
    bool copyIndex(quint8 srcLine, quint16 srcIndex, quint8 destLine, quint16 destIndex);
    bool copyIndexFromDatabase(ObjectDataBase* source, quint8 srcLine, quint16 srcIndex, quint8 destLine,
                               quint16 destIndex);

    // Connections between a producer's object and a consumer's
    bool removeConsumerConnection(unsigned char line, unsigned short index, unsigned char subindex);
    bool removeAllConnections(unsigned char line, unsigned short index);

    // Settings
    QString getGeneralSetting(QString key);
    bool setGeneralSetting(QString key, QString value);
    bool hasGeneralSetting(QString key);
    QString getGeneralSettingForLine(QString key, quint8 line);
    bool setGeneralSettingForLine(QString key, QString value, quint8 line);
    // The number of the line's type (see linetypes.h): any stored number, 0 when absent.
    int lineType(quint8 line);
    bool setLineType(quint8 line, int type);

    QString getJ1939Setting(QString key);
    bool setJ1939Setting(QString key, QString value);
    QString getJ1939SettingForLine(QString key, quint8 line);

    QString getMiscSetting(QString key);
    bool setMiscSetting(QString key, QString value);
    bool hasMiscSetting(QString key);

    QString getEnergyBusSetting(QString key);
    bool setEnergyBusSetting(QString key, QString value);
    bool hasEnergyBusSetting(QString key);
    bool deleteEnergyBusSetting(QString key);
    QStringList getEnergyBusSettingKeys();

    // DescriptionSettings keys are per line by name; all operations use the current line.
    void setDescriptionLine(quint8 line);
    quint8 descriptionLine() const;
    QString getDescriptionSetting(QString key);
    bool setDescriptionSetting(QString key, QString value);
    bool hasDescriptionSetting(QString key);
    void setDefaultDescriptionSettings(quint8 line);

    // The GeneralSettings keys that hold one entry per line, in the order they are grown and trimmed.
    static const QStringList& perLineGeneralSettingKeys();

signals:
    void updateNotify(ObjectDataBase::ChangeSet modification);
    void blockStateChanged(bool blockupdates);
    void databaseWriteExecuted();

private:
    // Lifecycle and schema
    QString makeWorkingPath();
    void sendPragmas(const QString& cacheSize);
    bool createGlobalTables(QSqlQuery& query);
    void createLineTables(QSqlQuery& query, quint8 line);
    bool createUdsTable(QSqlQuery& query, quint8 line);
    static QString subObjectsTableStatement(quint8 line);
    bool openWorkingCopy(const QString& path);
    bool hasLines();
    void returnToProject(const QString& workingFile, const QString& path);
    void migrateSchema(QSqlQuery& query, const QList<quint8>& lines, int version);
    void migrateLine(QSqlQuery& query, quint8 line, int version);
    bool migrationExec(QSqlQuery& query, const QString& statement);
    bool addUniqueColumnsToSubDatabase(quint8 line, QSqlQuery& query);
    void createMissingOldTables(QSqlQuery& query);
    void repairLines(const QList<quint8>& lines);
    void repairLineType(quint8 line);
    void addDefaultUdsServices(quint8 line);
    void makeEdsPathsAbsolute();
    int storedDatabaseVersion();
    bool saveDatabaseAsSql(QString path);
    bool saveDatabaseAsText(const QString& path);
    void keepBackup(const QString& path);
    void removeScratchLines();
    void writeSaveKeys();
    QString computeFileHash();
    void verifyFileHash();
    void collectStringGarbage();
    void notify(int kind, quint8 line = 0, quint16 index = 0, quint8 subindex = 0);

    // The one choke point for statements; an empty statement runs the prepared query.
    bool exec(QSqlQuery& query, const QString& statement = QString());
    bool isAllowedThread();
    bool tableExists(const QString& table);

    // Object dictionary helpers
    QString nodeInsertStatement(quint8 line, const NODE_DATA_T& data) const;
    bool writeSubIndexRow(QSqlQuery& query, quint8 line, quint16 index, quint8 subindex,
                          const SUBINDEX_DATA_T& data);
    bool writeSubIndexStatement(QSqlQuery& query, quint8 line, quint16 index, quint8 subindex,
                                const SUBINDEX_DATA_T& data, const QString& defaultValue,
                                const QString& currentValue, int name, int description, int denotation);
    bool writeObjectMetadata(quint8 line, quint16 index, const ObjectMetadata& metadata);
    bool writeSubIndexMetadata(quint8 line, quint16 index, quint8 subindex, const ObjectMetadata& metadata);
    bool writeMetadataBlob(const QString& table, const QString& index, const QString& subindex,
                           const QByteArray& blob);
    void updateCachedSubIndex(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& data);
    void fillIndexFromRow(const QSqlQuery& query, INDEX_DATA_T& out);
    void fillSubIndexFromRow(const QSqlQuery& query, SUBINDEX_DATA_T& out);
    bool copyUdsSettings(ObjectDataBase* source, quint8 fromLine, quint8 toLine);
    bool copyIndexFrom(ObjectDataBase* source, quint8 srcLine, quint16 srcIndex, quint8 destLine,
                       quint16 destIndex);

    // Settings helpers
    QString readSetting(const QString& table, const QString& key);
    bool hasSetting(const QString& table, const QString& key);
    bool writeSetting(const QString& table, const QString& key, const QString& value, bool doubleQuotes,
                      bool skipUnchanged);
    QString descriptionKey(const QString& key) const;
    void trimPerLineSettings();
    void removeLineFromListSettings(const QString& table, quint8 line);
    void removeLineDescriptionSettings(quint8 line);

    QString m_lastError;
    QSqlDatabase m_db;
    bool m_writesRefused = false;
    std::atomic<bool> m_updatesBlocked{false};
    bool m_writeNotification = false;
    QAtomicInt m_statementsInFlight;
    QString m_currentPath;
    quint8 m_descriptionLine = 0;
    QStringList m_workingCopies;
    QHash<QString, int> m_stringIds;
    QHash<int, QString> m_strings;
    // The sub-index records of one line, found by index * 256 + sub-index. The records sit in one list
    // so that filling a line doesn't move tens of thousands of them around as a hash table grows.
    struct SubIndexCacheLine
    {
        QHash<quint32, qsizetype> positions;
        QList<SUBINDEX_DATA_T> records;
    };
    QMap<quint8, SubIndexCacheLine> m_subIndexCache;
    // The objects of a line as running generators read them, each object and its sub-index list many
    // times: filled in two statements on the first read of a generator's thread and dropped when the
    // last generator leaves. Generators never write objects, so it can't go stale while they run.
    struct ObjectReadCacheLine
    {
        QList<quint16> indices;
        QHash<quint16, INDEX_DATA_T> objects;
        QHash<quint16, QList<quint8>> subindices;
    };
    QMap<quint8, ObjectReadCacheLine> m_objectReadCache;
    // The read cache of the line when the caller is a running generator, else null.
    const ObjectReadCacheLine* objectReadCache(quint8 line);
    // Display names keyed by index * 65536 + line * 256 + sub-index.
    QHash<quint32, QString> m_subNameCache;
    bool m_hashMismatch = false;
    QMutex m_allowedThreadsMutex;
    QList<Qt::HANDLE> m_allowedThreads;
    Qt::HANDLE m_blockingThread = nullptr;

    // J1939 and raw CAN store
public:
    // A PGN or CAN identifier exists once per direction: number and direction are its identity.
    enum Direction : quint8
    {
        Invalid = 0,
        Transmit = 85,
        Receive = 119
    };

    struct PGN
    {
        QString name;
        QString desc;
        quint32 number = 0;
        quint8 edp_dp_key = 0;
        quint8 priority = 0;
        quint16 cycletime_ms = 0;
        quint16 inhibittime_ms = 0;
        // Number of SPNs of the PGN.
        quint16 mappingcount = 0;
        quint8 direction = 0;
        // A safety PGN, sent as safety data message.
        bool issafe = false;
        // Safety-relevant validation time.
        quint16 srvt_ms = 0;
        quint8 FD_TrailerFormat = 0;
        quint8 FD_AssuranceType = 0;
        quint8 FD_AssuranceDataSize = 0;
        quint8 multisourceaddress = 0;
        quint8 safetytype = 0;
        quint32 FD_DataId = 0;
    };

    struct SPN
    {
        // Rank inside the PGN.
        quint32 pos = 0;
        QString name;
        QString desc;
        QString defaultvalue = QStringLiteral("0");
        int datatype = 0;
        quint32 pgnnumber = 0;
        quint32 spnnumber = 0;
        quint8 direction = 0;
        int implementation = 2;
        QString varname;
        quint16 bitsize = 0;
        // SAE slot or data format.
        quint16 slot_df = 0;
        // First bit in the message.
        quint16 bitposition = 0;
    };

    struct CANID
    {
        QString name;
        QString desc;
        quint32 id = 0;
        quint16 cycletime_ms = 0;
        quint16 inhibittime_ms = 0;
        quint16 mappingcount = 0;
        quint8 direction = 0;
    };

    struct DataElement
    {
        quint32 pos = 0;
        QString name;
        QString desc;
        QString defaultvalue = QStringLiteral("0");
        int datatype = 0;
        quint32 canid = 0;
        quint32 number = 0;
        quint8 direction = 0;
        int implementation = 2;
        QString varname;
        quint16 bitsize = 0;
        quint16 bitpos = 0;
    };

    // PGNs; direction 0 in a list query means both directions.
    bool addPGN(unsigned char line, unsigned int number, PGN data);
    bool getPGN(quint8 line, quint32 number, quint8 direction, PGN& out);
    bool pgnExists(quint8 line, quint32 number, quint8 direction);
    QList<quint32> getPGNList(quint8 line, quint8 direction, bool excludeSafe = false);
    // "--" for an unknown PGN.
    QString getPGNName(quint8 line, quint32 number, quint8 direction);
    quint16 getPGNMappingCount(quint8 line, quint32 number, quint8 direction);
    // Removes the SPNs of the PGN too.
    bool deletePGN(quint8 line, quint32 number, quint8 direction);

    // SPNs, addressed by PGN, direction and SPN number.
    bool addSPN(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber, SPN data);
    bool getSPN(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber, SPN& out);
    bool spnExists(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber);
    QString getSPNName(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber);
    int getSPNDatatype(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber);
    bool deleteSPN(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber);
    // In the order of pos.
    QList<quint32> getSPNList(quint8 line, quint32 pgnnumber, quint8 direction);
    // Fills the SPN cache with the line, dropping what it held; writes don't update it.
    void cacheAllSPNs(quint8 line);
    void clearSPNCache();

    // Raw CAN identifiers and their data elements.
    bool addCANID(unsigned char line, unsigned int id, CANID data);
    bool getCANID(quint8 line, quint32 id, quint8 direction, CANID& out);
    bool canIdExists(quint8 line, quint32 id, quint8 direction);
    QList<quint32> getCANIDList(quint8 line, quint8 direction);
    QString getCANIDName(quint8 line, quint32 id, quint8 direction);
    bool deleteCANID(quint8 line, quint32 id, quint8 direction);
    bool addDataElement(quint8 line, quint32 canid, quint8 direction, quint32 number, DataElement data);
    bool getDataElement(quint8 line, quint32 canid, quint8 direction, quint32 number, DataElement& out);
    bool deleteDataElement(quint8 line, quint32 canid, quint8 direction, quint32 number);
    // In the order of number.
    QList<quint32> getDataElementList(quint8 line, quint32 canid, quint8 direction);
    QString getDataElementName(quint8 line, quint32 canid, quint8 direction, quint32 number);

    // Copies of the PGNs or identifiers of one direction with numbers from..to, inclusive.
    bool copyPGNs(ObjectDataBase* source, quint8 fromLine, quint8 toLine, quint32 from, quint32 to,
                  quint8 direction);
    bool copyCANIDs(ObjectDataBase* source, quint8 fromLine, quint8 toLine, quint32 from, quint32 to,
                    quint8 direction);

    // Sets mappingcount of every PGN to the number of its SPNs.
    bool repairMappingCounts();

    // UDS service table of a line, one row per service identifier.
    bool setUDSServiceActive(quint8 line, quint8 sid, bool active);
    bool setUDSServiceSessions(quint8 line, quint8 sid, QString sessions);
    bool setUDSServiceUserLevels(quint8 line, quint8 sid, QString userlevels);
    bool setUDSServiceAuthentication(quint8 line, quint8 sid, QString authentication);
    bool getUDSServiceActive(quint8 line, quint8 sid);
    QString getUDSServiceSessions(quint8 line, quint8 sid);
    QString getUDSServiceUserLevels(quint8 line, quint8 sid);
    QString getUDSServiceAuthentication(quint8 line, quint8 sid);
    // Service identifier to active flag.
    QMap<quint8, bool> getUDSServiceList(quint8 line);

private:
    struct UdsServiceRow
    {
        QString active = QStringLiteral("0");
        QString sessions;
        QString userlevels;
        QString authentication;
    };

    bool setSpnDirectionsFromPgns(quint8 line);
    bool recalculateBitPositions(quint8 line, quint8 direction);
    void recalculateDataElementBitPositions(quint8 line, quint32 canid, quint8 direction);
    void recalculateSpnBitPositions(quint8 line, quint32 pgnnumber, quint8 direction);
    // The records in list order; those that cannot be read are left out.
    QList<SPN> readSPNs(quint8 line, quint32 pgnnumber, quint8 direction);
    QList<DataElement> readDataElements(quint8 line, quint32 canid, quint8 direction);
    void addMissingPgnColumns(quint8 line);
    // The first column of the first row; invalid when there is no row.
    QVariant readFirstValue(const QString& statement);
    bool rowExists(const QString& statement);
    // The text of a name id read by the statement; "--" when there is no row.
    QString readName(const QString& statement);
    QList<quint32> readNumbers(const QString& statement);
    UdsServiceRow readUdsService(quint8 line, quint8 sid, const QString& columns);
    bool writeUdsService(quint8 line, quint8 sid, const UdsServiceRow& row);
    bool execLogged(QSqlQuery& query, const QString& statement);
    bool execStatement(const QString& statement);
    // Runs the statement and moves to its first row.
    bool readRow(QSqlQuery& query, const QString& statement);

    // The SPN cache of one line: SPN numbers per PGN and direction in pos order, and the records.
    QMap<quint8, QHash<quint64, QList<quint32>>> m_spnListCache;
    QMap<quint8, QHash<quint64, SPN>> m_spnCache;
};

Q_DECLARE_METATYPE(ObjectDataBase::ChangeSet)

#endif // OBJECTDATABASE_H
