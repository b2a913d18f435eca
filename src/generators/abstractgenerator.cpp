#include "generators/abstractgenerator.h"

#include "canopenlib/cohelper.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QMetaObject>
#include <QSettings>
#include <QStringList>

AbstractGenerator::AbstractGenerator(QObject* parent)
    : QObject(parent), m_version(QCoreApplication::applicationVersion()), m_file(new QFile(this))
{
}

AbstractGenerator::~AbstractGenerator() = default;

AbstractGenerator::GeneratorStatus AbstractGenerator::stop()
{
    if (!m_running)
        return NotRunning;
    m_cancelRequested = true;
    return Ok;
}

QString AbstractGenerator::resultInfo()
{
    return QString();
}

AbstractGenerator::GeneratorStatus AbstractGenerator::setOutputDir(const QString& dir)
{
    if (m_running)
        return Busy;
    m_outputDir = dir;
    const QFileInfo info(dir);
    if (!info.exists())
        return OutputDirMissing;
    if (!info.isReadable())
        return OutputDirUnreadable;
    return Ok;
}

AbstractGenerator::GeneratorStatus AbstractGenerator::setDatabase(ObjectDataBase* database)
{
    if (m_running)
        return Busy;
    if (!database)
        return NoDatabase;
    m_database = database;
    return database->getNodeList().isEmpty() ? NoDatabase : Ok;
}

AbstractGenerator::GeneratorStatus AbstractGenerator::setLine(quint8 line)
{
    if (m_running)
        return Busy;
    m_line = line;
    if (m_database && !m_database->nodeExists(line))
        return NoSuchLine;
    return Ok;
}

AbstractGenerator::GeneratorStatus AbstractGenerator::setDeviceName(const QString& name)
{
    if (m_running)
        return Busy;
    m_deviceName = name;
    return Ok;
}

AbstractGenerator::GeneratorStatus AbstractGenerator::setMultiLine(bool multiLine)
{
    if (m_running)
        return Busy;
    m_multiLine = multiLine;
    return Ok;
}

// Progress arrives as queued signals; they are served here so that the
// pipeline sees them before it deletes the generator.
void AbstractGenerator::waitUntilDone()
{
    if (!m_workerThread)
        return;
    // Sleeps until an event comes, and the thread's end posts one, so that the wait takes no core from
    // the worker. A nested event loop would not do: once the application is told to exit, as the MCP
    // server is at the end of its input, it returns at once while the generator still runs.
    QObject waker;
    connect(m_workerThread, &QThread::finished, &waker, [] {});
    while (!m_workerThread->isFinished())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents();
}

bool AbstractGenerator::fileWritable(const QString& path)
{
    const QFileInfo info(path);
    return !info.exists() || info.isWritable();
}

QString AbstractGenerator::formatWideInteger(int dataType, quint64 unsignedValue, qint64 signedValue)
{
    const QString macro = COHelper::wideIntegerMacro(quint16(dataType));
    if (macro.isEmpty())
        return QString();
    const quint64 value =
        COHelper::signedness(quint16(dataType)) == CAN::SignedInteger ? quint64(signedValue) : unsignedValue;
    static const char digits[] = "0123456789abcdef";
    QString text = macro + QLatin1Char('(');
    for (int i = COHelper::getDataLengthBits(CAN::CANopenDataType(dataType)) / 8 - 1; i >= 0; --i) {
        const quint8 byte = quint8(value >> (8 * i));
        text += QLatin1String("0x");
        text += QLatin1Char(digits[byte >> 4]);
        text += QLatin1Char(digits[byte & 0xF]);
        if (i > 0)
            text += QLatin1Char(',');
    }
    return text + QLatin1Char(')');
}

AbstractGenerator::GeneratorStatus AbstractGenerator::startWorker(const QString& objectName)
{
    if (m_running)
        return Busy;
    setObjectName(objectName);
    // Set ahead of the queued call: a short job may end before this thread
    // gets to run again, and its end must not be overwritten.
    m_running = true;
    m_workerThread = new QThread(this);
    moveToThread(m_workerThread);
    m_workerThread->start(QThread::InheritPriority);
    QMetaObject::invokeMethod(this, "doJob", Qt::QueuedConnection);
    return Ok;
}

void AbstractGenerator::beginJob()
{
    m_running = true;
    if (m_database)
        m_database->addAllowedThread();
}

void AbstractGenerator::finishJob()
{
    m_running = false;
    if (m_file->isOpen()) {
        m_file->flush();
        m_file->close();
    }
    if (m_workerThread)
        m_workerThread->quit();
    if (m_database)
        m_database->removeAllowedThread();
    Q_EMIT progress(100);
}

bool AbstractGenerator::openOutputFile(const QString& fileName)
{
    m_file->setFileName(QStringLiteral("%1/%2").arg(m_outputDir, fileName));
    return m_file->open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Truncate);
}

void AbstractGenerator::readGenerateML()
{
    m_generateML = false;
    if (m_database)
        m_generateML = m_database->getMiscSetting(QStringLiteral("generateML")) == QLatin1String("true");
}

QString AbstractGenerator::setting(const QString& key) const
{
    return m_database->getGeneralSetting(key);
}

int AbstractGenerator::settingInt(const QString& key) const
{
    return setting(key).toInt();
}

int AbstractGenerator::lineSettingInt(const QString& key, quint8 line) const
{
    return m_database->getGeneralSettingForLine(key, line).toInt();
}

QString AbstractGenerator::j1939Setting(const QString& key) const
{
    return m_database->getJ1939Setting(key);
}

int AbstractGenerator::j1939SettingInt(const QString& key) const
{
    return j1939Setting(key).toInt();
}

bool AbstractGenerator::udsInUse() const
{
    return settingInt(QStringLiteral("udsserver_supported")) == 1 ||
           settingInt(QStringLiteral("udsclient_supported")) == 1;
}

void AbstractGenerator::fail(const QString& text)
{
    m_failed = true;
    m_errorText = text;
}

QString AbstractGenerator::banner(const QString& title, const QString& closing,
                                  const QString& afterVersion) const
{
    QString text = QStringLiteral("/*\n");
    text += QStringLiteral(" * %1 %2 - generated by %3 %4%5\n")
                .arg(title, m_deviceName, QCoreApplication::applicationName(), m_version, afterVersion);
    text += QStringLiteral(" * ") + dateTimeText() + closing;
    return text;
}

QString AbstractGenerator::dateTimeText()
{
    QSettings user(QCoreApplication::organizationName(),
                   QCoreApplication::instance()->property("AppNameWithVersion").toString());
    user.beginGroup(QStringLiteral("General"));
    const QString format =
        user.value(QStringLiteral("date_time_format"), QStringLiteral("dd MM yyyy HH:mm:ss")).toString();
    return QDateTime::currentDateTime().toString(format);
}

QString AbstractGenerator::resourceText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    return QString::fromUtf8(file.readAll());
}
