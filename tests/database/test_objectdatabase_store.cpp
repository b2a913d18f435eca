#include "database/objectdatabase.h"
#include "projectfile.h"

#include <QSqlQuery>
#include <functional>
#include <gtest/gtest.h>

namespace {

using Kind = ObjectDataBase::ChangeSet::Kind;

using records::subIndexWithEveryField;

void expectSameRecord(const SUBINDEX_DATA_T& a, const SUBINDEX_DATA_T& b)
{
    EXPECT_EQ(records::allFields(a), records::allFields(b));
}

class StoreTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(db.createNewDataBase()); }

    SUBINDEX_DATA_T read(quint8 line, quint16 index, quint8 sub)
    {
        SUBINDEX_DATA_T r;
        EXPECT_TRUE(db.getSubIndex(line, index, sub, r));
        return r;
    }

    ObjectDataBase db;
};

TEST_F(StoreTest, SubIndexRoundTripsCachedAndUncachedAlike)
{
    const SUBINDEX_DATA_T written = subIndexWithEveryField();
    ASSERT_TRUE(db.addSubIndex(0, 0x6200, 1, written));
    const SUBINDEX_DATA_T uncached = read(0, 0x6200, 1);
    expectSameRecord(uncached, written);
    db.cacheAllSubs(0, 0);
    expectSameRecord(read(0, 0x6200, 1), uncached);
}

TEST_F(StoreTest, WriteReplacesTheWholeRecord)
{
    ASSERT_TRUE(db.addSubIndex(0, 0x6200, 1, subIndexWithEveryField()));
    ASSERT_TRUE(db.addSubIndex(0, 0x6200, 1, SUBINDEX_DATA_T()));
    expectSameRecord(read(0, 0x6200, 1), SUBINDEX_DATA_T());
}

TEST_F(StoreTest, CachedKeyOutlivesDeleteUntilRefilled)
{
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, subIndexWithEveryField()));
    db.cacheAllSubs(0, 0);
    ASSERT_TRUE(db.deleteSubIndex(0, 0x2000, 0, false));
    EXPECT_FALSE(db.subIndexExists(0, 0x2000, 0));
    expectSameRecord(read(0, 0x2000, 0), subIndexWithEveryField());

    db.cacheAllSubs(0, 0);
    SUBINDEX_DATA_T r;
    EXPECT_FALSE(db.getSubIndex(0, 0x2000, 0, r));
}

TEST_F(StoreTest, WritesRefreshCachedKeysOnly)
{
    SUBINDEX_DATA_T first = subIndexWithEveryField();
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, first));
    db.cacheAllSubs(0, 0);

    first.defaultvalue = "42";
    first.metadata = ObjectMetadata::create();
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, first));
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 1, first));
    ASSERT_TRUE(db.deleteSubIndex(0, 0x2000, 0, false));
    ASSERT_TRUE(db.deleteSubIndex(0, 0x2000, 1, false));

    const SUBINDEX_DATA_T cached = read(0, 0x2000, 0);
    EXPECT_EQ(cached.defaultvalue, "42");
    EXPECT_FALSE(cached.metadata) << "an empty map reads as no metadata, cached or not";
    SUBINDEX_DATA_T r;
    EXPECT_FALSE(db.getSubIndex(0, 0x2000, 1, r)) << "a key written after the fill stays uncached";
}

TEST_F(StoreTest, CacheOfOneObjectReplacesTheLineCache)
{
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, SUBINDEX_DATA_T()));
    ASSERT_TRUE(db.addSubIndex(0, 0x2001, 0, SUBINDEX_DATA_T()));
    db.cacheAllSubs(0, 0);
    db.cacheAllSubs(0, 0x2001);
    db.deleteSubIndex(0, 0x2000, 0, true);
    db.deleteSubIndex(0, 0x2001, 0, true);
    SUBINDEX_DATA_T r;
    EXPECT_FALSE(db.getSubIndex(0, 0x2000, 0, r));
    EXPECT_TRUE(db.getSubIndex(0, 0x2001, 0, r));
}

