#include <oz/models/CellularNetworkModel.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const CellularNetworkModel networks;
    qInfo() << "in use:" << networks.count();
    QObject::connect(&networks, &CellularNetworkModel::countChanged, [](int count) {
        qInfo() << "in use:" << count;
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     in use: 1
// and after `ozdevice sim cellular-network home-cdma serve`
//     in use: 2
