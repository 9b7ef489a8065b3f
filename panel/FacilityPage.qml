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
    // A page with this much room shows what it has without being asked.
    readonly property bool isRoomy: height >= 800
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
        return page.phone.tell([page.name].concat(page.instance === "" ? [] : [page.instance], words)); // qmllint disable
    }

    // Excludes the verbs that move neighbours into and out of range: each neighbour has a switch instead.
    function some(isFault, hasArguments) {
        return verbs.filter(verb => (verb.fault === true) === isFault && verb.arguments.length > 0 === hasArguments && verb.name !== facility.comes && verb.name !== facility.goes);
    }

    onNameChanged: contentItem.contentY = 0

    Label {
        width: parent.width - parent.leftPadding - parent.rightPadding
        text: Words.page(page.name, page.facility.title)
        font.bold: true
        font.pixelSize: 18
        wrapMode: Text.Wrap
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Label {
        width: parent.width - parent.leftPadding - parent.rightPadding
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

        width: parent.width - parent.leftPadding - parent.rightPadding
        visible: page.instances.length > 0
        model: page.instances
        Accessible.name: qsTr("Which one")
    }
    Loader {
        width: parent.width - parent.leftPadding - parent.rightPadding
        active: page.name === "led"
        visible: active
        sourceComponent: LedPage {
            status: page.led // qmllint disable unqualified
        }
    }
    Repeater {
        model: page.switches

        StateSwitch {
            required property var modelData

            width: parent.width - parent.leftPadding - parent.rightPadding // qmllint disable
            verbs: modelData.map(name => page.verbs.find(verb => verb.name === name)).filter(verb => verb !== undefined) // qmllint disable unqualified
            values: page.values // qmllint disable unqualified
            onGiven: name => page.give([name]) // qmllint disable unqualified
        }
    }
    Flow {
        width: parent.width - parent.leftPadding - parent.rightPadding
        visible: states.count > 0
        spacing: 6

        Repeater {
            id: states

            model: page.some(false, false).filter(verb => !page.switches.some(names => names.includes(verb.name)))

            StateButton {
                required property var modelData

                verb: modelData
                value: page.values[modelData.name] // qmllint disable unqualified
                onGiven: page.give([modelData.name]) // qmllint disable unqualified
            }
        }
    }
    Label {
        visible: around.count > 0
        text: qsTr("In range")
        font.bold: true
    }
    Repeater {
        id: around

        model: page.facility.comes ? page.phone.neighbours.filter(neighbour => neighbour.part === page.name).length : 0

        Switch {
            required property int index
            readonly property var neighbour: page.phone.neighbours.filter(neighbour => neighbour.part === page.name)[index] // qmllint disable unqualified
            readonly property bool inRange: (neighbour ?? {})["in-range"] === true

            width: parent.width - parent.leftPadding - parent.rightPadding // qmllint disable
            text: neighbour?.title ?? "" // qmllint disable unqualified
            checked: inRange
            onToggled: page.phone.bring(neighbour, checked) // qmllint disable unqualified
        }
    }
    Repeater {
        model: page.some(false, true)

        VerbControl {
            id: control

            required property var modelData

            width: parent.width - parent.leftPadding - parent.rightPadding // qmllint disable
            verb: modelData
            related: page.related // qmllint disable unqualified
            value: page.values[modelData.name] // qmllint disable unqualified
            give: page.give // qmllint disable unqualified

            Connections {
                target: page.phone // qmllint disable unqualified

                function onAnswered(order, problem, number) {
                    control.answered(number);
                }
            }
        }
    }
    Section {
        id: seen

        width: parent.width - parent.leftPadding - parent.rightPadding
        visible: rows.count > 0
        title: qsTr("What applications see")
        open: page.verbs.length === 0 || page.isRoomy

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
                    text: row.name
                    color: palette.placeholderText
                    wrapMode: Text.WrapAnywhere
                }
                Label {
                    Layout.fillWidth: true
                    Layout.alignment: Qt.AlignTop
                    text: row.value
                    textFormat: Text.PlainText
                    wrapMode: Text.Wrap
                }
            }
        }
    }
    Section {
        id: faults

        width: parent.width - parent.leftPadding - parent.rightPadding
        visible: page.verbs.some(verb => verb.fault === true)
        title: qsTr("Faults")

        Flow {
            width: parent.width
            visible: faults.open
            spacing: 6

            Repeater {
                model: page.some(true, false)

                StateButton {
                    required property var modelData

                    verb: modelData
                    onGiven: page.give([modelData.name]) // qmllint disable unqualified
                }
            }
        }
        Repeater {
            model: page.some(true, true)

            VerbControl {
                id: fault

                required property var modelData

                width: parent.width
                visible: faults.open // qmllint disable unqualified
                verb: modelData
                related: page.related // qmllint disable unqualified
                give: page.give // qmllint disable unqualified

                Connections {
                    target: page.phone // qmllint disable unqualified

                    function onAnswered(order, problem, number) {
                        fault.answered(number);
                    }
                }
            }
        }
    }
}
