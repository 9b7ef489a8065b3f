#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/FacilitySelection.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Verbs.hpp"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>

namespace oz::tools {

namespace {

constexpr int FirstValuesDeadline = 300; // milliseconds; an orientation may stay undefined

struct ShowOptions
{
    FacilitySelection facilities;
    bool json = false;
};

void waitForFirstValues(const FacilityInstance &instance)
{
    const FacilityEntry &entry = instance.entry();
    if (entry.refresh)
        (void)entry.refresh(instance.object());
    const QDeadlineTimer deadline(FirstValuesDeadline);
    while (entry.isComplete && !entry.isComplete(instance.object()) && !deadline.hasExpired()) {
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
}

QJsonObject valuesOf(const FacilityInstance &instance)
{
    QJsonObject values;
    for (const QMetaProperty &property : meta::propertiesOf(instance.entry().type)) {
        values.insert(QLatin1String(property.name()),
            QJsonObject{{u"type"_s, meta::typeText(property.metaType())},
                {u"value"_s, meta::valueJson(property.read(instance.object()))}});
    }
    return values;
}

void print(const FacilityInstance &instance)
{
    QList<QStringList> rows;
    for (const QMetaProperty &property : meta::propertiesOf(instance.entry().type)) {
        rows.append({QString::fromLatin1(property.name()), meta::typeText(property.metaType()),
            meta::valueText(property.read(instance.object()))});
    }
    printLine(painted(Paint::Bold, instance.title()));
    printRows(rows, u"  "_s, {Paint::None, Paint::Dim, Paint::Value});
}

// Prints a single value, for scripts.
int showProperty(const FacilitySelection &facilities, const QString &name, bool json)
{
    const FacilityEntry &entry = facilities.entry();
    if (availableFacilities({&entry}).empty())
        return Unavailable;
    const FacilityInstance instance(entry, facilities.selected(entry));
    const bool available = instance.reportProblems();
    waitForFirstValues(instance);
    const QVariant value = instance.object()->property(name.toLatin1().constData());
    if (json)
        printJson({{name, meta::valueJson(value)}}, QJsonDocument::Compact);
    else
        printLine(value.typeId() == QMetaType::QString ? value.toString() : meta::valueText(value));
    return available ? Success : Unavailable;
}

int show(const ShowOptions &options)
{
    FacilitySelection facilities = options.facilities;
    if (const QString property = facilities.takeProperty(); !property.isEmpty())
        return showProperty(facilities, property, options.json);
    const auto entries = options.facilities.entries();
    const auto there = availableFacilities(entries);
    bool available = there.size() == entries.size();
    // The kernel's values are always there; show them alone only if they are asked for.
    if (!available && !options.facilities.isNamed()
        && std::all_of(
            there.begin(), there.end(), [](const auto *entry) { return entry->objects.isEmpty(); }))
        return Unavailable;
    QJsonObject all;
    for (const FacilityEntry *entry : there) {
        QJsonObject several;
        for (const QString &selected : options.facilities.instances(*entry)) {
            const FacilityInstance instance(*entry, selected);
            available = instance.reportProblems() && available;
            waitForFirstValues(instance);
            if (!options.json)
                print(instance);
            else if (entry->selector.isEmpty())
                all.insert(entry->name, valuesOf(instance));
            else if (!selected.isEmpty())
                several.insert(selected, valuesOf(instance));
        }
        if (!entry->selector.isEmpty())
            all.insert(entry->name, several);
    }
    if (options.json)
        printJson(all, QJsonDocument::Indented);
    return available ? Success : Unavailable;
}

} // namespace

void addShowVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] = Verbs<ShowOptions>(parser, action)
                                     .add("show", "Show every property of facilities, with its type", show);
    options->facilities.addFacilities(verb);
    options->facilities.addSelectors(verb);
    verb.flag("--json", options->json, "As JSON, enumerators by name");
    verb.footer("Shows all displays, networks and profiles unless an option selects one.\n"
                "`ozdevice show FACILITY PROPERTY` prints a single value, for scripts.");
}

} // namespace oz::tools
