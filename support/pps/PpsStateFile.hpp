#pragma once

#include "base/UniqueFd.hpp"
#include "pps/PpsLines.hpp"

#include <QByteArray>

#include <sys/stat.h>
#include <sys/types.h>

/*!
 * State objects as files. Publishing replaces the file: the new content is written to ".NAME.tmp" beside it
 * and renamed over it. That file is also the publishers' lock: whoever holds the flock on what lies at
 * ".NAME.tmp" may publish, and the rename takes the lock away together with the name. A publisher that is
 * killed leaves at most an unlocked ".NAME.tmp", which the next one takes over. Readers need no lock, and
 * cannot open the temporary file. A service that puts a socket at the path takes the same lock.
 */
namespace oz::PpsStateFile {

/*! Tells one published content of an object from the next. */
struct Identity
{
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec changed{};

    explicit Identity() = default;
    explicit Identity(const struct stat &status);
    bool operator==(const Identity &other) const;
};

/*! One reading of an object. */
struct Snapshot
{
    int error = 0; //!< the errno where it could not be read; ENOENT where it is gone
    Identity identity;
    mode_t mode = 0;
    QByteArray content;
};

/*! Reads the object at \a path. With \a keepOpen the descriptor is handed out, which keeps the inode from
 * reuse. */
[[nodiscard]] Snapshot load(const QByteArray &path, UniqueFd *keepOpen = nullptr);

/*! Whether the object at \a path is still what \a snapshot was read from. */
[[nodiscard]] bool isCurrent(const QByteArray &path, const Snapshot &snapshot);

/*! Whether a publish may make an object that is not there. */
enum class Create { No, Yes };

/*!
 * Publishes the lines of \a update onto the object at \a path; 0 or the errno. Where nothing changes, nothing
 * is written and nobody is woken. A new object gets \a mode, and its directories are made; a present one
 * keeps its mode where it keeps its attributes, and its owner and group where the publisher may give them.
 */
[[nodiscard]] int publish(
    const QByteArray &path, const QByteArray &update, PpsMerge merge, Create create, mode_t mode);

/*! Takes the object away; 0 or the errno. */
[[nodiscard]] int remove(const QByteArray &path);

/*! Makes the directory of \a path and those above it; 0 or the errno. */
[[nodiscard]] int makeDirectoryOf(const QByteArray &path);

/*! ".NAME" and \a suffix beside \a path, which no reader can open: what is under construction there. */
[[nodiscard]] QByteArray hiddenPath(const QByteArray &path, const char *suffix);

/*! The right to decide what lies at the path of an object, for the life of the instance; see above. */
class PublishLock
{
public:
    explicit PublishLock(const QByteArray &objectPath);
    ~PublishLock();
    PublishLock(const PublishLock &) = delete;
    PublishLock &operator=(const PublishLock &) = delete;

    /*! Whose an object is, and who may do what with it. */
    struct Rights
    {
        uid_t owner;
        gid_t group;
        mode_t mode;
    };

    /*! Waits for the lock; 0 or the errno. */
    [[nodiscard]] int acquire();
    /*! Puts \a content in the place of the object and gives the lock up; 0 or the errno. */
    [[nodiscard]] int commit(const QByteArray &objectPath, const QByteArray &content, const Rights &rights);

private:
    QByteArray m_path;
    UniqueFd m_fd;
    bool m_leftover = false;
};

} // namespace oz::PpsStateFile
