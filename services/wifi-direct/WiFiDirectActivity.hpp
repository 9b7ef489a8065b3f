#pragma once

#include "wifi-direct/WiFiDirectState.hpp"

namespace oz::services {

/*! What a radio does now, which decides the requests that it refuses: a simulated one and a real one refuse
 * alike. */
struct WiFiDirectActivity
{
    bool isOn = false;
    bool isScanning = false;
    bool isConnecting = false;
    bool isConnected = false;

    /*! Why the radio does not take the request; no error where it does. */
    [[nodiscard]] Outcome refusalOfScan() const;
    [[nodiscard]] Outcome refusalOfConnect(
        const WiFiDirectSource::ConnectRequest &request, bool isInSight) const;
    [[nodiscard]] Outcome refusalOfCancel() const;
    [[nodiscard]] Outcome refusalOfIpAddress(const QString &address) const;

private:
    [[nodiscard]] Outcome obstacle() const;
};

} // namespace oz::services
