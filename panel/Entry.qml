import QtQuick
import QtQuick.Controls

// A text field whose edge stands out from the ground in both themes.
TextField {
    id: entry

    selectByMouse: true
    background: Rectangle {
        implicitWidth: 120
        implicitHeight: 24
        radius: 2
        opacity: entry.enabled ? 1 : 0.5
        color: palette.base
        border.color: palette.placeholderText
    }
}
