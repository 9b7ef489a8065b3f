#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * How far a cellular data profile is connected. Holds the enumeration only; it has no instances.
 *
 * There is no value for unknown: Disconnected stands for that too.
 */
class OZ_DEVICE_EXPORT CellularConnectionState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Disconnected = 0, //!< the profile is not in use, or nothing is known of it
        PendingConnect = 1, //!< the profile is being connected
        Connected = 2, //!< the profile is connected
    };
    Q_ENUM(Type)

    CellularConnectionState() = delete;
};

} // namespace oz::device
