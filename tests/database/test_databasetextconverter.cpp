#include "common/testhelpers.h"
#include "database/databasetextconverter.h"
#include "database/objectdatabase.h"
#include "j1939testdata.h"
#include "projectfile.h"

#include <QSettings>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

constexpr quint8 tx = ObjectDataBase::Transmit;
constexpr quint8 rx = ObjectDataBase::Receive;

using records::droppedFields;
using records::keptFields;
using records::metadataText;

QStringList objectFields(const INDEX_DATA_T& o)
{
    return testhelpers::fieldTexts(o.name, o.datatype, o.objecttype, o.description, o.category, o.fwsupported,
                                   metadataText(o.metadata));
}

QStringList nodeFields(const NODE_DATA_T& n)
{
    return testhelpers::fieldTexts(n.name, n.iconpath, n.edspath, n.dcfpath, n.xddpath, n.tpdocnt, n.rpdocnt,
                                   n.prefix, n.outputpath, n.ismaster, n.issyncproducer, n.allpdosstatic,
                                   n.generatedcf, n.multilinedata, n.lssslave);
}

SUBINDEX_DATA_T unusualSubIndex(const QString& name, int datatype, const QString& defaultValue)
{
    SUBINDEX_DATA_T s = records::subIndexWithEveryField();
    s.name = name;
    s.datatype = datatype;
    s.defaultvalue = defaultValue;
    return s;
}

class TextForm : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        ASSERT_TRUE(db.createNewDataBase());
    }

    QString path(const QString& name = QStringLiteral("project.trwt")) const { return dir.filePath(name); }

    // Saves the project as text and opens the text in a fresh store.
    void saveAndReopen()
    {
        ASSERT_TRUE(db.saveDatabase(path()));
        ASSERT_TRUE(reopened.openDataBase(path(), true));
    }

    QStringList groupsOfSavedFile()
    {
        QSettings file(path(), QSettings::IniFormat);
        return file.childGroups();
    }

    QTemporaryDir dir;
    ObjectDataBase db;
    ObjectDataBase reopened;
};

TEST_F(TextForm, ObjectDictionaryAndSettingsComeBackExceptTheEditingState)
{
    db.setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("nmtmaster"), QStringLiteral("1,0"));
    db.setGeneralSetting(QStringLiteral("hw_defines"), QStringLiteral("#define A 1\n#define B 2"));
    db.setMiscSetting(QStringLiteral("postgencmd"), QStringLiteral("run 'quoted' %P"));
    db.setDescriptionSetting(QStringLiteral("VendorName"), QStringLiteral("O'Brien, Ltd."));
    NODE_DATA_T node;
    node.name = QStringLiteral("Line \"zero\", main");
    node.edspath = QStringLiteral("/eds/device.eds");
    node.tpdocnt = 4;
    node.ismaster = true;
    node.allpdosstatic = true;
    node.generatedcf = false;
    ASSERT_TRUE(db.addNode(0, node));

    INDEX_DATA_T object;
    object.name = QStringLiteral("Driver's \"special\" object");
    object.datatype = 0x21;
    object.objecttype = 9;
    object.description = QStringLiteral("desc, with comma; and semicolon");
    object.category = 2;
    object.fwsupported = 1;
    object.metadata = ObjectMetadata::create(QMap<QString, QString>{{"eds_define", "A=1"}});
    ASSERT_TRUE(db.addIndex(0, 0x2000, object));
    SUBINDEX_DATA_T sub0;
    sub0.defaultvalue = QStringLiteral("2");
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, sub0));
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 1, unusualSubIndex(QStringLiteral("It's \"one\""), 9, "it's")));
    ASSERT_TRUE(
        db.addSubIndex(0, 0x2000, 0x1F, unusualSubIndex(QStringLiteral("Sub 31"), 4, "$NODEID+0x180")));
    ASSERT_TRUE(db.addIndex(0, 0x1000, INDEX_DATA_T()));

    saveAndReopen();

    EXPECT_EQ(reopened.getGeneralSetting(QStringLiteral("nmtmaster")), QStringLiteral("1,0"));
    EXPECT_EQ(reopened.getGeneralSetting(QStringLiteral("hw_defines")),
              QStringLiteral("#define A 1\n#define B 2"));
    EXPECT_EQ(reopened.getMiscSetting(QStringLiteral("postgencmd")), QStringLiteral("run 'quoted' %P"));
    reopened.setDescriptionLine(0);
    EXPECT_EQ(reopened.getDescriptionSetting(QStringLiteral("VendorName")), QStringLiteral("O'Brien, Ltd."));
    NODE_DATA_T nodeRead;
    ASSERT_TRUE(reopened.getNode(0, nodeRead));
    EXPECT_EQ(nodeFields(nodeRead), nodeFields(node));

    ASSERT_EQ(reopened.getIndexList(0, 0, quint32(-1)), (QList<quint16>{0x1000, 0x2000}));
    INDEX_DATA_T objectRead;
    ASSERT_TRUE(reopened.getIndex(0, 0x2000, objectRead));
    EXPECT_EQ(objectFields(objectRead), objectFields(object));

    ASSERT_EQ(reopened.getSubIndexList(0, 0x2000), (QList<quint8>{0, 1, 0x1F}));
    const SUBINDEX_DATA_T fresh;
    for (quint8 subindex : {quint8(0), quint8(1), quint8(0x1F)}) {
        SUBINDEX_DATA_T written;
        SUBINDEX_DATA_T read;
        ASSERT_TRUE(db.getSubIndex(0, 0x2000, subindex, written));
        ASSERT_TRUE(reopened.getSubIndex(0, 0x2000, subindex, read));
        EXPECT_EQ(keptFields(read), keptFields(written)) << int(subindex);
        EXPECT_EQ(droppedFields(read), droppedFields(fresh)) << int(subindex);
    }
}

