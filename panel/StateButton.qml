import QtQuick
import QtQuick.Controls
import oz.panel

// A verb without arguments, highlighted while the phone is in the state that it sets.
Button {
    id: button

    property var verb: ({})
    property var value
    readonly property bool isSo: value === true

    signal given

    text: Words.verb(verb.name ?? "")
    highlighted: isSo
    ToolTip.visible: (hovered || visualFocus) && ToolTip.text !== ""
    ToolTip.delay: 700
    ToolTip.text: Words.help(verb.help ?? "")
    Accessible.description: isSo ? qsTr("%1 (so it is now)").arg(ToolTip.text) : ToolTip.text
    onClicked: given()
}
