#pragma once

#include "base/UniqueFd.hpp"
#include "pps/PpsWatcher.hpp"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <memory>

namespace oz {

/*!
 * Tells a test how far an application is. The device root of a private daemon has a folder, "handled", in
 * which a test puts the number of a mark ("mark") when it wants to know. Each thread with an event loop that
 * watches objects has a file of its own there, "PROCESS-THREAD", locked while the thread lives, and writes
 * the number into it once it has handled everything that was published or sent before. Elsewhere there is no
 * such folder.
 */
class PpsMarkAnswer final : public QObject, private FileSubscriber
{
    Q_OBJECT

public:
    /*! Has the thread of \a watcher answer in the folder "handled" of \a root; null where there is none. */
    [[nodiscard]] static std::unique_ptr<PpsMarkAnswer> in(const QByteArray &root, PpsWatcher &watcher);
    ~PpsMarkAnswer() override;

private:
    PpsMarkAnswer(const QByteArray &folder, PpsWatcher &watcher);
    void fileChanged() override;
    void announce() override;
    void onRound();
    void answer();

    PpsWatcher &m_watcher;
    QByteArray m_ownFile;
    UniqueFd m_answers;
    WatchedFile *m_mark = nullptr;
    QByteArray m_number; // of the mark that is to be answered
    QTimer m_round; // of the event loop
    int m_rounds = 0; // until what was there with the mark is handled
};

} // namespace oz
