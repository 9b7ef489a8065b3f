#include "ozdevice/FacilitySelection.hpp"

#include "facilities/CommandError.hpp"
#include "meta/MetaDescription.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Words.hpp"

#include <algorithm>
#include <cerrno>

namespace oz::tools {

void FacilitySelection::addFacilities(const Verb &verb)
{
    verb.option("FACILITY", m_names, "The facilities (default: all)");
}

void FacilitySelection::addFacility(const Verb &verb)
{
    verb.option("FACILITY", m_name, "The facility").required();
}

void FacilitySelection::addSelectors(const Verb &verb)
{
    for (const FacilityEntry &entry : facilityTable()) {
        if (!entry.selector.isEmpty()) {
            verb.option("--" + entry.selector.toStdString(), m_selected[entry.selector],
                "Selects a " + entry.name.toStdString());
        }
    }
}

QString FacilitySelection::takeProperty()
{
    const QStringList words = toStringList(m_names);
    const FacilityEntry *entry = words.size() == 2 ? findFacility(words.first()) : nullptr;
    if (!entry || findFacility(words.last()))
        return {};
    QStringList names;
    for (const QMetaProperty &property : meta::propertiesOf(entry->type))
        names.append(QLatin1String(property.name()));
    if (!names.contains(words.last())) {
        throw CommandError(WrongUse, unknownText(entry->name + " has no property"_L1, words.last(), names));
    }
    m_names.pop_back();
    return words.last();
}

std::vector<const FacilityEntry *> FacilitySelection::entries() const
{
    std::vector<const FacilityEntry *> entries;
    for (const QString &word : toStringList(m_name.empty() ? m_names : std::vector{m_name})) {
        const FacilityEntry *entry = findFacility(word);
        if (!entry)
            throw CommandError(WrongUse, unknownText(u"there is no facility"_s, word, facilityNames()));
        entries.push_back(entry);
    }
    if (entries.empty()) {
        for (const FacilityEntry &entry : facilityTable())
            entries.push_back(&entry);
    }
    for (const auto &[selector, value] : m_selected) {
        const bool isTaken = std::any_of(entries.begin(), entries.end(),
            [&selector = selector](const FacilityEntry *entry) { return entry->selector == selector; });
        if (!value.empty() && !isTaken) {
            QStringList names;
            for (const FacilityEntry *entry : entries)
                names.append(entry->name);
            throw CommandError(WrongUse,
                enumerated(names) + (names.size() == 1 ? " takes"_L1 : " take"_L1) + " no --"_L1 + selector);
        }
    }
    return entries;
}

QString FacilitySelection::selected(const FacilityEntry &entry) const
{
    const auto selected = m_selected.find(entry.selector);
    return selected == m_selected.end() ? QString() : QString::fromStdString(selected->second);
}

QStringList FacilitySelection::instances(const FacilityEntry &entry) const
{
    if (const QString one = selected(entry); !one.isEmpty() || !entry.instances)
        return {one};
    const QStringList all = entry.instances();
    // The default object has the unknown values of an instance that does not exist.
    return all.isEmpty() && !entry.needsSelection ? QStringList{QString()} : all;
}

std::vector<const FacilityEntry *> availableFacilities(const std::vector<const FacilityEntry *> &entries)
{
    const bool isFromTree = std::any_of(
        entries.begin(), entries.end(), [](const FacilityEntry *entry) { return !entry->objects.isEmpty(); });
    if (!isFromTree)
        return entries;
    const DaemonState daemon = daemonState();
    if (daemon.isRunning)
        return entries;
    std::vector<const FacilityEntry *> there;
    bool isAnyFromTree = false;
    for (const FacilityEntry *entry : entries) {
        const auto problems = problemsOf(entry->objects);
        const bool isThere = std::none_of(problems.begin(), problems.end(),
            [](const Problem &problem) { return problem.error == ENOENT || problem.error == ECONNREFUSED; });
        if (isThere)
            there.push_back(entry);
        isAnyFromTree = isAnyFromTree || (isThere && !entry->objects.isEmpty());
    }
    printError(notFedText(daemon)
        + (isAnyFromTree ? "; the values are the last ones"_L1 : " (try: ozdevice run -- COMMAND)"_L1));
    return there;
}

} // namespace oz::tools
