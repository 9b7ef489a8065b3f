#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * What the session with a wireless display does. Holds the enumeration only; it has no instances.
 */
class OZ_DEVICE_EXPORT MiracastDisplayState
{
    Q_GADGET

public:
    enum Type {
        Unknown = 0, //!< no reading yet, or the service says what it should not; a service that goes away
                     //!< changes nothing
        Stopped = 1, //!< there is none
        Playing = 2, //!< the display shows the device's screen
        Paused = 3,
    };
    Q_ENUM(Type)

    MiracastDisplayState() = delete;
};

} // namespace oz::device
