#include "phone/SimulatedPart.hpp"

#include <algorithm>

namespace oz::services {

namespace {

// The value of an order's argument; throws WrongOrder where it has none.
QVariant valueOf(const Setting &setting, const QStringList &words)
{
    if (words.isEmpty()) // the argument was left out
        return QString();
    if (const auto value = setting.type.fromArgument(words.first()))
        return *value;
    throw WrongOrder(QLatin1String("expected ") + setting.type.expectedArgument() + QLatin1String(", found '")
        + words.first() + u'\'');
}

SimChoice choiceOf(const ValueType &type)
{
    SimChoice choice;
    choice.unit = type.unit;
    if (type.mayBeUnknown)
        choice.words.append(type.toArgument({}));
    if (type.kind == ValueType::Number) {
        const ValueType::Offer offer = type.offer.value_or(ValueType::Offer{type.least, type.most, 1});
        choice.least = offer.least;
        choice.most = offer.most;
        choice.step = offer.step;
    } else if (type.kind == ValueType::List) {
        choice.words = type.words;
    }
    return choice;
}

SimVerb verbOf(const Order &order, const Setting &setting, const std::function<void()> &update)
{
    if (order.argument.isEmpty()) {
        // Two verbs for one value, such as "insert" and "ready", would both be so: the last one is the
        // switch's.
        const auto last = std::find_if(setting.orders.rbegin(), setting.orders.rend(),
            [&](const Order &other) { return other.argument.isEmpty() && other.value == order.value; });
        const bool isLast = last->verb == order.verb;
        SimVerb state = SimVerb::state(
            order.verb, order.help,
            [set = setting.set, value = order.value, update] {
                set(value);
                update();
            },
            [get = setting.get, value = order.value] { return get() == value; },
            isLast ? setting.key : QString());
        state.repeats = !isLast;
        return state;
    }
    SimVerb verb{order.verb, {order.argument}, order.help, [setting, update](const QStringList &words) {
                     setting.set(valueOf(setting, words));
                     update();
                 }};
    verb.now = [setting]() -> QVariant {
        const QVariant value = setting.get();
        return setting.type.kind == ValueType::Truth ? value : setting.type.toArgument(value);
    };
    const ValueType::Kind kind = setting.type.kind;
    if (kind == ValueType::Number || kind == ValueType::List)
        verb.choices.insert(order.argument, choiceOf(setting.type));
    return verb;
}

} // namespace

std::vector<Setting> SimulatedPart::settings(const QString &)
{
    return {};
}

std::vector<SimVerb> SimulatedPart::verbs(const QString &instance)
{
    std::vector<SimVerb> verbs;
    for (const Setting &setting : settings(instance)) {
        for (const Order &order : setting.orders) {
            verbs.push_back(verbOf(order, setting, [this] { update(); }));
            verbs.back().formerName = order.formerVerb;
        }
    }
    return verbs;
}

QVariantMap SimulatedPart::savedOf(const std::vector<Setting> &settings)
{
    QVariantMap saved;
    for (const Setting &setting : settings) {
        if (setting.isKept)
            saved.insert(setting.key, setting.get());
    }
    return saved;
}

bool SimulatedPart::restoreTo(const std::vector<Setting> &settings, const QVariantMap &saved)
{
    bool fits = true;
    for (const Setting &setting : settings) {
        if (!setting.isKept || !saved.contains(setting.key))
            continue;
        try {
            if (const auto value = setting.type.accept(saved.value(setting.key)))
                setting.set(*value);
            else
                fits = false;
        } catch (const WrongSetting &) { // it does not fit the others
            fits = false;
        }
    }
    return fits;
}

QVariantMap SimulatedPart::saved()
{
    QVariantMap saved = savedOf(settings({}));
    if (!instancesKey().isEmpty()) {
        QVariantMap all;
        for (const QString &instance : instances())
            all.insert(instance, savedOf(settings(instance)));
        saved.insert(instancesKey(), all);
    }
    return saved;
}

void SimulatedPart::restore(const QVariantMap &saved)
{
    (void)restoreTo(settings({}), saved);
    const QVariantMap all = saved.value(instancesKey()).toMap();
    for (auto instance = all.cbegin(); instance != all.cend(); ++instance) {
        if (instances().contains(instance.key()))
            (void)restoreTo(settings(instance.key()), instance->toMap());
    }
    update();
}

void SimulatedPart::read(
    const JsonNode &section, const std::vector<Setting> &settings, const QStringList &keys)
{
    QStringList known;
    for (const Setting &setting : settings)
        known.append(setting.key);
    section.allowOnly(known + keys);
    for (const Setting &setting : settings) {
        const bool isSaid = section.contains(setting.key);
        try {
            setting.set(isSaid ? section.value(setting.key, setting.type) : setting.initial);
        } catch (const WrongSetting &error) {
            section.fail(error.text(), setting.key);
        }
    }
}

} // namespace oz::services
