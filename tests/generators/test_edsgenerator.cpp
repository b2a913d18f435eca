#include "common/testhelpers.h"
#include "generators/documents/edsgenerator.h"
#include "importers/edstestsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using edstest::newProject;

// How the pipeline configures one EDS run.
struct EdsRun
{
    QString define;
    bool canFd = false;
    bool classical = false;
    quint8 line = 0;
    bool multiLine = false;
};

QString generate(ObjectDataBase& db, const QString& dir, const EdsRun& run = EdsRun(),
                 QString* fileName = nullptr)
{
    EDSGenerator generator(run.define, run.canFd, run.classical);
    generator.setOutputDir(dir);
    generator.setDatabase(&db);
    generator.setDeviceName(QStringLiteral("device"));
    generator.setLine(run.line);
    generator.setMultiLine(run.multiLine);
    EXPECT_TRUE(generator.canWrite());
    EXPECT_EQ(generator.start(), AbstractGenerator::Ok);
    generator.waitUntilDone();
    if (fileName)
        *fileName = generator.outputFileName();
    return QString::fromUtf8(testhelpers::readFile(dir + QLatin1Char('/') + generator.outputFileName()));
}

// The four time and date lines differ from run to run.
QString withoutTimes(QString text)
{
    static const QRegularExpression times(QStringLiteral("^(Creation|Modification)(Time|Date)=.*\\n"),
                                          QRegularExpression::MultilineOption);
    return text.remove(times);
}

SUBINDEX_DATA_T entry(const QString& name, int datatype, const QString& access, const QString& value)
{
    SUBINDEX_DATA_T sub;
    sub.name = name;
    sub.datatype = datatype;
    sub.accesstype = access;
    sub.defaultvalue = value;
    return sub;
}

ObjectMetadata metadata(const QString& key, const QString& value)
{
    ObjectMetadata map(new QMap<QString, QString>);
    map->insert(key, value);
    return map;
}

ObjectMetadata variant(const QString& define)
{
    return metadata(QStringLiteral("eds_define"), define);
}

void addObject(ObjectDataBase& db, quint16 index, const QString& name, int type,
               const QList<QPair<quint8, SUBINDEX_DATA_T>>& subs, quint8 line = 0, ObjectMetadata meta = {},
               const QString& description = QString())
{
    INDEX_DATA_T object;
    object.name = name;
    object.objecttype = type;
    object.metadata = meta;
    object.description = description;
    db.addIndex(line, index, object);
    for (const auto& [sub, data] : subs)
        db.addSubIndex(line, index, sub, data);
}

void addVar(ObjectDataBase& db, quint16 index, const SUBINDEX_DATA_T& sub, quint8 line = 0,
            ObjectMetadata meta = {})
{
    addObject(db, index, sub.name, 7, {{0, sub}}, line, meta);
}

// The lines of the section "[name]" up to the next blank line.
QString section(const QString& text, const QString& name)
{
    const QString header = QLatin1Char('[') + name + QStringLiteral("]\n");
    const qsizetype start = text.indexOf(header);
    if (start < 0)
        return QString();
    const qsizetype end = text.indexOf(QStringLiteral("\n\n"), start);
    return text.mid(start, end < 0 ? -1 : end - start + 1);
}

QStringList objectRows(const QString& text, const QString& list)
{
    QStringList rows = section(text, list).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (!rows.isEmpty())
        rows.removeFirst();
    return rows;
}

class EdsGeneratorTest : public ::testing::Test
{
protected:
    // Adds one VAR per entry from 0x2000 on, with the object description of
    // the same place, generates and returns the sections of these objects.
    QStringList varSections(const QList<SUBINDEX_DATA_T>& vars, const QStringList& descriptions = {})
    {
        for (int i = 0; i < vars.size(); ++i)
            addObject(db, quint16(0x2000 + i), vars.at(i).name, 7, {{0, vars.at(i)}}, 0, {},
                      descriptions.value(i));
        const QString text = generate(db, dir.path());
        QStringList sections;
        for (int i = 0; i < vars.size(); ++i)
            sections << section(text, QString::number(0x2000 + i, 16));
        return sections;
    }

    QTemporaryDir dir;
    QSharedPointer<ObjectDataBase> database = newProject();
    ObjectDataBase& db = *database;
};

// ---------------------------------------------------------------------------
// The whole file of a small device, piece by piece
// ---------------------------------------------------------------------------

