import QtQuick
import QtTest
import oz.device 1.2

// Without services, each property has its documented unknown value.
TestCase {
    id: test
    name: "Unknown"

    BatteryInfo {
        id: battery
    }
    CellularDataInterface {
        id: profile
        name: "internet"
    }
    CellularNetworkInfo {
        id: network
    }
    CellularRadioInfo {
        id: radio
    }
    DeviceInfo {
        id: device
    }
    DisplayInfo {
        id: display
    }
    HardwareInfo {
        id: hardware
    }
    MiracastManager {
        id: miracast
    }
    NetworkDataUsage {
        id: usage
    }
    SdCardInfo {
        id: card
    }
    SimCardInfo {
        id: sim
    }
    WiFiDirect {
        id: wifi
    }

    function test_values() {
        compare([battery.level, battery.chargingState, battery.present, battery.condition], [-1, BatteryChargingState.Unknown, false, BatteryCondition.Unknown]);
        verify(isNaN(battery.temperature));
        compare([profile.valid, profile.connectionState, profile.accessPointName], [false, CellularConnectionState.Disconnected, ""]);
        compare([network.technology, network.services, network.signalStrength, network.displayName], [CellularTechnology.None, 0, 0, ""]);
        compare([radio.poweredOn, radio.technologies, radio.bands, radio.networkCount], [false, 0, 0, 0]);
        compare([device.orientation, device.activityState, device.orientationValid], [DeviceOrientation.TopUp, UserActivityState.Unknown, false]);
        compare([display.displayName, display.attached, display.displayTechnology, display.wireless], ["", false, DisplayTechnology.Unknown, false]);
        compare(display.pixelSize, Qt.size(-1, -1));
        compare([hardware.modelName, hardware.hdmiConnector, hardware.isTrackpadDevice], ["", HdmiConnector.Unknown, false]);
        compare([miracast.connectionState, miracast.deviceName, miracast.isSupported], [MiracastConnectionState.Unknown, "", false]);
        compare([usage.bytesReceived, card.state, card.activity], [0, SdCardState.Unknown, SdCardActivity.Unknown]); // qmllint disable
        compare([sim.state, sim.serialNumber], [SimCardState.NotDetected, ""]);
        compare([wifi.connectionState, wifi.enabled, wifi.supported, isNaN(wifi.lastUpdate)], [WiFiDirectConnectionState.Unknown, false, false, true]);
    }
}
