import QtQuick

// Verbs of which one is so at a time, as a segmented switch. The arrow keys go from segment to segment.
Flow {
    id: control

    property var verbs: []
    property var values: ({})

    signal given(string name)

    function focusOn(index) {
        segments.itemAt((index + segments.count) % segments.count).forceActiveFocus(Qt.TabFocusReason);
    }

    Accessible.role: Accessible.Grouping

    Repeater {
        id: segments

        model: control.verbs

        StateButton {
            required property int index
            required property var modelData

            isSegment: true
            verb: modelData
            value: control.values[modelData.name] // qmllint disable unqualified
            onGiven: control.given(modelData.name) // qmllint disable unqualified
            Keys.onLeftPressed: control.focusOn(index - 1) // qmllint disable unqualified
            Keys.onRightPressed: control.focusOn(index + 1) // qmllint disable unqualified
        }
    }
}
