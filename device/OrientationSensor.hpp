#pragma once

class QObject;
class QOrientationSensor;

namespace oz::device {

/*!
 * A sensor that gives the orientation which the tree tells, and no reading where it tells none. Where the
 * plugin that reads it is missing, the sensor does not start.
 */
[[nodiscard]] QOrientationSensor *makeOrientationSensor(QObject *parent);

} // namespace oz::device
