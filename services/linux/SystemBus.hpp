#pragma once

#include "linux/RetryTimer.hpp"

#include <QDBusConnection>
#include <QObject>

#include <optional>

namespace oz::services {

/*!
 * The message bus of the system: the one that DBUS_SYSTEM_BUS_ADDRESS names, else the well-known one. It may
 * come late, stand still, or go; connecting to it takes place in a thread of its own.
 */
class SystemBus : public QObject
{
    Q_OBJECT

public:
    SystemBus();
    ~SystemBus() override;

    /*! The connection; nothing while there is none. */
    [[nodiscard]] const std::optional<QDBusConnection> &connection() const { return m_connection; }
    /*! Why there is none, in words for a person. */
    [[nodiscard]] const QString &problem() const { return m_problem; }

Q_SIGNALS:
    void connected();
    /*! There is no connection (any more), as problem() says. */
    void failed();

private Q_SLOTS:
    void onDisconnected();

private:
    struct Attempt;

    void tryToConnect();
    void setConnection(const QDBusConnection &connection);
    void drop(const QString &problem);

    std::optional<QDBusConnection> m_connection;
    QString m_problem;
    RetryTimer m_retry;
};

} // namespace oz::services
