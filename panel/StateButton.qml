import QtQuick
import QtQuick.Controls
import oz.panel

// A verb without arguments. One that sets a state is a segment, which is filled while the phone is in that state.
Button {
    id: button

    property var verb: ({})
    property var value
    // Alone it also has a check mark; in a StateSwitch the other segments show that it is one of several.
    property bool isAlone: true
    readonly property bool isSegment: value !== undefined
    readonly property bool isSo: value === true

    signal given

    function fill() {
        return button.isSo ? palette.highlight : button.down ? palette.mid : button.hovered ? palette.base : palette.button;
    }

    text: (isSo && isAlone ? "✓ " : "") + Words.verb(verb.name ?? "")
    Accessible.name: Words.verb(verb.name ?? "")
    ToolTip.visible: (hovered || visualFocus) && ToolTip.text !== ""
    ToolTip.delay: 700
    ToolTip.text: Words.help(verb.help ?? "")
    Accessible.role: isSegment && !isAlone ? Accessible.RadioButton : Accessible.Button
    Accessible.checked: isSo
    Accessible.description: isSo ? qsTr("%1 (so it is now)").arg(ToolTip.text) : ToolTip.text
    onClicked: given()
    contentItem: Label {
        text: button.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: button.isSo ? palette.highlightedText : palette.buttonText
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
