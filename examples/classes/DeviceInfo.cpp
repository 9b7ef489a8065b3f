#include <oz/device/DeviceInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const DeviceInfo device;
    qInfo() << "somebody uses it:" << (device.activityState() == UserActivityState::Active);
    QObject::connect(&device, qOverload<DeviceOrientation::Type>(&DeviceInfo::orientationChanged),
        [](DeviceOrientation::Type orientation) {
            qInfo() << "turned to" << orientation;
            if (orientation == DeviceOrientation::LeftUp)
                QCoreApplication::quit();
        });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     somebody uses it: true
// and after `ozdevice sim device left-up`
//     turned to oz::device::DeviceOrientation::LeftUp
