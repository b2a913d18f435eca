#include "trw_cli/sarifreport.h"

#include "trw_cli/trwversion.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSaveFile>
#include <QUrl>

#include <iterator>

namespace {

// The classes of check messages are the rules of the log. SARIF has the levels
// error, warning, note and none: a hint is a note; so is a correction, because
// the project file keeps the fault until the corrected project is saved; an
// info line reports no fault, so it is an informational result of level none.
struct MessageClass
{
    QLatin1String word; // how the message's text begins, in any case
    const char* name;
    const char* level;
    const char* description;
};

const MessageClass messageClasses[] = {
    {QLatin1String("error"), "CheckError", "error",
     QT_TRANSLATE_NOOP("SarifReport",
                       "A message of the error form. Counted errors stop the run before generation.")},
    {QLatin1String("warning"), "CheckWarning", "warning",
     QT_TRANSLATE_NOOP("SarifReport",
                       "Something in the project that is probably not meant so. Generation goes on.")},
    {QLatin1String("hint"), "CheckHint", "note",
     QT_TRANSLATE_NOOP("SarifReport", "A hint, such as a stack file that the firmware build needs.")},
    {QLatin1String("corrected"), "CheckCorrection", "note",
     QT_TRANSLATE_NOOP("SarifReport", "A fault the check corrected in the open project. The project file "
                                      "keeps it until the project is saved.")},
    {QLatin1String("info"), "CheckInfo", "none",
     QT_TRANSLATE_NOOP("SarifReport", "Information about the check itself.")},
};
// The row of info lines above.
constexpr int infoClass = 4;

const QString projectBase = QStringLiteral("PROJECTDIR");

QString withoutMarkup(const QString& text)
{
    static const QRegularExpression tag(QStringLiteral("<[^<>]*>"));
    return QString(text).remove(tag).trimmed();
}

// A message without a class word, such as the advice that follows an info or
// warning line, goes on with the message before it.
int classOf(const QString& text, int previous)
{
    for (int i = 0; i < int(std::size(messageClasses)); ++i) {
        if (text.startsWith(messageClasses[i].word, Qt::CaseInsensitive))
            return i;
    }
    return previous;
}

// "line0/0x1018/0": the line being checked, then the object and subindex the
// text names first. Objects read "Object 0x1018" with a subindex behind "-0x"
// in hexadecimal or behind "-" or ":" in decimal, or "Subindex 2 of 0x1800".
QString locationOf(const QString& text, int line)
{
    static const QRegularExpression object(
        QStringLiteral("Object 0x([0-9a-fA-F]{4})(?:-0x([0-9a-fA-F]+)|[-:](\\d+))?"));
    static const QRegularExpression subindexOf(
        QStringLiteral("Subindex (\\d+)( and \\d+)? of 0x([0-9a-fA-F]{4})"));

    QStringList parts;
    if (line >= 0)
        parts << QStringLiteral("line%1").arg(line);
    QString index;
    QString subindex;
    if (const QRegularExpressionMatch m = object.match(text); m.hasMatch()) {
        index = m.captured(1);
        // The value conversion message writes a decimal subindex behind "0x".
        const bool decimalBehindHex = text.contains(QLatin1String("Value conversion failed"));
        if (m.hasCaptured(2))
            subindex = QString::number(m.captured(2).toUInt(nullptr, decimalBehindHex ? 10 : 16));
        else if (m.hasCaptured(3))
            subindex = QString::number(m.captured(3).toUInt());
    } else if (const QRegularExpressionMatch s = subindexOf.match(text); s.hasMatch()) {
        index = s.captured(3);
        if (!s.hasCaptured(2))
            subindex = s.captured(1);
    }
    if (!index.isEmpty())
        parts << QStringLiteral("0x") + index.toLower();
    if (!subindex.isEmpty())
        parts << subindex;
    return parts.join(QLatin1Char('/'));
}

QJsonObject textObject(const QString& text)
{
    return QJsonObject{{QStringLiteral("text"), text}};
}

QJsonArray rules()
{
    QJsonArray list;
    for (const MessageClass& c : messageClasses) {
        list.append(QJsonObject{
            {QStringLiteral("id"), QString(c.word)},
            {QStringLiteral("name"), QLatin1String(c.name)},
            {QStringLiteral("shortDescription"), textObject(SarifReport::tr(c.description))},
            {QStringLiteral("defaultConfiguration"),
             QJsonObject{{QStringLiteral("level"), QLatin1String(c.level)}}},
        });
    }
    return list;
}

QJsonObject invocationObject(const SarifReport::Invocation& invocation)
{
    // A failed check is a finished analysis; every other failure ended the run before its end.
    const bool analysed = invocation.exitCode == 0 || invocation.exitCode == 7;
    QJsonObject object{
        {QStringLiteral("arguments"), QJsonArray::fromStringList(invocation.arguments)},
        {QStringLiteral("exitCode"), invocation.exitCode},
        {QStringLiteral("executionSuccessful"), analysed},
    };
    if (!invocation.failure.isEmpty()) {
        const QJsonObject notification{{QStringLiteral("level"), QStringLiteral("error")},
                                       {QStringLiteral("message"), textObject(invocation.failure)}};
        object.insert(QStringLiteral("toolExecutionNotifications"), QJsonArray{notification});
    }
    return object;
}

} // namespace

