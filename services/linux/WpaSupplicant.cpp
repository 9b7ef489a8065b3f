#include "linux/WpaSupplicant.hpp"

#include "linux/FriendlyName.hpp"
#include "linux/SysFolder.hpp"

#include <QDBusArgument>
#include <QDBusError>
#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

constexpr auto FirstRadioPause = 1s;
constexpr auto LongestRadioPause = 30s;
constexpr uint IdleGroup = 10; // seconds until a group without clients ends

const QString P2pCapability = QStringLiteral("p2p");
const QString Capabilities = QStringLiteral("Capabilities");
const QString Config = QStringLiteral("P2PDeviceConfig");
const QString State = QStringLiteral("State");
const QString DeviceName = QStringLiteral("DeviceName");

bool isEnabledBy(const QVariantMap &radio)
{
    return radio.value(State) != QLatin1String("interface_disabled");
}

// The network interfaces of radios, without those that are made for groups.
QStringList radios()
{
    const QDir interfaces(QStringLiteral("/sys/class/net"));
    QStringList radios;
    for (const QString &name : interfaces.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        if (QFileInfo::exists(interfaces.filePath(name + QLatin1String("/phy80211")))
            && !name.startsWith(u"p2p-"))
            radios.append(name);
    }
    return radios;
}

// A primary device type of Wi-Fi Protected Setup, for the kinds of chassis that hostnamed knows.
QByteArray deviceType(const QString &chassis)
{
    struct Type
    {
        char category;
        char subCategory;
    };
    static const QHash<QString, Type> types{{QStringLiteral("desktop"), {1, 1}},
        {QStringLiteral("server"), {1, 2}}, {QStringLiteral("laptop"), {1, 5}},
        {QStringLiteral("convertible"), {1, 5}}, {QStringLiteral("tablet"), {1, 9}}};
    const Type type = types.value(chassis, {10, 5}); // a smartphone
    const char bytes[] = {0, type.category, 0, 0x50, char(0xf2), 4, 0, type.subCategory};
    return {bytes, sizeof bytes};
}

} // namespace

Outcome outcomeOf(const QDBusMessage &answer)
{
    if (!isError(answer))
        return {};
    return {QDBusError(answer).type() == QDBusError::AccessDenied ? EACCES : EIO, problemOf(answer), {}};
}

QString pathOf(const QVariant &value)
{
    const QString path = value.value<QDBusObjectPath>().path();
    return path == u"/" ? QString() : path;
}

WpaSupplicant::WpaSupplicant(std::shared_ptr<SystemBus> bus, const QString &interface)
    : m_service(std::move(bus), Wpa::Name, QStringLiteral("wpasupplicant")), m_wanted(interface),
      m_interfaces(QStringLiteral("net"),
          [this] {
              if (m_radio.isEmpty() && !m_service.owner().isEmpty())
                  findRadio();
          }),
      m_again(FirstRadioPause, LongestRadioPause)
{
    m_again.callOnTimeout(this, &WpaSupplicant::findRadio);
    connect(&m_service, &BusService::appeared, this, &WpaSupplicant::findRadio);
    connect(&m_service, &BusService::vanished, this, [this] {
        m_again.stop();
        loseRadio(m_service.absence());
    });
    hear(Wpa::Root, Wpa::Name, QStringLiteral("InterfaceRemoved"), this, [this](const QDBusMessage &message) {
        if (pathOf(message.arguments().value(0)) != m_radio)
            return;
        loseRadio(m_interface + QLatin1String(" was taken from wpa_supplicant"));
        m_again.startLater();
    });
    hear({}, PropertiesInterface, QStringLiteral("PropertiesChanged"), this,
        [this](const QDBusMessage &message) {
            if (message.path() == m_radio && message.arguments().value(0) == Wpa::Interface)
                setEnabled(qdbus_cast<QVariantMap>(message.arguments().value(1)));
        });
}

void WpaSupplicant::read(const QList<Part> &parts, QObject *context,
    const std::function<void(const QList<QVariantMap> &properties)> &done)
{
    struct Reading
    {
        QList<QVariantMap> properties;
        qsizetype outstanding;
    };
    const auto reading = std::make_shared<Reading>(Reading{QList<QVariantMap>(parts.size()), parts.size()});
    if (parts.isEmpty())
        return done({});
    for (qsizetype i = 0; i < parts.size(); ++i) {
        call(parts[i].path, PropertiesInterface, QStringLiteral("GetAll"), {parts[i].interface}, context,
            [reading, i, done](const QDBusMessage &answer) {
                if (!isError(answer))
                    reading->properties[i] = qdbus_cast<QVariantMap>(answer.arguments().value(0));
                if (--reading->outstanding == 0)
                    done(reading->properties);
            });
    }
}

