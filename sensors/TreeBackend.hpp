#pragma once

/*! What the plugin and the programs that use only its readings agree on. */
namespace oz::sensors {

/*! The identifier of the backend that reads the orientation from the tree. */
inline constexpr const char *OrientationIdentifier = "ozdevice.orientation";

/*!
 * A dynamic property of a sensor. If it is true, the sensor gets this backend even while nothing publishes an
 * orientation, and its first reading as soon as something does.
 */
inline constexpr const char *TreeOnlyProperty = "ozdevice_treeOnly";

} // namespace oz::sensors
