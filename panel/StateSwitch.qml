import QtQuick

// Verbs of which one is so at a time, as a segmented switch. The arrow keys go from segment to segment.
Flow {
    id: control

    property var verbs: []
    property var values: ({})
    // All segments are as wide as the widest, so that those of a second row stand below those of the first.
    property real segmentWidth: 0

    signal given(string name)

    function focusOn(index) {
        segments.itemAt((index + segments.count) % segments.count).forceActiveFocus(Qt.TabFocusReason);
    }

    function measure() {
        let widest = 0;
        for (let i = 0; i < segments.count; ++i)
            widest = Math.max(widest, segments.itemAt(i)?.implicitWidth ?? 0);
        segmentWidth = widest;
    }

    spacing: -1
    Accessible.role: Accessible.Grouping

    Repeater {
        id: segments

        model: control.verbs

        StateButton {
            required property int index
            required property var modelData

            width: control.segmentWidth // qmllint disable unqualified
            isAlone: false
            verb: modelData
            value: control.values[modelData.name] ?? false // qmllint disable unqualified
            onImplicitWidthChanged: Qt.callLater(control.measure) // qmllint disable
            onGiven: control.given(modelData.name) // qmllint disable unqualified
            Keys.onLeftPressed: control.focusOn(index - 1) // qmllint disable unqualified
            Keys.onRightPressed: control.focusOn(index + 1) // qmllint disable unqualified
        }
    }
}
