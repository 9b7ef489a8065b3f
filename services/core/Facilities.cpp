#include "core/Facilities.hpp"

#include "activity/PowerManager.hpp"
#include "activity/SimulatedActivity.hpp"
#include "battery/BatteryPublisher.hpp"
#include "battery/SimulatedBattery.hpp"
#include "cellularnetwork/CellularNetworkPublisher.hpp"
#include "cellularnetwork/SimulatedNetworks.hpp"
#include "core/SimulatedPhone.hpp"
#include "core/SourceConfig.hpp"
#include "dataprofile/DataProfilePublisher.hpp"
#include "dataprofile/SimulatedDataProfiles.hpp"
#include "display/DisplayPublisher.hpp"
#include "display/SimulatedDisplays.hpp"
#include "display/XrandrDisplays.hpp"
#include "hardware/HardwarePublisher.hpp"
#include "hardware/SimulatedHardware.hpp"
#include "led/LedPublisher.hpp"
#include "led/SimulatedLed.hpp"
#include "miracast/MiracastPublisher.hpp"
#include "miracast/SimulatedMiracast.hpp"
#include "orientation/OrientationPublisher.hpp"
#include "orientation/SimulatedOrientation.hpp"
#include "radio/RadioPublisher.hpp"
#include "radio/SimulatedRadio.hpp"
#include "sdcard/SdCardPublisher.hpp"
#include "sdcard/SimulatedSdCard.hpp"
#include "simcard/SimCardPublisher.hpp"
#include "simcard/SimulatedSimCard.hpp"
#include "vibration/SimulatedVibrator.hpp"
#include "vibration/VibrationPublisher.hpp"
#include "wifidirect/SimulatedWiFiDirect.hpp"
#include "wifidirect/WiFiDirectPublisher.hpp"

namespace oz::services {

namespace {

// A facility whose publisher is a Publisher over the part of the simulated phone that is a Simulated.
template <typename Publisher, typename Simulated>
Facility::Start simulated()
{
    return [](SimulatedPhone &phone) -> std::unique_ptr<QObject> {
        return std::make_unique<Publisher>(phone.part<Simulated>());
    };
}

std::unique_ptr<QObject> startXrandrDisplays(SimulatedPhone &)
{
    return std::make_unique<DisplayPublisher>(std::make_unique<XrandrDisplays>());
}

} // namespace

const std::vector<Facility> &facilities()
{
    static const QString simulatedSource = QLatin1String(SourceConfig::Simulated);
    static const std::vector<Facility> all{
        {QStringLiteral("sdcard"), {{simulatedSource, simulated<SdCardPublisher, SimulatedSdCard>()}}},
        {QStringLiteral("battery"), {{simulatedSource, simulated<BatteryPublisher, SimulatedBattery>()}}},
        {QStringLiteral("activity"), {{simulatedSource, simulated<PowerManager, SimulatedActivity>()}}},
        {QStringLiteral("orientation"),
            {{simulatedSource, simulated<OrientationPublisher, SimulatedOrientation>()}}},
        {QStringLiteral("display"),
            {{simulatedSource, simulated<DisplayPublisher, SimulatedDisplays>()},
                {QStringLiteral("xrandr"), startXrandrDisplays}}},
        {QStringLiteral("hardware"), {{simulatedSource, simulated<HardwarePublisher, SimulatedHardware>()}}},
        {QStringLiteral("simcard"), {{simulatedSource, simulated<SimCardPublisher, SimulatedSimCard>()}}},
        {QStringLiteral("cellular-network"),
            {{simulatedSource, simulated<CellularNetworkPublisher, SimulatedNetworks>()}}},
        {QStringLiteral("radio"), {{simulatedSource, simulated<RadioPublisher, SimulatedRadio>()}}},
        {QStringLiteral("data-profile"),
            {{simulatedSource, simulated<DataProfilePublisher, SimulatedDataProfiles>()}}},
        {QStringLiteral("led"), {{simulatedSource, simulated<LedPublisher, SimulatedLed>()}}},
        {QStringLiteral("vibration"),
            {{simulatedSource, simulated<VibrationPublisher, SimulatedVibrator>()}}},
        {QStringLiteral("wifi-direct"),
            {{simulatedSource, simulated<WiFiDirectPublisher, SimulatedWiFiDirect>()}}},
        {QStringLiteral("miracast"), {{simulatedSource, simulated<MiracastPublisher, SimulatedMiracast>()}}},
    };
    return all;
}

} // namespace oz::services
