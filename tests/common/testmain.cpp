#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // ctest runs the tests as parallel processes under one home. Per-user
    // settings that one test writes (corrections off, implementation info)
    // must not reach a test that runs beside it, so each process keeps its
    // own, and so do the trw programs it starts.
    QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("CANopen Tarnwick");
    QCoreApplication::setApplicationVersion("4.3.2");
    QCoreApplication::setOrganizationName("halvex");
    return RUN_ALL_TESTS();
}
