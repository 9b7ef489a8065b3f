#pragma once

#include <oz/device/BatteryInfo.hpp>
#include <oz/device/Led.hpp>

#include <QObject>

/*! Flashes the LED red twice whenever the battery gets low. */
class BatteryLamp : public QObject
{
    Q_OBJECT

public:
    static constexpr int LowLevel = 10; // percent

    explicit BatteryLamp(QObject *parent = nullptr);

private:
    void onLevel(int level);

    oz::device::BatteryInfo m_battery;
    oz::device::Led m_led{oz::device::LedColor::Red};
    bool m_isLow = false;
};
