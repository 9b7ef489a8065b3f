#pragma once

#include "CastEnd.hpp"
#include "CastOrder.hpp"
#include "DisplayListener.hpp"
#include "LineChannel.hpp"
#include "RtspConversation.hpp"

#include <QTimer>
#include <QUdpSocket>

#include <chrono>
#include <functional>
#include <memory>

namespace oz::cast {

class Pipeline;

/*!
 * One cast from its order to its end, in a process of its own, which ends with it. Steps and changes are told
 * over the channel over which the order came.
 */
class CastSession : public QObject
{
    Q_OBJECT

public:
    /*! Works for the process at the other end of the connected socket \a descriptor; does not return. */
    [[noreturn]] static void serve(int descriptor);

private:
    explicit CastSession(LineChannel *channel);

    void onMessage(const QString &kind, const QJsonObject &content);
    void begin(const CastOrder &order);
    void inThread(const std::function<Screen()> &take);
    void onScreen(const Screen &screen);
    void onDisplay(QTcpSocket *socket);
    void onPlay(const StreamPlan &plan);
    void tell(const QString &kind, QJsonObject content = {});
    // A step that may take longer than the daemon waits usually says how long.
    void tellStep(const QString &text, std::chrono::milliseconds limit = {});
    void end(const CastEnd &end);

    LineChannel *m_channel;
    CastOrder m_order;
    Screen m_screen;
    DisplayListener m_listener;
    std::unique_ptr<DisplayControl> m_control;
    RtspConversation *m_conversation = nullptr;
    QUdpSocket m_rtp;
    Pipeline *m_pipeline = nullptr; // see there why it is never destroyed
    QTimer m_limit;
};

} // namespace oz::cast
