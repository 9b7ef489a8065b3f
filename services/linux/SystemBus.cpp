#include "linux/SystemBus.hpp"

#include "linux/Worker.hpp"

#include <QDBusError>

#include <atomic>
#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

constexpr auto FirstPause = 250ms;
constexpr auto LongestPause = 10s;

const QString LocalPath = QStringLiteral("/org/freedesktop/DBus/Local");
const QString LocalInterface = QStringLiteral("org.freedesktop.DBus.Local");

} // namespace

// Qt keeps a connection until it is told to drop it, also where nobody is left to take it over.
struct SystemBus::Attempt
{
    explicit Attempt(const QString &name)
        : connection(QDBusConnection::connectToBus(QDBusConnection::SystemBus, name))
    {
    }
    ~Attempt()
    {
        if (!isTaken)
            QDBusConnection::disconnectFromBus(connection.name());
    }
    Attempt(const Attempt &) = delete;
    Attempt &operator=(const Attempt &) = delete;

    [[nodiscard]] QDBusConnection takeConnection()
    {
        isTaken = true;
        return connection;
    }

    QDBusConnection connection;
    bool isTaken = false;
};

SystemBus::SystemBus()
    : m_problem(QStringLiteral("the system bus has not answered yet")), m_retry(FirstPause, LongestPause)
{
    m_retry.setTimerType(Qt::VeryCoarseTimer);
    m_retry.callOnTimeout(this, &SystemBus::tryToConnect);
    tryToConnect();
}

SystemBus::~SystemBus()
{
    if (m_connection)
        QDBusConnection::disconnectFromBus(m_connection->name());
}

void SystemBus::tryToConnect()
{
    static std::atomic<int> s_number = 0;
    const QString name = QStringLiteral("oz-system-bus-") + QString::number(++s_number);
    inWorker(
        this, [name] { return std::make_shared<Attempt>(name); },
        [this](const std::shared_ptr<Attempt> &attempt) {
            if (attempt->connection.isConnected())
                setConnection(attempt->takeConnection());
            else
                drop(QLatin1String("there is no system bus: ") + attempt->connection.lastError().message());
        });
}

void SystemBus::setConnection(const QDBusConnection &connection)
{
    m_connection = connection;
    m_problem.clear();
    m_retry.reset();
    m_connection->connect(
        {}, LocalPath, LocalInterface, QStringLiteral("Disconnected"), this, SLOT(onDisconnected()));
    Q_EMIT connected();
}

void SystemBus::onDisconnected()
{
    if (!m_connection)
        return;
    QDBusConnection::disconnectFromBus(m_connection->name());
    m_connection.reset();
    drop(QStringLiteral("the system bus is gone"));
}

void SystemBus::drop(const QString &problem)
{
    m_problem = problem;
    m_retry.startLater();
    Q_EMIT failed();
}

} // namespace oz::services
