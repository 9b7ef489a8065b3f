#include "wifi-direct/WiFiDirectActivity.hpp"

#include <cerrno>

namespace oz::services {

Outcome WiFiDirectActivity::obstacle() const
{
    if (!isOn)
        return {ENETDOWN, QStringLiteral("Wi-Fi Direct is off"), {}};
    if (isConnecting)
        return {EBUSY, QStringLiteral("a peer is being connected"), {}};
    return {};
}

Outcome WiFiDirectActivity::refusalOfScan() const
{
    if (const Outcome refused = obstacle(); refused.error)
        return refused;
    if (isScanning)
        return {EBUSY, QStringLiteral("a scan is running"), {}};
    return {};
}

Outcome WiFiDirectActivity::refusalOfConnect(
    const WiFiDirectSource::ConnectRequest &request, bool isInSight) const
{
    if (const Outcome refused = obstacle(); refused.error)
        return refused;
    if (isConnected)
        return {EBUSY, QStringLiteral("there is a connection"), {}};
    if (!isInSight)
        return {ENODEV, QStringLiteral("no such peer is in sight"), {}};
    if (request.method != WiFiDirectSource::WpsMethod::PushButton && request.pin.isEmpty())
        return {EINVAL, QStringLiteral("this method wants a PIN"), {}};
    return {};
}

Outcome WiFiDirectActivity::refusalOfCancel() const
{
    if (!isConnecting)
        return {EINVAL, QStringLiteral("nothing is being connected"), {}};
    return {};
}

Outcome WiFiDirectActivity::refusalOfIpAddress(const QString &address) const
{
    if (address.isEmpty())
        return {EINVAL, QStringLiteral("the request has no address"), {}};
    if (isConnecting)
        return {EBUSY, QStringLiteral("a peer is being connected"), {}};
    if (!isConnected)
        return {ENONET, QStringLiteral("there is no connection"), {}};
    return {};
}

} // namespace oz::services
