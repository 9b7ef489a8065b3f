#include "wifi-direct/WpaWiFiDirect.hpp"

#include <oz/Limits.hpp>

#include <QDBusError>
#include <QDateTime>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;
using Availability = WiFiDirectState::Availability;
using Role = WiFiDirectState::Role;

// All channels first, as owners of groups may be on any; then the ones on which devices find one another.
constexpr const char *EveryChannel = "start_with_full";
constexpr const char *SocialChannels = "social";
constexpr std::chrono::seconds ScanTime = 10s;
constexpr std::chrono::seconds SearchTime = 15s;
constexpr std::chrono::seconds ScanDelay = 5s; // until a scan counts as ended without a word
// wpa_supplicant gives up after 120 s; this is for when it does not say so.
constexpr std::chrono::seconds LongestConnecting = 130s;
constexpr std::chrono::seconds RefusalTime = 20s;

constexpr int OwnerIntent = 15;
constexpr int ClientIntent = 0;
constexpr int AnyIntent = 7;

const QString SavedName = QStringLiteral("wifi-direct");
const QString OfGroup = QStringLiteral("group");
const QString SavedOwnerAddress = QStringLiteral("owner-address");
const QString SavedDiscovery = QStringLiteral("discovery");
const QString SavedKeys = QStringLiteral("keys");

Outcome failureOf(const QDBusMessage &answer)
{
    return {QDBusError(answer).type() == QDBusError::AccessDenied ? EACCES : EIO, problemOf(answer), {}};
}

QString methodWord(WiFiDirectSource::WpsMethod method)
{
    switch (method) {
    case WiFiDirectSource::WpsMethod::PushButton:
        return QStringLiteral("pbc");
    case WiFiDirectSource::WpsMethod::RandomPin:
        return QStringLiteral("display");
    case WiFiDirectSource::WpsMethod::PresetPin:
        return QStringLiteral("keypad");
    }
    return {};
}

int intentNumber(WiFiDirectSource::Intent intent)
{
    switch (intent) {
    case WiFiDirectSource::Intent::GroupOwner:
        return OwnerIntent;
    case WiFiDirectSource::Intent::Client:
        return ClientIntent;
    case WiFiDirectSource::Intent::Any:
        return AnyIntent;
    }
    return AnyIntent;
}

void setUp(QTimer &timer, std::chrono::milliseconds time)
{
    timer.setSingleShot(true);
    timer.setInterval(time);
}

} // namespace

WpaWiFiDirect::WpaWiFiDirect(
    std::shared_ptr<SystemBus> bus, std::shared_ptr<WpaSupplicant> supplicant, StateStore &store)
    : m_supplicant(std::move(supplicant)), m_store(store), m_manager(bus), m_leases(std::move(bus)),
      m_peers(*m_supplicant), m_group(*m_supplicant, m_peers, m_leases)
{
    if (const qint64 discovery = m_store.load(SavedName).value(SavedDiscovery).toLongLong(); discovery > 0)
        m_lastDiscovery = discovery;
    setUp(m_scan, ScanTime + ScanDelay);
    m_scan.callOnTimeout(this, &WpaWiFiDirect::endScan);
    setUp(m_connectLimit, LongestConnecting);
    m_connectLimit.callOnTimeout(this, [this] { cancelConnect([](const Outcome &) {}); });
    setUp(m_refusal, RefusalTime);
    setUp(m_grace, graceTime());
    m_grace.callOnTimeout(this, [this] { m_peers.dropUnreachable(); });

    connect(m_supplicant.get(), &WpaSupplicant::radioChanged, this, &WpaWiFiDirect::onRadio);
    connect(m_supplicant.get(), &WpaSupplicant::enabledChanged, this, &WpaWiFiDirect::onEnabled);
    connect(&m_manager, &NetworkManagerP2p::changed, this, &WpaWiFiDirect::updateRemark);
    connect(&m_manager, &NetworkManagerP2p::ended, this, &WpaWiFiDirect::endConnecting);
    connect(&m_leases, &NetworkdLeases::presenceChanged, this, &WpaWiFiDirect::updateRemark);
    connect(&m_peers, &WpaPeers::changed, this, [this] {
        if (!m_isReading) // what it knew before
            noteDiscovery();
        tell();
    });
    connect(&m_peers, &WpaPeers::found, this, &WpaWiFiDirect::onFound);
    connect(&m_group, &WpaGroup::started, this, &WpaWiFiDirect::onGroup);
    connect(&m_group, &WpaGroup::ended, this, &WpaWiFiDirect::onGroupEnded);
    connect(&m_group, &WpaGroup::changed, this, &WpaWiFiDirect::tell);
    m_supplicant->hear(
        {}, Wpa::P2p, QStringLiteral("FindStopped"), this, [this](const QDBusMessage &message) {
            if (message.path() == m_supplicant->radio())
                endScan();
        });
    // From the radio's object before there is an interface for the group, from the group's afterwards.
    for (const char *signal : {"GONegotiationFailure", "GroupFormationFailure", "WpsFailed"}) {
        m_supplicant->hear(
            {}, Wpa::P2p, QLatin1String(signal), this, [this](const QDBusMessage &) { endConnecting(); });
    }
}

