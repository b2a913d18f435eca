#pragma once

#include "generators/abstractgenerator.h"
#include "generators/sectionstream.h"

#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>

class QIODevice;

// Writes gen_pgn.c, the configuration of the J1939 stack for all lines of the
// project: the managed variables, the mapping tables of the PGNs (and of the
// CAN identifiers of raw CAN lines), the PGN tables per direction, the
// address claim, the line configurations and j1939StackInit.
//
// File order: head, managed variables, mapping definitions, transmit PGN
// tables, receive PGN tables, address claim configuration, line
// configuration, j1939StackInit. Each section writer takes the stream it
// writes to, so that gen_mp.c can put the same sections into its own file.
class PGNGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit PGNGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    // Stores the address claim PGN 60928 with the ten fields of the NAME on
    // every J1939 line, so that all generators of the run see it. The SPN
    // cache isn't updated by writes: refreshCache refills it for the lines,
    // for a caller that reads the SPNs on its own thread afterwards.
    bool declareIdentify(bool refreshCache);

    // Reads the lines and works out the managed variables; the section
    // writers only read what this finds.
    void prepare();

    void writeFileHead(SectionStream& out);
    void writeManagedVariables(SectionStream& out);
    void writeMappingDefinitions(SectionStream& out);
    void writeTransmitTables(SectionStream& out);
    void writeReceiveTables(SectionStream& out);
    void writeAddressClaimConfig(SectionStream& out);
    // False when no line carries J1939.
    bool writeLineConfig(SectionStream& out);
    void writeStackInit(SectionStream& out);

    // Key of a managed variable: line, PGN or CAN-ID, SPN or element number.
    static quint64 managedKey(quint8 line, quint32 message, quint32 signal);
    // The place of a managed variable in its array; -1 when there is none.
    int managedIndex(quint64 key) const { return m_managedIndex.value(key, -1); }
    // A managed variable as an identifier of its own, "mv_u8_3" for place 3
    // of mv_u8; empty when the signal has none.
    QString managedName(quint64 key, int dataType) const;

protected Q_SLOTS:
    void doJob() override;

protected:
    // The V4 stack keeps variable pointers apart from the mapping rows and
    // names what its core layer shares with other protocols CORE_.
    virtual bool coreForm() const { return false; }
    const StackWords* stackWords() const override;

private:
    struct PgnEntry
    {
        ObjectDataBase::PGN pgn;
        QList<ObjectDataBase::SPN> spns;
    };
    struct CanIdEntry
    {
        ObjectDataBase::CANID canId;
        QList<ObjectDataBase::DataElement> elements;
    };
    // One line as the tables see it. The PGN lists hold the PGNs of the
    // ordinary tables: safety PGNs are left out when the safety data
    // messages are on.
    struct LinePlan
    {
        quint8 line = 0;
        int type = 0;
        QList<PgnEntry> receivePgns;
        QList<PgnEntry> transmitPgns;
        QList<CanIdEntry> receiveIds;
        QList<CanIdEntry> transmitIds;
        // "l%1_" in front of table names, "_l%1" behind configuration names.
        QString prefix;
        QString suffix;
        bool j1939() const { return Line::carriesJ1939(type); }
    };
    // The managed arrays in the order they are written.
    enum ManagedArray
    {
        MvU8,
        MvI8,
        MvU16,
        MvI16,
        MvU32,
        MvI32,
        MvU64,
        ManagedArrayCount
    };
    struct ManagedElement
    {
        QString value;
        quint64 key = 0;
        quint8 line = 0;
        quint32 message = 0;
        quint32 signal = 0;
    };

    void readLine(quint8 line, int type);
    void addManagedVariables(quint8 line);
    void addManaged(ManagedArray array, const QString& value, quint8 line, quint32 message, quint32 signal);

    void writeManagedArray(SectionStream& out, ManagedArray array);
    void writePgnMapping(SectionStream& out, const LinePlan& plan, const PgnEntry& entry, bool transmit);
    void writeCanIdMapping(SectionStream& out, const LinePlan& plan, const CanIdEntry& entry, bool transmit);
    void writePointerTable(SectionStream& out, const QString& name, const QStringList& references);
    void writePgnTable(SectionStream& out, const LinePlan& plan, bool transmit);
    void writePgnRow(SectionStream& out, const LinePlan& plan, const PgnEntry& entry, bool transmit);
    void writeFdLines(SectionStream& out, const ObjectDataBase::PGN& pgn);
    void writeReturnCheck(SectionStream& out);
    void writeServiceInitValues(SectionStream& out);
    void writeAddressClaimAssignments(SectionStream& out);

    QString variableReference(quint64 key, int dataType, int implementation, const QString& varname) const;
    QString startAddress(quint8 line) const;
    QString transmitCount(const LinePlan& plan) const;
    QString receiveCount(const LinePlan& plan) const;
    bool hasAnyTransmitTable(const LinePlan& plan) const { return plan.transmitPgns.size() > 1; }

    QList<quint8> m_lines;
    QList<LinePlan> m_plans;
    bool m_safety = false;
    bool m_dynamic = false;
    bool m_canFd = false;
    bool m_staticInit = false;
    std::array<QList<ManagedElement>, ManagedArrayCount> m_managed;
    QHash<quint64, int> m_managedIndex;
    // Set for each managed array once it is written.
    std::array<bool, ManagedArrayCount> m_arrayWritten{};
};
