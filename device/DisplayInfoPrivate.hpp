#pragma once

#include "screen/ScreenContext.hpp"
#include "screen/ScreenDisplay.hpp"
#include "screen/ScreenEvent.hpp"

#include <oz/EventDelivery.hpp>
#include <oz/device/DisplayInfo.hpp>

namespace oz::device {

class DisplayInfoPrivate
{
public:
    DisplayInfoPrivate(int displayId, DisplayInfo *q);
    ~DisplayInfoPrivate();
    DisplayInfoPrivate(const DisplayInfoPrivate &) = delete;
    DisplayInfoPrivate &operator=(const DisplayInfoPrivate &) = delete;

    [[nodiscard]] bool isWireless() const;
    [[nodiscard]] QSizeF resolution() const;

private:
    void populate(const bool *attached);
    void handleDisplayEvent();
    static int hubSigeventHandler(void *data);

    DisplayInfo *q;
    ScreenDisplay m_display;
    ScreenContext m_context;
    ScreenEvent m_event;
    sigevent m_notification;
    bool *m_destroyed = nullptr; // told to a handler that is under way

public:
    bool valid = false;
    int displayId;
    QString displayName;
    QSize pixelSize{-1, -1};
    QSizeF physicalSize{-1, -1};
    DisplayAspectType::Type aspectType = DisplayAspectType::Landscape;
    bool attached = false;
    bool detachable = false;
    DisplayTechnology::Type displayTechnology = DisplayTechnology::Unknown;
};

} // namespace oz::device
