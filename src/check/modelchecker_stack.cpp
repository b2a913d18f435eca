#include "check/modelchecker.h"

#include "check/versionreader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

// Generated code must fit the stack the user has installed: the stack's
// feature info file names the one tool version it was made for.
void ModelChecker::checkStackCompatibility()
{
    const QString folder = stackFolder();
    if (folder.isEmpty()) {
        report(
            tr("Info: Path to protocol stack not specified. Cannot check if generated code fits to installed "
               "stack/framework."));
        report(tr("Specify path to protocol stack at Options -> Settings."));
        return;
    }
    const QStringList files = QDir(folder).entryList({QStringLiteral("*_featureinfo_*.xml")}, QDir::Files);
    if (files.isEmpty()) {
        report(tr("Info: No *_featureinfo_*.xml file found in protocol stack folder %1. Cannot check if "
                  "generated "
                  "code fits to installed stack/framework.")
                   .arg(folder));
        return;
    }
    const QString version = toolVersionForStack();
    for (const QString& file : files) {
        VersionReader reader;
        reader.setFile(QDir(folder).filePath(file));
        const QString required = reader.requiredToolVersion().trimmed();
        if (required == version)
            continue;
        if (required == QLatin1String("0.0"))
            reportError(
                tr("<strong><font color='red'>Error: </font></strong>Version of installed stack does not "
                   "fit. It requires an older version of the tool. Cannot generate files."));
        else
            reportError(
                tr("<strong><font color='red'>Error: </font></strong>Version of installed stack does not "
                   "fit. It requires tool version %1. Cannot generate files. This is version %2.")
                    .arg(required, version));
        return;
    }
}

// A relative stack path is taken from the project folder.
QString ModelChecker::stackFolder() const
{
    if (m_stackPath.isEmpty() || !QDir::isRelativePath(m_stackPath))
        return m_stackPath;
    return QFileInfo(m_projectPath + QLatin1Char('/') + m_stackPath).canonicalFilePath();
}

// Stacks are made for a major.minor version; the patch level does not matter.
QString ModelChecker::toolVersionForStack()
{
    const QString version = QCoreApplication::applicationVersion();
    const int lastDot = version.lastIndexOf(QLatin1Char('.'));
    switch (version.count(QLatin1Char('.'))) {
    case 2:
        return version.left(lastDot);
    case 3:
        return version.left(lastDot - 2);
    default:
        return version;
    }
}
