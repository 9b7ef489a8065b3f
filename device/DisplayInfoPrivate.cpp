#include "DisplayInfoPrivate.hpp"

#include "Log.hpp"

#include <oz/EventService.hpp>

namespace oz::device {

namespace {

using Values = DisplayInfoPrivate::Values;

constexpr QLatin1StringView WirelessName("miracast");

// The size is announced of a display that stays attached; otherwise attachedChanged stands for everything.
template <auto Field, auto Signal>
struct WhileAttached : Change<Fields<Field>, Signal>
{
    static bool differs(const Values &before, const Values &after)
    {
        return before.attached && after.attached && before.*Field != after.*Field;
    }
};

using Changes = ChangeTable<Change<Fields<&Values::attached>, &DisplayInfo::attachedChanged>,
    WhileAttached<&Values::pixelSize, qOverload<QSize>(&DisplayInfo::pixelSizeChanged)>,
    WhileAttached<&Values::pixelSizeMap, qOverload<QVariant>(&DisplayInfo::pixelSizeChanged)>>;

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

DisplayInfoPrivate::DisplayInfoPrivate(int id, DisplayInfo *publicObject) : q(publicObject), m_displayId(id)
{
    if (!m_context.isValid() || !m_event.isValid())
        return;
    m_display = ScreenDisplay::forId(m_context, m_displayId);
    if (!m_display.isValid()) {
        qCWarning(logDevice) << "DisplayInfo:" << m_displayId << "is not a valid display id";
        return;
    }
    m_values.begin(populate(nullptr));
    m_valid = true;
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
    if (m_notification.notify != EventKind::None) {
        m_context.notify(ScreenNotifyDisplay, m_display.handle(), nullptr);
        hub_remove_sigevent_handler(&m_notification);
    }
    // Also where it was never initialized, which the event service has to bear.
    hub_shutdown();
}

DisplayInfoPrivate::Values DisplayInfoPrivate::populate(const bool *attached) const
{
    Values values;
    values.displayName = m_display.name();
    values.detachable = m_display.isDetachable();
    values.physicalSize = m_display.physicalSize();
    values.pixelSize = pixelSize(m_display);
    values.pixelSizeMap = QVariantMap{{QStringLiteral("width"), values.pixelSize.width()},
        {QStringLiteral("height"), values.pixelSize.height()}};
    values.aspectType = aspectOf(values.pixelSize);
    values.displayTechnology = technologyOf(m_display.technology());
    values.attached = attached ? *attached : m_display.isAttached();
    return values;
}

bool DisplayInfoPrivate::isWireless() const
{
    return m_values->displayName.contains(WirelessName);
}

QSizeF DisplayInfoPrivate::resolution() const
{
    const QSize pixels = m_values->pixelSize;
    const QSizeF millimetres = m_values->physicalSize;
    return {resolutionOf(pixels.width(), millimetres.width()),
        resolutionOf(pixels.height(), millimetres.height())};
}

int DisplayInfoPrivate::hubSigeventHandler(void *data)
{
    static_cast<DisplayInfoPrivate *>(data)->handleDisplayEvent();
    return 0;
}

void DisplayInfoPrivate::handleDisplayEvent()
{
    const QPointer<DisplayInfo> alive(q);
    while (alive && m_context.readEvent(m_event, 0)) {
        const int type = m_event.type();
        if (type == ScreenEventType::None)
            break;
        if (type != ScreenEventType::Display || m_event.display().id() != m_display.id())
            continue;
        const bool isAttached = m_event.isAttached();
        const bool isNews =
            isAttached != m_values->attached || (isAttached && pixelSize(m_display) != m_values->pixelSize);
        if (isNews)
            Changes::storeAndEmit(q, &m_values, populate(&isAttached));
    }
}

} // namespace oz::device
