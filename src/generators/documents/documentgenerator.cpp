#include "generators/documents/documentgenerator.h"

#include "database/objectdatabase.h"

#include <QDate>
#include <QDebug>
#include <QTextStream>

DocumentGenerator::DocumentGenerator(QObject* parent) : AbstractGenerator(parent) {}

bool DocumentGenerator::canWrite()
{
    return fileWritable(QStringLiteral("%1/%2").arg(m_outputDir, checkedFileName()));
}

AbstractGenerator::GeneratorStatus DocumentGenerator::start()
{
    return startWorker(documentName());
}

AbstractGenerator::GeneratorStatus DocumentGenerator::setNameSuffix(const QString& suffix)
{
    if (m_running)
        return Busy;
    m_nameSuffix = suffix;
    return Ok;
}

QString DocumentGenerator::checkedFileName() const
{
    return outputFileName();
}

// A file that can't be opened is no failure of its own: the caller's
// writability check guards against it, and the run ends at once.
void DocumentGenerator::doJob()
{
    if (m_database)
        m_database->setDescriptionLine(m_line);
    beginJob();
    m_areasEntered = 0;
    if (m_database && openOutputFile(outputFileName())) {
        QTextStream out(m_file);
        writeDocument(out);
    }
    finishJob();
}

bool DocumentGenerator::aborted() const
{
    if (!m_cancelRequested)
        return false;
    qDebug() << Q_FUNC_INFO << "Generation aborted";
    return true;
}

QString DocumentGenerator::perLineName(const QString& ending, const QString& lineEnding) const
{
    if (m_multiLine)
        return QStringLiteral("%1_%2%3").arg(m_deviceName).arg(m_line).arg(lineEnding);
    return m_deviceName + ending;
}

QList<quint16> DocumentGenerator::objectIndices() const
{
    return m_database->getIndexList(m_line, 0x1000, 0xFFFF);
}

QString DocumentGenerator::descriptionSetting(const QString& key) const
{
    return m_database->getDescriptionSetting(key);
}

int DocumentGenerator::areaBordersPassed(quint16 index)
{
    const int area = index >= 0x6000 ? 2 : (index >= 0x2000 ? 1 : 0);
    const int passed = qMax(0, area - m_areasEntered);
    m_areasEntered = qMax(m_areasEntered, area);
    return passed;
}

void DocumentGenerator::writeObjects(
    QTextStream& out, QLatin1StringView border,
    const std::function<void(quint16 index, const INDEX_DATA_T& object)>& writeObject)
{
    const QList<quint16> indices = objectIndices();
    for (quint16 index : indices) {
        if (aborted())
            break;
        for (int passed = areaBordersPassed(index); passed > 0; --passed)
            out << border;
        INDEX_DATA_T object;
        m_database->getIndex(m_line, index, object);
        writeObject(index, object);
    }
}

QString DocumentGenerator::hex(quint32 value, int digits)
{
    return QString::number(value, 16).rightJustified(digits, QLatin1Char('0'));
}

QString DocumentGenerator::textDate()
{
    return QDate::currentDate().toString(Qt::TextDate);
}
