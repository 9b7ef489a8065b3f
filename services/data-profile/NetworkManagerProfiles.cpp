#include "data-profile/NetworkManagerProfiles.hpp"

#include "publishing/StateStore.hpp"

#include <QDBusArgument>
#include <QRegularExpression>
#include <QTimer>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace oz::services {

namespace {

using Connection = DataProfiles::Connection;

const QString Name = QStringLiteral("org.freedesktop.NetworkManager");
const QString ManagerPath = QStringLiteral("/org/freedesktop/NetworkManager");
const QString SettingsPath = ManagerPath + QLatin1String("/Settings");
const QString ActivePath = ManagerPath + QLatin1String("/ActiveConnection/");
const QString SettingsInterface = Name + QLatin1String(".Settings");
const QString ConnectionInterface = SettingsInterface + QLatin1String(".Connection");
const QString ActiveInterface = Name + QLatin1String(".Connection.Active");
const QString DeviceInterface = Name + QLatin1String(".Device");

const QString SavedName = QStringLiteral("data-profile-users");

// NetworkManager's states of an active connection.
enum ActiveState { Activating = 1, Activated = 2, Deactivating = 3 };

// A request that fails at once still stays pending this long, so that applications see the failure.
constexpr std::chrono::milliseconds ShortestAttempt{200};

// Applications distinguish a connection that was impossible from one that failed.
int errorOf(const QDBusMessage &error)
{
    static const QStringList notPossible{Name + QLatin1String(".PermissionDenied"),
        Name + QLatin1String(".UnknownDevice"), Name + QLatin1String(".ConnectionNotAvailable"),
        Name + QLatin1String(".UnmanagedDevice"), Name + QLatin1String(".UnknownConnection"),
        Name + QLatin1String(".ConnectionNotActive"),
        QStringLiteral("org.freedesktop.DBus.Error.AccessDenied")};
    return notPossible.contains(error.errorName()) ? EACCES : EIO;
}

} // namespace

NetworkManagerProfiles::NetworkManagerProfiles(std::shared_ptr<SystemBus> bus, StateStore &store)
    : BusSource(std::make_shared<BusService>(std::move(bus), Name, QStringLiteral("network-manager"))),
      m_store(store)
{
    const QVariantMap saved = store.load(SavedName);
    for (auto profile = saved.begin(); profile != saved.end(); ++profile) {
        const QStringList users = profile->toStringList();
        m_users.insert(profile.key(), QSet<QString>(users.begin(), users.end()));
    }
    connect(&service(), &BusService::vanished, this, [this] {
        m_settings.clear();
        m_asked.clear();
        m_attempts.clear();
    });
    connect(&service(), &BusService::appeared, this, [this] { objects().follow(ManagerPath, {Name}); });
    objects().followList(
        SettingsPath, SettingsInterface, QStringLiteral("ListConnections"), {ConnectionInterface});
    service().hear(SettingsPath, SettingsInterface, QStringLiteral("NewConnection"), this,
        [this](const QDBusMessage &message) {
            objects().follow(
                message.arguments().value(0).value<QDBusObjectPath>().path(), {ConnectionInterface});
        });
    service().hear(SettingsPath, SettingsInterface, QStringLiteral("ConnectionRemoved"), this,
        [this](const QDBusMessage &message) {
            const QString path = message.arguments().value(0).value<QDBusObjectPath>().path();
            m_settings.remove(path);
            objects().forget(path);
        });
    service().hear({}, ConnectionInterface, QStringLiteral("Updated"), this,
        [this](const QDBusMessage &message) { readSettings(message.path()); });
}

QVariant NetworkManagerProfiles::ofManager(const char *name) const
{
    return objects().property(ManagerPath, Name, QLatin1String(name));
}

void NetworkManagerProfiles::readSettings(const QString &path)
{
    m_asked.insert(path);
    service().call(path, ConnectionInterface, QStringLiteral("GetSettings"), {}, this,
        [this, path](const QDBusMessage &answer) {
            m_asked.remove(path);
            // One that another user may not read is not for the applications of this one.
            m_settings.insert(
                path, !isError(answer) ? qdbus_cast<Settings>(answer.arguments().value(0)) : Settings());
            if (objects().isComplete())
                readState();
        });
}

