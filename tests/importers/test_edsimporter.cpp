#include "common/testhelpers.h"
#include "edstestsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using edstest::importFile;
using edstest::newProject;
using edstest::objectCount;
using edstest::subIndexCount;
using edstest::writeFile;

namespace {

QString hexIndex(quint16 index)
{
    return QStringLiteral("0x%1").arg(index, 4, 16, QLatin1Char('0'));
}

// Imports the text as a file of the given name into a fresh project.
QSharedPointer<ObjectDataBase> importText(const QByteArray& text,
                                          const QString& name = QStringLiteral("in.eds"))
{
    QTemporaryDir dir;
    const QString path = writeFile(dir.path(), name, text);
    QSharedPointer<ObjectDataBase> database = newProject();
    EXPECT_TRUE(importFile(database, path)) << "import did not end";
    return database;
}

SUBINDEX_DATA_T sub(ObjectDataBase& database, quint16 index, quint8 subindex)
{
    SUBINDEX_DATA_T record;
    EXPECT_TRUE(database.getSubIndex(0, index, subindex, record))
        << (hexIndex(index) + QStringLiteral(" sub %1").arg(subindex)).toStdString();
    return record;
}

INDEX_DATA_T object(ObjectDataBase& database, quint16 index)
{
    INDEX_DATA_T record;
    EXPECT_TRUE(database.getIndex(0, index, record)) << hexIndex(index).toStdString();
    return record;
}

// ---------------------------------------------------------------------------
// Every corpus file arrives whole. The counts come from reading the files:
// object sections of 0x1000 to 0xBFFF; per VAR one subindex, per ARRAY or
// RECORD its [xxxxsubN] sections, per ARRAY with CompactSubObj=N N+1; plus
// the PDO objects that NrOfRXPDO / NrOfTXPDO announce beyond those present.
//   modular_device.dcf: 1000, 1001, 1018 (5 subs) = 3 objects, 7 subs; it
//     announces 4 RPDOs and 4 TPDOs and has none: 0x1400-0x1403 (3 subs),
//     0x1800-0x1803 (5 subs) and their mappings 0x1600-0x1603, 0x1a00-0x1a03
//     (9 subs each): 16 objects, 104 subs more.
//   co-pdo-transmit.dcf: 1a00 is a RECORD with CompactSubObj, which only an
//     ARRAY expands, so it has no subindex: 1+1+5+3+0+1+1 = 12.
//   master.dcf: eighteen ARRAYs with CompactSubObj (254, 127, ...) give most
//     of its 2109 subindices.
//   dsp402.eds: 6092 and 60c5 appear twice and count once.
//   demoDevice.eds: 47 object sections; 266 subindex sections and 16 VARs
//     make 282 subindices, but the text default of 2121sub2 holds
//     apostrophes, which the bulk write takes as they are: that one
//     statement fails, and 281 arrive.
// ---------------------------------------------------------------------------
struct CorpusCase
{
    const char* file;
    int objects;
    int subIndices;
};

const CorpusCase corpusCases[] = {
    {"BatteryModule.dcf", 17, 43},
    {"BatteryModule.eds", 17, 43},
    {"CANopen_Sensor_s32k144.eds", 56, 269},
    {"DS301_profile.eds", 33, 170},
    {"DS401_Slave_Gui.eds", 38, 114},
    {"cia402_slave.eds", 70, 154},
    {"co-pdo-transmit.dcf", 7, 12},
    {"co-sdev.dcf", 28, 32},
    {"datatypes.eds", 24, 28},
    {"demoDevice.eds", 47, 281},
    {"dsp402.eds", 61, 84},
    {"kacanopen_CiA401.eds", 96, 453},
    {"kacanopen_CiA402.eds", 136, 258},
    {"kacanopen_CiA406.eds", 70, 201},
    {"master.dcf", 47, 2109},
    {"modular_device.dcf", 19, 111},
    {"sample.eds", 40, 124},
};

class CorpusImport : public ::testing::TestWithParam<CorpusCase>
{
};

TEST_P(CorpusImport, ObjectsAndSubIndicesArriveWhole)
{
    TRW_SKIP_WITHOUT_CORPUS();
    const QString path = QStringLiteral(TRW_CORPUS_DIR "/eds/") + QLatin1String(GetParam().file);
    ASSERT_TRUE(QFile::exists(path)) << path.toStdString();
    QSharedPointer<ObjectDataBase> database = newProject();
    ASSERT_TRUE(importFile(database, path)) << "import did not end";
    EXPECT_EQ(objectCount(*database), GetParam().objects);
    EXPECT_EQ(subIndexCount(*database), GetParam().subIndices);
}

INSTANTIATE_TEST_SUITE_P(EdsCorpus, CorpusImport, ::testing::ValuesIn(corpusCases),
                         [](const ::testing::TestParamInfo<CorpusCase>& info) {
                             return edstest::testName(info.param.file);
                         });

TEST(EdsImport, CorpusTableCoversEveryCorpusFile)
{
    TRW_SKIP_WITHOUT_CORPUS();
    const QStringList files = QDir(QStringLiteral(TRW_CORPUS_DIR "/eds")).entryList(QDir::Files);
    QStringList listed;
    for (const CorpusCase& c : corpusCases)
        listed << QLatin1String(c.file);
    for (const QString& file : files)
        EXPECT_TRUE(listed.contains(file)) << file.toStdString();
}

TEST(EdsImport, DemoDeviceKeepsItsRecords)
{
    TRW_SKIP_WITHOUT_CORPUS();
    QSharedPointer<ObjectDataBase> database = newProject();
    ASSERT_TRUE(importFile(database, QStringLiteral(TRW_CORPUS_DIR "/eds/demoDevice.eds")));
    EXPECT_EQ(object(*database, 0x1018).name, QStringLiteral("Identity"));
    EXPECT_EQ(object(*database, 0x1018).objecttype, 9);
    const SUBINDEX_DATA_T deviceType = sub(*database, 0x1000, 0);
    EXPECT_EQ(deviceType.datatype, 7);
    EXPECT_EQ(deviceType.defaultvalue, QStringLiteral("0x000F0191"));
    EXPECT_EQ(sub(*database, 0x1001, 0).pdomapping.toBinary(), 1);
    EXPECT_EQ(database->getDescriptionSetting(QStringLiteral("ProductName")), QStringLiteral("Demo device"));
}

// ---------------------------------------------------------------------------
// Generated PDO objects
// ---------------------------------------------------------------------------

const QByteArray twoTransmitPdos = "[DeviceInfo]\n"
                                   "NrOfRXPDO=0\n"
                                   "NrOfTXPDO=6\n"
                                   "[1800]\nParameterName=TPDO 1\nObjectType=0x9\nSubNumber=1\n"
                                   "[1800sub0]\nParameterName=Count\nDataType=0x0005\nDefaultValue=2\n"
                                   "[1801]\nParameterName=TPDO 2\nObjectType=0x9\nSubNumber=1\n"
                                   "[1801sub0]\nParameterName=Count\nDataType=0x0005\nDefaultValue=2\n"
                                   "[1A00]\nParameterName=Map 1\nObjectType=0x9\nSubNumber=1\n"
                                   "[1A00sub0]\nParameterName=Count\nDataType=0x0005\nDefaultValue=0\n"
                                   "[1A01]\nParameterName=Map 2\nObjectType=0x9\nSubNumber=1\n"
                                   "[1A01sub0]\nParameterName=Count\nDataType=0x0005\nDefaultValue=0\n";

TEST(EdsImport, AnnouncedTransmitPdosAreGeneratedWithTheirMappings)
{
    QSharedPointer<ObjectDataBase> database = importText(twoTransmitPdos);
    ObjectDataBase& db = *database;
    EXPECT_EQ(db.getIndexList(0, 0x1800, 0x19FF),
              (QList<quint16>{0x1800, 0x1801, 0x1802, 0x1803, 0x1804, 0x1805}));
    EXPECT_EQ(db.getIndexList(0, 0x1A00, 0x1BFF),
              (QList<quint16>{0x1A00, 0x1A01, 0x1A02, 0x1A03, 0x1A04, 0x1A05}));
    EXPECT_TRUE(db.getIndexList(0, 0x1400, 0x17FF).isEmpty());
    EXPECT_EQ(object(db, 0x1800).name, QStringLiteral("TPDO 1"));

    for (quint16 index = 0x1802; index <= 0x1805; ++index) {
        const INDEX_DATA_T comm = object(db, index);
        EXPECT_EQ(comm.name, QStringLiteral("Transmit PDO parameter %1").arg(index - 0x1800 + 1));
        EXPECT_EQ(comm.objecttype, 9);
        EXPECT_EQ(db.getSubIndexList(0, index), (QList<quint8>{0, 1, 2, 3, 5}));
        EXPECT_EQ(object(db, index + 0x200).name, QStringLiteral("Mapping Parameter"));
        EXPECT_EQ(db.getSubIndexList(0, index + 0x200), (QList<quint8>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
    }

    struct Expected
    {
        quint16 index;
        quint8 sub;
        const char* name;
        int datatype;
        const char* access;
        const char* value;
    };
    const Expected expected[] = {
        {0x1803, 0, "Number of Entries", 5, "ro", "5"},
        {0x1803, 1, "COB-ID", 7, "rw", "0x80000000"},
        {0x1803, 2, "Transmission Type", 5, "rw", "0xFF"},
        {0x1803, 3, "Inhibit Time", 6, "rw", "0"},
        {0x1803, 5, "Event Timer", 6, "rw", "0"},
        {0x1a03, 0, "Number of Entries", 5, "ro", "0"},
        {0x1a03, 1, "Mappping Entry 1", 7, "rw", "0x00000000"},
        {0x1a03, 8, "Mappping Entry 8", 7, "rw", "0x00000000"},
    };
    for (const Expected& e : expected) {
        const SUBINDEX_DATA_T record = sub(db, e.index, e.sub);
        EXPECT_EQ(record.name, QLatin1String(e.name));
        EXPECT_EQ(record.datatype, e.datatype) << e.name;
        EXPECT_EQ(record.accesstype, QLatin1String(e.access)) << e.name;
        EXPECT_EQ(record.defaultvalue, QLatin1String(e.value)) << e.name;
    }
}

TEST(EdsImport, ReceivePdosFillGapsAndKeepExistingMappings)
{
    const QByteArray text = "[DeviceInfo]\nNrOfRXPDO=0x2\n"
                            "[1600]\nParameterName=Own mapping\nObjectType=0x9\n"
                            "[1600sub0]\nParameterName=Count\nDataType=0x0005\nDefaultValue=0\n";
    QSharedPointer<ObjectDataBase> database = importText(text);
    ObjectDataBase& db = *database;
    EXPECT_EQ(db.getIndexList(0, 0x1400, 0x17FF), (QList<quint16>{0x1400, 0x1401, 0x1600, 0x1601}));
    EXPECT_EQ(object(db, 0x1401).name, QStringLiteral("Receive PDO parameter 2"));
    EXPECT_EQ(db.getSubIndexList(0, 0x1400), (QList<quint8>{0, 1, 2}));
    EXPECT_EQ(sub(db, 0x1400, 0).defaultvalue, QStringLiteral("2"));
    EXPECT_EQ(object(db, 0x1600).name, QStringLiteral("Own mapping"));
    EXPECT_EQ(db.getSubIndexList(0, 0x1600), (QList<quint8>{0}));
    EXPECT_EQ(object(db, 0x1601).name, QStringLiteral("Mapping Parameter"));
}

TEST(EdsImport, PdoCountsBeyondTheRangeStopAtItsEnd)
{
    QSharedPointer<ObjectDataBase> database = importText("[DeviceInfo]\nNrOfRXPDO=100000\nNrOfTXPDO=lots\n");
    EXPECT_EQ(database->getIndexList(0, 0x1400, 0x15FF).size(), 512);
    EXPECT_EQ(database->getIndexList(0, 0x1600, 0x17FF).size(), 512);
    EXPECT_TRUE(database->getIndexList(0, 0x1800, 0x1BFF).isEmpty());
}

// ---------------------------------------------------------------------------
// CompactSubObj arrays
// ---------------------------------------------------------------------------

TEST(EdsImport, CompactArrayGetsItsSubIndicesAndNames)
{
    const QByteArray text = "[2000]\nParameterName=Name\nObjectType=0x8\nDataType=0x0006\nAccessType=rw\n"
                            "DefaultValue=0x12\nPDOMapping=1\nCompactSubObj=3\n"
                            "[2001]\nParameterName=Other\nObjectType=0x8\nDataType=0x0007\nAccessType=ro\n"
                            "CompactSubObj=2\n"
                            "[2001Name]\nNrOfEntries=1\n2=Second\n";
    QSharedPointer<ObjectDataBase> database = importText(text);
    ObjectDataBase& db = *database;
    ASSERT_EQ(db.getSubIndexList(0, 0x2000), (QList<quint8>{0, 1, 2, 3}));

    const SUBINDEX_DATA_T highest = sub(db, 0x2000, 0);
    EXPECT_EQ(highest.name, QStringLiteral("Highest subindex supported"));
    EXPECT_EQ(highest.datatype, 5);
    EXPECT_EQ(highest.accesstype, QStringLiteral("ro"));
    EXPECT_EQ(highest.defaultvalue, QStringLiteral("3"));
    EXPECT_EQ(highest.pdomapping.toUInt(), 0);

    for (quint8 s = 1; s <= 3; ++s) {
        const SUBINDEX_DATA_T element = sub(db, 0x2000, s);
        EXPECT_EQ(element.name, QStringLiteral("Name %1").arg(s));
        EXPECT_EQ(element.datatype, 6);
        EXPECT_EQ(element.accesstype, QStringLiteral("rw"));
        EXPECT_EQ(element.defaultvalue, QStringLiteral("0x12"));
        EXPECT_EQ(element.pdomapping.toUInt(), 1);
    }
    EXPECT_EQ(sub(db, 0x2001, 1).name, QStringLiteral("Other 1"));
    EXPECT_EQ(sub(db, 0x2001, 2).name, QStringLiteral("Second"));
    EXPECT_EQ(sub(db, 0x2001, 0).defaultvalue, QStringLiteral("2"));
}

// ---------------------------------------------------------------------------
// ";;" comment lines become descriptions of the section they stand in
// ---------------------------------------------------------------------------

TEST(EdsImport, CommentInAnObjectSectionGoesToObjectAndSubZero)
{
    const QByteArray text =
        "[2000]\nParameterName=Rec\nObjectType=0x9\nSubNumber=2\n;;first line\n;;\n;;third\n"
        "[2000sub0]\nParameterName=Count\nDataType=0x0005\nDefaultValue=1\n"
        "[2000sub1]\nParameterName=Value\nDataType=0x0007\n;;of the value\n"
        "[2001]\nParameterName=Var\nObjectType=0x7\nDataType=0x0005\n;;at the end\n";
    QSharedPointer<ObjectDataBase> database = importText(text);
    ObjectDataBase& db = *database;
    const QString expected = QStringLiteral("first line\n\nthird");
    EXPECT_EQ(object(db, 0x2000).description, expected);
    EXPECT_EQ(sub(db, 0x2000, 0).description, expected);
    EXPECT_EQ(sub(db, 0x2000, 1).description, QStringLiteral("of the value"));
    EXPECT_EQ(object(db, 0x2001).description, QStringLiteral("at the end"));
    EXPECT_EQ(sub(db, 0x2001, 0).description, QStringLiteral("at the end"));
}

// Which entry a comment belongs to is read from the header above it alone,
// and a sub-index that doesn't exist takes none; "sub" marks a subindex only
// in lower case there. The reader of the file
// itself takes section names in any case, so "[2000SUB1]" still hands its
// comment to sub 1 as well.
TEST(EdsImport, CommentGoesWhereItsSectionHeaderPoints)
{
    struct Case
    {
        const char* header;
        bool toObject;
        bool toSubZero;
        bool toSubOne;
    };
    const Case cases[] = {
        {"[2000]", true, true, false},       {"[2000sub1]", false, false, true},
        {"[2000sub0]", false, true, false},  {"[2000SUB1]", true, true, true},
        {"[2000subff]", true, true, false},  {"[2000Sub1]", true, true, true},
        {"[2002sub1]", false, false, false}, {"[2000sub3]", false, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.header);
        const QByteArray text = "[2000]\nParameterName=Rec\nObjectType=0x9\nSubNumber=2\n"
                                "[2000sub0]\nParameterName=Count\nDataType=0x0005\nDefaultValue=1\n"
                                "[2000sub1]\nParameterName=Value\nDataType=0x0007\n" +
                                QByteArray(c.header) + "\n;;note\n";
        QSharedPointer<ObjectDataBase> database = importText(text);
        ObjectDataBase& db = *database;
        const QString note = QStringLiteral("note");
        EXPECT_EQ(object(db, 0x2000).description, c.toObject ? note : QString());
        EXPECT_EQ(sub(db, 0x2000, 0).description, c.toSubZero ? note : QString());
        EXPECT_EQ(sub(db, 0x2000, 1).description, c.toSubOne ? note : QString());
    }
}

// ---------------------------------------------------------------------------
// Index range of the command line: 0x1000 to 0xBFFF
// ---------------------------------------------------------------------------

TEST(EdsImport, ObjectsOutsideTheRangeStayOut)
{
    const QByteArray text = "[0FFF]\nParameterName=Low\nObjectType=0x7\nDataType=0x0005\n"
                            "[BFFF]\nParameterName=Last\nObjectType=0x7\nDataType=0x0005\n"
                            "[C000]\nParameterName=High\nObjectType=0x9\nSubNumber=1\n"
                            "[C000sub0]\nParameterName=Count\nDataType=0x0005\n;;text\n";
    QSharedPointer<ObjectDataBase> database = importText(text);
    EXPECT_EQ(database->getIndexList(0, 0, 0xFFFF), (QList<quint16>{0xBFFF}));
    EXPECT_TRUE(database->getSubIndexList(0, 0xC000).isEmpty());
}

// ---------------------------------------------------------------------------
// Header sections become description settings
// ---------------------------------------------------------------------------

TEST(EdsImport, HeaderSectionsBecomeDescriptionSettings)
{
    const QByteArray text = "[FileInfo]\nFileVersion=3\nFileRevision=4\nCreatedBy=Ann\nModifiedBy=Bob\n"
                            "Description=not taken\n"
                            "[DeviceInfo]\nVendorName=Acme, Inc.\nProductName=Widget\nOrderCode=W-1\n"
                            "LSS_Supported=1\nBaudRate_10=1\nBaudRate_1000=1\nnrofrxpdo=0\nNrOfTxPDO=0\n"
                            "Granularity=8\n"
                            "[DummyUsage]\nDummy0001=1\nDummy0004=1\nDummy004=1\n"
                            "[Comments]\nLines=3\nLine1=first\nLine3=third\n";
    QSharedPointer<ObjectDataBase> database = importText(text);
    ObjectDataBase& db = *database;
    const QPair<const char*, const char*> expected[] = {
        {"FileVersion", "3"},
        {"FileRevision", "4"},
        {"CreatedBy", "Ann"},
        {"ModifiedBy", "Bob"},
        {"VendorName", "Acme, Inc."},
        {"ProductName", "Widget"},
        {"OrderCode", "W-1"},
        {"LSS_Supported", "1"},
        {"BaudRate_10", "1"},
        {"BaudRate_1000", "1"},
        {"NrOfRXPDO", "0"},
        {"NrOfTXPDO", "0"},
        {"Dummy0001", "1"},
        {"Dummy004", "1"},
        {"Comment", "first\n\nthird"},
        // Left at the defaults of a new project:
        {"Granularity", "0"},
        {"Dummy0004", "0"},
        {"BaudRate_125", "1"},
    };
    for (const auto& [key, value] : expected)
        EXPECT_EQ(db.getDescriptionSetting(QLatin1String(key)), QString::fromUtf8(value)) << key;
}

// ---------------------------------------------------------------------------
// Bad input: the import ends and keeps what it could read
// ---------------------------------------------------------------------------

QByteArray garbage(int size)
{
    QByteArray bytes(size, '\0');
    QRandomGenerator generator(4711);
    for (char& c : bytes)
        c = char(generator.bounded(256));
    return bytes;
}

const QByteArray goodVar = "[2001]\nParameterName=Good\nObjectType=0x7\nDataType=0x0005\nDefaultValue=7\n";

TEST(EdsImport, BadInputEndsAndKeepsWhatItCouldRead)
{
    struct Case
    {
        const char* what;
        QByteArray text;
        QList<quint16> objects;
    };
    const Case cases[] = {
        {"empty file", QByteArray(), {}},
        {"binary garbage", garbage(64 * 1024), {}},
        {"garbage around an object", garbage(4096) + "\n" + goodVar + garbage(4096), {0x2001}},
        {"one huge line", QByteArray(8 * 1024 * 1024, 'A'), {}},
        {"huge line behind an object", goodVar + QByteArray(8 * 1024 * 1024, 'x'), {0x2001}},
        {"huge value",
         "[2002]\nParameterName=" + QByteArray(1024 * 1024, 'n') + "\nObjectType=0x7\n",
         {0x2002}},
        {"unknown data types",
         "[2003]\nParameterName=A\nObjectType=0x7\nDataType=0x7777\n"
         "[2004]\nParameterName=B\nObjectType=0x7\nDataType=NOSUCHTYPE\n",
         {0x2003, 0x2004}},
        {"subindex section without its object",
         "[2005sub1]\nParameterName=Orphan\nDataType=0x0005\n" + goodVar,
         {0x2001}},
        {"values that don't parse",
         "[2006]\nParameterName=Odd\nObjectType=banana\nSubNumber=many\nDataType=0x\nPDOMapping=maybe\n"
         "[2007]\nParameterName=Rec\nObjectType=0x9\nSubNumber=xyz\n[2007sub0]\nParameterName=N\nDataType="
         "0x0005\n"
         "[Comments]\nLines=4000000000\n[DeviceInfo]\nNrOfRXPDO=-3\n",
         {0x2006, 0x2007}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        QElapsedTimer timer;
        timer.start();
        QSharedPointer<ObjectDataBase> database = importText(c.text);
        EXPECT_EQ(database->getIndexList(0, 0, 0xFFFF), c.objects);
        EXPECT_LT(timer.elapsed(), 10000);
    }
}

TEST(EdsImport, OneFailingSubIndexDoesNotStopTheOthers)
{
    // The bulk write takes values as they are, strings too: an apostrophe
    // breaks the statement of its own subindex and of no other.
    const QByteArray text = "[2000]\nParameterName=Rec\nObjectType=0x9\n"
                            "[2000sub0]\nParameterName=N\nDataType=0x0005\nDefaultValue=2\n"
                            "[2000sub1]\nParameterName=Bad\nDataType=0x0005\nDefaultValue=it's\n"
                            "[2000sub2]\nParameterName=Text\nDataType=0x0009\nDefaultValue=it's\n"
                            "[2000sub3]\nParameterName=It's named\nDataType=0x0009\nDefaultValue=fine\n"
                            "[2001]\nParameterName=After\nObjectType=0x7\nDataType=0x0005\n";
    QSharedPointer<ObjectDataBase> database = importText(text);
    EXPECT_EQ(database->getSubIndexList(0, 0x2000), (QList<quint8>{0, 3}));
    EXPECT_EQ(sub(*database, 0x2000, 3).name, QStringLiteral("It's named"));
    EXPECT_EQ(database->getSubIndexList(0, 0x2001), (QList<quint8>{0}));
}

// A pipe or a folder under a description file's name must not block the
// reader or be taken for an empty file with settings; neither may a path
// that leads nowhere.
TEST(EdsImport, PathThatIsNoReadableRegularFileImportsNothing)
{
    QTemporaryDir dir;
    const QString pipe = dir.filePath(QStringLiteral("pipe.eds"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const QString folder = dir.filePath(QStringLiteral("folder.dcf"));
    ASSERT_TRUE(QDir().mkdir(folder));
    for (const QString& path : {pipe, folder, QStringLiteral("/no/such/file.eds")}) {
        SCOPED_TRACE(path.toStdString());
        QSharedPointer<ObjectDataBase> database = newProject();
        ASSERT_TRUE(importFile(database, path, 10000));
        EXPECT_TRUE(database->getIndexList(0, 0, 0xFFFF).isEmpty());
        EXPECT_EQ(database->getDescriptionSetting(QStringLiteral("VendorName")), QString());
    }
}

// ---------------------------------------------------------------------------
// The command line
// ---------------------------------------------------------------------------

QString makeProject(const QString& dir)
{
    QSharedPointer<ObjectDataBase> database = newProject();
    const QString path = dir + QStringLiteral("/device.trwp");
    EXPECT_TRUE(database->saveDatabase(path));
    return path;
}

// A file that isn't there ends the run before the check; one that is there
// but holds little or nothing readable is imported as what it is, the run
// goes on, and what could be read is saved with the project.
TEST(EdsImportCommandLine, MissingFileEndsTheRunUnreadableOneDoesNot)
{
    struct Case
    {
        const char* name;
        QByteArray content;
        bool exists;
        int exitCode;
        QList<quint16> kept;
    };
    const Case cases[] = {
        {"missing.eds", {}, false, 5, {}},
        {"missing.dcf", {}, false, 5, {}},
        {"garbage.eds", garbage(16 * 1024), true, -1, {}},
        {"empty.dcf", {}, true, -1, {}},
        {"hugeline.eds", QByteArray(5 * 1024 * 1024, 'E'), true, -1, {}},
        {"odd.eds",
         "[2005sub1]\nParameterName=Orphan\nDataType=0x0005\n" + goodVar +
             "[2003]\nParameterName=A\nObjectType=0x7\nDataType=0x7777\n"
             "[2006]\nParameterName=Odd\nObjectType=banana\nSubNumber=many\nDataType=0x\nPDOMapping=maybe\n",
         true,
         -1,
         {0x2001, 0x2003, 0x2006}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        const QString project = makeProject(dir.path());
        const QString path = dir.filePath(QLatin1String(c.name));
        if (c.exists)
            writeFile(dir.path(), QLatin1String(c.name), c.content);
        const auto result = testhelpers::runTrw({"-project", project, "-import", path, "-s"});
        const bool refused = result.out.contains(QStringLiteral("Import failed: %1\n").arg(path));
        EXPECT_EQ(refused, !c.exists) << result.out.toStdString();
        EXPECT_EQ(result.out.contains(QStringLiteral("Check of model consistency started")), c.exists);
        if (c.exitCode >= 0)
            EXPECT_EQ(result.exitCode, c.exitCode);
        else
            EXPECT_NE(result.exitCode, 5);
        EXPECT_NE(result.exitCode, -1) << "crashed";
        ObjectDataBase saved;
        ASSERT_TRUE(saved.openDataBase(project, true));
        EXPECT_EQ(saved.getIndexList(0, 0x2000, 0x5FFF), c.kept);
    }
}

// The file goes through the command line and is saved with the project; the
// suffix decides the importer whatever its case.
TEST(EdsImportCommandLine, ImportedFileIsSavedWithTheProject)
{
    TRW_SKIP_WITHOUT_CORPUS();
    struct Case
    {
        const char* file;
        const char* importedAs;
        int objects;
        int subIndices;
        const char* key;
        const char* value;
    };
    const Case cases[] = {
        {"modular_device.dcf", "modular_device.dcf", 19, 111, "VendorName", "Modular Vendor"},
        {"demoDevice.eds", "demoDevice.eds", 47, 281, "ProductName", "Demo device"},
        {"sample.eds", "SAMPLE.EDS", 40, 124, "CreatedBy", "Christian Sandberg"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        QTemporaryDir dir;
        const QString project = makeProject(dir.path());
        const QString source = dir.filePath(QLatin1String(c.importedAs));
        ASSERT_TRUE(QFile::copy(QStringLiteral(TRW_CORPUS_DIR "/eds/") + QLatin1String(c.file), source));
        const auto result = testhelpers::runTrw({"-project", project, "-import", source, "-s"});
        EXPECT_FALSE(result.out.contains(QStringLiteral("Import failed"))) << result.out.toStdString();
        EXPECT_NE(result.exitCode, 5);

        ObjectDataBase saved;
        ASSERT_TRUE(saved.openDataBase(project, true));
        EXPECT_EQ(objectCount(saved), c.objects);
        EXPECT_EQ(subIndexCount(saved), c.subIndices);
        EXPECT_EQ(saved.getDescriptionSetting(QLatin1String(c.key)), QLatin1String(c.value));
    }
}

} // namespace
