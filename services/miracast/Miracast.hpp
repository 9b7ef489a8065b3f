#pragma once

#include "display/Displays.hpp"
#include "hardware/Hardware.hpp"
#include "source/Source.hpp"
#include "table/AskedRequest.hpp"

#include <QList>
#include <QSize>

namespace oz::services {

struct MiracastState
{
    enum class Connection { Disconnected, Connecting, Connected };
    enum class Session { Stopped, Playing, Paused };

    /*! Why the service does not run. */
    enum class Stop {
        None, //!< it runs
        Internal,
        Application,
        NotSupported,
        Policy,
        WiFi,
    };

    struct Sink
    {
        QString name; //!< any text
        QString address; //!< of its hardware
        QString type; //!< primary device type of Wi-Fi Protected Setup: "7-0050F204-1"

        bool operator==(const Sink &) const = default;
    };

    /*! The application that the service is for. */
    struct Application
    {
        QString name;
        bool persistent = false; //!< whether it is kept when the service is shut down

        bool operator==(const Application &) const = default;
    };

    bool supported = true; //!< whether the device can show its screen on wireless displays at all
    Sink sink; //!< that is connected or being connected; empty texts for none
    Connection connection = Connection::Disconnected;
    Session session = Session::Stopped;
    QString sessionId; //!< empty for none
    QSize resolution{0, 0}; //!< pixels, of the session; 0 for none
    Stop stop = Stop::None;
    int wiFiFailure = 0; //!< of Stop::WiFi: which of the four failures of Wi-Fi Direct it was, from 0
    std::optional<Application> application;
    QList<Sink> sinks; //!< in sight, as the last scan found them

    bool operator==(const MiracastState &) const = default;
};

/*! Wireless displays around the device, and the session with one, whoever knows them. */
class MiracastSource : public StateSource<MiracastState>, public DisplayBeside, public MiracastSupport
{
public:
    /*! The display of the session. */
    [[nodiscard]] std::optional<Display> displayNow() const override;
    [[nodiscard]] std::optional<bool> isMiracastSupported() const override;
    [[nodiscard]] const Source &source() const override { return *this; }

    /*! The outcome of a request. */
    enum class Result {
        Success,
        PinRequired,
        PinIncorrect,
        SinkLost, //!< while it was being connected
        SinkRefused,
        InvalidRequest,
        Cancelled,
        WiFiFailed,
        SinkNotFound,
        ServiceFailed,
        ForbiddenByPolicy,
    };

    /*! Takes the result of a request, once, now or later. */
    using Done = std::function<void(Result result)>;

    virtual void scan(const Done &done) = 0;
    virtual void connectSink(const QString &address, const QString &pin, const Done &done) = 0;
    virtual void disconnectSink(const Done &done) = 0;
    virtual void pause(const Done &done) = 0;
    virtual void resume(const Done &done) = 0;
    virtual void shutdown(const Done &done) = 0;
    virtual void warmUp(const MiracastState::Application &application, const Done &done) = 0;
};

/*! The name of the display of a session with the sink called \a sink. */
[[nodiscard]] QString wirelessDisplayName(const QString &sink);

/*! How it stands in the tree: its status, without the answers to requests, and the sinks in sight. */
[[nodiscard]] const Fields<MiracastState> &miracastFields();
[[nodiscard]] const Fields<MiracastState> &sinkFields();
/*! The requests that applications make, and the object that serves them. */
[[nodiscard]] std::vector<AskedRequest> miracastRequests();
inline const QString MiracastControl = QStringLiteral("/pps/services/miracast/control");

} // namespace oz::services
