#include "wifi-direct/NetworkManagerP2p.hpp"

#include <QDBusArgument>
#include <QDBusMetaType>

namespace oz::services {

namespace {

const QString ManagerName = QStringLiteral("org.freedesktop.NetworkManager");
const QString ManagerObject = QStringLiteral("/org/freedesktop/NetworkManager");
const QString RadioInterface = ManagerName + QLatin1String(".Device");
const QString ConnectionInterface = ManagerName + QLatin1String(".Connection.Active");
const QString P2pPrefix =
    QStringLiteral("p2p-dev-"); // of the interface that stands for a radio's Wi-Fi Direct

constexpr uint PushButton = 4; // of the methods of Wi-Fi Protected Setup
constexpr uint Deactivated = 4; // of the states of a connection

} // namespace

NetworkManagerP2p::NetworkManagerP2p(std::shared_ptr<SystemBus> bus)
    : m_service(std::move(bus), ManagerName, QStringLiteral("network-manager"), BusService::NeverStarted),
      m_objects(m_service)
{
    qDBusRegisterMetaType<BusObjects::Interfaces>(); // the form of its settings, too
    m_objects.followList(ManagerObject, ManagerName, QStringLiteral("GetDevices"), {RadioInterface});
    m_service.hear(
        ManagerObject, ManagerName, QStringLiteral("DeviceAdded"), this, [this](const QDBusMessage &message) {
            m_objects.follow(message.arguments().value(0).value<QDBusObjectPath>().path(), {RadioInterface});
        });
    m_service.hear(ManagerObject, ManagerName, QStringLiteral("DeviceRemoved"), this,
        [this](const QDBusMessage &message) {
            m_objects.forget(message.arguments().value(0).value<QDBusObjectPath>().path());
            Q_EMIT changed();
        });
    connect(&m_objects, &BusObjects::changed, this, &NetworkManagerP2p::onChanged);
    connect(&m_service, &BusService::vanished, this, [this] {
        end();
        Q_EMIT changed();
    });
}

void NetworkManagerP2p::follow(const QString &interface)
{
    m_interface = interface;
    Q_EMIT changed();
}

// The object of a device that it manages; empty where there is none.
QString NetworkManagerP2p::deviceOf(const QString &interface) const
{
    const auto &objects = m_objects.all();
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        const QVariantMap device = object->value(RadioInterface);
        if (device.value(QStringLiteral("Interface"))
                == interface && device.value(QStringLiteral("Managed")).toBool())
            return object.key();
    }
    return {};
}

void NetworkManagerP2p::onChanged()
{
    if (!m_active.isEmpty()) {
        const QVariant state = m_objects.property(m_active, ConnectionInterface, QStringLiteral("State"));
        if (!state.isValid() || state.toUInt() == Deactivated)
            end();
    }
    Q_EMIT changed();
}

void NetworkManagerP2p::connectPeer(const QString &address, const QString &name, const QByteArray &elements,
    QObject *context, const BusService::Answered &done)
{
    BusObjects::Interfaces settings{
        {QStringLiteral("connection"),
            {{QStringLiteral("type"), QStringLiteral("wifi-p2p")}, {QStringLiteral("id"), name},
                {QStringLiteral("autoconnect"), false}}},
        {QStringLiteral("wifi-p2p"),
            {{QStringLiteral("peer"), address.toUpper()}, {QStringLiteral("wps-method"), PushButton}}}};
    if (!elements.isEmpty())
        settings[QStringLiteral("wifi-p2p")].insert(QStringLiteral("wfd-ies"), elements);
    // Nothing of it stays.
    const QVariantMap options{{QStringLiteral("persist"), QStringLiteral("volatile")}};
    m_isAsked = true;
    m_isUnwanted = false;
    m_service.call(ManagerObject, ManagerName, QStringLiteral("AddAndActivateConnection2"),
        {QVariant::fromValue(settings),
            QVariant::fromValue(QDBusObjectPath(deviceOf(P2pPrefix + m_interface))),
            QVariant::fromValue(QDBusObjectPath(QStringLiteral("/"))), options},
        this, [this, done, caller = QPointer<QObject>(context)](const QDBusMessage &answer) {
            m_isAsked = false;
            if (!isError(answer)) {
                m_active = answer.arguments().value(1).value<QDBusObjectPath>().path();
                m_objects.follow(m_active, {ConnectionInterface});
                if (m_isUnwanted)
                    disconnectPeer();
            }
            if (caller)
                done(answer);
        });
}

void NetworkManagerP2p::disconnectPeer()
{
    m_isUnwanted = m_isAsked;
    if (!m_active.isEmpty()) {
        m_service.call(ManagerObject, ManagerName, QStringLiteral("DeactivateConnection"),
            {QVariant::fromValue(QDBusObjectPath(m_active))}, this, [](const QDBusMessage &) {});
    }
}

void NetworkManagerP2p::end()
{
    m_isAsked = false;
    if (m_active.isEmpty())
        return;
    m_objects.forget(m_active);
    m_active.clear();
    Q_EMIT ended();
}

} // namespace oz::services
