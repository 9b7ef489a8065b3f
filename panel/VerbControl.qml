import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import oz.panel

// A verb with arguments as the control that suits them, which shows the phone's value. Only the person's input sends an
// order; a change of the phone's value never does.
ColumnLayout {
    id: control

    // As the daemon describes it.
    property var verb: ({})
    // The choices for arguments of all verbs of the facility, by the arguments' bare names.
    property var related: ({})
    // The argument for the phone's present state; undefined if it is not known.
    property var value
    // The number of the order that the phone has not answered, and the words of the next one.
    property int pending: 0
    property var next: null
    // Why the phone refused the last order; empty if it did not.
    property string problem: ""
    // The words of the arguments that are entered one by one.
    property var entered: []

    readonly property string name: verb.name ?? ""
    readonly property string help: Words.help(verb.help ?? "")
    readonly property var wanted: verb.arguments ?? []
    readonly property string argument: wanted.length === 1 ? wanted[0] : ""
    readonly property var choice: choiceOf(argument)
    // A range that a slider can show step by step.
    readonly property bool isShortRange: choice.most !== undefined && (choice.most - choice.least) / choice.step <= 1000
    readonly property string kind: {
        if (argument === "on|off")
            return "switch";
        if (argument === "" || value === undefined)
            return "call";
        if (isShortRange)
            return "slider";
        if (argument.endsWith(",..."))
            return "list";
        return choice.words.length > 0 && choice.most === undefined ? "choice" : "text";
    }

    // What the first argument says about an optional one after it.
    readonly property var leading: choiceOf(wanted[0] ?? "")
    readonly property var missing: wanted.filter((word, index) => isNeeded(index, entered) && !isRefused(index, entered) && (entered[index] ?? "") === "")
    // One argument stands beside its button, several have labels.
    readonly property bool isInline: wanted.length === 1 && !argument.includes(",...")

    // Sends the order with these words, and returns its number.
    property var give: words => 0

    // An argument means the same in all verbs of a facility.
    function choiceOf(word) {
        const near = related[Words.coreOf(word)] ?? {};
        const known = (verb.choices ?? {})[word] ?? near;
        const words = known.words ?? (word.includes("|") && !word.startsWith("[") ? word.split("|") : []);
        return {
            "words": words,
            "titles": known.titles ?? (known.words !== undefined ? near.titles : undefined) ?? {},
            "least": known.least,
            "most": known.most,
            "step": known.step ?? 1,
            "unit": known.unit ?? "",
            "followed": known.followed ?? [],
            "alone": known.alone ?? []
        };
    }

    function isNeeded(index, words) {
        return !wanted[index].startsWith("[") || leading.followed.includes(words[0]);
    }

    function isRefused(index, words) {
        return index > 0 && leading.alone.includes(words[0]);
    }

    // One of several words is about what the verb is about; a number that is offered by name is no number to people.
    function titleOf(word) {
        if (word === "ID" && choiceOf(word).words.length > 0)
            return qsTr("which one");
        return word.includes("|") ? Words.verb(name) : Words.argument(word);
    }

    function collect() {
        const words = [];
        for (let i = 0; i < fields.count; ++i)
            words.push(fields.itemAt(i)?.word ?? ""); // qmllint disable
        entered = words;
    }

    // While an order is under way, only the newest of the next ones is kept.
    function tell(words) {
        if (pending !== 0)
            next = words;
        else
            pending = give([name].concat(words)); // qmllint disable
    }

    function answered(number) {
        if (number !== pending)
            return;
        pending = 0;
        if (next !== null) {
            const words = next;
            next = null;
            tell(words);
        } else {
            show();
        }
    }

    // Shows the phone's value, unless the person is entering another one.
    function show() {
        if (pending !== 0)
            return;
        toggle.checked = value === true;
        if (!slider.pressed && !isNaN(Number(value)))
            slider.value = Number(value);
        if (value !== undefined) {
            box.currentIndex = choice.words.indexOf(String(value));
            if (!field.activeFocus || field.text === field.shown)
                field.text = String(value);
            field.shown = String(value);
            const chosen = String(value).split(",");
            for (let i = 0; i < list.count; ++i)
                list.itemAt(i).checked = chosen.includes(choice.words[i]);
        }
    }

    spacing: 2
    onValueChanged: show()
    onVerbChanged: show()
    Component.onCompleted: show()

    RowLayout {
        Layout.fillWidth: true
        spacing: 8

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 0

            Label {
                Layout.fillWidth: true
                visible: control.kind !== "call"
                text: Words.verb(control.name)
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                visible: text !== ""
                text: control.help
                color: palette.placeholderText
                font.pixelSize: 11
                wrapMode: Text.Wrap
            }
        }
        Label {
            Layout.alignment: Qt.AlignTop
            visible: slider.visible
            text: control.value !== undefined && control.choice.words.includes(String(control.value)) && !slider.pressed && control.pending === 0 ? Words.choice(control.choice, control.value) : "%1 %2".arg(Number(slider.value.toFixed(2)).toLocaleString(Qt.locale(), "f", control.choice.step < 1 ? 1 : 0)).arg(control.choice.unit)
        }
        Toggle {
            id: toggle

            rightPadding: 0
            visible: control.kind === "switch"
            Accessible.name: Words.verb(control.name)
            Accessible.description: control.help
            onToggled: control.tell([checked ? "on" : "off"])
        }
        ComboBox {
            id: box

            Layout.preferredWidth: 150
            visible: control.kind === "choice"
            model: control.choice.words.map(word => Words.choice(control.choice, word))
            Accessible.name: Words.verb(control.name)
            Accessible.description: control.help
            onActivated: control.tell([control.choice.words[currentIndex]])
        }
    }
    RowLayout {
        Layout.fillWidth: true
        visible: control.kind === "slider"

        Slider {
            id: slider

            Layout.fillWidth: true
            visible: control.kind === "slider"
            from: control.choice.least ?? 0
            to: control.choice.most ?? 1
            stepSize: control.choice.step ?? 1
            snapMode: Slider.SnapAlways
            Accessible.name: Words.verb(control.name)
            Accessible.description: qsTr("from %1 to %2 %3").arg(from).arg(to).arg(control.choice.unit)
            onMoved: control.tell([String(Number(value.toFixed(2)))])
        }
        Repeater {
            model: control.kind === "slider" ? control.choice.words : []

            PushButton {
                required property string modelData

                text: Words.choice(control.choice, modelData) // qmllint disable unqualified
                checkable: false
                highlighted: control.value === modelData // qmllint disable unqualified
                Accessible.name: "%1: %2".arg(Words.verb(control.name)).arg(text) // qmllint disable unqualified
                onClicked: control.tell([modelData]) // qmllint disable unqualified
            }
        }
    }
    Flow {
        Layout.fillWidth: true
        visible: control.kind === "list"
        spacing: 6

        Repeater {
            id: list

            model: control.argument.endsWith(",...") ? control.choice.words : []

            Tick {
                required property string modelData

                leftPadding: 0
                text: Words.choice(control.choice, modelData) // qmllint disable unqualified
                Accessible.description: control.help // qmllint disable unqualified
                onToggled: {
                    const chosen = [];
                    for (let i = 0; i < list.count; ++i) {
                        // qmllint disable unqualified
                        if (list.itemAt(i).checked) // qmllint disable
                            chosen.push(list.itemAt(i).modelData); // qmllint disable
                    }
                    control.tell([chosen.join(",")]); // qmllint disable unqualified
                }
            }
        }
    }
    RowLayout {
        Layout.fillWidth: true
        visible: control.kind === "text"

        Entry {
            id: field

            property string shown: ""

            Layout.fillWidth: true
            visible: control.kind === "text"
            placeholderText: Words.placeholder(control.argument, control.choice)
            Accessible.name: Words.verb(control.name)
            Accessible.description: control.help
            onAccepted: set.clicked()
            Keys.onEscapePressed: event => {
                // A dialog's Escape is not taken from it.
                event.accepted = text !== shown;
                text = shown;
            }
        }
        PushButton {
            id: set

            visible: control.kind === "text"
            text: qsTr("Set")
            Accessible.name: qsTr("Set: %1").arg(Words.verb(control.name))
            onClicked: control.tell(field.text === "" && control.argument.startsWith("[") ? [] : [field.text])
        }
    }
    GridLayout {
        Layout.fillWidth: true
        visible: control.kind === "call"
        columns: control.isInline ? 2 : 1

        Column {
            Layout.fillWidth: true
            visible: fields.count > 0
            spacing: 6

            Repeater {
                id: fields

                model: control.kind === "call" ? control.wanted : []
                onCountChanged: Qt.callLater(control.collect) // qmllint disable

                ArgumentField {
                    required property int index
                    required property string modelData

                    width: parent?.width ?? 0 // qmllint disable
                    labelWidth: control.wanted.length > 1 ? 96 : 0 // qmllint disable unqualified
                    argument: modelData
                    title: control.titleOf(modelData) // qmllint disable unqualified
                    choice: control.choiceOf(modelData) // qmllint disable unqualified
                    isNeeded: control.isNeeded(index, control.entered) // qmllint disable unqualified
                    enabled: !control.isRefused(index, control.entered) // qmllint disable unqualified
                    onWordChanged: Qt.callLater(control.collect) // qmllint disable
                    onAccepted: go.give() // qmllint disable unqualified
                }
            }
        }
        RowLayout {
            Layout.fillWidth: !control.isInline

            // Why the button is disabled; a field of its own says it itself.
            Label {
                Layout.fillWidth: true
                visible: !control.isInline
                text: control.missing.length > 0 ? qsTr("Needed: %1").arg(control.missing.map(control.titleOf).join(", ")) : ""
                color: palette.placeholderText
                font.pixelSize: 11
                wrapMode: Text.Wrap
            }
            PushButton {
                id: go

                function give() {
                    control.collect();
                    if (enabled)
                        control.tell(control.entered.filter(word => word !== ""));
                }

                enabled: control.missing.length === 0
                text: Words.verb(control.name)
                Accessible.description: control.help
                onClicked: give()
            }
        }
    }
    Refusal {
        Layout.fillWidth: true
        text: control.problem
    }
}
