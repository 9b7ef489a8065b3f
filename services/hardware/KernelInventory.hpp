#pragma once

#include "hardware/Hardware.hpp"

namespace oz::services {

/*!
 * The device according to the kernel and udev: from device tree or DMI, /proc/cpuinfo and cpufreq, the
 * connectors and the input devices. Reading it may take its time.
 */
[[nodiscard]] Hardware kernelInventory();

} // namespace oz::services
