#include "wifi-direct/SimulatedWiFiDirect.hpp"

#include "phone/ShippedPhone.hpp"
#include "publishing/Error.hpp"

#include <QDateTime>
#include <QRegularExpression>
#include <QUuid>

#include <cerrno>

namespace oz::services {

namespace {

using Availability = WiFiDirectState::Availability;
using Group = WiFiDirectState::Group;
using Peer = WiFiDirectState::Peer;
using Role = WiFiDirectState::Role;

const QString Comes = QStringLiteral("peer-appears");
const QString Goes = QStringLiteral("peer-goes");
constexpr int OwnerHost = 1;
constexpr int LastHost = 254;
// How the phone's role in its group is saved.
const QString SavedGroup = QStringLiteral("group");
const QString SavedOwner = QStringLiteral("owner");
const QString SavedClient = QStringLiteral("client");
constexpr int MaxSessions = 1000; // so that clients which never stop theirs cost no more than this

// In the order of WiFiDirectSource::WpsMethod.
QStringList methodWords()
{
    return {QStringLiteral("push-button"), QStringLiteral("random-pin"), QStringLiteral("preset-pin")};
}

// In the order of WiFiDirectSource::Intent.
QStringList intentWords()
{
    return {QStringLiteral("owner"), QStringLiteral("client"), QStringLiteral("any")};
}

QString ipOf(int host)
{
    return QLatin1String("192.168.49.") + QString::number(host);
}

// A passphrase of WPA2, which has 8 to 63 characters of ASCII; no error shows it.
QString passwordIn(const JsonNode &node, const QString &fallback)
{
    const QString key = QStringLiteral("password");
    const auto text = node.identifier(key, fallback);
    static const QRegularExpression passphrase(QStringLiteral("^[ -~]{8,63}$"));
    if (!text || !passphrase.match(*text).hasMatch())
        node.fail(QStringLiteral("expected 8 to 63 characters of ASCII"), key);
    return *text;
}

} // namespace

SimulatedWiFiDirect::SimulatedWiFiDirect(const JsonNode &section, SimulatedPhone &phone)
    : m_scanning(phone.clock(), PhoneTimer::Repeatedly), m_connecting(phone.clock())
{
    const QString peers = QStringLiteral("peers");
    section.allowOnly({QStringLiteral("supported"), QStringLiteral("enabled"), QStringLiteral("address"),
        QStringLiteral("interface"), QStringLiteral("ssid"), QStringLiteral("password"),
        QStringLiteral("scan-seconds"), QStringLiteral("connect-seconds"), peers});
    m_supported = section.boolean(QStringLiteral("supported"), true);
    m_enabled = section.boolean(QStringLiteral("enabled"), true);
    m_address = section.hardwareAddress(QStringLiteral("address"), QStringLiteral("02:00:00:00:00:01"));
    m_ownGroup = {section.text(QStringLiteral("interface"), QStringLiteral("p2p0")), Role::GroupOwner,
        section.text(QStringLiteral("ssid"), QStringLiteral("DIRECT-oz-Kestrel")), m_address, ipOf(OwnerHost),
        passwordIn(section, QStringLiteral("kestrel-direct"))};
    m_scanTime = section.seconds(QStringLiteral("scan-seconds"), 3);
    m_connectTime = section.seconds(QStringLiteral("connect-seconds"), 2);
    const JsonNode all =
        (section.contains(peers) ? section : shippedSection(QStringLiteral("wifi-direct"))).map(peers);
    for (const auto &member : all.members())
        readPeer(member.first, all.map(member.first));

    connect(&m_scanning, &PhoneTimer::timeout, this, &SimulatedWiFiDirect::scanFurther);
    connect(&m_connecting, &PhoneTimer::timeout, this, &SimulatedWiFiDirect::finishConnecting);
    tell();
}

void SimulatedWiFiDirect::readPeer(const QString &key, const JsonNode &node)
{
    const QString address = QStringLiteral("address");
    const QString displayInfo = QStringLiteral("display-info");
    node.allowOnly({QStringLiteral("name"), address, QStringLiteral("type"), displayInfo,
        QStringLiteral("in-range"), QStringLiteral("wps"), QStringLiteral("pin"), QStringLiteral("intent"),
        QStringLiteral("group"), QStringLiteral("ssid"), QStringLiteral("password")});
    const QString place = QString::number(0x100 + m_keys.size() + 1, 16).rightJustified(4, u'0');
    Known known;
    known.peer.address = node.hardwareAddress(
        address, QLatin1String("02:00:00:00:") + place.first(2) + u':' + place.sliced(2));
    // Whatever its case, it is one address.
    const auto isSame = [&](const QString &other) {
        return other.compare(known.peer.address, Qt::CaseInsensitive) == 0;
    };
    if (isSame(m_address))
        node.fail(QStringLiteral("is the phone's own"), address);
    for (const auto &[other, peer] : m_peers) {
        if (isSame(peer.peer.address))
            node.fail(QLatin1String("is that of ") + other, address);
    }
    known.peer.name = node.text(QStringLiteral("name"), key);
    known.peer.type = node.text(QStringLiteral("type"), QStringLiteral("10-0050F204-5"));
    if (node.contains(displayInfo))
        known.peer.displayInfo = node.text(displayInfo, {});
    known.inRange = node.boolean(QStringLiteral("in-range"), true);
    known.methods = node.words(QStringLiteral("wps"), methodWords(), methodWords());
    known.pin = node.identifier(QStringLiteral("pin"), QStringLiteral("12345670")).value_or(QString());
    known.intent = Intent(
        intentWords().indexOf(node.word(QStringLiteral("intent"), QStringLiteral("any"), intentWords())));
    const QStringList groups{QStringLiteral("none"), QStringLiteral("owner"), QStringLiteral("client")};
    known.elsewhere = Elsewhere(groups.indexOf(node.word(QStringLiteral("group"), groups.first(), groups)));
    known.ssid = node.text(QStringLiteral("ssid"), QString(QLatin1String("DIRECT-") + key));
    known.password = passwordIn(node, QStringLiteral("direct-password"));
    m_keys.append(key);
    m_peers.emplace(key, known);
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
    state.scanning = m_looks || m_scanning.isActive();
    state.lastDiscovery = m_lastDiscovery;
    state.connecting = m_joins || m_connecting.isActive();
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
    if (const Outcome refused = obstacle(); refused.error)
        return done(refused);
    if (m_scanning.isActive())
        return done({EBUSY, QStringLiteral("a scan is running"), {}});
    m_scanSteps = 1;
    for (const QString &key : m_keys)
        m_scanSteps += m_peers.at(key).inRange && !m_visible.contains(key);
    m_scanning.start(m_scanTime / m_scanSteps);
    tell();
    done({});
}

void SimulatedWiFiDirect::connectPeer(const ConnectRequest &request, const Done &done)
{
    if (const Outcome refused = obstacle(); refused.error)
        return done(refused);
    if (m_group)
        return done({EBUSY, QStringLiteral("there is a connection"), {}});
    if (visibleAt(request.address).isEmpty())
        return done({ENODEV, QStringLiteral("no such peer is in sight"), {}});
    if (request.method != WpsMethod::PushButton && request.pin.isEmpty())
        return done({EINVAL, QStringLiteral("this method wants a PIN"), {}});
    // The radio cannot do both.
    m_scanning.stop();
    m_request = request;
    m_connecting.start(m_connectTime);
    tell();
    done({});
}

void SimulatedWiFiDirect::cancelConnect(const Done &done)
{
    if (!m_connecting.isActive())
        return done({EINVAL, QStringLiteral("nothing is being connected"), {}});
    m_connecting.stop();
    tell();
    done({});
}

void SimulatedWiFiDirect::startSession(const Done &done)
{
    if (!m_group)
        return done({ENONET, QStringLiteral("there is no connection"), {}});
    if (m_sessions.size() >= MaxSessions)
        return done({EMFILE, QStringLiteral("there are too many sessions"), {}});
    const QString key = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_sessions.insert(key);
    save();
    return done({0, {}, key});
}

void SimulatedWiFiDirect::stopSession(const QString &key, const Done &done)
{
    if (!m_group)
        return done({ENONET, QStringLiteral("there is no connection"), {}});
    if (!m_sessions.remove(key))
        return done({EINVAL, QStringLiteral("there is no such session"), {}});
    if (m_sessions.isEmpty())
        endGroup();
    tell();
    done({});
}

void SimulatedWiFiDirect::ipAddress(const QString &address, const Done &done)
{
    if (address.isEmpty())
        return done({EINVAL, QStringLiteral("the request has no address"), {}});
    if (m_connecting.isActive())
        return done({EBUSY, QStringLiteral("a peer is being connected"), {}});
    if (!m_group)
        return done({ENONET, QStringLiteral("there is no connection"), {}});
    for (const Member &member : m_members) {
        if (m_peers.at(member.key).peer.address.compare(address, Qt::CaseInsensitive) == 0)
            return done({0, {}, ipOf(member.host)});
    }
    return done({ENODEV, QStringLiteral("no such peer is connected"), {}});
}

std::vector<SimVerb> SimulatedWiFiDirect::verbs(const QString &)
{
    // A verb about a peer, and whoever hears of it.
    const auto aboutPeer = [this](const QString &verb, const QString &help,
                               const std::function<void(const QString &key, Known &peer)> &change) {
        return SimVerb{verb, {QStringLiteral("PEER")}, help,
            [this, change](const QStringList &words) {
                change(words[0], peerCalled(words[0]));
                tell();
            }}
            .with({}, {{QStringLiteral("PEER"), {m_keys}}});
    };
    const auto onOff = [this](const QString &verb, const QString &help, bool *what) {
        return SimVerb::onOff(
            verb, help,
            [this, what](bool on) {
                *what = on;
                if (!on)
                    switchOff();
                tell();
            },
            [what] { return *what; });
    };
    // What the phone is at without having been asked.
    const auto busy = [this](const QString &verb, const QString &help, bool *what, PhoneTimer *timer) {
        return SimVerb::onOff(
            verb, help,
            [this, what, timer](bool on) {
                *what = on;
                timer->stop();
                tell();
            },
            [what] { return *what; });
    };
    return {
        onOff(QStringLiteral("enabled"), QStringLiteral("switches Wi-Fi Direct"), &m_enabled),
        onOff(QStringLiteral("supported"), QStringLiteral("gives the phone Wi-Fi Direct, or takes it away"),
            &m_supported),
        aboutPeer(Comes, QStringLiteral("brings a peer into range; scans bring it into sight"),
            [](const QString &, Known &peer) { peer.inRange = true; }),
        aboutPeer(Goes, QStringLiteral("takes a peer out of range and sight"),
            [this](const QString &key, Known &peer) {
                peer.inRange = false;
                lose(key);
            }),
        aboutPeer(QStringLiteral("peer-joins"),
            QStringLiteral("lets a peer join the group that the phone owns"),
            [this](const QString &key, const Known &peer) {
                if (!m_group || m_group->role != Role::GroupOwner)
                    throw Error(QStringLiteral("the phone owns no group"));
                if (!peer.inRange || peer.elsewhere != Elsewhere::None || isMember(key))
                    throw Error(key + QLatin1String(" is out of range, or in a group"));
                join(key, Role::Client);
            }),
        aboutPeer(QStringLiteral("peer-leaves"), QStringLiteral("lets a peer leave the phone's group"),
            [this](const QString &key, const Known &) {
                if (!isMember(key))
                    throw Error(key + QLatin1String(" is not connected"));
                leave(key);
            }),
        {QStringLiteral("sight"), {QStringLiteral("[PEER,...]")},
            QStringLiteral("has these peers in range and sight, and no others"),
            [this](const QStringList &words) { see(peersCalled(words.value(0))); }},
        busy(QStringLiteral("scanning"), QStringLiteral("looks for peers, or ends that"), &m_looks,
            &m_scanning),
        busy(QStringLiteral("connecting"), QStringLiteral("is connecting a peer, or ends that"), &m_joins,
            &m_connecting),
        {QStringLiteral("group"), {QStringLiteral("owner|client|none"), QStringLiteral("[PEER,...]")},
            QStringLiteral("puts the phone into a group with these peers, whose owner comes first"),
            [this](const QStringList &words) { enterGroup(words[0], peersCalled(words.value(1))); }},
    };
}

QStringList SimulatedWiFiDirect::peersCalled(const QString &words)
{
    const QStringList keys = words.split(u',', Qt::SkipEmptyParts);
    for (const QString &key : keys)
        (void)peerCalled(key);
    return keys;
}

// Connections stay.
void SimulatedWiFiDirect::see(const QStringList &keys)
{
    for (auto &[key, known] : m_peers)
        known.inRange = keys.contains(key);
    if (std::exchange(m_visible, keys) != keys)
        noteDiscovery();
    tell();
}

void SimulatedWiFiDirect::enterGroup(const QString &roleWord, const QStringList &keys)
{
    static const QStringList roles{QStringLiteral("owner"), QStringLiteral("client"), QStringLiteral("none")};
    const auto place = SimArgument::oneOf(roleWord, roles);
    const Role role = place == 0 ? Role::GroupOwner : Role::Client;
    if (place == 2 ? !keys.isEmpty() : role == Role::Client && keys.isEmpty())
        throw Error(QStringLiteral("a client has peers, of which one is the owner, and 'none' has none"));
    m_connecting.stop();
    m_joins = false;
    const bool isOther = place == 2 || !m_group || m_group->role != role
        || (role == Role::Client && m_group->ownerAddress != peerCalled(keys.first()).peer.address);
    if (isOther)
        endGroup();
    if (place != 2) {
        m_group = role == Role::GroupOwner ? m_ownGroup : groupWith(peerCalled(keys.first()), role);
        m_members.removeIf([&](const Member &member) { return !keys.contains(member.key); });
    }
    for (const QString &key : keys) {
        if (!isMember(key))
            join(key, role == Role::Client && key == keys.first() ? Role::GroupOwner : Role::Client);
    }
    tell();
}

SimulatedPart::Neighbourhood SimulatedWiFiDirect::neighbourhood() const
{
    Neighbourhood around{Comes, Goes, {}};
    for (const QString &key : m_keys)
        around.neighbours.append({key, m_peers.at(key).peer.name, m_peers.at(key).inRange});
    return around;
}

SimulatedWiFiDirect::Known &SimulatedWiFiDirect::peerCalled(const QString &key)
{
    return m_peers.at(m_keys[SimArgument::oneOf(key, m_keys)]);
}

QString SimulatedWiFiDirect::visibleAt(const QString &address) const
{
    for (const QString &key : m_visible) {
        if (m_peers.at(key).peer.address.compare(address, Qt::CaseInsensitive) == 0)
            return key;
    }
    return {};
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

// What keeps the radio from anything new.
Outcome SimulatedWiFiDirect::obstacle() const
{
    if (!m_supported || !m_enabled)
        return {ENETDOWN, QStringLiteral("Wi-Fi Direct is off"), {}};
    if (m_connecting.isActive())
        return {EBUSY, QStringLiteral("a peer is being connected"), {}};
    return {};
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
    for (const QString &key : m_keys) {
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
    m_scanning.stop();
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
    if (m_connecting.isActive() && visibleAt(m_request.address) == key)
        m_connecting.stop();
    if (isMember(key))
        leave(key);
    if (m_visible.removeOne(key))
        noteDiscovery();
}

void SimulatedWiFiDirect::switchOff()
{
    m_scanning.stop();
    m_connecting.stop();
    m_looks = false;
    m_joins = false;
    endGroup();
    if (!m_visible.isEmpty())
        noteDiscovery();
    m_visible.clear();
}

void SimulatedWiFiDirect::noteDiscovery()
{
    m_lastDiscovery = QDateTime::currentSecsSinceEpoch();
}

QVariantMap SimulatedWiFiDirect::saved() const
{
    QVariantMap inRange;
    for (const auto &[key, known] : m_peers)
        inRange.insert(key, known.inRange);
    QVariantList members;
    for (const Member &member : m_members) {
        members.append(QVariantMap{{QStringLiteral("key"), member.key}, {QStringLiteral("host"), member.host},
            {QStringLiteral("owner"), member.role == Role::GroupOwner}});
    }
    QStringList sessions(m_sessions.cbegin(), m_sessions.cend());
    sessions.sort();
    QVariantMap saved{{QStringLiteral("supported"), m_supported}, {QStringLiteral("enabled"), m_enabled},
        {QStringLiteral("in-range"), inRange}, {QStringLiteral("visible"), m_visible},
        {QStringLiteral("members"), members}, {QStringLiteral("sessions"), sessions}};
    if (m_group)
        saved.insert(SavedGroup, m_group->role == Role::GroupOwner ? SavedOwner : SavedClient);
    if (m_lastDiscovery)
        saved.insert(QStringLiteral("discovery"), *m_lastDiscovery);
    return saved;
}

// A scan, or a connection that was being made, has ended with the daemon.
void SimulatedWiFiDirect::restore(const QVariantMap &saved)
{
    m_supported = saved.value(QStringLiteral("supported")).toBool();
    m_enabled = saved.value(QStringLiteral("enabled")).toBool();
    const QVariantMap inRange = saved.value(QStringLiteral("in-range")).toMap();
    for (auto &[key, known] : m_peers)
        known.inRange = inRange.value(key, known.inRange).toBool();
    m_visible.clear();
    for (const QString &key : saved.value(QStringLiteral("visible")).toStringList()) {
        if (m_peers.contains(key) && !m_visible.contains(key))
            m_visible.append(key);
    }
    m_lastDiscovery.reset();
    if (const QVariant discovery = saved.value(QStringLiteral("discovery")); discovery.isValid())
        m_lastDiscovery = discovery.toLongLong();
    restoreGroup(saved);
    tell();
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
    const QStringList sessions = saved.value(QStringLiteral("sessions")).toStringList();
    m_sessions = QSet<QString>(sessions.cbegin(), sessions.cend());
}

} // namespace oz::services
