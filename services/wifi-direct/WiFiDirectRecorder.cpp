#include "wifi-direct/WiFiDirectRecorder.hpp"

#include "wifi-direct/WiFiDirectState.hpp"

namespace oz::services {

namespace {

const QString Section = QStringLiteral("wifi-direct");
const QString None = QStringLiteral("none");
const QString On = QStringLiteral("on");
const QString Off = QStringLiteral("off");
const QString Owner = QStringLiteral("owner");
const QString Client = QStringLiteral("client");

QVariantList devicesIn(const QVariantMap &status, const char *list)
{
    return status.value(QLatin1String(list)).toMap().value(QStringLiteral("device_list")).toList();
}

QString text(const QVariantMap &map, const char *key)
{
    return map.value(QLatin1String(key)).toString();
}

QStringList joined(const QStringList &names)
{
    return names.isEmpty() ? QStringList() : QStringList{names.join(u',')};
}

} // namespace

QString WiFiDirectRecorder::notePeer(RecordedScript &script, const QVariantMap &map, bool isMember)
{
    const QString name = m_peers.note(script, text(map, "mac_addr"), map);
    QVariantMap peer = m_peers.of(name);
    if (const QString info = text(map, "wfd_device_info"); !info.isEmpty())
        peer.insert(QStringLiteral("display-info"), info);
    // In a group of others.
    if (!isMember && map.contains(QStringLiteral("ssid"))) {
        peer.insert(QStringLiteral("group"), Owner);
        peer.insert(QStringLiteral("ssid"), script.mask().text(QStringLiteral("DIRECT"), text(map, "ssid")));
    } else if (!isMember && map.contains(QStringLiteral("go_mac_address"))) {
        peer.insert(QStringLiteral("group"), Client);
    }
    m_peers.set(name, peer);
    return name;
}

// Notes the phone's group as the phone's file has it: the phone's own, or that of its owner.
void WiFiDirectRecorder::noteGroup(RecordedScript &script, const QVariantMap &connection, const Seen &now)
{
    const bool isOwner = now.role == Owner;
    QVariantMap owner{
        {QStringLiteral("ssid"), script.mask().text(QStringLiteral("DIRECT"), text(connection, "ssid"))},
        {QStringLiteral("password"),
            script.mask().text(QStringLiteral("password"), text(connection, "password"))}};
    if (isOwner) {
        owner.insert(QStringLiteral("address"), script.mask().address(text(connection, "go_mac_addr")));
        for (auto each = owner.cbegin(); each != owner.cend(); ++each)
            script.setInPhone(Section, each.key(), each.value());
    } else {
        QVariantMap peer = m_peers.of(now.members.value(0));
        peer.insert(owner);
        m_peers.set(now.members.value(0), peer);
    }
    script.setInPhone(
        Section, QStringLiteral("interface"), script.mask().interfaces(text(connection, "network_if")));
}

void WiFiDirectRecorder::sample(RecordedScript &script, const QStringList &)
{
    const QVariantMap told = script.told(wifiDirectFields().path());
    const QVariant availability = told.value(QStringLiteral("p2p_mgr_enabled"));
    if (!availability.isValid())
        return;
    Seen now;
    now.supported = availability.toInt() != 2;
    now.enabled = availability.toInt() == 0;
    now.scanning = told.value(QStringLiteral("scanning")).toBool();
    const QVariantMap connection = told.value(QStringLiteral("connection")).toMap();
    const QString status = text(connection, "status");
    now.connecting = status == u"connecting";
    now.role = status != u"connected" ? None : text(connection, "role") == u"GO" ? Owner : Client;
    for (const QVariant &each : devicesIn(told, "connected_devices")) {
        // The owner comes first.
        const QVariantMap map = each.toMap();
        const QString name = notePeer(script, map, true);
        now.members.insert(text(map, "role") == u"GO" ? 0 : now.members.size(), name);
    }
    for (const QVariant &each : devicesIn(told, "discovered_devices")) {
        const QVariantMap map = each.toMap();
        const QString name = m_peers.note(script, text(map, "mac_addr"), map);
        now.visible.append(notePeer(script, map, now.members.contains(name)));
    }
    if (now.role == Owner || !now.members.isEmpty())
        noteGroup(script, connection, now);
    if (script.isBeginning()) {
        script.setInPhone(Section, QStringLiteral("supported"), now.supported);
        script.setInPhone(Section, QStringLiteral("enabled"), now.enabled);
        m_before = Seen{now.supported, now.enabled};
    }
    script.setInPhone(Section, QStringLiteral("peers"), m_peers.all());
    orderChanges(script, now);
    m_before = now;
}

// In the order in which applications hear of what changes together.
void WiFiDirectRecorder::orderChanges(RecordedScript &script, const Seen &now)
{
    const auto orderWhere = [&script](bool is, const char *verb, const QStringList &arguments) {
        if (is)
            script.order(QStringList{Section, QLatin1String(verb)} + arguments);
    };
    const auto word = [](bool is) { return is ? On : Off; };
    orderWhere(now.supported != m_before.supported, "supported", {word(now.supported)});
    orderWhere(now.enabled != m_before.enabled && now.supported, "enabled", {word(now.enabled)});
    // Switching off ends everything else.
    if (!now.enabled)
        m_before = Seen{now.supported, now.enabled};
    const QStringList before = m_before.visible;
    for (const QString &name : before) {
        if (now.visible.contains(name) || now.members.contains(name) || !m_before.members.contains(name))
            continue;
        script.order({Section, QStringLiteral("peer-goes"), name});
        m_before.visible.removeAll(name);
        m_before.members.removeAll(name);
        if (m_before.members.isEmpty())
            m_before.role = None;
    }
    const bool isInOtherGroup = now.role != m_before.role || now.members != m_before.members;
    orderWhere(now.scanning != m_before.scanning, "scanning", {word(now.scanning)});
    // A group is the end of it too.
    orderWhere(now.connecting != m_before.connecting && (now.connecting || !isInOtherGroup), "connecting",
        {word(now.connecting)});
    orderWhere(isInOtherGroup, "group", QStringList{now.role} + joined(now.members));
    orderWhere(now.visible != m_before.visible, "sight", joined(now.visible));
}

} // namespace oz::services
