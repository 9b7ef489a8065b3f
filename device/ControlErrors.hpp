#pragma once

#include "PpsReading.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/RequestError.hpp>

#include <cerrno>

namespace oz::device {

/*! Reports the outcome of requests to RequestError. */
class ControlErrors
{
public:
    static void noteSuccess() { RequestError::note(0, {}); }
    /*! The error of \a control, or EBADMSG for a message that it carried but that is malformed. */
    static void noteFailure(const PpsObject &control)
    {
        if (control.error())
            RequestError::note(control.error(), control.errorString());
        else
            noteMalformed();
    }
    static void noteMalformed() { RequestError::note(EBADMSG, qt_error_string(EBADMSG)); }
    /*! The error in the attributes of an answer, if there is one. */
    static void noteAnswer(const QVariantMap &answer)
    {
        const int number = answer.value(QStringLiteral("err")).toInt();
        RequestError::note(number, number ? textIn(answer, "errstr") : QString());
    }
};

} // namespace oz::device
