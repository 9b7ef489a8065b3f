#include "pps/PpsStateChannel.hpp"

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
    const auto look = [&]() -> const PpsSnapshot & {
        return m_watched ? m_watched->current() : (own = PpsSnapshot::load(m_file));
    };
    const PpsSnapshot *snapshot = &look();
    std::optional<QByteArray> content = contentOf(*snapshot);
    if (m_blocking && !m_unread) {
        if (const int error = attach(true))
            return error;
        for (snapshot = &look(), content = contentOf(*snapshot); content && content == m_read;
             snapshot = &look(), content = contentOf(*snapshot)) {
            if (const int error = m_watcher->wait(QDeadlineTimer::Forever))
                return error;
        }
    }
    m_unread = false;
    if (!content) {
        m_read.reset();
        return snapshot->error;
    }
    *message = m_path.delta && m_read ? deltaLines(*m_read, *content) : *content;
    m_read = std::move(content);
    return 0;
}

int PpsStateChannel::write(const QByteArray &message)
{
    if (message.size() > PpsText::MaxMessageSize)
        return EMSGSIZE;
    const QByteArrayView header = PpsLines(message).header();
    if (message.isEmpty() || (!header.isNull() && header != m_path.name))
        return EINVAL;
    QString malformed;
    (void)PpsText::decode(message, &malformed);
    if (!malformed.isEmpty())
        return EINVAL;
    const std::lock_guard lock(m_writing);
    return m_writer.publish(message, PpsMerge::Keep, PpsStateWriter::Create::No, 0);
}

int PpsStateChannel::attach(bool announces)
{
    if (!announces)
        return 0;
    const auto watcher = PpsWatcher::forThisThread();
    if (m_watched)
        return 0;
    int error = 0;
    m_watcher = watcher;
    m_watched = m_watcher->watch(m_file, this, &error);
    if (!m_watched)
        return error;
    // Something may have been published between the last read and the watch.
    if (!m_unread)
        fileChanged();
    else
        m_watcher->scheduleAnnounce(this);
    return 0;
}

void PpsStateChannel::detach()
{
    if (m_watched)
        m_watcher->unwatch(std::exchange(m_watched, nullptr), this);
    m_watcher.reset();
}

void PpsStateChannel::fileChanged()
{
    const bool isNews = contentOf(m_watched->current()) != m_read;
    m_unread = m_unread || isNews;
    if (isNews)
        m_watcher->scheduleAnnounce(this);
}

void PpsStateChannel::announce()
{
    if (m_unread)
        m_owner->messageWaits();
}

std::optional<QByteArray> PpsStateChannel::contentOf(const PpsSnapshot &snapshot) const
{
    if (snapshot.error)
        return std::nullopt;
    return selectLines(snapshot.content, m_path.name, m_path.filter);
}

} // namespace oz
