<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AccessoryLine</name>
    <message>
        <source>The accessory that an update will take</source>
        <translation>Das Zubehör, das eine Aktualisierung nimmt</translation>
    </message>
    <message>
        <source>The computer doesn&apos;t tell which devices are attached.</source>
        <translation>Der Computer sagt nicht, welche Geräte angeschlossen sind.</translation>
    </message>
    <message>
        <source>Plug the accessory in.</source>
        <translation>Schließen Sie das Zubehör an.</translation>
    </message>
    <message>
        <source>%1 accessories are plugged in. The update takes %2</source>
        <translation>%1 Zubehörgeräte sind angeschlossen. Die Aktualisierung nimmt %2</translation>
    </message>
    <message>
        <source>no disk yet</source>
        <translation>noch kein Datenträger</translation>
    </message>
    <message>
        <source>serial number %1</source>
        <translation>Seriennummer %1</translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>Could not save changes while quitting. Quit anyway?</source>
        <comment>Quit without saves error question message</comment>
        <translation>Die Änderungen konnten beim Beenden nicht gesichert werden. Trotzdem beenden?</translation>
    </message>
    <message>
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <comment>Quit without saves error question info</comment>
        <translation>Wenn Sie jetzt beenden, gehen alle Änderungen seit dem letzten erfolgreichen Sichern verloren</translation>
    </message>
    <message>
        <source>Quit anyway</source>
        <comment>Quit anyway button title</comment>
        <translation>Trotzdem beenden</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>Cancel button title</comment>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>HelpButton</name>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Help, and what somebody who helps you needs</source>
        <translation>Hilfe, und was jemand braucht, der Ihnen hilft</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Copy Everything for Support</source>
        <translation>Alles für den Support &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Save the Log with Times…</source>
        <translation>Protokoll mit Zeiten &amp;speichern …</translation>
    </message>
    <message>
        <source>&amp;About Kestrav</source>
        <translation>&amp;Über Kestrav</translation>
    </message>
    <message>
        <source>Kestrav – Help</source>
        <translation>Kestrav – Hilfe</translation>
    </message>
    <message>
        <source>About Kestrav</source>
        <translation>Über Kestrav</translation>
    </message>
    <message>
        <source>Updates the firmware and the icon of a USB accessory.</source>
        <translation>Aktualisiert die Firmware und das Symbol eines USB-Zubehörs.</translation>
    </message>
    <message>
        <source>&amp;Licences…</source>
        <translation>&amp;Lizenzen …</translation>
    </message>
    <message>
        <source>Kestrav – Licences</source>
        <translation>Kestrav – Lizenzen</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Everything is on the clipboard.</source>
        <translation>Alles ist in der Zwischenablage.</translation>
    </message>
    <message>
        <source>Paste it into your message. It has the names of your image files and of your disks in it, and nothing of what is in them.</source>
        <translation>Fügen Sie es in Ihre Nachricht ein. Es enthält die Namen Ihrer Abbilddateien und Datenträger, aber nichts von deren Inhalt.</translation>
    </message>
</context>
<context>
    <name>ImageChooserDialog</name>
    <message>
        <source>Images (%1)</source>
        <translation>Abbilder (%1)</translation>
    </message>
    <message>
        <source>Choose Fol&amp;der</source>
        <translation>Ordner &amp;wählen</translation>
    </message>
    <message>
        <source>Take the selected folder itself, or the one shown if none is selected</source>
        <translation>Den ausgewählten Ordner selbst nehmen, oder den angezeigten, wenn keiner ausgewählt ist</translation>
    </message>
    <message>
        <source>%1 is no .%2 file.</source>
        <translation>%1 ist keine .%2-Datei.</translation>
    </message>
    <message>
        <source> or .</source>
        <translation> oder .</translation>
    </message>
</context>
<context>
    <name>ImageProblem</name>
    <message>
        <source>%1 is a folder. Choose the file in it that holds the image.</source>
        <translation>%1 ist ein Ordner. Wählen Sie die Datei darin, die das Abbild enthält.</translation>
    </message>
    <message>
        <source>%1 is a pipe. Choose a file that holds the image.</source>
        <translation>%1 ist eine Pipe. Wählen Sie eine Datei, die das Abbild enthält.</translation>
    </message>
    <message>
        <source>%1 is a socket. Choose a file that holds the image.</source>
        <translation>%1 ist ein Socket. Wählen Sie eine Datei, die das Abbild enthält.</translation>
    </message>
    <message>
        <source>%1 is a device. Choose a file that holds the image.</source>
        <translation>%1 ist ein Gerät. Wählen Sie eine Datei, die das Abbild enthält.</translation>
    </message>
    <message>
        <source>%1 can&apos;t be read: %2. Check your rights to it, or choose another file.</source>
        <translation>%1 kann nicht gelesen werden: %2. Prüfen Sie Ihre Rechte daran oder wählen Sie eine andere Datei.</translation>
    </message>
