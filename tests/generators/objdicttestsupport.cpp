#include "objdicttestsupport.h"

#include "canopenlib/helper.h"
#include "common/testhelpers.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/gendefinegenerator.h"
#include "generators/canopen/objdictgenerator.h"
#include "generators/canopen/objdictgeneratorv4.h"
#include "generatortestsupport.h"

#include <QRegularExpression>

#include <memory>

namespace objdicttest {

namespace {

QString valueType(int dataType)
{
    static const QMap<int, QString> types = {
        {1, "UNSIGNED8"},  {5, "UNSIGNED8"},   {2, "INTEGER8"},    {3, "INTEGER16"},   {4, "INTEGER32"},
        {6, "UNSIGNED16"}, {7, "UNSIGNED32"},  {8, "REAL32"},      {12, "UNSIGNED48"}, {25, "UNSIGNED48"},
        {16, "INTEGER24"}, {22, "UNSIGNED24"}, {24, "UNSIGNED40"}, {27, "UNSIGNED64"}};
    return types.value(dataType);
}

// The declarations that the application's own header gives for its variables.
QString applicationHeader(ObjectDataBase& db)
{
    QString text = QStringLiteral("#include <co_canopen.h>\n");
    for (quint8 line : db.getNodeList()) {
        for (quint16 index : db.getIndexList(line, 0x1000, 0xFFFF)) {
            for (quint8 subindex : db.getSubIndexList(line, index)) {
                SUBINDEX_DATA_T sub;
                db.getSubIndex(line, index, subindex, sub);
                if (sub.implementation != 2 || sub.varname.contains(QLatin1Char('(')))
                    continue;
                const QString name = Helper::substituteVariables(sub.varname, index, subindex, line);
                const QString type = valueType(sub.datatype);
                if (!type.isEmpty())
                    text += QStringLiteral("extern %1 %2;\n").arg(type, name);
                else if (sub.datatype == 9 || sub.datatype == 124)
                    text += QStringLiteral("extern char %1[%2];\n").arg(name).arg(sub.size + 1);
                else if (sub.datatype == 10)
                    text += QStringLiteral("extern UNSIGNED8 %1[%2];\n").arg(name).arg(std::max(1, sub.size));
            }
        }
    }
    return text;
}

} // namespace

void addSyntheticDevice(ObjectDataBase& db, quint8 line)
{
    const QString rw = QStringLiteral("rw");
    auto count = [](const QString& value, const QString& access = QStringLiteral("ro")) {
        return SubRow{0, 5, value, 0, access};
    };
    auto writable = [&rw](quint8 subindex, int type, const QString& value) {
        return SubRow{subindex, type, value, 0, rw};
    };
    auto constant = [](quint8 subindex, int type, const QString& value, int size = 0) {
        return SubRow{subindex, type, value, 1, QStringLiteral("const"), QString(), size};
    };
    addObject(db, line, 0x1000, 7, {{0, 7, "0x00020191"}});
    addObject(db, line, 0x1001, 7, {{0, 5, "0"}});
    addObject(db, line, 0x1005, 7, {writable(0, 7, "0x80")});
    addObject(db, line, 0x1006, 7, {writable(0, 7, "0")});
    addObject(db, line, 0x1014, 7, {{0, 7, "$NODEID+0x80"}});
    addObject(db, line, 0x1016, 8, {count("2"), writable(1, 7, "0"), writable(2, 7, "0")});
    addObject(db, line, 0x1017, 7, {writable(0, 6, "1000")});
    addObject(db, line, 0x1018, 9, {count("4"), {1, 7, "0x1234"}, {2, 7, "1"}, {3, 7, "2"}, {4, 7, "3"}});
    addObject(db, line, 0x1019, 7, {writable(0, 5, "0")});
    addObject(db, line, 0x1200, 9, {count("2"), {1, 7, "$NODEID+0x600"}, {2, 7, "$NODEID+0x580"}});
    addObject(db, line, 0x1400, 9, {count("2"), writable(1, 7, "$NODEID+0x200"), writable(2, 5, "255")});
    addObject(db, line, 0x1600, 9, {count("2"), {1, 7, "0x20000108"}, {2, 7, "0x20010210"}});
    addObject(db, line, 0x1800, 9,
              {count("6"), writable(1, 7, "$NODEID+0x180"), writable(2, 5, "254"), writable(3, 6, "0"),
               writable(5, 6, "100"), writable(6, 5, "0")});
    addObject(db, line, 0x1A00, 9,
              {count("3"), {1, 7, "0x20020420"}, {2, 7, "0x20030310"}, {3, 7, "0x20020218"}});
    // Subindices 4 to 6 are equal and compact; 3 differs.
    QList<SubRow> arraySubs = {count("6")};
    for (quint8 s = 1; s <= 6; ++s)
        arraySubs << writable(s, 5, s == 3 ? "7" : "0");
    addObject(db, line, 0x2000, 8, arraySubs);
    const QList<QPair<int, QString>> groups = {{5, "u8"},   {6, "u16"},  {22, "u24"}, {7, "u32"},
                                               {24, "u40"}, {25, "u48"}, {27, "u64"}, {2, "i8"},
                                               {3, "i16"},  {16, "i24"}, {4, "i32"},  {8, "r32"}};
    QList<SubRow> applicationSubs = {count(QString::number(groups.size()))};
    for (int i = 0; i < groups.size(); ++i) {
        const QString name = QStringLiteral("app_%1_l{line}").arg(groups.at(i).second);
        applicationSubs << SubRow{quint8(i + 1), groups.at(i).first, "0", 2, rw, name};
    }
    addObject(db, line, 0x2001, 9, applicationSubs);
    addObject(db, line, 0x2002, 9,
              {count("13"), writable(1, 5, "1"), writable(2, 22, "0x12345"), writable(3, 6, "0x10"),
               writable(4, 7, "4000000000"), writable(5, 24, "0x0102030405"),
               writable(6, 25, "0x010203040506"), writable(7, 27, "0x0102030405060708"), writable(8, 2, "-5"),
               writable(9, 3, "-300"), writable(10, 16, "-2"), writable(11, 4, "-70000"),
               writable(12, 8, "1.5"), writable(13, 1, "1")});
    addObject(db, line, 0x2003, 9,
              {count("7"), constant(1, 5, "3"), constant(2, 7, "$NODEID+0x600"), constant(3, 3, "-1"),
               constant(4, 9, "hello", 5), constant(5, 10, "|x414243", 3), constant(6, 124, "grün", 5),
               constant(7, 27, "0x10")});
    addObject(db, line, 0x2004, 7, {{0, 9, "abc", 2, rw, "app_text_l{line}", 16}});
    addObject(db, line, 0x2005, 7, {{0, 10, "|x01020304", 2, rw, "app_octets_l{line}", 4}});
    addObject(db, line, 0x2006, 2, {{0, 15, "", 2, rw, "app_domain_l{line}"}});
    addObject(db, line, 0x2007, 7, {{0, 124, "", 2, rw, "app_utf8_l{line}", 8}});
    addObject(db, line, 0x2008, 7, {{0, 5, "0", 3, rw}});
    addObject(db, line, 0x2009, 9, {count("2"), writable(1, 6, "1"), {2, 7, "2", 3, rw}});
    QList<SubRow> equalSubs = {count("10")};
    for (quint8 s = 1; s <= 10; ++s)
        equalSubs << writable(s, 6, "5");
    addObject(db, line, 0x200A, 8, equalSubs);
    addObject(db, line, 0x200B, 7, {writable(0, 12, "0")});
    addObject(db, line, 0x2010, 7, {writable(0, 7, "9")});
    // Shared by the lines; writable with limits and mappable, so that limit and mapping attributes appear.
    SUBINDEX_DATA_T shared;
    db.getSubIndex(line, 0x2010, 0, shared);
    shared.sharedlines = true;
    db.addSubIndex(line, 0x2010, 0, shared);
    SUBINDEX_DATA_T limited;
    db.getSubIndex(line, 0x2002, 1, limited);
    limited.limitineds = true;
    limited.lowlimit = QStringLiteral("1");
    limited.uplimit = QStringLiteral("200");
    limited.pdomapping = PDOMapping(PDOMapping::Mappable);
    limited.nvstorage = true;
    db.addSubIndex(line, 0x2002, 1, limited);
}

void makeSyntheticProject(ObjectDataBase& db, bool twoLines)
{
    db.createNewDataBase();
    db.setLineType(0, Line::CANopen);
    db.setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("init_static_variables"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("co_node_id"),
                         twoLines ? QStringLiteral("16,17") : QStringLiteral("16"));
    addSyntheticDevice(db, 0);
    if (twoLines) {
        projectbuilder::addLine(db, 1, Line::CANopen);
        addSyntheticDevice(db, 1);
    }
}

Generated generate(ObjectDataBase& db, const QString& dir, const RunOptions& options)
{
    generatortest::writeFile(dir + QStringLiteral("/test_application.h"), applicationHeader(db));
    db.setGeneralSetting(QStringLiteral("applicationheader"), QStringLiteral("test_application.h"));
    generatortest::cacheLines(db);
    generatortest::writeStaticIndicationHeader(db, dir);
    Generated result;
    {
        std::unique_ptr<CoDefineGenerator> define(options.core ? new GenDefineGenerator
                                                               : new CoDefineGenerator);
        generatortest::setProtocolFlags(*define, db);
        result.define = generatortest::runGenerator(*define, db, dir, QStringLiteral("gen_define.h"));
    }
    {
        std::unique_ptr<ObjDictGenerator> objdict(
            options.core ? new ObjDictGeneratorV4(options.compact, options.camServer)
                         : new ObjDictGenerator(options.compact, options.camServer));
        result.objdict = generatortest::runGenerator(*objdict, db, dir, QStringLiteral("gen_objdict.c"));
    }
    result.user = QString::fromUtf8(testhelpers::readFile(dir + QStringLiteral("/gen_user.h")));
    if (!options.compile)
        return result;
    QStringList arguments = {"-std=c99",      "-Wall", "-Werror",
                             "-fsyntax-only", "-I.",   "-I" TRW_SOURCE_DIR "/tests/generators/stackdecl"};
    if (options.core)
        arguments << QStringLiteral("-DTEST_STACK_V4");
    if (db.getGeneralSetting(QStringLiteral("new_init_structure")).toInt() == 1)
        arguments << QStringLiteral("-DTEST_INIT_VERSIONED");
    arguments << QStringLiteral("gen_objdict.c");
    result.compiled = generatortest::runCompiler(arguments, dir, result.compilerOutput);
    return result;
}

namespace {

// The first capture of every match as the key, the second converted as its value.
template <typename Value, typename Convert>
QMap<QString, Value> capturedPairs(const QRegularExpression& pattern, const QString& text, Convert convert)
{
    QMap<QString, Value> values;
    QRegularExpressionMatchIterator it = pattern.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        values.insert(match.captured(1), convert(match.captured(2)));
    }
    return values;
}

} // namespace

