import QtQuick

// The window, used by keys alone.
Item {
    WindowTest {
        id: test
        name: "Keys"

        function test_keysTurnPagesAndChangeTheTheme() {
            open({
                    "page": "battery"
                });
            keyClick(Qt.Key_PageDown, Qt.ControlModifier);
            compare(window.current, "cellular-network");
            keyClick(Qt.Key_PageUp, Qt.ControlModifier);
            compare(window.current, "battery");
            const isDark = window.dark;
            keyClick(Qt.Key_D, Qt.ControlModifier);
            compare(window.dark, !isDark);
            keyClick(Qt.Key_3, Qt.ControlModifier);
            compare(window.part, 2);
            // The tabs of a narrow window by their letters; the focus goes along.
            window.width = 480;
            for (const [key, place] of [[Qt.Key_P, "phone"], [Qt.Key_S, "signals"], [Qt.Key_C, "controls"]]) {
                keyClick(key, Qt.AltModifier);
                tryVerify(() => placeOfFocus() === place, 5000, place);
            }
        }

        function test_f6GoesRoundAndTheFocusStaysInTheControlsOfATurnedPage_data() {
            return [{
                    "tag": "wide",
                    "width": 1000,
                    "places": ["pages", "controls", "phone", "signals", "pages"]
                }, {
                    "tag": "narrow",
                    "width": 480,
                    "places": ["controls", "phone", "signals", "controls"]
                }];
        }

        function test_f6GoesRoundAndTheFocusStaysInTheControlsOfATurnedPage(row) {
            open({
                    "width": row.width,
                    "page": "battery"
                });
            for (const place of row.places) {
                keyClick(Qt.Key_F6);
                tryVerify(() => placeOfFocus() === place, 5000, place);
                verify(window.focusRing.visible);
            }
            keyClick(Qt.Key_F6, Qt.ShiftModifier);
            compare(placeOfFocus(), "signals");
            keyClick(Qt.Key_2, Qt.ControlModifier);
            for (const page of window.pages.slice(window.pages.indexOf("battery"), -1)) {
                compare(window.current, page);
                tryVerify(() => placeOfFocus() === "controls" && window.activeFocusItem.visible, 5000, page);
                keyClick(Qt.Key_PageDown, Qt.ControlModifier);
            }
        }

        // Each key does what the space bar does.
        function test_returnUsesTheButtonWithTheFocus_data() {
            return [{
                    "tag": "segment",
                    "page": "battery",
                    "control": "Plug",
                    "happens": control => control.isSo
                }, {
                    "tag": "switch",
                    "page": "battery",
                    "control": "Hold",
                    "happens": () => hasText("> battery hold on")
                }, {
                    "tag": "section",
                    "page": "battery",
                    "control": "Faults",
                    "happens": control => control.checked
                }, {
                    "tag": "button of an argument that is chosen",
                    "page": "miracast",
                    "control": "Session",
                    "happens": () => hasText("> miracast session playing")
                }];
        }

        function test_returnUsesTheButtonWithTheFocus(row) {
            open({
                    "page": row.page
                });
            tryVerify(() => items(window.contentItem, item => item.text === row.control || item.Accessible.name === row.control).some(item => item.toggle !== undefined));
            const control = items(window.contentItem, item => item.toggle !== undefined && (item.text === row.control || item.Accessible.name === row.control))[0];
            control.forceActiveFocus(Qt.TabFocusReason);
            keyClick(Qt.Key_Return);
            tryVerify(() => row.happens(control));
            verify(window.focusRing.visible && control.activeFocus);
        }
    }
}
