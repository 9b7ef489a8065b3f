#pragma once

#include "base/UniqueFd.hpp"
#include "pps/PpsSnapshot.hpp"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>

#include <deque>
#include <map>
#include <memory>
#include <vector>

class QAbstractEventDispatcher;
class QSocketNotifier;

namespace oz {

class WatchedDirectory;

/*! Told of changes of the files it watches. */
class FileSubscriber
{
public:
    virtual ~FileSubscriber() = default;
    /*! The file may have changed. Emits nothing; whoever has something to tell asks for announce(). */
    virtual void fileChanged() = 0;
    /*! The turn of the event loop that was asked for with PpsWatcher::scheduleAnnounce(). */
    virtual void announce() { }

private:
    friend class PpsWatcher;
    bool m_announcing = false; // stands in the watcher's queue
};

/*!
 * A watched file, shared by all who watch it on one thread. It holds the last snapshot, so that one publish
 * to many subscribers is read once.
 */
class WatchedFile
{
public:
    /*! What lies at the path now. */
    [[nodiscard]] const PpsSnapshot &current();

private:
    friend class PpsWatcher;
    WatchedDirectory *m_directory = nullptr;
    QByteArray m_path;
    PpsSnapshot m_snapshot;
    bool m_loaded = false;
    std::vector<FileSubscriber *> m_subscribers;
};

/*!
 * Watches the files of one thread through one inotify descriptor. Directories are watched, not files: a
 * replaced file needs no new watch, one publish is one event, and a file that is removed is seen again when
 * it returns. A directory that vanishes is waited for in the one above it.
 */
class PpsWatcher : public QObject
{
    Q_OBJECT

public:
    ~PpsWatcher() override;

    /*! The watcher of the calling thread, in its event loop where there is one. Whoever watches keeps it
     * alive.
     */
    [[nodiscard]] static std::shared_ptr<PpsWatcher> forThisThread();

    /*! Watches the file at \a path for \a subscriber; nothing, with \a error set to the errno, where that
     * fails. */
    [[nodiscard]] WatchedFile *watch(const QByteArray &path, FileSubscriber *subscriber, int *error);
    void unwatch(WatchedFile *file, FileSubscriber *subscriber);

    /*! Has \a subscriber announce from the thread's event loop, once. */
    void scheduleAnnounce(FileSubscriber *subscriber);

    /*! Waits until something happened to a watched file, or until \a deadline; 0 or the errno. */
    [[nodiscard]] int wait(const QDeadlineTimer &deadline);

private:
    friend class WatchedDirectory;

    PpsWatcher() = default;
    void attachToEventLoop();
    void onReadable();
    void announceAll();
    void readEvents();
    void refresh(WatchedFile *file);
    void arm(WatchedDirectory *directory);
    void disarm(WatchedDirectory *directory);
    void rearmAll();
    WatchedDirectory *directoryAt(const QByteArray &path, int *error);
    void releaseIfUnused(WatchedDirectory *directory);

    UniqueFd m_inotify;
    QPointer<QAbstractEventDispatcher> m_dispatcher;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<QByteArray, std::unique_ptr<WatchedDirectory>> m_directories;
    std::multimap<int, WatchedDirectory *> m_byDescriptor;
    std::vector<WatchedDirectory *> m_rearming;
    std::deque<FileSubscriber *> m_announcing;
    bool m_announceQueued = false;
};

} // namespace oz
