#include "ozdevice/FacilityTable.hpp"

#include "ozdevice/Command.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/NetworkDataUsage.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <algorithm>
#include <net/if.h>

namespace oz::tools {

namespace {

template <typename Facility>
FacilityEntry facility(const char *name, const char *help)
{
    return {QLatin1String(name), QLatin1String(help), &Facility::staticMetaObject, {},
        [](const QString &) { return std::make_unique<Facility>(); }};
}

// What the selector \a name of a facility selects, as its constructor takes it; nothing selected is the
// first one.
template <typename Selected>
Selected selectedBy(const char *name, const QString &text);

template <>
QString selectedBy(const char *, const QString &text)
{
    return text;
}

template <>
int selectedBy(const char *name, const QString &text)
{
    bool ok = text.isEmpty();
    const int number = ok ? 0 : text.toInt(&ok);
    if (!ok) {
        throw CommandError(WrongUse,
            QLatin1String("--") + QLatin1String(name) + QLatin1String(" is a whole number, not '") + text
                + u'\'');
    }
    return number;
}

// A facility of which there are several, told apart by an int or a QString.
template <typename Facility, typename Selected>
FacilityEntry facility(const char *name, const char *help, const char *selector)
{
    return {QLatin1String(name), QLatin1String(help), &Facility::staticMetaObject, QLatin1String(selector),
        [selector](const QString &selected) {
            return std::make_unique<Facility>(selectedBy<Selected>(selector, selected));
        }};
}

FacilityEntry deviceState()
{
    auto entry =
        facility<device::DeviceInfo>("device", "how the device is held, and whether somebody uses it");
    const QStringList parts{QStringLiteral("activity"), QStringLiteral("orientation")};
    entry.parts = parts;
    entry.isComplete = [](const QObject *object) {
        return qobject_cast<const device::DeviceInfo *>(object)->isOrientationValid();
    };
    return std::move(entry).alsoCalled(parts).from({QStringLiteral("/dev/power/mgr")});
}

QStringList displays()
{
    PpsObject object(QStringLiteral("/pps/services/display/displays"));
    if (!object.open(PpsOpenMode::Subscribe))
        return {};
    QStringList identifiers =
        PpsObject::decode(object.read()).value(QStringLiteral("@displays")).toMap().keys();
    std::sort(identifiers.begin(), identifiers.end(),
        [](const QString &a, const QString &b) { return a.toInt() < b.toInt(); });
    return identifiers;
}

FacilityEntry display()
{
    auto entry = facility<device::DisplayInfo, int>("display", "a display", "display");
    // Nothing selected is the primary one, whatever its identifier.
    entry.make = [chosen = entry.make](const QString &selected) {
        return selected.isEmpty() ? std::make_unique<device::DisplayInfo>() : chosen(selected);
    };
    entry.instances = displays;
    return std::move(entry)
        .from({QStringLiteral("/pps/services/display/displays")})
        .measuredIn({{QStringLiteral("pixelSize"), {QStringLiteral("px"), QStringLiteral("-1x-1")}},
            {QStringLiteral("physicalSize"), {QStringLiteral("mm"), QStringLiteral("-1x-1")}},
            {QStringLiteral("resolution"), {QStringLiteral("px/m"), QStringLiteral("-1x-1")}}});
}

FacilityEntry cellularNetwork()
{
    auto entry =
        facility<device::CellularNetworkInfo, int>("cellular-network", "a cellular network in use", "index");
    static const QStringList indices{QStringLiteral("0"), QStringLiteral("1")};
    // By their number: the second index has a technology on every device that might run two.
    entry.instances = [] { return indices.mid(0, device::CellularRadioInfo().networkCount()); };
    entry.mayCome = [](const QString &selected) { return indices.contains(selected); };
    return std::move(entry)
        .from({QStringLiteral("/pps/services/cellular/radioctrl/status_public")})
        .measuredIn({{QStringLiteral("signalStrength"), {QStringLiteral("dBm"), QStringLiteral("0")}}});
}

FacilityEntry dataProfile()
{
    using Result = device::CellularConnectionRequestResult;
    auto entry =
        facility<device::CellularDataInterface, QString>("data-profile", "a cellular data profile", "name");
    entry.instances = [] { return device::CellularDataInterface().allNames(); };
    entry.mayCome = [](const QString &) { return true; };
    entry.isNothingUnselected = true;
    entry.methodsOfNone = {"allNames"};
    return std::move(entry)
        .from({QStringLiteral("/pps/services/cds/cnice/status")})
        .controlledBy("/pps/services/cds/cnice/%1_control")
        .returning<Result::Type>({"requestConnect", "requestDisconnect"}, Result::Requested);
}

QStringList networkInterfaces()
{
    QStringList names;
    struct if_nameindex *all = ::if_nameindex();
    for (const auto *one = all; one && one->if_index != 0; ++one)
        names.append(QString::fromUtf8(one->if_name));
    ::if_freenameindex(all);
    return names;
}

FacilityEntry networkUsage()
{
    auto entry = facility<device::NetworkDataUsage, QString>(
        "network", "the traffic of a network interface", "interface");
    entry.readAnew = [](QObject *object) {
        return qobject_cast<device::NetworkDataUsage *>(object)->update();
    };
    entry.instances = networkInterfaces;
    entry.isNothingUnselected = true;
    return entry;
}

FacilityEntry wifiDirect()
{
    using device::WiFiDirectResult;
    return facility<device::WiFiDirect>("wifi-direct", "Wi-Fi Direct: peers, connection and requests")
        .alsoCalled({QStringLiteral("wifidirect")})
        .from({QStringLiteral("/pps/services/wifi_p2p/manager/status")})
        .servedBy("/pps/services/wifi_p2p/manager/control")
        .controlledBy("/pps/services/wifi_p2p/manager/control")
        .answeredBy({{"requestScan", {"scanCompleted", "scanning"}}})
        .returning<WiFiDirectResult::Type>({"requestScan", "requestStartSession", "requestStopSession",
                                               "requestConnect", "cancelConnectRequest"},
            WiFiDirectResult::Success)
        .returning<device::WiFiDirectDeviceType::Type>({"deviceType"});
}

} // namespace

QString FacilityEntry::title(const QString &selected) const
{
    return selected.isEmpty() ? name : name + u' ' + selected;
}

FacilityEntry FacilityEntry::alsoCalled(const QStringList &words) &&
{
    aliases = words;
    return std::move(*this);
}

FacilityEntry FacilityEntry::from(const QStringList &paths) &&
{
    objects = paths;
    return std::move(*this);
}

FacilityEntry FacilityEntry::busyWhile(const char *property) &&
{
    busy = property;
    return std::move(*this);
}

FacilityEntry FacilityEntry::servedBy(const char *path) &&
{
    service = QLatin1String(path);
    return std::move(*this);
}

FacilityEntry FacilityEntry::controlledBy(const char *path) &&
{
    control = QLatin1String(path);
    return std::move(*this);
}

FacilityEntry FacilityEntry::answeredBy(const QHash<QByteArray, LaterAnswer> &answersOfMethods) &&
{
    answers = answersOfMethods;
    return std::move(*this);
}

FacilityEntry FacilityEntry::reading(const QList<QByteArray> &properties) &&
{
    dynamicProperties = properties;
    return std::move(*this);
}

FacilityEntry FacilityEntry::toldBy(const char *path) &&
{
    activity.append(QLatin1String(path));
    return std::move(*this);
}

FacilityEntry FacilityEntry::measuredIn(const QHash<QString, Measure> &measuresOfProperties) &&
{
    measures = measuresOfProperties;
    return std::move(*this);
}

const std::vector<FacilityEntry> &facilityTable()
{
    using namespace oz::device;
    // Its flag set is read by it, see meta::enumOf().
    qRegisterMetaType<WiFiDirectSecondaryDeviceType::Type>();
    static const std::vector<FacilityEntry> table{
        facility<SdCardInfo>("sdcard", "the removable SD card")
            .from({QStringLiteral("/pps/system/filesystem/removable/sdcard")}),
        facility<BatteryInfo>("battery", "the battery and its chargers")
            .from({QStringLiteral("/pps/system/BattMgr/status")})
            .measuredIn({{QStringLiteral("level"), {QStringLiteral("%"), QStringLiteral("-1")}},
                {QStringLiteral("fullChargeCapacity"), {QStringLiteral("mAh"), QStringLiteral("-1")}},
                {QStringLiteral("temperature"), {QStringLiteral("\u00B0C"), QStringLiteral("nan")}}}),
        facility<HardwareInfo>("hardware", "what the device is: identifiers, names and parts")
            .from({QStringLiteral("/pps/services/private/deviceproperties"),
                QStringLiteral("/pps/services/deviceproperties"),
                QStringLiteral("/pps/services/hw_info/inventory")}),
        deviceState(),
        facility<SimCardInfo>("simcard", "the SIM card")
            .from({QStringLiteral("/pps/services/cellular/uicc/card0/status_private")}),
        facility<CellularRadioInfo>("radio", "the cellular radio")
            .from({QStringLiteral("/pps/services/cellular/radioctrl/status_public")}),
        cellularNetwork(),
        dataProfile(),
        display(),
        facility<Led>("led", "the notification LED")
            .from({QStringLiteral("/pps/services/led/status")})
            .busyWhile("active")
            .servedBy("/pps/services/led/control")
            .toldBy("/pps/services/led/activity"),
        facility<VibrationController>("vibration", "the vibration motor")
            .from({QStringLiteral("/pps/services/vibrator")})
            .servedBy("/pps/services/vibrator")
            .toldBy("/pps/services/vibration/activity"),
        wifiDirect(),
        facility<MiracastManager>("miracast", "wireless displays: sinks and the session with one")
            .from({QStringLiteral("/pps/services/miracast/status")})
            .servedBy("/pps/services/miracast/control")
            .answeredBy({{"requestScan", "scanCompleted"}, {"requestConnect", "connectCompleted"},
                {"requestDisconnect", "disconnectCompleted"}, {"requestPause", "pauseCompleted"},
                {"requestResume", "resumeCompleted"}, {"requestShutdown", "shutdownCompleted"}})
            .reading({"miracast_name", "miracast_persistent"})
            .measuredIn({{QStringLiteral("devicePixelSize"), {QStringLiteral("px"), QStringLiteral("0x0")}}}),
        networkUsage(),
    };
    return table;
}

std::vector<const FacilityEntry *> phoneFacilities()
{
    std::vector<const FacilityEntry *> entries;
    for (const FacilityEntry &entry : facilityTable()) {
        if (!entry.readAnew)
            entries.push_back(&entry);
    }
    return entries;
}

QStringList facilityNames()
{
    QStringList names;
    for (const FacilityEntry &entry : facilityTable())
        names.append(entry.name);
    return names;
}

const FacilityEntry *findFacility(const QString &name)
{
    const auto &table = facilityTable();
    const auto found = std::find_if(
        table.begin(), table.end(), [&](const FacilityEntry &entry) { return entry.isCalled(name); });
    return found == table.end() ? nullptr : &*found;
}

} // namespace oz::tools