void SarifReport::addMessage(const QString& text, int line)
{
    m_messages.append(Message{text, line});
}

QJsonObject SarifReport::log(const Invocation& invocation) const
{
    const QFileInfo project(invocation.projectFile);
    const QJsonObject artifact{{QStringLiteral("uri"), QString::fromUtf8(QUrl::toPercentEncoding(
                                                           project.fileName(), QByteArrayLiteral("/")))},
                               {QStringLiteral("uriBaseId"), projectBase}};
    QJsonArray results;
    int previous = infoClass;
    for (const Message& message : m_messages) {
        const QString text = withoutMarkup(message.text);
        const int messageClass = classOf(text, previous);
        previous = messageClass;
        const MessageClass& c = messageClasses[messageClass];

        QJsonObject location{{QStringLiteral("physicalLocation"),
                              QJsonObject{{QStringLiteral("artifactLocation"), artifact}}}};
        const QString logical = locationOf(text, message.line);
        if (!logical.isEmpty()) {
            const QJsonObject entry{{QStringLiteral("name"), logical.section(QLatin1Char('/'), -1)},
                                    {QStringLiteral("fullyQualifiedName"), logical}};
            location.insert(QStringLiteral("logicalLocations"), QJsonArray{entry});
        }
        QJsonObject result{
            {QStringLiteral("ruleId"), QString(c.word)},
            {QStringLiteral("ruleIndex"), messageClass},
            {QStringLiteral("level"), QLatin1String(c.level)},
            {QStringLiteral("message"), textObject(text)},
            {QStringLiteral("locations"), QJsonArray{location}},
        };
        if (messageClass == infoClass)
            result.insert(QStringLiteral("kind"), QStringLiteral("informational"));
        results.append(result);
    }

    const QJsonObject driver{
        {QStringLiteral("name"), QStringLiteral(TRW_PROGRAM_NAME)},
        {QStringLiteral("fullName"),
         QCoreApplication::applicationName() + QLatin1Char(' ') + QStringLiteral(TRW_VERSION)},
        {QStringLiteral("version"), QStringLiteral(TRW_VERSION)},
        {QStringLiteral("semanticVersion"), QStringLiteral(TRW_VERSION)},
        {QStringLiteral("rules"), rules()},
    };
    const QString folder =
        QUrl::fromLocalFile(project.absolutePath() + QLatin1Char('/')).toString(QUrl::FullyEncoded);
    const QJsonObject run{
        {QStringLiteral("tool"), QJsonObject{{QStringLiteral("driver"), driver}}},
        {QStringLiteral("invocations"), QJsonArray{invocationObject(invocation)}},
        {QStringLiteral("originalUriBaseIds"),
         QJsonObject{{projectBase, QJsonObject{{QStringLiteral("uri"), folder}}}}},
        {QStringLiteral("results"), results},
    };
    return QJsonObject{
        {QStringLiteral("$schema"), QStringLiteral("https://json.schemastore.org/sarif-2.1.0.json")},
        {QStringLiteral("version"), QStringLiteral("2.1.0")},
        {QStringLiteral("runs"), QJsonArray{run}},
    };
}

bool SarifReport::write(const QString& path, const Invocation& invocation)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        m_error = file.errorString();
        return false;
    }
    file.write(QJsonDocument(log(invocation)).toJson(QJsonDocument::Indented));
    if (!file.commit()) {
        m_error = file.errorString();
        return false;
    }
    return true;
}
