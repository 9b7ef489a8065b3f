#include <oz/device/CellularDataInterface.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    CellularDataInterface profile(QStringLiteral("mms"));
    qInfo() << profile.accessPointName() << profile.connectionState();
    QObject::connect(&profile,
        qOverload<CellularConnectionState::Type>(&CellularDataInterface::connectionStateChanged),
        [&](CellularConnectionState::Type state) {
            qInfo() << state;
            if (state == CellularConnectionState::Connected) {
                qInfo() << "by" << profile.networkInterfaceName();
                QCoreApplication::quit();
            }
        });
    // The connection is this object's, and ends with it.
    if (profile.requestConnect() != CellularConnectionRequestResult::Requested)
        return 1;
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     "mms.example" oz::device::CellularConnectionState::Disconnected
//     oz::device::CellularConnectionState::PendingConnect
//     oz::device::CellularConnectionState::Connected
//     by "rmnet1"
