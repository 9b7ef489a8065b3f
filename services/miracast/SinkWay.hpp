#pragma once

#include "miracast/Miracast.hpp"

#include <QVariantList>

#include <chrono>
#include <functional>

namespace oz::services {

/*! A way to wireless displays: finds them, and brings one to where it may connect to this device. */
class SinkWay : public QObject
{
    Q_OBJECT

public:
    using Sink = MiracastState::Sink;
    using Result = MiracastSource::Result;
    using Scanned = std::function<void(Result result)>;

    /*! Looks for sinks; \a scanned is called once, now or later, unless cancelScan() is. With Success,
     * sinks() are those that were found. */
    virtual void scan(const Scanned &scanned) = 0;
    virtual void cancelScan() = 0;
    /*! Those in sight, as the last scan found them. */
    [[nodiscard]] virtual const QList<Sink> &sinks() const = 0;

    /*! Where a sink is. */
    struct Place
    {
        QString address; //!< "192.168.1.7"
        int controlPort = 0; //!< where it is told to connect; 0 where it connects unasked
        std::chrono::milliseconds connectLimit{}; //!< for each step until it shows the screen
    };
    using Reached = std::function<void(Result result, const Place &place)>;

    /*! Reaches the sink that sinks() has under \a address. \a reached is called once, now or later, unless
     * leave() is. */
    virtual void reach(const QString &address, const QString &pin, const Reached &reached) = 0;
    /*! Gives up the sink that is being reached, or was. */
    virtual void leave() = 0;

    /*! How it finds sinks, or what keeps it from that, for a person. */
    [[nodiscard]] virtual QString remark() const = 0;
    /*! What it has to know of its sinks after a restart of the daemon. */
    [[nodiscard]] virtual QVariantList saved() const = 0;
    virtual void restore(const QVariantList &saved) = 0;

Q_SIGNALS:
    /*! The sink that was reached is out of reach. */
    void lost();
    void remarkChanged();
};

} // namespace oz::services
