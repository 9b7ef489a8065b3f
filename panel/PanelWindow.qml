import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import oz.panel

ApplicationWindow {
    id: window

    property bool dark: false
    // The page that was asked for, a facility or "scenarios"; `current` is the one that is shown.
    property string page: "battery"
    readonly property string current: pages.includes(page) ? page : pages[0] ?? ""
    readonly property bool wide: width >= 820
    // The page has room for two columns, and the log is below it instead of below the phone.
    readonly property bool roomy: width >= 1240
    readonly property var facility: facilityNamed(current)
    readonly property var pages: (phone.simulated ? ["scenarios"] : []).concat(phone.facilities.map(facility => facility.name)) // qmllint disable
    // The part that a narrow window shows: 0 for the phone, 1 for its page, 2 for the log.
    property int part: 1
    readonly property var shownPage: current === "scenarios" ? scenarios : controls
    // The numbers of the orders of neighbours in the picture that the phone has not answered.
    readonly property var moves: new Set()
    // The place that had the focus last, as placeOfFocus() counts them.
    property int lastPlace: -1
    property alias focusRing: ring
    readonly property alias statusText: status.text

    function facilityNamed(name) {
        return phone.facilities.find(facility => facility.name === name) ?? ({}); // qmllint disable
    }

    function headingOf(name) {
        return Words.page(name, facilityNamed(name).title);
    }

    function turn(by) {
        const place = pages.indexOf(current) + by;
        page = pages[Math.max(0, Math.min(place, pages.length - 1))] ?? page;
    }

    // Puts the focus into the phone (0), the controls of the page (1) or the signals (2).
    function goTo(place) {
        part = place;
        if (place === 1)
            shownPage.takeFocus();
        else
            (place === 0 ? picture : log).takeFocus();
    }

    // The place that has the focus, counted as above; 3 is the list of pages, and -1 none of them.
    function placeOfFocus() {
        for (let item = activeFocusItem; item !== null; item = item.parent) {
            const place = [picture, pageColumn, log, names].indexOf(item);
            if (place >= 0)
                return place;
        }
        return -1;
    }

    // From the list of pages to the controls, the phone, the signals, and around; narrow windows have no list.
    function goOn(by) {
        const order = wide ? [3, 1, 0, 2] : [1, 0, 2];
        const from = order.indexOf(placeOfFocus()); // qmllint disable
        const place = from < 0 ? order[0] : order[(from + by + order.length) % order.length];
        if (place === 3)
            names.forceActiveFocus(Qt.TabFocusReason);
        else
            goTo(place);
    }

    // Return uses a button as the space bar does, which alone Qt Quick Controls knows.
    function press(event) {
        const item = activeFocusItem;
        event.accepted = item?.toggle !== undefined; // qmllint disable
        if (!event.accepted)
            return;
        if (item.checkable && !(item.autoExclusive && item.checked)) {
            // qmllint disable
            item.toggle(); // qmllint disable
            item.toggled(); // qmllint disable
        }
        item.clicked(); // qmllint disable
    }

    // A turned page has destroyed the control with the focus.
    onCurrentChanged: {
        if (lastPlace === 1)
            Qt.callLater(keepFocus); // qmllint disable
    }
    onActiveFocusItemChanged: {
        const place = placeOfFocus();
        if (place >= 0)
            lastPlace = place;
    }

    function keepFocus() {
        if (!selector.activeFocus && (wide || part === 1))
            shownPage.takeFocus();
    }

    width: 1000
    height: 720
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    title: qsTr("Phone")
    palette.window: dark ? "#202124" : "#f1f3f4"
    palette.windowText: dark ? "#e8eaed" : "#202124"
    palette.base: dark ? "#303134" : "white"
    palette.text: dark ? "#e8eaed" : "#202124"
    palette.button: dark ? "#3c4043" : "#e8eaed"
    palette.buttonText: dark ? "#e8eaed" : "#202124"
    palette.brightText: dark ? "#f28b82" : "#b3261e"
    palette.highlight: dark ? "#8ab4f8" : "#1a5fb4"
    palette.highlightedText: dark ? "#202124" : "white"
    palette.placeholderText: dark ? "#9aa0a6" : "#5f6368"
    palette.toolTipBase: dark ? "#3c4043" : "#fffde7"
    palette.toolTipText: dark ? "#e8eaed" : "#202124"

    PhoneControl {
        id: phone

        onAnswered: (order, problem, number) => {
            log.append("> " + order, problem === "" ? qsTr("done") : problem);
            // A control of the page shows its own.
            status.text = window.moves.delete(number) ? problem : "";
        }
    }
    LedStatus {
        id: ledStatus
    }
    Shortcut {
        sequences: [StandardKey.Quit] // qmllint disable unqualified
        onActivated: Qt.quit()
    }
    Shortcut {
        sequence: "Ctrl+D"
        onActivated: window.dark = !window.dark
    }
    Shortcut {
        sequence: "Ctrl+PgDown"
        onActivated: window.turn(1)
    }
    Shortcut {
        sequence: "Ctrl+PgUp"
        onActivated: window.turn(-1)
    }
    Shortcut {
        sequence: "Ctrl+P"
        enabled: phone.simulated
        onActivated: {
            window.page = "scenarios";
            window.part = 1;
            scenarios.toggle();
        }
    }
    Repeater {
        model: 3

        Item {
            required property int index

            Shortcut {
                sequence: "Ctrl+%1".arg(index + 1) // qmllint disable unqualified
                onActivated: window.goTo(index) // qmllint disable unqualified
            }
        }
    }
    Shortcut {
        sequence: "F6"
        onActivated: window.goOn(1)
    }
    Shortcut {
        sequence: "Shift+F6"
        onActivated: window.goOn(-1)
    }

    header: ToolBar {
        Keys.onReturnPressed: event => window.press(event)
        Keys.onEnterPressed: event => window.press(event)

        ColumnLayout {
            anchors.fill: parent
            spacing: 0

            RowLayout {
                Label {
                    Layout.fillWidth: true
                    Layout.leftMargin: 8
                    wrapMode: Text.Wrap
                    text: {
                        if (!phone.reachable)
                            return qsTr("No phone can be reached");
                        return phone.simulated ? qsTr("A simulated phone") : qsTr("A device, which is shown and cannot be told anything");
                    }
                }
                ToolButton {
                    text: window.dark ? qsTr("Light") : qsTr("Dark")
                    ToolTip.text: qsTr("Ctrl+D")
                    ToolTip.visible: hovered || visualFocus
                    onClicked: window.dark = !window.dark
                }
            }
            TabBar {
                id: parts

                Layout.fillWidth: true
                visible: !window.wide
                currentIndex: window.part
                onCurrentIndexChanged: window.part = currentIndex

                Repeater {
                    model: [qsTr("&Phone"), qsTr("&Controls"), qsTr("&Signals")]

                    PartTab {
                        required property int index
                        required property string modelData

                        text: modelData
                        onClicked: window.goTo(index) // qmllint disable unqualified
                    }
                }
            }
        }
    }
    footer: Label {
        id: status

        padding: 6
        visible: text !== ""
        color: palette.brightText
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }

    // The order of the items is that of the Tab key: the pages, the controls of one, the phone, the signals.
    GridLayout {
        anchors.fill: parent
        anchors.margins: 8
        columnSpacing: 12
        rowSpacing: 8
        Keys.onReturnPressed: event => window.press(event)
        Keys.onEnterPressed: event => window.press(event)

        ListView {
            id: names

            Layout.row: 0
            Layout.column: 0
            Layout.rowSpan: 2
            Layout.preferredWidth: 150
            Layout.fillHeight: true
            visible: window.wide && count > 0
            clip: true
            model: window.pages
            activeFocusOnTab: true
            keyNavigationEnabled: true
            currentIndex: window.pages.indexOf(window.current)
            onModelChanged: currentIndex = Qt.binding(() => window.pages.indexOf(window.current)) // a new model has reset it
            highlightMoveDuration: 0
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Pages")
            Keys.onDownPressed: window.turn(1)
            Keys.onUpPressed: window.turn(-1)
            ScrollBar.vertical: ScrollBar {
            }
            delegate: ItemDelegate {
                required property string modelData

                width: ListView.view.width
                text: window.headingOf(modelData) // qmllint disable unqualified
                highlighted: ListView.isCurrentItem
                background: Rectangle {
                    radius: 3
                    color: parent.highlighted ? palette.highlight : parent.hovered ? palette.button : "transparent" // qmllint disable
                }
                onClicked: {
                    window.page = modelData; // qmllint disable unqualified
                    ListView.view.forceActiveFocus(Qt.MouseFocusReason);
                }
            }
        }
        ColumnLayout {
            id: pageColumn

            Layout.row: 0
            Layout.column: 2
            Layout.rowSpan: window.roomy ? 1 : 2
            Layout.preferredWidth: window.roomy ? window.width * 0.46 : 340
            Layout.fillWidth: !window.wide
            // The log begins below the page's last control, at most at two thirds.
            Layout.fillHeight: !window.roomy
            Layout.preferredHeight: Math.max(window.height * 0.34, Math.min(window.height * 0.66, window.shownPage.wholeHeight + 4))
            visible: window.wide || window.part === 1

            ComboBox {
                id: selector

                Layout.fillWidth: true
                visible: !window.wide && count > 0
                model: window.pages.map(window.headingOf)
                currentIndex: window.pages.indexOf(window.current)
                onModelChanged: currentIndex = Qt.binding(() => window.pages.indexOf(window.current))
                Accessible.name: qsTr("Page")
                onActivated: index => window.page = window.pages[index]
            }
            Item {
                Layout.fillWidth: true
                Layout.fillHeight: true

                FacilityPage {
                    id: controls

                    anchors.fill: parent
                    visible: window.current !== "scenarios"
                    phone: phone
                    led: ledStatus
                    facility: window.facility
                }
                ScenarioPage {
                    id: scenarios

                    anchors.fill: parent
                    visible: window.current === "scenarios"
                    onProblem: text => status.text = text
                }
            }
        }
        PhonePicture {
            id: picture

            Layout.row: 0
            Layout.column: 1
            Layout.rowSpan: window.roomy ? 2 : 1
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredHeight: 400
            visible: window.wide || window.part === 0
            led: ledStatus.color
            vibrating: phone.vibrating
            neighbours: phone.neighbours
            onBrought: (neighbour, inRange) => window.moves.add(phone.bring(neighbour, inRange))
        }
        LogPage {
            id: log

            Layout.row: window.wide ? 1 : 0
            Layout.column: window.roomy ? 2 : 1
            Layout.fillWidth: !window.roomy
            Layout.preferredWidth: window.roomy ? window.width * 0.46 : -1
            Layout.fillHeight: true
            Layout.preferredHeight: 140
            visible: window.wide || window.part === 2
        }
    }
    // The focus ring.
    Rectangle {
        id: ring

        // The control with the focus, also if a part of it, such as a row, has it.
        readonly property Item focused: {
            let item = window.activeFocusItem;
            while (item !== null && !item.activeFocusOnTab)
                item = item.parent;
            return item;
        }

        anchors.fill: parent
        anchors.margins: focused?.clip ? 0 : -3 // a list would cut what is outside
        parent: focused !== null ? focused : window.contentItem // qmllint disable
        visible: focused !== null
        z: 100
        color: "transparent"
        border.color: window.palette.highlight
        border.width: 2
        radius: 4

        // Seen on controls that have the colour of the ring.
        Rectangle {
            anchors.fill: parent
            anchors.margins: 2
            color: "transparent"
            border.color: window.palette.base
            radius: 2
        }
    }
}
