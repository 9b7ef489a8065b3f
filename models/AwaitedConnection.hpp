#pragma once

#include "RequestThread.hpp"

#include <oz/Limits.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/WiFiDirect.hpp>
#include <oz/models/RequestResult.hpp>

#include <QTimer>

#include <functional>
#include <memory>

namespace oz::models {

/*! The state of a connection, as a request for it sees it. */
enum class Connecting { Idle, Pending, Established };

[[nodiscard]] inline Connecting progressOf(const device::CellularDataInterface &profile)
{
    switch (profile.connectionState()) {
    case device::CellularConnectionState::PendingConnect:
        return Connecting::Pending;
    case device::CellularConnectionState::Connected:
        return Connecting::Established;
    default:
        return Connecting::Idle;
    }
}

[[nodiscard]] inline Connecting progressOf(const device::WiFiDirect &wifi)
{
    switch (wifi.connectionState()) {
    case device::WiFiDirectConnectionState::Connecting:
        return Connecting::Pending;
    case device::WiFiDirectConnectionState::Connected:
        return Connecting::Established;
    default:
        return Connecting::Idle;
    }
}

inline const RequestResult Done{true, 0, QString()};
/*! No class has an enumerator for a connection that fails after the service has accepted the request. */
inline const RequestResult ConnectionFailed{false, 0, QStringLiteral("ConnectionFailed")};

/*!
 * Finishes a request for a connection, which the service has accepted, when the connection is established or
 * has failed. Services may publish the state after their answer. An idle connection has therefore failed only
 * if it was pending before, or if the grace time is over. Then it calls \a giveUp with whether it was
 * pending.
 */
template <typename Class, typename Changed>
void awaitConnection(
    RunningRequest *request, Class *object, Changed changed, const std::function<void(bool)> &giveUp)
{
    const auto wasPending = std::make_shared<bool>(false);
    const auto fail = [=] {
        if (request->finish(ConnectionFailed))
            giveUp(*wasPending);
    };
    const auto update = [=] {
        switch (progressOf(*object)) {
        case Connecting::Established:
            request->finish(Done);
            break;
        case Connecting::Pending:
            *wasPending = true;
            break;
        case Connecting::Idle:
            if (*wasPending)
                fail();
            break;
        }
    };
    QObject::connect(object, changed, request, update);
    QTimer::singleShot(graceTime(), request, [=] {
        if (!*wasPending)
            fail();
    });
    update();
}

} // namespace oz::models
