#pragma once

#include "source/Source.hpp"

namespace oz::services {

struct BatteryState
{
    enum class Charging { No, Yes, Full };
    enum class Condition { Good, Bad };

    struct Battery
    {
        std::optional<int> level; //!< percent
        std::optional<Condition> condition;
        std::optional<int> fullChargeCapacity; //!< mAh
        std::optional<int> cycleCount;
        std::optional<double> temperature; //!< degrees Celsius

        bool operator==(const Battery &) const = default;
    };

    std::optional<Charging> charging;
    std::optional<int> chargers; //!< the number that is connected
    std::optional<Battery> battery; //!< nothing while it is taken out
    QString wirelessReceiver; //!< its identifier, empty where the device lies on no wireless charger

    bool operator==(const BatteryState &) const = default;
};

/*! What the battery and its chargers are doing, whoever knows it. */
using BatterySource = StateSource<BatteryState>;

} // namespace oz::services
