<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>AccessoryLine</name>
    <message>
        <source>The accessory that an update will take</source>
        <translation>L’accessoire que prendra une mise à jour</translation>
    </message>
    <message>
        <source>The computer doesn&apos;t tell which devices are attached.</source>
        <translation>L’ordinateur ne dit pas quels appareils sont branchés.</translation>
    </message>
    <message>
        <source>Plug the accessory in.</source>
        <translation>Branchez l’accessoire.</translation>
    </message>
    <message>
        <source>%1 accessories are plugged in. The update takes %2</source>
        <translation>%1 accessoires sont branchés. La mise à jour prend %2</translation>
    </message>
    <message>
        <source>no disk yet</source>
        <translation>pas encore de disque</translation>
    </message>
    <message>
        <source>serial number %1</source>
        <translation>numéro de série %1</translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>Could not save changes while quitting. Quit anyway?</source>
        <comment>Quit without saves error question message</comment>
        <translation>Impossible d’enregistrer les modifications en quittant. Quitter quand même ?</translation>
    </message>
    <message>
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <comment>Quit without saves error question info</comment>
        <translation>Si vous quittez maintenant, les modifications faites depuis le dernier enregistrement réussi seront perdues</translation>
    </message>
    <message>
        <source>Quit anyway</source>
        <comment>Quit anyway button title</comment>
        <translation>Quitter quand même</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>Cancel button title</comment>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>HelpButton</name>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
    <message>
        <source>Help, and what somebody who helps you needs</source>
        <translation>De l’aide, et ce qu’il faut à qui vous aide</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>A&amp;ide</translation>
    </message>
    <message>
        <source>&amp;Copy Everything for Support</source>
        <translation>&amp;Copier tout pour l’assistance</translation>
    </message>
    <message>
        <source>&amp;Save the Log with Times…</source>
        <translation>&amp;Enregistrer le journal avec les heures…</translation>
    </message>
    <message>
        <source>&amp;About Kestrav</source>
        <translation>À &amp;propos de Kestrav</translation>
    </message>
    <message>
        <source>Kestrav – Help</source>
        <translation>Kestrav – Aide</translation>
    </message>
    <message>
        <source>About Kestrav</source>
        <translation>À propos de Kestrav</translation>
    </message>
    <message>
        <source>Updates the firmware and the icon of a USB accessory.</source>
        <translation>Met à jour le micrologiciel et l’icône d’un accessoire USB.</translation>
    </message>
    <message>
        <source>&amp;Licences…</source>
        <translation>&amp;Licences…</translation>
    </message>
    <message>
        <source>Kestrav – Licences</source>
        <translation>Kestrav – Licences</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Everything is on the clipboard.</source>
        <translation>Tout est dans le presse-papiers.</translation>
    </message>
    <message>
        <source>Paste it into your message. It has the names of your image files and of your disks in it, and nothing of what is in them.</source>
        <translation>Collez-le dans votre message. Il contient les noms de vos fichiers d’image et de vos disques, et rien de leur contenu.</translation>
    </message>
</context>
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
    <message>
        <source> or .</source>
        <translation> ou .</translation>
    </message>
</context>
<context>
    <name>ImageProblem</name>
    <message>
        <source>%1 is a folder. Choose the file in it that holds the image.</source>
        <translation>%1 est un dossier. Choisissez le fichier qui s’y trouve et qui contient l’image.</translation>
    </message>
    <message>
        <source>%1 is a pipe. Choose a file that holds the image.</source>
        <translation>%1 est un tube. Choisissez un fichier qui contient l’image.</translation>
    </message>
    <message>
        <source>%1 is a socket. Choose a file that holds the image.</source>
        <translation>%1 est un socket. Choisissez un fichier qui contient l’image.</translation>
    </message>
    <message>
        <source>%1 is a device. Choose a file that holds the image.</source>
        <translation>%1 est un périphérique. Choisissez un fichier qui contient l’image.</translation>
    </message>
    <message>
        <source>%1 can&apos;t be read: %2. Check your rights to it, or choose another file.</source>
        <translation>%1 ne peut pas être lu : %2. Vérifiez vos droits sur ce fichier ou choisissez-en un autre.</translation>
    </message>
