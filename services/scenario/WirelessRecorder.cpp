// What the recorder writes down of the peers and sinks around, and of the connections with them.

#include "scenario/Recorder.hpp"

#include "publishing/Tree.hpp"

namespace oz::services {

namespace {

const QString WiFiDirect = QStringLiteral("wifi-direct");
const QString Miracast = QStringLiteral("miracast");
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

} // namespace

// The same device has the same address in every facility.
QString Recorder::maskedAddress(const QString &address)
{
    if (m_keepsIdentifiers || address.isEmpty())
        return address;
    const int number = masked(QStringLiteral("address"), address.toLower()).section(u'-', -1).toInt();
    return QStringLiteral("02:00:5e:00:%1:%2")
        .arg(number / 256, 2, 16, QLatin1Char('0'))
        .arg(number % 256, 2, 16, QLatin1Char('0'));
}

// The name that a device has in the phone's file, where it is noted as it is at first.
QString Recorder::noteDevice(
    QVariantMap *known, const QString &kind, const QString &address, const QVariantMap &map)
{
    const QString key = address.toLower();
    for (auto device = known->cbegin(); device != known->cend(); ++device) {
        if (m_deviceKeys.value(device.key()) == kind + key)
            return device.key();
    }
    const QString name = QStringLiteral("%1-%2").arg(kind).arg(known->size() + 1);
    m_deviceKeys.insert(name, kind + key);
    known->insert(name,
        QVariantMap{{QStringLiteral("name"), masked(kind, text(map, "name"))},
            {QStringLiteral("address"), maskedAddress(address)}, {QStringLiteral("type"), text(map, "type")},
            {QStringLiteral("in-range"), false}});
    return name;
}

QString Recorder::notePeer(const QVariantMap &map, bool isMember)
{
    const QString name = noteDevice(&m_peers, QStringLiteral("peer"), text(map, "mac_addr"), map);
    QVariantMap peer = m_peers.value(name).toMap();
    if (const QString info = text(map, "wfd_device_info"); !info.isEmpty())
        peer.insert(QStringLiteral("display-info"), info);
    // In a group of others.
    if (!isMember && map.contains(QStringLiteral("ssid"))) {
        peer.insert(QStringLiteral("group"), Owner);
        peer.insert(QStringLiteral("ssid"), masked(QStringLiteral("DIRECT"), text(map, "ssid")));
    } else if (!isMember && map.contains(QStringLiteral("go_mac_address"))) {
        peer.insert(QStringLiteral("group"), Client);
    }
    m_peers.insert(name, peer);
    return name;
}

// What the group of the phone is like, as the phone's file has it: the phone's own, or that of its owner.
void Recorder::noteGroup(const QVariantMap &connection, const WiFiDirectNow &now)
{
    QVariantMap section = m_phone.value(WiFiDirect).toMap();
    QVariantMap owner = now.role == Owner ? section : m_peers.value(now.members.value(0)).toMap();
    owner.insert(QStringLiteral("ssid"), masked(QStringLiteral("DIRECT"), text(connection, "ssid")));
    owner.insert(
        QStringLiteral("password"), masked(QStringLiteral("password"), text(connection, "password")));
    if (now.role == Owner) {
        owner.insert(QStringLiteral("address"), maskedAddress(text(connection, "go_mac_addr")));
        section = owner;
    } else {
        m_peers.insert(now.members.value(0), owner);
    }
    section.insert(QStringLiteral("interface"), text(connection, "network_if"));
    m_phone.insert(WiFiDirect, section);
}

void Recorder::recordWiFiDirect()
{
    const QVariantMap told = m_tree.told(QStringLiteral("/pps/services/wifi_p2p/manager/status"));
    const QVariant availability = told.value(QStringLiteral("p2p_mgr_enabled"));
    if (!availability.isValid())
        return;
    WiFiDirectNow now;
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
        const QString name = notePeer(map, true);
        now.members.insert(text(map, "role") == u"GO" ? 0 : now.members.size(), name);
    }
    for (const QVariant &each : devicesIn(told, "discovered_devices")) {
        const QVariantMap map = each.toMap();
        const QString name = noteDevice(&m_peers, QStringLiteral("peer"), text(map, "mac_addr"), map);
        now.visible.append(notePeer(map, now.members.contains(name)));
    }
    const auto insert = [this](const char *key, const QVariant &value) {
        QVariantMap section = m_phone.value(WiFiDirect).toMap();
        section.insert(QLatin1String(key), value);
        m_phone.insert(WiFiDirect, section);
    };
    if (now.role == Owner || !now.members.isEmpty())
        noteGroup(connection, now);
    if (m_isFirst) {
        insert("supported", now.supported);
        insert("enabled", now.enabled);
        m_wifi = WiFiDirectNow{now.supported, now.enabled};
    }
    insert("peers", m_peers);
    orderWiFiDirect(now);
    m_wifi = now;
}

