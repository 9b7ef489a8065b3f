#include "meta/MetaDescription.hpp"
#include "ozdevice/Console.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/PlayedScenario.hpp"
#include "ozdevice/SignalLines.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

#include <QTimer>

#include <unistd.h>

namespace oz::tools {

namespace {

constexpr std::chrono::milliseconds LastLook{2000};

struct DemoOptions
{
    ScenarioOptions scenario;
};

// Prints each signal of every facility.
class SignalPrinter
{
public:
    explicit SignalPrinter(EventLoop &loop)
    {
        for (const FacilityEntry *entry : phoneFacilities()) {
            for (const QString &selected : entry->selections()) {
                const FacilityInstance &instance = *m_instances.emplace_back(
                    std::make_unique<FacilityInstance>(*entry, selected, FacilityInstance::MayAppear));
                m_taps.push_back(std::make_unique<meta::SignalTap>(
                    instance.object(), [&](const QMetaMethod &signal, const QVariantList &arguments) {
                        if (!meta::isNumericTwin(signal)) {
                            loop.guard([&] {
                                printLine("      "_L1 + instance.title().leftJustified(24)
                                    + signalText(signal, arguments));
                            });
                        }
                    }));
            }
        }
    }

private:
    std::vector<std::unique_ptr<FacilityInstance>> m_instances;
    std::vector<std::unique_ptr<meta::SignalTap>> m_taps;
};

// Plays the tour on a phone of its own: live in a terminal, otherwise with a line per change.
int demo(const DemoOptions &options)
{
    ScenarioOptions tour = options.scenario;
    tour.scenario = "tour";
    tour.quiet = true;
    const bool isOnTerminal = ::isatty(STDIN_FILENO) && ::isatty(STDOUT_FILENO);
    int status = Success;
    EventLoop loop;
    const TerminationSignals signals([&](int signal) {
        status = 128 + signal;
        QCoreApplication::quit();
    });
    const auto phone = startPhone({});
    PlayedScenario scenario(tour, loop);
    (void)scenario.check();
    {
        const auto console = isOnTerminal ? std::make_unique<Console>(phoneFacilities(), loop) : nullptr;
        const auto lines = isOnTerminal ? nullptr : std::make_unique<SignalPrinter>(loop);
        if (!isOnTerminal)
            printLine(painted(Paint::Bold, u"The library's classes, live on a simulated phone"_s));
        QObject::connect(&scenario, &PlayedScenario::said, qApp, [&](const QString &text) {
            if (console)
                console->say(text + u"   (q: quit)"_s);
            else
                loop.guard([&] { printLine(painted(Paint::Dim, "  ... "_L1 + text)); });
        });
        QObject::connect(&scenario, &PlayedScenario::finished, qApp, [&] {
            QTimer::singleShot(isOnTerminal ? LastLook : LastLook / 10, qApp, &QCoreApplication::quit);
        });
        scenario.play();
        (void)loop.run();
    }
    if (status != Success)
        return status;
    if (!scenario.problem().isEmpty())
        throw CommandError(Failed, scenario.problem());
    printLine(painted(Paint::Bold,
        u"That was the tour. Next: ozdevice run -- ozdevice top, ozdevice --help, or the README."_s));
    return status;
}

} // namespace

void addDemoVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<DemoOptions>(parser, action)
            .add("demo", "Take a tour of half a minute: a whole simulated phone, live", demo);
    verb.option("--speed", options->scenario.speed, "Play the tour faster by this factor");
}

} // namespace oz::tools
