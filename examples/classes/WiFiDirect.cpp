#include <oz/device/WiFiDirect.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    WiFiDirect wifi;
    QObject::connect(&wifi, qOverload<QString, QString, WiFiDirectDeviceType::Type>(&WiFiDirect::deviceFound),
        [](const QString &name, const QString &address, WiFiDirectDeviceType::Type type) {
            if (type == WiFiDirectDeviceType::Display)
                qInfo() << name << "at" << address;
        });
    QObject::connect(&wifi, &WiFiDirect::scanCompleted, &application, &QCoreApplication::quit);
    const int result = wifi.requestScan();
    qInfo() << "scanning:" << WiFiDirectResult::Type(result);
    return result == WiFiDirectResult::Success ? QCoreApplication::exec() : 1;
}

// Over the simulated phone, this prints
//     scanning: oz::device::WiFiDirectResult::Success
//     "Living room" at "02:00:00:00:01:01"
