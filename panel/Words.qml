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
    // Of the daemon's words, those that are shown otherwise than with a capital letter.
    readonly property var abbreviations: ({
            "rssi": qsTr("Signal strength"),
            "pin": qsTr("PIN"),
            "cdma_1x": "CDMA 1x",
            "evdo": "EV-DO",
            "gsm": "GSM",
            "lte": "LTE",
            "ok": "OK",
            "umts": "UMTS"
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
        return text === name ? abbreviations[name] ?? capital(name.replace(/-/g, " ")) : capital(text);
    }

    // "low-battery" as "Low battery".
    function scenario(name) {
        return capital(name.replace(/-/g, " ").replace(/\bsim\b/, "SIM"));
    }

    function capital(text) {
        return text.charAt(0).toUpperCase() + text.slice(1);
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

    // One of the words that an argument can be, or what it means. A name that the phone's owner gave is kept as it is.
    function choice(known, word) {
        const title = (known.titles ?? {})[word];
        if (title !== undefined)
            return qsTranslate("Word", title);
        const text = qsTranslate("Word", word);
        return text === word ? abbreviations[word] ?? capital(word) : capital(text);
    }

    // The numbers that an argument can be; empty for texts.
    function range(known) {
        if (known.most === undefined)
            return "";
        const number = value => Number(value).toLocaleString(Qt.locale(), "f", 0);
        return qsTr("%1 to %2 %3").arg(number(known.least)).arg(number(known.most)).arg(known.unit ?? "").trim();
    }

    function placeholder(name, known) {
        const text = range(known);
        return text === "" ? argument(name) : qsTr("%1, %2").arg(argument(name)).arg(text);
    }

    function help(text) {
        return capital(qsTranslate("Help", text));
    }
}
