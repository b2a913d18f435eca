#include "canopenlib/edsparser.h"
#include "common/testhelpers.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <ctime>

// Readable failure output for lists of names.
static void PrintTo(const QString& text, std::ostream* out)
{
    *out << text.toStdString();
}

namespace {

struct ParseResult
{
    bool loaded = false;
    QHash<quint16, CANopen::CANopenIndex> objects;
    QHash<quint32, CANopenSubindex> subs;
    // "1018" for an object, "1018.2" for a subindex, in the order of the signals.
    QStringList order;
    QMap<QString, QString> compactNames;

    CANopenSubindex sub(quint16 index, quint8 subindex) const { return subs.value(index * 256u + subindex); }
};

ParseResult parseFile(const QString& path, quint16 compactIndex = 0)
{
    ParseResult result;
    EdsParser parser;
    QObject::connect(&parser, &EdsParser::newIndex, [&result](const CANopen::CANopenIndex& record) {
        result.objects.insert(record.index, record);
        result.order.append(QString::number(record.index, 16));
    });
    QObject::connect(&parser, &EdsParser::newSubIndex, [&result](const CANopenSubindex& record) {
        result.subs.insert(record.index * 256u + record.subindex, record);
        result.order.append(QStringLiteral("%1.%2").arg(record.index, 0, 16).arg(record.subindex));
    });
    result.loaded = parser.LoadEds(path);
    result.compactNames = parser.getCompactSubObjNames(compactIndex);
    return result;
}

QString writeFile(const QTemporaryDir& dir, const QByteArray& content)
{
    return testhelpers::writeFile(dir.filePath(QStringLiteral("device.eds")), content);
}

ParseResult parseText(const QByteArray& content, quint16 compactIndex = 0)
{
    QTemporaryDir dir;
    return parseFile(writeFile(dir, content), compactIndex);
}

} // namespace

TEST(EdsParser, ObjectsAndSubindicesInFileOrderWithTheirProperties)
{
    const ParseResult result = parseText(R"([FileInfo]
FileName=basic.eds
[1000]
ParameterName=Device type
ObjectType=0x7
DataType=0x0007
DefaultValue=0x00000191
PDOMapping=0
[1018]
ParameterName=Identity object
ObjectType=0x9
SubNumber=2
[1018sub0]
DataType=0x0005
AccessType=const
DefaultValue=1
[1018sub1]
ParameterName=Vendor-ID
DataType=0x0007
[6000]
ObjectType=0x8
DataType=0x0005
AccessType=ro
[6000sub1]
ParameterName=Input 1
PDOMapping=1
LowLimit=0x10
HighLimit=0x20
ObjFlags=3
[6000sub2]
LowLimit=5
)");
    ASSERT_TRUE(result.loaded);
    EXPECT_EQ(result.order,
              QStringList({"1000", "1000.0", "1018", "1018.0", "1018.1", "6000", "6000.1", "6000.2"}));

    EXPECT_EQ(result.objects[0x1000].objecttype, 7);
    EXPECT_EQ(result.objects[0x1000].datatype, 7);
    const CANopenSubindex deviceType = result.sub(0x1000, 0);
    EXPECT_EQ(deviceType.name, QStringLiteral("Device type"));
    EXPECT_EQ(deviceType.defaultvalue, QStringLiteral("0x00000191"));
    EXPECT_TRUE(deviceType.defaultineds);

    EXPECT_EQ(result.objects[0x1018].subnumber, 2);
    EXPECT_EQ(result.sub(0x1018, 0).accesstype, QStringLiteral("const"));
    EXPECT_EQ(result.sub(0x1018, 0).name, QStringLiteral("unnamed subindex"));
    EXPECT_FALSE(result.sub(0x1018, 1).defaultineds);

    const CANopenSubindex input = result.sub(0x6000, 1);
    EXPECT_EQ(input.datatype, 5) << "array elements take the array's data type";
    EXPECT_TRUE(input.pdomapping.isEqualToType(PDOMapping::Mappable));
    EXPECT_TRUE(input.limitineds);
    EXPECT_EQ(input.lowlimit + input.uplimit, QStringLiteral("0x100x20"));
    EXPECT_TRUE(input.refuseread && input.refusewrite);
    EXPECT_EQ(result.sub(0x6000, 2).uplimit, QStringLiteral("255")) << "the missing end from the type";
    EXPECT_EQ(result.sub(0x6000, 2).accesstype, QStringLiteral("ro"));
}

