#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * How far the device is connected to a wireless display. Holds the enumeration only; it has no instances.
 */
class OZ_DEVICE_EXPORT MiracastConnectionState
{
    Q_GADGET

public:
    enum Type {
        Unknown = 0, //!< no reading yet, or the service says what it should not; a service that goes away
                     //!< changes nothing
        Connected = 1,
        Connecting = 2,
        Disconnected = 3,
    };
    Q_ENUM(Type)

    MiracastConnectionState() = delete;
};

} // namespace oz::device
