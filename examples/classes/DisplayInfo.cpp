#include <oz/device/DisplayInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const DisplayInfo panel(DisplayInfo::primaryDisplayId());
    const DisplayInfo hdmi(DisplayInfo::secondaryDisplayId());
    qInfo() << panel.displayName() << panel.pixelSize() << panel.displayTechnology();
    QObject::connect(&hdmi, &DisplayInfo::attachedChanged, [&](bool attached) {
        qInfo() << hdmi.displayName() << "is attached:" << attached;
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     "panel" QSize(768, 1280) oz::device::DisplayTechnology::Oled
// and after `ozdevice sim display attach 1`
//     "hdmi" is attached: true
