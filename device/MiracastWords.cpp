#include "MiracastWords.hpp"

#include "Log.hpp"
#include "NamedValue.hpp"
#include "WpsDeviceType.hpp"

#include <algorithm>
#include <iterator>

namespace oz::device {

namespace {

using Result = MiracastResult;
using SubCategory = MiracastDeviceSubCategory;
using StopReason = MiracastStopReason;

constexpr NamedValue<MiracastConnectionState::Type> ConnectionStates[] = {
    {"CONNECTED", MiracastConnectionState::Connected},
    {"CONNECTING", MiracastConnectionState::Connecting},
    {"DISCONNECTED", MiracastConnectionState::Disconnected},
};
constexpr NamedValue<MiracastDisplayState::Type> DisplayStates[] = {
    {"PLAYING", MiracastDisplayState::Playing},
    {"PAUSED", MiracastDisplayState::Paused},
    {"STOPPED", MiracastDisplayState::Stopped},
};
constexpr NamedValue<MiracastStatus::Type> Statuses[] = {
    {"RUNNING", MiracastStatus::Running},
    {"STOPPED", MiracastStatus::Stopped},
};

// The sub-categories of each category, which count from 1.
constexpr struct
{
    int category;
    SubCategory::Type first;
    SubCategory::Type last;
} SubCategories[] = {
    {1, SubCategory::PC, SubCategory::Tablet},
    {2, SubCategory::Keyboard, SubCategory::BarcodeReader},
    {3, SubCategory::PrinterOrPrintServer, SubCategory::AllInOne},
    {4, SubCategory::DigitalStillCamera, SubCategory::SecurityCamera},
    {5, SubCategory::NAS, SubCategory::NAS},
    {6, SubCategory::AP, SubCategory::Gateway},
    {7, SubCategory::Television, SubCategory::Monitor},
    {8, SubCategory::DAR, SubCategory::PortableVideoPlayer},
    {9, SubCategory::XBox, SubCategory::PortableGamingDevice},
    {10, SubCategory::WindowsMobile, SubCategory::SmartphoneDualMode},
    {11, SubCategory::AudioTunerReceiver, SubCategory::Microphone},
};

// By the service's codes, from 0.
constexpr StopReason::Type StopReasons[] = {StopReason::NotStopped, StopReason::Internal,
    StopReason::Application, StopReason::Internal, StopReason::NotSupported, StopReason::ItPolicy,
    StopReason::P2PFailure, StopReason::P2PFailure, StopReason::P2PFailure, StopReason::P2PFailure};

// The service's error codes, and the warning with its code where there is one.
struct ErrorCode
{
    int code;
    Result::Type result;
    const char *warning = nullptr;
};

constexpr const char *ConnectionCode = "MiracastManager:  Connection Code (";
constexpr ErrorCode ErrorCodes[] = {
    {0, Result::Success},
    {-1000, Result::PinRequired},
    {-1001, Result::PinIncorrect},
    {-1002, Result::ConnectionFailed, ConnectionCode},
    {-1003, Result::ConnectionFailed, ConnectionCode},
    {-1004, Result::ConnectionFailed, ConnectionCode},
    {-1005, Result::InvalidRequest},
    {-1007, Result::RequestCancelled},
    {-1008, Result::WiFiFailure},
    {-1009, Result::DeviceNotFound},
    {-1010, Result::MiracastFailure},
    {-1012, Result::DisabledByPolicy},
};
constexpr ErrorCode OtherErrorCode{0, Result::InternalError, "MiracastManager:  Error Code ("};

SubCategory::Type convertSubCategoryId(int category, int subCategory)
{
    for (const auto &[number, first, last] : SubCategories) {
        if (number == category && subCategory >= 1 && subCategory <= last - first + 1)
            return SubCategory::Type(first + subCategory - 1);
    }
    return SubCategory::Unknown;
}

// The value that a text stands for; Unknown, after a warning that ends with the text, for any other.
template <typename Value, std::size_t Size>
Value valueOrWarn(const NamedValue<Value> (&table)[Size], const QString &text, const char *warning)
{
    const auto known = valueNamed(table, text);
    if (!known)
        qCWarning(logDevice) << QString(QLatin1String(warning) + text + u')');
    return known.value_or(Value());
}

} // namespace

MiracastConnectionState::Type miracastConnectionState(const QString &text)
{
    return valueOrWarn(
        ConnectionStates, text, "MiracastManager::setConnectionState - Invalid connection state (");
}

MiracastDisplayState::Type miracastDisplayState(const QString &text)
{
    return valueOrWarn(DisplayStates, text, "MiracastManager::setDisplayState - Invalid display state (");
}

MiracastStatus::Type miracastStatus(const QString &text)
{
    return valueNamed(Statuses, text).value_or(MiracastStatus::Unknown);
}

MiracastSinkType convertType(const WpsDeviceType &type)
{
    if (!type.category || !type.subCategory)
        return {};
    return {wpsCategory<MiracastDeviceCategory>(*type.category),
        convertSubCategoryId(*type.category, *type.subCategory)};
}

MiracastStopReason::Type convertStopReasonCode(int code)
{
    return code >= 0 && code < int(std::size(StopReasons)) ? StopReasons[code] : StopReason::Internal;
}

MiracastResult::Type convertErrorCode(int code)
{
    const auto *known = std::find_if(std::begin(ErrorCodes), std::end(ErrorCodes),
        [code](const ErrorCode &entry) { return entry.code == code; });
    const ErrorCode &entry = known == std::end(ErrorCodes) ? OtherErrorCode : *known;
    if (entry.warning)
        qCWarning(logDevice) << entry.warning << code << ")";
    return entry.result;
}

} // namespace oz::device
