#include "wifi-direct/SimulatedWiFiDirect.hpp"

#include "phone/ShippedPhone.hpp"

#include <QDateTime>
#include <QUuid>

#include <cerrno>

namespace oz::services {

namespace {

using Availability = WiFiDirectState::Availability;
using Group = WiFiDirectState::Group;
using Peer = WiFiDirectState::Peer;
using Role = WiFiDirectState::Role;

// In the phone's file, and of what is saved.
const QString Peers = QStringLiteral("peers");
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

QString ipOf(int host)
{
    return QLatin1String("192.168.49.") + QString::number(host);
}

const char *const Password = "[ -~]{8,63}"; // a passphrase of WPA2
const char *const PasswordText = "8 to 63 characters of ASCII";

} // namespace

const Settings<SimulatedWiFiDirect> &SimulatedWiFiDirect::table()
{
    using W = SimulatedWiFiDirect;
    using C = SettingColumns<SimulatedWiFiDirect>;
    static const auto own = [](auto member) {
        return [member](auto &part) -> auto &
        {
            return part.m_ownGroup.*member;
        };
    };
    static const Settings<SimulatedWiFiDirect> table{
        {"enabled", C::truth(&W::m_enabled), true, "whether Wi-Fi Direct is on",
            onOff("enabled", "switches Wi-Fi Direct on or off")},
        {"supported", C::truth(&W::m_supported), true, "whether the phone has Wi-Fi Direct",
            onOff("supported", "gives the phone Wi-Fi Direct, or takes it away")},
        {"address", C::hardwareAddress(own(&Group::ownerAddress)), QStringLiteral("02:00:00:00:00:01"),
            "the phone's hardware address"},
        {"interface", C::text(own(&Group::interface)), QStringLiteral("p2p0"),
            "the network interface of a group"},
        {"ssid", C::text(own(&Group::ssid)), QStringLiteral("DIRECT-oz-Kestrel"),
            "the name of groups that the phone owns"},
        {"password", C::text(own(&Group::password), Password, PasswordText).asPrivate(),
            QStringLiteral("kestrel-direct"), "the password of groups that the phone owns"},
        {"scan-seconds", C::seconds(&W::m_scanTime, 0, 3'600), 3, "how long a scan takes"},
        {"connect-seconds", C::seconds(&W::m_connectTime, 0, 3'600), 2,
            "how long it takes to connect, or to fail"},
    };
    return table;
}

const Settings<SimulatedWiFiDirect::Known> &SimulatedWiFiDirect::peerTable()
{
    using K = Known;
    using C = SettingColumns<Known>;
    static const auto of = [](auto member) {
        return [member](auto &known) -> auto &
        {
            return known.peer.*member;
        };
    };
    static const WordList<Intent> intents{
        {Intent::GroupOwner, "", "owner"}, {Intent::Client, "", "client"}, {Intent::Any, "", "any"}};
    static const WordList<Elsewhere> groups{
        {Elsewhere::None, "", "none"}, {Elsewhere::Owner, "", "owner"}, {Elsewhere::Client, "", "client"}};
    static const Settings<Known> table{
        {"name", C::text(of(&Peer::name)), QString(),
            "the name that it shows; its key in the file if left out"},
        {"address", C::hardwareAddress(of(&Peer::address)), QString(),
            "its hardware address; made of its place in the file if left out"},
        {"type", C::text(of(&Peer::type)), QStringLiteral("10-0050F204-5"),
            "its type in Wi-Fi Protected Setup: category, organisation and sub-category"},
        {"display-info", C::text(of(&Peer::displayInfo)), {},
            "its wireless display information, if it has any"},
        {"in-range", C::truth(&K::inRange).kept(), true, "whether it is in range"},
        {"wps", C::list(&K::methods, methodWords()), methodWords(),
            "the ways to secure a connection with it"},
        {"pin", C::textOrNone(&K::pin).asPrivate(), QStringLiteral("12345670"),
            "the PIN that the ways with a PIN want"},
        {"intent", C::words(&K::intent, intents), QStringLiteral("any"),
            "the role that it takes in a group; with any, the phone is client if it may be"},
        {"group", C::words(&K::elsewhere, groups), QStringLiteral("none"),
            "its role in a group of others; nobody connects with a client"},
        {"ssid", C::text(&K::ssid), QString(),
            "the name of a group that it owns; DIRECT- and its key if left out"},
        {"password", C::text(&K::password, Password, PasswordText).asPrivate(),
            QStringLiteral("direct-password"), "the password of a group that it owns"},
    };
    return table;
}

SimulatedWiFiDirect::SimulatedWiFiDirect(const JsonNode &section, SimulatedParts &phone)
    : m_scanning(phone.clock(), PhoneTimer::Repeatedly), m_connecting(phone.clock())
{
    m_ownGroup.role = Role::GroupOwner;
    m_ownGroup.ownerIpAddress = ipOf(OwnerHost);
    read(section, settings({}), {Peers});
    const JsonNode all =
        (section.contains(Peers) ? section : shippedSection(QStringLiteral("wifi-direct"))).map(Peers);
    for (const auto &member : all.members())
        readPeer(member.first, all.map(member.first));

    connect(&m_scanning, &PhoneTimer::timeout, this, &SimulatedWiFiDirect::scanFurther);
    connect(&m_connecting, &PhoneTimer::timeout, this, &SimulatedWiFiDirect::finishConnecting);
    update();
}

void SimulatedWiFiDirect::readPeer(const QString &key, const JsonNode &node)
{
    const QString address = QStringLiteral("address");
    Known known;
    std::vector<Setting> settings = peerTable().of(&known);
    const QString place = QString::number(0x100 + m_keys.size() + 1, 16).rightJustified(4, u'0');
    for (Setting &setting : settings) {
        if (setting.key == u"name")
            setting.initial = key;
        else if (setting.key == u"ssid")
            setting.initial = QString(QLatin1String("DIRECT-") + key);
        else if (setting.key == address)
            setting.initial =
                QString(QLatin1String("02:00:00:00:") + place.first(2) + u':' + place.sliced(2));
    }
    read(node, settings);
    // Whatever its case, it is one address.
    const auto isSame = [&](const QString &other) {
        return other.compare(known.peer.address, Qt::CaseInsensitive) == 0;
    };
    if (isSame(m_ownGroup.ownerAddress))
        node.fail(QStringLiteral("is the phone's own"), address);
    for (const auto &[other, peer] : m_peers) {
        if (isSame(peer.peer.address))
            node.fail(QLatin1String("is that of ") + other, address);
    }
    m_keys.append(key);
    m_peers.emplace(key, known);
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

std::vector<SimVerb> SimulatedWiFiDirect::verbs(const QString &instance)
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
    // States that verbs set without a request.
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
    const std::vector<SimVerb> further{
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
    std::vector<SimVerb> verbs = SimulatedPart::verbs(instance);
    verbs.insert(verbs.end(), further.begin(), further.end());
    return verbs;
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

// The reason why the radio takes no new request.
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

QVariantMap SimulatedWiFiDirect::saved()
{
    QVariantMap saved = SimulatedPart::saved();
    QVariantMap peers;
    for (auto &[key, known] : m_peers)
        peers.insert(key, savedOf(peerTable().of(&known)));
    QVariantList members;
    for (const Member &member : m_members) {
        members.append(QVariantMap{{QStringLiteral("key"), member.key}, {QStringLiteral("host"), member.host},
            {QStringLiteral("owner"), member.role == Role::GroupOwner}});
    }
    QStringList sessions(m_sessions.cbegin(), m_sessions.cend());
    sessions.sort();
    saved.insert({{Peers, peers}, {QStringLiteral("visible"), m_visible},
        {QStringLiteral("members"), members}, {QStringLiteral("sessions"), sessions}});
    if (m_group)
        saved.insert(SavedGroup, m_group->role == Role::GroupOwner ? SavedOwner : SavedClient);
    if (m_lastDiscovery)
        saved.insert(QStringLiteral("discovery"), *m_lastDiscovery);
    return saved;
}

// A scan, or a connection that was being made, has ended with the daemon.
void SimulatedWiFiDirect::restore(const QVariantMap &saved)
{
    const QVariantMap peers = saved.value(Peers).toMap();
    for (auto &[key, known] : m_peers)
        (void)restoreTo(peerTable().of(&known), peers.value(key).toMap());
    m_visible.clear();
    for (const QString &key : saved.value(QStringLiteral("visible")).toStringList()) {
        if (m_peers.contains(key) && !m_visible.contains(key))
            m_visible.append(key);
    }
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
    const QStringList sessions = saved.value(QStringLiteral("sessions")).toStringList();
    m_sessions = QSet<QString>(sessions.cbegin(), sessions.cend());
}

} // namespace oz::services
