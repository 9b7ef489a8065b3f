#include <oz/models/ScriptRequests.hpp>

#include "InvalidArgument.hpp"

#include <cmath>
#include <limits>
#include <optional>

namespace oz::models {

namespace {

// Accepts numbers only, not what QVariant would convert to one.
std::optional<int> wholeNumber(const QVariant &value)
{
    using Limits = std::numeric_limits<int>;
    if (value.typeId() == QMetaType::Int)
        return value.toInt();
    const double number = value.toDouble();
    if (value.typeId() == QMetaType::Double && number == std::trunc(number) && number >= Limits::min()
        && number <= Limits::max())
        return int(number);
    return std::nullopt;
}

QString describe(const QVariant &value)
{
    if (!value.isValid())
        return QStringLiteral("missing");
    if (value.typeId() == QMetaType::QString)
        return u'"' + value.toString() + u'"';
    return value.canConvert<QString>() ? value.toString() : QString::fromLatin1(value.typeName());
}

} // namespace

ScriptRequests::ScriptRequests(QObject *parent) : QObject(parent) { }

ScriptRequests::~ScriptRequests() = default;

DeviceRequest *ScriptRequests::connectProfile(const QString &name)
{
    return follow(m_requests.connectProfile(name));
}

DeviceRequest *ScriptRequests::disconnectProfile(const QString &name)
{
    return follow(m_requests.disconnectProfile(name));
}

DeviceRequest *ScriptRequests::scanPeers()
{
    return follow(m_requests.scanPeers());
}

DeviceRequest *ScriptRequests::connectPeer(
    const QString &hardwareAddress, int intent, int wpsMethod, const QString &wpsPin)
{
    return follow(m_requests.connectPeer(hardwareAddress, device::WiFiDirectIntent::Type(intent),
        device::WiFiDirectWpsMethod::Type(wpsMethod), wpsPin));
}

DeviceRequest *ScriptRequests::cancelPeer()
{
    return follow(m_requests.cancelPeer());
}

DeviceRequest *ScriptRequests::startPeerSession()
{
    return follow(m_requests.startPeerSession());
}

DeviceRequest *ScriptRequests::stopPeerSession(const QString &key)
{
    return follow(m_requests.stopPeerSession(key));
}

DeviceRequest *ScriptRequests::peerIpAddress(const QString &hardwareAddress)
{
    return follow(m_requests.peerIpAddress(hardwareAddress));
}

DeviceRequest *ScriptRequests::scanSinks()
{
    return follow(m_requests.scanSinks());
}

DeviceRequest *ScriptRequests::connectSink(const QString &hardwareAddress, const QString &pin)
{
    return follow(m_requests.connectSink(hardwareAddress, pin));
}

DeviceRequest *ScriptRequests::disconnectSink()
{
    return follow(m_requests.disconnectSink());
}

DeviceRequest *ScriptRequests::pauseSink()
{
    return follow(m_requests.pauseSink());
}

DeviceRequest *ScriptRequests::resumeSink()
{
    return follow(m_requests.resumeSink());
}

DeviceRequest *ScriptRequests::shutDownMiracast()
{
    return follow(m_requests.shutDownMiracast());
}

DeviceRequest *ScriptRequests::flash(const QVariant &color, const QVariant &count)
{
    const auto colorNumber = wholeNumber(color);
    if (!colorNumber)
        return follow(refuse({FlashCall, "color", FlashColor, describe(color)}));
    const auto times = wholeNumber(count);
    if (!times)
        return follow(refuse({FlashCall, "count", FlashCount, describe(count)}));
    return follow(m_requests.flash(device::LedColor::Type(*colorNumber), *times));
}

DeviceRequest *ScriptRequests::vibrate(uint milliseconds)
{
    return follow(m_requests.vibrate(milliseconds));
}

DeviceRequest *ScriptRequests::follow(const QFuture<RequestResult> &future)
{
    // Without a parent, the script's engine could delete an unused request before it emits finished().
    auto *request = new DeviceRequest(future, this);
    connect(request, &DeviceRequest::finished, request, [request] { request->setParent(nullptr); });
    return request;
}

} // namespace oz::models
