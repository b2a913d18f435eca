#pragma once

#include "canopenlib/canopentypes.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QList>
#include <QString>

#include <functional>

// Fills a test project the way editing in the tool does: lines of a type,
// objects with their sub-indices, and the caches the pipeline fills before
// any generator or check runs. Every unit test builds its projects with it.
namespace projectbuilder {

// One sub-index of a test object, with the fields the generators and the
// check read. A named sub-index gives its name first; an unnamed one gives
// the data type first and is called "sub <n>".
struct Sub
{
    Sub(quint8 subindex, const QString& name, int datatype = CAN::Unsigned32,
        const QString& defaultvalue = QString(), const QString& accesstype = QStringLiteral("ro"),
        int implementation = CANopen::ManagedVariable, bool nvstorage = false);
    Sub(quint8 subindex, int datatype, const QString& defaultvalue,
        int implementation = CANopen::ManagedVariable, const QString& accesstype = QStringLiteral("ro"),
        const QString& varname = QString(), int size = 0);

    SUBINDEX_DATA_T record() const;

    quint8 subindex;
    QString name;
    int datatype;
    QString defaultvalue;
    QString accesstype;
    int implementation;
    bool nvstorage = false;
    QString varname;
    int size = 0;
};

// Line `line` of the given type; line 0 exists in a new project.
void addLine(ObjectDataBase& db, quint8 line, int type);

// A named object; a VAR without sub-indices gets sub-index 0 of its name.
void addObject(ObjectDataBase& db, quint8 line, quint16 index, const QString& name, int objectType,
               QList<Sub> subs = {});
// An object called "object <index>"; with one sub-index it takes that one's data type.
void addObject(ObjectDataBase& db, quint8 line, quint16 index, int objectType, const QList<Sub>& subs);

// Changes the fields of a stored object or sub-index that the calls above
// leave at their defaults (descriptions, limits, flags, metadata).
void changeObject(ObjectDataBase& db, quint8 line, quint16 index,
                  const std::function<void(INDEX_DATA_T&)>& change);
void changeSub(ObjectDataBase& db, quint8 line, quint16 index, quint8 subindex,
               const std::function<void(SUBINDEX_DATA_T&)>& change);

// A PGN of the line with its SPNs, each numbered by its `spnnumber`: they take
// the PGN's number and direction, and the PGN's mappingcount counts them.
// False when the store refused a record.
bool addPgn(ObjectDataBase& db, quint8 line, quint32 number, ObjectDataBase::PGN pgn,
            QList<ObjectDataBase::SPN> spns = {});
// A CAN identifier of the line with its data elements, each numbered by its
// `number`, in the same way.
bool addCanId(ObjectDataBase& db, quint8 line, quint32 id, ObjectDataBase::CANID canId,
              QList<ObjectDataBase::DataElement> elements = {});
// The signals laid out in list order: each takes the next place and starts
// at the bit behind the one before.
QList<ObjectDataBase::SPN> packed(QList<ObjectDataBase::SPN> spns);
QList<ObjectDataBase::DataElement> packed(QList<ObjectDataBase::DataElement> elements);

// Fills the sub-index, name and SPN caches of all lines and the string pool.
void cacheLines(ObjectDataBase& db);

} // namespace projectbuilder