TEST_F(StoreTest, DisplayNamePrefersTheDenotation)
{
    SUBINDEX_DATA_T named;
    named.name = "Output 1";
    SUBINDEX_DATA_T denoted = named;
    denoted.denotation = "Lamp";
    db.addSubIndex(0, 0x6200, 1, named);
    db.addSubIndex(0, 0x6200, 2, denoted);
    db.cacheSubNames(0, 0);
    db.deleteSubIndex(0, 0x6200, 2, true);
    EXPECT_EQ(db.getSubIndexDisplayName(0, 0x6200, 1), "Output 1");
    EXPECT_EQ(db.getSubIndexDisplayName(0, 0x6200, 2), "Lamp");
    EXPECT_EQ(db.getSubIndexDisplayName(0, 0x6200, 3), "");
}

struct QuoteCase
{
    int datatype;
    const char* defaultValue;
    const char* currentValue;
    bool stored;
};

class QuoteTest : public StoreTest, public ::testing::WithParamInterface<QuoteCase>
{
};

TEST_P(QuoteTest, OnlyVisibleStringsAcceptApostrophes)
{
    const QuoteCase& c = GetParam();
    SUBINDEX_DATA_T r;
    r.datatype = c.datatype;
    r.defaultvalue = c.defaultValue;
    r.currentvalue = c.currentValue;
    EXPECT_EQ(db.addSubIndex(0, 0x2100, 0, r), c.stored);
    SUBINDEX_DATA_T back;
    ASSERT_EQ(db.getSubIndex(0, 0x2100, 0, back), c.stored);
    if (c.stored) {
        EXPECT_EQ(back.defaultvalue, c.defaultValue);
        EXPECT_EQ(back.currentvalue, c.currentValue);
    }
}

INSTANTIATE_TEST_SUITE_P(Values, QuoteTest,
                         ::testing::Values(QuoteCase{9, "it's", "", true}, QuoteCase{9, "", "a'b'c", true},
                                           QuoteCase{5, "it's", "", false}, QuoteCase{10, "", "it's", false},
                                           QuoteCase{5, "0x10", "$NODEID+0x80", true}));

TEST_F(StoreTest, BulkWriteSkipsFailingEntriesAndNotifiesOnce)
{
    QList<ObjectDataBase::SubEntry> entries;
    for (quint8 sub = 0; sub < 3; ++sub) {
        ObjectDataBase::SubEntry entry;
        entry.index = 0x3000;
        entry.subindex = sub;
        entry.data.name = QStringLiteral("entry %1").arg(sub);
        entries.append(entry);
    }
    // Bulk writes don't double quotes, not even for strings.
    entries[1].data.datatype = 9;
    entries[1].data.defaultvalue = "it's";

    ChangeRecorder recorder(db);
    EXPECT_FALSE(db.addSubIndices(entries));
    EXPECT_EQ(db.getSubIndexList(0, 0x3000), (QList<quint8>{0, 2}));
    EXPECT_EQ(recorder.kinds(), QList<int>{Kind::SubIndexChanged});
    EXPECT_EQ(read(0, 0x3000, 2).name, "entry 2");
}

TEST_F(StoreTest, BulkWriteReachesEachEntrysLine)
{
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    ObjectDataBase::SubEntry a;
    a.index = 0x2000;
    ObjectDataBase::SubEntry b = a;
    b.line = 1;
    b.data.varname = "onLineOne";
    ASSERT_TRUE(db.addSubIndices({a, b}));
    EXPECT_EQ(read(1, 0x2000, 0).varname, "onLineOne");
    EXPECT_EQ(read(0, 0x2000, 0).varname, "");
}

TEST_F(StoreTest, MetadataRoundTripsAndBadBlobsReadAsNone)
{
    INDEX_DATA_T object;
    object.metadata = ObjectMetadata::create(QMap<QString, QString>{{"eds_define", "A"}});
    ASSERT_TRUE(db.addIndex(0, 0x2000, object));
    INDEX_DATA_T back;
    ASSERT_TRUE(db.getIndex(0, 0x2000, back));
    ASSERT_TRUE(back.metadata);
    EXPECT_EQ(back.metadata->value("eds_define"), "A");

    // An object update without metadata leaves the stored blob alone.
    object.metadata.reset();
    ASSERT_TRUE(db.addIndex(0, 0x2000, object));
    ASSERT_TRUE(db.getIndex(0, 0x2000, back));
    ASSERT_TRUE(back.metadata);

    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, SUBINDEX_DATA_T()));
    ASSERT_TRUE(
        db.setSubindexSqlValue("SubObjects0", "8192", "0", "metadata", QByteArray("\x00\x00\x00\x05xy", 6)));
    const SUBINDEX_DATA_T sub = read(0, 0x2000, 0);
    EXPECT_FALSE(sub.metadata);
    EXPECT_EQ(sub.name, "unnamed subindex");

    ASSERT_TRUE(db.setObjectIndexSqlValue("Objects0", "8192", "metadata", QByteArray("\xff\xff\xff\xff", 4)));
    ASSERT_TRUE(db.getIndex(0, 0x2000, back));
    EXPECT_FALSE(back.metadata);
    EXPECT_EQ(back.name, "unnamed object");
}

