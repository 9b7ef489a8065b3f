import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import oz.panel

// The page on which scenarios are picked, played, paused, stopped and recorded.
Scroller {
    id: page

    readonly property alias state: scenario.state
    readonly property bool isOn: scenario.state === "playing" || scenario.state === "paused"

    signal problem(string text)

    function toggle() {
        if (scenario.state === "playing")
            scenario.pause();
        else if (scenario.state === "paused")
            scenario.resume();
        else if (file.text !== "")
            scenario.play(file.text, speed.word, goOn.checked);
        else
            askForOne();
    }

    function askForOne() {
        choice.open = true;
        page.problem(qsTr("No scenario is chosen: choose one, then press Ctrl+P"));
        takeFocus();
    }

    // Puts the focus on the first scenario, or else on the first control.
    function takeFocus() {
        if (choice.open && rows.count > 0)
            rows.itemAt(0).forceActiveFocus(Qt.TabFocusReason);
        else
            play.forceActiveFocus(Qt.TabFocusReason);
    }

    ScenarioControl {
        id: scenario

        onRestarted: steps.clear() // qmllint disable
        onChanged: {
            // Bindings to the state may not have followed yet.
            if ((scenario.state === "playing" || scenario.state === "paused") && !speed.activeFocus)
                speed.editText = scenario.speed === "max" ? speed.atOnce : scenario.speed + " ×";
        }
        onStepped: (time, text, outcome, detail) => {
            if (steps.count === 500)
                steps.remove(0);
            steps.append({
                    "time": time,
                    "what": text,
                    "outcome": outcome,
                    "detail": detail
                });
            log.positionViewAtEnd();
        }
        onRefused: problem => page.problem(problem)
        onRecorded: report => recorded.text = report
    }
    // qmllint disable
    ListModel {
        id: steps
    }

    // qmllint enable
    Label {
        text: qsTr("Scenarios")
        font.bold: true
        font.pixelSize: 18
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Section {
        id: choice

        width: parent.width - parent.leftPadding - parent.rightPadding
        title: qsTr("Choose")
        open: scenario.state === ""

        Repeater {
            id: rows

            model: scenario.installed

            ItemDelegate {
                id: row

                required property var modelData

                width: parent.width
                visible: choice.open // qmllint disable unqualified
                focusPolicy: Qt.StrongFocus
                highlighted: file.text === modelData.file // qmllint disable unqualified
                Accessible.role: Accessible.RadioButton
                Accessible.name: Words.scenario(modelData.name)
                Accessible.description: modelData.description
                Accessible.checked: highlighted
                onClicked: file.text = modelData.file // qmllint disable unqualified
                onDoubleClicked: page.isOn || page.toggle() // qmllint disable
                Keys.onReturnPressed: clicked()
                contentItem: Column {
                    Label {
                        width: parent.width
                        text: Words.scenario(row.modelData.name)
                        textFormat: Text.PlainText
                        font.bold: true
                        color: row.highlighted ? palette.highlightedText : palette.text
                        wrapMode: Text.Wrap
                    }
                    Label {
                        width: parent.width
                        text: row.modelData.description
                        color: row.highlighted ? palette.highlightedText : palette.placeholderText
                        font.pixelSize: 11
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
        Entry {
            id: file

            width: parent.width
            visible: choice.open
            placeholderText: qsTr("A scenario's file")
            Accessible.name: placeholderText
            onAccepted: page.isOn || page.toggle()

            DropArea {
                anchors.fill: parent
                onDropped: drop => {
                    if (drop.hasUrls)
                        file.text = ScenarioControl.pathOf(drop.urls[0]); // qmllint disable
                }
            }
        }
    }
    Flow {
        width: parent.width - parent.leftPadding - parent.rightPadding
        spacing: 6

        PushButton {
            id: play

            text: scenario.state === "playing" ? qsTr("Pause") : scenario.state === "paused" ? qsTr("Go on") : qsTr("Play")
            highlighted: true
            enabled: page.isOn || file.text !== ""
            onClicked: page.toggle()
        }
        PushButton {
            text: qsTr("Stop")
            enabled: page.isOn
            onClicked: scenario.stop()
        }
        Label {
            height: goOn.height
            verticalAlignment: Text.AlignVCenter
            text: qsTr("Speed")
        }
        ComboBox {
            id: speed

            readonly property string atOnce: qsTr("at once")
            readonly property string word: editText.replace(/[^0-9.,]/g, "").replace(",", ".") || "max"

            width: 100
            editable: true
            model: ["1 ×", "10 ×", "60 ×", "600 ×", atOnce]
            Accessible.name: qsTr("Speed")
            onActivated: if (page.isOn)
                scenario.setSpeed(word)
            onAccepted: if (page.isOn)
                scenario.setSpeed(word)
        }
        Tick {
            id: goOn

            text: qsTr("Past failed steps")
            enabled: !page.isOn
        }
    }
    ColumnLayout {
        width: parent.width - parent.leftPadding - parent.rightPadding
        visible: scenario.state !== ""

        Label {
            Layout.fillWidth: true
            visible: text !== ""
            text: scenario.description
            textFormat: Text.PlainText
            font.italic: true
            wrapMode: Text.Wrap
        }
        ProgressBar {
            Layout.fillWidth: true
            to: 100
            value: scenario.percent
            Accessible.name: qsTr("Progress")
        }
        Label {
            Layout.fillWidth: true
            text: qsTr("Step %1 of %2, %3").arg(scenario.step).arg(scenario.steps).arg(Words.state(scenario.state))
            color: scenario.state === "failed" ? reason.color : palette.windowText
            wrapMode: Text.Wrap
        }
        Label {
            Layout.fillWidth: true
            text: qsTr("Expectations met: %1, failed steps: %2").arg(scenario.met).arg(scenario.failed)
            wrapMode: Text.Wrap
        }
        Label {
            id: reason

            Layout.fillWidth: true
            visible: text !== ""
            text: scenario.problem
            textFormat: Text.PlainText
            color: palette.brightText
            wrapMode: Text.Wrap
        }
        ListView {
            id: log

            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(contentHeight, 220)
            visible: count > 0
            clip: true
            activeFocusOnTab: true
            keyNavigationEnabled: false
            model: steps
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Steps")
            ScrollBar.vertical: ScrollBar {
                id: bar
            }
            Keys.onUpPressed: bar.decrease()
            Keys.onDownPressed: bar.increase()
            delegate: RowLayout {
                id: step

                required property string time
                required property string what
                required property string outcome
                required property string detail

                width: ListView.view.width - 12

                Label {
                    Layout.preferredWidth: 56
                    Layout.alignment: Qt.AlignTop
                    text: step.time
                    horizontalAlignment: Text.AlignRight
                    color: palette.placeholderText
                    font.pixelSize: 11
                }
                Label {
                    Layout.fillWidth: true
                    text: step.what + (step.outcome === "passed" ? " ✓" : step.outcome === "failed" ? " ✗ " + step.detail : step.outcome === "waiting" ? " …" : "")
                    textFormat: Text.PlainText
                    color: step.outcome === "failed" ? palette.brightText : palette.windowText
                    font.pixelSize: 11
                    wrapMode: Text.Wrap
                }
            }
        }
    }
    Section {
        id: recorder

        width: parent.width - parent.leftPadding - parent.rightPadding
        title: qsTr("Record")

        Entry {
            id: target

            width: parent.width
            visible: recorder.open
            enabled: scenario.recording === ""
            text: "~/recording.json"
            Accessible.name: qsTr("The file to record into")
        }
        PushButton {
            visible: recorder.open
            text: scenario.recording === "" ? qsTr("Record") : qsTr("End the recording")
            enabled: target.text !== ""
            onClicked: {
                recorded.text = "";
                if (scenario.recording === "")
                    scenario.record(target.text);
                else
                    scenario.stopRecording();
            }
        }
        Label {
            id: recorded

            width: parent.width
            visible: recorder.open && text !== ""
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
        }
    }
}
