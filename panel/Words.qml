pragma Singleton
import QtQml

// The daemon's words for people, translated. Without a translation they are shown as the daemon sends them.
QtObject {
    // The pages that are not facilities.
    readonly property var others: ({
            "clock": qsTr("Clock"),
            "scenarios": qsTr("Scenarios")
        })
    readonly property var states: ({
            "playing": qsTr("playing"),
            "paused": qsTr("paused"),
            "passed": qsTr("passed"),
            "failed": qsTr("failed"),
            "stopped": qsTr("stopped")
        })

    // The heading of a page, from the title of its facility.
    function page(name, title) {
        return title ? qsTranslate("Facility", title) : others[name] ?? name;
    }

    function state(name) {
        return states[name] ?? name;
    }

    // "peer-appears" as "Peer appears".
    function verb(name) {
        const text = qsTranslate("Verb", name);
        return text.charAt(0).toUpperCase() + (text === name ? name.slice(1).replace(/-/g, " ") : text.slice(1));
    }

    function help(text) {
        return qsTranslate("Help", text);
    }
}