</context>
<context>
    <name>LastMessage</name>
    <message>
        <source>Nothing was written to the accessory.</source>
        <translation>Rien n’a été écrit sur l’accessoire.</translation>
    </message>
    <message>
        <source>The image may be on its way to the accessory: don&apos;t unplug it. Start Kestrav again and send the image again.</source>
        <translation>L’image est peut-être en route vers l’accessoire : ne le débranchez pas. Relancez Kestrav et renvoyez l’image.</translation>
    </message>
    <message>
        <source>It was not sending anything. What became of the last image stands in the log.</source>
        <translation>Rien n’était en cours d’envoi. Le journal dit ce qu’est devenue la dernière image.</translation>
    </message>
    <message>
        <source>The log: %1</source>
        <translation>Le journal : %1</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Kestrav has stopped.</source>
        <translation>Kestrav s’est arrêté.</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
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
        <translation>&amp;Renvoyer…</translation>
    </message>
    <message>
        <source>Send Again…</source>
        <translation>Renvoyer…</translation>
    </message>
    <message>
        <source>Choose the same image once more</source>
        <translation>Choisir encore une fois la même image</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>Message du système</translation>
    </message>
    <message>
        <source>What the service itself said last</source>
        <translation>Ce que le service lui-même a dit en dernier</translation>
    </message>
    <message>
        <source>Nothing has been sent yet.</source>
        <translation>Rien n’a encore été envoyé.</translation>
    </message>
    <message>
        <source>Choose an image with one of the buttons.</source>
        <translation>Choisissez une image avec l’un des boutons.</translation>
    </message>
    <message>
        <source>The helper that may reach the accessory&apos;s disk is being installed.</source>
        <translation>L’assistant qui a accès au disque de l’accessoire est en cours d’installation.</translation>
    </message>
    <message>
        <source>That takes an administrator&apos;s password, once each launch. You may close the window instead.</source>
        <translation>Cela demande le mot de passe d’un administrateur, une fois à chaque lancement. Vous pouvez aussi fermer la fenêtre.</translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>Asking for an administrator&apos;s consent.</source>
        <translation>L’accord d’un administrateur est demandé.</translation>
    </message>
    <message>
        <source>Unmounting.</source>
        <translation>Démontage.</translation>
    </message>
    <message>
        <source>Reading the image.</source>
        <translation>Lecture de l’image.</translation>
    </message>
    <message>
        <source>Writing.</source>
        <translation>Écriture.</translation>
    </message>
    <message>
        <source>Writing: waiting until the accessory has kept it.</source>
        <translation>Écriture : attente que l’accessoire ait tout gardé.</translation>
    </message>
    <message>
        <source>Checking: reading back and comparing.</source>
        <translation>Vérification : relecture et comparaison.</translation>
    </message>
    <message>
        <source>Done: waiting for the service&apos;s answer.</source>
        <translation>Terminé : attente de la réponse du service.</translation>
    </message>
    <message>
        <source>%1 %, %2 of %3</source>
        <translation>%1 %, %2 sur %3</translation>
    </message>
