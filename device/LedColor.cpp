#include <oz/device/LedColor.hpp>

#include <algorithm>
#include <utility>

namespace oz::device {

namespace {

const std::pair<LedColor::Type, QString> Names[] = {
    {LedColor::Red, QStringLiteral("Red")},
    {LedColor::Green, QStringLiteral("Green")},
    {LedColor::Blue, QStringLiteral("Blue")},
    {LedColor::Cyan, QStringLiteral("Cyan")},
    {LedColor::Magenta, QStringLiteral("Magenta")},
    {LedColor::White, QStringLiteral("White")},
    {LedColor::Yellow, QStringLiteral("Yellow")},
};

} // namespace

LedColor::Type LedColor::fromBitset(bool red, bool green, bool blue)
{
    return Type((red ? Red : None) | (green ? Green : None) | (blue ? Blue : None));
}

QString LedColor::toName(Type color)
{
    const auto *found = std::find_if(
        std::begin(Names), std::end(Names), [color](const auto &named) { return named.first == color; });
    return found == std::end(Names) ? QString() : found->second;
}

} // namespace oz::device
