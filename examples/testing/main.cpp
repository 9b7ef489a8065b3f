#include "BatteryLamp.hpp"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const BatteryLamp lamp;
    return application.exec();
}
