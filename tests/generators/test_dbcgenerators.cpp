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

// SPN `number` at place `pos`, an application variable named after its first letters.
ObjectDataBase::SPN spnRecord(quint32 number, quint32 pos, const QString& name, int datatype,
                              quint16 bitsize = 0, const QString& desc = QString())
{
    ObjectDataBase::SPN spn;
    spn.spnnumber = number;
    spn.pos = pos;
    spn.name = name;
    spn.desc = desc;
    spn.datatype = datatype;
    spn.bitsize = bitsize;
    spn.implementation = CANopen::ApplicationVariable;
    spn.varname = name.left(4).toLower();
    return spn;
}

ObjectDataBase::PGN pgnRecord(quint8 direction, const QString& name, quint16 cycle, const QString& desc)
{
    ObjectDataBase::PGN pgn;
    pgn.direction = direction;
    pgn.priority = 6;
    pgn.name = name;
    pgn.desc = desc;
    pgn.cycletime_ms = cycle;
    return pgn;
}

// A J1939 engine at address 0x10: two sent PGNs, one of them with a string
// ended by "*" and a dummy byte, and one received request.
void fillJ1939Project(ObjectDataBase& db)
{
    addLine(db, 0, Line::J1939);
    db.setJ1939Setting(QStringLiteral("startaddress"), QStringLiteral("0x10"));
    addPgn(db, 0, 65262,
           pgnRecord(ObjectDataBase::Transmit, QStringLiteral("Engine Temperature 1"), 1000,
                     QStringLiteral("ET1")),
           {spnRecord(110, 0, QStringLiteral("Engine Coolant Temperature"), CAN::Unsigned8, 0,
                      QStringLiteral("coolant")),
            spnRecord(1, 1, QStringLiteral("dummy byte"), CAN::Unsigned8),
            spnRecord(175, 2, QStringLiteral("Engine Oil Temperature 1"), CAN::Unsigned16)});
    addPgn(db, 0, 65259,
           pgnRecord(ObjectDataBase::Transmit, QStringLiteral("Component Identification"), 0, QString()),
           {spnRecord(586, 0, QStringLiteral("Make"), CAN::VisStringAsterisk, 800),
            spnRecord(587, 1, QStringLiteral("Model"), CAN::Unsigned8)});
    addPgn(db, 0, 59904, pgnRecord(ObjectDataBase::Receive, QStringLiteral("Request"), 0, QString()),
           {spnRecord(2540, 0, QStringLiteral("Requested PGN"), CAN::Unsigned24)});
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
    addLine(db, 0, Line::RawCan);
    auto canId = [](quint8 direction, const QString& name, const QString& desc, quint16 cycle) {
        ObjectDataBase::CANID record;
        record.direction = direction;
        record.name = name;
        record.desc = desc;
        record.cycletime_ms = cycle;
        return record;
    };
    auto element = [](quint32 number, const QString& name, int datatype, quint16 bitpos, quint16 bitsize,
                      const QString& desc = QString()) {
        ObjectDataBase::DataElement record;
        record.pos = number;
        record.number = number;
        record.name = name;
        record.desc = desc;
        record.datatype = datatype;
        record.bitpos = bitpos;
        record.bitsize = bitsize;
        return record;
    };
    projectbuilder::addCanId(db, 0, 0x181,
                             canId(ObjectDataBase::Transmit, QString(), QStringLiteral("Status \"A\""), 100),
                             {element(1, QStringLiteral("Speed"), CAN::Integer16, 0, 0),
                              element(2, QStringLiteral("Mode"), CAN::Unsigned8, 16, 0, "mode"),
                              element(3, QString(), CAN::Unsigned8, 24, 4)});
    projectbuilder::addCanId(db, 0, 0x80000123,
                             canId(ObjectDataBase::Receive, QStringLiteral("Cmd Frame"), QString(), 0),
                             {element(1, QStringLiteral("Value"), CAN::Unsigned32, 0, 0)});
}

