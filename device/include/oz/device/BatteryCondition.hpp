#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The health of the battery. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT BatteryCondition
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the system does not say
        OK = 1, //!< the battery works as it should
        Bad = 2, //!< the battery should be replaced
    };
    Q_ENUM(Type)

    BatteryCondition() = delete;
};

} // namespace oz::device
