#include "pps/PpsMarkAnswer.hpp"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace oz {

namespace {

// One for what readers of objects have posted, one for what had come over sockets, one for what that posted.
constexpr int Rounds = 3;

// A waiter that looks whether a file is locked locks it itself for a moment.
bool lock(const UniqueFd &file)
{
    for (int attempt = 0; attempt < 1000; ++attempt) {
        if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR)
            break;
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return false;
}

} // namespace

std::unique_ptr<PpsMarkAnswer> PpsMarkAnswer::in(const QByteArray &root, PpsWatcher &watcher)
{
    const QByteArray folder = root + "/handled";
    if (root.isEmpty() || ::access(folder.constData(), W_OK) < 0)
        return nullptr;
    return std::unique_ptr<PpsMarkAnswer>(new PpsMarkAnswer(folder, watcher));
}

PpsMarkAnswer::PpsMarkAnswer(const QByteArray &folder, PpsWatcher &watcher)
    : m_watcher(watcher),
      m_ownFile(folder + '/' + QByteArray::number(::getpid()) + '-' + QByteArray::number(::gettid())),
      m_answers(::open(m_ownFile.constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0644))
{
    if (!m_answers || !lock(m_answers))
        return;
    m_round.setSingleShot(true);
    m_round.callOnTimeout(this, &PpsMarkAnswer::onRound);
    m_mark = m_watcher.watch(folder + "/mark", this);
    // What was published before is what the thread's objects begin with.
    m_number = m_mark->current().content;
    answer();
}

PpsMarkAnswer::~PpsMarkAnswer()
{
    if (m_mark)
        m_watcher.unwatch(m_mark, this);
    if (m_answers)
        ::unlink(m_ownFile.constData());
}

void PpsMarkAnswer::fileChanged()
{
    m_watcher.scheduleAnnounce(this);
}

// Comes after those that were changed before.
void PpsMarkAnswer::announce()
{
    m_number = m_mark->current().content;
    m_rounds = Rounds;
    m_round.start();
}

void PpsMarkAnswer::onRound()
{
    if (--m_rounds > 0)
        m_round.start();
    else
        answer();
}

void PpsMarkAnswer::answer()
{
    (void)!::pwrite(m_answers.get(), m_number.constData(), std::size_t(m_number.size()), 0);
}

} // namespace oz
