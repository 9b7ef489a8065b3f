#pragma once

#include "CastOrder.hpp"
#include "CastProcess.hpp"
#include "Elements.hpp"
#include "LineChannel.hpp"
#include "ScreenWatch.hpp"

#include <oz/DevicePathWatcher.hpp>
#include <oz/GrowingPause.hpp>

#include <QObject>

#include <memory>

namespace oz::cast {

/*!
 * Casts for the services daemon: tells it what can be cast, looks for displays, and makes one cast at a time.
 * It connects with the daemon whenever there is one. The end of that connection is the end of the cast.
 */
class Agent : public QObject
{
    Q_OBJECT

public:
    enum class Life {
        Long, //!< waits for the next daemon
        OfConnection, //!< ends with its connection
    };

    /*! \a fallback has what orders leave to this program. */
    Agent(Life life, const CastOrder &fallback, const Elements &elements);
    ~Agent() override;

    /*! Ends the cast in order, and then emits finished(). */
    void stop();

Q_SIGNALS:
    void finished(int status);

private:
    void connectToDaemon();
    void onConnected(QLocalSocket *socket);
    void onClosed(const QString &reason);
    void onMessage(const QString &kind, const QJsonObject &content);
    void cast(const QJsonObject &content);
    void probe(const QJsonObject &content);
    void onScreen();
    void sayHello();
    void tellEnd(int id, const CastEnd &end);
    void onCastEnded(const CastEnd &end);
    void tell(const QString &kind, const QJsonObject &content);
    void retry();

    const Life m_life;
    const CastOrder m_fallback;
    const Elements m_elements;
    ScreenWatch m_watch;
    DevicePathWatcher m_path;
    GrowingPause<> m_pause;
    QTimer m_again;
    std::unique_ptr<QLocalSocket> m_connecting;
    std::unique_ptr<LineChannel> m_daemon;
    std::unique_ptr<CastProcess> m_cast;
    QJsonObject m_hello;
    int m_status = -1; // with which it ends once the cast is over; negative while it does not
};

} // namespace oz::cast
