#pragma once

#include <CLI/CLI.hpp>

#include <chrono>

namespace oz::tools {

/*! A time that an option gives. The parser fills in seconds. */
struct Duration
{
    double seconds = 0;

    [[nodiscard]] std::chrono::milliseconds milliseconds() const
    {
        return std::chrono::milliseconds(std::int64_t(seconds * 1000));
    }
};

/*! Adds the option \a name, which takes "500ms", "10s", "1.5m", "2h" or a number of seconds, up to 23 days.
 */
inline CLI::Option *addDuration(CLI::App *verb, const char *name, Duration &duration, const char *help)
{
    return verb->add_option(name, duration.seconds, help)
        ->type_name("TIME")
        ->transform(CLI::AsNumberWithUnit(
            std::map<std::string, double>{{"ms", 0.001}, {"s", 1}, {"m", 60}, {"h", 3600}}))
        ->check(CLI::Range(0.0, 2e6));
}

} // namespace oz::tools