TEST_F(EdsGeneratorTest, SmallDeviceGivesTheWholeFile)
{
    const QPair<const char*, const char*> settings[] = {
        {"VendorName", "Acme"}, {"ProductName", "Widget"},
        {"FileVersion", "2"},   {"FileRevision", "3"},
        {"CreatedBy", "Ann"},   {"ModifiedBy", "Bob"},
        {"Granularity", ""},    {"AdditionalSections", "[Extra]\nKey=1"},
    };
    for (const auto& [key, value] : settings)
        db.setDescriptionSetting(QLatin1String(key), QLatin1String(value));

    addVar(db, 0x1000, entry("Device type", 7, "ro", "0x191"));
    addObject(db, 0x1018, "Identity", 9,
              {{0, entry("Number of entries", 5, "ro", "3")},
               {1, entry("Vendor-ID", 7, "ro", "0x123")},
               {2, entry("Product code", 7, "ro", "0x456")},
               {3, entry("Revision", 7, "ro", "1")}});
    addObject(db, 0x1400, "RPDO", 9,
              {{0, entry("Highest", 5, "ro", "2")}, {1, entry("COB-ID", 7, "rw", "$NODEID+0x200")}});
    SUBINDEX_DATA_T value = entry("Value 2", 6, "rw", "|x10");
    value.pdomapping = PDOMapping::Mappable;
    value.limitineds = true;
    value.lowlimit = "1";
    value.uplimit = "100";
    value.description = "per value";
    addObject(db, 0x2000, "Values", 8, {{0, entry("Count", 5, "ro", "9")}, {2, value}});
    SUBINDEX_DATA_T input = entry("Input", 2, "ro", "4");
    input.writedefaulttoeds = 0;
    input.refuseread = true;
    addObject(db, 0x6000, "Input", 7, {{0, input}}, 0, {}, "two\nlines");
    addVar(db, 0xD000, entry("Hidden", 5, "rw", "5"));

    const QString expected = QStringLiteral(
        "; EDS file for device - generated by CANopen Tarnwick 4.3.2\n"
        "[FileInfo]\nFileName=device.eds\nFileVersion=2\nFileRevision=3\nEDSVersion=4.0\nDescription=EDS\n"
        "CreatedBy=Ann\nModifiedBy=Bob\n\n"
        "[Comments]\nLines=1\nLine1=generated by CANopen Tarnwick by halvex\n\n"
        "[DeviceInfo]\nVendorName=Acme\nVendorNumber=0x123\nProductName=Widget\nProductNumber=0x456\n"
        "RevisionNumber=1\nOrderCode=0815-BUY-ME\nBaudRate_10=0\nBaudRate_20=0\nBaudRate_50=0\n"
        "BaudRate_125=1\nBaudRate_250=1\nBaudRate_500=0\nBaudRate_800=0\nBaudRate_1000=0\n"
        "NrOfRxPDO=1\nNrOfTxPDO=0\nSimpleBootupSlave=1\nSimpleBootupMaster=0\nLSS_Supported=0\n"
        "Granularity=0\nDynamicChannelsSupported=0\nGroupMessaging=0\n\n"
        "[DummyUsage]\nDummy0001=0\nDummy0002=0\nDummy0003=0\nDummy0004=0\nDummy0005=0\nDummy0006=0\n"
        "Dummy0007=0\n\n"
        "[MandatoryObjects]\nSupportedObjects=3\n1=0x1000\n2=0x1001\n3=0x1018\n\n"
        "[ManufacturerObjects]\nSupportedObjects=1\n1=0x2000\n\n"
        "[OptionalObjects]\nSupportedObjects=2\n1=0x1400\n2=0x6000\n\n"
        "[1000]\nParameterName=Device type\nObjectType=7\nDataType=7\nAccessType=ro\nPDOMapping=0\n"
        "DefaultValue=0x191\n;;\n\n"
        "[1018]\nParameterName=Identity\nObjectType=9\nSubNumber=4\n\n"
        "[1018sub0]\nParameterName=Number of entries\nObjectType=7\nDataType=5\nAccessType=ro\nPDOMapping=0\n"
        "DefaultValue=3\n\n"
        "[1018sub1]\nParameterName=Vendor-ID\nObjectType=7\nDataType=7\nAccessType=ro\nPDOMapping=0\n"
        "DefaultValue=0x123\n\n"
        "[1018sub2]\nParameterName=Product code\nObjectType=7\nDataType=7\nAccessType=ro\nPDOMapping=0\n"
        "DefaultValue=0x456\n\n"
        "[1018sub3]\nParameterName=Revision\nObjectType=7\nDataType=7\nAccessType=ro\nPDOMapping=0\n"
        "DefaultValue=1\n\n"
        "[1400]\nParameterName=RPDO\nObjectType=9\nSubNumber=2\n\n"
        "[1400sub0]\nParameterName=Highest\nObjectType=7\nDataType=5\nAccessType=ro\nPDOMapping=0\n"
        "DefaultValue=2\n\n"
        "[1400sub1]\nParameterName=COB-ID\nObjectType=7\nDataType=7\nAccessType=rw\nPDOMapping=0\n"
        "DefaultValue=$NODEID+0x200\n\n"
        "[2000]\nParameterName=Values\nObjectType=8\nSubNumber=2\n\n"
        "[2000sub0]\nParameterName=Count\nObjectType=7\nDataType=5\nAccessType=ro\nPDOMapping=0\n"
        "DefaultValue=2\n\n"
        "[2000sub2]\nParameterName=Value 2\nObjectType=7\nDataType=6\nAccessType=rw\nPDOMapping=1\n"
        "DefaultValue=10\nLowLimit=1\nHighLimit=100\n;;per value\n\n"
        "[6000]\nParameterName=Input\nObjectType=7\nDataType=2\nAccessType=ro\nPDOMapping=0\nObjFlags=2\n"
        ";;two\n;;lines\n\n"
        "[d000]\nParameterName=Hidden\nObjectType=7\nDataType=5\nAccessType=rw\nPDOMapping=0\nDefaultValue="
        "5\n;;\n\n"
        "[Extra]\nKey=1\n");
    const QString text = generate(db, dir.path());
    EXPECT_EQ(withoutTimes(text).toStdString(), expected.toStdString());

    static const QRegularExpression time(QStringLiteral("^CreationTime=(0[1-9]|1[0-2]):[0-5]\\d(AM|PM)$"),
                                         QRegularExpression::MultilineOption);
    static const QRegularExpression date(QStringLiteral("^ModificationDate=\\d\\d-\\d\\d-\\d\\d$"),
                                         QRegularExpression::MultilineOption);
    EXPECT_TRUE(time.match(text).hasMatch()) << text.left(400).toStdString();
    EXPECT_TRUE(date.match(text).hasMatch()) << text.left(400).toStdString();
}

