#include "ozdevice/LastingCall.hpp"

#include "meta/SignalTap.hpp"
#include "ozdevice/Command.hpp"
#include "ozdevice/Signals.hpp"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>

namespace oz::tools {

LastingCall::LastingCall(const FacilityEntry &entry, QObject *object)
    : m_entry(entry), m_object(object), m_service(entry.service)
{
    if (entry.service.isEmpty() || m_service.open(PpsOpenMode::PublishSubscribe))
        return;
    throw CommandError(Unavailable,
        unavailableText(entry.name, entry.service + QLatin1String(": ") + m_service.errorString()));
}

bool LastingCall::isBusy() const
{
    return !m_entry.busy.isEmpty() && m_object->property(m_entry.busy.constData()).toBool();
}

int LastingCall::waitForEnd()
{
    if (!isBusy())
        return Success;
    int status = Success;
    const Signals signals([&](int signal) {
        status = 128 + signal;
        QCoreApplication::quit();
    });
    const meta::SignalTap tap(m_object, [this](const QMetaMethod &, const QVariantList &) {
        if (!isBusy())
            QCoreApplication::quit();
    });
    QObject::connect(&m_service, &PpsObject::readyRead, [&] {
        (void)m_service.read();
        if (m_service.error() != ECONNRESET)
            return;
        std::fprintf(stderr, "ozdevice: %s: the service went away\n", qUtf8Printable(m_entry.name));
        status = Unavailable;
        QCoreApplication::quit();
    });
    if (::isatty(STDERR_FILENO)) {
        std::fprintf(stderr, "ozdevice: %s is %s; Ctrl-C ends it\n", qUtf8Printable(m_entry.name),
            m_entry.busy.constData());
    }
    QCoreApplication::exec();
    return status;
}

} // namespace oz::tools
