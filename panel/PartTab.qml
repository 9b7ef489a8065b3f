import QtQuick
import QtQuick.Controls

// A tab that is underlined while it is the current one, also where the style's colours hardly differ.
TabButton {
    id: tab

    background: Rectangle {
        implicitHeight: 26
        color: tab.checked ? palette.window : tab.hovered ? palette.base : palette.button

        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: 3
            visible: tab.checked
            color: palette.highlight
        }
    }
}
