#include "ozdevice/PlayedScenario.hpp"

#include "meta/MetaText.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/JUnitReport.hpp"
#include "ozdevice/Output.hpp"

#include <QFileInfo>
#include <QJsonObject>

#include <cerrno>
#include <termios.h>
#include <unistd.h>

namespace oz::tools {

namespace {

QString textAt(const QVariant &entry, const char *key)
{
    return entry.toMap().value(QLatin1String(key)).toString();
}

// Lines of the scenario would break the screen of a full-screen program, which reads single keys.
bool isTerminalTaken()
{
    termios settings{};
    return ::tcgetattr(STDOUT_FILENO, &settings) == 0 && !(settings.c_lflag & ICANON);
}

} // namespace

std::vector<arguments::Option> ScenarioOptions::addTo(const Verb &verb)
{
    return {
        verb.option(
            "--speed", speed, "How fast the phone's time passes: a factor, or max (0) to skip all waiting"),
        verb.option("--seed", seed,
            "The seed of random choices, which repeat with the same seed (default: the file's)"),
        verb.option("--set", variables, "Give a variable of the scenario another value")
            .valueName("NAME=VALUE"),
        verb.option("--junit", junit, "Write a report of the expectations in JUnit's format")
            .valueName("FILE"),
        verb.flag("--keep-going", keepGoing, "Continue after a failed step"),
    };
}

PlayedScenario::PlayedScenario(const ScenarioOptions &options, EventLoop &loop)
    : m_options(options), m_loop(loop), m_file(scenarioFile(QString::fromStdString(options.scenario)))
{
}

QVariantMap PlayedScenario::order() const
{
    QVariantMap order{{u"file"_s, m_file}, {u"keep-going"_s, m_options.keepGoing}};
    if (!m_options.speed.empty())
        order.insert(u"speed"_s, QString::fromStdString(m_options.speed));
    if (m_options.seed)
        order.insert(u"seed"_s, QString::number(*m_options.seed));
    if (m_options.waits()) {
        order.insert(u"wait-for"_s, QString::fromStdString(m_options.waitFor));
        order.insert(u"wait-limit"_s, m_options.waitLimit);
    }
    QVariantMap variables;
    for (const std::string &word : m_options.variables) {
        const QString text = QString::fromStdString(word);
        if (!text.contains(u'='))
            throw CommandError(WrongUse, "--set takes NAME=VALUE, not '"_L1 + text + u'\'');
        variables.insert(text.section(u'=', 0, 0), text.section(u'=', 1));
    }
    order.insert(u"variables"_s, variables);
    return order;
}

QVariantMap PlayedScenario::check() const
{
    QVariantMap checking = order();
    checking.insert(u"check"_s, true);
    return askDaemon(u"play"_s, checking).toMap();
}

void PlayedScenario::play()
{
    const QVariantMap told = askDaemon(u"play"_s, order()).toMap();
    m_hasExpectations = told.value(u"expectations"_s).toBool();
    const QString description = told.value(u"description"_s).toString();
    if (!description.isEmpty() && !m_options.json && !m_options.quiet)
        printLine(painted(Paint::Bold, description));
    m_isPlaying = true;
    m_state = u"playing"_s;
    m_follower = std::make_unique<client::ScenarioFollower>();
    connect(m_follower.get(), &client::ScenarioFollower::told, this,
        [this](const QVariantMap &news) { m_loop.guard([&] { onNews(news); }); });
    connect(m_follower.get(), &client::ScenarioFollower::lost, this, [this] {
        m_loop.guard([this] {
            if (m_isPlaying)
                throw CommandError(Unavailable, u"the services have gone while the scenario played"_s);
        });
    });
}

void PlayedScenario::stop()
{
    if (!m_isPlaying)
        return;
    try {
        (void)askDaemon(u"stop-scenario"_s);
    } catch (const CommandError &error) {
        // The scenario may have ended by itself, which the next news says.
        if (error.status() != Failed)
            throw;
    }
}

void PlayedScenario::onNews(const QVariantMap &told)
{
    if (!m_isPlaying)
        return;
    if (told.value(u"begun"_s).toBool() && !std::exchange(m_hasBegun, true)) {
        if (told.value(u"late"_s).toBool())
            printError(u"%1 within %2 s; the scenario begins without it"_s.arg(
                absenceText(), QString::number(m_options.waitLimit)));
        Q_EMIT begun();
    }
    for (const QVariant &entry : told.value(u"entries"_s).toList()) {
        if (!m_options.quiet)
            print(entry.toMap());
        if (textAt(entry, "outcome") == u"said")
            Q_EMIT said(textAt(entry, "text"));
        m_entries.append(entry);
    }
    m_state = told.value(u"state"_s).toString();
    if (m_state == u"playing")
        return;
    m_isPlaying = false;
    m_problem = told.value(u"problem"_s).toString();
    if (m_state == u"stopped") {
        m_problem = m_hasBegun ? "the scenario was stopped: "_L1 + m_problem
                               : "the scenario was never begun: "_L1 + absenceText();
    }
    writeReport();
    Q_EMIT finished();
}

// Names what the application did not do.
QString PlayedScenario::absenceText() const
{
    return m_options.waitFor == "request" ? u"the command requested nothing"_s
                                          : u"the command opened no object"_s;
}

void PlayedScenario::print(const QVariantMap &entry) const
{
    if (isTerminalTaken())
        return;
    if (m_options.json)
        return printJson(QJsonObject::fromVariantMap(entry), QJsonDocument::Compact);
    const QString outcome = textAt(entry, "outcome");
    QString line =
        painted(Paint::Dim,
            QString::number(entry.value(u"time"_s).toDouble(), 'f', 1).rightJustified(9) + " s  "_L1)
        + textAt(entry, "text");
    if (outcome == u"passed" || outcome == u"waiting")
        line += painted(outcome == u"passed" ? Paint::Value : Paint::Dim, "  ... "_L1 + outcome);
    else if (outcome == u"failed")
        line += painted(Paint::Bold, "  ... FAILED: "_L1) + textAt(entry, "detail");
    printLine(line);
}

// A test case for each expectation, and for each other step that failed.
void PlayedScenario::writeReport() const
{
    if (m_options.junit.empty())
        return;
    std::vector<TestCase> cases;
    for (const QVariant &entry : m_entries) {
        const bool hasFailed = textAt(entry, "outcome") == u"failed";
        const QString expectation = textAt(entry, "expectation");
        if (expectation.isEmpty() && !hasFailed)
            continue;
        cases.push_back({expectation.isEmpty() ? textAt(entry, "text") : expectation,
            entry.toMap().value(u"seconds"_s).toDouble(),
            hasFailed ? QString(
                textAt(entry, "place") + ": "_L1 + textAt(entry, "text") + ": "_L1 + textAt(entry, "detail"))
                      : QString()});
    }
    if (cases.empty() || m_state == u"stopped") {
        cases.push_back(
            {u"the scenario plays to its end"_s, 0, m_state == u"passed" ? QString() : m_problem});
    }
    writeJUnitReport(QString::fromStdString(m_options.junit), QFileInfo(m_file).completeBaseName(), cases);
}

} // namespace oz::tools
