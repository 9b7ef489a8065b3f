import QtQuick

// The verbs with arguments of a facility's page, either those of the phone or the faults of its services.
Column {
    id: list

    // The FacilityPage, which would need this type in turn if it were typed.
    property var owner: null
    property bool isFault: false

    spacing: 10

    Repeater {
        model: list.owner?.some(list.isFault, true) ?? []

        VerbControl {
            id: control

            required property var modelData

            width: list.width // qmllint disable unqualified
            verb: modelData
            related: list.owner.related // qmllint disable unqualified
            value: list.owner.values[modelData.name] // qmllint disable unqualified
            give: list.owner.give // qmllint disable unqualified
            problem: list.owner.refusalOf(modelData.name) // qmllint disable unqualified

            Connections {
                target: list.owner.phone // qmllint disable unqualified

                function onAnswered(order, problem, number) {
                    control.answered(number);
                }
            }
        }
    }
}
