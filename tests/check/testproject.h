#pragma once

#include "common/cleanproject.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QSharedPointer>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <utility>
#include <vector>

// What one check of a project reported.
struct CheckOutcome
{
    int errors = 0;
    QStringList messages;
    bool corrected = false;

    int count(const QString& message) const { return messages.count(message); }
    QString listing() const { return messages.join(QLatin1Char('\n')); }
};

// A small project that passes the check without errors: one CANopen line with
// the mandatory objects, node-ID, buffer sizes and timer interval set.
// Tests change it into the case they need.
class TestProject
{
public:
    TestProject();

    ObjectDataBase& db() { return *m_db; }
    QSharedPointer<ObjectDataBase> database() const { return m_db; }
    QString folder() const { return m_folder.path(); }

    // Adds a line with the mandatory objects and its own entries in the per-line settings.
    void addLine(quint8 line, int type);
    void setGeneral(const QString& key, const QString& value) { m_db->setGeneralSetting(key, value); }
    // The per-user switch, applied only for the duration of run().
    void setAutoCorrection(bool on) { m_autoCorrection = on; }

    void addObject(quint16 index, int objectCode, const QString& name = QStringLiteral("object"),
                   quint8 line = 0);
    void addSub(quint16 index, quint8 subindex, const SUBINDEX_DATA_T& record, quint8 line = 0);
    void addVariable(quint16 index, int dataType, const QString& access, const QString& value,
                     quint8 line = 0);
    // An ARRAY whose sub-index 0 (const, managed const) counts the values of sub-indices 1 to n.
    void addArray(quint16 index, const QStringList& values, int dataType = 7, quint8 line = 0);
    // A VARIABLE that is an application variable and may be mapped into PDOs and SRDOs.
    void addMappable(quint16 index, int dataType, const QString& access, quint8 line = 0);
    // Communication and mapping object of a PDO; number 1 is 0x1400/0x1600 or 0x1800/0x1A00.
    void addRpdo(int number, const QString& cobId, const QStringList& entries,
                 const QString& mappingAccess = QStringLiteral("const"));
    void addTpdo(int number, const QString& cobId, const QStringList& entries,
                 const QString& mappingAccess = QStringLiteral("const"));
    SUBINDEX_DATA_T readSub(quint16 index, quint8 subindex, quint8 line = 0);
    // Reads a sub-index of line 0, lets `change` edit it and stores it back.
    void changeSub(quint16 index, quint8 subindex, const std::function<void(SUBINDEX_DATA_T&)>& change);
    void setDefault(quint16 index, quint8 subindex, const QString& value)
    {
        changeSub(index, subindex, [&value](SUBINDEX_DATA_T& r) { r.defaultvalue = value; });
    }

    // Runs the check as the pipeline drives it: cache every line, project rules, then each line by type.
    CheckOutcome run();

private:
    void addPdo(quint16 communication, quint16 mapping, const QString& cobId, const QStringList& entries,
                const QString& mappingAccess);

    QTemporaryDir m_folder;
    QSharedPointer<ObjectDataBase> m_db;
    bool m_autoCorrection = true;
};

using cleanproject::subRecord;

using ProjectSetup = std::function<void(TestProject&)>;

// A setup that only sets project-wide settings, in the given order.
ProjectSetup settings(std::vector<std::pair<QString, QString>> values);

// One rule: projects that make it fire (its message exactly once, and the
// check's whole error count as given) and near misses that must stay silent
// and free of errors.
struct RuleRow
{
    const char* rule;
    QString message;
    std::vector<ProjectSetup> fire;
    std::vector<ProjectSetup> quiet;
    int errorsWhenFired = 1;
};

void expectRules(const std::vector<RuleRow>& rows);
