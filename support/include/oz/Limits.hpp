#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QtGlobal>

#include <chrono>

namespace oz {

/*! The size of the longest message to or from a service, and of the largest object, in bytes. */
inline constexpr qsizetype MaxMessageSize = 1 << 20;

/*!
 * How long a waiting read of a served object takes at most, before it fails with ETIMEDOUT: 60 s, or the
 * seconds that the environment names in OZ_WAIT_LIMIT, or what the application has set. May be called from
 * any thread.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT std::chrono::milliseconds waitLimit();
/*! Sets the limit for waits that begin from now on; nothing below a millisecond. May be called from any
 * thread. */
OZ_SUPPORT_EXPORT void setWaitLimit(std::chrono::milliseconds limit);

/*!
 * How long a server may be away before that is a fact for those who use it: 5 s, or the seconds that the
 * environment names in OZ_GRACE_TIME, which is read at each call. May be called from any thread.
 */
[[nodiscard]] OZ_SUPPORT_EXPORT std::chrono::milliseconds graceTime();

} // namespace oz
