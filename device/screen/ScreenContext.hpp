#pragma once

#include "ScreenDisplay.hpp"

#include <oz/Screen.hpp>

#include <QList>

namespace oz::device {

class ScreenEvent;

/*! An application's context of the display service. Failures are logged, see each function for what it gives
 * then. */
class ScreenContext
{
public:
    /*! Invalid where the service refuses. */
    ScreenContext();
    ~ScreenContext();
    ScreenContext(const ScreenContext &) = delete;
    ScreenContext &operator=(const ScreenContext &) = delete;

    [[nodiscard]] bool isValid() const { return m_handle != nullptr; }
    [[nodiscard]] screen_context_t handle() const { return m_handle; }

    /*! Asks for \a event where something of the kind \a type happens to \a object; nullptr takes that back.
     */
    bool notify(int type, const void *object, const sigevent *event);
    /*! Takes the next event, waiting for \a timeout nanoseconds at most. */
    bool readEvent(ScreenEvent &event, int timeout);
    /*! The displays in the service's order; none on failure. */
    [[nodiscard]] QList<ScreenDisplay> displays() const;

private:
    screen_context_t m_handle = nullptr;
};

} // namespace oz::device
