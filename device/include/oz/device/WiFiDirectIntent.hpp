#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The intended or actual owner of a connection's group. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT WiFiDirectIntent
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        GroupOwner = 0,
        Client = 1, //!< a member of a group that the other side owns
        Any = 2, //!< whichever the two sides settle on
    };
    Q_ENUM(Type)

    WiFiDirectIntent() = delete;
};

} // namespace oz::device
