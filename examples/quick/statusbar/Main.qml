import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import oz.device 1.2

// What stands at the top of a phone's screen.
ApplicationWindow {
    id: window

    width: 480
    height: 40
    visible: true
    title: qsTr("Status bar")
    color: "#202124"

    component Word: Label {
        color: "white"
        font.pixelSize: 16
    }

    BatteryInfo {
        id: battery
    }
    CellularRadioInfo {
        id: radio
    }
    CellularNetworkInfo {
        id: network
    }
    SimCardInfo {
        id: sim
    }
    WiFiDirect {
        id: wifi
    }

    RowLayout {
        anchors.fill: parent
        anchors.margins: 8
        spacing: 12

        Row {
            id: bars

            // From -110 dBm, which is next to nothing, to -70 dBm, which is plenty; 0 is unknown.
            readonly property int lit: network.signalStrength === 0 ? 0 : Math.max(0, Math.min(4, Math.ceil((network.signalStrength + 110) / 10)))

            spacing: 2
            Layout.alignment: Qt.AlignVCenter
            Accessible.role: Accessible.Indicator
            Accessible.name: qsTr("%1 of 4 bars").arg(lit)

            Repeater {
                model: 4

                Rectangle {
                    required property int index

                    anchors.bottom: parent.bottom
                    width: 5
                    height: 5 * (index + 1)
                    color: index < bars.lit ? "white" : "#5f6368" // qmllint disable unqualified
                }
            }
        }
        Word {
            Layout.fillWidth: true
            elide: Text.ElideRight
            text: {
                if (!radio.poweredOn)
                    return qsTr("Radio off");
                switch (sim.state) {
                case SimCardState.Ready:
                    return network.displayName + (network.roaming ? qsTr(" (roaming)") : "");
                case SimCardState.PinRequired:
                    return qsTr("PIN needed");
                case SimCardState.NotDetected:
                    return qsTr("No SIM card");
                default:
                    return qsTr("SIM card unusable");
                }
            }
        }
        Word {
            visible: wifi.connectionState === WiFiDirectConnectionState.Connected
            text: qsTr("Direct: %1").arg(wifi.networkSsid)
        }
        Word {
            text: {
                if (battery.level < 0)
                    return qsTr("no battery");
                return (battery.chargingState === BatteryChargingState.Charging ? "\u26a1 " : "") + battery.level + " %";
            }
            color: battery.level > 15 ? "white" : "#f28b82"
        }
    }
}
