#include "core/SimulatedPhone.hpp"

#include "activity/SimulatedActivity.hpp"
#include "battery/SimulatedBattery.hpp"
#include "cellularnetwork/SimulatedNetworks.hpp"
#include "core/Error.hpp"
#include "dataprofile/SimulatedDataProfiles.hpp"
#include "display/SimulatedDisplays.hpp"
#include "hardware/SimulatedHardware.hpp"
#include "led/SimulatedLed.hpp"
#include "miracast/SimulatedMiracast.hpp"
#include "orientation/SimulatedOrientation.hpp"
#include "radio/SimulatedRadio.hpp"
#include "sdcard/SimulatedSdCard.hpp"
#include "simcard/SimulatedSimCard.hpp"
#include "vibration/SimulatedVibrator.hpp"
#include "wifidirect/SimulatedWiFiDirect.hpp"

namespace oz::services {

namespace {

[[noreturn]] void failExpecting(const QString &expected, const QString &found)
{
    throw Error(QLatin1String("expected ") + expected + QLatin1String(", found '") + found + u'\'');
}

QString rangeText(double least, double most)
{
    return QLatin1String(" from ") + QString::number(least) + QLatin1String(" to ")
        + QString::number(most, 'g', 10);
}

void runVerb(const QString &title, const SimVerb &verb, const QStringList &arguments)
{
    const auto optional = std::count_if(verb.arguments.begin(), verb.arguments.end(),
        [](const QString &argument) { return argument.startsWith(u'['); });
    if (arguments.size() > verb.arguments.size() || arguments.size() < verb.arguments.size() - optional) {
        throw Error(title + QLatin1String(" takes ")
            + (verb.arguments.isEmpty() ? QStringLiteral("no arguments") : verb.arguments.join(u' '))
            + QLatin1String(", not ") + QString::number(arguments.size()) + QLatin1String(" arguments"));
    }
    try {
        verb.run(arguments);
    } catch (const Error &error) {
        throw Error(title + QLatin1String(": ") + QString::fromUtf8(error.what()));
    }
}

// Takes the next word, which is one of \a known; throws with \a title where it is not.
QString takeWord(const QString &title, const QStringList &known, QStringList *words)
{
    if (words->isEmpty())
        throw Error(title + QLatin1String(" wants one of ") + known.join(u", "));
    QString word = words->first();
    if (!known.contains(word)) {
        throw Error(
            title + QLatin1String(" has no '") + word + QLatin1String("'; it has ") + known.join(u", "));
    }
    words->removeFirst();
    return word;
}

} // namespace

SimVerb SimVerb::onOff(
    const QString &verb, const QString &description, const std::function<void(bool on)> &turn)
{
    static const QStringList words{QStringLiteral("on"), QStringLiteral("off")};
    return {verb, {QStringLiteral("on|off")}, description,
        [turn](const QStringList &given) { turn(SimArgument::oneOf(given[0], words) == 0); }};
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

SimulatedPhone::SimulatedPhone(const JsonNode &file)
{
    const auto section = [&](const char *name) { return file.map(QLatin1String(name)); };
    m_parts.push_back(std::make_unique<SimulatedSdCard>(section("sdcard")));
    m_parts.push_back(std::make_unique<SimulatedBattery>(section("battery")));
    m_parts.push_back(std::make_unique<SimulatedActivity>(section("activity")));
    m_parts.push_back(std::make_unique<SimulatedOrientation>(section("orientation")));
    m_parts.push_back(std::make_unique<SimulatedDisplays>(section("display")));
    m_parts.push_back(std::make_unique<SimulatedHardware>(section("hardware")));
    m_parts.push_back(std::make_unique<SimulatedSimCard>(section("simcard")));
    m_parts.push_back(
        std::make_unique<SimulatedNetworks>(section("cellular-network"), part<SimulatedSimCard>()));
    m_parts.push_back(std::make_unique<SimulatedRadio>(section("radio"), part<SimulatedNetworks>()));
    m_parts.push_back(
        std::make_unique<SimulatedDataProfiles>(section("data-profile"), part<SimulatedRadio>()));
    m_parts.push_back(std::make_unique<SimulatedLed>(section("led")));
    m_parts.push_back(std::make_unique<SimulatedVibrator>(section("vibration")));
    m_parts.push_back(std::make_unique<SimulatedWiFiDirect>(section("wifi-direct")));
    m_parts.push_back(std::make_unique<SimulatedMiracast>(
        section("miracast"), part<SimulatedHardware>(), part<SimulatedDisplays>()));

    QStringList names;
    for (const auto &part : m_parts)
        names.append(part->name());
    file.allowOnly(names);
}

SimulatedPhone::~SimulatedPhone() = default;

QString SimulatedPhone::run(const QString &name, QStringList words)
{
    try {
        QStringList names;
        for (const auto &part : m_parts)
            names.append(part->name());
        QStringList path{name};
        words.prepend(name);
        takeWord(QStringLiteral("the simulated phone"), names, &words);
        SimulatedPart &part = **std::find_if(
            m_parts.begin(), m_parts.end(), [&](const auto &candidate) { return candidate->name() == name; });
        QString instance;
        if (const QStringList instances = part.instances(); instances != QStringList{QString()}) {
            instance = takeWord(path.join(u' '), instances, &words);
            path.append(instance);
        }
        const std::vector<SimVerb> verbs = part.verbs(instance);
        QStringList verbNames;
        for (const SimVerb &verb : verbs)
            verbNames.append(verb.name);
        const QString verb = takeWord(path.join(u' '), verbNames, &words);
        path.append(verb);
        runVerb(path.join(u' '), verbs[std::size_t(verbNames.indexOf(verb))], words);
    } catch (const Error &error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

QVariantMap SimulatedPhone::describe() const
{
    QVariantMap parts;
    for (const auto &part : m_parts) {
        QVariantMap described;
        const QStringList instances = part->instances();
        if (instances != QStringList{QString()})
            described.insert(QStringLiteral("instances"), instances);
        QVariantList verbs;
        for (const SimVerb &verb : part->verbs(instances.value(0))) {
            verbs.append(QVariantMap{{QStringLiteral("name"), verb.name},
                {QStringLiteral("arguments"), verb.arguments}, {QStringLiteral("help"), verb.help}});
        }
        described.insert(QStringLiteral("verbs"), verbs);
        parts.insert(part->name(), described);
    }
    return parts;
}

} // namespace oz::services
