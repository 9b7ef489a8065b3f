#include "WiFiDirectPrivate.hpp"

#include "PpsReading.hpp"
#include "WiFiDirectRequests.hpp"
#include "WiFiDirectWords.hpp"
#include "WpsDeviceType.hpp"

#include <oz/PpsObject.hpp>

#include <QSet>

namespace oz::device {

namespace {

using namespace WiFiDirectWords;
using ManagerState = WiFiDirectPrivate::ManagerState;
using NetworkState = WiFiDirectPrivate::NetworkState;
using Peers = WiFiDirectPrivate::Peers;

const QString StatusPpsPath = QStringLiteral("/pps/services/wifi_p2p/manager/status");

constexpr LogText StatusOpenFailed{
    "WiFiDirect: Unable to open status channel. (", LogText::ErrorStringInBrackets};
constexpr ReadTexts StatusReading{{"WiFiDirect: Unable to read status. (", LogText::ErrorStringInBrackets},
    {"WiFiDirect: Unable to decode status message."}};

struct ConnectedPeer : WiFiDirectDeviceInfo
{
    QString ipAddress;
    WiFiDirectIntent::Type intent = WiFiDirectIntent::Any;
};

bool isIdle(const ManagerState &state)
{
    return !state.scanning;
}

using ScanningField = Fields<&ManagerState::scanning>;
using ManagerChanges = ChangeTable<Change<ScanningField, &WiFiDirect::scanningChanged>,
    ConditionalChange<ScanningField, isIdle, Fields<>, &WiFiDirect::scanCompleted>,
    Change<Fields<&ManagerState::enabled>, &WiFiDirect::enabledChanged>,
    Change<Fields<&ManagerState::lastUpdate>, &WiFiDirect::lastUpdateChanged>>;

using NetworkChanges =
    ChangeTable<Change<Fields<&NetworkState::connectionState>,
                    qOverload<WiFiDirectConnectionState::Type>(&WiFiDirect::connectionStateChanged),
                    qOverload<int>(&WiFiDirect::connectionStateChanged)>,
        Change<Fields<&NetworkState::networkInterfaceName>, &WiFiDirect::networkInterfaceNameChanged>,
        Change<Fields<&NetworkState::networkRole>,
            qOverload<WiFiDirectRole::Type>(&WiFiDirect::networkRoleChanged),
            qOverload<int>(&WiFiDirect::networkRoleChanged)>,
        Change<Fields<&NetworkState::networkSsid>, &WiFiDirect::networkSsidChanged>,
        Change<Fields<&NetworkState::networkOwnerHardwareAddress>,
            &WiFiDirect::networkOwnerHardwareAddressChanged>,
        Change<Fields<&NetworkState::networkOwnerIpAddress>, &WiFiDirect::networkOwnerIpAddressChanged>,
        Change<Fields<&NetworkState::networkPassword>, &WiFiDirect::networkPasswordChanged>>;

constexpr auto DiscoveredTyped = qOverload<QString, QString, WiFiDirectDeviceType::Type,
    WiFiDirectSecondaryDeviceType::Types, WiFiDirectRole::Type>(&WiFiDirect::deviceDiscovered);
constexpr auto DiscoveredInt = qOverload<QString, QString, int, int, int>(&WiFiDirect::deviceDiscovered);

using Discovery = Change<
    Fields<&WiFiDirectDeviceInfo::name, &WiFiDirectDeviceInfo::hardwareAddress, &WiFiDirectDeviceInfo::type,
        &WiFiDirectDeviceInfo::secondaryTypes, &WiFiDirectDeviceInfo::role>,
    DiscoveredTyped, DiscoveredInt>;

using Connecting = Change<Fields<&ConnectedPeer::name, &ConnectedPeer::hardwareAddress, &ConnectedPeer::type,
                              &ConnectedPeer::ipAddress, &ConnectedPeer::intent>,
    qOverload<QString, QString, WiFiDirectDeviceType::Type, QString, WiFiDirectIntent::Type>(
        &WiFiDirect::deviceConnected),
    qOverload<QString, QString, int, QString, int>(&WiFiDirect::deviceConnected)>;

QString addressIn(const QVariantMap &peer)
{
    return peer.value(QStringLiteral("mac_addr")).toString();
}

WiFiDirectDeviceType::Type convertTypeId(int id)
{
    return wpsCategory<WiFiDirectDeviceType>(id);
}

WiFiDirectDeviceType::Type typeIn(const QVariantMap &peer)
{
    const auto category = WpsDeviceType::parse(textIn(peer, "type")).category;
    return category ? convertTypeId(*category) : WiFiDirectDeviceType::Unknown;
}

WiFiDirectDeviceInfo discoveredFromMap(const QVariantMap &peer)
{
    WiFiDirectDeviceInfo info;
    if (addressIn(peer).isEmpty())
        return info;
    info.name = textIn(peer, "name");
    info.hardwareAddress = addressIn(peer);
    info.type = typeIn(peer);
    if (peer.contains(QStringLiteral("ssid")))
        info.role = WiFiDirectRole::GroupOwner;
    else if (peer.contains(QStringLiteral("go_mac_address")))
        info.role = WiFiDirectRole::Client;
    else
        info.role = WiFiDirectRole::NoRole;
    if (peer.contains(QStringLiteral("wfd_device_info")))
        info.secondaryTypes = WiFiDirectSecondaryDeviceType::Miracast;
    return info;
}

ConnectedPeer connectedFromMap(const QVariantMap &peer)
{
    ConnectedPeer info;
    info.name = textIn(peer, "name");
    info.hardwareAddress = addressIn(peer);
    info.type = typeIn(peer);
    info.ipAddress = textIn(peer, "ip_addr");
    info.intent = valueNamed(Intents, textIn(peer, "role")).value_or(WiFiDirectIntent::Any);
    return info;
}

ManagerState managerStateIn(const QVariantMap &status, const ManagerState &before)
{
    ManagerState state;
    const QVariant updated = status.value(QStringLiteral("last_discover_update"));
    state.lastUpdate =
        updated.isValid() ? QDateTime::fromSecsSinceEpoch(updated.toLongLong()) : before.lastUpdate;
    state.enabled = status.value(QStringLiteral("p2p_mgr_enabled")).toInt() == 0;
    state.scanning = status.value(QStringLiteral("scanning")).toBool();
    return state;
}

NetworkState networkStateIn(const QVariantMap &connection)
{
    NetworkState state;
    state.connectionState = valueNamed(ConnectionStates, textIn(connection, "status"))
                                .value_or(WiFiDirectConnectionState::Unknown);
    // The remains of a group that is gone are of no use to the application.
    if (state.connectionState != WiFiDirectConnectionState::Connected)
        return state;
    state.networkInterfaceName = textIn(connection, "network_if");
    state.networkRole = valueNamed(Roles, textIn(connection, "role")).value_or(WiFiDirectRole::Unknown);
    state.networkSsid = textIn(connection, "ssid");
    state.networkOwnerHardwareAddress = textIn(connection, "go_mac_addr");
    state.networkOwnerIpAddress = textIn(connection, "go_ip_addr");
    state.networkPassword = textIn(connection, "password");
    return state;
}

// Lets \a peers become those of a list: announces who has come, in its order, and then who has gone.
template <typename Record, typename Gone>
void follow(Peers *peers, const QVariantList &list, Record (*recordOf)(const QVariantMap &),
    const std::function<bool()> &isCurrent, void (*announce)(const QPointer<WiFiDirect> &, const Record &),
    Gone gone, WiFiDirect *q)
{
    QSet<QString> seen;
    seen.reserve(list.size());
    for (const QVariant &entry : list) {
        const QVariantMap map = entry.toMap();
        const QString address = addressIn(map);
        if (address.isEmpty())
            continue;
        seen.insert(address);
        if (peers->devices.contains(address))
            continue;
        const Record peer = recordOf(map);
        peers->devices.insert(address, peer);
        peers->addresses.append(address);
        announce(q, peer);
        if (!isCurrent())
            return;
    }
    const QStringList before = peers->addresses;
    for (const QString &address : before) {
        if (seen.contains(address))
            continue;
        peers->addresses.removeOne(address);
        peers->devices.remove(address);
        Q_EMIT(q->*gone)(address);
        if (!isCurrent())
            return;
    }
}

} // namespace

WiFiDirectPrivate::WiFiDirectPrivate(WiFiDirect *publicObject)
    : q(publicObject), m_status(new PpsObject(StatusPpsPath, this))
{
    if (!WiFiDirectRequests::isSupported())
        return;
    connect(m_status, &PpsObject::readyRead, this, &WiFiDirectPrivate::onStatusReadyRead);
    if (openOrLog(m_status, PpsOpenMode::Subscribe, StatusOpenFailed))
        handleStatus();
    connect(q, DiscoveredTyped, q,
        qOverload<QString, QString, WiFiDirectDeviceType::Type>(&WiFiDirect::deviceFound));
    connect(q, DiscoveredInt, q, qOverload<QString, QString, int>(&WiFiDirect::deviceFound));
}

void WiFiDirectPrivate::onStatusReadyRead()
{
    handleStatus();
}

void WiFiDirectPrivate::handleStatus()
{
    const auto message = readOrLog(m_status, StatusReading);
    if (!message)
        return;
    const QVariantMap status = attributesOf(*message, QStringLiteral("@status"));
    const auto listIn = [&status](const QString &devices) {
        return memberOf(status, devices, QStringLiteral("device_list")).toList();
    };
    // A slot may destroy all this, or run an event loop that brings a newer reading, which says everything.
    const QPointer<WiFiDirect> alive(q);
    const int reading = ++m_readings;
    const auto isCurrent = [this, &alive, reading] { return alive && m_readings == reading; };
    ManagerChanges::storeAndEmit(q, &m_manager, managerStateIn(status, *m_manager));
    if (isCurrent())
        handleNetworkConnection(status.value(QStringLiteral("connection")).toMap());
    if (isCurrent())
        handleDiscoveredDevices(listIn(QStringLiteral("discovered_devices")), isCurrent);
    if (isCurrent())
        handleConnectedDevices(listIn(QStringLiteral("connected_devices")), isCurrent);
}

void WiFiDirectPrivate::handleNetworkConnection(const QVariantMap &connection)
{
    NetworkChanges::storeAndEmit(q, &m_network, networkStateIn(connection));
}

void WiFiDirectPrivate::handleDiscoveredDevices(const QVariantList &list, const IsCurrent &isCurrent)
{
    follow(&m_visible, list, discoveredFromMap, isCurrent, Discovery::emitOn, &WiFiDirect::deviceLost, q);
}

void WiFiDirectPrivate::handleConnectedDevices(const QVariantList &list, const IsCurrent &isCurrent)
{
    follow(&m_connected, list, connectedFromMap, isCurrent, Connecting::emitOn,
        &WiFiDirect::deviceDisconnected, q);
}

WiFiDirectResult::Type WiFiDirectPrivate::requestStartSession()
{
    QString session;
    const WiFiDirectResult::Type result = WiFiDirectRequests::startSession(&session);
    if (result == WiFiDirectResult::Success)
        QMetaObject::invokeMethod(q, "sessionStarted", Qt::QueuedConnection, Q_ARG(QString, session));
    return result;
}

WiFiDirectResult::Type WiFiDirectPrivate::requestStopSession(const QString &session)
{
    const WiFiDirectResult::Type result = WiFiDirectRequests::stopSession(session);
    if (result == WiFiDirectResult::Success)
        QMetaObject::invokeMethod(q, "sessionStopped", Qt::QueuedConnection);
    return result;
}

} // namespace oz::device
