#pragma once

#include "display/Displays.hpp"
#include "linux/RetryTimer.hpp"

#include <QByteArray>
#include <QMap>
#include <QTimer>

#include <memory>

class QSocketNotifier;

namespace oz::services {

/*!
 * The outputs of the Wayland compositor \a server (by default the one that WAYLAND_DISPLAY names): each that
 * the compositor shows something on is an attached display, one that was there before is a detached one. It
 * follows the compositor as that comes and goes, and waits for it at no time.
 */
class WaylandDisplays final : public DisplaySource
{
public:
    explicit WaylandDisplays(const QString &server = {});
    ~WaylandDisplays() override;

    /*! The compositor of the session, by the name of its socket; empty where there is none. */
    [[nodiscard]] static QString sessionServer();

private:
    class Connection;

    void connectToServer();
    void onLost(const QString &reason);
    void onOutputs(const QMap<QByteArray, Display> &outputs);

    QString m_server;
    std::unique_ptr<Connection> m_connection;
    DisplayState m_displays; // also those that were there before
    RetryTimer m_retry;
    QTimer m_grace;
};

} // namespace oz::services
