#include "wifi-direct/WpaWiFiDirect.hpp"

#include <oz/Limits.hpp>

#include <QDateTime>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace oz::services {

namespace {

using namespace std::chrono_literals;
using Availability = WiFiDirectState::Availability;
using Role = WiFiDirectState::Role;

constexpr std::chrono::seconds ScanTime = 10s;
constexpr std::chrono::seconds ScanDelay = 5s; // until a scan counts as ended without a word

const QString SavedName = QStringLiteral("wifi-direct");
const QString OfGroup = QStringLiteral("group");
const QString SavedOwnerAddress = QStringLiteral("owner-address");
const QString SavedDiscovery = QStringLiteral("discovery");
const QString SavedKeys = QStringLiteral("keys");

void setUp(QTimer &timer, std::chrono::milliseconds time)
{
    timer.setSingleShot(true);
    timer.setInterval(time);
}

} // namespace

WpaWiFiDirect::WpaWiFiDirect(
    std::shared_ptr<SystemBus> bus, std::shared_ptr<WpaSupplicant> supplicant, StateStore &store)
    : m_supplicant(std::move(supplicant)), m_store(store), m_manager(bus), m_leases(std::move(bus)),
      m_peers(*m_supplicant), m_group(*m_supplicant, m_peers, m_leases),
      m_connecting(*m_supplicant, m_peers, m_manager)
{
    if (const qint64 discovery = m_store.load(SavedName).value(SavedDiscovery).toLongLong(); discovery > 0)
        m_lastDiscovery = discovery;
    setUp(m_scan, ScanTime + ScanDelay);
    m_scan.callOnTimeout(this, &WpaWiFiDirect::endScan);
    setUp(m_grace, graceTime());
    m_grace.callOnTimeout(this, [this] { m_peers.dropUnreachable(); });

    connect(m_supplicant.get(), &WpaSupplicant::radioChanged, this, &WpaWiFiDirect::onRadio);
    connect(m_supplicant.get(), &WpaSupplicant::enabledChanged, this, &WpaWiFiDirect::onEnabled);
    connect(&m_manager, &NetworkManagerP2p::changed, this, &WpaWiFiDirect::updateRemark);
    connect(&m_leases, &NetworkdLeases::presenceChanged, this, &WpaWiFiDirect::updateRemark);
    connect(&m_peers, &WpaPeers::changed, this, [this] {
        if (!m_isReading) // what it knew before
            noteDiscovery();
        tell();
    });
    connect(&m_connecting, &WpaConnecting::changed, this, &WpaWiFiDirect::tell);
    connect(&m_group, &WpaGroup::started, this, &WpaWiFiDirect::onGroup);
    connect(&m_group, &WpaGroup::ended, this, &WpaWiFiDirect::onGroupEnded);
    connect(&m_group, &WpaGroup::changed, this, &WpaWiFiDirect::tell);
    m_supplicant->hear(
        {}, Wpa::P2p, QStringLiteral("FindStopped"), this, [this](const QDBusMessage &message) {
            if (message.path() == m_supplicant->radio())
                m_peers.afterReading([this] { endScan(); });
        });
}

void WpaWiFiDirect::onRadio()
{
    endScan();
    m_connecting.end();
    m_group.forget();
    m_manager.follow(m_supplicant->interfaceName());
    if (m_supplicant->radio().isEmpty()) {
        // Applications see the end of the group at once, and of the rest if it stays away.
        m_peers.setUnreachable();
        if (isKnown())
            tell();
        return setAbsent(m_supplicant->absence());
    }
    m_peers.setUnreachable();
    // Until both are read, what was published stands.
    m_isReading = true;
    m_peers.readAll([this] {
        m_group.findPresent([this] {
            m_isReading = false;
            findAgain();
            tell();
        });
    });
}

