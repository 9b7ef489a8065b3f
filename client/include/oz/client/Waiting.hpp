#pragma once

#include <QString>

#include <chrono>
#include <functional>

namespace oz::client {

/*! Waits until \a isOver returns true, and runs the event loop of the calling thread, if it has one,
 * meanwhile. Returns false where it has not within \a limit. */
[[nodiscard]] bool waitUntil(const std::function<bool()> &isOver, std::chrono::milliseconds limit);

/*!
 * Waits until the applications under the device \a root of a private daemon have handled everything that was
 * published or sent to them before the call: each thread with an event loop that uses objects of the tree.
 * Returns an error that names the threads which have not within \a limit; empty if all have.
 */
[[nodiscard]] QString waitUntilHandled(const QString &root, std::chrono::milliseconds limit);

} // namespace oz::client
