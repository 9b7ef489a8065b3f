#include "linux/FriendlyName.hpp"

#include <QDBusVariant>
#include <QSysInfo>

namespace oz::services {

FriendlyName::FriendlyName(std::shared_ptr<SystemBus> bus)
    : m_bus(std::move(bus)), m_text(QSysInfo::machineHostName())
{
    connect(m_bus.get(), &SystemBus::connected, this, &FriendlyName::read);
    if (m_bus->connection())
        read();
}

void FriendlyName::read()
{
    const QString name = QStringLiteral("org.freedesktop.hostname1");
    QDBusMessage message = QDBusMessage::createMethodCall(
        name, QStringLiteral("/org/freedesktop/hostname1"), PropertiesInterface, QStringLiteral("Get"));
    message.setArguments({name, QStringLiteral("PrettyHostname")});
    callOnBus(*m_bus->connection(), message, this, [this](const QDBusMessage &answer) {
        const QString pretty = answer.arguments().value(0).value<QDBusVariant>().variant().toString();
        if (!isError(answer) && !pretty.isEmpty())
            m_text = pretty;
    });
}

} // namespace oz::services
