#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * The result of a Miracast request. Holds the enumeration only; it has no instances.
 */
class OZ_DEVICE_EXPORT MiracastResult
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        InternalError = 0, //!< an error of the service that is none of these
        Success = 1,
        PinRequired = 2, //!< the sink wants a PIN, and none was given
        PinIncorrect = 3, //!< it wants another one
        ConnectionFailed = 4, //!< the connection did not come about
        InvalidRequest = 5, //!< the service does not understand it, or cannot do it as things are
        RequestCancelled = 6, //!< another request ended it
        WiFiFailure = 7, //!< Wi-Fi is off or failed
        DisabledByPolicy = 8, //!< the device's administrator forbids it
        DeviceNotFound = 9, //!< no such sink is in sight
        MiracastFailure = 10, //!< the wireless-display service failed
    };
    Q_ENUM(Type)

    MiracastResult() = delete;
};

} // namespace oz::device
