#pragma once

#include <oz/device/BatteryCondition.hpp>
#include <oz/device/CellularTechnology.hpp>
#include <oz/device/DeviceOrientation.hpp>
#include <oz/device/LedColor.hpp>
#include <oz/device/MiracastDisplayState.hpp>
#include <oz/device/MiracastStopReason.hpp>
#include <oz/device/SimCardState.hpp>
#include <oz/device/UserActivityState.hpp>
#include <oz/device/WiFiDirectRole.hpp>

#include <QString>
#include <QStringList>

namespace oz::testing {

/*! The words that `ozdevice sim` has for the enumerators of the classes; each throws
 * PhoneError for a value that a phone cannot be given. */
namespace PhoneWords {
[[nodiscard]] QString of(device::BatteryCondition::Type condition);
[[nodiscard]] QString of(device::UserActivityState::Type state);
[[nodiscard]] QString of(device::DeviceOrientation::Type orientation);
[[nodiscard]] QString of(device::SimCardState::Type state);
[[nodiscard]] QString of(device::WiFiDirectRole::Type role);
[[nodiscard]] QString of(device::MiracastDisplayState::Type state);
[[nodiscard]] QString of(device::MiracastStopReason::Type reason);
[[nodiscard]] QStringList of(device::CellularTechnology::Types technologies);
/*! The colour that \a word means; None for one that means none. */
[[nodiscard]] device::LedColor::Type colorOf(const QString &word);
} // namespace PhoneWords

} // namespace oz::testing
