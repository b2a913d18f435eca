#pragma once

#include "canopenlib/canopentypes.h"
#include "database/objectdatabase.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

// Line in bits 24 to 31, index in bits 8 to 23, subindex in bits 0 to 7.
inline quint32 objectKey(quint8 line, quint16 index, quint8 subindex)
{
    return (quint32(line) << 24) | (quint32(index) << 8) | subindex;
}

// The compact array rule: the lowest subindex of the run of equal
// subindices at the end of the object, or 255 when nothing is compacted.
quint8 compactLimit(const QList<quint8>& subindices, const QList<const SUBINDEX_DATA_T*>& subs);

// Where every piece of an object dictionary lies in the C tables of the
// stack: the value slots of the sub-objects, the constant tables with their
// entries, the first description row of each object, the row counts, the
// offsets of string defaults and the static PDO mapping tables with the
// receive tables that lines share. It is worked out in one pass over the
// dictionary, before the first section is written, so that a section may
// name a slot of a table that the file only defines further down.
class ObjDictLayout
{
public:
    struct Object
    {
        quint16 index = 0;
        int objectType = 7;
        QList<quint8> subindices;
        // Parallel to subindices.
        QList<SUBINDEX_DATA_T> subs;
        // The compact array limit, 255 when the object isn't compacted.
        quint8 compactEnd = 255;
    };

    // Objects from 0x1000 upward of the lines 0 to 31 that have any, ascending.
    using Dictionary = QMap<quint8, QList<Object>>;

    struct Options
    {
        // Entry comments and table names carry the line.
        bool multiLine = false;
        // The V4 stack fills unused mapping entries with its own type word.
        bool coreForm = false;
        // The project setting limit_check: writable values with limits get limit slots.
        int limitCheck = 0;
        // Objects that hold static SRDO data, by object key; gen_srdo.c defines them.
        QSet<quint32> srdoEntries;
    };

    // A string default of an application variable inside stringDefaultValues.
    struct StringDefault
    {
        quint32 key;
        int offset;
        QByteArray bytes;
    };

    // A static PDO mapping table: a receive table that equals one of an
    // earlier line is not written; its PDO uses that one (the alias).
    struct MappingTable
    {
        quint8 line;
        int number;
        bool transmit;
        QString name;
        QString alias;
        // The count and the entries, up to the closing "\t}\n".
        QString body;
    };

    ObjDictLayout() = default;
    ObjDictLayout(const Dictionary& dictionary, const Options& options);

    // The default value of a sub-object as a number, 0 when it has none or it isn't one.
    static quint64 defaultNumber(const SUBINDEX_DATA_T* sub);
    static const QList<Object>& objectsOf(const Dictionary& dictionary, quint8 line);
    static const Object* findObject(const Dictionary& dictionary, quint8 line, quint16 index);
    static const SUBINDEX_DATA_T* findSub(const Dictionary& dictionary, quint8 line, quint16 index,
                                          quint8 subindex);
    // Positions in the object's lists of the subindices that the description section writes.
    static QList<qsizetype> describedPositions(quint8 line, const Object& object);
    // The initialiser of one value of a numeric group; REAL32 with the given precision.
    static QString valueText(int group, const QString& text, int realDigits);

    // Managed variables and application variables by their own key, the
    // latter in the table of their type.
    int varSlot(quint32 key) const { return m_varSlot.value(key); }
    int constSlot(quint32 key) const { return m_constSlot.value(key); }
    bool hasLimitSlots(quint32 key) const { return m_lowLimitSlot.contains(key); }
    int lowLimitSlot(quint32 key) const { return m_lowLimitSlot.value(key); }
    int upLimitSlot(quint32 key) const { return m_upLimitSlot.value(key); }

