#include "PhoneLink.hpp"

#include "PhoneSocket.hpp"

#include <oz/PpsObject.hpp>
#include <oz/testing/PhoneError.hpp>

#include <QMutexLocker>

#include <cerrno>

namespace oz::testing {

namespace {

constexpr std::chrono::seconds AnswerTime(20); // beyond what the services themselves wait

} // namespace

PhoneLink::Outcome PhoneLink::ask(
    const QString &what, const QString &message, const QVariant &data, const std::optional<Wait> &wait) const
{
    QVariantMap request{{QStringLiteral("msg"), message}};
    if (data.isValid())
        request.insert(QStringLiteral("dat"), data);
    bool ok = false;
    const QByteArray text = PpsObject::encode(request, &ok);
    if (!ok)
        fail(what, QStringLiteral("it has no text form"));
    PhoneSocket socket;
    QByteArray answer;
    int error = socket.connect(m_root + QLatin1String("/pps/system/ozdeviced/control"));
    if (!error)
        error = socket.send(text);
    if (!error) {
        const std::chrono::milliseconds limit = wait ? wait->limit : std::chrono::milliseconds(0);
        error =
            socket.receive(&answer, wait && wait->endsHere ? limit : limit + AnswerTime, wait.has_value());
    }
    if (error == ETIMEDOUT && wait && wait->endsHere)
        return {{}, ETIMEDOUT, {}};
    if (error == ETIMEDOUT)
        fail(what, QStringLiteral("the phone does not answer"));
    if (error)
        fail(what, QLatin1String("the phone's services are gone: ") + qt_error_string(error));
    const QVariantMap told = PpsObject::decode(answer, &ok).value(QStringLiteral("@control")).toMap();
    if (!ok)
        fail(what, QStringLiteral("the phone answers with what means nothing"));
    return {told.value(QStringLiteral("dat")), told.value(QStringLiteral("err")).toInt(),
        told.value(QStringLiteral("errstr")).toString()};
}

QVariantMap PhoneLink::request(const QString &what, const QString &message, const QVariant &data) const
{
    const Outcome outcome = ask(what, message, data);
    if (outcome.error)
        fail(what, outcome.errorText);
    return outcome.data.toMap();
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

} // namespace oz::testing
