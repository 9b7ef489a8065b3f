<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Argument</name>
    <message>
        <source>NAME</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>VALUE</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>RXID</source>
        <translation>Empfänger</translation>
    </message>
    <message>
        <source>PERCENT</source>
        <translation>Prozent</translation>
    </message>
    <message>
        <source>CELSIUS</source>
        <translation>Celsius</translation>
    </message>
    <message>
        <source>DBM</source>
        <translation>Stärke</translation>
    </message>
    <message>
        <source>SECONDS</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>FACTOR</source>
        <translation>Faktor</translation>
    </message>
    <message>
        <source>ERRNO</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>MILLISECONDS</source>
        <translation>Millisekunden</translation>
    </message>
    <message>
        <source>ID</source>
        <translation>Nummer</translation>
    </message>
    <message>
        <source>WIDTH</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>HEIGHT</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>MM-WIDTH</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>MM-HEIGHT</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>DEGREES</source>
        <translation>Grad</translation>
    </message>
    <message>
        <source>TEXT</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>SINK</source>
        <translation>Anzeige</translation>
    </message>
    <message>
        <source>CODE</source>
        <translation>Code</translation>
    </message>
    <message>
        <source>TECHNOLOGY</source>
        <translation>Technik</translation>
    </message>
    <message>
        <source>PEER</source>
        <translation>Gerät</translation>
    </message>
</context>
<context>
    <name>ArgumentField</name>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
