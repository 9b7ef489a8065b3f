#include <oz/device/SdCardInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const SdCardInfo card;
    qInfo() << card.state() << card.activity();
    QObject::connect(
        &card, qOverload<SdCardState::Type>(&SdCardInfo::stateChanged), [](SdCardState::Type state) {
            qInfo() << "now" << state;
            QCoreApplication::quit();
        });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     oz::device::SdCardState::Mounted oz::device::SdCardActivity::Idle
// and after `ozdevice sim sdcard remove`
//     now oz::device::SdCardState::Unmounted
