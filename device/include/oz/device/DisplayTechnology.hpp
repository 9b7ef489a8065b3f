#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The technology of a display. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT DisplayTechnology
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the display service does not say, or names none of the others
        Lcd = 1,
        Oled = 2,
        Crt = 3,
        Plasma = 4,
        Led = 5,
    };
    Q_ENUM(Type)

    DisplayTechnology() = delete;
};

} // namespace oz::device
