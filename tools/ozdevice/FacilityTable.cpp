#include "ozdevice/FacilityTable.hpp"

#include "ozdevice/Command.hpp"

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
    entry.isComplete = [](const QObject *object) {
        return qobject_cast<const device::DeviceInfo *>(object)->isOrientationValid();
    };
    return entry;
}

// Nothing selected is the primary one, whatever its identifier.
FacilityEntry display()
{
    auto entry = facility<device::DisplayInfo, int>("display", "a display", "display");
    entry.make = [chosen = entry.make](const QString &selected) {
        return selected.isEmpty() ? std::make_unique<device::DisplayInfo>() : chosen(selected);
    };
    return entry;
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
    entry.readAnew = [](QObject *object) { qobject_cast<device::NetworkDataUsage *>(object)->update(); };
    entry.choices = networkInterfaces;
    return entry;
}

} // namespace

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

FacilityEntry FacilityEntry::answeredBy(const QHash<QByteArray, QByteArray> &signalsOfMethods) &&
{
    answers = signalsOfMethods;
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

const std::vector<FacilityEntry> &facilityTable()
{
    using namespace oz::device;
    // Its flag set is read by it, see meta::enumOf().
    qRegisterMetaType<WiFiDirectSecondaryDeviceType::Type>();
    static const std::vector<FacilityEntry> table{
        facility<SdCardInfo>("sdcard", "the removable SD card"),
        facility<BatteryInfo>("battery", "the battery and its chargers"),
        facility<HardwareInfo>("hardware", "what the device is: identifiers, names and parts"),
        facility<SimCardInfo>("simcard", "the SIM card"),
        facility<CellularRadioInfo>("radio", "the cellular radio"),
        facility<CellularNetworkInfo, int>("cellular-network", "a cellular network in use", "index"),
        facility<CellularDataInterface, QString>("data-profile", "a cellular data profile", "name"),
        facility<Led>("led", "the notification LED")
            .busyWhile("active")
            .servedBy("/pps/services/led/control")
            .toldBy("/pps/services/led/activity"),
        facility<VibrationController>("vibration", "the vibration motor")
            .servedBy("/pps/services/vibrator")
            .toldBy("/pps/services/vibration/activity"),
        networkUsage(),
        deviceState(),
        display(),
        facility<WiFiDirect>("wifidirect", "Wi-Fi Direct: peers, connection and requests"),
        facility<MiracastManager>("miracast", "wireless displays: sinks and the session with one")
            .servedBy("/pps/services/miracast/control")
            .answeredBy({{"requestScan", "scanCompleted"}, {"requestConnect", "connectCompleted"},
                {"requestDisconnect", "disconnectCompleted"}, {"requestPause", "pauseCompleted"},
                {"requestResume", "resumeCompleted"}, {"requestShutdown", "shutdownCompleted"}})
            .reading({"miracast_name", "miracast_persistent"}),
    };
    return table;
}

} // namespace oz::tools