TEST_F(StoreTest, AddNodeOnExistingLineKeepsTheLaterColumns)
{
    NODE_DATA_T node;
    node.name = "first";
    node.isbootupmanager = true;
    node.multilinedata = 7;
    node.lssslave = true;
    ASSERT_TRUE(db.addNode(1, node));

    NODE_DATA_T changed;
    changed.name = "second";
    changed.tpdocnt = 4;
    ASSERT_TRUE(db.addNode(1, changed));
    NODE_DATA_T back;
    ASSERT_TRUE(db.getNode(1, back));
    EXPECT_EQ(back.name, "second");
    EXPECT_EQ(back.tpdocnt, 4);
    EXPECT_TRUE(back.isbootupmanager);
    EXPECT_EQ(back.multilinedata, 7u);
    EXPECT_TRUE(back.lssslave);
}

TEST_F(StoreTest, ReadsOfAMissingLineFindNothing)
{
    EXPECT_FALSE(db.indexExists(7, 0x1000));
    EXPECT_TRUE(db.getIndexList(7, 0, quint32(-1)).isEmpty());
    INDEX_DATA_T object;
    object.name = "prefilled";
    EXPECT_FALSE(db.getIndex(7, 0x1000, object));
    EXPECT_EQ(object.name, "prefilled");
}

// Each refused write leaves the whole project as it was, the record it aimed at included.
TEST_F(StoreTest, RefusedWritesLeaveEveryRowAlone)
{
    SUBINDEX_DATA_T existing;
    existing.datatype = 5;
    existing.defaultvalue = "5";
    ASSERT_TRUE(db.addIndex(0, 0x2000, INDEX_DATA_T()));
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, existing));
    ASSERT_TRUE(db.setGeneralSetting("user_defines", "A"));
    ASSERT_TRUE(db.setEnergyBusSetting("mode", "1"));

    SUBINDEX_DATA_T quoted = existing;
    quoted.defaultvalue = "it's";
    SUBINDEX_DATA_T quotedCurrent = existing;
    quotedCurrent.datatype = 3;
    quotedCurrent.currentvalue = "'";
    const struct
    {
        const char* what;
        std::function<bool(ObjectDataBase&)> write;
    } cases[] = {
        {"object on a missing line", [](ObjectDataBase& d) { return d.addIndex(7, 0x2000, INDEX_DATA_T()); }},
        {"subindex on a missing line",
         [](ObjectDataBase& d) { return d.addSubIndex(7, 0x2000, 0, SUBINDEX_DATA_T()); }},
        {"object column on a missing line",
         [](ObjectDataBase& d) { return d.setObjectIndexSqlValue("Objects7", "8192", "datatype", 7); }},
        {"subindex column on a missing line",
         [](ObjectDataBase& d) { return d.setSubindexSqlValue("SubObjects7", "8192", "0", "datatype", 7); }},
        {"default on a missing line", [](ObjectDataBase& d) { return d.setDefaultValue(7, 0x2000, 0, "1"); }},
        {"apostrophe in a number's default",
         [&quoted](ObjectDataBase& d) { return d.addSubIndex(0, 0x2000, 0, quoted); }},
        {"apostrophe in a number's current value",
         [&quotedCurrent](ObjectDataBase& d) { return d.addSubIndex(0, 0x2000, 0, quotedCurrent); }},
        {"apostrophe through the default setter",
         [](ObjectDataBase& d) { return d.setDefaultValue(0, 0x2000, 0, "it's"); }},
        {"apostrophe in a general setting",
         [](ObjectDataBase& d) { return d.setGeneralSetting("user_defines", "it's"); }},
        {"apostrophe in a new general setting",
         [](ObjectDataBase& d) { return d.setGeneralSetting("fresh", "it's"); }},
        {"apostrophe in an energy bus setting",
         [](ObjectDataBase& d) { return d.setEnergyBusSetting("mode", "it's"); }},
    };
    const QMap<QString, QStringList> before = projectfile::dump(db.database());
    ChangeRecorder recorder(db);
    for (const auto& c : cases) {
        EXPECT_FALSE(c.write(db)) << c.what;
        EXPECT_EQ(projectfile::dump(db.database()), before) << c.what;
    }
    EXPECT_TRUE(recorder.changes.isEmpty());
    EXPECT_EQ(read(0, 0x2000, 0).defaultvalue, "5");
}

