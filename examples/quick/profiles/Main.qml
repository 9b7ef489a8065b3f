import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import oz.device 1.2

// A page of settings: the data profiles, each with a switch.
ApplicationWindow {
    id: window

    property DeviceRequest request: null
    property string asked: ""

    function turn(name, on) {
        asked = name;
        request = on ? requests.connectProfile(name) : requests.disconnectProfile(name);
    }

    width: 360
    height: 480
    visible: true
    title: qsTr("Data profiles")

    DeviceRequests {
        id: requests
    }

    ListView {
        id: list

        anchors.fill: parent
        anchors.margins: 12
        spacing: 8
        model: DataProfileModel {
        }
        delegate: ItemDelegate {
            id: row

            required property string name
            required property bool valid
            required property string accessPointName
            required property string networkInterfaceName
            required property int connectionState

            width: ListView.view.width
            enabled: valid
            contentItem: RowLayout {
                ColumnLayout {
                    Label {
                        text: row.name
                        font.bold: true
                    }
                    Label {
                        text: {
                            if (!row.valid)
                                return qsTr("switched off");
                            if (row.connectionState === CellularConnectionState.Connected)
                                return qsTr("connected through %1").arg(row.networkInterfaceName);
                            return row.accessPointName;
                        }
                    }
                }
                Item {
                    Layout.fillWidth: true
                }
                BusyIndicator {
                    running: row.connectionState === CellularConnectionState.PendingConnect
                    visible: running
                    implicitHeight: 32
                }
                Switch {
                    // It shows what is so, and not what was asked for.
                    checked: row.connectionState === CellularConnectionState.Connected
                    onToggled: {
                        window.turn(row.name, checked); // qmllint disable unqualified
                        checked = Qt.binding(() => row.connectionState === CellularConnectionState.Connected);
                    }
                }
            }
        }
    }
    footer: Label {
        visible: window.request !== null && !window.request.running && !window.request.succeeded
        padding: 12
        wrapMode: Text.Wrap
        text: {
            if (window.request === null)
                return "";
            // The service's own words, where it has any, are for whoever looks after the phone.
            const why = window.request.errorString === "" ? window.request.reason : qsTr("%1 (%2)").arg(window.request.reason).arg(window.request.errorString);
            return qsTr("%1: %2").arg(window.asked).arg(why);
        }
    }
}
