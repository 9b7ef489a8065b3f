#include <oz/models/MiracastSinkModel.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    MiracastSinkModel sinks;
    QObject::connect(sinks.manager(),
        qOverload<oz::device::MiracastResult::Type>(&oz::device::MiracastManager::scanCompleted), [&] {
            for (int row = 0; row < sinks.count(); ++row)
                qInfo() << sinks.index(row).data().toString();
            QCoreApplication::quit();
        });
    sinks.manager()->requestScan();
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     "Living room"
//     "Meeting room"
//     "Set-top box"
