#include "codbtestsupport.h"
#include "common/testhelpers.h"

#include "importers/codbimporter.h"

#include <QMap>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace codbtest;

namespace {

// A line with the given fields at their positions, the rest empty.
QByteArray line(const QMap<int, QString>& fields)
{
    QStringList parts(23);
    for (auto it = fields.cbegin(); it != fields.cend(); ++it)
        parts[it.key()] = it.value();
    return parts.join(QLatin1Char(':')).toUtf8() + "\n";
}

QByteArray subLine(const QString& index, const QString& sub, const QString& type, const QString& lowText,
                   const QString& upText, const QString& defaultValue = QString())
{
    return line({{0, index},
                 {1, sub},
                 {2, QStringLiteral("Entry")},
                 {7, type},
                 {9, QStringLiteral("rw")},
                 {15, lowText},
                 {17, upText},
                 {19, defaultValue}});
}

const QByteArray deviceTypeLine = "1000::Device type:mandatory::VAR:m:UNSIGNED32:m:ro:m::n::n:::::::n:m\n";
const QByteArray storeParameters =
    "1010::Store parameters:optional::ARRAY:m\n"
    "1010:00:Highest sub-index supported:mandatory::VAR:m:UNSIGNED8:m:const:d[const,ro]::n::n::n::n:0x01:"
    "d[0x01...0x7F]:n:m\n"
    "1010:01:Save all parameters:optional::VAR:m:UNSIGNED32:m:rw:d[ro,rw]::n::n::n::n:::y:m\n";

} // namespace

// Comment lines, empty lines and CR LF line ends around the object line.
TEST(CODBImporter, VarObjectLineGivesObjectAndSubindexZero)
{
    const auto database = importText("# CANopen profile data base\r\n"
                                     "#pragma message 1000::Not an object:mandatory::VAR:m:UNSIGNED8\r\n"
                                     "#CODBChecker_pragma 2000::Neither:optional::VAR:m:UNSIGNED8\r\n"
                                     "\r\n" +
                                     QByteArray(deviceTypeLine).replace("\n", "\r\n"));
    EXPECT_EQ(database->getIndexList(0, 0, -1), QList<quint16>{0x1000});
    const INDEX_DATA_T object = index(database, 0x1000);
    EXPECT_EQ(object.name, "Device type");
    EXPECT_EQ(object.objecttype, 7);
    EXPECT_EQ(object.datatype, 7);
    EXPECT_EQ(object.category, 0);

    const SUBINDEX_DATA_T sub = subIndex(database, 0x1000, 0);
    EXPECT_EQ(sub.name, "Device type");
    EXPECT_EQ(sub.datatype, 7);
    EXPECT_EQ(sub.accesstype, "ro");
    // "m" is shorter than the "d[...]" frame, so nothing of it remains.
    EXPECT_EQ(sub.allowedaccesstypes, "");
    EXPECT_EQ(sub.lowlimit, "0");
    EXPECT_EQ(sub.uplimit, "4294967295");
    EXPECT_EQ(sub.pdomapping.toUInt(), 0);
    EXPECT_EQ(sub.defaultvalue, "");
    EXPECT_EQ(sub.writedefaulttoeds, 1);
    EXPECT_EQ(database->getSubIndexList(0, 0x1000), QList<quint8>{0});
}

TEST(CODBImporter, ArrayWithSubindexLines)
{
    const auto database = importText(storeParameters);
    const INDEX_DATA_T object = index(database, 0x1010);
    EXPECT_EQ(object.objecttype, 8);
    // Subindex 1 of an ARRAY gives the object its data type.
    EXPECT_EQ(object.datatype, 7);
    // The category of an ARRAY or RECORD line is not taken over.
    EXPECT_EQ(object.category, 1);

    const SUBINDEX_DATA_T count = subIndex(database, 0x1010, 0);
    EXPECT_EQ(count.accesstype, "const");
    EXPECT_EQ(count.allowedaccesstypes, "const,ro");
    EXPECT_EQ(count.defaultvalue, "0x01");
    EXPECT_EQ(count.lowlimit, "0");
    EXPECT_EQ(count.uplimit, "255");
    EXPECT_FALSE(count.limitineds);
    EXPECT_TRUE(count.defaultineds);
    // Below 0x2000 the count keeps the default implementation.
    EXPECT_EQ(count.implementation, 0);

    const SUBINDEX_DATA_T entry = subIndex(database, 0x1010, 1);
    EXPECT_EQ(entry.allowedaccesstypes, "ro,rw");
    EXPECT_EQ(entry.pdomapping.toUInt(), 1);
    EXPECT_EQ(entry.writedefaulttoeds, 0);
}

TEST(CODBImporter, CountOfProfileObjectsIsManagedConst)
{
    const auto database = importText("2000::Block:optional::RECORD:m\n"
                                     "2000:00:Count:mandatory::VAR:m:UNSIGNED8:m:ro:::n::n::n::n:0x01::n:m\n"
                                     "2000:01:Value:optional::VAR:m:UNSIGNED16:m:rw:::n::n::n::n:0::n:m\n");
    EXPECT_EQ(subIndex(database, 0x2000, 0).implementation, 1);
    EXPECT_EQ(subIndex(database, 0x2000, 1).implementation, 0);
    // Only an ARRAY takes the type of its first entry.
    EXPECT_EQ(index(database, 0x2000).datatype, 5);
}

