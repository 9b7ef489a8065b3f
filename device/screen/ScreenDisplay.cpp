#include "ScreenDisplay.hpp"

#include "ScreenCall.hpp"
#include "ScreenContext.hpp"

namespace oz::device {

namespace {

constexpr int NameSize = 128;

// The integers of a property, or as many times unknown.
template <int Count>
std::array<int, Count> readProperty(screen_display_t handle, int property, int unknown, const char *failed)
{
    std::array<int, Count> values{};
    values.fill(unknown);
    if (!handle)
        return values;
    const auto read = [&] { return screen_get_display_property_iv(handle, property, values.data()); };
    if (!callScreen(read, failed))
        values.fill(unknown);
    return values;
}

int readNumber(screen_display_t handle, int property, int unknown, const char *failed)
{
    return readProperty<1>(handle, property, unknown, failed)[0];
}

template <typename Predicate>
ScreenDisplay firstOf(const ScreenContext &context, const Predicate &matches)
{
    for (const ScreenDisplay &display : context.displays()) {
        if (matches(display))
            return display;
    }
    return {};
}

} // namespace

int ScreenDisplay::id() const
{
    return readNumber(m_handle, ScreenProperty::Id, -1, "ScreenDisplay: failed to read id property -");
}

QString ScreenDisplay::name() const
{
    if (!m_handle)
        return {};
    char text[NameSize] = "";
    const auto read = [&] {
        return screen_get_display_property_cv(m_handle, ScreenProperty::IdString, NameSize, text);
    };
    return callScreen(read, "ScreenDisplay: failed to read name property -") ? QString::fromUtf8(text)
                                                                             : QString();
}

int ScreenDisplay::type() const
{
    return readNumber(m_handle, ScreenProperty::Kind, -1, "ScreenDisplay: failed to read type property -");
}

bool ScreenDisplay::isAttached() const
{
    return readNumber(
        m_handle, ScreenProperty::Attached, 0, "ScreenDisplay: failed to read attached property -");
}

bool ScreenDisplay::isDetachable() const
{
    return readNumber(
        m_handle, ScreenProperty::Detachable, 0, "ScreenDisplay: failed to read detachable property -");
}

QSizeF ScreenDisplay::physicalSize() const
{
    const auto [width, height] = readProperty<2>(
        m_handle, ScreenProperty::PhysicalSize, -1, "ScreenDisplay: failed to read physical size property -");
    return QSizeF(width, height);
}

int ScreenDisplay::rotation() const
{
    return readNumber(
        m_handle, ScreenProperty::Rotation, 0, "ScreenDisplay: failed to read rotation property -");
}

QSize ScreenDisplay::size() const
{
    const auto [width, height] =
        readProperty<2>(m_handle, ScreenProperty::Size, -1, "ScreenDisplay: failed to read size property -");
    return {width, height};
}

int ScreenDisplay::technology() const
{
    int technology = 0;
    if (!m_handle)
        return technology;
    // Alone among the readers it leaves errno as it is before the call.
    const int result = screen_get_display_property_iv(m_handle, ScreenProperty::Technology, &technology);
    return screenSucceeded(result, "ScreenDisplay: failed to read technology property -") ? technology : 0;
}

ScreenDisplay ScreenDisplay::forId(const ScreenContext &context, int id)
{
    return firstOf(context, [id](const ScreenDisplay &display) { return display.id() == id; });
}

ScreenDisplay ScreenDisplay::forAlternateType(const ScreenContext &context, AlternateType type)
{
    return firstOf(context, [type](const ScreenDisplay &display) {
        const bool internal = display.type() == ScreenDisplayKind::Internal;
        return (type == Primary && internal) || (type == Secondary && !internal);
    });
}

QSize pixelSize(const ScreenDisplay &display)
{
    const int rotation = display.rotation();
    const QSize size = display.size();
    return rotation == 90 || rotation == 270 ? size.transposed() : size;
}

} // namespace oz::device
