#pragma once

#include "common/projectbuilder.h"
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

using projectbuilder::addLine;
using projectbuilder::addObject;
using projectbuilder::addPgn;
using projectbuilder::cacheLines;
using projectbuilder::packed;

// A PGN sent every 100 ms with its SPNs packed in list order.
void addPgn(ObjectDataBase& db, quint8 line, quint32 number, quint8 direction, quint8 priority,
            QList<ObjectDataBase::SPN> spns, const QString& name = QStringLiteral("Signals"));
// An SPN; a variable name makes it the application's own variable.
ObjectDataBase::SPN spn(quint32 number, int dataType, quint16 bits, const QString& varname = QString());
using projectbuilder::Sub;
// A transmit CAN-ID of a raw CAN line with its data elements, numbered in list order.
void addCanId(ObjectDataBase& db, quint8 line, quint32 id, QList<ObjectDataBase::DataElement> elements);
// A data element; a variable name makes it the application's own variable.
ObjectDataBase::DataElement element(int dataType, quint16 bits, const QString& varname);

// Configures the generator as the pipeline does, runs it to its end and
// returns the file it wrote in `dir`.
QString runGenerator(AbstractGenerator& generator, ObjectDataBase& db, const QString& dir,
                     const QString& fileName, bool multiLine = false);

// The file without its first three lines, which carry the generation date.
QString withoutBanner(const QString& text);

void writeFile(const QString& path, const QString& text);
// With static UDS indications the run writes the V4 gen_indication.h, whose
// prototypes the indication pointers of the start-up code refer to.
void writeStaticIndicationHeader(ObjectDataBase& db, const QString& dir);
// Tells the define generator about J1939 and mixed protocols as the pipeline
// does: beside J1939 any CANopen or raw CAN line makes the project mixed.
void setProtocolFlags(CoDefineGenerator& generator, ObjectDataBase& db);

// Runs gcc, or the compiler named, in `dir`; `output` gets what it printed.
bool runCompiler(const QStringList& arguments, const QString& dir, QString& output,
                 const QString& compiler = QStringLiteral("gcc"));

// A syntax-only C99 compile of `source` in `dir` with gcc and with clang, all
// warnings as errors, against the test declarations of the stack. A failure
// carries the compiler's output.
::testing::AssertionResult compileWithBoth(const QString& dir, const QString& source,
                                           const QStringList& extraArguments = {});

// A syntax-only C99 compile of `file` in `dir` against the test declarations
// of the stack, in its V4 vocabulary for `core`.
::testing::AssertionResult compilesWithStack(const QString& dir, const QString& file, bool core,
                                             const QString& compiler);

// Runs the C preprocessor and a syntax-only C99 compile over a translation unit
// that includes the headers of `dir` and uses each of their value defines in an
// initialiser, so that every value must be a valid C constant. A failure
// carries the compiler's output.
::testing::AssertionResult compileHeaders(const QString& dir, const QStringList& headers,
                                          const QString& prelude = QString());

} // namespace generatortest
