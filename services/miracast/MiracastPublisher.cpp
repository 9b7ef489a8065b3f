#include "miracast/MiracastPublisher.hpp"

#include "core/Error.hpp"
#include "core/Log.hpp"

#include <oz/PpsText.hpp>

#include <QPointer>

#include <cerrno>

namespace oz::services {

namespace {

using Source = MiracastSource;

const QString MiracastPpsDir = QStringLiteral("/pps/services/miracast/");

constexpr int MaxTextSize = 256; // of what a request is called by
constexpr int MaxOpenRequests = 10; // of one process: a flood of one does not keep the others waiting

// In the order of the enumerations.
constexpr const char *ConnectionTexts[] = {"DISCONNECTED", "CONNECTING", "CONNECTED"};
constexpr const char *SessionTexts[] = {"STOPPED", "PLAYING", "PAUSED"};

QVariantMap mapOf(const Source::Sink &sink)
{
    return {{QStringLiteral("name"), sink.name}, {QStringLiteral("mac"), sink.address},
        {QStringLiteral("type"), sink.type}};
}

QVariantMap statusOf(const Source::State &state)
{
    QVariantMap status{
        {QStringLiteral("sink_device"), mapOf(state.sink)},
        {QStringLiteral("sink_state"), QLatin1String(ConnectionTexts[int(state.connection)])},
        {QStringLiteral("session"), QLatin1String(SessionTexts[int(state.session)])},
        {QStringLiteral("session_id"), state.sessionId},
        {QStringLiteral("sink_resolution"),
            QVariantMap{{QStringLiteral("width"), state.resolution.width()},
                {QStringLiteral("height"), state.resolution.height()}}},
        {QStringLiteral("service_stop_reason"), state.stopReason},
        {QStringLiteral("service_status"),
            state.stopReason == Source::NotStopped ? QStringLiteral("RUNNING") : QStringLiteral("STOPPED")},
    };
    if (state.application) {
        status.insert(QStringLiteral("app_context"),
            QVariantMap{{QStringLiteral("name"), state.application->name},
                {QStringLiteral("persistent"), state.application->persistent}});
    }
    return status;
}

// Named so that their order is that of the list.
QVariantMap sinksOf(const QList<Source::Sink> &sinks)
{
    QVariantMap attributes;
    for (const Source::Sink &sink : sinks)
        attributes.insert(
            QStringLiteral("sink%1").arg(attributes.size() + 1, 4, 10, QChar(u'0')), mapOf(sink));
    return attributes;
}

// What can be read of a malformed message: the first line of each name that is well-formed by itself.
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

MiracastPublisher::MiracastPublisher(MiracastSource &source)
    : m_source(source), m_status(MiracastPpsDir + QLatin1String("status")),
      m_sinks(MiracastPpsDir + QLatin1String("sinks")), m_control(MiracastPpsDir + QLatin1String("control"))
{
    connect(&source, &MiracastSource::changed, this, &MiracastPublisher::publish);
    connect(&m_control, &PpsServer::received, this, &MiracastPublisher::onReceived);
    m_turn.setSingleShot(true);
    m_turn.setTimerType(Qt::PreciseTimer);
    connect(&m_turn, &QTimer::timeout, this, &MiracastPublisher::turn);
    publish();
    Startup::serve(m_control, 0666);
}

void MiracastPublisher::publish()
{
    const auto state = m_source.state();
    if (!state)
        return;
    m_sinks.publish(sinksOf(state->sinks));
    QVariantMap status = statusOf(*state);
    if (m_standing) {
        status.insert(QStringLiteral("last_request_id"), m_standing->id);
        status.insert(QStringLiteral("last_request"), m_standing->message);
        status.insert(QStringLiteral("last_request_err"), m_standing->code);
    }
    m_status.publish(status);
}

void MiracastPublisher::onReceived(const PpsServer::Client &client, const QByteArray &message)
{
    QString malformed;
    const QVariantMap decoded = PpsText::decode(message, &malformed);
    const QVariantMap attributes = malformed.isEmpty() ? decoded.first().toMap() : readableOf(message);
    const Request request{attributes.value(QStringLiteral("msg")).toString(),
        attributes.value(QStringLiteral("id")).toString(), attributes.value(QStringLiteral("dat")),
        client.pid};
    const auto isName = [](const QString &text) { return !text.isEmpty() && text.size() <= MaxTextSize; };
    if (!isName(request.message) || !isName(request.id)) {
        // Nobody could tell the answer in the status from another's.
        m_control.send(client.id,
            QVariantMap{{QStringLiteral("err"), EINVAL},
                {QStringLiteral("errstr"),
                    QStringLiteral("expected a 'msg' and an 'id' of at most 256 characters each")}});
        return;
    }
    if (!admit(client.pid))
        return;
    if (!malformed.isEmpty())
        return answer(request, Source::InvalidRequest);
    const auto mishap = m_source.takeMishap(request.message);
    if (!mishap)
        return handle(request);
    switch (mishap->kind) {
    case Mishap::AnswerLate:
        QTimer::singleShot(mishap->number, this, [this, request] { handle(request); });
        break;
    case Mishap::NeverAnswer:
        dismiss(request.process);
        break;
    default:
        answer(request, mishap->number);
        break;
    }
}

// Whether there is room for one more request of the process.
bool MiracastPublisher::admit(pid_t process)
{
    Process &asking = m_processes[process];
    if (asking.openRequests < MaxOpenRequests)
        return ++asking.openRequests;
    if (!std::exchange(asking.wasTold, true)) {
        qCWarning(logServices) << "miracast: requests of process" << process
                               << "are dropped: it has too many open ones";
    }
    return false;
}

void MiracastPublisher::dismiss(pid_t process)
{
    if (--m_processes[process].openRequests == 0)
        m_processes.remove(process);
}

void MiracastPublisher::handle(const Request &request)
{
    const Source::Done done = [self = QPointer(this), request](int code) {
        if (self)
            self->answer(request, code);
    };
    const QVariantMap argument = request.data.toMap();
    const QVariant address = argument.value(QStringLiteral("sink_mac"));
    const QVariant pin = argument.value(QStringLiteral("pin"));
    const QVariant name = argument.value(QStringLiteral("name"));
    if (request.message == u"miracast_sink_discover")
        m_source.scan(done);
    else if (request.message == u"miracast_session_start" && isText(address) && isText(pin))
        m_source.connectSink(address.toString(), pin.toString(), done);
    else if (request.message == u"miracast_session_stop")
        m_source.disconnectSink(done);
    else if (request.message == u"miracast_session_pause")
        m_source.pause(done);
    else if (request.message == u"miracast_session_resume")
        m_source.resume(done);
    else if (request.message == u"miracast_shutdown")
        m_source.shutdown(done);
    else if (request.message == u"miracast_app_context" && isText(name))
        m_source.warmUp({name.toString(), argument.value(QStringLiteral("persistent")).toInt() != 0}, done);
    else
        done(Source::InvalidRequest);
}

void MiracastPublisher::answer(const Request &request, int code)
{
    m_answers.enqueue({request.id, request.message, code, request.process});
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
    } else if (!m_answers.isEmpty()) {
        m_standing = m_answers.dequeue();
        dismiss(m_standing->process);
    } else {
        return;
    }
    publish();
    m_turn.start(m_standing && m_answers.isEmpty() ? LoneAnswerTime : AnswerTime);
}

} // namespace oz::services
