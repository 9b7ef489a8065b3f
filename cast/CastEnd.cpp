#include "CastEnd.hpp"

#include <algorithm>

namespace oz::cast {

namespace {

// By the reasons' numbers.
const char *const Words[] = {"asked", "sink", "lost", "refused", "failed"};

} // namespace

QJsonObject CastEnd::toJson(int id) const
{
    return {{QStringLiteral("id"), id}, {QStringLiteral("why"), QLatin1String(Words[reason])},
        {QStringLiteral("text"), text}};
}

CastEnd CastEnd::fromJson(const QJsonObject &json)
{
    const QString word = json[QStringLiteral("why")].toString();
    const auto *const known = std::find_if(
        std::begin(Words), std::end(Words), [&](const char *one) { return word == QLatin1String(one); });
    return {known == std::end(Words) ? Failed : Reason(known - std::begin(Words)),
        json[QStringLiteral("text")].toString()};
}

} // namespace oz::cast
