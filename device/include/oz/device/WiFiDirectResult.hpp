#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*! The result of a Wi-Fi Direct request. Holds the enumeration only; it has no instances. */
class OZ_DEVICE_EXPORT WiFiDirectResult
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Success = 0, //!< the service took it
        InternalError =
            1, //!< the exchange failed or took too long, or the service refused for another reason
        Busy = 2, //!< the service is at another scan or connection
        DeviceNotFound = 3, //!< the service knows no such peer
        NoNetworkConnection = 4, //!< the phone is in no Wi-Fi Direct network
        NoRequestToCancel = 5, //!< no connection is being made
        NotSupported = 6, //!< there is no Wi-Fi Direct here
        InvalidSession = 7, //!< no session has this key
    };
    Q_ENUM(Type)

    WiFiDirectResult() = delete;
};

} // namespace oz::device
