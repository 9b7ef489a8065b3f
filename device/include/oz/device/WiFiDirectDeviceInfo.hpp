#pragma once

#include <oz/device/WiFiDirectDeviceType.hpp>
#include <oz/device/WiFiDirectRole.hpp>
#include <oz/device/WiFiDirectSecondaryDeviceType.hpp>

#include <QString>

namespace oz::device {

/*! A Wi-Fi Direct peer, as it was when it was first seen. */
struct WiFiDirectDeviceInfo
{
    QString name; //!< as the peer gives it: any text, or none
    QString hardwareAddress; //!< as the service writes it
    WiFiDirectDeviceType::Type type = WiFiDirectDeviceType::Unknown; //!< its category
    WiFiDirectSecondaryDeviceType::Types secondaryTypes =
        WiFiDirectSecondaryDeviceType::Unknown; //!< further abilities
    WiFiDirectRole::Type role = WiFiDirectRole::Unknown; //!< in whatever group
};

} // namespace oz::device
