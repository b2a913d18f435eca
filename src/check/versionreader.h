#pragma once

#include <QObject>
#include <QString>

// Reads the tool version that an installed protocol stack asks for from its
// feature info file.
class VersionReader : public QObject
{
    Q_OBJECT
public:
    explicit VersionReader(QObject* parent = nullptr);

    // Keeps the path only when the file exists.
    bool setFile(const QString& path);
    // "0.0" when the file cannot be read or names no version.
    QString requiredToolVersion() const;

private:
    QString m_filePath;
};
