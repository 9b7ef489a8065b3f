#pragma once

/*
 * The words and numbers of the Wi-Fi Direct manager, and what they stand for.
 */

#include "NamedValue.hpp"

#include <oz/device/WiFiDirectConnectionState.hpp>
#include <oz/device/WiFiDirectIntent.hpp>
#include <oz/device/WiFiDirectRole.hpp>
#include <oz/device/WiFiDirectWpsMethod.hpp>

namespace oz::device::WiFiDirectWords {

inline constexpr NamedValue<WiFiDirectIntent::Type> Intents[] = {
    {"GO", WiFiDirectIntent::GroupOwner},
    {"client", WiFiDirectIntent::Client},
    {"any", WiFiDirectIntent::Any},
};

inline constexpr NamedValue<WiFiDirectRole::Type> Roles[] = {
    {"GO", WiFiDirectRole::GroupOwner},
    {"client", WiFiDirectRole::Client},
};

inline constexpr NamedValue<WiFiDirectConnectionState::Type> ConnectionStates[] = {
    {"connected", WiFiDirectConnectionState::Connected},
    {"connecting", WiFiDirectConnectionState::Connecting},
    {"disconnected", WiFiDirectConnectionState::Disconnected},
};

/*! The manager has numbers of its own for the methods. */
inline constexpr struct
{
    WiFiDirectWpsMethod::Type method;
    int number;
} WpsMethods[] = {
    {WiFiDirectWpsMethod::PushButtonConfiguration, 0},
    {WiFiDirectWpsMethod::RandomPin, 2},
    {WiFiDirectWpsMethod::PresetPin, 3},
};

/*! The error numbers of the manager, wherever this runs. */
enum ManagerError { Busy = 16, NoDevice = 19, Invalid = 22, NoNetwork = 64 };

} // namespace oz::device::WiFiDirectWords
