#include "canopenlib/cohelper.h"
#include "common/cleanproject.h"
#include "common/testhelpers.h"
#include "edstestsupport.h"
#include "generators/documents/icsvgenerator.h"
#include "generators/documents/j1939textdocgenerator.h"
#include "generators/documenttestproject.h"
#include "importers/csvimporter.h"
#include "importers/trwpimporter.h"
#include "pipeline/generatormainhandler.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// A handler whose line 0 has the given type, and a folder for the files it imports.
struct ImportTarget
{
    explicit ImportTarget(int lineType = 1)
    {
        db().setGeneralSetting(QStringLiteral("line0type"), QString::number(lineType));
    }
    bool import(const QString& name, const QByteArray& content)
    {
        return handler.importFile(edstest::writeFile(dir.path(), name, content));
    }
    ObjectDataBase& db() { return *handler.database(); }

    QTemporaryDir dir;
    GeneratorMainHandler handler{nullptr};
};

// What the CSV form carries of a subindex, in one line of text.
QString subText(ObjectDataBase& db, quint16 index, quint8 sub)
{
    SUBINDEX_DATA_T r;
    if (!db.getSubIndex(0, index, sub, r))
        return QStringLiteral("missing");
    return QStringList{r.name,
                       COHelper::index2DataTypeString(r.datatype),
                       r.accesstype,
                       r.defaultvalue,
                       COHelper::implementation2String(r.implementation),
                       r.varname,
                       r.pdomapping.getCSVStringValue(),
                       QString::number(r.defaultineds) + QString::number(r.writedefaulttoeds),
                       r.limitineds ? r.lowlimit + QStringLiteral("..") + r.uplimit : QStringLiteral("-"),
                       r.nvstorage ? QStringLiteral("nv") : QString(),
                       r.description,
                       QString::number(r.size)}
        .join(QLatin1Char('|'));
}

QString objectText(ObjectDataBase& db, quint16 index)
{
    INDEX_DATA_T o;
    if (!db.getIndex(0, index, o))
        return QStringLiteral("missing");
    return QStringLiteral("%1|%2|%3|%4")
        .arg(o.name, COHelper::objectCode2String(CANopen::ObjectCode(o.objecttype)),
             COHelper::index2DataTypeString(o.datatype), o.description);
}

struct CsvCase
{
    const char* what;
    QByteArray csv;
    QList<quint16> objects;
    // "0x2000" for an object, "0x2000:1" for a subindex, with its text.
    QList<QPair<QString, QString>> expected;
};

