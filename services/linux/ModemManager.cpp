#include "linux/ModemManager.hpp"

#include <oz/Limits.hpp>

#include <algorithm>
#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

// As long as nothing changes; a modem is "disabled" for up to half a second before it is what it was.
constexpr auto SettleTime = 700ms;

} // namespace

ModemManager::ModemManager(std::shared_ptr<SystemBus> bus)
    : m_service(std::move(bus), QStringLiteral(MM_DBUS_SERVICE), QStringLiteral("modemmanager")),
      m_objects(m_service, QStringLiteral(MM_DBUS_PATH))
{
    m_settling.setSingleShot(true);
    m_settling.setInterval(SettleTime);
    m_startLimit.setSingleShot(true);
    m_startLimit.setInterval(graceTime());
    const auto end = [this] {
        m_settling.stop();
        m_startLimit.stop();
        if (m_objects.isComplete())
            readState();
    };
    m_settling.callOnTimeout(this, [this, end] {
        if (isStarting() && m_startLimit.isActive())
            m_settling.start();
        else
            end();
    });
    m_startLimit.callOnTimeout(this, end);
    connect(&m_service, &BusService::appeared, this, [this] {
        m_absence.clear();
        m_settling.start();
        m_startLimit.start();
    });
    connect(&m_service, &BusService::vanished, this, [this] {
        m_settling.stop();
        m_startLimit.stop();
        m_cards.clear();
        m_absence = m_service.absence();
        Q_EMIT changed();
    });
    connect(&m_objects, &BusObjects::failed, this, [this](const QString &reason) {
        m_cards.clear();
        m_absence = reason;
        Q_EMIT changed();
    });
    connect(&m_objects, &BusObjects::changed, this, [this] {
        m_absence.clear();
        readState();
    });
}

QStringList ModemManager::modems() const
{
    QStringList paths;
    for (const QString &path : m_objects.all().keys()) {
        if (has(path, ModemInterface))
            paths.append(path);
    }
    std::sort(paths.begin(), paths.end(), [](const QString &one, const QString &other) {
        return one.section(u'/', -1).toInt() < other.section(u'/', -1).toInt();
    });
    return paths;
}

QString ModemManager::modem(const QString &wanted, const QString &present) const
{
    const QStringList paths = modems();
    if (wanted.isEmpty())
        return paths.contains(present) ? present : paths.value(0);
    for (const QString &path : paths) {
        const auto told = [&](const char *name) {
            return property(path, ModemInterface, QLatin1String(name)).toString();
        };
        const QStringList names{path.section(u'/', -1), told("PrimaryPort"), told("Device"),
            told("DeviceIdentifier"), told("EquipmentIdentifier")};
        if (names.contains(wanted))
            return path;
    }
    return {};
}

// A modem that is being looked at, or that was there and may come again.
bool ModemManager::isStarting() const
{
    const QStringList paths = modems();
    return (paths.isEmpty() && m_hadModem)
        || std::any_of(paths.begin(), paths.end(), [this](const QString &path) {
               const int state = property(path, ModemInterface, QStringLiteral("State")).toInt();
               return state == MM_MODEM_STATE_UNKNOWN || state == MM_MODEM_STATE_INITIALIZING
                   || state == MM_MODEM_STATE_ENABLING;
           });
}

void ModemManager::followCard(const QString &path)
{
    if (path.size() < 2 || m_cards.contains(path))
        return;
    m_cards.insert(path);
    m_objects.follow(path, {CardInterface});
}

void ModemManager::readState()
{
    if (m_settling.isActive()) {
        m_settling.start();
        return;
    }
    m_hadModem = !modems().isEmpty();
    // Cards that their modems have no more are of no use.
    QSet<QString> present;
    for (const QString &path : modems()) {
        const auto card =
            property(path, ModemInterface, QStringLiteral("Sim")).value<QDBusObjectPath>().path();
        present.insert(card);
        followCard(card);
    }
    const QSet<QString> gone = m_cards - present;
    m_cards &= present;
    for (const QString &card : gone)
        m_objects.forget(card);
    if (m_objects.isComplete())
        Q_EMIT changed();
}

} // namespace oz::services
