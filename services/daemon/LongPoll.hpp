#pragma once

#include <QtGlobal>

#include <chrono>

namespace oz::services {

/*! How long a request waits for something to tell; clients give up later. */
constexpr std::chrono::seconds LongestPoll(20);
/*! How much an answer tells; the rest is for the next request. */
constexpr qsizetype MostAtOnce = 500;

} // namespace oz::services
