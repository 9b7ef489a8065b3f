#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QString>

namespace oz::device {

/*!
 * The error of a request, more exactly than the enumerator that the request returns, if it returns one. An
 * instance holds the error of the last request that a class sent on this thread during the instance's life,
 * and nothing if that one succeeded. Of nested instances, only the innermost one receives errors. A request
 * that is not sent, since it is not possible or not supported, changes nothing.
 *
 * Requests of CellularDataInterface and WiFiDirect fail with the error of the exchange or of the service's
 * answer. Those of Led, MiracastManager and VibrationController return before the service answers, if it
 * does; they fail if they cannot be sent.
 *
 * Use an instance as a local variable, on the thread that created it.
 */
class OZ_DEVICE_EXPORT RequestError
{
public:
    RequestError();
    ~RequestError();
    Q_DISABLE_COPY_MOVE(RequestError)

    /*! The errno in the service's answer, or of the failed exchange, such as ETIMEDOUT, or EBADMSG for an
     * answer that is malformed; 0 for none. */
    [[nodiscard]] int number() const { return m_number; }
    /*! The service's text for that error, or the system's; empty where there is none. */
    [[nodiscard]] QString text() const { return m_text; }

private:
    friend class ControlErrors;

    static void note(int number, const QString &text);

    RequestError *m_outer;
    int m_number = 0;
    QString m_text;
};

} // namespace oz::device
