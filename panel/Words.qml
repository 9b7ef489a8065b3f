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

    readonly property var colors: ({
            "red": qsTr("red"),
            "green": qsTr("green"),
            "blue": qsTr("blue"),
            "yellow": qsTr("yellow"),
            "cyan": qsTr("cyan"),
            "magenta": qsTr("magenta"),
            "white": qsTr("white")
        })
    // How a request to the LED ended.
    readonly property var ends: ({
            "done": qsTr("done"),
            "cancelled": qsTr("cancelled"),
            "replaced": qsTr("replaced"),
            "client-gone": qsTr("its application is gone")
        })

    // Arguments whose names say too little to people.
    readonly property var plainArguments: ({
            "RXID": qsTr("receiver"),
            "ID": qsTr("number"),
            "MM-WIDTH": qsTr("width"),
            "MM-HEIGHT": qsTr("height"),
            "ERRNO": qsTr("error"),
            "DBM": qsTr("strength")
        })

    // The heading of a page, from the title of its facility.
    function page(name, title) {
        return title ? qsTranslate("Facility", title) : others[name] ?? name;
    }

    function color(name) {
        return colors[name] ?? name;
    }

    function end(name) {
        return ends[name] ?? name;
    }

    function state(name) {
        return states[name] ?? name;
    }

    // "peer-appears" as "Peer appears".
    function verb(name) {
        const text = qsTranslate("Verb", name);
        return text.charAt(0).toUpperCase() + (text === name ? name.slice(1).replace(/-/g, " ") : text.slice(1));
    }

    // "[PEER,...]" as "peer".
    function argument(name) {
        const core = coreOf(name);
        if (core in plainArguments)
            return plainArguments[core];
        const text = qsTranslate("Argument", core);
        return text === core ? core.toLowerCase().replace(/-/g, " ") : text;
    }

    function coreOf(name) {
        return name.replace(/[\[\]]|,\.\.\./g, "");
    }

    // One of the words that an argument can be, or what it means.
    function choice(known, word) {
        return qsTranslate("Word", (known.titles ?? {})[word] ?? word);
    }

    function placeholder(name, known) {
        const text = argument(name);
        if (known.most === undefined)
            return text;
        const number = value => Number(value).toLocaleString(Qt.locale(), "f", 0);
        return qsTr("%1, %2 to %3 %4").arg(text).arg(number(known.least)).arg(number(known.most)).arg(known.unit ?? "").trim();
    }

    function help(text) {
        return qsTranslate("Help", text);
    }
}
