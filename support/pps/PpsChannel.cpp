#include "pps/PpsChannel.hpp"

#include "pps/PpsServedChannel.hpp"
#include "pps/PpsStateChannel.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace oz {

int PpsChannel::open(const PpsPath &path, PpsOpenMode::Types mode, bool blocking, PpsChannelOwner *owner,
    std::unique_ptr<PpsChannel> *channel)
{
    const QByteArray file = path.filePath();
    struct stat status;
    if (::stat(file.constData(), &status) < 0)
        return errno;
    if (S_ISSOCK(status.st_mode)) {
        auto served = std::make_unique<PpsServedChannel>(path, mode, blocking, owner);
        if (const int error = served->connect())
            return error;
        *channel = std::move(served);
        return 0;
    }
    if (!S_ISREG(status.st_mode))
        return S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
    const int access = (mode & PpsOpenMode::Subscribe ? R_OK : 0) | (mode & PpsOpenMode::Publish ? W_OK : 0);
    if (::faccessat(AT_FDCWD, file.constData(), access, AT_EACCESS) < 0)
        return errno;
    *channel = std::make_unique<PpsStateChannel>(path, blocking, owner);
    return 0;
}

} // namespace oz
