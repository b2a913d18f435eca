#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QStringView>

// The sections and keys of a CiA 306 file (EDS or DCF), read the way files in
// the wild need it: any line end, UTF-8 or else Latin-1, keys in any case,
// blanks around "=", and a section that appears twice merged into its first
// place, the later keys winning.
//
// Names, keys and values are views into the decoded text, which the object
// keeps: a file of twenty thousand sections would otherwise cost hundreds of
// thousands of small allocations.
class EdsIniFile
{
public:
    struct Section
    {
        QStringView name;
        // In file order; a key written twice counts with its last value.
        QList<QPair<QStringView, QStringView>> entries;
        // The ";;" lines of the section without their marker.
        QList<QStringView> commentLines;

        // Keys are compared without regard to case.
        bool has(QLatin1String key) const { return find(key) != nullptr; }
        QString value(QLatin1String key) const;
        QString comment() const;
        void mergeFrom(const Section& later);

    private:
        const QStringView* find(QLatin1String key) const;
    };

    bool load(const QString& path);
    void parse(const QByteArray& data);

    // In the order of their first appearance.
    const QList<Section>& sections() const { return m_sections; }
    // The whole decoded file, for readers that need its lines as they stand.
    QStringView text() const { return m_text; }

private:
    void handleLine(QStringView line);
    void openSection(QStringView header);

    QString m_text;
    QList<Section> m_sections;
    QHash<QString, qsizetype> m_sectionByName;
    qsizetype m_current = -1;
};
