#include "activity/PowerManager.hpp"

#include "core/Error.hpp"

namespace oz::services {

namespace {

constexpr QByteArrayView FollowRequest = "STATUS ";

QByteArray valueLine(const QString &value)
{
    return "status" + value.toUtf8();
}

} // namespace

PowerManager::PowerManager(ActivitySource &source)
    : m_source(source), m_statuses(source.statuses().value_or(ActivitySource::Statuses())),
      m_device(QStringLiteral("/dev/power/mgr"))
{
    connect(&source, &ActivitySource::changed, this, &PowerManager::onChanged);
    connect(&m_device, &DeviceServer::received, this, &PowerManager::onReceived);
    connect(&m_device, &DeviceServer::disconnected, this,
        [this](const DeviceServer::Client &client) { m_followed.erase(client.id); });
    Startup::serve(m_device, 0666);
}

void PowerManager::onReceived(const DeviceServer::Client &client, const QByteArray &line)
{
    if (!line.startsWith(FollowRequest)) {
        m_device.send(client.id, "error: expected 'STATUS NAME'");
        return;
    }
    const QString name = QString::fromUtf8(line.sliced(FollowRequest.size()));
    if (!m_statuses.contains(name)) {
        m_device.send(client.id, "error: no status has that name");
        return;
    }
    m_followed[client.id] = name;
    m_device.send(client.id, valueLine(m_statuses.value(name)));
}

void PowerManager::onChanged()
{
    const auto statuses = m_source.statuses();
    if (!statuses)
        return;
    const ActivitySource::Statuses before = std::exchange(m_statuses, *statuses);
    const std::map<quint64, QString> followed = m_followed;
    for (const auto &[client, name] : followed) {
        const QString value = m_statuses.value(name);
        if (value != before.value(name))
            m_device.send(client, valueLine(value));
    }
}

} // namespace oz::services
