#include <QCoreApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("CANopen Tarnwick");
    QCoreApplication::setApplicationVersion("4.3.2");
    QCoreApplication::setOrganizationName("halvex");
    return RUN_ALL_TESTS();
}
