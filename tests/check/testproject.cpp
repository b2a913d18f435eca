#include "testproject.h"

#include "check/modelchecker.h"
#include "common/projectbuilder.h"

#include <QCoreApplication>
#include <QSettings>

#include <gtest/gtest.h>

TestProject::TestProject() : m_db(new ObjectDataBase())
{
    EXPECT_TRUE(m_db->createNewDataBase());
    m_db->setLineType(0, Line::CANopen);
    cleanproject::addProjectSettings(*m_db);
    cleanproject::addLineSettings(*m_db, 0);
    cleanproject::addMandatoryObjects(*m_db, 0);
}

void TestProject::addLine(quint8 line, int type)
{
    projectbuilder::addLine(*m_db, line, type);
    EXPECT_TRUE(m_db->nodeExists(line));
    cleanproject::addLineSettings(*m_db, line);
    if (Line::carriesCANopen(type))
        cleanproject::addMandatoryObjects(*m_db, line);
}

void TestProject::addObject(quint16 index, int objectCode, const QString& name, quint8 line)
{
    INDEX_DATA_T data;
    data.name = name;
    data.objecttype = objectCode;
    EXPECT_TRUE(m_db->addIndex(line, index, data));
}

void TestProject::addSub(quint16 index, quint8 subindex, const SUBINDEX_DATA_T& record, quint8 line)
{
    EXPECT_TRUE(m_db->addSubIndex(line, index, subindex, record));
}

void TestProject::addVariable(quint16 index, int dataType, const QString& access, const QString& value,
                              quint8 line)
{
    addObject(index, 7, QStringLiteral("variable"), line);
    addSub(index, 0, subRecord(dataType, access, value), line);
}

void TestProject::addArray(quint16 index, const QStringList& values, int dataType, quint8 line)
{
    addObject(index, 8, QStringLiteral("array"), line);
    SUBINDEX_DATA_T count = subRecord(5, QStringLiteral("const"), QString::number(values.size()));
    count.implementation = CANopen::ManagedConst;
    addSub(index, 0, count, line);
    for (int sub = 1; sub <= values.size(); ++sub)
        addSub(index, quint8(sub), subRecord(dataType, QStringLiteral("rw"), values.at(sub - 1)), line);
}

void TestProject::addMappable(quint16 index, int dataType, const QString& access, quint8 line)
{
    addObject(index, 7, QStringLiteral("process value"), line);
    SUBINDEX_DATA_T record = subRecord(dataType, access, QStringLiteral("0"));
    record.pdomapping = PDOMapping(PDOMapping::Mappable);
    record.implementation = CANopen::ApplicationVariable;
    record.varname = QStringLiteral("value_%1").arg(index, 4, 16, QLatin1Char('0'));
    addSub(index, 0, record, line);
}

void TestProject::addRpdo(int number, const QString& cobId, const QStringList& entries,
                          const QString& mappingAccess)
{
    addPdo(quint16(0x1400 + number - 1), quint16(0x1600 + number - 1), cobId, entries, mappingAccess);
}

void TestProject::addTpdo(int number, const QString& cobId, const QStringList& entries,
                          const QString& mappingAccess)
{
    addPdo(quint16(0x1800 + number - 1), quint16(0x1A00 + number - 1), cobId, entries, mappingAccess);
}

void TestProject::addPdo(quint16 communication, quint16 mapping, const QString& cobId,
                         const QStringList& entries, const QString& mappingAccess)
{
    addObject(communication, 9, QStringLiteral("PDO communication parameter"));
    SUBINDEX_DATA_T count = subRecord(5, QStringLiteral("const"), QStringLiteral("2"));
    count.implementation = CANopen::ManagedConst;
    addSub(communication, 0, count);
    addSub(communication, 1, subRecord(7, QStringLiteral("rw"), cobId));
    addSub(communication, 2, subRecord(5, QStringLiteral("rw"), QStringLiteral("255")));

    addObject(mapping, 9, QStringLiteral("PDO mapping parameter"));
    SUBINDEX_DATA_T entryCount = subRecord(5, mappingAccess, QString::number(entries.size()));
    if (mappingAccess == QLatin1String("const"))
        entryCount.implementation = CANopen::ManagedConst;
    addSub(mapping, 0, entryCount);
    for (int sub = 1; sub <= entries.size(); ++sub)
        addSub(mapping, quint8(sub), subRecord(7, mappingAccess, entries.at(sub - 1)));
}

SUBINDEX_DATA_T TestProject::readSub(quint16 index, quint8 subindex, quint8 line)
{
    SUBINDEX_DATA_T record;
    EXPECT_TRUE(m_db->getSubIndex(line, index, subindex, record));
    return record;
}

void TestProject::changeSub(quint16 index, quint8 subindex,
                            const std::function<void(SUBINDEX_DATA_T&)>& change)
{
    projectbuilder::changeSub(*m_db, 0, index, subindex, change);
}

CheckOutcome TestProject::run()
{
    QSettings settings(QCoreApplication::organizationName(),
                       QCoreApplication::instance()->property("AppNameWithVersion").toString());
    settings.setValue(QStringLiteral("General/disableautocorrection"), !m_autoCorrection);
    settings.sync();

    CheckOutcome outcome;
    ModelChecker checker;
    QObject::connect(&checker, &ModelChecker::newError,
                     [&outcome](const QString& text) { outcome.messages << text; });
    QList<quint8> lines;
    for (quint8 line : m_db->getNodeList()) {
        if (line < Line::firstScratch)
            lines << line;
    }
    for (quint8 line : std::as_const(lines))
        m_db->cacheAllSubs(line, 0);
    outcome.errors = checker.checkProject(m_db, folder());
    for (quint8 line : std::as_const(lines)) {
        const int type = m_db->lineType(line);
        if (Line::carriesCANopen(type))
            outcome.errors += checker.checkCANopenLine(line, m_db, outcome.corrected);
        if (Line::carriesJ1939(type))
            outcome.errors +=
                checker.checkJ1939Line(lines.size(), line, m_db, ModelChecker::stackHandledPgns());
        if (Line::carriesRawCan(type))
            outcome.errors += checker.checkRawCANLine(line, m_db);
    }

    settings.remove(QStringLiteral("General/disableautocorrection"));
    settings.sync();
    return outcome;
}

ProjectSetup settings(std::vector<std::pair<QString, QString>> values)
{
    return [values = std::move(values)](TestProject& project) {
        for (const auto& [key, value] : values)
            project.setGeneral(key, value);
    };
}

void expectRules(const std::vector<RuleRow>& rows)
{
    for (const RuleRow& row : rows) {
        for (size_t i = 0; i < row.fire.size(); ++i) {
            SCOPED_TRACE(
                QStringLiteral("%1, firing case %2").arg(QLatin1String(row.rule)).arg(i).toStdString());
            TestProject project;
            row.fire[i](project);
            const CheckOutcome outcome = project.run();
            EXPECT_EQ(outcome.count(row.message), 1) << outcome.listing().toStdString();
            EXPECT_EQ(outcome.errors, row.errorsWhenFired) << outcome.listing().toStdString();
        }
        for (size_t i = 0; i < row.quiet.size(); ++i) {
            SCOPED_TRACE(
                QStringLiteral("%1, quiet case %2").arg(QLatin1String(row.rule)).arg(i).toStdString());
            TestProject project;
            row.quiet[i](project);
            const CheckOutcome outcome = project.run();
            EXPECT_EQ(outcome.count(row.message), 0) << outcome.listing().toStdString();
            EXPECT_EQ(outcome.errors, 0) << outcome.listing().toStdString();
        }
    }
}
