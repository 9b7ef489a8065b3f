#pragma once

#include "meta/SignalTap.hpp"
#include "ozdevice/EventLoop.hpp"
#include "ozdevice/FacilityInstance.hpp"

#include <oz/PpsObject.hpp>

#include <optional>

namespace oz::tools {

/*! Follows a call until its effect ends or its answer arrives, for facilities whose calls return earlier.
 * Create it before the call. */
class CallCompletion
{
public:
    /*! Passes each signal to \a handler, except for a facility that stays busy. Throws CommandError if the
     * facility's service is missing. */
    CallCompletion(
        const FacilityInstance &instance, const QByteArray &method, const meta::SignalTap::Handler &handler);

    /*!
     * Runs the event loop until the call is answered, the facility is no longer busy, its service goes away
     * or a signal ends the program. Returns the exit status, which is Failed for an answer other than
     * Success.
     */
    [[nodiscard]] int wait();

private:
    void onSignal(
        const QMetaMethod &signal, const QVariantList &arguments, const meta::SignalTap::Handler &handler);
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] bool isOver() const { return m_answer.signal.isEmpty() ? !isBusy() : m_answered; }

    const FacilityInstance &m_instance;
    const LaterAnswer m_answer;
    EventLoop m_loop;
    meta::SignalTap m_tap;
    std::optional<PpsObject> m_service; // stays open to notice the end of the service
    bool m_answered = false;
    int m_status = 0;
};

} // namespace oz::tools
