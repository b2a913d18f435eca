#include "canopenlib/edsinifile.h"

#include "canopenlib/helper.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr qint64 maximumFileSize = 64 * 1024 * 1024;

} // namespace

const QStringView* EdsIniFile::Section::find(QLatin1String key) const
{
    for (auto it = entries.crbegin(); it != entries.crend(); ++it) {
        if (it->first.compare(key, Qt::CaseInsensitive) == 0)
            return &it->second;
    }
    return nullptr;
}

QString EdsIniFile::Section::value(QLatin1String key) const
{
    const QStringView* found = find(key);
    return found ? found->toString() : QString();
}

QString EdsIniFile::Section::comment() const
{
    QString text;
    for (qsizetype i = 0; i < commentLines.size(); ++i) {
        if (i > 0)
            text += QLatin1Char('\n');
        text += commentLines.at(i);
    }
    return text;
}

void EdsIniFile::Section::mergeFrom(const Section& later)
{
    entries += later.entries;
    commentLines += later.commentLines;
}

bool EdsIniFile::load(const QString& path)
{
    // A device, a pipe or a file far above any real device description would
    // hang the reader or fill memory.
    const QFileInfo info(path);
    if (!info.isFile() || info.size() > maximumFileSize) {
        qDebug() << Q_FUNC_INFO << "not a readable description file:" << path;
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << Q_FUNC_INFO << "cannot open" << path << file.errorString();
        return false;
    }
    parse(file.readAll());
    return true;
}

void EdsIniFile::parse(const QByteArray& data)
{
    m_sections.clear();
    m_sectionByName.clear();
    m_current = -1;
    m_text = Helper::decodeText(data);

    const QStringView text(m_text);
    qsizetype pos = 0;
    while (pos < text.size()) {
        qsizetype end = pos;
        while (end < text.size() && text[end] != QLatin1Char('\n') && text[end] != QLatin1Char('\r'))
            ++end;
        handleLine(text.mid(pos, end - pos).trimmed());
        pos = end + 1;
    }
}

void EdsIniFile::handleLine(QStringView line)
{
    if (line.isEmpty())
        return;
    if (line.startsWith(QLatin1Char(';'))) {
        if (line.startsWith(QLatin1String(";;")) && m_current >= 0)
            m_sections[m_current].commentLines.append(line.mid(2));
        return;
    }
    if (line.startsWith(QLatin1Char('['))) {
        openSection(line.mid(1));
        return;
    }
    const qsizetype equals = line.indexOf(QLatin1Char('='));
    if (equals <= 0 || m_current < 0)
        return;
    m_sections[m_current].entries.append({line.left(equals).trimmed(), line.mid(equals + 1).trimmed()});
}

void EdsIniFile::openSection(QStringView header)
{
    const qsizetype close = header.indexOf(QLatin1Char(']'));
    const QStringView name = (close < 0 ? header : header.left(close)).trimmed();
    if (name.isEmpty()) {
        m_current = -1;
        return;
    }
    const QString key = name.toString().toLower();
    const auto known = m_sectionByName.constFind(key);
    if (known != m_sectionByName.constEnd()) {
        m_current = known.value();
        return;
    }
    Section section;
    section.name = name;
    m_current = m_sections.size();
    m_sections.append(section);
    m_sectionByName.insert(key, m_current);
}
