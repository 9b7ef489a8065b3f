import QtQuick

// The window: sizes, themes, scenarios.
Item {
    id: scene

    WindowTest {
        id: test
        name: "Window"

        function test_everyPageCanBeNamed() {
            open({});
            for (const page of window.pages)
                verify(window.headingOf(page) !== page, page);
            // The list of pages follows one that comes late, such as the clock.
            window.destroy();
            open({
                    "page": "clock"
                });
            const pages = named("Pages");
            tryCompare(pages, "currentIndex", window.pages.indexOf("clock"));
        }

        // Describes what is cut off; empty if the item is visible, if need be by scrolling, with its whole text.
        function faultOf(item) {
            // Around what is turned with the phone.
            const place = item.mapToItem(window.contentItem, Qt.rect(0, 0, item.width, item.height));
            if (place.x < -0.5 || place.x + place.width > window.contentItem.width + 0.5)
                return "is cut at the side";
            if (item.truncated === true)
                return "has a text that is cut";
            for (let around = item.parent; around !== null; around = around.parent) {
                if (around.contentY !== undefined && around.contentHeight > around.height)
                    return "";
            }
            return place.y + place.height > window.contentItem.height + 0.5 ? "is cut below" : "";
        }

        // Describes the first fault of the visible items; empty without one.
        function faults() {
            const all = controls();
            const texts = items(window.contentItem, item => item.wrapMode !== undefined && item.text !== undefined && item.text !== "");
            for (const item of all.concat(texts)) {
                if (faultOf(item) !== "")
                    return "%1 %2 %3".arg(item).arg(item.text ?? item.Accessible.name).arg(faultOf(item));
            }
            for (let i = 0; i < all.length; ++i) {
                if (all[i].Accessible.name === "" && (all[i].text ?? "") === "")
                    return "%1 has no name".arg(all[i]);
                for (let j = 0; j < i; ++j) {
                    if (overlap(all[i], all[j]))
                        return "%1 %2 lies on %3 %4".arg(all[i]).arg(all[i].text ?? "").arg(all[j]).arg(all[j].text ?? "");
                }
            }
            return "";
        }

        function overlap(a, b) {
            for (let up = a.parent; up !== null; up = up.parent) {
                if (up === b)
                    return false;
            }
            for (let up = b.parent; up !== null; up = up.parent) {
                if (up === a)
                    return false;
            }
            const p = shownOf(a);
            const q = shownOf(b);
            return p.left < q.right - 1 && q.left < p.right - 1 && p.top < q.bottom - 1 && q.top < p.bottom - 1;
        }

        // The edges of what the items around it leave of an item.
        function shownOf(item) {
            const edges = {
                "left": -Infinity,
                "top": -Infinity,
                "right": Infinity,
                "bottom": Infinity
            };
            for (let around = item; around !== null; around = around.parent) {
                if (around !== item && !around.clip)
                    continue;
                const place = around.mapToItem(window.contentItem, 0, 0);
                edges.left = Math.max(edges.left, place.x);
                edges.top = Math.max(edges.top, place.y);
                edges.right = Math.min(edges.right, place.x + around.width);
                edges.bottom = Math.min(edges.bottom, place.y + around.height);
            }
            return edges;
        }

        function test_nothingIsCutOrOverlapsAndTabReachesEveryControl_data() {
            const rows = [];
            for (const size of [[360, 640], [320, 480], [640, 480], [820, 600], [1000, 720], [1600, 1000]]) {
                for (const part of size[0] < 820 ? [0, 1, 2] : [1]) {
                    rows.push({
                            "tag": "%1x%2 %3".arg(size[0]).arg(size[1]).arg(part),
                            "width": size[0],
                            "height": size[1],
                            "part": part
                        });
                }
            }
            return rows;
        }

        function test_nothingIsCutOrOverlapsAndTabReachesEveryControl(row) {
            open({
                    "width": row.width,
                    "height": row.height,
                    "part": row.part
                });
            for (const page of row.part === 1 ? window.pages : ["battery"]) {
                window.page = page;
                waitForRendering(window.contentItem);
                for (const section of items(window.contentItem, item => item.checkable === true && item.flat === true && !item.checked))
                    section.toggle();
                // The layout takes a moment.
                tryVerify(() => faults() === "", 20000, page);
                compare(faults(), "", page);
                const all = controls();
                verify(all.length > 0, page);
                const reached = new Set();
                for (let i = 0; i < all.length + 5; ++i) {
                    keyClick(Qt.Key_Tab);
                    verify(window.focusRing.visible, "%1: %2".arg(page).arg(window.activeFocusItem));
                    for (let item = window.focusRing.parent; item !== null; item = item.parent)
                        reached.add(item);
                }
                for (const item of all)
                    verify(reached.has(item), "%1: the focus does not come to %2 %3".arg(page).arg(item).arg(item.text ?? item.Accessible.name));
            }
        }

        // The contrast that accessibility guidelines ask of text: at least 4.5 to 1.
        function test_textsHaveEnoughContrast_data() {
            return [{
                    "tag": "light",
                    "dark": false
                }, {
                    "tag": "dark",
                    "dark": true
                }];
        }

        function test_textsHaveEnoughContrast(row) {
            open({
                    "dark": row.dark
                });
            function light(color) {
                const part = value => value <= 0.03928 ? value / 12.92 : Math.pow((value + 0.055) / 1.055, 2.4);
                return 0.2126 * part(color.r) + 0.7152 * part(color.g) + 0.0722 * part(color.b) + 0.05;
            }
            const colors = window.palette;
            let edges = 0;
            for (const [text, ground] of [["windowText", "window"], ["text", "base"], ["buttonText", "button"], ["highlightedText", "highlight"], ["placeholderText", "window"], ["placeholderText", "base"], ["brightText", "window"]]) {
                const values = [light(colors[text]), light(colors[ground])].sort((a, b) => a - b);
                verify(values[1] / values[0] >= 4.5, "%1 on %2".arg(text).arg(ground));
            }
            // The edges of what can be used, 3 to 1.
            for (const page of ["radio", "hardware"]) {
                window.page = page;
                tryVerify(() => window.current === page && controls().length > 2);
                for (const item of controls()) {
                    const edge = (item.checkable ? item.indicator : item.selectAll ? item.background : null)?.border; // qmllint disable
                    if (edge === undefined)
                        continue;
                    const values = [light(edge.color), light(colors.window)].sort((a, b) => a - b);
                    verify(values[1] / values[0] >= 3, "%1 of %2".arg(item.Accessible.name).arg(page));
                    ++edges;
                }
            }
            verify(edges >= 9, edges);
        }

        // A wide page is above the signals, in two columns; each control has what it needs.
        function test_aRoomyWindowHasThePageAboveTheSignals() {
            open({
                    "width": 1600,
                    "height": 1000,
                    "page": "vibration"
                });
            const top = name => items(window.contentItem, item => item.text === name && item.font?.bold)[0];
            const at = item => item.mapToItem(window.contentItem, 0, 0);
            tryVerify(() => hasText("supported"));
            tryVerify(() => at(top("Signals")).y > at(top("Vibration")).y && at(top("Signals")).y < 500);
            verify(Math.abs(at(top("Signals")).x - at(top("Vibration")).x) < 12);
            verify(at(named("What applications see")).x > at(named("Present")).x);
        }

        function test_theLogHasALineForEachSignal() {
            open({
                    "page": "battery"
                });
            compare(phone.sim("battery condition bad"), ""); // qmllint disable unqualified
            tryVerify(() => hasText("battery condition"));
            compare(phone.sim("battery level 41"), ""); // qmllint disable unqualified
            tryVerify(() => hasText("battery level"));
            compare(items(window.contentItem, item => item.text === "battery condition").length, 1);
            verify(hasText("Bad"));
            for (const heading of ["Time", "What", "Values"])
                verify(hasText(heading), heading);
            compare(phone.sim("battery condition ok"), ""); // qmllint disable unqualified
        }

        function test_theLedPageShowsRequestsAndMakesThem() {
            open({
                    "page": "led"
                });
            tryVerify(() => hasText("No application asks"));
            named("Colour").currentIndex = 2;
            named("Flashes").currentIndex = 3;
            named("Flash").clicked();
            tryVerify(() => hasText("blue: ") && hasText("until it ends"));
            named("End the panel's request").clicked();
            tryVerify(() => hasText("The last one: blue"));
            verify(hasText("cancelled"));
        }

        function test_theProgressOfARideFollowsItsTimeAndItsSpeedIsShown() {
            compare(phone.play("{\"steps\": [\"activity active\", {\"together\": [[{\"repeat\": 4, \"steps\": [{\"wait\": 100}]}], [{\"wait\": 600}]]}]}", "25"), ""); // qmllint disable unqualified
            open({
                    "page": "scenarios"
                });
            const bar = () => items(window.contentItem, item => item.Accessible.name === "Progress")[0] ?? null;
            tryVerify(() => hasText("Step 2 of 2, playing"));
            verify(bar().position < 0.3, bar().position);
            tryCompare(named("Speed"), "editText", "25 ×");
            tryVerify(() => bar().position >= 0.1 && bar().position <= 0.5, 10000);
            named("Stop").clicked();
            tryVerify(() => hasText("stopped"));
        }

        function test_aScenarioIsPlayedPausedAndFollowed() {
            open({
                    "page": "scenarios"
                });
            const text = part => items(window.contentItem, item => item.text !== undefined && String(item.text).includes(part)).length > 0;
            tryVerify(() => named("Tour") !== null);
            verify(!named("Play") || !named("Play").enabled);
            window.page = "battery";
            keyClick(Qt.Key_P, Qt.ControlModifier);
            tryVerify(() => window.statusText.includes("No scenario is chosen"));
            compare(window.current, "scenarios");
            tryVerify(() => placeOfFocus() === "controls");
            named("Tour").clicked();
            named("Play").clicked();
            tryVerify(() => text("of 44, playing"));
            verify(text("A tour of the whole phone"));
            named("Pause").clicked();
            tryVerify(() => text("of 44, paused"));
            keyClick(Qt.Key_P, Qt.ControlModifier);
            tryVerify(() => text("of 44, playing"));
            named("Stop").clicked();
            tryVerify(() => text("of 44, stopped"));
            // A scenario of another client, which fails.
            compare(phone.play("{\"steps\": [{\"say\": \"hello\"}, {\"expect\": \"led.active\", \"within\": 0.01}]}"), ""); // qmllint disable unqualified
            tryVerify(() => text("Step 2 of 2, failed"));
            verify(text("hello"));
            verify(text("Expectations met: 0, failed steps: 1"));
            verify(text("led.active is false"));
        }

        function test_theScenarioPageRecords() {
            open({
                    "page": "scenarios"
                });
            tryVerify(() => named("Record") !== null);
            named("Record").toggle();
            tryVerify(() => named("The file to record into") !== null);
            named("The file to record into").text = phone.file("/r.json"); // qmllint disable unqualified
            const begin = controls().filter(item => item.text === "Record")[1];
            begin.clicked();
            tryVerify(() => named("End the recording") !== null);
            // The recording may begin a little after the button shows it.
            tryVerify(() => phone.sim("battery level 12") === "" && phone.isRecording(), 10000); // qmllint disable unqualified
            compare(phone.sim("battery level 13"), ""); // qmllint disable unqualified
            begin.clicked();
            tryVerify(() => items(window.contentItem, item => String(item.text ?? "").includes("steps are in")).length > 0);
            verify(phone.read("/r.json").includes("battery level 13")); // qmllint disable unqualified
        }
    }
}
