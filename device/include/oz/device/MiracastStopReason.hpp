#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * Why the wireless-display service has stopped. Holds the enumeration only; it has no instances.
 */
class OZ_DEVICE_EXPORT MiracastStopReason
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the service has not said yet
        NotStopped = 1,
        Application = 2, //!< an application shut it down
        NotSupported = 3, //!< the device has no wireless display
        ItPolicy = 4, //!< the device's administrator forbids it
        P2PFailure = 5, //!< Wi-Fi Direct failed
        Internal = 6, //!< anything else
    };
    Q_ENUM(Type)

    MiracastStopReason() = delete;
};

} // namespace oz::device
