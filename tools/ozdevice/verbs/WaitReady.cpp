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
            QLatin1String("no ozdeviced became ready under ") + devicePath(QStringLiteral("/pps"))
                + QLatin1String(" within ") + QString::number(options.timeout.seconds) + QLatin1String(" s"));
    }
    return Success;
}

} // namespace

void addWaitReadyVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<WaitReadyOptions>(parser, action)
            .add("wait-ready", "Wait until the services have published everything", waitReady);
    verb.duration("--timeout", options->timeout.seconds, "How long at most (10s)");
}

} // namespace oz::tools
