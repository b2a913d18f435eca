#include "codbtestsupport.h"

#include "resources/trwresources.h"

#include <QFile>
#include <QStringList>
#include <QTextStream>
#include <gtest/gtest.h>

using namespace codbtest;

namespace {

QString profilePath(const QString& id)
{
    return QStringLiteral(":/codb/v%1.codb").arg(id);
}

QSharedPointer<ObjectDataBase> loadProfile(const QString& id)
{
    trwInitResources();
    const auto database = newDatabase();
    importFile(database, profilePath(id));
    return database;
}

// Object lines and subindex records that the file itself announces.
struct FileCounts
{
    int objects = 0;
    int subindices = 0;
};

FileCounts countLines(const QString& path)
{
    FileCounts counts;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << path.toStdString();
    QTextStream stream(&file);
    for (QString text = stream.readLine(); !text.isNull(); text = stream.readLine()) {
        if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
            continue;
        if (text.mid(4, 2) != QLatin1String("::"))
            ++counts.subindices;
        else if (text.section(QLatin1Char(':'), 5, 5) == QLatin1String("VAR"))
            ++counts.objects, ++counts.subindices;
        else
            ++counts.objects;
    }
    return counts;
}

struct ProfileCase
{
    const char* id;
    // The default of 0x1000 names the device profile; null where the profile has no 0x1000.
    const char* deviceType;
};

class BuiltInProfile : public ::testing::TestWithParam<ProfileCase>
{
};

} // namespace

TEST_P(BuiltInProfile, LoadsCompletelyWithKnownTypesAndItsDeviceType)
{
    const QString id = QString::fromLatin1(GetParam().id);
    const auto database = loadProfile(id);
    const QList<quint16> indices = database->getIndexList(0, 0x1000, -1);
    const FileCounts expected = countLines(profilePath(id));
    ASSERT_GT(expected.objects, 0);
    EXPECT_EQ(indices.size(), expected.objects);

    int subindices = 0;
    for (quint16 objectIndex : indices) {
        const QList<quint8> subs = database->getSubIndexList(0, objectIndex);
        EXPECT_FALSE(subs.isEmpty()) << objectIndex;
        subindices += subs.size();
        for (quint8 sub : subs)
            EXPECT_NE(subIndex(database, objectIndex, sub).datatype, 0) << objectIndex << ":" << int(sub);
    }
    // Every subindex line belongs to an object line of the same file.
    EXPECT_EQ(subindices, expected.subindices);

    const char* deviceTypeDefault = GetParam().deviceType;
    if (!deviceTypeDefault) {
        EXPECT_FALSE(database->indexExists(0, 0x1000));
        return;
    }
    const SUBINDEX_DATA_T deviceType = subIndex(database, 0x1000, 0);
    EXPECT_EQ(deviceType.defaultvalue, deviceTypeDefault);
    EXPECT_EQ(deviceType.datatype, 7);
    EXPECT_EQ(deviceType.accesstype, "ro");
}

INSTANTIATE_TEST_SUITE_P(
    All, BuiltInProfile,
    ::testing::Values(ProfileCase{"301", "0x00000000"}, ProfileCase{"302", nullptr},
                      ProfileCase{"401", "0x00000191"}, ProfileCase{"402", "0x00000192"},
                      ProfileCase{"402_v3", "0x00000192"}, ProfileCase{"404", "0x00000194"},
                      ProfileCase{"405", "0x00000195"}, ProfileCase{"406", "0x00000196"},
                      ProfileCase{"408", "0x00000198"}, ProfileCase{"410", "0x0000019A"},
                      ProfileCase{"413", "0x0000019D"}, ProfileCase{"415", "0x0000019F"},
                      ProfileCase{"416", "0x000001A0"}, ProfileCase{"417", "0x000001A1"},
                      ProfileCase{"418", "0x000001A2"}, ProfileCase{"419", "0x000001A3"},
                      ProfileCase{"447", "0x000001BF"}, ProfileCase{"454-2", "0x000001C6"},
                      ProfileCase{"454-4", "0x000001C6"}, ProfileCase{"454-5", "0x000001C6"},
                      ProfileCase{"454-6", "0x000001C6"}, ProfileCase{"454-7", "0x000001C6"}),
    [](const ::testing::TestParamInfo<ProfileCase>& info) {
        return "v" +
               QString::fromLatin1(info.param.id).replace(QLatin1Char('-'), QLatin1Char('_')).toStdString();
    });

namespace {

struct Expected
{
    quint16 index;
    quint8 sub;
    int objectCode;
    int datatype;
    const char* access;
    quint8 pdoMapping;
};

void expectObjects(const QSharedPointer<ObjectDataBase>& database, const std::vector<Expected>& rows)
{
    for (const Expected& row : rows) {
        SCOPED_TRACE(QStringLiteral("0x%1 sub %2").arg(row.index, 4, 16).arg(row.sub).toStdString());
        EXPECT_EQ(index(database, row.index).objecttype, row.objectCode);
        const SUBINDEX_DATA_T sub = subIndex(database, row.index, row.sub);
        EXPECT_EQ(sub.datatype, row.datatype);
        EXPECT_EQ(sub.accesstype, row.access);
        EXPECT_EQ(sub.pdomapping.toUInt(), row.pdoMapping);
    }
}

constexpr int VAR = 7, ARRAY = 8, RECORD = 9;
constexpr int U8 = 5, U16 = 6, U32 = 7, I8 = 2, I16 = 3, I32 = 4, VSTRING = 9;

} // namespace

