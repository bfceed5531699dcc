<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>ImageChooserDialog</name>
    <message>
        <source>Images (%1)</source>
        <translation>Images (%1)</translation>
    </message>
    <message>
        <source>Choose Fol&amp;der</source>
        <translation>Choisir le &amp;dossier</translation>
    </message>
    <message>
        <source>Take the selected folder itself, or the one shown if none is selected</source>
        <translation>Prendre le dossier sélectionné lui-même, ou celui qui est affiché si aucun n’est sélectionné</translation>
    </message>
    <message>
        <source>%1 is no .%2 file.</source>
        <translation>%1 n’est pas un fichier .%2.</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
    <message>
        <source>Save the log</source>
        <translation>Enregistrer le journal</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>The log could not be saved to %1.</source>
        <translation>Le journal n’a pas pu être enregistré dans %1.</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Copier</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>&amp;Tout sélectionner</translation>
    </message>
    <message>
        <source>&amp;Save As…</source>
        <translation>&amp;Enregistrer sous…</translation>
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
        <translation>Mettre à jour le micro&amp;logiciel…</translation>
    </message>
    <message>
        <source>Choose a firmware image, an fds file, and write it to the accessory</source>
        <translation>Choisir une image de micrologiciel, un fichier fds, et l’écrire sur l’accessoire</translation>
    </message>
    <message>
        <source>Update &amp;Icon…</source>
        <translation>Mettre à jour l’&amp;icône…</translation>
    </message>
    <message>
        <source>Choose an icon image, a fif file, and write it to the accessory</source>
        <translation>Choisir une image d’icône, un fichier fif, et l’écrire sur l’accessoire</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Journal</translation>
    </message>
    <message>
        <source>What was done, one line a step</source>
        <translation>Ce qui a été fait, une ligne par étape</translation>
    </message>
    <message>
        <source>Update in progress</source>
        <translation>Mise à jour en cours</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>Message du système</translation>
    </message>
    <message>
        <source>The newest line that went to the system log</source>
        <translation>La dernière ligne envoyée au journal du système</translation>
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
