#include "check/featuresetextractor.h"

#include <QDebug>
#include <QFile>

FeatureSetExtractor::FeatureSetExtractor(QObject* parent) : QObject(parent) {}

bool FeatureSetExtractor::load(const QString& path)
{
    m_document.clear();
    m_filePath = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QString message;
    int line = 0;
    int column = 0;
    if (!m_document.setContent(file.readAll(), &message, &line, &column)) {
        qDebug() << Q_FUNC_INFO << path << message << line << column;
        m_document.clear();
        return false;
    }
    return true;
}

// Only the first child counts: the element holds plain text.
QString FeatureSetExtractor::firstElementText(const QString& elementName, bool* found) const
{
    const QDomNodeList elements = m_document.elementsByTagName(elementName);
    if (found)
        *found = !elements.isEmpty();
    if (elements.isEmpty())
        return QString();
    return elements.at(0).firstChild().nodeValue();
}

QMap<QString, QString> FeatureSetExtractor::features() const
{
    QMap<QString, QString> result;
    for (QDomElement element = m_document.documentElement().firstChildElement(); !element.isNull();
         element = element.nextSiblingElement())
        result.insert(element.tagName(), element.text());
    return result;
}
