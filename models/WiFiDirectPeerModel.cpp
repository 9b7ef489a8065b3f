#include <oz/models/WiFiDirectPeerModel.hpp>

namespace oz::models {

using device::WiFiDirect;
using device::WiFiDirectDeviceType;
using device::WiFiDirectIntent;
using device::WiFiDirectRole;
using device::WiFiDirectSecondaryDeviceType;

WiFiDirectPeerModel::WiFiDirectPeerModel(QObject *parent)
    : RecordModel({"hardwareAddress", "name", "deviceType", "secondaryTypes", "role", "inSight", "connected"},
        "name", parent)
{
    connect(&m_wifi,
        qOverload<QString, QString, WiFiDirectDeviceType::Type, WiFiDirectSecondaryDeviceType::Types,
            WiFiDirectRole::Type>(&WiFiDirect::deviceDiscovered),
        this,
        [this](const QString &, const QString &address, WiFiDirectDeviceType::Type,
            WiFiDirectSecondaryDeviceType::Types secondaryTypes, WiFiDirectRole::Type role) {
            m_discovered.insert(address, {secondaryTypes, role});
            update();
        });
    connect(&m_wifi, &WiFiDirect::deviceLost, this, [this](const QString &address) {
        m_discovered.remove(address);
        update();
    });
    connect(&m_wifi,
        qOverload<QString, QString, WiFiDirectDeviceType::Type, QString, WiFiDirectIntent::Type>(
            &WiFiDirect::deviceConnected),
        this, &WiFiDirectPeerModel::update);
    connect(&m_wifi, &WiFiDirect::deviceDisconnected, this, &WiFiDirectPeerModel::update);
    update();
}

WiFiDirectPeerModel::~WiFiDirectPeerModel() = default;

void WiFiDirectPeerModel::update()
{
    const QStringList visible = m_wifi.visibleDevices();
    const QStringList connected = m_wifi.connectedDevices();
    QList<Record> peers;
    for (const QString &address : visible + connected) {
        const Discovered discovered = m_discovered.value(address);
        peers.append(
            {address, m_wifi.name(address), m_wifi.deviceType(address), int(discovered.secondaryTypes),
                discovered.role, visible.contains(address), connected.contains(address)});
    }
    setRecords(peers);
}

} // namespace oz::models
