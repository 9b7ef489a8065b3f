#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * How far the device is connected to a wireless display. Holds the enumeration only; it has no instances.
 *
 * The value stays as the wireless-display service told it last, also once the service is gone.
 */
class OZ_DEVICE_EXPORT MiracastConnectionState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the service has not said yet, or says what it should not
        Connected = 1,
        Connecting = 2,
        Disconnected = 3,
    };
    Q_ENUM(Type)

    MiracastConnectionState() = delete;
};

} // namespace oz::device
