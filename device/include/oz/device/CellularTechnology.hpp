#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QFlags>
#include <QObject>

namespace oz::device {

/*!
 * Cellular radio technologies, alone or in a set. Holds the enumeration and its flag set only; it has no
 * instances.
 */
class OZ_DEVICE_EXPORT CellularTechnology
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        None = 0,
        Gsm = 1,
        Umts = 2,
        Cdma1X = 4,
        Evdo = 8,
        Lte = 16,
    };
    Q_ENUM(Type)
    Q_DECLARE_FLAGS(Types, Type)
    Q_FLAG(Types)

    CellularTechnology() = delete;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(CellularTechnology::Types)

} // namespace oz::device
