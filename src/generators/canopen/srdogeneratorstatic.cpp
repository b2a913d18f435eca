#include "generators/canopen/srdogeneratorstatic.h"

#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QRegularExpression>
#include <QSettings>

namespace {

// Placeholders of the template; each entry lists the spellings of one
// placeholder (old templates misspell the receive ones).
const QList<QStringList>& placeholders()
{
    static const QList<QStringList> names = {
        {QStringLiteral("__GEN_SRDO_INCLUDES__")},
        {QStringLiteral("__GEN_SRDO_TRW_INFORMATION__")},
        {QStringLiteral("__GEN_SRDO_INIT_CONFIG_VALID__")},
        {QStringLiteral("__GEN_SRDO_INIT_NMT_STATE__")},
        {QStringLiteral("__GEN_SRDO_INIT_CONFIG_READY__")},
        {QStringLiteral("__GEN_SRDO_INIT_SRDO_TIMER__")},
        {QStringLiteral("__GEN_SRDO_DATA_DEFINITION__")},
        {QStringLiteral("__GEN_SRDO_GET_DATA_PTR__")},
        {QStringLiteral("__GEN_SRDO_SET_DEFAULT_VALUE__")},
        {QStringLiteral("__GEN_SRDO_OD_VARIABLES__")},
        {QStringLiteral("__GEN_SRDO_RECEIVE_MAPPING1__"), QStringLiteral("__GEN_SRDO_RECEICE_MAPPING1__")},
        {QStringLiteral("__GEN_SRDO_RECEIVE_MAPPING2__"), QStringLiteral("__GEN_SRDO_RECEICE_MAPPING2__")},
        {QStringLiteral("__GEN_SRDO_TRANSMIT_MAPPING__")},
        {QStringLiteral("__GEN_SRDO_OD_ENTRY__")},
    };
    return names;
}

// The tables of object dictionary entries of the mapped objects, one per
// data type, sized by gen_define.h. The blocks of the template for the
// signed and real types go when no object of theirs is mapped.
struct EntryTable
{
    int dataType;
    const char* count;
    const char* table;
    bool removable;
};

const EntryTable entryTables[] = {
    {5, "SRDO_OD_ENTRY_U8_CNT", "srdoOdEntryU8", false},
    {6, "SRDO_OD_ENTRY_U16_CNT", "srdoOdEntryU16", false},
    {7, "SRDO_OD_ENTRY_U32_CNT", "srdoOdEntryU32", false},
    {27, "SRDO_OD_ENTRY_U64_CNT", "srdoOdEntryU64", false},
    {2, "SRDO_OD_ENTRY_I8_CNT", "srdoOdEntryI8", true},
    {3, "SRDO_OD_ENTRY_I16_CNT", "srdoOdEntryI16", true},
    {4, "SRDO_OD_ENTRY_I32_CNT", "srdoOdEntryI32", true},
    {8, "SRDO_OD_ENTRY_R32_CNT", "srdoOdEntryR32", true},
};

const char floatComment[] = "\t\t/* cast from pointer to pointer,\n"
                            "\t\t * Unusual pointer cast (incompatible indirect types)*/\n";

} // namespace

SrdoGeneratorStatic::SrdoGeneratorStatic(QObject* parent) : SrdoGenerator(parent) {}

void SrdoGeneratorStatic::doJob()
{
    beginJob();
    layOut();
    const QString useCore = m_database->getGeneralSetting(QStringLiteral("use_core_headers")).trimmed();
    m_core = useCore == QLatin1String("V4") || useCore == QLatin1String("1");
    m_lineWord = m_core ? QStringLiteral("CAN_LINE") : QStringLiteral("CO_LINE");
    const QString path = stackPath() + (m_multiLine ? QStringLiteral("/co_lib_ml/src/gen_srdo.tpl")
                                                    : QStringLiteral("/co_lib_sl/src/gen_srdo.tpl"));
    QFile templateFile(path);
    if (!templateFile.open(QIODevice::ReadOnly | QIODevice::Text)) {
        fail(tr("Template file not found."));
        finishJob();
        return;
    }
    const QString text = QString::fromUtf8(templateFile.readAll());
    const QString fault = templateFault(text);
    if (!fault.isEmpty()) {
        fail(tr("Template file %1: %2").arg(path, fault));
        finishJob();
        return;
    }
    Q_EMIT progress(25);
    const QString filled = filledTemplate(text);
    if (!openOutputFile(QStringLiteral("gen_srdo.c")) || m_file->write(filled.toUtf8()) < 0) {
        fail(tr("The file gen_srdo.c in %1 can't be written.").arg(m_outputDir));
        finishJob();
        return;
    }
    m_file->close();
    removeUnusedEntryBlocks();
    finishJob();
}

