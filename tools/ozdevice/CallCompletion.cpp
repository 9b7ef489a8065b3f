#include "ozdevice/CallCompletion.hpp"

#include "meta/MetaText.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/TerminationSignals.hpp"

#include <QTimer>

#include <cerrno>
#include <chrono>

namespace oz::tools {

namespace {

// The service begins an accepted request within this time.
constexpr std::chrono::milliseconds BeginDeadline{500};

} // namespace

CallCompletion::CallCompletion(
    const FacilityInstance &instance, const QByteArray &method, const meta::SignalTap::Handler &handler)
    : m_instance(instance), m_answer(instance.entry().calls.answers.value(method)),
      m_tap(instance.object(), [this, handler](const QMetaMethod &signal, const QVariantList &arguments) {
          onSignal(signal, arguments, handler);
      })
{
    const FacilityEntry &entry = instance.entry();
    if (entry.calls.service.isEmpty() || (!entry.calls.answers.isEmpty() && m_answer.signal.isEmpty()))
        return;
    m_service.emplace(entry.calls.service);
    if (!m_service->open(PpsOpenMode::PublishSubscribe)) {
        throw CommandError(Unavailable,
            instance.title() + ": "_L1 + Problem{entry.calls.service, m_service->error()}.text());
    }
}

void CallCompletion::onSignal(
    const QMetaMethod &signal, const QVariantList &arguments, const meta::SignalTap::Handler &handler)
{
    if (m_instance.entry().calls.busy.isEmpty() && !m_answered)
        m_loop.guard([&] { handler(signal, arguments); });
    if (!m_answer.signal.isEmpty() && signal.name() == m_answer.signal && !m_answered) {
        m_answered = true;
        const bool isRefused = !arguments.isEmpty() && meta::valueText(arguments.first()) != u"Success";
        m_status = isRefused ? Failed : Success;
    }
    if (isOver())
        QCoreApplication::quit();
}

bool CallCompletion::isBusy() const
{
    const QByteArray &busy = m_instance.entry().calls.busy;
    return !busy.isEmpty() && m_instance.object()->property(busy.constData()).toBool();
}

int CallCompletion::wait()
{
    // Delivers what the call has queued, such as the signal with the key of a session.
    QCoreApplication::sendPostedEvents(m_instance.object(), QEvent::MetaCall);
    m_loop.check();
    if (isOver())
        return m_status;
    const TerminationSignals signals([&](int signal) {
        m_status = 128 + signal;
        QCoreApplication::quit();
    });
    QObject::connect(&*m_service, &PpsObject::readyRead, [&] {
        (void)m_service->read();
        if (m_service->error() == ECONNRESET) {
            m_loop.guard(
                [&] { throw CommandError(Unavailable, m_instance.title() + ": the service went away"_L1); });
        }
    });
    QTimer check;
    if (!m_answer.pending.isEmpty()) {
        QObject::connect(&check, &QTimer::timeout, [this] {
            if (!m_instance.object()->property(m_answer.pending.constData()).toBool())
                QCoreApplication::quit();
        });
        check.start(BeginDeadline);
    }
    if (isBusy() && ::isatty(STDERR_FILENO)) {
        printError(m_instance.title() + " is "_L1 + QLatin1String(m_instance.entry().calls.busy)
            + "; Ctrl-C ends it"_L1);
    }
    (void)m_loop.run();
    return m_status;
}

} // namespace oz::tools
