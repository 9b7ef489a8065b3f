#include <oz/models/NetworkInterfaceModel.hpp>

#include <oz/device/NetworkDataUsage.hpp>

#include <net/if.h>

namespace oz::models {

using device::NetworkDataUsage;

NetworkInterfaceModel::NetworkInterfaceModel(QObject *parent)
    : ObjectModel(NetworkDataUsage::staticMetaObject, "networkInterfaceName", "networkInterfaceName", parent)
{
    connect(&m_timer, &QTimer::timeout, this, &NetworkInterfaceModel::update);
    update();
}

NetworkInterfaceModel::~NetworkInterfaceModel() = default;

void NetworkInterfaceModel::setInterval(int milliseconds)
{
    const int interval = std::max(milliseconds, 0);
    if (interval == m_interval)
        return;
    m_interval = interval;
    if (interval > 0)
        m_timer.start(interval);
    else
        m_timer.stop();
    Q_EMIT intervalChanged(interval);
}

void NetworkInterfaceModel::update()
{
    QVariantList names;
    if (struct if_nameindex *interfaces = if_nameindex()) {
        for (const struct if_nameindex *each = interfaces; each->if_index != 0; ++each)
            names.append(QString::fromLocal8Bit(each->if_name));
        if_freenameindex(interfaces);
    }
    setKeys(names);
    forEachObject([](QObject *object) { static_cast<NetworkDataUsage *>(object)->update(); });
}

std::unique_ptr<QObject> NetworkInterfaceModel::makeObject(const QVariant &key)
{
    return std::make_unique<NetworkDataUsage>(key.toString());
}

} // namespace oz::models