QMap<QString, QString> defines(const QString& header)
{
    static const QRegularExpression define(QStringLiteral("^#define\\s+([A-Za-z_][A-Za-z0-9_]*)[ \\t]+(.*)$"),
                                           QRegularExpression::MultilineOption);
    return capturedPairs<QString>(define, header, [](const QString& value) { return value.trimmed(); });
}

QMap<QString, int> tableSizes(const QString& source)
{
    static const QRegularExpression table(QStringLiteral("^static [^\\n]*\\b(od_[a-z0-9_A-Z]+)\\[(\\d+)\\]"),
                                          QRegularExpression::MultilineOption);
    return capturedPairs<int>(table, source, [](const QString& size) { return size.toInt(); });
}

QList<int> countList(const QString& value)
{
    QList<int> counts;
    const QStringList parts = value.split(QLatin1Char(','));
    for (QString part : parts) {
        part = part.trimmed();
        part.remove(QLatin1Char('u'));
        counts << part.toInt();
    }
    return counts;
}

QList<AssignRow> assignRows(const QString& source)
{
    static const QRegularExpression row(
        QStringLiteral("^\\t\\{ 0x([0-9a-f]{4})u, (\\d+)u, (\\d+)u, (CO_ODTYPE_[A-Z]+), (\\d+)u \\},$"),
        QRegularExpression::MultilineOption);
    QList<AssignRow> rows;
    QRegularExpressionMatchIterator it = row.globalMatch(source);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        rows << AssignRow{quint16(match.captured(1).toUInt(nullptr, 16)), match.captured(2).toInt(),
                          match.captured(3).toInt(), match.captured(4), match.captured(5).toInt()};
    }
    return rows;
}

QList<DescriptionRow> descriptionRows(const QString& source)
{
    static const QRegularExpression row(
        QStringLiteral(
            "^\\t\\{ \\(UNSIGNED8\\)(\\d+)u, (\\S+) *, (?:(CO_DSPEC\\w*), )?\\(UNSIGNED16\\)(\\d+)u, "
            "(.*?),  \\(UNSIGNED16\\)(\\d+)u(?:, \\(UNSIGNED16\\)\\d+u, \\(UNSIGNED16\\)\\d+u)?\\},"
            "/\\* (?:(\\d+)-)?0x([0-9a-f]{4}):(\\d+)\\*/ $"),
        QRegularExpression::MultilineOption);
    QList<DescriptionRow> rows;
    QRegularExpressionMatchIterator it = row.globalMatch(source);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        rows << DescriptionRow{quint8(match.captured(7).toUInt()),
                               quint16(match.captured(8).toUInt(nullptr, 16)),
                               quint8(match.captured(9).toUInt()),
                               match.captured(2),
                               match.captured(3),
                               match.captured(4).toInt(),
                               match.captured(5),
                               match.captured(6).toInt()};
    }
    return rows;
}

} // namespace objdicttest
