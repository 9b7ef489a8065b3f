#include "ozdevice/RunningCommand.hpp"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <map>
#include <sys/prctl.h>
#include <unistd.h>

namespace oz::tools {

using namespace Qt::StringLiterals;

namespace {

using namespace std::chrono_literals;

constexpr auto EndTime = 1s; // from SIGTERM to SIGKILL
constexpr int Pause = 5; // milliseconds

struct ProcessEntry
{
    pid_t number;
    bool hasEnded;
};

// All processes of the system.
std::multimap<pid_t, ProcessEntry> processesByParent()
{
    std::multimap<pid_t, ProcessEntry> processes;
    for (const QString &name : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        bool isNumber = false;
        const pid_t number = name.toInt(&isNumber);
        QFile file("/proc/"_L1 + name + "/stat"_L1);
        if (!isNumber || !file.open(QIODevice::ReadOnly))
            continue;
        // The name may hold anything and ends at the last bracket; the state and the parent follow.
        const QByteArray stat = file.readAll();
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        processes.emplace(fields.value(1).toInt(), ProcessEntry{number, fields.value(0) == "Z"});
    }
    return processes;
}

} // namespace

RunningCommand::RunningCommand(const QStringList &words, const TerminationSignals &signals) : m_words(words)
{
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
    m_process.setChildProcessModifier([&signals] { signals.unblock(); });
    connect(&m_process, &QProcess::started, this, &RunningCommand::started);
    connect(&m_process, &QProcess::finished, this, &RunningCommand::finished);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            Q_EMIT finished();
    });
}

RunningCommand::~RunningCommand()
{
    m_process.disconnect(this);
    sendSignal(SIGTERM);
    const QDeadlineTimer end(EndTime);
    while (!processes().empty()) {
        if (end.hasExpired())
            sendSignal(SIGKILL);
        if (!isRunning() || !m_process.waitForFinished(Pause))
            QThread::msleep(Pause);
    }
}

void RunningCommand::start()
{
    const auto processes = processesByParent();
    const auto [first, last] = processes.equal_range(::getpid());
    for (auto child = first; child != last; ++child)
        m_others.insert(child->second.number);
    // Processes that its shells leave behind become children of this process.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    m_process.start(m_words.first(), m_words.mid(1));
}

std::vector<pid_t> RunningCommand::processes() const
{
    const auto all = processesByParent();
    std::vector<pid_t> own;
    std::vector<pid_t> parents{::getpid()};
    while (!parents.empty()) {
        const pid_t parent = parents.back();
        parents.pop_back();
        const auto [first, last] = all.equal_range(parent);
        for (auto child = first; child != last; ++child) {
            if (m_others.contains(child->second.number))
                continue;
            parents.push_back(child->second.number);
            if (!child->second.hasEnded)
                own.push_back(child->second.number);
        }
    }
    return own;
}

void RunningCommand::sendSignal(int signal) const
{
    for (const pid_t process : processes())
        ::kill(process, signal);
}

void RunningCommand::end()
{
    m_wasEnded = isRunning();
    sendSignal(SIGTERM);
    QTimer::singleShot(EndTime, this, [this] { sendSignal(SIGKILL); });
}

int RunningCommand::status() const
{
    if (!problem().isEmpty())
        return NotStarted;
    return m_process.exitStatus() == QProcess::CrashExit ? 128 + m_process.exitCode() : m_process.exitCode();
}

QString RunningCommand::problem() const
{
    if (m_process.error() != QProcess::FailedToStart)
        return {};
    return m_words.first() + ": "_L1 + m_process.errorString();
}

} // namespace oz::tools
