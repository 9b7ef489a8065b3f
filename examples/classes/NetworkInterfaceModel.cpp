#include <oz/models/NetworkInterfaceModel.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    NetworkInterfaceModel interfaces;
    interfaces.update(); // or setInterval(), which does it again and again
    const int row = interfaces.rowOf(QStringLiteral("lo"));
    qInfo() << interfaces.record(row)[QStringLiteral("networkInterfaceName")].toString();
}

// Over the simulated phone, this prints
//     "lo"
