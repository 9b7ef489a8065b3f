#include <oz/device/HardwareInfo.hpp>

#include <QDebug>

using namespace oz::device;

int main()
{
    const HardwareInfo hardware;
    qInfo() << hardware.modelName() << hardware.modelNumber() << hardware.hdmiConnector();
    for (int i = 0; i < hardware.processorCount(); ++i)
        qInfo() << hardware.processorModel(i) << hardware.processorSpeed(i) << "MHz";
}

// Over the simulated phone, this prints
//     "Kestrel" "KSL100" oz::device::HdmiConnector::Micro
//     "Simulated core" 1500 MHz
//     "Simulated core" 1500 MHz