// The messages and signals of a DBC file as our reader takes them, in the
// form canmatrix_view.py prints.
QString ourView(const QString& path)
{
    CANdbDBC reader;
    CANdbDatabase database;
    reader.setListener([](CANdbFileIo::Severity, int, const QString&, const QByteArray&) {});
    if (reader.read(database, path) != CANdbFileIo::Done)
        return QString::fromLatin1(reader.errorText());
    QString view;
    for (const auto& message : database.messages) {
        view += QStringLiteral("M %1 %2 %3 %4\n")
                    .arg(message->id)
                    .arg(int(message->extended))
                    .arg(QString::fromLatin1(message->name))
                    .arg(message->dlc);
        for (const auto& signal : message->signalList) {
            const int start = signal->bigEndian ? CANdbDBC::fileStartBit(signal->startBit, signal->length)
                                                : signal->startBit;
            view +=
                QStringLiteral("S %1 %2 %3 %4 %5 %6 %7\n")
                    .arg(QString::fromLatin1(signal->name))
                    .arg(start)
                    .arg(signal->length)
                    .arg(int(!signal->bigEndian))
                    .arg(int(signal->valueType == CANdbValueType::Signed))
                    .arg(QString::number(signal->factor, 'g', 12), QString::number(signal->offset, 'g', 12));
        }
    }
    return view;
}

QString canmatrixView(const QString& path)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral(TRW_SOURCE_DIR "/tests/generators/canmatrix_view.py"), path});
    if (!python.waitForFinished(60000) || python.exitCode() != 0)
        return QString::fromUtf8(python.readAllStandardError());
    return QString::fromUtf8(python.readAllStandardOutput());
}

bool canmatrixAvailable()
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"), QStringLiteral("import canmatrix")});
    return python.waitForFinished(60000) && python.exitCode() == 0;
}

} // namespace

TEST(DbcGenerator, WritesTheJ1939AttributesMessagesSignalsAndCommentsOfTheLine)
{
    QTemporaryDir dir;
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    fillJ1939Project(db);
    const DbcRun run = runDbcGenerator(db, dir.path(), false);
    ASSERT_TRUE(run.error.isEmpty()) << run.error.toStdString();
    const QString& text = run.text;

    const char* const pieces[] = {
        R"(BO_ 2566843920 Engine_Temperature_1: 8 Vector__XXX
 SG_ Engine_Coolant_Temperature : 0|8@1+ (1,0) [0|0] "" Vector__XXX
 SG_ Engine_Oil_Temperature_1 : 16|16@1+ (1,0) [0|0] "" Vector__XXX

)",
        R"(BO_ 2566843152 Component_Identification: 8 Vector__XXX
 SG_ Make : 0|8@1- (1,0) [0|0] "" Vector__XXX
 SG_ Model : 8|8@1+ (1,0) [0|0] "" Vector__XXX

)",
        R"(BO_ 2565476606 Request: 8 Vector__XXX
 SG_ Requested_PGN : 0|24@1+ (1,0) [0|0] "" Vector__XXX
)",
        R"(BO_ 2565341200 Acknowledge_Message: 8 Vector__XXX
 SG_ Control_Byte : 0|8@1+ (1,0) [0|0] "" Vector__XXX
 SG_ Group_Function : 8|8@1+ (1,0) [0|0] "" Vector__XXX
 SG_ reserved : 16|16@1+ (1,0) [0|0] "" Vector__XXX
 SG_ Address : 32|8@1+ (1,0) [0|0] "" Vector__XXX
 SG_ PGN : 40|24@1+ (1,0) [0|0] "" Vector__XXX
)",
        R"(CM_ BO_ 2566843920 "ET1";
CM_ SG_ 2566843920 Engine_Coolant_Temperature "coolant";
)",
        R"(BA_DEF_  "ProtocolType" STRING ;
