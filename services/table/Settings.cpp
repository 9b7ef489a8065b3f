#include "table/Settings.hpp"

namespace oz::services {

std::vector<Order> either(
    const char *verbOfTrue, const char *helpOfTrue, const char *verbOfFalse, const char *helpOfFalse)
{
    return {{QLatin1String(verbOfTrue), QString::fromUtf8(helpOfTrue), {}, true},
        {QLatin1String(verbOfFalse), QString::fromUtf8(helpOfFalse), {}, false}};
}

std::vector<Order> formerly(std::vector<Order> orders, std::initializer_list<const char *> verbs)
{
    Q_ASSERT(orders.size() == verbs.size());
    auto order = orders.begin();
    for (const char *verb : verbs)
        (order++)->formerVerb = QLatin1String(verb);
    return orders;
}

std::vector<Order> eachWord(std::initializer_list<WordOrder> verbs)
{
    std::vector<Order> orders;
    for (const WordOrder &each : verbs) {
        orders.push_back({QLatin1String(each.verb), QString::fromUtf8(each.help), {},
            QString::fromLatin1(each.word ? each.word : each.verb)});
    }
    return orders;
}

std::vector<Order> onOff(const char *verb, const char *help)
{
    return told(verb, "on|off", help);
}

std::vector<Order> told(const char *verb, const char *argument, const char *help)
{
    return {{QLatin1String(verb), QString::fromUtf8(help), QString::fromUtf8(argument)}};
}

} // namespace oz::services
