// list and describe: the facilities and their classes.

#include "ozdevice/FacilityDescription.hpp"
#include "ozdevice/FacilitySelection.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Verbs.hpp"

namespace oz::tools {

namespace {

struct ListOptions
{
    bool names = false;
};

int list(const ListOptions &options)
{
    QList<QStringList> rows;
    for (const FacilityEntry &entry : facilityTable()) {
        if (options.names) {
            printLine(entry.name);
            continue;
        }
        rows.append({entry.name, QString::fromLatin1(entry.type->className()).section(u':', -1),
            entry.help
                + (entry.selector.isEmpty() ? QString() : QString(" (--"_L1 + entry.selector + u')'))});
    }
    printRows(rows, {}, {Paint::Bold});
    return Success;
}

struct DescribeOptions
{
    FacilitySelection facilities;
    bool json = false;
};

int describeThem(const DescribeOptions &options)
{
    QJsonObject all;
    bool isFirst = true;
    for (const FacilityEntry *entry : options.facilities.entries()) {
        if (options.json) {
            all.insert(entry->name, describe(*entry));
            continue;
        }
        if (!std::exchange(isFirst, false))
            printLine({});
        printDescription(*entry);
    }
    if (options.json)
        printJson(all, QJsonDocument::Indented);
    return Success;
}

} // namespace

void addListVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] = Verbs<ListOptions>(parser, action).add("list", "List the facilities", list);
    verb.flag("--names", options->names, "Names only");
}

void addDescribeVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<DescribeOptions>(parser, action)
            .add("describe", "Describe facilities: properties, methods, signals, enumerators", describeThem);
    options->facilities.addFacilities(verb);
    verb.flag("--json", options->json, "As JSON");
}

} // namespace oz::tools