</context>
<context>
    <name>Facility</name>
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
    <name>Help</name>
    <message>
        <source>somebody uses the phone</source>
        <translation>jemand benutzt das Telefon</translation>
    </message>
    <message>
        <source>nobody uses the phone any more</source>
        <translation>niemand benutzt das Telefon mehr</translation>
    </message>
    <message>
        <source>sets a status of the power manager, known or new</source>
        <translation>setzt einen Status der Energieverwaltung, bekannt oder neu</translation>
    </message>
    <message>
        <source>ends the facility&apos;s service, as if it had crashed</source>
        <translation>beendet den Dienst der Einrichtung, als wäre er abgestürzt</translation>
    </message>
    <message>
        <source>starts it again</source>
        <translation>startet ihn wieder</translation>
    </message>
    <message>
        <source>connects a charger</source>
        <translation>schließt ein Ladegerät an</translation>
    </message>
    <message>
        <source>disconnects the charger</source>
        <translation>trennt das Ladegerät</translation>
    </message>
    <message>
        <source>lays the phone on a wireless charger, or takes it off</source>
        <translation>legt das Telefon auf ein drahtloses Ladegerät oder nimmt es weg</translation>
    </message>
    <message>
        <source>sets the charge</source>
        <translation>setzt die Ladung</translation>
    </message>
    <message>
        <source>sets the temperature; the battery charges from 0 to 45 only</source>
        <translation>setzt die Temperatur; geladen wird nur von 0 bis 45</translation>
    </message>
    <message>
        <source>sets the condition</source>
        <translation>setzt den Zustand</translation>
    </message>
    <message>
        <source>keeps the charge as it is, or lets it move by itself</source>
        <translation>hält die Ladung, wie sie ist, oder lässt sie von selbst gehen</translation>
    </message>
    <message>
        <source>takes the battery out</source>
        <translation>nimmt den Akku heraus</translation>
    </message>
    <message>
        <source>puts the battery in</source>
        <translation>legt den Akku ein</translation>
    </message>
    <message>
        <source>lets it serve, in the place of one of its kind</source>
        <translation>lässt es versorgen, anstelle eines seiner Art</translation>
    </message>
    <message>
        <source>leaves it</source>
        <translation>verlässt es</translation>
    </message>
    <message>
        <source>sets its signal strength</source>
        <translation>setzt seine Signalstärke</translation>
    </message>
    <message>
        <source>sets the operator&apos;s name, and the name that the user sees</source>
        <translation>setzt den Namen des Betreibers und den angezeigten Namen</translation>
    </message>
    <message>
        <source>makes using it roaming, or not</source>
        <translation>schaltet das Roaming in diesem Netz ein oder aus</translation>
    </message>
    <message>
        <source>hides the roaming from the user, or shows it</source>
        <translation>verbirgt das Roaming vor dem Benutzer oder zeigt es</translation>
    </message>
    <message>
        <source>lets the phone&apos;s time pass at once</source>
        <translation>lässt die Zeit des Telefons auf einmal vergehen</translation>
    </message>
    <message>
        <source>lets the phone&apos;s time go faster than the real one; 0 stands still</source>
        <translation>lässt die Zeit des Telefons schneller gehen als die wirkliche; bei 0 steht sie</translation>
    </message>
    <message>
        <source>enables the profile</source>
        <translation>schaltet das Profil ein</translation>
    </message>
    <message>
        <source>permits the applications here, where it is access-controlled</source>
        <translation>lässt die Anwendungen hier es benutzen, wo der Zugang geregelt ist</translation>
    </message>
    <message>
        <source>ends its connection from the network&apos;s side</source>
        <translation>beendet seine Verbindung vom Netz her</translation>
    </message>
    <message>
        <source>answers the next request with an error</source>
        <translation>beantwortet die nächste Anfrage mit einem Fehler</translation>
    </message>
    <message>
        <source>lets the next request wait</source>
        <translation>lässt die nächste Anfrage warten</translation>
    </message>
    <message>
        <source>leaves the next request unanswered</source>
        <translation>lässt die nächste Anfrage ohne Antwort</translation>
    </message>
    <message>
        <source>ends the connection at the next request, as a service that dies</source>
        <translation>beendet die Verbindung bei der nächsten Anfrage, wie ein Dienst, der stirbt</translation>
    </message>
    <message>
        <source>answers the next request with what means nothing</source>
        <translation>beantwortet die nächste Anfrage mit etwas ohne Sinn</translation>
    </message>
    <message>
        <source>adds an external display, attached; one called &apos;miracast...&apos; is wireless</source>
        <translation>fügt einen äußeren Bildschirm hinzu, verbunden; einer namens &apos;miracast...&apos; ist drahtlos</translation>
    </message>
    <message>
        <source>takes a display away</source>
        <translation>nimmt einen Bildschirm weg</translation>
    </message>
    <message>
        <source>attaches a display</source>
        <translation>verbindet einen Bildschirm</translation>
    </message>
    <message>
        <source>detaches a display</source>
        <translation>trennt einen Bildschirm ab</translation>
    </message>
    <message>
        <source>turns what a display shows: 0, 90, 180 or 270</source>
        <translation>dreht, was ein Bildschirm zeigt: 0, 90, 180 oder 270</translation>
    </message>
    <message>
        <source>gives a display another size in pixels</source>
        <translation>gibt einem Bildschirm eine andere Größe in Pixeln</translation>
    </message>
    <message>
        <source>gives the device a name</source>
        <translation>gibt dem Gerät einen Namen</translation>
    </message>
    <message>
        <source>brings a sink into range; scans bring it into sight</source>
        <translation>bringt eine Anzeige in Reichweite; eine Suche findet sie</translation>
    </message>
    <message>
        <source>takes a sink out of range, which ends its session; a scan finds it missing</source>
        <translation>nimmt eine Anzeige aus der Reichweite, was ihre Sitzung beendet; eine Suche vermisst sie</translation>
    </message>
    <message>
        <source>stops the service: 1 internally, 2 by an application, 4 for lack of support, 5 by policy, 6 to 9 as Wi-Fi Direct fails</source>
        <translation>hält den Dienst an: 1 von innen, 2 von einer Anwendung, 4 mangels Unterstützung, 5 nach Vorschrift, 6 bis 9 wie Wi-Fi Direct scheitert</translation>
    </message>
    <message>
        <source>starts the service again</source>
        <translation>startet den Dienst wieder</translation>
    </message>
    <message>
        <source>answers the next request of this kind with an error</source>
        <translation>beantwortet die nächste Anfrage dieser Art mit einem Fehler</translation>
    </message>
    <message>
        <source>holds the phone top-up</source>
        <translation>hält das Telefon aufrecht</translation>
    </message>
    <message>
        <source>holds the phone bottom-up</source>
        <translation>hält das Telefon kopfüber</translation>
    </message>
    <message>
        <source>holds the phone left-up</source>
        <translation>hält das Telefon mit der linken Seite nach oben</translation>
    </message>
    <message>
        <source>holds the phone right-up</source>
        <translation>hält das Telefon mit der rechten Seite nach oben</translation>
    </message>
    <message>
        <source>holds the phone face-up</source>
        <translation>hält das Telefon mit der Vorderseite nach oben</translation>
    </message>
    <message>
        <source>holds the phone face-down</source>
        <translation>hält das Telefon mit der Vorderseite nach unten</translation>
    </message>
    <message>
        <source>holds the phone so that its sensor cannot tell how</source>
        <translation>hält das Telefon so, dass sein Sensor nicht sagen kann, wie</translation>
    </message>
    <message>
        <source>switches the radio</source>
        <translation>schaltet den Mobilfunk</translation>
    </message>
    <message>
        <source>lets networks of these technologies serve, and no others</source>
        <translation>lässt Netze dieser Techniken versorgen und keine anderen</translation>
    </message>
    <message>
        <source>switches mobile data</source>
        <translation>schaltet mobile Daten</translation>
    </message>
    <message>
        <source>allows mobile data while roaming</source>
        <translation>erlaubt mobile Daten beim Roaming</translation>
    </message>
    <message>
        <source>inserts a card</source>
        <translation>steckt eine Karte ein</translation>
    </message>
    <message>
        <source>takes the card out, busy or not</source>
        <translation>wirft die Karte aus, ob sie benutzt wird oder nicht</translation>
    </message>
    <message>
        <source>begins to read or write the card</source>
        <translation>beginnt, die Karte zu lesen oder zu schreiben</translation>
    </message>
    <message>
        <source>ends reading and writing</source>
        <translation>beendet Lesen und Schreiben</translation>
    </message>
    <message>
        <source>inserts the card, ready</source>
        <translation>steckt die Karte ein, bereit</translation>
    </message>
    <message>
        <source>takes the card out</source>
        <translation>nimmt die Karte heraus</translation>
    </message>
    <message>
        <source>makes it ready</source>
        <translation>macht sie bereit</translation>
    </message>
    <message>
        <source>makes it wait for its PIN</source>
        <translation>lässt sie auf ihre PIN warten</translation>
    </message>
    <message>
        <source>makes it one that is not provisioned</source>
        <translation>macht sie zu einer, die nicht freigeschaltet ist</translation>
    </message>
    <message>
        <source>makes it one that cannot be used here</source>
        <translation>macht sie zu einer, die hier nicht benutzbar ist</translation>
    </message>
    <message>
        <source>makes it one that cannot be read</source>
        <translation>macht sie zu einer, die nicht lesbar ist</translation>
    </message>
    <message>
        <source>puts the motor in, or takes it out</source>
        <translation>setzt den Motor ein oder nimmt ihn heraus</translation>
    </message>
    <message>
        <source>switches Wi-Fi Direct on or off</source>
        <translation>schaltet Wi-Fi Direct ein oder aus</translation>
    </message>
    <message>
        <source>gives the phone Wi-Fi Direct, or takes it away</source>
        <translation>gibt dem Telefon Wi-Fi Direct oder nimmt es weg</translation>
    </message>
    <message>
        <source>brings a peer into range; scans bring it into sight</source>
        <translation>bringt ein Gerät in Reichweite; Suchen finden es</translation>
    </message>
    <message>
        <source>takes a peer out of range and sight</source>
        <translation>nimmt ein Gerät aus Reichweite und Sicht</translation>
    </message>
    <message>
        <source>lets a peer join the group that the phone owns</source>
        <translation>lässt ein Gerät der Gruppe beitreten, die dem Telefon gehört</translation>
    </message>
    <message>
        <source>lets a peer leave the phone&apos;s group</source>
        <translation>lässt ein Gerät die Gruppe des Telefons verlassen</translation>
    </message>
    <message>
        <source>has these sinks in range and sight, and no others</source>
        <translation>hat diese Anzeigen in Reichweite und in Sicht, und keine anderen</translation>
    </message>
    <message>
        <source>is connecting a sink, and stays so</source>
        <translation>verbindet eine Anzeige und bleibt dabei</translation>
    </message>
    <message>
        <source>shows the screen on a sink, or ends that</source>
        <translation>zeigt das Bild auf einer Anzeige oder beendet das</translation>
    </message>
    <message>
        <source>has these peers in range and sight, and no others</source>
        <translation>hat diese Geräte in Reichweite und in Sicht, und keine anderen</translation>
    </message>
    <message>
        <source>looks for peers, or ends that</source>
        <translation>sucht Geräte oder beendet das</translation>
    </message>
    <message>
        <source>is connecting a peer, or ends that</source>
        <translation>verbindet ein Gerät oder beendet das</translation>
    </message>
    <message>
        <source>puts the phone into a group with these peers, whose owner comes first</source>
        <translation>bringt das Telefon in eine Gruppe mit diesen Geräten, deren Besitzer zuerst steht</translation>
    </message>
