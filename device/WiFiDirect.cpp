#include <oz/device/WiFiDirect.hpp>

#include "ThreadRule.hpp"
#include "WiFiDirectPrivate.hpp"
#include "WiFiDirectRequests.hpp"

namespace oz::device {

WiFiDirect::WiFiDirect(QObject *parent) : QObject(parent), d(new WiFiDirectPrivate(this))
{
    keepOnThread(this);
}

WiFiDirect::~WiFiDirect()
{
    delete d;
}

bool WiFiDirect::isScanning() const
{
    return d->manager().scanning;
}

bool WiFiDirect::isEnabled() const
{
    return d->manager().enabled;
}

QDateTime WiFiDirect::lastUpdate() const
{
    return d->manager().lastUpdate;
}

WiFiDirectConnectionState::Type WiFiDirect::connectionState() const
{
    return d->network().connectionState;
}

QString WiFiDirect::networkInterfaceName() const
{
    return d->network().networkInterfaceName;
}

WiFiDirectRole::Type WiFiDirect::networkRole() const
{
    return d->network().networkRole;
}

QString WiFiDirect::networkSsid() const
{
    return d->network().networkSsid;
}

QString WiFiDirect::networkOwnerHardwareAddress() const
{
    return d->network().networkOwnerHardwareAddress;
}

QString WiFiDirect::networkOwnerIpAddress() const
{
    return d->network().networkOwnerIpAddress;
}

QString WiFiDirect::networkPassword() const
{
    return d->network().networkPassword;
}

int WiFiDirect::requestScan()
{
    return WiFiDirectRequests::scan();
}

int WiFiDirect::requestStartSession()
{
    return d->requestStartSession();
}

int WiFiDirect::requestStopSession(const QString &session)
{
    return d->requestStopSession(session);
}

WiFiDirectResult::Type WiFiDirect::requestConnect(const QString &hardwareAddress,
    WiFiDirectIntent::Type intent, WiFiDirectWpsMethod::Type wpsMethod, const QString &wpsPin)
{
    return WiFiDirectRequests::connectTo(hardwareAddress, intent, wpsMethod, wpsPin);
}

int WiFiDirect::requestConnect(
    const QString &hardwareAddress, int intent, int wpsMethod, const QString &wpsPin)
{
    return WiFiDirectRequests::connectTo(hardwareAddress, intent, wpsMethod, wpsPin);
}

int WiFiDirect::cancelConnectRequest()
{
    return WiFiDirectRequests::cancelConnect();
}

QString WiFiDirect::ipAddress(const QString &hardwareAddress)
{
    return WiFiDirectRequests::ipAddress(hardwareAddress);
}

bool WiFiDirect::isSupported()
{
    return WiFiDirectRequests::isSupported();
}

QStringList WiFiDirect::visibleDevices() const
{
    return d->visible().addresses;
}

QStringList WiFiDirect::connectedDevices() const
{
    return d->connected().addresses;
}

QString WiFiDirect::name(const QString &hardwareAddress) const
{
    for (const WiFiDirectPrivate::Peers *peers : {&d->visible(), &d->connected()}) {
        const auto found = peers->devices.constFind(hardwareAddress);
        if (found != peers->devices.cend())
            return found->name;
    }
    return {};
}

int WiFiDirect::deviceType(const QString &hardwareAddress) const
{
    return d->visible().devices.value(hardwareAddress).type;
}

} // namespace oz::device
