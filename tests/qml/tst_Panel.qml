import QtQuick
import QtTest
import oz.device 1.2
import oz.panel

Item {
    id: scene
    width: 400
    height: 800

    BatteryInfo {
        id: battery
    }
    PhoneControl {
        id: control
    }
    SignalSpy {
        id: answers
        target: control
        signalName: "answered"
    }
    FacilityPage {
        id: page
        anchors.fill: parent
        facility: control.facilities.find(facility => facility.name === test.shown) ?? {} // qmllint disable
        onTold: words => control.tell(words)
    }

    TestCase {
        id: test
        name: "Panel"
        when: windowShown

        property string shown: "battery"

        // The first visible item in it for which that holds.
        function find(item, holds) {
            for (let i = 0; i < item.children.length; ++i) {
                const child = item.children[i];
                const found = child.visible && holds(child) ? child : find(child, holds);
                if (found !== null)
                    return found;
            }
            return null;
        }

        function test_aVerbIsTheControlThatTellsThePhone() {
            tryVerify(() => control.facilities.length > 10);
            const plug = find(page, item => item.text === "plug"); // qmllint disable
            waitForRendering(page);
            mouseClick(plug);
            tryVerify(() => battery.chargingState === BatteryChargingState.Charging);
            tryCompare(answers, "count", 1);
            compare(answers.signalArguments[0][0], "battery plug"); // qmllint disable
            const slider = find(page, item => item.to === 100); // qmllint disable
            mouseClick(slider, slider.width / 2, slider.height / 2);
            tryVerify(() => battery.level > 40 && battery.level < 60);
            test.shown = "data-profile";
            waitForRendering(page);
            const enabled = find(page, item => item.text === "enabled"); // qmllint disable
            mouseClick(enabled);
            tryVerify(() => answers.signalArguments[answers.count - 1][0].startsWith("data-profile enterprise enabled o")); // qmllint disable
        }

        function test_whatThePhoneRefusesIsSaid() {
            answers.clear();
            control.tell(["battery", "level", "1000"]);
            tryCompare(answers, "count", 1);
            verify(answers.signalArguments[0][1] !== "", answers.signalArguments[0][1]); // qmllint disable
        }
    }
}
