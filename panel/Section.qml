import QtQuick
import QtQuick.Controls

// A part of a page that can be opened and closed.
Column {
    id: section

    property alias title: header.text
    property alias open: header.checked

    spacing: 8

    Button {
        id: header

        width: section.width
        flat: true
        checkable: true
        Accessible.role: Accessible.CheckBox
        Accessible.name: text
        background: Rectangle {
            radius: 2
            color: header.hovered ? header.palette.button : "transparent"
        }
        contentItem: Label {
            text: (header.checked ? "▾ " : "▸ ") + header.text
            font.bold: true
            color: header.palette.windowText
        }
    }
}
