#include "linux/Worker.hpp"

#include <csignal>
#include <thread>

namespace oz::services::Workers {

class WayBack::End : public QObject
{
public:
    End(QObject *context, std::shared_ptr<Shared> shared) : QObject(context), m_shared(std::move(shared))
    {
        m_shared->end = this;
    }
    ~End() override
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->end = nullptr;
    }

private:
    std::shared_ptr<Shared> m_shared;
};

WayBack::WayBack(QObject *context) : m_shared(std::make_shared<Shared>())
{
    new End(context, m_shared); // belongs to the context
}

void WayBack::call(const std::function<void()> &what)
{
    const std::lock_guard lock(m_shared->mutex);
    if (!m_shared->end)
        return;
    QMetaObject::invokeMethod(
        m_shared->end,
        [what, end = m_shared->end] {
            what();
            end->deleteLater();
        },
        Qt::QueuedConnection);
}

void run(std::function<void()> work)
{
    // The signals of the process are for its event loop.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread(std::move(work)).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace oz::services::Workers
