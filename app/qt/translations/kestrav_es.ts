<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>AccessoryLine</name>
    <message>
        <source>The accessory that an update will take</source>
        <translation>El accesorio que tomará una actualización</translation>
    </message>
    <message>
        <source>The computer doesn&apos;t tell which devices are attached.</source>
        <translation>El equipo no dice qué dispositivos están conectados.</translation>
    </message>
    <message>
        <source>Plug the accessory in.</source>
        <translation>Conecte el accesorio.</translation>
    </message>
    <message>
        <source>%1 accessories are plugged in. The update takes %2</source>
        <translation>Hay %1 accesorios conectados. La actualización toma %2</translation>
    </message>
    <message>
        <source>no disk yet</source>
        <translation>aún sin disco</translation>
    </message>
    <message>
        <source>serial number %1</source>
        <translation>número de serie %1</translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>Could not save changes while quitting. Quit anyway?</source>
        <comment>Quit without saves error question message</comment>
        <translation>No se pudieron guardar los cambios al salir. ¿Salir de todos modos?</translation>
    </message>
    <message>
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <comment>Quit without saves error question info</comment>
        <translation>Si sale ahora, se perderán los cambios hechos desde la última vez que se guardaron correctamente</translation>
    </message>
    <message>
        <source>Quit anyway</source>
        <comment>Quit anyway button title</comment>
        <translation>Salir de todos modos</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>Cancel button title</comment>
        <translation>Cancelar</translation>
    </message>
</context>
<context>
    <name>HelpButton</name>
    <message>
        <source>Help</source>
        <translation>Ayuda</translation>
    </message>
    <message>
        <source>Help, and what somebody who helps you needs</source>
        <translation>Ayuda, y lo que necesita quien le ayude</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>A&amp;yuda</translation>
    </message>
    <message>
        <source>&amp;Copy Everything for Support</source>
        <translation>&amp;Copiar todo para el soporte</translation>
    </message>
    <message>
        <source>&amp;Save the Log with Times…</source>
        <translation>&amp;Guardar el registro con las horas…</translation>
    </message>
    <message>
        <source>&amp;About Kestrav</source>
        <translation>&amp;Acerca de Kestrav</translation>
    </message>
    <message>
        <source>Kestrav – Help</source>
        <translation>Kestrav – Ayuda</translation>
    </message>
    <message>
        <source>About Kestrav</source>
        <translation>Acerca de Kestrav</translation>
    </message>
    <message>
        <source>Updates the firmware and the icon of a USB accessory.</source>
        <translation>Actualiza el firmware y el icono de un accesorio USB.</translation>
    </message>
    <message>
        <source>&amp;Licences…</source>
        <translation>&amp;Licencias…</translation>
    </message>
    <message>
        <source>Kestrav – Licences</source>
        <translation>Kestrav – Licencias</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Everything is on the clipboard.</source>
        <translation>Todo está en el portapapeles.</translation>
    </message>
    <message>
        <source>Paste it into your message. It has the names of your image files and of your disks in it, and nothing of what is in them.</source>
        <translation>Péguelo en su mensaje. Contiene los nombres de sus archivos de imagen y de sus discos, y nada de su contenido.</translation>
    </message>
</context>
<context>
    <name>ImageChooserDialog</name>
    <message>
        <source>Images (%1)</source>
        <translation>Imágenes (%1)</translation>
    </message>
    <message>
        <source>Choose Fol&amp;der</source>
        <translation>Elegir la &amp;carpeta</translation>
    </message>
    <message>
        <source>Take the selected folder itself, or the one shown if none is selected</source>
        <translation>Tomar la propia carpeta seleccionada o, si no hay ninguna, la que se muestra</translation>
    </message>
    <message>
        <source>%1 is no .%2 file.</source>
        <translation>%1 no es un archivo .%2.</translation>
    </message>
    <message>
        <source> or .</source>
        <translation> o .</translation>
    </message>
