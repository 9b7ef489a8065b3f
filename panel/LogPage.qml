import QtQuick
import QtQuick.Controls
import oz.panel

// What was signalled, and what the phone answered.
ListView {
    id: log

    clip: true
    model: SignalLog {
        id: lines
    }
    delegate: Label {
        required property string display

        width: ListView.view.width
        text: display
        textFormat: Text.PlainText
        font.family: "monospace"
        font.pixelSize: 11
        elide: Text.ElideRight
    }
    onCountChanged: Qt.callLater(positionViewAtEnd) // qmllint disable
    ScrollBar.vertical: ScrollBar {
    }

    function append(line) {
        lines.append(line);
    }
}
