#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QFlags>
#include <QObject>

namespace oz::device {

/*!
 * A further ability of a peer beside its type, alone or in a set. Holds the enumeration and its flag set
 * only; it has no instances.
 */
class OZ_DEVICE_EXPORT WiFiDirectSecondaryDeviceType
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 1, //!< no known ability
        Miracast = 2, //!< wireless display
    };
    Q_ENUM(Type)
    Q_DECLARE_FLAGS(Types, Type)

    WiFiDirectSecondaryDeviceType() = delete;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(WiFiDirectSecondaryDeviceType::Types)

} // namespace oz::device
