#include "pps/PpsSnapshot.hpp"

#include <oz/PpsText.hpp>

#include <cerrno>

namespace oz {

PpsSnapshot PpsSnapshot::load(const QByteArray &path, int folder, int flags, UniqueFd *keepOpen)
{
    PpsSnapshot snapshot;
    const auto fail = [&](int reason) {
        snapshot.error = reason;
        snapshot.content.clear();
        return snapshot;
    };
    UniqueFd fd(::openat(folder, path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | flags));
    if (!fd)
        return fail(errno);
    struct stat status;
    if (::fstat(fd.get(), &status) < 0)
        return fail(errno);
    if (!S_ISREG(status.st_mode))
        return fail(S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    if (status.st_size > PpsText::MaxMessageSize)
        return fail(EMSGSIZE);
    snapshot.note(status);
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

bool PpsSnapshot::isCurrent(const QByteArray &path) const
{
    struct stat status;
    if (::stat(path.constData(), &status) < 0)
        return errno == error;
    return error == 0 && FileIdentity(status) == identity;
}

void PpsSnapshot::note(const struct stat &status)
{
    identity = FileIdentity(status);
    mode = status.st_mode & 07777;
    owner = status.st_uid;
    group = status.st_gid;
}

} // namespace oz
