import QtQuick
import QtQuick.Controls
import oz.panel

// An argument of a verb as the control that suits it: check boxes for several of many, a list of names for one of them,
// otherwise a text with its range and unit as the placeholder.
Item {
    id: field

    // As the daemon names it, such as "[PEER,...]", and what it can be: "words", or "least", "most" and "unit"; "titles".
    property string argument: ""
    property var choice: ({})
    readonly property bool isList: argument.includes(",...")
    readonly property bool isOptional: argument.startsWith("[")
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
    readonly property string title: Words.argument(argument)
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

    implicitWidth: shown.implicitWidth
    implicitHeight: shown.implicitHeight
    height: kind === "list" ? many.height : implicitHeight

    Flow {
        id: many

        width: field.width
        visible: field.kind === "list"

        Repeater {
            model: field.kind === "list" ? field.words : []

            CheckBox {
                required property string modelData

                text: Words.choice(field.choice, modelData) // qmllint disable unqualified
                Accessible.description: field.title // qmllint disable unqualified
                onToggled: field.choose(modelData, checked) // qmllint disable unqualified
            }
        }
    }
    ComboBox {
        id: one

        visible: field.kind === "choice"
        implicitWidth: 160
        textRole: "text"
        valueRole: "value"
        model: (field.isOptional ? [{
                    "text": qsTr("none"),
                    "value": ""
                }] : []).concat(field.words.map(word => ({
                            "text": Words.choice(field.choice, word),
                            "value": word
                        })))
        Accessible.name: field.title
    }
    ComboBox {
        id: typed

        visible: field.kind === "number"
        implicitWidth: 220
        editable: true
        model: field.titled.map(Number).sort((a, b) => a - b).map(number => "%1 %2".arg(number).arg(Words.choice(field.choice, String(number))))
        Accessible.name: field.title
        onAccepted: field.accepted()
    }
    TextField {
        id: plain

        visible: field.kind === "text"
        implicitWidth: Math.max(110, Math.ceil(metrics.advanceWidth) + 24)
        placeholderText: Words.placeholder(field.argument, field.choice)
        selectByMouse: true
        Accessible.name: field.title
        onAccepted: field.accepted()

        TextMetrics {
            id: metrics

            font: plain.font
            text: plain.placeholderText
        }
    }
}
