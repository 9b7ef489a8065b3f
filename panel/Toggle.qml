import QtQuick
import QtQuick.Controls

// A switch whose track and knob stand out from the ground in both themes.
Switch {
    id: toggle

    indicator: Rectangle {
        x: toggle.leftPadding
        y: toggle.topPadding + (toggle.availableHeight - height) / 2
        implicitWidth: 40
        implicitHeight: 20
        radius: 10
        color: toggle.checked ? palette.highlight : palette.base
        border.color: toggle.checked ? palette.highlight : palette.placeholderText

        Rectangle {
            x: 3 + toggle.visualPosition * (parent.width - width - 6)
            y: 3
            width: 14
            height: 14
            radius: 7
            color: toggle.checked ? palette.highlightedText : palette.placeholderText
        }
    }
}
