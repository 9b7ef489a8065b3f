import QtQuick
import QtQuick.Controls
import oz.device 1.2
import oz.panel

// The phone: how it is held, its display, its LED, whether it vibrates, and the devices around it.
Item {
    id: picture

    property color led: "transparent"
    property bool vibrating: false
    property var neighbours: []

    readonly property int columnsBelow: Math.max(1, Math.floor((width + 6) / 110))
    readonly property int outside: neighbours.filter(neighbour => !neighbour["in-range"]).length
    readonly property real shelfHeight: neighbours.length === 0 ? 0 : 24 + Math.max(1, Math.ceil(outside / columnsBelow)) * 40
    readonly property real rangeHeight: height - shelfHeight
    // A phone held sideways has its neighbours above and below, an upright one at its sides.
    readonly property bool isSideways: Math.abs(turn(device.orientation)) === 90
    readonly property int rowsBeside: isSideways ? Math.ceil((neighbours.length - outside) / columnsBelow) : 0
    readonly property int rowsAbove: Math.ceil(rowsBeside / 2)

    // The person moved a neighbour into range, or out of it.
    signal brought(var neighbour, bool inRange)

    // Puts the focus on the first neighbour.
    function takeFocus() {
        if (chips.count > 0)
            chips.itemAt(0).forceActiveFocus(Qt.TabFocusReason);
    }

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

    // Neighbours in range are left and right of the phone, the others on the shelf below.
    function placeOf(index) {
        const inRange = neighbours[index]["in-range"];
        let before = 0;
        let all = 0;
        for (let i = 0; i < neighbours.length; ++i) {
            if (neighbours[i]["in-range"] === inRange) {
                before += i < index ? 1 : 0;
                ++all;
            }
        }
        if (!inRange)
            return Qt.point(before % columnsBelow * 110, rangeHeight + 24 + Math.floor(before / columnsBelow) * 40);
        if (isSideways) {
            const row = Math.floor(before / columnsBelow);
            const inRow = Math.min(columnsBelow, all - row * columnsBelow);
            const left = (width - inRow * 110 + 6) / 2;
            return Qt.point(left + before % columnsBelow * 110, row < rowsAbove ? body.upperEdge - (rowsAbove - row) * 40 - 8 : body.upperEdge + body.tall * 0.56 + 14 + (row - rowsAbove) * 40);
        }
        const rows = Math.ceil(all / 2);
        const step = Math.min(52, rangeHeight / Math.max(rows, 1));
        const top = (rangeHeight - step * rows) / 2 + (step - 34) / 2;
        const aside = Math.max(0, (width - body.width) / 2 - 160);
        return Qt.point(before % 2 === 0 ? aside : width - 104 - aside, Math.max(0, top + Math.floor(before / 2) * step));
    }

    implicitWidth: 320
    implicitHeight: 360
    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("The phone")
    Accessible.description: [network.displayName, battery.level < 0 ? "" : battery.level + " %", led.a > 0 ? qsTr("the LED is lit") : "", vibrating ? qsTr("it vibrates") : ""].filter(text => text !== "").join(", ") // qmllint disable

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

        readonly property real room: picture.width - (picture.neighbours.length > 0 && !picture.isSideways ? 220 : 0)
        readonly property real roomAbove: picture.rowsAbove * 40
        readonly property real roomHeight: picture.rangeHeight - picture.rowsBeside * 40
        // Where it begins when it is held sideways.
        readonly property real upperEdge: roomAbove + (roomHeight - tall * 0.56) / 2
        readonly property real tall: Math.max(60, picture.isSideways ? Math.min(roomHeight * 0.92 / 0.56, room * 0.98) : Math.min(roomHeight * 0.92, room * 0.98 / 0.56))

        x: (picture.width - width) / 2
        y: roomAbove + (roomHeight - height) / 2
        width: tall * 0.56
        height: tall
        radius: tall * 0.06
        color: "#303134"
        border.color: "#5f6368"
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
            y: body.tall * 0.02
            width: body.tall * 0.04
            height: width
            radius: width / 2
            color: picture.led
            border.color: picture.led.a > 0 ? picture.led : "#5f6368"

            Rectangle {
                anchors.centerIn: parent
                width: parent.width * 2.2
                height: width
                radius: width / 2
                color: picture.led
                opacity: picture.led.a * 0.3
            }
        }
        Rectangle {
            id: screen

            readonly property bool isWide: display.pixelSize.width > display.pixelSize.height

            anchors.fill: parent
            anchors.margins: body.tall * 0.03
            anchors.topMargin: body.tall * 0.08
            anchors.bottomMargin: body.tall * 0.08
            color: !display.attached ? "black" : device.activityState === UserActivityState.Inactive ? "#1f3a5f" : "#8ab4f8"
            clip: true

            Item {
                anchors.centerIn: parent
                width: screen.isWide ? screen.height : screen.width
                height: screen.isWide ? screen.width : screen.height
                rotation: screen.isWide ? 90 : 0
                visible: display.attached

                Repeater {
                    model: [network.displayName, battery.level < 0 ? "" : (battery.chargingState === BatteryChargingState.Charging ? "⚡ " : "") + battery.level + " %", display.pixelSize.width > 0 ? "%1 × %2".arg(display.pixelSize.width).arg(display.pixelSize.height) : ""]

                    Text {
                        required property int index
                        required property string modelData

                        x: 4
                        y: index === 2 ? parent.height - height - 4 : 4 + index * parent.height * 0.45
                        width: parent.width - 8
                        height: parent.height * (index === 1 ? 0.2 : 0.1)
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        text: modelData
                        textFormat: Text.PlainText
                        fontSizeMode: Text.Fit
                        font.pixelSize: index === 1 ? 28 : 14
                        minimumPixelSize: 5
                        color: device.activityState === UserActivityState.Inactive ? "white" : "#202124" // qmllint disable unqualified
                    }
                }
            }
        }
    }
    Rectangle {
        y: picture.rangeHeight
        width: parent.width
        height: 1
        visible: picture.neighbours.length > 0
        color: palette.placeholderText
        opacity: 0.5
    }
    Label {
        y: picture.rangeHeight + 4
        width: parent.width
        visible: picture.neighbours.length > 0
        text: qsTr("Out of range: drag them to the phone")
        color: palette.placeholderText
        font.pixelSize: 11
        elide: Text.ElideRight
    }
    Repeater {
        id: chips

        // The model is a number, so a change of a neighbour keeps its chip, with the focus and a drag under way.
        model: picture.neighbours.length

        NeighbourChip {
            id: chip

            required property int index

            neighbour: picture.neighbours[index] ?? ({}) // qmllint disable unqualified
            place: index < picture.neighbours.length ? picture.placeOf(index) : Qt.point(0, 0) // qmllint disable unqualified
            onToggled: picture.brought(neighbour, !inRange) // qmllint disable unqualified
            onDropped: {
                const isInRange = y + height / 2 < picture.rangeHeight; // qmllint disable unqualified
                if (isInRange !== inRange)
                    picture.brought(neighbour, isInRange); // qmllint disable unqualified
            }
        }
    }
}
