#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The activity of an SD card. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT SdCardActivity
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0, //!< no successful reading yet
        Idle = 1, //!< the card is not busy, or the system does not say
        Busy = 2, //!< the card is busy
    };
    Q_ENUM(Type)

    SdCardActivity() = delete;
};

} // namespace oz::device
