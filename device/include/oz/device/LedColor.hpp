#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QString>

namespace oz::device {

/*!
 * A colour of the notification LED, which has a red, a green and a blue element that are on or off. Holds the
 * enumeration and two functions about it; it has no instances.
 */
class OZ_DEVICE_EXPORT LedColor
{
    Q_GADGET

public:
    /*! The values are 24-bit RGB. */
    enum Type : int {
        None = 0, //!< all elements off
        Red = 0xFF0000,
        Green = 0x00FF00,
        Blue = 0x0000FF,
        Yellow = 0xFFFF00,
        Cyan = 0x00FFFF,
        Magenta = 0xFF00FF,
        White = 0xFFFFFF,
    };
    Q_ENUM(Type)

    LedColor() = delete;

    /*! The colour of these elements; None where all are off. Any thread may call it. */
    [[nodiscard]] static Type fromBitset(bool red, bool green, bool blue);
    /*! The name, such as "Red"; a null string for None and for a value that is no colour. Any thread may call
     * it. */
    [[nodiscard]] static QString toName(oz::device::LedColor::Type color);
};

} // namespace oz::device
