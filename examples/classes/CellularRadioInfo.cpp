#include <oz/device/CellularRadioInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const CellularRadioInfo radio;
    qInfo() << "on:" << radio.isPoweredOn() << "networks:" << radio.networkCount();
    QObject::connect(&radio, &CellularRadioInfo::poweredOnChanged, [](bool on) {
        qInfo() << "on:" << on;
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     on: true networks: 1
// and after `ozdevice sim radio power off`
//     on: false
