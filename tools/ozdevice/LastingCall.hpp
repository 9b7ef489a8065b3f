#pragma once

#include "meta/SignalTap.hpp"
#include "ozdevice/FacilityTable.hpp"

#include <oz/PpsObject.hpp>

namespace oz::tools {

/*!
 * The time of a call from before it is made until what it began has ended, for facilities whose calls go on
 * after they returned, or are answered by a signal.
 */
class LastingCall
{
public:
    /*!
     * Tells \a heard each signal that comes meanwhile, but of a facility that goes on by itself. Throws
     * CommandError where the facility's service is not there.
     */
    LastingCall(const FacilityEntry &entry, const QString &method, QObject *object,
        const meta::SignalTap::Heard &heard);

    /*!
     * Runs the event loop until the call is answered, the facility is not busy any more, its service is gone
     * or a signal comes; the exit status, which is Failed for an answer that is not Success.
     */
    [[nodiscard]] int waitForEnd();

private:
    void onSignal(
        const QMetaMethod &signal, const QVariantList &arguments, const meta::SignalTap::Heard &heard);
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] bool isOver() const { return m_answer.isEmpty() ? !isBusy() : m_answered; }

    const FacilityEntry &m_entry;
    const QByteArray m_answer; // the name of the signal; empty for none
    QObject *m_object;
    meta::SignalTap m_tap;
    PpsObject m_service; // open all the time, so that the end of the service is heard
    bool m_answered = false;
    int m_status = 0;
};

} // namespace oz::tools
