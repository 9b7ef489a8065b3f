#pragma once

#include <oz/Screen.hpp>

#include <QSize>
#include <QSizeF>
#include <QString>

namespace oz::device {

class ScreenContext;

/*!
 * One display of the display service, or none. It does not own the service's handle and is freely copied.
 * Each reader asks the service; on failure it logs that and gives its unknown value, which a display that is
 * none gives silently.
 */
class ScreenDisplay
{
public:
    enum AlternateType {
        Primary = 0, //!< the device's internal display
        Secondary = 1, //!< the first display that is not internal
    };

    ScreenDisplay() = default;
    ScreenDisplay(screen_display_t handle) : m_handle(handle) { } // NOLINT(google-explicit-constructor)

    [[nodiscard]] bool isValid() const { return m_handle != nullptr; }
    [[nodiscard]] screen_display_t handle() const { return m_handle; }

    [[nodiscard]] int id() const; //!< unknown: -1
    [[nodiscard]] QString name() const; //!< unknown: empty
    [[nodiscard]] int type() const; //!< the service's code; unknown: -1
    [[nodiscard]] bool isAttached() const;
    [[nodiscard]] bool isDetachable() const;
    [[nodiscard]] QSizeF physicalSize() const; //!< millimetres; unknown: (-1, -1)
    [[nodiscard]] int rotation() const; //!< degrees; unknown: 0
    [[nodiscard]] QSize size() const; //!< pixels, in the native orientation; unknown: (-1, -1)
    [[nodiscard]] int technology() const; //!< the service's code; unknown: 0

    /*! The first display of \a context with the identifier \a id, else none. */
    [[nodiscard]] static ScreenDisplay forId(const ScreenContext &context, int id);
    /*! The first display of \a context that is of the kind \a type, else none. */
    [[nodiscard]] static ScreenDisplay forAlternateType(const ScreenContext &context, AlternateType type);

private:
    screen_display_t m_handle = nullptr;
};

/*! The size of \a display in pixels as the user sees it: with width and height swapped where it is turned by
 * 90 or 270 degrees. */
[[nodiscard]] QSize pixelSize(const ScreenDisplay &display);

} // namespace oz::device
