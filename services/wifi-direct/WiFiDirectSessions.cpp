#include "wifi-direct/WiFiDirectSessions.hpp"

#include <QUuid>

#include <cerrno>

namespace oz::services {

namespace {

constexpr int MostSessions = 1000; // so that clients which never stop theirs cost no more than this

Outcome notConnected()
{
    return {ENONET, QStringLiteral("there is no connection"), {}};
}

} // namespace

Outcome WiFiDirectSessions::start(bool isConnected)
{
    if (!isConnected)
        return notConnected();
    if (m_keys.size() >= MostSessions)
        return {EMFILE, QStringLiteral("there are too many sessions"), {}};
    const QString key = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_keys.insert(key);
    return {0, {}, key};
}

Outcome WiFiDirectSessions::stop(bool isConnected, const QString &key)
{
    if (!isConnected)
        return notConnected();
    if (!m_keys.remove(key))
        return {EINVAL, QStringLiteral("there is no such session"), {}};
    return {};
}

QStringList WiFiDirectSessions::keys() const
{
    QStringList keys(m_keys.cbegin(), m_keys.cend());
    keys.sort();
    return keys;
}

} // namespace oz::services
