#pragma once

#include <sys/stat.h>

namespace oz {

/*! Tells what lies at a path at one time from what lies there at another. */
struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    explicit FileIdentity() = default;
    explicit FileIdentity(const struct stat &status)
        : device(status.st_dev), inode(status.st_ino), size(status.st_size), modified(status.st_mtim),
          changed(status.st_ctim)
    {
    }
    bool operator==(const FileIdentity &other) const
    {
        const auto same = [](const timespec &one, const timespec &another) {
            return one.tv_sec == another.tv_sec && one.tv_nsec == another.tv_nsec;
        };
        return device == other.device && inode == other.inode && size == other.size
            && same(modified, other.modified) && same(changed, other.changed);
    }
};

} // namespace oz
