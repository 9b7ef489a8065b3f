import QtQuick
import QtTest
import oz.device 1.2

Item {
    id: scene
    width: 200
    height: 200

    // An animation that always runs.
    Rectangle {
        width: 10
        height: 10
        NumberAnimation on x  {
            from: 0
            to: 190
            duration: 1000
            loops: Animation.Infinite
        }
    }

    BatteryInfo {
        id: battery
    }
    DeviceRequests {
        id: requests
    }
    DataProfileModel {
        id: profiles
    }
    Repeater {
        id: names
        model: DisplayModel {
        }
        delegate: Item {
            required property string displayName
            required property bool attached
        }
    }

    TestCase {
        name: "Requests"
        when: windowShown

        property int frames: 0

        function countFrame() {
            ++frames;
        }

        function test_endWithResultAndReason() {
            const request = requests.connectProfile("none");
            compare(request.running, true);
            let signals = 0;
            request.finished.connect(() => ++signals);
            tryCompare(request, "running", false);
            compare([signals, request.succeeded, request.code, request.reason], [1, false, CellularConnectionRequestResult.InvalidInterface, "InvalidInterface"]);
            compare([request.errorNumber, request.errorString], [2, "No such file or directory"]);
        }

        function test_flashNamesAnArgumentThatIsMissingOrOfAnotherType_data() {
            const color = ", expected an enumerator of LedColor other than None";
            const count = ", expected a whole number of flashes, or -1 to flash until cancelled";
            const rows = [];
            const row = (words, problem) => rows.push({
                        "tag": problem,
                        "words": words
                    });
            row([], "color is missing" + color);
            row(["red", 3], "color is \"red\"" + color);
            row([1.5, 3], "color is 1.5" + color);
            row([LedColor.None, 3], "color is None" + color);
            row([LedColor.Red], "count is missing" + count);
            row([LedColor.Red, true], "count is true" + count);
            row([LedColor.Red, "3"], "count is \"3\"" + count);
            return rows;
        }

        function test_flashNamesAnArgumentThatIsMissingOrOfAnotherType(row) {
            const problem = "flash(color, count): " + row.tag;
            ignoreWarning(problem);
            const request = requests.flash(...row.words);
            tryCompare(request, "running", false);
            compare([request.succeeded, request.reason, request.errorString], [false, "InvalidArgument", problem]);
        }

        function test_modelsGiveTheirRolesToDelegates() {
            compare(names.count, 2);
            compare([names.itemAt(0).displayName, names.itemAt(1).attached], ["panel", false]); // qmllint disable
            compare(phone.sim("display attach 1"), ""); // qmllint disable unqualified
            tryVerify(() => names.itemAt(1).attached); // qmllint disable
            compare(profiles.record(profiles.rowOf("internet")).valid, true);
        }

        function test_aStalledServiceFreezesNoFrame() {
            const window = scene.Window.window;
            phone.stall(); // qmllint disable unqualified
            const running = [requests.connectProfile("mms"), requests.scanPeers(), requests.connectSink("02:00:00:00:02:01"), requests.flash(LedColor.Red, 3), requests.vibrate(100)];
            window.afterAnimating.connect(countFrame);
            // A scene that waited for an answer would render no frame before the request's end.
            tryVerify(() => frames > 50, 20000, frames);
            window.afterAnimating.disconnect(countFrame);
            verify(running[0].running && running[1].running);
            phone.goOn(); // qmllint disable unqualified
            tryVerify(() => !running[0].running && !running[1].running);
            verify(running[0].succeeded, running[0].reason);
            const end = requests.disconnectProfile("mms");
            tryVerify(() => !end.running);
        }
    }
}
