#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * What became of a request to connect or disconnect a cellular data profile. Holds the enumeration only; it
 * has no instances.
 */
class OZ_DEVICE_EXPORT CellularConnectionRequestResult
{
    Q_GADGET

public:
    enum Type {
        Requested = 0, //!< the service took the request
        InternalError = 1, //!< the exchange with the service failed, or the service reports an error
        InvalidInterface = 2, //!< there is no such profile
        PermissionDenied = 3, //!< the process may not open the profile's control object
        NotPossible = 4, //!< the request does not fit the state of the profile or of the object
    };
    Q_ENUM(Type)

    CellularConnectionRequestResult() = delete;
};

} // namespace oz::device
