#pragma once

#include "CastEnd.hpp"
#include "CastOrder.hpp"
#include "LineChannel.hpp"

#include <QProcess>
#include <QTimer>

#include <memory>

namespace oz::cast {

/*!
 * A cast in a process of its own, which does not outlive this one. A cast has ended only when its process
 * has, so that nothing is sent any more.
 */
class CastProcess : public QObject
{
    Q_OBJECT

public:
    explicit CastProcess(const CastOrder &order);
    ~CastProcess() override;

    [[nodiscard]] int id() const { return m_id; }
    /*! Passes on "pause" or "resume". */
    void send(const QString &kind);
    /*! Has the display told, and ends in any case soon. */
    void end();

Q_SIGNALS:
    /*! "step", "playing", "paused". */
    void told(const QString &kind, const QJsonObject &content);
    /*! It is over, and its process is gone. */
    void ended(const CastEnd &end);

private:
    void onMessage(const QString &kind, const QJsonObject &content);
    void conclude();

    const int m_id;
    const Picture m_picture;
    QProcess m_process;
    std::unique_ptr<LineChannel> m_channel;
    QTimer m_limit;
    bool m_isAsked = false;
    bool m_isClosed = false; // the channel
    std::optional<CastEnd> m_end;
};

} // namespace oz::cast
