#include <oz/models/DeviceRequests.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    DeviceRequests requests;
    requests.flash(oz::device::LedColor::Red, 2).then(&application, [](const RequestResult &result) {
        qInfo() << "all flashes seen:" << result.succeeded;
        QCoreApplication::quit();
    });
    qInfo() << "goes on at once";
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     goes on at once
//     all flashes seen: true
