#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! How the width of a display compares with its height. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT DisplayAspectType
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Landscape = 0, //!< it is wider than high
        Portrait = 1, //!< it is higher than wide
        Square = 2, //!< both are the same
    };
    Q_ENUM(Type)

    DisplayAspectType() = delete;
};

} // namespace oz::device
