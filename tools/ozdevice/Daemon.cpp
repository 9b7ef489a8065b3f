#include "ozdevice/Daemon.hpp"

#include "ozdevice/Command.hpp"
#include "ozdevice/Tree.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>
#include <QVariantMap>

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace oz::tools {

namespace {

// Where it can be opened, the daemon is ready.
const QString ControlPath = QStringLiteral("/pps/system/ozdeviced/control");
const QString StatusPath = QStringLiteral("/pps/system/ozdeviced/status");

constexpr std::chrono::milliseconds AnswerDeadline{2000};

enum class ProcessState { Gone, Stopped, Runs };

// Anybody may see this of a process, unlike what it answers to its own user.
ProcessState stateOf(qint64 process)
{
    if (process <= 0 || (::kill(pid_t(process), 0) < 0 && errno != EPERM))
        return ProcessState::Gone;
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    const QByteArray stat = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const QByteArray state = stat.mid(stat.lastIndexOf(')') + 2, 1).toLower();
    return state == "t" ? ProcessState::Stopped : ProcessState::Runs;
}

QByteArray requestText(const QString &message, const QVariant &data)
{
    QVariantMap request{{QStringLiteral("msg"), message}, {QStringLiteral("id"), 1}};
    if (data.isValid())
        request.insert(QStringLiteral("dat"), data);
    return PpsObject::encode(request);
}

// Whether a daemon that takes connections also answers, which one that was stopped does not.
bool answers(PpsObject *control)
{
    if (!control->write(requestText(QStringLiteral("describe"), {})))
        return false;
    const QDeadlineTimer deadline(AnswerDeadline);
    for (bool ok = false; !deadline.hasExpired(); QThread::msleep(1)) {
        (void)control->read(&ok);
        if (ok)
            return true;
        if (control->error() != EAGAIN)
            return false;
    }
    return false;
}

QVariantMap readStatus()
{
    PpsObject status(StatusPath);
    if (!status.open(PpsOpenMode::Subscribe))
        return {};
    return PpsObject::decode(status.read()).value(QStringLiteral("@status")).toMap();
}

// The control object is for the daemon's user only; what it publishes tells others.
bool isAnothers(const PpsObject &control)
{
    return control.error() == EACCES
        && stateOf(readStatus().value(QStringLiteral("pid")).toLongLong()) != ProcessState::Gone;
}

} // namespace

DaemonState lookAtDaemon()
{
    DaemonState daemon;
    daemon.status = readStatus();
    daemon.age = ageOf(StatusPath);
    const qint64 process = daemon.status.value(QStringLiteral("pid")).toLongLong();
    PpsObject control(ControlPath);
    if (control.open(PpsOpenMode::PublishSubscribe)) {
        daemon.isRunning = answers(&control);
        if (!daemon.isRunning) {
            daemon.problem = QLatin1String("ozdeviced (process ") + QString::number(process)
                + QLatin1String(") does not answer");
        }
    } else if (!isAnothers(control)) {
        daemon.problem = QStringLiteral("no ozdeviced is running");
    } else if (stateOf(process) == ProcessState::Stopped) {
        daemon.problem =
            QLatin1String("ozdeviced (process ") + QString::number(process) + QLatin1String(") is stopped");
    } else {
        daemon.isRunning = true;
    }
    return daemon;
}

QString unfedText(const DaemonState &daemon)
{
    return QLatin1String("nothing feeds the tree under ") + devicePath(QStringLiteral("/pps"))
        + QLatin1String(": ") + daemon.problem;
}

std::vector<SourceState> sourceStates(const DaemonState &daemon)
{
    std::vector<SourceState> states;
    const QVariantMap facilities = daemon.status.value(QStringLiteral("facilities")).toMap();
    const QVariantMap sources = daemon.status.value(QStringLiteral("sources")).toMap();
    for (auto source = sources.cbegin(); source != sources.cend(); ++source) {
        const QVariantMap facility = facilities.value(source.key()).toMap();
        states.push_back({source.key(), facility.value(QStringLiteral("source"), *source).toString(),
            facility.value(QStringLiteral("state")).toString(),
            facility.value(QStringLiteral("reason")).toString(),
            facility.value(QStringLiteral("auto")).toBool()});
    }
    return states;
}

bool isPhoneSimulated(const DaemonState &daemon)
{
    const auto states = sourceStates(daemon);
    const auto isFedBy = [](const char *source) {
        return [source](const SourceState &state) { return state.source == QLatin1String(source); };
    };
    return std::any_of(states.begin(), states.end(), isFedBy("simulated"))
        && std::all_of(states.begin(), states.end(),
            [&](const SourceState &state) { return isFedBy("simulated")(state) || isFedBy("none")(state); });
}

QVariant askDaemon(const QString &message, const QVariant &data)
{
    PpsObject control(ControlPath + QLatin1String("?wait"));
    if (!control.open(PpsOpenMode::PublishSubscribe)) {
        const QString reason = control.error() == ENOENT || control.error() == ECONNREFUSED
            ? QStringLiteral("no ozdeviced is running")
            : control.errorString() + QLatin1String(" (it is for the daemon's user)");
        throw CommandError(Unavailable,
            QLatin1String("cannot reach the services under ") + devicePath(QStringLiteral("/pps"))
                + QLatin1String(": ") + reason);
    }
    bool ok = control.write(requestText(message, data));
    QVariantMap answer;
    if (ok)
        answer = PpsObject::decode(control.read(&ok)).value(QStringLiteral("@control")).toMap();
    if (!ok)
        throw CommandError(Failed, QLatin1String("the services did not answer: ") + control.errorString());
    // It refuses what means nothing with EINVAL.
    if (const int error = answer.value(QStringLiteral("err")).toInt(); error != 0)
        throw CommandError(
            error == EINVAL ? WrongUse : Failed, answer.value(QStringLiteral("errstr")).toString());
    return answer.value(QStringLiteral("dat"));
}

bool waitForDaemon(std::chrono::milliseconds time, const std::function<bool()> &goOn)
{
    const QDeadlineTimer deadline(time);
    for (;;) {
        PpsObject probe{ControlPath};
        if (probe.open(PpsOpenMode::Publish) || isAnothers(probe))
            return true;
        if (deadline.hasExpired() || !goOn())
            return false;
        QThread::msleep(5);
    }
}

} // namespace oz::tools
