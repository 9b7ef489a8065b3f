#include "daemon/RunningFacilities.hpp"

#include "source/Error.hpp"

#include <algorithm>

namespace oz::services {

RunningFacilities::RunningFacilities(
    const Configuration &configuration, const std::optional<JsonNode> &phoneFile, StateStore &store)
    : m_configuration(configuration), m_providers(store, [this, phoneFile, &store]() -> SimulatedParts & {
          return usePhone(phoneFile, store);
      })
{
    for (const Facility &facility : facilities())
        m_rows.push_back(rowOf(facility));
}

void RunningFacilities::publish(Tree &tree)
{
    m_tree = &tree;
    for (Row &row : m_rows) {
        if (Source *source = m_sources.of(row.facility->name))
            row.publisher = row.facility->publish(*source, m_sources, tree);
    }
    if (m_phone) {
        m_phone->setFurtherVerbs(
            [this](const QString &part, const QString &instance) { return furtherVerbs(part, instance); });
    }
}

bool RunningFacilities::hasSettled() const
{
    return std::all_of(m_rows.begin(), m_rows.end(),
        [](const Row &row) { return !row.publisher || row.publisher->hasSettled(); });
}

void RunningFacilities::onChange(QObject *context, const std::function<void()> &slot)
{
    for (const Row &row : m_rows) {
        if (!row.publisher)
            continue;
        connect(row.publisher.get(), &Publisher::settled, context, slot);
        connect(m_sources.of(row.facility->name), &Source::changed, context, slot);
    }
}

QVariantMap RunningFacilities::sources() const
{
    QVariantMap sources;
    for (const Row &row : m_rows)
        sources.insert(row.facility->name, row.source);
    return sources;
}

QStringList RunningFacilities::continuedFrom(const QVariantMap &before) const
{
    QStringList facilities;
    for (const Row &row : m_rows) {
        if (before.value(row.facility->name) == row.source)
            facilities.append(row.facility->name);
    }
    return facilities;
}

QVariantMap RunningFacilities::states() const
{
    static const QString words[] = {
        QStringLiteral("pending"), QStringLiteral("known"), QStringLiteral("absent")};
    QVariantMap states;
    for (const Row &row : m_rows) {
        const Source *source = m_sources.of(row.facility->name);
        QVariantMap state{{QStringLiteral("title"), row.facility->title},
            {QStringLiteral("source"), row.source},
            {QStringLiteral("state"), source ? words[int(source->presence())] : SourceChoice::None}};
        const QString reason = !source ? row.reason
            : source->isKnown()        ? source->remark()
                                       : source->absence();
        if (!reason.isEmpty())
            state.insert(QStringLiteral("reason"), reason);
        if (row.isAutomatic)
            state.insert(QStringLiteral("auto"), true);
        states.insert(row.facility->name, state);
    }
    return states;
}

QStringList RunningFacilities::sinkNames() const
{
    QStringList names;
    for (const Row &row : m_rows) {
        if (const Source *source = m_sources.of(row.facility->name))
            names += source->remarkNames();
    }
    return names;
}

SimulatedPhone &RunningFacilities::phone() const
{
    if (!m_phone)
        throw Error(QStringLiteral("no facility is fed by the simulated phone"));
    return *m_phone;
}

void RunningFacilities::tellPhone(const QString &name, const QStringList &words)
{
    phone().run(simulatedPart(name), words);
}

Scenario::CheckOrder RunningFacilities::makeOrderCheck()
{
    struct Double
    {
        StateStore store; // in memory
        std::unique_ptr<SimulatedPhone> phone;
    };
    const auto copy = std::make_shared<Double>();
    copy->phone = std::make_unique<SimulatedPhone>(*m_phoneFile, phoneParts(), copy->store);
    copy->phone->clock().setSpeed(0);
    copy->phone->setFurtherVerbs([this](const QString &part, const QString &instance) {
        std::vector<SimVerb> verbs = furtherVerbs(part, instance);
        for (SimVerb &verb : verbs)
            verb.run = verb.check;
        return verbs;
    });
    return [this, copy](
               const QStringList &words) { copy->phone->run(simulatedPart(words.first()), words.mid(1)); };
}

// The part of the phone with this name; throws where something else feeds the facility.
QString RunningFacilities::simulatedPart(const QString &name) const
{
    const Facility *facility = findFacility(name);
    for (const Row &row : m_rows) {
        if (row.facility == facility && row.source == SourceChoice::None)
            throw WrongOrder(QLatin1String("nothing feeds ") + row.facility->name);
        if (row.facility == facility && row.source != SimulatedSource) {
            throw WrongOrder(row.facility->name + QLatin1String(" is fed by '") + row.source
                + QLatin1String("', not by the simulated phone"));
        }
    }
    return facility ? facility->name : name;
}

RunningFacilities::Row RunningFacilities::rowOf(const Facility &facility)
{
    const SourceChoice choice = m_configuration.choiceOf(facility.name);
    Row row{&facility, choice.source, choice.source == SourceChoice::Auto, {}, nullptr};
    if (choice.source == SourceChoice::None) {
        row.reason = QStringLiteral("the configuration says so");
        return row;
    }
    QStringList reasons;
    for (const SourceKind &kind : facility.sources) {
        if (choice.source == SourceChoice::Auto) {
            if (!kind.obstacle)
                continue;
            if (const QString obstacle = kind.obstacle(); !obstacle.isEmpty()) {
                reasons.append(kind.name + QLatin1String(": ") + obstacle);
                continue;
            }
        } else if (kind.name != choice.source) {
            continue;
        }
        row.source = kind.name;
        m_sources.add(facility.name, kind.make(m_providers, choice.options));
        return row;
    }
    row.source = SourceChoice::None;
    row.reason = reasons.isEmpty() ? QStringLiteral("this system has no source for it")
                                   : reasons.join(QLatin1String("; "));
    return row;
}

SimulatedPhone &RunningFacilities::usePhone(const std::optional<JsonNode> &file, StateStore &store)
{
    if (!m_phone) {
        m_phoneFile = file ? *file : readPhoneFile(m_configuration.phoneFile);
        m_phone = std::make_unique<SimulatedPhone>(*m_phoneFile, phoneParts(), store);
    }
    return *m_phone;
}

// The faults that services can be told to have.
std::vector<SimVerb> RunningFacilities::furtherVerbs(const QString &name, const QString &instance)
{
    std::vector<SimVerb> verbs;
    for (Row &row : m_rows) {
        if (row.facility->name != name || row.source != SimulatedSource)
            continue;
        verbs.push_back({QStringLiteral("kill-service"), {},
            QStringLiteral("ends the facility's service, as if it had crashed"),
            [&row](const QStringList &) { row.publisher.reset(); }});
        verbs.push_back({QStringLiteral("start-service"), {}, QStringLiteral("starts it again"),
            [this, &row](const QStringList &) {
                if (!row.publisher)
                    row.publisher =
                        row.facility->publish(*m_sources.of(row.facility->name), m_sources, *m_tree);
            }});
        if (!row.publisher)
            continue;
        const auto faults = row.publisher->faults();
        if (const auto found = faults.find(instance); found != faults.end()) {
            for (const FaultOrder &order : found->second->orders())
                verbs.push_back(SimVerb::fault(order));
        }
    }
    for (SimVerb &verb : verbs)
        verb.isFault = true;
    return verbs;
}

} // namespace oz::services
