#pragma once

#include "generators/abstractgenerator.h"
#include "generators/sectionstream.h"

#include "canopenlib/cohelper.h"
#include "database/objectdatabase.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <memory>

class CommonGeneratorHelper;

// Writes gen_objdict.c: the object dictionary of the device as C data (value
// tables, object descriptions, assign table, static PDO mapping tables) and
// the start-up code of the CANopen stack. Each section of the file has its own
// protected writer, so that the multi-protocol generator can put the same
// sections into gen_mp.c.
class ObjDictGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    // compactDescription: the project setting compact_array_description.
    // camServerMode: the reduced dictionary of a J1939 device's CAM11/CAM21 SDO server.
    explicit ObjDictGenerator(bool compactDescription = false, bool camServerMode = false,
                              QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    // Line in bits 24 to 31, index in bits 8 to 23, subindex in bits 0 to 7.
    static quint32 objectKey(quint8 line, quint16 index, quint8 subindex)
    {
        return (quint32(line) << 24) | (quint32(index) << 8) | subindex;
    }

    // The compact array rule: the lowest subindex of the run of equal
    // subindices at the end of the object, or 255 when nothing is compacted.
    static quint8 compactLimit(const QList<quint8>& subindices, const QList<const SUBINDEX_DATA_T*>& subs);

protected Q_SLOTS:
    void doJob() override;

protected:
    struct DictObject
    {
        quint16 index = 0;
        int objectType = 7;
        QList<quint8> subindices;
        // Parallel to subindices.
        QList<SUBINDEX_DATA_T> subs;
        // The compact array limit, 255 when the object isn't compacted.
        quint8 compactEnd = 255;
    };

    // A table of values in output order, with the object keys of its entries.
    struct ValueTable
    {
        QStringList entries;
        QList<quint32> keys;
    };

    // The V4 stack renames some words and extends some tables.
    virtual bool coreForm() const { return false; }
    const StackWords* stackWords() const override;

    // Reading the project, done once per run before the first section.
    void readDictionary();
    void readSrdoEntries();
    void readRunSettings();

    // Sections, in file order.
    bool prepareOutputFile();
    void writeUserHeader();
    void writeStaticIndications(SectionStream& out);
    void writeManagedVariables();
    void writeConstants();
    void writeStringDefaultValues();
    void writeApplicationVariables();
    void writeObjectDescriptions();
    void writeAssignTable();
    void writePdoMappingTables();
    void writeDataVariables();
    void writeJ1939OdInit();
    void writeStackInitSingleLine();
    void writeStackInitMultiLine();
    void writeServiceVariables();
    void writeStringDefaultFunction();

    // Pieces of the stack initialisation.
    void writeInitDeclarations(SectionStream& out, bool fileLevel);
    void writeServiceTable(SectionStream& out, const QString& indent);
    void writeCommonDeclarations(SectionStream& out);
    std::unique_ptr<CommonGeneratorHelper> commonHelper() const;
    void writeCheck(SectionStream& out, int indent = 0);
    void writeServiceInits(SectionStream& out, quint8 line, bool perLine);
    virtual void writeSdoServerInits(SectionStream& out, quint8 line, bool perLine);
    virtual void writeSdoClientInits(SectionStream& out, quint8 line, bool perLine);
    void writeLoadParameter(SectionStream& out);
    void writeNmtSingleLine(SectionStream& out);
    void writeNmtForLine(SectionStream& out, quint8 line);
    // The NMT start of the classic stack or of one line of the multi-line one.
    void writeNmtInit(SectionStream& out, bool master, bool perLine);
    void writeTopFunction(SectionStream& out);
    void writeCommonFunction(SectionStream& out);
    void writeLineDispatcher(SectionStream& out);
    void writeLineFunction(SectionStream& out, quint8 line);
    void writeFinishFunction(SectionStream& out);
    void writePdoInitCall(SectionStream& out, quint8 line, quint16 index, bool perLine);
    void writeCobIdOverwriteSingleLine(SectionStream& out);
    void writeCobIdOverwriteMultiLine(SectionStream& out);
    void writeCobIdGroup(SectionStream& out, quint8 line, quint16 from, quint16 to, const char* heading,
                         bool bothSubindices, bool perLine);

    // Pieces of the description and mapping sections.
    QString descriptionRow(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub,
                           bool compactEnd);
    QString dataTypeWord(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;
    QString serviceSuffix(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;
    QString attributeWord(quint32 key, const SUBINDEX_DATA_T& sub, bool compactEnd) const;
    int valueSlot(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;
    // The text of a pointer to the value of a sub-object, "NULL" when it doesn't exist.
    QString valuePointer(quint8 line, quint16 index, quint8 subindex) const;
    void writeMappingGroup(SectionStream& out, quint8 line, quint16 commIndex, bool transmit, int maxEntries);
    // The count and the entries of a static mapping table, up to the closing "\t}\n".
    QString mappingBody(quint8 line, quint16 mapIndex, quint64 count, bool transmit, int maxEntries) const;
    QString routingList(quint8 line, quint32 mapping) const;

    // Project facts.
    bool multiLineForm() const { return m_multiLine || m_generateML; }
    QList<quint8> dictionaryLines() const { return m_objects.keys(); }
    const QList<DictObject>& objectsOf(quint8 line) const;
    const DictObject* findObject(quint8 line, quint16 index) const;
    const SUBINDEX_DATA_T* findSub(quint8 line, quint16 index, quint8 subindex) const;
    bool has(quint8 line, quint16 index) const { return findObject(line, index) != nullptr; }
    QList<quint16> indicesIn(quint8 line, quint16 from, quint16 to) const;
    bool isSrdoEntry(quint8 line, quint16 index, quint8 subindex) const;
    bool isStaticPdo(quint8 line, quint16 commIndex) const;
    QString variableName(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;
    QString entryComment(quint8 line, quint16 index, quint8 subindex) const;
    QString lineMarker(quint8 line) const;
    int constSlotOf(quint8 line, quint16 index, quint8 subindex) const;
    // Positions in the object's lists of the subindices that the description section writes.
    QList<qsizetype> describedPositions(quint8 line, const DictObject& object) const;
    void countRows();
    bool usesOptions() const;
    bool overwritesPredefinedSet() const;

    static QString objectTypeWord(int objectType);
    static bool isNumeric(int dataType) { return COHelper::valueGroup(quint16(dataType)) != CAN::NoGroup; }

    QPointer<QFile> m_userFile;
    QHash<quint32, int> m_varSlot;
    QHash<quint32, int> m_constSlot;
    QHash<quint32, int> m_lowLimitSlot;
    QHash<quint32, int> m_upLimitSlot;
    QHash<quint32, int> m_descriptionStart;
    // Tables written, by name ("od_u8", "od_const_vis_string_len", ...).
    QSet<QString> m_writtenTables;
    // The static PDO mapping table of each PDO, by its own name; a receive
    // table that equals one of another line is replaced by that one.
    QHash<QString, QString> m_mappingTables;
    QHash<QString, QString> m_uniqueReceiveTables;
    QList<quint8> m_usedLines;
    bool m_compactDescription;
    bool m_canFd = false;
    bool m_staticSrdo = false;
    bool m_camServerMode;
    QSet<quint32> m_srdoEntries;
    int m_limitCheck = 0;
    int m_assignCount = 0;
    int m_descriptionCount = 0;
    QHash<quint8, int> m_lineAssignCounts;
    QHash<quint8, int> m_lineDescriptionCounts;
    // Offset and length in stringDefaultValues, by object key, in table order.
    QList<quint32> m_stringDefaultKeys;
    QHash<quint32, QPair<int, int>> m_stringDefaults;

private:
    // Objects from 0x1000 upward of the lines 0 to 31 that have any, ascending.
    QMap<quint8, QList<DictObject>> m_objects;
};
