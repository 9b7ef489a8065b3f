#pragma once

#include "linux/SystemBus.hpp"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <QPointer>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <memory>
#include <vector>

namespace oz::services {

inline const QString PropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

/*!
 * A service of the system bus: whether it is there, and calls to it, for whose answers nobody waits. Where it
 * is not running it is asked for, as far as the bus starts it.
 */
class BusService : public QObject
{
    Q_OBJECT

public:
    enum Life {
        Lasting, //!< it is asked for again where it ends
        EndsWhenIdle, //!< which is no reason to start it again
        NeverStarted, //!< it is there or not, as the system has it
    };

    /*! By the \a name that it has on the bus, and by the Debian \a package that brings it. */
    BusService(
        std::shared_ptr<SystemBus> bus, const QString &name, const QString &package, Life life = Lasting);

    /*! Its unique name on the bus; empty while it is away. */
    [[nodiscard]] const QString &owner() const { return m_owner; }
    /*! Why it is away, in words for a person. */
    [[nodiscard]] const QString &absence() const { return m_absence; }
    [[nodiscard]] const QString &name() const { return m_name; }
    [[nodiscard]] bool isConnected() const { return m_bus->connection().has_value(); }
    /*! Only while isConnected(). */
    [[nodiscard]] QDBusConnection connection() const { return *m_bus->connection(); }

    /*! Takes the answer to a call: an error message where there is none within the time limit. */
    using Answered = std::function<void(const QDBusMessage &answer)>;
    /*!
     * Calls a method, with the grace time as limit; \a answered is called as long as \a context lives, and
     * not for a service that went meanwhile.
     */
    void call(const QString &path, const QString &interface, const QString &method,
        const QVariantList &arguments, QObject *context, const Answered &answered);

    /*! Has \a heard called for each signal \a name of \a interface at \a path, or at any path where that is
     * empty. */
    void hear(const QString &path, const QString &interface, const QString &name, QObject *context,
        const Answered &heard);

Q_SIGNALS:
    /*! It is there, for the first time or anew. */
    void appeared();
    /*! It is away, as absence() says. */
    void vanished();

private Q_SLOTS:
    void onSignal(const QDBusMessage &message);

private:
    struct Hearing
    {
        QString path;
        QString interface;
        QString name;
        QPointer<QObject> context;
        Answered heard;
    };

    void subscribe(const Hearing &hearing, bool wanted);
    void onConnected();
    void onOwner(const QString &owner);
    void askToStart();
    void setAbsent(const QString &reason);
    [[nodiscard]] QString notThere() const;
    void callBus(const QString &method, const QVariantList &arguments, const Answered &answered);

    std::shared_ptr<SystemBus> m_bus;
    QString m_name;
    QString m_package;
    Life m_life;
    QString m_owner;
    QString m_absence;
    std::vector<Hearing> m_hearings;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    RetryTimer m_startAgain;
};

/*! Calls \a done with the answer to \a message once it is there, as long as \a context lives. */
void callOnBus(const QDBusConnection &connection, const QDBusMessage &message, QObject *context,
    const BusService::Answered &done);

/*! True if the service has refused a call, or has not answered it. */
[[nodiscard]] inline bool isError(const QDBusMessage &answer)
{
    return answer.type() != QDBusMessage::ReplyMessage;
}
/*! The paths in a list of objects. */
[[nodiscard]] QStringList pathsIn(const QVariant &value);

/*! The text of an error message of the bus. */
[[nodiscard]] QString problemOf(const QDBusMessage &error);

} // namespace oz::services
