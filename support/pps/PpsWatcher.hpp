#pragma once

#include "base/UniqueFd.hpp"
#include "pps/PpsSnapshot.hpp"

#include <oz/GrowingPause.hpp>

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

class QAbstractEventDispatcher;
class QSocketNotifier;
struct inotify_event;

namespace oz {

class PpsMarkAnswer;
class WatchedDirectory;

/*! Told of changes of the files it watches. */
class FileSubscriber
{
public:
    virtual ~FileSubscriber() = default;
    /*! The file may have changed. Emits nothing; a subscriber with news asks for announce(). */
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
    /*! Reads the file again if it has changed since latest(). */
    [[nodiscard]] const PpsSnapshot &current();
    /*! The last reading, if there was one. */
    [[nodiscard]] const std::optional<PpsSnapshot> &latest() const { return m_snapshot; }

private:
    friend class PpsWatcher;
    WatchedDirectory *m_directory = nullptr;
    QByteArray m_path;
    std::optional<PpsSnapshot> m_snapshot;
    std::vector<FileSubscriber *> m_subscribers;
};

/*!
 * Watches the files of one thread through one inotify descriptor. Directories are watched, not files: a
 * replaced file needs no new watch, one publish is one event, and a file that is removed is seen again when
 * it returns. The directories above are watched for being moved or removed, and a directory that is not there
 * is awaited in the one above it. Where a directory cannot be watched, a warning says so once; it is tried
 * again from time to time, and its files are looked at then.
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

    /*! Watches the file at \a path for \a subscriber. */
    [[nodiscard]] WatchedFile *watch(const QByteArray &path, FileSubscriber *subscriber);
    void unwatch(WatchedFile *file, FileSubscriber *subscriber);
    /*! Has the subscribers of \a file look again in a while: what kept it from being read may be over then.
     */
    void lookAgain(WatchedFile *file);

    /*! Has \a subscriber announce from the thread's event loop, once. */
    void scheduleAnnounce(FileSubscriber *subscriber);

    /*!
     * Which turn of announcing this is: the files that were looked at in it need not be looked at again
     * before it is over. 0 outside of one, and where this thread has published or asked for something in it.
     */
    [[nodiscard]] quint64 turn() const { return m_turn; }
    /*! To be called before this thread does something that may change files. */
    static void endTurn();

    /*! Waits until something happened to a watched file, or until \a deadline; 0 or the errno. */
    [[nodiscard]] int wait(const QDeadlineTimer &deadline);

private:
    PpsWatcher();
    void attachToEventLoop();
    void followMarks();
    void onReadable();
    void announceAll();
    void readEvents();
    void note(const inotify_event &event, std::vector<WatchedFile *> *changed);
    void refresh(WatchedFile *file);

    WatchedDirectory *directoryAt(const QByteArray &path);
    void releaseIfUnused(WatchedDirectory *directory);
    void arm(WatchedDirectory *directory);
    [[nodiscard]] int tryWatch(WatchedDirectory *directory);
    void await(WatchedDirectory *directory, bool isAwaited);
    void disarm(WatchedDirectory *directory);
    void rearmLater(WatchedDirectory *directory);
    void rearmAll();

    [[nodiscard]] bool isBlind() const;
    void warnWhereBlind(WatchedDirectory *directory);
    void retryLater();
    void retry();

    UniqueFd m_inotify;
    QPointer<QAbstractEventDispatcher> m_dispatcher;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<QByteArray, std::unique_ptr<WatchedDirectory>> m_directories;
    std::multimap<int, WatchedDirectory *> m_byDescriptor;
    std::set<WatchedDirectory *> m_rearming;
    std::set<WatchedFile *> m_lookingAgain;
    GrowingPause<> m_retryPause{std::chrono::milliseconds(250), std::chrono::seconds(8)};
    QTimer m_retry;
    std::deque<FileSubscriber *> m_announcing;
    bool m_announceQueued = false;
    quint64 m_turn = 0;
    quint64 m_lastTurn = 0;
    QByteArray m_root; // where the marks are
    std::unique_ptr<PpsMarkAnswer> m_markAnswer;
};

} // namespace oz
