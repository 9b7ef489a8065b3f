#include "phone/SimVerb.hpp"

#include "publishing/Faults.hpp"
#include "publishing/ServedObject.hpp"

#include <algorithm>
#include <cerrno>

namespace oz::services {

namespace {

[[noreturn]] void failExpecting(const QString &expected, const QString &found)
{
    throw WrongOrder(QLatin1String("expected ") + expected + QLatin1String(", found '") + found + u'\'');
}

QString rangeText(double least, double most)
{
    return QLatin1String(" from ") + QString::number(least) + QLatin1String(" to ")
        + QString::number(most, 'g', 10);
}

} // namespace

SimVerb SimVerb::onOff(const QString &verb, const QString &description,
    const std::function<void(bool on)> &turn, const std::function<bool()> &isOn)
{
    static const QStringList words{QStringLiteral("on"), QStringLiteral("off")};
    return SimVerb{verb, {QStringLiteral("on|off")}, description,
        [turn](const QStringList &given) { turn(SimArgument::oneOf(given[0], words) == 0); }}
        .with([isOn] { return isOn(); });
}

SimVerb SimVerb::state(const QString &verb, const QString &description, const std::function<void()> &become,
    const std::function<bool()> &isSo, const QString &sets)
{
    SimVerb state = SimVerb{verb, {}, description, [become](const QStringList &) { become(); }}.with(
        [isSo] { return isSo(); });
    state.sets = sets;
    return state;
}

SimVerb SimVerb::with(const std::function<QVariant()> &value, const QMap<QString, SimChoice> &offered) const
{
    SimVerb verb = *this;
    verb.now = value;
    verb.choices = offered;
    return verb;
}

SimVerb SimVerb::fault(const FaultOrder &order)
{
    QStringList arguments;
    if (!order.words.isEmpty())
        arguments.append(order.words.join(u'|'));
    if (!order.number.isEmpty())
        arguments.append(order.number);
    const auto wordIn = [order](const QStringList &given) {
        if (!order.words.isEmpty())
            (void)SimArgument::oneOf(given.first(), order.words);
        return order.words.isEmpty() ? QString() : given.first();
    };
    const auto numberIn = [order](const QStringList &given) {
        return order.number.isEmpty() ? 0 : SimArgument::integer(given.last(), order.least, order.most);
    };
    SimVerb verb{order.name, arguments, order.help,
        [order, wordIn, numberIn](const QStringList &given) { order.give(wordIn(given), numberIn(given)); },
        [wordIn, numberIn](const QStringList &given) {
            (void)wordIn(given);
            (void)numberIn(given);
        }};
    if (!order.number.isEmpty()) {
        verb.choices.insert(
            order.number, {{}, double(order.least), double(order.most), 1, order.unit, order.titles});
    }
    return verb;
}

Reply refusalFor(const Error &error)
{
    const bool isMeaningless = dynamic_cast<const WrongOrder *>(&error) != nullptr;
    return Reply::failure(isMeaningless ? EINVAL : ECANCELED, error.text());
}

void SimVerb::runAs(const QString &title, const QStringList &given) const
{
    const auto optional = std::count_if(arguments.begin(), arguments.end(),
        [](const QString &argument) { return argument.startsWith(u'['); });
    if (given.size() > arguments.size() || given.size() < arguments.size() - optional) {
        throw WrongOrder(title + QLatin1String(" takes ")
            + (arguments.isEmpty() ? QStringLiteral("no arguments") : arguments.join(u' '))
            + QLatin1String(", not ") + QString::number(given.size()) + QLatin1String(" arguments"));
    }
    try {
        run(given);
    } catch (const WrongOrder &error) {
        throw WrongOrder(title + QLatin1String(": ") + error.text());
    } catch (const Error &error) {
        throw Error(title + QLatin1String(": ") + error.text());
    }
}

int SimArgument::integer(const QString &word, int least, int most)
{
    bool ok = false;
    const int value = word.toInt(&ok);
    if (!ok || value < least || value > most)
        failExpecting(QLatin1String("a whole number") + rangeText(least, most), word);
    return value;
}

double SimArgument::number(const QString &word, double least, double most)
{
    bool ok = false;
    const double value = word.toDouble(&ok);
    if (!ok || !(value >= least && value <= most))
        failExpecting(QLatin1String("a number") + rangeText(least, most), word);
    return value;
}

int SimArgument::oneOf(const QString &word, const QStringList &words)
{
    if (!words.contains(word))
        failExpecting(QLatin1String("one of ") + words.join(QLatin1String(", ")), word);
    return int(words.indexOf(word));
}

} // namespace oz::services
