<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
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
</context>
<context>
    <name>LogTextEdit</name>
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
    <message>
        <source>System message</source>
        <translation>Mensaje del sistema</translation>
    </message>
    <message>
        <source>The newest line that went to the system log</source>
        <translation>La línea más reciente enviada al registro del sistema</translation>
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
