#include "daemon/Observation.hpp"

#include "daemon/LongPoll.hpp"
#include "phone/SimVerb.hpp"
#include "publishing/Tree.hpp"
#include "source/Error.hpp"

#include <cerrno>

namespace oz::services {

namespace {

constexpr std::size_t MostAsked = 10'000;
constexpr int MostShown = 10; // in an error
constexpr double LongestWait = 3600;

QString secondsText(double seconds)
{
    return QString::number(seconds) + QLatin1String(" s");
}

double within(const QVariantMap &order)
{
    return std::clamp(order.value(QStringLiteral("within")).toDouble(), 0.0, LongestWait);
}

} // namespace

Observation::Observation(const Tree &tree) : m_tree(tree)
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
    const Condition condition =
        Condition::parse(text, [this](const QString &word) { return Condition::valueOfTree(word, m_tree); });
    const auto reply = [condition] { return condition.holds() ? std::optional(Reply()) : std::nullopt; };
    const auto late = [condition, seconds = within(order)] {
        const QString values = condition.valuesText();
        return Reply::failure(ETIMEDOUT,
            seconds > 0 ? QString(values + QLatin1String(" after ") + secondsText(seconds)) : values);
    };
    wait(order, {answer, reply, late, nullptr});
}

void Observation::observe()
{
    if (m_clock.isValid())
        return;
    m_clock.start();
    connect(&m_tree, &Tree::asked, this, &Observation::onAsked);
}

void Observation::tellRequests(const QVariantMap &order, const Answer &answer)
{
    if (!m_clock.isValid())
        throw Error(QStringLiteral("requests are kept from 'observe' on"));
    const QString name = order.value(QStringLiteral("request")).toString();
    const QString with = order.value(QStringLiteral("with")).toString();
    const AskedRequest *wanted = name.isEmpty() ? nullptr : &publicRequestNamed(name);
    std::function<bool(const QVariantMap &)> meets = [](const QVariantMap &) { return true; };
    if (wanted && !with.isEmpty())
        meets = Condition::overRequest(with, *wanted);
    const auto matches = [wanted, meets, from = order.value(QStringLiteral("from")).toLongLong()](
                             const Asked &asked) {
        return asked.number >= from && (!wanted || asked.request == wanted) && meets(asked.values);
    };
    const auto times = order.value(QStringLiteral("times")).toLongLong();
    const auto reply = [this, matches, times]() -> std::optional<Reply> {
        const QVariantList all = found(matches);
        if (all.size() < std::min(times, MostAtOnce))
            return std::nullopt;
        return Reply{QVariantMap{{QStringLiteral("requests"), all}, {QStringLiteral("next"), m_next}}, 0, {}};
    };
    const auto late = [this, matches, order, times] {
        QStringList shown;
        const QVariantList all = found([&](const Asked &asked) {
            return asked.number >= order.value(QStringLiteral("from")).toLongLong();
        });
        for (const QVariant &each : all.mid(std::max<qsizetype>(all.size() - MostShown, 0))) {
            QString text = each.toMap().value(QStringLiteral("request")).toString();
            const QVariantMap values = each.toMap().value(QStringLiteral("values")).toMap();
            for (auto value = values.cbegin(); value != values.cend(); ++value)
                text += u' ' + value.key() + u'=' + value->toString();
            shown.append(text);
        }
        return Reply::failure(ETIMEDOUT,
            QStringLiteral("%1 of %2 came within %3; ")
                    .arg(found(matches).size())
                    .arg(times)
                    .arg(secondsText(within(order)))
                + (shown.isEmpty() ? QStringLiteral("nothing was asked")
                                   : QLatin1String("asked was ") + shown.join(QLatin1String(", "))));
    };
    wait(order, {answer, reply, late, nullptr});
}

void Observation::wait(const QVariantMap &order, Waiting waiting)
{
    const double seconds = within(order);
    if (const auto reply = waiting.reply())
        return waiting.answer(*reply);
    if (seconds <= 0)
        return waiting.answer(waiting.late());
    waiting.timer = std::make_unique<QTimer>();
    waiting.timer->setSingleShot(true);
    connect(waiting.timer.get(), &QTimer::timeout, this, &Observation::evaluate);
    waiting.timer->start(int(seconds * 1000));
    m_waiting.push_back(std::move(waiting));
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
        return evaluateLater();
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
        const auto reply = waiting.reply();
        if (!reply && waiting.timer->isActive())
            return false;
        waiting.answer(reply ? *reply : waiting.late());
        waiting.timer.release()->deleteLater(); // it may be the one that is over now
        return true;
    });
}

QVariantList Observation::found(const Matches &matches) const
{
    QVariantList all;
    for (const Asked &asked : m_asked) {
        if (all.size() == MostAtOnce)
            break;
        if (matches(asked)) {
            all.append(QVariantMap{{QStringLiteral("request"), asked.request->name},
                {QStringLiteral("values"), asked.values}, {QStringLiteral("number"), asked.number},
                {QStringLiteral("at"), asked.at}});
        }
    }
    return all;
}

} // namespace oz::services
