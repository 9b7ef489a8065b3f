#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! Which side of the device is up. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT DeviceOrientation
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        FaceUp = 0, //!< it lies on its back
        FaceDown = 1, //!< it lies on its screen
        TopUp = 2,
        LeftUp = 3,
        RightUp = 4,
        BottomUp = 5,
    };
    Q_ENUM(Type)

    DeviceOrientation() = delete;
};

} // namespace oz::device