struct LimitCase
{
    const char* lowText;
    const char* upText;
    const char* type;
    const char* low;
    const char* up;
};

class CODBLimits : public ::testing::TestWithParam<LimitCase>
{
};

TEST_P(CODBLimits, LowAndUpLimitTexts)
{
    const LimitCase& c = GetParam();
    const auto database = importText(
        subLine("1400", "01", c.type, QString::fromLatin1(c.lowText), QString::fromLatin1(c.upText)));
    const SUBINDEX_DATA_T sub = subIndex(database, 0x1400, 1);
    EXPECT_EQ(sub.lowlimit, c.low);
    EXPECT_EQ(sub.uplimit, c.up);
    EXPECT_FALSE(sub.limitineds);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, CODBLimits,
    ::testing::Values(
        LimitCase{"", "", "UNSIGNED8", "0", "255"}, LimitCase{"d", "0x10", "UNSIGNED8", "0", "255"},
        LimitCase{"n", "7", "INTEGER8", "-128", "127"}, LimitCase{"10", "250", "UNSIGNED8", "10", "250"},
        LimitCase{"0x01", "0x7F", "UNSIGNED8", "0x01", "127"},
        // The last decimal digits of "0x10" read 10, the hexadecimal number 16: the greater wins.
        LimitCase{"from 0x10", "0x10", "UNSIGNED8", "0x10", "16"},
        LimitCase{"1", "$NODEID+0x580", "UNSIGNED32", "1", "1408127"},
        LimitCase{"2", "NODEID", "UNSIGNED32", "2", "0127"},
        LimitCase{"-5", "0xFFFFFFFF", "INTEGER32", "5", "4294967295"},
        LimitCase{"5", "", "UNSIGNED16", "5", "0"}));

struct MappingCase
{
    const char* word1;
    const char* word2;
    quint8 mapping;
};

class CODBMapping : public ::testing::TestWithParam<MappingCase>
{
};

TEST_P(CODBMapping, MappingWords)
{
    const MappingCase& c = GetParam();
    const QString word1 = QString::fromLatin1(c.word1);
    const QString word2 = QString::fromLatin1(c.word2);
    const auto database =
        importText(line({{0, "6000"}, {2, "Var"}, {5, "VAR"}, {7, "UNSIGNED8"}, {21, word1}, {22, word2}}) +
                   line({{0, "6001"}, {1, "01"}, {2, "Sub"}, {7, "UNSIGNED8"}, {21, word1}, {22, word2}}));
    EXPECT_EQ(subIndex(database, 0x6000, 0).pdomapping.toUInt(), c.mapping);
    EXPECT_EQ(subIndex(database, 0x6001, 1).pdomapping.toUInt(), c.mapping);
}

INSTANTIATE_TEST_SUITE_P(Rules, CODBMapping,
                         ::testing::Values(MappingCase{"y", "m", 1}, MappingCase{"y", "", 1},
                                           MappingCase{"", "d", 1}, MappingCase{"n", "d", 0},
                                           MappingCase{"", "m", 0}, MappingCase{"n", "m", 0},
                                           MappingCase{"Y", "m", 0}));

TEST(CODBImporter, DefaultValueDecidesWritingToEds)
{
    const auto database =
        importText(subLine("2100", "00", "UNSIGNED8", "", "") + subLine("2100", "01", "UNSIGNED8", "", "") +
                   subLine("2100", "02", "UNSIGNED8", "", "", "7"));
    EXPECT_EQ(subIndex(database, 0x2100, 0).writedefaulttoeds, 1);
    EXPECT_EQ(subIndex(database, 0x2100, 1).writedefaulttoeds, 0);
    EXPECT_EQ(subIndex(database, 0x2100, 2).writedefaulttoeds, 1);
    EXPECT_EQ(subIndex(database, 0x2100, 2).defaultvalue, "7");
}

TEST(CODBImporter, DomainEntriesAreVariables)
{
    const auto database = importText("1021::Store EDS:optional::VAR:m:DOMAIN:m:ro:::n::n::n::n:::n:m\n" +
                                     subLine("2000", "03", "DOMAIN", "", ""));
    const SUBINDEX_DATA_T object = subIndex(database, 0x1021, 0);
    EXPECT_EQ(object.implementation, 2);
    EXPECT_EQ(object.varname, "v_41290");
    const SUBINDEX_DATA_T entry = subIndex(database, 0x2000, 3);
    EXPECT_EQ(entry.implementation, 2);
    EXPECT_EQ(entry.varname, "v_81923");
}

