#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * The status of the wireless-display service. Holds the enumeration only; it has no instances.
 *
 * The value is the service's own word, and stays as it was told last, also once the service is gone.
 */
class OZ_DEVICE_EXPORT MiracastStatus
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< the service has not said yet, or says what it should not
        Running = 1,
        Stopped = 2, //!< see MiracastStopReason
    };
    Q_ENUM(Type)

    MiracastStatus() = delete;
};

} // namespace oz::device
