#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/DeviceReport.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/PlayedScenario.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

#include "meta/MetaText.hpp"

#include <oz/client/DaemonClient.hpp>

namespace oz::tools {

namespace {

struct PlayOptions
{
    ScenarioOptions scenario;
    bool check = false;
    bool about = false;
    bool stop = false;
    bool pause = false;
    bool resume = false;
    bool list = false;
    bool values = false;
};

int listInstalled()
{
    printRows(installedScenarios(), {}, {Paint::Bold});
    return Success;
}

int listValues()
{
    const QVariantMap all = askDaemon(u"public-values"_s).toMap();
    const auto text = [](const QVariantMap &row, const char *key) {
        return row.value(QLatin1String(key)).toString();
    };
    QList<QStringList> rows;
    for (const QVariant &value : all.value(u"values"_s).toList()) {
        const QVariantMap row = value.toMap();
        const QVariant now = row.value(u"now"_s);
        rows.append({text(row, "name"), now.isValid() ? meta::valueText(now) : QString(), text(row, "help"),
            QString(u'(' + text(row, "type") + u')')});
    }
    printLine(painted(Paint::Bold, u"Values, for when, expect and while"_s));
    printRows(rows, u"  "_s, {Paint::None, Paint::Value});
    rows.clear();
    for (const QVariant &request : all.value(u"requests"_s).toList()) {
        const QVariantMap row = request.toMap();
        rows.append({text(row, "name"), row.value(u"fields"_s).toStringList().join(u' '), text(row, "help")});
    }
    printLine(painted(Paint::Bold, u"Requests, for expect-request, and their fields"_s));
    printRows(rows, u"  "_s);
    return Success;
}

// Shows what a file says about itself. A phone of its own reads it: none has to run, and one that runs may
// belong to a user who cannot read the file.
int showAbout(const ScenarioOptions &scenario)
{
    const QString file = scenarioFile(QString::fromStdString(scenario.scenario));
    const auto phone = startPhone({});
    const QVariantMap about = askDaemon(u"about-scenario"_s, QVariantMap{{u"file"_s, file}}).toMap();
    if (scenario.json) {
        printJson(QJsonObject::fromVariantMap(about), QJsonDocument::Indented);
        return Success;
    }
    const bool hasReport = about.contains(u"report"_s);
    const DeviceReport report = reportFrom(about.value(u"report"_s).toMap());
    if (!report.note.isEmpty())
        printLine(painted(Paint::Bold, report.note));
    const QString description = about.value(u"description"_s).toString();
    printLine(
        u"%1 (%2 steps)"_s.arg(description.isEmpty() ? u"A scenario without a description"_s : description,
            about.value(u"steps"_s).toString()));
    if (hasReport) {
        printLine({});
        printReport(report);
    }
    return Success;
}

int play(const PlayOptions &options)
{
    if (options.list)
        return listInstalled();
    if (options.values)
        return listValues();
    for (const auto &[isWanted, request] : {std::pair(options.stop, "stop-scenario"),
             {options.pause, "pause-scenario"}, {options.resume, "resume-scenario"}}) {
        if (isWanted) {
            (void)askDaemon(QLatin1String(request));
            return Success;
        }
    }
    if (options.scenario.scenario.empty())
        throw CommandError(
            WrongUse, u"play needs a scenario; `ozdevice play --list` lists those that are installed"_s);
    if (options.about)
        return showAbout(options.scenario);
    EventLoop loop;
    int status = Success;
    PlayedScenario scenario(options.scenario, loop);
    if (options.check) {
        // Check against the running phone, or else against the one of the scenario.
        std::unique_ptr<client::PrivateDaemon> phone;
        if (!client::DaemonClient().isReady())
            phone = startPhone(scenarioFile(QString::fromStdString(options.scenario.scenario)));
        (void)scenario.check();
        return Success;
    }
    const TerminationSignals signals([&](int signal) {
        status = 128 + signal;
        loop.guard([&] { scenario.stop(); });
    });
    QObject::connect(&scenario, &PlayedScenario::finished, qApp, &QCoreApplication::quit);
    scenario.play();
    (void)loop.run();
    if (status != Success)
        return status;
    if (!scenario.hasPassed())
        throw CommandError(Failed, scenario.problem());
    return Success;
}

} // namespace

void addPlayVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<PlayOptions>(parser, action)
            .add("play", "Play a scenario on the simulated phone, and follow it to its end", play);
    verb.option("SCENARIO", options->scenario.scenario, "A scenario's file, or the name of an installed one");
    options->scenario.addTo(verb);
    verb.flag("--json", options->scenario.json, "Print one JSON object per step, or one for --about");
    verb.flag("--check", options->check,
        "Only check the file, against the running phone or else against the scenario's own");
    verb.flag("--about", options->about,
        "Only show what the file says about itself, and the report of a recorded device");
    verb.flag("--stop", options->stop, "End the scenario that is playing");
    verb.flag("--pause", options->pause, "Pause the scenario and the phone's time");
    verb.flag("--resume", options->resume, "Continue the paused scenario");
    verb.flag("--list", options->list, "List the installed scenarios");
    verb.flag("--values", options->values, "List the values and requests for conditions and expectations");
    verb.footer("The exit status is 0 if every step succeeded and every expectation was met, else 1. Ctrl-C "
                "ends the\n"
                "scenario; if the command is killed, the scenario plays on.");
}

} // namespace oz::tools
