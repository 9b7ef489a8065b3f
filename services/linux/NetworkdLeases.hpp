#pragma once

#include "linux/BusService.hpp"

#include <QMap>

namespace oz::services {

/*! The IPv4 addresses that the DHCP server of systemd-networkd has given on one network interface. */
class NetworkdLeases : public QObject
{
    Q_OBJECT

public:
    explicit NetworkdLeases(std::shared_ptr<SystemBus> bus);

    /*! Why there are none, in words for a person; empty while systemd-networkd runs. */
    [[nodiscard]] const QString &absence() const { return m_networkd.absence(); }
    /*! Follows the leases on an \a interface; none where that is empty. */
    void follow(const QString &interface);
    /*! Reads the leases of the interface anew. */
    void read();
    /*! The address of the client with this hardware address; empty where it has none. */
    [[nodiscard]] QString addressOf(const QString &hardware) const
    {
        return m_leases.value(hardware.toLower());
    }

Q_SIGNALS:
    void changed();
    /*! absence() is another. */
    void presenceChanged();

private:
    BusService m_networkd;
    QString m_link; // the object of the interface; empty while none is followed
    QMap<QString, QString> m_leases; // by hardware address
};

} // namespace oz::services