// ---------------------------------------------------------------------------
// File names
// ---------------------------------------------------------------------------

TEST_F(EdsGeneratorTest, FileNameFollowsDefineClassicalAndLine)
{
    db.addNode(1, NODE_DATA_T());
    struct Case
    {
        const char* define;
        bool classical;
        bool multiLine;
        quint8 line;
        const char* name;
    };
    const Case cases[] = {
        {"", false, false, 0, "device.eds"},          {"", false, true, 1, "device_1.eds"},
        {"", true, false, 0, "device_classical.eds"}, {"", true, true, 1, "device_1_classical.eds"},
        {"V1", false, false, 0, "device_V1.eds"},     {"V1", true, false, 0, "device_V1.eds"},
        {"V1", false, true, 1, "device_1_V1.eds"},    {"V1", true, true, 1, "device_1_V1.eds"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir out;
        const QString text = generate(db, out.path(), {c.define, false, c.classical, c.line, c.multiLine});
        EXPECT_EQ(QDir(out.path()).entryList(QDir::Files), QStringList{QLatin1String(c.name)});
        EXPECT_TRUE(text.contains(QStringLiteral("\nFileName=device.eds\n")));
    }
}

bool readOnlyFilesAreProtected(const QString& dir)
{
    const QString probe = dir + QStringLiteral("/probe");
    QFile file(probe);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.close();
    QFile::setPermissions(probe, QFile::ReadOwner);
    const bool isProtected = !QFileInfo(probe).isWritable();
    QFile::setPermissions(probe, QFile::ReadOwner | QFile::WriteOwner);
    QFile::remove(probe);
    return isProtected;
}

TEST_F(EdsGeneratorTest, WritabilityIsAskedOfThePlainNameOnly)
{
    const QString plain = dir.path() + QStringLiteral("/device.eds");
    const QString classicalFile = dir.path() + QStringLiteral("/device_classical.eds");
    struct Case
    {
        const char* what;
        QString readOnly;
        bool writable;
    };
    const Case cases[] = {
        {"nothing there", QString(), true},
        {"plain file read-only", plain, false},
        {"only the classical file read-only", classicalFile, true},
    };
    // A privileged user writes into read-only files, so there the
    // permission bits decide nothing and only the name can be checked.
    const bool permissionsBind = readOnlyFilesAreProtected(dir.path());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        if (!c.writable && !permissionsBind)
            continue;
        for (const QString& path : {plain, classicalFile}) {
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
            QFile::remove(path);
        }
        if (!c.readOnly.isEmpty()) {
            QFile file(c.readOnly);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.close();
            QFile::setPermissions(c.readOnly, QFile::ReadOwner);
        }
        EDSGenerator generator(QString(), false, true);
        generator.setOutputDir(dir.path());
        generator.setDeviceName(QStringLiteral("device"));
        EXPECT_EQ(generator.canWrite(), c.writable);
    }
}

// ---------------------------------------------------------------------------
// Variants
// ---------------------------------------------------------------------------

