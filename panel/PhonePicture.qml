import QtQuick
import oz.device 1.2

// The phone as it lies there: turned as it is held, its display as it shows, its LED, and whether it vibrates.
Item {
    id: picture

    property color led: "transparent"
    property bool vibrating: false

    function turn(orientation) {
        switch (orientation) {
        case DeviceOrientation.BottomUp:
            return 180;
        case DeviceOrientation.LeftUp:
            return 90;
        case DeviceOrientation.RightUp:
            return -90;
        default:
            return 0;
        }
    }

    implicitWidth: 240
    implicitHeight: 320
    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("The phone")

    BatteryInfo {
        id: battery
    }
    CellularNetworkInfo {
        id: network
    }
    DeviceInfo {
        id: device
    }
    DisplayInfo {
        id: display
    }

    Rectangle {
        id: body

        readonly property real tall: Math.min(picture.height, picture.width) * 0.95

        anchors.centerIn: parent
        width: tall * 0.56
        height: tall
        radius: tall * 0.06
        color: "#303134"
        rotation: picture.turn(device.orientation)
        opacity: device.orientationValid ? 1 : 0.75

        Behavior on rotation  {
            RotationAnimation {
                direction: RotationAnimation.Shortest
                duration: 200
            }
        }
        transform: Translate {
            id: shake
        }
        SequentialAnimation {
            running: picture.vibrating
            loops: Animation.Infinite
            onStopped: shake.x = 0

            NumberAnimation {
                target: shake
                property: "x"
                from: -3
                to: 3
                duration: 40
            }
            NumberAnimation {
                target: shake
                property: "x"
                from: 3
                to: -3
                duration: 40
            }
        }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            y: body.tall * 0.025
            width: body.tall * 0.03
            height: width
            radius: width / 2
            color: picture.led
            border.color: "#5f6368"
        }
        Rectangle {
            anchors.fill: parent
            anchors.margins: body.tall * 0.03
            anchors.topMargin: body.tall * 0.08
            anchors.bottomMargin: body.tall * 0.08
            color: display.attached ? "#8ab4f8" : "black"

            Text {
                anchors.centerIn: parent
                horizontalAlignment: Text.AlignHCenter
                visible: display.attached
                text: "%1\n%2\n%3 × %4".arg(battery.level < 0 ? "" : battery.level + " %").arg(network.displayName).arg(display.pixelSize.width).arg(display.pixelSize.height)
            }
        }
    }
}
