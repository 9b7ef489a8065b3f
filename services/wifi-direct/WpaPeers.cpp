#include "wifi-direct/WpaPeers.hpp"

#include <QDBusArgument>

#include <algorithm>
#include <optional>

namespace oz::services {

namespace {

constexpr int OwnsGroup = 1; // of the group capabilities
constexpr int ButtonMethod = 0x80; // of the configuration methods, in software or in hardware
constexpr qsizetype AddressSize = 6; // bytes

QString addressText(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(':'));
}

// "7-0050F204-1", of the eight bytes of a primary device type; empty for others.
QString typeText(const QByteArray &type)
{
    if (type.size() != 8)
        return {};
    const auto number = [&](qsizetype at) {
        return QString::number(quint8(type[at]) << 8 | quint8(type[at + 1]));
    };
    return number(0) + u'-' + QString::fromLatin1(type.mid(2, 4).toHex().toUpper()) + u'-' + number(6);
}

// The name of the group that a device owns: of the network heard last in which the device says so, as groups
// that it had before may still be listed.
QString groupName(const QString &owner, const QList<QVariantMap> &networks)
{
    const QByteArray device = QByteArray::fromHex(owner.toLatin1());
    QString newest = QStringLiteral("");
    std::optional<uint> youngest;
    for (const QVariantMap &network : networks) {
        const QByteArray name = network.value(QStringLiteral("SSID")).toByteArray();
        const uint age = network.value(QStringLiteral("Age")).toUInt();
        if (!name.startsWith("DIRECT-") || (youngest && age >= *youngest)
            || !network.value(QStringLiteral("IEs")).toByteArray().contains(device))
            continue;
        youngest = age;
        newest = QString::fromUtf8(name);
    }
    return newest;
}

} // namespace

WpaPeers::WpaPeers(WpaSupplicant &supplicant) : m_supplicant(supplicant)
{
    const auto hear = [this](const char *signal, void (WpaPeers::*act)(const QString &object)) {
        m_supplicant.hear(
            {}, Wpa::P2p, QLatin1String(signal), this, [this, act](const QDBusMessage &message) {
                if (message.path() == m_supplicant.radio())
                    (this->*act)(pathOf(message.arguments().value(0)));
            });
    };
    hear("DeviceFound", &WpaPeers::onFound);
    hear("DeviceLost", &WpaPeers::onLost);
}

QList<WpaPeers::Peer> WpaPeers::inSight() const
{
    QList<Peer> peers;
    for (const Known &known : m_known)
        peers.append(known.peer);
    return peers;
}

const WpaPeers::Peer *WpaPeers::find(const QString &address) const
{
    const qsizetype index = indexOf(address);
    return index < 0 ? nullptr : &m_known[index].peer;
}

bool WpaPeers::isReachable(const QString &address) const
{
    const qsizetype index = indexOf(address);
    return index >= 0 && m_known[index].isReachable;
}

bool WpaPeers::ownsGroup(const QString &address) const
{
    const qsizetype index = indexOf(address);
    return index >= 0 && m_known[index].ownsGroup;
}

bool WpaPeers::hasPushButton(const QString &address) const
{
    const qsizetype index = indexOf(address);
    return index < 0 || m_known[index].hasPushButton;
}

QString WpaPeers::objectOf(const QString &address) const
{
    return m_supplicant.radio() + QLatin1String("/Peers/") + address.toLower().remove(u':');
}

QString WpaPeers::addressIn(const QString &object)
{
    const QByteArray bytes = QByteArray::fromHex(object.section(u'/', -1).toLatin1());
    return bytes.size() == AddressSize ? addressText(bytes) : QString();
}

qsizetype WpaPeers::indexOf(const QString &address) const
{
    const auto found = std::find_if(m_known.cbegin(), m_known.cend(),
        [&](const Known &known) { return known.peer.address.compare(address, Qt::CaseInsensitive) == 0; });
    return found == m_known.cend() ? -1 : found - m_known.cbegin();
}

void WpaPeers::readAll(const std::function<void()> &done)
{
    m_supplicant.read(
        {{m_supplicant.radio(), Wpa::P2p}}, this, [this, done](const QList<QVariantMap> &radio) {
            readPeers(pathsIn(radio[0].value(QStringLiteral("Peers"))), done);
        });
}

