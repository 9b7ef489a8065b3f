#include "pps/PpsStateWriter.hpp"

#include "files/PlaceLock.hpp"
#include "pps/PpsWatcher.hpp"

#include <oz/PpsText.hpp>

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace oz {

namespace {

// How often the folder may be exchanged under a publisher's hands.
constexpr int MostAttempts = 10;

int writeAll(int fd, const QByteArray &content)
{
    for (qsizetype written = 0; written < content.size();) {
        const ssize_t count =
            ::pwrite(fd, content.constData() + written, std::size_t(content.size() - written), written);
        if (count < 0 && errno != EINTR)
            return errno;
        written += std::max<ssize_t>(count, 0);
    }
    return 0;
}

} // namespace

struct PpsStateWriter::Change
{
    const QByteArray &update;
    PpsMerge merge;
    Create create;
    mode_t newMode;
    QByteArray content{}; // the whole object, set by prepare()
    mode_t mode = 0;
};

int PpsStateWriter::publish(const QByteArray &update, PpsMerge merge, Create create, mode_t mode)
{
    PpsWatcher::endTurn();
    m_problem.clear();
    Change change{update, merge, create, mode};
    Step step = Step::Again;
    int error = 0;
    for (int i = 0; i < MostAttempts && step == Step::Again; ++i)
        error = attempt(&change, &step);
    return explain(step == Step::Again ? EBUSY : error);
}

int PpsStateWriter::attempt(Change *change, Step *step)
{
    *step = Step::Done;
    const auto again = [&] {
        forget();
        *step = Step::Again;
        return 0;
    };
    const bool isRemembered = m_known && !m_known->error;
    if (!isRemembered) {
        forget();
        if (const int error = openFolder(change->create))
            return error;
        if (const int error = load())
            return error;
    }
    if (const int error = prepare(change))
        return error;
    if (isThere(*change))
        return !isRemembered || m_known->isCurrent(m_file) ? 0 : again();

    PlaceLock lock(m_folder.fd(), m_file);
    if (const int error = lock.acquire())
        return error == ENOENT ? again() : error; // the folder is gone
    const auto isCurrent = [&] {
        if (lock.present())
            return !m_known->error && m_known->identity == FileIdentity(*lock.present());
        return m_known->error == ENOENT && m_folder.isFolderOf(m_file);
    };
    if (!isCurrent()) {
        if (const int error = load())
            return error;
        if (!isCurrent())
            return again();
        if (const int error = prepare(change))
            return error;
        if (isThere(*change))
            return 0;
    }
    return commit(&lock, *change);
}

int PpsStateWriter::prepare(Change *change)
{
    if (m_known->error && change->create == Create::No)
        return m_known->error;
    change->content = mergeLines(m_known->content, change->update, m_name, change->merge);
    change->mode = change->merge == PpsMerge::Keep && !m_known->error ? m_known->mode : change->newMode;
    return change->content.size() > PpsText::MaxMessageSize ? EMSGSIZE : 0;
}

bool PpsStateWriter::isThere(const Change &change) const
{
    return !m_known->error && change.mode == m_known->mode
        && sameAttributes(m_known->content, change.content);
}

int PpsStateWriter::openFolder(Create create)
{
    const int error =
        m_folder.open(m_file, create == Create::Yes ? TreeFolder::Make::Yes : TreeFolder::Make::No);
    m_problem = m_folder.problem();
    return error;
}

int PpsStateWriter::load()
{
    m_held.reset();
    m_known = PpsSnapshot::load(m_name, m_folder.fd(), O_NOFOLLOW, &m_held);
    if (m_known->error == ENOENT)
        return 0;
    int error = m_known->error;
    if (!error && ::faccessat(m_folder.fd(), m_name.constData(), W_OK, AT_EACCESS) < 0)
        error = errno;
    if (error)
        m_known.reset();
    else
        m_known->content = selectLines(m_known->content, m_name, {});
    if (error == ELOOP)
        m_problem = linkProblem(m_file);
    return error;
}

int PpsStateWriter::commit(PlaceLock *lock, const Change &change)
{
    if (lock->status().st_size > 0 && ::ftruncate(lock->fd(), 0) < 0)
        return errno;
    if (const int error = writeAll(lock->fd(), change.content))
        return error;
    // Root keeps the owner, who could not publish any more else. A publisher outside the object's group
    // cannot keep the group; the object is published all the same.
    const bool isAnothers =
        m_known->owner != lock->status().st_uid || m_known->group != lock->status().st_gid;
    if (!m_known->error && isAnothers && ::fchown(lock->fd(), m_known->owner, m_known->group) < 0
        && ::fchown(lock->fd(), uid_t(-1), m_known->group) < 0 && errno != EPERM)
        return errno;
    if (::fchmod(lock->fd(), change.mode) < 0)
        return errno;
    if (const int error = lock->rename(&m_held))
        return error;
    struct stat status;
    if (::fstat(m_held.get(), &status) < 0) {
        m_known.reset();
        return 0;
    }
    m_known->error = 0;
    m_known->content = change.content;
    m_known->note(status);
    return 0;
}

int PpsStateWriter::remove()
{
    PpsWatcher::endTurn();
    m_problem.clear();
    forget();
    if (const int error = openFolder(Create::No))
        return explain(error);
    const PpsSnapshot present = PpsSnapshot::load(m_name, m_folder.fd(), O_NOFOLLOW);
    if (present.error == ELOOP)
        m_problem = linkProblem(m_file);
    if (present.error && present.error != EMSGSIZE)
        return present.error;
    PlaceLock lock(m_folder.fd(), m_file);
    if (const int error = lock.acquire())
        return explain(error);
    return ::unlinkat(m_folder.fd(), m_name.constData(), 0) < 0 ? errno : 0;
}

int PpsStateWriter::explain(int error)
{
    if (error)
        forget();
    if (error == EBUSY)
        m_problem = QLatin1String("another publisher holds '") + QFile::decodeName(m_file)
            + QLatin1String("' and does not go on");
    return error;
}

void PpsStateWriter::forget()
{
    m_known.reset();
    m_held.reset();
    m_folder.close();
}

} // namespace oz
