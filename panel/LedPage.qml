import QtQuick
import QtQuick.Controls
import oz.device 1.2
import oz.panel

// The LED, large; what was asked of it; and a request of the panel's own.
Column {
    id: page

    property LedStatus status: null
    readonly property bool isLit: status !== null && status.color.a > 0

    spacing: 10

    Led {
        id: led
    }
    Row {
        leftPadding: 8
        topPadding: 8
        bottomPadding: 8
        spacing: 24

        Rectangle {
            width: 96
            height: 96
            radius: 48
            color: page.isLit ? page.status.color : palette.base
            border.color: palette.placeholderText
            border.width: 2
            Accessible.role: Accessible.Graphic
            Accessible.name: colour.text

            Rectangle {
                anchors.centerIn: parent
                width: 112
                height: 112
                radius: 56
                z: -1
                visible: page.isLit
                color: page.status?.color ?? "transparent"
                opacity: 0.3
            }
        }
        Label {
            id: colour

            anchors.verticalCenter: parent.verticalCenter
            text: page.isLit ? Words.capital(Words.color(page.status.colorName)) : qsTr("Dark")
            font.pixelSize: 18
        }
    }
    Label {
        text: qsTr("Try it")
        font.bold: true
    }
    Flow {
        width: parent.width
        spacing: 6

        ComboBox {
            id: wanted

            readonly property var colors: ["red", "green", "blue", "yellow", "cyan", "magenta", "white"]

            model: colors.map(name => Words.capital(Words.color(name)))
            Accessible.name: qsTr("Colour")
        }
        ComboBox {
            id: times

            // 0 is until it is ended.
            readonly property var counts: [1, 3, 10, 0]

            currentIndex: 1
            model: counts.map(count => count === 0 ? qsTr("Until ended") : qsTr("%1 ×").arg(count))
            Accessible.name: qsTr("Flashes")
        }
        PushButton {
            text: qsTr("Flash")
            onClicked: {
                led.color = [LedColor.Red, LedColor.Green, LedColor.Blue, LedColor.Yellow, LedColor.Cyan, LedColor.Magenta, LedColor.White][wanted.currentIndex];
                const count = times.counts[times.currentIndex];
                if (count === 0)
                    led.flash();
                else
                    led.flash(count);
            }
        }
        PushButton {
            text: qsTr("End")
            enabled: led.active
            Accessible.name: qsTr("End the panel's request")
            onClicked: led.cancel()
        }
    }
    Label {
        text: qsTr("Requests")
        font.bold: true
    }
    Label {
        width: parent.width
        visible: asked.count === 0
        text: qsTr("No application asks anything of the LED now")
        color: palette.placeholderText
        wrapMode: Text.Wrap
    }
    Repeater {
        id: asked

        // The newest first, which has the LED.
        model: (page.status?.requests ?? []).slice().reverse()

        Label {
            required property int index
            required property var modelData

            width: page.width // qmllint disable unqualified
            text: {
                const name = Words.color(modelData.color);
                const told = modelData.count < 0 ? qsTr("%1: %2 flashes, until it ends (process %3)").arg(name).arg(modelData.shown).arg(modelData.process) : qsTr("%1: flash %2 of %3 (process %4)").arg(name).arg(modelData.shown).arg(modelData.count).arg(modelData.process);
                return index === 0 ? told : qsTr("%1, waits").arg(told);
            }
            wrapMode: Text.Wrap
        }
    }
    Label {
        readonly property var last: page.status?.last ?? {}

        width: parent.width
        visible: last.color !== undefined
        text: visible ? qsTr("The last one: %1, %2 flashes, %3").arg(Words.color(last.color)).arg(last.shown).arg(Words.end(last.end)) : ""
        color: palette.placeholderText
        wrapMode: Text.Wrap
    }
}
