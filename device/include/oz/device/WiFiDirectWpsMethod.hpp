#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! How Wi-Fi Protected Setup secures a new connection. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT WiFiDirectWpsMethod
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        PushButtonConfiguration = 0, //!< a button is pressed on both sides
        RandomPin = 1, //!< a PIN that one side shows for this connection
        PresetPin = 2, //!< the PIN that a device always has, as on its label
    };
    Q_ENUM(Type)

    WiFiDirectWpsMethod() = delete;
};

} // namespace oz::device
