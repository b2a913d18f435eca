#pragma once

#include <QDomDocument>
#include <QMap>
#include <QObject>
#include <QString>

// Reads a stack feature info file ("*_featureinfo_*.xml"): an XML document
// whose elements name the features the installed stack was built with and the
// tool version it requires.
class FeatureSetExtractor : public QObject
{
    Q_OBJECT
public:
    explicit FeatureSetExtractor(QObject* parent = nullptr);

    // False when the file cannot be opened or is not well-formed XML.
    bool load(const QString& path);
    QString filePath() const { return m_filePath; }

    // The text of the first element with this name; found tells whether there was one.
    QString firstElementText(const QString& elementName, bool* found = nullptr) const;
    // Each child element of the document element with its text, by element name.
    QMap<QString, QString> features() const;

private:
    QDomDocument m_document;
    QString m_filePath;
};
