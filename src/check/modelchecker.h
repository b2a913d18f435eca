#pragma once

#include "database/objectdatabase.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

// Decides whether a project may go to the generators. Every finding, of every
// class (error, warning, hint, info, correction), is reported as a text
// through newError, in the order of detection; the entry points return the
// number of errors. A few findings are repaired in the open project on the way.
class ModelChecker : public QObject
{
    Q_OBJECT
public:
    explicit ModelChecker(QObject* parent = nullptr);

    // Project-wide rules; binds the database and the project folder, so it comes first.
    int checkProject(QSharedPointer<ObjectDataBase> database, const QString& projectPath);
    // Object dictionary, PDO and SRDO rules of one line; corrected becomes true when the project was changed.
    int checkCANopenLine(quint8 line, QSharedPointer<ObjectDataBase> database, bool& corrected);
    int checkJ1939Line(int lineCount, quint8 line, QSharedPointer<ObjectDataBase> database,
                       const QList<quint32>& reservedPgns);
    int checkRawCANLine(quint8 line, QSharedPointer<ObjectDataBase> database);

    // The PGNs that the J1939 stack answers by itself (request, address claim, transport protocol and
    // the like), in the order the driver hands them to checkJ1939Line.
    static const QList<quint32>& stackHandledPgns();

    // The test a default value or a numeric setting must pass for its data type code.
    static bool valueConvertible(int dataType, const QString& text);
    // Sets bit 31 of the number in a COB-ID text, keeping a "$nodeid+" prefix.
    static QString markCobIdInvalid(const QString& cobId);

Q_SIGNALS:
    void newError(QString errorText);

private:
    // The structure of one line, read once per line: which objects exist and
    // which sub-indices each has. Records themselves come from the store's cache.
    struct LineObject
    {
        INDEX_DATA_T data;
        QList<quint8> subs;
    };

    // The accepted COB-ID texts of one object of the pre-defined connection set.
    struct PredefinedCobId
    {
        quint16 index;
        quint8 subindex;
        QStringList accepted;
    };

    // One key of a numeric settings table.
    struct NumericSetting
    {
        const char* key;
        int dataType;
        const char* label;
    };

    // One PDO mapping entry, bits 31..16 index, 15..8 sub-index, 7..0 length.
    struct MappingEntry
    {
        quint16 index;
        quint8 subindex;
        quint8 length;
    };

    void reportError(const QString& text);
    void report(const QString& text);

    // checkProject
    void checkUdsRoles(const QList<quint8>& lines);
    void checkStaticUdsIndication();
    void giveMigrationHints();
    void checkCommonSettings(const QList<int>& lineTypes);
    void checkNumericSettings();
    void checkNumericTable(const QList<NumericSetting>& table, bool j1939);

    // checkCANopenLine: structure and settings
    void loadLine();
    void checkValueConversion();
    void readLineSettings();
    bool readAutoCorrectionDisabled() const;
    void checkStackCompatibility();
    QString stackFolder() const;
    static QString toolVersionForStack();

    // Object dictionary rules
    QString lineEntry(const QString& key) const;
    void checkLineSettings();
    void checkMandatoryObjects();
    void checkSubIndexGaps();
    void checkStoreRestore();
    void checkIdentity();
    void checkEmcyConsumerEntries();
    void checkObjects();
    void checkObject(quint16 index);
    void checkSubIndexZero(quint16 index, const LineObject& object);
    bool mayAdjust(quint16 index, const SUBINDEX_DATA_T& sub0) const;
    static bool defaultWrittenToEds(const SUBINDEX_DATA_T& record);
    void checkSubIndex(quint16 index, quint8 subindex, int ownerCode);
    void checkLimits(quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub);
    void checkVariableNames();

    // PDO and SRDO rules
    void checkPdoMappings();
    void checkPdoMapping(quint16 index);
    void checkMappedObject(quint16 index, const MappingEntry& entry, bool transmit);
    void disableEmptyTpdo(quint16 mappingIndex, const QString& access0, quint32 entries);
    void checkPdoCommunication();
    void checkPdoTimers();
    void checkSrdos();
    void checkMappingStyle();
    void checkStaticPdoIndication();
    void checkEmcyRouting();
    void checkPredefinedConnectionSet();

    // The bits a J1939 SPN or raw CAN data element takes: its own size, or its type's when that is 0.
    static quint32 signalBits(int dataType, quint16 bitSize);
    // The bit ranges of one message used so far; add tells whether the new range overlaps one of them.
    class BitRanges
    {
    public:
        bool add(quint32 start, quint32 end);

    private:
        QList<QPair<quint32, quint32>> m_ranges;
    };

    // J1939 rules; the records of the line are read once into the state.
    struct J1939Line;
    void readJ1939Line(J1939Line& state);
    void checkJ1939Settings();
    void checkJ1939Name(const J1939Line& state);
    void checkReservedPgns(const J1939Line& state);
    void checkPgnContents(J1939Line& state);
    void checkSpnLayout(const J1939Line& state);
    void checkSpnVariableNames(const J1939Line& state);
    static QString pgnText(quint32 number);

    // Raw CAN rules
    struct RawCanLine;
    void readRawCanLine(RawCanLine& state);
    void checkIdsInBothDirections(const RawCanLine& state);
    void checkRawCanMessages(const RawCanLine& state);
    void checkElementVariableNames(const RawCanLine& state);

    // Access to the line's structure and records
    bool objectExists(quint16 index) const;
    bool subExists(quint16 index, quint8 subindex) const;
    const LineObject& object(quint16 index) const;
    QList<quint16> indicesIn(quint16 from, quint16 to) const;
    SUBINDEX_DATA_T sub(quint16 index, quint8 subindex) const;
    quint64 subValue(quint16 index, quint8 subindex) const;
    void writeSub(quint16 index, quint8 subindex, const SUBINDEX_DATA_T& record);
    static MappingEntry mappingEntry(quint32 value);
    static QString hex4(quint32 value);
    static QString hex2(quint32 value);

    quint8 m_line = 0;
    QSharedPointer<ObjectDataBase> m_database;
    int m_errorCount = 0;
    bool m_limitCheckEnabled = false;
    bool m_autoCorrectionDisabled = false;
    bool m_emcyRoutingReported = false;
    quint8 m_granularity = 8;
    QString m_projectPath;
    QList<PredefinedCobId> m_predefinedCobIds;

    bool m_canFd = false;
    int m_bitwiseMappingSetting = 0;
    quint32 m_maxPdoBits = 64;
    QString m_stackPath;
    // Mapping style of the project; it accumulates over the lines of one check.
    bool m_bitwiseMapped = false;
    bool m_dynamicallyMapped = false;
    bool m_corrected = false;
    QList<quint16> m_indices;
    QHash<quint16, LineObject> m_objects;
};
