#include "facilities/FacilityTable.hpp"

#include "facilities/CommandError.hpp"

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

constexpr QLatin1String DisplaysPath("/pps/services/display/displays");

template <typename Facility>
std::unique_ptr<QObject> makeOnly(const QString &)
{
    return std::make_unique<Facility>();
}

template <typename Facility>
std::unique_ptr<QObject> makeNamed(const QString &name)
{
    return std::make_unique<Facility>(name);
}

// Without a selected number, the default constructor decides.
template <typename Facility>
std::function<std::unique_ptr<QObject>(const QString &)> makeNumbered(const QString &selector)
{
    return [selector](const QString &selected) {
        bool ok = true;
        const int number = selected.isEmpty() ? 0 : selected.toInt(&ok);
        if (!ok)
            throw CommandError(WrongUse, u"--%1 is a whole number, not '%2'"_s.arg(selector, selected));
        return selected.isEmpty() ? std::make_unique<Facility>() : std::make_unique<Facility>(number);
    };
}

template <typename Enumeration>
QHash<QByteArray, ReturnedEnum> returning(
    const QList<QByteArray> &methods, std::optional<Enumeration> success = {})
{
    QHash<QByteArray, ReturnedEnum> returns;
    for (const QByteArray &method : methods) {
        returns.insert(method,
            {QMetaEnum::fromType<Enumeration>(),
                success ? std::optional(int(*success)) : std::optional<int>()});
    }
    return returns;
}

bool isOrientationValid(const QObject *object)
{
    return qobject_cast<const device::DeviceInfo *>(object)->isOrientationValid();
}

QStringList displays()
{
    PpsObject object(DisplaysPath);
    if (!object.open(PpsOpenMode::Subscribe))
        return {};
    QStringList identifiers = PpsObject::decode(object.read()).value(u"@displays"_s).toMap().keys();
    std::sort(identifiers.begin(), identifiers.end(),
        [](const QString &a, const QString &b) { return a.toInt() < b.toInt(); });
    return identifiers;
}

const QStringList NetworkIndices{u"0"_s, u"1"_s};

