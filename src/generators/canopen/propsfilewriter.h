#pragma once

#include <QString>
#include <QStringList>

// Writes gen_define.props and Directory.Build.props, so that a C# wrapper of
// the stack is compiled with the same conditional symbols as the stack.
class PropsFileWriter
{
public:
    // Reads the finished gen_define.h and writes both files into outputDir.
    static bool write(const QString& genDefinePath, const QString& outputDir);
    // The defined symbols that carry a value other than 0, in file order.
    static QStringList definedSymbols(const QString& genDefinePath, bool* found);

private:
    static bool writeDefineProps(const QString& path, const QStringList& symbols);
    static bool writeDirectoryBuildProps(const QString& path);
};
