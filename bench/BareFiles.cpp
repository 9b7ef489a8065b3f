#include "BareFiles.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace oz::bench {

namespace {

void require(bool good)
{
    if (!good)
        std::abort();
}

int openAndRead(const std::string &path, char *buffer, std::size_t size)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status;
    require(fd >= 0 && ::fstat(fd, &status) == 0 && ::read(fd, buffer, size) >= 0);
    return fd;
}

} // namespace

void replaceFile(const std::string &path, const std::string &content)
{
    char buffer[4096];
    struct stat status;
    struct stat temporaryStatus;
    const int old = openAndRead(path, buffer, sizeof buffer);
    require(::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0);
    const std::string temporary = path + ".tmp";
    const int fd = ::open(temporary.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    require(fd >= 0 && ::flock(fd, LOCK_EX) == 0 && ::fstat(fd, &status) == 0);
    require(::lstat(temporary.c_str(), &temporaryStatus) == 0 && ::stat(path.c_str(), &status) == 0);
    require(::fstat(old, &status) == 0);
    require(::pwrite(fd, content.data(), content.size(), 0) == ssize_t(content.size()));
    require(::fchmod(fd, 0644) == 0 && ::rename(temporary.c_str(), path.c_str()) == 0);
    ::close(fd);
    ::close(old);
}

void followFile(const std::string &path, const std::function<void()> &changed)
{
    const int inotify = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    const std::string directory = path.substr(0, path.rfind('/'));
    require(::inotify_add_watch(inotify, directory.c_str(), IN_MOVED_TO) >= 0);
    changed();
    char buffer[4096];
    for (;;) {
        pollfd waiting{inotify, POLLIN, 0};
        require(::poll(&waiting, 1, -1) == 1);
        while (::read(inotify, buffer, sizeof buffer) > 0) { }
        ::close(openAndRead(path, buffer, sizeof buffer));
        changed();
    }
}

} // namespace oz::bench