</context>
<context>
    <name>ImageProblem</name>
    <message>
        <source>%1 is a folder. Choose the file in it that holds the image.</source>
        <translation>%1 es una carpeta. Elija el archivo de su interior que contiene la imagen.</translation>
    </message>
    <message>
        <source>%1 is a pipe. Choose a file that holds the image.</source>
        <translation>%1 es una tubería. Elija un archivo que contenga la imagen.</translation>
    </message>
    <message>
        <source>%1 is a socket. Choose a file that holds the image.</source>
        <translation>%1 es un socket. Elija un archivo que contenga la imagen.</translation>
    </message>
    <message>
        <source>%1 is a device. Choose a file that holds the image.</source>
        <translation>%1 es un dispositivo. Elija un archivo que contenga la imagen.</translation>
    </message>
    <message>
        <source>%1 can&apos;t be read: %2. Check your rights to it, or choose another file.</source>
        <translation>No se puede leer %1: %2. Compruebe sus permisos sobre él o elija otro archivo.</translation>
    </message>
</context>
<context>
    <name>LastMessage</name>
    <message>
        <source>Nothing was written to the accessory.</source>
        <translation>No se escribió nada en el accesorio.</translation>
    </message>
    <message>
        <source>The image may be on its way to the accessory: don&apos;t unplug it. Start Kestrav again and send the image again.</source>
        <translation>Puede que la imagen esté en camino hacia el accesorio: no lo desenchufe. Vuelva a abrir Kestrav y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>It was not sending anything. What became of the last image stands in the log.</source>
        <translation>No se estaba enviando nada. El registro dice qué fue de la última imagen.</translation>
    </message>
    <message>
        <source>The log: %1</source>
        <translation>El registro: %1</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Kestrav has stopped.</source>
        <translation>Kestrav se ha detenido.</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Copiar</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>Seleccionar &amp;todo</translation>
    </message>
    <message>
        <source>&amp;Save As…</source>
        <translation>&amp;Guardar como…</translation>
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
        <translation>Actualizar el &amp;firmware…</translation>
    </message>
    <message>
        <source>Choose a firmware image, an fds file, and write it to the accessory</source>
        <translation>Elegir una imagen de firmware, un archivo fds, y escribirla en el accesorio</translation>
    </message>
    <message>
        <source>Update &amp;Icon…</source>
        <translation>Actualizar el &amp;icono…</translation>
    </message>
    <message>
        <source>Choose an icon image, a fif file, and write it to the accessory</source>
        <translation>Elegir una imagen de icono, un archivo fif, y escribirla en el accesorio</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Registro</translation>
    </message>
    <message>
        <source>What was done, one line a step</source>
        <translation>Lo que se hizo, una línea por paso</translation>
    </message>
    <message>
        <source>Update in progress</source>
        <translation>Actualización en curso</translation>
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
        <translation>&amp;Enviar otra vez…</translation>
    </message>
    <message>
        <source>Send Again…</source>
        <translation>Enviar otra vez…</translation>
    </message>
    <message>
        <source>Choose the same image once more</source>
        <translation>Elegir otra vez la misma imagen</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>Mensaje del sistema</translation>
    </message>
    <message>
        <source>What the service itself said last</source>
        <translation>Lo último que ha dicho el propio servicio</translation>
    </message>
    <message>
        <source>Nothing has been sent yet.</source>
        <translation>Todavía no se ha enviado nada.</translation>
    </message>
    <message>
        <source>Choose an image with one of the buttons.</source>
        <translation>Elija una imagen con uno de los botones.</translation>
    </message>
    <message>
        <source>The helper that may reach the accessory&apos;s disk is being installed.</source>
        <translation>Se está instalando el asistente que puede acceder al disco del accesorio.</translation>
    </message>
    <message>
        <source>That takes an administrator&apos;s password, once each launch. You may close the window instead.</source>
        <translation>Para ello hace falta la contraseña de un administrador, una vez en cada inicio. También puede cerrar la ventana.</translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>Asking for an administrator&apos;s consent.</source>
        <translation>Se pide el consentimiento de un administrador.</translation>
    </message>
    <message>
        <source>Unmounting.</source>
        <translation>Desmontando.</translation>
    </message>
    <message>
        <source>Reading the image.</source>
        <translation>Leyendo la imagen.</translation>
    </message>
    <message>
        <source>Writing.</source>
        <translation>Escribiendo.</translation>
    </message>
    <message>
        <source>Writing: waiting until the accessory has kept it.</source>
        <translation>Escribiendo: esperando a que el accesorio lo haya guardado.</translation>
    </message>
    <message>
        <source>Checking: reading back and comparing.</source>
        <translation>Comprobación: releer y comparar.</translation>
    </message>
    <message>
        <source>Done: waiting for the service&apos;s answer.</source>
        <translation>Hecho: esperando la respuesta del servicio.</translation>
    </message>
    <message>
        <source>%1 %, %2 of %3</source>
        <translation>%1 %, %2 de %3</translation>
    </message>
