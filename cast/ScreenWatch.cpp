#include "ScreenWatch.hpp"

#include <QCoreApplication>
#include <QPointer>

#include <atomic>
#include <thread>
#include <utility>

namespace oz::cast {

namespace {

using namespace std::chrono_literals;

constexpr auto LookTime = 2s;

std::atomic<int> s_looking = 0;

} // namespace

ScreenWatch::ScreenWatch(Picture picture) : m_picture(picture), m_pause(500ms, 8s)
{
    m_again.setSingleShot(true);
    m_again.callOnTimeout(this, &ScreenWatch::look);
    m_grace.setSingleShot(true);
    m_grace.setInterval(LookTime);
    m_grace.callOnTimeout(this, [this] {
        m_screen = {};
        m_screen.remark = QStringLiteral("the screen's server does not answer");
        Q_EMIT changed();
    });
    look();
}

void ScreenWatch::look()
{
    m_grace.start();
    ++s_looking;
    // A thread that waits for a server for ever ends with the process.
    std::thread([self = QPointer(this), picture = m_picture] {
        const Screen screen = findScreen(picture);
        QMetaObject::invokeMethod(qApp, [self, screen] {
            if (self)
                self->onFound(screen);
        });
        --s_looking;
    }).detach();
}

bool ScreenWatch::isAnyLooking()
{
    return s_looking != 0;
}

void ScreenWatch::onFound(const Screen &screen)
{
    const bool wasGraceLeft = m_grace.isActive();
    m_grace.stop();
    const Screen before = std::exchange(m_screen, screen);
    if (m_screen.connection) {
        m_input = std::make_unique<QSocketNotifier>(m_screen.connection->descriptor(), QSocketNotifier::Read);
        connect(m_input.get(), &QSocketNotifier::activated, this, &ScreenWatch::onInput);
    }
    if (m_screen.capture.isEmpty())
        m_again.start(m_pause.next());
    else
        m_pause.reset();
    if (!wasGraceLeft || before.capture != m_screen.capture || before.remark != m_screen.remark)
        Q_EMIT changed();
}

void ScreenWatch::onInput()
{
    if (m_screen.connection->isAlive())
        return;
    m_input.release()->deleteLater(); // it is the sender
    m_screen = {};
    m_screen.remark = QStringLiteral("the screen's server has ended");
    m_again.start(m_pause.next());
    Q_EMIT changed();
}

} // namespace oz::cast
