#include <oz/device/BatteryInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const BatteryInfo battery;
    qInfo() << battery.level() << "percent," << battery.chargingState();
    QObject::connect(&battery, qOverload<int, BatteryChargingState::Type>(&BatteryInfo::levelChanged),
        [](int level, BatteryChargingState::Type state) {
            qInfo() << "now" << level << "percent," << state;
            QCoreApplication::quit();
        });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     80 percent, oz::device::BatteryChargingState::Discharging
// and after `ozdevice sim battery plug`
//     now 80 percent, oz::device::BatteryChargingState::Charging
