#pragma once

#include <oz/models/RequestResult.hpp>

#include <QFuture>

namespace oz::models {

/*! An argument with which a request is not sent. */
struct InvalidArgument
{
    const char *call; //!< the request and its arguments, as "flash(color, count)"
    const char *name; //!< the argument's name
    const char *expected; //!< the values that it takes
    QString found; //!< the argument as text, or "missing"
};

/*! The descriptions of flash() and its arguments. */
inline constexpr const char *FlashCall = "flash(color, count)";
inline constexpr const char *FlashColor = "an enumerator of LedColor other than None";
inline constexpr const char *FlashCount = "a whole number of flashes, or -1 to flash until cancelled";

/*! Logs the mistake as a warning for the developer; returns a future that has failed with it. */
[[nodiscard]] QFuture<RequestResult> refuse(const InvalidArgument &argument);

} // namespace oz::models
