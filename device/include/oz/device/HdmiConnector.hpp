#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The HDMI connector of a device. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT HdmiConnector
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the system does not say
        None = 1, //!< the device has no HDMI connector
        Micro = 2, //!< a micro HDMI connector (type D)
    };
    Q_ENUM(Type)

    HdmiConnector() = delete;
};

} // namespace oz::device
