#include "device/LogindActivity.hpp"

#include <QDBusArgument>

namespace oz::services {

namespace {

const QString ManagerPath = QStringLiteral("/org/freedesktop/login1");
const QString ManagerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString SeatInterface = QStringLiteral("org.freedesktop.login1.Seat");

// Letters and digits stand for themselves in a path, all else is written in hexadecimal.
QString pathOf(const QString &seat)
{
    QString path = ManagerPath + QLatin1String("/seat/");
    const QByteArray bytes = seat.toUtf8();
    for (const char byte : bytes) {
        const bool isPlain =
            (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
        path += isPlain ? QString(QLatin1Char(byte))
                        : QStringLiteral("_%1").arg(int(uchar(byte)), 2, 16, QLatin1Char('0'));
    }
    return path;
}

bool isEmptyList(const QVariant &value)
{
    const auto list = value.value<QDBusArgument>();
    if (list.currentType() != QDBusArgument::ArrayType)
        return true;
    list.beginArray();
    return list.atEnd();
}

} // namespace

LogindActivity::LogindActivity(std::shared_ptr<SystemBus> bus, const QString &seat)
    : BusSource(std::make_shared<BusService>(std::move(bus), QStringLiteral("org.freedesktop.login1"),
        QStringLiteral("systemd (systemd-logind)"))),
      m_seat(seat.isEmpty() ? QStringLiteral("seat0") : seat), m_path(pathOf(m_seat))
{
    const auto follow = [this] { objects().follow(m_path, {SeatInterface}); };
    connect(&service(), &BusService::appeared, this, follow);
    // A seat that was not there when it was asked for.
    for (const QString &news : {QStringLiteral("SeatNew"), QStringLiteral("SeatRemoved")}) {
        service().hear(
            ManagerPath, ManagerInterface, news, this, [follow](const QDBusMessage &) { follow(); });
    }
}

void LogindActivity::readState()
{
    const QVariant isIdle = objects().property(m_path, SeatInterface, QStringLiteral("IdleHint"));
    if (!isIdle.isValid()) {
        setAbsent(QLatin1String("logind knows no seat '") + m_seat + u'\'');
        return;
    }
    if (isEmptyList(objects().property(m_path, SeatInterface, QStringLiteral("Sessions")))) {
        setAbsent(QLatin1String("there is no session on ") + m_seat);
        return;
    }
    know({!isIdle.toBool(), {}});
}

// A session has to tell a service that has just started again that it is idle.
bool LogindActivity::isIncomplete(const Activity &now, const std::optional<Activity> &before) const
{
    return before && before->isUsed == false && now.isUsed == true;
}

} // namespace oz::services
