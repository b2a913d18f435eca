#include "common/projectbuilder.h"
#include "common/testhelpers.h"
#include "generatortestsupport.h"
#include "objdicttestsupport.h"

#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/gendefinegenerator.h"
#include "generators/canopen/srdogenerator.h"
#include "generators/canopen/srdogeneratorstatic.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using projectbuilder::Sub;

namespace {

// A template as small as the stack's: every placeholder in a place where its
// text compiles, the receive placeholders in both spellings, and a block per
// table of object dictionary entries. LINE_PARAMETER and LINE_ARRAY stand for the
// line parameter and the line array of the multi-line form.
const char* const templateText = R"(/*
 * __GEN_SRDO_TRW_INFORMATION__
 */
#include <stdlib.h>
#include <gen_define.h>
#include <co_canopen.h>
__GEN_SRDO_INCLUDES__
__GEN_SRDO_DATA_DEFINITION__
__GEN_SRDO_OD_VARIABLES__
__GEN_SRDO_OD_ENTRY__
static UNSIGNED8 configurationValidLINE_ARRAY = __GEN_SRDO_INIT_CONFIG_VALID__;
static CO_NMT_STATE_T srdoNmtStateLINE_ARRAY = __GEN_SRDO_INIT_NMT_STATE__;
static UNSIGNED8 srdoConfigReadyLINE_ARRAY = __GEN_SRDO_INIT_CONFIG_READY__;
static CO_SRDO_TIMER_T *pSrdoTimerLINE_ARRAY = __GEN_SRDO_INIT_SRDO_TIMER__;

CO_SRDO_DATA_T *getSrdoDataPtr(LINE_PARAMETERUNSIGNED16 index)
{
	CO_SRDO_DATA_T *pSrdo = NULL;
__GEN_SRDO_GET_DATA_PTR__
	return(pSrdo);
}

void srdoReset(void)
{
	(void)configurationValid; (void)srdoNmtState; (void)srdoConfigReady; (void)pSrdoTimer;
__GEN_SRDO_SET_DEFAULT_VALUE__
}

RET_T srdoReceiveCopy(void)
{
	RET_T retVal = RET_OK;
__GEN_SRDO_RECEIVE_MAPPING1__
__GEN_SRDO_RECEICE_MAPPING2__
	return(retVal);
}

void srdoTransmitCopy(void)
{
__GEN_SRDO_TRANSMIT_MAPPING__
}
#ifdef SRDO_OD_ENTRY_U8_CNT
const SRDO_OD_ENTRY_T *srdoEntriesU8(void) { return &srdoOdEntryU8[0]; }
#endif /* SRDO_OD_ENTRY_U8_CNT */
#ifdef SRDO_OD_ENTRY_U32_CNT
const SRDO_OD_ENTRY_T *srdoEntriesU32(void) { return &srdoOdEntryU32[0]; }
#endif /* SRDO_OD_ENTRY_U32_CNT */
#ifdef SRDO_OD_ENTRY_I8_CNT
const SRDO_OD_ENTRY_T *srdoEntriesI8(void) { return &srdoOdEntryI8[0]; }
#endif /* SRDO_OD_ENTRY_I8_CNT */
#ifdef SRDO_OD_ENTRY_I16_CNT
const SRDO_OD_ENTRY_T *srdoEntriesI16(void) { return &srdoOdEntryI16[0]; }
#endif /* SRDO_OD_ENTRY_I16_CNT */
#ifdef SRDO_OD_ENTRY_R32_CNT
const SRDO_OD_ENTRY_T *srdoEntriesR32(void) { return &srdoOdEntryR32[0]; }
#endif /* SRDO_OD_ENTRY_R32_CNT */
)";

