#include "pps/PpsChannel.hpp"

#include "pps/PpsStateFile.hpp"
#include "sockets/LocalSocket.hpp"

#include <oz/PpsText.hpp>

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <cerrno>
#include <fcntl.h>

namespace oz {

namespace {

// A regular file that publishers replace.
class StateChannel final : public PpsChannel, private FileSubscriber
{
public:
    StateChannel(const PpsPath &path, bool blocking, Callback ready)
        : m_path(path), m_file(path.filePath()), m_blocking(blocking), m_ready(std::move(ready))
    {
    }
    ~StateChannel() override { StateChannel::stopListening(); }

    int read(QByteArray *message) override
    {
        PpsStateFile::Snapshot own;
        const auto look = [&]() -> const PpsStateFile::Snapshot & {
            return m_watched ? m_watched->current() : (own = PpsStateFile::load(m_file));
        };
        const PpsStateFile::Snapshot *snapshot = &look();
        std::optional<QByteArray> content = contentOf(*snapshot);
        if (m_blocking && !m_unread) {
            if (const int error = listen())
                return error;
            for (snapshot = &look(), content = contentOf(*snapshot); content && content == m_read;
                 snapshot = &look(), content = contentOf(*snapshot)) {
                if (const int error = m_watcher->wait())
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

    int write(const QByteArray &message) override
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
        return PpsStateFile::publish(m_file, message, PpsMerge::Keep, PpsStateFile::Create::No, 0);
    }

    int listen() override
    {
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

    void stopListening() override
    {
        if (m_watched)
            m_watcher->unwatch(std::exchange(m_watched, nullptr), this);
        m_watcher.reset();
    }

private:
    void fileChanged() override
    {
        const bool isNews = contentOf(m_watched->current()) != m_read;
        m_unread = m_unread || isNews;
        if (isNews)
            m_watcher->scheduleAnnounce(this);
    }

    void announce() override
    {
        if (m_unread)
            m_ready();
    }

    [[nodiscard]] std::optional<QByteArray> contentOf(const PpsStateFile::Snapshot &snapshot) const
    {
        if (snapshot.error)
            return std::nullopt;
        return selectLines(snapshot.content, m_path.name, m_path.filter);
    }

    PpsPath m_path;
    QByteArray m_file;
    bool m_blocking;
    Callback m_ready;
    std::shared_ptr<PpsWatcher> m_watcher;
    WatchedFile *m_watched = nullptr;
    std::optional<QByteArray> m_read; // what was read last; nothing: never, or the object was gone
    bool m_unread = true;
};

// A socket on which a service answers.
class ServedChannel final : public PpsChannel
{
public:
    ServedChannel(const PpsPath &path, UniqueFd socket, bool blocking, Callback ready)
        : m_path(path), m_socket(std::move(socket)), m_blocking(blocking), m_ready(std::move(ready))
    {
    }

    int read(QByteArray *message) override
    {
        QByteArray received;
        const int error = LocalSocket::receive(
            m_socket.get(), &received, m_blocking ? LocalSocket::Wait::Yes : LocalSocket::Wait::No);
        if (m_notifier && (error == 0 || error == EAGAIN || error == EMSGSIZE))
            m_notifier->setEnabled(true);
        if (error == 0)
            *message = m_path.filter.isEmpty() ? received : selectLines(received, m_path.name, m_path.filter);
        return error;
    }

    int write(const QByteArray &message) override
    {
        return LocalSocket::send(
            m_socket.get(), message, m_blocking ? LocalSocket::Wait::Yes : LocalSocket::Wait::No);
    }

    int listen() override
    {
        if (m_notifier || !QAbstractEventDispatcher::instance())
            return 0;
        m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
            // Until it is read, one message is one call.
            m_notifier->setEnabled(false);
            m_ready();
        });
        return 0;
    }

    void stopListening() override { m_notifier.reset(); }

private:
    PpsPath m_path;
    UniqueFd m_socket;
    bool m_blocking;
    Callback m_ready;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace

int PpsChannel::open(const PpsPath &path, PpsOpenMode::Types mode, bool blocking, Callback ready,
    std::unique_ptr<PpsChannel> *channel)
{
    const QByteArray file = path.filePath();
    struct stat status;
    if (::stat(file.constData(), &status) < 0)
        return errno;
    if (S_ISSOCK(status.st_mode)) {
        UniqueFd socket;
        if (const int error = LocalSocket::connect(
                file, blocking ? LocalSocket::Wait::Yes : LocalSocket::Wait::No, &socket))
            return error;
        *channel = std::make_unique<ServedChannel>(path, std::move(socket), blocking, std::move(ready));
        return 0;
    }
    if (!S_ISREG(status.st_mode))
        return S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
    const int access = (mode & PpsOpenMode::Subscribe ? R_OK : 0) | (mode & PpsOpenMode::Publish ? W_OK : 0);
    if (::faccessat(AT_FDCWD, file.constData(), access, AT_EACCESS) < 0)
        return errno;
    *channel = std::make_unique<StateChannel>(path, blocking, std::move(ready));
    return 0;
}

} // namespace oz
