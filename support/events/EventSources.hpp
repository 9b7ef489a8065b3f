#pragma once

#include <oz/EventDelivery.hpp>

#include <functional>

/*!
 * Functions of event delivery for the platform's own services. Any thread may call them.
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

/*!
 * Around giving \a fd another file behind it: what is armed for it stays, waits for nothing after suspend(),
 * and for what is there by then after resume().
 */
void suspend(int fd);
void resume(int fd);

/*! The state of a descriptor whose other side is gone and has left nothing to read. */
enum class HangUp {
    Final, //!< gone for good
    Bridged, //!< it has another file behind it now, and is to be looked at anew
    Lost, //!< gone, but it may be resumed
};

/*! Has \a judge tell what such a descriptor is; before, all are final. */
void judgeHangUps(HangUp (*judge)(int fd));

/*! True if the other side of \a fd is gone and has left nothing to read. */
[[nodiscard]] bool isHungUp(int fd);

} // namespace oz::EventSources
