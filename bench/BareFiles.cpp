#include "BareFiles.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace oz::bench {

namespace {

void require(bool good)
{
    if (!good)
        std::abort();
}

} // namespace

BareFile::BareFile(const std::string &path) : m_path(path), m_temporary(path + ".tmp") { }

BareFile::~BareFile()
{
    ::close(m_held);
}

void BareFile::replace(const std::string &content)
{
    struct stat status;
    const int fd = ::open(m_temporary.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    require(fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0);
    require(::lstat(m_path.c_str(), &status) == 0 && ::fstat(fd, &status) == 0);
    require(::pwrite(fd, content.data(), content.size(), 0) == ssize_t(content.size()));
    require(::fchmod(fd, 0644) == 0 && ::rename(m_temporary.c_str(), m_path.c_str()) == 0);
    require(::fstat(fd, &status) == 0);
    ::close(std::exchange(m_held, fd));
}

void followFile(const std::string &path, const std::function<void()> &changed)
{
    const int inotify = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    const std::string directory = path.substr(0, path.rfind('/'));
    require(::inotify_add_watch(inotify, directory.c_str(), IN_MOVED_TO) >= 0);
    changed();
    char buffer[16 * 1024];
    for (;;) {
        pollfd waiting{inotify, POLLIN, 0};
        require(::poll(&waiting, 1, -1) == 1 && ::read(inotify, buffer, sizeof buffer) > 0);
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        struct stat status;
        require(fd >= 0 && ::fstat(fd, &status) == 0 && ::read(fd, buffer, sizeof buffer) >= 0);
        ::close(fd);
        changed();
    }
}

} // namespace oz::bench
