<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
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
</context>
<context>
    <name>LogTextEdit</name>
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
    <message>
        <source>System message</source>
        <translation>Systemmeldung</translation>
    </message>
    <message>
        <source>The newest line that went to the system log</source>
        <translation>Die neueste Zeile, die ins Systemprotokoll ging</translation>
    </message>
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
</context>
</TS>
