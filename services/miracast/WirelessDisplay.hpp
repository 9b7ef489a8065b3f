#pragma once

#include "linux/FriendlyName.hpp"
#include "miracast/CastSession.hpp"
#include "miracast/SinkWays.hpp"
#include "publishing/StateStore.hpp"

#include <memory>
#include <vector>

namespace oz::services {

/*!
 * Real wireless displays. Ways find and reach them, and ozcast, a process of its own, shows the screen on
 * one. That process's end is the session's end, so no request waits for one that stands still.
 */
class WirelessDisplay final : public MiracastSource
{
public:
    /*! Every cast is ordered with \a order, for sinks that know this device by \a name. */
    WirelessDisplay(std::shared_ptr<CastProcess> cast, std::vector<std::unique_ptr<SinkWay>> ways,
        std::unique_ptr<FriendlyName> name, const QJsonObject &order, StateStore &store);

    void scan(const Done &done) override;
    void connectSink(const QString &address, const QString &pin, const Done &done) override;
    void disconnectSink(const Done &done) override;
    void pause(const Done &done) override;
    void resume(const Done &done) override;
    void shutdown(const Done &done) override;
    void warmUp(const MiracastState::Application &application, const Done &done) override;

private:
    void onCastChanged();
    void onTerminated();
    void onSessionChanged();
    void onSessionOver();

    /*! True if a request can be taken; else it is answered. */
    [[nodiscard]] bool isReady(const Done &done);
    /*! Starts a service that was shut down. */
    void wake();
    void setPaused(bool paused, const Done &done);
    void stop(const Done &done);
    [[nodiscard]] MiracastState stateNow() const;
    void tell();
    void updateRemark();
    void save();
    void restore();

    std::shared_ptr<CastProcess> m_cast;
    SinkWays m_ways;
    std::unique_ptr<FriendlyName> m_name;
    const QJsonObject m_order; // what is the same for each cast
    StateStore &m_store;
    bool m_isSupported = true;
    bool m_isShutDown = false;
    std::optional<MiracastState::Application> m_application;
    std::unique_ptr<CastSession> m_session; // and the attempt to begin one
    QString m_news; // of the session that there was last
    QString m_newsSink;
    QTimer m_helloLimit; // until an ozcast that tells nothing counts as absent
};

} // namespace oz::services