TEST_F(EdsGeneratorTest, VariantFilterKeepsCommonEntriesAndThoseOfTheVariant)
{
    addVar(db, 0x2000, entry("Common", 5, "ro", "1"));
    addVar(db, 0x2001, entry("Only A", 5, "ro", "1"), 0, variant("A"));
    addVar(db, 0x2002, entry("Only B", 5, "ro", "1"), 0, variant("B"));
    SUBINDEX_DATA_T subA = entry("Sub A", 5, "ro", "1");
    subA.metadata = variant("A");
    SUBINDEX_DATA_T subB = entry("Sub B", 5, "ro", "1");
    subB.metadata = variant("B");
    addObject(db, 0x2003, "Mixed", 9, {{0, entry("Count", 5, "ro", "0")}, {1, subA}, {2, subB}});
    addVar(db, 0x6001, entry("Optional A", 5, "ro", "1"), 0, variant("A"));
    addObject(db, 0x1400, "RPDO of A", 9, {{0, entry("Count", 5, "ro", "2")}}, 0, variant("A"));

    struct Case
    {
        const char* define;
        QStringList manufacturer;
        QStringList optional;
        QString mixedSubNumber;
        QStringList present;
        QStringList absent;
    };
    const Case cases[] = {
        {"",
         {"1=0x2000", "2=0x2003"},
         {},
         "SubNumber=1",
         {"[2003sub0]"},
         {"[2001]", "[2002]", "[2003sub1]", "[2003sub2]", "[6001]", "[1400]"}},
        {"A",
         {"1=0x2000", "2=0x2001", "3=0x2003"},
         {"1=0x1400", "2=0x6001"},
         "SubNumber=2",
         {"[2001]", "[2003sub1]", "[6001]", "[1400]"},
         {"[2002]", "[2003sub2]"}},
        {"B",
         {"1=0x2000", "2=0x2002", "3=0x2003"},
         {},
         "SubNumber=2",
         {"[2002]", "[2003sub2]"},
         {"[2001]", "[2003sub1]", "[6001]", "[1400]"}},
        {"a", {"1=0x2000", "2=0x2003"}, {}, "SubNumber=1", {}, {"[2001]", "[2003sub1]"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.define);
        QTemporaryDir out;
        const QString text = generate(db, out.path(), {c.define});
        EXPECT_EQ(objectRows(text, "ManufacturerObjects"),
                  QStringList{QStringLiteral("SupportedObjects=%1").arg(c.manufacturer.size())} +
                      c.manufacturer);
        EXPECT_EQ(objectRows(text, "OptionalObjects"),
                  QStringList{QStringLiteral("SupportedObjects=%1").arg(c.optional.size())} + c.optional);
        EXPECT_TRUE(section(text, "2003").contains(c.mixedSubNumber));
        // The highest subindex counts every variant.
        EXPECT_TRUE(section(text, "2003sub0").contains(QStringLiteral("\nDefaultValue=2\n")));
        // The PDO counts are not filtered.
        EXPECT_TRUE(text.contains(QStringLiteral("\nNrOfRxPDO=1\n")));
        for (const QString& header : c.present)
            EXPECT_TRUE(text.contains(header)) << header.toStdString();
        for (const QString& header : c.absent)
            EXPECT_FALSE(text.contains(header)) << header.toStdString();
    }
}

// The pipeline's walk for a two-line project where line 1 has a variant:
// every line gets its plain file, line 1 also that of its variant.
TEST_F(EdsGeneratorTest, VariantInATwoLineProject)
{
    db.addNode(1, NODE_DATA_T());
    db.setDescriptionLine(0);
    db.setGeneralSetting(QStringLiteral("line1type"), QStringLiteral("1"));
    addVar(db, 0x2000, entry("Line zero", 5, "ro", "0"));
    addVar(db, 0x2000, entry("Common", 5, "ro", "1"), 1);
    addVar(db, 0x2001, entry("Variant", 5, "ro", "2"), 1, variant("X"));
    db.setDescriptionLine(1);
    db.setDescriptionSetting(QStringLiteral("ProductName"), QStringLiteral("Second line"));
    db.setDescriptionLine(0);

    const EdsRun runs[] = {{QString(), false, false, 0, true},
                           {QString(), false, false, 1, true},
                           {QStringLiteral("X"), false, false, 1, true}};
    QMap<QString, QString> files;
    for (const EdsRun& run : runs) {
        QString name;
        const QString text = generate(db, dir.path(), run, &name);
        files.insert(name, text);
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files),
              (QStringList{"device_0.eds", "device_1.eds", "device_1_X.eds"}));
    EXPECT_TRUE(files["device_0.eds"].contains(QStringLiteral("ParameterName=Line zero")));
    EXPECT_FALSE(files["device_0.eds"].contains(QStringLiteral("[2001]")));
    EXPECT_FALSE(files["device_1.eds"].contains(QStringLiteral("[2001]")));
    EXPECT_TRUE(files["device_1_X.eds"].contains(QStringLiteral("[2001]\nParameterName=Variant\n")));
    EXPECT_TRUE(files["device_1_X.eds"].contains(QStringLiteral("\nProductName=Second line\n")));
    EXPECT_TRUE(files["device_0.eds"].contains(QStringLiteral("\nProductName=\n")));
}

// ---------------------------------------------------------------------------
// CAN FD and its classical twin
// ---------------------------------------------------------------------------

TEST_F(EdsGeneratorTest, CanFdPairDiffersInFdObjectsAndDeviceType)
{
    addObject(db, 0x1000, "Device type", 8,
              {{0, entry("Count", 5, "ro", "1")}, {1, entry("Type", 7, "ro", "0x191")}});
    addVar(db, 0x1030, entry("FD timing", 7, "rw", "0"));
    addVar(db, 0x1031, entry("Between", 7, "rw", "0"));
    addVar(db, 0x1032, entry("FD other", 7, "rw", "0"));

    QTemporaryDir out;
    const QString fdText = generate(db, out.path(), {QString(), true});
    const QString classicalText = generate(db, out.path(), {QString(), false, true});
    EXPECT_EQ(QDir(out.path()).entryList(QDir::Files), (QStringList{"device.eds", "device_classical.eds"}));

    EXPECT_EQ(objectRows(fdText, "OptionalObjects"),
              (QStringList{"SupportedObjects=3", "1=0x1030", "2=0x1031", "3=0x1032"}));
    EXPECT_TRUE(fdText.contains(QStringLiteral("[1030]")));
    EXPECT_TRUE(
        fdText.contains(QStringLiteral("[1000]\nParameterName=Device type\nObjectType=8\nSubNumber=2\n\n")));
    EXPECT_TRUE(fdText.contains(QStringLiteral("[1000sub1]")));

    EXPECT_EQ(objectRows(classicalText, "OptionalObjects"), (QStringList{"SupportedObjects=1", "1=0x1031"}));
    EXPECT_FALSE(classicalText.contains(QStringLiteral("[1030]")));
    EXPECT_FALSE(classicalText.contains(QStringLiteral("[1032]")));
    EXPECT_FALSE(classicalText.contains(QStringLiteral("[1000sub")));
    EXPECT_TRUE(
        classicalText.contains(QStringLiteral("[1000]\nParameterName=Device type\nObjectType=7\nDataType=7\n"
                                              "AccessType=ro\nPDOMapping=0\nDefaultValue=0x191\n\n")));
}

