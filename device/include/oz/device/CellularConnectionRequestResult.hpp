#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * The result of a request to connect or disconnect a cellular data profile. Holds the enumeration only; it
 * has no instances.
 */
class OZ_DEVICE_EXPORT CellularConnectionRequestResult
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Requested = 0, //!< the service took the request
        /*! The exchange with the service failed or took too long, or the service reports an error. */
        InternalError = 1,
        /*! No name is set, or the profile's control object does not open: there is no such profile, the
         * service is gone or has too many clients, or the process has no descriptor left. */
        InvalidInterface = 2,
        PermissionDenied = 3, //!< the process may not open the profile's control object
        NotPossible = 4, //!< the request does not fit the state of the profile or of the object
    };
    Q_ENUM(Type)

    CellularConnectionRequestResult() = delete;
};

} // namespace oz::device
