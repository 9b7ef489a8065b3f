#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The role of a device in a Wi-Fi Direct group. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT WiFiDirectRole
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0,
        GroupOwner = 1,
        Client = 2, //!< a member of a group that another device owns
        NoRole = 3, //!< in no group
    };
    Q_ENUM(Type)

    WiFiDirectRole() = delete;
};

} // namespace oz::device
