#include "ozdevice/Console.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/DeviceRootWatch.hpp"
#include "ozdevice/FacilitySelection.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

namespace oz::tools {

namespace {

struct TopOptions
{
    FacilitySelection facilities;
};

int top(const TopOptions &options)
{
    auto entries = options.facilities.entries();
    // On a simulated phone, leave out the network interfaces of this machine.
    if (!options.facilities.isNamed() && isPhoneSimulated(daemonState()))
        entries = phoneFacilities();
    const auto there = availableFacilities(entries);
    if (there.empty() || (there.size() < entries.size() && !options.facilities.isNamed()))
        return Unavailable;
    EventLoop loop;
    int status = Success;
    const TerminationSignals signals([&](int signal) {
        status = 128 + signal;
        QCoreApplication::quit();
    });
    const DeviceRootWatch rootWatch(&loop);
    const Console console(there, loop);
    (void)loop.run();
    return status;
}

} // namespace

void addTopVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<TopOptions>(parser, action).add("top", "Show the phone in the terminal, live", top);
    options->facilities.addFacilities(verb);
    verb.footer(
        "Values that have just changed stand out. Space shows all values of the selected facility, q quits.\n"
        "With NO_COLOR set there are no colours.");
}

} // namespace oz::tools
