#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The state of the user's activity. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT UserActivityState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the power manager is not there, or says neither
        Active = 1, //!< somebody uses the device
        Inactive = 2, //!< the device is in standby
    };
    Q_ENUM(Type)

    UserActivityState() = delete;
};

} // namespace oz::device
