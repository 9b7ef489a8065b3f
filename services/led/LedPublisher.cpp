#include "led/LedPublisher.hpp"

#include "led/LedActivity.hpp"
#include "publishing/StateStore.hpp"
#include "source/Error.hpp"

#include <oz/Limits.hpp>

#include <QFile>

#include <cerrno>
#include <limits>

namespace oz::services {

namespace {

constexpr int LongestId = 64; // characters
constexpr int MostRequests = 50; // of one user
constexpr std::size_t MostTold = 50; // of all clients

int countIn(const QVariant &value)
{
    const bool isNumber = value.typeId() == QMetaType::Int || value.typeId() == QMetaType::LongLong
        || value.typeId() == QMetaType::Double;
    const double count = value.toDouble();
    if (!isNumber || count != std::clamp<double>(count, -1, std::numeric_limits<int>::max()) || count == 0
        || count != int(count)) {
        throw Error(QLatin1String("'blinkCount' is a whole number from 1 to 2147483647, or -1, not '")
            + value.toString().left(LongestId) + u'\'');
    }
    return int(count);
}

// When a process started; 0 for one that is gone.
qulonglong startOf(qint64 process)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(process));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    return text.mid(text.lastIndexOf(')') + 2).split(' ').value(19).toULongLong();
}

QVariantMap savedOf(const LedRequest &request)
{
    QVariantMap saved = attributesOf(request);
    saved.insert(QStringLiteral("started"), request.started);
    saved.insert(QStringLiteral("user"), request.user);
    return saved;
}

void setColor(LedRequest *led, const QVariant &value)
{
    const QString name = value.toString();
    const auto elements = valueOf(ledColors(), name);
    if (!elements) {
        throw Error(QLatin1String("'color' is one of ") + wordsIn(ledColors()).join(QLatin1String(", "))
            + QLatin1String(", not '") + name.left(LongestId) + u'\'');
    }
    led->color = name;
    led->elements = *elements;
}

} // namespace

LedPublisher::LedPublisher(const QString &facility, LedSource &source, Tree &tree)
    : FieldsPublisher(facility, source, tree, {&ledFields()}, Unfollowed()), m_requests(source),
      m_activity(tree, ledActivityFields().path(), ledActivityFields().mode()),
      m_control(tree, LedControl, requests(), &source)
{
    connect(&m_requests, &LedRequests::changed, this, &LedPublisher::onRequestsChanged);
    connect(&m_control, &ControlObject::clientCame, this, &LedPublisher::onConnected);
    connect(&m_control, &ControlObject::clientGone, this, &LedPublisher::onGone);
    m_grace.setSingleShot(true);
    connect(&m_grace, &QTimer::timeout, this, &LedPublisher::forgetOrphans);
    restore();
    onRequestsChanged();
    follow();
    m_control.start(0666);
}

LedPublisher::~LedPublisher()
{
    // Nobody is there to darken it later.
    source().light({}, [](const Outcome &) {});
}

RequestTable LedPublisher::requests()
{
    const auto answered = [this](Reply (LedPublisher::*handle)(const Request &)) {
        return [this, handle](const Request &request, const Answer &answer) {
            try {
                answer((this->*handle)(request));
            } catch (const Error &error) {
                answer(Reply::failure(EINVAL, error.text()));
            }
        };
    };
    return {{QStringLiteral("requestLED"), {}, answered(&LedPublisher::begin)},
        {QStringLiteral("cancelLED"), {}, answered(&LedPublisher::cancel)}};
}

void LedPublisher::onRequestsChanged()
{
    const std::vector<LedRequest> &all = m_requests.current();
    QVariantList saved;
    for (const LedRequest &request : all)
        saved.append(savedOf(request));
    tree().store().save(facility(), {{QStringLiteral("requests"), saved}});
    holdClients();
    const std::size_t told = std::min(all.size(), MostTold);
    m_activity.publish(ledActivityFields().attributes(
        {{all.end() - qsizetype(told), all.end()}, m_requests.flashes(), m_requests.last()}));
}

// A connection with a request under way gives way to nobody.
void LedPublisher::holdClients()
{
    std::set<quint64> busy;
    for (const LedRequest &request : m_requests.current())
        busy.insert(request.client);
    for (const quint64 client : busy) {
        if (!m_held.contains(client))
            m_control.hold(client);
    }
    for (const quint64 client : std::exchange(m_held, busy)) {
        if (!busy.contains(client))
            m_control.release(client);
    }
}

LedRequest LedPublisher::requestOf(const Request &request) const
{
    LedRequest led;
    led.client = request.client.id;
    led.id = request.id.toString();
    led.process = request.client.pid;
    led.user = request.client.uid;
    if (const auto process = m_clients.find(led.client); process != m_clients.end())
        led.started = process->second.started;
    if (led.id.isEmpty() || led.id.size() > LongestId)
        throw Error(QStringLiteral("a request has an 'id' of 1 to 64 characters"));
    return led;
}

Reply LedPublisher::begin(const Request &request)
{
    LedRequest led = requestOf(request);
    if (m_requests.countBeside(led) >= MostRequests)
        return Reply::failure(EBUSY, QStringLiteral("this user has %1 requests under way").arg(MostRequests));
    const QVariantMap data = request.data.toMap();
    setColor(&led, data.value(QStringLiteral("color")));
    led.count = countIn(data.value(QStringLiteral("blinkCount")));
    m_requests.begin(led);
    return {};
}

Reply LedPublisher::cancel(const Request &request)
{
    const LedRequest led = requestOf(request);
    return m_requests.cancel(led)
        ? Reply()
        : Reply::failure(
            ENOENT, QLatin1String("this client has no request '") + led.id + QLatin1String("' under way"));
}

// Its connection stands for what it asked for, also before a restart.
void LedPublisher::onConnected(const PpsServer::Client &client)
{
    m_clients[client.id] = {client.pid, startOf(client.pid)};
}

void LedPublisher::onGone(const PpsServer::Client &client)
{
    m_clients.erase(client.id);
    m_requests.forget([&](const LedRequest &request) { return request.client == client.id; });
    if (!m_grace.isActive())
        forgetOrphans();
}

void LedPublisher::restore()
{
    std::vector<LedRequest> requests;
    const QVariantMap before = tree().store().load(facility());
    for (const QVariant &entry : before.value(QStringLiteral("requests")).toList()) {
        const QVariantMap saved = entry.toMap();
        LedRequest led;
        led.id = saved.value(QStringLiteral("id")).toString();
        led.process = saved.value(QStringLiteral("process")).toLongLong();
        led.count = saved.value(QStringLiteral("count")).toInt();
        led.shown = saved.value(QStringLiteral("shown")).toInt();
        led.started = saved.value(QStringLiteral("started")).toULongLong();
        led.user = saved.value(QStringLiteral("user")).toUInt();
        if (led.started == 0 || led.started != startOf(led.process) || led.isDone())
            continue;
        try {
            setColor(&led, saved.value(QStringLiteral("color")));
        } catch (const Error &) {
            continue;
        }
        requests.push_back(led);
    }
    if (requests.empty())
        return;
    m_requests.restore(requests);
    m_grace.start(graceTime());
}

// Those of before a restart whose processes did not come back, or have gone.
void LedPublisher::forgetOrphans()
{
    m_requests.forget([this](const LedRequest &request) {
        return request.client == 0
            && std::none_of(m_clients.begin(), m_clients.end(),
                [&](const auto &client) { return client.second.number == request.process; });
    });
}

} // namespace oz::services
