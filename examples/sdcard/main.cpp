#include <oz/device/SdCardInfo.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    SdCardInfo card;
    qInfo() << "the card is" << card.state() << "and" << card.activity();
    QObject::connect(
        &card, qOverload<SdCardState::Type>(&SdCardInfo::stateChanged), [](SdCardState::Type state) {
            qInfo() << "now it is" << state;
            QCoreApplication::quit();
        });
    return application.exec();
}
