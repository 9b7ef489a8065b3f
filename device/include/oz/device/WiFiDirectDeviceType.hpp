#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * The kind of device that a peer is: the categories of primary device types in Wi-Fi Protected Setup, as the
 * Wi-Fi Simple Configuration standard of the Wi-Fi Alliance numbers them. Holds the
 * enumeration only; it has no instances.
 */
class OZ_DEVICE_EXPORT WiFiDirectDeviceType
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0,
        Computer = 1,
        Input = 2, //!< keyboards, mice, remote controls and the like
        PrinterCopierFaxOrScanner = 3,
        Camera = 4,
        Storage = 5,
        NetworkInfrastructure = 6, //!< access points, routers and the like
        Display = 7,
        Multimedia = 8,
        Gaming = 9,
        Telephone = 10,
        Audio = 11,
        Other = 12, //!< the category 255
    };
    Q_ENUM(Type)

    WiFiDirectDeviceType() = delete;
};

} // namespace oz::device