</context>
<context>
    <name>LedPage</name>
    <message>
        <source>Try it</source>
        <translation>Ausprobieren</translation>
    </message>
    <message>
        <source>Colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>%1 ×</source>
        <translation>%1 ×</translation>
    </message>
    <message>
        <source>Flashes</source>
        <translation>Blitze</translation>
    </message>
    <message>
        <source>Flash</source>
        <translation>Blinken</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>End the panel&apos;s request</source>
        <translation>Die eigene Anfrage beenden</translation>
    </message>
    <message>
        <source>Requests</source>
        <translation>Anfragen</translation>
    </message>
    <message>
        <source>No application asks anything of the LED now</source>
        <translation>Keine Anwendung verlangt gerade etwas von der LED</translation>
    </message>
    <message>
        <source>%1: %2 flashes, until it ends (process %3)</source>
        <translation>%1: %2 Blitze, bis zum Ende (Prozess %3)</translation>
    </message>
    <message>
        <source>%1: flash %2 of %3 (process %4)</source>
        <translation>%1: Blitz %2 von %3 (Prozess %4)</translation>
    </message>
    <message>
        <source>%1, waits</source>
        <translation>%1, wartet</translation>
    </message>
    <message>
        <source>The last one: %1, %2 flashes, %3</source>
        <translation>Die letzte: %1, %2 Blitze, %3</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>Until ended</source>
        <translation>Bis zum Ende</translation>
    </message>
