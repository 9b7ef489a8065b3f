#pragma once

#include "ChangeTable.hpp"

#include <oz/device/BatteryInfo.hpp>

#include <limits>

namespace oz {
class PpsObject;
}

namespace oz::device {

class BatteryInfoPrivate : public QObject
{
    Q_OBJECT

public:
    /*! The number that the battery manager publishes in place of an integer that it does not have. */
    static constexpr int MissingInteger = 80'000'000;

    /*! One reading. */
    struct PpsData
    {
        int level = -1;
        BatteryChargingState::Type chargingState = BatteryChargingState::Unknown;
        bool present = false;
        BatteryCondition::Type condition = BatteryCondition::Unknown;
        int fullChargeCapacity = -1;
        int cycleCount = -1;
        int temperature = MissingInteger; //!< hundredths of a degree
        QString rxid;
    };

    /*! A reading as it is announced. */
    struct Values : PpsData
    {
        float degrees = std::numeric_limits<float>::quiet_NaN();
    };

    explicit BatteryInfoPrivate(BatteryInfo *q);

    [[nodiscard]] const Values &values() const { return *m_values; }

private Q_SLOTS:
    void onReadyRead();

private:
    void readPps(PpsData &record);
    [[nodiscard]] Values readValues();
    [[nodiscard]] static float convertTemperature(int raw);

    BatteryInfo *q;
    oz::PpsObject *m_pps;
    Announced<Values> m_values;
};

} // namespace oz::device