// wpa_supplicant may have forgotten the peers by a restart, and hears of none by itself.
void WpaWiFiDirect::findAgain()
{
    const QList<WiFiDirectState::Peer> peers = m_peers.inSight();
    const bool isComplete = std::all_of(peers.cbegin(), peers.cend(),
        [this](const WiFiDirectState::Peer &peer) { return m_peers.isReachable(peer.address); });
    if (isComplete || !m_supplicant->isEnabled())
        return m_peers.dropUnreachable();
    m_grace.start();
    m_peers.search(WpaPeers::Channels::Social, std::chrono::ceil<std::chrono::seconds>(graceTime()),
        [](const QDBusMessage &) {});
}

// A radio that is off does nothing, though wpa_supplicant may say so only seconds later.
void WpaWiFiDirect::onEnabled()
{
    if (!m_supplicant->isEnabled()) {
        // Told as one change.
        const bool wasReading = std::exchange(m_isReading, true);
        endScan();
        m_connecting.end();
        m_group.forget();
        const bool hadPeers = !m_peers.inSight().isEmpty();
        m_peers.clear();
        m_isReading = wasReading;
        if (hadPeers)
            noteDiscovery();
    }
    tell();
}

void WpaWiFiDirect::tell()
{
    if (m_isReading && !m_supplicant->radio().isEmpty())
        return;
    WiFiDirectState state;
    state.availability = !m_supplicant->canP2p() ? Availability::NotSupported
        : m_supplicant->isEnabled()              ? Availability::Enabled
                                                 : Availability::Disabled;
    // While wpa_supplicant restarts it is what it was.
    if (m_supplicant->radio().isEmpty() && this->state())
        state.availability = this->state()->availability;
    state.scanning = m_scan.isActive();
    state.lastDiscovery = m_lastDiscovery;
    state.connecting = m_connecting.isActive();
    state.visible = m_peers.inSight();
    if (m_group.group() && !m_connecting.isRefusing()) {
        const WiFiDirectState::Group &group = *m_group.group();
        state.group = group;
        state.connected = m_group.members();
        for (WiFiDirectState::Peer &peer : state.visible) {
            if (!m_group.contains(peer.address))
                continue;
            if (group.role == Role::Client)
                peer.ssid = group.ssid;
            else
                peer.ownerAddress = group.ownerAddress;
        }
    }
    know(state);
    updateRemark();
}

// For people, where something keeps it from doing all that it could.
void WpaWiFiDirect::updateRemark()
{
    const QString &interface = m_supplicant->interfaceName();
    if (m_supplicant->radio().isEmpty())
        return;
    if (!m_supplicant->canP2p())
        return setRemark(interface + QLatin1String(" cannot do Wi-Fi Direct"));
    if (!m_supplicant->isEnabled())
        return setRemark(m_supplicant->obstacle());
    if (m_manager.ownsRadio()) {
        return setRemark(QLatin1String("NetworkManager owns ")
            + interface + QLatin1String(" and connects, without PINs and a choice of roles; the line unmanaged-devices=interface-name:")
            + interface + QLatin1String(" in the section [keyfile] of its configuration leaves it to wpa_supplicant"));
    }
    setRemark(m_leases.absence().isEmpty()
            ? QString()
            : QStringLiteral("groups get no IP addresses: systemd-networkd is not running"));
}

void WpaWiFiDirect::noteDiscovery()
{
    m_lastDiscovery = QDateTime::currentSecsSinceEpoch();
    save();
}

WiFiDirectActivity WpaWiFiDirect::activity() const
{
    return {!m_supplicant->radio().isEmpty() && m_supplicant->canP2p() && m_supplicant->isEnabled(),
        m_scan.isActive(), m_connecting.isActive(), m_group.group().has_value()};
}

// wpa_supplicant takes a second scan, and one while the radio is off, and then finds nothing.
void WpaWiFiDirect::scan(const Done &done)
{
    if (const Outcome refused = activity().refusalOfScan(); refused.error)
        return done(refused);
    m_scan.start();
    m_peers.search(WpaPeers::Channels::Every, ScanTime, [this, done](const QDBusMessage &answer) {
        if (isError(answer)) {
            m_scan.stop();
            return done(outcomeOf(answer));
        }
        // In a group it may have ended already.
        m_peers.setScanning(m_scan.isActive());
        tell();
        done({});
    });
}