TEST_F(TextForm, PgnsAndSpnsOfBothDirectionsComeBack)
{
    using namespace j1939testdata;
    db.setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("2"));
    db.setJ1939Setting(QStringLiteral("manufacturercode"), QStringLiteral("1234"));
    ASSERT_TRUE(db.addPGN(0, 65280, pgn(tx, QStringLiteral("Valve's state"))));
    ASSERT_TRUE(db.addPGN(0, 65280, pgn(rx, QStringLiteral("Valve command"), true)));
    ASSERT_TRUE(db.addPGN(0, 61444, pgn(tx, QStringLiteral("EEC1"))));
    ASSERT_TRUE(db.addSPN(0, 65280, tx, 520192, spn(0, 3, 16, QStringLiteral("Position"))));
    ASSERT_TRUE(db.addSPN(0, 65280, tx, 520193, spn(1, 100, 2, QStringLiteral("Driver's switch"))));
    ASSERT_TRUE(db.addSPN(0, 65280, rx, 520192, spn(0, 6, 16, QStringLiteral("Setpoint"))));
    ASSERT_TRUE(db.addSPN(0, 61444, tx, 190, spn(0, 6, 16, QStringLiteral("Engine Speed"))));
    db.setUDSServiceSessions(0, 0x31, QStringLiteral("2,3"));
    db.setUDSServiceAuthentication(0, 0x31, QStringLiteral("1"));

    saveAndReopen();

    EXPECT_EQ(reopened.getJ1939Setting(QStringLiteral("manufacturercode")), QStringLiteral("1234"));
    ASSERT_EQ(reopened.getPGNList(0, ObjectDataBase::Invalid), db.getPGNList(0, ObjectDataBase::Invalid));
    for (quint8 direction : {tx, rx}) {
        for (quint32 number : db.getPGNList(0, direction)) {
            ObjectDataBase::PGN written;
            ObjectDataBase::PGN read;
            ASSERT_TRUE(db.getPGN(0, number, direction, written));
            ASSERT_TRUE(reopened.getPGN(0, number, direction, read)) << number << " " << int(direction);
            EXPECT_EQ(fields(read), fields(written));
            ASSERT_EQ(reopened.getSPNList(0, number, direction), db.getSPNList(0, number, direction));
            for (quint32 spnNumber : db.getSPNList(0, number, direction)) {
                ObjectDataBase::SPN spnWritten;
                ObjectDataBase::SPN spnRead;
                ASSERT_TRUE(db.getSPN(0, number, direction, spnNumber, spnWritten));
                ASSERT_TRUE(reopened.getSPN(0, number, direction, spnNumber, spnRead));
                EXPECT_EQ(fields(spnRead), fields(spnWritten));
            }
        }
    }
    EXPECT_EQ(reopened.getUDSServiceSessions(0, 0x31), QStringLiteral("2,3"));
    EXPECT_EQ(reopened.getUDSServiceAuthentication(0, 0x31), QStringLiteral("1"));
}

