#pragma once

/*!
 * How the plugin and those who want its readings and no other find each other.
 */
namespace oz::sensors {

/*! The identifier of the backend that reads the orientation from the tree. */
inline constexpr const char *OrientationIdentifier = "ozdevice.orientation";

/*!
 * The dynamic property, true, of a sensor that takes its readings from the tree or from nowhere: it gets this
 * backend where nothing publishes an orientation too, and its first reading once something does.
 */
inline constexpr const char *TreeOnlyProperty = "ozdevice_treeOnly";

} // namespace oz::sensors