</context>
<context>
    <name>LastMessage</name>
    <message>
        <source>Nothing was written to the accessory.</source>
        <translation>Auf das Zubehör wurde nichts geschrieben.</translation>
    </message>
    <message>
        <source>The image may be on its way to the accessory: don&apos;t unplug it. Start Kestrav again and send the image again.</source>
        <translation>Das Abbild ist vielleicht noch auf dem Weg zum Zubehör: Ziehen Sie es nicht ab. Starten Sie Kestrav neu, und senden Sie das Abbild erneut.</translation>
    </message>
    <message>
        <source>It was not sending anything. What became of the last image stands in the log.</source>
        <translation>Es wurde gerade nichts gesendet. Was aus dem letzten Abbild wurde, steht im Protokoll.</translation>
    </message>
    <message>
        <source>The log: %1</source>
        <translation>Das Protokoll: %1</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Kestrav has stopped.</source>
        <translation>Kestrav ist abgebrochen.</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>&amp;Alles auswählen</translation>
    </message>
    <message>
        <source>&amp;Save As…</source>
        <translation>&amp;Speichern unter …</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Update &amp;Firmware…</source>
        <translation>&amp;Firmware aktualisieren …</translation>
    </message>
    <message>
        <source>Choose a firmware image, an fds file, and write it to the accessory</source>
        <translation>Ein Firmware-Abbild, eine fds-Datei, auswählen und auf das Zubehör schreiben</translation>
    </message>
    <message>
        <source>Update &amp;Icon…</source>
        <translation>&amp;Symbol aktualisieren …</translation>
    </message>
    <message>
        <source>Choose an icon image, a fif file, and write it to the accessory</source>
        <translation>Ein Symbol-Abbild, eine fif-Datei, auswählen und auf das Zubehör schreiben</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>What was done, one line a step</source>
        <translation>Was getan wurde, eine Zeile je Schritt</translation>
    </message>
    <message>
        <source>Update in progress</source>
        <translation>Aktualisierung läuft</translation>
    </message>
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
</context>
<context>
    <name>OutcomePanel</name>
    <message>
        <source>Send &amp;Again…</source>
        <translation>E&amp;rneut senden…</translation>
    </message>
    <message>
        <source>Send Again…</source>
        <translation>Erneut senden…</translation>
    </message>
    <message>
        <source>Choose the same image once more</source>
        <translation>Dasselbe Abbild noch einmal wählen</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>Systemmeldung</translation>
    </message>
    <message>
        <source>What the service itself said last</source>
        <translation>Was der Dienst selbst zuletzt gesagt hat</translation>
    </message>
    <message>
        <source>Nothing has been sent yet.</source>
        <translation>Es wurde noch nichts gesendet.</translation>
    </message>
    <message>
        <source>Choose an image with one of the buttons.</source>
        <translation>Wählen Sie mit einer der Tasten ein Abbild.</translation>
    </message>
    <message>
        <source>The helper that may reach the accessory&apos;s disk is being installed.</source>
        <translation>Das Hilfsprogramm, das den Datenträger des Zubehörs erreichen darf, wird eingerichtet.</translation>
    </message>
    <message>
        <source>That takes an administrator&apos;s password, once each launch. You may close the window instead.</source>
        <translation>Das braucht bei jedem Start einmal das Passwort eines Administrators. Sie können das Fenster stattdessen schließen.</translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>Asking for an administrator&apos;s consent.</source>
        <translation>Die Zustimmung eines Administrators wird erfragt.</translation>
    </message>
    <message>
        <source>Unmounting.</source>
        <translation>Wird ausgehängt.</translation>
    </message>
    <message>
        <source>Reading the image.</source>
        <translation>Das Abbild wird gelesen.</translation>
    </message>
    <message>
        <source>Writing.</source>
        <translation>Wird geschrieben.</translation>
    </message>
    <message>
        <source>Writing: waiting until the accessory has kept it.</source>
        <translation>Schreiben: warten, bis das Zubehör alles behalten hat.</translation>
    </message>
    <message>
        <source>Checking: reading back and comparing.</source>
        <translation>Prüfen: zurücklesen und vergleichen.</translation>
    </message>
    <message>
        <source>Done: waiting for the service&apos;s answer.</source>
        <translation>Fertig: warten auf die Antwort des Dienstes.</translation>
    </message>
    <message>
        <source>%1 %, %2 of %3</source>
        <translation>%1 %, %2 von %3</translation>
    </message>
