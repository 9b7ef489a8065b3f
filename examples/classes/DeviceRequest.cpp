#include <oz/models/DeviceRequest.hpp>
#include <oz/models/DeviceRequests.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    DeviceRequests requests;
    DeviceRequest flashing(requests.flash(oz::device::LedColor::Blue, -1)); // for ever
    QObject::connect(&flashing, &DeviceRequest::finished, [&] { qInfo() << flashing.reason(); });
    flashing.cancel();
    qInfo() << "running:" << flashing.isRunning();
}

// Over the simulated phone, this prints
//     "Cancelled"
//     running: false
