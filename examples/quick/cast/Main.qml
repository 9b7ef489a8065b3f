import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import oz.device 1.2

// A dialog to show the screen on a wireless display.
ApplicationWindow {
    id: window

    readonly property MiracastManager miracast: sinks.manager
    property string address: ""
    property DeviceRequest request: null
    property string problem: ""

    function cast(hardwareAddress, withPin) {
        address = hardwareAddress;
        request = requests.connectSink(hardwareAddress, withPin);
    }

    width: 360
    height: 480
    visible: true
    title: qsTr("Cast to display")
    Component.onCompleted: miracast.requestScan()

    DeviceRequests {
        id: requests
    }
    MiracastSinkModel {
        id: sinks
    }
    Connections {
        function onFinished() {
            if (window.request.code === MiracastResult.PinRequired || window.request.code === MiracastResult.PinIncorrect)
                pinDialog.open();
            window.problem = window.request.succeeded ? "" : window.request.reason;
        }

        target: window.request
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12

        Label {
            text: {
                if (!window.miracast.isSupported)
                    return qsTr("This phone has no wireless display.");
                if (window.miracast.connectionState === MiracastConnectionState.Connected)
                    return qsTr("Showing on %1").arg(window.miracast.deviceName);
                return qsTr("Displays around you");
            }
            font.bold: true
        }
        ListView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            model: sinks
            delegate: ItemDelegate {
                required property string name
                required property string hardwareAddress
                required property bool connected

                width: ListView.view.width
                text: connected ? qsTr("%1 (connected)").arg(name) : name
                highlighted: connected
                onClicked: connected ? window.miracast.requestDisconnect() : window.cast(hardwareAddress, "") // qmllint disable unqualified
            }
        }
        Label {
            visible: text !== ""
            text: window.problem
        }
        RowLayout {
            Button {
                text: qsTr("Look again")
                onClicked: window.miracast.requestScan()
            }
            Button {
                text: qsTr("Cancel")
                visible: window.request !== null && window.request.running
                onClicked: window.request.cancel()
            }
        }
    }
    Dialog {
        id: pinDialog

        anchors.centerIn: parent
        modal: true
        title: qsTr("PIN of the display")
        standardButtons: Dialog.Ok | Dialog.Cancel
        onAccepted: window.cast(window.address, pin.text)

        TextField {
            id: pin

            inputMethodHints: Qt.ImhDigitsOnly
        }
    }
}