TEST(BuiltInProfiles, CommunicationProfileObjects)
{
    const auto database = loadProfile(QStringLiteral("301"));
    expectObjects(database, {
                                {0x1000, 0, VAR, U32, "ro", 0},    {0x1001, 0, VAR, U8, "ro", 1},
                                {0x1005, 0, VAR, U32, "rw", 0},    {0x1006, 0, VAR, U32, "rw", 0},
                                {0x1007, 0, VAR, U32, "rw", 0},    {0x1008, 0, VAR, VSTRING, "const", 0},
                                {0x100C, 0, VAR, U16, "rw", 0},    {0x100D, 0, VAR, U8, "rw", 0},
                                {0x1010, 0, ARRAY, U8, "ro", 0},   {0x1010, 1, ARRAY, U32, "rw", 0},
                                {0x1011, 1, ARRAY, U32, "rw", 0},  {0x1012, 0, VAR, U32, "rw", 0},
                                {0x1013, 0, VAR, U32, "rw", 1},    {0x1014, 0, VAR, U32, "rw", 0},
                                {0x1015, 0, VAR, U16, "rw", 0},    {0x1016, 1, ARRAY, U32, "rw", 0},
                                {0x1017, 0, VAR, U16, "rw", 0},    {0x1018, 0, RECORD, U8, "ro", 0},
                                {0x1018, 1, RECORD, U32, "ro", 0}, {0x1018, 2, RECORD, U32, "ro", 0},
                                {0x1018, 3, RECORD, U32, "ro", 0}, {0x1018, 4, RECORD, U32, "ro", 0},
                                {0x1019, 0, VAR, U8, "rw", 0},     {0x1200, 1, RECORD, U32, "ro", 0},
                                {0x1200, 2, RECORD, U32, "ro", 0}, {0x1400, 0, RECORD, U8, "ro", 0},
                                {0x1400, 1, RECORD, U32, "rw", 0}, {0x1400, 2, RECORD, U8, "rw", 0},
                                {0x1400, 3, RECORD, U16, "rw", 0}, {0x1400, 5, RECORD, U16, "rw", 0},
                                {0x1600, 0, RECORD, U8, "rw", 0},  {0x1600, 8, RECORD, U32, "rw", 0},
                                {0x1800, 1, RECORD, U32, "rw", 0}, {0x1800, 2, RECORD, U8, "rw", 0},
                                {0x1800, 3, RECORD, U16, "rw", 0}, {0x1800, 5, RECORD, U16, "rw", 0},
                                {0x1800, 6, RECORD, U8, "rw", 0},  {0x1A00, 0, RECORD, U8, "rw", 0},
                                {0x1A00, 8, RECORD, U32, "rw", 0},
                            });
    EXPECT_EQ(database->getSubIndexList(0, 0x1018), (QList<quint8>{0, 1, 2, 3, 4}));
    EXPECT_EQ(database->getSubIndexList(0, 0x1400), (QList<quint8>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(database->getSubIndexList(0, 0x1600).size(), 9);
    EXPECT_EQ(subIndex(database, 0x1200, 2).defaultvalue, "$NODEID+0x580");
    EXPECT_EQ(subIndex(database, 0x1800, 1).defaultvalue, "$NODEID+0x180");
    EXPECT_EQ(subIndex(database, 0x1403, 1).defaultvalue, "$NODEID+0x500");
}

TEST(BuiltInProfiles, GenericIoProfileObjects)
{
    const auto database = loadProfile(QStringLiteral("401"));
    expectObjects(database, {
                                {0x6000, 1, ARRAY, U8, "ro", 1},
                                {0x6020, 1, ARRAY, 1, "ro", 1},
                                {0x6200, 1, ARRAY, U8, "rw", 1},
                                {0x6401, 1, ARRAY, I16, "ro", 1},
                                {0x6411, 1, ARRAY, I16, "rw", 1},
                            });
    EXPECT_EQ(index(database, 0x6000).datatype, U8);
}

class DriveProfile : public ::testing::TestWithParam<const char*>
{
};

TEST_P(DriveProfile, PrincipalObjects)
{
    const auto database = loadProfile(QString::fromLatin1(GetParam()));
    expectObjects(database, {
                                {0x6040, 0, VAR, U16, "rw", 1},
                                {0x6041, 0, VAR, U16, "ro", 1},
                                {0x6060, 0, VAR, I8, "rw", 1},
                                {0x6061, 0, VAR, I8, "ro", 1},
                                {0x6064, 0, VAR, I32, "ro", 1},
                                {0x607A, 0, VAR, I32, "rw", 1},
                                {0x60FF, 0, VAR, I32, "rw", 1},
                            });
}

INSTANTIATE_TEST_SUITE_P(BothEditions, DriveProfile, ::testing::Values("402", "402_v3"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return "v" + std::string(info.param);
                         });
