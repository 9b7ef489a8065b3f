#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <cstddef>
#include <sys/types.h>

/*
 * Devices of the platform, such as the power manager's "/dev/power/mgr": opened, read, written and closed
 * like files. A device is a stream socket at the device's path under deviceRoot(), on which a service
 * listens.
 *
 * An open device outlives its service. Where the service goes away and another takes its place, the device
 * connects to that one by itself, and says again what its client had written (the latest 16
 * different lines). Until graceTime() is over the client is told nothing: a read finds nothing new, what is
 * written is said to the next service, and an event that ionotify() armed waits on. After it the device is
 * gone: the event comes, reading and writing fail with ENODEV, and so does arming, which counts all the same.
 * When a service comes later, the device is there again, and what is armed tells of what that sends. A
 * service that lives and has ended the connection is gone at once, and not asked again.
 *
 * The functions return -1 with the reason in errno. Any thread may call them; one descriptor is used by one
 * thread at a time.
 */

namespace oz {

/*! The open flags, with the platform's values. */
namespace DeviceOpen {
inline constexpr int ReadWrite = 2; //!< which every device is opened for
inline constexpr int CloseOnExec = 0x2000; //!< a program that is executed does not inherit it
} // namespace DeviceOpen

/*! How long readDevice() waits for an answer that the device owes, in milliseconds. */
inline constexpr int DeviceAnswerTimeout = 1000;

/*!
 * Opens the device at the device path \a path; \a flags are of DeviceOpen. A descriptor, or -1: EINVAL for
 * other flags or a path that does not begin with "/"; ENOENT; EACCES; ECONNREFUSED where the device's service
 * is gone; EAGAIN where it has too many clients to accept; ENOTSOCK, with a warning of the category
 * "oz.support", where something else lies at the path.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT int openDevice(const char *path, int flags);

/*!
 * Reads at most \a size bytes of what the device has sent. The first read after a write waits for the answer,
 * up to DeviceAnswerTimeout (then ETIMEDOUT); any other read returns 0 where nothing is there. ENODEV where
 * the device is gone and all that it had sent is read.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT ssize_t readDevice(int fd, void *buffer, std::size_t size);

/*! Writes \a size bytes and returns how many the device took. ENODEV where it is gone, EAGAIN where it takes
 * nothing now, EBADF for what is no open device. */
[[nodiscard]] OZ_SUPPORT_EXPORT ssize_t writeDevice(int fd, const void *data, std::size_t size);

/*! Closes \a fd; no event that was asked for with ionotify() comes any more. */
OZ_SUPPORT_EXPORT int closeDevice(int fd);

} // namespace oz
