#pragma once

namespace oz::device {

/*!
 * The hardware identifiers ("hardwareid" of the device properties) of the family whose devices have a
 * trackpad and physical phone, back and menu keys. An integrator lists the devices of his own here.
 */
inline constexpr const char *KestrelHardwareIds[] = {
    "KSL100-1",
    "KSL100-2",
    "KSL100-3",
    "KSL100-4",
};

} // namespace oz::device
