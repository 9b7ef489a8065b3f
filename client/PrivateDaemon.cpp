#include <oz/client/PrivateDaemon.hpp>

#include <oz/client/DaemonClient.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace oz::client {

namespace {

constexpr std::chrono::seconds StartTime{20};
constexpr int StopTime = 5'000; // milliseconds

// In memory where possible, as on a device.
QString folderForRoots()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    for (const QString &folder : {runtime, QStringLiteral("/dev/shm")}) {
        if (!folder.isEmpty() && QFileInfo(folder).isWritable())
            return folder;
    }
    return QDir::tempPath();
}

// The environment of this process with another device root.
std::vector<QByteArray> environmentWith(const QString &root)
{
    std::vector<QByteArray> entries;
    for (char **entry = environ; *entry; ++entry) {
        if (qstrncmp(*entry, "OZ_DEVICE_ROOT=", 15) != 0)
            entries.emplace_back(*entry);
    }
    entries.push_back("OZ_DEVICE_ROOT=" + QFile::encodeName(root));
    return entries;
}

// As the C library wants them.
std::vector<char *> pointersTo(std::vector<QByteArray> *texts)
{
    std::vector<char *> pointers;
    for (QByteArray &text : *texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Starts a program that logs into \a log, where that is none, into this process's standard error; an errno.
int spawn(std::vector<QByteArray> words, const QString &root, int log, pid_t *pid)
{
    std::vector<QByteArray> environment = environmentWith(root);
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (log >= 0)
        posix_spawn_file_actions_adddup2(&actions, log, STDERR_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    // Ctrl-C on the terminal is for this program; the phone ends after it.
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    const int error = ::posix_spawn(pid, words.front().constData(), &actions, &attributes,
        pointersTo(&words).data(), pointersTo(&environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

DaemonError failure(const QString &text, int error)
{
    return {DaemonError::Unreachable, error, text + QLatin1String(": ") + qt_error_string(error)};
}

} // namespace

PrivateDaemon::PrivateDaemon(const Setup &setup)
{
    QByteArray name = QFile::encodeName(folderForRoots() + QLatin1String("/ozdevice-run-XXXXXX"));
    if (!::mkdtemp(name.data()))
        throw failure(QLatin1String("cannot make a device root in ") + folderForRoots(), errno);
    m_root = QFile::decodeName(name);
    try {
        start(setup);
    } catch (const DaemonError &) {
        end();
        throw;
    }
}

PrivateDaemon::~PrivateDaemon()
{
    end();
}

void PrivateDaemon::start(const Setup &setup)
{
    std::vector<QByteArray> words{QFile::encodeName(setup.program), "--private",
        QByteArray::number(::getpid()), "--config", "/dev/null", "--simulated"};
    QFile phone(m_root + QLatin1String("/phone.json"));
    if (!setup.phone.isEmpty()) {
        if (!phone.open(QIODevice::WriteOnly) || phone.write(setup.phone) != setup.phone.size()
            || !phone.flush())
            throw failure(phone.fileName(), errno);
        words.insert(words.end(), {"--phone", QFile::encodeName(phone.fileName())});
    } else if (!setup.phoneFile.isEmpty()) {
        words.insert(
            words.end(), {"--phone", QFile::encodeName(QFileInfo(setup.phoneFile).absoluteFilePath())});
    }
    if (!setup.forwardsLog && (m_log = ::memfd_create("ozdeviced.log", MFD_CLOEXEC)) < 0)
        throw failure(QStringLiteral("the simulated phone cannot log"), errno);
    if (const int error = spawn(words, m_root, m_log, &m_pid))
        throw failure(setup.program, error);
    if (!DaemonClient(m_root).waitUntilReady(StartTime, [this] { return isRunning(); })) {
        const bool runs = isRunning();
        QString reason = log().trimmed();
        if (reason.isEmpty())
            reason = setup.program + QLatin1String(runs ? " serves nothing" : " has ended");
        throw DaemonError(DaemonError::Unreachable, runs ? ETIMEDOUT : ECHILD,
            QLatin1String("the simulated phone did not start: ") + reason);
    }
    // The daemon has read it; nobody is to find it where this process is killed.
    phone.remove();
}

bool PrivateDaemon::isRunning() const
{
    siginfo_t info{};
    return ::waitid(P_PID, id_t(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == 0;
}

void PrivateDaemon::end()
{
    if (m_pid > 0) {
        pollfd gone{int(::syscall(SYS_pidfd_open, m_pid, 0)), POLLIN, 0};
        ::kill(m_pid, SIGTERM);
        int count = 0;
        while ((count = ::poll(&gone, 1, StopTime)) < 0 && errno == EINTR) { }
        if (count == 0)
            ::kill(m_pid, SIGKILL);
        while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) { }
        if (gone.fd >= 0)
            ::close(gone.fd);
    }
    if (m_log >= 0)
        ::close(m_log);
    QDir(m_root).removeRecursively();
}

QString PrivateDaemon::log() const
{
    QByteArray text;
    std::array<char, 4096> buffer{};
    ssize_t size = 0;
    while ((size = ::pread(m_log, buffer.data(), buffer.size(), text.size())) > 0)
        text.append(buffer.data(), size);
    return QString::fromUtf8(text);
}

} // namespace oz::client
