#pragma once

#include <oz/device/WiFiDirect.hpp>
#include <oz/models/RecordModel.hpp>

namespace oz::models {

/*!
 * The Wi-Fi Direct peers that are in sight or connected. Roles:
 * - hardwareAddress: the key;
 * - name: a text that the peer chose;
 * - deviceType: a WiFiDirectDeviceType; Unknown for a connected peer out of sight;
 * - secondaryTypes, role: WiFiDirectSecondaryDeviceTypes and a WiFiDirectRole, which the service sends when a
 * peer comes into sight: Unknown for peers that were in sight before the model existed;
 * - inSight, connected: whether it is in sight, and whether it is connected.
 *
 * If Wi-Fi Direct is not supported at construction, or its object cannot be opened, the model stays empty for
 * its life.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT WiFiDirectPeerModel : public RecordModel
{
    Q_OBJECT
    /*! The object that follows the peers, with further properties and requests. */
    Q_PROPERTY(oz::device::WiFiDirect *wifiDirect READ wifiDirect CONSTANT FINAL)

public:
    /*! Belongs to \a parent. */
    explicit WiFiDirectPeerModel(QObject *parent = nullptr);
    ~WiFiDirectPeerModel() override;

    /*! The getter of the property. */
    [[nodiscard]] device::WiFiDirect *wifiDirect() { return &m_wifi; }

private:
    struct Discovered
    {
        device::WiFiDirectSecondaryDeviceType::Types secondaryTypes;
        device::WiFiDirectRole::Type role = device::WiFiDirectRole::Unknown;
    };
    void update();

    device::WiFiDirect m_wifi;
    QHash<QString, Discovered> m_discovered;
};

} // namespace oz::models
