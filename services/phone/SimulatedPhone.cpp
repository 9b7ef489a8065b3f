#include "phone/SimulatedPhone.hpp"

#include "publishing/Error.hpp"
#include "publishing/Log.hpp"
#include "publishing/StateStore.hpp"

#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace oz::services {

namespace {

const QString ClockName = QStringLiteral("clock");
constexpr int MostAttempts = 4; // to find what is wrong in what was saved

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
            {QStringLiteral("advance"), {QStringLiteral("SECONDS")},
                QStringLiteral("lets the phone's time pass at once"),
                [this](const QStringList &words) {
                    m_clock.advance(std::chrono::milliseconds(
                        std::llround(SimArgument::number(words[0], 0, 1'000'000) * 1000)));
                }},
            SimVerb{QStringLiteral("speed"), {QStringLiteral("FACTOR")},
                QStringLiteral("lets the phone's time go faster than the real one; 0 stands still"),
                [this](const QStringList &words) {
                    m_clock.setSpeed(SimArgument::number(words[0], 0, 100'000));
                }}
                .with([this] { return QString::number(m_clock.speed()); }),
        };
    }
    [[nodiscard]] QVariantMap saved() const override { return {}; }
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
        described.insert(choice.key(), told);
    }
    return described;
}

// Restores a part from what was saved at a place. A value that the part does not make its own, as the file
// was damaged, is left as the phone's file has it.
void restore(SimulatedPart &part, const QVariantMap &saved, const QString &place)
{
    const QVariantMap before = part.saved();
    QVariantMap fitting = saved;
    QStringList wrong;
    // What is left out may be what another value needs.
    for (int attempt = 0; attempt < MostAttempts; ++attempt) {
        part.restore(fitting);
        const QJsonObject now = QJsonObject::fromVariantMap(part.saved());
        const QJsonObject wanted = QJsonObject::fromVariantMap(fitting);
        const qsizetype known = wrong.size();
        for (auto each = wanted.begin(); each != wanted.end(); ++each) {
            if (now.value(each.key()) == each.value())
                continue;
            wrong.append(each.key());
            if (before.contains(each.key()))
                fitting.insert(each.key(), before.value(each.key()));
            else
                fitting.remove(each.key());
        }
        if (wrong.size() == known)
            break;
    }
    wrong.removeDuplicates();
    if (!wrong.isEmpty()) {
        qCWarning(logServices).noquote() << place + QLatin1String(": '") + wrong.join(QLatin1String("', '"))
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
        m_parts.emplace_back(description.name, description.make(file.map(description.name), *this));

    const QString phone = QStringLiteral("phone");
    const QVariantMap identity{{QStringLiteral("file"), file.fingerprint()}};
    const bool isTheSame = store.load(phone) == identity;
    const auto entryOf = [](const QString &name) { return QString(QLatin1String("phone-") + name); };
    for (const auto &[name, part] : m_parts) {
        if (const QVariantMap saved = store.load(entryOf(name)); isTheSame && !saved.isEmpty())
            restore(*part, saved, store.placeOf(entryOf(name)));
    }
    for (const auto &[name, part] : m_parts) {
        const auto save = [this, &store, entry = entryOf(name), saving = part.get()] {
            store.save(entry, saving->saved());
            tellChange();
        };
        save();
        part->onSave(save);
    }
    store.save(phone, identity);
    m_parts.emplace_back(ClockName, std::make_shared<ClockPart>(m_clock));
    m_parts.back().second->onSave([this] { tellChange(); });
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
    for (const auto &[known, part] : m_parts)
        names.append(known);
    QStringList path{name};
    words.prepend(name);
    takeWord(QStringLiteral("the simulated phone"), names, &words);
    SimulatedPart &part = *m_parts[std::size_t(names.indexOf(name))].second;

    QString instance;
    if (const QStringList instances = part.instances(); instances != QStringList{QString()}) {
        instance = takeWord(path.join(u' '), instances, &words);
        path.append(instance);
    }
    const std::vector<SimVerb> verbs = verbsOf(name, part, instance);
    QStringList verbNames;
    for (const SimVerb &verb : verbs)
        verbNames.append(verb.name);
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
    for (const auto &[name, part] : m_parts) {
        QVariantMap described;
        const QStringList instances = part->instances();
        if (instances != QStringList{QString()})
            described.insert(QStringLiteral("instances"), instances);
        QVariantList verbs;
        for (const SimVerb &verb : verbsOf(name, *part, instances.value(0))) {
            QVariantMap told{{QStringLiteral("name"), verb.name},
                {QStringLiteral("arguments"), verb.arguments}, {QStringLiteral("help"), verb.help}};
            if (verb.isFault)
                told.insert(QStringLiteral("fault"), true);
            if (!verb.choices.isEmpty())
                told.insert(QStringLiteral("choices"), describeChoices(verb.choices));
            verbs.append(told);
        }
        described.insert(QStringLiteral("verbs"), verbs);
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
    for (const auto &[name, part] : m_parts) {
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
