#include "phone/SimulatedPhone.hpp"

#include "publishing/Log.hpp"
#include "publishing/StateStore.hpp"
#include "source/Error.hpp"

#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace oz::services {

namespace {

const QString ClockName = QStringLiteral("clock");

// The phone's own time, as a part that is in no file.
class ClockPart final : public SimulatedPart
{
public:
    explicit ClockPart(PhoneClock &clock) : m_clock(clock)
    {
        QObject::connect(&clock, &PhoneClock::speedChanged, &clock, [this] { save(); });
    }

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &) override
    {
        return {
            SimVerb{QStringLiteral("advance"), {QStringLiteral("SECONDS")},
                QStringLiteral("lets the phone's time pass at once"),
                [this](const QStringList &words) {
                    m_clock.advance(std::chrono::milliseconds(
                        std::llround(SimArgument::number(words[0], 0, 1'000'000) * 1000)));
                }}
                .with({}, {{QStringLiteral("SECONDS"), {{}, 0, 1'000'000, 1, QStringLiteral("s")}}}),
            SimVerb{QStringLiteral("speed"), {QStringLiteral("FACTOR")},
                QStringLiteral("lets the phone's time go faster than the real one; 0 stands still"),
                [this](const QStringList &words) {
                    m_clock.setSpeed(SimArgument::number(words[0], 0, 100'000));
                }}
                .with([this] { return QString::number(m_clock.speed()); },
                    {{QStringLiteral("FACTOR"), {{}, 0, 100'000, 1}}}),
        };
    }
    [[nodiscard]] QVariantMap saved() override { return {}; }
    void restore(const QVariantMap &) override { }

private:
    PhoneClock &m_clock;
};

// Takes the next word, which is one of \a known; throws with \a title where it is not.
QString takeWord(const QString &title, const QStringList &known, QStringList *words)
{
    if (words->isEmpty())
        throw WrongOrder(title + QLatin1String(" wants one of ") + known.join(u", "));
    QString word = words->first();
    if (!known.contains(word)) {
        throw WrongOrder(
            title + QLatin1String(" has no '") + word + QLatin1String("'; it has ") + known.join(u", "));
    }
    words->removeFirst();
    return word;
}

QVariantMap describeChoices(const QMap<QString, SimChoice> &choices)
{
    QVariantMap described;
    for (auto choice = choices.begin(); choice != choices.end(); ++choice) {
        QVariantMap told;
        if (!choice->words.isEmpty())
            told.insert(QStringLiteral("words"), choice->words);
        if (choice->most > choice->least) {
            told.insert({{QStringLiteral("least"), choice->least}, {QStringLiteral("most"), choice->most},
                {QStringLiteral("step"), choice->step}, {QStringLiteral("unit"), choice->unit}});
        }
        if (!choice->titles.isEmpty()) {
            QVariantMap titles;
            for (auto title = choice->titles.begin(); title != choice->titles.end(); ++title)
                titles.insert(title.key(), *title);
            told.insert(QStringLiteral("titles"), titles);
        }
        if (!choice->followed.isEmpty())
            told.insert(QStringLiteral("followed"), choice->followed);
        if (!choice->alone.isEmpty())
            told.insert(QStringLiteral("alone"), choice->alone);
        described.insert(choice.key(), told);
    }
    return described;
}

// The names of the verbs of which one is so at a time, in lists of at least two.
QVariantList describeSwitches(const std::vector<SimVerb> &verbs)
{
    QVariantList switches;
    QStringList described;
    for (const SimVerb &verb : verbs) {
        if (verb.sets.isEmpty() || described.contains(verb.sets))
            continue;
        described.append(verb.sets);
        QStringList names;
        for (const SimVerb &other : verbs) {
            if (other.sets == verb.sets)
                names.append(other.name);
        }
        if (names.size() > 1)
            switches.append(names);
    }
    return switches;
}

// The paths of the values in \a saved that are not in \a now.
QStringList lostOf(const QJsonObject &saved, const QJsonObject &now)
{
    QStringList lost;
    for (auto each = saved.begin(); each != saved.end(); ++each) {
        const QJsonValue kept = now.value(each.key());
        if (each->isObject() && kept.isObject() && !each->toObject().isEmpty()) {
            for (const QString &path : lostOf(each->toObject(), kept.toObject()))
                lost.append(each.key() + u'.' + path);
        } else if (kept != each.value()) {
            lost.append(each.key());
        }
    }
    return lost;
}

// Restores a part from what was saved at a place, which may have been damaged since.
void restore(SimulatedPart &part, const QVariantMap &saved, const QString &place)
{
    part.restore(saved);
    const QStringList lost =
        lostOf(QJsonObject::fromVariantMap(saved), QJsonObject::fromVariantMap(part.saved()));
    if (!lost.isEmpty()) {
        qCWarning(logServices).noquote() << place + QLatin1String(": '") + lost.join(QLatin1String("', '"))
                + QLatin1String("' ignored, as it does not fit");
    }
}

} // namespace

SimulatedPhone::SimulatedPhone(
    const JsonNode &file, const std::vector<PartDescription> &parts, StateStore &store)
{
    QStringList names;
    for (const PartDescription &description : parts)
        names.append(description.name);
    file.allowOnly(names);
    for (const PartDescription &description : parts)
        add(description.name, description.make(file.map(description.name), *this));

    const QString phone = QStringLiteral("phone");
    const QVariantMap identity{{QStringLiteral("file"), file.fingerprint()}};
    const bool isTheSame = store.load(phone) == identity;
    const auto entryOf = [](const QString &name) { return QString(QLatin1String("phone-") + name); };
    for (const auto &[name, part] : all()) {
        if (const QVariantMap saved = store.load(entryOf(name)); isTheSame && !saved.isEmpty())
            restore(*part, saved, store.placeOf(entryOf(name)));
    }
    for (const auto &[name, part] : all()) {
        const auto save = [this, &store, entry = entryOf(name), saving = part.get()] {
            store.save(entry, saving->saved());
            tellChange();
        };
        save();
        part->onSave(save);
    }
    store.save(phone, identity);
    const auto time = std::make_shared<ClockPart>(clock());
    time->onSave([this] { tellChange(); });
    add(ClockName, time);
}

SimulatedPhone::~SimulatedPhone() = default;

void SimulatedPhone::tellChange() const
{
    if (m_change)
        m_change();
}

void SimulatedPhone::run(const QString &name, QStringList words)
{
    QStringList names;
    for (const auto &[known, part] : all())
        names.append(known);
    QStringList path{name};
    words.prepend(name);
    takeWord(QStringLiteral("the simulated phone"), names, &words);
    SimulatedPart &part = *all()[std::size_t(names.indexOf(name))].second;

    QString instance;
    if (const QStringList instances = part.instances(); instances != QStringList{QString()}) {
        instance = takeWord(path.join(u' '), instances, &words);
        path.append(instance);
    }
    const std::vector<SimVerb> verbs = verbsOf(name, part, instance);
    QStringList verbNames;
    for (const SimVerb &verb : verbs)
        verbNames.append(verb.name);
    // Errors name the verb as it was given, by its present or its former name.
    const auto former = std::find_if(verbs.begin(), verbs.end(), [&words](const SimVerb &each) {
        return !each.formerName.isEmpty() && each.formerName == words.value(0);
    });
    if (former != verbs.end()) {
        path.append(words.takeFirst());
        return former->runAs(path.join(u' '), words);
    }
    const QString verb = takeWord(path.join(u' '), verbNames, &words);
    path.append(verb);
    verbs[std::size_t(verbNames.indexOf(verb))].runAs(path.join(u' '), words);
}

std::vector<SimVerb> SimulatedPhone::verbsOf(
    const QString &name, SimulatedPart &part, const QString &instance) const
{
    std::vector<SimVerb> verbs = part.verbs(instance);
    if (m_furtherVerbs) {
        for (SimVerb &verb : m_furtherVerbs(name, instance))
            verbs.push_back(std::move(verb));
    }
    return verbs;
}

QVariantMap SimulatedPhone::describe() const
{
    QVariantMap parts;
    for (const auto &[name, part] : all()) {
        QVariantMap described;
        const QStringList instances = part->instances();
        if (instances != QStringList{QString()})
            described.insert(QStringLiteral("instances"), instances);
        QVariantList verbs;
        QVariantMap former;
        const std::vector<SimVerb> known = verbsOf(name, *part, instances.value(0));
        if (const QVariantList switches = describeSwitches(known); !switches.isEmpty())
            described.insert(QStringLiteral("switches"), switches);
        for (const SimVerb &verb : known) {
            QVariantMap told{{QStringLiteral("name"), verb.name},
                {QStringLiteral("arguments"), verb.arguments}, {QStringLiteral("help"), verb.help}};
            if (verb.isFault)
                told.insert(QStringLiteral("fault"), true);
            if (verb.repeats)
                told.insert(QStringLiteral("repeats"), true);
            if (!verb.choices.isEmpty())
                told.insert(QStringLiteral("choices"), describeChoices(verb.choices));
            verbs.append(told);
            if (!verb.formerName.isEmpty())
                former.insert(verb.formerName, verb.name);
        }
        described.insert(QStringLiteral("verbs"), verbs);
        if (!former.isEmpty())
            described.insert(QStringLiteral("former-verbs"), former);
        if (const auto around = part->neighbourhood(); !around.neighbours.isEmpty()) {
            described.insert(QStringLiteral("comes"), around.comes);
            described.insert(QStringLiteral("goes"), around.goes);
        }
        parts.insert(name, described);
    }
    return parts;
}

QVariantMap SimulatedPhone::values() const
{
    QVariantMap parts;
    QVariantList neighbours;
    for (const auto &[name, part] : all()) {
        QVariantMap instances;
        for (const QString &instance : part->instances()) {
            QVariantMap values;
            for (const SimVerb &verb : part->verbs(instance)) {
                if (verb.now)
                    values.insert(verb.name, verb.now());
            }
            instances.insert(instance, values);
        }
        parts.insert(name, instances);
        for (const auto &neighbour : part->neighbourhood().neighbours) {
            neighbours.append(QVariantMap{{QStringLiteral("part"), name},
                {QStringLiteral("name"), neighbour.name}, {QStringLiteral("title"), neighbour.title},
                {QStringLiteral("in-range"), neighbour.inRange}});
        }
    }
    return {{QStringLiteral("values"), parts}, {QStringLiteral("neighbours"), neighbours}};
}

} // namespace oz::services
