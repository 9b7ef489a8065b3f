import QtQuick
import QtTest
import oz.panel

// Tests of a window, with what finds the items in it.
TestCase {
    id: test

    property var window: null

    function cleanup() {
        if (window !== null)
            window.destroy();
        window = null;
        wait(0); // it is destroyed before the application is
    }

    function open(properties) {
        window = maker.createObject(null, properties);
        tryVerify(() => window.active && window.pages.length > 12);
        waitForRendering(window.contentItem);
    }

    function items(item, holds) {
        let found = [];
        for (let i = 0; i < item.children.length; ++i) {
            const child = item.children[i];
            if (child.visible && child.opacity > 0)
                found = found.concat(holds(child) ? [child] : [], items(child, holds));
        }
        return found;
    }

    function controls() {
        return items(window.contentItem, item => item.activeFocusOnTab && item.enabled && item.Accessible.role !== undefined && item.height > 0);
    }

    function named(name) {
        return controls().find(item => item.Accessible.name === name || item.text === name) ?? null;
    }

    // Where the focus is: "pages", "controls", "phone" or "signals".
    function placeOfFocus() {
        return ["phone", "controls", "signals", "pages"][window.placeOfFocus()] ?? "none";
    }

    function hasText(part) {
        return items(window.contentItem, item => item.text !== undefined && String(item.text).includes(part)).length > 0;
    }

    Component {
        id: maker

        PanelWindow {
        }
    }
}
