#include "DisplayInfoPrivate.hpp"

#include "Frame.hpp"

#include <oz/EventService.hpp>

namespace oz::device {

namespace {

constexpr QLatin1StringView WirelessName("miracast");

// By the display service's codes, from 0.
constexpr DisplayTechnology::Type Technologies[] = {DisplayTechnology::Unknown, DisplayTechnology::Crt,
    DisplayTechnology::Lcd, DisplayTechnology::Plasma, DisplayTechnology::Led, DisplayTechnology::Oled};

DisplayTechnology::Type technologyOf(int code)
{
    return code >= 0 && code < int(std::size(Technologies)) ? Technologies[code] : DisplayTechnology::Unknown;
}

DisplayAspectType::Type aspectOf(QSize size)
{
    if (size.width() == size.height())
        return DisplayAspectType::Square;
    return size.width() > size.height() ? DisplayAspectType::Landscape : DisplayAspectType::Portrait;
}

// Pixels on so many millimetres, as pixels per metre.
qreal resolutionOf(int pixels, qreal millimetres)
{
    return millimetres != 0 ? pixels * qreal(1000) / millimetres : 0;
}

} // namespace

DisplayInfoPrivate::DisplayInfoPrivate(int id, DisplayInfo *publicObject) : q(publicObject), displayId(id)
{
    if (!m_context.isValid() || !m_event.isValid())
        return;
    m_display = ScreenDisplay::forId(m_context, displayId);
    if (!m_display.isValid()) {
        qCWarning(logDevice) << "DisplayInfo:" << displayId << "is not a valid display id";
        return;
    }
    populate(nullptr);
    valid = true;
    if (hub_initialize() < 0) {
        qCWarning(logDevice) << "DisplayInfo: failed to initialize hub";
        return;
    }
    if (hub_add_sigevent_handler(&m_notification, &DisplayInfoPrivate::hubSigeventHandler, this) < 0) {
        qCWarning(logDevice) << "DisplayInfo: failed to register hub sigevent handler";
        return;
    }
    m_context.notify(ScreenNotifyDisplay, m_display.handle(), &m_notification);
}

DisplayInfoPrivate::~DisplayInfoPrivate()
{
    if (m_destroyed)
        *m_destroyed = true;
    if (m_notification.notify != EventKind::None) {
        m_context.notify(ScreenNotifyDisplay, m_display.handle(), nullptr);
        hub_remove_sigevent_handler(&m_notification);
    }
    // Also where it was never initialized, which the event service has to bear.
    hub_shutdown();
}

void DisplayInfoPrivate::populate(const bool *isAttached)
{
    displayName = m_display.name();
    detachable = m_display.isDetachable();
    physicalSize = m_display.physicalSize();
    pixelSize = oz::device::pixelSize(m_display);
    aspectType = aspectOf(pixelSize);
    displayTechnology = technologyOf(m_display.technology());
    attached = isAttached ? *isAttached : m_display.isAttached();
}

bool DisplayInfoPrivate::isWireless() const
{
    return displayName.contains(WirelessName);
}

QSizeF DisplayInfoPrivate::resolution() const
{
    return {resolutionOf(pixelSize.width(), physicalSize.width()),
        resolutionOf(pixelSize.height(), physicalSize.height())};
}

int DisplayInfoPrivate::hubSigeventHandler(void *data)
{
    static_cast<DisplayInfoPrivate *>(data)->handleDisplayEvent();
    return 0;
}

// A slot may destroy this object, which ends the announcements.
void DisplayInfoPrivate::handleDisplayEvent()
{
    bool destroyed = false;
    bool *const outer = std::exchange(m_destroyed, &destroyed);
    while (!destroyed && m_context.readEvent(m_event, 0)) {
        const int type = m_event.type();
        if (type == ScreenEventType::None)
            break;
        if (type != ScreenEventType::Display || m_event.display().id() != m_display.id())
            continue;
        const bool isAttached = m_event.isAttached();
        if (isAttached != attached) {
            populate(&isAttached);
            Q_EMIT q->attachedChanged(isAttached);
        } else if (isAttached) {
            const QSize size = oz::device::pixelSize(m_display);
            if (size == pixelSize)
                continue;
            populate(&isAttached);
            Q_EMIT q->pixelSizeChanged(size);
            if (!destroyed) {
                Q_EMIT q->pixelSizeChanged(QVariant(QVariantMap{
                    {QStringLiteral("width"), size.width()}, {QStringLiteral("height"), size.height()}}));
            }
        }
    }
    if (!destroyed)
        m_destroyed = outer;
    else if (outer)
        *outer = true;
}

} // namespace oz::device
