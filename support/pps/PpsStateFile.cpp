#include "pps/PpsStateFile.hpp"

#include <oz/PpsText.hpp>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>

namespace oz::PpsStateFile {

namespace {

QByteArrayView nameOf(const QByteArray &path)
{
    return QByteArrayView(path).sliced(path.lastIndexOf('/') + 1);
}

} // namespace

Identity::Identity(const struct stat &status)
    : device(status.st_dev), inode(status.st_ino), size(status.st_size), changed(status.st_ctim)
{
}

bool Identity::operator==(const Identity &other) const
{
    return device == other.device && inode == other.inode && size == other.size
        && changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
}

QByteArray hiddenPath(const QByteArray &path, const char *suffix)
{
    const QByteArrayView name = nameOf(path);
    return path.first(path.size() - name.size()) + '.' + name.toByteArray() + suffix;
}

PublishLock::PublishLock(const QByteArray &objectPath) : m_path(hiddenPath(objectPath, ".tmp")) { }

PublishLock::~PublishLock()
{
    if (m_fd)
        ::unlink(m_path.constData());
}

int PublishLock::acquire()
{
    for (;;) {
        UniqueFd fd(::open(m_path.constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
        if (!fd)
            return errno;
        while (::flock(fd.get(), LOCK_EX) < 0) {
            if (errno != EINTR)
                return errno;
        }
        // Whoever held the lock before may have renamed or removed what was locked here.
        struct stat locked;
        struct stat present;
        if (::fstat(fd.get(), &locked) == 0 && ::lstat(m_path.constData(), &present) == 0
            && locked.st_dev == present.st_dev && locked.st_ino == present.st_ino) {
            m_leftover = locked.st_size > 0;
            m_fd = std::move(fd);
            return 0;
        }
    }
}

int PublishLock::commit(const QByteArray &objectPath, const QByteArray &content, const Rights &rights)
{
    if (m_leftover && ::ftruncate(m_fd.get(), 0) < 0)
        return errno;
    for (qsizetype written = 0; written < content.size();) {
        const ssize_t count = ::pwrite(
            m_fd.get(), content.constData() + written, std::size_t(content.size() - written), written);
        if (count < 0 && errno != EINTR)
            return errno;
        written += std::max<ssize_t>(count, 0);
    }
    // Root keeps the owner, who could not publish any more else. A publisher outside the object's group
    // cannot keep the group; the object is published all the same.
    if ((rights.owner != ::geteuid() || rights.group != ::getegid())
        && ::fchown(m_fd.get(), rights.owner, rights.group) < 0
        && ::fchown(m_fd.get(), uid_t(-1), rights.group) < 0 && errno != EPERM)
        return errno;
    if (::fchmod(m_fd.get(), rights.mode) < 0 || ::rename(m_path.constData(), objectPath.constData()) < 0)
        return errno;
    m_fd.reset();
    return 0;
}

Snapshot load(const QByteArray &path, UniqueFd *keepOpen)
{
    Snapshot snapshot;
    const auto fail = [&](int error) {
        snapshot.error = error;
        snapshot.content.clear();
        return snapshot;
    };
    UniqueFd fd(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd)
        return fail(errno);
    struct stat status;
    if (::fstat(fd.get(), &status) < 0)
        return fail(errno);
    if (!S_ISREG(status.st_mode))
        return fail(S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    if (status.st_size > PpsText::MaxMessageSize)
        return fail(EMSGSIZE);
    snapshot.identity = Identity(status);
    snapshot.mode = status.st_mode & 07777;
    snapshot.content.resize(status.st_size);
    qsizetype got = 0;
    while (got < status.st_size) {
        const ssize_t count =
            ::read(fd.get(), snapshot.content.data() + got, std::size_t(status.st_size - got));
        if (count < 0 && errno != EINTR)
            return fail(errno);
        if (count == 0)
            break;
        got += std::max<ssize_t>(count, 0);
    }
    snapshot.content.truncate(got);
    if (keepOpen)
        *keepOpen = std::move(fd);
    return snapshot;
}

bool isCurrent(const QByteArray &path, const Snapshot &snapshot)
{
    struct stat status;
    if (::stat(path.constData(), &status) < 0)
        return errno == snapshot.error;
    return snapshot.error == 0 && Identity(status) == snapshot.identity;
}

int publish(const QByteArray &path, const QByteArray &update, PpsMerge merge, Create create, mode_t mode)
{
    const QByteArrayView name = nameOf(path);
    QByteArray content;
    const auto prepare = [&](const Snapshot &old) -> int {
        if (old.error && (old.error != ENOENT || create == Create::No))
            return old.error;
        content = mergeLines(old.content, update, name, merge);
        if (merge == PpsMerge::Keep && old.error == 0)
            mode = old.mode;
        return content.size() > PpsText::MaxMessageSize ? EMSGSIZE : 0;
    };
    const auto isThere = [&](const Snapshot &old) {
        return old.error == 0 && old.content == content && old.mode == mode;
    };

    UniqueFd held;
    Snapshot old = load(path, &held);
    if (const int error = prepare(old))
        return error;
    if (isThere(old))
        return 0;
    if (old.error == ENOENT) {
        if (const int error = makeDirectoryOf(path))
            return error;
    } else if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) < 0) {
        return errno;
    }
    PublishLock lock(path);
    if (const int error = lock.acquire())
        return error;
    if (!isCurrent(path, old)) {
        old = load(path, &held);
        if (const int error = prepare(old))
            return error;
        if (isThere(old))
            return 0;
    }
    PublishLock::Rights rights{::geteuid(), ::getegid(), mode};
    struct stat status;
    if (old.error == 0 && ::fstat(held.get(), &status) == 0)
        rights = {status.st_uid, status.st_gid, mode};
    return lock.commit(path, content, rights);
}

int remove(const QByteArray &path)
{
    if (const Snapshot old = load(path); old.error && old.error != EMSGSIZE)
        return old.error;
    PublishLock lock(path);
    if (const int error = lock.acquire())
        return error;
    return ::unlink(path.constData()) < 0 ? errno : 0;
}

int makeDirectoryOf(const QByteArray &path)
{
    const QByteArray directory = path.first(path.lastIndexOf('/'));
    if (directory.isEmpty() || ::mkdir(directory.constData(), 0755) == 0 || errno == EEXIST)
        return 0;
    if (errno != ENOENT)
        return errno;
    if (const int error = makeDirectoryOf(directory))
        return error;
    return ::mkdir(directory.constData(), 0755) == 0 || errno == EEXIST ? 0 : errno;
}

} // namespace oz::PpsStateFile
