#pragma once

#include "core/ControlObject.hpp"
#include "core/StatePublisher.hpp"
#include "led/LedRequests.hpp"

namespace oz::services {

/*!
 * The LED service. It publishes "/pps/services/led/status": "red", "green" and "blue", each "on" or "off" and
 * nothing else, as clients take each change for a flash. It serves "/pps/services/led/control" with the
 * requests "requestLED" ("dat": "color" and "blinkCount") and "cancelLED"; a request is known by the
 * connection and its "id", and ends with the connection. What becomes of them is told by
 * "/pps/services/led/activity": "requests", the newest 50 of them, the newest last, "last" and "flashes".
 */
class LedPublisher : public QObject
{
public:
    explicit LedPublisher(LedSource &source);
    ~LedPublisher() override;

private:
    void publishStatus();
    void publishActivity();
    [[nodiscard]] Reply onRequest(const Request &request);
    void begin(LedRequest led, const QVariantMap &data);

    LedSource &m_source;
    LedRequests m_requests;
    StatePublisher m_status;
    StatePublisher m_activity;
    ControlObject m_control;
};

} // namespace oz::services
