#include "linux/FriendlyName.hpp"

#include <QDBusArgument>
#include <QSysInfo>

namespace oz::services {

QString HostDescription::name() const
{
    return prettyName.isEmpty() ? QSysInfo::machineHostName() : prettyName;
}

void describeHost(const QDBusConnection &connection, QObject *context,
    const std::function<void(const HostDescription &host)> &done)
{
    const QString name = QStringLiteral("org.freedesktop.hostname1");
    QDBusMessage message = QDBusMessage::createMethodCall(
        name, QStringLiteral("/org/freedesktop/hostname1"), PropertiesInterface, QStringLiteral("GetAll"));
    message.setArguments({name});
    callOnBus(connection, message, context, [done](const QDBusMessage &answer) {
        const auto host =
            isError(answer) ? QVariantMap() : qdbus_cast<QVariantMap>(answer.arguments().value(0));
        done({host.value(QStringLiteral("PrettyHostname")).toString(),
            host.value(QStringLiteral("Chassis")).toString()});
    });
}

FriendlyName::FriendlyName(std::shared_ptr<SystemBus> bus) : m_bus(std::move(bus))
{
    connect(m_bus.get(), &SystemBus::connected, this, &FriendlyName::read);
    if (m_bus->connection())
        read();
}

void FriendlyName::read()
{
    describeHost(*m_bus->connection(), this, [this](const HostDescription &host) {
        if (!host.prettyName.isEmpty())
            m_host = host;
    });
}

} // namespace oz::services
