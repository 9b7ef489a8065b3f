import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// What a facility of the phone can be told.
ScrollView {
    id: page

    property var facility: ({})
    readonly property var instances: facility.instances ?? []

    signal told(var words)

    contentWidth: availableWidth

    ColumnLayout {
        width: page.availableWidth
        spacing: 8

        Label {
            text: page.facility.name ?? ""
            font.bold: true
            font.pixelSize: 18
        }
        ComboBox {
            id: instance

            Layout.fillWidth: true
            visible: page.instances.length > 0
            model: page.instances
            Accessible.name: qsTr("Which one")
        }
        Repeater {
            model: page.facility.verbs ?? []

            VerbControl {
                required property var modelData

                Layout.fillWidth: true
                verb: modelData.name
                wanted: modelData.arguments
                help: modelData.help
                onGiven: words => {
                    const which = instance.visible ? [instance.currentText] : []; // qmllint disable unqualified
                    page.told([page.facility.name].concat(which, words)); // qmllint disable unqualified
                }
            }
        }
    }
}
