#include "meta/MetaText.hpp"
#include "ozdevice/Daemon.hpp"
#include "ozdevice/Durations.hpp"
#include "ozdevice/EventLoop.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/PrivatePhone.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/device/SdCardInfo.hpp>

#include <QTimer>

namespace oz::tools {

namespace {

struct Options
{
    Duration pace{1};
};

// The tour: what a hand does with the card, while a program watches it.
int demo(const Options &options)
{
    struct Step
    {
        const char *story;
        const char *verb;
    };
    static constexpr Step tour[] = {
        {"someone inserts a card", "mount"},
        {"an application writes a photo", "busy"},
        {"the photo is written", "idle"},
        {"the card is taken out", "unmount"},
    };
    int status = Success;
    EventLoop loop;
    const TerminationSignals signals([&](int signal) {
        status = 128 + signal;
        QCoreApplication::quit();
    });
    const PrivatePhone phone{QString()};
    const auto sdcard = [](const char *verb) {
        (void)askDaemon(QStringLiteral("sim"),
            QVariantMap{{QStringLiteral("facility"), QStringLiteral("sdcard")},
                {QStringLiteral("verb"), QLatin1String(verb)}, {QStringLiteral("arguments"), QStringList()}});
    };
    sdcard("unmount");

    device::SdCardInfo card;
    const auto show = [&loop](const char *what, const auto &value) {
        loop.guard([&] {
            printLine(QLatin1String("      ") + QString::fromLatin1(what).leftJustified(18)
                + painted(Paint::Value, meta::valueText(QVariant::fromValue(value))));
        });
    };
    printLine(painted(Paint::Bold, QStringLiteral("A live oz::device::SdCardInfo on a simulated phone")));
    show("state()", card.state());
    show("activity()", card.activity());
    QObject::connect(&card, qOverload<device::SdCardState::Type>(&device::SdCardInfo::stateChanged),
        [&](device::SdCardState::Type state) { show("stateChanged", state); });
    QObject::connect(&card, qOverload<device::SdCardActivity::Type>(&device::SdCardInfo::activityChanged),
        [&](device::SdCardActivity::Type activity) { show("activityChanged", activity); });

    std::size_t next = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (next == std::size(tour)) {
            QCoreApplication::quit();
            return;
        }
        loop.guard([&] {
            printLine(painted(Paint::Dim, QLatin1String("  ... ") + QLatin1String(tour[next].story)));
            sdcard(tour[next++].verb);
        });
    });
    timer.start(options.pace.milliseconds());
    (void)loop.run();
    if (status == Success)
        printLine(
            painted(Paint::Bold, QStringLiteral("That was the tour. Next: ozdevice --help, or the README.")));
    return status;
}

} // namespace

void addDemoVerb(CLI::App &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<Options>(parser, action)
            .add("demo", "Take a short tour: a live SD card on a simulated phone", demo);
    addDuration(verb, "--pace", options->pace, "The time from one step to the next (1s)");
}

} // namespace oz::tools
