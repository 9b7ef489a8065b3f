#include <oz/device/SimCardInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const SimCardInfo card;
    qInfo() << card.state() << card.mobileCountryCode() << card.mobileNetworkCode();
    QObject::connect(
        &card, qOverload<SimCardState::Type>(&SimCardInfo::stateChanged), [](SimCardState::Type state) {
            qInfo() << "now" << state;
            QCoreApplication::quit();
        });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     oz::device::SimCardState::Ready "001" "01"
// and after `ozdevice sim simcard remove`
//     now oz::device::SimCardState::NotDetected
