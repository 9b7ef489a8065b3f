#pragma once

#include "source/Source.hpp"
#include "table/Fields.hpp"

#include <oz/DisplayTree.hpp>
#include <oz/Screen.hpp>

namespace oz::services {

using DisplayTree::Display;

/*! The displays of the device, as any source knows them. */
struct DisplayState
{
    DisplayTree::Displays displays; //!< by their identifiers

    bool operator==(const DisplayState &) const = default;
};

using DisplaySource = StateSource<DisplayState>;

/*! The longest name of a display, in bytes of UTF-8, that a client of the display service can read. */
constexpr int MaxDisplayNameSize = 127;

[[nodiscard]] inline bool isInternal(const Display &display)
{
    return display.kind == ScreenDisplayKind::Internal;
}
[[nodiscard]] inline int displayKind(bool internal)
{
    return internal ? ScreenDisplayKind::Internal : ScreenDisplayKind::External;
}

/*! By their numbers. */
[[nodiscard]] const WordList<int> &displayKinds();
[[nodiscard]] const WordList<int> &displayTechnologies();

/*! How a display stands in the tree, for those who read it; DisplayTree writes it. */
[[nodiscard]] const Fields<Display> &displayFields();

/*! The source of another facility that has a display at times, which stands beside the device's own. */
class DisplayBeside
{
public:
    virtual ~DisplayBeside() = default;
    /*! The display; nothing while there is none. */
    [[nodiscard]] virtual std::optional<Display> displayNow() const = 0;
    /*! Whose changes tell that it may have changed. */
    [[nodiscard]] virtual const Source &source() const = 0;
};

} // namespace oz::services
