import QtQuick
import QtQuick.Controls

// A check box whose box stands out from the ground in both themes.
CheckBox {
    id: tick

    indicator: Rectangle {
        x: tick.leftPadding
        y: tick.topPadding + (tick.availableHeight - height) / 2
        implicitWidth: 16
        implicitHeight: 16
        radius: 2
        opacity: tick.enabled ? 1 : 0.5
        color: tick.checked ? palette.highlight : palette.base
        border.color: tick.checked ? palette.highlight : palette.placeholderText

        Label {
            anchors.centerIn: parent
            visible: tick.checked
            text: "✓"
            font.pixelSize: 12
            color: palette.highlightedText
        }
    }
}
