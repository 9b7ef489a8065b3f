#pragma once

#include "meta/SignalTap.hpp"
#include "ozdevice/EventLoop.hpp"
#include "ozdevice/FacilityInstance.hpp"

#include <oz/PpsObject.hpp>

#include <optional>

namespace oz::tools {

/*!
 * Follows a call from before it is made until what it began has ended, for facilities whose calls go on after
 * they returned, or are answered by a signal.
 */
class CallCompletion
{
public:
    /*!
     * Tells \a heard each signal that comes meanwhile, but of a facility that goes on by itself. Throws
     * CommandError where the facility's service is not there.
     */
    CallCompletion(
        const FacilityInstance &instance, const QByteArray &method, const meta::SignalTap::Heard &heard);

    /*!
     * Runs the event loop until the call is answered, the facility is not busy any more, its service is gone
     * or a signal comes; the exit status, which is Failed for an answer that is not Success.
     */
    [[nodiscard]] int wait();

private:
    void onSignal(
        const QMetaMethod &signal, const QVariantList &arguments, const meta::SignalTap::Heard &heard);
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] bool isOver() const { return m_answer.signal.isEmpty() ? !isBusy() : m_answered; }

    const FacilityInstance &m_instance;
    const LaterAnswer m_answer;
    EventLoop m_loop;
    meta::SignalTap m_tap;
    std::optional<PpsObject> m_service; // open all the time, so that the end of the service is heard
    bool m_answered = false;
    int m_status = 0;
};

} // namespace oz::tools
