#include "ozdevice/FacilityTable.hpp"

#include <oz/device/BatteryInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>

namespace oz::tools {

namespace {

template <typename Facility>
FacilityEntry facility(const char *name, const char *help)
{
    return {QLatin1String(name), QLatin1String(help), &Facility::staticMetaObject, {},
        [](const QString &) { return std::make_unique<Facility>(); }};
}

} // namespace

const std::vector<FacilityEntry> &facilityTable()
{
    using namespace oz::device;
    static const std::vector<FacilityEntry> table{
        facility<SdCardInfo>("sdcard", "the removable SD card"),
        facility<BatteryInfo>("battery", "the battery and its chargers"),
        facility<HardwareInfo>("hardware", "what the device is: identifiers, names and parts"),
        facility<SimCardInfo>("simcard", "the SIM card"),
    };
    return table;
}

} // namespace oz::tools
