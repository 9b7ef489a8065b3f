#include <oz/models/DeviceRequests.hpp>
#include <oz/models/WiFiDirectPeerModel.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    WiFiDirectPeerModel peers;
    DeviceRequests requests;
    QObject::connect(peers.wifiDirect(), &oz::device::WiFiDirect::scanCompleted, [&] {
        qInfo() << peers.count() << "peers";
        QCoreApplication::quit();
    });
    requests.scanPeers().then(&application,
        [](const RequestResult &result) { qInfo() << "the scan has begun:" << result.succeeded; });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     the scan has begun: true
//     4 peers
