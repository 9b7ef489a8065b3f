pragma Singleton
import QtQml

// Words of the daemon for people. What has none here, such as a facility that is new, stands as it is.
QtObject {
    readonly property var facilities: ({
            "activity": qsTr("Activity"),
            "battery": qsTr("Battery"),
            "cellular-network": qsTr("Cellular networks"),
            "clock": qsTr("Clock"),
            "data-profile": qsTr("Data profiles"),
            "display": qsTr("Displays"),
            "hardware": qsTr("Hardware"),
            "led": qsTr("LED"),
            "miracast": qsTr("Miracast"),
            "orientation": qsTr("Orientation"),
            "radio": qsTr("Radio"),
            "scenarios": qsTr("Scenarios"),
            "sdcard": qsTr("SD card"),
            "simcard": qsTr("SIM card"),
            "vibration": qsTr("Vibration"),
            "wifi-direct": qsTr("Wi-Fi Direct")
        })
    readonly property var states: ({
            "playing": qsTr("playing"),
            "paused": qsTr("paused"),
            "passed": qsTr("passed"),
            "failed": qsTr("failed"),
            "stopped": qsTr("stopped")
        })

    function facility(name) {
        return facilities[name] ?? name;
    }

    function state(name) {
        return states[name] ?? name;
    }

    // "peer-appears" as "Peer appears", in the person's language where there is a translation.
    function verb(name) {
        const text = qsTranslate("Verb", name);
        return text.charAt(0).toUpperCase() + (text === name ? name.slice(1).replace(/-/g, " ") : text.slice(1));
    }

    function help(text) {
        return qsTranslate("Help", text);
    }
}
