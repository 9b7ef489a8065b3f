import QtQuick
import QtQuick.Controls
import oz.panel

// A verb without arguments: a button, or a segment of a StateSwitch, which is filled while the phone is in the state that
// it sets.
Button {
    id: button

    property var verb: ({})
    property var value
    property bool isSegment: false
    readonly property bool isSo: value === true

    signal given

    function fill() {
        return button.isSo ? palette.highlight : button.down ? palette.mid : button.hovered ? palette.base : palette.button;
    }

    text: (isSo && !isSegment ? "✓ " : "") + Words.verb(verb.name ?? "")
    Accessible.name: Words.verb(verb.name ?? "")
    ToolTip.visible: (hovered || visualFocus) && ToolTip.text !== ""
    ToolTip.delay: 700
    ToolTip.text: Words.help(verb.help ?? "")
    Accessible.role: isSegment ? Accessible.RadioButton : Accessible.Button
    Accessible.checked: isSo
    Accessible.description: isSo ? qsTr("%1 (so it is now)").arg(ToolTip.text) : ToolTip.text
    onClicked: given()
    contentItem: Label {
        text: button.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: button.isSegment && button.isSo ? palette.highlightedText : palette.buttonText
    }

    Binding {
        target: button.background
        property: "visible"
        value: !button.isSegment
    }
    Rectangle {
        anchors.fill: parent
        z: -1
        visible: button.isSegment
        color: button.fill()
        border.color: palette.placeholderText
    }
}
