#pragma once

#include <oz/device/BatteryCondition.hpp>
#include <oz/device/CellularService.hpp>
#include <oz/device/CellularTechnology.hpp>
#include <oz/device/DeviceOrientation.hpp>
#include <oz/device/DisplayTechnology.hpp>
#include <oz/device/HdmiConnector.hpp>
#include <oz/device/LedColor.hpp>
#include <oz/device/MiracastDisplayState.hpp>
#include <oz/device/MiracastStopReason.hpp>
#include <oz/device/SimCardState.hpp>
#include <oz/device/UserActivityState.hpp>
#include <oz/device/WiFiDirectIntent.hpp>
#include <oz/device/WiFiDirectRole.hpp>
#include <oz/device/WiFiDirectWpsMethod.hpp>

#include <QString>
#include <QStringList>

namespace oz::testing {

/*! The words that the phone's file and `ozdevice sim` have for the enumerators of the classes; each throws
 * PhoneError for a value that a phone cannot be given. */
namespace PhoneWords {
[[nodiscard]] QString of(device::BatteryCondition::Type condition);
[[nodiscard]] QString of(device::UserActivityState::Type state);
[[nodiscard]] QString of(device::DeviceOrientation::Type orientation);
[[nodiscard]] QString of(device::DisplayTechnology::Type technology);
[[nodiscard]] QString of(device::HdmiConnector::Type connector);
[[nodiscard]] QString of(device::SimCardState::Type state);
[[nodiscard]] QString of(device::WiFiDirectIntent::Type intent);
[[nodiscard]] QString of(device::WiFiDirectRole::Type role);
[[nodiscard]] QString of(device::WiFiDirectWpsMethod::Type method);
[[nodiscard]] QString of(device::MiracastDisplayState::Type state);
[[nodiscard]] QString of(device::MiracastStopReason::Type reason);
[[nodiscard]] QString of(device::CellularTechnology::Type technology);
[[nodiscard]] QStringList of(device::CellularTechnology::Types technologies);
[[nodiscard]] QStringList of(device::CellularService::Types services);
/*! The colour that \a word means; None for one that means none. */
[[nodiscard]] device::LedColor::Type colorOf(const QString &word);
} // namespace PhoneWords

} // namespace oz::testing
