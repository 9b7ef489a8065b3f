#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The state of a SIM card. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT SimCardState
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        NotDetected = 0, //!< there is no card, or the card's state is unknown or unreadable
        Incompatible = 1, //!< the card cannot be used in this device
        NotProvisioned = 2, //!< the card is not provisioned
        ReadError = 3, //!< the card could not be read
        PinRequired = 4, //!< the card waits for its PIN
        Ready = 5, //!< the card is ready
    };
    Q_ENUM(Type)

    SimCardState() = delete;
};

} // namespace oz::device
