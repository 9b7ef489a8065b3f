import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import oz.panel

// The page of a facility: its controls, its state, and what applications see of it.
Scroller {
    id: page

    property PhoneControl phone: null
    property LedStatus led: null
    property var facility: ({})
    readonly property string name: facility.name ?? ""
    readonly property var instances: facility.instances ?? []
    readonly property string instance: instances.length > 0 ? which.currentText : ""
    readonly property var values: ((phone?.values ?? {})[name] ?? {})[instance] ?? {}
    // As text, so that controls are recreated only if the verbs differ.
    readonly property string described: JSON.stringify(facility.verbs ?? [])
    readonly property var verbs: JSON.parse(described)

    // As the daemon lists them: verbs of which one is so at a time.
    readonly property var switches: JSON.parse(JSON.stringify(facility.switches ?? []))
    // A broad page shows what applications see beside the controls, others below them.
    readonly property bool isBroad: availableWidth >= 620
    readonly property real room: availableWidth - 16
    readonly property real partWidth: isBroad ? (room - parts.spacing) / 2 : room
    // What applications see is open where it fits.
    readonly property bool hasRoom: verbs.length === 0 || isBroad || told.y + told.height + rows.count * 22 + 90 < availableHeight
    // The last order that the phone refused: its verb, or the name of a neighbour, and the reason.
    property string refused: ""
    property string refusal: ""
    // The verbs, or names of neighbours, by the numbers of the orders that the phone has not answered.
    property var asked: ({})
    readonly property var related: relatedOf(verbs, phone?.neighbours ?? [])

    // The choices for arguments, by the arguments' bare names, with the names of the neighbours among them.
    function relatedOf(verbs, neighbours) {
        const related = {};
        for (const verb of verbs) {
            for (const argument in verb.choices ?? {})
                related[Words.coreOf(argument)] = verb.choices[argument];
        }
        const comes = verbs.find(verb => verb.name === facility.comes);
        if (comes !== undefined) {
            const titles = {};
            for (const neighbour of neighbours) {
                if (neighbour.part === name)
                    titles[neighbour.name] = neighbour.title;
            }
            const core = Words.coreOf(comes.arguments[0]);
            related[core] = Object.assign({}, related[core], {
                    "titles": titles
                });
        }
        return related;
    }

    // Puts the focus on the first control.
    function takeFocus() {
        const first = contentItem.nextItemInFocusChain(true);
        if (first !== null)
            first.forceActiveFocus(Qt.TabFocusReason);
    }

    function give(words) {
        const number = page.phone.tell([page.name].concat(page.instance === "" ? [] : [page.instance], words)); // qmllint disable
        asked[number] = words[0];
        return number;
    }

    function bring(neighbour, inRange) {
        asked[page.phone.bring(neighbour, inRange)] = neighbour.name;
    }

    function refusalOf(name) {
        return refused === name ? refusal : "";
    }

    // Excludes the verbs that move neighbours into and out of range: each neighbour has a switch instead.
    function some(isFault, hasArguments) {
        return verbs.filter(verb => (verb.fault === true) === isFault && verb.arguments.length > 0 === hasArguments && verb.name !== facility.comes && verb.name !== facility.goes);
    }

    onNameChanged: {
        contentItem.contentY = 0;
        refused = "";
        seen.open = Qt.binding(() => hasRoom); // one that was opened or closed by hand has no binding
    }

    Connections {
        target: page.phone

        function onAnswered(order, problem, number) {
            if (!(number in page.asked))
                return;
            page.refused = page.asked[number];
            page.refusal = problem;
            delete page.asked[number];
        }
    }
    Label {
        width: page.room
        text: Words.page(page.name, page.facility.title)
        font.bold: true
        font.pixelSize: 18
        wrapMode: Text.Wrap
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Label {
        width: page.room
        visible: text !== ""
        text: {
            if (page.verbs.length > 0 || (page.facility.source ?? "") === "")
                return "";
            if (page.facility.state === "known")
                return qsTr("Fed by %1, which is shown and cannot be told anything here").arg(page.facility.source);
            return qsTr("Not known: %1").arg(page.facility.reason ?? page.facility.state);
        }
        color: palette.placeholderText
        wrapMode: Text.Wrap
    }
    ComboBox {
        id: which

        width: page.partWidth
        visible: page.instances.length > 0
        model: page.instances
        Accessible.name: qsTr("Which one")
    }
    Grid {
        id: parts

        columns: page.isBroad && page.verbs.length > 0 ? 2 : 1
        spacing: page.isBroad ? 24 : 10

        Column {
            id: told

            width: page.partWidth
            visible: page.verbs.length > 0 || page.name === "led"
            spacing: 10

            Loader {
                width: parent.width
                active: page.name === "led"
                visible: active
                sourceComponent: LedPage {
                    status: page.led // qmllint disable unqualified
                }
            }
            Repeater {
                model: page.switches

                Column {
                    id: switched

                    required property var modelData

                    width: page.partWidth // qmllint disable unqualified
                    spacing: 4

                    StateSwitch {
                        width: parent.width
                        verbs: switched.modelData.map(name => page.verbs.find(verb => verb.name === name)).filter(verb => verb !== undefined) // qmllint disable unqualified
                        values: page.values // qmllint disable unqualified
                        onGiven: name => page.give([name]) // qmllint disable unqualified
                    }
                    Refusal {
                        width: parent.width
                        text: switched.modelData.includes(page.refused) ? page.refusal : "" // qmllint disable unqualified
                    }
                }
            }
            Flow {
                width: parent.width
                visible: states.count > 0
                spacing: 6

                Repeater {
                    id: states

                    model: page.some(false, false).filter(verb => !verb.repeats && !page.switches.some(names => names.includes(verb.name)))

                    StateButton {
                        required property var modelData

                        verb: modelData
                        value: page.values[modelData.name] // qmllint disable unqualified
                        onGiven: page.give([modelData.name]) // qmllint disable unqualified
                    }
                }
            }
            Refusal {
                width: parent.width
                text: states.model.some(verb => verb.name === page.refused) ? page.refusal : ""
            }
            Label {
                visible: around.count > 0
                text: qsTr("In range")
                font.bold: true
            }
            Repeater {
                id: around

                model: page.facility.comes ? page.phone.neighbours.filter(neighbour => neighbour.part === page.name).length : 0

                GridLayout {
                    id: place

                    required property int index
                    readonly property var neighbour: page.phone.neighbours.filter(neighbour => neighbour.part === page.name)[index] // qmllint disable unqualified
                    readonly property bool inRange: (neighbour ?? {})["in-range"] === true

                    width: page.partWidth // qmllint disable unqualified
                    columns: 2
                    rowSpacing: 0

                    Label {
                        Layout.fillWidth: true
                        text: place.neighbour?.title ?? "" // qmllint disable unqualified
                        textFormat: Text.PlainText
                        wrapMode: Text.Wrap
                    }
                    Toggle {
                        topPadding: 0
                        bottomPadding: 0
                        rightPadding: 0
                        checked: place.inRange
                        Accessible.name: place.neighbour?.title ?? "" // qmllint disable unqualified
                        onToggled: {
                            page.bring(place.neighbour, checked); // qmllint disable unqualified
                            checked = Qt.binding(() => place.inRange); // also after a refusal
                        }
                    }
                    Refusal {
                        Layout.fillWidth: true
                        Layout.columnSpan: 2
                        text: page.refusalOf(place.neighbour?.name ?? "") // qmllint disable unqualified
                    }
                }
            }
            VerbList {
                width: parent.width
                owner: page
            }
        }
        Column {
            width: page.partWidth
            spacing: 10

            Section {
                id: seen

                width: parent.width
                visible: rows.count > 0
                title: qsTr("What applications see")
                open: page.hasRoom

                Repeater {
                    id: rows

                    model: FacilityValues {
                        facility: page.name
                        instance: page.instance
                    }

                    RowLayout {
                        id: row

                        required property string name
                        required property string value

                        width: parent.width
                        visible: seen.open // qmllint disable unqualified

                        Label {
                            Layout.preferredWidth: Math.min(200, row.width * 0.45)
                            Layout.alignment: Qt.AlignTop
                            // May break before a capital.
                            text: row.name.replace(/([a-z])([A-Z])/g, "$1\u200b$2")
                            color: palette.placeholderText
                            wrapMode: Text.Wrap
                        }
                        Label {
                            Layout.fillWidth: true
                            Layout.alignment: Qt.AlignTop
                            // Flags may break after each; an empty value is seen to be empty.
                            text: row.value === "" ? "–" : row.value.startsWith("\"") ? row.value : row.value.replace(/\|/g, " | ")
                            textFormat: Text.PlainText
                            wrapMode: Text.Wrap
                        }
                    }
                }
            }
            Section {
                id: faults

                width: parent.width
                visible: page.verbs.some(verb => verb.fault === true)
                title: qsTr("Faults")

                Flow {
                    width: parent.width
                    visible: faults.open && plain.count > 0
                    spacing: 6

                    Repeater {
                        id: plain

                        model: page.some(true, false)

                        StateButton {
                            required property var modelData

                            verb: modelData
                            onGiven: page.give([modelData.name]) // qmllint disable unqualified
                        }
                    }
                }
                Refusal {
                    width: parent.width
                    text: faults.open && plain.model.some(verb => verb.name === page.refused) ? page.refusal : ""
                }
                VerbList {
                    width: parent.width
                    visible: faults.open
                    owner: page
                    isFault: true
                }
            }
        }
    }
}
