#pragma once

#include <QMetaType>
#include <QString>

namespace oz::models {

/*! What became of a request. */
struct RequestResult
{
    bool succeeded = false; //!< whether the request was done, as far as it tells
    int code = 0; //!< an enumerator of the request's class; 0 where that has none for what happened
    /*!
     * Why it failed: the enumerator's name. Where the class has none, it is "NotSupported",
     * "InvalidArgument", or "ConnectionFailed" for a connection that fails after the service has accepted the
     * request. Empty where it succeeded.
     */
    QString reason;
    QString value = {}; //!< what was asked for, where the request says that there is anything
    /*!
     * Why it failed, as an errno: the one in the service's answer, the one of a failed exchange with the
     * service, or EINVAL for "InvalidArgument". 0 where there is none, as for requests that succeed or are
     * not sent, and for all others of Miracast, LED and motor, whose classes report no errno.
     */
    int errorNumber = 0;
    /*! That error as text, for developers and logs; empty where there is none. */
    QString errorString = {};

    /*! Whether all of that is the same. */
    bool operator==(const RequestResult &) const = default;
};

} // namespace oz::models
