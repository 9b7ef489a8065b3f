#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QString>

namespace oz::device {

struct NetworkDataUsagePrivate;

/*!
 * The traffic of one network interface, such as "rmnet0": packets and bytes since the interface came up.
 *
 * The counters are 0 until update() reads them, and stay as they are until it reads them again. They go
 * together with the name: another name begins with 0.
 *
 * Source: the kernel's 64-bit counters of the interface; they need no service.
 *
 * Use an instance on the thread that created it, and do not move it to another. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT NetworkDataUsage : public QObject
{
    Q_OBJECT
    /*! The interface's name; empty for none. The kernel's names have at most 15 bytes, of which only those
     * are looked up. */
    Q_PROPERTY(QString networkInterfaceName READ networkInterfaceName WRITE setNetworkInterfaceName NOTIFY
            networkInterfaceNameChanged FINAL)
    /*! Packets received; 0 before the first successful update(). */
    Q_PROPERTY(quint64 packetsReceived READ packetsReceived NOTIFY packetsReceivedChanged FINAL)
    /*! Bytes received; 0 before the first successful update(). */
    Q_PROPERTY(quint64 bytesReceived READ bytesReceived NOTIFY bytesReceivedChanged FINAL)
    /*! Packets sent; 0 before the first successful update(). */
    Q_PROPERTY(quint64 packetsSent READ packetsSent NOTIFY packetsSentChanged FINAL)
    /*! Bytes sent; 0 before the first successful update(). */
    Q_PROPERTY(quint64 bytesSent READ bytesSent NOTIFY bytesSentChanged FINAL)

public:
    /*! No interface. */
    explicit NetworkDataUsage(QObject *parent = nullptr);
    /*! The interface called \a networkInterfaceName. */
    explicit NetworkDataUsage(const QString &networkInterfaceName, QObject *parent = nullptr);
    ~NetworkDataUsage() override;

    /*! The getter of the property. */
    [[nodiscard]] QString networkInterfaceName() const;
    /*! Turns to another interface. Counters that were not 0 are announced first, the name last. */
    void setNetworkInterfaceName(const QString &networkInterfaceName);
    //!@{
    /*! The getter of the property. */
    [[nodiscard]] quint64 packetsReceived() const;
    [[nodiscard]] quint64 bytesReceived() const;
    [[nodiscard]] quint64 packetsSent() const;
    [[nodiscard]] quint64 bytesSent() const;
    //!@}

public Q_SLOTS:
    /*! Reads the counters; false, after a warning, where that fails, and the counters stay as they were. */
    bool update();

Q_SIGNALS:
    //!@{
    /*!
     * The property of this name has changed. An update announces the counters in the order of this list; a
     * new name comes after them.
     */
    void networkInterfaceNameChanged(QString networkInterfaceName);
    void packetsReceivedChanged(quint64 packetsReceived);
    void bytesReceivedChanged(quint64 bytesReceived);
    void packetsSentChanged(quint64 packetsSent);
    void bytesSentChanged(quint64 bytesSent);
    //!@}

private:
    NetworkDataUsagePrivate *d;
};

} // namespace oz::device
