#pragma once

#include "source/Source.hpp"

#include <QSize>

#include <map>

namespace oz::services {

struct DisplayState
{
    enum class Technology { Unknown, Crt, Lcd, Plasma, Led, Oled };

    struct Display
    {
        QString name;
        bool internal = false; //!< built into the device
        bool attached = false;
        bool detachable = false;
        QSize size{0, 0}; //!< pixels, in the native orientation
        QSize physicalSize{0, 0}; //!< millimetres; 0 where not known
        int rotation = 0; //!< degrees
        Technology technology = Technology::Unknown;

        bool operator==(const Display &) const = default;
    };

    std::map<int, Display> displays; //!< by their identifiers, which are 0 or more

    bool operator==(const DisplayState &) const = default;
};

/*! Of a display's name, in bytes of UTF-8: what a client of the display service can read. */
constexpr int MaxDisplayNameSize = 127;

/*! The displays of the device, whoever knows them. */
using DisplaySource = StateSource<DisplayState>;

} // namespace oz::services
