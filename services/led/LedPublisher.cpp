#include "led/LedPublisher.hpp"

#include "core/Error.hpp"

#include <cerrno>
#include <limits>

namespace oz::services {

namespace {

const QString Directory = QStringLiteral("/pps/services/led/");

constexpr int LongestId = 64; // characters
constexpr int MostRequests = 100; // of one client
constexpr std::size_t MostTold = 50; // of all clients

struct Color
{
    const char *name;
    LedSource::Elements elements;
};

constexpr Color Colors[] = {
    {"red", {true, false, false}},
    {"green", {false, true, false}},
    {"blue", {false, false, true}},
    {"yellow", {true, true, false}},
    {"cyan", {false, true, true}},
    {"magenta", {true, false, true}},
    {"white", {true, true, true}},
};

const Color &colorNamed(const QVariant &value)
{
    const QString name = value.toString();
    QStringList names;
    for (const Color &color : Colors) {
        if (name == QLatin1String(color.name))
            return color;
        names.append(QLatin1String(color.name));
    }
    throw Error(QLatin1String("'color' is one of ") + names.join(QLatin1String(", "))
        + QLatin1String(", not '") + name.left(LongestId) + u'\'');
}

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

QVariantMap attributesOf(const LedRequest &request)
{
    return {{QStringLiteral("id"), request.id}, {QStringLiteral("process"), request.process},
        {QStringLiteral("color"), request.color}, {QStringLiteral("count"), request.count},
        {QStringLiteral("shown"), request.shown}};
}

} // namespace

LedPublisher::LedPublisher(LedSource &source)
    : m_source(source), m_requests(source), m_status(Directory + QLatin1String("status")),
      m_activity(Directory + QLatin1String("activity")),
      m_control(
          Directory + QLatin1String("control"), [this](const Request &request) { return onRequest(request); },
          [this](const Request &request) { return m_source.takeMishap(request.message); })
{
    connect(&m_source, &LedSource::changed, this, &LedPublisher::publishStatus);
    connect(&m_requests, &LedRequests::changed, this, &LedPublisher::publishActivity);
    connect(&m_control, &ControlObject::clientGone, this,
        [this](const PpsServer::Client &client) { m_requests.forget(client.id); });
    publishStatus();
    publishActivity();
    m_control.start(0666);
}

LedPublisher::~LedPublisher()
{
    // Nobody is there to darken it later.
    m_source.light({});
}

void LedPublisher::publishStatus()
{
    const auto lit = m_source.lit();
    if (!lit)
        return;
    const auto text = [](bool on) { return on ? QStringLiteral("on") : QStringLiteral("off"); };
    m_status.publish({{QStringLiteral("red"), text(lit->red)}, {QStringLiteral("green"), text(lit->green)},
        {QStringLiteral("blue"), text(lit->blue)}});
}

void LedPublisher::publishActivity()
{
    QVariantList requests;
    const std::vector<LedRequest> &all = m_requests.current();
    for (std::size_t i = all.size() - std::min(all.size(), MostTold); i < all.size(); ++i)
        requests.append(attributesOf(all[i]));
    QVariantMap activity{
        {QStringLiteral("requests"), requests}, {QStringLiteral("flashes"), m_requests.flashes()}};
    if (const auto &last = m_requests.last()) {
        QVariantMap ended = attributesOf(last->first);
        ended.insert(QStringLiteral("end"), last->second);
        activity.insert(QStringLiteral("last"), ended);
    }
    m_activity.publish(activity);
}

Reply LedPublisher::onRequest(const Request &request)
{
    LedRequest led;
    led.client = request.client.id;
    led.id = request.id.toString();
    led.process = request.client.pid;
    if (led.id.isEmpty() || led.id.size() > LongestId)
        return Reply::failure(EINVAL, QStringLiteral("a request has an 'id' of 1 to 64 characters"));
    if (request.message == u"requestLED") {
        if (m_requests.countOf(led.client) >= MostRequests)
            return Reply::failure(EBUSY, QStringLiteral("this client has 100 requests under way"));
        try {
            begin(led, request.data.toMap());
        } catch (const Error &error) {
            return Reply::failure(EINVAL, QString::fromUtf8(error.what()));
        }
        return {};
    }
    if (request.message == u"cancelLED") {
        const bool cancelled = m_requests.cancel(led.client, led.id);
        return cancelled
            ? Reply()
            : Reply::failure(ENOENT,
                QLatin1String("this client has no request '") + led.id + QLatin1String("' under way"));
    }
    return Reply::failure(EINVAL,
        QLatin1String("unknown request '") + request.message.left(LongestId)
            + QLatin1String("'; known are requestLED, cancelLED"));
}

void LedPublisher::begin(LedRequest led, const QVariantMap &data)
{
    const Color &color = colorNamed(data.value(QStringLiteral("color")));
    led.color = QLatin1String(color.name);
    led.elements = color.elements;
    led.count = countIn(data.value(QStringLiteral("blinkCount")));
    m_requests.begin(led);
}

} // namespace oz::services
