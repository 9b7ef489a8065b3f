#include "led/LedActivity.hpp"

namespace oz::services {

namespace {

using C = Columns<LedActivity>;

QVariant requestsOf(const LedActivity &activity)
{
    QVariantList requests;
    for (const LedRequest &request : activity.requests)
        requests.append(attributesOf(request));
    return requests;
}

QVariant lastOf(const LedActivity &activity)
{
    if (!activity.last)
        return {};
    QVariantMap ended = attributesOf(activity.last->first);
    ended.insert(QStringLiteral("end"), activity.last->second);
    return ended;
}

QVariant isActive(const QVariant &requests)
{
    return requests.isValid() ? QVariant(!requests.toList().isEmpty()) : QVariant();
}

// A member of the request that came last.
Column<LedActivity> ofNewest(const ValueType &type, const char *member)
{
    return C::custom(type, {}, [member = QString::fromLatin1(member)](const QVariant &requests) {
        const QVariantList all = requests.toList();
        return all.isEmpty() ? QVariant() : all.last().toMap().value(member);
    });
}

// One attribute read alone, completed by those that it belongs to.
Column<LedActivity> readAs(const ValueType &type)
{
    return C::custom(type, {});
}

QVariant endWord(const QVariant &end)
{
    return end == QLatin1String("client gone") ? QStringLiteral("client-gone") : end;
}

} // namespace

QVariantMap attributesOf(const LedRequest &request)
{
    return {{QStringLiteral("id"), request.id}, {QStringLiteral("process"), request.process},
        {QStringLiteral("color"), request.color}, {QStringLiteral("count"), request.count},
        {QStringLiteral("shown"), request.shown}};
}

const Fields<LedActivity> &ledActivityFields()
{
    static const ValueType color{ValueType::Word, {}, wordsIn(ledColors())};
    static const ValueType end{ValueType::Word, {},
        {QStringLiteral("done"), QStringLiteral("cancelled"), QStringLiteral("replaced"),
            QStringLiteral("client-gone")}};
    static const ValueType number{ValueType::Number};
    static const Fields<LedActivity> fields(QStringLiteral("/pps/services/led/activity"),
        {
            {"active", "requests", C::custom({ValueType::Truth}, requestsOf, isActive),
                "whether a request is under way"},
            {"color", "requests", ofNewest(color, "color"), "the colour of the newest request under way"},
            {"shown", "requests", ofNewest(number, "shown"), "how many of its flashes were shown"},
            {"flashes", "flashes", C::number(&LedActivity::flashes),
                "how many flashes were shown since the service started"},
            {"", "last", C::custom({}, lastOf), ""},
            {"last-color", "last/color", readAs(color), "the colour of the request that ended last"},
            {"last-shown", "last/shown", readAs(number), "how many flashes it showed"},
            {"last-end", "last/end", C::custom(end, {}, endWord), "how it ended"},
        },
        0640);
    return fields;
}

} // namespace oz::services
