#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // Tests compare the log.
    qunsetenv("QT_LOGGING_RULES");
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