QString SrdoGeneratorStatic::stackPath() const
{
    QString path = m_database->getMiscSetting(QStringLiteral("costackpath")).trimmed();
    for (const QString& application :
         {QStringLiteral("CANopenOrbison_2.5"), QStringLiteral("CANopenOrbison_2.4")}) {
        if (!path.isEmpty())
            break;
        QSettings sibling(QStringLiteral("halvex"), application);
        sibling.beginGroup(QStringLiteral("General"));
        path = sibling.value(QStringLiteral("costackpath")).toString().trimmed();
    }
    qDebug() << Q_FUNC_INFO << "coPath: " << path;
    return path;
}

QString SrdoGeneratorStatic::templateFault(const QString& text)
{
    QStringList missing;
    QStringList repeated;
    for (const QStringList& spellings : placeholders()) {
        qsizetype uses = 0;
        for (const QString& spelling : spellings)
            uses += text.count(spelling);
        if (uses == 0)
            missing << spellings.first();
        else if (uses > 1)
            repeated << spellings.first();
    }
    QStringList faults;
    if (!missing.isEmpty())
        faults << tr("the placeholders %1 are missing").arg(missing.join(QStringLiteral(", ")));
    if (!repeated.isEmpty())
        faults << tr("the placeholders %1 stand more than once").arg(repeated.join(QStringLiteral(", ")));
    return faults.join(QStringLiteral("; "));
}