TEST_F(EdsGeneratorTest, ClassicalArrayDeviceTypeWithoutSubOneIsBare)
{
    addObject(db, 0x1000, "Device type", 8, {{0, entry("Count", 5, "ro", "0")}});
    const QString text = generate(db, dir.path());
    EXPECT_TRUE(text.contains(QStringLiteral("[1000]\nParameterName=Device type\nObjectType=7\n\n")));
}

// ---------------------------------------------------------------------------
// Property blocks
// ---------------------------------------------------------------------------

TEST_F(EdsGeneratorTest, SubZeroOfDeviceObjectsNamesTheHighestSubIndex)
{
    const QList<QPair<quint8, SUBINDEX_DATA_T>> subs = {
        {0, entry("Count", 5, "ro", "7")}, {1, entry("One", 5, "rw", "1")}, {5, entry("Five", 5, "rw", "5")}};
    addObject(db, 0x1600, "Mapping", 9, subs);
    addObject(db, 0x2000, "Device record", 9, subs);
    addObject(db, 0x5fff, "Last device record", 8, subs);
    SUBINDEX_DATA_T silent = entry("Count", 5, "ro", "7");
    silent.writedefaulttoeds = 0;
    addObject(db, 0x2001, "Silent", 9, {{0, silent}, {3, entry("Three", 5, "rw", "3")}});
    SUBINDEX_DATA_T empty = entry("Count", 5, "ro", "");
    addObject(db, 0x2002, "Empty count", 9, {{0, empty}, {4, entry("Four", 5, "rw", "3")}});

    const QString text = generate(db, dir.path());
    EXPECT_TRUE(section(text, "1600sub0").contains(QStringLiteral("\nDefaultValue=7\n")));
    EXPECT_TRUE(section(text, "2000sub0").contains(QStringLiteral("\nDefaultValue=5\n")));
    EXPECT_TRUE(section(text, "5fffsub0").contains(QStringLiteral("\nDefaultValue=5\n")));
    EXPECT_FALSE(section(text, "2001sub0").contains(QStringLiteral("DefaultValue")));
    EXPECT_TRUE(section(text, "2002sub0").contains(QStringLiteral("\nDefaultValue=4\n")));
}

TEST_F(EdsGeneratorTest, DataTypeIsDecimalUserTypesBecomeUnsigned8UnlessOverridden)
{
    struct Case
    {
        int datatype;
        const char* override;
        const char* expected;
    };
    const Case cases[] = {
        {7, nullptr, "DataType=7"},   {27, nullptr, "DataType=27"}, {99, nullptr, "DataType=99"},
        {100, nullptr, "DataType=5"}, {124, nullptr, "DataType=5"}, {100, "0x0007", "DataType=7"},
        {5, "0x10009", "DataType=9"}, {5, "12", "DataType=12"},
    };
    QList<SUBINDEX_DATA_T> vars;
    for (const Case& c : cases) {
        vars << entry("Value", c.datatype, "ro", "");
        if (c.override)
            vars.last().metadata = metadata(QStringLiteral("eds_datatype"), QLatin1String(c.override));
    }
    const QStringList found = varSections(vars);
    for (int i = 0; i < vars.size(); ++i) {
        EXPECT_TRUE(found[i].contains(QStringLiteral("\n%1\n").arg(QLatin1String(cases[i].expected))))
            << found[i].toStdString();
    }
}

TEST_F(EdsGeneratorTest, DefaultValueFollowsItsWriteRule)
{
    struct Case
    {
        quint8 writeRule;
        bool defaultInEds;
        const char* value;
        const char* expected; // nullptr: no DefaultValue line
    };
    const Case cases[] = {
        {0, true, "1", nullptr}, {1, true, "1", "1"},     {1, false, "1", nullptr}, {2, false, "1", "1"},
        {2, true, "", nullptr},  {1, true, "|x0A", "0A"}, {1, true, "x|1", "x|1"},  {2, true, "|x", ""},
    };
    QList<SUBINDEX_DATA_T> vars;
    for (const Case& c : cases) {
        vars << entry("Value", 5, "ro", QLatin1String(c.value));
        vars.last().writedefaulttoeds = c.writeRule;
        vars.last().defaultineds = c.defaultInEds;
    }
    const QStringList found = varSections(vars);
    for (int i = 0; i < vars.size(); ++i) {
        if (cases[i].expected)
            EXPECT_TRUE(found[i].contains(QStringLiteral("\nDefaultValue=%1\n").arg(cases[i].expected)))
                << found[i].toStdString();
        else
            EXPECT_FALSE(found[i].contains(QStringLiteral("DefaultValue"))) << found[i].toStdString();
    }
}