// The count decides: the second index has a technology on every device that could run two networks.
QStringList cellularNetworks()
{
    return NetworkIndices.mid(0, device::CellularRadioInfo().networkCount());
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

QHash<QByteArray, ReturnedEnum> wifiDirectReturns()
{
    using device::WiFiDirectResult;
    auto returns =
        returning<WiFiDirectResult::Type>({"requestScan", "requestStartSession", "requestStopSession",
                                              "requestConnect", "cancelConnectRequest"},
            WiFiDirectResult::Success);
    returns.insert(returning<device::WiFiDirectDeviceType::Type>({"deviceType"}));
    return returns;
}

using namespace oz::device;
using Rows = std::vector<FacilityEntry>;

Rows deviceRows()
{
    return {
        {.name = u"sdcard"_s,
            .help = u"the removable SD card"_s,
            .type = &SdCardInfo::staticMetaObject,
            .make = makeOnly<SdCardInfo>,
            .objects = {u"/pps/system/filesystem/removable/sdcard"_s},
            .glance = {u"state"_s, u"activity"_s}},
        {.name = u"battery"_s,
            .help = u"the battery and its chargers"_s,
            .type = &BatteryInfo::staticMetaObject,
            .make = makeOnly<BatteryInfo>,
            .objects = {u"/pps/system/BattMgr/status"_s},
            .glance = {u"level"_s, u"chargingState"_s, u"temperature"_s, u"condition"_s},
            .measures = {{u"level"_s, {u"%"_s, u"-1"_s}}, {u"fullChargeCapacity"_s, {u"mAh"_s, u"-1"_s}},
                {u"temperature"_s, {u"\u00B0C"_s, u"nan"_s}}}},
        {.name = u"hardware"_s,
            .help = u"what the device is: identifiers, names and parts"_s,
            .type = &HardwareInfo::staticMetaObject,
            .make = makeOnly<HardwareInfo>,
            .objects = {u"/pps/services/private/deviceproperties"_s, u"/pps/services/deviceproperties"_s,
                u"/pps/services/hw_info/inventory"_s},
            .glance = {u"deviceName"_s, u"modelName"_s}},
        {.name = u"device"_s,
            .help = u"how the device is held, and whether somebody uses it"_s,
            .type = &DeviceInfo::staticMetaObject,
            .make = makeOnly<DeviceInfo>,
            .aliases = {u"activity"_s, u"orientation"_s},
            .daemonParts = {u"activity"_s, u"orientation"_s},
            .objects = {u"/dev/power/mgr"_s},
            .glance = {u"orientation"_s, u"activityState"_s},
            .isComplete = isOrientationValid},
    };
}

Rows cellularRows()
{
    using Result = CellularConnectionRequestResult;
    return {
        {.name = u"simcard"_s,
            .help = u"the SIM card"_s,
            .type = &SimCardInfo::staticMetaObject,
            .make = makeOnly<SimCardInfo>,
            .objects = {u"/pps/services/cellular/uicc/card0/status_private"_s},
            .glance = {u"state"_s}},
        {.name = u"radio"_s,
            .help = u"the cellular radio"_s,
            .type = &CellularRadioInfo::staticMetaObject,
            .make = makeOnly<CellularRadioInfo>,
            .objects = {u"/pps/services/cellular/radioctrl/status_public"_s},
            .glance = {u"poweredOn"_s, u"activeTechnologies"_s, u"dataEnabled"_s, u"dataRoaming"_s}},
        {.name = u"cellular-network"_s,
            .help = u"a cellular network in use"_s,
            .type = &CellularNetworkInfo::staticMetaObject,
            .make = makeNumbered<CellularNetworkInfo>(u"index"_s),
            .objects = {u"/pps/services/cellular/radioctrl/status_public"_s},
            .glance = {u"signalStrength"_s, u"technology"_s, u"displayName"_s, u"roaming"_s},
            .measures = {{u"signalStrength"_s, {u"dBm"_s, u"0"_s}}},
            .selector = u"index"_s,
            .instances = cellularNetworks,
            .mayAppear = [](const QString &selected) { return NetworkIndices.contains(selected); }},
        {.name = u"data-profile"_s,
            .help = u"a cellular data profile"_s,
            .type = &CellularDataInterface::staticMetaObject,
            .make = makeNamed<CellularDataInterface>,
            .objects = {u"/pps/services/cds/cnice/status"_s},
            .glance = {u"connectionState"_s, u"valid"_s},
            .calls = {.control = u"/pps/services/cds/cnice/%1_control"_s,
                .returns =
                    returning<Result::Type>({"requestConnect", "requestDisconnect"}, Result::Requested),
                .methodsWithoutSelection = {"allNames"}},
            .selector = u"name"_s,
            .instances = [] { return CellularDataInterface().allNames(); },
            .mayAppear = [](const QString &) { return true; },
            .needsSelection = true},
    };
}

Rows outputRows()
{
    return {
        {.name = u"display"_s,
            .help = u"a display"_s,
            .type = &DisplayInfo::staticMetaObject,
            .make = makeNumbered<DisplayInfo>(u"display"_s),
            .objects = {DisplaysPath},
            .glance = {u"attached"_s, u"displayName"_s, u"pixelSize"_s},
            .measures = {{u"pixelSize"_s, {u"px"_s, u"-1x-1"_s}}, {u"physicalSize"_s, {u"mm"_s, u"-1x-1"_s}},
                {u"resolution"_s, {u"px/m"_s, u"-1x-1"_s}}},
            .selector = u"display"_s,
            .instances = displays},
        {.name = u"led"_s,
            .help = u"the notification LED"_s,
            .type = &Led::staticMetaObject,
            .make = makeOnly<Led>,
            .objects = {u"/pps/services/led/status"_s},
            .glance = {u"red"_s, u"green"_s, u"blue"_s, u"flashes"_s},
            .calls = {.busy = "active", .service = u"/pps/services/led/control"_s},
            .activity = {u"/pps/services/led/activity"_s}},
        {.name = u"vibration"_s,
            .help = u"the vibration motor"_s,
            .type = &VibrationController::staticMetaObject,
            .make = makeOnly<VibrationController>,
            .objects = {u"/pps/services/vibrator"_s},
            .glance = {u"running"_s, u"runs"_s},
            .calls = {.service = u"/pps/services/vibrator"_s},
            .activity = {u"/pps/services/vibration/activity"_s}},
    };
}

Rows connectionRows()
{
    return {
        {.name = u"wifi-direct"_s,
            .help = u"Wi-Fi Direct: peers, connection and requests"_s,
            .type = &WiFiDirect::staticMetaObject,
            .make = makeOnly<WiFiDirect>,
            .aliases = {u"wifidirect"_s},
            .objects = {u"/pps/services/wifi_p2p/manager/status"_s},
            .glance = {u"connectionState"_s, u"scanning"_s, u"enabled"_s},
            .calls = {.service = u"/pps/services/wifi_p2p/manager/control"_s,
                .control = u"/pps/services/wifi_p2p/manager/control"_s,
                .answers = {{"requestScan", {"scanCompleted", "scanning"}}},
                .returns = wifiDirectReturns()}},
        {.name = u"miracast"_s,
            .help = u"wireless displays: sinks and the session with one"_s,
            .type = &MiracastManager::staticMetaObject,
            .make = makeOnly<MiracastManager>,
            .objects = {u"/pps/services/miracast/status"_s},
            .glance = {u"connectionState"_s, u"displayState"_s, u"status"_s},
            .measures = {{u"devicePixelSize"_s, {u"px"_s, u"0x0"_s}}},
            .calls = {.service = u"/pps/services/miracast/control"_s,
                .answers = {{"requestScan", {"scanCompleted"}}, {"requestConnect", {"connectCompleted"}},
                    {"requestDisconnect", {"disconnectCompleted"}}, {"requestPause", {"pauseCompleted"}},
                    {"requestResume", {"resumeCompleted"}}, {"requestShutdown", {"shutdownCompleted"}}},
                .dynamicProperties = {"miracast_name", "miracast_persistent"}}},
        {.name = u"network"_s,
            .help = u"the traffic of a network interface"_s,
            .type = &NetworkDataUsage::staticMetaObject,
            .make = makeNamed<NetworkDataUsage>,
            .glance = {u"bytesReceived"_s, u"bytesSent"_s},
            .calls = {.falseOnFailure = {"update"}},
            .refresh = [](QObject *object) { return qobject_cast<NetworkDataUsage *>(object)->update(); },
            .selector = u"interface"_s,
            .instances = networkInterfaces,
            .needsSelection = true},
    };
}

} // namespace

QString FacilityEntry::title(const QString &selected) const
{
    return selected.isEmpty() ? name : name + u' ' + selected;
}

QStringList FacilityEntry::selections() const
{
    return instances ? instances() : QStringList{QString()};
}

QStringList FacilityEntry::feedingParts() const
{
    return daemonParts.isEmpty() ? QStringList{name} : daemonParts;
}

const std::vector<FacilityEntry> &facilityTable()
{
    // meta::enumOf() finds the flag set through its registered enumeration.
    qRegisterMetaType<device::WiFiDirectSecondaryDeviceType::Type>();
    static const Rows table = [] {
        Rows all;
        for (const Rows &rows : {deviceRows(), cellularRows(), outputRows(), connectionRows()})
            all.insert(all.end(), rows.begin(), rows.end());
        return all;
    }();
    return table;
}

std::vector<const FacilityEntry *> phoneFacilities()
{
    std::vector<const FacilityEntry *> entries;
    for (const FacilityEntry &entry : facilityTable()) {
        if (!entry.refresh)
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
        table.begin(), table.end(), [&](const FacilityEntry &entry) { return entry.hasName(name); });
    return found == table.end() ? nullptr : &*found;
}

} // namespace oz::tools
