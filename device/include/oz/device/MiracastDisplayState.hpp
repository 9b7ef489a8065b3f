#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * The state of the session with a wireless display. Holds the enumeration only; it has no instances.
 *
 * The value stays as the wireless-display service told it last, also once the service is gone.
 */
class OZ_DEVICE_EXPORT MiracastDisplayState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the service has not said yet, or says what it should not
        Stopped = 1, //!< there is none
        Playing = 2, //!< the display shows the device's screen
        Paused = 3, //!< the session is there, and the display does not show the screen
    };
    Q_ENUM(Type)

    MiracastDisplayState() = delete;
};

} // namespace oz::device