TEST_F(EdsGeneratorTest, LimitsAndFlags)
{
    struct Case
    {
        bool limits;
        const char* low;
        const char* high;
        bool refuseRead;
        bool refuseWrite;
        const char* tail;
    };
    const Case cases[] = {
        {false, "1", "2", false, false, "PDOMapping=0\n"},
        {true, "1", "2", false, false, "PDOMapping=0\nLowLimit=1\nHighLimit=2\n"},
        {true, "", "", false, false, "PDOMapping=0\nLowLimit=\nHighLimit=\n"},
        {false, "", "", false, true, "PDOMapping=0\nObjFlags=1\n"},
        {false, "", "", true, false, "PDOMapping=0\nObjFlags=2\n"},
        {true, "0", "9", true, true, "PDOMapping=0\nLowLimit=0\nHighLimit=9\nObjFlags=3\n"},
    };
    QList<SUBINDEX_DATA_T> vars;
    for (const Case& c : cases) {
        SUBINDEX_DATA_T& sub = vars.emplace_back(entry("Value", 5, "rw", ""));
        sub.limitineds = c.limits;
        sub.lowlimit = QLatin1String(c.low);
        sub.uplimit = QLatin1String(c.high);
        sub.refuseread = c.refuseRead;
        sub.refusewrite = c.refuseWrite;
    }
    const QStringList found = varSections(vars);
    // The bare ";;" behind is the variable's own empty description.
    for (int i = 0; i < vars.size(); ++i)
        EXPECT_TRUE(found[i].endsWith(QLatin1String(cases[i].tail) + ";;\n")) << found[i].toStdString();
}

