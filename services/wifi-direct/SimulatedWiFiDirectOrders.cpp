// The settings and verbs of the simulated Wi-Fi Direct.

#include "wifi-direct/SimulatedWiFiDirect.hpp"

namespace oz::services {

namespace {

using Group = WiFiDirectState::Group;
using Peer = WiFiDirectState::Peer;
using Role = WiFiDirectState::Role;

const QString Comes = QStringLiteral("peer-appears");
const QString Goes = QStringLiteral("peer-goes");

const char *const Password = "[ -~]{8,63}"; // a passphrase of WPA2
const char *const PasswordText = "8 to 63 characters of ASCII";

} // namespace

QStringList SimulatedWiFiDirect::methodWords()
{
    return {QStringLiteral("push-button"), QStringLiteral("random-pin"), QStringLiteral("preset-pin")};
}

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

const Settings<SimulatedWiFiDirect::Known> &SimulatedWiFiDirect::Known::table()
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

std::vector<SimVerb> SimulatedWiFiDirect::verbs(const QString &instance)
{
    // A verb about a peer, and whoever hears of it.
    const auto aboutPeer = [this](const QString &verb, const QString &help,
                               const std::function<void(const QString &key, Known &peer)> &change) {
        return SimVerb{verb, {QStringLiteral("PEER")}, help,
            [this, change](const QStringList &words) {
                change(words[0], m_peers.called(words[0]));
                tell();
            }}
            .with({}, {{QStringLiteral("PEER"), {m_peers.keys()}}});
    };
    // States that verbs set without a request.
    const auto busy = [this](const QString &verb, const QString &help, Activity *activity) {
        return SimVerb::onOff(
            verb, help,
            [this, activity](bool on) {
                activity->timer.stop();
                activity->isHeld = on;
                tell();
            },
            [activity] { return activity->isHeld; });
    };
    const QString roles = QStringLiteral("owner|client|none");
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
            [this](const QString &key, const Known &peer) { letJoin(key, peer); }),
        aboutPeer(QStringLiteral("peer-leaves"), QStringLiteral("lets a peer leave the phone's group"),
            [this](const QString &key, const Known &) {
                if (!isMember(key))
                    throw Error(key + QLatin1String(" is not connected"));
                leave(key);
            }),
        {QStringLiteral("sight"), {QStringLiteral("[PEER,...]")},
            QStringLiteral("has these peers in range and sight, and no others"),
            [this](const QStringList &words) { see(m_peers.allCalled(words.value(0))); }},
        busy(QStringLiteral("scanning"), QStringLiteral("looks for peers, or ends that"), &m_scan),
        busy(QStringLiteral("connecting"), QStringLiteral("is connecting a peer, or ends that"),
            &m_connecting),
        SimVerb{QStringLiteral("group"), {roles, QStringLiteral("[PEER,...]")},
            QStringLiteral("puts the phone into a group with these peers, whose owner comes first"),
            [this](const QStringList &words) { enterGroup(words[0], m_peers.allCalled(words.value(1))); }}
            .with({}, {{roles, {.followed = {QStringLiteral("client")}, .alone = {QStringLiteral("none")}}}}),
    };
    std::vector<SimVerb> verbs = SimulatedPart::verbs(instance);
    verbs.insert(verbs.end(), further.begin(), further.end());
    return verbs;
}

void SimulatedWiFiDirect::letJoin(const QString &key, const Known &peer)
{
    if (!m_group || m_group->role != Role::GroupOwner)
        throw Error(QStringLiteral("the phone owns no group"));
    if (!peer.inRange || peer.elsewhere != Elsewhere::None || isMember(key))
        throw Error(key + QLatin1String(" is out of range, or in a group"));
    join(key, Role::Client);
}

// Connections stay.
void SimulatedWiFiDirect::see(const QStringList &keys)
{
    m_peers.setInRange(keys);
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
    m_connecting.end();
    const bool isOther = place == 2 || !m_group || m_group->role != role
        || (role == Role::Client && m_group->ownerAddress != m_peers.called(keys.first()).peer.address);
    if (isOther)
        endGroup();
    if (place != 2) {
        m_group = role == Role::GroupOwner ? m_ownGroup : groupWith(m_peers.called(keys.first()), role);
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
    return m_peers.neighbourhood(Comes, Goes);
}

} // namespace oz::services