void WpaSupplicant::findRadio()
{
    m_again.stop();
    const QStringList all = radios();
    m_interface = m_wanted.isEmpty() ? all.value(0) : m_wanted;
    if (!all.contains(m_interface)) {
        return loseRadio(m_wanted.isEmpty() ? QStringLiteral("there is no Wi-Fi radio")
                                            : QString(QLatin1String("there is no Wi-Fi radio ") + m_wanted));
    }
    call(Wpa::Root, Wpa::Name, QStringLiteral("GetInterface"), {m_interface}, this,
        [this](const QDBusMessage &answer) {
            if (answer.errorName() == Wpa::Name + QLatin1String(".InterfaceUnknown"))
                takeUp();
            else
                onRadioFound(answer);
        });
}

void WpaSupplicant::takeUp()
{
    const QVariantMap settings{
        {QStringLiteral("Ifname"), m_interface}, {QStringLiteral("Driver"), QStringLiteral("nl80211")}};
    call(Wpa::Root, Wpa::Name, QStringLiteral("CreateInterface"), {settings}, this,
        [this](const QDBusMessage &answer) { onRadioFound(answer); });
}

void WpaSupplicant::onRadioFound(const QDBusMessage &answer)
{
    if (!isError(answer))
        return readRadio(pathOf(answer.arguments().value(0)));
    if (QDBusError(answer).type() == QDBusError::AccessDenied)
        loseRadio(QStringLiteral("wpa_supplicant refuses it: the daemon's user is not in the group netdev"));
    else if (answer.errorName() != Wpa::Name + QLatin1String(".InterfaceExists")) // somebody was first
        loseRadio(m_interface + QLatin1String(" cannot be taken up: ") + problemOf(answer));
    m_again.startLater();
}

void WpaSupplicant::readRadio(const QString &path)
{
    read({{Wpa::Root, Wpa::Name}, {path, Wpa::Interface}, {path, Wpa::P2p}}, this,
        [this, path](const QList<QVariantMap> &all) {
            const QVariantMap &radio = all[1];
            const auto modes =
                qdbus_cast<QVariantMap>(radio.value(Capabilities)).value(QStringLiteral("Modes"));
            m_canP2p = all[0].value(Capabilities).toStringList().contains(P2pCapability)
                && modes.toStringList().contains(P2pCapability);
            m_again.reset();
            m_radio = path;
            m_absence.clear();
            m_isEnabled = isEnabledBy(radio);
            const auto config = qdbus_cast<QVariantMap>(all[2].value(Config));
            // A name that somebody has given the radio stays.
            if (m_canP2p && config.value(DeviceName).toString().isEmpty())
                introduce();
            if (m_canP2p && !m_displayElements.isEmpty())
                setDisplayElements(m_displayElements);
            Q_EMIT radioChanged();
        });
}

// As peers see it.
void WpaSupplicant::introduce()
{
    describeHost(m_service.connection(), this, [this](const HostDescription &host) {
        if (m_radio.isEmpty())
            return;
        const QVariantMap settings{{DeviceName, host.name()},
            {QStringLiteral("PrimaryDeviceType"), deviceType(host.chassis)},
            {QStringLiteral("GroupIdle"), IdleGroup}};
        set(m_radio, Wpa::P2p, Config, settings);
    });
}

void WpaSupplicant::set(
    const QString &path, const QString &interface, const QString &name, const QVariant &value)
{
    call(path, PropertiesInterface, QStringLiteral("Set"),
        {interface, name, QVariant::fromValue(QDBusVariant(value))}, this, [](const QDBusMessage &) {});
}

void WpaSupplicant::setDisplayElements(const QByteArray &elements)
{
    m_displayElements = elements;
    if (!m_radio.isEmpty())
        set(Wpa::Root, Wpa::Name, QStringLiteral("WFDIEs"), elements);
}

void WpaSupplicant::loseRadio(const QString &reason)
{
    if (m_radio.isEmpty() && m_absence == reason)
        return;
    m_radio.clear();
    m_canP2p = false;
    m_isEnabled = false;
    m_absence = reason;
    Q_EMIT radioChanged();
}

QString WpaSupplicant::obstacle() const
{
    const QString folder = QLatin1String("/sys/class/net/") + m_interface;
    if (!QFileInfo::exists(folder))
        return m_interface + QLatin1String(" was removed");
    const QDir radio(folder + QLatin1String("/phy80211"));
    for (const QString &block : radio.entryList({QStringLiteral("rfkill*")}, QDir::Dirs)) {
        if (SysFolder::readFile(radio.filePath(block + QLatin1String("/hard"))) == u"1")
            return QStringLiteral("Wi-Fi is switched off by a switch of the device");
        if (SysFolder::readFile(radio.filePath(block + QLatin1String("/soft"))) == u"1")
            return QStringLiteral("Wi-Fi is blocked; `rfkill unblock wifi` allows it");
    }
    return QLatin1String("the link of ") + m_interface + QLatin1String(" is down");
}

void WpaSupplicant::setEnabled(const QVariantMap &properties)
{
    if (!properties.contains(State))
        return;
    const bool isEnabled = isEnabledBy(properties);
    if (std::exchange(m_isEnabled, isEnabled) != isEnabled)
        Q_EMIT enabledChanged();
}

} // namespace oz::services
