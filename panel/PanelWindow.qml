import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import oz.panel

ApplicationWindow {
    id: window

    property bool dark: false
    property string page: ""
    readonly property bool wide: width > 760
    readonly property var facility: phone.facilities[names.currentIndex] ?? ({})

    width: 1000
    height: 720
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    title: qsTr("Phone")
    palette.window: dark ? "#202124" : "#f1f3f4"
    palette.windowText: dark ? "#e8eaed" : "#202124"
    palette.base: dark ? "#303134" : "white"
    palette.text: dark ? "#e8eaed" : "#202124"
    palette.button: dark ? "#3c4043" : "#e8eaed"
    palette.buttonText: dark ? "#e8eaed" : "#202124"
    palette.highlight: "#4285f4"
    palette.highlightedText: "white"
    palette.placeholderText: "#80868b"

    PhoneControl {
        id: phone

        onAnswered: (order, problem) => {
            log.append(problem === "" ? "> " + order : qsTr("> %1: %2").arg(order).arg(problem));
            status.text = problem;
        }
    }
    Shortcut {
        sequences: [StandardKey.Quit] // qmllint disable unqualified
        onActivated: Qt.quit()
    }
    Shortcut {
        sequence: "Ctrl+D"
        onActivated: window.dark = !window.dark
    }

    header: ToolBar {
        RowLayout {
            anchors.fill: parent

            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 8
                elide: Text.ElideRight
                text: {
                    if (!phone.reachable)
                        return qsTr("No phone can be reached");
                    return phone.facilities.length > 0 ? qsTr("A simulated phone") : qsTr("A device, which is shown and cannot be told anything");
                }
            }
            ToolButton {
                text: window.dark ? qsTr("Light") : qsTr("Dark")
                onClicked: window.dark = !window.dark
            }
        }
    }
    footer: Label {
        id: status

        padding: 6
        visible: text !== ""
        color: "#d93025"
        wrapMode: Text.Wrap
    }

    GridLayout {
        anchors.fill: parent
        anchors.margins: 8
        columns: window.wide ? 3 : 1
        columnSpacing: 12

        ListView {
            id: names

            Layout.preferredWidth: 150
            Layout.fillHeight: window.wide
            Layout.fillWidth: !window.wide
            Layout.preferredHeight: 36
            orientation: window.wide ? ListView.Vertical : ListView.Horizontal
            clip: true
            model: phone.facilities
            activeFocusOnTab: true
            keyNavigationEnabled: true
            visible: count > 0
            onCountChanged: currentIndex = Math.max(0, phone.facilities.findIndex(facility => facility.name === window.page)) // qmllint disable
            delegate: ItemDelegate {
                required property int index
                required property var modelData

                width: window.wide ? ListView.view.width : implicitWidth // qmllint disable unqualified
                text: modelData.name
                highlighted: ListView.isCurrentItem
                onClicked: ListView.view.currentIndex = index
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true

            PhonePicture {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.minimumHeight: 120
                led: phone.led
                vibrating: phone.vibrating
            }
            LogPage {
                id: log

                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.minimumHeight: 60
            }
        }
        FacilityPage {
            Layout.preferredWidth: 320
            Layout.fillWidth: !window.wide
            Layout.fillHeight: true
            visible: phone.facilities.length > 0
            facility: window.facility
            onTold: words => phone.tell(words)
        }
    }
}
