#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The charging state of the battery. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT BatteryChargingState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< no successful reading yet, or the system names none of the others
        NotCharging = 1, //!< a power source is there, but the battery takes nothing from it
        Charging = 2, //!< the battery is being charged
        Discharging = 3, //!< the device runs from the battery; no power source is there
        Full = 4, //!< the battery is charged
    };
    Q_ENUM(Type)

    BatteryChargingState() = delete;
};

} // namespace oz::device
