#include "PhoneProcess.hpp"

#include <oz/testing/PhoneError.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace oz::testing {

namespace {

constexpr int StartTime = 20'000; // milliseconds
constexpr int StopTime = 5'000;
constexpr int LifelineOfDaemon = 3;

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

// Starts a program with these descriptors as its 2 and 3, and no others; an errno.
int spawn(const QString &program, std::vector<QByteArray> arguments, const QString &root, int log,
    int lifeline, pid_t *pid)
{
    arguments.insert(arguments.begin(), QFile::encodeName(program));
    std::vector<QByteArray> environment = environmentWith(root);
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, log, STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&actions, lifeline, LifelineOfDaemon);
    posix_spawn_file_actions_addclosefrom_np(&actions, LifelineOfDaemon + 1);
    // Ctrl-C on the terminal is for the test; the phone ends after it.
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    const int error = ::posix_spawn(pid, arguments.front().constData(), &actions, &attributes,
        pointersTo(&arguments).data(), pointersTo(&environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

PhoneProcess::PhoneProcess(const QString &daemon, const QByteArray &phone)
{
    QByteArray name = QFile::encodeName(folderForRoots() + QLatin1String("/oz-phone-XXXXXX"));
    if (!::mkdtemp(name.data()))
        throw PhoneError(QLatin1String("a phone cannot make its device root in ") + folderForRoots()
            + QLatin1String(": ") + qt_error_string(errno));
    m_root = QFile::decodeName(name);
    try {
        start(daemon, phone);
    } catch (const PhoneError &) {
        end();
        throw;
    }
}

PhoneProcess::~PhoneProcess()
{
    end();
}

void PhoneProcess::start(const QString &daemon, const QByteArray &phone)
{
    std::vector<QByteArray> arguments{"--private", "--lifeline", QByteArray::number(LifelineOfDaemon),
        "--config", "/dev/null", "--simulated"};
    const QString phoneFile = m_root + QLatin1String("/phone.json");
    if (!phone.isEmpty()) {
        QFile file(phoneFile);
        if (!file.open(QIODevice::WriteOnly) || file.write(phone) != phone.size() || !file.flush())
            throw PhoneError(phoneFile + QLatin1String(": ") + file.errorString());
        arguments.insert(arguments.end(), {"--phone", QFile::encodeName(phoneFile)});
    }
    std::array<int, 2> ends{};
    m_log = ::memfd_create("ozdeviced.log", MFD_CLOEXEC);
    if (m_log < 0 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) < 0)
        throw PhoneError(QLatin1String("a phone cannot be started: ") + qt_error_string(errno));
    m_lifeline = ends[0];
    // Where it has the number already, the descriptor would be closed by its own copy.
    const int other = ::fcntl(ends[1], F_DUPFD_CLOEXEC, LifelineOfDaemon + 1);
    const int error = spawn(daemon, arguments, m_root, m_log, other, &m_pid);
    ::close(ends[1]);
    ::close(other);
    if (error)
        throw PhoneError(QLatin1String("a phone cannot be started: ") + daemon + QLatin1String(": ")
            + qt_error_string(error));
    pollfd ready{m_lifeline, POLLIN, 0};
    int count = 0;
    while ((count = ::poll(&ready, 1, StartTime)) < 0 && errno == EINTR) { }
    char byte = 0;
    if (count <= 0 || ::recv(m_lifeline, &byte, 1, 0) != 1) {
        QString reason = log().trimmed();
        if (reason.isEmpty())
            reason = count == 0 ? QStringLiteral("it takes too long") : QStringLiteral("it has ended");
        throw PhoneError(QLatin1String("the phone does not start: ") + reason);
    }
    // What was said of it has been read; nobody is to find it where a test is killed.
    QFile::remove(phoneFile);
}

void PhoneProcess::end()
{
    if (m_pid > 0) {
        // It goes when it sees the end of the lifeline, and is given the time to.
        ::shutdown(m_lifeline, SHUT_WR);
        pollfd gone{m_lifeline, POLLIN, 0};
        int count = 0;
        while ((count = ::poll(&gone, 1, StopTime)) < 0 && errno == EINTR) { }
        if (count == 0)
            ::kill(m_pid, SIGKILL);
        while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) { }
    }
    for (const int fd : {m_lifeline, m_log}) {
        if (fd >= 0)
            ::close(fd);
    }
    QDir(m_root).removeRecursively();
}

QString PhoneProcess::log() const
{
    QByteArray text;
    std::array<char, 4096> buffer{};
    ssize_t size = 0;
    while ((size = ::pread(m_log, buffer.data(), buffer.size(), text.size())) > 0)
        text.append(buffer.data(), size);
    return QString::fromUtf8(text);
}

} // namespace oz::testing
