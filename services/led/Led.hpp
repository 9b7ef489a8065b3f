#pragma once

#include "source/Source.hpp"
#include "table/AskedRequest.hpp"
#include "table/Fields.hpp"

#include <chrono>

namespace oz::services {

/*! The notification LED, as any source knows it. */
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

class LedSource : public StateSource<LedState>
{
public:
    /*! Lights these elements and no others. */
    virtual void light(const LedState::Elements &elements, const Done &done) = 0;
};

/*! The colours, and the lamps that show them. */
[[nodiscard]] const WordList<LedState::Elements> &ledColors();
/*! How what is lit stands in the tree. */
[[nodiscard]] const Fields<LedState> &ledFields();
/*! The requests that applications make of the LED, and the object that serves them. */
[[nodiscard]] std::vector<AskedRequest> ledRequests();
inline const QString LedControl = QStringLiteral("/pps/services/led/control");

} // namespace oz::services
