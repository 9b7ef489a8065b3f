#include <oz/device/RequestError.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    WiFiDirect wifi;
    const RequestError error;
    const int result = wifi.requestStartSession();
    qInfo() << WiFiDirectResult::Type(result);
    qInfo() << error.number() << error.text();
}

// Over the simulated phone, this prints
//     oz::device::WiFiDirectResult::NoNetworkConnection
//     64 "there is no connection"
