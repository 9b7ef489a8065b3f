import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A verb of the phone as the control that its arguments deserve.
RowLayout {
    id: control

    property string verb
    property var wanted: []
    property string help

    signal given(var words)

    readonly property string argument: wanted.length === 1 ? wanted[0] : ""
    readonly property var range: ranges[argument]
    // What the arguments that are numbers range over, where that is of nature.
    readonly property var ranges: ({
            "PERCENT": [0, 100, 1],
            "DBM": [-120, -40, 1]
        })

    function choices(word) {
        if (word === "DEGREES")
            return ["0", "90", "180", "270"];
        return word.includes("|") && !word.startsWith("[") ? word.split("|") : [];
    }

    function give(words) {
        given([verb].concat(words)); // qmllint disable
    }

    ToolTip.visible: hover.hovered && help !== ""
    ToolTip.text: help
    ToolTip.delay: 700

    HoverHandler {
        id: hover
    }
    Switch {
        visible: control.argument === "on|off"
        text: control.verb
        Accessible.description: control.help
        onToggled: control.give([checked ? "on" : "off"])
    }
    Label {
        visible: slider.visible
        text: control.verb
    }
    Slider {
        id: slider

        Layout.fillWidth: true
        visible: control.range !== undefined
        from: visible ? control.range[0] : 0
        to: visible ? control.range[1] : 1
        stepSize: visible ? control.range[2] : 1
        snapMode: Slider.SnapAlways
        Accessible.name: control.verb
        Accessible.description: control.help
        onMoved: control.give([String(Math.round(value))])
    }
    Label {
        visible: slider.visible
        text: Math.round(slider.value)
        Layout.minimumWidth: 36
    }
    Button {
        visible: control.argument !== "on|off" && !slider.visible
        text: control.verb
        Accessible.description: control.help
        onClicked: {
            const words = [];
            for (let i = 0; i < fields.count; ++i) {
                const word = fields.itemAt(i).word; // qmllint disable
                if (word !== "")
                    words.push(word);
            }
            control.give(words);
        }
    }
    Repeater {
        id: fields

        model: control.argument === "on|off" || slider.visible ? [] : control.wanted

        RowLayout {
            id: field

            required property string modelData
            readonly property var choices: control.choices(modelData) // qmllint disable unqualified
            readonly property string word: choices.length > 0 ? box.editText || box.currentText : text.text

            Layout.fillWidth: true

            ComboBox {
                id: box

                Layout.fillWidth: true
                visible: field.choices.length > 0
                model: field.choices
                // A choice in capitals stands for a value of one's own.
                editable: field.choices.some(choice => choice === choice.toUpperCase() && isNaN(Number(choice)))
                Accessible.name: field.modelData
            }
            TextField {
                id: text

                Layout.fillWidth: true
                visible: field.choices.length === 0
                placeholderText: field.modelData
                Accessible.name: field.modelData
            }
        }
    }
}