</context>
<context>
    <name>LogPage</name>
    <message>
        <source>Signals</source>
        <translation>Signale</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Was</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
    <message>
        <source>No signal has come yet</source>
        <translation>Noch ist kein Signal gekommen</translation>
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
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Page</source>
        <translation>Seite</translation>
    </message>
    <message>
        <source>done</source>
        <translation>erledigt</translation>
    </message>
    <message>
        <source>&amp;Phone</source>
        <translation>&amp;Telefon</translation>
    </message>
    <message>
        <source>&amp;Controls</source>
        <translation>&amp;Bedienung</translation>
    </message>
    <message>
        <source>&amp;Signals</source>
        <translation>&amp;Signale</translation>
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
    <message>
        <source>the LED is lit</source>
        <translation>die LED leuchtet</translation>
    </message>
    <message>
        <source>it vibrates</source>
        <translation>es vibriert</translation>
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
    <message>
        <source>No scenario is chosen: choose one, then press Ctrl+P</source>
        <translation>Kein Szenario ist gewählt: erst eines wählen, dann Strg+P drücken</translation>
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
    <name>Verb</name>
    <message>
        <source>active</source>
        <translation>benutzt</translation>
    </message>
    <message>
        <source>standby</source>
        <translation>unbenutzt</translation>
    </message>
    <message>
        <source>status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>kill-service</source>
        <translation>Dienst abstürzen lassen</translation>
    </message>
    <message>
        <source>start-service</source>
        <translation>Dienst starten</translation>
    </message>
    <message>
        <source>plug</source>
        <translation>anstecken</translation>
    </message>
    <message>
        <source>unplug</source>
        <translation>abziehen</translation>
    </message>
    <message>
        <source>wireless</source>
        <translation>drahtlos laden</translation>
    </message>
    <message>
        <source>level</source>
        <translation>Ladung</translation>
    </message>
    <message>
        <source>temperature</source>
        <translation>Temperatur</translation>
    </message>
    <message>
        <source>condition</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>hold</source>
        <translation>festhalten</translation>
    </message>
    <message>
        <source>remove</source>
        <translation>herausnehmen</translation>
    </message>
    <message>
        <source>insert</source>
        <translation>einlegen</translation>
    </message>
    <message>
        <source>serve</source>
        <translation>versorgen</translation>
    </message>
    <message>
        <source>leave</source>
        <translation>verlassen</translation>
    </message>
    <message>
        <source>rssi</source>
        <translation>Signalstärke</translation>
    </message>
    <message>
        <source>operator</source>
        <translation>Betreiber</translation>
    </message>
    <message>
        <source>roaming</source>
        <translation>Roaming</translation>
    </message>
    <message>
        <source>suppress</source>
        <translation>Roaming verbergen</translation>
    </message>
    <message>
        <source>advance</source>
        <translation>Zeit vorrücken</translation>
    </message>
    <message>
        <source>speed</source>
        <translation>Tempo</translation>
    </message>
    <message>
        <source>enabled</source>
        <translation>eingeschaltet</translation>
    </message>
    <message>
        <source>permitted</source>
        <translation>erlaubt</translation>
    </message>
    <message>
        <source>drop</source>
        <translation>trennen</translation>
    </message>
    <message>
        <source>fail-with</source>
        <translation>mit Fehler antworten</translation>
    </message>
    <message>
        <source>answer-late</source>
        <translation>spät antworten</translation>
    </message>
    <message>
        <source>never-answer</source>
        <translation>nie antworten</translation>
    </message>
    <message>
        <source>die-on-request</source>
        <translation>bei Anfrage sterben</translation>
    </message>
    <message>
        <source>answer-rubbish</source>
        <translation>Unsinn antworten</translation>
    </message>
    <message>
        <source>add</source>
        <translation>hinzufügen</translation>
    </message>
    <message>
        <source>attach</source>
        <translation>verbinden</translation>
    </message>
    <message>
        <source>detach</source>
        <translation>abtrennen</translation>
    </message>
    <message>
        <source>rotate</source>
        <translation>drehen</translation>
    </message>
    <message>
        <source>resize</source>
        <translation>Größe ändern</translation>
    </message>
    <message>
        <source>name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>sink-appears</source>
        <translation>Anzeige kommt</translation>
    </message>
    <message>
        <source>sink-goes</source>
        <translation>Anzeige geht</translation>
    </message>
    <message>
        <source>stop</source>
        <translation>Dienst anhalten</translation>
    </message>
    <message>
        <source>start</source>
        <translation>Dienst wieder starten</translation>
    </message>
    <message>
        <source>fail-next</source>
        <translation>nächste Anfrage scheitert</translation>
    </message>
    <message>
        <source>top-up</source>
        <translation>aufrecht</translation>
    </message>
    <message>
        <source>bottom-up</source>
        <translation>kopfüber</translation>
    </message>
    <message>
        <source>left-up</source>
        <translation>linke Seite oben</translation>
    </message>
    <message>
        <source>right-up</source>
        <translation>rechte Seite oben</translation>
    </message>
    <message>
        <source>face-up</source>
        <translation>Vorderseite oben</translation>
    </message>
    <message>
        <source>face-down</source>
        <translation>Vorderseite unten</translation>
    </message>
    <message>
        <source>undefined</source>
        <translation>unbestimmt</translation>
    </message>
    <message>
        <source>power</source>
        <translation>Strom</translation>
    </message>
    <message>
        <source>enable</source>
        <translation>Techniken</translation>
    </message>
    <message>
        <source>data</source>
        <translation>mobile Daten</translation>
    </message>
    <message>
        <source>data-roaming</source>
        <translation>Daten im Ausland</translation>
    </message>
    <message>
        <source>busy</source>
        <translation>wird benutzt</translation>
    </message>
    <message>
        <source>idle</source>
        <translation>ruht</translation>
    </message>
    <message>
        <source>ready</source>
        <translation>bereit</translation>
    </message>
    <message>
        <source>pin</source>
        <translation>wartet auf PIN</translation>
    </message>
    <message>
        <source>not-provisioned</source>
        <translation>nicht freigeschaltet</translation>
    </message>
    <message>
        <source>incompatible</source>
        <translation>unpassend</translation>
    </message>
    <message>
        <source>unreadable</source>
        <translation>unlesbar</translation>
    </message>
    <message>
        <source>present</source>
        <translation>vorhanden</translation>
    </message>
    <message>
        <source>supported</source>
        <translation>unterstützt</translation>
    </message>
    <message>
        <source>peer-appears</source>
        <translation>Gerät kommt</translation>
    </message>
    <message>
        <source>peer-goes</source>
        <translation>Gerät geht</translation>
    </message>
    <message>
        <source>peer-joins</source>
        <translation>Gerät tritt bei</translation>
    </message>
    <message>
        <source>peer-leaves</source>
        <translation>Gerät verlässt Gruppe</translation>
    </message>
    <message>
        <source>sight</source>
        <translation>in Sicht</translation>
    </message>
    <message>
        <source>scanning</source>
        <translation>sucht</translation>
    </message>
    <message>
        <source>connecting</source>
        <translation>verbindet</translation>
    </message>
    <message>
        <source>group</source>
        <translation>Gruppe</translation>
    </message>
    <message>
        <source>session</source>
        <translation>Sitzung</translation>
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
    <message>
        <source>which one</source>
        <translation>welche</translation>
    </message>
    <message>
        <source>Needed: %1</source>
        <translation>Nötig: %1</translation>
    </message>
