#pragma once

#include "core/Mishaps.hpp"

#include <QList>
#include <QObject>
#include <QSize>
#include <QString>

#include <functional>
#include <optional>

namespace oz::services {

/*! Wireless displays around the device, and the session with one, whoever knows them. */
class MiracastSource : public QObject
{
    Q_OBJECT

public:
    enum class Connection { Disconnected, Connecting, Connected };
    enum class Session { Stopped, Playing, Paused };

    /*! What becomes of a request, as its clients know it. */
    enum Code {
        Success = 0,
        PinRequired = -1000,
        PinIncorrect = -1001,
        SinkLost = -1002, //!< while it was being connected
        SinkRefused = -1003,
        InvalidRequest = -1005,
        Cancelled = -1007,
        WiFiFailed = -1008,
        SinkNotFound = -1009,
        ServiceFailed = -1010,
        ForbiddenByPolicy = -1012,
    };

    /*! Why the service has stopped, as its clients know it: 0 to 9, of which 6 to 9 are of Wi-Fi Direct. */
    enum StopReason {
        NotStopped = 0,
        StoppedInternally = 1,
        StoppedByApplication = 2,
        NotSupported = 4,
        StoppedByPolicy = 5,
        StoppedByWiFi = 6,
        LastStopReason = 9,
    };

    struct Sink
    {
        QString name; //!< any text
        QString address; //!< of its hardware
        QString type; //!< primary device type of Wi-Fi Protected Setup: "7-0050F204-1"
    };

    /*! The application that the service is for. */
    struct Application
    {
        QString name;
        bool persistent = false; //!< whether it is kept when the service is shut down
    };

    struct State
    {
        Sink sink; //!< that is connected or being connected; empty texts for none
        Connection connection = Connection::Disconnected;
        Session session = Session::Stopped;
        QString sessionId; //!< empty for none
        QSize resolution{0, 0}; //!< pixels, of the session; 0 for none
        int stopReason = NotStopped; //!< the service runs with NotStopped
        std::optional<Application> application;
        QList<Sink> sinks; //!< in sight, as the last scan found them
    };

    /*! Takes the Code of a request, once, now or later. */
    using Done = std::function<void(int code)>;

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;
    virtual void scan(const Done &done) = 0;
    virtual void connectSink(const QString &address, const QString &pin, const Done &done) = 0;
    virtual void disconnectSink(const Done &done) = 0;
    virtual void pause(const Done &done) = 0;
    virtual void resume(const Done &done) = 0;
    virtual void shutdown(const Done &done) = 0;
    virtual void warmUp(const Application &application, const Done &done) = 0;
    /*! What goes wrong with the request \a message that has come, where that can be arranged. */
    [[nodiscard]] virtual std::optional<Mishap> takeMishap(const QString & /*message*/) { return {}; }

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
