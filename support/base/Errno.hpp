#pragma once

#include <cerrno>

namespace oz {

/*! Fails as a function of the platform does: returns -1, with \a error in errno. */
[[nodiscard]] inline int fail(int error)
{
    errno = error;
    return -1;
}

} // namespace oz