</context>
<context>
    <name>Word</name>
    <message>
        <source>ok</source>
        <translation>gut</translation>
    </message>
    <message>
        <source>bad</source>
        <translation>schlecht</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>not permitted</source>
        <translation>nicht gestattet</translation>
    </message>
    <message>
        <source>timed out</source>
        <translation>Zeit abgelaufen</translation>
    </message>
    <message>
        <source>access denied</source>
        <translation>Zugriff verweigert</translation>
    </message>
    <message>
        <source>busy</source>
        <translation>belegt</translation>
    </message>
    <message>
        <source>no such device</source>
        <translation>kein solches Gerät</translation>
    </message>
    <message>
        <source>not there</source>
        <translation>nicht vorhanden</translation>
    </message>
    <message>
        <source>invalid</source>
        <translation>ungültig</translation>
    </message>
    <message>
        <source>input or output failed</source>
        <translation>Ein- oder Ausgabe misslungen</translation>
    </message>
    <message>
        <source>not supported</source>
        <translation>nicht unterstützt</translation>
    </message>
    <message>
        <source>internally</source>
        <translation>intern</translation>
    </message>
    <message>
        <source>by an application</source>
        <translation>durch eine Anwendung</translation>
    </message>
    <message>
        <source>no support</source>
        <translation>nicht unterstützt</translation>
    </message>
    <message>
        <source>by policy</source>
        <translation>durch eine Richtlinie</translation>
    </message>
    <message>
        <source>Wi-Fi Direct fails (6)</source>
        <translation>Wi-Fi Direct scheitert (6)</translation>
    </message>
    <message>
        <source>Wi-Fi Direct fails (7)</source>
        <translation>Wi-Fi Direct scheitert (7)</translation>
    </message>
    <message>
        <source>Wi-Fi Direct fails (8)</source>
        <translation>Wi-Fi Direct scheitert (8)</translation>
    </message>
    <message>
        <source>Wi-Fi Direct fails (9)</source>
        <translation>Wi-Fi Direct scheitert (9)</translation>
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
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>scan</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>disconnect</source>
        <translation>Trennen</translation>
    </message>
    <message>
        <source>pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>resume</source>
        <translation>Fortsetzen</translation>
    </message>
    <message>
        <source>shutdown</source>
        <translation>Herunterfahren</translation>
    </message>
    <message>
        <source>warmup</source>
        <translation>Vorbereiten</translation>
    </message>
    <message>
        <source>owner</source>
        <translation>Besitzer</translation>
    </message>
    <message>
        <source>client</source>
        <translation>Mitglied</translation>
    </message>
    <message>
        <source>cancel-connect</source>
        <translation>Verbinden abbrechen</translation>
    </message>
    <message>
        <source>start-session</source>
        <translation>Sitzung beginnen</translation>
    </message>
    <message>
        <source>stop-session</source>
        <translation>Sitzung beenden</translation>
    </message>
    <message>
        <source>get-ip-address</source>
        <translation>IP-Adresse holen</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>Clock</source>
        <translation>Uhr</translation>
    </message>
    <message>
        <source>Scenarios</source>
        <translation>Szenarien</translation>
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
    <message>
        <source>red</source>
        <translation>rot</translation>
    </message>
    <message>
        <source>green</source>
        <translation>grün</translation>
    </message>
    <message>
        <source>blue</source>
        <translation>blau</translation>
    </message>
    <message>
        <source>yellow</source>
        <translation>gelb</translation>
    </message>
    <message>
        <source>cyan</source>
        <translation>türkis</translation>
    </message>
    <message>
        <source>magenta</source>
        <translation>magenta</translation>
    </message>
    <message>
        <source>white</source>
        <translation>weiß</translation>
    </message>
    <message>
        <source>done</source>
        <translation>fertig</translation>
    </message>
    <message>
        <source>cancelled</source>
        <translation>abgebrochen</translation>
    </message>
    <message>
        <source>replaced</source>
        <translation>ersetzt</translation>
    </message>
    <message>
        <source>its application is gone</source>
        <translation>ihre Anwendung ist weg</translation>
    </message>
    <message>
        <source>receiver</source>
        <translation>Empfänger</translation>
    </message>
    <message>
        <source>number</source>
        <translation>Nummer</translation>
    </message>
    <message>
        <source>width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>height</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>strength</source>
        <translation>Stärke</translation>
    </message>
    <message>
        <source>Signal strength</source>
        <translation>Signalstärke</translation>
    </message>
    <message>
        <source>PIN</source>
        <translation>PIN</translation>
    </message>
    <message>
        <source>%1 to %2 %3</source>
        <translation>%1 bis %2 %3</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
</context>
</TS>
