#include "common/projectbuilder.h"
#include "common/testhelpers.h"
#include "generatortestsupport.h"
#include "objdicttestsupport.h"

#include "generators/canopen/vobjdictgenerator.h"
#include "generators/canopen/vobjdictgeneratorv4.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

// The rows of one table of the file, from its head to the closing brace.
QStringList tableRows(const QString& source, const QString& name)
{
    const qsizetype head = source.indexOf(QStringLiteral(" %1[").arg(name));
    if (head < 0)
        return {};
    const qsizetype start = source.indexOf(QLatin1Char('\n'), head) + 1;
    const qsizetype end = source.indexOf(QStringLiteral("};\n"), start);
    return source.mid(start, end - start).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// Virtual sub-indices of every type the stack serves, beside those of the synthetic device.
void addVirtualObjects(ObjectDataBase& db, quint8 line)
{
    const QString rw = QStringLiteral("rw");
    QList<projectbuilder::Sub> subs = {{0, 5, "8", 3}};
    const QList<int> types = {6, 4, 8, 22, 9, 10, 2, 3, 1};
    for (int i = 0; i < types.size(); ++i)
        subs << projectbuilder::Sub{quint8(i + 1), types.at(i), "0", 3, rw};
    projectbuilder::addObject(db, line, 0x3000, 9, subs);
    projectbuilder::addObject(db, line, 0x3001, 2, {{0, 15, "", 3, rw}});
}

// The application's access functions, as its header declares them.
QString accessDeclarations(ObjectDataBase& db)
{
    QStringList names;
    for (quint8 line : db.getNodeList()) {
        for (quint16 index : db.getIndexList(line, 0x1000, 0xBFFF)) {
            for (quint8 subindex : db.getSubIndexList(line, index)) {
                SUBINDEX_DATA_T sub;
                db.getSubIndex(line, index, subindex, sub);
                if (sub.implementation == 3)
                    names << QStringLiteral("V_%1_%2").arg(index, 4, 16, QLatin1Char('0')).arg(subindex);
            }
        }
    }
    names.removeDuplicates();
    QString text;
    for (const QString& name : std::as_const(names))
        text += QStringLiteral("RET_T %1(BOOL_T write, void *pData, UNSIGNED32 size);\n").arg(name);
    return text;
}

// gen_vobjdict.c compiles against the stack and holds as many rows and access
// functions as gen_define.h gives its tables.
TEST(VobjDictGenerator, TablesCompileAndMatchTheCountsOfGenDefine)
{
    for (const bool core : {false, true}) {
        for (const bool twoLines : {false, true}) {
            SCOPED_TRACE(testing::Message() << "core " << core << " two lines " << twoLines);
            QTemporaryDir dir;
            ObjectDataBase db;
            objdicttest::makeSyntheticProject(db, twoLines);
            addVirtualObjects(db, 0);
            if (twoLines)
                addVirtualObjects(db, 1);
            const objdicttest::Generated files =
                objdicttest::generate(db, dir.path(), {core, false, false, false});
            const QString header = dir.filePath(QStringLiteral("test_application.h"));
            generatortest::writeFile(header, QString::fromUtf8(testhelpers::readFile(header)) +
                                                 accessDeclarations(db));
            std::unique_ptr<VobjDictGenerator> generator(core ? new VobjDictGeneratorV4
                                                              : new VobjDictGenerator);
            ASSERT_TRUE(generator->setDatabase(&db) == AbstractGenerator::Ok &&
                        generator->hasVirtualObjects());
            const QString source =
                generatortest::runGenerator(*generator, db, dir.path(), QStringLiteral("gen_vobjdict.c"));

            EXPECT_TRUE(
                generatortest::compileWithBoth(dir.path(), QStringLiteral("gen_vobjdict.c"),
                                               core ? QStringList{"-DTEST_STACK_V4"} : QStringList{}));
            const QMap<QString, QString> counts = objdicttest::defines(files.define);
            const QList<QPair<QString, QString>> tables = {
                {"vod_assign", "CO_VOD_ASSIGN_CNT"},    {"vod_description", "CO_VOBJ_DESC_CNT"},
                {"vod_u8", "CO_VIRTUAL_U8_CNT"},        {"vod_u16", "CO_VIRTUAL_U16_CNT"},
                {"vod_u32", "CO_VIRTUAL_U32_CNT"},      {"vod_i8", "CO_VIRTUAL_I8_CNT"},
                {"vod_i16", "CO_VIRTUAL_I16_CNT"},      {"vod_i32", "CO_VIRTUAL_I32_CNT"},
                {"vod_r32", "CO_VIRTUAL_R32_CNT"},      {"vod_u24", "CO_VIRTUAL_U24_CNT"},
                {"vod_os", "CO_VIRTUAL_OS_CNT"},        {"vod_vs", "CO_VIRTUAL_VS_CNT"},
                {"vod_domain", "CO_VIRTUAL_DOMAIN_CNT"}};
            for (const auto& [table, count] : tables) {
                ASSERT_TRUE(counts.contains(count)) << qPrintable(count);
                EXPECT_EQ(QString::number(tableRows(source, table).size()) + QLatin1Char('u'),
                          counts.value(count))
                    << qPrintable(table);
            }
            // The boolean sub-index has a row but no access table of its type.
            EXPECT_TRUE(source.contains(core ? QStringLiteral("CORE_DTYPE_BOOL")
                                             : QStringLiteral("CO_DTYPE_BOOL_PTR")));
            EXPECT_EQ(source.contains(QStringLiteral("CORE_CONST CO_OBJECT_DESC_T CORE_CONST_STORAGE_CLASS "
                                                     "vod_description[CO_VOBJ_DESC_CNT] = {\n")),
                      core);
        }
    }
}

} // namespace
