#include "display/DisplayPublisher.hpp"
#include "display/DisplayRecorder.hpp"
#include "display/SimulatedDisplays.hpp"
#include "display/WaylandDisplays.hpp"
#include "display/XrandrDisplays.hpp"
#include "facility/Facility.hpp"

namespace oz::services {

Facility displayFacility()
{
    const SourceKind wayland{QStringLiteral("wayland"), QStringLiteral("the outputs of a Wayland compositor"),
        {QStringLiteral("display")},
        [](Providers &, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<WaylandDisplays>(options.value(QStringLiteral("display")));
        },
        [] {
            return WaylandDisplays::sessionServer().isEmpty()
                ? QStringLiteral("WAYLAND_DISPLAY names no compositor")
                : QString();
        }};
    const SourceKind xrandr{QStringLiteral("xrandr"), QStringLiteral("the outputs of an X server (RandR)"),
        {QStringLiteral("display")},
        [](Providers &, const SourceOptions &options) -> std::shared_ptr<Source> {
            return std::make_shared<XrandrDisplays>(options.value(QStringLiteral("display")));
        },
        [] {
            return qEnvironmentVariableIsEmpty("DISPLAY") ? QStringLiteral("DISPLAY names no X server")
                                                          : QString();
        }};
    return describeFacility<DisplaySource, SimulatedDisplays>(
        QStringLiteral("display"), QStringLiteral("Displays"), {}, {wayland, xrandr})
        .publishedBy<DisplayPublisher, DisplayBeside>()
        .saying(displayFields().fields())
        .recordedBy<DisplayRecorder>();
}

} // namespace oz::services
