#pragma once

#include "linux/BusObjects.hpp"

#include <QPointer>

#include <functional>

namespace oz::services {

/*!
 * NetworkManager's own Wi-Fi Direct. Where NetworkManager manages the radio it takes every group away that is
 * not its own, so that connections have to be its own.
 */
class NetworkManagerP2p : public QObject
{
    Q_OBJECT

public:
    explicit NetworkManagerP2p(std::shared_ptr<SystemBus> bus);

    /*! Follows the radio of a network \a interface. */
    void follow(const QString &interface);
    /*! True while it manages that radio. */
    [[nodiscard]] bool ownsRadio() const
    {
        return !m_interface.isEmpty() && !deviceOf(m_interface).isEmpty();
    }

    /*! Connects a peer, by push button; \a done is called with the answer. NetworkManager decides on the
     * roles. The peer sees the wireless display subelements \a elements, if any, of this device. */
    void connectPeer(const QString &address, const QString &name, const QByteArray &elements,
        QObject *context, const BusService::Answered &done);
    /*! Ends the connection, or the attempt. */
    void disconnectPeer();

Q_SIGNALS:
    /*! ownsRadio() may be another. */
    void changed();
    /*! The connection, or the attempt, has ended. */
    void ended();

private:
    [[nodiscard]] QString deviceOf(const QString &interface) const;
    void onChanged();
    void end();

    BusService m_service;
    BusObjects m_objects;
    QString m_interface;
    QString m_active; // the object of the connection; empty while there is none
    bool m_isAsked = false; // for a connection
    bool m_isUnwanted = false; // which has been cancelled meanwhile
};

} // namespace oz::services
