import QtQuick
import QtTest
import oz.device 1.2

TestCase {
    id: test
    name: "Types"

    property string noted: ""

    function note(signal, first, second) {
        noted += signal + " " + first + (second === undefined ? "" : " " + second) + " ";
    }

    function tell(line) {
        compare(phone.sim(line), "", line); // qmllint disable unqualified
    }

    BatteryInfo {
        id: battery
        onLevelChanged: (level, newChargingState) => test.note("level", level, newChargingState === BatteryChargingState.Charging)
        onConditionChanged: condition => test.note("condition", condition === BatteryCondition.Bad)
    }
    CellularDataInterface {
        id: profile
        name: "mms"
        onConnectionStateChanged: connectionState => test.note("connection", connectionState === CellularConnectionState.PendingConnect)
    }
    CellularNetworkInfo {
        id: network
        onTechnologyChanged: tech => test.note("technology", tech === CellularTechnology.Gsm)
        onServicesChanged: services => test.note("services", (services & CellularService.DataGprs) !== 0)
    }
    CellularRadioInfo {
        id: radio
        onActiveTechnologiesChanged: technologies => test.note("active", (technologies & CellularTechnology.Gsm) !== 0)
        onDataEnabledChanged: dataEnabled => test.note("data", dataEnabled)
    }
    DeviceInfo {
        onOrientationChanged: orientation => test.note("orientation", orientation === DeviceOrientation.LeftUp)
        onActivityStateChanged: activityState => test.note("activity", activityState === UserActivityState.Inactive)
    }
    DisplayInfo {
        id: display
        onPixelSizeChanged: pixelSize => test.note("size", pixelSize.width, pixelSize.height)
    }
    HardwareInfo {
        id: hardware
    }
    Led {
        id: led
        onColorChanged: value => test.note("color", value === LedColor.Blue)
    }
    MiracastManager {
        id: miracast
        onScanCompleted: result => test.note("scan", result === MiracastResult.DeviceNotFound)
        onConnectCompleted: result => test.note("connect", result === MiracastResult.Success)
        onPauseCompleted: result => test.note("pause", result === MiracastResult.Success)
        onResumeCompleted: result => test.note("resume", result === MiracastResult.Success)
        onDisconnectCompleted: result => test.note("disconnect", result === MiracastResult.Success)
        onShutdownCompleted: result => test.note("shutdown", result === MiracastResult.Success)
        onDeviceDiscovered: (deviceName, hardwareAddress, category, subCategory) => test.note("discovered", deviceName, category === MiracastDeviceCategory.Display)
        onDeviceConnected: (deviceName, hardwareAddress, category, subCategory) => test.note("connected", deviceName, category === MiracastDeviceCategory.Display)
        onDeviceTypeChanged: (category, subCategory) => test.note("type", category === MiracastDeviceCategory.Display)
        onConnectionStateChanged: state => test.note("state", state === MiracastConnectionState.Connected)
        onDisplayStateChanged: state => test.note("display", state === MiracastDisplayState.Paused)
        onStopReasonChanged: stopReason => test.note("reason", stopReason === miracast.stopReason)
        onStatusChanged: status => test.note("status", status === miracast.status)
    }
    NetworkDataUsage {
        id: usage
        networkInterfaceName: "lo"
    }
    SdCardInfo {
        id: card
        onStateChanged: newState => test.note("card", newState === SdCardState.Unmounted)
        onActivityChanged: newActivity => test.note("does", newActivity === SdCardActivity.Busy)
    }
    SimCardInfo {
        id: sim
        onStateChanged: state => test.note("sim", state === SimCardState.PinRequired)
    }
    VibrationController {
        id: vibrator
    }
    WiFiDirect {
        id: wifi
        onConnectionStateChanged: connectionState => test.note("wifi", connectionState === WiFiDirectConnectionState.Connected)
        onNetworkRoleChanged: networkRole => test.note("role", networkRole === WiFiDirectRole.Client)
        onDeviceFound: (name, hardwareAddress, type) => test.note("found", name, type)
        onDeviceDiscovered: (name, hardwareAddress, type, secondaryTypes, role) => test.note("seen", name, type)
        onDeviceConnected: (name, hardwareAddress, type, ipAddress, intent) => test.note("joined", name, type)
    }

    // Bindings as in an application.
    property string text: battery.level + " %"
    property bool charging: battery.chargingState === BatteryChargingState.Charging
    property int strength: network.signalStrength
    property bool busy: card.activity === SdCardActivity.Busy
    property int turned: display.pixelSize.width

    function init() {
        failOnWarning(/.?/);
        noted = "";
    }

    function test_bindingsFollowThePhone() {
        compare(text, "80 %");
        tell("battery plug");
        tryCompare(test, "charging", true);
        tell("sdcard busy");
        tryCompare(test, "busy", true);
        tell("cellular-network home-lte rssi -99");
        tryCompare(test, "strength", -99);
        compare(turned, 768);
        tell("display rotate 0 90");
        tryCompare(test, "turned", 1280);
        compare(radio.networkCount, 1);
        compare(hardware.modelName, "Kestrel");
        compare(hardware.hdmiConnector, HdmiConnector.Micro);
        compare(sim.state, SimCardState.Ready);
        compare(profile.valid, true);
        compare(usage.update(), true);
        compare(vibrator.supported, true);
    }

    function test_handlersGetTheValuesOfTheTypedSignals_data() {
        const mac = "02:00:00:00:0";
        const on = line => {
            return () => tell(line);
        };
        const rows = [];
        const row = (tag, act, noted) => rows.push({
                    "tag": tag,
                    "act": act,
                    "noted": noted
                });
        row("condition", on("battery condition bad"), ["condition true"]);
        row("charging", on("battery unplug"), ["level 80 false"]);
        row("no data", on("radio data off"), ["data false"]);
        row("data", on("radio data on"), ["data true"]);
        row("technology", on("cellular-network home-gsm serve"), ["active true", "technology true", "services true"]);
        row("orientation", on("orientation left-up"), ["orientation true"]);
        row("activity", on("activity standby"), ["activity true"]);
        row("size", on("display resize 0 600 800"), ["size 800 600"]);
        row("activity of the card", on("sdcard idle"), ["does false"]);
        row("card", on("sdcard unmount"), ["card true"]);
        row("sim", on("simcard pin"), ["sim true"]);
        row("sim is ready", on("simcard ready"), ["sim false"]);
        row("profile", () => compare(profile.requestConnect(), CellularConnectionRequestResult.Requested), ["connection true", "connection false"]);
        row("led", () => led.color = LedColor.Blue, ["color true"]);
        row("peer goes", on("wifi-direct peer-goes tv"), []);
        row("peer appears", on("wifi-direct peer-appears tv"), []);
        row("peers", () => compare(wifi.requestScan(), WiFiDirectResult.Success), ["found Living room 7", "seen Living room 7"]);
        row("peer", () => compare(wifi.requestConnect(mac + "1:01", WiFiDirectIntent.Any, WiFiDirectWpsMethod.RandomPin, "12345670"), WiFiDirectResult.Success), ["wifi true", "role", "joined Living room 7"]);
        row("sinks", () => miracast.requestScan(), ["discovered", "scan false"]);
        row("sink", () => miracast.requestConnect(mac + "2:01", ""), ["connect true", "connected", "type true", "state true"]);
        row("pause", () => miracast.requestPause(), ["pause true", "display true"]);
        row("resume", () => miracast.requestResume(), ["resume true", "display false"]);
        row("disconnect", () => miracast.requestDisconnect(), ["disconnect true", "state false"]);
        row("stop", on("miracast stop 1"), ["status true", "reason true"]);
        return rows;
    }

    function test_handlersGetTheValuesOfTheTypedSignals(row) {
        row.act();
        for (const each of row.noted)
            tryVerify(() => noted.includes(each), 5000, "'%1' in '%2'".arg(each).arg(noted));
    }

    function test_holdersNameTheirEnumerators() {
        compare([LedColor.keyOf(led.color), DeviceOrientation.keyOf(DeviceOrientation.LeftUp)], [led.color === LedColor.Blue ? "Blue" : "Red", "LeftUp"]);
        compare([CellularService.keyOf(CellularService.Voice | CellularService.DataLte), CellularService.keyOf(0)], ["Voice|DataLte", "None"]);
        compare(CellularService.keyOf(CellularService.Voice | 1 << 30), "");
        for (const unknown of [99, -1, 0.5, 1e300, NaN, undefined, "OK"])
            compare(BatteryCondition.keyOf(unknown), "", unknown);
        compare([BatteryCondition["Bad"], BatteryCondition["Good"]], [2, undefined]);
    }

    function test_membersComeWithTheirMinorVersion_data() {
        return [{
                "tag": "onDeviceDiscovered",
                "type": "WiFiDirect",
                "since": 1
            }, {
                "tag": "onActivityStateChanged",
                "type": "DeviceInfo",
                "since": 1
            }, {
                "tag": "onDataEnabledChanged",
                "type": "CellularRadioInfo",
                "since": 1
            }, {
                "tag": "onOrientationValidChanged",
                "type": "DeviceInfo",
                "since": 2
            }];
    }

    function test_membersComeWithTheirMinorVersion(row) {
        for (let minor = 0; minor <= 2; ++minor) {
            let known = true;
            try {
                Qt.createQmlObject("import oz.device 1.%1; %2 { %3: {} }".arg(minor).arg(row.type).arg(row.tag), test).destroy();
            } catch (error) {
                known = false;
            }
            compare(known, minor >= row.since, "1." + minor);
        }
    }
}
