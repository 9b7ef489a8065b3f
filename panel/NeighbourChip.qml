import QtQuick
import QtQuick.Controls
import oz.panel

// A device around the phone. Dragging, double-clicking or the space bar moves it into range, or out of it.
Rectangle {
    id: chip

    property var neighbour: ({})
    readonly property bool inRange: neighbour["in-range"] === true
    // Its position while it is not dragged.
    property point place

    signal dropped
    signal toggled

    function settle() {
        x = Qt.binding(() => place.x);
        y = Qt.binding(() => place.y);
    }

    width: 104
    height: 34
    radius: 6
    color: drag.active ? palette.highlight : palette.base
    border.color: inRange ? palette.highlight : palette.placeholderText
    z: drag.active ? 1 : 0
    x: place.x
    y: place.y
    activeFocusOnTab: true
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: inRange
    Accessible.focusable: true
    Accessible.name: qsTr("%1 (%2)").arg(neighbour.title).arg(Words.page(neighbour.part, neighbour.facility))
    Accessible.description: inRange ? qsTr("in range") : qsTr("out of range")
    Accessible.onToggleAction: toggled()
    Accessible.onPressAction: toggled()
    Keys.onSpacePressed: toggled()
    Keys.onReturnPressed: toggled()
    Keys.onEnterPressed: toggled()

    // Animate a move into or out of range, but not one that a resized window causes.
    onInRangeChanged: glide.restart()

    Timer {
        id: glide

        interval: 200
    }
    Behavior on x  {
        enabled: glide.running && !drag.active
        NumberAnimation {
            duration: 150
        }
    }
    Behavior on y  {
        enabled: glide.running && !drag.active
        NumberAnimation {
            duration: 150
        }
    }
    Column {
        anchors.centerIn: parent
        width: parent.width - 8

        Label {
            width: parent.width
            text: chip.neighbour.title ?? ""
            textFormat: Text.PlainText
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            font.pixelSize: 12
            color: drag.active ? palette.highlightedText : palette.text
        }
        Label {
            width: parent.width
            text: Words.page(chip.neighbour.part, chip.neighbour.facility)
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            font.pixelSize: 11
            color: drag.active ? palette.highlightedText : palette.placeholderText
        }
    }
    HoverHandler {
        cursorShape: Qt.OpenHandCursor
    }
    TapHandler {
        onTapped: chip.forceActiveFocus(Qt.MouseFocusReason)
        onDoubleTapped: chip.toggled()
    }
    DragHandler {
        id: drag

        onActiveChanged: {
            if (!active) {
                chip.dropped();
                chip.settle();
            }
        }
    }
}