void WpaWiFiDirect::onRadio()
{
    endScan();
    endConnecting();
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
    beginSearch(
        SocialChannels, std::chrono::ceil<std::chrono::seconds>(graceTime()), [](const QDBusMessage &) {});
}

// A radio that is off does nothing, though wpa_supplicant may say so only seconds later.
void WpaWiFiDirect::onEnabled()
{
    if (!m_supplicant->isEnabled()) {
        endScan();
        endConnecting();
        m_group.forget();
        m_peers.clear();
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
    state.connecting = m_request.has_value();
    state.visible = m_peers.inSight();
    if (m_group.group() && !m_refusal.isActive()) {
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

Outcome WpaWiFiDirect::obstacle() const
{
    if (m_supplicant->radio().isEmpty() || !m_supplicant->canP2p() || !m_supplicant->isEnabled())
        return {ENETDOWN, QStringLiteral("Wi-Fi Direct is off"), {}};
    if (m_request)
        return {EBUSY, QStringLiteral("a peer is being connected"), {}};
    return {};
}

void WpaWiFiDirect::beginSearch(
    const char *kind, std::chrono::seconds time, const WpaSupplicant::Answered &answered)
{
    const QVariantMap settings{{QStringLiteral("Timeout"), int(time.count())},
        {QStringLiteral("DiscoveryType"), QLatin1String(kind)}};
    m_supplicant->call(m_supplicant->radio(), Wpa::P2p, QStringLiteral("Find"), {settings}, this, answered);
}

// wpa_supplicant takes a second scan, and one while the radio is off, and then finds nothing.
void WpaWiFiDirect::scan(const Done &done)
{
    if (const Outcome refused = obstacle(); refused.error)
        return done(refused);
    if (m_scan.isActive())
        return done({EBUSY, QStringLiteral("a scan is running"), {}});
    m_scan.start();
    beginSearch(EveryChannel, ScanTime, [this, done](const QDBusMessage &answer) {
        if (isError(answer)) {
            m_scan.stop();
            return done(failureOf(answer));
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
    if (const Outcome refused = obstacle(); refused.error)
        return done(refused);
    if (m_group.group())
        return done({EBUSY, QStringLiteral("there is a connection"), {}});
    if (!m_peers.find(request.address) || (m_grace.isActive() && !m_peers.isReachable(request.address)))
        return done({ENODEV, QStringLiteral("no such peer is in sight"), {}});
    if (request.method != WpsMethod::PushButton && request.pin.isEmpty())
        return done({EINVAL, QStringLiteral("this method wants a PIN"), {}});
    if (request.method != WpsMethod::PushButton && m_manager.ownsRadio())
        return done({EOPNOTSUPP, QStringLiteral("NetworkManager owns the radio, and takes no PIN"), {}});
    m_refusal.stop();
    m_request = request;
    // The radio cannot do both.
    const bool wasScanning = m_scan.isActive();
    endScan();
    if (m_peers.isReachable(request.address)) {
        if (wasScanning) {
            m_supplicant->call(m_supplicant->radio(), Wpa::P2p, QStringLiteral("StopFind"), {}, this,
                [](const QDBusMessage &) {});
        }
        return beginConnecting(done);
    }
    // wpa_supplicant has forgotten it, as nobody has scanned for a while.
    m_isSearching = true;
    m_connectLimit.start(SearchTime);
    beginSearch(SocialChannels, SearchTime, [this, done](const QDBusMessage &answer) {
        if (isError(answer))
            endConnecting();
        tell();
        done(isError(answer) ? failureOf(answer) : Outcome());
    });
}

void WpaWiFiDirect::onFound(const QString &address)
{
    if (!m_isSearching || !m_request || m_request->address.compare(address, Qt::CaseInsensitive) != 0)
        return;
    m_isSearching = false;
    beginConnecting([](const Outcome &) {});
}

void WpaWiFiDirect::beginConnecting(const Done &done)
{
    const ConnectRequest request = *m_request;
    m_connectLimit.start(LongestConnecting);
    const auto answered = [this, done](const QDBusMessage &answer) {
        if (!isError(answer)) {
            tell();
            return done({});
        }
        endConnecting();
        // All arguments are as it wants them, so this is about the peer.
        if (answer.errorName() == Wpa::Name + QLatin1String(".InvalidArgs"))
            return done({ENODEV, QStringLiteral("wpa_supplicant does not know the peer"), {}});
        done(failureOf(answer));
    };
    if (m_manager.ownsRadio())
        return m_manager.connectPeer(request.address, m_peers.find(request.address)->name, this, answered);
    QVariantMap settings{
        {QStringLiteral("peer"), QVariant::fromValue(QDBusObjectPath(m_peers.objectOf(request.address)))},
        {QStringLiteral("wps_method"), methodWord(request.method)}};
    if (request.method != WpsMethod::PushButton)
        settings.insert(QStringLiteral("pin"), request.pin);
    if (m_peers.ownsGroup(request.address))
        settings.insert(QStringLiteral("join"), true);
    else
        settings.insert(QStringLiteral("go_intent"), intentNumber(request.intent));
    m_supplicant->call(
        m_supplicant->radio(), Wpa::P2p, QStringLiteral("Connect"), {settings}, this, answered);
}

void WpaWiFiDirect::endGroup(const WpaSupplicant::Answered &done)
{
    m_manager.disconnectPeer();
    m_group.end(this, done);
}

void WpaWiFiDirect::endConnecting()
{
    if (!m_request)
        return;
    m_request.reset();
    m_isSearching = false;
    m_connectLimit.stop();
    tell();
}

void WpaWiFiDirect::cancelConnect(const Done &done)
{
    if (!m_request)
        return done({EINVAL, QStringLiteral("nothing is being connected"), {}});
    m_manager.disconnectPeer();
    // It sends no signal, and a group may form nevertheless.
    m_supplicant->call(m_supplicant->radio(), Wpa::P2p,
        m_isSearching ? QStringLiteral("StopFind") : QStringLiteral("Cancel"), {}, this,
        [](const QDBusMessage &) {});
    m_refusal.start();
    endConnecting();
    done({});
}

void WpaWiFiDirect::onGroup()
{
    if (m_refusal.isActive())
        return endGroup([](const QDBusMessage &) {});
    m_request.reset();
    m_isSearching = false;
    m_connectLimit.stop();
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
    m_refusal.stop();
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
    if (address.isEmpty())
        return done({EINVAL, QStringLiteral("the request has no address"), {}});
    if (m_request)
        return done({EBUSY, QStringLiteral("a peer is being connected"), {}});
    if (!m_group.group())
        return done({ENONET, QStringLiteral("there is no connection"), {}});
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