TEST(EdsParser, LineEndsEncodingsKeyCaseAndBlanks)
{
    const QByteArray variants[] = {
        "[2000]\r\nParameterName=Temperatur \xe4u\xdf\r\nDataType=0x0003\r\n",
        "[2000]\rParameterName=Temperatur \xc3\xa4u\xc3\x9f\rDataType=0x0003\r",
        "\xef\xbb\xbf[2000]\nParameterName=Temperatur \xc3\xa4u\xc3\x9f\nDataType=3\n",
        "  [2000]  \n  PARAMETERNAME =  Temperatur \xc3\xa4u\xc3\x9f \ndatatype\t=\tINTEGER16\n",
    };
    for (const QByteArray& content : variants) {
        SCOPED_TRACE(content.toStdString());
        const ParseResult result = parseText(content);
        ASSERT_EQ(result.objects.size(), 1);
        EXPECT_EQ(result.objects[0x2000].name, QString::fromUtf8("Temperatur \xc3\xa4u\xc3\x9f"));
        EXPECT_EQ(result.objects[0x2000].datatype, 3);
    }
}

TEST(EdsParser, CommentsObjectListsDuplicatesAndConfigurationValues)
{
    const ParseResult result = parseText(R"(; written by hand
[MandatoryObjects]
SupportedObjects=1
1=0x1000
[1000]
ParameterName=First name
DataType=0x0007
;;Device type of the drive.
;;
;;Second paragraph.
[OptionalObjects]
1=0x1400
[1400]
ObjectType=9
[1400sub1]
DefaultValue=$NODEID+0x200
ParameterValue=0x203
Denotation=Conveyor
[1000]
ParameterName=Second name
AccessType=RO
)");
    EXPECT_EQ(result.order, QStringList({"1000", "1000.0", "1400", "1400.1"}));
    const CANopen::CANopenIndex deviceType = result.objects[0x1000];
    EXPECT_EQ(deviceType.name, QStringLiteral("Second name"));
    EXPECT_EQ(deviceType.category, CANopen::Mandatory);
    EXPECT_EQ(deviceType.description, QStringLiteral("Device type of the drive.\n\nSecond paragraph."));
    EXPECT_EQ(result.sub(0x1000, 0).description, deviceType.description);
    EXPECT_EQ(result.sub(0x1000, 0).accesstype, QStringLiteral("ro"));
    EXPECT_EQ(result.objects[0x1400].category, CANopen::Optional);
    const CANopenSubindex cobId = result.sub(0x1400, 1);
    EXPECT_EQ(cobId.defaultvalue, QStringLiteral("$NODEID+0x200"));
    EXPECT_EQ(cobId.currentvalue, QStringLiteral("0x203"));
    EXPECT_EQ(cobId.denotation, QStringLiteral("Conveyor"));
}

TEST(EdsParser, SubindexSectionsWhereverTheyStand)
{
    const ParseResult result = parseText(R"([1018sub1]
ParameterName=Vendor-ID
[1018]
ObjectType=0x9
[1000]
DataType=0x0007
DefaultValue=0x191
[1000sub1]
DefaultValue=0x55
[1018sub0]
DefaultValue=1
[1018SUB01]
AccessType=rw
[5555sub1]
ParameterName=Subindex without its object
)");
    EXPECT_EQ(result.order, QStringList({"1018", "1018.1", "1018.0", "1000", "1000.0"}));
    EXPECT_EQ(result.sub(0x1000, 0).defaultvalue, QStringLiteral("0x191"));
    EXPECT_EQ(result.sub(0x1018, 1).name, QStringLiteral("Vendor-ID"));
    EXPECT_EQ(result.sub(0x1018, 1).accesstype, QStringLiteral("rw"));
}

TEST(EdsParser, WordsAndValuesThatDoNotParse)
{
    const ParseResult result = parseText(R"([2000]
DataType=0x0040
[2001]
DataType=FLOAT
ObjFlags=zz
PDOMapping=maybe
[2002]
ObjectType=STRUCTURE
SubNumber=many
[2002sub0]
DataType=0x0005
[2003]
CompactSubObj=2
[6007]
ObjectType=VAR
DataType=INTEGER16
AccessType=RW
PDOMapping=1
[60FE]
ObjectType=ARRAY
DataType=UNSIGNED32
[60FEsub2]
ParameterName=bit mask
)");
    EXPECT_EQ(result.sub(0x2000, 0).datatype, 0x40);
    EXPECT_EQ(result.sub(0x2001, 0).datatype, 0);
    EXPECT_FALSE(result.sub(0x2001, 0).refuseread);
    EXPECT_TRUE(result.sub(0x2001, 0).pdomapping.isEqualToType(PDOMapping::NotMappable));
    EXPECT_EQ(result.objects[0x2002].objecttype, CANopen::Record);
    EXPECT_TRUE(result.subs.contains(0x2002 * 256u));
    EXPECT_EQ(result.objects[0x2003].objecttype, CANopen::Array);
    EXPECT_EQ(result.objects[0x6007].objecttype, CANopen::Var);
    EXPECT_EQ(result.sub(0x6007, 0).datatype, 3);
    EXPECT_EQ(result.sub(0x6007, 0).accesstype, QStringLiteral("rw"));
    EXPECT_TRUE(result.sub(0x6007, 0).pdomapping.isEqualToType(PDOMapping::Mappable));
    EXPECT_EQ(result.objects[0x60FE].objecttype, CANopen::Array);
    EXPECT_EQ(result.sub(0x60FE, 2).datatype, 7);
}

