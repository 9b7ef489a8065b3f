#include "ozdevice/Durations.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/client/DaemonClient.hpp>

namespace oz::tools {

namespace {

struct WaitReadyOptions
{
    Duration timeout{10};
};

int waitReady(const WaitReadyOptions &options)
{
    if (!client::DaemonClient().waitUntilReady(options.timeout.milliseconds())) {
        throw CommandError(Unavailable,
            "no ozdeviced became ready under "_L1 + devicePath(u"/pps"_s) + " within "_L1
                + QString::number(options.timeout.seconds) + " s"_L1);
    }
    return Success;
}

} // namespace

void addWaitReadyVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<WaitReadyOptions>(parser, action)
            .add("wait-ready", "Wait until the services have published everything", waitReady);
    verb.duration("--timeout", options->timeout.seconds, "The longest time to wait (10s)");
}

} // namespace oz::tools
