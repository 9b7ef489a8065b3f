#include "pps/PpsWatcher.hpp"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>
#include <QThreadStorage>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>

namespace oz {

namespace {

// A publish is a rename onto the name, a removal an unlink. The birth of a file under construction is
// neither.
constexpr std::uint32_t DirectoryEvents =
    IN_MOVED_TO | IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

QThreadStorage<std::shared_ptr<PpsWatcher>> s_watchers;

QByteArray parentOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.first(slash);
}

QByteArray nameOf(const QByteArray &path)
{
    return path.sliced(path.lastIndexOf('/') + 1);
}

} // namespace

class WatchedDirectory : public FileSubscriber
{
public:
    WatchedDirectory(PpsWatcher *owner, const QByteArray &at) : watcher(owner), path(at) { }
    void fileChanged() override { watcher->m_rearming.push_back(this); }

    PpsWatcher *watcher;
    QByteArray path;
    int descriptor = -1;
    WatchedFile *inParent = nullptr; // while the directory is not there
    std::map<QByteArray, std::unique_ptr<WatchedFile>> files;
};

const PpsSnapshot &WatchedFile::current()
{
    if (!m_loaded || !m_snapshot.isCurrent(m_path)) {
        m_snapshot = PpsSnapshot::load(m_path);
        m_loaded = true;
    }
    return m_snapshot;
}

PpsWatcher::~PpsWatcher() = default;

std::shared_ptr<PpsWatcher> PpsWatcher::forThisThread()
{
    if (!s_watchers.hasLocalData())
        s_watchers.setLocalData(std::shared_ptr<PpsWatcher>(new PpsWatcher));
    std::shared_ptr<PpsWatcher> watcher = s_watchers.localData();
    watcher->attachToEventLoop();
    return watcher;
}

void PpsWatcher::attachToEventLoop()
{
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    if (!m_inotify || !dispatcher || dispatcher == m_dispatcher)
        return;
    m_dispatcher = dispatcher;
    m_notifier = std::make_unique<QSocketNotifier>(m_inotify.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PpsWatcher::onReadable);
}

WatchedFile *PpsWatcher::watch(const QByteArray &path, FileSubscriber *subscriber, int *error)
{
    if (!m_inotify) {
        m_inotify = UniqueFd(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
        if (!m_inotify) {
            *error = errno;
            return nullptr;
        }
        attachToEventLoop();
    }
    WatchedDirectory *directory = directoryAt(parentOf(path), error);
    if (!directory)
        return nullptr;
    std::unique_ptr<WatchedFile> &file = directory->files[nameOf(path)];
    if (!file) {
        file = std::make_unique<WatchedFile>();
        file->m_directory = directory;
        file->m_path = path;
    }
    file->m_subscribers.push_back(subscriber);
    return file.get();
}

void PpsWatcher::unwatch(WatchedFile *file, FileSubscriber *subscriber)
{
    std::erase(file->m_subscribers, subscriber);
    if (std::exchange(subscriber->m_announcing, false))
        std::erase(m_announcing, subscriber);
    if (!file->m_subscribers.empty())
        return;
    WatchedDirectory *directory = file->m_directory;
    directory->files.erase(nameOf(file->m_path));
    releaseIfUnused(directory);
}

WatchedDirectory *PpsWatcher::directoryAt(const QByteArray &path, int *error)
{
    std::unique_ptr<WatchedDirectory> &directory = m_directories[path];
    if (directory)
        return directory.get();
    directory = std::make_unique<WatchedDirectory>(this, path);
    WatchedDirectory *made = directory.get();
    arm(made);
    if (made->descriptor < 0 && !made->inParent) {
        *error = errno;
        m_directories.erase(path);
        return nullptr;
    }
    return made;
}

void PpsWatcher::releaseIfUnused(WatchedDirectory *directory)
{
    if (!directory->files.empty())
        return;
    disarm(directory);
    std::erase(m_rearming, directory);
    if (WatchedFile *waiting = std::exchange(directory->inParent, nullptr))
        unwatch(waiting, directory);
    const QByteArray path = directory->path;
    m_directories.erase(path);
}

void PpsWatcher::disarm(WatchedDirectory *directory)
{
    if (directory->descriptor < 0)
        return;
    const int descriptor = std::exchange(directory->descriptor, -1);
    const auto [first, last] = m_byDescriptor.equal_range(descriptor);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second == directory) {
            m_byDescriptor.erase(entry);
            break;
        }
    }
    if (!m_byDescriptor.contains(descriptor))
        ::inotify_rm_watch(m_inotify.get(), descriptor);
}

