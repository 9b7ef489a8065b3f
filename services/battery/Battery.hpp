#pragma once

#include "source/Source.hpp"
#include "table/Fields.hpp"

namespace oz::services {

/*! A battery and its chargers, as any source knows them. Of one that is taken out nothing more is known. */
struct Battery
{
    enum class Charging { No, Yes, Full };
    enum class Condition { Good, Bad };

    bool present = false;
    std::optional<int> level; //!< percent
    std::optional<Charging> charging;
    std::optional<int> chargers; //!< the number that is connected
    std::optional<Condition> condition;
    std::optional<int> fullChargeCapacity; //!< mAh
    std::optional<int> cycleCount;
    std::optional<double> temperature; //!< degrees Celsius
    QString wirelessReceiver; //!< its identifier, empty where the device lies on no wireless charger

    bool operator==(const Battery &) const = default;
};

using BatterySource = StateSource<Battery>;

[[nodiscard]] const WordList<Battery::Condition> &batteryConditions();
/*! How it stands in the tree. */
[[nodiscard]] const Fields<Battery> &batteryFields();

} // namespace oz::services
