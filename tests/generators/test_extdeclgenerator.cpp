#include "generatortestsupport.h"

#include "common/testhelpers.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/extdeclgenerator.h"
#include "generators/canopen/extdeclgeneratorv4.h"
#include "generators/canopen/gendefinegenerator.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace generatortest;

namespace {

void addCanId(ObjectDataBase& db, quint8 line, quint32 id, QList<ObjectDataBase::DataElement> elements)
{
    ObjectDataBase::CANID canId;
    canId.id = id;
    canId.direction = ObjectDataBase::Transmit;
    canId.mappingcount = quint16(elements.size());
    db.addCANID(line, id, canId);
    quint32 number = 0;
    for (ObjectDataBase::DataElement& element : elements) {
        element.canid = id;
        element.direction = ObjectDataBase::Transmit;
        db.addDataElement(line, id, ObjectDataBase::Transmit, number++, element);
    }
}

ObjectDataBase::DataElement element(int dataType, quint16 bits, const QString& varname)
{
    ObjectDataBase::DataElement record;
    record.datatype = dataType;
    record.bitsize = bits;
    record.varname = varname;
    return record;
}

// A J1939 line and a raw CAN line that share a variable, with an expression,
// a byte string and a narrow type that only the V4 stack widens.
void makeMixedProject(ObjectDataBase& db, bool withCounter)
{
    db.createNewDataBase();
    addLine(db, 0, 2);
    addLine(db, 1, 4);
    ObjectDataBase::SPN speed = spn(84, 6, 16, QStringLiteral("speed"));
    speed.desc = QStringLiteral("Wheel speed");
    QList<ObjectDataBase::SPN> spns = {speed, spn(70, 100, 2, QStringLiteral("brake")),
                                       spn(71, 5, 8, QStringLiteral("s.speed")),
                                       spn(72, 10, 64, QStringLiteral("serial")), spn(73, 5, 8)};
    if (withCounter)
        spns << spn(74, 108, 11, QStringLiteral("counter"));
    addPgn(db, 0, 65265, ObjectDataBase::Receive, 6, spns);
    addCanId(db, 1, 0x123, {element(6, 16, QStringLiteral("speed"))});
    addCanId(db, 1, 0x20000800, {element(106, 9, QStringLiteral("level")), element(5, 8, QString())});
}

struct Outputs
{
    QString header;
    QString definitions;
};

Outputs generate(ObjectDataBase& db, const QString& dir, bool core)
{
    cacheLines(db);
    std::unique_ptr<CoDefineGenerator> define(core ? new GenDefineGenerator : new CoDefineGenerator);
    setProtocolFlags(*define, db);
    runGenerator(*define, db, dir, QStringLiteral("gen_define.h"));
    std::unique_ptr<ExtDeclGenerator> generator(core ? new ExtDeclGeneratorV4 : new ExtDeclGenerator);
    generator->setWriteDefinitions(true);
    Outputs outputs;
    outputs.header = runGenerator(*generator, db, dir, QStringLiteral("gen_extern_decl.h"));
    outputs.definitions = QString::fromUtf8(testhelpers::readFile(dir + QStringLiteral("/gen_var_decl.c")));
    return outputs;
}

struct ProjectCase
{
    const char* name;
    std::function<void(ObjectDataBase&)> make;
};

class DeclaredProject : public testing::TestWithParam<ProjectCase>
{
};

// The definitions follow the declarations in one unit, so that a type that
// differs between the two files fails the compile.
TEST_P(DeclaredProject, DeclarationsAndDefinitionsCompileTogether)
{
    for (const bool core : {false, true}) {
        SCOPED_TRACE(core ? "V4" : "classic");
        ObjectDataBase db;
        GetParam().make(db);
        QTemporaryDir dir;
        generate(db, dir.path(), core);
        writeFile(dir.filePath("both.c"), "#include <gen_define.h>\n#include <co_datatype.h>\n#include "
                                          "\"gen_extern_decl.h\"\n#define NLW_USE_GENERATED_VARIABLES\n"
                                          "#include \"gen_var_decl.c\"\n");
        for (const char* compiler : {"gcc", "clang"})
            EXPECT_TRUE(compilesWithStack(dir.path(), QStringLiteral("both.c"), core, compiler));
    }
}

INSTANTIATE_TEST_SUITE_P(
    ExtDeclGenerator, DeclaredProject,
    testing::Values(
        ProjectCase{"EngineEcuExample",
                    [](ObjectDataBase& db) {
                        ASSERT_TRUE(db.openTextProject(TRW_SOURCE_DIR
                                                       "/examples/j1939_engine_ecu/j1939_engine_ecu.trwt"));
                    }},
        ProjectCase{"ValveControllerExample",
                    [](ObjectDataBase& db) {
                        ASSERT_TRUE(db.openTextProject(
                            TRW_SOURCE_DIR
                            "/examples/valve_controller_canopen_j1939/valve_controller_canopen_j1939.trwt"));
                    }},
        ProjectCase{"JOneNineThreeNineAndRawCan", [](ObjectDataBase& db) { makeMixedProject(db, false); }}),
    [](const testing::TestParamInfo<ProjectCase>& info) { return std::string(info.param.name); });

TEST(ExtDeclGenerator, ExactPiecesOfBothFiles)
{
    for (const bool core : {false, true}) {
        SCOPED_TRACE(core ? "V4" : "classic");
        ObjectDataBase db;
        makeMixedProject(db, true);
        addPgn(db, 0, 65266, ObjectDataBase::Transmit, 6,
               {spn(75, 5, 8, QStringLiteral("table[2]")), spn(76, 5, 8, QStringLiteral("table[3]"))});
        QTemporaryDir dir;
        const Outputs outputs = generate(db, dir.path(), core);
        const QString v4 = core ? QStringLiteral(" (V4)\n") : QStringLiteral("\n");
        EXPECT_TRUE(outputs.header.startsWith("/*\n *  variable declarations for device - generated by "));
        EXPECT_EQ(outputs.header.section('\n', 1, 1).endsWith(" (V4)"), core);
        EXPECT_TRUE(outputs.header.contains(
            " */\n/* protect against multiple inclusion of the file */\n#ifndef GEN_EXTERN_DECL_H\n"
            "#define GEN_EXTERN_DECL_H 1\n\n/* external variables */\n\n"
            "/* line 0: (variables that exist in multiple lines are only declared once)*/\n"
            "/* PGN 0xfef1 */\nextern UNSIGNED16\tspeed;\t/* SPN84 Wheel speed */\n"
            "extern UNSIGNED8\tbrake;\nextern UNSIGNED8\tserial[8];\n"));
        EXPECT_TRUE(outputs.header.contains(core ? "extern UNSIGNED16\tcounter;\n"
                                                 : "extern UNSIGNED11\tcounter;\n"));
        EXPECT_TRUE(outputs.header.contains("/* PGN 0xfef2 */\nextern UNSIGNED8\ttable[];\n\n/* line 1*/\n"
                                            "/* CAN-ID 291/0x0123 */\n/* CAN-ID 2048/0x0800 ext */\n"
                                            "extern UNSIGNED16\tlevel;\n\n#endif /* GEN_EXTERN_DECL_H */\n"));
        EXPECT_FALSE(outputs.header.contains("s.speed"));
        EXPECT_TRUE(outputs.definitions.startsWith("/*\n * variable definitions for device - generated by "));
        EXPECT_TRUE(outputs.definitions.contains(
            v4 +
            " * (This file may be used optionally if variables are not defined yet by the application.)\n"
            " */\n\n#include <gen_define.h>\n#include <co_datatype.h>\n#ifdef NLW_USE_GENERATED_VARIABLES\n"
            "/* external variables */\n"));
        EXPECT_TRUE(outputs.definitions.contains("\nUNSIGNED16\tspeed;\t/* SPN84 Wheel speed */\n"));
        EXPECT_TRUE(
            outputs.definitions.endsWith("\nUNSIGNED16\tlevel;\n#endif /* NLW_USE_GENERATED_VARIABLES */\n"));
    }
}

} // namespace
