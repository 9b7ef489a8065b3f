// The display's side of the conversation: what it asks, and what it is answered.

#include "RtspConversation.hpp"

namespace oz::cast {

namespace {

const QByteArray Methods = QByteArrayLiteral("SETUP, TEARDOWN, PLAY, PAUSE, GET_PARAMETER, SET_PARAMETER");

QByteArray reasonOf(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 451:
        return "Parameter Not Understood";
    case 454:
        return "Session Not Found";
    case 455:
        return "Method Not Valid in This State";
    case 461:
        return "Unsupported Transport";
    case 551:
        return "Option Not Supported";
    default:
        return "Not Implemented";
    }
}

// The display's port in "RTP/AVP/UDP;unicast;client_port=19000-19001"; 0 if that is not what it wants.
quint16 clientPort(const QByteArray &transport)
{
    const QList<QByteArray> parts = transport.split(';');
    const QByteArray protocol = parts.front().trimmed();
    if (protocol != "RTP/AVP/UDP" && protocol != "RTP/AVP")
        return 0;
    for (const QByteArray &part : parts) {
        if (part.trimmed().startsWith("client_port="))
            return part.trimmed().mid(12).split('-').front().toUShort();
    }
    return 0;
}

} // namespace

void RtspConversation::onRequest(const RtspMessage &request)
{
    Answer answer = answerTo(request);
    if (m_hasEnded)
        return;
    RtspMessage message{{}, {}, answer.status, reasonOf(answer.status)};
    message.headers.append({"CSeq", request.header("CSeq")});
    message.headers += answer.headers;
    write(message);
    if (answer.status != 200)
        return;
    // What a request sets off comes after its answer.
    if (request.method == "TEARDOWN") {
        const bool isAsked = m_wish == Wish::TearDown;
        end(isAsked ? CastEnd::Asked : CastEnd::Sink,
            isAsked ? QStringLiteral("the cast was ended") : QStringLiteral("the display ended the session"));
    } else if (request.method == "OPTIONS" && !std::exchange(m_isGreeted, true)) {
        if (m_step == Step::TheirGreeting)
            askCapabilities();
    } else if (request.method == "PLAY") {
        Q_EMIT playAsked(m_plan);
    } else if (request.method == "PAUSE") {
        Q_EMIT pauseAsked();
    } else if (request.parameter("wfd_idr_request")) {
        Q_EMIT keyFrameWanted();
    }
}

RtspConversation::Answer RtspConversation::answerTo(const RtspMessage &request)
{
    const QByteArray &method = request.method;
    const QByteArray required = request.header("Require");
    if (!required.isEmpty() && required != Extension)
        return {551, {{"Unsupported", required}}};
    if (method == "OPTIONS")
        return {200, {{"Public", Extension + ", " + Methods}}};
    if (method == "GET_PARAMETER")
        return {200};
    if (method == "SET_PARAMETER")
        return onParameters(request);
    if (method == "SETUP")
        return onSetup(request);
    if (method != "PLAY" && method != "PAUSE" && method != "TEARDOWN") {
        static const QList<QByteArray> known{"DESCRIBE", "ANNOUNCE", "RECORD", "REDIRECT"};
        return known.contains(method) ? Answer{405, {{"Allow", "OPTIONS, " + Methods}}} : Answer{501};
    }
    const QByteArray session = request.header("Session").split(';').front().trimmed();
    if (!session.isEmpty() && session != m_session)
        return {454};
    if (method == "PLAY")
        return onPlay();
    if (method == "PAUSE")
        return onPause();
    return m_step < Step::Play ? Answer{455} : Answer{200, {{"Session", m_session}}};
}

RtspConversation::Answer RtspConversation::onParameters(const RtspMessage &request)
{
    return request.body.isEmpty() || request.parameter("wfd_idr_request") ? Answer{200} : Answer{451};
}

RtspConversation::Answer RtspConversation::onSetup(const RtspMessage &request)
{
    if (m_step != Step::Setup)
        return {455};
    if (!request.target.contains(StreamPath))
        return {404};
    const QByteArray transport = request.header("Transport");
    const quint16 port = clientPort(transport);
    if (port == 0)
        return {461};
    m_plan.port = port;
    enter(Step::Play);
    return {200,
        {{"Session", m_session + ";timeout=30"},
            {"Transport", transport.left(256) + ";server_port=" + QByteArray::number(m_settings.port)}}};
}

RtspConversation::Answer RtspConversation::onPlay()
{
    if (m_step < Step::Play || m_wish == Wish::TearDown)
        return {455};
    if (m_wish == Wish::Play)
        m_wish = Wish::Nothing;
    if (m_step == Step::Play) {
        m_startLimit.stop();
        m_keepAlive.start();
    }
    // An order to pause that the display has not answered yet stays in force, with its time limit.
    if (m_wish == Wish::Nothing)
        enter(Step::Playing);
    m_step = Step::Playing;
    return {200, {{"Session", m_session}}};
}

RtspConversation::Answer RtspConversation::onPause()
{
    if (m_step < Step::Playing || m_wish == Wish::TearDown)
        return {455};
    if (m_wish == Wish::Pause)
        m_wish = Wish::Nothing;
    if (m_wish == Wish::Nothing)
        enter(Step::Paused);
    m_step = Step::Paused;
    return {200, {{"Session", m_session}}};
}

} // namespace oz::cast
