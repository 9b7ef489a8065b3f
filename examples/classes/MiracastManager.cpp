#include <oz/device/MiracastManager.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    MiracastManager miracast;
    qInfo() << miracast.connectionState();
    QObject::connect(&miracast, qOverload<MiracastResult::Type>(&MiracastManager::scanCompleted),
        [&] { miracast.requestConnect(QStringLiteral("02:00:00:00:02:01"), {}); });
    QObject::connect(&miracast, qOverload<MiracastResult::Type>(&MiracastManager::connectCompleted),
        [&](MiracastResult::Type result) {
            qInfo() << result << "with" << miracast.deviceName() << miracast.devicePixelSize();
            QCoreApplication::quit();
        });
    miracast.requestScan();
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     oz::device::MiracastConnectionState::Disconnected
//     oz::device::MiracastResult::Success with "Living room" QSize(1920, 1080)
