#include "miracast/MiracastPublisher.hpp"

#include <oz/PpsText.hpp>

#include <QPointer>

#include <cerrno>

namespace oz::services {

namespace {

using Result = MiracastSource::Result;
using Stop = MiracastState::Stop;

constexpr int MaxTextSize = 256; // of what a request is called by
constexpr int MaxOpenOfProcess = 10; // a flood of one process does not keep the user's others waiting
constexpr int MaxOpenOfUser = 50;

// As clients know them.
int codeOf(Result result)
{
    switch (result) {
    case Result::Success:
        return 0;
    case Result::PinRequired:
        return -1000;
    case Result::PinIncorrect:
        return -1001;
    case Result::SinkLost:
        return -1002;
    case Result::SinkRefused:
        return -1003;
    case Result::InvalidRequest:
        return -1005;
    case Result::Cancelled:
        return -1007;
    case Result::WiFiFailed:
        return -1008;
    case Result::SinkNotFound:
        return -1009;
    case Result::ServiceFailed:
        return -1010;
    case Result::ForbiddenByPolicy:
        return -1012;
    }
    return -1010;
}

// The readable part of a malformed message: the first line of each name that is well-formed by itself.
QVariantMap readableOf(const QByteArray &message)
{
    QVariantMap attributes;
    for (const QByteArray &line : message.split('\n')) {
        const QVariantMap decoded = PpsText::decode(line + '\n');
        const QVariantMap found = decoded.isEmpty() ? QVariantMap() : decoded.first().toMap();
        for (auto each = found.cbegin(); each != found.cend(); ++each) {
            if (!attributes.contains(each.key()))
                attributes.insert(each.key(), each.value());
        }
    }
    return attributes;
}

bool isText(const QVariant &value)
{
    return value.typeId() == QMetaType::QString;
}

} // namespace

// Its answers are in the status; what is sent to a client itself tells only why there is none.
class MiracastPublisher::Control final : public ServedObject
{
public:
    Control(MiracastPublisher &publisher, Tree &tree)
        : ServedObject(tree, MiracastControl), m_publisher(publisher)
    {
    }

private:
    void onMessage(
        const PpsServer::Client &client, const QVariantMap &decoded, const QString &malformed) override
    {
        const QVariantMap attributes = malformed.isEmpty() ? decoded : readableOf(lastMessage());
        const Request request{client, attributes.value(QStringLiteral("msg")).toString(),
            attributes.value(QStringLiteral("id")).toString(), attributes.value(QStringLiteral("dat"))};
        const auto isName = [](const QString &text) { return !text.isEmpty() && text.size() <= MaxTextSize; };
        if (!isName(request.message) || !isName(request.id.toString())) {
            // Nobody could tell the answer in the status from another's.
            return refuse(client, EINVAL,
                QStringLiteral("expected a 'msg' and an 'id' of at most 256 characters each"));
        }
        // One that never reads these is cut off in the end.
        if (!m_publisher.admit(client))
            return refuse(client, EBUSY, QStringLiteral("this process has too many requests under way"));
        m_publisher.onRequest(request, !malformed.isEmpty());
    }

    void refuse(const PpsServer::Client &client, int error, const QString &text)
    {
        QVariantMap refusal;
        Reply::failure(error, text).addErrorTo(&refusal);
        server().send(client.id, refusal);
    }

