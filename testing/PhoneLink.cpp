#include "PhoneLink.hpp"

#include <oz/testing/PhoneError.hpp>

#include <QMutexLocker>

namespace oz::testing {

QVariantMap PhoneLink::request(const QString &what, const QString &message, const QVariant &data) const
{
    return guarded(
        what, [&](const client::DaemonClient &daemon) { return daemon.ask(message, data).toMap(); });
}

void PhoneLink::tell(const QStringList &words)
{
    const QString order = words.join(u' ');
    if (words.size() < 2)
        fail(order, QStringLiteral("an order is a facility and a verb"));
    (void)request(order, QStringLiteral("sim"),
        QVariantMap{{QStringLiteral("facility"), words[0]}, {QStringLiteral("verb"), words[1]},
            {QStringLiteral("arguments"), words.mid(2)}});
    const QMutexLocker lock(&m_mutex);
    m_orders.append(order);
}

QStringList PhoneLink::orders() const
{
    const QMutexLocker lock(&m_mutex);
    return m_orders;
}

QVariant PhoneLink::value(const QString &name) const
{
    return request(name, QStringLiteral("value"), QVariantMap{{QStringLiteral("name"), name}})
        .value(QStringLiteral("value"));
}

void PhoneLink::fail(const QString &what, const QString &why) const
{
    throw PhoneError(what + QLatin1String(": ") + why + QLatin1String(" (the phone under ") + m_root + u')');
}

void PhoneLink::fail(const QString &what, const client::DaemonError &error) const
{
    using client::DaemonError;
    if (error.kind() == DaemonError::Refused)
        fail(what, error.text());
    if (error.kind() == DaemonError::Silent)
        fail(what, QStringLiteral("the phone does not answer"));
    fail(what, QLatin1String("the phone's services are gone: ") + error.text());
}

} // namespace oz::testing
