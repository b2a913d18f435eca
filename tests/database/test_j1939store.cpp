#include "database/objectdatabase.h"
#include "j1939testdata.h"
#include "projectfile.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace j1939testdata;

namespace {

constexpr quint8 tx = ObjectDataBase::Transmit;
constexpr quint8 rx = ObjectDataBase::Receive;
constexpr quint8 both = ObjectDataBase::Invalid;

class J1939Store : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(db.createNewDataBase());
        db.setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("2"));
    }

    void sql(const QString& statement)
    {
        QSqlQuery query(db.database());
        ASSERT_TRUE(query.exec(statement)) << statement.toStdString();
    }

    // A PGN with its SPNs, numbered from 1 in pos order.
    void addPgnWithSpns(quint32 number, quint8 direction, const QString& name, int spnCount)
    {
        ASSERT_TRUE(db.addPGN(0, number, pgn(direction, name)));
        for (int i = 0; i < spnCount; ++i)
            ASSERT_TRUE(
                db.addSPN(0, number, direction, i + 1, spn(i, 5, 8, QStringLiteral("s%1").arg(i + 1))));
    }

    ObjectDataBase db;
};

TEST_F(J1939Store, RecordsReadBackAsWrittenAndAWriteOfTheSameKeyUpdates)
{
    ObjectDataBase::PGN written = pgn(tx, QStringLiteral("Driver's demand"), true);
    ASSERT_TRUE(db.addPGN(0, 61444, written));
    written.priority = 3;
    written.FD_DataId = 123456;
    ASSERT_TRUE(db.addPGN(0, 61444, written));
    written.number = 61444;
    ObjectDataBase::PGN read;
    ASSERT_TRUE(db.getPGN(0, 61444, tx, read));
    EXPECT_EQ(fields(read), fields(written));
    EXPECT_EQ(db.getPGNList(0, both), QList<quint32>{61444});

    ObjectDataBase::SPN spnWritten = spn(4, 102, 4, QStringLiteral("Torque mode"));
    spnWritten.bitposition = 12;
    ASSERT_TRUE(db.addSPN(0, 61444, tx, 899, spnWritten));
    spnWritten.pos = 1;
    spnWritten.bitsize = 3;
    ASSERT_TRUE(db.addSPN(0, 61444, tx, 899, spnWritten));
    spnWritten.pgnnumber = 61444;
    spnWritten.spnnumber = 899;
    spnWritten.direction = tx;
    ObjectDataBase::SPN spnRead;
    ASSERT_TRUE(db.getSPN(0, 61444, tx, 899, spnRead));
    EXPECT_EQ(fields(spnRead), fields(spnWritten));
    EXPECT_EQ(db.getSPNName(0, 61444, tx, 899), QStringLiteral("Torque mode"));
    EXPECT_EQ(db.getSPNDatatype(0, 61444, tx, 899), 102);

    ObjectDataBase::CANID idWritten = canId(rx, QStringLiteral("Joystick"));
    ASSERT_TRUE(db.addCANID(0, 0x18FF0010, idWritten));
    idWritten.id = 0x18FF0010;
    ObjectDataBase::CANID idRead;
    ASSERT_TRUE(db.getCANID(0, 0x18FF0010, rx, idRead));
    EXPECT_EQ(fields(idRead), fields(idWritten));
}

TEST_F(J1939Store, ANumberExistsOncePerDirectionAndDeletingOneKeepsTheOther)
{
    addPgnWithSpns(65280, tx, QStringLiteral("sent"), 1);
    addPgnWithSpns(65280, rx, QStringLiteral("received"), 2);

    EXPECT_EQ(db.getPGNName(0, 65280, tx), QStringLiteral("sent"));
    EXPECT_EQ(db.getPGNName(0, 65280, rx), QStringLiteral("received"));
    EXPECT_EQ(db.getSPNList(0, 65280, rx), (QList<quint32>{1, 2}));
    EXPECT_EQ(db.getPGNList(0, both), (QList<quint32>{65280, 65280}));

    ASSERT_TRUE(db.deletePGN(0, 65280, tx));
    EXPECT_FALSE(db.pgnExists(0, 65280, tx));
    EXPECT_TRUE(db.pgnExists(0, 65280, rx));
    EXPECT_TRUE(db.getSPNList(0, 65280, tx).isEmpty());
    EXPECT_EQ(db.getSPNList(0, 65280, rx), (QList<quint32>{1, 2}));
}

