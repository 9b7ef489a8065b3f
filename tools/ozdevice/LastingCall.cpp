#include "ozdevice/LastingCall.hpp"

#include "meta/MetaText.hpp"
#include "ozdevice/Command.hpp"
#include "ozdevice/Signals.hpp"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>

namespace oz::tools {

LastingCall::LastingCall(
    const FacilityEntry &entry, const QString &method, QObject *object, const meta::SignalTap::Heard &heard)
    : m_entry(entry), m_answer(entry.answers.value(method.toLatin1())), m_object(object),
      m_tap(object,
          [this, heard](const QMetaMethod &signal, const QVariantList &arguments) {
              onSignal(signal, arguments, heard);
          }),
      m_service(entry.service)
{
    const bool isServed = !entry.service.isEmpty() && (entry.answers.isEmpty() || !m_answer.isEmpty());
    if (!isServed || m_service.open(PpsOpenMode::PublishSubscribe))
        return;
    throw CommandError(Unavailable,
        unavailableText(entry.name, entry.service + QLatin1String(": ") + m_service.errorString()));
}

void LastingCall::onSignal(
    const QMetaMethod &signal, const QVariantList &arguments, const meta::SignalTap::Heard &heard)
{
    if (m_entry.busy.isEmpty() && !m_answered)
        heard(signal, arguments);
    if (!m_answer.isEmpty() && signal.name() == m_answer && !m_answered) {
        m_answered = true;
        m_status = meta::valueText(arguments.value(0)) == u"Success" ? Success : Failed;
    }
    if (isOver())
        QCoreApplication::quit();
}

bool LastingCall::isBusy() const
{
    return !m_entry.busy.isEmpty() && m_object->property(m_entry.busy.constData()).toBool();
}

int LastingCall::waitForEnd()
{
    // What the call has put off until it has returned, such as the signal that brings a session's key.
    QCoreApplication::sendPostedEvents(m_object, QEvent::MetaCall);
    if (isOver())
        return m_status;
    const Signals signals([&](int signal) {
        m_status = 128 + signal;
        QCoreApplication::quit();
    });
    QObject::connect(&m_service, &PpsObject::readyRead, [&] {
        (void)m_service.read();
        if (m_service.error() != ECONNRESET)
            return;
        std::fprintf(stderr, "ozdevice: %s: the service went away\n", qUtf8Printable(m_entry.name));
        m_status = Unavailable;
        QCoreApplication::quit();
    });
    if (isBusy() && ::isatty(STDERR_FILENO)) {
        std::fprintf(stderr, "ozdevice: %s is %s; Ctrl-C ends it\n", qUtf8Printable(m_entry.name),
            m_entry.busy.constData());
    }
    QCoreApplication::exec();
    return m_status;
}

} // namespace oz::tools
