#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The state of an SD card: mounted or not. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT SdCardState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< no successful reading yet
        Mounted = 1, //!< the card is mounted
        Unmounted = 2, //!< no card is mounted, or the system does not say
        Busy = 3, //!< declared for clients; SdCardInfo never reports it, see SdCardActivity
    };
    Q_ENUM(Type)

    SdCardState() = delete;
};

} // namespace oz::device