TEST(CODBImporter, VisibleStringsAreConstantsNeverEmpty)
{
    const auto database =
        importText("1008::Manufacturer device name:optional::VAR:m:VISIBLE_STRING:m:const:::n::n::n:"
                   ":n:::n:m\n"
                   "1009::Manufacturer hardware version:optional::VAR:m:VISIBLE_STRING:m:const:::n::"
                   "n::n::n:1.0::n:m\n" +
                   subLine("2001", "01", "VISIBLE_STRING", "", ""));
    const SUBINDEX_DATA_T empty = subIndex(database, 0x1008, 0);
    EXPECT_EQ(empty.implementation, 1);
    EXPECT_EQ(empty.defaultvalue, " ");
    EXPECT_EQ(empty.size, 1);
    const SUBINDEX_DATA_T given = subIndex(database, 0x1009, 0);
    EXPECT_EQ(given.implementation, 1);
    EXPECT_EQ(given.defaultvalue, "1.0");
    EXPECT_EQ(given.size, 0);
    const SUBINDEX_DATA_T entry = subIndex(database, 0x2001, 1);
    EXPECT_EQ(entry.defaultvalue, " ");
    EXPECT_EQ(entry.size, 1);
}

TEST(CODBImporter, CopyRulesAreSkippedUnlessAsked)
{
    const QByteArray text = storeParameters + "$1011=1010\n$10=1010\n";
    const auto plain = importText(text);
    EXPECT_FALSE(plain->indexExists(0, 0x1011));

    const auto copied = importText(text, [](CODBImporter& importer) { importer.setApplyCopyRules(true); });
    ASSERT_TRUE(copied->indexExists(0, 0x1011));
    EXPECT_EQ(index(copied, 0x1011).name, "Store parameters");
    EXPECT_EQ(copied->getSubIndexList(0, 0x1011), (QList<quint8>{0, 1}));
}

TEST(CODBImporter, RangeFiltersObjectLinesOnly)
{
    const auto database = importText("0FFF::Below:optional::VAR:m:UNSIGNED8:m:ro\n"
                                     "C000::Above:optional::VAR:m:UNSIGNED8:m:ro\n"
                                     "C001::Above array:optional::ARRAY:m\n"
                                     "C001:01:Entry of an ignored object:optional::VAR:m:UNSIGNED8:m:rw\n");
    EXPECT_TRUE(database->getIndexList(0, 0, -1).isEmpty());
    // The entry is written although its object is not there.
    EXPECT_TRUE(database->subIndexExists(0, 0xC001, 1));
    EXPECT_FALSE(database->subIndexExists(0, 0xC000, 0));
}

TEST(CODBImporter, NarrowedRangeAndOtherLine)
{
    const auto database = newDatabase();
    NODE_DATA_T node;
    ASSERT_TRUE(database->addNode(2, node));
    QTemporaryDir dir;
    const QString path =
        testhelpers::writeFile(dir.filePath(QStringLiteral("v1.codb")), deviceTypeLine + storeParameters);

    CODBImporter importer;
    importer.setDatabase(database);
    importer.setLine(2);
    importer.setIndexRange(0x1001, 0x1FFF);
    importer.setFile(path);
    ASSERT_TRUE(importer.startImport());
    importer.waitFinished();
    EXPECT_EQ(database->getIndexList(2, 0, -1), QList<quint16>{0x1010});
    EXPECT_TRUE(database->getIndexList(0, 0, -1).isEmpty());
}

TEST(CODBImporter, OtherObjectTypesAndMalformedLines)
{
    const auto database = importText("1022::Store format:optional::DOMAIN:m:UNSIGNED8\n"
                                     "1023\n"
                                     "xyzw::Bad index:optional::VAR:m:UNSIGNED8:m:rw\n"
                                     "2002:01:Short line\n");
    EXPECT_FALSE(database->indexExists(0, 0x1022));
    EXPECT_FALSE(database->indexExists(0, 0));
    const SUBINDEX_DATA_T shortLine = subIndex(database, 0x2002, 1);
    EXPECT_EQ(shortLine.name, "Short line");
    EXPECT_EQ(shortLine.datatype, 0);
    EXPECT_EQ(shortLine.accesstype, "ro");
}

TEST(CODBImporter, UnreadableFileStillFinishes)
{
    const auto database = newDatabase();
    CODBImporter importer;
    importer.setDatabase(database);
    EXPECT_FALSE(importer.setFile(QStringLiteral("/nonexistent/v301.codb")));
    QList<int> progress;
    QObject::connect(
        &importer, &BaseDataImporter::progress, &importer, [&progress](int value) { progress.append(value); },
        Qt::DirectConnection);
    ASSERT_TRUE(importer.startImport());
    importer.waitFinished();
    EXPECT_EQ(progress, QList<int>{100});
    EXPECT_TRUE(database->getIndexList(0, 0, -1).isEmpty());
}

TEST(CODBImporter, NullDatabaseIsRefusedAndHarmless)
{
    CODBImporter importer;
    EXPECT_FALSE(importer.setDatabase(QSharedPointer<ObjectDataBase>()));
    ASSERT_TRUE(importer.startImport());
    importer.waitFinished();
    EXPECT_FALSE(importer.isRunning());
}