    MiracastPublisher &m_publisher;
};

MiracastPublisher::MiracastPublisher(const QString &facility, MiracastSource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_status(tree, miracastFields().path()),
      m_sinks(tree, sinkFields().path()), m_requests(requests()),
      m_faults(faultWords(m_requests), {QStringLiteral("CODE"), -9999, -1, {}},
          {Fault::AnswerLate, Fault::NeverAnswer}),
      m_control(std::make_unique<Control>(*this, tree))
{
    declare(m_status);
    declare(m_sinks);
    m_turn.setSingleShot(true);
    m_turn.setTimerType(Qt::PreciseTimer);
    connect(&m_turn, &QTimer::timeout, this, &MiracastPublisher::turn);
    follow();
    m_control->start(0666);
}

MiracastPublisher::~MiracastPublisher() = default;

void MiracastPublisher::publishState(const MiracastState &state)
{
    m_sinks.publish(sinkFields().attributes(state));
    m_told = miracastFields().attributes(state);
    publishStatus();
}

// A request to an absent service is answered with that, too.
void MiracastPublisher::publishAbsence()
{
    m_sinks.publish({});
    m_told.clear();
    publishStatus();
}

void MiracastPublisher::publishStatus()
{
    QVariantMap status = m_told;
    if (m_standing) {
        status.insert(QStringLiteral("last_request_id"), m_standing->id);
        status.insert(QStringLiteral("last_request"), m_standing->message);
        status.insert(QStringLiteral("last_request_err"), m_standing->code);
    }
    m_status.publish(status);
}

RequestTable MiracastPublisher::requests()
{
    constexpr auto trusted = RequestKind::For::Trusted;
    // The way back of a request is its answer in the status, which other answers may keep waiting.
    const auto done = [this](const Request &request) {
        return [self = QPointer(this), request](Result result) {
            if (self)
                self->answer(request, codeOf(result));
        };
    };
    const auto plain = [this, done](void (MiracastSource::*ask)(const MiracastSource::Done &)) {
        return [this, done, ask](const Request &request, const auto &) { (source().*ask)(done(request)); };
    };
    const auto connectSink = [this, done](const Request &request, const auto &) {
        const QVariantMap argument = request.data.toMap();
        const QVariant address = argument.value(QStringLiteral("sink_mac"));
        const QVariant pin = argument.value(QStringLiteral("pin"));
        if (isText(address) && isText(pin))
            source().connectSink(address.toString(), pin.toString(), done(request));
        else
            done(request)(Result::InvalidRequest);
    };
    const auto warmUp = [this, done](const Request &request, const auto &) {
        const QVariantMap argument = request.data.toMap();
        const QVariant name = argument.value(QStringLiteral("name"));
        const bool persistent = argument.value(QStringLiteral("persistent")).toInt() != 0;
        if (isText(name))
            source().warmUp({name.toString(), persistent}, done(request));
        else
            done(request)(Result::InvalidRequest);
    };
    return {
        {QStringLiteral("miracast_sink_discover"), QStringLiteral("scan"), plain(&MiracastSource::scan)},
        {QStringLiteral("miracast_session_start"), QStringLiteral("connect"), connectSink, trusted},
        {QStringLiteral("miracast_session_stop"), QStringLiteral("disconnect"),
            plain(&MiracastSource::disconnectSink), trusted},
        {QStringLiteral("miracast_session_pause"), QStringLiteral("pause"), plain(&MiracastSource::pause),
            trusted},
        {QStringLiteral("miracast_session_resume"), QStringLiteral("resume"), plain(&MiracastSource::resume),
            trusted},
        {QStringLiteral("miracast_shutdown"), QStringLiteral("shutdown"), plain(&MiracastSource::shutdown),
            trusted},
        {QStringLiteral("miracast_app_context"), QStringLiteral("warmup"), warmUp, trusted},
    };
}

bool MiracastPublisher::admit(const PpsServer::Client &client)
{
    if (m_openOfProcess.value(client.pid) < MaxOpenOfProcess
        && m_openOfUser.value(client.uid) < MaxOpenOfUser) {
        ++m_openOfProcess[client.pid];
        ++m_openOfUser[client.uid];
        return true;
    }
    PpsServer::warnAbout(client, QStringLiteral("has too many miracast requests under way"));
    return false;
}

void MiracastPublisher::dismiss(const PpsServer::Client &client)
{
    if (--m_openOfProcess[client.pid] == 0)
        m_openOfProcess.remove(client.pid);
    if (--m_openOfUser[client.uid] == 0)
        m_openOfUser.remove(client.uid);
}

void MiracastPublisher::onRequest(const Request &request, bool isMalformed)
{
    if (isMalformed)
        return answer(request, codeOf(Result::InvalidRequest));
    const auto fault = m_faults.take(request.message);
    if (!fault)
        return handle(request);
    switch (fault->kind) {
    case Fault::AnswerLate:
        QTimer::singleShot(fault->number, this, [this, request] { handle(request); });
        break;
    case Fault::NeverAnswer:
        dismiss(request.client);
        break;
    default:
        answer(request, fault->number);
        break;
    }
}

void MiracastPublisher::handle(const Request &request)
{
    const auto kind = std::find_if(m_requests.begin(), m_requests.end(),
        [&](const RequestKind &each) { return each.message == request.message; });
    if (kind == m_requests.end())
        answer(request, codeOf(Result::InvalidRequest));
    else if (!refusalOf(tree(), *kind, request.client).isEmpty())
        answer(request, codeOf(Result::ForbiddenByPolicy));
    else if (!source().isKnown())
        answer(request, codeOf(Result::ServiceFailed));
    else
        kind->handle(request, services::Answer([](const Reply *) {}));
}

void MiracastPublisher::answer(const Request &request, int code)
{
    m_answers[request.client.uid].enqueue({request.id.toString(), request.message, code, request.client});
    if (!m_turn.isActive())
        return turn();
    // One that stands because nobody waited goes once it has had its time.
    if (m_standing && m_turn.interval() == int(LoneAnswerTime.count())) {
        const int stood = m_turn.interval() - m_turn.remainingTime();
        m_turn.start(std::max(0, int(AnswerTime.count()) - stood));
    }
}

// The standing answer goes, or else the next one comes.
void MiracastPublisher::turn()
{
    if (m_standing) {
        m_standing.reset();
    } else if (!m_answers.empty()) {
        m_standing = takeAnswer();
        dismiss(m_standing->client);
    } else {
        return;
    }
    publishStatus();
    m_turn.start(m_standing && m_answers.empty() ? LoneAnswerTime : AnswerTime);
}

// The next answer of the next user who waits for one.
MiracastPublisher::Answer MiracastPublisher::takeAnswer()
{
    auto next = m_answers.upper_bound(m_lastAnswered);
    if (next == m_answers.end())
        next = m_answers.begin();
    m_lastAnswered = next->first;
    const Answer answer = next->second.dequeue();
    if (next->second.isEmpty())
        m_answers.erase(next);
    return answer;
}

} // namespace oz::services
