#include "common/testhelpers.h"
#include "documenttestproject.h"
#include "generators/documents/csvgenerator.h"
#include "generators/documents/htmlgenerator.h"
#include "generators/documents/icsvgenerator.h"
#include "generators/documents/j1939htmlgenerator.h"
#include "generators/documents/j1939textdocgenerator.h"
#include "generators/documents/rawcantextdocgenerator.h"
#include "generators/documents/textdocgenerator.h"
#include "generators/documents/xddgenerator.h"
#include "generatortestsupport.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace {

// Runs a document of the line as the pipeline does and returns its text.
QString generate(DocumentGenerator& generator, ObjectDataBase& db, const QString& dir, quint8 line = 0,
                 bool multiLine = false)
{
    generator.setOutputDir(dir);
    generator.setDatabase(&db);
    generator.setDeviceName(QStringLiteral("dev"));
    generator.setLine(line);
    generator.setMultiLine(multiLine);
    EXPECT_TRUE(generator.canWrite());
    generator.start();
    generator.waitUntilDone();
    return QString::fromUtf8(testhelpers::readFile(dir + QLatin1Char('/') + generator.outputFileName()));
}

// The text from the first line that starts with `from` up to, not including, the next that starts with `to`.
QString piece(const QString& text, const QString& from, const QString& to)
{
    const qsizetype start = text.indexOf(from);
    const qsizetype end = text.indexOf(to, start + 1);
    return start < 0 ? QString() : text.mid(start, end < 0 ? -1 : end - start);
}

struct Tool
{
    int exitCode = -1;
    QString output;
};

Tool runTool(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.waitForFinished(60000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAll())};
}

// The rows as Python's strict CSV reader sees them; a quoting fault fails the read.
QList<QStringList> pythonCsvRows(const QString& path)
{
    const Tool python = runTool(QStringLiteral("/usr/bin/python3"),
                                {QStringLiteral("-c"),
                                 QStringLiteral("import csv, json, sys\n"
                                                "with open(sys.argv[1], newline='', encoding='utf-8') as f:\n"
                                                "    print(json.dumps(list(csv.reader(f, strict=True))))\n"),
                                 path});
    EXPECT_EQ(python.exitCode, 0) << python.output.toStdString();
    QList<QStringList> rows;
    const QJsonArray array = QJsonDocument::fromJson(python.output.toUtf8()).array();
    for (const QJsonValue& row : array) {
        QStringList cells;
        for (const QJsonValue& cell : row.toArray())
            cells << cell.toString();
        rows << cells;
    }
    return rows;
}

class DocumentGenerators : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QSharedPointer<ObjectDataBase> database = documenttest::smallDevice();
    ObjectDataBase& db = *database;
};

} // namespace

// ---------------------------------------------------------------------------
// Byte-exact forms of a small device
// ---------------------------------------------------------------------------