QString SrdoGeneratorStatic::filledTemplate(QString text) const
{
    QString includes;
    const QString headers = m_database->getGeneralSetting(QStringLiteral("applicationheader")).trimmed();
    for (const QString& header : headers.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        includes += QStringLiteral("#include <") + header + QStringLiteral(">\n");
    const QString information = QStringLiteral("SRDO definitions for %1 - generated by %2 %3\n")
                                    .arg(m_deviceName, QCoreApplication::applicationName(), m_version) +
                                QStringLiteral(" * ") + dateTimeText();
    QString defaults;
    for (const Srdo& srdo : m_srdos)
        defaults +=
            QStringLiteral("\t") + srdoName(srdo) + QStringLiteral(".dataValid = CO_SRDO_DATA_UNKNOWN;\n");
    const QList<QPair<QStringList, QString>> texts = {
        {{QStringLiteral("__GEN_SRDO_INCLUDES__")}, includes},
        {{QStringLiteral("__GEN_SRDO_TRW_INFORMATION__")}, information},
        {{QStringLiteral("__GEN_SRDO_INIT_CONFIG_VALID__")}, initialValue(QStringLiteral("0u"))},
        {{QStringLiteral("__GEN_SRDO_INIT_NMT_STATE__")}, initialValue(QStringLiteral("CO_NMT_STATE_PREOP"))},
        {{QStringLiteral("__GEN_SRDO_INIT_CONFIG_READY__")}, initialValue(QStringLiteral("0u"))},
        {{QStringLiteral("__GEN_SRDO_INIT_SRDO_TIMER__")}, initialValue(QStringLiteral("NULL"))},
        {{QStringLiteral("__GEN_SRDO_DATA_DEFINITION__")}, dataDefinitions()},
        {{QStringLiteral("__GEN_SRDO_GET_DATA_PTR__")}, dataPointerSwitch(m_lineWord)},
        {{QStringLiteral("__GEN_SRDO_SET_DEFAULT_VALUE__")}, defaults},
        {{QStringLiteral("__GEN_SRDO_OD_VARIABLES__")}, processVariables(true)},
        {placeholders().at(10), copyCode(true, false)},
        {placeholders().at(11), copyCode(true, true)},
        {{QStringLiteral("__GEN_SRDO_TRANSMIT_MAPPING__")}, copyCode(false, false)},
        {{QStringLiteral("__GEN_SRDO_OD_ENTRY__")}, odEntries()},
    };
    for (const auto& [spellings, replacement] : texts) {
        for (const QString& spelling : spellings)
            text.replace(spelling, replacement);
    }
    return text;
}

// Received data arrive in the temporaries: the plain pass takes them over,
// the inverted pass takes over the inverted objects and checks each against
// its plain partner. The transmit pass fills the temporaries.
QString SrdoGeneratorStatic::copyCode(bool receive, bool compare) const
{
    const QString mapError = m_core ? QStringLiteral("\t\t\tretVal = RET_MAP_ERROR;\n")
                                    : QStringLiteral("\t\t\tretVal = RET_CO_MAP_ERROR;\n");
    QString code;
    for (const Srdo& srdo : m_srdos) {
        if (srdo.receive != receive)
            continue;
        for (qsizetype i = 0; i < srdo.objects.size(); ++i) {
            const MappedObject& object = srdo.objects.at(i);
            if (receive && object.inverted != compare)
                continue;
            const bool real = object.cType == QLatin1String("REAL32");
            if (real) {
                code += QLatin1String(floatComment);
                if (receive)
                    code += QStringLiteral("\t\t") + object.name + QStringLiteral(" = *(REAL32 *)&") +
                            object.name + QStringLiteral("_temp; /*lint !e929 !e740 */\n");
                else
                    code += QStringLiteral("\t\t") + object.name + QStringLiteral("_temp = * (REAL32 *)&") +
                            object.name + QStringLiteral("; /*lint !e929 !e740 */\n");
            } else if (receive) {
                code += QStringLiteral("\t\t") + object.name + QStringLiteral(" = ") + object.name +
                        QStringLiteral("_temp;\n");
            } else {
                code += QStringLiteral("\t\t") + object.name + QStringLiteral("_temp = ") + object.name +
                        QStringLiteral(";\n");
            }
            if (!compare || i == 0)
                continue;
            const MappedObject& plain = srdo.objects.at(i - 1);
            if (real)
                code += QStringLiteral("\t\tif (*(UNSIGNED32 *)&") + object.name +
                        QStringLiteral("_temp != (UNSIGNED32)~*(UNSIGNED32 *)&") + plain.name +
                        QStringLiteral(") {\n");
            else
                code += QStringLiteral("\t\tif (") + object.name + QStringLiteral("_temp != (") +
                        object.cType + QStringLiteral(")~") + plain.name + QStringLiteral(") {\n");
            code += mapError + QStringLiteral("\t\t}\n");
        }
    }
    return code;
}

// One entry per mapping entry, as gen_define.h counts them.
QString SrdoGeneratorStatic::odEntries() const
{
    QString text;
    for (const EntryTable& table : entryTables) {
        QStringList rows;
        for (const Srdo& srdo : m_srdos) {
            for (const MappedObject& object : srdo.objects) {
                if (object.dataType == table.dataType)
                    rows << QStringLiteral("\t{ 0x%1u, %2u, (void *)&%3 }")
                                .arg(object.index, 4, 16, QLatin1Char('0'))
                                .arg(object.subindex)
                                .arg(object.name);
            }
        }
        if (rows.isEmpty())
            continue;
        text += QStringLiteral("static const SRDO_OD_ENTRY_T %1[%2] = {\n")
                    .arg(QLatin1String(table.table), QLatin1String(table.count));
        text += rows.join(QStringLiteral(",\n")) + QStringLiteral("\n};\n");
    }
    return text.isEmpty() ? QStringLiteral("\n") : text;
}

void SrdoGeneratorStatic::removeUnusedEntryBlocks()
{
    QStringList unused;
    for (const EntryTable& table : entryTables) {
        const bool used = std::any_of(m_srdos.cbegin(), m_srdos.cend(), [&](const Srdo& srdo) {
            return std::any_of(srdo.objects.cbegin(), srdo.objects.cend(),
                               [&](const MappedObject& object) { return object.dataType == table.dataType; });
        });
        if (table.removable && !used)
            unused << QLatin1String(table.count);
    }
    QFile file(QStringLiteral("%1/gen_srdo.c").arg(m_outputDir));
    if (unused.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    QString text = QString::fromUtf8(file.readAll());
    file.close();
    const QString original = text;
    for (const QString& name : std::as_const(unused)) {
        const QRegularExpression block(QStringLiteral("^#ifdef %1\\b.*?^#endif /\\* %1[^\\n]*\\n?")
                                           .arg(QRegularExpression::escape(name)),
                                       QRegularExpression::MultilineOption |
                                           QRegularExpression::DotMatchesEverythingOption);
        text.remove(block);
    }
    if (text != original && file.open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Truncate))
        file.write(text.toUtf8());
}
