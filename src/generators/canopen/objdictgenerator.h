#pragma once

#include "generators/abstractgenerator.h"
#include "generators/canopen/objdictlayout.h"
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
// the start-up code of the CANopen stack. The layout of the tables is worked
// out once after reading the dictionary; each section of the file has its
// own writer that reads it. The multi-protocol generator puts the data
// sections, the start-up pieces and the closing sections into gen_mp.c
// through the protected interface.
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

protected Q_SLOTS:
    void doJob() override;

protected:
    using DictObject = ObjDictLayout::Object;

    // The V4 stack renames some words and extends some tables.
    virtual bool coreForm() const { return false; }
    const StackWords* stackWords() const override;

    // Reads the dictionary and the settings of the run and works out the
    // layout of the tables, once per run before the first section.
    void readProject();
    const ObjDictLayout& layout() const { return m_layout; }

    // Pieces of the file head: the user header with its include, the static
    // indication pointers and the object counts.
    void writeUserInclude(SectionStream& out);
    void writeIndicationsAndCounts(SectionStream& out);
    // The defaults of the memory specifier and the storage classes that the tables are declared with.
    void writeStorageClasses(SectionStream& out);
    // The data sections, from the managed variables to od_data_variables.
    void writeDictionaryTables();
    // The sections behind the start-up code.
    void writeClosingSections();

    // Pieces of the stack initialisation.
    void writeServiceTable(SectionStream& out, const QString& indent);
    std::unique_ptr<CommonGeneratorHelper> commonHelper() const;
    void writeCheck(SectionStream& out, int indent = 0);
    void writeServiceInits(SectionStream& out, quint8 line, bool perLine);
    virtual void writeSdoServerInits(SectionStream& out, quint8 line, bool perLine);
    virtual void writeSdoClientInits(SectionStream& out, quint8 line, bool perLine);
    void writeLoadParameter(SectionStream& out);
    // The function that ends the stack start: it starts PDO routing where the
    // device routes PDOs and is empty otherwise. The start-up files differ in
    // the line that declares the result and in the note of an empty function.
    void writeStackInitFinish(SectionStream& out, const QString& name, bool routing, const char* declaration,
                              const char* emptyNote);
    // The NMT start of the classic stack or of one line of the multi-line one.
    void writeNmtInit(SectionStream& out, bool master, bool perLine);

    // Project facts.
    bool multiLineForm() const { return m_multiLine || m_generateML; }
    QList<quint8> dictionaryLines() const { return m_objects.keys(); }
    const QList<DictObject>& objectsOf(quint8 line) const;
    const DictObject* findObject(quint8 line, quint16 index) const;
    const SUBINDEX_DATA_T* findSub(quint8 line, quint16 index, quint8 subindex) const;
    bool has(quint8 line, quint16 index) const { return findObject(line, index) != nullptr; }
    QList<quint16> indicesIn(quint8 line, quint16 from, quint16 to) const;
    QString entryComment(quint8 line, quint16 index, quint8 subindex) const;
    // The project setting limit_check: descriptions carry limit slots.
    int limitCheck() const { return m_limitCheck; }

private:
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
    void writeCommonDeclarations(SectionStream& out);
    void writeNmtSingleLine(SectionStream& out);
    void writeNmtForLine(SectionStream& out, quint8 line);
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

    QString descriptionRow(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub,
                           bool compactEnd);
    QString dataTypeWord(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;

    // The sub-object of a key of the layout, which names only sub-objects that exist.
    const SUBINDEX_DATA_T& subOf(quint32 key) const;
    QString variableName(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub) const;
    QString lineMarker(quint8 line) const;
    int constSlotOf(quint8 line, quint16 index, quint8 subindex) const;
    bool usesOptions() const;
    bool overwritesPredefinedSet() const;

    QPointer<QFile> m_userFile;
    QList<quint8> m_usedLines;
    bool m_compactDescription;
    bool m_camServerMode;
    int m_limitCheck = 0;
    bool m_canFd = false;
    bool m_staticSrdo = false;
    QSet<quint32> m_srdoEntries;
    ObjDictLayout::Dictionary m_objects;
    ObjDictLayout m_layout;
};
