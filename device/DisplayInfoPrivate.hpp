#pragma once

#include "ChangeTable.hpp"
#include "screen/ScreenContext.hpp"
#include "screen/ScreenDisplay.hpp"
#include "screen/ScreenEvent.hpp"

#include <oz/EventDelivery.hpp>
#include <oz/device/DisplayInfo.hpp>

namespace oz::device {

class DisplayInfoPrivate
{
public:
    /*! The last report of the display service. */
    struct Values
    {
        QString displayName;
        QSize pixelSize{-1, -1};
        QSizeF physicalSize{-1, -1};
        DisplayAspectType::Type aspectType = DisplayAspectType::Landscape;
        bool attached = false;
        bool detachable = false;
        DisplayTechnology::Type displayTechnology = DisplayTechnology::Unknown;
        QVariant pixelSizeMap; //!< the pixel size as the second signal of its change tells it
    };

    DisplayInfoPrivate(int displayId, DisplayInfo *q);
    ~DisplayInfoPrivate();
    DisplayInfoPrivate(const DisplayInfoPrivate &) = delete;
    DisplayInfoPrivate &operator=(const DisplayInfoPrivate &) = delete;

    [[nodiscard]] bool isValid() const { return m_valid; }
    [[nodiscard]] int displayId() const { return m_displayId; }
    [[nodiscard]] const Values &values() const { return *m_values; }
    [[nodiscard]] bool isWireless() const;
    [[nodiscard]] QSizeF resolution() const;

private:
    [[nodiscard]] Values populate(const bool *attached) const;
    void handleDisplayEvent();
    static int hubSigeventHandler(void *data);

    DisplayInfo *q;
    ScreenDisplay m_display;
    ScreenContext m_context;
    ScreenEvent m_event;
    sigevent m_notification;
    bool m_valid = false;
    const int m_displayId;
    Announced<Values> m_values;
};

} // namespace oz::device
