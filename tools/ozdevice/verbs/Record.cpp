#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/DeviceReport.hpp"
#include "ozdevice/DeviceRootWatch.hpp"
#include "ozdevice/Durations.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/RunningCommand.hpp"
#include "ozdevice/TerminationSignals.hpp"
#include "ozdevice/Verbs.hpp"

#include <QDateTime>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QTimer>

#include <csignal>
#include <memory>
#include <optional>

namespace oz::tools {

namespace {

constexpr std::chrono::seconds FetchEvery{1};

const QString RecordingForm = uR"(// The actions of a device, recorded by `ozdevice record`. Play them with
// `ozdevice run --scenario FILE -- COMMAND`, which starts the phone below.
{
    "description": "Recorded on %1, %2 seconds",%5
    "phone": %3,
    "steps": [
        %4
    ]
}
)"_s;

struct RecordOptions
{
    std::string file;
    std::vector<std::string> facilities;
    bool keepsIdentifiers = false;
    bool isReport = false;
    std::string note;
    Duration duration;
    std::vector<std::string> words;
};

// The steps that were fetched from the daemon's recording.
class Recording
{
public:
    explicit Recording(const RecordOptions &options) : m_options(options) { }

    void begin()
    {
        m_clock.start(); // before the daemon's clock, so that no step is later than the end
        (void)askDaemon(u"record"_s,
            QVariantMap{{u"facilities"_s, toStringList(m_options.facilities)},
                {u"keep-identifiers"_s, m_options.keepsIdentifiers}, {u"report"_s, m_options.isReport}});
        describe(); // the services may be gone at the end
    }
    // Describes the device as it is now, if a report is wanted.
    void describe()
    {
        if (!m_options.isReport)
            return;
        m_described = describeDevice(QString::fromStdString(m_options.note).simplified());
        mask();
    }
    void noteLoss()
    {
        if (m_report)
            m_report->diagnosis.problems.append(u"the services went away during the recording"_s);
    }
    void fetch(bool isLast = false)
    {
        const qsizetype before = m_steps.size();
        for (bool isMore = true; isMore;) {
            const QVariantMap told = askDaemon(u"recorded"_s,
                QVariantMap{{u"from"_s, m_steps.size()},
                    {u"end"_s, isLast}}).toMap();
            m_phone = told.value(u"phone"_s).toMap();
            m_hasMasked = told.value(u"masked"_s).toBool();
            m_steps += told.value(u"steps"_s).toStringList();
            isMore = m_steps.size() < told.value(u"count"_s).toLongLong();
        }
        // The note may name what has come since; there is no later chance if the services go away.
        if (m_described && !isLast && m_steps.size() > before)
            mask();
    }
    void write(const QString &name) const
    {
        QSaveFile file(name);
        const QString when = QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm"_s);
        const QString seconds = QString::number(double(m_clock.elapsed() + 1) / 1000, 'f', 3);
        QString phone =
            QString::fromUtf8(QJsonDocument(QJsonObject::fromVariantMap(m_phone)).toJson().trimmed());
        phone.replace(u'\n', "\n    "_L1);
        QStringList steps = m_steps;
        steps.append(uR"({"at":%1,"say":"the end of the recording"})"_s.arg(seconds));
        const QString report = m_report ? "\n    \"report\": "_L1 + reportJson(*m_report) + u',' : QString();
        const QByteArray text =
            RecordingForm.arg(when, seconds, phone, steps.join(",\n        "_L1), report).toUtf8();
        const bool isOpen = file.open(QIODevice::WriteOnly)
            && (!m_options.keepsIdentifiers || file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        if (!isOpen || file.write(text) != text.size() || !file.commit())
            throw CommandError(Failed, name + ": "_L1 + file.errorString());
    }
    [[nodiscard]] qsizetype count() const { return m_steps.size(); }
    [[nodiscard]] bool hasMasked() const { return m_hasMasked; }

private:
    void mask()
    {
        DeviceReport report = *m_described;
        maskReport(report, [this](const QStringList &texts) {
            return askDaemon(u"recorded"_s, QVariantMap{{u"from"_s, m_steps.size()}, {u"texts"_s, texts}})
                .toMap()
                .value(u"texts"_s)
                .toStringList();
        });
        m_report = report;
    }

    const RecordOptions &m_options;
    QElapsedTimer m_clock;
    QVariantMap m_phone;
    QStringList m_steps;
    bool m_hasMasked = false;
    std::optional<DeviceReport> m_described; // as it is, never written
    std::optional<DeviceReport> m_report; // as it is written
};

int record(const RecordOptions &options)
{
    const QString name = QString::fromStdString(options.file);
    // Check this now, not after the recording.
    if (QSaveFile file(name); !file.open(QIODevice::WriteOnly))
        throw CommandError(Failed, name + ": "_L1 + file.errorString());
    EventLoop loop;
    std::unique_ptr<RunningCommand> command;
    const TerminationSignals signals([&](int signal) {
        if (!command || !command->isRunning())
            QCoreApplication::quit(); // the usual end of a recording
        else if (signal != SIGINT)
            command->sendSignal(signal);
    });
    Recording recording(options);
    recording.begin();
    // Fetch regularly, to keep the steps if the services go away.
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { loop.guard([&] { recording.fetch(); }); });
    timer.start(FetchEvery);
    if (options.duration.seconds > 0)
        QTimer::singleShot(options.duration.milliseconds(), qApp, &QCoreApplication::quit);
    if (!options.words.empty()) {
        command = std::make_unique<RunningCommand>(toStringList(options.words), signals);
        QObject::connect(command.get(), &RunningCommand::finished, qApp, &QCoreApplication::quit);
        command->start();
    }
    const DeviceRootWatch rootWatch(&loop);
    try {
        (void)loop.run();
        // A command that did not start leaves nothing to play.
        if (command && !command->problem().isEmpty()) {
            printError(command->problem());
            return RunningCommand::NotStarted;
        }
        recording.describe();
        recording.fetch(true);
    } catch (const CommandError &) {
        recording.noteLoss();
        recording.write(name);
        throw;
    }
    recording.write(name);
    const int status = command && !command->isRunning() ? command->status() : Success;
    command.reset();
    printError(u"%1 steps are in %2"_s.arg(recording.count()).arg(name));
    if (recording.hasMasked())
        printError(u"names and identifiers are masked; --keep-identifiers keeps them"_s);
    return status;
}

} // namespace

void addRecordVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] = Verbs<RecordOptions>(parser, action)
                                     .add("record", "Record what the device does as a scenario", record);
    verb.option("FILE", options->file, "The scenario to write").required();
    verb.option("--only", options->facilities, "Only these facilities")
        .valueName("FACILITY")
        .commaSeparated();
    verb.flag("--keep-identifiers", options->keepsIdentifiers,
        "Write down what identifies the person and the device, instead of masking it; only you can read the "
        "file");
    const auto report = verb.flag("--report", options->isReport,
        "Describe the device in the file too, for a bug report: versions, what feeds each facility, and what "
        "doctor finds");
    verb.option("--note", options->note, "What is wrong, in one line, for the report")
        .valueName("TEXT")
        .needs(report);
    verb.duration("--for", options->duration.seconds, "End after a time (10s, 500ms, 2m)");
    verb.option("COMMAND", options->words, "Record while this command runs, after --");
    verb.footer("Without a time and a command, Ctrl-C ends the recording.");
}

} // namespace oz::tools