// A transmitted SRDO with an 8 and a 16 bit value and a received one with a
// real and a 32 bit value, each mapped plain and inverted.
void addSrdoDevice(ObjectDataBase& db, quint8 line)
{
    const QString rw = QStringLiteral("rw");
    projectbuilder::addObject(db, line, 0x1000, 7, {{0, 7, "0x00020191"}});
    projectbuilder::addObject(db, line, 0x1001, 7, {{0, 5, "0"}});
    projectbuilder::addObject(db, line, 0x1301, 9, {{0, 5, "2"}, {1, 5, "1", 0, rw}, {2, 6, "25", 0, rw}});
    projectbuilder::addObject(db, line, 0x1302, 9, {{0, 5, "2"}, {1, 5, "2", 0, rw}, {2, 6, "25", 0, rw}});
    projectbuilder::addObject(db, line, 0x1381, 9,
                              {{0, 5, "4"},
                               {1, 7, "0x20000108"},
                               {2, 7, "0x20010108"},
                               {3, 7, "0x20020010"},
                               {4, 7, "0x20030010"}});
    projectbuilder::addObject(db, line, 0x1382, 9,
                              {{0, 5, "4"},
                               {1, 7, "0x20040020"},
                               {2, 7, "0x20050020"},
                               {3, 7, "0x20060020"},
                               {4, 7, "0x20070020"}});
    const QList<QPair<int, QString>> variables = {{5, "safeIn"},   {5, "safeInInv"}, {3, "speed"},
                                                  {3, "speedInv"}, {8, "torque"},    {8, "torqueInv"},
                                                  {7, "pos"},      {7, "posInv"}};
    for (int i = 0; i < variables.size(); ++i) {
        const quint16 index = quint16(0x2000 + i);
        const quint8 subindex = index == 0x2000 || index == 0x2001 ? 1 : 0;
        QList<Sub> subs;
        if (subindex == 1)
            subs << Sub{0, 5, "1"};
        subs << Sub{subindex, variables.at(i).first, "0", 2, rw, variables.at(i).second + "_l{line}"};
        projectbuilder::addObject(db, line, index, subindex == 1 ? 9 : 7, subs);
    }
}

void makeProject(ObjectDataBase& db, bool twoLines, bool core)
{
    ASSERT_TRUE(db.createNewDataBase());
    db.setGeneralSetting(QStringLiteral("line0type"), QStringLiteral("1"));
    db.setGeneralSetting(QStringLiteral("srdo_loop_counter"), QStringLiteral("3"));
    db.setGeneralSetting(QStringLiteral("use_core_headers"),
                         core ? QStringLiteral("V4") : QStringLiteral("0"));
    addSrdoDevice(db, 0);
    if (twoLines) {
        db.addNode(1, NODE_DATA_T());
        db.setGeneralSetting(QStringLiteral("line1type"), QStringLiteral("1"));
        addSrdoDevice(db, 1);
    }
}

QString generateDefine(ObjectDataBase& db, const QString& dir, bool core)
{
    projectbuilder::cacheLines(db);
    std::unique_ptr<CoDefineGenerator> define(core ? new GenDefineGenerator : new CoDefineGenerator);
    generatortest::setProtocolFlags(*define, db);
    return generatortest::runGenerator(*define, db, dir, QStringLiteral("gen_define.h"));
}

QString templatePath(const QString& stack, bool multiLine)
{
    return stack + (multiLine ? QStringLiteral("/co_lib_ml/src/gen_srdo.tpl")
                              : QStringLiteral("/co_lib_sl/src/gen_srdo.tpl"));
}

void writeTemplate(const QString& path, const QString& text)
{
    QDir().mkpath(QFileInfo(path).path());
    generatortest::writeFile(path, text);
}

QString templateFor(bool multiLine, bool core)
{
    QString text = QString::fromLatin1(templateText);
    text.replace(QStringLiteral("LINE_PARAMETER"), !multiLine
                                                       ? QString()
                                                       : (core ? QStringLiteral("UNSIGNED8 CAN_LINE, ")
                                                               : QStringLiteral("UNSIGNED8 CO_LINE, ")));
    text.replace(QStringLiteral("LINE_ARRAY"), !multiLine ? QString()
                                                          : (core ? QStringLiteral("[CAN_LINE_ARRAY_DECL]")
                                                                  : QStringLiteral("[CO_LINE_ARRAY_DECL]")));
    return text;
}

// The whole file around the team's SRDO module compiles, with one data object per SRDO of gen_define.h.
TEST(SrdoGenerator, WholeFileCompiles)
{
    for (const bool twoLines : {false, true}) {
        SCOPED_TRACE(testing::Message() << "two lines " << twoLines);
        QTemporaryDir dir;
        ObjectDataBase db;
        makeProject(db, twoLines, false);
        const QString define = generateDefine(db, dir.path(), false);
        SrdoGenerator generator;
        const QString source =
            generatortest::runGenerator(generator, db, dir.path(), QStringLiteral("gen_srdo.c"));
        EXPECT_FALSE(generator.hasFailed());
        EXPECT_TRUE(source.contains(QStringLiteral("#define SRDO_LOOP_COUNTER\t3u\n")));
        EXPECT_EQ(QStringLiteral("%1u").arg(source.count(QStringLiteral("static CO_SRDO_DATA_T\t"))),
                  objdicttest::defines(define).value(QStringLiteral("CO_SRDO_CNT")));
        EXPECT_TRUE(generatortest::compileWithBoth(dir.path(), QStringLiteral("gen_srdo.c")));
    }
}

