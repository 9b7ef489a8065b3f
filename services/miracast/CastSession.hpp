#pragma once

#include "miracast/CastProcess.hpp"
#include "miracast/SinkWay.hpp"

#include <QTimer>

namespace oz::services {

/*!
 * The session with one wireless display, from the request that asks for it to its end. Requests that it takes
 * are answered once: by what becomes of it, or by its end. ozcast counts as standing still where it tells
 * nothing within the limits, and is ended then.
 */
class CastSession : public QObject
{
    Q_OBJECT

public:
    using Result = MiracastSource::Result;
    using Done = MiracastSource::Done;

    /*! With \a sink, by its \a way; \a connected is told what becomes of the attempt. */
    CastSession(CastProcess &cast, SinkWay &way, const MiracastState::Sink &sink, const Done &connected);

    /*! Begins it. \a order is what ozcast is told beside the sink and its place. */
    void start(const QString &pin, const QJsonObject &order);
    /*! False where there is no reason to do so: it is paused already, is not, or not known to be. */
    [[nodiscard]] bool setPaused(bool paused, const Done &done);
    /*! Ends it; a request that waits for something else is answered with \a cause. */
    void end(Result cause);
    /*! As end(), for a request, which the end is a success for. */
    void end(const Done &done);
    /*! Answers all requests that wait; to be called once it is over. */
    void answer();

    /*! Puts it into the state of the service. */
    void addTo(MiracastState *state) const;
    /*! What it waits for, or how it ended, for a person; empty where that is nothing special. */
    [[nodiscard]] const QString &news() const { return m_news; }
    [[nodiscard]] const QString &sinkName() const { return m_sink.name; }

Q_SIGNALS:
    /*! addTo() or news() is another. */
    void changed();
    /*! Nothing is shown any more, or nothing will be. */
    void over();

private:
    enum class Phase {
        Reaching, // by the way
        Starting, // by ozcast
        Running,
        Ending, // ozcast is asked to end it
        Over,
    };
    struct Shown
    {
        QString id;
        QSize size;
        bool isPaused = false;
    };

    void onReached(Result result, const SinkWay::Place &place, QJsonObject order);
    void onStepped(const CastLines::Step &step);
    void onPlaying(const CastLines::Playing &playing);
    void onPaused(const CastLines::Paused &paused);
    void onEnded(const CastLines::Ended &ended);
    void onSilence();
    void becomePaused(bool paused);
    void finish(Result result);

    CastProcess &m_process;
    SinkWay &m_way;
    MiracastState::Sink m_sink;
    Phase m_phase = Phase::Reaching;
    int m_cast = 0; // its id for ozcast; 0 before that has to do with it
    std::optional<Shown> m_shown; // since it is connected
    std::chrono::milliseconds m_connectLimit{}; // for each step that has no other
    int m_steps = 0; // that ozcast has told of
    Done m_connected; // the request that asked for it; empty once that is answered
    Done m_changed; // the request to pause or resume it that is under way
    QList<Done> m_ended; // the requests that wait for its end
    std::optional<Result> m_result; // for requests that it does not answer otherwise
    QTimer m_silence; // until ozcast counts as standing still
    QString m_news;
};

} // namespace oz::services