TEST(CsvImport, ColumnsAreFoundByTheirNames)
{
    const CsvCase cases[] = {
        {"ICSV form with an array head line",
         "#\n# This is an importable ICSV file for the x project.\n#\n"
         "index,sub,objectcode,datatype,edsname,varname,access,mapable,hasdefault,defaultineds,value,"
         "description,size,implementation,haslimit,lowlimit,uplimit,nvstorage\n"
         "0x2000,0x00,VARIABLE,UNSIGNED16,Speed,speed,rw,tpdo,1,2,100,Motor speed<br>in "
         "rpm,0,Variable,yes,10,"
         "2000,yes\n \n"
         "0x2002,,,DOMAIN,Firmware,,,,,,,,,,,,,,\n"
         "0x2002,0x00,,DOMAIN,Firmware,firmware,wo,no,0,1,,,0,Variable,no,0,0,no\n"
         "0x2100,,ARRAY,UNSIGNED32,Table,,,,,,,A table,,,,,,\n"
         "0x2100,0x00,,UNSIGNED32,Count,,const,no,1,1,2,,0,ManagedConst,no,0,255,no\n"
         "0x2100,0x01,,,First,,ro,no,0,0,7,,4,ManagedVariable,no,0,4294967295,no\n",
         {0x2000, 0x2002, 0x2100},
         {{"0x2000", "Speed|VAR|UNSIGNED16|Motor speed\nin rpm"},
          {"0x2002", "Firmware|DOMAIN|DOMAIN|"},
          {"0x2002:0", "Firmware|DOMAIN|wo||Variable|firmware|no|01|-|||0"},
          {"0x2000:0", "Speed|UNSIGNED16|rw|100|Variable|speed|tpdo|12|10..2000|nv|Motor speed\nin rpm|0"},
          {"0x2100", "Table|ARRAY|UNSIGNED32|A table"},
          {"0x2100:0", "Count|UNSIGNED8|const|2|ManagedConst||no|11|-|||0"},
          {"0x2100:1", "First|UNSIGNED32|ro|7|ManagedVariable||no|00|-|||4"}}},
        {"reordered columns, semicolons and a mixed-case header",
         "EDSname;Value;Index;Access;DataType;Sub\nInner, outer;-5;0x2200;RO;integer8;0\n",
         {0x2200},
         {{"0x2200:0", "Inner, outer|INTEGER8|ro|-5|ManagedVariable||no|11|-|||0"}}},
        {"missing name, type and implementation; decimal index",
         "index,sub,access,value,varname\n0x2300,0,rw,1,\n8961,0,rw,1,\n",
         {0x2300, 0x2301},
         {{"0x2300", "Object_2300|VAR|UNSIGNED8|"},
          {"0x2301:0", "Object_2301|UNSIGNED8|rw|1|ManagedVariable||no|11|-|||0"}}},
        {"implementation from type, access and word; subindex without object",
         "index,sub,datatype,access,implementation,edsname\n0x2400,0,DOMAIN,rw,,Blob\n"
         "0x2401,0,UNSIGNED8,const,none,Fixed\n0x2402,2,,rw,virtualobject,Virt\n",
         {0x2400, 0x2401, 0x2402},
         {{"0x2400:0", "Blob|DOMAIN|rw||Variable|v_92160|no|11|-|||0"},
          {"0x2401:0", "Fixed|UNSIGNED8|const||ManagedConst||no|11|-|||0"},
          {"0x2402", "Object_2402|RECORD|UNSIGNED8|"},
          {"0x2402:0", "Highest Subindex supported|UNSIGNED8|ro||VirtualObject||no|11|-|||0"},
          {"0x2402:2", "Virt|UNSIGNED8|rw||VirtualObject||no|11|-|||0"}}},
        {"unusable lines are dropped",
         "index,sub,datatype,edsname,value,access\n0xC000,0,UNSIGNED8,Out of range,1,ro\n"
         "0x2500,0,UNSIGNED8,Short\n0x2501,0,UNSIGNED8,Short,1\nzz,0,UNSIGNED8,Bad index,1,ro\n"
         "0x2502,0x100,UNSIGNED8,Bad sub,1,ro\n0x2504,0,UNSIGNED8,\"Open quote,1,ro\n"
         "\"0x2503\",0,UNSIGNED8,\"Quoted, \"\"name\"\"\",1,ro\n",
         {0x2503},
         {{"0x2503:0", "Quoted, \"name\"|UNSIGNED8|ro|1|ManagedVariable||no|11|-|||0"}}},
    };
    for (const CsvCase& c : cases) {
        SCOPED_TRACE(c.what);
        ImportTarget target;
        ASSERT_TRUE(target.import(QStringLiteral("in.csv"), c.csv));
        EXPECT_EQ(target.db().getIndexList(0, 0, 0xFFFF), c.objects);
        for (const auto& [address, text] : c.expected) {
            const QStringList parts = address.split(QLatin1Char(':'));
            const quint16 index = quint16(parts.at(0).toUInt(nullptr, 16));
            const QString actual = parts.size() == 1
                                       ? objectText(target.db(), index)
                                       : subText(target.db(), index, quint8(parts.at(1).toUInt()));
            EXPECT_EQ(actual, text) << address.toStdString();
        }
    }
}

