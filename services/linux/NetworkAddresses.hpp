#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <memory>

struct mnl_socket;

namespace oz::services {

/*!
 * The IPv4 addresses of the network interfaces, the gateways of their routes and the neighbours on their
 * links, as the kernel has them (rtnetlink). Addresses are texts such as "192.168.49.1", empty where there is
 * none.
 */
class NetworkAddresses : public QObject
{
    Q_OBJECT

public:
    NetworkAddresses();
    ~NetworkAddresses() override;

    /*! The address of an \a interface itself. */
    [[nodiscard]] static QString own(const QString &interface);
    /*! The gateway of the default route over an \a interface. */
    [[nodiscard]] static QString gateway(const QString &interface);
    /*! The neighbour on the link of an \a interface that has the hardware address \a hardware. */
    [[nodiscard]] static QString neighbour(const QString &interface, const QString &hardware);
    /*! The hardware address, "02:00:00:00:00:01", of the neighbour on any link that has the \a address. */
    [[nodiscard]] static QString hardwareOf(const QString &address);

Q_SIGNALS:
    /*! Some of it may have changed. */
    void changed();

private:
    void onReadable();

    std::unique_ptr<mnl_socket, int (*)(mnl_socket *)> m_socket;
    std::unique_ptr<QSocketNotifier> m_readable;
    QTimer m_soon; // changes come in bursts
};

/*! "192.168.49.1", of the four bytes of an address; empty for others. */
[[nodiscard]] QString ipv4Text(const QByteArray &bytes);
/*! True for a text such as "192.168.49.1". */
[[nodiscard]] bool isIpv4(const QString &text);

} // namespace oz::services
