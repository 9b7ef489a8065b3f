#pragma once

#include "CastEnd.hpp"
#include "KeepAliveTimer.hpp"
#include "RtspMessage.hpp"
#include "VideoFormats.hpp"

#include <QMap>
#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>

namespace oz::cast {

/*! What a display and this side have agreed on. */
struct StreamPlan
{
    VideoChoice video;
    bool hasAudio = false;
    quint16 port = 0; //!< where the display takes RTP
};

/*!
 * The talk with a display that has connected, from the first greeting to the end: agrees on a stream, starts,
 * pauses and ends it, for this side or for the display, and finds out that the display is gone. Each step has
 * a time limit that nothing the display sends can extend.
 */
class RtspConversation : public QObject
{
    Q_OBJECT

public:
    struct Settings
    {
        QSize screen;
        bool hasAudio = false;
        quint16 port = 0; //!< from which RTP is sent
        std::chrono::milliseconds stepLimit{6000};
        std::chrono::milliseconds keepAlive{5000};
    };

    /*! Takes over \a socket, which is connected. */
    RtspConversation(QTcpSocket *socket, const Settings &settings);

    void begin();
    /*! Ask the display to ask for it, as it is always the display that acts. */
    void pause();
    void resume();
    void tearDown();

Q_SIGNALS:
    void stepped(const QString &text);
    void playAsked(const StreamPlan &plan);
    void pauseAsked();
    void keyFrameWanted();
    /*! Nothing more is sent or heard. */
    void ended(const CastEnd &end);

private:
    enum class Step { Greeting, TheirGreeting, Capabilities, Parameters, Setup, Play, Playing, Paused };
    enum class Sent { Options, Capabilities, Parameters, Trigger, KeepAlive };
    enum class Wish { Nothing, Pause, Play, TearDown };
    static inline const QByteArray Extension = QByteArrayLiteral("org.wfa.wfd1.0");
    static inline const QByteArray StreamPath = QByteArrayLiteral("/wfd1.0/streamid=0");
    struct Answer
    {
        int status;
        QList<RtspMessage::Header> headers = {};
    };

    void receive();
    void onAnswer(const RtspMessage &answer);
    void onCapabilities(const RtspMessage &answer);
    void onRequest(const RtspMessage &request);
    [[nodiscard]] Answer answerTo(const RtspMessage &request);
    [[nodiscard]] Answer onParameters(const RtspMessage &request);
    [[nodiscard]] Answer onSetup(const RtspMessage &request);
    [[nodiscard]] Answer onPlay();
    [[nodiscard]] Answer onPause();

    void enter(Step step);
    void wish(Wish wish);
    void trigger(const char *method);
    void askCapabilities();
    void sendParameters();
    void onLate();
    void send(Sent kind, RtspMessage request);
    void write(const RtspMessage &message);
    [[nodiscard]] QString stepText() const;
    void end(CastEnd::Reason reason, const QString &text);

    QTcpSocket *m_socket;
    const Settings m_settings;
    RtspReader m_reader;
    StreamPlan m_plan;
    QByteArray m_ports; // as the display wrote them
    const QByteArray m_session;
    Step m_step = Step::Greeting;
    Wish m_wish = Wish::Nothing;
    bool m_isGreeted = false; // by the display
    bool m_hasEnded = false;
    int m_sequence = 0;
    QMap<int, Sent> m_sent; // what the display has not answered
    QTimer m_stepLimit;
    QTimer m_startLimit; // for all steps until the display plays
    KeepAliveTimer m_keepAlive;
};

} // namespace oz::cast