TEST_F(EdsGeneratorTest, NamesPassThroughVariableSubstitution)
{
    addObject(db, 0x2000, "Block {index}", 9,
              {{0, entry("Count", 5, "ro", "1")}, {1, entry("Channel {sub}", 5, "ro", "1")}});
    const QString text = generate(db, dir.path());
    EXPECT_TRUE(text.contains(QStringLiteral("[2000]\nParameterName=Block 2000\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("[2000sub1]\nParameterName=Channel 01\n")));
}

// ---------------------------------------------------------------------------
// Description lines
// ---------------------------------------------------------------------------

TEST_F(EdsGeneratorTest, DescriptionLinesAreCutAtTwoHundredFifty)
{
    const QString a250(250, QLatin1Char('a'));
    struct Case
    {
        QString description;
        QStringList lines;
    };
    const Case cases[] = {
        {a250, {a250}},
        {a250 + "b", {a250, "b"}},
        {a250 + QString(250, QLatin1Char('c')), {a250}},
        {a250 + a250 + QString(249, QLatin1Char('d')), {a250, a250, QString(249, QLatin1Char('d'))}},
        {a250 + a250 + a250, {a250, a250}},
        {"one\n\nthree", {"one", "", "three"}},
        {"\n", {"", ""}},
        {"", {""}},
    };
    QStringList descriptions;
    for (const Case& c : cases)
        descriptions << c.description;
    const QStringList found =
        varSections(QList<SUBINDEX_DATA_T>(descriptions.size(), entry("Value", 5, "ro", "")), descriptions);
    for (int i = 0; i < found.size(); ++i) {
        QStringList comments = found[i].split(QLatin1Char('\n')).filter(QRegularExpression("^;;"));
        comments.replaceInStrings(QRegularExpression("^;;"), QString());
        EXPECT_EQ(comments, cases[i].lines) << descriptions[i].size();
    }
}

// A variable closes with the comment lines of its object even when there is
// no text; an empty description anywhere else writes nothing.
TEST_F(EdsGeneratorTest, EmptyDescriptionLeavesACommentOnlyBehindVariables)
{
    struct Case
    {
        quint16 index;
        int type;
        bool canFd;
        const char* sectionName;
        int comments;
    };
    const Case cases[] = {
        {0x2000, 7, false, "2000", 1},     {0x2001, 2, false, "2001", 1}, {0x2002, 9, false, "2002", 0},
        {0x2002, 9, false, "2002sub1", 0}, {0x2003, 8, false, "2003", 0}, {0x2003, 8, false, "2003sub0", 0},
        {0x1000, 8, false, "1000", 0},     {0x1000, 8, true, "1000", 0},  {0x1000, 8, true, "1000sub1", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sectionName);
        QSharedPointer<ObjectDataBase> project = newProject();
        addObject(*project, c.index, "Object", c.type,
                  {{0, entry("Count", 5, "ro", "1")}, {1, entry("Value", 7, "ro", "0")}});
        QTemporaryDir out;
        const QString found = section(generate(*project, out.path(), {QString(), c.canFd}), c.sectionName);
        ASSERT_FALSE(found.isEmpty());
        EXPECT_EQ(found.count(QStringLiteral("\n;;")), c.comments) << found.toStdString();
        if (c.comments > 0) {
            EXPECT_TRUE(found.endsWith(QLatin1String("\n;;\n")));
        }
    }
}

// ---------------------------------------------------------------------------
// Header sections
// ---------------------------------------------------------------------------

TEST_F(EdsGeneratorTest, CommentSettingGivesTheCommentsSection)
{
    struct Case
    {
        QString comment;
        QString expected;
    };
    const Case cases[] = {
        {"", "[Comments]\nLines=1\nLine1=generated by CANopen Tarnwick by halvex\n"},
        {"  \n ", "[Comments]\nLines=1\nLine1=generated by CANopen Tarnwick by halvex\n"},
        {"a\n\nb", "[Comments]\nLines=3\nLine1=a\nLine2=\nLine3=b\n"},
        {"  single  ", "[Comments]\nLines=1\nLine1=single\n"},
    };
    for (const Case& c : cases) {
        db.setDescriptionSetting(QStringLiteral("Comment"), c.comment);
        QTemporaryDir out;
        EXPECT_EQ(section(generate(db, out.path()), "Comments"), c.expected);
    }
}

TEST_F(EdsGeneratorTest, GroupMessagingFollowsMappingCounts)
{
    struct Case
    {
        quint16 index;
        const char* count;
        int expected;
    };
    const Case cases[] = {
        {0x1600, "0xFE", 1}, {0x1600, "254", 1}, {0x1BFF, "255", 1},  {0x1A00, "253", 0},
        {0x1600, "0x40", 0}, {0x1C00, "255", 0}, {0x15FF, "0xFF", 0}, {0x1600, "", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << std::hex << c.index << " " << c.count);
        QSharedPointer<ObjectDataBase> project = newProject();
        addObject(*project, 0x1601, "Small mapping", 9, {{0, entry("Count", 5, "ro", "2")}});
        addObject(*project, c.index, "Mapping", 9, {{0, entry("Count", 5, "ro", QLatin1String(c.count))}});
        QTemporaryDir out;
        const QString text = generate(*project, out.path());
        EXPECT_TRUE(text.contains(QStringLiteral("\nGroupMessaging=%1\n").arg(c.expected)));
    }
}

TEST_F(EdsGeneratorTest, ObjectListsBoundaries)
{
    for (quint16 index : {0x1000, 0x1001, 0x1018, 0x1019, 0x1fff, 0x2000, 0x5fff, 0x6000, 0x9fff, 0xa000,
                          0xcfff, 0xd000, 0xffff})
        addVar(db, index, entry("Object", 5, "ro", "0"));
    const QString text = generate(db, dir.path());
    EXPECT_EQ(objectRows(text, "ManufacturerObjects"),
              (QStringList{"SupportedObjects=2", "1=0x2000", "2=0x5fff"}));
    EXPECT_EQ(objectRows(text, "OptionalObjects"),
              (QStringList{"SupportedObjects=6", "1=0x1019", "2=0x1fff", "3=0x6000", "4=0x9fff", "5=0xa000",
                           "6=0xcfff"}));
    EXPECT_TRUE(text.contains(QStringLiteral("\n[d000]\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("\n[ffff]\n")));
}

// ---------------------------------------------------------------------------
// Round trip over the corpus: import, generate, import that, generate again
// ---------------------------------------------------------------------------

class EdsRoundTrip : public ::testing::TestWithParam<const char*>
{
};

// Generates the EDS of a line of the project, imports it into a fresh
// project and generates again; both projects must hold as many objects and
// subindices.
void generateImportGenerate(ObjectDataBase& source, quint8 line, QString& first, QString& second)
{
    QTemporaryDir firstDir;
    first = generate(source, firstDir.path(), {QString(), false, false, line});
    ASSERT_TRUE(first.contains(QStringLiteral("\n[MandatoryObjects]\n")));

    QSharedPointer<ObjectDataBase> reread = newProject();
    ASSERT_TRUE(edstest::importFile(reread, firstDir.filePath(QStringLiteral("device.eds"))));
    EXPECT_EQ(edstest::objectCount(*reread), edstest::objectCount(source, line));
    EXPECT_EQ(edstest::subIndexCount(*reread), edstest::subIndexCount(source, line));
    QTemporaryDir secondDir;
    second = generate(*reread, secondDir.path());
}

void roundTrip(const char* file, QString& first, QString& second)
{
    QSharedPointer<ObjectDataBase> original = newProject();
    ASSERT_TRUE(edstest::importFile(original, QStringLiteral(TRW_CORPUS_DIR "/eds/") + QLatin1String(file)));
    generateImportGenerate(*original, 0, first, second);
}

TEST_P(EdsRoundTrip, SecondGenerationEqualsTheFirst)
{
    TRW_SKIP_WITHOUT_CORPUS();
    QString first;
    QString second;
    roundTrip(GetParam(), first, second);
    EXPECT_EQ(withoutTimes(second).toStdString(), withoutTimes(first).toStdString());
}

// dsp402.eds has ";;" lines in the sections of VAR objects. Such a text
// becomes the description of the object and of its sub 0, and a VAR writes
// both, so each round doubles it; that is how the tool treats these lines.
// All else comes back as it was.
TEST(EdsRoundTripDescriptions, VarCommentsOfTheCorpusDoubleAndAllElseStays)
{
    TRW_SKIP_WITHOUT_CORPUS();
    QString first;
    QString second;
    roundTrip("dsp402.eds", first, second);
    static const QRegularExpression comments(QStringLiteral("^;;.*\\n"), QRegularExpression::MultilineOption);
    EXPECT_GT(first.count(QStringLiteral("\n;;")), 0);
    EXPECT_GT(second.count(QStringLiteral("\n;;")), first.count(QStringLiteral("\n;;")));
    EXPECT_EQ(withoutTimes(second).remove(comments).toStdString(),
              withoutTimes(first).remove(comments).toStdString());
}

const char* const roundTripFiles[] = {
    "BatteryModule.dcf",    "BatteryModule.eds", "CANopen_Sensor_s32k144.eds", "DS301_profile.eds",
    "DS401_Slave_Gui.eds",  "cia402_slave.eds",  "co-pdo-transmit.dcf",        "co-sdev.dcf",
    "datatypes.eds",        "demoDevice.eds",    "kacanopen_CiA401.eds",       "kacanopen_CiA402.eds",
    "kacanopen_CiA406.eds", "master.dcf",        "modular_device.dcf",         "sample.eds",
};

INSTANTIATE_TEST_SUITE_P(EdsCorpus, EdsRoundTrip, ::testing::ValuesIn(roundTripFiles),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return edstest::testName(info.param);
                         });

// Every CANopen line of every example project: generate, import that file
// into a fresh project, generate again.
struct ExampleLine
{
    QString project;
    quint8 line;
};

QList<ExampleLine> exampleCanopenLines()
{
    QList<ExampleLine> lines;
    QDirIterator it(QStringLiteral(TRW_SOURCE_DIR "/examples"), {QStringLiteral("*.trwt")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        ObjectDataBase db;
        if (!db.openTextProject(path))
            continue;
        for (quint8 line : db.getNodeList()) {
            const int type = db.getGeneralSetting(QStringLiteral("line%1type").arg(line)).toInt();
            if (type == 1 || type == 5 || type == 6)
                lines.append({path, line});
        }
    }
    return lines;
}

TEST(EdsRoundTripExamples, EveryCanopenLineOfTheExamplesComesBackEqual)
{
    const QList<ExampleLine> lines = exampleCanopenLines();
    EXPECT_GE(lines.size(), 3);
    for (const ExampleLine& example : lines) {
        SCOPED_TRACE(QStringLiteral("%1 line %2").arg(example.project).arg(example.line).toStdString());
        ObjectDataBase project;
        ASSERT_TRUE(project.openTextProject(example.project));
        QString first;
        QString second;
        generateImportGenerate(project, example.line, first, second);
        ASSERT_TRUE(first.contains(QStringLiteral("\n[1000]\n")));
        // Granularity isn't among the keys an import takes over, so the
        // fresh project shows its own.
        EXPECT_TRUE(second.contains(QStringLiteral("\nGranularity=0\n")));
        static const QRegularExpression granularity(QStringLiteral("^Granularity=.*\\n"),
                                                    QRegularExpression::MultilineOption);
        EXPECT_EQ(withoutTimes(second).remove(granularity).toStdString(),
                  withoutTimes(first).remove(granularity).toStdString());
    }
}

// A VAR writes the description of its sub 0 and then its own, and reading
// gives the text of its section to both; so its text doubles with each round,
// while that of a RECORD, whose sub 0 has a section of its own, stays.
TEST(EdsRoundTripDescriptions, VarDescriptionDoublesWhileRecordDescriptionStays)
{
    QSharedPointer<ObjectDataBase> project = newProject();
    SUBINDEX_DATA_T var = entry("Var", 5, "ro", "0");
    var.description = "var text";
    addObject(*project, 0x2000, "Var", 7, {{0, var}}, 0, {}, "var text");
    SUBINDEX_DATA_T count = entry("Count", 5, "ro", "0");
    count.description = "record text";
    addObject(*project, 0x2001, "Rec", 9, {{0, count}}, 0, {}, "record text");
    QTemporaryDir firstDir;
    const QString first = generate(*project, firstDir.path());
    EXPECT_EQ(section(first, "2000").count(QStringLiteral(";;var text\n")), 2);
    EXPECT_EQ(section(first, "2001").count(QStringLiteral(";;record text\n")), 1);
    EXPECT_EQ(section(first, "2001sub0").count(QStringLiteral(";;record text\n")), 1);

    QSharedPointer<ObjectDataBase> reread = newProject();
    ASSERT_TRUE(edstest::importFile(reread, firstDir.filePath(QStringLiteral("device.eds"))));
    QTemporaryDir secondDir;
    const QString second = generate(*reread, secondDir.path());
    EXPECT_EQ(section(second, "2000").count(QStringLiteral(";;var text\n")), 4);
    EXPECT_EQ(section(second, "2001").count(QStringLiteral(";;record text\n")), 1);
    EXPECT_EQ(section(second, "2001sub0").count(QStringLiteral(";;record text\n")), 1);
}

} // namespace