// Applications are told once of a peer that comes into sight, so the name of a group that it owns has to be
// known by then.
void WpaPeers::readPeers(const QStringList &objects, const std::function<void()> &done)
{
    QList<WpaSupplicant::Part> parts;
    for (const QString &object : objects)
        parts.append({object, Wpa::Peer});
    ++m_readings;
    m_supplicant.read(parts, this, [this, objects, done](const QList<QVariantMap> &all) {
        QList<Known> peers;
        for (qsizetype i = 0; i < objects.size(); ++i) {
            const auto peer = knownOf(objects[i], all[i]);
            if (peer && objects[i].startsWith(m_supplicant.radio() + u'/'))
                peers.append(*peer);
        }
        const auto takeAll = [this, peers, done](const QList<QVariantMap> &networks) {
            take(peers, networks);
            done();
            if (--m_readings == 0) {
                for (const auto &waiting : std::exchange(m_waiting, {}))
                    waiting();
            }
        };
        if (std::any_of(peers.cbegin(), peers.cend(), [](const Known &peer) { return peer.ownsGroup; }))
            readNetworks(takeAll);
        else
            takeAll({});
    });
}

void WpaPeers::afterReading(const std::function<void()> &done)
{
    if (m_readings == 0)
        done();
    else
        m_waiting.append(done);
}

void WpaPeers::readNetworks(const std::function<void(const QList<QVariantMap> &networks)> &done)
{
    m_supplicant.read(
        {{m_supplicant.radio(), Wpa::Interface}}, this, [this, done](const QList<QVariantMap> &radio) {
            QList<WpaSupplicant::Part> networks;
            for (const QString &network : pathsIn(radio[0].value(QStringLiteral("BSSs"))))
                networks.append({network, Wpa::Bss});
            m_supplicant.read(networks, this, done);
        });
}

std::optional<WpaPeers::Known> WpaPeers::knownOf(const QString &object, const QVariantMap &properties)
{
    Known known;
    known.peer.address = addressIn(object);
    if (known.peer.address.isEmpty() || properties.isEmpty())
        return std::nullopt;
    known.peer.name = properties.value(QStringLiteral("DeviceName")).toString();
    known.peer.type = typeText(properties.value(QStringLiteral("PrimaryDeviceType")).toByteArray());
    if (const QByteArray elements = properties.value(QStringLiteral("IEs")).toByteArray();
        !elements.isEmpty())
        known.peer.displayInfo = QString::fromLatin1(elements.toHex());
    const int methods = properties.value(QStringLiteral("config_method")).toInt();
    known.hasPushButton = methods == 0 || (methods & ButtonMethod);
    known.ownsGroup = properties.value(QStringLiteral("groupcapability")).toInt() & OwnsGroup;
    return known;
}

void WpaPeers::take(const QList<Known> &peers, const QList<QVariantMap> &networks)
{
    if (m_supplicant.radio().isEmpty())
        return; // it has gone meanwhile
    for (Known known : peers) {
        if (known.ownsGroup)
            known.peer.ssid = groupName(known.peer.address, networks);
        if (const qsizetype index = indexOf(known.peer.address); index >= 0)
            m_known[index] = known;
        else
            m_known.append(known);
    }
    if (peers.isEmpty())
        return;
    Q_EMIT changed();
    for (const Known &known : peers)
        Q_EMIT found(known.peer.address);
}

void WpaPeers::onFound(const QString &object)
{
    readPeers({object}, [] {});
}

void WpaPeers::onLost(const QString &object)
{
    const qsizetype index = indexOf(addressIn(object));
    if (index < 0)
        return;
    m_known[index].isReachable = false;
    if (m_isScanning)
        dropUnreachable();
}

void WpaPeers::dropUnreachable()
{
    if (m_known.removeIf([](const Known &known) { return !known.isReachable; }) > 0)
        Q_EMIT changed();
}

void WpaPeers::setUnreachable()
{
    for (Known &known : m_known)
        known.isReachable = false;
}

void WpaPeers::clear()
{
    setUnreachable();
    dropUnreachable();
}

void WpaPeers::search(Channels channels, std::chrono::seconds time, const WpaSupplicant::Answered &answered)
{
    const QVariantMap settings{{QStringLiteral("Timeout"), int(time.count())},
        {QStringLiteral("DiscoveryType"),
            channels == Channels::Every ? QStringLiteral("start_with_full") : QStringLiteral("social")}};
    m_supplicant.call(m_supplicant.radio(), Wpa::P2p, QStringLiteral("Find"), {settings}, this, answered);
}

void WpaPeers::setScanning(bool scanning)
{
    if (std::exchange(m_isScanning, scanning) && !scanning)
        dropUnreachable();
}

} // namespace oz::services