// Connections and their devices come and go as the manager's list has them.
void NetworkManagerProfiles::followActive()
{
    QList<QString> active = pathsIn(ofManager("ActiveConnections"));
    for (const Attempt &attempt : std::as_const(m_attempts))
        active.append(attempt.active);
    const QStringList known = objects().all().keys();
    for (const QString &path : known) {
        if (path.startsWith(ActivePath) && !active.contains(path))
            objects().forget(path);
    }
    for (const QString &path : active) {
        if (!known.contains(path))
            objects().follow(path, {ActiveInterface});
        for (const QString &device :
            pathsIn(objects().property(path, ActiveInterface, QStringLiteral("Devices")))) {
            if (!known.contains(device))
                objects().follow(device, {DeviceInterface});
        }
    }
}

void NetworkManagerProfiles::beginAttempt(const QString &connection, const QString &active)
{
    m_attempts.insert(connection, {active, false});
    QTimer::singleShot(ShortestAttempt, this, [this, connection, active] {
        const auto attempt = m_attempts.find(connection);
        if (attempt == m_attempts.end() || attempt->active != active)
            return;
        attempt->hasBeenShown = true;
        if (objects().isComplete())
            readState();
    });
    objects().follow(active, {ActiveInterface});
}

// One that the manager lists is known by that list; one that failed at once may never have been there.
void NetworkManagerProfiles::endAttempts()
{
    const QList<QString> listed = pathsIn(ofManager("ActiveConnections"));
    for (auto attempt = m_attempts.begin(); attempt != m_attempts.end();) {
        const bool isOver = listed.contains(attempt->active)
            || (attempt->hasBeenShown && stateOf(attempt->active) != Activating);
        attempt = isOver ? m_attempts.erase(attempt) : std::next(attempt);
    }
}

// The name is that of an attribute and of an object.
QString NetworkManagerProfiles::nameOf(const Settings &settings) const
{
    static const QRegularExpression others(QStringLiteral("[^A-Za-z0-9_-]"));
    static const QStringList taken{QStringLiteral("data_services_status"),
        QStringLiteral("data_roaming_status"), QStringLiteral("user_enabled_data_roaming"), QString()};
    const QVariantMap connection = settings.value(QStringLiteral("connection"));
    QString name = connection.value(QStringLiteral("id")).toString().replace(others, QStringLiteral("-"));
    while (name.startsWith(u'-') || name.startsWith(u'_'))
        name.remove(0, 1);
    if (taken.contains(name) || m_connections.contains(name))
        name += u'-' + connection.value(QStringLiteral("uuid")).toString().left(8);
    return name;
}

QString NetworkManagerProfiles::activeOf(const QString &connection) const
{
    for (const QString &path : objects().all().keys()) {
        const QVariant value = objects().property(path, ActiveInterface, QStringLiteral("Connection"));
        if (value.value<QDBusObjectPath>().path() == connection)
            return path;
    }
    return {};
}

uint NetworkManagerProfiles::stateOf(const QString &active) const
{
    return objects().property(active, ActiveInterface, QStringLiteral("State")).toUInt();
}

DataProfiles::Profile NetworkManagerProfiles::profileOf(
    const QString &connection, const Settings &settings) const
{
    const QVariantMap general = settings.value(QStringLiteral("connection"));
    DataProfiles::Profile profile;
    profile.enabled = true; // there are no others
    profile.alwaysOn = general.value(QStringLiteral("autoconnect"), true).toBool();
    const bool isRestricted = !general.value(QStringLiteral("permissions")).toStringList().isEmpty();
    profile.accessControlled = isRestricted;
    profile.controlMode = isRestricted ? 0660 : 0666;
    const QString accessPoint = settings.value(QStringLiteral("gsm")).value(QStringLiteral("apn")).toString();
    if (!accessPoint.isEmpty())
        profile.accessPoint = accessPoint;
    const QString active = activeOf(connection);
    switch (stateOf(active)) {
    case Activating:
        profile.connection = Connection::Pending;
        break;
    case Deactivating: // what is on its way down is of no use any more
        profile.connection = Connection::None;
        break;
    case Activated:
        profile.connection = Connection::Established;
        break;
    default:
        profile.connection = m_attempts.contains(connection) ? Connection::Pending : Connection::None;
        break;
    }
    if (profile.connection == Connection::Established) {
        const QString device =
            pathsIn(objects().property(active, ActiveInterface, QStringLiteral("Devices"))).value(0);
        const auto of = [&](const char *name) {
            return objects().property(device, DeviceInterface, QLatin1String(name)).toString();
        };
        profile.interface = of("IpInterface").isEmpty() ? of("Interface") : of("IpInterface");
    }
    return profile;
}

