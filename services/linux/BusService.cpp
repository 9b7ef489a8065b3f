#include "linux/BusService.hpp"

#include <oz/Limits.hpp>

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>

#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

constexpr auto FirstStartPause = 1s;
constexpr auto LongestStartPause = 60s;

const QString BusName = QStringLiteral("org.freedesktop.DBus");
const QString BusPath = QStringLiteral("/org/freedesktop/DBus");

} // namespace

void callOnBus(const QDBusConnection &connection, const QDBusMessage &message, QObject *context,
    const BusService::Answered &done)
{
    auto *watcher =
        new QDBusPendingCallWatcher(connection.asyncCall(message, int(graceTime().count())), context);
    QObject::connect(
        watcher, &QDBusPendingCallWatcher::finished, context, [done](QDBusPendingCallWatcher *finished) {
            finished->deleteLater();
            done(finished->reply());
        });
}

QStringList pathsIn(const QVariant &value)
{
    QStringList paths;
    for (const QDBusObjectPath &path : qdbus_cast<QList<QDBusObjectPath>>(value))
        paths.append(path.path());
    return paths;
}

QString problemOf(const QDBusMessage &error)
{
    switch (QDBusError(error).type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return QStringLiteral("it does not answer");
    default:
        return error.errorMessage().isEmpty() ? error.errorName() : error.errorMessage();
    }
}

BusService::BusService(std::shared_ptr<SystemBus> bus, const QString &name, const QString &package, Life life)
    : m_bus(std::move(bus)), m_name(name), m_package(package), m_life(life),
      m_absence(name + QLatin1String(" has not answered yet")),
      m_startAgain(FirstStartPause, LongestStartPause)
{
    m_startAgain.setTimerType(Qt::VeryCoarseTimer);
    m_startAgain.callOnTimeout(this, &BusService::askToStart);
    connect(m_bus.get(), &SystemBus::connected, this, &BusService::onConnected);
    connect(m_bus.get(), &SystemBus::failed, this, [this] { setAbsent(m_bus->problem()); });
    if (m_bus->connection())
        QMetaObject::invokeMethod(this, &BusService::onConnected, Qt::QueuedConnection);
}

void BusService::call(const QString &path, const QString &interface, const QString &method,
    const QVariantList &arguments, QObject *context, const Answered &answered)
{
    // By its own name, so that an answer of its successor is none.
    QDBusMessage message = QDBusMessage::createMethodCall(m_owner, path, interface, method);
    message.setArguments(arguments);
    callOnBus(connection(), message, context, [this, owner = m_owner, answered](const QDBusMessage &answer) {
        if (owner == m_owner)
            answered(answer);
    });
}

void BusService::callBus(const QString &method, const QVariantList &arguments, const Answered &answered)
{
    QDBusMessage message = QDBusMessage::createMethodCall(BusName, BusPath, BusName, method);
    message.setArguments(arguments);
    callOnBus(connection(), message, this, [this, answered](const QDBusMessage &answer) {
        if (m_bus->connection() && m_owner.isEmpty())
            answered(answer);
    });
}

void BusService::hear(const QString &path, const QString &interface, const QString &name, QObject *context,
    const Answered &heard)
{
    m_hearings.push_back({path, interface, name, context, heard});
    if (!m_owner.isEmpty())
        subscribe(m_hearings.back(), true);
}

void BusService::subscribe(const Hearing &hearing, bool wanted)
{
    // By its own name: anybody may send such signals.
    QDBusConnection bus = connection();
    if (wanted)
        bus.connect(
            m_owner, hearing.path, hearing.interface, hearing.name, this, SLOT(onSignal(QDBusMessage)));
    else
        bus.disconnect(
            m_owner, hearing.path, hearing.interface, hearing.name, this, SLOT(onSignal(QDBusMessage)));
}

void BusService::onSignal(const QDBusMessage &message)
{
    if (message.service() != m_owner)
        return;
    const std::vector<Hearing> hearings = m_hearings;
    for (const Hearing &hearing : hearings) {
        if (hearing.context && hearing.name == message.member() && hearing.interface == message.interface()
            && (hearing.path.isEmpty() || hearing.path == message.path()))
            hearing.heard(message);
    }
}

void BusService::onConnected()
{
    if (!m_bus->connection())
        return;
    m_watcher =
        std::make_unique<QDBusServiceWatcher>(m_name, connection(), QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &owner) { onOwner(owner); });
    callBus(QStringLiteral("GetNameOwner"), {m_name}, [this](const QDBusMessage &answer) {
        if (!isError(answer))
            onOwner(answer.arguments().value(0).toString());
        else if (m_life == NeverStarted)
            setAbsent(notThere());
        else
            askToStart();
    });
}

void BusService::onOwner(const QString &owner)
{
    if (owner == m_owner)
        return;
    if (!m_owner.isEmpty())
        setAbsent(m_name + QLatin1String(" is gone from the system bus"));
    m_owner = owner;
    if (!owner.isEmpty()) {
        m_startAgain.stop();
        m_startAgain.reset();
        m_absence.clear();
        std::erase_if(m_hearings, [](const Hearing &hearing) { return !hearing.context; });
        for (const Hearing &hearing : m_hearings)
            subscribe(hearing, true);
        Q_EMIT appeared();
    } else if (m_life == Lasting && !m_startAgain.isActive()) {
        m_startAgain.startLater();
    }
}

void BusService::askToStart()
{
    if (!m_bus->connection() || !m_owner.isEmpty())
        return;
    callBus(QStringLiteral("StartServiceByName"), {m_name, 0U}, [this](const QDBusMessage &answer) {
        if (!isError(answer))
            return; // its owner is told
        QString reason = m_name + QLatin1String(" cannot be started: ") + problemOf(answer);
        if (QDBusError(answer).type() == QDBusError::ServiceUnknown) {
            // Whoever starts it then is told by the bus.
            reason = notThere();
        } else {
            m_startAgain.startLater();
        }
        setAbsent(reason);
    });
}

QString BusService::notThere() const
{
    return m_name + QLatin1String(" is not on the system bus; install or start ") + m_package;
}

void BusService::setAbsent(const QString &reason)
{
    if (!m_owner.isEmpty() && isConnected()) {
        for (const Hearing &hearing : m_hearings)
            subscribe(hearing, false);
    }
    m_owner.clear();
    m_absence = reason;
    Q_EMIT vanished();
}

} // namespace oz::services
