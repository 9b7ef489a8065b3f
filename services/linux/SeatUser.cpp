#include "linux/SeatUser.hpp"

#include <QDBusArgument>

#include <utility>

namespace oz::services {

namespace {

const QString LoginPath = QStringLiteral("/org/freedesktop/login1");
const QString LoginName = QStringLiteral("org.freedesktop.login1");
const QString Seat0Path = LoginPath + QLatin1String("/seat/seat0");
const QString SeatOfLogin = LoginName + QLatin1String(".Seat");
const QString SessionOfLogin = LoginName + QLatin1String(".Session");

// The object in an (so), of which "/" stands for none.
QString sessionIn(const QVariant &value)
{
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::StructureType)
        return {};
    QString name;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> name >> path;
    argument.endStructure();
    return path.path() == u"/" ? QString() : path.path();
}

// The user in a (uo).
std::optional<uid_t> userIn(const QVariant &value)
{
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::StructureType)
        return {};
    uint user = 0;
    argument.beginStructure();
    argument >> user;
    argument.endStructure();
    return uid_t(user);
}

} // namespace

SeatUser::SeatUser(std::shared_ptr<SystemBus> bus)
    : m_logind(std::move(bus), LoginName, QStringLiteral("systemd (systemd-logind)")), m_objects(m_logind)
{
    const auto follow = [this] { m_objects.follow(Seat0Path, {SeatOfLogin}); };
    connect(&m_logind, &BusService::appeared, this, follow);
    // A seat that was not there when it was asked for.
    m_logind.hear(LoginPath, LoginName + QLatin1String(".Manager"), QStringLiteral("SeatNew"), this,
        [follow](const QDBusMessage &) { follow(); });
    connect(&m_objects, &BusObjects::changed, this, &SeatUser::read);
    connect(&m_logind, &BusService::vanished, this, &SeatUser::read);
}

void SeatUser::read()
{
    const QString session =
        sessionIn(m_objects.property(Seat0Path, SeatOfLogin, QStringLiteral("ActiveSession")));
    if (const QString before = std::exchange(m_session, session); before != session) {
        if (!before.isEmpty())
            m_objects.forget(before);
        if (!session.isEmpty())
            m_objects.follow(session, {SessionOfLogin});
    }
    const auto user = session.isEmpty()
        ? std::nullopt
        : userIn(m_objects.property(session, SessionOfLogin, QStringLiteral("User")));
    m_user = user;
    Q_EMIT changed();
}

} // namespace oz::services
