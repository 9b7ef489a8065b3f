import QtQuick
import QtTest
import oz.device 1.2
import oz.panel

Item {
    id: scene
    width: 400
    height: 900

    BatteryInfo {
        id: battery
    }
    PhoneControl {
        id: control
    }
    LedStatus {
        id: ledStatus
    }
    SignalSpy {
        id: answers
        target: control
        signalName: "answered"
    }
    FacilityPage {
        id: page
        anchors.fill: parent
        visible: test.shown !== ""
        phone: control
        led: ledStatus
        facility: control.facilities.find(facility => facility.name === test.shown) ?? {} // qmllint disable
    }
    PhonePicture {
        id: picture
        anchors.fill: parent
        visible: test.shown === ""
        neighbours: control.neighbours
        onBrought: (neighbour, inRange) => control.bring(neighbour, inRange)
    }

    TestCase {
        id: test
        name: "Panel"
        when: windowShown

        property string shown: "battery"

        function initTestCase() {
            tryVerify(() => control.facilities.length > 10 && control.neighbours.length > 0);
        }

        function init() {
            answers.clear();
        }

        function show(name) {
            shown = name;
            waitForRendering(scene);
        }

        // The first visible descendant for which `holds` is true.
        function find(item, holds) {
            for (let i = 0; i < item.children.length; ++i) {
                const child = item.children[i];
                if (!child.visible)
                    continue;
                const found = holds(child) ? child : find(child, holds);
                if (found !== null)
                    return found;
            }
            return null;
        }

        function named(name) {
            return find(page, item => (item.Accessible.name === name || item.text === name) && item.enabled && item.activeFocusOnTab); // qmllint disable
        }

        function problemOf(place) {
            tryVerify(() => answers.count > place);
            return answers.signalArguments[place][1]; // qmllint disable
        }

        function test_controlsSendTheirVerbs() {
            show("battery");
            const plug = find(page, item => item.text === "Plug" && item.clicked); // qmllint disable
            mouseClick(plug);
            tryVerify(() => battery.chargingState === BatteryChargingState.Charging);
            tryCompare(plug, "isSo", true);
            compare(answers.signalArguments[0][0], "battery plug"); // qmllint disable
            const level = named("Level");
            mouseClick(level, level.width / 2, level.height / 2);
            tryVerify(() => battery.level > 40 && battery.level < 60);
            // The next test counts answers.
            tryCompare(find(page, item => item.verb?.name === "level"), "pending", 0); // qmllint disable
        }

        // A control follows changes by others and sends nothing itself.
        function test_controlsShowTheState_data() {
            return [{
                    "tag": "slider",
                    "page": "battery",
                    "order": "battery level 33",
                    "control": "Level",
                    "property": "value",
                    "value": 33
                }, {
                    "tag": "choice",
                    "page": "battery",
                    "order": "battery condition bad",
                    "control": "Condition",
                    "property": "currentText",
                    "value": "Bad"
                }, {
                    "tag": "text",
                    "page": "hardware",
                    "order": "hardware name Fred",
                    "control": "Name",
                    "property": "text",
                    "value": "Fred"
                }, {
                    "tag": "switch",
                    "page": "radio",
                    "order": "radio data-roaming on",
                    "control": "Data roaming",
                    "property": "checked",
                    "value": true
                }, {
                    "tag": "list",
                    "page": "radio",
                    "order": "radio enable lte,gsm",
                    "control": "UMTS",
                    "property": "checked",
                    "value": false
                }, {
                    "tag": "switch of an instance",
                    "page": "data-profile",
                    "order": "data-profile enterprise enabled off",
                    "control": "Enabled",
                    "property": "checked",
                    "value": false
                }];
        }

        function test_controlsShowTheState(row) {
            show(row.page);
            const shown = named(row.control);
            verify(shown !== null);
            verify(shown[row.property] !== row.value);
            compare(phone.sim(row.order), ""); // qmllint disable unqualified
            tryCompare(shown, row.property, row.value);
            compare(answers.count, 0);
        }

        function test_theLastOfManyOrdersCountsAndTheControlKeepsItsValue() {
            show("battery");
            const level = named("Level");
            level.forceActiveFocus();
            compare(phone.sim("battery level 50"), ""); // qmllint disable unqualified
            tryCompare(level, "value", 50);
            for (let i = 0; i < 9; ++i)
                keyClick(Qt.Key_Right);
            compare(level.value, 59);
            tryVerify(() => battery.level === 59);
            verify(answers.count < 9);
            compare(level.value, 59);
            // Answers come in order, so all others have come before this one.
            control.tell(["battery", "level", "1000"]);
            tryVerify(() => answers.count > 0 && answers.signalArguments[answers.count - 1][1].includes("from 0 to 100")); // qmllint disable
        }

        // Of each switch, one segment is on.
        function test_switchesHaveOneSegmentOn_data() {
            const rows = [];
            for (const [name, switches] of [["battery", 2], ["orientation", 1], ["sdcard", 2], ["simcard", 1], ["activity", 1], ["cellular-network", 1]]) {
                rows.push({
                        "tag": name,
                        "switches": switches
                    });
            }
            return rows;
        }

        function test_switchesHaveOneSegmentOn(row) {
            show(row.tag);
            const switches = [];
            find(page, item => item.focusOn !== undefined && item.verbs !== undefined && switches.push(item) < 0); // qmllint disable
            compare(switches.length, row.switches);
            for (const each of switches)
                compare(each.verbs.filter(verb => each.values[verb.name] === true).length, 1);
        }

        // What can be named is offered; the rest shows its range and unit.
        function test_argumentsAreOfferedByName_data() {
            return [{
                    "tag": "one of several",
                    "page": "miracast",
                    "control": "connecting",
                    "kinds": ["choice"],
                    "shows": "Meeting room"
                }, {
                    "tag": "several of many",
                    "page": "wifi-direct",
                    "control": "sight",
                    "kinds": ["list"],
                    "shows": "Printer"
                }, {
                    "tag": "a choice and several of many",
                    "page": "wifi-direct",
                    "control": "group",
                    "kinds": ["choice", "list"],
                    "shows": "Camera"
                }, {
                    "tag": "a code with a meaning",
                    "page": "miracast",
                    "control": "stop",
                    "kinds": ["choice"],
                    "shows": "by policy"
                }, {
                    "tag": "a range with a unit",
                    "page": "clock",
                    "control": "advance",
                    "kinds": ["text"],
                    "shows": "seconds, 0 to 1,000,000 s"
                }];
        }

        function test_argumentsAreOfferedByName(row) {
            show(row.page);
            const verb = find(page, item => item.verb?.name === row.control && item.tell); // qmllint disable
            const fields = [];
            find(verb, item => item.argument !== undefined && item.kind !== undefined && fields.push(item) < 0); // qmllint disable
            compare(fields.map(field => field.kind), row.kinds);
            const last = fields[fields.length - 1];
            const shown = last.kind === "choice" ? last.shown.model.map(each => each.text) : last.kind === "text" ? [last.shown.placeholderText] : last.words.map(word => last.choice.titles[word]);
            verify(shown.includes(row.shows), shown);
        }

        function test_thePageOfTheLedShowsItsColourAndItsRequests() {
            show("led");
            const lamp = find(page, item => item.Accessible.role === Accessible.Graphic); // qmllint disable
            compare(lamp.Accessible.name, "Dark");
            mouseClick(named("Flash"));
            tryCompare(lamp.Accessible, "name", "Red");
            verify(find(page, item => /^red: flash 1 of 3/.test(item.text)) !== null); // qmllint disable
            mouseClick(named("End the panel's request"));
            tryVerify(() => find(page, item => /^The last one: red/.test(item.text)) !== null); // qmllint disable
            tryCompare(lamp.Accessible, "name", "Dark");
        }

        function test_refusedOrdersAreReportedAndTheControlGoesBack() {
            show("data-profile");
            const which = named("Which one");
            which.currentIndex = which.model.indexOf("mms");
            const permitted = named("Permitted");
            tryCompare(permitted, "checked", true);
            mouseClick(permitted);
            verify(problemOf(0).includes("everyone may use"), problemOf(0));
            tryCompare(permitted, "checked", true);
            // The reason stands beside the control, until another order is answered.
            const around = find(page, item => item.verb?.name === "permitted" && item.tell); // qmllint disable
            verify(find(around, item => String(item.text).includes("everyone may use")) !== null);
            control.tell(["battery", "level", "1000"]);
            verify(problemOf(1).includes("from 0 to 100"), problemOf(1));
            named("Enabled").toggled();
            tryCompare(around, "problem", "");
        }

        // A verb whose second argument depends on the first: only what the phone takes can be ordered.
        function test_ordersThatThePhoneWouldRefuseCannotBeGiven_data() {
            return [{
                    "tag": "playing wants a sink, so one is chosen",
                    "page": "miracast",
                    "verb": "session",
                    "first": "Playing",
                    "second": true,
                    "order": "miracast session playing tv"
                }, {
                    "tag": "none refuses one",
                    "page": "miracast",
                    "verb": "session",
                    "first": "None",
                    "second": false,
                    "order": "miracast session none"
                }, {
                    "tag": "a client wants peers, and none is chosen yet",
                    "page": "wifi-direct",
                    "verb": "group",
                    "first": "Client",
                    "second": true,
                    "order": ""
                }, {
                    "tag": "an owner may have none",
                    "page": "wifi-direct",
                    "verb": "group",
                    "first": "Owner",
                    "second": true,
                    "order": "wifi-direct group owner"
                }];
        }

        function test_ordersThatThePhoneWouldRefuseCannotBeGiven(row) {
            show(row.page);
            const verb = find(page, item => item.verb?.name === row.verb && item.tell); // qmllint disable
            const fields = [];
            find(verb, item => item.argument !== undefined && item.kind !== undefined && fields.push(item) < 0); // qmllint disable
            const first = fields[0].shown;
            first.currentIndex = first.find(row.first);
            tryCompare(fields[1], "enabled", row.second);
            const button = find(verb, item => item.give !== undefined && item.clicked !== undefined); // qmllint disable
            tryCompare(button, "enabled", row.order !== "");
            button.give();
            if (row.order !== "") {
                compare(problemOf(0), "");
                compare(answers.signalArguments[0][0], row.order); // qmllint disable
            } else {
                verify(find(verb, item => item.text === "Needed: peer") !== null);
                compare(answers.count, 0);
            }
        }

        function chipOf(name) {
            return find(picture, item => item.neighbour?.name === name); // qmllint disable
        }

        function test_neighboursMoveIntoRangeAndOut() {
            show("");
            const speaker = chipOf("speaker");
            verify(!speaker.inRange);
            // A short drag changes nothing.
            mouseDrag(speaker, 20, 20, 30, 4);
            compare(answers.count, 0);
            mouseDrag(speaker, 20, 20, 0, -picture.shelfHeight - 100);
            tryCompare(answers, "count", 1);
            compare(problemOf(0), "");
            tryCompare(speaker, "inRange", true);
            tryVerify(() => speaker.y + speaker.height < picture.rangeHeight);
            speaker.forceActiveFocus();
            keyClick(Qt.Key_Space);
            tryCompare(speaker, "inRange", false);
            verify(speaker.activeFocus);
            tryVerify(() => speaker.y > picture.rangeHeight);
            // Another client moves one.
            compare(phone.sim("miracast sink-goes tv"), ""); // qmllint disable unqualified
            tryVerify(() => chipOf("tv").y > 0 && control.neighbours.some(each => each.part === "miracast" && each.name === "tv" && !each["in-range"]));
        }
    }
}
