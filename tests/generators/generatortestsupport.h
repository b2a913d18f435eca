#pragma once

#include "database/objectdatabase.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <ostream>

class AbstractGenerator;
class CoDefineGenerator;

// Failure messages show texts as text.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace generatortest {

// One sub-index of a test object.
struct Sub
{
    Sub(quint8 subindex, const QString& name, int datatype = 7, const QString& defaultvalue = QString(),
        const QString& accesstype = QStringLiteral("ro"), int implementation = 0, bool nvstorage = false)
        : subindex(subindex), name(name), datatype(datatype), defaultvalue(defaultvalue),
          accesstype(accesstype), implementation(implementation), nvstorage(nvstorage)
    {
    }

    quint8 subindex;
    QString name;
    int datatype;
    QString defaultvalue;
    QString accesstype;
    int implementation;
    bool nvstorage;
};

// Adds an object with its sub-indices; a VAR gets sub-index 0 when none is given.
void addObject(ObjectDataBase& db, quint8 line, quint16 index, const QString& name, int objectType,
               QList<Sub> subs = {});
// Adds line `line` of the given type (line 0 exists in a new project).
void addLine(ObjectDataBase& db, quint8 line, int type);
// Fills the sub-index caches of all lines, as the pipeline does before any generator.
void cacheLines(ObjectDataBase& db);

// Configures the generator as the pipeline does, runs it to its end and
// returns the file it wrote in `dir`.
QString runGenerator(AbstractGenerator& generator, ObjectDataBase& db, const QString& dir,
                     const QString& fileName, bool multiLine = false);

// The file without its first three lines, which carry the generation date.
QString withoutBanner(const QString& text);

void writeFile(const QString& path, const QString& text);
bool anyLineOfType(ObjectDataBase& db, const QList<int>& types);
// Tells the define generator about J1939 and mixed protocols as the pipeline
// does: beside J1939 any CANopen or raw CAN line makes the project mixed.
void setProtocolFlags(CoDefineGenerator& generator, ObjectDataBase& db);

// Runs gcc, or the compiler named, in `dir`; `output` gets what it printed.
bool runCompiler(const QStringList& arguments, const QString& dir, QString& output,
                 const QString& compiler = QStringLiteral("gcc"));

// Runs the C preprocessor and a syntax-only C99 compile over a translation unit
// that includes the headers of `dir` and uses each of their value defines in an
// initialiser, so that every value must be a valid C constant. A failure
// carries the compiler's output.
::testing::AssertionResult compileHeaders(const QString& dir, const QStringList& headers,
                                          const QString& prelude = QString());

} // namespace generatortest