TEST(EdsParser, CompactArraysLeaveTheirSubindicesToTheReader)
{
    const ParseResult result = parseText(R"([3004]
CompactSubObj=3
ParameterName=Sensor Status
ObjectType=8
DataType=0x0006
AccessType=rw
DefaultValue=3
PDOMapping=1
[3004Name]
NrOfEntries=2
1=Sensor Status 1
0x03=Sensor Status 3
[3004sub1]
ParameterName=Ignored beside CompactSubObj
)",
                                         0x3004);
    EXPECT_EQ(result.order, QStringList({"3004"}));
    const CANopen::CANopenIndex status = result.objects[0x3004];
    EXPECT_EQ(status.compactsubobj, 3);
    EXPECT_EQ(status.datatype, 6);
    EXPECT_EQ(status.accesstype, QStringLiteral("rw"));
    EXPECT_EQ(status.defaultvalue, QStringLiteral("3"));
    EXPECT_TRUE(status.defaultineds);
    EXPECT_TRUE(status.pdomapping.isEqualToType(PDOMapping::Mappable));
    const QMap<QString, QString> expectedNames{{"1", "Sensor Status 1"}, {"3", "Sensor Status 3"}};
    EXPECT_EQ(result.compactNames, expectedNames);
}

TEST(EdsParser, BrokenFilesNeitherCrashNorHang)
{
    QByteArray garbage;
    for (int i = 0; i < 200000; ++i)
        garbage.append(char((i * 7919 + 13) % 256));
    const QByteArray files[] = {
        "",
        garbage,
        QByteArray("[x]y=z;").repeated(1024 * 1024),
        "[\n[]\n]\n[[[[\n=\n==\n",
        "[FileInfo]\nFileName=x\n[DeviceInfo]\nVendorName=y\n",
    };
    for (const QByteArray& content : files) {
        SCOPED_TRACE(content.left(40).toStdString());
        const ParseResult result = parseText(content);
        EXPECT_FALSE(result.loaded);
        EXPECT_TRUE(result.objects.isEmpty());
    }
    QTemporaryDir dir;
    EXPECT_FALSE(parseFile(dir.filePath(QStringLiteral("absent.eds"))).loaded);
    EXPECT_FALSE(parseFile(dir.path()).loaded);
}

#ifndef __has_feature
#define __has_feature(feature) 0
#endif
// The bound catches quadratic work. AddressSanitizer slows every memory
// access several times, so its builds allow more.
constexpr double largeFileMilliseconds = __has_feature(address_sanitizer) ? 5000 : 500;

// Measured in processor time: the build machine may be busy with other work.
TEST(EdsParser, LargeFileParsesQuickly)
{
    QByteArray content = "[FileInfo]\r\nFileName=large.eds\r\n\r\n";
    for (int index = 0x2000; index < 0x2000 + 2000; ++index) {
        const QByteArray hex = QByteArray::number(index, 16);
        content +=
            "[" + hex + "]\r\nParameterName=Object " + hex + "\r\nObjectType=0x9\r\nSubNumber=10\r\n\r\n";
        for (int sub = 0; sub < 10; ++sub) {
            content += "[" + hex + "sub" + QByteArray::number(sub, 16) +
                       "]\r\nParameterName=Entry\r\nObjectType=0x7\r\nDataType=0x0007\r\nAccessType=rw\r\n"
                       "DefaultValue=$NODEID+0x180\r\nPDOMapping=1\r\nLowLimit=0\r\nHighLimit=0xFFFF\r\n\r\n";
        }
    }
    QTemporaryDir dir;
    const QString path = writeFile(dir, content);
    const std::clock_t start = std::clock();
    const ParseResult result = parseFile(path);
    const double milliseconds = double(std::clock() - start) * 1000.0 / CLOCKS_PER_SEC;
    EXPECT_EQ(result.objects.size(), 2000);
    EXPECT_EQ(result.subs.size(), 20000);
    EXPECT_LT(milliseconds, largeFileMilliseconds);
}
