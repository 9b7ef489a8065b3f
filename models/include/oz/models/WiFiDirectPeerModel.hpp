#pragma once

#include <oz/device/WiFiDirect.hpp>
#include <oz/models/RecordModel.hpp>

namespace oz::models {

/*!
 * The Wi-Fi Direct peers that are in sight or connected. Roles:
 * - hardwareAddress: the key;
 * - name: whatever text the peer chose;
 * - deviceType: a WiFiDirectDeviceType; Unknown of one that is connected out of sight;
 * - secondaryTypes, role: WiFiDirectSecondaryDeviceTypes and a WiFiDirectRole, which are told as a peer comes
 * into sight: Unknown of one that was there before the model;
 * - inSight, connected: whether it is in sight, and whether it is connected.
 *
 * Where Wi-Fi Direct is not supported, or its object cannot be opened, at construction, the model stays empty
 * for its life.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT WiFiDirectPeerModel : public RecordModel
{
    Q_OBJECT
    /*! The object that tells of the peers, for its other properties and its requests. */
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