// In the order in which applications hear of what changes together.
void Recorder::orderWiFiDirect(const WiFiDirectNow &now)
{
    const auto orderWhere = [this](bool is, const char *verb, const QStringList &arguments) {
        if (is)
            order(QStringList{WiFiDirect, QLatin1String(verb)} + arguments);
    };
    const auto word = [](bool is) { return is ? On : Off; };
    const auto list = [](const QStringList &names) {
        return names.isEmpty() ? QStringList() : QStringList{names.join(u',')};
    };
    orderWhere(now.supported != m_wifi.supported, "supported", {word(now.supported)});
    orderWhere(now.enabled != m_wifi.enabled && now.supported, "enabled", {word(now.enabled)});
    // That ends everything else.
    if (!now.enabled)
        m_wifi = WiFiDirectNow{now.supported, now.enabled};
    const QStringList before = m_wifi.visible;
    for (const QString &name : before) {
        if (now.visible.contains(name) || now.members.contains(name) || !m_wifi.members.contains(name))
            continue;
        order({WiFiDirect, QStringLiteral("peer-goes"), name});
        m_wifi.visible.removeAll(name);
        m_wifi.members.removeAll(name);
        if (m_wifi.members.isEmpty())
            m_wifi.role = None;
    }
    const bool isInOtherGroup = now.role != m_wifi.role || now.members != m_wifi.members;
    orderWhere(now.scanning != m_wifi.scanning, "scanning", {word(now.scanning)});
    // A group is the end of it too.
    orderWhere(now.connecting != m_wifi.connecting && (now.connecting || !isInOtherGroup), "connecting",
        {word(now.connecting)});
    orderWhere(isInOtherGroup, "group", QStringList{now.role} + list(now.members));
    orderWhere(now.visible != m_wifi.visible, "sight", list(now.visible));
}

QString Recorder::noteSink(const QVariantMap &map)
{
    return noteDevice(&m_sinks, QStringLiteral("sink"), text(map, "mac"), map);
}

void Recorder::recordMiracast()
{
    const QVariantMap status = m_tree.told(QStringLiteral("/pps/services/miracast/status"));
    if (!status.contains(QStringLiteral("service_status")))
        return;
    MiracastNow now;
    if (text(status, "service_status") == u"STOPPED")
        now.stop = std::max(text(status, "service_stop_reason").toInt(), 1);
    for (const QVariant &sink : m_tree.told(QStringLiteral("/pps/services/miracast/sinks")))
        now.visible.append(noteSink(sink.toMap()));
    const QString state = text(status, "sink_state");
    if (state != u"DISCONNECTED") {
        const QString name = noteSink(status.value(QStringLiteral("sink_device")).toMap());
        (state == u"CONNECTING" ? now.connecting : now.sink) = name;
    }
    now.isPaused = text(status, "session") == u"PAUSED";
    const QVariantMap size = status.value(QStringLiteral("sink_resolution")).toMap();
    if (!now.sink.isEmpty() && size.value(QStringLiteral("width")).toInt() > 0
        && now.sink != m_miracast.sink) {
        QVariantMap sink = m_sinks.value(now.sink).toMap();
        sink.insert(size);
        m_sinks.insert(now.sink, sink);
    }
    m_phone.insert(Miracast, QVariantMap{{QStringLiteral("sinks"), m_sinks}});
    orderMiracast(now);
    m_miracast = now;
}

void Recorder::orderMiracast(const MiracastNow &now)
{
    const QString session = QStringLiteral("session");
    if (now.stop != m_miracast.stop && now.stop != 0) {
        order({Miracast, QStringLiteral("stop"), QString::number(now.stop)});
        // That ends every connection.
        m_miracast.sink.clear();
        m_miracast.connecting.clear();
    } else if (now.stop != m_miracast.stop) {
        order({Miracast, QStringLiteral("start")});
    }
    if (now.visible != m_miracast.visible) {
        order(QStringList{Miracast, QStringLiteral("sight")}
            + (now.visible.isEmpty() ? QStringList() : QStringList{now.visible.join(u',')}));
    }
    const bool isOther = now.sink != m_miracast.sink || now.connecting != m_miracast.connecting;
    if (!now.sink.isEmpty() && (isOther || now.isPaused != m_miracast.isPaused)) {
        order({Miracast, session, now.isPaused ? QStringLiteral("paused") : QStringLiteral("playing"),
            now.sink});
    } else if (isOther && !now.connecting.isEmpty()) {
        order({Miracast, QStringLiteral("connecting"), now.connecting});
    } else if (isOther) {
        order({Miracast, session, None});
    }
}

} // namespace oz::services
