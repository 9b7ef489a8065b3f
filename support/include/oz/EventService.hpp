#pragma once

#include <oz/EventDelivery.hpp>

/*
 * The event service: has a function called for each delivery of an event. Any thread may call these
 * functions; each returns 0, or -1 with the reason in errno.
 *
 * A handler runs on the event loop of the thread that registered it, where that thread has one then (and not
 * again before that loop turns); otherwise on the service's own thread, one handler after the other. Several
 * deliveries are several calls, of which one at a time stands in the event loop's queue. A handler may do
 * everything, removing itself included, but one on the service's thread holds up all others there while it
 * runs.
 */

namespace oz {

/*! A function to call for an event, with the data it was registered with. Returns 0. */
using HubHandler = int (*)(void *data);

/*! The most handlers that can be registered at a time. */
inline constexpr int HubMaxHandlers = 65536;

/*!
 * Starts to use the service on this thread. Each call wants a hub_shutdown(). Fails with EAGAIN, EMFILE or
 * ENFILE where the platform's own thread cannot start, which the next call tries again.
 */
OZ_SUPPORT_EXPORT int hub_initialize();

/*!
 * Takes one hub_initialize() of this thread back; EINVAL, and no effect on anybody, where there was none. The
 * service works on for as long as anyone uses it or a handler is registered.
 */
OZ_SUPPORT_EXPORT int hub_shutdown();

/*!
 * Fills \a event so that delivering it calls \a handler with \a data. EINVAL for no event or no handler,
 * ENXIO where nobody uses the service, EAGAIN for more than HubMaxHandlers.
 */
OZ_SUPPORT_EXPORT int hub_add_sigevent_handler(sigevent *event, HubHandler handler, void *data);

/*!
 * Takes the handler of \a event away and, once it does not run any more, zeroes the record. When it returns,
 * the handler does not run any more and will not run again: a call on another thread is waited for,
 * deliveries that are under way are dropped. ENOENT where no handler belongs to the event.
 */
OZ_SUPPORT_EXPORT int hub_remove_sigevent_handler(sigevent *event);

} // namespace oz