TEST(CsvImport, CopyAndDeleteLinesAreCollectedForTheCaller)
{
    ImportTarget target;
    INDEX_DATA_T kept;
    target.db().addIndex(0, 0x2002, kept);
    const QString path = edstest::writeFile(target.dir.path(), QStringLiteral("in.csv"),
                                            "index,sub,edsname,datatype,access\nd,0x2002\nd,0x2000,3\nd,0\n"
                                            "c,0x2000,0x2001\nc,0x2000,1,2\nc,0x2000,1,1\nc,0,0x2001\n"
                                            "0x2000,0,Kept,UNSIGNED8,rw\n");
    CsvImporter importer;
    importer.setLine(0);
    importer.setDatabase(target.handler.database());
    importer.setFile(path);
    ASSERT_TRUE(importer.startImport());
    importer.waitFinished();

    auto texts = [](const QList<SubAddress>& list) {
        QStringList out;
        for (const SubAddress& a : list)
            out << QStringLiteral("%1:%2:%3")
                       .arg(a.index, 0, 16)
                       .arg(a.wholeObject ? -1 : a.subindex)
                       .arg(a.line);
        return out;
    };
    QList<SubAddress> deletes;
    QList<SubAddress> copies;
    importer.getDeleteList(deletes);
    importer.getCopyList(copies);
    EXPECT_EQ(texts(deletes), (QStringList{"2002:-1:0", "2000:3:0"}));
    EXPECT_EQ(texts(copies), (QStringList{"2000:-1:0", "2001:-1:0", "2000:1:0", "2000:2:0"}));
    EXPECT_EQ(target.db().getIndexList(0, 0, 0xFFFF), (QList<quint16>{0x2000, 0x2002}));
}

QString pgnText(ObjectDataBase& db, quint32 number, quint8 direction)
{
    ObjectDataBase::PGN p;
    if (!db.getPGN(0, number, direction, p))
        return QStringLiteral("missing");
    QStringList spns;
    for (quint32 spn : db.getSPNList(0, number, direction)) {
        ObjectDataBase::SPN s;
        db.getSPN(0, number, direction, spn, s);
        spns << QStringLiteral("%1 %2 %3/%4 %5%6")
                    .arg(spn)
                    .arg(s.name, COHelper::index2DataTypeString(s.datatype))
                    .arg(s.bitsize)
                    .arg(s.implementation)
                    .arg(s.varname);
    }
    return QStringLiteral("%1|%2|%3|%4|%5|%6|")
               .arg(p.name)
               .arg(p.priority)
               .arg(p.cycletime_ms)
               .arg(p.inhibittime_ms)
               .arg(p.desc)
               .arg(p.mappingcount) +
           spns.join(QLatin1Char(','));
}

// A PGN line with a bad direction, cycle time or number drops the lines
// behind it, and they don't go to the PGN before it.
TEST(DocTxtImport, PgnsAndSpnsOfTheTextDocumentation)
{
    const QByteArray doc =
        "PGN/SPN Documenation for dev - generated by CANopen Tarnwick 4.3.2 Mon Nov 23 2026\n\n"
        "PGN:\t0xfeca/65226\tName:\tDM1\tDirection:\tTX\tCycle Time (ms):\t1000\tPriority:\t6\t"
        "Inhibit Time (ms):\t50\n"
        "\tDescription:\tActive faults\n"
        "\tSPN:\t1213\tName:\tLamp\tData type:\tUNSIGNED2\tSize:\t2\t\n"
        "\tSPN:\t190\tName:\tSpeed\tData type:\tUNSIGNED16\tVariable:\tv_speed\t\n"
        "# a comment\n"
        "PGN:\t0xfeca/65226\tName:\tDM1 in\tDirection:\tRX\tCycle Time (ms):\t0\tPriority:\t3\n"
        "\tSPN:\t1214\tName:\tLamp in\tData type:\tUNSIGNED8\tSize:\t8\tVariable:\tlamp\t\n"
        "PGN:\t0xfeeb/65259\tName:\tBad\tDirection:\tXX\tCycle Time (ms):\t0\tPriority:\t3\n"
        "\tDescription:\tnot for DM1 in\n"
        "\tSPN:\t1\tName:\tLost\tData type:\tUNSIGNED8\t\n"
        "PGN:\t0x40000/262144\tName:\tToo high\tDirection:\tTX\tCycle Time (ms):\t0\tPriority:\t3\n"
        "PGN:\t0xfee0/65248\tName:\tBad cycle\tDirection:\tTX\tCycle Time (ms):\tfast\tPriority:\t3\n"
        "\tSPN:\t2\tName:\tLost too\tData type:\tUNSIGNED8\t\n";
    for (const QByteArray& lineEnd : {QByteArray("\n"), QByteArray("\r\n")}) {
        ImportTarget target(2);
        ASSERT_TRUE(target.import(QStringLiteral("dev_doc.txt"), QByteArray(doc).replace("\n", lineEnd)));
        EXPECT_EQ(target.db().getPGNList(0, ObjectDataBase::Invalid), (QList<quint32>{65226, 65226}));
        EXPECT_EQ(pgnText(target.db(), 65226, ObjectDataBase::Transmit),
                  "DM1|6|1000|50|Active faults|2|1213 Lamp UNSIGNED2/2 0,190 Speed UNSIGNED16/0 2v_speed");
        EXPECT_EQ(pgnText(target.db(), 65226, ObjectDataBase::Receive),
                  "DM1 in|3|0|0||1|1214 Lamp in UNSIGNED8/8 2lamp");
    }
}

