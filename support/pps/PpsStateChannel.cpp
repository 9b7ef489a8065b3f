#include "pps/PpsStateChannel.hpp"

#include "pps/PpsTextParts.hpp"

#include <oz/PpsText.hpp>

#include <cerrno>

namespace oz {

PpsStateChannel::PpsStateChannel(const PpsPath &path, bool blocking, PpsChannelOwner *owner)
    : m_path(path), m_file(path.filePath()), m_blocking(blocking), m_owner(owner), m_writer(m_file)
{
}

PpsStateChannel::~PpsStateChannel()
{
    PpsStateChannel::detach();
}

int PpsStateChannel::read(QByteArray *message)
{
    PpsSnapshot own;
    const PpsSnapshot *snapshot = &look(&own);
    std::optional<QByteArray> content = contentOf(*snapshot);
    if (m_blocking && !m_unread) {
        attach(true);
        for (snapshot = &look(&own), content = contentOf(*snapshot); content && isRead(content);
             snapshot = &look(&own), content = contentOf(*snapshot)) {
            if (const int error = m_watcher->wait(QDeadlineTimer::Forever))
                return error;
        }
    }
    m_unread = false;
    m_newsTurn = 0;
    if (!content) {
        m_read.reset();
        m_base.reset();
        return snapshot->error;
    }
    m_read = content;
    *message = m_base ? deltaLines(*m_base, *content) : *content;
    if (m_path.delta && PpsText::isValid(*message))
        m_base = std::move(content);
    return 0;
}

const PpsSnapshot &PpsStateChannel::look(PpsSnapshot *own) const
{
    if (!m_watched)
        return *own = PpsSnapshot::load(m_file);
    // In the turn that announces the file, it has just been read.
    const bool isNews = m_newsTurn && m_newsTurn == m_watcher->turn() && m_watched->latest();
    return isNews ? *m_watched->latest() : m_watched->current();
}

int PpsStateChannel::write(const QByteArray &message)
{
    if (message.size() > PpsText::MaxMessageSize)
        return EMSGSIZE;
    const QByteArrayView header = PpsLines(message).header();
    if (message.isEmpty() || (!header.isNull() && header != m_path.name) || !PpsText::isValid(message))
        return EINVAL;
    const std::lock_guard lock(m_writing);
    return m_writer.publish(message, PpsMerge::Keep, PpsStateWriter::Create::No, 0);
}

void PpsStateChannel::attach(bool announces)
{
    if (!announces)
        return;
    m_watcher = PpsWatcher::forThisThread();
    if (m_watched)
        return;
    m_watched = m_watcher->watch(m_file, this);
    // Something may have been published between the last read and the watch.
    if (!m_unread)
        fileChanged();
    else
        m_watcher->scheduleAnnounce(this);
}

void PpsStateChannel::detach()
{
    if (m_watched)
        m_watcher->unwatch(std::exchange(m_watched, nullptr), this);
    m_watcher.reset();
}

void PpsStateChannel::fileChanged()
{
    const PpsSnapshot &snapshot = m_watched->current();
    if (snapshot.error == EMFILE || snapshot.error == ENFILE || snapshot.error == ENOMEM) {
        m_watcher->lookAgain(m_watched);
        return;
    }
    if (isRead(contentOf(snapshot)))
        return;
    m_unread = true;
    m_newsTurn = m_watcher->turn();
    m_watcher->scheduleAnnounce(this);
}

void PpsStateChannel::announce()
{
    if (m_unread)
        m_owner->messageWaits();
}

bool PpsStateChannel::isRead(const std::optional<QByteArray> &content) const
{
    return content && m_read ? sameAttributes(*content, *m_read) : !content && !m_read;
}

std::optional<QByteArray> PpsStateChannel::contentOf(const PpsSnapshot &snapshot) const
{
    if (snapshot.error)
        return std::nullopt;
    return selectLines(snapshot.content, m_path.name, m_path.filter);
}

} // namespace oz
