#pragma once

#include <QtGlobal>

#include <chrono>

namespace oz::tools {

/*! The duration of an option, which the parser fills in as seconds. */
struct Duration
{
    double seconds = 0;

    [[nodiscard]] std::chrono::milliseconds milliseconds() const
    {
        return std::chrono::milliseconds(std::int64_t(seconds * 1000));
    }
};

} // namespace oz::tools
