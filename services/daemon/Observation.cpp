#include "daemon/Observation.hpp"

#include "daemon/Paging.hpp"
#include "phone/SimVerb.hpp"
#include "publishing/Tree.hpp"
#include "source/Error.hpp"

#include <cerrno>

namespace oz::services {

namespace {

constexpr std::size_t MostAsked = 10'000;
constexpr double LongestWait = 3600;

} // namespace

Observation::Observation(Tree &tree)
    : m_tree(tree), m_count(tree, QStringLiteral("/pps/system/ozdeviced/requests"), 0600)
{
    connect(&tree, &Tree::toldAnew, this, &Observation::evaluateLater);
}

RequestTable Observation::requests()
{
    const auto guarded = [](const std::function<void(const QVariantMap &, const Answer &)> &handle) {
        return [handle](const Request &request, const Answer &answer) {
            try {
                handle(request.data.toMap(), answer);
            } catch (const Error &error) {
                answer(refusalFor(error));
            }
        };
    };
    return {
        {QStringLiteral("value"), {},
            guarded([this](const QVariantMap &order, const Answer &answer) { value(order, answer); })},
        {QStringLiteral("await"), {},
            guarded([this](const QVariantMap &order, const Answer &answer) { await(order, answer); })},
        {QStringLiteral("observe"), {}, guarded([this](const QVariantMap &, const Answer &answer) {
             observe();
             answer({});
         })},
        {QStringLiteral("requests"), {},
            guarded([this](const QVariantMap &order, const Answer &answer) { tellRequests(order, answer); })},
    };
}

void Observation::value(const QVariantMap &order, const Answer &answer) const
{
    const QVariant now = publicValueNamed(order.value(QStringLiteral("name")).toString()).now(m_tree);
    QVariantMap told;
    if (now.isValid())
        told.insert(QStringLiteral("value"), now);
    answer({told, 0, {}});
}

void Observation::await(const QVariantMap &order, const Answer &answer)
{
    const QString text = order.value(QStringLiteral("condition")).toString();
    const double within = order.value(QStringLiteral("within")).toDouble();
    Waiting waiting{answer,
        Condition::parse(text, [this](const QString &word) { return Condition::valueOfTree(word, m_tree); }),
        std::clamp(within, 0.0, LongestWait), std::make_unique<QTimer>()};
    waiting.timer->setSingleShot(true);
    connect(waiting.timer.get(), &QTimer::timeout, this, &Observation::evaluate);
    if (waiting.seconds > 0)
        waiting.timer->start(int(waiting.seconds * 1000));
    if (!answers(waiting))
        m_waiting.push_back(std::move(waiting));
}

bool Observation::answers(const Waiting &waiting)
{
    if (waiting.condition.holds()) {
        waiting.answer({});
        return true;
    }
    if (waiting.timer->isActive())
        return false;
    QString text = waiting.condition.valuesText();
    if (waiting.seconds > 0)
        text += QStringLiteral(" after %1 s").arg(waiting.seconds);
    waiting.answer(Reply::failure(ETIMEDOUT, text));
    return true;
}

void Observation::observe()
{
    if (m_clock.isValid())
        return;
    m_clock.start();
    m_count.publish({{QStringLiteral("count"), m_next}});
    connect(&m_tree, &Tree::asked, this, &Observation::onAsked);
}

void Observation::tellRequests(const QVariantMap &order, const Answer &answer)
{
    if (!m_clock.isValid())
        throw Error(QStringLiteral("requests are kept from 'observe' on"));
    const QString name = order.value(QStringLiteral("request")).toString();
    const QString with = order.value(QStringLiteral("with")).toString();
    const auto from = order.value(QStringLiteral("from")).toLongLong();
    const AskedRequest *wanted = name.isEmpty() ? nullptr : &publicRequestNamed(name);
    std::function<bool(const QVariantMap &)> meets = [](const QVariantMap &) { return true; };
    if (wanted && !with.isEmpty())
        meets = Condition::overRequest(with, *wanted);
    QVariantList found;
    for (const Asked &asked : m_asked) {
        if (found.size() == MostAtOnce)
            break;
        if (asked.number >= from && (!wanted || asked.request == wanted) && meets(asked.values)) {
            found.append(QVariantMap{{QStringLiteral("request"), asked.request->name},
                {QStringLiteral("values"), asked.values}, {QStringLiteral("number"), asked.number},
                {QStringLiteral("at"), asked.at}});
        }
    }
    answer({QVariantMap{{QStringLiteral("requests"), found}, {QStringLiteral("next"), m_next}}, 0, {}});
}

void Observation::onAsked(const QString &path, const QVariantMap &message)
{
    for (const AskedRequest &request : publicRequests()) {
        const QVariant values = request.read(path, message);
        if (!values.isValid())
            continue;
        if (m_asked.size() == MostAsked)
            m_asked.erase(m_asked.begin());
        m_asked.push_back({m_next++, double(m_clock.elapsed()) / 1000, &request, values.toMap()});
        // Requests that come at the same time are published together.
        if (!std::exchange(m_isCountPlanned, true)) {
            QTimer::singleShot(0, this, [this] {
                m_isCountPlanned = false;
                m_count.publish({{QStringLiteral("count"), m_next}});
            });
        }
        return;
    }
}

// Not in the middle of what happens.
void Observation::evaluateLater()
{
    if (!m_waiting.empty() && !std::exchange(m_isEvaluationPlanned, true))
        QMetaObject::invokeMethod(
            this, [this] { evaluate(); }, Qt::QueuedConnection);
}

void Observation::evaluate()
{
    m_isEvaluationPlanned = false;
    std::erase_if(m_waiting, [](Waiting &waiting) {
        if (!answers(waiting))
            return false;
        waiting.timer.release()->deleteLater(); // it may be the one that is over now
        return true;
    });
}

} // namespace oz::services
