#include "ozdevice/FacilityDescription.hpp"
#include "ozdevice/FacilitySelection.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Verbs.hpp"

namespace oz::tools {

namespace {

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

void addDescribeVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<DescribeOptions>(parser, action)
            .add("describe", "Describe facilities: properties, methods, signals, enumerators", describeThem);
    options->facilities.addFacilities(verb);
    verb.flag("--json", options->json, "As JSON");
}

} // namespace oz::tools