TEST_F(J1939Store, PgnListFiltersByDirectionAndKeepsUnmarkedRowsWhenSafetyIsExcluded)
{
    ASSERT_TRUE(db.addPGN(0, 100, pgn(tx, QStringLiteral("a"), true)));
    ASSERT_TRUE(db.addPGN(0, 200, pgn(tx, QStringLiteral("b"), false)));
    ASSERT_TRUE(db.addPGN(0, 300, pgn(rx, QStringLiteral("c"), true)));
    ASSERT_TRUE(db.addPGN(0, 400, pgn(rx, QStringLiteral("d"), false)));
    // Rows of older files have no safety flag at all.
    sql(QStringLiteral("update PGNs0 set issafe = NULL where number = 400"));

    struct Case
    {
        quint8 direction;
        bool excludeSafe;
        QList<quint32> expected;
    };
    const Case cases[] = {
        {both, false, {100, 200, 300, 400}},
        {both, true, {200, 400}},
        {tx, false, {100, 200}},
        {tx, true, {200}},
        {rx, true, {400}},
        {rx, false, {300, 400}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(db.getPGNList(0, c.direction, c.excludeSafe), c.expected)
            << int(c.direction) << " excludeSafe " << c.excludeSafe;
}

TEST_F(J1939Store, UnknownRecordsReadAsDashesAndLeaveTheOutRecordAlone)
{
    addPgnWithSpns(61444, tx, QStringLiteral("EEC1"), 1);
    ASSERT_TRUE(db.addCANID(0, 0x123, canId(tx, QStringLiteral("known"))));

    EXPECT_EQ(db.getPGNName(0, 61444, rx), QStringLiteral("--"));
    EXPECT_EQ(db.getSPNName(0, 61444, tx, 2), QStringLiteral("--"));
    EXPECT_EQ(db.getCANIDName(0, 0x123, rx), QStringLiteral("--"));
    EXPECT_EQ(db.getDataElementName(0, 0x123, tx, 0), QStringLiteral("--"));

    ObjectDataBase::PGN untouched = pgn(rx, QStringLiteral("prefilled"));
    EXPECT_FALSE(db.getPGN(0, 61444, rx, untouched));
    EXPECT_EQ(untouched.name, QStringLiteral("prefilled"));
}

TEST_F(J1939Store, SpnsAreListedInPosOrderAndTheCacheServesOnlyItsOwnLine)
{
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    ASSERT_TRUE(db.addPGN(0, 65262, pgn(tx, QStringLiteral("ET1"))));
    ASSERT_TRUE(db.addPGN(1, 65262, pgn(tx, QStringLiteral("ET1 line 1"))));
    ASSERT_TRUE(db.addSPN(0, 65262, tx, 110, spn(2, 5, 8, QStringLiteral("coolant"))));
    ASSERT_TRUE(db.addSPN(0, 65262, tx, 175, spn(0, 6, 16, QStringLiteral("oil"))));
    ASSERT_TRUE(db.addSPN(0, 65262, tx, 52, spn(1, 5, 8, QStringLiteral("intercooler"))));
    ASSERT_TRUE(db.addSPN(1, 65262, tx, 110, spn(0, 5, 8, QStringLiteral("coolant line 1"))));

    EXPECT_EQ(db.getSPNList(0, 65262, tx), (QList<quint32>{175, 52, 110}));
    db.cacheAllSPNs(0);
    EXPECT_EQ(db.getSPNList(0, 65262, tx), (QList<quint32>{175, 52, 110}));
    EXPECT_EQ(db.getSPNList(1, 65262, tx), QList<quint32>{110});
    EXPECT_EQ(db.getSPNName(1, 65262, tx, 110), QStringLiteral("coolant line 1"));
    EXPECT_EQ(db.getSPNName(0, 65262, tx, 110), QStringLiteral("coolant"));
}

TEST_F(J1939Store, DataElementUpdateKeepsPosAndBitsizeWhileAnSpnUpdateChangesThem)
{
    ObjectDataBase::DataElement written = element(1, 6, 16, QStringLiteral("speed"));
    ASSERT_TRUE(db.addCANID(0, 0x181, canId(tx, QStringLiteral("Status"))));
    ASSERT_TRUE(db.addDataElement(0, 0x181, tx, 3, written));
    written.pos = 5;
    written.bitsize = 12;
    written.bitpos = 24;
    written.name = QStringLiteral("vehicle speed");
    ASSERT_TRUE(db.addDataElement(0, 0x181, tx, 3, written));

    ObjectDataBase::DataElement read;
    ASSERT_TRUE(db.getDataElement(0, 0x181, tx, 3, read));
    EXPECT_EQ(read.pos, 1u);
    EXPECT_EQ(read.bitsize, 16);
    EXPECT_EQ(read.bitpos, 24);
    EXPECT_EQ(read.name, QStringLiteral("vehicle speed"));
}

TEST_F(J1939Store, CanIdListsAndDeletionWorkPerDirection)
{
    ASSERT_TRUE(db.addCANID(0, 0x300, canId(rx, QStringLiteral("c"))));
    ASSERT_TRUE(db.addCANID(0, 0x100, canId(tx, QStringLiteral("a"))));
    ASSERT_TRUE(db.addCANID(0, 0x200, canId(tx, QStringLiteral("b"))));
    ASSERT_TRUE(db.addCANID(0, 0x200, canId(rx, QStringLiteral("b rx"))));
    ASSERT_TRUE(db.addDataElement(0, 0x200, tx, 0, element(0, 5, 8, QStringLiteral("e0"))));
    ASSERT_TRUE(db.addDataElement(0, 0x200, rx, 0, element(0, 5, 8, QStringLiteral("e0 rx"))));
    ASSERT_TRUE(db.addDataElement(0, 0x200, rx, 2, element(1, 5, 8, QStringLiteral("e2 rx"))));
    ASSERT_TRUE(db.addDataElement(0, 0x200, rx, 1, element(2, 5, 8, QStringLiteral("e1 rx"))));

    EXPECT_EQ(db.getCANIDList(0, both), (QList<quint32>{0x100, 0x200, 0x200, 0x300}));
    EXPECT_EQ(db.getCANIDList(0, tx), (QList<quint32>{0x100, 0x200}));
    EXPECT_EQ(db.getDataElementList(0, 0x200, rx), (QList<quint32>{0, 1, 2}));

    ASSERT_TRUE(db.deleteCANID(0, 0x200, tx));
    EXPECT_FALSE(db.canIdExists(0, 0x200, tx));
    EXPECT_TRUE(db.getDataElementList(0, 0x200, tx).isEmpty());
    EXPECT_EQ(db.getDataElementList(0, 0x200, rx), (QList<quint32>{0, 1, 2}));
}

TEST_F(J1939Store, OlderPgnTablesGetTheSafetyColumnsOnTheFirstWrite)
{
    sql(QStringLiteral("alter table PGNs0 drop column issafe"));
    sql(QStringLiteral("alter table PGNs0 drop column FD_DataId"));
    ObjectDataBase::PGN written = pgn(tx, QStringLiteral("safe"), true);
    ASSERT_TRUE(db.addPGN(0, 4096, written));
    ObjectDataBase::PGN read;
    ASSERT_TRUE(db.getPGN(0, 4096, tx, read));
    EXPECT_TRUE(read.issafe);
    EXPECT_EQ(read.FD_DataId, written.FD_DataId);
}

TEST_F(J1939Store, CopiesTakeTheRangeAndDirectionAndReplaceTheTarget)
{
    ObjectDataBase source;
    ASSERT_TRUE(source.createNewDataBase());
    ASSERT_TRUE(source.addPGN(0, 100, pgn(tx, QStringLiteral("low"))));
    ASSERT_TRUE(source.addPGN(0, 200, pgn(tx, QStringLiteral("in range"))));
    ASSERT_TRUE(source.addPGN(0, 200, pgn(rx, QStringLiteral("in range rx"))));
    ASSERT_TRUE(source.addPGN(0, 300, pgn(tx, QStringLiteral("high"))));
    ASSERT_TRUE(source.addSPN(0, 200, tx, 7, spn(1, 5, 8, QStringLiteral("second"))));
    ASSERT_TRUE(source.addSPN(0, 200, tx, 9, spn(0, 5, 8, QStringLiteral("first"))));
    addPgnWithSpns(200, tx, QStringLiteral("old"), 3);

    ASSERT_TRUE(db.copyPGNs(&source, 0, 0, 150, 300, tx));
    EXPECT_EQ(db.getPGNList(0, both), (QList<quint32>{200, 300}));
    EXPECT_EQ(db.getPGNName(0, 200, tx), QStringLiteral("in range"));
    EXPECT_EQ(db.getSPNList(0, 200, tx), (QList<quint32>{9, 7}));

    ASSERT_TRUE(db.copyPGNs(&source, 0, 0, 0, 1000, both));
    EXPECT_EQ(db.getPGNList(0, both), (QList<quint32>{100, 200, 200, 300}));

    ASSERT_TRUE(source.addCANID(0, 0x7FF, canId(rx, QStringLiteral("raw"))));
    ASSERT_TRUE(source.addDataElement(0, 0x7FF, rx, 0, element(0, 7, 32, QStringLiteral("value"))));
    ASSERT_TRUE(source.addCANID(0, 0x800, canId(rx, QStringLiteral("out of range"))));
    ASSERT_TRUE(db.copyCANIDs(&source, 0, 0, 0, 0x7FF, rx));
    EXPECT_EQ(db.getCANIDList(0, both), QList<quint32>{0x7FF});
    EXPECT_EQ(db.getDataElementName(0, 0x7FF, rx, 0), QStringLiteral("value"));
}

// The same numbers in both directions, each with signals of its own.
void fillBothDirections(ObjectDataBase& project, quint8 line)
{
    ASSERT_TRUE(project.addPGN(line, 200, pgn(tx, QStringLiteral("state"))));
    ASSERT_TRUE(project.addPGN(line, 200, pgn(rx, QStringLiteral("command"))));
    ASSERT_TRUE(project.addSPN(line, 200, tx, 7, spn(1, 5, 8, QStringLiteral("second"))));
    ASSERT_TRUE(project.addSPN(line, 200, tx, 9, spn(0, 5, 8, QStringLiteral("first"))));
    ASSERT_TRUE(project.addSPN(line, 200, rx, 7, spn(0, 6, 16, QStringLiteral("setpoint"))));
    ASSERT_TRUE(project.addCANID(line, 0x181, canId(tx, QStringLiteral("out"))));
    ASSERT_TRUE(project.addCANID(line, 0x181, canId(rx, QStringLiteral("in"))));
    ASSERT_TRUE(project.addDataElement(line, 0x181, tx, 0, element(0, 5, 8, QStringLiteral("a"))));
    ASSERT_TRUE(project.addDataElement(line, 0x181, tx, 1, element(1, 5, 8, QStringLiteral("b"))));
    ASSERT_TRUE(project.addDataElement(line, 0x181, rx, 0, element(0, 6, 16, QStringLiteral("c"))));
}

// Importing a project copies both directions at once; a copy may also target its own line.
TEST_F(J1939Store, CopiesOfBothDirectionsKeepEverySignalAlsoOntoTheirOwnLine)
{
    struct Case
    {
        const char* label;
        bool fromOtherProject;
        quint8 toLine;
    };
    const Case cases[] = {{"other project", true, 0},
                          {"same project, other line", false, 1},
                          {"same project, same line", false, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        ObjectDataBase target;
        ASSERT_TRUE(target.createNewDataBase());
        ASSERT_TRUE(target.addNode(1, NODE_DATA_T()));
        ObjectDataBase other;
        ASSERT_TRUE(other.createNewDataBase());
        ObjectDataBase& source = c.fromOtherProject ? other : target;
        fillBothDirections(source, 0);
        if (c.toLine != 0 || c.fromOtherProject) {
            ASSERT_TRUE(target.addPGN(c.toLine, 200, pgn(tx, QStringLiteral("stale"))));
            ASSERT_TRUE(target.addSPN(c.toLine, 200, tx, 3, spn(0, 5, 8, QStringLiteral("stale"))));
        }

        ASSERT_TRUE(target.copyPGNs(&source, 0, c.toLine, 0, 131071, both));
        ASSERT_TRUE(target.copyCANIDs(&source, 0, c.toLine, 0, 0x1FFFFFFF, both));

        EXPECT_EQ(target.getPGNList(c.toLine, both), (QList<quint32>{200, 200}));
        EXPECT_EQ(target.getPGNName(c.toLine, 200, tx), QStringLiteral("state"));
        EXPECT_EQ(target.getPGNName(c.toLine, 200, rx), QStringLiteral("command"));
        EXPECT_EQ(target.getSPNList(c.toLine, 200, tx), (QList<quint32>{9, 7}));
        EXPECT_EQ(target.getSPNList(c.toLine, 200, rx), QList<quint32>{7});
        ObjectDataBase::SPN written;
        ObjectDataBase::SPN copied;
        ASSERT_TRUE(source.getSPN(0, 200, rx, 7, written));
        ASSERT_TRUE(target.getSPN(c.toLine, 200, rx, 7, copied));
        EXPECT_EQ(fields(copied), fields(written));
        EXPECT_EQ(target.getCANIDList(c.toLine, both), (QList<quint32>{0x181, 0x181}));
        EXPECT_EQ(target.getDataElementList(c.toLine, 0x181, tx), (QList<quint32>{0, 1}));
        EXPECT_EQ(target.getDataElementName(c.toLine, 0x181, rx, 0), QStringLiteral("c"));
    }
}

TEST_F(J1939Store, UdsSettersKeepTheOtherColumnsOfTheService)
{
    const quint8 routineControl = 0x31;
    ASSERT_TRUE(db.setUDSServiceSessions(0, routineControl, QStringLiteral("2,3")));
    ASSERT_TRUE(db.setUDSServiceUserLevels(0, routineControl, QStringLiteral("1")));
    ASSERT_TRUE(db.setUDSServiceAuthentication(0, routineControl, QStringLiteral("4,5")));
    ASSERT_TRUE(db.setUDSServiceActive(0, routineControl, true));
    EXPECT_TRUE(db.getUDSServiceActive(0, routineControl));
    EXPECT_EQ(db.getUDSServiceSessions(0, routineControl), QStringLiteral("2,3"));
    EXPECT_EQ(db.getUDSServiceUserLevels(0, routineControl), QStringLiteral("1"));
    EXPECT_EQ(db.getUDSServiceAuthentication(0, routineControl), QStringLiteral("4,5"));

    ASSERT_TRUE(db.setUDSServiceActive(0, routineControl, false));
    ASSERT_TRUE(db.setUDSServiceSessions(0, routineControl, QStringLiteral("1")));
    EXPECT_FALSE(db.getUDSServiceActive(0, routineControl));
    EXPECT_EQ(db.getUDSServiceAuthentication(0, routineControl), QStringLiteral("4,5"));
    EXPECT_EQ(db.getUDSServiceList(0).value(routineControl, true), false);
}

// Repairs that opening a saved project runs on the J1939 and raw CAN tables.
class J1939OpenRepairs : public J1939Store
{
protected:
    QString saveAndEdit(const QStringList& statements)
    {
        const QString path = dir.filePath(QStringLiteral("project.trwp"));
        EXPECT_TRUE(db.saveDatabase(path));
        EXPECT_TRUE(projectfile::execute(path, statements));
        return path;
    }

    QTemporaryDir dir;
};

TEST_F(J1939OpenRepairs, WrongMappingCountsAreCorrected)
{
    addPgnWithSpns(61444, tx, QStringLiteral("EEC1"), 3);
    addPgnWithSpns(61444, rx, QStringLiteral("EEC1 rx"), 0);
    const QString path = saveAndEdit({QStringLiteral("update PGNs0 set mappingcount = 9")});

    ObjectDataBase reopened;
    ASSERT_TRUE(reopened.openDataBase(path, true));
    EXPECT_EQ(reopened.getPGNMappingCount(0, 61444, tx), 3);
    EXPECT_EQ(reopened.getPGNMappingCount(0, 61444, rx), 0);
}

TEST_F(J1939OpenRepairs, BitPositionsOnlyOfFilesBeforeVersion105AreRecomputed)
{
    // Elements in number order: 8, 16 bits, then an octet string of 12 bits.
    ASSERT_TRUE(db.addCANID(0, 0x181, canId(tx, QStringLiteral("packed"))));
    ASSERT_TRUE(db.addDataElement(0, 0x181, tx, 0, element(0, 5, 0, QStringLiteral("a"))));
    ASSERT_TRUE(db.addDataElement(0, 0x181, tx, 2, element(1, 10, 12, QStringLiteral("c"))));
    ASSERT_TRUE(db.addDataElement(0, 0x181, tx, 1, element(2, 6, 0, QStringLiteral("b"))));
    // Positions that were stored already: the identifier is left alone.
    ASSERT_TRUE(db.addCANID(0, 0x182, canId(tx, QStringLiteral("kept"))));
    ObjectDataBase::DataElement placed = element(0, 5, 0, QStringLiteral("x"));
    ASSERT_TRUE(db.addDataElement(0, 0x182, tx, 0, placed));
    placed.bitpos = 16;
    ASSERT_TRUE(db.addDataElement(0, 0x182, tx, 1, placed));
    ASSERT_TRUE(db.addDataElement(0, 0x182, tx, 2, element(2, 5, 0, QStringLiteral("z"))));
    // SPNs are packed in pos order; bit fields by the width of their type.
    ASSERT_TRUE(db.addPGN(0, 61444, pgn(rx, QStringLiteral("EEC1"))));
    ASSERT_TRUE(db.addSPN(0, 61444, rx, 190, spn(2, 6, 0, QStringLiteral("speed"))));
    ASSERT_TRUE(db.addSPN(0, 61444, rx, 899, spn(0, 102, 0, QStringLiteral("mode"))));
    ASSERT_TRUE(db.addSPN(0, 61444, rx, 512, spn(1, 5, 0, QStringLiteral("demand"))));

    // A current file keeps what it stores, even positions that are all zero.
    {
        ObjectDataBase current;
        ASSERT_TRUE(current.openDataBase(saveAndEdit({}), true));
        ObjectDataBase::DataElement read;
        ASSERT_TRUE(current.getDataElement(0, 0x181, tx, 1, read));
        EXPECT_EQ(read.bitpos, 0);
    }

    const QString path = saveAndEdit({QStringLiteral("update MiscSettings set value = '104' where item = "
                                                     "'DatabaseVersion'")});
    ObjectDataBase reopened;
    ASSERT_TRUE(reopened.openDataBase(path, true));

    const auto bitpos = [&reopened](quint32 canid, quint32 number) {
        ObjectDataBase::DataElement read;
        reopened.getDataElement(0, canid, tx, number, read);
        return read.bitpos;
    };
    EXPECT_EQ(bitpos(0x181, 0), 0);
    EXPECT_EQ(bitpos(0x181, 1), 8);
    EXPECT_EQ(bitpos(0x181, 2), 24);
    EXPECT_EQ(bitpos(0x182, 2), 0);

    const auto bitposition = [&reopened](quint32 spnNumber) {
        ObjectDataBase::SPN read;
        reopened.getSPN(0, 61444, rx, spnNumber, read);
        return read.bitposition;
    };
    EXPECT_EQ(bitposition(899), 0);
    EXPECT_EQ(bitposition(512), 4);
    EXPECT_EQ(bitposition(190), 12);
}

TEST_F(J1939OpenRepairs, SpnsOfFilesBeforeVersion100TakeTheDirectionOfTheirPgn)
{
    addPgnWithSpns(65265, rx, QStringLiteral("CCVS1"), 2);
    addPgnWithSpns(65262, tx, QStringLiteral("ET1"), 1);
    const QString path =
        saveAndEdit({QStringLiteral("update SPNs0 set direction = 0"),
                     QStringLiteral("update MiscSettings set value = '99' where item = 'DatabaseVersion'")});

    ObjectDataBase reopened;
    ASSERT_TRUE(reopened.openDataBase(path, true));
    EXPECT_EQ(reopened.getSPNList(0, 65265, rx), (QList<quint32>{1, 2}));
    EXPECT_EQ(reopened.getSPNList(0, 65262, tx), QList<quint32>{1});
}

} // namespace
