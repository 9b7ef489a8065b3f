#include "wifi-direct/SimulatedWiFiDirect.hpp"

#include <QDateTime>

#include <cerrno>

namespace oz::services {

namespace {

using Availability = WiFiDirectState::Availability;
using Group = WiFiDirectState::Group;
using Peer = WiFiDirectState::Peer;
using Role = WiFiDirectState::Role;

// In the phone's file, and of what is saved.
const QString Peers = QStringLiteral("peers");
constexpr int FirstPeer = 0x101; // at the end of its hardware address
constexpr int OwnerHost = 1;
constexpr int LastHost = 254;
// How the phone's role in its group is saved.
const QString SavedGroup = QStringLiteral("group");
const QString SavedOwner = QStringLiteral("owner");
const QString SavedClient = QStringLiteral("client");

QString ipOf(int host)
{
    return QLatin1String("192.168.49.") + QString::number(host);
}

} // namespace

SimulatedWiFiDirect::SimulatedWiFiDirect(const JsonNode &section, SimulatedParts &phone)
    : m_scan{PhoneTimer(phone.clock(), PhoneTimer::Repeatedly)}, m_connecting{PhoneTimer(phone.clock())}
{
    m_ownGroup.role = Role::GroupOwner;
    m_ownGroup.ownerIpAddress = ipOf(OwnerHost);
    read(section, settings({}), {Peers});
    m_peers.read(
        section, QStringLiteral("wifi-direct"), Peers, FirstPeer,
        [](const QString &key, const Setting &setting) {
            return setting.key == u"ssid" ? QVariant(QString(QLatin1String("DIRECT-") + key)) : QVariant();
        },
        m_ownGroup.ownerAddress);

    connect(&m_scan.timer, &PhoneTimer::timeout, this, &SimulatedWiFiDirect::scanFurther);
    connect(&m_connecting.timer, &PhoneTimer::timeout, this, &SimulatedWiFiDirect::finishConnecting);
    update();
}

// A radio that is off does nothing.
void SimulatedWiFiDirect::update()
{
    if (!m_supported || !m_enabled)
        switchOff();
    tell();
}

void SimulatedWiFiDirect::tell()
{
    save();
    WiFiDirectState state;
    state.availability = Availability::Enabled;
    if (!m_supported)
        state.availability = Availability::NotSupported;
    else if (!m_enabled)
        state.availability = Availability::Disabled;
    state.scanning = m_scan.isOn();
    state.lastDiscovery = m_lastDiscovery;
    state.connecting = m_connecting.isOn();
    state.group = m_group;
    for (const QString &key : m_visible) {
        const Known &known = m_peers.at(key);
        Peer peer = known.peer;
        // The owner of a group that is none of the phone's peers.
        if (known.elsewhere == Elsewhere::Client)
            peer.ownerAddress = QStringLiteral("02:00:00:00:ff:ff");
        else if (known.elsewhere == Elsewhere::Owner)
            peer.ssid = known.ssid;
        for (const Member &member : m_members) {
            if (member.key == key && member.role == Role::GroupOwner)
                peer.ssid = m_group->ssid;
            else if (member.key == key)
                peer.ownerAddress = m_group->ownerAddress;
        }
        state.visible.append(peer);
    }
    for (const Member &member : m_members) {
        const Peer &peer = m_peers.at(member.key).peer;
        state.connected.append({peer.address, peer.name, peer.type, member.role, ipOf(member.host)});
    }
    know(state);
}

void SimulatedWiFiDirect::scan(const Done &done)
{
    if (const Outcome refused = activity().refusalOfScan(); refused.error)
        return done(refused);
    m_scanSteps = 1;
    for (const QString &key : m_peers.keys())
        m_scanSteps += m_peers.at(key).inRange && !m_visible.contains(key);
    m_scan.timer.start(m_scanTime / m_scanSteps);
    tell();
    done({});
}

void SimulatedWiFiDirect::connectPeer(const ConnectRequest &request, const Done &done)
{
    const bool isInSight = !visibleAt(request.address).isEmpty();
    if (const Outcome refused = activity().refusalOfConnect(request, isInSight); refused.error)
        return done(refused);
    // The radio cannot do both.
    m_scan.timer.stop();
    m_request = request;
    m_connecting.timer.start(m_connectTime);
    tell();
    done({});
}

void SimulatedWiFiDirect::cancelConnect(const Done &done)
{
    if (const Outcome refused = activity().refusalOfCancel(); refused.error)
        return done(refused);
    m_connecting.timer.stop();
    tell();
    done({});
}

void SimulatedWiFiDirect::startSession(const Done &done)
{
    const Outcome started = m_sessions.start(m_group.has_value());
    save();
    done(started);
}

void SimulatedWiFiDirect::stopSession(const QString &key, const Done &done)
{
    const Outcome stopped = m_sessions.stop(m_group.has_value(), key);
    if (stopped.error)
        return done(stopped);
    if (m_sessions.isEmpty())
        endGroup();
    tell();
    done({});
}

void SimulatedWiFiDirect::ipAddress(const QString &address, const Done &done)
{
    if (const Outcome refused = activity().refusalOfIpAddress(address); refused.error)
        return done(refused);
    for (const Member &member : m_members) {
        if (m_peers.at(member.key).peer.address.compare(address, Qt::CaseInsensitive) == 0)
            return done({0, {}, ipOf(member.host)});
    }
    return done({ENODEV, QStringLiteral("no such peer is connected"), {}});
}

QString SimulatedWiFiDirect::visibleAt(const QString &address) const
{
    return m_peers.withAddress(m_visible, address);
}

bool SimulatedWiFiDirect::isMember(const QString &key) const
{
    return std::any_of(
        m_members.cbegin(), m_members.cend(), [&](const Member &member) { return member.key == key; });
}

// The phone's role in a group with the peer; nothing where they cannot agree on one.
std::optional<Role> SimulatedWiFiDirect::roleWith(const Known &peer, Intent intent) const
{
    if (peer.elsewhere == Elsewhere::Client)
        return {};
    const Intent theirs = peer.elsewhere == Elsewhere::Owner ? Intent::GroupOwner : peer.intent;
    if (intent == Intent::Any)
        return theirs == Intent::Client ? Role::GroupOwner : Role::Client;
    if (intent == theirs)
        return {};
    return intent == Intent::GroupOwner ? Role::GroupOwner : Role::Client;
}

WiFiDirectActivity SimulatedWiFiDirect::activity() const
{
    return {m_supported && m_enabled, m_scan.timer.isActive(), m_connecting.timer.isActive(),
        m_group.has_value()};
}

void SimulatedWiFiDirect::scanFurther()
{
    if (--m_scanSteps > 0)
        (void)showNextPeer();
    else
        endScan();
    tell();
}

bool SimulatedWiFiDirect::showNextPeer()
{
    for (const QString &key : m_peers.keys()) {
        if (m_peers.at(key).inRange && !m_visible.contains(key)) {
            m_visible.append(key);
            noteDiscovery();
            return true;
        }
    }
    return false;
}

void SimulatedWiFiDirect::endScan()
{
    while (showNextPeer()) { }
    m_scan.timer.stop();
    noteDiscovery();
}

void SimulatedWiFiDirect::finishConnecting()
{
    // Where the peer is out of sight by now, connecting has ended already.
    const QString key = visibleAt(m_request.address);
    const Known &peer = m_peers.at(key);
    const bool isSecured = peer.methods.contains(methodWords()[int(m_request.method)])
        && (m_request.method == WpsMethod::PushButton || m_request.pin == peer.pin);
    const auto role = roleWith(peer, m_request.intent);
    if (isSecured && role) {
        m_group = groupWith(peer, *role);
        join(key, *role == Role::GroupOwner ? Role::Client : Role::GroupOwner);
    }
    tell();
}

// The group of the phone, in the role \a role, and a peer.
Group SimulatedWiFiDirect::groupWith(const Known &peer, Role role) const
{
    if (role == Role::GroupOwner)
        return m_ownGroup;
    return {m_ownGroup.interface, Role::Client, peer.ssid, peer.peer.address, ipOf(OwnerHost), peer.password};
}

void SimulatedWiFiDirect::join(const QString &key, Role role)
{
    int host = OwnerHost;
    // The owner is the first one; clients have the numbers that are free.
    const auto isTaken = [&] {
        return std::any_of(
            m_members.cbegin(), m_members.cend(), [&](const Member &member) { return member.host == host; });
    };
    if (role == Role::Client) {
        do
            ++host;
        while (isTaken());
    }
    m_members.append({key, role, host});
}

void SimulatedWiFiDirect::leave(const QString &key)
{
    m_members.removeIf([&](const Member &member) { return member.key == key; });
    if (m_members.isEmpty())
        endGroup();
}

void SimulatedWiFiDirect::endGroup()
{
    m_group.reset();
    m_members.clear();
    m_sessions.clear();
}

void SimulatedWiFiDirect::lose(const QString &key)
{
    if (m_connecting.timer.isActive() && visibleAt(m_request.address) == key)
        m_connecting.timer.stop();
    if (isMember(key))
        leave(key);
    if (m_visible.removeOne(key))
        noteDiscovery();
}

void SimulatedWiFiDirect::switchOff()
{
    m_scan.end();
    m_connecting.end();
    endGroup();
    if (!m_visible.isEmpty())
        noteDiscovery();
    m_visible.clear();
}

void SimulatedWiFiDirect::noteDiscovery()
{
    m_lastDiscovery = QDateTime::currentSecsSinceEpoch();
}

QVariantMap SimulatedWiFiDirect::saved()
{
    QVariantMap saved = SimulatedPart::saved();
    QVariantList members;
    for (const Member &member : m_members) {
        members.append(QVariantMap{{QStringLiteral("key"), member.key}, {QStringLiteral("host"), member.host},
            {QStringLiteral("owner"), member.role == Role::GroupOwner}});
    }
    saved.insert({{Peers, m_peers.saved()}, {QStringLiteral("visible"), m_visible},
        {QStringLiteral("members"), members}, {QStringLiteral("sessions"), m_sessions.keys()}});
    if (m_group)
        saved.insert(SavedGroup, m_group->role == Role::GroupOwner ? SavedOwner : SavedClient);
    if (m_lastDiscovery)
        saved.insert(QStringLiteral("discovery"), *m_lastDiscovery);
    return saved;
}

// A scan, or a connection that was being made, has ended with the daemon.
void SimulatedWiFiDirect::restore(const QVariantMap &saved)
{
    m_peers.restore(saved.value(Peers).toMap());
    m_visible = m_peers.knownOf(saved.value(QStringLiteral("visible")));
    m_lastDiscovery.reset();
    if (const QVariant discovery = saved.value(QStringLiteral("discovery")); discovery.isValid())
        m_lastDiscovery = discovery.toLongLong();
    restoreGroup(saved);
    SimulatedPart::restore(saved);
}

// A group of the phone's has clients alone, any other one of its peers as owner.
void SimulatedWiFiDirect::restoreGroup(const QVariantMap &saved)
{
    m_group.reset();
    m_members.clear();
    m_sessions.clear();
    const QString role = saved.value(SavedGroup).toString();
    if (role == SavedOwner)
        m_group = m_ownGroup;
    for (const QVariant &entry : saved.value(QStringLiteral("members")).toList()) {
        const QVariantMap before = entry.toMap();
        const QString key = before.value(QStringLiteral("key")).toString();
        const int host = before.value(QStringLiteral("host")).toInt();
        if (!m_peers.contains(key) || isMember(key) || host < OwnerHost || host > LastHost)
            continue;
        const bool owns = before.value(QStringLiteral("owner")).toBool();
        if (owns && m_group)
            continue;
        if (owns && role == SavedClient)
            m_group = groupWith(m_peers.at(key), Role::Client);
        m_members.append({key, owns ? Role::GroupOwner : Role::Client, host});
    }
    if (!m_group) {
        m_members.clear();
        return;
    }
    m_sessions.restore(saved.value(QStringLiteral("sessions")).toStringList());
}

} // namespace oz::services