// Watches the directory, or where it is not there, its name in the directory above. Errno tells why neither
// worked.
void PpsWatcher::arm(WatchedDirectory *directory)
{
    disarm(directory);
    const auto tryHere = [&] {
        directory->descriptor =
            ::inotify_add_watch(m_inotify.get(), directory->path.constData(), DirectoryEvents | IN_MASK_ADD);
        return directory->descriptor >= 0;
    };
    if (!tryHere() && (errno == ENOENT || errno == ENOTDIR) && directory->path != "/") {
        if (!directory->inParent) {
            int error = 0;
            directory->inParent = watch(directory->path, directory, &error);
            if (!directory->inParent) {
                errno = error;
                return;
            }
        }
        // Directories appear by mkdir(), which the parent's watch does not report by itself.
        if (const WatchedDirectory *parent = directory->inParent->m_directory; parent->descriptor >= 0) {
            (void)::inotify_add_watch(
                m_inotify.get(), parent->path.constData(), DirectoryEvents | IN_CREATE | IN_MASK_ADD);
        }
        tryHere(); // it may have appeared in between
    }
    if (directory->descriptor < 0)
        return;
    m_byDescriptor.emplace(directory->descriptor, directory);
    if (WatchedFile *waiting = std::exchange(directory->inParent, nullptr))
        unwatch(waiting, directory);
}

void PpsWatcher::rearmAll()
{
    while (!m_rearming.empty()) {
        WatchedDirectory *directory = m_rearming.back();
        std::erase(m_rearming, directory);
        arm(directory);
        for (const auto &[name, file] : directory->files)
            refresh(file.get());
    }
}

void PpsWatcher::refresh(WatchedFile *file)
{
    file->m_loaded = false;
    for (FileSubscriber *subscriber : file->m_subscribers)
        subscriber->fileChanged();
}

void PpsWatcher::readEvents()
{
    std::vector<WatchedFile *> changed;
    const auto note = [&](WatchedFile *file) {
        if (std::find(changed.begin(), changed.end(), file) == changed.end())
            changed.push_back(file);
    };
    alignas(inotify_event) char buffer[16 * 1024];
    for (;;) {
        const ssize_t size = ::read(m_inotify.get(), buffer, sizeof buffer);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            break;
        for (ssize_t at = 0; at < size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
            at += ssize_t(sizeof *event + event->len);
            if (event->mask & IN_Q_OVERFLOW) {
                // Nobody knows what was missed: everything is looked at again.
                for (const auto &[path, directory] : m_directories)
                    m_rearming.push_back(directory.get());
                continue;
            }
            const auto [first, last] = m_byDescriptor.equal_range(event->wd);
            for (auto entry = first; entry != last; ++entry) {
                WatchedDirectory *directory = entry->second;
                if (event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) {
                    m_rearming.push_back(directory);
                } else if (event->len) {
                    const auto file = directory->files.find(
                        QByteArray::fromRawData(event->name, qsizetype(qstrnlen(event->name, event->len))));
                    if (file != directory->files.end())
                        note(file->second.get());
                }
            }
        }
    }
    for (WatchedFile *file : changed)
        refresh(file);
    rearmAll();
}

void PpsWatcher::onReadable()
{
    m_announceQueued = true; // announced right below, in this turn of the event loop
    readEvents();
    announceAll();
}

int PpsWatcher::wait(const QDeadlineTimer &deadline)
{
    pollfd waiting{m_inotify.get(), POLLIN, 0};
    const auto left = [&] { return int(std::min<qint64>(deadline.remainingTime(), INT_MAX)); };
    while (::poll(&waiting, 1, left()) < 0) {
        if (errno != EINTR)
            return errno;
    }
    readEvents();
    return 0;
}

void PpsWatcher::scheduleAnnounce(FileSubscriber *subscriber)
{
    if (!std::exchange(subscriber->m_announcing, true))
        m_announcing.push_back(subscriber);
    if (!std::exchange(m_announceQueued, true))
        QMetaObject::invokeMethod(this, &PpsWatcher::announceAll, Qt::QueuedConnection);
}

void PpsWatcher::announceAll()
{
    m_announceQueued = false;
    // A slot may destroy subscribers, run an event loop of its own, or have more to announce.
    for (auto turns = m_announcing.size(); turns > 0 && !m_announcing.empty(); --turns) {
        FileSubscriber *subscriber = m_announcing.front();
        m_announcing.pop_front();
        subscriber->m_announcing = false;
        subscriber->announce();
    }
}

} // namespace oz
