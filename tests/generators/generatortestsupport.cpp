#include "generatortestsupport.h"

#include "common/testhelpers.h"
#include "generators/abstractgenerator.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/indicationgeneratorv4.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

namespace generatortest {

QString runGenerator(AbstractGenerator& generator, ObjectDataBase& db, const QString& dir,
                     const QString& fileName, bool multiLine)
{
    generator.setOutputDir(dir);
    generator.setDatabase(&db);
    generator.setDeviceName(QStringLiteral("device"));
    generator.setLine(0);
    generator.setMultiLine(multiLine);
    generator.start();
    generator.waitUntilDone();
    return QString::fromUtf8(testhelpers::readFile(dir + QLatin1Char('/') + fileName));
}

void addCanId(ObjectDataBase& db, quint8 line, quint32 id, QList<ObjectDataBase::DataElement> elements)
{
    for (qsizetype number = 0; number < elements.size(); ++number)
        elements[number].number = quint32(number);
    ObjectDataBase::CANID canId;
    canId.direction = ObjectDataBase::Transmit;
    projectbuilder::addCanId(db, line, id, canId, elements);
}

ObjectDataBase::DataElement element(int dataType, quint16 bits, const QString& varname)
{
    ObjectDataBase::DataElement record;
    record.datatype = dataType;
    record.bitsize = bits;
    record.varname = varname;
    return record;
}

void writeStaticIndicationHeader(ObjectDataBase& db, const QString& dir)
{
    if (db.getGeneralSetting(QStringLiteral("uds_static_indication")) != QLatin1String("1"))
        return;
    indicationgeneratorv4 generator;
    runGenerator(generator, db, dir, QStringLiteral("gen_indication.h"));
}

QString withoutBanner(const QString& text)
{
    return text.section(QLatin1Char('\n'), 3);
}

void addPgn(ObjectDataBase& db, quint8 line, quint32 number, quint8 direction, quint8 priority,
            QList<ObjectDataBase::SPN> spns, const QString& name)
{
    ObjectDataBase::PGN pgn;
    pgn.name = name;
    pgn.direction = direction;
    pgn.priority = priority;
    pgn.cycletime_ms = 100;
    projectbuilder::addPgn(db, line, number, pgn, packed(spns));
}

ObjectDataBase::SPN spn(quint32 number, int dataType, quint16 bits, const QString& varname)
{
    ObjectDataBase::SPN record;
    record.spnnumber = number;
    record.name = QStringLiteral("SPN %1").arg(number);
    record.datatype = dataType;
    record.bitsize = bits;
    record.implementation = varname.isEmpty() ? CANopen::ManagedVariable : CANopen::ApplicationVariable;
    record.varname = varname;
    return record;
}

void writeFile(const QString& path, const QString& text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(text.toUtf8());
}

namespace {

bool anyLineCarries(ObjectDataBase& db, bool (*carries)(int))
{
    const QList<quint8> lines = db.getNodeList();
    return std::any_of(lines.cbegin(), lines.cend(), [&](quint8 line) { return carries(db.lineType(line)); });
}

bool carriesCANopenOrRawCan(int type)
{
    return Line::carriesCANopen(type) || Line::carriesRawCan(type);
}

} // namespace

void setProtocolFlags(CoDefineGenerator& generator, ObjectDataBase& db)
{
    const bool j1939 = anyLineCarries(db, Line::carriesJ1939);
    generator.setJ1939Present(j1939);
    generator.setMixedProtocols(anyLineCarries(db, j1939 ? carriesCANopenOrRawCan : Line::carriesRawCan));
}

bool runCompiler(const QStringList& arguments, const QString& dir, QString& output, const QString& compiler)
{
    QProcess gcc;
    gcc.setWorkingDirectory(dir);
    gcc.setProcessChannelMode(QProcess::MergedChannels);
    gcc.start(compiler, arguments);
    if (!gcc.waitForStarted()) {
        output = compiler + QStringLiteral(" could not be started");
        return false;
    }
    gcc.waitForFinished(60000);
    output = QString::fromUtf8(gcc.readAll());
    return gcc.exitStatus() == QProcess::NormalExit && gcc.exitCode() == 0;
}

::testing::AssertionResult compileWithBoth(const QString& dir, const QString& source,
                                           const QStringList& extraArguments)
{
    const QStringList arguments =
        QStringList{"-std=c99",      "-Wall", "-Werror",
                    "-fsyntax-only", "-I.",   "-I" TRW_SOURCE_DIR "/tests/generators/stackdecl"} +
        extraArguments + QStringList{source};
    for (const QString& compiler : {QStringLiteral("gcc"), QStringLiteral("clang")}) {
        QString output;
        if (!runCompiler(arguments, dir, output, compiler))
            return ::testing::AssertionFailure() << compiler.toStdString() << ": " << output.toStdString();
    }
    return ::testing::AssertionSuccess();
}

namespace {

// One initialiser per value define; the names of the tool and of the list of
// node-id functions are no numbers and get their own forms.
// Defines inside the block of a target that isn't built are left alone.
QString usesOfDefines(const QString& header, QStringList& used)
{
    static const QRegularExpression valueDefine(
        QStringLiteral("^#define\\s+([A-Za-z_][A-Za-z0-9_]*)\\s+(\\S.*)$"),
        QRegularExpression::MultilineOption);
    QString uses;
    QRegularExpressionMatchIterator it = valueDefine.globalMatch(header);
    while (it.hasNext()) {
        const QString name = it.next().captured(1);
        if (used.contains(name))
            continue;
        used << name;
        uses += QStringLiteral("#ifdef %1\n").arg(name);
        if (name == QLatin1String("GEN_TOOL_NAME"))
            uses += QStringLiteral("static const char use_%1[] = TEXT_OF(%1);\n").arg(name);
        else if (name == QLatin1String("CO_NODE_ID_FUNCTIONS"))
            uses += QStringLiteral("static const NodeIdFunction use_%1[] = { %1 };\n").arg(name);
        else
            uses += QStringLiteral("static const unsigned long long use_%1[] = { %1 };\n").arg(name);
        uses += QStringLiteral("#endif\n");
    }
    return uses;
}

bool compileUnit(const QString& dir, const QStringList& headers, const QString& prelude, QString& output)
{
    QString unit =
        QStringLiteral("#include <stddef.h>\n#define TEXT_OF_(x) #x\n#define TEXT_OF(x) TEXT_OF_(x)\n"
                       "typedef unsigned char (*NodeIdFunction)(void);\n");
    unit += prelude;
    for (const QString& header : headers)
        unit += QStringLiteral("#include \"%1\"\n").arg(header);
    QStringList used;
    for (const QString& header : headers)
        unit +=
            usesOfDefines(QString::fromUtf8(testhelpers::readFile(dir + QLatin1Char('/') + header)), used);
    unit += QStringLiteral("int main(void) { return 0; }\n");
    writeFile(dir + QStringLiteral("/use_headers.c"), unit);
    return runCompiler({"-E", "-I.", "use_headers.c", "-o", "use_headers.i"}, dir, output) &&
           runCompiler({"-std=c99", "-fsyntax-only", "-Wall", "-Werror", "-Wno-unused-const-variable", "-I.",
                        "use_headers.c"},
                       dir, output);
}

} // namespace

::testing::AssertionResult compilesWithStack(const QString& dir, const QString& file, bool core,
                                             const QString& compiler)
{
    QStringList arguments = {"-std=c99",      "-Wall", "-Werror",
                             "-fsyntax-only", "-I.",   "-I" TRW_SOURCE_DIR "/tests/generators/stackdecl"};
    if (core)
        arguments << QStringLiteral("-DTEST_STACK_V4");
    arguments << file;
    QString output;
    if (runCompiler(arguments, dir, output, compiler))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << compiler.toStdString() << ": " << output.toStdString();
}

::testing::AssertionResult compileHeaders(const QString& dir, const QStringList& headers,
                                          const QString& prelude)
{
    QString output;
    if (compileUnit(dir, headers, prelude, output))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << output.toStdString();
}

} // namespace generatortest
