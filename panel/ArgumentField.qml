import QtQuick
import QtQuick.Controls
import oz.panel

// An argument of a verb as the control that suits it: check boxes for several of many, a list of names for one of them,
// otherwise a text with its range and unit as the placeholder. Beside others it has its name as a label.
Item {
    id: field

    // As the daemon names it, such as "[PEER,...]", and what it can be: "words", or "least", "most" and "unit"; "titles".
    property string argument: ""
    property var choice: ({})
    // What people call it.
    property string title: Words.argument(argument)
    // The width of the label; 0 without one.
    property real labelWidth: 0
    // Whether the order is refused without it.
    property bool isNeeded: true
    readonly property bool isList: argument.includes(",...")
    readonly property var words: choice.words ?? []
    readonly property bool isRange: choice.most !== undefined
    readonly property var titled: Object.keys(choice.titles ?? {})
    readonly property string kind: {
        if (words.length > 0 && !isRange)
            return isList ? "list" : "choice";
        return isRange && titled.length > 0 ? "number" : "text";
    }
    // What is chosen, in the order in which it was.
    property var chosen: []
    readonly property string word: {
        if (!enabled)
            return "";
        switch (kind) {
        case "list":
            return chosen.join(",");
        case "choice":
            return one.currentValue ?? "";
        case "number":
            return typed.editText.split(" ")[0];
        default:
            return plain.text;
        }
    }
    readonly property Item shown: ({
            "list": many,
            "choice": one,
            "number": typed,
            "text": plain
        })[kind]

    signal accepted

    function choose(name, isChosen) {
        chosen = chosen.filter(each => each !== name).concat(isChosen ? [name] : []);
    }

    implicitWidth: 200
    implicitHeight: shown.height

    Label {
        width: field.labelWidth - 8
        height: Math.max(implicitHeight, field.kind === "list" ? 24 : field.shown.implicitHeight)
        visible: field.labelWidth > 0
        enabled: field.enabled
        verticalAlignment: Text.AlignVCenter
        text: Words.capital(field.choice.unit ? qsTr("%1 (%2)").arg(field.title).arg(field.choice.unit) : field.title)
        wrapMode: Text.Wrap
    }
    Flow {
        id: many

        x: field.labelWidth
        width: field.width - x
        visible: field.kind === "list"
        spacing: 6

        Repeater {
            model: field.kind === "list" ? field.words : []

            Tick {
                required property string modelData

                leftPadding: 0
                text: Words.choice(field.choice, modelData) // qmllint disable unqualified
                Accessible.description: field.title // qmllint disable unqualified
                onToggled: field.choose(modelData, checked) // qmllint disable unqualified
            }
        }
    }
    ComboBox {
        id: one

        x: field.labelWidth
        width: field.width - x
        visible: field.kind === "choice"
        textRole: "text"
        valueRole: "value"
        model: (field.isNeeded ? [] : [{
                    "text": qsTr("None"),
                    "value": ""
                }]).concat(field.words.map(word => ({
                            "text": Words.choice(field.choice, word),
                            "value": word
                        })))
        Accessible.name: field.title
    }
    ComboBox {
        id: typed

        x: field.labelWidth
        width: field.width - x
        visible: field.kind === "number"
        editable: true
        model: field.titled.map(Number).sort((a, b) => a - b).map(number => "%1 %2".arg(number).arg(Words.choice(field.choice, String(number))))
        Accessible.name: field.title
        onAccepted: field.accepted()
    }
    Entry {
        id: plain

        x: field.labelWidth
        width: field.width - x
        visible: field.kind === "text"
        placeholderText: field.labelWidth > 0 ? Words.range(field.choice) : Words.placeholder(field.argument, field.choice)
        Accessible.name: field.title
        Accessible.description: Words.range(field.choice)
        onAccepted: field.accepted()
    }
}
