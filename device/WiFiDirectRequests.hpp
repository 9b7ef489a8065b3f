#pragma once

#include <oz/device/WiFiDirectResult.hpp>

#include <QString>

/*!
 * The requests to the Wi-Fi Direct manager: each is an exchange of its own, and waits for the answer. Where
 * Wi-Fi Direct is not supported nothing is sent, and the result is NotSupported.
 */
namespace oz::device::WiFiDirectRequests {

/*! True if the manager is there and supports Wi-Fi Direct, as its status says now. */
[[nodiscard]] bool isSupported();

[[nodiscard]] WiFiDirectResult::Type scan();
/*! \a session gets the key of a session that was started. */
[[nodiscard]] WiFiDirectResult::Type startSession(QString *session);
[[nodiscard]] WiFiDirectResult::Type stopSession(const QString &session);
/*! Numbers, since callers may have ones that are no enumerators. */
[[nodiscard]] WiFiDirectResult::Type connectTo(
    const QString &hardwareAddress, int intent, int wpsMethod, const QString &wpsPin);
[[nodiscard]] WiFiDirectResult::Type cancelConnect();
/*! Empty where there is none, for whatever reason. */
[[nodiscard]] QString ipAddress(const QString &hardwareAddress);

} // namespace oz::device::WiFiDirectRequests