</context>
<context>
    <name>Report</name>
    <message>
        <source>The firmware is on the accessory, read back and equal.</source>
        <translation>Le micrologiciel est sur l’accessoire, relu et identique.</translation>
    </message>
    <message>
        <source>You may unplug it.</source>
        <translation>Vous pouvez le débrancher.</translation>
    </message>
    <message>
        <source>It reaches into the icon area: send the icon again, too.</source>
        <translation>Il déborde dans la zone de l’icône : renvoyez aussi l’icône.</translation>
    </message>
    <message>
        <source>The icon is on the accessory, read back and equal.</source>
        <translation>L’icône est sur l’accessoire, relue et identique.</translation>
    </message>
    <message>
        <source>The image is on the accessory: it was written and compared.</source>
        <translation>L’image est sur l’accessoire : elle a été écrite et comparée.</translation>
    </message>
    <message>
        <source>Not written: the computer doesn&apos;t tell which devices are attached.</source>
        <translation>Non écrit : l’ordinateur ne dit pas quels appareils sont branchés.</translation>
    </message>
    <message>
        <source>Is /sys mounted? Mount it, then send the image again.</source>
        <translation>/sys est-il monté ? Montez-le, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: the image is empty.</source>
        <translation>Non écrit : l’image est vide.</translation>
    </message>
    <message>
        <source>Choose another one.</source>
        <translation>Choisissez-en une autre.</translation>
    </message>
    <message>
        <source>Not written: no accessory is plugged in.</source>
        <translation>Non écrit : aucun accessoire n’est branché.</translation>
    </message>
    <message>
        <source>Plug it in, wait some seconds, then send the image again.</source>
        <translation>Branchez-le, attendez quelques secondes, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: nothing was handed over.</source>
        <translation>Non écrit : rien n’a été transmis.</translation>
    </message>
    <message>
        <source>The log says why. Put that right, then send the image again.</source>
        <translation>Le journal dit pourquoi. Corrigez cela, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: the service can&apos;t be reached.</source>
        <translation>Non écrit : le service est injoignable.</translation>
    </message>
    <message>
        <source>Is the loopback interface up? &apos;ip link set lo up&apos;, then send the image again.</source>
        <translation>L’interface de bouclage est-elle active ? &apos;ip link set lo up&apos;, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: the service is not running.</source>
        <translation>Non écrit : le service n’est pas démarré.</translation>
    </message>
    <message>
        <source>&apos;systemctl start kestrav-commandd.socket&apos;, then send the image again.</source>
        <translation>&apos;systemctl start kestrav-commandd.socket&apos;, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: the service does not take the request.</source>
        <translation>Non écrit : le service n’accepte pas la demande.</translation>
    </message>
    <message>
        <source>&apos;systemctl restart kestrav-commandd&apos;, then send the image again.</source>
        <translation>&apos;systemctl restart kestrav-commandd&apos;, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: the connection to the service broke off.</source>
        <translation>Non écrit : la connexion au service a été coupée.</translation>
    </message>
    <message>
        <source>Send the image again.</source>
        <translation>Renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: the accessory is not plugged in.</source>
        <translation>Non écrit : l’accessoire n’est pas branché.</translation>
    </message>
    <message>
        <source>Plug it in, then send the image again.</source>
        <translation>Branchez-le, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written: the accessory has no disk yet.</source>
        <translation>Non écrit : l’accessoire n’a pas encore de disque.</translation>
    </message>
    <message>
        <source>Wait some seconds and try again; if that does not help, plug it in once more.</source>
        <translation>Attendez quelques secondes et réessayez ; si cela n’aide pas, rebranchez-le.</translation>
    </message>
    <message>
        <source>Not written: the service refused.</source>
        <translation>Non écrit : le service a refusé.</translation>
    </message>
    <message>
        <source>It says why below. Put that right, then send the image again.</source>
        <translation>Il dit pourquoi ci-dessous. Corrigez cela, puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written whole: the accessory was unplugged in the middle.</source>
        <translation>Non écrit en entier : l’accessoire a été débranché en cours de route.</translation>
    </message>
    <message>
        <source>It may hold a mixture now: plug it in and send the image again.</source>
        <translation>Il contient peut-être un mélange : branchez-le et renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written whole: it went wrong on the way.</source>
        <translation>Non écrit en entier : un problème est survenu en route.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image again.</source>
        <translation>Débranchez l’accessoire, rebranchez-le et renvoyez l’image.</translation>
    </message>
    <message>
        <source>Not written as it is: the image changed meanwhile.</source>
        <translation>Non écrit tel quel : l’image a changé entre-temps.</translation>
    </message>
    <message>
        <source>Wait until nothing writes the file any more, then send it again.</source>
        <translation>Attendez que plus rien n’écrive le fichier, puis renvoyez-le.</translation>
    </message>
    <message>
        <source>Not written: the service refused, and its answer did not come.</source>
        <translation>Non écrit : le service a refusé, et sa réponse n’est pas arrivée.</translation>
    </message>
    <message>
        <source>&apos;journalctl -t kestrav-commandd&apos; tells why.</source>
        <translation>&apos;journalctl -t kestrav-commandd&apos; dit pourquoi.</translation>
    </message>
    <message>
        <source>Not written whole: it failed, and the answer did not come.</source>
        <translation>Non écrit en entier : échec, et la réponse n’est pas arrivée.</translation>
    </message>
    <message>
        <source>Nobody knows: it was written, and could not be read back.</source>
        <translation>Personne ne sait : l’image a été écrite et n’a pas pu être relue.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image once more.</source>
        <translation>Débranchez l’accessoire, rebranchez-le et envoyez l’image encore une fois.</translation>
    </message>
    <message>
        <source>Nobody knows: the answer is about another write.</source>
        <translation>Personne ne sait : la réponse concerne une autre écriture.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug; send the image again.</source>
        <translation>Ne débranchez pas ; renvoyez l’image.</translation>
    </message>
    <message>
        <source>Nobody knows: only a part of the service&apos;s answer came.</source>
        <translation>Personne ne sait : seule une partie de la réponse du service est arrivée.</translation>
    </message>
    <message>
        <source>Nobody knows: another program answers in the service&apos;s place.</source>
        <translation>Personne ne sait : un autre programme répond à la place du service.</translation>
    </message>
    <message>
        <source>End it (&apos;kestravctl doctor&apos; names it), then send the image again.</source>
        <translation>Terminez-le (&apos;kestravctl doctor&apos; le nomme), puis renvoyez l’image.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer in time.</source>
        <translation>Personne ne sait : le service n’a pas répondu à temps.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer.</source>
        <translation>Personne ne sait : le service n’a pas répondu.</translation>
    </message>
    <message>
        <source>Nobody knows: the service died while it wrote.</source>
        <translation>Personne ne sait : le service s’est arrêté pendant l’écriture.</translation>
    </message>
    <message>
        <source>Not written: too many files are open for a connection to the service.</source>
        <translation>Non écrit : trop de fichiers sont ouverts pour une connexion au service.</translation>
    </message>
    <message>
        <source>Close other programs, start Kestrav again and send the image again.</source>
        <translation>Fermez d’autres programmes, redémarrez Kestrav, puis renvoyez l’image.</translation>
    </message>
</context>
<context>
    <name>UpdatePresenter</name>
    <message>
        <source>Reading the image.</source>
        <translation>Lecture de l’image.</translation>
    </message>
    <message>
        <source>Asking the service to unmount; an administrator may be asked for consent.</source>
        <translation>Démontage demandé au service ; l’accord d’un administrateur peut être demandé.</translation>
    </message>
    <message>
        <source>No answer has come, and the service goes on. Don&apos;t unplug the accessory.</source>
        <translation>Aucune réponse n’est venue, et le service continue. Ne débranchez pas l’accessoire.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug the accessory.</source>
        <translation>Ne débranchez pas l’accessoire.</translation>
    </message>
</context>
<context>
    <name>saveTextAs</name>
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
</context>
</TS>