TEST_F(StoreTest, UnknownDataTypeIsStoredAsGiven)
{
    SUBINDEX_DATA_T r;
    r.datatype = 4711;
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, r));
    EXPECT_EQ(read(0, 0x2000, 0).datatype, 4711);
    INDEX_DATA_T object;
    object.datatype = 0;
    ASSERT_TRUE(db.addIndex(0, 0x2000, object));
    ASSERT_TRUE(db.getIndex(0, 0x2000, object));
    EXPECT_EQ(object.datatype, 0);
}

TEST_F(StoreTest, RefusedWritesChangeNothing)
{
    db.setWritesRefused(true);
    EXPECT_FALSE(db.addNode(1, NODE_DATA_T()));
    EXPECT_FALSE(db.addIndex(0, 0x2000, INDEX_DATA_T()));
    EXPECT_FALSE(db.addSubIndex(0, 0x2000, 0, SUBINDEX_DATA_T()));
    EXPECT_FALSE(db.addSubIndices({ObjectDataBase::SubEntry()}));
    EXPECT_FALSE(db.setMiscSetting("postgencmd", "x"));
    db.setWritesRefused(false);
    EXPECT_FALSE(db.nodeExists(1));
    EXPECT_FALSE(db.subIndexExists(0, 0x2000, 0));
    EXPECT_FALSE(db.hasMiscSetting("postgencmd"));
}

TEST_F(StoreTest, IndexListHonoursTheRange)
{
    for (quint16 index : {0x1000, 0x1800, 0x2000, 0xFFFF})
        ASSERT_TRUE(db.addIndex(0, index, INDEX_DATA_T()));
    EXPECT_EQ(db.getIndexList(0, 0x1800, 0x2000), (QList<quint16>{0x1800, 0x2000}));
    EXPECT_EQ(db.getIndexList(0, 0x1001, quint32(-1)), (QList<quint16>{0x1800, 0x2000, 0xFFFF}));
    EXPECT_EQ(db.getIndexList(0, 0, 0x0FFF), QList<quint16>{});
}

TEST_F(StoreTest, FindSubIndicesQuotesTextOnly)
{
    SUBINDEX_DATA_T r;
    r.varname = "speed";
    r.datatype = 6;
    db.addSubIndex(0, 0x2001, 1, r);
    db.addSubIndex(0, 0x2000, 3, r);
    r.varname = "other";
    db.addSubIndex(0, 0x2000, 1, r);
    using Found = QList<QPair<quint16, quint8>>;
    EXPECT_EQ(db.findSubIndices(0, "varname", QString("speed")), (Found{{0x2000, 3}, {0x2001, 1}}));
    EXPECT_EQ(db.findSubIndices(0, "datatype", 6).size(), 3);
}

TEST_F(StoreTest, GenericSettersCreateBlankRecords)
{
    ASSERT_TRUE(db.setObjectIndexSqlValue("Objects0", "8192", "name", "Made by text"));
    ASSERT_TRUE(db.setObjectIndexSqlValue("Objects0", "8192", "objecttype", 9));
    INDEX_DATA_T object;
    ASSERT_TRUE(db.getIndex(0, 0x2000, object));
    EXPECT_EQ(object.name, "Made by text");
    EXPECT_EQ(object.objecttype, 9);
    EXPECT_EQ(object.description, "");

    ASSERT_TRUE(db.setSubindexSqlValue("SubObjects0", "8192", "2", "description", "Text"));
    ASSERT_TRUE(db.setSubindexSqlValue("SubObjects0", "8192", "2", "defaultvalue", "0x5"));
    const SUBINDEX_DATA_T sub = read(0, 0x2000, 2);
    EXPECT_EQ(sub.description, "Text");
    EXPECT_EQ(sub.defaultvalue, "0x5");
    EXPECT_EQ(sub.datatype, 0);
    EXPECT_EQ(sub.name, "");

    ASSERT_TRUE(db.setDefaultValue(0, 0x2000, 2, "it''s"));
    EXPECT_EQ(read(0, 0x2000, 2).defaultvalue, "it's");
    EXPECT_FALSE(db.setObjectIndexSqlValue("Objects0", "8192", "nosuchcolumn", 1));
}

