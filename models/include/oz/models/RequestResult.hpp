#pragma once

#include <QMetaType>
#include <QString>

namespace oz::models {

/*! The outcome of a request. */
struct RequestResult
{
    bool succeeded = false; //!< whether the request succeeded, as far as it can tell
    int code = 0; //!< an enumerator of the request's class; 0 if none fits
    /*!
     * Why it failed: the enumerator's name. If the class has none, it is "NotSupported",
     * "InvalidArgument", or "ConnectionFailed" for a connection that fails after the service has accepted the
     * request. Empty if it succeeded.
     */
    QString reason;
    QString value = {}; //!< the value that the request asks for, if it asks for one
    /*!
     * Why it failed, as an errno: the one in the service's answer, the one of a failed exchange with the
     * service, or EINVAL for "InvalidArgument". 0 without one: for requests that succeed or are not
     * sent, and for all others of Miracast, LED and motor, whose classes report no errno.
     */
    int errorNumber = 0;
    /*! That error as text, for developers and logs; empty without one. */
    QString errorString = {};

    /*! Whether all members are equal. */
    bool operator==(const RequestResult &) const = default;
};

} // namespace oz::models
