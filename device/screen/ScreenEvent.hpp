#pragma once

#include "ScreenDisplay.hpp"

#include <oz/Screen.hpp>

namespace oz::device {

/*! An event of the display service, filled by ScreenContext::readEvent(). Failures are logged. */
class ScreenEvent
{
public:
    /*! Invalid where the service refuses. */
    ScreenEvent();
    ~ScreenEvent();
    ScreenEvent(const ScreenEvent &) = delete;
    ScreenEvent &operator=(const ScreenEvent &) = delete;

    [[nodiscard]] bool isValid() const { return m_handle != nullptr; }
    [[nodiscard]] screen_event_t handle() const { return m_handle; }

    [[nodiscard]] int type() const; //!< 0: no event; unknown: -1
    [[nodiscard]] ScreenDisplay display() const; //!< unknown: none
    [[nodiscard]] bool isAttached() const; //!< unknown: false

private:
    screen_event_t m_handle = nullptr;
};

} // namespace oz::device