TEST_F(DocumentGenerators, CsvTableOfEveryObjectKind)
{
    CSVGenerator csv;
    EXPECT_EQ(
        generate(csv, db, dir.path()),
        QStringLiteral(
            R"(Index,Sub,EDSname,Datatype,Access,Value,varname,LowLimit,UpLimit,hasDefault,hasLimit,refuseRead,refuseWrite,defaultInEDS,implementation,Size,ObjectCode,mapable
0x1018,0x00,"Identity Object Highest sub-index",UNSIGNED8,const,1,NONE,0,0,yes,no,no,no,1,ManagedConst,0,RECORD,no
0x1018,0x01,"Identity Object Vendor-ID",UNSIGNED32,ro,757,NONE,0,0,yes,no,no,no,1,ManagedVariable,0,,no
0x1600,0x00,"RPDO1 mapping Number of mapped objects",UNSIGNED8,rw,1,NONE,0,0,yes,no,no,no,1,ManagedVariable,0,RECORD,no
0x1600,0x01,"RPDO1 mapping Mapped object 01",UNSIGNED32,rw,536871176,NONE,0,0,yes,no,no,no,1,ManagedVariable,0,,no
 
0x2000,0x00,"Speed",UNSIGNED8,rw,16,NONE,0,100,yes,yes,no,no,1,ManagedVariable,0,,yes
0x2001,0x00,"Gains Number of entries",UNSIGNED8,const,2,NONE,0,0,yes,no,no,no,1,ManagedConst,0,ARRAY,no
0x2001,0x01,"Gains Gain 01",INTEGER16,rw,-5,NONE,0,0,yes,no,no,no,1,ManagedVariable,0,,no
0x2001,0x02,"Gains Gain 02",INTEGER16,rw,32767,NONE,0,0,yes,no,no,no,1,ManagedVariable,0,,no
0x2002,0x00,"Firmware Firmware",DOMAIN,wo,,firmware,0,0,no,no,yes,no,1,Variable,0,,no
0x2003,0x00,"Serial",VISIBLE_STRING,ro,"a""b",NONE,0,0,yes,no,no,no,1,ManagedVariable,0,,no
 
0x6000,0x00,"Temperature",REAL32,ro,1.5,NONE,0,0,yes,no,no,no,2,ManagedVariable,4,,no
)"));
}

TEST_F(DocumentGenerators, IcsvTableWithHeadRowsAndTheLineBreakMarker)
{
    ICSVGenerator icsv(true);
    const QString text = generate(icsv, db, dir.path());
    EXPECT_EQ(text, QStringLiteral(R"(#
# This is an importable ICSV file for the dev project.
#
index,sub,objectcode,datatype,edsname,varname,access,mapable,hasdefault,defaultineds,value,description,size,implementation,haslimit,lowlimit,uplimit,nvstorage
0x1018,,RECORD,IDENTITY,Identity Object,,,,,,,,,,,,,,
0x1018,0x00,,UNSIGNED8,Highest sub-index,,const,no,1,1,1,,0,ManagedConst,no,0,0,no
0x1018,0x01,,UNSIGNED32,Vendor-ID,,ro,no,1,1,757,,0,ManagedVariable,no,0,0,no
0x1600,,RECORD,PDO_MAPPING,RPDO1 mapping,,,,,,,,,,,,,,
0x1600,0x00,,UNSIGNED8,Number of mapped objects,,rw,no,1,1,1,,0,ManagedVariable,no,0,0,no
0x1600,0x01,,UNSIGNED32,Mapped object {sub},,rw,no,1,1,536871176,,0,ManagedVariable,no,0,0,no
 
0x2000,0x00,VARIABLE,UNSIGNED8,Speed,,rw,yes,1,1,16,km/h<br>rounded,0,ManagedVariable,yes,0,100,no
0x2001,,ARRAY,INTEGER16,Gains,,,,,,,,,,,,,,
0x2001,0x00,,INTEGER16,Number of entries,,const,no,1,1,2,,0,ManagedConst,no,0,0,no
0x2001,0x01,,INTEGER16,Gain {sub},,rw,no,1,1,-5,,0,ManagedVariable,no,0,0,no
0x2001,0x02,,INTEGER16,Gain {sub},,rw,no,1,1,32767,,0,ManagedVariable,no,0,0,no
0x2002,,,DOMAIN,Firmware,,,,,,,,,,,,,,
0x2002,0x00,,DOMAIN,Firmware,firmware,wo,no,0,1,,,0,Variable,no,0,0,no
0x2003,0x00,VARIABLE,VISIBLE_STRING,Serial,,ro,no,1,1,"a""b",,0,ManagedVariable,no,0,0,no
 
0x6000,0x00,VARIABLE,REAL32,Temperature,,ro,no,1,2,1.5,,4,ManagedVariable,no,0,0,yes
)"));
}

TEST_F(DocumentGenerators, TextDocumentationKeepsTheImportedPrefixes)
{
    TextDocGenerator doc;
    const QString text = generate(doc, db, dir.path());
    EXPECT_TRUE(
        text.startsWith(QStringLiteral("CANopen Object Dictionary Documenation for dev\n\n\nIndex:")));
    EXPECT_EQ(piece(text, QStringLiteral("\nIndex:       0x2000"), QStringLiteral("\nIndex:       0x2001")),
              QStringLiteral(R"(
Index:       0x2000 - Speed
DataType:    UNSIGNED8
ObjectCode:  VAR
Description: first line
second line
  Sub:          0x00 - Speed
  DataType:     UNSIGNED8
  DefaultValue: 0x10
  AccessType:   rw
  PDOMapping:   1
  Description: km/h
rounded
)"));
    EXPECT_EQ(piece(text, QStringLiteral("\nIndex:       0x2002"), QStringLiteral("\nIndex:       0x2003")),
              QStringLiteral("\nIndex:       0x2002 - Firmware\nDataType:    DOMAIN\nObjectCode:  DOMAIN\n"
                             "  Sub:          0x00 - Firmware\n  DataType:     DOMAIN\n  AccessType:   wo\n"
                             "  PDOMapping:   0\n"));
}

TEST_F(DocumentGenerators, J1939AndRawCanTextDocumentation)
{
    documenttest::addJ1939Line(db, 1);
    documenttest::addRawCanLine(db, 2);
    J1939TextDocGenerator pgns;
    const QString pgnText = generate(pgns, db, dir.path(), 1, true);
    EXPECT_TRUE(pgnText.startsWith(QStringLiteral("PGN/SPN Documenation for dev - generated by ")));
    EXPECT_EQ(
        pgnText.section(QLatin1Char('\n'), 1),
        QStringLiteral("\n"
                       "PGN:\t0xf004/61444\tName:\tEEC1\tDirection:\tTX\tCycle Time (ms):\t20\tPriority:\t3\n"
                       "\tDescription:\tEngine <speed> & torque\n"
                       "\tSPN:\t190\tName:\tEngine speed\tData type:\tUNSIGNED16\tVariable:\tengineSpeed\t\n"
                       "\n"
                       "PGN:\t0xfef1/65265\tName:\tCCVS1\tDirection:\tRX\tCycle Time (ms):\t100\tPriority:\t6"
                       "\tInhibit Time (ms):\t10\n"
                       "\tSPN:\t597\tName:\tBrake switch\tData type:\tUNSIGNED2\tSize:\t2\t\n"));

    RawCANTextDocGenerator messages;
    EXPECT_EQ(generate(messages, db, dir.path(), 2, true),
              QStringLiteral(R"(Raw CAN Message Documentation for dev
Generated by CAN Tarnwick

================================================================================
TRANSMIT MESSAGES (TX)
================================================================================

[CAN-ID: 0x00000181 std]  Status
  Cycle time:   acyclic
  Inhibit time: 5 ms
  Description:  Sent on change
  Signals (2):
    [bit   0,   8 bit]  State  (UNSIGNED8)
      Default: 3
      Operating state
    [bit   8,   4 bit]  Flags  (UNSIGNED4)

================================================================================
RECEIVE MESSAGES (RX)
================================================================================

[CAN-ID: 0x18ff0001 ext]  Command
  Exp. cycle time: 50 ms

)"));
}

TEST_F(DocumentGenerators, HtmlPageListsAndTablesEveryObject)
{
    HTMLGenerator html;
    const QString text = generate(html, db, dir.path());
    EXPECT_EQ(piece(text, QStringLiteral(" <div class=\"toc\">"), QStringLiteral("  <div class=\"center\">")),
              QStringLiteral(R"( <div class="toc">
<a href="#gen">Generation Information</a><br />
<a href="#com">Comment</a><br />
<a href="#4120">0x1018 Identity Object</a><br>
<a href="#5632">0x1600 RPDO1 mapping</a><br>
<br>
<a href="#8192">0x2000 Speed</a><br>
<a href="#8193">0x2001 Gains</a><br>
<a href="#8194">0x2002 Firmware</a><br>
<a href="#8195">0x2003 Serial</a><br>
<br>
<a href="#24576">0x6000 Temperature</a><br>
  </div>
)"));
    // The colours go on from the tables before: 8 generation rows and 4 subindex tables of 6 rows.
    EXPECT_EQ(
        piece(text,
              QStringLiteral(
                  " <p>\n  <table border=\"1\" width=\"70%\">\n   <tr>\n    <th colspan=\"2\" id=\"8192\""),
              QStringLiteral(" <p>")),
        QStringLiteral(R"( <p>
  <table border="1" width="70%">
   <tr>
    <th colspan="2" id="8192"> Object: 0x2000 Speed</th>
   </tr>
   <tr>
    <td>Object Code</td>
    <td>VAR</td>
   </tr>
   <tr class="alt">
    <td>Description</td>
    <td>first line<br>second line</td>
   </tr>
  </table>
 <br/>
  <table border="1" width="70%">
   <tr>
    <td style="font-weight:bold">Sub </td>
    <td style="font-weight:bold">0x00</td>
   </tr>
   <tr class="alt">
    <td>Name </td>
    <td>Speed</td>
   </tr>
   <tr>
    <td>Data Type</td>
    <td>UNSIGNED8</td>
   </tr>
   <tr class="alt">
    <td>Access </td>
    <td>rw</td>
   </tr>
   <tr>
    <td>Defaultvalue </td>
    <td>0x10</td>
   </tr>
   <tr class="alt">
    <td>Low Limit </td>
    <td>0</td>
   </tr>
   <tr>
    <td>High Limit </td>
    <td>100</td>
   </tr>
   <tr class="alt">
    <td>Description</td>
    <td>km/h<br>rounded</td>
   </tr>
   <tr>
    <td>PDO Mapping</td>
    <td>mappable</td>
   </tr>
  </table>
 </p>
  <hr />
)"));
    EXPECT_TRUE(text.endsWith(QStringLiteral("  </div>\n  </body>\n </html>\n")));
}

TEST_F(DocumentGenerators, J1939PageOfAMixedLine)
{
    documenttest::addJ1939Line(db, 1);
    db.setGeneralSetting(QStringLiteral("line1type"), QStringLiteral("5"));
    J1939HTMLGenerator html;
    html.setNameSuffix(QStringLiteral("_j1939"));
    const QString text = generate(html, db, dir.path(), 1, true);
    EXPECT_EQ(html.outputFileName(), QStringLiteral("dev_1_j1939.html"));
    EXPECT_TRUE(text.contains(QStringLiteral("  <title>PGN/SPN Documenation of dev - ")));
    EXPECT_TRUE(text.contains(QStringLiteral("position:fixed; left:620px; top:10px;\n")));
    EXPECT_FALSE(text.contains(QStringLiteral("width: 30%;")));
    // The page's encoder leaves "<" and "&" as they are, as the Part has it for PGN pages.
    EXPECT_EQ(piece(text, QStringLiteral(" <div class=\"toc\">"), QStringLiteral(" <br/>")),
              QStringLiteral(R"( <div class="toc">
<a href="#61444">0xf004/61444 EEC1</a><br>
<a href="#65265">0xfef1/65265 CCVS1</a><br>
  </div>
 <p>
  <table border="1" width="600">
   <tr>
    <th colspan="2" id="61444"> PGN: 0xf004/61444 EEC1</th>
   </tr>
   <tr class="alt">
    <td>Description</td>
    <td>Engine <speed> & torque</td>
   </tr>
  </table>
)"));
    EXPECT_TRUE(
        text.contains(QStringLiteral("    <td width=\"250\">Data Type</td>\n    <td>UNSIGNED16</td>\n")));
}

TEST_F(DocumentGenerators, XddObjectListOfTheNetworkProfile)
{
    INDEX_DATA_T beyond;
    beyond.name = QStringLiteral("Not described");
    db.addIndex(0, 0xC000, beyond);
    SUBINDEX_DATA_T sub;
    sub.accesstype = QStringLiteral("rww");
    db.addSubIndex(0, 0xC000, 0, sub);
    db.addSubIndex(0, 0x2003, 1, sub);

    XDDGenerator xdd;
    const QString text = generate(xdd, db, dir.path());
    EXPECT_EQ(xdd.outputFileName(), QStringLiteral("000002f5_dev.xdd"));
    EXPECT_TRUE(text.contains(QStringLiteral("xsi:type=\"ProfileBody_CommunicatioNetwork_CANopenFD\" "
                                             "fileName=\"000002f5_dev.xdd\" fileCreator=\"CREATEDBY\"")));
    EXPECT_TRUE(text.contains(QStringLiteral("<vendorID>0x2F5</vendorID>")));
    EXPECT_FALSE(text.contains(QStringLiteral("c000")));
    EXPECT_EQ(
        piece(text, QStringLiteral("                    <CANopenFDDataObject index=\"1018\""),
              QStringLiteral("                    <CANopenFDDataObject index=\"1600\"")) +
            piece(text, QStringLiteral("                    <CANopenFDDataObject index=\"2000\""),
                  QStringLiteral("                    <CANopenFDDataObject index=\"2001\"")),
        QStringLiteral(
            R"(                    <CANopenFDDataObject index="1018" name="Identity Object" objectType="9">
                        <CANopenFDDataElement subIndex="00" name="Highest sub-index" dataType="05" modification="false" accessUSDO="ro" accessPDO="no" defaultValue="1"/>
                        <CANopenFDDataElement subIndex="01" name="Vendor-ID" dataType="07" modification="true" accessUSDO="ro" accessPDO="no" defaultValue="0x2F5"/>
                    </CANopenFDDataObject>
                    <CANopenFDDataObject index="2000" name="Speed" objectType="7" dataType="05">
                        <CANopenFDDataElement subIndex="00" name="Speed" dataType="05" modification="true" accessUSDO="rw" accessPDO="optional" defaultValue="0x10"/>
                    </CANopenFDDataObject>
)"));
    EXPECT_TRUE(text.contains(QStringLiteral(
        R"(<CANopenFDDataElement subIndex="01" name="unnamed subindex" dataType="05" modification="true" accessUSDO="rw" accessPDO="no"/>)")));
}

struct NameCase
{
    std::function<DocumentGenerator*()> create;
    bool multiLine;
    const char* suffix;
    const char* expected;
};

template <typename Document> DocumentGenerator* make()
{
    return new Document;
}

TEST_F(DocumentGenerators, FileNamesOfSingleAndMultiLineProjects)
{
    const NameCase cases[] = {
        {make<CSVGenerator>, false, "", "dev.csv"},
        {make<CSVGenerator>, true, "", "dev_0.csv"},
        {[] { return new ICSVGenerator(true); }, false, "", "dev.icsv"},
        {[] { return new ICSVGenerator(false); }, true, "", "dev_0.icsv"},
        {make<TextDocGenerator>, false, "", "dev_doc.txt"},
        {make<TextDocGenerator>, true, "", "dev_0.txt"},
        {make<J1939TextDocGenerator>, true, "", "dev_0.txt"},
        {make<RawCANTextDocGenerator>, false, "", "dev_doc.txt"},
        {make<RawCANTextDocGenerator>, true, "", "dev_0_doc.txt"},
        {make<HTMLGenerator>, false, "", "dev.html"},
        {make<HTMLGenerator>, false, "_co", "dev_co.html"},
        {make<HTMLGenerator>, true, "_co", "dev_0_co.html"},
        {make<J1939HTMLGenerator>, false, "_j1939", "dev_j1939.html"},
        {make<J1939HTMLGenerator>, true, "", "dev_0.html"},
        {make<XDDGenerator>, true, "", "000002f5_dev_0.xdd"},
    };
    for (const NameCase& c : cases) {
        std::unique_ptr<DocumentGenerator> generator(c.create());
        generator->setDatabase(&db);
        generator->setDeviceName(QStringLiteral("dev"));
        generator->setMultiLine(c.multiLine);
        generator->setNameSuffix(QLatin1String(c.suffix));
        EXPECT_EQ(generator->outputFileName(), QLatin1String(c.expected));
    }
}

// ---------------------------------------------------------------------------
// Real readers and hostile text
// ---------------------------------------------------------------------------

// The rows of a table that describe subindices: those with an index and a subindex.
QList<QStringList> subIndexRows(const QList<QStringList>& rows)
{
    QList<QStringList> found;
    for (const QStringList& row : rows) {
        if (row.size() > 1 && row.at(0).startsWith(QLatin1String("0x")) && !row.at(1).isEmpty())
            found << row;
    }
    return found;
}

TEST_F(DocumentGenerators, HostileTextKeepsEveryFormatReadable)
{
    const QString name = QString::fromUtf8("Bad \"name\", <&> ; \xc3\xa4");
    const QString description =
        QString::fromUtf8("a < b & c \"q\" 'x', y; z\ttab\nnext \xc3\xa4\xe2\x82\xac ") +
        QString(3000, QLatin1Char('x'));
    INDEX_DATA_T object;
    object.name = name;
    db.addIndex(0, 0x2004, object);
    SUBINDEX_DATA_T sub;
    sub.name = name;
    sub.datatype = 9;
    sub.defaultvalue = name;
    sub.description = description;
    db.addSubIndex(0, 0x2004, 0, sub);

    CSVGenerator csv;
    generate(csv, db, dir.path());
    const QList<QStringList> csvRows = pythonCsvRows(dir.filePath(QStringLiteral("dev.csv")));
    ASSERT_FALSE(csvRows.isEmpty());
    EXPECT_EQ(csvRows.first().size(), 18);
    const QList<QStringList> csvSubs = subIndexRows(csvRows);
    ASSERT_EQ(csvSubs.size(), 12);
    for (const QStringList& row : csvSubs)
        EXPECT_EQ(row.size(), 18) << row.join(QLatin1Char('|')).toStdString();
    EXPECT_EQ(csvSubs.at(10).mid(0, 6), QStringList({"0x2004", "0x00", name, "VISIBLE_STRING", "ro", name}));

    for (bool withDescription : {true, false}) {
        ICSVGenerator icsv(withDescription);
        generate(icsv, db, dir.path());
        const QList<QStringList> rows = pythonCsvRows(dir.filePath(QStringLiteral("dev.icsv")));
        const int columns = withDescription ? 18 : 17;
        ASSERT_GT(rows.size(), 3);
        EXPECT_EQ(rows.at(3).size(), columns);
        const QList<QStringList> subs = subIndexRows(rows);
        ASSERT_EQ(subs.size(), 12);
        for (const QStringList& row : subs)
            EXPECT_EQ(row.size(), columns);
        EXPECT_EQ(subs.at(10).at(4), name);
        if (withDescription) {
            EXPECT_EQ(subs.at(10).at(11),
                      QString(description).replace(QLatin1Char('\n'), QLatin1String("<br>")));
        }
        // A head row of a structured object has one empty cell more than the column line.
        for (const QStringList& row : rows) {
            if (row.size() > 1 && row.at(0).startsWith(QLatin1String("0x")) && row.at(1).isEmpty()) {
                EXPECT_EQ(row.size(), columns + 1);
            }
        }
    }

    HTMLGenerator html;
    const QString page = generate(html, db, dir.path());
    EXPECT_TRUE(page.contains(
        QStringLiteral("    <td>a &lt; b &amp; c \"q\" 'x', y; z\ttab<br>next &auml;\u20ac xxx")));
    EXPECT_TRUE(page.contains(QStringLiteral(">0x2004 Bad \"name\", &lt;&amp;&gt; ; &auml;</a>")));

    XDDGenerator xdd;
    QXmlStreamReader reader(generate(xdd, db, dir.path()));
    QString readName;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement &&
            reader.attributes().value(QLatin1String("index")) == QLatin1String("2004"))
            readName = reader.attributes().value(QLatin1String("name")).toString();
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    EXPECT_EQ(readName, name);
}

// The schemas of the corpus are those of CiA 311 for classical CANopen. The
// file is read in their terms (xdd_as_cia311.py) and must validate but for
// what the CANopen FD form of the file mandates and CiA 311 rejects: the
// creation date in "MM-dd-yy" where xs:date is expected, "characteristicList"
// where CiA 311 names "characteristicsList", subindex elements without an
// objectType attribute, and a network profile without TransportLayers.
TEST_F(DocumentGenerators, XddAgainstTheCiA311Schemas)
{
    TRW_SKIP_WITHOUT_CORPUS();
    XDDGenerator xdd;
    generate(xdd, db, dir.path());
    const QString mapped = dir.filePath(QStringLiteral("cia311.xdd"));
    const Tool mapping =
        runTool(QStringLiteral("/usr/bin/python3"),
                {QStringLiteral(TRW_SOURCE_DIR "/tests/generators/xdd_as_cia311.py"),
                 QStringLiteral(TRW_CORPUS_DIR "/xsd"), dir.filePath(xdd.outputFileName()), mapped});
    ASSERT_EQ(mapping.exitCode, 0) << mapping.output.toStdString();
    const Tool lint = runTool(QStringLiteral("xmllint"),
                              {QStringLiteral("--noout"), QStringLiteral("--schema"),
                               QStringLiteral(TRW_CORPUS_DIR "/xsd/CANopen_all_wrapper.xsd"), mapped});
    const QStringList mandated = {
        QStringLiteral("attribute 'fileCreationDate': '%1' is not a valid value of the atomic type 'xs:date'")
            .arg(QDate::currentDate().toString(QStringLiteral("MM-dd-yy"))),
        QStringLiteral("Element 'characteristicList': This element is not expected. Expected is ( "
                       "{http://www.canopen.org/xml/1.1}characteristicsList )."),
        QStringLiteral("Element 'CANopenSubObject': The attribute 'objectType' is required but missing."),
        QStringLiteral("Element 'ProfileBody': Missing child element(s). Expected is ( TransportLayers )."),
    };
    const QStringList errors = lint.output.split(QLatin1Char('\n')).filter(QStringLiteral("validity error"));
    EXPECT_FALSE(errors.isEmpty()) << lint.output.toStdString();
    for (const QString& error : errors) {
        EXPECT_TRUE(std::any_of(mandated.cbegin(), mandated.cend(), [&error](const QString& known) {
            return error.contains(known);
        })) << error.toStdString();
    }
    EXPECT_FALSE(lint.output.contains(QStringLiteral("parser error"))) << lint.output.toStdString();
}
