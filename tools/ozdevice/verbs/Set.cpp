#include "meta/MetaText.hpp"
#include "ozdevice/FacilitySelection.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/PropertySetting.hpp"
#include "ozdevice/Verbs.hpp"

namespace oz::tools {

namespace {

struct SetOptions
{
    FacilitySelection facility;
    std::string property;
    std::vector<std::string> words;
};

int set(const SetOptions &options)
{
    const FacilityEntry &entry = options.facility.entry();
    const QString name = QString::fromStdString(options.property);
    const PropertySetting setting(entry, name,
        options.words.size() == 1 ? std::optional(QString::fromStdString(options.words.front()))
                                  : std::nullopt);
    const FacilityInstance instance(
        entry, options.facility.selected(entry), FacilityInstance::MayBeUnselected);
    if (!instance.reportProblems())
        return Unavailable;
    setting.applyTo(instance);
    printLine(name + " = "_L1 + meta::valueText(instance.object()->property(options.property.c_str())));
    printError(name + " belongs to this one object, which is gone now; to call an object that has it, use "_L1
        + "ozdevice call "_L1 + entry.name + " METHOD --set "_L1 + name + "=VALUE"_L1);
    return Success;
}

} // namespace

void addSetVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<SetOptions>(parser, action).add("set", "Set a writable property of a facility", set);
    options->facility.addFacility(verb);
    verb.option("PROPERTY", options->property).required();
    verb.option("VALUE", options->words);
    options->facility.addSelectors(verb);
}

} // namespace oz::tools
