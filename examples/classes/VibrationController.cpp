#include <oz/device/VibrationController.hpp>

#include <QDebug>

using namespace oz::device;

int main()
{
    VibrationController motor;
    if (!motor.isSupported())
        return 1;
    motor.start(100, 500); // for half a second
    qInfo() << "it vibrates";
}

// Over the simulated phone, this prints
//     it vibrates
