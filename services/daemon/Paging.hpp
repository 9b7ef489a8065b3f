#pragma once

#include <QtGlobal>

namespace oz::services {

/*! How many entries of a list an answer has; the rest is for the next request. */
constexpr qsizetype MostAtOnce = 500;

} // namespace oz::services
