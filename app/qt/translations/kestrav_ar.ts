<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en">
<context>
    <name>ImageChooserDialog</name>
    <message>
        <source>Images (%1)</source>
        <translation>الصور (%1)</translation>
    </message>
    <message>
        <source>Choose Fol&amp;der</source>
        <translation>اختيار الم&amp;جلد</translation>
    </message>
    <message>
        <source>Take the selected folder itself, or the one shown if none is selected</source>
        <translation>استخدام المجلد المحدد نفسه، أو المجلد المعروض إن لم يُحدَّد أي مجلد</translation>
    </message>
    <message>
        <source>%1 is no .%2 file.</source>
        <translation>‏%1 ليس ملف ‎.%2.</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
    <message>
        <source>Save the log</source>
        <translation>حفظ السجل</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>The log could not be saved to %1.</source>
        <translation>تعذّر حفظ السجل في %1.</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;نسخ</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>تحديد ال&amp;كل</translation>
    </message>
    <message>
        <source>&amp;Save As…</source>
        <translation>&amp;حفظ باسم…</translation>
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
        <translation>تحديث البرنامج ال&amp;ثابت…</translation>
    </message>
    <message>
        <source>Choose a firmware image, an fds file, and write it to the accessory</source>
        <translation>اختيار صورة برنامج ثابت، أي ملف fds، وكتابتها على الملحق</translation>
    </message>
    <message>
        <source>Update &amp;Icon…</source>
        <translation>تحديث الأي&amp;قونة…</translation>
    </message>
    <message>
        <source>Choose an icon image, a fif file, and write it to the accessory</source>
        <translation>اختيار صورة أيقونة، أي ملف fif، وكتابتها على الملحق</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>السجل</translation>
    </message>
    <message>
        <source>What was done, one line a step</source>
        <translation>ما تم فعله، سطر لكل خطوة</translation>
    </message>
    <message>
        <source>Update in progress</source>
        <translation>التحديث جارٍ</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>رسالة النظام</translation>
    </message>
    <message>
        <source>The newest line that went to the system log</source>
        <translation>أحدث سطر أُرسل إلى سجل النظام</translation>
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