// The suffix, in any case, chooses the importer; "doc" in the name of a text
// file only in lower case. Whatever a chosen file holds, the import ends.
TEST(ImportFile, SuffixChoosesTheImporterAndBadContentEnds)
{
    const QByteArray csv = "index,sub,edsname,datatype,access\n0x2000,0,Gr\xc3\xbcn,UNSIGNED8,ro\n";
    const QByteArray doc = "PGN:\t0x100/256\tName:\tP\tDirection:\tTX\tCycle Time (ms):\t0\tPriority:\t3\n";
    QByteArray garbage(64 * 1024, '\0');
    for (qsizetype i = 0; i < garbage.size(); ++i)
        garbage[i] = char((i * 7919 + i / 13) % 256);
    struct Case
    {
        const char* name;
        QByteArray content;
        bool written;
        bool result;
        QList<quint16> objects;
        int pgns;
        QString name2000;
    };
    const Case cases[] = {
        {"in.CSV", csv, true, true, {0x2000}, 0, "Grün"},
        {"device_doc.txt", doc, true, true, {}, 1, {}},
        {"device_DOC.txt", doc, true, false, {}, 0, {}},
        {"notes.txt", doc, true, false, {}, 0, {}},
        {"device.xdd", csv, true, false, {}, 0, {}},
        {"gone.csv", csv, false, false, {}, 0, {}},
        {"empty.csv", {}, true, true, {}, 0, {}},
        {"garbage.csv", garbage, true, true, {}, 0, {}},
        {"garbage_doc.txt", garbage, true, true, {}, 0, {}},
        {"garbage.trwp", garbage, true, false, {}, 0, {}},
        {"empty.trwp", {}, true, false, {}, 0, {}},
        {"longline.csv", QByteArray(10 * 1024 * 1024, '7'), true, true, {}, 0, {}},
        {"longname.csv",
         "index,sub,edsname,datatype,access\n0x2000,0," + QByteArray(10 * 1024 * 1024, 'n') +
             ",UNSIGNED8,ro\n",
         true,
         true,
         {0x2000},
         0,
         QString(10 * 1024 * 1024, QLatin1Char('n'))},
        {"latin1.csv", QByteArray(csv).replace("\xc3\xbc", "\xfc"), true, true, {0x2000}, 0, "Grün"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ImportTarget target;
        const QString path = target.dir.filePath(QLatin1String(c.name));
        if (c.written)
            edstest::writeFile(target.dir.path(), QLatin1String(c.name), c.content);
        EXPECT_EQ(target.handler.importFile(path), c.result);
        EXPECT_EQ(target.db().getIndexList(0, 0, 0xFFFF), c.objects);
        EXPECT_EQ(target.db().getPGNList(0, ObjectDataBase::Invalid).size(), c.pgns);
        if (!c.name2000.isNull()) {
            EXPECT_TRUE(subText(target.db(), 0x2000, 0).startsWith(c.name2000 + QLatin1Char('|')));
        }
    }
}

// Writes a document of the line as the pipeline does and returns its text.
QString document(DocumentGenerator& generator, ObjectDataBase& db, const QString& dir, quint8 line)
{
    generator.setOutputDir(dir);
    generator.setDatabase(&db);
    generator.setDeviceName(QStringLiteral("dev"));
    generator.setLine(line);
    generator.setMultiLine(line != 0);
    generator.start();
    generator.waitUntilDone();
    return QString::fromUtf8(testhelpers::readFile(dir + QLatin1Char('/') + generator.outputFileName()));
}

// Our own outputs read back: the ICSV table of a device and the text
// documentation of a J1939 line, imported into a fresh project, are written
// again column for column; the table goes in under the suffix ".csv".
TEST(ImportFile, OwnDocumentsComeBackWhole)
{
    QSharedPointer<ObjectDataBase> original = documenttest::smallDevice();
    documenttest::addJ1939Line(*original, 1);
    QTemporaryDir again;

    ImportTarget device;
    ICSVGenerator table(true);
    const QString icsv = document(table, *original, device.dir.path(), 0);
    ASSERT_TRUE(device.import(QStringLiteral("dev_icsv.csv"), icsv.toUtf8()));
    EXPECT_EQ(device.db().getIndexList(0, 0, 0xFFFF), original->getIndexList(0, 0, 0xFFFF));
    ICSVGenerator tableAgain(true);
    EXPECT_EQ(document(tableAgain, device.db(), again.path(), 0), icsv);

    ImportTarget j1939(2);
    J1939TextDocGenerator doc;
    const QString text = document(doc, *original, j1939.dir.path(), 1);
    ASSERT_TRUE(j1939.import(QStringLiteral("dev_doc.txt"), text.toUtf8()));
    EXPECT_EQ(j1939.db().getPGNList(0, ObjectDataBase::Invalid),
              original->getPGNList(1, ObjectDataBase::Invalid));
    J1939TextDocGenerator docAgain;
    // The first line carries the date of the run.
    EXPECT_EQ(document(docAgain, j1939.db(), again.path(), 0).section(QLatin1Char('\n'), 1),
              text.section(QLatin1Char('\n'), 1));
}

// A source project with objects, PGNs and CAN identifiers at the ends of and
// just outside the ranges of the merge, on lines 0 to 4.
QString writeSourceProject(const QString& dir)
{
    ObjectDataBase source;
    source.createNewDataBase();
    for (quint8 line = 0; line <= 4; ++line) {
        source.addNode(line, NODE_DATA_T());
        INDEX_DATA_T object;
        object.name = QStringLiteral("from source");
        for (quint16 index : {0x0FFF, 0x1000, 0xFFFF})
            source.addIndex(line, index, object);
        for (quint32 number : {0u, 0x1FFFFu, 0x20000u}) {
            ObjectDataBase::PGN pgn;
            pgn.direction = ObjectDataBase::Transmit;
            source.addPGN(line, number, pgn);
        }
        for (quint32 id : {0u, 0x1FFFFFFFu, 0x20000000u}) {
            ObjectDataBase::CANID canId;
            canId.direction = ObjectDataBase::Receive;
            source.addCANID(line, id, canId);
        }
    }
    const QString path = dir + QStringLiteral("/source.trwp");
    EXPECT_TRUE(source.saveDatabase(path));
    return path;
}

// Each line of the open project takes what its own type carries, and only
// from the line of the same number; the source's line 4 has no counterpart.
TEST(ImportFile, ProjectMergeTakesWhatEachLineTypeCarries)
{
    ImportTarget target(1);
    const QList<int> types = {1, 2, 4, 5};
    for (quint8 line = 1; line < 4; ++line) {
        target.db().addNode(line, NODE_DATA_T());
        target.db().setGeneralSetting(QStringLiteral("line%1type").arg(line),
                                      QString::number(types.at(line)));
    }
    INDEX_DATA_T own;
    own.name = QStringLiteral("own");
    target.db().addIndex(0, 0x1000, own);
    target.db().addIndex(0, 0x2000, own);
    ASSERT_TRUE(target.handler.importFile(writeSourceProject(target.dir.path())));

    const QList<quint16> objects = {0x1000, 0xFFFF};
    const QList<quint32> pgns = {0, 0x1FFFF};
    const QList<quint32> ids = {0, 0x1FFFFFFF};
    const QList<quint16> ownObjects = {0x1000, 0x2000, 0xFFFF};
    EXPECT_EQ(target.db().getIndexList(0, 0, 0xFFFF), ownObjects);
    INDEX_DATA_T replaced;
    target.db().getIndex(0, 0x1000, replaced);
    EXPECT_EQ(replaced.name, QStringLiteral("from source"));
    for (quint8 line = 0; line < 4; ++line) {
        SCOPED_TRACE(types.at(line));
        if (line > 0) {
            EXPECT_EQ(target.db().getIndexList(line, 0, 0xFFFF), (line == 3 ? objects : QList<quint16>()));
        }
        EXPECT_EQ(target.db().getPGNList(line, ObjectDataBase::Invalid),
                  (line == 1 || line == 3 ? pgns : QList<quint32>()));
        EXPECT_EQ(target.db().getCANIDList(line, ObjectDataBase::Invalid),
                  (line == 2 ? ids : QList<quint32>()));
    }
    EXPECT_FALSE(target.db().nodeExists(4));
}

TEST(TrwpImport, OneSourceLineGoesToTheScratchLine)
{
    ImportTarget target;
    TRWPImporter importer;
    importer.setSourceLine(2);
    importer.setIndexRange(0x1000, 0x1FFFF);
    importer.setDatabase(target.handler.database());
    importer.setFile(writeSourceProject(target.dir.path()));
    ASSERT_TRUE(importer.startImport());
    importer.waitFinished();
    EXPECT_EQ(target.db().getIndexList(255, 0, 0xFFFF), (QList<quint16>{0x1000, 0xFFFF}));
    EXPECT_EQ(target.db().getPGNList(255, ObjectDataBase::Invalid), (QList<quint32>{0x1FFFF}));
    EXPECT_TRUE(target.db().getIndexList(0, 0, 0xFFFF).isEmpty());
}

// A refused import ends the run with exit code 5 before anything is
// generated or saved; an accepted one changes the project file only with -s.
TEST(ImportCommandLine, ProjectFileChangesOnlyWithSave)
{
    const QByteArray extra = "index,sub,edsname,datatype,access,value\n0x2000,0,Extra,UNSIGNED8,rw,1\n";
    struct Case
    {
        const char* file;
        QByteArray content;
        bool save;
        int exitCode;
        bool changed;
        QString message;
    };
    const Case cases[] = {
        {"missing.csv", {}, true, 5, false, "Import failed: "},
        {"notaproject.trwp", "SQLite format 3", true, 5, false, "Import failed: "},
        {"device.odd", "index,sub\n", true, 5, false, "Import failed: "},
        {"garbage.csv", "\x01\xff\xfe,\"\n\n\x80", true, 0, false,
         "garbage.csv: No entry could be imported."},
        {"empty_doc.txt", "\n", false, 0, false, "empty_doc.txt: No entry could be imported."},
        {"extra.csv", extra, false, 0, false, {}},
        {"extra.csv", extra, true, 0, true, {}},
        // The project merged with itself: every object is replaced by an equal one.
        {"device.trwp", {}, true, 0, false, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.file) + (c.save ? " -s" : ""));
        QTemporaryDir dir;
        const QString project = dir.filePath(QStringLiteral("device.trwp"));
        ASSERT_TRUE(cleanproject::saveCanopenProject(project));
        if (!c.content.isEmpty())
            edstest::writeFile(dir.path(), QLatin1String(c.file), c.content);
        const QByteArray before = testhelpers::readFile(project);
        QStringList args = {"-project", project, "-import", dir.filePath(QLatin1String(c.file))};
        if (c.save)
            args << "-s";
        const auto result = testhelpers::runTrw(args);
        EXPECT_EQ(result.exitCode, c.exitCode) << result.out.toStdString();
        EXPECT_EQ(result.out.contains(QStringLiteral("Import failed: ")), c.exitCode == 5);
        EXPECT_EQ(result.out.contains(QStringLiteral("No entry could be imported.")),
                  c.message.contains(QStringLiteral("No entry")));
        if (!c.message.isEmpty()) {
            EXPECT_TRUE(result.out.contains(c.message)) << result.out.toStdString();
        }
        ObjectDataBase saved;
        ASSERT_TRUE(saved.openDataBase(project, true));
        EXPECT_EQ(saved.getIndexList(0, 0, 0xFFFF),
                  (QList<quint16>{0x1000, 0x1001, 0x1017, 0x1018} +
                   (c.changed ? QList<quint16>{0x2000} : QList<quint16>())));
        if (!c.save || c.exitCode == 5) {
            EXPECT_EQ(testhelpers::readFile(project), before);
        }
    }
}

} // namespace
