#include "common/testhelpers.h"
#include "generators/canopen/propsfilewriter.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using testhelpers::readFile;

TEST(PropsFileWriter, OnlyValuedSymbolsWithoutParametersBecomeConstants)
{
    QTemporaryDir dir;
    const QString define = testhelpers::writeFile(dir.path() + QStringLiteral("/gen_define.h"),
                                                  "#ifndef GEN_DEFINE_H\n"
                                                  "#define GEN_DEFINE_H\n"
                                                  "#define CO_SDO_SERVER_CNT\t1u\n"
                                                  "  # define CO_EMCY_PRODUCER 1u\n"
                                                  "#define CO_LSS_SUPPORTED\t0u\n"
                                                  "#define CO_NMT_MASTER 0\n"
                                                  "#define CO_MACRO(x)\t(x)\n"
                                                  "#define CO_SDO_SERVER_CNT\t1u\n"
                                                  "/* #define NOT_THIS 1 */\n"
                                                  "#endif\n");
    ASSERT_TRUE(PropsFileWriter::write(define, dir.path()));
    EXPECT_EQ(
        readFile(dir.path() + QStringLiteral("/gen_define.props")),
        QByteArray(
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
            "<!-- Auto-generated from gen_define.h - do not edit. -->\n"
            "<!-- C# conditional-compilation symbols that make the #if in the -->\n"
            "<!-- generated wrapper match the compiled stack_wrapper DLL. -->\n"
            "<!-- Imported automatically by Directory.Build.props when present. -->\n"
            "<Project>\n"
            "  <PropertyGroup>\n"
            "    <DefineConstants>$(DefineConstants);CO_SDO_SERVER_CNT;CO_EMCY_PRODUCER</DefineConstants>\n"
            "  </PropertyGroup>\n"
            "</Project>\n"));
    EXPECT_EQ(readFile(dir.path() + QStringLiteral("/Directory.Build.props")),
              QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                         "<!-- Auto-imported by MSBuild. Pulls in the generated define -->\n"
                         "<!-- symbols (gen_define.props) if present; no error if absent. -->\n"
                         "<Project>\n"
                         "  <Import Project=\"$(MSBuildThisFileDirectory)gen_define.props\"\n"
                         "          Condition=\"Exists('$(MSBuildThisFileDirectory)gen_define.props')\" />\n"
                         "</Project>\n"));
}

TEST(PropsFileWriter, WithoutGenDefineOnlyTheDirectoryFileIsWritten)
{
    QTemporaryDir dir;
    EXPECT_TRUE(PropsFileWriter::write(dir.path() + QStringLiteral("/gen_define.h"), dir.path()));
    EXPECT_FALSE(QFile::exists(dir.path() + QStringLiteral("/gen_define.props")));
    EXPECT_TRUE(QFile::exists(dir.path() + QStringLiteral("/Directory.Build.props")));
}

TEST(PropsFileWriter, UnwritableFolderFails)
{
    EXPECT_FALSE(
        PropsFileWriter::write(QStringLiteral("/no/such/gen_define.h"), QStringLiteral("/no/such/folder")));
}

} // namespace
