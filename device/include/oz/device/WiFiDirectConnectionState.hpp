#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! How far the phone is connected by Wi-Fi Direct. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT WiFiDirectConnectionState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< no reading yet, or the service says nothing that is known
        Connecting = 1, //!< a peer is being connected
        Connected = 2, //!< the phone is in a group
        Disconnected = 3, //!< the phone is in no group
    };
    Q_ENUM(Type)

    WiFiDirectConnectionState() = delete;
};

} // namespace oz::device
