#pragma once

#include <oz/EventDelivery.hpp>

#include <cstddef>

/*
 * The client of the power manager's statuses: a handle follows one named status of the device
 * "/dev/power/mgr", reads its latest value, and has an event delivered when there is a new one.
 *
 * Handles may be made and destroyed on any thread; one handle is used by one thread at a time.
 */

namespace oz::device {

struct PowmanStatus;

/*! Follows the status \a name. A handle to be destroyed with powman_status_destroy(), or nullptr with the
 * reason in errno. */
[[nodiscard]] PowmanStatus *powman_status_create(const char *name);

/*! Destroys \a status. 0, or the errno of a failed close; the handle is gone in either case. */
int powman_status_destroy(PowmanStatus *status);

/*!
 * Takes in what the device has sent, and copies the latest value into \a buffer, which may be nullptr. Of a
 * value that does not fit in \a size bytes with its terminating NUL, the first \a size bytes are copied,
 * without a NUL. The length of the value, or a negative errno.
 */
[[nodiscard]] int powman_status_value(PowmanStatus *status, std::size_t size, char *buffer);

/*!
 * Has \a event delivered, once, when there is something new to read; at once where there is already. Without
 * an event it is the signal 57 with the code -6. 0 or an errno.
 */
[[nodiscard]] int powman_status_notify(PowmanStatus *status, const sigevent *event);

/*! Delivers \a event to this process now. 0 or an errno. */
[[nodiscard]] int _powman_deliver_event(const sigevent *event);

} // namespace oz::device