TEST_F(TextForm, TablesOfProtocolsALineDoesNotCarryAreLeftOut)
{
    struct Case
    {
        QStringList lineTypes;
        QStringList present;
        QStringList absent;
    };
    const QStringList neverWritten{QStringLiteral("Strings"),    QStringLiteral("Connections"),
                                   QStringLiteral("CANIDs0"),    QStringLiteral("DataElements0"),
                                   QStringLiteral("Signals"),    QStringLiteral("VirtualNodes"),
                                   QStringLiteral("LockedPDOs"), QStringLiteral("EnergyBusSettings")};
    const Case cases[] = {
        {{"1"}, {"Nodes", "GeneralSettings", "Objects0", "SubObjects0"}, {"PGNs0", "SPNs0", "J1939Settings"}},
        {{"2"}, {"PGNs0", "SPNs0", "J1939Settings"}, {"Objects0", "SubObjects0"}},
        {{"5"}, {"Objects0", "SubObjects0", "PGNs0", "SPNs0", "J1939Settings"}, {}},
        {{"1", "2"}, {"Objects0", "SubObjects0", "PGNs1", "SPNs1", "J1939Settings"}, {"PGNs0", "Objects1"}},
        {{"4"}, {"Nodes", "UDSSettings0"}, {"Objects0", "PGNs0", "J1939Settings"}},
    };
    for (const Case& c : cases) {
        ObjectDataBase project;
        ASSERT_TRUE(project.createNewDataBase());
        for (int line = 0; line < c.lineTypes.size(); ++line) {
            if (line > 0) {
                ASSERT_TRUE(project.addNode(line, NODE_DATA_T()));
            }
            project.setGeneralSetting(QStringLiteral("line%1type").arg(line), c.lineTypes.at(line));
            project.setJ1939Setting(QStringLiteral("startaddress"), QStringLiteral("128"));
            INDEX_DATA_T object;
            ASSERT_TRUE(project.addIndex(line, 0x1000, object));
            ASSERT_TRUE(project.addSubIndex(line, 0x1000, 0, SUBINDEX_DATA_T()));
            ASSERT_TRUE(project.addPGN(line, 61444, j1939testdata::pgn(tx, QStringLiteral("EEC1"))));
            ASSERT_TRUE(
                project.addSPN(line, 61444, tx, 190, j1939testdata::spn(0, 6, 16, QStringLiteral("rpm"))));
            ASSERT_TRUE(project.addCANID(line, 0x181, j1939testdata::canId(tx, QStringLiteral("raw"))));
        }
        ASSERT_TRUE(project.saveDatabase(path()));
        const QStringList groups = groupsOfSavedFile();
        const std::string label = c.lineTypes.join(QLatin1Char(',')).toStdString();
        for (const QString& group : c.present)
            EXPECT_TRUE(groups.contains(group)) << label << " lacks " << group.toStdString();
        for (const QString& group : c.absent + neverWritten)
            EXPECT_FALSE(groups.contains(group)) << label << " has " << group.toStdString();
    }
}

TEST_F(TextForm, ARawCanLineComesBackWithItsTypeAndWithoutIdentifiers)
{
    db.setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("1"));
    ASSERT_TRUE(db.addNode(1, NODE_DATA_T()));
    db.setGeneralSetting(QStringLiteral("line1type"), QStringLiteral("4"));
    ASSERT_TRUE(db.addCANID(1, 0x181, j1939testdata::canId(tx, QStringLiteral("status"))));
    ASSERT_TRUE(db.addDataElement(1, 0x181, tx, 0, j1939testdata::element(0, 5, 8, QStringLiteral("byte0"))));

    saveAndReopen();

    EXPECT_EQ(reopened.getNodeList(), (QList<quint8>{0, 1}));
    EXPECT_EQ(reopened.getGeneralSetting(QStringLiteral("line1type")), QStringLiteral("4"));
    EXPECT_TRUE(reopened.getCANIDList(1, ObjectDataBase::Invalid).isEmpty());
}

TEST_F(TextForm, SavingReplacesNullCellsOfTheWorkingDatabase)
{
    db.setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("1"));
    ASSERT_TRUE(db.addIndex(0, 0x2000, INDEX_DATA_T()));
    ASSERT_TRUE(db.addSubIndex(0, 0x2000, 0, SUBINDEX_DATA_T()));
    QSqlQuery query(db.database());
    ASSERT_TRUE(query.exec(QStringLiteral("update SubObjects0 set varname = NULL, size = NULL")));

    ASSERT_TRUE(db.saveDatabase(path()));

    ASSERT_TRUE(query.exec(QStringLiteral("select varname, size from SubObjects0")) && query.next());
    EXPECT_FALSE(query.isNull(0));
    EXPECT_FALSE(query.isNull(1));
    EXPECT_EQ(query.value(0).toString(), QString());
    EXPECT_EQ(query.value(1).toInt(), 0);
    QSettings file(path(), QSettings::IniFormat);
    EXPECT_EQ(file.value(QStringLiteral("SubObjects0/0x2000/0x0/size")).toString(), QStringLiteral("0"));
}

