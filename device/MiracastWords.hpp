#pragma once

/*
 * The words and numbers of the wireless-display service, and what they stand for.
 */

#include <oz/device/MiracastConnectionState.hpp>
#include <oz/device/MiracastDeviceCategory.hpp>
#include <oz/device/MiracastDeviceSubCategory.hpp>
#include <oz/device/MiracastDisplayState.hpp>
#include <oz/device/MiracastResult.hpp>
#include <oz/device/MiracastStatus.hpp>
#include <oz/device/MiracastStopReason.hpp>

#include <QString>

namespace oz::device {

struct WpsDeviceType;

/*! The kind of device that a sink is. */
struct MiracastSinkType
{
    MiracastDeviceCategory::Type category = MiracastDeviceCategory::Unknown;
    MiracastDeviceSubCategory::Type subCategory = MiracastDeviceSubCategory::Unknown;
};

/*! Unknown, after a warning, for what is none of the service's words. */
[[nodiscard]] MiracastConnectionState::Type miracastConnectionState(const QString &text);
/*! Unknown, after a warning, for what is none of the service's words. */
[[nodiscard]] MiracastDisplayState::Type miracastDisplayState(const QString &text);
/*! Unknown for what is none of the service's words. */
[[nodiscard]] MiracastStatus::Type miracastStatus(const QString &text);

/*! The type of which both numbers are known; Unknown for both otherwise. */
[[nodiscard]] MiracastSinkType convertType(const WpsDeviceType &type);
[[nodiscard]] MiracastStopReason::Type convertStopReasonCode(int code);
/*! Warns of codes that say more than the result, or that are not known. */
[[nodiscard]] MiracastResult::Type convertErrorCode(int code);

} // namespace oz::device
