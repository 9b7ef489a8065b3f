#include "publishing/ControlObject.hpp"

#include "publishing/Log.hpp"

#include <QPointer>
#include <QTimer>

#include <cerrno>
#include <unistd.h>

namespace oz::services {

namespace {

constexpr int MostUnderWay = 200; // requests of one user that wait for their answers
constexpr int LongestName = 64; // characters of a name that is shown

} // namespace

struct Answer::State
{
    explicit State(End function) : end(std::move(function)) { }
    ~State()
    {
        const Reply lost = Reply::failure(EIO, QStringLiteral("the service has lost the request"));
        finish(&lost);
    }
    State(const State &) = delete;
    State &operator=(const State &) = delete;

    void finish(const Reply *reply)
    {
        if (const End once = std::exchange(end, nullptr))
            once(reply);
    }

    End end;
};

Answer::Answer(End end) : m_state(std::make_shared<State>(std::move(end))) { }

void Answer::operator()(const Reply &reply) const
{
    m_state->finish(&reply);
}

void Answer::withhold() const
{
    m_state->finish(nullptr);
}

Done Answer::toDone(const QString &attribute) const
{
    return [answer = *this, attribute](const Outcome &outcome) {
        Reply reply{{}, outcome.error, outcome.errorText};
        if (outcome.error == 0 && !attribute.isEmpty())
            reply.data = QVariantMap{{attribute, outcome.text}};
        answer(reply);
    };
}

QString refusalOf(const Tree &tree, const RequestKind &kind, const PpsServer::Client &client)
{
    const auto group = tree.trustedGroup();
    if (kind.whom == RequestKind::For::Everybody || !group || client.uid == 0 || client.uid == ::geteuid()
        || client.gid == *group || client.groups.contains(*group))
        return {};
    return QStringLiteral("'%1' acts for everybody, and is for a group that this user is not in")
        .arg(kind.message);
}

ControlObject::ControlObject(
    Tree &tree, const QString &path, RequestTable requests, const Source *source, const FaultErrors &errors)
    : ServedObject(tree, path), m_requests(std::move(requests)), m_source(source),
      m_faults(faultWords(m_requests), errors)
{
}

void ControlObject::onMessage(
    const PpsServer::Client &client, const QVariantMap &attributes, const QString &malformed)
{
    const Request request{client, attributes.value(QStringLiteral("msg")).toString(),
        attributes.value(QStringLiteral("id")), attributes.value(QStringLiteral("dat"))};
    if (!malformed.isEmpty())
        return send(request, Reply::failure(EINVAL, malformed));
    if (request.message.isEmpty())
        return send(request, Reply::failure(EINVAL, QStringLiteral("the request has no 'msg'")));
    const auto user = m_underWay.find(client.uid);
    if (user != m_underWay.end() && user->second >= MostUnderWay) {
        return send(
            request, Reply::failure(EBUSY, QStringLiteral("this user has too many requests under way")));
    }
    const Answer answer = answerTo(request);
    if (const auto fault = m_faults.take(request.message))
        suffer(*fault, request, answer);
    else
        handle(request, answer);
}

void ControlObject::handle(const Request &request, const Answer &answer)
{
    const RequestKind *kind = kindOf(request.message);
    if (const Reply refused = refusal(request, kind); refused.error)
        answer(refused);
    else
        kind->handle(request, answer);
}

Reply ControlObject::refusal(const Request &request, const RequestKind *kind) const
{
    if (!kind) {
        QStringList known;
        for (const RequestKind &each : m_requests)
            known.append(each.message);
        return Reply::failure(EINVAL,
            QLatin1String("unknown request '") + request.message.left(LongestName)
                + QLatin1String("'; known are ") + known.join(QLatin1String(", ")));
    }
    if (const QString refusal = refusalOf(tree(), *kind, request.client); !refusal.isEmpty())
        return Reply::failure(EACCES, refusal);
    if (m_source && !m_source->isKnown())
        return Reply::failure(ENODEV, m_source->absence());
    return {};
}

const RequestKind *ControlObject::kindOf(const QString &message) const
{
    const auto found = std::find_if(m_requests.begin(), m_requests.end(),
        [&](const RequestKind &kind) { return kind.message == message; });
    return found == m_requests.end() ? nullptr : &*found;
}

void ControlObject::suffer(const Fault &fault, const Request &request, const Answer &answer)
{
    switch (fault.kind) {
    case Fault::FailWith:
        answer(Reply::failure(fault.number, qt_error_string(fault.number)));
        break;
    case Fault::AnswerLate:
        handleLater(fault.number, request, answer);
        break;
    case Fault::NeverAnswer:
        answer.withhold();
        break;
    case Fault::DieOnRequest:
        answer.withhold();
        server().disconnectClient(request.client.id);
        break;
    case Fault::AnswerRubbish:
        answer.withhold();
        server().send(request.client.id, QByteArrayLiteral("rubbish\n"));
        break;
    }
}

// A client that is gone by then has nobody to take back what it asked for.
void ControlObject::handleLater(int milliseconds, const Request &request, const Answer &answer)
{
    auto *delay = new QTimer(this);
    delay->setSingleShot(true);
    connect(delay, &QTimer::timeout, delay, &QObject::deleteLater);
    connect(delay, &QTimer::timeout, this, [this, request, answer] { handle(request, answer); });
    connect(this, &ServedObject::clientGone, delay, [delay, request](const PpsServer::Client &client) {
        if (client.id != request.client.id)
            return;
        delay->stop();
        delay->deleteLater();
    });
    delay->start(milliseconds);
}

Answer ControlObject::answerTo(const Request &request)
{
    const quint64 client = request.client.id;
    ++m_underWay[request.client.uid];
    hold(client);
    return Answer([self = QPointer(this), request](const Reply *reply) {
        if (!self)
            return;
        if (const auto user = self->m_underWay.find(request.client.uid); --user->second == 0)
            self->m_underWay.erase(user);
        self->release(request.client.id);
        if (reply)
            self->send(request, *reply);
    });
}

void ControlObject::send(const Request &request, const Reply &reply)
{
    QVariantMap attributes{{QStringLiteral("res"), request.message}};
    if (request.id.isValid())
        attributes.insert(QStringLiteral("id"), request.id);
    if (reply.data.isValid())
        attributes.insert(QStringLiteral("dat"), reply.data);
    reply.addErrorTo(&attributes);
    const QPointer<ControlObject> self(this); // a client that does not read is dropped, which may end this
    if (server().send(request.client.id, attributes) || !self || server().error() != EINVAL)
        return;
    // Without an answer, the client would wait until its limit.
    attributes.remove(QStringLiteral("dat"));
    Reply::failure(EPROTO, QLatin1String("the answer cannot be sent: ") + server().errorString())
        .addErrorTo(&attributes);
    server().send(request.client.id, attributes);
}

} // namespace oz::services
