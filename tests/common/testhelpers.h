#pragma once

#include <QFileInfo>
#include <QString>
#include <QStringList>

namespace testhelpers {

// Result of running the built trw binary.
struct RunResult
{
    int exitCode = -1;
    QString out;
};

// Runs the trw binary with the given arguments and working directory, with
// no standard input, and collects its standard output.
RunResult runTrw(const QStringList& args, const QString& workDir = QString(),
                 const QByteArray& stdinData = {});

// The last line of a run's output that isn't empty.
QString lastLine(const QString& out);

// Reads a whole file, empty when it does not exist.
QByteArray readFile(const QString& path);
// Writes the bytes over whatever the file held and returns its path; a file
// that can't be written fails the test.
QString writeFile(const QString& path, const QByteArray& content);

// The .trwt files of the example projects, sorted by path.
QStringList exampleProjects();

// The values of a record as text, numbers in decimal, so that two records
// compare field by field with a readable failure.
inline QString fieldText(const QString& text)
{
    return text;
}
template <typename Number> QString fieldText(Number number)
{
    return QString::number(number);
}
template <typename... Values> QStringList fieldTexts(const Values&... values)
{
    return {fieldText(values)...};
}

// Whether the corpus of real device files is where the build was told it is.
inline bool corpusAvailable()
{
    return QFileInfo(QStringLiteral(TRW_CORPUS_DIR "/eds")).isDir();
}

} // namespace testhelpers

// A clone without the corpus beside it still runs every other test.
#define TRW_SKIP_WITHOUT_CORPUS()                                                                            \
    if (!testhelpers::corpusAvailable())                                                                     \
    GTEST_SKIP() << "no device file corpus at " TRW_CORPUS_DIR
