#pragma once

#include <oz/EventDelivery.hpp>

#include <functional>

/*!
 * What the platform's services use of event delivery beyond its public functions. Any thread may call these.
 */
namespace oz::EventSources {

using PulseReceiver = std::function<void(int code, int value)>;

/*! A connection of this process, on which \a receiver gets the pulses, called on the sender's thread. */
[[nodiscard]] int attach(PulseReceiver receiver);
void detach(int coid);

/*! Delivers \a event to this process, a pulse on its connection; 0 or an errno. */
int deliver(const sigevent &event);

/*! Takes back what ionotify() armed for \a fd, which is about to be closed. */
void forget(int fd);

} // namespace oz::EventSources
