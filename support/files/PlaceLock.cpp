#include "files/PlaceLock.hpp"

#include "files/TreeFolder.hpp"

#include <oz/GrowingPause.hpp>

#include <QDeadlineTimer>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace oz {

namespace {

using namespace std::chrono_literals;

// A holder is through in microseconds, unless it was stopped.
constexpr auto Patience = 1s;
constexpr std::chrono::microseconds FirstPause = 20us;
constexpr std::chrono::microseconds LongestPause = 1ms;

} // namespace

QByteArray hiddenName(const QByteArray &file, const char *suffix)
{
    return '.' + nameOf(file) + suffix;
}

PlaceLock::PlaceLock(int folder, const QByteArray &file)
    : m_folder(folder), m_file(file), m_name(nameOf(file)), m_temporary(hiddenName(file, ".tmp"))
{
}

PlaceLock::~PlaceLock()
{
    if (m_fd)
        ::unlinkat(m_folder, m_temporary.constData(), 0);
}

int PlaceLock::acquire()
{
    QDeadlineTimer deadline(QDeadlineTimer::Forever);
    GrowingPause pause(FirstPause, LongestPause);
    for (;;) {
        // Each time anew: the file that another had locked is the object now, and stays locked.
        UniqueFd fd(::openat(
            m_folder, m_temporary.constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
        if (!fd)
            return errno;
        if (::flock(fd.get(), LOCK_EX | LOCK_NB) < 0) {
            if (errno != EWOULDBLOCK && errno != EINTR)
                return errno;
            if (deadline.isForever())
                deadline.setRemainingTime(Patience);
            if (deadline.hasExpired())
                return EBUSY;
            fd.reset();
            std::this_thread::sleep_for(pause.next());
            continue;
        }
        // In this order: a file that was the object before it was locked here is the object still, or has no
        // name any more.
        look();
        if (::fstat(fd.get(), &m_status) < 0)
            return errno;
        const bool isObject =
            m_present && m_present->st_ino == m_status.st_ino && m_present->st_dev == m_status.st_dev;
        if (isObject || m_status.st_nlink == 0)
            continue;
        if (!S_ISREG(m_status.st_mode))
            return ENOTSUP;
        static std::atomic<uid_t> s_user = ::geteuid();
        if (m_status.st_uid != s_user && m_status.st_uid != (s_user = ::geteuid())) {
            // Its owner could go on writing to it.
            if (::unlinkat(m_folder, m_temporary.constData(), 0) < 0)
                return errno;
            continue;
        }
        m_fd = std::move(fd);
        return 0;
    }
}

void PlaceLock::look()
{
    struct stat status;
    m_present.reset();
    if (::fstatat(AT_FDCWD, m_file.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        m_present = status;
}

int PlaceLock::rename(UniqueFd *file)
{
    if (::renameat(m_folder, m_temporary.constData(), m_folder, m_name.constData()) < 0)
        return errno;
    *file = std::move(m_fd);
    m_fd.reset();
    return 0;
}

} // namespace oz
