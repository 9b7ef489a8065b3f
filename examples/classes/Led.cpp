#include <oz/device/Led.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::device;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Led led;
    led.setColor(LedColor::Green);
    QObject::connect(&led, &Led::remainingFlashCountChanged, [](int left) { qInfo() << left << "left"; });
    QObject::connect(&led, &Led::activeChanged, [](bool active) {
        qInfo() << "active:" << active;
        if (!active)
            QCoreApplication::quit();
    });
    led.flash(3);
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     active: true
//     2 left
//     1 left
//     active: false
