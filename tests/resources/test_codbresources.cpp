#include "common/testhelpers.h"
#include "resources/trwresources.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Profile
{
    const char* id;
    const char* comment;
};

const Profile profiles[] = {
    {"301", "data base for CiA 301"},
    {"302", "CANopen Profile data base for DS-302"},
    {"401", "CANopen profile data base for DS-401 devices"},
    {"402", "EXAMPLE DATABASE FOR DS402V2.0"},
    {"402_v3", "EXAMPLE DATABASE FOR CiA-402"},
    {"404", "CANopen profile data base for DS-404 devices"},
    {"405", "CANopen profile data base for DS-405 devices"},
    {"406", "CANopen profile data base for Door Environment DS-406V3.0 devices"},
    {"408", "CANopen profile data base for Fluid Valves DS-408 devices"},
    {"410", "CANopen profile data base for Inclinometer DS-410 devices"},
    {"413", "CANopen profile data base for Truck Gateway DS-413 devices"},
    {"415",
     "CANopen profile data base for DS 415 V1.0.1 CANopen device profile for road construction machinery"},
    {"416", "CANopen example data base for DS-416"},
    {"417", "CANopen profile data base for Lift Profile according to DSP417 V1.0.1 July,2003"},
    {"418", "CANopen profile data base for Battery Modules according to DSP418 V1.0 Dec,2002"},
    {"419", "CANopen profile data base for Battery Charger according to DSP419 V1.0 Dec,2002"},
    {"447", "CANopen Profile data base for CiA447"},
    {"454-2", "CANopen profile data base for CiA 454 devices (general objects)"},
    {"454-4", "CANopen profile data base for CiA 454 devices (EBC - EnergyBus Controller)"},
    {"454-5", "CANopen profile data base for CiA 454 devices (voltage converter)"},
    {"454-6", "CANopen profile data base for CiA 454 devices (Battery Pack)"},
    {"454-7", "CANopen profile data base for CiA 454 devices (motor controller unit)"},
};

QStringList resourceFiles()
{
    trwInitResources();
    return QDir(QStringLiteral(":/codb")).entryList({QStringLiteral("*.codb")}, QDir::Files, QDir::Name);
}

using testhelpers::readFile;

} // namespace

TEST(CodbResources, ExactlyTheProfileFilesEachDescribedOnItsFirstLine)
{
    trwInitResources();
    QStringList expected;
    for (const Profile& profile : profiles) {
        const QString name = QStringLiteral("v%1.codb").arg(QLatin1String(profile.id));
        expected << name;
        const QString first =
            QString::fromLatin1(readFile(QStringLiteral(":/codb/") + name).split('\n').first());
        EXPECT_EQ(first.trimmed(), QStringLiteral("# ") + QLatin1String(profile.comment)) << profile.id;
    }
    expected.sort();
    EXPECT_EQ(resourceFiles(), expected);
}

// The files are the output of the generator; a hand edit of a file, or a
// change of the script or its data without regenerating, shows up here.
TEST(CodbResources, MatchTheGeneratorOutput)
{
    const QString script = QStringLiteral(TRW_SOURCE_DIR "/scripts/make_codb.py");
    const QString corpus = QStringLiteral(TRW_CORPUS_DIR);
    if (!QFileInfo::exists(QStringLiteral("/usr/bin/python3")) || !QFileInfo::exists(corpus + "/profiles"))
        GTEST_SKIP() << "python3 or the profile corpus is not available";
    QTemporaryDir out;
    QProcess generator;
    generator.start(QStringLiteral("/usr/bin/python3"),
                    {script, QStringLiteral("--corpus"), corpus, QStringLiteral("--out"), out.path()});
    ASSERT_TRUE(generator.waitForFinished(120000));
    if (generator.exitCode() != 0 && generator.readAllStandardError().contains("No module named 'yaml'"))
        GTEST_SKIP() << "PyYAML is not installed";
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();
    for (const QString& name : resourceFiles())
        EXPECT_TRUE(readFile(out.filePath(name)) == readFile(QStringLiteral(":/codb/") + name))
            << name.toStdString();
}
