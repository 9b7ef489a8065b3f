import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import oz.panel

// The log of signals, and of the phone's answers to orders, under a heading: a line each, with time, what it is about,
// and values.
ColumnLayout {
    id: page

    readonly property real timeWidth: times.width + 8
    readonly property real whatWidth: (width - timeWidth) * 0.55

    function append(what, values) {
        lines.append(what, values);
    }

    function takeFocus() {
        log.forceActiveFocus(Qt.TabFocusReason);
    }

    spacing: 2

    TextMetrics {
        id: times

        font.family: "monospace"
        font.pixelSize: 11
        text: "00:00:00.000"
    }
    Label {
        text: qsTr("Signals")
        font.bold: true
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Row {
        Layout.fillWidth: true
        leftPadding: 4

        Repeater {
            model: [[qsTr("Time"), page.timeWidth], [qsTr("What"), page.whatWidth], [qsTr("Values"), page.width - page.timeWidth - page.whatWidth - 4]]

            Label {
                required property var modelData

                width: modelData[1]
                text: modelData[0]
                color: palette.placeholderText
                font.pixelSize: 11
                elide: Text.ElideRight
            }
        }
    }
    Rectangle {
        Layout.fillWidth: true
        Layout.preferredHeight: 1
        color: palette.placeholderText
        opacity: 0.5
    }
    ListView {
        id: log

        Layout.fillWidth: true
        Layout.fillHeight: true
        clip: true
        topMargin: 4 // for the focus ring
        activeFocusOnTab: true
        keyNavigationEnabled: false
        model: SignalLog {
            id: lines
        }
        delegate: Row {
            id: line

            required property string time
            required property string what
            required property string values

            width: ListView.view.width - 12
            leftPadding: 4

            Cell {
                width: page.timeWidth // qmllint disable unqualified
                text: line.time
                color: palette.placeholderText
            }
            Cell {
                width: page.whatWidth // qmllint disable unqualified
                rightPadding: 8
                text: line.what
            }
            Cell {
                width: line.width - page.timeWidth - page.whatWidth // qmllint disable unqualified
                text: line.values
                font.bold: true
            }
        }
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Signals")
        ScrollBar.vertical: ScrollBar {
            id: bar
        }
        onCountChanged: Qt.callLater(positionViewAtEnd) // qmllint disable
        Keys.onUpPressed: bar.decrease()
        Keys.onDownPressed: bar.increase()

        Label {
            anchors.fill: parent
            anchors.topMargin: 6
            visible: log.count === 0
            text: qsTr("No signal has come yet")
            color: palette.placeholderText
            wrapMode: Text.Wrap
        }
    }

    component Cell: Label {
        textFormat: Text.PlainText
        font.family: "monospace"
        font.pixelSize: 11
        wrapMode: Text.Wrap
    }
}
