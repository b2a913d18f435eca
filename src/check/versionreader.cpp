#include "check/versionreader.h"

#include "check/featuresetextractor.h"

#include <QFileInfo>

VersionReader::VersionReader(QObject* parent) : QObject(parent) {}

bool VersionReader::setFile(const QString& path)
{
    if (!QFileInfo::exists(path))
        return false;
    m_filePath = path;
    return true;
}

QString VersionReader::requiredToolVersion() const
{
    FeatureSetExtractor extractor;
    if (!extractor.load(m_filePath))
        return QStringLiteral("0.0");
    bool found = false;
    const QString version = extractor.firstElementText(QStringLiteral("required_tool_version"), &found);
    return found ? version : QStringLiteral("0.0");
}