// The stack's template filled in: nothing of it is left, the tables of
// entries have the sizes of gen_define.h, and the blocks of types that no
// object maps are gone.
TEST(SrdoGeneratorStatic, FilledTemplateCompiles)
{
    for (const bool core : {false, true}) {
        for (const bool twoLines : {false, true}) {
            SCOPED_TRACE(testing::Message() << "core " << core << " two lines " << twoLines);
            QTemporaryDir dir;
            QTemporaryDir stack;
            ObjectDataBase db;
            makeProject(db, twoLines, core);
            db.setGeneralSetting(QStringLiteral("static_srdo_data"), QStringLiteral("1"));
            db.setMiscSetting(QStringLiteral("costackpath"), stack.path());
            writeTemplate(templatePath(stack.path(), twoLines), templateFor(twoLines, core));
            const QString define = generateDefine(db, dir.path(), core);
            SrdoGeneratorStatic generator;
            const QString source =
                generatortest::runGenerator(generator, db, dir.path(), QStringLiteral("gen_srdo.c"));
            ASSERT_FALSE(generator.hasFailed()) << qPrintable(generator.lastError());
            EXPECT_FALSE(source.contains(QStringLiteral("__GEN_SRDO")));
            EXPECT_TRUE(source.contains(core ? QStringLiteral("RET_MAP_ERROR;")
                                             : QStringLiteral("RET_CO_MAP_ERROR;")));
            EXPECT_FALSE(source.contains(QStringLiteral("#ifdef SRDO_OD_ENTRY_I8_CNT")));
            EXPECT_TRUE(source.contains(QStringLiteral("#ifdef SRDO_OD_ENTRY_I16_CNT")));
            const QMap<QString, QString> counts = objdicttest::defines(define);
            for (const char* type : {"U8", "I16", "R32", "U32"}) {
                const QString table = QStringLiteral("srdoOdEntry%1[").arg(QLatin1String(type));
                const qsizetype start = source.indexOf(QStringLiteral("SRDO_OD_ENTRY_T ") + table);
                ASSERT_GE(start, 0) << type;
                const QString rows = source.mid(start, source.indexOf(QStringLiteral("};"), start) - start);
                EXPECT_EQ(QStringLiteral("%1u").arg(rows.count(QStringLiteral("\t{ 0x"))),
                          counts.value(QStringLiteral("SRDO_OD_ENTRY_%1_CNT").arg(QLatin1String(type))))
                    << type;
            }
            QStringList defines;
            if (core)
                defines << QStringLiteral("-DTEST_STACK_V4");
            EXPECT_TRUE(generatortest::compileWithBoth(dir.path(), QStringLiteral("gen_srdo.c"), defines));
        }
    }
}

// A template that can't be used ends the generator with a reason and writes no gen_srdo.c.
TEST(SrdoGeneratorStatic, UnusableTemplatesFail)
{
    const QString full = templateFor(false, false);
    const struct
    {
        const char* name;
        QString text;
        bool write;
        QString error;
    } cases[] = {
        {"missing", QString(), false, QStringLiteral("Template file not found.")},
        {"without a placeholder", QString(full).remove(QStringLiteral("__GEN_SRDO_GET_DATA_PTR__")), true,
         QStringLiteral("the placeholders __GEN_SRDO_GET_DATA_PTR__ are missing")},
        {"with a repeated placeholder", full + QStringLiteral("__GEN_SRDO_RECEIVE_MAPPING2__\n"), true,
         QStringLiteral("the placeholders __GEN_SRDO_RECEIVE_MAPPING2__ stand more than once")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        QTemporaryDir stack;
        ObjectDataBase db;
        makeProject(db, false, false);
        db.setMiscSetting(QStringLiteral("costackpath"), stack.path());
        if (c.write)
            writeTemplate(templatePath(stack.path(), false), c.text);
        SrdoGeneratorStatic generator;
        projectbuilder::cacheLines(db);
        generatortest::runGenerator(generator, db, dir.path(), QStringLiteral("gen_srdo.c"));
        EXPECT_TRUE(generator.hasFailed());
        EXPECT_TRUE(generator.lastError().contains(c.error)) << qPrintable(generator.lastError());
        EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("gen_srdo.c"))));
    }
}

} // namespace
