#include <oz/device/CellularNetworkInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const CellularNetworkInfo network;
    qInfo() << network.displayName() << network.technology() << network.signalStrength() << "dBm";
    QObject::connect(&network, &CellularNetworkInfo::signalStrengthChanged, [](int strength) {
        qInfo() << "now" << strength << "dBm";
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     "North" oz::device::CellularTechnology::Lte -85 dBm
// and after `ozdevice sim cellular-network home-lte rssi -101`
//     now -101 dBm
