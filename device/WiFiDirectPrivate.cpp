#include "WiFiDirectPrivate.hpp"

#include "Frame.hpp"
#include "WpsDeviceType.hpp"

#include <oz/PpsObject.hpp>

#include <QSet>

#include <span>

namespace oz::device {

namespace {

using Result = WiFiDirectResult;
using ManagerState = WiFiDirectPrivate::ManagerState;
using NetworkState = WiFiDirectPrivate::NetworkState;
using Peers = WiFiDirectPrivate::Peers;

const QString StatusPpsPath = QStringLiteral("/pps/services/wifi_p2p/manager/status");
const QString ControlPpsPath = QStringLiteral("/pps/services/wifi_p2p/manager/control?wait");
const QString WIFIDIRECT_PPSID = QStringLiteral("oz.device.WiFiDirect");

constexpr LogText SupportOpenFailed{"WiFiDirect: Unable to locate WiFiDirect PPS channel."};
constexpr ReadTexts SupportReading{{"WiFiDirect: Unable to read WiFiDirect PPS channel."},
    {"WiFiDirect: Unable to parse WiFiDirect status."}};
constexpr LogText StatusOpenFailed{
    "WiFiDirect: Unable to open status channel. (", LogText::ErrorStringInBrackets};
constexpr ReadTexts StatusReading{{"WiFiDirect: Unable to read status. (", LogText::ErrorStringInBrackets},
    {"WiFiDirect: Unable to decode status message."}};

constexpr LogText ControlOpenFailed{"WiFiDirect: Unable to open control. (", LogText::ErrorStringInBrackets};
constexpr LogText ControlWriteFailed{
    "WiFiDirect: Unable to write to control. (", LogText::ErrorStringInBrackets};
constexpr LogText ControlReadFailed{"WiFiDirect: Unable to read control. (", LogText::ErrorStringInBrackets};
constexpr ControlTexts CommandExchange{
    .openFailed = ControlOpenFailed,
    .encodeFailed = {"WiFiDirect: Unable to encode message to control."},
    .writeFailed = ControlWriteFailed,
    .answer = {ControlReadFailed, {"WiFiDirect: Unable to decode control result."}},
};
constexpr ControlTexts BlockingExchange{
    .openFailed = ControlOpenFailed,
    .encodeFailed = {"WiFiDirect: Unable to encode message for control."},
    .writeFailed = ControlWriteFailed,
    .answer = {ControlReadFailed,
        {"WiFiDirect: Unable to decode control result. (", LogText::ErrorStringInBrackets}},
};

// The error numbers of the service, wherever this runs.
enum ServiceError { Busy = 16, NoDevice = 19, Invalid = 22, NoNetwork = 64 };

// What an error of the service means to one request: its result, and a warning where there is one.
struct Refusal
{
    ServiceError error;
    Result::Type result;
    const char *warning = nullptr;
    bool tellsError = false; // behind the warning, with a closing bracket
};

constexpr Refusal ConnectRefusals[] = {
    {Busy, Result::Busy},
    {NoDevice, Result::DeviceNotFound},
    {Invalid, Result::InternalError, "WiFiDirect: Service reports unable to parse message."},
};
constexpr Refusal CancelRefusals[] = {
    {Invalid, Result::NoRequestToCancel},
};
constexpr Refusal StartSessionRefusals[] = {
    {NoNetwork, Result::NoNetworkConnection},
};
constexpr Refusal StopSessionRefusals[] = {
    {Invalid, Result::InvalidSession},
    {NoNetwork, Result::NoNetworkConnection},
};
constexpr Refusal IpAddressRefusals[] = {
    {Busy, Result::InternalError, "WiFiDirect: Control was busy. (", true},
    {NoDevice, Result::InternalError, "WiFiDirect: Device not found. (", true},
    {Invalid, Result::InternalError, "WiFiDirect: Internal error reported from control. (", true},
    // The doubled word is how the warning is known.
    {NoNetwork, Result::InternalError, "WiFiDirect: Device not not connected to network. (", true},
};

constexpr NamedValue<WiFiDirectIntent::Type> IntentNames[] = {
    {"GO", WiFiDirectIntent::GroupOwner},
    {"client", WiFiDirectIntent::Client},
    {"any", WiFiDirectIntent::Any},
};

constexpr NamedValue<WiFiDirectRole::Type> RoleNames[] = {
    {"GO", WiFiDirectRole::GroupOwner},
    {"client", WiFiDirectRole::Client},
};

constexpr NamedValue<WiFiDirectConnectionState::Type> ConnectionStateNames[] = {
    {"connected", WiFiDirectConnectionState::Connected},
    {"connecting", WiFiDirectConnectionState::Connecting},
    {"disconnected", WiFiDirectConnectionState::Disconnected},
};

// The service has numbers of its own for the methods.
constexpr struct
{
    WiFiDirectWpsMethod::Type method;
    int number;
} WpsMethodNumbers[] = {
    {WiFiDirectWpsMethod::PushButtonConfiguration, 0},
    {WiFiDirectWpsMethod::RandomPin, 2},
    {WiFiDirectWpsMethod::PresetPin, 3},
};

struct ConnectedPeer : WiFiDirectDeviceInfo
{
    QString ipAddress;
    WiFiDirectIntent::Type intent = WiFiDirectIntent::Any;
};

// That scanning has changed, and that a scan is over where it is.
struct ScanningChange : Change<Fields<&ManagerState::scanning>, &WiFiDirect::scanningChanged>
{
    static void emitOn(const QPointer<WiFiDirect> &q, const ManagerState &state)
    {
        Change::emitOn(q, state);
        if (q && !state.scanning)
            Q_EMIT q->scanCompleted();
    }
};

using ManagerChanges =
    ChangeTable<ScanningChange, Change<Fields<&ManagerState::enabled>, &WiFiDirect::enabledChanged>,
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

QString textIn(const QVariantMap &map, const char *name)
{
    return map.value(QLatin1String(name)).toString();
}

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
    info.intent = valueNamed(IntentNames, textIn(peer, "role")).value_or(WiFiDirectIntent::Any);
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
    state.connectionState = valueNamed(ConnectionStateNames, textIn(connection, "status"))
                                .value_or(WiFiDirectConnectionState::Unknown);
    // What is left over of a group that is gone is none of the application's business.
    if (state.connectionState != WiFiDirectConnectionState::Connected)
        return state;
    state.networkInterfaceName = textIn(connection, "network_if");
    state.networkRole = valueNamed(RoleNames, textIn(connection, "role")).value_or(WiFiDirectRole::Unknown);
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

Result::Type resultOf(int error, std::span<const Refusal> refusals)
{
    for (const Refusal &refusal : refusals) {
        if (refusal.error != error)
            continue;
        if (refusal.tellsError)
            qCWarning(logDevice) << refusal.warning << error << ")";
        else if (refusal.warning)
            qCWarning(logDevice) << refusal.warning;
        return refusal.result;
    }
    qCWarning(logDevice) << "WiFiDirect: Unknown error condition. (" << error << ")";
    return Result::InternalError;
}

QVariantMap send(
    const QVariantMap &command, bool setBlocking, const ControlTexts &texts, Result::Type *result)
{
    const ControlAnswer answer = exchange({ControlPpsPath, command, setBlocking}, texts);
    *result = answer.outcome == ControlAnswer::Answered ? Result::Success : Result::InternalError;
    return answer.message;
}

} // namespace

/*! One kind of request: its name, how it is exchanged, and what the service's refusals mean to it. */
struct WiFiDirectPrivate::Command
{
    enum Exchange { Plain, Blocking };

