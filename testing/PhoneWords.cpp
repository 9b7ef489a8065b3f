#include "PhoneWords.hpp"

#include <oz/testing/PhoneError.hpp>

#include <QMetaEnum>

#include <algorithm>
#include <iterator>

namespace oz::testing {

using namespace device;

namespace {

template <typename Value>
struct Word
{
    Value value;
    const char *word;
};

constexpr Word<BatteryCondition::Type> Conditions[] = {
    {BatteryCondition::Unknown, "unknown"}, {BatteryCondition::OK, "ok"}, {BatteryCondition::Bad, "bad"}};

constexpr Word<UserActivityState::Type> Activities[] = {
    {UserActivityState::Active, "active"}, {UserActivityState::Inactive, "standby"}};

constexpr Word<DeviceOrientation::Type> Orientations[] = {{DeviceOrientation::FaceUp, "face-up"},
    {DeviceOrientation::FaceDown, "face-down"}, {DeviceOrientation::TopUp, "top-up"},
    {DeviceOrientation::LeftUp, "left-up"}, {DeviceOrientation::RightUp, "right-up"},
    {DeviceOrientation::BottomUp, "bottom-up"}};

constexpr Word<SimCardState::Type> Cards[] = {{SimCardState::NotDetected, "removed"},
    {SimCardState::Incompatible, "incompatible"}, {SimCardState::NotProvisioned, "not-provisioned"},
    {SimCardState::ReadError, "unreadable"}, {SimCardState::PinRequired, "pin"},
    {SimCardState::Ready, "ready"}};

constexpr Word<WiFiDirectRole::Type> Roles[] = {{WiFiDirectRole::GroupOwner, "owner"},
    {WiFiDirectRole::Client, "client"}, {WiFiDirectRole::NoRole, "none"}};

constexpr Word<MiracastDisplayState::Type> Sessions[] = {{MiracastDisplayState::Stopped, "none"},
    {MiracastDisplayState::Playing, "playing"}, {MiracastDisplayState::Paused, "paused"}};

// The codes of the service.
constexpr Word<MiracastStopReason::Type> StopReasons[] = {{MiracastStopReason::Internal, "1"},
    {MiracastStopReason::Application, "2"}, {MiracastStopReason::NotSupported, "4"},
    {MiracastStopReason::ItPolicy, "5"}, {MiracastStopReason::P2PFailure, "6"}};

constexpr Word<CellularTechnology::Type> Technologies[] = {{CellularTechnology::Gsm, "gsm"},
    {CellularTechnology::Umts, "umts"}, {CellularTechnology::Cdma1X, "cdma_1x"},
    {CellularTechnology::Evdo, "evdo"}, {CellularTechnology::Lte, "lte"}};

constexpr Word<LedColor::Type> Colors[] = {{LedColor::Red, "red"}, {LedColor::Green, "green"},
    {LedColor::Blue, "blue"}, {LedColor::Yellow, "yellow"}, {LedColor::Cyan, "cyan"},
    {LedColor::Magenta, "magenta"}, {LedColor::White, "white"}};

template <typename Value, std::size_t Size>
QString wordOf(const Word<Value> (&words)[Size], Value value)
{
    for (const Word<Value> &known : words) {
        if (known.value == value)
            return QLatin1String(known.word);
    }
    const QMetaEnum all = QMetaEnum::fromType<Value>();
    const char *name = all.valueToKey(int(value));
    throw PhoneError(QLatin1String(all.scope()) + QLatin1String("::")
        + (name ? QString::fromLatin1(name) : QString::number(int(value)))
        + QLatin1String(" is nothing that a phone can be given"));
}

template <typename Value, typename Flags, std::size_t Size>
QStringList wordsOf(const Word<Value> (&words)[Size], Flags flags)
{
    QStringList found;
    for (const Word<Value> &known : words) {
        if (flags.testFlag(known.value))
            found.append(QLatin1String(known.word));
    }
    return found;
}

} // namespace

QString PhoneWords::of(BatteryCondition::Type condition)
{
    return wordOf(Conditions, condition);
}

QString PhoneWords::of(UserActivityState::Type state)
{
    return wordOf(Activities, state);
}

QString PhoneWords::of(DeviceOrientation::Type orientation)
{
    return wordOf(Orientations, orientation);
}

QString PhoneWords::of(SimCardState::Type state)
{
    return wordOf(Cards, state);
}

QString PhoneWords::of(WiFiDirectRole::Type role)
{
    return wordOf(Roles, role);
}

QString PhoneWords::of(MiracastDisplayState::Type state)
{
    return wordOf(Sessions, state);
}

QString PhoneWords::of(MiracastStopReason::Type reason)
{
    return wordOf(StopReasons, reason);
}

QStringList PhoneWords::of(CellularTechnology::Types technologies)
{
    return wordsOf(Technologies, technologies);
}

LedColor::Type PhoneWords::colorOf(const QString &word)
{
    const auto *known = std::find_if(std::begin(Colors), std::end(Colors),
        [&](const Word<LedColor::Type> &color) { return word == QLatin1String(color.word); });
    return known == std::end(Colors) ? LedColor::None : known->value;
}

} // namespace oz::testing
