#include "canopenlib/helper.h"
#include "canopenlib/udssiddefinitions.h"
#include "common/testhelpers.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(HelperSubstitution, PlaceholdersTakeIndexSubindexAndLine)
{
    const struct
    {
        const char* text;
        const char* expected;
    } cases[] = {
        {"Plain name", "Plain name"},
        {"var_{index}_{sub}", "var_2a0f_03"},
        {"Channel {subdec} of {indexdec}", "Channel 3 of 10767"},
        {"line{line}_{line}", "line7_7"},
        {"{unknown} $NODEID {", "{unknown} $NODEID {"},
    };
    for (const auto& entry : cases)
        EXPECT_EQ(Helper::substituteVariables(QLatin1String(entry.text), 0x2A0F, 3, 7),
                  QLatin1String(entry.expected))
            << entry.text;
}

TEST(HelperNumberLists, EveryNumberGetsTheUnsignedSuffix)
{
    const struct
    {
        const char* list;
        const char* expected;
    } cases[] = {
        {"1,2,3", "1u,2u,3u"},
        {"0x10, 255", "0x10u, 255u"},
        {"{ 4, 0 }", "{ 4u, 0u }"},
        {"5u, 6", "5u, 6u"},
        {"CO_LINE_1, 8", "CO_LINE_1, 8u"},
        {"1.5", "1.5"},
        {"", ""},
        {"42", "42u"},
    };
    for (const auto& entry : cases)
        EXPECT_EQ(Helper::addLowerCaseUtoNumberLists(QLatin1String(entry.list)),
                  QLatin1String(entry.expected))
            << entry.list;
}

TEST(HelperUtf8Array, BytesOfTheUtf8Form)
{
    EXPECT_EQ(Helper::UTF8String2ArrayString(QString::fromUtf8("A\xc3\xa4\xe2\x82\xac")),
              QStringLiteral("0x41, 0xc3, 0xa4, 0xe2, 0x82, 0xac"));
}

TEST(HelperLineEndings, AnyMixOfEndingsBecomesTheChosenOneAMissingFileFails)
{
    const struct
    {
        QByteArray content;
        const char* ending;
        QByteArray expected;
    } cases[] = {
        {"a\nb\n", "\r\n", "a\r\nb\r\n"},       {"a\r\nb\rc\n", "\n", "a\nb\nc\n"},
        {"a\r\n\r\nb", "\r", "a\r\rb"},         {"a\r\nb\r\n", "\r\n", "a\r\nb\r\n"},
        {"no ending", "\n", "no ending"},       {"", "\r\n", ""},
        {"\xc3\xa4\n", "\r\n", "\xc3\xa4\r\n"},
    };
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("gen_define.h"));
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.content.toStdString());
        testhelpers::writeFile(path, entry.content);
        EXPECT_TRUE(Helper::modifyLineEnding(path, QLatin1String(entry.ending)));
        EXPECT_EQ(testhelpers::readFile(path), entry.expected);
    }
    EXPECT_FALSE(Helper::modifyLineEnding(dir.filePath(QStringLiteral("absent.c")), QStringLiteral("\n")));
}

TEST(UDSServiceNames, ServiceIdentifiersOfIso14229)
{
    const struct
    {
        int sid;
        const char* name;
    } services[] = {{0x10, "DiagnosticSessionControl"},
                    {0x11, "ECUReset"},
                    {0x22, "ReadDataByIdentifier"},
                    {0x27, "SecurityAccess"},
                    {0x2E, "WriteDataByIdentifier"},
                    {0x31, "RoutineControl"},
                    {0x36, "TransferData"},
                    {0x3E, "TesterPresent"},
                    {0x85, "ControlDTCSetting"}};
    const QMap<UDS::SID, QString>& names = UDSSIDDefinitions::getSIDNames();
    for (const auto& service : services)
        EXPECT_EQ(names.value(UDS::SID(service.sid)), QLatin1String(service.name)) << service.sid;
    EXPECT_FALSE(names.contains(UDS::SID(0x40)));
}
