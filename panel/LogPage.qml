import QtQuick
import QtQuick.Controls
import oz.panel

// The log of signals, and of the phone's answers to orders.
ListView {
    id: log

    clip: true
    activeFocusOnTab: true
    keyNavigationEnabled: false
    model: SignalLog {
        id: lines
    }
    delegate: Label {
        required property string display

        width: ListView.view.width - 12
        text: display
        textFormat: Text.PlainText
        font.family: "monospace"
        font.pixelSize: 11
        wrapMode: Text.WrapAnywhere
    }
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Signals")
    ScrollBar.vertical: ScrollBar {
        id: bar
    }
    onCountChanged: Qt.callLater(positionViewAtEnd) // qmllint disable
    Keys.onUpPressed: bar.decrease()
    Keys.onDownPressed: bar.increase()

    function append(line) {
        lines.append(line);
    }
}