// Text files edited by hand: whatever can be read is read, the rest is passed over.
TEST_F(TextForm, DamagedFilesOpenWithWhatTheyHold)
{
    struct Case
    {
        const char* label;
        QByteArray content;
        bool converted;
        QString line0type;
        QList<quint32> pgns;
        QList<quint16> objects;
    };
    const Case cases[] = {
        {"empty file", "", false, "", {}, {}},
        {"keys without groups", "line0type=1\nname=x\n", false, "", {}, {}},
        {"broken lines",
         "[GeneralSettings]\nline0type=1\nthis line is broken\n=\n[Objects0]\n0x1000\\name=Dev\n",
         true,
         "1",
         {},
         {0x1000}},
        {"unknown groups",
         "[Gadgets0]\nx=1\n[Nodes]\n0\\name=n\n[GeneralSettings]\nline0type=2\n",
         true,
         "2",
         {},
         {}},
        {"non-numeric PGN",
         "[PGNs0]\nabc\\priority=3\n61444\\direction=85\n61444\\name=EEC1\n",
         true,
         "",
         {61444},
         {}},
        {"non-numeric SPN",
         "[SPNs0]\n61444\\x\\pos=1\n[PGNs0]\n61444\\direction=85\n",
         true,
         "",
         {61444},
         {}},
        {"bad object index", "[Objects0]\n0xZZ\\name=bad\n0x2000\\name=good\n", true, "", {}, {0x2000}},
        {"keys that would move a record",
         "[Nodes]\n0\\nodeId=5\n0\\name=n\n[Objects0]\n0x1000\\OBJECTINDEX=4097\n0x1000\\name=Dev\n"
         "[SubObjects0]\n0x1000\\0x0\\subindex=7\n0x1000\\0x0\\objectindex=1\n0x1000\\0x0\\name=n\n",
         true,
         "",
         {},
         {0x1000}},
    };
    for (const Case& c : cases) {
        const QString file = testhelpers::writeFile(path(QStringLiteral("damaged.trwt")), c.content);

        ObjectDataBase project;
        EXPECT_EQ(project.openTextProject(file), c.converted) << c.label;
        EXPECT_EQ(project.getNodeList(), QList<quint8>{0}) << c.label;
        EXPECT_EQ(project.getGeneralSetting(QStringLiteral("line0type")), c.line0type) << c.label;
        EXPECT_EQ(project.getPGNList(0, ObjectDataBase::Invalid), c.pgns) << c.label;
        EXPECT_EQ(project.getIndexList(0, 0, quint32(-1)), c.objects) << c.label;
        for (quint16 index : c.objects) {
            const QList<quint8> subindices = project.getSubIndexList(0, index);
            EXPECT_TRUE(subindices.isEmpty() || subindices == QList<quint8>{0}) << c.label;
        }
        EXPECT_TRUE(project.openDataBase(file, true)) << c.label;
    }
}

TEST_F(TextForm, AnUnreadableTextFileSurvivesASaveOverItAsBackup)
{
    const QByteArray content("SQLite format 3\0binary pages, no groups", 40);
    const QString file = testhelpers::writeFile(path(QStringLiteral("unreadable.trwt")), content);

    EXPECT_TRUE(reopened.openDataBase(file, true));
    EXPECT_FALSE(reopened.lastError().isEmpty());
    ASSERT_TRUE(reopened.saveDatabase(QString()));

    EXPECT_EQ(testhelpers::readFile(file + QStringLiteral(".bak")), content);
    QSettings saved(file, QSettings::IniFormat);
    EXPECT_TRUE(saved.childGroups().contains(QStringLiteral("Nodes")));
}

TEST_F(TextForm, AMissingTextFileStillLeavesAnEmptyProjectOpen)
{
    EXPECT_TRUE(reopened.openDataBase(path(QStringLiteral("missing.trwt")), true));
    EXPECT_EQ(reopened.getNodeList(), QList<quint8>{0});
    EXPECT_EQ(reopened.getMiscSetting(QStringLiteral("DatabaseVersion")), QStringLiteral("107"));
}

} // namespace