TEST_F(StoreTest, DeletionRemovesConnectionsUnlessKept)
{
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    const QString links = "insert into Connections values(0,8192,1,1,8193,2,0);"
                          "insert into Connections values(1,8193,2,0,8192,1,0)";
    const auto countLinks = [this] {
        QSqlQuery query(db.database());
        query.exec("select count(*) from Connections");
        query.next();
        return query.value(0).toInt();
    };
    const auto addLinks = [this, &links] {
        QSqlQuery query(db.database());
        for (const QString& statement : links.split(';'))
            query.exec(statement);
    };

    addLinks();
    db.addIndex(0, 0x2000, INDEX_DATA_T());
    ASSERT_TRUE(db.deleteIndex(0, 0x2000, true));
    EXPECT_EQ(countLinks(), 2);
    db.addIndex(0, 0x2000, INDEX_DATA_T());
    ASSERT_TRUE(db.deleteIndex(0, 0x2000, false));
    EXPECT_EQ(countLinks(), 0);

    addLinks();
    ASSERT_TRUE(db.deleteSubIndex(0, 0x2000, 1, false));
    EXPECT_EQ(countLinks(), 0);

    addLinks();
    ASSERT_TRUE(db.deleteNode(1));
    EXPECT_EQ(countLinks(), 0);
}

TEST_F(StoreTest, DeleteNodeDropsTablesAndSettingsOfTheLine)
{
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    ASSERT_TRUE(db.addNode(2, NODE_DATA_T()));
    db.setGeneralSetting("line1type", "2");
    db.setGeneralSetting("line2type", "1");
    db.setGeneralSetting("nmtmaster", "1,0,1");
    db.setGeneralSetting("user_defines", "A,B,C");
    db.setJ1939Setting("startaddress", "128,129");

    ChangeRecorder recorder(db);
    ASSERT_TRUE(db.deleteNode(1));
    EXPECT_EQ(db.getNodeList(), (QList<quint8>{0, 2}));
    EXPECT_FALSE(db.hasGeneralSetting("line1type"));
    EXPECT_EQ(db.getGeneralSetting("line2type"), "1");
    EXPECT_EQ(db.getGeneralSetting("nmtmaster"), "1,1");
    EXPECT_EQ(db.getGeneralSetting("user_defines"), "A,C") << "every comma list loses the entry";
    EXPECT_EQ(db.getJ1939Setting("startaddress"), "128");
    db.setDescriptionLine(1);
    EXPECT_FALSE(db.hasDescriptionSetting("Comment"));
    db.setDescriptionLine(2);
    EXPECT_TRUE(db.hasDescriptionSetting("Comment"));
    EXPECT_FALSE(db.addIndex(1, 0x1000, INDEX_DATA_T()));
    EXPECT_EQ(recorder.kinds().last(), Kind::NodeDeleted);
}

TEST_F(StoreTest, NotificationKindsOfTheStore)
{
    ChangeRecorder recorder(db);
    db.addNode(3, NODE_DATA_T());
    db.addIndex(3, 0x2000, INDEX_DATA_T());
    db.addSubIndex(3, 0x2000, 1, SUBINDEX_DATA_T());
    db.deleteSubIndex(3, 0x2000, 1, false);
    db.deleteIndex(3, 0x2000, false);
    QList<int> kinds = recorder.kinds();
    kinds.removeAll(Kind::SettingChanged);
    EXPECT_EQ(kinds, (QList<int>{Kind::NodeAdded, Kind::IndexChanged, Kind::SubIndexChanged,
                                 Kind::SubIndexDeleted, Kind::IndexDeleted}));
    const ObjectDataBase::ChangeSet sub = recorder.changes.at(recorder.changes.size() - 2);
    EXPECT_EQ(sub.line, 3);
    EXPECT_EQ(sub.index, 0x2000);
    EXPECT_EQ(sub.subindex, 1);
}

