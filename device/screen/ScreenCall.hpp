#pragma once

#include "../Log.hpp"

#include <cerrno>
#include <cstring>

namespace oz::device {

/*! True if \a result, of a call of the display service, is success; else warns with \a text and errno's. */
inline bool screenSucceeded(int result, const char *text)
{
    if (result == 0)
        return true;
    const int error = errno; // which logging may change
    qCWarning(logDevice) << text << std::strerror(error);
    return false;
}

/*! As screenSucceeded() of \a call, made with errno cleared. */
template <typename Call>
bool callScreen(const Call &call, const char *text)
{
    errno = 0;
    return screenSucceeded(call(), text);
}

} // namespace oz::device
