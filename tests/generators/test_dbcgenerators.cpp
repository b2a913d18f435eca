#include "common/testhelpers.h"
#include "dbc/candbdbc.h"
#include "generators/documents/dbcgenerator.h"
#include "generators/documents/rawcandbcgenerator.h"
#include "generatortestsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace generatortest;

namespace {

ObjectDataBase::SPN spnRecord(quint32 pos, const QString& name, int datatype, quint16 bitsize = 0,
                              const QString& desc = QString())
{
    ObjectDataBase::SPN spn;
    spn.pos = pos;
    spn.name = name;
    spn.desc = desc;
    spn.datatype = datatype;
    spn.bitsize = bitsize;
    spn.implementation = 2;
    spn.varname = name.left(4).toLower();
    return spn;
}

void addPgn(ObjectDataBase& db, quint32 number, quint8 direction, const QString& name, quint16 cycle,
            const QString& desc, const QList<std::pair<quint32, ObjectDataBase::SPN>>& spns)
{
    ObjectDataBase::PGN pgn;
    pgn.number = number;
    pgn.direction = direction;
    pgn.priority = 6;
    pgn.name = name;
    pgn.desc = desc;
    pgn.cycletime_ms = cycle;
    pgn.mappingcount = quint16(spns.size());
    db.addPGN(0, number, pgn);
    for (const auto& [spnNumber, spn] : spns) {
        ObjectDataBase::SPN record = spn;
        record.pgnnumber = number;
        record.direction = direction;
        record.spnnumber = spnNumber;
        db.addSPN(0, number, direction, spnNumber, record);
    }
}

// A J1939 engine at address 0x10: two sent PGNs, one of them with a string
// ended by "*" and a dummy byte, and one received request.
void fillJ1939Project(ObjectDataBase& db)
{
    addLine(db, 0, 2);
    db.setJ1939Setting(QStringLiteral("startaddress"), QStringLiteral("0x10"));
    addPgn(
        db, 65262, ObjectDataBase::Transmit, QStringLiteral("Engine Temperature 1"), 1000,
        QStringLiteral("ET1"),
        {{110, spnRecord(0, QStringLiteral("Engine Coolant Temperature"), 5, 0, QStringLiteral("coolant"))},
         {1, spnRecord(1, QStringLiteral("dummy byte"), 5)},
         {175, spnRecord(2, QStringLiteral("Engine Oil Temperature 1"), 6)}});
    addPgn(db, 65259, ObjectDataBase::Transmit, QStringLiteral("Component Identification"), 0, QString(),
           {{586, spnRecord(0, QStringLiteral("Make"), 121, 800)},
            {587, spnRecord(1, QStringLiteral("Model"), 5)}});
    addPgn(db, 59904, ObjectDataBase::Receive, QStringLiteral("Request"), 0, QString(),
           {{2540, spnRecord(0, QStringLiteral("Requested PGN"), 22)}});
}

struct DbcRun
{
    QString text;
    QString error;
};

DbcRun runDbcGenerator(ObjectDataBase& db, const QString& dir, bool implementationInfo)
{
    QSettings user(QCoreApplication::organizationName(), QString());
    user.setValue(QStringLiteral("General/implinfo"), implementationInfo ? 1 : 0);
    user.sync();
    cacheLines(db);
    DBCGenerator generator;
    DbcRun run;
    run.text = runGenerator(generator, db, dir, QStringLiteral("device.dbc"));
    run.error = generator.lastError();
    user.remove(QStringLiteral("General/implinfo"));
    return run;
}

// A raw CAN line: a sent standard frame without a name and a received
// extended frame.
void fillRawCanProject(ObjectDataBase& db)
{
    fillRawCanProject(db);
    cacheLines(db);

    RawCANDBCGenerator generator;
    EXPECT_EQ(runGenerator(generator, db, dir.path(), QStringLiteral("device.dbc"), true),
              QLatin1String(R"(VERSION ""

NS_ :

BS_:

BU_:

BO_ 385 MSG_181: 4 Vector__XXX
 SG_ Speed : 0|16@1- (1,0) [0|0] "" Vector__XXX
 SG_ Mode : 16|8@1+ (1,0) [0|0] "" Vector__XXX
 SG_ SIG_3 : 24|4@1+ (1,0) [0|0] "" Vector__XXX

BO_ 2147483939 Cmd_Frame: 4 Vector__XXX
 SG_ Value : 0|32@1+ (1,0) [0|0] "" Vector__XXX


BA_DEF_ BO_ "GenMsgCycleTime" INT 0 100000;
BA_DEF_ BO_ "GenMsgSendType" ENUM "Cyclic","NoMsgSendType";
BA_DEF_DEF_ "GenMsgCycleTime" 0;
BA_DEF_DEF_ "GenMsgSendType" "NoMsgSendType";

CM_ BO_ 385 "Status \"A\"";
CM_ SG_ 385 Mode "mode";
BA_ "GenMsgCycleTime" BO_ 385 100;
BA_ "GenMsgSendType" BO_ 385 0;
BA_ "GenMsgSendType" BO_ 2147483939 1;
)"));
}

// The examples with J1939 or raw CAN lines run through the program, and the
// test projects above through the generators: canmatrix must read each file
// as our reader does, message by message and signal by signal.
TEST(DbcGenerator, CanmatrixReadsEveryDbcOfTheExamplesAndTestProjectsAsWeWroteIt)
{
    if (!canmatrixAvailable())
        GTEST_SKIP() << "python3-canmatrix is not installed (scripts/setup.sh installs it)";
    QTemporaryDir dir;
    QStringList files;
    static const QRegularExpression busLine(QStringLiteral("^line\\d+type=[24567]$"),
                                            QRegularExpression::MultilineOption);
    for (const QString& example : testhelpers::exampleProjects()) {
        if (!busLine.match(QString::fromUtf8(testhelpers::readFile(example))).hasMatch())
            continue;
        const QString folder = dir.filePath(QFileInfo(example).completeBaseName());
        QDir().mkpath(folder);
        const QString copy = folder + QLatin1Char('/') + QFileInfo(example).fileName();
        ASSERT_TRUE(QFile::copy(example, copy));
        const testhelpers::RunResult run = testhelpers::runTrw({QStringLiteral("-project"), copy}, folder);
        EXPECT_EQ(run.exitCode, 0) << run.out.toStdString();
        const QStringList produced = QDir(folder).entryList({QStringLiteral("*.dbc")}, QDir::Files);
        EXPECT_FALSE(produced.isEmpty()) << example.toStdString();
        for (const QString& name : produced)
            files << folder + QLatin1Char('/') + name;
    }
    for (auto fill : {fillJ1939Project, fillRawCanProject}) {
        const QString folder = dir.filePath(QStringLiteral("test%1").arg(files.size()));
        QDir().mkpath(folder);
        ObjectDataBase db;
        ASSERT_TRUE(db.createNewDataBase());
        fill(db);
        cacheLines(db);
        if (fill == fillJ1939Project) {
            DBCGenerator generator;
            runGenerator(generator, db, folder, QString());
        } else {
            RawCANDBCGenerator generator;
            runGenerator(generator, db, folder, QString());
        }
        files << folder + QStringLiteral("/device.dbc");
    }
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        const QString ours = ourView(file);
        EXPECT_TRUE(ours.startsWith(QLatin1String("M "))) << ours.toStdString();
        EXPECT_EQ(canmatrixView(file), ours);
    }
}
