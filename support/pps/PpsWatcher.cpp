#include "pps/PpsWatcher.hpp"

#include "base/Log.hpp"
#include "files/TreeFolder.hpp"
#include "pps/PpsMarkAnswer.hpp"
#include "pps/WatchedDirectory.hpp"

#include <QAbstractEventDispatcher>
#include <QFile>
#include <QSocketNotifier>
#include <QThreadStorage>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>

namespace oz {

namespace {

constexpr ssize_t LargestEvent = sizeof(inotify_event) + NAME_MAX + 1;

// Never destroyed: a thread may end after the program's static objects, and deletes its own watcher then.
QThreadStorage<std::shared_ptr<PpsWatcher>> &watchers()
{
    static auto *const s_watchers = new QThreadStorage<std::shared_ptr<PpsWatcher>>;
    return *s_watchers;
}

} // namespace

const PpsSnapshot &WatchedFile::current()
{
    if (!m_snapshot || !m_snapshot->isCurrent(m_path))
        m_snapshot = PpsSnapshot::load(m_path);
    return *m_snapshot;
}

PpsWatcher::PpsWatcher()
{
    m_retry.setSingleShot(true);
    m_retry.callOnTimeout(this, &PpsWatcher::retry);
}

PpsWatcher::~PpsWatcher() = default;

std::shared_ptr<PpsWatcher> PpsWatcher::forThisThread()
{
    if (!watchers().hasLocalData())
        watchers().setLocalData(std::shared_ptr<PpsWatcher>(new PpsWatcher));
    std::shared_ptr<PpsWatcher> watcher = watchers().localData();
    watcher->attachToEventLoop();
    watcher->followMarks();
    return watcher;
}

// Of a test, which gives the process a device root of its own.
void PpsWatcher::followMarks()
{
    const QByteArray root = qgetenv("OZ_DEVICE_ROOT");
    if (root == m_root || !QAbstractEventDispatcher::instance())
        return;
    m_root = root;
    m_markAnswer.reset();
    m_markAnswer = PpsMarkAnswer::in(root, *this);
}

void PpsWatcher::endTurn()
{
    if (watchers().hasLocalData())
        watchers().localData()->m_turn = 0;
}

void PpsWatcher::attachToEventLoop()
{
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    if (!m_inotify || !dispatcher || dispatcher == m_dispatcher)
        return;
    m_dispatcher = dispatcher;
    m_notifier = std::make_unique<QSocketNotifier>(m_inotify.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PpsWatcher::onReadable);
    if (isBlind())
        retryLater();
}

bool PpsWatcher::isBlind() const
{
    return std::any_of(m_directories.begin(), m_directories.end(),
        [](const auto &entry) { return entry.second->isBlind(); });
}

WatchedFile *PpsWatcher::watch(const QByteArray &path, FileSubscriber *subscriber)
{
    WatchedDirectory *directory = directoryAt(folderOf(path));
    std::unique_ptr<WatchedFile> &file = directory->files[nameOf(path)];
    if (!file) {
        file = std::make_unique<WatchedFile>();
        file->m_directory = directory;
        file->m_path = path;
    }
    file->m_subscribers.push_back(subscriber);
    if (directory->files.size() == 1 && file->m_subscribers.size() == 1)
        arm(directory);
    warnWhereBlind(directory);
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
    m_lookingAgain.erase(file);
    directory->files.erase(nameOf(file->m_path));
    if (directory->files.empty() && directory->children > 0)
        arm(directory);
    else
        releaseIfUnused(directory);
}

WatchedDirectory *PpsWatcher::directoryAt(const QByteArray &path)
{
    if (const auto found = m_directories.find(path); found != m_directories.end())
        return found->second.get();
    WatchedDirectory *parent = nullptr;
    if (path != "/") {
        parent = directoryAt(folderOf(path));
        if (parent->descriptor < 0)
            arm(parent);
        ++parent->children;
    }
    std::unique_ptr<WatchedDirectory> &made = m_directories[path];
    made = std::make_unique<WatchedDirectory>(path, parent);
    return made.get();
}

void PpsWatcher::releaseIfUnused(WatchedDirectory *directory)
{
    if (!directory->files.empty() || directory->children > 0)
        return;
    disarm(directory);
    await(directory, false);
    m_rearming.erase(directory);
    WatchedDirectory *parent = directory->parent;
    const QByteArray path = directory->path;
    m_directories.erase(path);
    if (parent) {
        --parent->children;
        releaseIfUnused(parent);
    }
}

// Watches the directory as it is needed, or where it is not there, awaits it in the one above.
void PpsWatcher::arm(WatchedDirectory *directory)
{
    if (!directory->isNeeded()) {
        disarm(directory);
        return;
    }
    directory->error = tryWatch(directory);
    if (directory->isMissing() && directory->parent) {
        await(directory, true);
        directory->error = tryWatch(directory); // it may have appeared in between
    }
    if (!directory->isMissing())
        await(directory, false);
    if (directory->isFollowed())
        directory->blindness.well();
}

int PpsWatcher::tryWatch(WatchedDirectory *directory)
{
    if (!m_inotify) {
        m_inotify = UniqueFd(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
        if (!m_inotify)
            return errno;
        attachToEventLoop();
    }
    // Several paths may lead to one directory, whose watch is then for all of them.
    const bool isAlone = directory->descriptor >= 0 && m_byDescriptor.count(directory->descriptor) == 1;
    const int descriptor = ::inotify_add_watch(
        m_inotify.get(), directory->path.constData(), directory->events() | (isAlone ? 0 : IN_MASK_ADD));
    const int error = descriptor < 0 ? errno : 0;
    if (descriptor != directory->descriptor) {
        disarm(directory);
        directory->descriptor = descriptor;
        if (!error)
            m_byDescriptor.emplace(descriptor, directory);
    }
    return error;
}

void PpsWatcher::await(WatchedDirectory *directory, bool isAwaited)
{
    if (std::exchange(directory->isAwaited, isAwaited) == isAwaited)
        return;
    directory->parent->awaited += isAwaited ? 1 : -1;
    arm(directory->parent);
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

// With all below it, whose paths lead somewhere else now.
void PpsWatcher::rearmLater(WatchedDirectory *directory)
{
    m_rearming.insert(directory);
    const QByteArray below = directory->path == "/" ? directory->path : directory->path + '/';
    for (auto entry = m_directories.lower_bound(below);
         entry != m_directories.end() && entry->first.startsWith(below); ++entry)
        m_rearming.insert(entry->second.get());
}

void PpsWatcher::rearmAll()
{
    if (m_rearming.empty())
        return;
    const std::set<WatchedDirectory *> due = std::exchange(m_rearming, {});
    // Those above come first.
    for (const auto &[path, directory] : m_directories) {
        if (!due.contains(directory.get()))
            continue;
        disarm(directory.get());
        arm(directory.get());
        warnWhereBlind(directory.get());
    }
    for (WatchedDirectory *directory : due) {
        for (const auto &[name, file] : directory->files)
            refresh(file.get());
    }
}

void PpsWatcher::warnWhereBlind(WatchedDirectory *directory)
{
    if (!directory->isBlind())
        return;
    retryLater();
    if (!directory->blindness.isNew())
        return;
    qCWarning(logSupport) << QFile::decodeName(directory->path)
                          << "cannot be watched, so what changes there is heard late:" << directory->reason();
}

void PpsWatcher::retryLater()
{
    if (!QAbstractEventDispatcher::instance() || m_retry.isActive())
        return;
    m_retry.start(m_retryPause.next());
}

void PpsWatcher::retry()
{
    std::set<WatchedFile *> due = std::exchange(m_lookingAgain, {});
    for (const auto &[path, directory] : m_directories) {
        if (directory->isFollowed() || !directory->isNeeded())
            continue;
        for (const auto &[name, file] : directory->files)
            due.insert(file.get());
        arm(directory.get());
    }
    for (WatchedFile *file : due)
        refresh(file);
    if (isBlind())
        retryLater();
    else if (m_lookingAgain.empty())
        m_retryPause.reset();
}

void PpsWatcher::lookAgain(WatchedFile *file)
{
    m_lookingAgain.insert(file);
    retryLater();
}

void PpsWatcher::refresh(WatchedFile *file)
{
    file->m_snapshot.reset();
    for (FileSubscriber *subscriber : file->m_subscribers)
        subscriber->fileChanged();
}

void PpsWatcher::readEvents()
{
    std::vector<WatchedFile *> changed;
    alignas(inotify_event) char buffer[16 * 1024];
    ssize_t size = 0;
    do {
        size = ::read(m_inotify.get(), buffer, sizeof buffer);
        for (ssize_t at = 0; at < size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
            note(*event, &changed);
            at += ssize_t(sizeof *event + event->len);
        }
        // With room left for another there was no other.
    } while ((size < 0 && errno == EINTR) || size > ssize_t(sizeof buffer) - LargestEvent);
    for (WatchedFile *file : changed)
        refresh(file);
    rearmAll();
}

void PpsWatcher::note(const inotify_event &event, std::vector<WatchedFile *> *changed)
{
    if (event.mask & IN_Q_OVERFLOW) {
        // Nobody knows what was missed: everything is looked at again.
        for (const auto &[path, directory] : m_directories)
            m_rearming.insert(directory.get());
        return;
    }
    const auto [first, last] = m_byDescriptor.equal_range(event.wd);
    for (auto entry = first; entry != last; ++entry) {
        WatchedDirectory *directory = entry->second;
        if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT)) {
            rearmLater(directory);
            continue;
        }
        if (!event.len)
            continue;
        const auto name = QByteArray::fromRawData(event.name, qsizetype(qstrnlen(event.name, event.len)));
        if (const auto file = directory->files.find(name); file != directory->files.end()) {
            if (std::find(changed->begin(), changed->end(), file->second.get()) == changed->end())
                changed->push_back(file->second.get());
        }
        // Also one that has been found there meanwhile: what is below it waits still.
        if (directory->children > 0) {
            const QByteArray path = (directory->path == "/" ? QByteArray() : directory->path) + '/' + name;
            if (const auto child = m_directories.find(path); child != m_directories.end())
                rearmLater(child->second.get());
        }
    }
}

void PpsWatcher::onReadable()
{
    m_announceQueued = true; // announced right below, in this turn of the event loop
    m_turn = ++m_lastTurn;
    readEvents();
    announceAll();
    m_turn = 0;
}

int PpsWatcher::wait(const QDeadlineTimer &deadline)
{
    const bool wasBlind = isBlind();
    const QDeadlineTimer limit =
        wasBlind ? std::min(deadline, QDeadlineTimer(m_retryPause.first())) : deadline;
    pollfd waiting{m_inotify.get(), POLLIN, 0};
    const auto left = [&] { return int(std::min<qint64>(limit.remainingTime(), INT_MAX)); };
    while (::poll(&waiting, 1, left()) < 0) {
        if (errno != EINTR)
            return errno;
    }
    readEvents();
    if (wasBlind)
        retry();
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
