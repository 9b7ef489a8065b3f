#include "CastSession.hpp"

#include "Pipeline.hpp"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gst/gst.h>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

namespace oz::cast {

namespace {

constexpr std::chrono::milliseconds LongestStep{120'000}; // that the daemon takes

Screen opened(Screen screen)
{
    if (!std::exchange(screen.open, nullptr)(&screen))
        screen.capture.clear();
    return screen;
}

// What the end of the process needs, should a library bring it about.
int s_descriptor = -1;
QByteArray s_lastWords;

} // namespace

void CastSession::serve(int descriptor)
{
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    s_descriptor = descriptor;
    gst_init(nullptr, nullptr);
    // The library of the X server's clients exits when the server does.
    std::atexit([] {
        (void)!::write(s_descriptor, s_lastWords.constData(), std::size_t(s_lastWords.size()));
        ::_exit(1);
    });
    auto *socket = new QLocalSocket;
    socket->setSocketDescriptor(descriptor);
    // Neither is destroyed: the end of the process is theirs.
    (void)new CastSession(new LineChannel(socket));
    QCoreApplication::exec();
    ::_exit(1);
}

CastSession::CastSession(LineChannel *channel) : m_channel(channel)
{
    connect(m_channel, &LineChannel::received, this, &CastSession::onMessage);
    connect(m_channel, &LineChannel::closed, this, [] { ::_exit(1); });
    connect(&m_listener, &DisplayListener::displayConnected, this, &CastSession::onDisplay);
    m_limit.setSingleShot(true);
}

void CastSession::onMessage(const QString &kind, const QJsonObject &content)
{
    if (kind == u"cast") {
        begin(CastOrder::fromJson(content, {}));
    } else if (kind == u"end") {
        if (m_conversation)
            m_conversation->tearDown();
        else
            end({CastEnd::Asked, QStringLiteral("the cast was ended before the display connected")});
    } else if (m_conversation && kind == u"pause") {
        m_conversation->pause();
    } else if (m_conversation && kind == u"resume") {
        m_conversation->resume();
    }
}

void CastSession::begin(const CastOrder &order)
{
    m_order = order;
    s_lastWords = LineChannel::lineOf(QStringLiteral("ended"),
        CastEnd{CastEnd::Failed, QStringLiteral("the screen's server has ended")}.toJson(m_order.id));
    m_limit.callOnTimeout(this, [this] {
        end({CastEnd::Failed, QStringLiteral("the screen's server does not answer")});
    });
    m_limit.start(m_order.limits.step);
    inThread([picture = order.picture] { return findScreen(picture); });
}

// Screens' servers may hold up a thread for ever. It ends with the process.
void CastSession::inThread(const std::function<Screen()> &take)
{
    std::thread([this, take] {
        const Screen screen = take();
        QMetaObject::invokeMethod(this, [this, screen] { onScreen(screen); });
    }).detach();
}

void CastSession::onScreen(const Screen &screen)
{
    m_screen = screen;
    if (m_screen.capture.isEmpty())
        return end({CastEnd::Failed, QLatin1String("there is no screen to cast: ") + m_screen.remark});
    if (m_screen.open) {
        // It has limits of its own, and says itself which of them has passed.
        m_limit.start(m_screen.openLimit + m_order.limits.step);
        tellStep(m_screen.awaited, m_screen.openLimit + m_order.limits.step);
        return inThread([found = m_screen] { return opened(found); });
    }
    const QString display = m_order.display.toString();
    const quint16 port = m_order.source.rtspPort;
    const QHostAddress local = addressTowards(m_order.display);
    if (local.isNull() || !m_rtp.bind(local, 0))
        return end({CastEnd::Lost, QLatin1String("no way leads to ") + display});
    if (!m_listener.listenFor(m_order.display, port)) {
        return end({CastEnd::Failed,
            QLatin1String("cannot wait for the display on port ") + QString::number(port)
                + QLatin1String(": ") + m_listener.errorString()});
    }
    m_limit.disconnect(this);
    m_limit.callOnTimeout(this, [this] {
        end({CastEnd::Lost, QStringLiteral("the display did not connect within its time")});
    });
    m_limit.start(m_order.limits.connect);
    if (m_order.controlPort == 0)
        return tellStep(QStringLiteral("waiting for the display to connect"));
    tellStep(QStringLiteral("asking the display to connect"));
    m_control = std::make_unique<DisplayControl>(m_order.display, m_order.controlPort, m_order.source);
    connect(m_control.get(), &DisplayControl::asked, this,
        [this] { tellStep(QStringLiteral("waiting for the display to connect")); });
    connect(m_control.get(), &DisplayControl::unreachable, this, [this, display](const QString &reason) {
        end({CastEnd::Lost, QLatin1String("cannot reach ") + display + QLatin1String(": ") + reason});
    });
    connect(m_control.get(), &DisplayControl::stopped, this, [this] {
        end({CastEnd::Sink, QStringLiteral("the display ended the projection")});
    });
}

void CastSession::onDisplay(QTcpSocket *socket)
{
    m_limit.stop();
    RtspConversation::Settings settings;
    settings.screen = m_screen.size;
    settings.hasAudio = !m_order.audioEncoder.isEmpty();
    settings.port = m_rtp.localPort();
    settings.stepLimit = m_order.limits.step;
    settings.keepAlive = m_order.limits.keepAlive;
    m_conversation = new RtspConversation(socket, settings);
    connect(
        m_conversation, &RtspConversation::stepped, this, [this](const QString &text) { tellStep(text); });
    connect(m_conversation, &RtspConversation::ended, this, &CastSession::end);
    connect(m_conversation, &RtspConversation::playAsked, this, &CastSession::onPlay);
    connect(m_conversation, &RtspConversation::pauseAsked, this, [this] { m_pipeline->pause(); });
    connect(m_conversation, &RtspConversation::keyFrameWanted, this, [this] {
        if (m_pipeline)
            m_pipeline->wantKeyFrame();
    });
    m_conversation->begin();
}

void CastSession::onPlay(const StreamPlan &stream)
{
    if (!m_pipeline) {
        PipelinePlan plan;
        const VideoMode mode = stream.video.mode;
        plan.picture = m_screen.description(mode.rate);
        plan.video = stream.video;
        plan.elements = Elements::named(m_order.videoEncoder, m_order.audioEncoder);
        plan.hasAudio = stream.hasAudio;
        plan.display = m_order.display;
        plan.port = stream.port;
        plan.socket = int(m_rtp.socketDescriptor());
        plan.limit = m_order.limits.step;
        if (m_screen.feed)
            plan.onBuilt = [feed = m_screen.feed, mode](GstElement *pipeline) { feed(pipeline, mode); };
        m_pipeline = new Pipeline(plan);
        connect(m_pipeline, &Pipeline::sending, this, [this, mode, hasAudio = stream.hasAudio] {
            tell(QStringLiteral("playing"),
                {{QStringLiteral("width"), mode.width}, {QStringLiteral("height"), mode.height},
                    {QStringLiteral("rate"), mode.rate}, {QStringLiteral("audio"), hasAudio}});
        });
        connect(m_pipeline, &Pipeline::paused, this, [this] { tell(QStringLiteral("paused")); });
        connect(m_pipeline, &Pipeline::failed, this, [this](const QString &reason) {
            end({CastEnd::Failed, QLatin1String("the picture cannot be sent: ") + reason});
        });
    }
    m_pipeline->play();
}

void CastSession::tell(const QString &kind, QJsonObject content)
{
    content.insert(QStringLiteral("id"), m_order.id);
    m_channel->send(kind, content);
}

void CastSession::tellStep(const QString &text, std::chrono::milliseconds limit)
{
    QJsonObject step{{QStringLiteral("text"), text}};
    if (limit > limit.zero())
        step.insert(QStringLiteral("limit-ms"), int(std::min(limit, LongestStep).count()));
    tell(QStringLiteral("step"), step);
}

void CastSession::end(const CastEnd &end)
{
    if (m_control)
        m_control->stopProjection();
    m_channel->send(QStringLiteral("ended"), end.toJson(m_order.id));
    m_channel->flush();
    ::_exit(0); // whatever a thread of the pipeline waits for
}

} // namespace oz::cast
