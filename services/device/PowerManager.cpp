#include "device/PowerManager.hpp"

namespace oz::services {

namespace {

constexpr QByteArrayView FollowRequest = "STATUS ";

QByteArray valueLine(const QString &value)
{
    return "status" + value.toUtf8();
}

QString userActivity(const Activity &activity)
{
    return activityFields().attributes(activity).value(UserActivity).toString();
}

} // namespace

class PowerManager::Device final : public TreeObject
{
public:
    explicit Device(Tree &tree) : TreeObject(tree, activityFields().path()), server(path()) { }
    void start() { attempt(); }

    DeviceServer server;

private:
    Failure put() override
    {
        if (server.isListening() || server.listen(0666))
            return {};
        return {server.error(), server.errorString()};
    }
};

PowerManager::PowerManager(const QString &facility, ActivitySource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_device(std::make_unique<Device>(tree))
{
    connect(&m_device->server, &DeviceServer::connected, this,
        [this] { Q_EMIT this->tree().opened(m_device->path()); });
    connect(&m_device->server, &DeviceServer::received, this, &PowerManager::onReceived);
    connect(&m_device->server, &DeviceServer::disconnected, this,
        [this](const DeviceServer::Client &client) { m_followed.erase(client.id); });
    follow();
    m_device->start();
}

PowerManager::~PowerManager() = default;

void PowerManager::publishState(const Activity &state)
{
    Statuses statuses = state.others;
    if (!statuses.contains(UserActivity)) // as a device may put it in words of its own
        statuses.insert(UserActivity, userActivity(state));
    become(statuses);
}

void PowerManager::publishAbsence()
{
    become({{UserActivity, userActivity({})}});
}

void PowerManager::onReceived(const DeviceServer::Client &client, const QByteArray &line)
{
    DeviceServer &device = m_device->server;
    Q_EMIT tree().asked(m_device->path(), {});
    if (!line.startsWith(FollowRequest)) {
        device.send(client.id, "error: expected 'STATUS NAME'");
        return;
    }
    follow(client.id, QString::fromUtf8(line.sliced(FollowRequest.size())));
}

void PowerManager::follow(quint64 client, const QString &name)
{
    // Before anything is known, or known to be unknown, nobody is told what might not be true.
    if (!m_statuses.isEmpty() && !m_statuses.contains(name)) {
        m_device->server.send(client, "error: no status has that name");
        return;
    }
    if (m_followed.emplace(client, name).second)
        m_device->server.hold(client);
    m_followed[client] = name;
    if (!m_statuses.isEmpty())
        m_device->server.send(client, valueLine(m_statuses.value(name)));
}

void PowerManager::become(const Statuses &statuses)
{
    const Statuses before = std::exchange(m_statuses, statuses);
    tree().tell(m_device->path(), {{UserActivity, statuses.value(UserActivity)}});
    const std::map<quint64, QString> followed = m_followed;
    for (const auto &[client, name] : followed) {
        if (before.isEmpty())
            follow(client, name);
        else if (m_statuses.value(name) != before.value(name))
            m_device->server.send(client, valueLine(m_statuses.value(name)));
    }
}

} // namespace oz::services