BA_DEF_ BO_  "GenMsgCycleTime" INT 0 0;
BA_DEF_ BO_  "GenMsgSendType" ENUM  "cyclic","reserved","cyclicIfActive","reserved","reserved","reserved","reserved","reserved","noMsgSendType";
BA_DEF_ SG_  "SigType" ENUM  "Default","Range","RangeSigned","ASCII","Discrete","Control","ReferencePGN","DTC","StringDelimiter","StringLength","StringLengthControl";
BA_DEF_ BO_  "VFrameFormat" ENUM  "StandardCAN","ExtendedCAN","reserved","J1939PG";
BA_DEF_ SG_  "SPN" INT 0 524287;
BA_DEF_ SG_  "halvex_implementation_type" ENUM  "Managed","Variable";
BA_DEF_ SG_  "halvex_variable_name" STRING ;
BA_DEF_ SG_  "halvex_bitsize" INT 64 5120;
BA_DEF_DEF_  "ProtocolType" "";
BA_DEF_DEF_  "GenMsgCycleTime" 0;
BA_DEF_DEF_  "GenMsgSendType" "noMsgSendType";
BA_DEF_DEF_  "SigType" "Default";
BA_DEF_DEF_  "VFrameFormat" "J1939PG";
BA_DEF_DEF_  "SPN" 0;
BA_DEF_DEF_  "halvex_implementation_type" "Managed";
BA_DEF_DEF_  "halvex_variable_name" "";
BA_DEF_DEF_  "halvex_bitsize" 0;
)",
        R"(BA_ "VFrameFormat" BO_ 2566843152 3;
BA_ "GenMsgSendType" BO_ 2566843152 8;
BA_ "halvex_bitsize" SG_ 2566843152 Make 800;
BA_ "SPN" SG_ 2566843152 Make 586;
BA_ "SigType" SG_ 2566843152 Make 8;
BA_ "SPN" SG_ 2566843152 Model 587;
BA_ "VFrameFormat" BO_ 2566843920 3;
BA_ "GenMsgCycleTime" BO_ 2566843920 1000;
BA_ "GenMsgSendType" BO_ 2566843920 0;
BA_ "SPN" SG_ 2566843920 Engine_Coolant_Temperature 110;
BA_ "SPN" SG_ 2566843920 Engine_Oil_Temperature_1 175;
)",
        R"(BA_ "ProtocolType" "J1939";
)",
    };
    for (const char* piece : pieces)
        EXPECT_TRUE(text.contains(QLatin1String(piece))) << piece << "\nin\n" << text.toStdString();
    EXPECT_TRUE(text.contains(QLatin1String("BO_ 2565734416 Address_Claiming: 8 Vector__XXX\n")));
    EXPECT_FALSE(text.contains(QLatin1String("halvex_implementation_type\" SG_")));

    CANdbDBC reader;
    CANdbDatabase database;
    reader.setListener([](CANdbFileIo::Severity, int, const QString&, const QByteArray&) {});
    EXPECT_EQ(reader.readText(database, text.toUtf8()), CANdbFileIo::Done) << reader.errorText().constData();
}

TEST(DbcGenerator, WritesImplementationAttributesOnRequestAndShortFramesOnlyOnCanFd)
{
    QTemporaryDir dir;
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
    fillJ1939Project(db);
    db.setGeneralSetting(QStringLiteral("canfd_supported"), QStringLiteral("1"));
    const QString text = runDbcGenerator(db, dir.path(), true).text;
    EXPECT_TRUE(text.contains(
        QLatin1String(R"(BA_ "halvex_implementation_type" SG_ 2566843920 Engine_Coolant_Temperature 1;
BA_ "halvex_variable_name" SG_ 2566843920 Engine_Coolant_Temperature "engi";
)"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QLatin1String("BO_ 2566843920 Engine_Temperature_1: 4 Vector__XXX\n")));
    EXPECT_TRUE(text.contains(QLatin1String("BO_ 2565476606 Request: 3 Vector__XXX\n")));
}

TEST(RawCanDbcGenerator, WritesTheIdentifiersOfTheLineAsText)
{
    QTemporaryDir dir;
    ObjectDataBase db;
    ASSERT_TRUE(db.createNewDataBase());
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
