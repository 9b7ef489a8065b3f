#pragma once

#include <cerrno>

namespace oz {

/*! What a function of the platform gives for a failure: -1, with \a error in errno. */
[[nodiscard]] inline int fail(int error)
{
    errno = error;
    return -1;
}

} // namespace oz
