#include "dbc/candbdbc.h"
#include "generators/documents/dbcgenerator.h"
#include "generators/documents/rawcandbcgenerator.h"
#include "generatortestsupport.h"

#include <QCoreApplication>
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
    addLine(db, 0, 4);
    auto addCanId = [&db](quint32 id, quint8 direction, const QString& name, const QString& desc,
                          quint16 cycle, const QList<ObjectDataBase::DataElement>& elements) {
        ObjectDataBase::CANID record;
        record.id = id;
        record.direction = direction;
        record.name = name;
        record.desc = desc;
        record.cycletime_ms = cycle;
        record.mappingcount = quint16(elements.size());
        db.addCANID(0, id, record);
        for (ObjectDataBase::DataElement element : elements) {
            element.canid = id;
            element.direction = direction;
            db.addDataElement(0, id, direction, element.number, element);
        }
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
    addCanId(0x181, ObjectDataBase::Transmit, QString(), QStringLiteral("Status \"A\""), 100,
             {element(1, QStringLiteral("Speed"), 3, 0, 0),
              element(2, QStringLiteral("Mode"), 5, 16, 0, "mode"), element(3, QString(), 5, 24, 4)});
    addCanId(0x80000123, ObjectDataBase::Receive, QStringLiteral("Cmd Frame"), QString(), 0,
             {element(1, QStringLiteral("Value"), 7, 0, 0)});
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