</context>
<context>
    <name>Report</name>
    <message>
        <source>The firmware is on the accessory, read back and equal.</source>
        <translation>Die Firmware ist auf dem Zubehör, zurückgelesen und gleich.</translation>
    </message>
    <message>
        <source>You may unplug it.</source>
        <translation>Sie können es abziehen.</translation>
    </message>
    <message>
        <source>It reaches into the icon area: send the icon again, too.</source>
        <translation>Sie reicht in den Bereich des Symbols: Senden Sie auch das Symbol erneut.</translation>
    </message>
    <message>
        <source>The icon is on the accessory, read back and equal.</source>
        <translation>Das Symbol ist auf dem Zubehör, zurückgelesen und gleich.</translation>
    </message>
    <message>
        <source>The image is on the accessory: it was written and compared.</source>
        <translation>Das Abbild ist auf dem Zubehör: Es wurde geschrieben und verglichen.</translation>
    </message>
    <message>
        <source>Not written: the computer doesn&apos;t tell which devices are attached.</source>
        <translation>Nicht geschrieben: Der Computer sagt nicht, welche Geräte angeschlossen sind.</translation>
    </message>
    <message>
        <source>Is /sys mounted? Mount it, then send the image again.</source>
        <translation>Ist /sys eingehängt? Hängen Sie es ein, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: the image is empty.</source>
        <translation>Nicht geschrieben: Das Abbild ist leer.</translation>
    </message>
    <message>
        <source>Choose another one.</source>
        <translation>Wählen Sie ein anderes.</translation>
    </message>
    <message>
        <source>Not written: no accessory is plugged in.</source>
        <translation>Nicht geschrieben: Es ist kein Zubehör angeschlossen.</translation>
    </message>
    <message>
        <source>Plug it in, wait some seconds, then send the image again.</source>
        <translation>Schließen Sie es an, warten Sie einige Sekunden, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: nothing was handed over.</source>
        <translation>Nicht geschrieben: Es wurde nichts übergeben.</translation>
    </message>
    <message>
        <source>The log says why. Put that right, then send the image again.</source>
        <translation>Das Protokoll sagt, warum. Beheben Sie das, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: the service can&apos;t be reached.</source>
        <translation>Nicht geschrieben: Der Dienst ist nicht erreichbar.</translation>
    </message>
    <message>
        <source>Is the loopback interface up? &apos;ip link set lo up&apos;, then send the image again.</source>
        <translation>Ist die Loopback-Schnittstelle aktiv? &apos;ip link set lo up&apos;, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: the service is not running.</source>
        <translation>Nicht geschrieben: Der Dienst läuft nicht.</translation>
    </message>
    <message>
        <source>&apos;systemctl start kestrav-commandd.socket&apos;, then send the image again.</source>
        <translation>&apos;systemctl start kestrav-commandd.socket&apos;, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: the service does not take the request.</source>
        <translation>Nicht geschrieben: Der Dienst nimmt die Anfrage nicht an.</translation>
    </message>
    <message>
        <source>&apos;systemctl restart kestrav-commandd&apos;, then send the image again.</source>
        <translation>&apos;systemctl restart kestrav-commandd&apos;, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: the connection to the service broke off.</source>
        <translation>Nicht geschrieben: Die Verbindung zum Dienst brach ab.</translation>
    </message>
    <message>
        <source>Send the image again.</source>
        <translation>Senden Sie das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: the accessory is not plugged in.</source>
        <translation>Nicht geschrieben: Das Zubehör ist nicht angeschlossen.</translation>
    </message>
    <message>
        <source>Plug it in, then send the image again.</source>
        <translation>Schließen Sie es an, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written: the accessory has no disk yet.</source>
        <translation>Nicht geschrieben: Das Zubehör hat noch keinen Datenträger.</translation>
    </message>
    <message>
        <source>Wait some seconds and try again; if that does not help, plug it in once more.</source>
        <translation>Warten Sie einige Sekunden und versuchen Sie es erneut; hilft das nicht, schließen Sie es noch einmal an.</translation>
    </message>
    <message>
        <source>Not written: the service refused.</source>
        <translation>Nicht geschrieben: Der Dienst hat abgelehnt.</translation>
    </message>
    <message>
        <source>It says why below. Put that right, then send the image again.</source>
        <translation>Unten sagt er, warum. Beheben Sie das, und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written whole: the accessory was unplugged in the middle.</source>
        <translation>Nicht ganz geschrieben: Das Zubehör wurde mittendrin abgezogen.</translation>
    </message>
    <message>
        <source>It may hold a mixture now: plug it in and send the image again.</source>
        <translation>Es enthält jetzt vielleicht ein Gemisch: Schließen Sie es an und senden Sie das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written whole: it went wrong on the way.</source>
        <translation>Nicht ganz geschrieben: Unterwegs ging etwas schief.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image again.</source>
        <translation>Ziehen Sie das Zubehör ab, schließen Sie es wieder an und senden Sie das Abbild erneut.</translation>
    </message>
    <message>
        <source>Not written as it is: the image changed meanwhile.</source>
        <translation>Nicht so geschrieben: Das Abbild hat sich inzwischen geändert.</translation>
    </message>
    <message>
        <source>Wait until nothing writes the file any more, then send it again.</source>
        <translation>Warten Sie, bis nichts mehr in die Datei schreibt, und senden Sie sie dann erneut.</translation>
    </message>
    <message>
        <source>Not written: the service refused, and its answer did not come.</source>
        <translation>Nicht geschrieben: Der Dienst hat abgelehnt, und seine Antwort kam nicht an.</translation>
    </message>
    <message>
        <source>&apos;journalctl -t kestrav-commandd&apos; tells why.</source>
        <translation>&apos;journalctl -t kestrav-commandd&apos; sagt, warum.</translation>
    </message>
    <message>
        <source>Not written whole: it failed, and the answer did not come.</source>
        <translation>Nicht ganz geschrieben: Es schlug fehl, und die Antwort kam nicht an.</translation>
    </message>
    <message>
        <source>Nobody knows: it was written, and could not be read back.</source>
        <translation>Niemand weiß es: Es wurde geschrieben und konnte nicht zurückgelesen werden.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image once more.</source>
        <translation>Ziehen Sie das Zubehör ab, schließen Sie es wieder an und senden Sie das Abbild noch einmal.</translation>
    </message>
    <message>
        <source>Nobody knows: the answer is about another write.</source>
        <translation>Niemand weiß es: Die Antwort betrifft einen anderen Schreibvorgang.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug; send the image again.</source>
        <translation>Nicht abziehen; senden Sie das Abbild erneut.</translation>
    </message>
    <message>
        <source>Nobody knows: only a part of the service&apos;s answer came.</source>
        <translation>Niemand weiß es: Nur ein Teil der Antwort des Dienstes kam an.</translation>
    </message>
    <message>
        <source>Nobody knows: another program answers in the service&apos;s place.</source>
        <translation>Niemand weiß es: Ein anderes Programm antwortet an Stelle des Dienstes.</translation>
    </message>
    <message>
        <source>End it (&apos;kestravctl doctor&apos; names it), then send the image again.</source>
        <translation>Beenden Sie es (&apos;kestravctl doctor&apos; nennt es), und senden Sie dann das Abbild erneut.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer in time.</source>
        <translation>Niemand weiß es: Der Dienst hat nicht rechtzeitig geantwortet.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer.</source>
        <translation>Niemand weiß es: Der Dienst hat nicht geantwortet.</translation>
    </message>
    <message>
        <source>Nobody knows: the service died while it wrote.</source>
        <translation>Niemand weiß es: Der Dienst starb beim Schreiben.</translation>
    </message>
    <message>
        <source>Not written: too many files are open for a connection to the service.</source>
        <translation>Nicht geschrieben: Für eine Verbindung zum Dienst sind zu viele Dateien geöffnet.</translation>
    </message>
    <message>
        <source>Close other programs, start Kestrav again and send the image again.</source>
        <translation>Schließen Sie andere Programme, starten Sie Kestrav neu, und senden Sie das Abbild erneut.</translation>
    </message>
</context>
<context>
    <name>UpdatePresenter</name>
    <message>
        <source>Reading the image.</source>
        <translation>Das Abbild wird gelesen.</translation>
    </message>
    <message>
        <source>Asking the service to unmount; an administrator may be asked for consent.</source>
        <translation>Der Dienst soll aushängen; vielleicht wird ein Administrator um Zustimmung gefragt.</translation>
    </message>
    <message>
        <source>No answer has come, and the service goes on. Don&apos;t unplug the accessory.</source>
        <translation>Es kam keine Antwort, und der Dienst macht weiter. Ziehen Sie das Zubehör nicht ab.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug the accessory.</source>
        <translation>Ziehen Sie das Zubehör nicht ab.</translation>
    </message>
</context>
<context>
    <name>saveTextAs</name>
    <message>
        <source>Save the log</source>
        <translation>Protokoll speichern</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>The log could not be saved to %1.</source>
        <translation>Das Protokoll konnte nicht in %1 gespeichert werden.</translation>
    </message>
</context>
</TS>
