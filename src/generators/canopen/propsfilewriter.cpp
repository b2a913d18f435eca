#include "generators/canopen/propsfilewriter.h"

#include <QDebug>
#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

bool PropsFileWriter::write(const QString& genDefinePath, const QString& outputDir)
{
    bool found = false;
    const QStringList symbols = definedSymbols(genDefinePath, &found);
    const QString directoryProps = outputDir + QStringLiteral("/Directory.Build.props");
    if (!found) {
        qDebug() << Q_FUNC_INFO
                 << "gen_define.h not found, writing Directory.Build.props only: " << genDefinePath;
        return writeDirectoryBuildProps(directoryProps);
    }
    const bool defineOk = writeDefineProps(outputDir + QStringLiteral("/gen_define.props"), symbols);
    const bool directoryOk = writeDirectoryBuildProps(directoryProps);
    return defineOk && directoryOk;
}

QStringList PropsFileWriter::definedSymbols(const QString& genDefinePath, bool* found)
{
    QStringList symbols;
    QFile file(genDefinePath);
    *found = file.open(QIODevice::ReadOnly | QIODevice::Text);
    if (!*found)
        return symbols;
    // "#  define NAME value": a macro with parameters, or one without a value
    // or with the value 0, does not become a C# symbol.
    static const QRegularExpression define(
        QStringLiteral("^#\\s*define\\s+([A-Za-z_][A-Za-z0-9_]*)(\\(?)\\s*(.*)$"));
    QTextStream in(&file);
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        const QRegularExpressionMatch m = define.match(line);
        if (!m.hasMatch() || !m.captured(2).isEmpty())
            continue;
        const QString value = m.captured(3).trimmed();
        if (value.isEmpty() || value == QLatin1String("0") || value == QLatin1String("0u"))
            continue;
        if (!symbols.contains(m.captured(1)))
            symbols << m.captured(1);
    }
    return symbols;
}

bool PropsFileWriter::writeDefineProps(const QString& path, const QStringList& symbols)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        qDebug() << Q_FUNC_INFO << "Unable to write gen_define.props to " << path;
        return false;
    }
    QTextStream out(&file);
    out << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    out << "<!-- Auto-generated from gen_define.h - do not edit. -->\n";
    out << "<!-- C# conditional-compilation symbols that make the #if in the -->\n";
    out << "<!-- generated wrapper match the compiled stack_wrapper DLL. -->\n";
    out << "<!-- Imported automatically by Directory.Build.props when present. -->\n";
    out << "<Project>\n";
    out << "  <PropertyGroup>\n";
    out << "    <DefineConstants>$(DefineConstants);" << symbols.join(QLatin1Char(';'))
        << "</DefineConstants>\n";
    out << "  </PropertyGroup>\n";
    out << "</Project>\n";
    out.flush();
    return file.error() == QFile::NoError;
}

bool PropsFileWriter::writeDirectoryBuildProps(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        qDebug() << Q_FUNC_INFO << "Unable to write Directory.Build.props to " << path;
        return false;
    }
    QTextStream out(&file);
    out << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    out << "<!-- Auto-imported by MSBuild. Pulls in the generated define -->\n";
    out << "<!-- symbols (gen_define.props) if present; no error if absent. -->\n";
    out << "<Project>\n";
    out << "  <Import Project=\"$(MSBuildThisFileDirectory)gen_define.props\"\n";
    out << "          Condition=\"Exists('$(MSBuildThisFileDirectory)gen_define.props')\" />\n";
    out << "</Project>\n";
    out.flush();
    return file.error() == QFile::NoError;
}
