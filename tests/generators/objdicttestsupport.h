#pragma once

#include "common/projectbuilder.h"
#include "database/objectdatabase.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace objdicttest {

using SubRow = projectbuilder::Sub;
using projectbuilder::addObject;

// A device with every storage class (managed, constant, application variable,
// virtual), every numeric value group including the 24, 40, 48 and 64 bit
// types, both string kinds, DOMAIN, ARRAY and RECORD objects, arrays that
// compact, static PDO mappings and the objects that start stack services.
// Application variable names carry the line ("app_u8_l1").
void addSyntheticDevice(ObjectDataBase& db, quint8 line);
// A new project with the synthetic device on line 0 and, with twoLines, on line 1.
void makeSyntheticProject(ObjectDataBase& db, bool twoLines);

struct Generated
{
    QString objdict;
    QString define;
    QString user;
    bool compiled = false;
    QString compilerOutput;
};

struct RunOptions
{
    bool core = false;
    bool compact = false;
    bool camServer = false;
    bool compile = true;
};

// Writes gen_define.h with the define generator of the same stack form, the
// declarations of the application variables and gen_objdict.c into `dir`,
// then compiles gen_objdict.c against the test declarations of the stack.
Generated generate(ObjectDataBase& db, const QString& dir, const RunOptions& options);

// "#define NAME value" of a header, by name.
QMap<QString, QString> defines(const QString& header);
// The declared sizes of the od_ tables ("od_const_u8" -> 4).
QMap<QString, int> tableSizes(const QString& source);
// The value list of a count define ("1u, 2u" -> {1, 2}).
QList<int> countList(const QString& value);

struct AssignRow
{
    quint16 index;
    int described;
    int highest;
    QString type;
    int start;
};
QList<AssignRow> assignRows(const QString& source);

struct DescriptionRow
{
    quint8 line;
    quint16 index;
    quint8 subindex;
    QString typeWord;
    QString storageWord;
    int valueSlot;
    QString attributes;
    int defaultSlot;
};
QList<DescriptionRow> descriptionRows(const QString& source);

} // namespace objdicttest
