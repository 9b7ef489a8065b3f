#pragma once

#include "ChangeTable.hpp"

#include <oz/device/WiFiDirect.hpp>
#include <oz/device/WiFiDirectDeviceInfo.hpp>

#include <QMap>
#include <QVariantMap>

#include <functional>

namespace oz {
class PpsObject;
}

namespace oz::device {

class WiFiDirectPrivate : public QObject
{
    Q_OBJECT

public:
    /*! A reading's report of Wi-Fi Direct itself. */
    struct ManagerState
    {
        bool scanning = false;
        bool enabled = false;
        QDateTime lastUpdate;
    };

    /*! A reading's report of the connection. */
    struct NetworkState
    {
        WiFiDirectConnectionState::Type connectionState = WiFiDirectConnectionState::Unknown;
        QString networkInterfaceName;
        WiFiDirectRole::Type networkRole = WiFiDirectRole::Unknown;
        QString networkSsid;
        QString networkOwnerHardwareAddress;
        QString networkOwnerIpAddress;
        QString networkPassword;
    };

    /*! Peers by their hardware addresses, and these in the order of their appearance. */
    struct Peers
    {
        QStringList addresses;
        QMap<QString, WiFiDirectDeviceInfo> devices;
    };

    explicit WiFiDirectPrivate(WiFiDirect *q);

    [[nodiscard]] const ManagerState &manager() const { return *m_manager; }
    [[nodiscard]] const NetworkState &network() const { return *m_network; }
    [[nodiscard]] const Peers &visible() const { return m_visible; }
    [[nodiscard]] const Peers &connected() const { return m_connected; }

    WiFiDirectResult::Type requestStartSession();
    WiFiDirectResult::Type requestStopSession(const QString &session);

private Q_SLOTS:
    void onStatusReadyRead();

private:
    /*! True while the reading that is being announced is the last one, and the public object is there.
     */
    using IsCurrent = std::function<bool()>;

    void handleStatus();
    void handleNetworkConnection(const QVariantMap &connection);
    void handleDiscoveredDevices(const QVariantList &list, const IsCurrent &isCurrent);
    void handleConnectedDevices(const QVariantList &list, const IsCurrent &isCurrent);

    WiFiDirect *q;
    oz::PpsObject *m_status;
    Announced<ManagerState> m_manager;
    Announced<NetworkState> m_network;
    Peers m_visible;
    Peers m_connected;
    int m_readings = 0;
};

} // namespace oz::device
