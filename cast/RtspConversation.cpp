#include "RtspConversation.hpp"

#include <QHostAddress>
#include <QRandomGenerator>

#include <algorithm>

namespace oz::cast {

namespace {

using namespace std::chrono_literals;

const QByteArray Target = QByteArrayLiteral("rtsp://localhost/wfd1.0");

// A display that does not answer the end of its session is not waited for any longer.
constexpr auto LongestTearDown = 1500ms;
constexpr auto LongestKeepAliveAnswer = 5000ms;
// A display may use the whole of its time for some steps, but not for all.
constexpr int StartInSteps = 3;
// Answers that the display does not take; an honest one never has this many waiting.
constexpr qint64 MaxUnsent = 256 * 1024;

// The first port in "RTP/AVP/UDP;unicast 19000 0 mode=play"; 0 if there is none.
quint16 firstPort(const QByteArray &ports)
{
    const QList<QByteArray> fields = ports.simplified().split(' ');
    return fields.size() < 2 || !fields[0].startsWith("RTP/AVP") ? quint16(0) : fields[1].toUShort();
}

} // namespace

RtspConversation::RtspConversation(QTcpSocket *socket, const Settings &settings)
    : m_socket(socket), m_settings(settings),
      m_session(
          QByteArray::number(QRandomGenerator::system()->generate(), 16).rightJustified(8, '0').toUpper()),
      m_keepAlive(
          settings.keepAlive, std::min<std::chrono::milliseconds>(settings.stepLimit, LongestKeepAliveAnswer))
{
    m_socket->setParent(this);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_socket->setReadBufferSize(RtspReader::MaxHeaderSize + RtspReader::MaxBodySize);
    connect(m_socket, &QTcpSocket::readyRead, this, &RtspConversation::receive);
    connect(m_socket, &QTcpSocket::disconnected, this,
        [this] { end(CastEnd::Lost, QStringLiteral("the display closed the connection")); });

    for (QTimer *timer : {&m_stepLimit, &m_startLimit})
        timer->setSingleShot(true);
    m_stepLimit.callOnTimeout(this, &RtspConversation::onLate);
    m_startLimit.callOnTimeout(this, &RtspConversation::onLate);
    connect(&m_keepAlive, &KeepAliveTimer::due, this, [this] {
        send(Sent::KeepAlive, {"GET_PARAMETER", Target, 0, {}, {{"Session", m_session}}});
    });
    connect(&m_keepAlive, &KeepAliveTimer::unanswered, this,
        [this] { end(CastEnd::Lost, QStringLiteral("the display does not answer any more")); });
}

void RtspConversation::begin()
{
    m_startLimit.start(m_settings.stepLimit * StartInSteps);
    enter(Step::Greeting);
    send(Sent::Options, {"OPTIONS", "*", 0, {}, {{"Require", Extension}}});
    receive(); // what came before anybody listened
}

void RtspConversation::pause()
{
    if (m_step == Step::Playing)
        wish(Wish::Pause);
    else if (m_step == Step::Paused)
        Q_EMIT pauseAsked();
}

void RtspConversation::resume()
{
    if (m_step == Step::Paused)
        wish(Wish::Play);
    else if (m_step == Step::Playing)
        Q_EMIT playAsked(m_plan);
}

void RtspConversation::tearDown()
{
    // Before SETUP there is no session to end, and nobody answers.
    if (m_step < Step::Play)
        end(CastEnd::Asked, QStringLiteral("the cast was ended before it began"));
    else if (m_wish != Wish::TearDown)
        wish(Wish::TearDown);
}

void RtspConversation::receive()
{
    // Reading may end the conversation, and what is left then is nobody's.
    while (!m_hasEnded && m_socket->bytesAvailable() > 0) {
        m_reader.feed(m_socket->readAll());
        while (const auto message = m_hasEnded ? std::nullopt : m_reader.next()) {
            if (message->isRequest())
                onRequest(*message);
            else
                onAnswer(*message);
        }
        if (!m_reader.problem().isEmpty())
            end(CastEnd::Refused, QLatin1String("the display cannot be understood: ") + m_reader.problem());
    }
}

void RtspConversation::onAnswer(const RtspMessage &answer)
{
    const auto sent = m_sent.find(answer.sequence());
    if (sent == m_sent.end())
        return; // to nothing that still matters
    const Sent kind = *sent;
    m_sent.erase(sent);
    if (kind == Sent::KeepAlive) {
        // Whatever it answers, it is there, unless the session is not.
        m_keepAlive.onAnswer();
        if (answer.status == 454)
            end(CastEnd::Lost, QStringLiteral("the display has forgotten the session"));
        return;
    }
    if (answer.status != 200) {
        if (m_wish == Wish::TearDown)
            return end(CastEnd::Asked, QStringLiteral("the cast was ended"));
        return end(CastEnd::Refused,
            QLatin1String("the display refused, while ") + stepText() + QLatin1String(": ")
                + QString::number(answer.status) + u' ' + QString::fromUtf8(answer.reason.left(100)));
    }
    if (kind == Sent::Options) {
        if (m_isGreeted)
            askCapabilities();
        else
            enter(Step::TheirGreeting);
    } else if (kind == Sent::Capabilities) {
        onCapabilities(answer);
    } else if (kind == Sent::Parameters) {
        enter(Step::Setup);
        trigger("SETUP");
    }
}

void RtspConversation::onCapabilities(const RtspMessage &answer)
{
    const QList<VideoCodec> codecs = parseVideoFormats(answer.parameter("wfd_video_formats").value_or(""));
    const auto video = chooseVideo(codecs, m_settings.screen);
    m_ports = answer.parameter("wfd_client_rtp_ports").value_or("").simplified();
    if (!video || firstPort(m_ports) == 0) {
        return end(CastEnd::Refused,
            video ? QStringLiteral("the display names no port for the stream")
                  : QStringLiteral("the display has no format in common with this device"));
    }
    m_plan.video = *video;
    m_plan.hasAudio = m_settings.hasAudio && offersAac(answer.parameter("wfd_audio_codecs").value_or(""));
    m_plan.port = firstPort(m_ports);
    sendParameters();
}

void RtspConversation::enter(Step step)
{
    m_step = step;
    if (step < Step::Playing) {
        m_stepLimit.start(m_settings.stepLimit);
        Q_EMIT stepped(stepText());
    } else {
        m_stepLimit.stop();
    }
}

void RtspConversation::wish(Wish wish)
{
    m_wish = wish;
    const bool isEnd = wish == Wish::TearDown;
    m_stepLimit.start(isEnd ? std::min<std::chrono::milliseconds>(m_settings.stepLimit, LongestTearDown)
                            : m_settings.stepLimit);
    if (isEnd)
        m_keepAlive.stopAsking();
    Q_EMIT stepped(stepText());
    trigger(isEnd ? "TEARDOWN" : wish == Wish::Pause ? "PAUSE" : "PLAY");
}

void RtspConversation::trigger(const char *method)
{
    RtspMessage request{"SET_PARAMETER", Target, 0, {}};
    request.body = QByteArray("wfd_trigger_method: ") + method + "\r\n";
    send(Sent::Trigger, request);
}

void RtspConversation::askCapabilities()
{
    enter(Step::Capabilities);
    RtspMessage request{"GET_PARAMETER", Target, 0, {}};
    request.body = "wfd_video_formats\r\nwfd_audio_codecs\r\nwfd_client_rtp_ports\r\n";
    send(Sent::Capabilities, request);
}

void RtspConversation::sendParameters()
{
    enter(Step::Parameters);
    const QHostAddress local = m_socket->localAddress();
    QByteArray host = local.toString().toLatin1();
    if (local.protocol() == QAbstractSocket::IPv6Protocol)
        host = '[' + host + ']';
    host += ':' + QByteArray::number(m_socket->localPort());
    RtspMessage request{"SET_PARAMETER", Target, 0, {}};
    request.body = "wfd_video_formats: " + m_plan.video.toParameter() + "\r\n";
    if (m_plan.hasAudio)
        request.body += "wfd_audio_codecs: AAC 00000001 00\r\n";
    request.body += "wfd_presentation_URL: rtsp://" + host + StreamPath
        + " none\r\nwfd_client_rtp_ports: " + m_ports + "\r\n";
    send(Sent::Parameters, request);
}

void RtspConversation::onLate()
{
    if (m_wish == Wish::TearDown)
        end(CastEnd::Asked, QStringLiteral("the cast was ended; the display did not answer"));
    else
        end(CastEnd::Lost, QLatin1String("the display took too long, while ") + stepText());
}

void RtspConversation::send(Sent kind, RtspMessage request)
{
    m_sent.insert(++m_sequence, kind);
    request.headers.prepend({"CSeq", QByteArray::number(m_sequence)});
    write(request);
}

void RtspConversation::write(const RtspMessage &message)
{
    m_socket->write(message.toBytes());
    if (m_socket->bytesToWrite() > MaxUnsent)
        end(CastEnd::Refused, QStringLiteral("the display asks, and does not take the answers"));
}

QString RtspConversation::stepText() const
{
    switch (m_wish) {
    case Wish::Nothing:
        break;
    case Wish::Pause:
        return QStringLiteral("asking the display to pause");
    case Wish::Play:
        return QStringLiteral("asking the display to go on");
    case Wish::TearDown:
        return QStringLiteral("asking the display to end the session");
    }
    switch (m_step) {
    case Step::Greeting:
        return QStringLiteral("greeting the display");
    case Step::TheirGreeting:
        return QStringLiteral("waiting for the display's greeting");
    case Step::Capabilities:
        return QStringLiteral("asking the display what it can show");
    case Step::Parameters:
        return QStringLiteral("telling the display what it will get");
    case Step::Setup:
        return QStringLiteral("waiting for the display to set up the stream");
    case Step::Play:
        return QStringLiteral("waiting for the display to play");
    case Step::Playing:
        return QStringLiteral("playing");
    case Step::Paused:
        return QStringLiteral("paused");
    }
    Q_UNREACHABLE();
}

void RtspConversation::end(CastEnd::Reason reason, const QString &text)
{
    if (std::exchange(m_hasEnded, true))
        return;
    for (QTimer *timer : {&m_stepLimit, &m_startLimit})
        timer->stop();
    m_keepAlive.stop();
    m_socket->disconnect(this);
    m_socket->flush();
    Q_EMIT ended({reason, text});
}

} // namespace oz::cast