TEST_F(StoreTest, CopyIndexWithinTheProject)
{
    INDEX_DATA_T object;
    object.name = "source";
    db.addIndex(0, 0x2000, object);
    db.addSubIndex(0, 0x2000, 0, subIndexWithEveryField());
    db.addSubIndex(0, 0x2000, 1, SUBINDEX_DATA_T());
    db.addIndex(0, 0x2100, INDEX_DATA_T());
    db.addSubIndex(0, 0x2100, 7, SUBINDEX_DATA_T());

    EXPECT_TRUE(db.copyIndex(0, 0x2000, 0, 0x2000));
    ChangeRecorder recorder(db);
    ASSERT_TRUE(db.copyIndex(0, 0x2000, 0, 0x2100));
    EXPECT_EQ(recorder.kinds(), (QList<int>{Kind::SubIndexChanged, Kind::SubIndexChanged}));
    EXPECT_EQ(db.getSubIndexList(0, 0x2100), (QList<quint8>{0, 1}));
    expectSameRecord(read(0, 0x2100, 0), subIndexWithEveryField());
    INDEX_DATA_T copied;
    ASSERT_TRUE(db.getIndex(0, 0x2100, copied));
    EXPECT_EQ(copied.name, "source");
}

TEST_F(StoreTest, CopiesFromAnotherProject)
{
    ObjectDataBase source;
    ASSERT_TRUE(source.createNewDataBase());
    INDEX_DATA_T object;
    object.name = "profile object";
    for (quint16 index : {0x1000, 0x6000, 0x6001}) {
        source.addIndex(0, index, object);
        source.addSubIndex(0, index, 0, subIndexWithEveryField());
    }
    source.setUDSServiceSessions(0, 34, "1,2");
    // Rows of hand-edited or old files may leave the flag empty.
    ASSERT_TRUE(
        QSqlQuery(source.database()).exec("insert into UDSSettings0 (sid, sessions) values(35, '2')"));

    db.addIndex(0, 0x6000, INDEX_DATA_T());
    db.addSubIndex(0, 0x6000, 9, SUBINDEX_DATA_T());
    ASSERT_TRUE(db.copyObjects(&source, 0, 0, 0x6000, 0x6FFF));
    EXPECT_EQ(db.getIndexList(0, 0, quint32(-1)), (QList<quint16>{0x6000, 0x6001}));
    EXPECT_EQ(db.getSubIndexList(0, 0x6000), QList<quint8>{0}) << "an object is replaced, not merged";
    expectSameRecord(read(0, 0x6001, 0), subIndexWithEveryField());

    QSqlQuery query(db.database());
    query.exec("select sessions from UDSSettings0 where sid = 34");
    ASSERT_TRUE(query.next());
    EXPECT_EQ(query.value(0).toString(), "1,2");
    EXPECT_EQ(db.getUDSServiceSessions(0, 35), "2");
    EXPECT_FALSE(db.getUDSServiceActive(0, 35));

    ASSERT_TRUE(db.copyIndexFromDatabase(&source, 0, 0x1000, 0, 0x1000));
    EXPECT_TRUE(db.indexExists(0, 0x1000));
    EXPECT_FALSE(db.copyIndexFromDatabase(&source, 0, 0x1234, 0, 0x1234));
}

TEST_F(StoreTest, CopyObjectsOntoItsOwnLineKeepsEverything)
{
    db.addIndex(0, 0x2000, INDEX_DATA_T());
    db.addSubIndex(0, 0x2000, 0, subIndexWithEveryField());
    ASSERT_TRUE(db.copyObjects(&db, 0, 0, 0x1000, 0xFFFF));
    // The table, not a cache the copy left behind, has to hold the record.
    db.clearSubIndexCaches();
    EXPECT_EQ(db.getSubIndexList(0, 0x2000), QList<quint8>{0});
    expectSameRecord(read(0, 0x2000, 0), subIndexWithEveryField());
    QSqlQuery query(db.database());
    query.exec("select count(*) from UDSSettings0");
    ASSERT_TRUE(query.next());
    EXPECT_EQ(query.value(0).toInt(), 5);
}

} // namespace