    const char *name;
    Exchange exchange;
    std::span<const Refusal> refusals;
};

namespace {

using Command = WiFiDirectPrivate::Command;

const Command Scan{"wifi_p2p_scan_and_listen", Command::Plain, ConnectRefusals};
const Command Connect{"wifi_p2p_connect", Command::Blocking, ConnectRefusals};
const Command CancelConnect{"wifi_p2p_cancel_connect", Command::Blocking, CancelRefusals};
const Command StartSession{"wifi_p2p_start_session", Command::Plain, StartSessionRefusals};
const Command StopSession{"wifi_p2p_stop_session", Command::Plain, StopSessionRefusals};
const Command GetIpAddress{"wifi_p2p_get_ip_address", Command::Blocking, IpAddressRefusals};

} // namespace

WiFiDirectPrivate::WiFiDirectPrivate(WiFiDirect *publicObject)
    : q(publicObject), m_status(new PpsObject(StatusPpsPath, this))
{
    if (!isSupported())
        return;
    connect(m_status, &PpsObject::readyRead, this, &WiFiDirectPrivate::onStatusReadyRead);
    if (openOrLog(m_status, PpsOpenMode::Subscribe, StatusOpenFailed))
        handleStatus();
    connect(q, DiscoveredTyped, q,
        qOverload<QString, QString, WiFiDirectDeviceType::Type>(&WiFiDirect::deviceFound));
    connect(q, DiscoveredInt, q, qOverload<QString, QString, int>(&WiFiDirect::deviceFound));
}

bool WiFiDirectPrivate::isSupported()
{
    constexpr int NotSupported = 2;
    PpsObject status(StatusPpsPath);
    if (!openOrLog(&status, PpsOpenMode::Subscribe, SupportOpenFailed))
        return false;
    const auto message = readOrLog(&status, SupportReading);
    return message
        && attributesOf(*message, QStringLiteral("@status")).value(QStringLiteral("p2p_mgr_enabled")).toInt()
        != NotSupported;
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
    ManagerChanges::storeAndEmit(q, &m_manager, managerStateIn(status, m_manager));
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

WiFiDirectResult::Type WiFiDirectPrivate::requestScan()
{
    return request(Scan);
}

WiFiDirectResult::Type WiFiDirectPrivate::requestStartSession()
{
    QVariantMap answered;
    const Result::Type result = request(StartSession, {}, &answered);
    if (result == Result::Success) {
        QMetaObject::invokeMethod(
            q, "sessionStarted", Qt::QueuedConnection, Q_ARG(QString, textIn(answered, "session_key")));
    }
    return result;
}

WiFiDirectResult::Type WiFiDirectPrivate::requestStopSession(const QString &session)
{
    const Result::Type result = request(StopSession, {{QStringLiteral("session_key"), session}});
    if (result == Result::Success)
        QMetaObject::invokeMethod(q, "sessionStopped", Qt::QueuedConnection);
    return result;
}

WiFiDirectResult::Type WiFiDirectPrivate::requestConnect(
    const QString &hardwareAddress, int intent, int wpsMethod, const QString &wpsPin)
{
    // What is no enumerator has no word or number for the service, and is left out.
    QVariantMap argument{{QStringLiteral("addr"), hardwareAddress},
        {QStringLiteral("wps_pin"), wpsPin.isEmpty() ? QStringLiteral("NULL") : wpsPin}};
    for (const auto &[name, value] : IntentNames) {
        if (value == intent)
            argument.insert(QStringLiteral("go_intent"), QLatin1String(name));
    }
    for (const auto &[method, number] : WpsMethodNumbers) {
        if (method == wpsMethod)
            argument.insert(QStringLiteral("wps_method"), number);
    }
    return request(Connect, argument);
}

WiFiDirectResult::Type WiFiDirectPrivate::cancelConnectRequest()
{
    return request(CancelConnect);
}

QString WiFiDirectPrivate::ipAddress(const QString &hardwareAddress)
{
    QVariantMap answered;
    if (request(GetIpAddress, {{QStringLiteral("addr"), hardwareAddress}}, &answered) != Result::Success)
        return {};
    return textIn(answered, "ip_address");
}

QVariantMap WiFiDirectPrivate::sendCommand(const QVariantMap &command, WiFiDirectResult::Type *result)
{
    return send(command, false, CommandExchange, result);
}

WiFiDirectResult::Type WiFiDirectPrivate::request(
    const Command &command, const QVariantMap &argument, QVariantMap *answered)
{
    if (!isSupported())
        return Result::NotSupported;
    QVariantMap message{
        {QStringLiteral("msg"), QLatin1String(command.name)}, {QStringLiteral("id"), WIFIDIRECT_PPSID}};
    if (!argument.isEmpty())
        message.insert(QStringLiteral("dat"), argument);
    Result::Type result = Result::InternalError;
    const QVariantMap decoded = command.exchange == Command::Blocking
        ? send(message, true, BlockingExchange, &result)
        : sendCommand(message, &result);
    if (result != Result::Success)
        return result;
    const QVariantMap answer = attributesOf(decoded, QStringLiteral("@control"));
    if (textIn(answer, "res") != QLatin1String(command.name) || textIn(answer, "id") != WIFIDIRECT_PPSID) {
        qCWarning(logDevice) << "WiFiDirect: Malformed response from control.";
        return Result::InternalError;
    }
    if (const int error = answer.value(QStringLiteral("err")).toInt())
        return resultOf(error, command.refusals);
    if (answered)
        *answered = answer.value(QStringLiteral("dat")).toMap();
    return Result::Success;
}

} // namespace oz::device
