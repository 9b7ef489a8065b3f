#pragma once

#include "source/Source.hpp"

#include <chrono>

namespace oz::services {

struct LedState
{
    struct Elements
    {
        bool red = false;
        bool green = false;
        bool blue = false;

        bool operator==(const Elements &) const = default;
    };

    Elements lit; //!< what is lit now
    std::chrono::milliseconds flashTime{250}; //!< how long a flash is
    std::chrono::milliseconds darkTime{250}; //!< at least, before the next one

    bool operator==(const LedState &) const = default;
};

/*! The notification LED, whoever has it. */
class LedSource : public StateSource<LedState>
{
public:
    /*! Lights these elements and no others. */
    virtual void light(const LedState::Elements &elements, const Done &done) = 0;
};

} // namespace oz::services
