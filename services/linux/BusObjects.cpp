#include "linux/BusObjects.hpp"

#include <QDBusArgument>
#include <QDBusMetaType>

#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

// Between attempts to be answered.
constexpr auto Pause = 2s;

const QString ManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");

} // namespace

BusObjects::BusObjects(BusService &service, const QString &manager) : m_service(service), m_manager(manager)
{
    m_askAgain.setSingleShot(true);
    m_askAgain.setInterval(Pause);
    m_askAgain.callOnTimeout(this, &BusObjects::readAll);
    connect(&service, &BusService::appeared, this, &BusObjects::readAll);
    connect(&service, &BusService::vanished, this, &BusObjects::onVanished);
    const auto hear = [&](const QString &path, const QString &interface, const QString &name,
                          void (BusObjects::*heard)(const QDBusMessage &)) {
        service.hear(path, interface, name, this,
            [this, heard](const QDBusMessage &message) { (this->*heard)(message); });
    };
    hear({}, PropertiesInterface, QStringLiteral("PropertiesChanged"), &BusObjects::onPropertiesChanged);
    if (!manager.isEmpty()) {
        hear(manager, ManagerInterface, QStringLiteral("InterfacesAdded"), &BusObjects::onInterfacesAdded);
        hear(
            manager, ManagerInterface, QStringLiteral("InterfacesRemoved"), &BusObjects::onInterfacesRemoved);
    }
    if (!service.owner().isEmpty())
        readAll();
}

void BusObjects::onVanished()
{
    m_askAgain.stop();
    m_objects.clear();
    m_isKnown = false;
    m_asked = 0;
}

void BusObjects::readAll()
{
    if (!m_manager.isEmpty()) {
        readManager();
        return;
    }
    if (m_list)
        readList();
    const QMap<QString, Interfaces> objects = m_objects;
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        for (const QString &interface : object->keys())
            read(object.key(), interface);
    }
}

void BusObjects::readManager()
{
    ++m_asked;
    m_service.call(m_manager, ManagerInterface, QStringLiteral("GetManagedObjects"), {}, this,
        [this](const QDBusMessage &answer) {
            if (isError(answer)) {
                onFailed(answer);
                return;
            }
            m_objects.clear();
            const auto objects = qdbus_cast<QMap<QDBusObjectPath, Interfaces>>(answer.arguments().value(0));
            for (auto object = objects.begin(); object != objects.end(); ++object)
                m_objects.insert(object.key().path(), object.value());
            onAnswered();
        });
}

void BusObjects::followList(
    const QString &path, const QString &interface, const QString &method, const QStringList &interfaces)
{
    m_list = {path, interface, method, interfaces};
    if (!m_service.owner().isEmpty())
        readList();
}

void BusObjects::readList()
{
    ++m_asked;
    m_service.call(
        m_list->path, m_list->interface, m_list->method, {}, this, [this](const QDBusMessage &answer) {
            if (isError(answer)) {
                onFailed(answer);
                return;
            }
            const auto paths = qdbus_cast<QList<QDBusObjectPath>>(answer.arguments().value(0));
            for (const QDBusObjectPath &path : paths)
                follow(path.path(), m_list->interfaces);
            onAnswered();
        });
}

void BusObjects::follow(const QString &path, const QStringList &interfaces)
{
    for (const QString &interface : interfaces) {
        m_objects[path].insert(interface, {});
        read(path, interface);
    }
}

void BusObjects::forget(const QString &path)
{
    if (m_objects.remove(path) > 0 && isComplete())
        Q_EMIT changed();
}

void BusObjects::read(const QString &path, const QString &interface)
{
    ++m_asked;
    m_service.call(path, PropertiesInterface, QStringLiteral("GetAll"), {interface}, this,
        [this, path, interface](const QDBusMessage &answer) {
            const auto object = m_objects.find(path);
            const bool isFollowed = object != m_objects.end() && object->contains(interface);
            if (isError(answer) && isFollowed && QDBusError(answer).type() != QDBusError::UnknownObject) {
                onFailed(answer);
                return;
            }
            if (isFollowed && !isError(answer))
                (*object)[interface] = qdbus_cast<QVariantMap>(answer.arguments().value(0));
            onAnswered();
        });
}

void BusObjects::onAnswered()
{
    --m_asked;
    m_isKnown = true;
    if (isComplete())
        Q_EMIT changed();
}

// It is asked again for everything, as nobody knows what was missed.
void BusObjects::onFailed(const QDBusMessage &error)
{
    --m_asked;
    m_isKnown = false;
    m_askAgain.start();
    Q_EMIT failed(m_service.name() + QLatin1String(": ") + problemOf(error));
}

void BusObjects::onPropertiesChanged(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    const QString interface = arguments.value(0).toString();
    const auto object = m_objects.find(message.path());
    if (object == m_objects.end() || !object->contains(interface))
        return;
    (*object)[interface].insert(qdbus_cast<QVariantMap>(arguments.value(1)));
    if (!arguments.value(2).toStringList().isEmpty())
        read(message.path(), interface);
    else if (isComplete())
        Q_EMIT changed();
}

void BusObjects::onInterfacesAdded(const QDBusMessage &message)
{
    const auto path = message.arguments().value(0).value<QDBusObjectPath>();
    const auto interfaces = qdbus_cast<Interfaces>(message.arguments().value(1));
    for (auto interface = interfaces.begin(); interface != interfaces.end(); ++interface)
        m_objects[path.path()].insert(interface.key(), interface.value());
    if (isComplete())
        Q_EMIT changed();
}

void BusObjects::onInterfacesRemoved(const QDBusMessage &message)
{
    const auto object = m_objects.find(message.arguments().value(0).value<QDBusObjectPath>().path());
    if (object == m_objects.end())
        return;
    const QStringList interfaces = message.arguments().value(1).toStringList();
    for (const QString &interface : interfaces)
        object->remove(interface);
    if (object->isEmpty())
        m_objects.erase(object);
    if (isComplete())
        Q_EMIT changed();
}

} // namespace oz::services