</context>
<context>
    <name>Report</name>
    <message>
        <source>The firmware is on the accessory, read back and equal.</source>
        <translation>El firmware está en el accesorio, releído e igual.</translation>
    </message>
    <message>
        <source>You may unplug it.</source>
        <translation>Puede desconectarlo.</translation>
    </message>
    <message>
        <source>It reaches into the icon area: send the icon again, too.</source>
        <translation>Llega hasta la zona del icono: envíe también el icono otra vez.</translation>
    </message>
    <message>
        <source>The icon is on the accessory, read back and equal.</source>
        <translation>El icono está en el accesorio, releído e igual.</translation>
    </message>
    <message>
        <source>The image is on the accessory: it was written and compared.</source>
        <translation>La imagen está en el accesorio: se ha escrito y comparado.</translation>
    </message>
    <message>
        <source>Not written: the computer doesn&apos;t tell which devices are attached.</source>
        <translation>No escrito: el equipo no dice qué dispositivos están conectados.</translation>
    </message>
    <message>
        <source>Is /sys mounted? Mount it, then send the image again.</source>
        <translation>¿Está montado /sys? Móntelo y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: the image is empty.</source>
        <translation>No escrito: la imagen está vacía.</translation>
    </message>
    <message>
        <source>Choose another one.</source>
        <translation>Elija otra.</translation>
    </message>
    <message>
        <source>Not written: no accessory is plugged in.</source>
        <translation>No escrito: no hay ningún accesorio conectado.</translation>
    </message>
    <message>
        <source>Plug it in, wait some seconds, then send the image again.</source>
        <translation>Conéctelo, espere unos segundos y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: nothing was handed over.</source>
        <translation>No escrito: no se ha entregado nada.</translation>
    </message>
    <message>
        <source>The log says why. Put that right, then send the image again.</source>
        <translation>El registro dice por qué. Corríjalo y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: the service can&apos;t be reached.</source>
        <translation>No escrito: no se puede llegar al servicio.</translation>
    </message>
    <message>
        <source>Is the loopback interface up? &apos;ip link set lo up&apos;, then send the image again.</source>
        <translation>¿Está activa la interfaz de bucle? &apos;ip link set lo up&apos;, y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: the service is not running.</source>
        <translation>No escrito: el servicio no está en marcha.</translation>
    </message>
    <message>
        <source>&apos;systemctl start kestrav-commandd.socket&apos;, then send the image again.</source>
        <translation>&apos;systemctl start kestrav-commandd.socket&apos;, y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: the service does not take the request.</source>
        <translation>No escrito: el servicio no acepta la petición.</translation>
    </message>
    <message>
        <source>&apos;systemctl restart kestrav-commandd&apos;, then send the image again.</source>
        <translation>&apos;systemctl restart kestrav-commandd&apos;, y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: the connection to the service broke off.</source>
        <translation>No escrito: se ha cortado la conexión con el servicio.</translation>
    </message>
    <message>
        <source>Send the image again.</source>
        <translation>Envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: the accessory is not plugged in.</source>
        <translation>No escrito: el accesorio no está conectado.</translation>
    </message>
    <message>
        <source>Plug it in, then send the image again.</source>
        <translation>Conéctelo y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written: the accessory has no disk yet.</source>
        <translation>No escrito: el accesorio aún no tiene disco.</translation>
    </message>
    <message>
        <source>Wait some seconds and try again; if that does not help, plug it in once more.</source>
        <translation>Espere unos segundos e inténtelo otra vez; si no ayuda, conéctelo de nuevo.</translation>
    </message>
    <message>
        <source>Not written: the service refused.</source>
        <translation>No escrito: el servicio lo ha rechazado.</translation>
    </message>
    <message>
        <source>It says why below. Put that right, then send the image again.</source>
        <translation>Abajo dice por qué. Corríjalo y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written whole: the accessory was unplugged in the middle.</source>
        <translation>No escrito por completo: el accesorio se ha desconectado a mitad.</translation>
    </message>
    <message>
        <source>It may hold a mixture now: plug it in and send the image again.</source>
        <translation>Puede contener una mezcla: conéctelo y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written whole: it went wrong on the way.</source>
        <translation>No escrito por completo: algo ha fallado por el camino.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image again.</source>
        <translation>Desconecte el accesorio, conéctelo de nuevo y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Not written as it is: the image changed meanwhile.</source>
        <translation>No escrito tal cual: la imagen ha cambiado entretanto.</translation>
    </message>
    <message>
        <source>Wait until nothing writes the file any more, then send it again.</source>
        <translation>Espere a que nada escriba ya el archivo y envíelo otra vez.</translation>
    </message>
    <message>
        <source>Not written: the service refused, and its answer did not come.</source>
        <translation>No escrito: el servicio lo ha rechazado, y su respuesta no ha llegado.</translation>
    </message>
    <message>
        <source>&apos;journalctl -t kestrav-commandd&apos; tells why.</source>
        <translation>&apos;journalctl -t kestrav-commandd&apos; dice por qué.</translation>
    </message>
    <message>
        <source>Not written whole: it failed, and the answer did not come.</source>
        <translation>No escrito por completo: ha fallado, y la respuesta no ha llegado.</translation>
    </message>
    <message>
        <source>Nobody knows: it was written, and could not be read back.</source>
        <translation>Nadie lo sabe: se ha escrito y no se ha podido releer.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image once more.</source>
        <translation>Desconecte el accesorio, conéctelo de nuevo y envíe la imagen una vez más.</translation>
    </message>
    <message>
        <source>Nobody knows: the answer is about another write.</source>
        <translation>Nadie lo sabe: la respuesta trata de otra escritura.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug; send the image again.</source>
        <translation>No lo desconecte; envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Nobody knows: only a part of the service&apos;s answer came.</source>
        <translation>Nadie lo sabe: solo ha llegado una parte de la respuesta del servicio.</translation>
    </message>
    <message>
        <source>Nobody knows: another program answers in the service&apos;s place.</source>
        <translation>Nadie lo sabe: otro programa responde en lugar del servicio.</translation>
    </message>
    <message>
        <source>End it (&apos;kestravctl doctor&apos; names it), then send the image again.</source>
        <translation>Ciérrelo (&apos;kestravctl doctor&apos; lo nombra) y envíe la imagen otra vez.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer in time.</source>
        <translation>Nadie lo sabe: el servicio no ha respondido a tiempo.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer.</source>
        <translation>Nadie lo sabe: el servicio no ha respondido.</translation>
    </message>
    <message>
        <source>Nobody knows: the service died while it wrote.</source>
        <translation>Nadie lo sabe: el servicio murió mientras escribía.</translation>
    </message>
    <message>
        <source>Not written: too many files are open for a connection to the service.</source>
        <translation>No escrito: hay demasiados archivos abiertos para una conexión con el servicio.</translation>
    </message>
    <message>
        <source>Close other programs, start Kestrav again and send the image again.</source>
        <translation>Cierre otros programas, inicie Kestrav de nuevo y envíe la imagen otra vez.</translation>
    </message>
</context>
<context>
    <name>UpdatePresenter</name>
    <message>
        <source>Reading the image.</source>
        <translation>Leyendo la imagen.</translation>
    </message>
    <message>
        <source>Asking the service to unmount; an administrator may be asked for consent.</source>
        <translation>Se pide al servicio que desmonte; puede pedirse el consentimiento de un administrador.</translation>
    </message>
    <message>
        <source>No answer has come, and the service goes on. Don&apos;t unplug the accessory.</source>
        <translation>No ha llegado respuesta, y el servicio sigue. No desconecte el accesorio.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug the accessory.</source>
        <translation>No desconecte el accesorio.</translation>
    </message>
</context>
<context>
    <name>saveTextAs</name>
    <message>
        <source>Save the log</source>
        <translation>Guardar el registro</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>The log could not be saved to %1.</source>
        <translation>No se pudo guardar el registro en %1.</translation>
    </message>
</context>
</TS>
