<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>DaemonLink</name>
    <message>
        <source>the services were started anew</source>
        <translation>die Dienste wurden neu gestartet</translation>
    </message>
</context>
<context>
    <name>FacilityPage</name>
    <message>
        <source>Fed by %1, which is shown and cannot be told anything here</source>
        <translation>Gespeist von %1; wird angezeigt und lässt sich hier nicht steuern</translation>
    </message>
    <message>
        <source>Not known: %1</source>
        <translation>Nicht bekannt: %1</translation>
    </message>
    <message>
        <source>Which one</source>
        <translation>Welches</translation>
    </message>
    <message>
        <source>In range</source>
        <translation>In Reichweite</translation>
    </message>
    <message>
        <source>What applications see</source>
        <translation>Was Anwendungen sehen</translation>
    </message>
    <message>
        <source>Faults</source>
        <translation>Störungen</translation>
    </message>
</context>
<context>
    <name>LogPage</name>
    <message>
        <source>Signals</source>
        <translation>Signale</translation>
    </message>
</context>
<context>
    <name>NeighbourChip</name>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>in range</source>
        <translation>in Reichweite</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>außer Reichweite</translation>
    </message>
</context>
<context>
    <name>PanelWindow</name>
    <message>
        <source>Phone</source>
        <translation>Telefon</translation>
    </message>
    <message>
        <source>&gt; %1: %2</source>
        <translation>&gt; %1: %2</translation>
    </message>
    <message>
        <source>No phone can be reached</source>
        <translation>Kein Telefon erreichbar</translation>
    </message>
    <message>
        <source>A simulated phone</source>
        <translation>Ein simuliertes Telefon</translation>
    </message>
    <message>
        <source>A device, which is shown and cannot be told anything</source>
        <translation>Ein Gerät, das angezeigt wird und sich nicht steuern lässt</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>Ctrl+D</source>
        <translation>Strg+D</translation>
    </message>
    <message>
        <source>Controls</source>
        <translation>Bedienung</translation>
    </message>
    <message>
        <source>Signals</source>
        <translation>Signale</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Page</source>
        <translation>Seite</translation>
    </message>
</context>
<context>
    <name>PhonePicture</name>
    <message>
        <source>The phone</source>
        <translation>Das Telefon</translation>
    </message>
    <message>
        <source>Out of range: drag them to the phone</source>
        <translation>Außer Reichweite: zum Telefon ziehen</translation>
    </message>
</context>
<context>
    <name>ScenarioControl</name>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
</context>
<context>
    <name>ScenarioPage</name>
    <message>
        <source>Scenarios</source>
        <translation>Szenarien</translation>
    </message>
    <message>
        <source>Choose</source>
        <translation>Auswählen</translation>
    </message>
    <message>
        <source>A scenario&apos;s file</source>
        <translation>Datei eines Szenarios</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Go on</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Tempo</translation>
    </message>
    <message>
        <source>at once</source>
        <translation>sofort</translation>
    </message>
    <message>
        <source>Past failed steps</source>
        <translation>Über Fehler hinweg</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Step %1 of %2, %3</source>
        <translation>Schritt %1 von %2, %3</translation>
    </message>
    <message>
        <source>Expectations met: %1, failed steps: %2</source>
        <translation>Erfüllte Erwartungen: %1, fehlgeschlagene Schritte: %2</translation>
    </message>
    <message>
        <source>Steps</source>
        <translation>Schritte</translation>
    </message>
    <message>
        <source>Record</source>
        <translation>Aufzeichnen</translation>
    </message>
    <message>
        <source>The file to record into</source>
        <translation>Datei für die Aufzeichnung</translation>
    </message>
    <message>
        <source>End the recording</source>
        <translation>Aufzeichnung beenden</translation>
    </message>
</context>
<context>
    <name>StateButton</name>
    <message>
        <source>%1 (so it is now)</source>
        <translation>%1 (so ist es jetzt)</translation>
    </message>
</context>
<context>
    <name>VerbControl</name>
    <message>
        <source>from %1 to %2 %3</source>
        <translation>von %1 bis %2 %3</translation>
    </message>
    <message>
        <source>Set</source>
        <translation>Setzen</translation>
    </message>
    <message>
        <source>Set: %1</source>
        <translation>Setzen: %1</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>Activity</source>
        <translation>Benutzung</translation>
    </message>
    <message>
        <source>Battery</source>
        <translation>Akku</translation>
    </message>
    <message>
        <source>Cellular networks</source>
        <translation>Mobilfunknetze</translation>
    </message>
    <message>
        <source>Clock</source>
        <translation>Uhr</translation>
    </message>
    <message>
        <source>Data profiles</source>
        <translation>Datenprofile</translation>
    </message>
    <message>
        <source>Displays</source>
        <translation>Bildschirme</translation>
    </message>
    <message>
        <source>Hardware</source>
        <translation>Hardware</translation>
    </message>
    <message>
        <source>LED</source>
        <translation>LED</translation>
    </message>
    <message>
        <source>Miracast</source>
        <translation>Miracast</translation>
    </message>
    <message>
        <source>Orientation</source>
        <translation>Lage</translation>
    </message>
    <message>
        <source>Radio</source>
        <translation>Mobilfunk</translation>
    </message>
    <message>
        <source>Scenarios</source>
        <translation>Szenarien</translation>
    </message>
    <message>
        <source>SD card</source>
        <translation>SD-Karte</translation>
    </message>
    <message>
        <source>SIM card</source>
        <translation>SIM-Karte</translation>
    </message>
    <message>
        <source>Vibration</source>
        <translation>Vibration</translation>
    </message>
    <message>
        <source>Wi-Fi Direct</source>
        <translation>Wi-Fi Direct</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>läuft</translation>
    </message>
    <message>
        <source>paused</source>
        <translation>angehalten</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>bestanden</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>stopped</source>
        <translation>abgebrochen</translation>
    </message>
</context>
</TS>