    // The keys of the managed variables of a numeric group, in table order.
    const QList<quint32>& managedKeys(int group) const { return m_managedKeys[group]; }
    // The entries of the constant table of a numeric group.
    const QStringList& constEntries(int group) const { return m_constEntries[group]; }
    // Constant strings and their lengths, VISIBLE_STRING with OCTET_STRING or UTF8.
    const QStringList& constStrings(bool utf8) const { return utf8 ? m_constUtf8 : m_constVis; }
    const QStringList& constStringLengths(bool utf8) const
    {
        return utf8 ? m_constUtf8Lengths : m_constVisLengths;
    }
    // The keys of the application variables of a numeric group, or of a
    // string or domain type, in table order.
    const QList<quint32>& pointerKeys(int group) const { return m_pointerKeys[group]; }
    const QList<quint32>& applicationKeys(int dataType) const;
    // Whether a table is defined, by name ("od_u8", "od_const_vis_string_len", ...).
    bool hasTable(const QString& name) const { return m_tables.contains(name); }

    int descriptionStart(quint8 line, quint16 index) const
    {
        return m_descriptionStart.value((quint32(line) << 24) | index);
    }
    int assignCount() const { return m_assignCount; }
    int descriptionCount() const { return m_descriptionCount; }
    int lineAssignCount(quint8 line) const { return m_lineAssignCounts.value(line); }
    int lineDescriptionCount(quint8 line) const { return m_lineDescriptionCounts.value(line); }
    // The first row of a line in the assign table.
    int firstAssignRow(quint8 line) const;

    // The columns of a description row: the service a sub-object belongs to
    // as the suffix of its type word ("_SYNC", "_VAR", ...), the number of
    // the object or service instance for sub-objects a service owns and else
    // the slot of the value, and its access attributes.
    QString serviceSuffix(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;
    int valueSlot(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;
    QString attributeWord(quint32 key, const SUBINDEX_DATA_T& sub, bool compactEnd) const;
    // The type word of an object in an assign table.
    static QString objectTypeWord(int objectType);

    const QList<StringDefault>& stringDefaults() const { return m_stringDefaults; }

    // The room of a mapping table, the most entries any mapping object has; 0 without any.
    int mappingEntries() const { return m_mappingEntries; }
    const QList<MappingTable>& mappingTables() const { return m_mappingTables; }
    // The table a PDO uses, by the name of its own table; empty without one.
    QString mappingTableOf(const QString& name) const { return m_mappingAliases.value(name); }

private:
    void layOutManagedVariables(const Dictionary& dictionary);
    void layOutConstants(const Dictionary& dictionary, int limitCheck);
    void layOutStringDefaults(const Dictionary& dictionary);
    void layOutApplicationVariables(const Dictionary& dictionary);
    void countRows(const Dictionary& dictionary);
    void layOutMappingTables(const Dictionary& dictionary, const Options& options);
    QString mappingBody(const Dictionary& dictionary, quint8 line, quint16 mapIndex, quint64 count,
                        bool transmit, bool coreForm) const;
    QString routingList(const Dictionary& dictionary, quint8 line, quint32 mapping) const;
    QString valuePointer(const Dictionary& dictionary, quint8 line, quint16 index, quint8 subindex) const;

    QSet<quint32> m_srdoEntries;
    QHash<quint32, int> m_varSlot;
    QHash<quint32, int> m_constSlot;
    QHash<quint32, int> m_lowLimitSlot;
    QHash<quint32, int> m_upLimitSlot;
    QList<quint32> m_managedKeys[CAN::GroupCount];
    QStringList m_constEntries[CAN::GroupCount];
    QStringList m_constVis, m_constVisLengths, m_constUtf8, m_constUtf8Lengths;
    QList<quint32> m_pointerKeys[CAN::GroupCount];
    QList<quint32> m_visStringKeys, m_utf8StringKeys, m_octetStringKeys, m_domainKeys;
    QSet<QString> m_tables;
    QHash<quint32, int> m_descriptionStart;
    int m_assignCount = 0;
    int m_descriptionCount = 0;
    QMap<quint8, int> m_lineAssignCounts;
    QHash<quint8, int> m_lineDescriptionCounts;
    QList<StringDefault> m_stringDefaults;
    int m_mappingEntries = 0;
    QList<MappingTable> m_mappingTables;
    QHash<QString, QString> m_mappingAliases;
};