void WpaWiFiDirect::endScan()
{
    m_peers.setScanning(false);
    if (!m_scan.isActive())
        return;
    m_scan.stop();
    noteDiscovery();
    tell();
}

void WpaWiFiDirect::connectPeer(const ConnectRequest &request, const Done &done)
{
    const bool isInSight =
        m_peers.find(request.address) && (!m_grace.isActive() || m_peers.isReachable(request.address));
    if (const Outcome refused = activity().refusalOfConnect(request, isInSight); refused.error)
        return done(refused);
    if (request.method != WpsMethod::PushButton && m_manager.ownsRadio())
        return done({EOPNOTSUPP, QStringLiteral("NetworkManager owns the radio, and takes no PIN"), {}});
    // The radio cannot do both.
    const bool wasScanning = m_scan.isActive();
    endScan();
    if (wasScanning) {
        m_supplicant->call(m_supplicant->radio(), Wpa::P2p, QStringLiteral("StopFind"), {}, this,
            [](const QDBusMessage &) {});
    }
    m_connecting.begin(request, done);
}

void WpaWiFiDirect::endGroup(const WpaSupplicant::Answered &done)
{
    m_manager.disconnectPeer();
    m_group.end(this, done);
}

void WpaWiFiDirect::cancelConnect(const Done &done)
{
    if (const Outcome refused = activity().refusalOfCancel(); refused.error)
        return done(refused);
    m_connecting.cancel();
    done({});
}

void WpaWiFiDirect::onGroup()
{
    if (m_connecting.isRefusing())
        return endGroup([](const QDBusMessage &) {});
    m_connecting.end();
    // The group may be one of before the daemon's start.
    const QVariantMap saved = m_store.load(SavedName);
    if (m_sessions.isEmpty() && saved.value(OfGroup) == sessionGroup()) {
        m_sessions.restore(saved.value(SavedKeys).toStringList());
        m_group.setOwnerIpAddress(saved.value(SavedOwnerAddress).toString());
    }
    save();
}

void WpaWiFiDirect::onGroupEnded()
{
    m_connecting.endRefusing();
    m_sessions.clear();
    save();
    tell();
}

// Tells the group from others, of before and afterwards.
QString WpaWiFiDirect::sessionGroup() const
{
    const auto &group = m_group.group();
    return group ? QString(group->ssid + u' ' + group->ownerAddress) : QString();
}

void WpaWiFiDirect::save()
{
    const auto &group = m_group.group();
    m_store.save(SavedName,
        {{OfGroup, sessionGroup()}, {SavedKeys, m_sessions.keys()},
            {SavedOwnerAddress, group ? group->ownerIpAddress : QString()},
            {SavedDiscovery, m_lastDiscovery ? QVariant(*m_lastDiscovery) : QVariant()}});
}

void WpaWiFiDirect::startSession(const Done &done)
{
    const Outcome started = m_sessions.start(m_group.group().has_value());
    save();
    done(started);
}

void WpaWiFiDirect::stopSession(const QString &key, const Done &done)
{
    const Outcome stopped = m_sessions.stop(m_group.group().has_value(), key);
    save();
    if (stopped.error || !m_sessions.isEmpty())
        return done(stopped);
    // Where it fails, the group has ended by itself.
    endGroup([done](const QDBusMessage &) { done({}); });
}

void WpaWiFiDirect::ipAddress(const QString &address, const Done &done)
{
    if (const Outcome refused = activity().refusalOfIpAddress(address); refused.error)
        return done(refused);
    for (const WiFiDirectState::ConnectedPeer &member : m_group.members()) {
        if (member.address.compare(address, Qt::CaseInsensitive) != 0)
            continue;
        if (member.ipAddress.isEmpty())
            return done({EINVAL, QStringLiteral("its address is not known"), {}});
        return done({0, {}, member.ipAddress});
    }
    if (m_group.contains(address))
        return done({EINVAL, QStringLiteral("its address is not known yet"), {}});
    done({ENODEV, QStringLiteral("no such peer is connected"), {}});
}

} // namespace oz::services
