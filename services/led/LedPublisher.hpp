#pragma once

#include "led/LedRequests.hpp"
#include "publishing/FieldsPublisher.hpp"

#include <set>

namespace oz::services {

/*!
 * The LED service. It publishes "/pps/services/led/status": "red", "green" and "blue", each "on" or "off" and
 * nothing else, as clients take each change for a flash. It serves "/pps/services/led/control" with the
 * requests "requestLED" ("dat": "color" and "blinkCount") and "cancelLED"; a request is known by the
 * connection and its "id", and ends with the connection. Where the service was restarted, requests go on for
 * clients that come back within the grace time. A user has at most 50 requests. What becomes of them is told
 * by "/pps/services/led/activity", to the services' user and group alone, as it names processes: "requests",
 * the newest 50 of them, the newest last, "last" and "flashes".
 */
class LedPublisher final : public FieldsPublisher<LedSource>
{
public:
    LedPublisher(const QString &facility, LedSource &source, Tree &tree);
    ~LedPublisher() override;
    [[nodiscard]] FaultsByInstance faults() override { return {{QString(), &m_control.faults()}}; }

private:
    struct Process
    {
        pid_t number = 0;
        qulonglong started = 0;
    };

    void onRequestsChanged();
    void holdClients();
    [[nodiscard]] RequestTable requests();
    [[nodiscard]] LedRequest requestOf(const Request &request) const;
    [[nodiscard]] Reply begin(const Request &request);
    [[nodiscard]] Reply cancel(const Request &request);
    void onConnected(const PpsServer::Client &client);
    void onGone(const PpsServer::Client &client);
    void restore();
    void forgetOrphans();

    LedRequests m_requests;
    StatePublisher m_activity;
    ControlObject m_control;
    std::map<quint64, Process> m_clients; // the process of each connection
    std::set<quint64> m_held; // connections that have requests under way
    QTimer m_grace; // in which clients of before a restart come back
};

} // namespace oz::services
