#include "miracast/WirelessDisplayKind.hpp"

#include "linux/NetworkAddresses.hpp"
#include "miracast/AirSinks.hpp"
#include "miracast/NetworkSinks.hpp"
#include "miracast/WirelessDisplay.hpp"
#include "source/Error.hpp"
#include "wifi-direct/WpaWiFiDirectOf.hpp"

#include <oz/DeviceRoot.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace oz::services {

namespace {

const QString SinkOption = QStringLiteral("sink");
const QString MdnsOption = QStringLiteral("mdns");
const QString PortOption = QStringLiteral("port");
const QString LimitOption = QStringLiteral("connect-seconds");
const QString ExtendOption = QStringLiteral("extend");
const QString CasterOption = QStringLiteral("caster");
const QString CasterOfSeat = QStringLiteral("seat"); // in place of a program

constexpr int DefaultPort = 7236;
constexpr int LeastPort = 1024; // below which ozcast may not listen
constexpr int MostPort = 65'535;
constexpr double DefaultLimit = 6;
constexpr double LongestLimit = 300;

[[noreturn]] void refuse(const QString &option, const QString &value, const QString &expected)
{
    throw Error(QLatin1String("miracast = wireless-display: ") + option + u'=' + value
        + QLatin1String(" is not ") + expected);
}

int portIn(const QString &option, const QString &value, const QString &text, int least)
{
    bool isNumber = false;
    const int port = text.toInt(&isNumber);
    if (!isNumber || port < least || port > MostPort) {
        refuse(option, value,
            QStringLiteral("a port from %1 to %2").arg(QString::number(least), QString::number(MostPort)));
    }
    return port;
}

QList<CastProcess::Target> sinksOf(const SourceOptions &options)
{
    QList<CastProcess::Target> sinks;
    for (const QString &text : options.value(SinkOption).split(u',', Qt::SkipEmptyParts)) {
        CastProcess::Target sink{text.section(u':', 0, 0), NetworkSinks::ControlPort};
        if (!isIpv4(sink.address))
            refuse(SinkOption, text, QStringLiteral("an address such as 192.168.1.7 or 192.168.1.7:7250"));
        if (text.contains(u':'))
            sink.port = portIn(SinkOption, text, text.section(u':', 1), 1);
        const bool isThere = std::any_of(sinks.cbegin(), sinks.cend(),
            [&](const CastProcess::Target &each) { return each.address == sink.address; });
        if (isThere)
            refuse(SinkOption, text, QStringLiteral("named once"));
        sinks.append(sink);
    }
    return sinks;
}

bool isOn(const SourceOptions &options, const QString &option, bool fallback)
{
    const QString on = QStringLiteral("on");
    const QString off = QStringLiteral("off");
    const QString value = options.value(option, fallback ? on : off);
    if (value != on && value != off)
        refuse(option, value, QStringLiteral("on or off"));
    return value == on;
}

// What each cast is ordered with.
QJsonObject orderOf(const SourceOptions &options, int port)
{
    QJsonObject order{{QStringLiteral("port"), port}};
    if (isOn(options, ExtendOption, false))
        order.insert(QStringLiteral("picture"), QStringLiteral("further-output"));
    return order;
}

std::chrono::milliseconds limitOf(const SourceOptions &options)
{
    const QString value = options.value(LimitOption, QString::number(DefaultLimit));
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(seconds) || seconds < 0.1 || seconds > LongestLimit)
        refuse(LimitOption, value, QStringLiteral("a time from 0.1 to 300 seconds"));
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

// A tree of the system serves all sessions, whose screens only they can reach.
bool isOfSeat(const SourceOptions &options)
{
    const QString caster = options.value(CasterOption);
    return caster == CasterOfSeat || (caster.isEmpty() && deviceRoot().isEmpty());
}

std::shared_ptr<Source> makeSource(Providers &providers, const SourceOptions &options)
{
    const int port = portIn(PortOption, options.value(PortOption),
        options.value(PortOption, QString::number(DefaultPort)), LeastPort);
    const auto bus = providers.shared<SystemBus>();
    std::unique_ptr<CastOrigin> origin;
    if (isOfSeat(options))
        origin = std::make_unique<CastOfSeat>(bus);
    else
        origin = std::make_unique<CastChild>(options.value(CasterOption, CastChild::installedProgram()));
    const auto cast = std::make_shared<CastProcess>(std::move(origin));
    std::vector<std::unique_ptr<SinkWay>> ways;
    ways.push_back(std::make_unique<NetworkSinks>(
        cast, sinksOf(options), isOn(options, MdnsOption, true) ? bus : nullptr, limitOf(options)));
    ways.push_back(std::make_unique<AirSinks>(wpaWiFiDirectOf(providers), port));
    return std::make_shared<WirelessDisplay>(cast, std::move(ways), std::make_unique<FriendlyName>(bus),
        orderOf(options, port), providers.store());
}

QString obstacle()
{
    return isOfSeat({}) || !CastChild::installedProgram().isEmpty() ? QString() : CastChild::notInstalled();
}

} // namespace

SourceKind wirelessDisplayKind()
{
    return {QStringLiteral("wireless-display"), QStringLiteral("wireless displays, by ozcast and Avahi"),
        {SinkOption, MdnsOption, PortOption, LimitOption, ExtendOption, CasterOption}, makeSource, obstacle};
}

} // namespace oz::services
