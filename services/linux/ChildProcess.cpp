#include "linux/ChildProcess.hpp"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

constexpr auto TimeToEnd = 3s;

// For execve(), which takes pointers.
std::vector<char *> pointersTo(QByteArrayList &texts)
{
    std::vector<char *> pointers;
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

QByteArrayList environmentWith(const QByteArray &variable)
{
    QByteArrayList all{variable};
    const QByteArray name = variable.first(variable.indexOf('=') + 1);
    for (char **entry = environ; *entry; ++entry) {
        if (!QByteArrayView(*entry).startsWith(name))
            all.append(*entry);
    }
    return all;
}

// In the child, between fork() and execve(), where only calls that are safe in signal handlers are allowed.
[[noreturn]] void become(
    const char *program, char *const *arguments, char *const *environment, pid_t parent, int report)
{
    // The daemon has signals blocked, which a program inherits.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() == parent) // which may have died before the call
        ::execve(program, arguments, environment);
    const int error = errno;
    (void)!::write(report, &error, sizeof error);
    ::_exit(127);
}

QString endOf(const siginfo_t &info)
{
    return (info.si_code == CLD_EXITED ? QLatin1String("it ended with status ")
                                       : QLatin1String("it was ended by signal "))
        + QString::number(info.si_status);
}

} // namespace

// Outlives its owner where that goes first, so that the kernel's record of the process is always cleared.
class ChildProcess::Running : public QObject
{
public:
    Running(pid_t pid, ChildProcess *owner)
        : m_pid(pid), m_descriptor(int(::syscall(SYS_pidfd_open, pid, 0))),
          m_ended(m_descriptor, QSocketNotifier::Read), m_owner(owner)
    {
        connect(&m_ended, &QSocketNotifier::activated, this, &Running::onEnded);
    }
    ~Running() override { ::close(m_descriptor); }

    [[nodiscard]] pid_t pid() const { return m_pid; }
    void abandon()
    {
        m_owner = nullptr;
        setParent(QCoreApplication::instance());
        ::kill(m_pid, SIGTERM);
        QTimer::singleShot(TimeToEnd, this, [this] { ::kill(m_pid, SIGKILL); });
    }

private:
    void onEnded()
    {
        siginfo_t info{};
        if (::waitid(P_PID, id_t(m_pid), &info, WEXITED | WNOHANG) == 0 && info.si_pid == 0)
            return;
        deleteLater();
        m_ended.setEnabled(false);
        if (m_owner) {
            m_owner->m_running = nullptr;
            Q_EMIT m_owner->ended(endOf(info));
        }
    }

    pid_t m_pid;
    int m_descriptor;
    QSocketNotifier m_ended;
    ChildProcess *m_owner;
};

ChildProcess::~ChildProcess()
{
    if (m_running)
        m_running->abandon();
}

int ChildProcess::start(const QString &program, const QStringList &arguments, const QByteArray &variable)
{
    if (m_running)
        return EALREADY;
    QByteArrayList words{QFile::encodeName(program)};
    for (const QString &argument : arguments)
        words.append(argument.toLocal8Bit());
    QByteArrayList environment = environmentWith(variable);
    const std::vector<char *> wordPointers = pointersTo(words);
    const std::vector<char *> environmentPointers = pointersTo(environment);
    std::array<int, 2> report{}; // closed by a program that starts, else the errno of why none does
    if (::pipe2(report.data(), O_CLOEXEC) < 0)
        return errno;
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0)
        become(words.first().constData(), wordPointers.data(), environmentPointers.data(), parent, report[1]);
    const int forkError = pid < 0 ? errno : 0;
    ::close(report[1]);
    int error = forkError;
    if (pid > 0)
        (void)!::read(report[0], &error, sizeof error);
    ::close(report[0]);
    if (error && pid > 0)
        ::waitpid(pid, nullptr, 0);
    if (!error)
        m_running = new Running(pid, this);
    return error;
}

pid_t ChildProcess::pid() const
{
    return m_running ? m_running->pid() : 0;
}

void ChildProcess::kill()
{
    if (m_running)
        ::kill(m_running->pid(), SIGKILL);
}

} // namespace oz::services