void NetworkManagerProfiles::readState()
{
    endAttempts();
    followActive();
    for (const QString &path : objects().all().keys()) {
        if (objects().all().value(path).contains(ConnectionInterface) && !m_settings.contains(path)
            && !m_asked.contains(path))
            readSettings(path);
    }
    if (!objects().isComplete() || !m_asked.isEmpty())
        return;
    DataProfiles state;
    m_connections.clear();
    for (auto settings = m_settings.begin(); settings != m_settings.end(); ++settings) {
        if (settings->value(QStringLiteral("connection")).value(QStringLiteral("type"))
            != QLatin1String("gsm"))
            continue;
        const QString name = nameOf(*settings);
        m_connections.insert(name, settings.key());
        const auto profile = profileOf(settings.key(), *settings);
        // One that ended by itself has no users any more.
        const auto before = this->state();
        const bool wasConnected = before && before->profiles.value(name).connection != Connection::None;
        if (wasConnected && profile.connection == Connection::None && m_users.remove(name) > 0)
            save();
        state.profiles.insert(name, profile);
    }
    if (const QVariant isOn = ofManager("WwanEnabled"); isOn.isValid())
        state.dataOn = isOn.toBool();
    know(state);
}

// A service that has just started has not read all of its connections yet.
bool NetworkManagerProfiles::isIncomplete(
    const DataProfiles &now, const std::optional<DataProfiles> &before) const
{
    const auto isMissing = [&](const QString &profile) { return !now.profiles.contains(profile); };
    const QStringList known = before ? before->profiles.keys() : QStringList();
    return std::any_of(m_users.keyBegin(), m_users.keyEnd(), isMissing)
        || std::any_of(known.begin(), known.end(), isMissing);
}

QString NetworkManagerProfiles::addUser(const QString &profile)
{
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_users[profile].insert(id);
    save();
    return id;
}

void NetworkManagerProfiles::connectProfile(const QString &profile, const Done &done)
{
    const QString connection = m_connections.value(profile);
    if (service().owner().isEmpty() || connection.isEmpty())
        return done({ENOENT, QStringLiteral("there is no such profile"), {}});
    const uint state = stateOf(activeOf(connection));
    if (state == Activating || state == Activated)
        return done({0, {}, addUser(profile)});
    const QVariant anything = QVariant::fromValue(QDBusObjectPath(QStringLiteral("/")));
    service().call(ManagerPath, Name, QStringLiteral("ActivateConnection"),
        {QVariant::fromValue(QDBusObjectPath(connection)), anything, anything}, this,
        [this, profile, connection, done](const QDBusMessage &answer) {
            if (isError(answer))
                return done({errorOf(answer), problemOf(answer), {}});
            beginAttempt(connection, answer.arguments().value(0).value<QDBusObjectPath>().path());
            done({0, {}, addUser(profile)});
        });
}

void NetworkManagerProfiles::disconnectProfile(
    const QString &profile, const QString &connectionId, const Done &done)
{
    const auto users = m_users.find(profile);
    if (users == m_users.end() || !users->remove(connectionId))
        return done({EINVAL, QStringLiteral("this profile has no such connection"), {}});
    save();
    const QString active = activeOf(m_connections.value(profile));
    if (!users->isEmpty() || active.isEmpty())
        return done({});
    service().call(ManagerPath, Name, QStringLiteral("DeactivateConnection"),
        {QVariant::fromValue(QDBusObjectPath(active))}, this, [done](const QDBusMessage &answer) {
            if (!isError(answer))
                done({});
            else
                done({errorOf(answer), problemOf(answer), {}});
        });
}

void NetworkManagerProfiles::save()
{
    QVariantMap saved;
    for (auto profile = m_users.begin(); profile != m_users.end(); ++profile)
        saved.insert(profile.key(), QStringList(profile->begin(), profile->end()));
    m_store.save(SavedName, saved);
}

} // namespace oz::services
